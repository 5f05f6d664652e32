// Large mailboxes come out as large as asked, and sound.
#include "localmapi/pst/messaging/Store.h"
#include "testing/mailbox_builder/LargeMailbox.h"
#include "tests/localmapi/pst/support/RecordingSink.h"

#include <gtest/gtest.h>

#include <memory>

namespace mailbox_builder {
namespace {

namespace pst = localmapi::pst;

TEST(LargeMailbox, HasTheItemsAndTheSizeThatWereAskedFor) {
    struct Row {
        const char* name;
        std::uint64_t items;
        std::uint64_t bytes;
        double attachmentShare;
        Form form;
    };
    constexpr std::uint64_t kMega = std::uint64_t{1} << 20;
    constexpr Row kRows[] = {
        {"few items, large attachments", 200, 24 * kMega, 0.1, Form::Unicode},
        {"many items", 1500, 18 * kMega, 0.1, Form::Unicode},
        {"text alone", 400, 10 * kMega, 0, Form::Unicode},
        {"an attachment each", 300, 10 * kMega, 1, Form::Unicode},
        {"8-bit strings", 800, 12 * kMega, 0.1, Form::Ansi},
        {"compressed blocks", 600, 16 * kMega, 0.1, Form::LargePages},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        LargeMailboxOptions options = {
            .items = row.items, .bytes = row.bytes, .folders = 23, .attachmentShare = row.attachmentShare};
        options.writer.form = row.form;
        options.writer.end = FileEnd::Early;
        Bytes bytes;
        const auto written = WriteLargeMailbox(CreateMemorySink(bytes), options);
        ASSERT_TRUE(written) << written.Failure().text;
        EXPECT_EQ(written->fileBytes, bytes.size());
        EXPECT_NEAR(static_cast<double>(bytes.size()), static_cast<double>(row.bytes),
                    static_cast<double>(row.bytes) * 0.02);

        localmapi::testing::RecordingSink sink;
        pst::StoreOptions open;
        open.database.sink = &sink;
        auto store = pst::Store::Open(std::make_unique<localmapi::MemorySource>(bytes), open);
        ASSERT_TRUE(store) << store.Failure().text;
        std::uint64_t folders = 0;
        std::uint64_t items = 0;
        const auto top = (*store)->Find(pst::SpecialFolder::IpmSubtree);
        ASSERT_TRUE(top);
        (*store)->WalkFolders(*top, pst::SearchFolders::Skip, [&](pst::Folder& folder, unsigned) {
            ++folders;
            items += folder.Messages().Count();
            return true;
        });
        EXPECT_EQ(items, row.items);
        EXPECT_EQ(folders, 23u + 2) << "the top and the wastebasket are there by themselves";
        EXPECT_EQ(sink.problems, std::vector<std::string>());
    }
}

TEST(LargeMailbox, IsTheSameForTheSameSeedOnly) {
    const auto write = [](std::uint64_t seed) {
        Bytes bytes;
        EXPECT_TRUE(WriteLargeMailbox(CreateMemorySink(bytes), {.items = 300, .bytes = 5'000'000, .seed = seed}));
        return bytes;
    };
    const Bytes first = write(7);
    EXPECT_TRUE(first == write(7));
    EXPECT_FALSE(first == write(8));
}

TEST(LargeMailbox, RefusesWhatCannotBe) {
    Bytes bytes;
    EXPECT_FALSE(WriteLargeMailbox(CreateMemorySink(bytes), {.folders = 3}));
    EXPECT_FALSE(WriteLargeMailbox(CreateMemorySink(bytes), {.attachmentShare = 1.5}));
    EXPECT_TRUE(WriteLargeMailbox(CreateMemorySink(bytes), {.items = 0, .bytes = 0}));
}

}  // namespace
}  // namespace mailbox_builder
