// The tree, pages, increments, counts, bodies and limits over the sample.
#include "mapi/PropTags.h"
#include "tests/provider/mailbox/ExpectedRecords.h"
#include "tests/provider/mailbox/MailboxHost.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <set>

namespace vx_testing {
namespace {

using mailbox_builder::Message;

template <typename T>
const T* FindAs(const mailbox_builder::Properties& properties, std::uint32_t tag) {
    const auto* property = properties.Find(tag);
    return property == nullptr ? nullptr : std::get_if<T>(&property->value);
}

std::int64_t ModifiedOf(const Message& message) {
    const auto* time = FindAs<mailbox_builder::Time>(message.properties, PR_LAST_MODIFICATION_TIME);
    return time == nullptr ? 0 : time->ticks;
}

class Queries : public MailboxHost {
protected:
    void SetUp() override {
        MailboxHost::SetUp();
        store = AddMailbox(u"Mail", SampleFile());
        folders = FoldersOf(u"Mail", store);
    }

    Value UriOf(const std::string& path) { return FolderUri(u"Mail", folders.at(path)); }
    std::u16string StoreId() const { return Get(store, RecordKind::Store, "si_storeId").String(); }

    Value store;
    std::map<std::string, Value> folders;
};

TEST_F(Queries, FoldersAreThoseOfTheVisibleTreeWithTheirKinds) {
    std::set<std::string> expected = {"/"};
    for (const mailbox_builder::SampleFolder& folder : Sample().Folders()) {
        if (folder.place == mailbox_builder::Place::Visible) {
            expected.insert("/" + Narrow(std::u16string_view(std::u16string(folder.path.begin(), folder.path.end()))));
        }
    }
    std::set<std::string> found;
    for (const auto& [path, folder] : folders) {
        found.insert(path);
    }
    EXPECT_EQ(found, expected);
    EXPECT_EQ(Get(folders.at("/"), RecordKind::Folder, "fi_folderPath"), Value(u"/Sample mailbox"));

    const struct {
        const char* path;
        int kind;
        bool hasChildren;
    } rows[] = {{"/Inbox", 1, true},    {"/Inbox/Newsletters", 1, false},
                {"/Contacts", 2, true}, {"/Calendar", 3, true},
                {"/Tasks", 4, false},   {"/Notes", 5, false},
                {"/Empty", 1, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.path);
        const Value& folder = folders.at(row.path);
        EXPECT_EQ(Get(folder, RecordKind::Folder, "fi_containerType").Integer(), row.kind);
        EXPECT_EQ(Get(folder, RecordKind::Folder, "fi_hasChildren").Boolean(), row.hasChildren);
        EXPECT_EQ(Get(folder, RecordKind::Folder, "fi_storeId"), Get(store, RecordKind::Store, "si_storeId"));
    }
}

TEST_F(Queries, SubfoldersStandBelowThePathThatIsGiven) {
    Value children;
    const Value& inbox = folders.at("/Inbox");
    host->GetSubFolders(u"Mail", StoreId(), Get(inbox, RecordKind::Folder, "fi_folderId").String(), u"Top", children);
    std::set<std::string> found;
    for (const Value& child : children.Elements()) {
        const std::string path = Narrow(Get(child, RecordKind::Folder, "fi_folderPath"));
        found.insert(path.substr(path.find("Top")));
    }
    EXPECT_EQ(found, (std::set<std::string>{"Top/Bridge survey", "Top/Orchard irrigation", "Top/Newsletters",
                                            "Top/Languages"}));
    host->GetSubFolders(u"Mail", StoreId(), u"", u"", children);
    EXPECT_GT(children.Elements().size(), 10U);
}

TEST_F(Queries, SpecialFoldersHaveTheNamesOfTheMailbox) {
    const struct {
        int which;
        const char* name;
    } rows[] = {{0, "Inbox"}, {1, "Sent Items"},  {2, "Deleted Items"},  {3, "Outbox"},          {4, "Drafts"},
                {5, ""},      {6, "Sync Issues"}, {7, "Local Failures"}, {8, "Server Failures"}, {9, "Junk Email"},
                {10, ""}};
    for (const auto& row : rows) {
        std::u16string name;
        host->GetSpecialFolderName(u"Mail", StoreId(), row.which, name);
        EXPECT_EQ(Narrow(std::u16string_view(name)), row.name) << row.which;
    }
}

TEST_F(Queries, GiveEveryFolderPageByPageNewestFirst) {
    for (const auto& [path, folder] : folders) {
        SCOPED_TRACE(path);
        std::set<std::u16string> ids;
        std::size_t pages = 0;
        for (Value page;; ++pages) {
            std::int32_t unsupported = 0;
            host->QueryItems(FolderUri(u"Mail", folder), 0, false, page, unsupported);
            if (page.Elements().empty()) {
                break;
            }
            EXPECT_LE(page.Elements().size(), 30U);
            for (const Value& item : page.Elements()) {
                EXPECT_TRUE(ids.insert(Get(item, RecordKind::Uri, "uri_itemId").String()).second);
                EXPECT_EQ(Get(item, RecordKind::Uri, "uri_type").Integer(), kItemUri);
            }
        }
        EXPECT_GE(pages * 30, ids.size());
    }
}

TEST_F(Queries, SinceATimeGivesWhatIsNewerAndCountsAgree) {
    for (const char* path : {"/Inbox/Newsletters", "/Inbox/Orchard irrigation/Sensor reports", "/Tasks"}) {
        SCOPED_TRACE(path);
        const auto* described = Sample().Find(CStringW(path + 1, path + std::strlen(path)));
        ASSERT_NE(described, nullptr);
        std::vector<std::int64_t> times;
        for (const Message& message : described->messages) {
            times.push_back(ModifiedOf(message));
        }
        std::sort(times.begin(), times.end());
        ASSERT_GT(times.size(), 3U);
        const std::int64_t early = times[times.size() / 3];
        const std::int64_t late = times[times.size() * 2 / 3];
        const auto countIf = [&](auto wanted) { return std::count_if(times.begin(), times.end(), wanted); };

        const auto newer = AllItems(UriOf(path), early);
        EXPECT_EQ(static_cast<std::ptrdiff_t>(newer.size()), countIf([&](std::int64_t time) { return time > early; }));
        for (const Value& item : newer) {
            EXPECT_GT(Get(item, RecordKind::Uri, "uri_modifiedTime").Integer(), early);
        }
        EXPECT_EQ(AllItems(UriOf(path), times.back()).size(), 0U);
        EXPECT_EQ(AllItems(UriOf(path)).size(), times.size()) << "after the filter";

        std::int32_t before = -1;
        std::int32_t in = -1;
        std::int32_t after = -1;
        host->GetChildrenItemsCount(UriOf(path), early, late, false, before, in, after);
        EXPECT_EQ(before, countIf([&](std::int64_t time) { return time < early; }));
        EXPECT_EQ(in, countIf([&](std::int64_t time) { return time >= early && time < late; }));
        EXPECT_EQ(after, countIf([&](std::int64_t time) { return time >= late; }));
        host->GetChildrenItemsCount(UriOf(path), 0, 0, false, before, in, after);
        EXPECT_EQ(in, static_cast<std::int32_t>(times.size()));
    }
}

TEST_F(Queries, StopWhileTheHostWantsIt) {
    const Value uri = UriOf("/Inbox/Newsletters");
    Value page;
    std::int32_t unsupported = 0;
    host->SetAbort(true);
    host->QueryItems(uri, 0, false, page, unsupported);
    EXPECT_EQ(page, Value(Value::Array()));
    host->SetAbort(false);
    host->Disconnect();  // the cursor had moved
    EXPECT_FALSE(AllItems(uri).empty());
}

TEST_F(Queries, FindAnItemByItsUriAfterEverythingWasDisconnected) {
    const std::vector<Value> items = AllItems(UriOf("/Contacts"));
    ASSERT_GT(items.size(), 4U);
    for (const bool filterToItem : {false, true}) {
        host->Disconnect();
        host->ClearFolderCache();
        Value record;
        host->GetItemData(items[items.size() / 2], kPlain, filterToItem, record);
        EXPECT_EQ(Get(record, "contacts_sEID"), Get(items[items.size() / 2], RecordKind::Uri, "uri_itemId"));
    }
    EXPECT_EQ(AllItems(UriOf("/Contacts")).size(), items.size());
}

TEST_F(Queries, BodiesComeInTheFormThatIsAskedFor) {
    std::size_t html = 0;
    std::size_t rtf = 0;
    std::size_t files = 0;
    VisitSample(u"Mail", store, [&](const ItemPlace& item) {
        SCOPED_TRACE(item.where);
        const auto& properties = item.description->properties;
        std::u16string body;
        std::u16string direct;
        host->GetItemBody(item.uri, kNone, false, body);
        EXPECT_TRUE(body.empty());
        const auto* bytes = FindAs<mailbox_builder::Bytes>(properties, PR_HTML);
        const auto* page = FindAs<std::int32_t>(properties, PR_INTERNET_CPID);
        if (bytes != nullptr && page != nullptr && *page == 65001) {
            host->GetItemBody(item.uri, kHtml, false, body);
            EXPECT_EQ(Narrow(std::u16string_view(body)),
                      std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size()));
            ++html;
        }
        if (properties.Find(PR_RTF_COMPRESSED) != nullptr && ItemTypeOf(*item.description) == 1) {
            host->GetItemBody(item.uri, kRtf, false, body);
            EXPECT_TRUE(body.starts_with(u"{\\rtf1")) << Narrow(std::u16string_view(body)).substr(0, 40);
            host->GetItemBody(item.uri, kRtf, direct);
            EXPECT_EQ(body, direct);
            ++rtf;
        }
        if (files < 3) {
            host->GetItemBody(item.uri, kFile, false, body);
            ASSERT_TRUE(body.starts_with(u"File:")) << Narrow(std::u16string_view(body));
            const std::filesystem::path file(body.substr(5));
            std::ifstream stream(file, std::ios::binary);
            char signature[4] = {};
            EXPECT_TRUE(stream.read(signature, 4) && std::string_view(signature, 4) == "\xD0\xCF\x11\xE0");
            stream.close();
            std::filesystem::remove(file);
            ++files;
        }
    });
    EXPECT_GT(html, 5U);
    EXPECT_GT(rtf, 2U);
}

TEST_F(Queries, WhatIsAboveTheLimitsIsLeftOutAndTold) {
    constexpr std::int64_t kLimit = 4000;  // the first setting holds for bodies and for attachments
    host->ReleaseVxMapi();
    host->InitializeVxMapi(u"4000", u"Off");
    std::size_t largeBodies = 0;
    std::size_t largeAttachments = 0;
    VisitSample(u"Mail", store, [&](const ItemPlace& item) {
        SCOPED_TRACE(item.where);
        Value record;
        host->GetItemData(item.uri, kPlain, false, record);
        const int type = static_cast<int>(Get(record, "schemaUID").Integer());
        if (type == 1) {
            const bool isLarge = Get(record, "common_iSize").Integer() >= kLimit;
            EXPECT_EQ(Get(record, "eobj_vx_lErrors").Integer() & 1, isLarge ? 1 : 0);
            EXPECT_TRUE(!isLarge || Get(record, "email_sBody").String().empty());
            largeBodies += isLarge ? 1 : 0;
        }
        Value uris;
        std::int32_t reserved = 0;
        host->QueryAttachments(item.uri, uris, reserved);
        for (const Value& uri : uris.Elements()) {
            if (Get(uri, RecordKind::Uri, "uri_itemType").Integer() != -1) {
                continue;
            }
            Value data;
            host->GetBinaryItemData(uri, kPlain, false, data);
            const std::size_t number = std::stoul(Narrow(Get(uri, RecordKind::Uri, "uri_attachmentNum")));
            const auto* bytes =
                FindAs<mailbox_builder::Bytes>(item.description->attachments.at(number).properties, PR_ATTACH_DATA_BIN);
            if (bytes == nullptr) {
                continue;
            }
            const bool isLarge = static_cast<std::int64_t>(bytes->size()) > kLimit;
            EXPECT_EQ(Get(data, "eobj_vx_lErrors").Integer() & 2, isLarge ? 2 : 0);
            EXPECT_TRUE(!isLarge || Get(data, "attachments_abBinaryBlob").Data().empty());
            largeAttachments += isLarge ? 1 : 0;
        }
    });
    EXPECT_GT(largeBodies, 3U);
    EXPECT_GE(largeAttachments, 3U);
}

}  // namespace
}  // namespace vx_testing
