// What is said of files that are no mailboxes, before MAPI sees them.
#include "host/Failures.h"
#include "host/Sources.h"
#include "host/TempFolder.h"
#include "host/Text.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace vxhost {
namespace {

std::string ReasonAgainst(const std::filesystem::path& file) {
    try {
        CheckMailboxFile(file);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.Kind(), Status::NotOpened);
        EXPECT_NE(std::string(failure.what()).find(PathText(file)), std::string::npos) << "names the file";
        EXPECT_FALSE(failure.Advice().empty());
        return failure.what();
    }
    return {};
}

TEST(MailboxFiles, AreRefusedWithAReason) {
    struct Row {
        const char* name;
        std::string bytes;
        const char* reason;
    };
    using namespace std::string_literals;
    const Row rows[] = {
        {"empty.pst", "", "it is empty"},
        {"message.msg", "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"s + std::string(512, '\0'), "message (.msg)"},
        {"mail.mbox", "From ada@example.com Mon Mar  2 10:00:00 2026\n", "mbox"},
        {"mail.zip", "PK\x03\x04", "zip"},
        {"mail.pst.gz", "\x1F\x8B\x08", "compressed"},
        {"text.pst", "Dear Ada,\n", "does not begin with !BDN"},
        {"short.pst", "!BDN"s + std::string(100, '\0'), "cut off after 104 bytes"},
        {"mailbox.pst", "!BDN"s + std::string(600, '\0'), ""},
    };
    const TempFolder folder(std::filesystem::temp_directory_path());
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::filesystem::path file = folder.Path() / row.name;
        std::ofstream(file, std::ios::binary) << row.bytes;
        const std::string reason = ReasonAgainst(file);
        EXPECT_NE(reason.find(row.reason), std::string::npos) << reason;
        EXPECT_EQ(reason.empty(), *row.reason == '\0');
    }
    EXPECT_NE(ReasonAgainst(folder.Path() / "none.pst").find("there is no such file"), std::string::npos);
    EXPECT_NE(ReasonAgainst(folder.Path()).find("it is a folder"), std::string::npos);
}

}  // namespace
}  // namespace vxhost
