// What cannot be written, or not be written on: failures with reasons, and no half a file left behind.
#include "mapi/PropTags.h"
#include "tests/testing/mailbox_builder/Samples.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <string>

namespace mailbox_builder {
namespace {

// Takes everything, and fails from one of the calls on.
class FailingSink final : public ByteSink {
public:
    FailingSink(int& calls, int failAt) : m_calls(calls), m_failAt(failAt) {}
    Status WriteAt(std::uint64_t, ByteView) override { return Next(); }
    Status Finish() override { return Next(); }

private:
    Status Next() { return m_calls++ < m_failAt ? Status() : Error{ErrorCode::AccessDenied, "the disk is full"}; }

    int& m_calls;
    int m_failAt;
};

Status WriteSomething(std::unique_ptr<ByteSink> sink) {
    VX_TRY_ASSIGN(const auto writer, MailboxWriter::Create(std::move(sink), {}));
    VX_TRY_ASSIGN(const FolderId folder,
                  writer->AddFolder(writer->IpmSubtree(), Properties().Set(PR_DISPLAY_NAME_W, Wide("Folder"))));
    VX_TRY_ASSIGN(const MessageId id, writer->AddMessage(folder, EveryAttachment()));
    (void)id;
    return writer->Finish();
}

TEST(Failure, OfAnyWriteIsToldOnceAndForAll) {
    int calls = 0;
    ASSERT_TRUE(WriteSomething(std::make_unique<FailingSink>(calls, 1 << 20)));
    for (int failAt = 0, last = calls; failAt < last; ++failAt) {
        calls = 0;
        const Status status = WriteSomething(std::make_unique<FailingSink>(calls, failAt));
        ASSERT_FALSE(status) << failAt;
        EXPECT_EQ(status.Failure().text, "the disk is full");
        EXPECT_EQ(calls, failAt + 1);
    }
}

TEST(Failure, LeavesNoFile) {
    const auto path = std::filesystem::path(testing::TempDir()) / "mailbox-writer-failure.pst";
    {
        auto writer = MailboxWriter::Create(path, {});
        ASSERT_TRUE(writer) << writer.Failure().text;
        ASSERT_TRUE((*writer)->AddMessage((*writer)->DeletedItems(), SimpleMessage("lost")));
        EXPECT_TRUE(std::filesystem::exists(path));
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    {
        auto writer = MailboxWriter::Create(path, {});
        ASSERT_TRUE(writer && (*writer)->Finish());
        EXPECT_EQ(std::filesystem::file_size(path), (*writer)->Size());
    }
    EXPECT_EQ(std::filesystem::file_size(path), 0x42400U);
    std::filesystem::remove(path);

    const auto nowhere = MailboxWriter::Create(path / "no" / "folder.pst", {});
    ASSERT_FALSE(nowhere);
    EXPECT_NE(nowhere.Failure().text.find("folder.pst"), std::string::npos);
}

TEST(Failure, OfWhatAFileCannotHoldIsTheWritersFromThenOn) {
    struct Row {
        const char* name;
        Form form;
        ErrorCode code;
        std::function<void(Message&)> spoil;
    };
    const auto never = [](std::uint64_t, std::span<std::byte>) {
        FAIL() << "content that cannot fit is not asked for";
    };
    const Row rows[] = {
        {"another type", Form::Unicode, ErrorCode::Unsupported,
         [](Message& message) { message.properties.Set(PR_IMPORTANCE, Wide("high")); }},
        {"an unknown type", Form::Unicode, ErrorCode::Unsupported,
         [](Message& message) { message.properties.Set(0x6700'0000, std::int32_t{1}); }},
        {"no id", Form::Unicode, ErrorCode::Unsupported,
         [](Message& message) { message.properties.Set(0x0000'0003, std::int32_t{1}); }},
        {"recipients who disagree", Form::Unicode, ErrorCode::Unsupported,
         [](Message& message) {
             message.recipients.push_back(Recipient(1, "a").Set(0x6700'0003, std::int32_t{1}));
             message.recipients.push_back(Recipient(1, "b").Set(0x6700'000B, true));
         }},
        {"two contents", Form::Unicode, ErrorCode::Unsupported,
         [](Message& message) {
             message.attachments.push_back(FileAttachment("both", Pattern(1)));
             message.attachments[0].ole = Pattern(1);
         }},
        {"4 GiB", Form::Unicode, ErrorCode::TooLarge,
         [&](Message& message) {
             message.attachments.push_back(FileAttachment("huge", Content{std::uint64_t{1} << 32, never}));
         }},
        {"2 GiB in the 32-bit form", Form::Ansi, ErrorCode::TooLarge,
         [&](Message& message) {
             message.attachments.push_back(FileAttachment("huge", Content{std::uint64_t{1} << 31, never}));
         }},
        {"no end of messages within each other", Form::Unicode, ErrorCode::Unsupported,
         [](Message& message) {
             for (int i = 0; i < 70; ++i) {
                 Message outer;
                 outer.attachments.push_back(MessageAttachment(std::move(message)));
                 message = std::move(outer);
             }
         }},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Bytes bytes;
        auto writer = MailboxWriter::Create(CreateMemorySink(bytes), {.form = row.form});
        ASSERT_TRUE(writer);
        Message message = SimpleMessage("spoilt");
        row.spoil(message);
        const auto added = (*writer)->AddMessage((*writer)->DeletedItems(), message);
        ASSERT_FALSE(added);
        EXPECT_EQ(added.Failure().code, row.code);
        EXPECT_FALSE((*writer)->AddMessage((*writer)->DeletedItems(), SimpleMessage("sound")));
        const Status finished = (*writer)->Finish();
        ASSERT_FALSE(finished);
        EXPECT_EQ(finished.Failure().text, added.Failure().text);
    }
}

TEST(Failure, OfAFolderThatHoldsNothing) {
    Bytes bytes;
    const auto create = [&] { return *MailboxWriter::Create(CreateMemorySink(bytes), {}); };
    EXPECT_FALSE(create()->AddFolder(FolderId{0x1234}, {}));
    EXPECT_FALSE(create()->AddMessage(FolderId{0x1234}, {}));
    auto writer = create();
    const auto search = writer->AddSearchFolder(writer->Finder(), Properties().Set(PR_DISPLAY_NAME_W, Wide("Search")));
    ASSERT_TRUE(search);
    EXPECT_FALSE(writer->AddMessage(*search, {}));
    writer = create();
    ASSERT_TRUE(writer->Finish());
    EXPECT_FALSE(writer->AddMessage(writer->IpmSubtree(), {}));
}

}  // namespace
}  // namespace mailbox_builder
