// Independent readers of the format take the files for what they are, and find in them what was written. They are run
// where they are installed. Left out is what they are known not to read: attachments by reference and messages below the
// first level (pffexport), blocks that are compressed and encoded (pffexport), a message's attachments when there are
// hundreds of them (readpst).
#include "mapi/PropTags.h"
#include "tests/testing/mailbox_builder/Samples.h"
#include "tests/testing/support/ForeignTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>

namespace mailbox_builder {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kPlain = 120;  // two blocks of rows

struct Kind {
    const char* name;
    Form form;
    Encryption encryption;
    Shape shape;
};
constexpr Kind kKinds[] = {
    {"unicode", Form::Unicode, Encryption::Permute, Shape::Pst},
    {"unicode-cyclic", Form::Unicode, Encryption::Cyclic, Shape::Pst},
    {"unicode-ost", Form::Unicode, Encryption::Permute, Shape::Ost},
    {"ansi", Form::Ansi, Encryption::Permute, Shape::Pst},
    {"ansi-cyclic", Form::Ansi, Encryption::Cyclic, Shape::Pst},
    {"large-pages", Form::LargePages, Encryption::None, Shape::Pst},
};

std::string AsText(const Bytes& bytes) {
    return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

std::ptrdiff_t CountEntries(const fs::path& folder, const std::string& prefix) {
    return fs::exists(folder)
               ? std::count_if(fs::directory_iterator(folder), fs::directory_iterator(),
                               [&](const auto& entry) { return entry.path().filename().string().starts_with(prefix); })
               : -1;
}

class Tools : public ForeignTools {
protected:
    void WriteMailbox(const Kind& kind) {
        EmptyFolder();
        MailboxBuilder builder({.form = kind.form, .encryption = kind.encryption, .shape = kind.shape});
        const FolderId all = builder.AddFolder("Everything");
        const FolderId plain = builder.AddFolder("Plain");
        Message attachments = EveryAttachment();
        std::erase_if(attachments.attachments, [](const Attachment& attachment) {
            return attachment.properties.Find(PR_ATTACH_METHOD) != nullptr;  // by reference
        });
        Message hundreds = SimpleMessage("hundreds");
        for (int i = 0; i < 400; ++i) {
            hundreds.attachments.push_back(FileAttachment("file", Pattern(50)));
        }
        for (const Message& message : {EveryType(), EveryLength(), attachments, NamesAndPages(), hundreds}) {
            builder.Add(all, message);
        }
        for (std::size_t i = 0; i < kPlain; ++i) {
            builder.Add(plain, SimpleMessage("plain " + std::to_string(i)));
        }
        const Mailbox mailbox = builder.Finish();
        std::ofstream file(Folder() / "mailbox", std::ios::binary);
        file << AsText(mailbox.bytes);
    }
};

TEST_F(Tools, PffinfoKnowsTheFiles) {
    if (IsMissing("pffinfo")) {
        GTEST_SKIP() << "pffinfo is not installed";
    }
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        WriteMailbox(kind);
        const std::string output = Run("pffinfo mailbox");
        EXPECT_FALSE(IsComplaint(output)) << output;
        EXPECT_NE(output.find(kind.form == Form::Ansi ? "32-bit" : "64-bit"), std::string::npos) << output;
        EXPECT_NE(output.find(kind.encryption == Encryption::None      ? "none"
                              : kind.encryption == Encryption::Permute ? "compressible"
                                                                       : "high"),
                  std::string::npos)
            << output;
    }
}

TEST_F(Tools, PffexportFindsEveryMessageAndTheBytesOfAttachments) {
    if (IsMissing("pffexport")) {
        GTEST_SKIP() << "pffexport is not installed";
    }
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        WriteMailbox(kind);
        const std::string said = Run("pffexport -q -t out mailbox");
        EXPECT_FALSE(IsComplaint(said)) << said;
        const fs::path top = Folder() / "out.export"
                             / (kind.shape == Shape::Pst ? "Top of Personal Folders" : "Root - Mailbox/IPM_SUBTREE");
        EXPECT_EQ(CountEntries(top / "Plain", "Message"), static_cast<std::ptrdiff_t>(kPlain));
        EXPECT_EQ(CountEntries(top / "Everything", "Message"), 5);
        EXPECT_EQ(CountEntries(top / "Everything/Message00005/Attachments", ""), 400);
        const fs::path attachments = top / "Everything/Message00003/Attachments";
        EXPECT_EQ(CountEntries(attachments, ""), 5);
        EXPECT_EQ(ContentOf(attachments / "2_small.bin"), AsText(Pattern(100)));
        EXPECT_EQ(ContentOf(attachments / "3_large.bin"), AsText(Pattern(300'000)));
        EXPECT_EQ(CountEntries(attachments / "Attachment00004", "Message00001"), 1);
        EXPECT_EQ(ContentOf(attachments / "5_Attachment.txt"), AsText(Pattern(70'000)));
    }
}

TEST_F(Tools, ReadpstFindsEveryMessageAndThoseWithinOthers) {
    if (IsMissing("readpst")) {
        GTEST_SKIP() << "readpst is not installed";
    }
    for (const Kind& kind : kKinds) {
        SCOPED_TRACE(kind.name);
        WriteMailbox(kind);
        const std::string output = Run("readpst -j 0 -e -o . mailbox");
        EXPECT_FALSE(IsComplaint(output)) << output;
        EXPECT_NE(output.find("\"Everything\" - 5 items done, 0 items skipped."), std::string::npos) << output;
        EXPECT_NE(output.find("\"Plain\" - 120 items done, 0 items skipped."), std::string::npos) << output;
        fs::path found;
        for (const auto& entry : fs::recursive_directory_iterator(Folder())) {
            found = entry.path().filename() == "3.eml" && entry.path().parent_path().filename() == "Everything"
                        ? entry.path()
                        : found;
        }
        const std::string text = ContentOf(found);
        for (const char* part :
             {"Subject: every attachment", "Subject: the outermost", "Subject: one around", "Subject: two around",
              "Subject: the innermost", "deep.bin", "beside.bin", "small.bin", "large.bin"}) {
            EXPECT_NE(text.find(part), std::string::npos) << part;
        }
    }
}

}  // namespace
}  // namespace mailbox_builder
