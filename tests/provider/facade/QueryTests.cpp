// Lists of items and attachments, and counts.
#include "tests/provider/facade/FacadeTestSupport.h"

namespace {

using namespace scripted_mapi;

constexpr std::int64_t kSecond = 10'000'000;
constexpr std::int64_t kEpoch = 116444736000000000;  // 1970 in ticks

class QueryTest : public FacadeTest {
protected:
    // Replaces the mail by `count` others, one a second from 1970 on; ids are 0001, 0002, ...
    void AddMails(int count) {
        inbox->messages.clear();
        for (int i = 1; i <= count; ++i) {
            AddMessage(*inbox, "IPM.Note", kEpoch + i * kSecond, {static_cast<BYTE>(i >> 8), static_cast<BYTE>(i)});
        }
    }

    // The ids of the items that the next page gives.
    Words Ids(std::int64_t modifiedSince = 0) {
        EXPECT_EQ(instance.QueryItems(host.Folder(), modifiedSince, false, &host.value, &host.counts[0]), S_OK);
        Words ids;
        for (const VARIANT& uri : HostValue::ElementsOf(host.value)) {
            ids.push_back(ShowField(uri, "uri_itemId"_field));
        }
        host.Reset();
        return ids;
    }

    std::string Counts(std::int64_t from, std::int64_t to, bool useNoCache = false) {
        LONG* counts = host.counts;
        EXPECT_EQ(
            instance.GetChildrenItemsCount(host.Folder(), from, to, useNoCache, &counts[0], &counts[1], &counts[2]),
            S_OK);
        const std::string changes = host.Changes();
        host.Reset();
        return changes;
    }
};

TEST_F(QueryTest, GivesAFoldersItemsAPageAtATime) {
    AddMails(70);
    Initialize();
    for (const std::size_t expected : {30U, 30U, 10U, 0U, 0U}) {
        const Words ids = Ids();
        EXPECT_EQ(ids.size(), expected);
        EXPECT_TRUE(ids.empty() || ids.front() == (expected == 10 ? "000A" : ids.front())) << ids.front();
    }
    EXPECT_EQ(instance.Disconnect(), S_OK);
    EXPECT_EQ(Ids().front(), "0046");  // from the top, newest first
}

TEST_F(QueryTest, AnItemsUriIsTheFoldersWithTheItemInIt) {
    message->properties.Set(Number(PR_MESSAGE_FLAGS, MSGFLAG_READ));
    AddMessage(*inbox, "IPM.Task", kEpoch + kSecond, {0xE2});
    AddMessage(*inbox, "IPM.Report", kEpoch, {0xE3});
    const Words uris = {"8|Work|0A|F1|E1|-|1|116444736070000000L|yes", "8|Work|0A|F1|E2|-|7|116444736010000000L|no"};
    Initialize();
    const auto listed = [&] {
        EXPECT_EQ(instance.GetFolderItemURIs(host.profile.data(), host.store.data(), host.folder.data(), &host.value),
                  S_OK);
        return TakeList();
    };
    EXPECT_EQ(listed(), Words{});  // nothing has been read yet
    EXPECT_EQ(instance.QueryItems(host.Folder(), 0, false, &host.value, &host.counts[0]), S_OK);
    EXPECT_EQ(host.counts[0], 1);
    EXPECT_EQ(TakeList(), uris);
    EXPECT_EQ(listed(), uris);
    EXPECT_EQ(instance.QueryItems(host.Folder(), kEpoch + kSecond, true, &host.value, &host.counts[0]), S_OK);
    EXPECT_EQ(host.counts[0], 0);
    EXPECT_EQ(TakeList(), Words{uris[0]});
    EXPECT_EQ(mapi.script.Count("IMsgStore::OpenEntry(F1,IMAPIFolder,00000200)"), 1);  // past the cache
    EXPECT_EQ(listed(), Words{});  // another filter: the page is forgotten
}

TEST_F(QueryTest, ATimeIsAFilterUntilItIsLeftOut) {
    AddMails(4);
    Initialize();
    EXPECT_EQ(Ids(kEpoch + 2 * kSecond), (Words{"0003", "0004"}));
    EXPECT_EQ(Ids(kEpoch + 2 * kSecond), Words{});
    EXPECT_EQ(Ids(), (Words{"0004", "0003", "0002", "0001"}));
}

TEST_F(QueryTest, AnAbortStopsReadingUntilTheHostTakesItBack) {
    AddMails(5);
    host.item = "0005"_w;
    Initialize();
    EXPECT_EQ(instance.SetAbort(true), S_OK);
    EXPECT_EQ(Ids(), Words{});
    EXPECT_EQ(Ids(1), Words{});
    EXPECT_EQ(instance.GetItemData(host.Item(), eBodyText, true, &host.value), S_FALSE);
    EXPECT_EQ(TakeLines(), Words{"WARN GetItemData: item NOT found!"});
    host.Reset();
    EXPECT_EQ(instance.Disconnect(), S_OK);
    EXPECT_EQ(Ids(), Words{});  // a new connection does not take it back
    EXPECT_EQ(instance.SetAbort(false), S_OK);
    EXPECT_EQ(Ids(1).size(), 5U);
}

TEST_F(QueryTest, CountsAroundAWindowOfTime) {
    AddMails(10);
    Initialize();
    const auto at = [](int seconds) { return kEpoch + seconds * kSecond; };
    EXPECT_EQ(Counts(at(3), at(5)), "counts=2,2,6");
    EXPECT_EQ(Counts(at(3), 0), "counts=2,8,0");
    EXPECT_EQ(Counts(at(20), at(30)), "counts=10,0,0");
    EXPECT_EQ(mapi.script.Count("IMsgStore::OpenEntry(F1,IMAPIFolder,00000200)"), 0);
    EXPECT_EQ(Counts(at(1), at(2), true), "counts=0,1,9");
    EXPECT_EQ(mapi.script.Count("IMsgStore::OpenEntry(F1,IMAPIFolder,00000200)"), 1);
    LONG* counts = host.counts;  // the type of the URI does not matter
    EXPECT_EQ(instance.GetChildrenItemsCount(host.Uri(0), at(1), 0, false, &counts[0], &counts[1], &counts[2]), S_OK);
    EXPECT_EQ(host.Changes(), "counts=0,10,0");
}

// ---- Attachments ----

class AttachmentQueryTest : public QueryTest {
protected:
    HRESULT Query(VARIANT uri) {
        host.Reset();
        const HRESULT hr = instance.QueryAttachments(uri, &host.value, &host.counts[0]);
        EXPECT_EQ(host.counts[0], 0);
        return hr;
    }
};

TEST_F(AttachmentQueryTest, NamesEachByItsPathAndKind) {
    Attach(ATTACH_OLE, "sheet", "x");
    Attach(ATTACH_BY_REF_ONLY, "elsewhere", "x");
    Embed(*message, "note", "IPM.StickyNote");
    AddAttachment(*inner, ATTACH_BY_VALUE, "deep.txt")->properties.Set(Number(PR_ATTACH_SIZE, 1));
    Embed(*inner, "deeper", "IPM.Contact");
    AddMessage(*inbox, "IPM.Note", kEpoch, {0xE2})->properties.Set(Text(PR_BODY_W, "bare"));
    Initialize();
    const std::string item = "9|Work|0A|F1|E1|";
    EXPECT_EQ(Query(host.Item()), S_OK);
    EXPECT_EQ(TakeList(), (Words{item + "0|-1|0L|no", item + "VxEMBITEM1|1|0L|no", item + "2|-1|0L|no",
                                 item + "VxEMBITEM4|14|0L|no"}));
    EXPECT_EQ(Query(host.Embedded()), S_OK);
    EXPECT_EQ(TakeList(), (Words{item + "VxEMBITEM1/0|-1|0L|no", item + "VxEMBITEM1/VxEMBITEM1|3|0L|no"}));
    EXPECT_EQ(Query(host.Uri(eUriAttachment, "VxEMBITEM1/VxEMBITEM1"_w)), S_OK);
    EXPECT_EQ(TakeList(), Words{});
    host.item = "E2"_w;
    EXPECT_EQ(Query(host.Item()), S_OK);
    EXPECT_EQ(TakeList(), Words{});
    EXPECT_EQ(TakeLines(), Words{});
}

TEST_F(AttachmentQueryTest, AnItemThatDoesNotOpenHasNoList) {
    Initialize();
    mapi.script.Fail("IMsgStore::OpenEntry(E1", MAPI_E_NO_ACCESS);
    EXPECT_EQ(Query(host.Item()), S_FALSE);
    EXPECT_EQ(TakeValue(), "-");
    EXPECT_EQ(TakeLines(), Words{});
}

}  // namespace
