// Stores, folders and lists, sound and damaged.
#include "localmapi/pst/ltp/Values.h"
#include "localmapi/pst/messaging/PropertyIds.h"
#include "localmapi/pst/messaging/Store.h"
#include "tests/localmapi/pst/support/RecordingSink.h"
#include "tests/localmapi/pst/support/StoreBuilder.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

using pst::Folder;
using pst::ItemList;
using pst::NodeId;
using pst::SearchFolders;
using pst::SpecialFolder;
using pst::Store;

constexpr std::uint32_t kInbox = 0x8062;
constexpr std::uint32_t kMessages = 30;

std::uint32_t MessageId(std::uint32_t number) {
    return 0x200004 + number * 0x20;
}

std::string Narrow(const CStringW& text) {
    std::string bytes;
    for (const WCHAR unit : text) {
        bytes.push_back(static_cast<char>(unit));
    }
    return bytes;
}

struct OpenedStore {
    explicit OpenedStore(Bytes bytes) : image(std::move(bytes)) {
        pst::StoreOptions options;
        options.database.sink = &sink;
        auto opened = Store::Open(std::make_unique<MemorySource>(image), options);
        EXPECT_TRUE(opened) << opened.Failure().text;
        store = *std::move(opened);
    }

    // "Name(id)" of every folder, in the order of the walk, indented by a dot a level.
    std::vector<std::string> Tree(SearchFolders searchFolders = SearchFolders::Skip) {
        std::vector<std::string> lines;
        store->WalkFolders(Store::kRootFolder, searchFolders, [&](Folder& folder, unsigned depth) {
            lines.push_back(std::string(depth, '.') + Narrow(folder.DisplayName()));
            return true;
        });
        return lines;
    }

    ItemList Inbox() {
        auto folder = store->OpenFolder(NodeId{kInbox});
        EXPECT_TRUE(folder);
        return folder->Messages();
    }

    Bytes image;
    RecordingSink sink;
    std::unique_ptr<Store> store;
};

// Top, with Inbox (30 messages, a hidden one) and Empty; a search folder beside Top.
StoreBuilder SampleStore(const Form& form = kUnicode, pst::Encoding encoding = pst::Encoding::Permute) {
    StoreBuilder builder(form, encoding);
    builder.AddFolder(kInbox, kTop, "Inbox");
    builder.AddFolder(0x8082, kTop, "Empty");
    builder.AddFolder(0x2223, kRoot, "Search");
    builder.storeProperties.push_back({0x35E00102, EntryId(kTop)});
    for (std::uint32_t i = 0; i < kMessages; ++i) {
        builder.AddMessage(MessageId(i), kInbox, "message " + std::to_string(i));
    }
    builder.AddMessage(0x3008, kInbox, "hidden");
    return builder;
}
const std::vector<std::string> kSampleTree = {"", ".Top", "..Inbox", "..Empty"};

TEST(Store, GivesItsFoldersAndTheirLists) {
    for (const Form* form : kForms) {
        SCOPED_TRACE(form->name);
        OpenedStore opened(SampleStore(*form).Build());
        EXPECT_EQ(opened.Tree(), kSampleTree);
        EXPECT_EQ(opened.Tree(SearchFolders::Include),
                  (std::vector<std::string>{"", ".Search", ".Top", "..Inbox", "..Empty"}));
        ItemList list = opened.Inbox();
        ASSERT_EQ(list.Count(), kMessages);
        EXPECT_FALSE(list.IsRebuilt());
        for (std::uint32_t i = 0; i < kMessages; ++i) {
            EXPECT_EQ(list.Id(i).value, MessageId(i));
            auto cell = list.Cell(i, 0x0037);
            ASSERT_TRUE(cell);
            EXPECT_EQ(Narrow(*pst::Text(*cell, 1252)), "message " + std::to_string(i));
            auto message = opened.store->OpenMessage(list.Id(i));
            ASSERT_TRUE(message);
            EXPECT_EQ(Narrow(message->ReadSubject().text), "message " + std::to_string(i));
            EXPECT_EQ(message->Parent().value, kInbox);
        }
        auto folder = opened.store->OpenFolder(NodeId{kInbox});
        EXPECT_EQ(folder->AssociatedMessages().Count(), 1U);
        EXPECT_EQ(opened.store->OpenMessage(NodeId{4}).Failure().code, ErrorCode::NotFound);
        EXPECT_EQ(opened.store->OpenFolder(NodeId{0x9002}).Failure().code, ErrorCode::NotFound);
        EXPECT_TRUE(opened.sink.problems.empty()) << opened.sink.problems[0];
    }
}

TEST(Store, MakesAndTakesEntryIdsOfItsOwnOnly) {
    OpenedStore opened(SampleStore().Build());
    const Store::EntryId id = opened.store->EntryIdOf(NodeId{kInbox});
    EXPECT_EQ(Bytes(id.begin(), id.end()), EntryId(kInbox));
    EXPECT_EQ(opened.store->NodeOf(EntryId(kInbox))->value, kInbox);
    EXPECT_FALSE(opened.store->NodeOf(EntryId(kInbox, Pattern(16, 1)))) << "of another store";
    Bytes flagged = EntryId(kInbox);
    flagged[0] = std::byte{1};
    EXPECT_FALSE(opened.store->NodeOf(flagged));
    Bytes cut = EntryId(kInbox);
    cut.pop_back();
    EXPECT_FALSE(opened.store->NodeOf(cut));
    EXPECT_FALSE(opened.store->NodeOf({}));
}

TEST(Store, FindsItsVisibleTreeHoweverItIsNamed) {
    struct Row {
        const char* name;
        std::function<void(StoreBuilder&)> make;
        std::uint32_t top;
        std::size_t reports;
    };
    const Row rows[] = {
        {"by entry id",
         [](StoreBuilder& b) {
             b.storeProperties.push_back({0x35E00102, EntryId(kTop)});
         },
         kTop, 0},
        {"entry id of a lost folder",
         [](StoreBuilder& b) {
             b.storeProperties.push_back({0x35E00102, EntryId(0x9902)});
         },
         kRoot, 1},
        {"entry id of another store",
         [](StoreBuilder& b) {
             b.storeProperties.push_back({0x35E00102, EntryId(kTop, Pattern(16, 9))});
         },
         kRoot, 1},
        {"by name, the mailbox's before the public one's",
         [](StoreBuilder& b) {
             b.AddFolder(0x2002, kRoot, "Root - Public");
             b.AddFolder(0x2022, 0x2002, "IPM_SUBTREE");
             b.AddFolder(0x20A2, kRoot, "Root - Mailbox");
             b.AddFolder(0x2142, 0x20A2, "IPM_SUBTREE");
         },
         0x2142, 0},
        {"by name, in a tree of another name",
         [](StoreBuilder& b) {
             b.AddFolder(0x20A2, kRoot, "Mailbox");
             b.AddFolder(0x2142, 0x20A2, "IPM_SUBTREE");
         },
         0x2142, 0},
        {"not at all", [](StoreBuilder&) {}, kRoot, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        StoreBuilder builder(kUnicode);
        row.make(builder);
        OpenedStore opened(builder.Build());
        EXPECT_EQ(opened.store->Find(SpecialFolder::IpmSubtree)->value, row.top);
        EXPECT_FALSE(opened.store->Find(SpecialFolder::Outbox));
        EXPECT_EQ(opened.sink.problems.size(), row.reports);
    }
}

TEST(Store, RebuildsListsFromTheNodesWhenTheirTablesAreBroken) {
    struct Row {
        const char* name;
        std::function<void(StoreBuilder&)> damage;
        const char* report;
    };
    const Row rows[] = {
        {"contents table lost", [](StoreBuilder& b) { b.leftOut.push_back(0x806E); }, "contents table is damaged"},
        {"contents table no table",
         [](StoreBuilder& b) {
             b.replaced[0x806E] = {b.image.AddBlock(Pattern(300)), 0};
         },
         "contents table is damaged"},
        {"contents table without blocks",
         [](StoreBuilder& b) {
             b.replaced[0x806E] = {0x99990, 0};
         },
         "contents table is damaged"},
        {"hierarchy table lost", [](StoreBuilder& b) { b.leftOut.push_back(0x802D); }, "hierarchy table is damaged"},
        {"hierarchy table of the root lost", [](StoreBuilder& b) { b.leftOut.push_back(0x12D); },
         "hierarchy table is damaged"},
        {"root folder lost", [](StoreBuilder& b) { b.leftOut.push_back(kRoot); }, "read without its properties"},
        {"store object lost", [](StoreBuilder& b) { b.leftOut.push_back(0x21); },
         "store is read without its properties"},
        {"store object without data",
         [](StoreBuilder& b) {
             b.replaced[0x21] = {0, 0};
         },
         "store is read without its properties"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        StoreBuilder builder(kUnicode);
        row.damage(builder);
        builder.AddFolder(kInbox, kTop, "Inbox");
        builder.AddFolder(0x8082, kTop, "Empty");
        for (std::uint32_t i = 0; i < kMessages; ++i) {
            builder.AddMessage(MessageId(i), kInbox, "message " + std::to_string(i));
        }
        OpenedStore opened(builder.Build());
        EXPECT_EQ(opened.Tree(), kSampleTree);
        ItemList list = opened.Inbox();
        ASSERT_EQ(list.Count(), kMessages);
        for (std::uint32_t i = 0; i < kMessages; ++i) {
            EXPECT_EQ(list.Id(i).value, MessageId(i));
            EXPECT_EQ(static_cast<bool>(list.Cell(i, 0x0037)), !list.IsRebuilt());
        }
        EXPECT_EQ(opened.sink.Count(row.report), 1) << opened.sink.problems.size();
    }
}

TEST(Store, WalksATreeThatLeadsBackIntoItselfOnce) {
    StoreBuilder builder(kUnicode);
    builder.AddFolder(kInbox, kTop, "Inbox");
    // The inbox's folders: the inbox, its parent, the topmost folder, one that is not there, and a message.
    builder.replaced[0x806D] =
        AddTable(builder.image, {0x3001001F}, {{kInbox, {}}, {kTop, {}}, {kRoot, {}}, {0x9902, {}}, {0x200004, {}}});
    builder.AddFolder(0x8082, kInbox, "Below");
    OpenedStore opened(builder.Build());
    EXPECT_EQ(opened.Tree(), (std::vector<std::string>{"", ".Top", "..Inbox"}));
    EXPECT_EQ(opened.sink.Count("the folder is listed in two others"), 2);
    EXPECT_EQ(opened.sink.Count("node 0x9902 is not in the file"), 1);
    EXPECT_EQ(opened.sink.Count("row 0x200004 is of another kind"), 1);
}

TEST(Store, EndsInATreeOfUnlikelyDepth) {
    StoreBuilder builder(kLarge);
    std::uint32_t parent = kTop;
    for (std::uint32_t i = 0; i < 300; ++i) {
        const std::uint32_t id = 0x10002 + i * 0x20;
        builder.AddFolder(id, parent, "f");
        parent = id;
    }
    OpenedStore opened(builder.Build());
    EXPECT_EQ(opened.Tree().size(), Store::kDeepestFolder + 1);
    EXPECT_EQ(opened.sink.Count("lies too deep"), 1);
}

// A header that says "not encoded" over encoded data, and the other ways round.
TEST(Store, FindsOutHowItsDataIsEncoded) {
    for (const auto said : {pst::Encoding::None, pst::Encoding::Permute, pst::Encoding::Cyclic}) {
        for (const auto real : {pst::Encoding::None, pst::Encoding::Permute, pst::Encoding::Cyclic}) {
            StoreBuilder builder = SampleStore(kUnicode, real);
            Bytes bytes = builder.Build();
            Poke(bytes, 513, static_cast<std::uint64_t>(said), 1);
            builder.image.SealHeader(bytes);
            OpenedStore opened(bytes);
            EXPECT_EQ(opened.Tree(), kSampleTree);
            EXPECT_EQ(opened.sink.Count("encoded in another way"), said == real ? 0 : 1);
        }
    }
}

TEST(Store, KnowsPasswordsAndReceiveFolders) {
    StoreBuilder builder(kUnicode);
    builder.storeProperties.push_back({0x67FF0003, Number32(0x50E099BC)});  // published: of "password"
    const NodeData table = AddTable(builder.image, {0x001A001F, 0x66050003},
                                    {{1, {{0x66050003, Number32(kInbox)}}},
                                     {2, {{0x001A001F, Utf16("IPM.Note")}, {0x66050003, Number32(kTop)}}},
                                     {3, {{0x001A001F, Utf16("IPM.Report")}}}});
    builder.image.AddNode(0x62B, table.data, table.subnodes);
    OpenedStore opened(builder.Build());
    EXPECT_TRUE(opened.store->HasPassword());
    EXPECT_TRUE(opened.store->IsPassword(BytesOf("password")));
    EXPECT_FALSE(opened.store->IsPassword(BytesOf("Password")));
    const auto folders = opened.store->ReceiveFolders();
    ASSERT_EQ(folders.size(), 2U) << "a row without a folder is of no use";
    EXPECT_EQ(Narrow(folders[0].messageClass), "");
    EXPECT_EQ(folders[0].folder.value, kInbox);
    EXPECT_EQ(Narrow(folders[1].messageClass), "IPM.Note");
    EXPECT_EQ(folders[1].folder.value, kTop);
    OpenedStore open(StoreBuilder(kUnicode).Build());
    EXPECT_FALSE(open.store->HasPassword());
    EXPECT_TRUE(open.store->IsPassword(BytesOf("anything")));
    EXPECT_TRUE(open.store->ReceiveFolders().empty());
}

}  // namespace
}  // namespace localmapi::testing
