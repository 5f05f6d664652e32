// The store, its folders and their tables.
#include "localmapi/props/MapiMemory.h"
#include "localmapi/pst/source/OpenStoreSource.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "tests/localmapi/pst/source/SourceReading.h"
#include "tests/localmapi/pst/support/StoreBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

constexpr std::uint32_t kInbox = 0x8062;
constexpr std::uint32_t kMessage = 0x200004;
constexpr ULONG kClass = 0x001A001F, kSubject = 0x0037001F, kName = 0x3001001F, kFlags = 0x0E070003;

std::uint32_t TableOf(std::uint32_t folder, std::uint32_t type) {
    return (folder & ~0x1FU) | type;
}

std::string EntryText(ULONG tag, std::uint32_t node) {
    return Shown(tag, EntryId(node));
}

// Counts the reads that reach the file.
class CountingSource final : public ByteSource {
public:
    CountingSource(Bytes bytes, std::size_t& reads) : m_bytes(std::move(bytes)), m_reads(reads) {}

    std::uint64_t Size() const noexcept override { return m_bytes.size(); }
    Status ReadAt(std::uint64_t offset, std::span<std::byte> out) override {
        ++m_reads;
        return MemorySource(m_bytes).ReadAt(offset, out);
    }

private:
    Bytes m_bytes;
    std::size_t& m_reads;
};

TEST(Store, NamesItsFoldersByEntryIdsOfItsOwn) {
    StoreBuilder builder(kUnicode);
    builder.AddFolder(kInbox, kTop, "Inbox");
    builder.storeProperties = {{0x35E00102, EntryId(kTop)},
                               {0x35E20102, EntryId(kInbox)},
                               {0x35E30102, EntryId(0x9992)},
                               {0x35E40102, EntryId(kInbox, Pattern(16, 5))},
                               {0x35E50102, EntryId(kMessage)}};
    OpenedSource store(builder.Build());
    EXPECT_EQ(store->TopFolder(), kRoot);
    EXPECT_EQ(store->IpmSubtree(), kTop);
    EXPECT_EQ(store->Key(), kStoreKey);
    EXPECT_EQ(store->FolderNamedBy(0x35E0), kTop);
    EXPECT_EQ(store->FolderNamedBy(0x35E2), kInbox);
    EXPECT_FALSE(store->FolderNamedBy(0x35E3)) << "a folder that is not there";
    EXPECT_FALSE(store->FolderNamedBy(0x35E4)) << "a folder of another store";
    EXPECT_FALSE(store->FolderNamedBy(0x35E5)) << "a message";
    EXPECT_FALSE(store->FolderNamedBy(0x3001)) << "a text";
    EXPECT_FALSE(store->FolderNamedBy(0x35E6)) << "not stored";
    EXPECT_EQ(TextOf(*store, 0x3001), "Store");
    EXPECT_EQ(Shown(*store, 0x0FF9), Shown(0x0FF90102, kStoreKey));

    const auto kindOf = [&](std::uint32_t node) {
        const auto entry = store->EntryOf(EntryId(node));
        return !entry ? "none" : entry->kind == EntryKind::Folder ? "folder" : "message";
    };
    EXPECT_EQ(store->EntryIdOf(kInbox), EntryId(kInbox));
    EXPECT_STREQ(kindOf(kInbox), "folder");
    EXPECT_STREQ(kindOf(0x8063), "folder");
    EXPECT_STREQ(kindOf(kMessage), "message");
    EXPECT_STREQ(kindOf(0x200008), "message");
    EXPECT_STREQ(kindOf(0x21), "none");
    EXPECT_FALSE(store->EntryOf(EntryId(kInbox, Pattern(16, 5))));
    EXPECT_FALSE(store->EntryOf({}));
    EXPECT_TRUE(store->OpenFolder(kMessage).IsNotFound());
    EXPECT_TRUE(store->OpenFolder(0x21).IsNotFound());
    EXPECT_TRUE(store->OpenMessage(kInbox).IsNotFound());
    EXPECT_TRUE(store->OpenMessage(0x100000000ULL + kMessage).IsNotFound());
}

// An OST names nothing, and its entry ids carry another key than the record key.
TEST(Store, OfAnOstHasAVisibleTreeAllTheSame) {
    StoreBuilder builder(kUnicode);
    builder.AddFolder(0x20A2, kRoot, "Root - Mailbox");
    builder.AddFolder(0x2142, 0x20A2, "IPM_SUBTREE");
    builder.storeProperties = {{0x66150048, Pattern(16, 9)}};
    Bytes image = builder.Build();
    Poke(image, 8, 0x4F53, 2);
    builder.image.SealHeader(image);
    OpenedSource store(image);
    EXPECT_EQ(store->IpmSubtree(), 0x2142U);
    EXPECT_EQ(store->Key(), Pattern(16, 9));
    EXPECT_EQ(Shown(*store, 0x35E0), Shown(0x35E00102, EntryId(0x2142, Pattern(16, 9))));
    const std::vector<ULONG> tags = store->Tags();
    EXPECT_TRUE(std::binary_search(tags.begin(), tags.end(), 0x35E00102U));
    EXPECT_FALSE(store->FolderNamedBy(0x35E2));
}

TEST(Store, GivesTheFolderOfTheLongestClassThatAMessageIsOf) {
    StoreBuilder builder(kUnicode);
    builder.AddFolder(kInbox, kTop, "Inbox");
    const auto row = [](std::uint32_t id, const char* messageClass, std::uint32_t folder) {
        return Row{id, {{kClass, Utf16(messageClass)}, {0x66050003, Number32(folder)}}};
    };
    const NodeData table = AddTable(builder.image, {kClass, 0x66050003},
                                    {row(1, "", kInbox), row(2, "IPM", kTop), row(3, "REPORT.IPM", kInbox),
                                     row(4, "IPM.Lost", 0x9992), row(5, "IPM.Odd", kMessage)});
    builder.image.AddNode(0x62B, table.data, table.subnodes);
    OpenedSource store(builder.Build());
    struct Case {
        const char* name;
        CStringW messageClass;
        EntryNumber folder;
        CStringW matched;
    };
    const CStringW ipm = "IPM"_w, report = "REPORT.IPM"_w;
    const Case cases[] = {
        {"itself", ipm, kTop, ipm},
        {"below", "IPM.Note"_w, kTop, ipm},
        {"other case", "ipm.note"_w, kTop, ipm},
        {"two levels", "Report.IPM.Note.NDR"_w, kInbox, report},
        {"begins alike", "IPMX"_w, kInbox, {}},
        {"nothing", {}, kInbox, {}},
        {"folder that is not there", "IPM.Lost.x"_w, kTop, ipm},
        {"folder that is none", "IPM.Odd"_w, kTop, ipm},
    };
    for (const Case& test : cases) {
        CStringW matched = "?"_w;
        EXPECT_EQ(store->ReceiveFolder(test.messageClass, matched), test.folder) << test.name;
        EXPECT_TRUE(matched == test.matched) << test.name;
    }
    const auto rows = store->ReceiveFolders();
    ASSERT_EQ(rows->Count(), 3U);
    EXPECT_EQ(Shown(*rows, 1, 0x001A), Shown(kClass, Utf16("IPM")));
    EXPECT_EQ(Shown(*rows, 1, 0x0FFF), EntryText(0x0FFF0102, kTop));

    OpenedSource without(StoreBuilder(kUnicode).Build());
    CStringW matched;
    EXPECT_FALSE(without->ReceiveFolder(ipm, matched));
    EXPECT_EQ(without->ReceiveFolders()->Count(), 0U);
}

TEST(Store, GivesTheNamesOfItsPropertiesUnderTheirIds) {
    StoreBuilder builder(kUnicode);
    builder.replaced[0x61] = AddProperties(
        builder.image, {{0x00020102, {}},
                        {0x00030102, ByteWriter().U32(0x8503).U16(1 << 1).U16(0).U32(0).U16(2 << 1 | 1).U16(4).Take()},
                        {0x00040102, ByteWriter().U32(16).Append(Utf16("Keywords")).Take()}});
    OpenedSource store(builder.Build());
    EXPECT_EQ(store->Names().Find({PS_MAPI, false, 0x8503, {}}), 0x8000);
    EXPECT_EQ(store->Names().Find({PS_PUBLIC_STRINGS, true, 0, "Keywords"_w}), 0x8004);
}

TEST(Folder, TellsWhatItsListsTellWhereItsOwnPropertiesAreSilentOrStale) {
    StoreBuilder builder(kUnicode);
    builder.AddFolder(kInbox, kTop, "Inbox");
    builder.AddFolder(0x8083, kInbox, "Search");
    builder.AddFolder(0x80A2, kTop, "Stale");
    const auto message = [](std::uint32_t id, std::uint32_t flags) { return Row{id, {{kFlags, Number32(flags)}}}; };
    builder.replaced[TableOf(kInbox, 0x0E)] =
        AddTable(builder.image, {kSubject, kFlags}, {message(kMessage, 1), message(0x200024, 0), message(0x200044, 8)});
    builder.replaced[0x80A2] = AddProperties(
        builder.image, {{kName, Utf16("Stale")}, {0x36020003, Number32(7)}, {0x360A000B, {std::byte{1}}}});
    builder.replaced[0x8083] = AddProperties(builder.image, {{kName, Utf16("Search")}, {0x36020003, Number32(9)}});
    OpenedSource store(builder.Build());
    struct Case {
        const char* name;
        std::uint32_t folder;
        ULONG id;
        std::string expected;
    };
    const Case cases[] = {
        {"messages counted", kInbox, 0x3602, "36020003:03000000"},
        {"unread counted", kInbox, 0x3603, "36030003:02000000"},
        {"has folders", kInbox, 0x360A, "360A000B:01"},
        {"stored count", 0x80A2, 0x3602, "36020003:07000000"},
        {"stale flag", 0x80A2, 0x360A, "360A000B:00"},
        {"a search folder holds nothing", 0x8083, 0x3602, "36020003:00000000"},
        {"its type", 0x8083, 0x3601, "36010003:02000000"},
        {"type", kInbox, 0x3601, "36010003:01000000"},
        {"type of the topmost", kRoot, 0x3601, "36010003:00000000"},
        {"name", kInbox, 0x3001, Shown(kName, Utf16("Inbox"))},
        {"name of the topmost", kRoot, 0x3001, "3001001F:"},
        {"no time", kInbox, 0x3008, "not found"},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(Shown(*store.Folder(test.folder), test.id), test.expected) << test.name;
    }
    const auto rows = store.Folder(kTop)->Folders();
    ASSERT_EQ(rows->Count(), 2U);
    EXPECT_EQ(Shown(*rows, 0, 0x360A), "360A000B:01");
    EXPECT_EQ(Shown(*rows, 1, 0x360A), "360A000B:00");
    EXPECT_EQ(store.Folder(kInbox)->Folders()->Count(), 1U) << "search folders are listed";
}

TEST(FolderRows, KnowWhatTheyStandForAndAreFoundByIt) {
    StoreBuilder builder(kUnicode);
    builder.AddFolder(kInbox, kTop, "Inbox");
    builder.AddFolder(0x8082, kTop, "Other");
    builder.leftOut = {0x8082};
    OpenedSource store(builder.Build());
    const auto rows = store.Folder(kTop)->Folders();
    ASSERT_EQ(rows->Count(), 2U) << "a folder whose tables are left is still one";
    EXPECT_EQ(Shown(*rows, 0, 0x3001), Shown(kName, Utf16("Inbox")));
    EXPECT_EQ(Shown(*rows, 1, 0x3001), Shown(kName, Utf16("Other")));
    EXPECT_EQ(Shown(*rows, 1, 0x0FFF), EntryText(0x0FFF0102, 0x8082));
    EXPECT_EQ(Shown(*rows, 1, 0x0FF9), EntryText(0x0FF90102, 0x8082));
    EXPECT_EQ(Shown(*rows, 1, 0x0E09), EntryText(0x0E090102, kTop));
    EXPECT_EQ(Shown(*rows, 1, 0x0FFE), "0FFE0003:03000000");
    EXPECT_EQ(Shown(*rows, 1, 0x3005), "30050003:01000000");
    EXPECT_EQ(Shown(*rows, 1, 0x6670), "not found");
    EXPECT_EQ(Shown(*rows, 2, 0x3001), "not found") << "past the end";
    EXPECT_EQ(rows->Find(0x0FFF, EntryId(0x8082)), 1U);
    EXPECT_EQ(rows->Find(0x0FF9, EntryId(kInbox)), 0U);
    EXPECT_EQ(rows->Find(0x0FF6, Number32(0x8082)), 1U);
    EXPECT_FALSE(rows->Find(0x0FFF, EntryId(kTop)));
    EXPECT_FALSE(rows->Find(0x0FFF, EntryId(kInbox, Pattern(16, 5))));
    EXPECT_FALSE(rows->Find(0x0FFF, Number32(0x8082)));
    EXPECT_FALSE(rows->Find(0x0FF6, {}));
    EXPECT_FALSE(rows->IsIndexed(0x3001));
}

// Folder 0x8082 is lost with the row of its own in a table that is lost too: only the message in it tells of it.
TEST(Folder, ThatNothingNamesAnyMoreIsListedInTheVisibleTree) {
    StoreBuilder builder(kUnicode);
    builder.storeProperties = {{0x35E00102, EntryId(kTop)}};
    builder.AddFolder(kInbox, kTop, "Inbox");
    builder.AddFolder(0x8082, kInbox, "Deep");
    builder.AddMessage(kMessage, 0x8082, "s");
    builder.leftOut = {0x8082, TableOf(kInbox, 0x0D), TableOf(0x8082, 0x0D), TableOf(0x8082, 0x0E),
                       TableOf(0x8082, 0x0F)};
    OpenedSource store(builder.Build());
    store.Folder(kInbox)->Folders();
    const auto rows = store.Folder(kTop)->Folders();
    ASSERT_EQ(rows->Count(), 2U);
    EXPECT_EQ(rows->Find(0x0FFF, EntryId(0x8082)), 1U);
    EXPECT_EQ(Shown(*rows, 1, 0x3001), Shown(kName, Utf16("Folder 0x8082")));
    const auto lost = store.Folder(0x8082);
    EXPECT_EQ(lost->Parent(), kTop);
    EXPECT_EQ(lost->Messages()->Count(), 1U);
    EXPECT_EQ(store->ParentOf(kMessage), 0x8082U);
}

TEST(Folder, HasParentsThatEnd) {
    StoreBuilder builder(kUnicode);
    builder.storeProperties = {{0x35E00102, EntryId(kTop)}};
    builder.AddFolder(kInbox, 0x8082, "a");
    builder.AddFolder(0x8082, kInbox, "b");
    builder.AddFolder(0x80A2, 0x80A2, "its own");
    OpenedSource store(builder.Build());
    const auto climb = [&](EntryNumber folder) {
        for (unsigned steps = 0; steps < 10; ++steps) {
            if (folder == kRoot) {
                return true;
            }
            folder = store->ParentOf(folder);
        }
        return false;
    };
    EXPECT_TRUE(climb(kTop));
    EXPECT_TRUE(climb(kInbox));
    EXPECT_TRUE(climb(0x8082));
    EXPECT_TRUE(climb(0x80A2));
    EXPECT_EQ(store->ParentOf(kTop), kRoot);
    EXPECT_EQ(store->ParentOf(kRoot), kRoot);
    EXPECT_EQ(store->ParentOf(0x9992), 0U);
    EXPECT_EQ(store->ParentOf(0x21), 0U);
}

TEST(MessageRows, ComeFromTheTableAndElseFromTheMessage) {
    StoreBuilder builder(kUnicode);
    const std::string marked =
        "\x01\x05"
        "RE: one";
    builder.replaced[TableOf(kTop, 0x0E)] =
        AddTable(builder.image, {kSubject, kFlags, 0x0E080003},
                 {{kMessage, {{kSubject, Utf16(marked)}, {kFlags, Number32(0x11)}, {0x0E080003, Number32(5)}}},
                  {0x200024, {{kSubject, Utf16("lost")}, {kFlags, Number32(0)}}},
                  {0x200044, {}}});
    const NodeData message = AddProperties(
        builder.image, {{kSubject, Utf16(marked)}, {kClass, Utf16("IPM.Note")}, {0x0E080003, Number32(6)}});
    builder.AddMessage(kMessage, kTop, message);
    builder.AddMessage(0x200044, kTop, message);
    OpenedSource store(builder.Build());
    const auto rows = store.Folder(kTop)->Messages();
    ASSERT_EQ(rows->Count(), 3U);
    struct Case {
        const char* name;
        std::size_t row;
        ULONG id;
        std::string expected;
    };
    const Case cases[] = {
        {"a subject without its mark", 0, 0x0037, Shown(kSubject, Utf16("RE: one"))},
        {"the prefix from the message", 0, 0x003D, Shown(0x003D001F, Utf16("RE: "))},
        {"the table's size", 0, 0x0E08, "0E080003:05000000"},
        {"a class, from the message", 0, 0x001A, Shown(kClass, Utf16("IPM.Note"))},
        {"attachments, from the flags", 0, 0x0E1B, "0E1B000B:01"},
        {"entry id", 0, 0x0FFF, EntryText(0x0FFF0102, kMessage)},
        {"parent", 0, 0x0E09, EntryText(0x0E090102, kTop)},
        {"type", 0, 0x0FFE, "0FFE0003:05000000"},
        {"a lost message: its row", 1, 0x0037, Shown(kSubject, Utf16("lost"))},
        {"a lost message: nothing else", 1, 0x001A, "not found"},
        {"a lost message: entry id", 1, 0x0FFF, EntryText(0x0FFF0102, 0x200024)},
        {"an empty row: from the message", 2, 0x0037, Shown(kSubject, Utf16("RE: one"))},
        {"an empty row: size", 2, 0x0E08, "0E080003:06000000"},
        {"an empty row: attachments", 2, 0x0E1B, "0E1B000B:00"},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(Shown(*rows, test.row, test.id), test.expected) << test.name;
    }
    EXPECT_TRUE(store->OpenMessage(0x200024).IsNotFound());
    EXPECT_EQ(rows->Find(0x0FFF, EntryId(0x200044)), 2U);
    const std::vector<ULONG> columns = rows->Columns();
    EXPECT_EQ(std::count(columns.begin(), columns.end(), kSubject), 1);
    EXPECT_EQ(std::count(columns.begin(), columns.end(), 0x67F20003U), 0) << "the table's own number";
}

TEST(MessageRows, OpenNoMessageForWhatNoFileKeeps) {
    StoreBuilder builder(kUnicode);
    for (std::uint32_t i = 0; i < 50; ++i) {
        builder.AddMessage(kMessage + i * 0x20, kTop, "message " + std::to_string(i));
    }
    std::size_t reads = 0;
    OpenedSource store(std::make_unique<CountingSource>(builder.Build(), reads));
    const auto rows = store.Folder(kTop)->Messages();
    const std::size_t before = reads;
    for (std::size_t row = 0; row < rows->Count(); ++row) {
        EXPECT_EQ(Shown(*rows, row, 0x6670), "not found");
        EXPECT_EQ(Shown(*rows, row, 0x0FFB), "not found");
        EXPECT_EQ(Shown(*rows, row, 0x0FF9).size(), 9 + 48U);
        EXPECT_EQ(Shown(*rows, row, 0x0037).substr(0, 9), "0037001F:");
    }
    EXPECT_EQ(reads, before);
    EXPECT_EQ(Shown(*rows, 0, 0x001A), Shown(kClass, Utf16("IPM.Note")));
    EXPECT_GT(reads, before);
}

TEST(MessageRows, GiveTheRowsWithinTheirMessages) {
    StoreBuilder builder(kUnicode);
    const NodeData attachment = AddProperties(builder.image, {{0x37010102, Pattern(5)}});
    builder.AddMessage(kMessage, kTop,
                       AddMessageNode(builder.image, "s", {attachment, attachment},
                                      {{1, {{kName, Utf16("A")}, {0x0C150003, Number32(1)}}}}));
    builder.AddMessage(0x200024, kTop, "none");
    OpenedSource store(builder.Build());
    auto rows = store.Folder(kTop)->Messages();
    auto recipients = rows->RowsWithin(0, PR_MESSAGE_RECIPIENTS);
    auto attachments = rows->RowsWithin(0, PR_MESSAGE_ATTACHMENTS);
    auto none = rows->RowsWithin(1, PR_MESSAGE_RECIPIENTS);
    ASSERT_TRUE(recipients && attachments && none);
    EXPECT_TRUE(rows->RowsWithin(0, 0x3FFF000D).IsNotFound());
    EXPECT_TRUE(rows->RowsWithin(9, PR_MESSAGE_RECIPIENTS).IsNotFound());
    rows.reset();
    EXPECT_EQ(Shown(**recipients, 0, 0x3001), Shown(kName, Utf16("A")));
    EXPECT_EQ((*attachments)->Count(), 2U);
    EXPECT_EQ(Shown(**attachments, 1, 0x3701), Shown(0x37010102, Pattern(5)));
    EXPECT_EQ((*none)->Count(), 0U);
    EXPECT_TRUE(store.Folder(kRoot)->Folders()->RowsWithin(0, PR_MESSAGE_RECIPIENTS).IsNotFound());
}

}  // namespace
}  // namespace localmapi::testing
