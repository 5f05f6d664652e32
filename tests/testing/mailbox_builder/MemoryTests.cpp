// What an open writer costs: some bytes a message, and nothing for what lies in the messages.
#include "mapi/PropTags.h"
#include "testing/CountedMemory.h"
#include "tests/testing/mailbox_builder/Samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

namespace mailbox_builder {
namespace {

// Takes everything and keeps its size.
class SizeSink final : public ByteSink {
public:
    explicit SizeSink(std::uint64_t& size) : m_size(size) {}
    Status WriteAt(std::uint64_t offset, ByteView bytes) override {
        m_size = std::max(m_size, offset + bytes.Size());
        return {};
    }
    Status Finish() override { return {}; }

private:
    std::uint64_t& m_size;
};

TEST(Memory, OfManyMessagesIsLessThan64BytesEach) {
    constexpr std::size_t kMessages = 20'000;
    for (const Form form : {Form::Unicode, Form::Ansi}) {
        std::uint64_t size = 0;
        auto writer = *MailboxWriter::Create(std::make_unique<SizeSink>(size), {.form = form});
        const FolderId folder =
            *writer->AddFolder(writer->IpmSubtree(), Properties().Set(PR_DISPLAY_NAME_W, Wide("Folder")));
        Message message = SimpleMessage("the same for all");
        message.properties.Set(PR_BODY_W, CStringW(1000, 'b'));
        message.attachments.push_back(FileAttachment("file", Pattern(3000)));
        const std::size_t before = counted_memory::Live();
        counted_memory::ResetHighest();
        for (std::size_t i = 0; i < kMessages; ++i) {
            ASSERT_TRUE(writer->AddMessage(folder, message));
        }
        ASSERT_TRUE(writer->Finish());
        EXPECT_GT(size, kMessages * 5000);
        EXPECT_LT(counted_memory::Highest() - before, kMessages * 64 + (512 << 10));
    }
}

TEST(Memory, OfLargeContentIsThatOfItsBlocksIds) {
    constexpr std::uint64_t kSize = 200'000'000;
    std::uint64_t size = 0;
    auto writer = *MailboxWriter::Create(std::make_unique<SizeSink>(size), {.encryption = Encryption::None});
    Message message = SimpleMessage("large");
    const auto fill = [](std::uint64_t, std::span<std::byte> out) { std::fill(out.begin(), out.end(), std::byte{1}); };
    message.attachments.push_back(FileAttachment("file", Content{kSize, fill}));
    const std::size_t before = counted_memory::Live();
    counted_memory::ResetHighest();
    ASSERT_TRUE(writer->AddMessage(writer->IpmSubtree(), message));
    ASSERT_TRUE(writer->Finish());
    EXPECT_GT(size, kSize);
    EXPECT_LT(counted_memory::Highest() - before, 1U << 20);
}

}  // namespace
}  // namespace mailbox_builder
