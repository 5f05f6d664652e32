// What is written comes back: every property of every message, in each form and encoding of the file, with nothing for
// the reader to complain of.
#include "mapi/PropTags.h"
#include "tests/localmapi/pst/support/RecordingSink.h"
#include "tests/testing/mailbox_builder/Compare.h"
#include "tests/testing/mailbox_builder/Samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <string>
#include <utility>

namespace mailbox_builder {
namespace {

namespace pst = localmapi::pst;
using localmapi::testing::RecordingSink;

struct Kind {
    const char* name;
    WriterOptions options;
};

std::vector<Kind> Kinds() {
    std::vector<Kind> kinds;
    for (const auto& [form, name] : {std::pair{Form::Unicode, "Unicode"}, std::pair{Form::Ansi, "ANSI"},
                                     std::pair{Form::LargePages, "4 KiB pages"}}) {
        for (const Encryption encryption : {Encryption::None, Encryption::Permute, Encryption::Cyclic}) {
            kinds.push_back({name, {.form = form, .encryption = encryption}});
        }
    }
    return kinds;
}

std::vector<Kind> PermutedKinds() {
    std::vector<Kind> kinds = Kinds();
    std::erase_if(kinds, [](const Kind& kind) { return kind.options.encryption != Encryption::Permute; });
    return kinds;
}

// A mailbox in memory, opened.
struct OpenedMailbox {
    explicit OpenedMailbox(const Bytes& bytes) {
        pst::StoreOptions options;
        options.database.sink = &sink;
        options.codePage = 1252;
        auto opened = pst::Store::Open(std::make_unique<localmapi::MemorySource>(bytes), options);
        EXPECT_TRUE(opened) << opened.Failure().text;
        store = *std::move(opened);
    }

    RecordingSink sink;
    std::unique_ptr<pst::Store> store;
};

void ExpectSame(const Mailbox& mailbox, const WriterOptions& options) {
    OpenedMailbox opened(mailbox.bytes);
    Comparison comparison(*opened.store, options.form);
    std::map<std::pair<FolderId, bool>, pst::ItemList> lists;
    std::map<std::pair<FolderId, bool>, std::size_t> counts;
    for (const Added& added : mailbox.messages) {
        const std::pair key(added.folder, added.isAssociated);
        if (!lists.contains(key)) {
            auto folder = opened.store->OpenFolder(pst::NodeId{added.folder.node});
            ASSERT_TRUE(folder) << folder.Failure().text;
            lists.emplace(key, added.isAssociated ? folder->AssociatedMessages() : folder->Messages());
        }
        comparison.OfMessage(added.id, added.message, lists.at(key));
        ++counts[key];
    }
    for (const auto& [key, list] : lists) {
        EXPECT_EQ(list.Count(), counts[key]);
        EXPECT_FALSE(list.IsRebuilt());
    }
    EXPECT_EQ(comparison.Differences(), std::vector<std::string>());
    EXPECT_EQ(opened.sink.problems, std::vector<std::string>());
}

TEST(RoundTrip, GivesBackEveryKindOfMessageInEveryKindOfFile) {
    for (const Kind& kind : Kinds()) {
        SCOPED_TRACE(testing::Message() << kind.name << ", encryption " << static_cast<int>(kind.options.encryption));
        ExpectSame(EverythingMailbox(kind.options, 30), kind.options);
    }
}

TEST(RoundTrip, OfFilesThatEndEarlyIsTheSameInFewerBytes) {
    for (Kind kind : PermutedKinds()) {
        SCOPED_TRACE(kind.name);
        const Mailbox whole = EverythingMailbox(kind.options, 3);
        kind.options.end = FileEnd::Early;
        const Mailbox early = EverythingMailbox(kind.options, 3);
        EXPECT_LT(early.bytes.size(), whole.bytes.size());
        ExpectSame(early, kind.options);
    }
}

TEST(RoundTrip, IsTheSameFileEachTime) {
    for (const Kind& kind : PermutedKinds()) {
        EXPECT_EQ(EverythingMailbox(kind.options, 3).bytes, EverythingMailbox(kind.options, 3).bytes) << kind.name;
    }
}

// Row matrices of many blocks, heaps of more than 136 (so two blocks of fill levels), indexes of several levels, the
// tables of two folders growing side by side.
TEST(RoundTrip, OfFoldersWithThousandsOfMessagesWrittenInTurns) {
    for (const Kind& kind : PermutedKinds()) {
        SCOPED_TRACE(kind.name);
        MailboxBuilder builder(kind.options);
        const FolderId first = builder.AddFolder("First");
        const FolderId second = builder.AddFolder("Second");
        for (int i = 0; i < 5500; ++i) {
            Message message;
            message.properties.Set(PR_SUBJECT_W, CStringW(static_cast<std::size_t>(i % 300), 's'))
                .Set(PR_SENT_REPRESENTING_NAME_W, Wide("sender " + std::to_string(i)))
                .Set(PR_IMPORTANCE, std::int32_t{i % 3})
                .Set(PR_MESSAGE_FLAGS, std::int32_t{i % 2});
            builder.Add(i % 11 == 0 ? second : first, std::move(message));
        }
        const Mailbox mailbox = builder.Finish();
        ExpectSame(mailbox, kind.options);

        OpenedMailbox opened(mailbox.bytes);
        auto folder = opened.store->OpenFolder(pst::NodeId{first.node});
        ASSERT_TRUE(folder);
        EXPECT_EQ(pst::ReadInteger(*folder->Properties(), 0x3602), 5000);
        EXPECT_EQ(pst::ReadInteger(*folder->Properties(), 0x3603), 2500);
    }
}

// More sub-nodes than one list holds: 340, 681 and 2729 in the three forms.
TEST(RoundTrip, OfAMessageWithHundredsOfAttachments) {
    for (const Kind& kind : PermutedKinds()) {
        SCOPED_TRACE(kind.name);
        MailboxBuilder builder(kind.options);
        Message message = SimpleMessage("many attachments");
        const std::uint32_t count = kind.options.form == Form::LargePages ? 2800 : 700;
        for (std::uint32_t i = 0; i < count; ++i) {
            message.attachments.push_back(FileAttachment("file " + std::to_string(i), Pattern(50, i + 1)));
        }
        builder.Add(builder.AddFolder("Folder"), std::move(message));
        ExpectSame(builder.Finish(), kind.options);
    }
}

// A tree of blocks of two levels, from 8.3 and 16.7 million bytes in the forms with small blocks.
TEST(RoundTrip, OfAttachmentsOfManyMegabytes) {
    for (const Kind& kind : PermutedKinds()) {
        SCOPED_TRACE(kind.name);
        MailboxBuilder builder(kind.options);
        Message message = SimpleMessage("large attachments");
        message.attachments.push_back(FileAttachment("20 MB", PatternContent(20'000'001)));
        message.attachments.push_back(FileAttachment("full tree", PatternContent(1021 * 8176)));
        builder.Add(builder.AddFolder("Folder"), std::move(message));
        ExpectSame(builder.Finish(), kind.options);
    }
}

TEST(RoundTrip, OfAMessageWithThousandsOfNamedProperties) {
    for (const Kind& kind : PermutedKinds()) {
        SCOPED_TRACE(kind.name);
        MailboxBuilder builder(kind.options);
        Message message = SimpleMessage("many names");
        const GUID set = {0x1000, 0, 0, {}};
        for (std::uint32_t i = 0; i < 3000; ++i) {
            const Name name = i % 2 == 0 ? Name{set, i + 1, {}} : Name{set, 0, Wide("name " + std::to_string(i))};
            message.properties.Set(name, PT_UNICODE, Wide("value " + std::to_string(i)));
        }
        builder.Add(builder.AddFolder("Folder"), std::move(message));
        ExpectSame(builder.Finish(), kind.options);
    }
}

// The hash buckets of the name map, which clients look names up by: [MS-PST] 2.4.7.5. The CRC of "Keywords" is 2EDA4D3B.
TEST(RoundTrip, KeepsNamesInTheirBuckets) {
    MailboxBuilder builder({});
    const Mailbox mailbox = builder.Finish();
    OpenedMailbox opened(mailbox.bytes);
    const auto node = opened.store->Nodes().FindNode(pst::NodeId{0x61});
    ASSERT_TRUE(node);
    auto map = pst::PropertyContext::Open(opened.store->Nodes(), *node, node->id);
    ASSERT_TRUE(map);
    const auto bucket = [&](std::uint16_t id) {
        auto value = map->Read(id);
        return value ? value->bytes.ReadAll() : Result<Bytes>(value.TakeFailure());
    };
    const auto text = bucket(0x1000 + (0x2EDA'4D3B ^ 5) % 251);
    const auto number = bucket(0x1000 + (0x8506 ^ 6) % 251);
    ASSERT_TRUE(text && number);
    const unsigned char ofText[] = {0x3B, 0x4D, 0xDA, 0x2E, 5, 0, 0, 0};
    const unsigned char ofNumber[] = {0x06, 0x85, 0, 0, 6, 0, 1, 0};
    EXPECT_TRUE(std::ranges::equal(*text, std::as_bytes(std::span(ofText))));
    EXPECT_TRUE(std::ranges::equal(*number, std::as_bytes(std::span(ofNumber))));
}

TEST(RoundTrip, GivesTheFoldersOfAStore) {
    for (Kind kind : PermutedKinds()) {
        for (const Shape shape : {Shape::Pst, Shape::Ost}) {
            SCOPED_TRACE(testing::Message() << kind.name << ", shape " << static_cast<int>(shape));
            kind.options.shape = shape;
            kind.options.displayName = Wide("The mailbox");
            kind.options.passwordCrc = 0x50E0'99BC;  // of "password"
            MailboxBuilder builder(kind.options);
            MailboxWriter& writer = builder.Writer();
            const FolderId inbox = builder.AddFolder("Inbox");
            Properties inner;
            inner.Set(PR_DISPLAY_NAME_W, Wide("Calendar")).Set(PR_COMMENT_W, Wide("a comment"));
            const auto calendar = writer.AddFolder(inbox, inner);
            const auto search = writer.AddSearchFolder(writer.Finder(), inner);
            ASSERT_TRUE(calendar && search);
            EXPECT_TRUE(writer.SetFolderProperty(inbox, 0x36D00102, writer.EntryIdOf(*calendar)));
            EXPECT_TRUE(writer.SetStoreProperty(PR_COMMENT_W, Wide("of the store")));
            EXPECT_TRUE(writer.SetReceiveFolder(Wide("IPM.Appointment"), *calendar));
            const Bytes entryId = writer.EntryIdOf(*calendar);
            const Mailbox mailbox = builder.Finish();

            OpenedMailbox opened(mailbox.bytes);
            pst::Store& store = *opened.store;
            EXPECT_EQ(store.IsOst(), shape == Shape::Ost || kind.options.form == Form::LargePages);
            EXPECT_EQ(store.NodeOf(entryId), pst::NodeId{calendar->node});
            EXPECT_EQ(store.Find(pst::SpecialFolder::IpmSubtree), pst::NodeId{writer.IpmSubtree().node});
            if (shape == Shape::Pst) {
                EXPECT_EQ(store.Find(pst::SpecialFolder::Wastebasket), pst::NodeId{writer.DeletedItems().node});
                EXPECT_EQ(store.Find(pst::SpecialFolder::Finder), pst::NodeId{writer.Finder().node});
            }
            EXPECT_TRUE(store.IsPassword(std::as_bytes(std::span("password", 8))));
            EXPECT_FALSE(store.IsPassword(std::as_bytes(std::span("Password", 8))));
            EXPECT_EQ(pst::ReadText(*store.Properties(), 0x3001, 1252), Wide("The mailbox"));
            EXPECT_EQ(pst::ReadText(*store.Properties(), 0x3004, 1252), Wide("of the store"));
            const auto receive = store.ReceiveFolders();
            ASSERT_EQ(receive.size(), 2U);
            EXPECT_EQ(receive[0].folder, pst::NodeId{writer.IpmSubtree().node});
            EXPECT_EQ(receive[1].messageClass, Wide("IPM.Appointment"));
            EXPECT_EQ(receive[1].folder, pst::NodeId{calendar->node});

            Comparison comparison(store, kind.options.form);
            comparison.OfFolder(*calendar, inner);
            comparison.OfFolder(inbox, Properties().Set(0x36D00102, entryId).Set(PR_SUBFOLDERS, true));
            EXPECT_EQ(comparison.Differences(), std::vector<std::string>());

            std::string tree;
            store.WalkFolders(pst::Store::kRootFolder, pst::SearchFolders::Include,
                              [&](pst::Folder& folder, unsigned depth) {
                                  const CStringW name = folder.DisplayName();
                                  tree += std::string(depth, ' ') + std::string(name.begin(), name.end()) + "\n";
                                  return true;
                              });
            EXPECT_EQ(tree, shape == Shape::Pst ? "\n Top of Personal Folders\n  Deleted Items\n  Inbox\n   Calendar\n"
                                                  " Finder\n  Calendar\n"
                                                : "\n Root - Public\n Root - Mailbox\n  IPM_SUBTREE\n   Deleted Items\n"
                                                  "   Inbox\n    Calendar\n  Finder\n   Calendar\n");
            EXPECT_EQ(opened.sink.problems, std::vector<std::string>());
        }
    }
}

}  // namespace
}  // namespace mailbox_builder
