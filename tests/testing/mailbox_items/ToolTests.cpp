// Independent readers of the format find in the sample mailbox what it was described with. They are run where they are
// installed. What they are known to leave out is told beside each.
#include "mapi/PropTags.h"
#include "testing/mailbox_builder/SampleMailbox.h"
#include "testing/mailbox_builder/items/Wording.h"
#include "tests/testing/support/ForeignTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>

namespace mailbox_builder {
namespace {

namespace fs = std::filesystem;

struct FormRow {
    const char* name;
    Form form;
};
constexpr FormRow kForms[] = {{"Unicode", Form::Unicode}, {"ANSI", Form::Ansi}};

class SampleTools : public ForeignTools {
protected:
    void Write(Form form) {
        EmptyFolder();
        WriterOptions options;
        options.form = form;
        const Status written = WriteSampleMailbox(Folder() / "sample.pst", options);
        ASSERT_TRUE(written) << written.Failure().text;
    }
};

std::string Narrow(const CStringW& text) {
    return ToCodePage(text, 65001);
}

bool IsAscii(const CStringW& text) {
    return std::all_of(text.begin(), text.end(), [](WCHAR unit) { return unit < 0x80; });
}

// pffexport knows no attachment by reference but one kind, no class that is empty, and takes the checksum of RTF that
// is not compressed, which is none, for a wrong one.
bool IsKnownOfPffexport(const std::string& line) {
    constexpr const char* kKnown[] = {"unsupported attachment method",
                                      "unable to retrieve attachment type",
                                      "mismatch in checksum ( 0 !=",
                                      "RTF",
                                      "rtf",
                                      "invalid entry value string size",
                                      "Unable to export sub message",
                                      "export_handle_export_email: unable to export"};
    return std::any_of(std::begin(kKnown), std::end(kKnown),
                       [&](const char* known) { return line.find(known) != std::string::npos; });
}

bool IsLeftOutByPffexport(const Message& message) {
    static const CStringW kClasses[] = {Wide(""),
                                        Wide("IPM"),
                                        Wide("IPM.Noted"),
                                        Wide("IPM.Post"),
                                        Wide("IPM.TaskRequest"),
                                        Wide("IPM.Contact.Supplier"),
                                        Wide("IPM.Microsoft.Answer"),
                                        Wide("IPM.Microsoft.CustomAction"),
                                        Wide("IPM.Example.Unheard"),
                                        Wide("IPM.Outlook.Recall")};
    const CStringW& messageClass = std::get<CStringW>(message.properties.Find(PR_MESSAGE_CLASS)->value);
    return std::find(std::begin(kClasses), std::end(kClasses), messageClass) != std::end(kClasses);
}

// Entries such as "Message00007" and "Contact00001".
std::ptrdiff_t CountItems(const fs::path& folder) {
    return std::count_if(fs::directory_iterator(folder), {}, [](const fs::directory_entry& entry) {
        const std::string name = entry.path().filename().string();
        return name.size() > 5 && name.find_first_not_of("0123456789", name.size() - 5) == std::string::npos;
    });
}

TEST_F(SampleTools, PffexportFindsTheItemsOfEveryFolder) {
    if (IsMissing("pffexport")) {
        GTEST_SKIP() << "pffexport is not installed";
    }
    for (const FormRow& row : kForms) {
        SCOPED_TRACE(row.name);
        Write(row.form);
        std::istringstream said(Run("pffexport -t out sample.pst"));
        for (std::string line; std::getline(said, line);) {
            EXPECT_FALSE(IsComplaint(line) && !IsKnownOfPffexport(line)) << line;
        }
        const SampleMailbox sample;
        for (const SampleFolder& folder : sample.Folders()) {
            if (folder.place != Place::Visible || !IsAscii(folder.path)
                || folder.path.find(WCHAR{'\\'}) != CStringW::npos) {
                continue;
            }
            SCOPED_TRACE(Narrow(folder.path));
            const auto leftOut = std::count_if(folder.messages.begin(), folder.messages.end(), IsLeftOutByPffexport);
            const fs::path exported = Folder() / "out.export" / "Top of Personal Folders" / Narrow(folder.path);
            ASSERT_TRUE(fs::is_directory(exported));
            EXPECT_EQ(CountItems(exported), static_cast<std::ptrdiff_t>(folder.messages.size()) - leftOut);
        }
    }
}

// "done" and "skipped" of readpst's line for a folder, added; -1 without a line.
long CountsOf(const std::string& said, const std::string& name) {
    const std::size_t at = said.find("\"" + name + "\" - ");
    if (at == std::string::npos) {
        return -1;
    }
    const char* numbers = said.c_str() + at + name.size() + 5;
    char* behind = nullptr;
    const long done = std::strtol(numbers, &behind, 10);
    return done + std::strtol(behind + std::string(" items done, ").size(), nullptr, 10);
}

TEST_F(SampleTools, ReadpstCountsWhatIsInEveryFolder) {
    if (IsMissing("readpst")) {
        GTEST_SKIP() << "readpst is not installed";
    }
    for (const FormRow& row : kForms) {
        SCOPED_TRACE(row.name);
        Write(row.form);
        const std::string said = Run("readpst -j 0 -D -o . sample.pst");
        const SampleMailbox sample;
        for (const SampleFolder& folder : sample.Folders()) {
            if (folder.place != Place::Visible || !IsAscii(folder.path)) {
                continue;
            }
            SCOPED_TRACE(Narrow(folder.path));
            // It counts hidden messages and folders among the items, and says nothing of folders without any.
            const auto below =
                std::count_if(sample.Folders().begin(), sample.Folders().end(), [&](const SampleFolder& other) {
                    return other.place == Place::Visible && other.ParentPath() == folder.path;
                });
            const auto expected =
                static_cast<long>(folder.messages.size() + folder.associated.size()) + static_cast<long>(below);
            if (expected > 0) {
                EXPECT_EQ(CountsOf(said, Narrow(folder.Name())), expected);
            }
        }
    }
}

}  // namespace
}  // namespace mailbox_builder
