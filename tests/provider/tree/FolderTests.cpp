#include "provider/BusyPause.h"
#include "provider/MessageClass.h"
#include "provider/StoreAndFolder/EnsureMapiConnect.h"
#include "provider/StoreAndFolder/VxOutlookFolder.h"
#include "tests/provider/tree/TreeTestSupport.h"

namespace {

using namespace scripted_mapi;

constexpr char kColumns[] = "[66700102,001A001F,0FF90102,30080040,0E070003,0FFF0102]";

class FolderTest : public TreeTest {
protected:
    FolderTest() {
        const auto store = AddStore(*mapi.profiles.front(), "Mail", {0x0A}, kPersonalFoldersStore);
        model = AddFolder(*store->root, "In", "IPF.Note", {0xF1});
    }

    // Messages at the times 10, 20, ... with the ids 01, 02, ...
    void AddMails(int count) {
        for (int i = 1; i <= count; ++i) {
            AddMessage(*model, "IPM.Note", i * 10, {static_cast<BYTE>(i)});
        }
    }

    CVxOutlookFolder& In() { return *Store("0A").GetFolder("F1"_w); }

    // The ids of the buffer's items, in order.
    Words Buffer() {
        Words ids;
        for (std::size_t i = 0; i < In().GetBufferSize(); ++i) {
            ids.push_back(Ascii(In().GetItem(i)->GetID()));
        }
        return ids;
    }

    static FILETIME At(int ticks) { return {static_cast<DWORD>(ticks), 0}; }

    std::shared_ptr<FolderModel> model;
};

TEST_F(FolderTest, ReadsNewestFirstByTheseCalls) {
    AddMails(3);
    CVxOutlookFolder& folder = In();
    mapi.script.TakeCalls();
    EXPECT_TRUE(folder.GetItems(false));
    EXPECT_EQ(mapi.script.TakeCalls(),
              (Words{"IMAPISession::OpenMsgStore(0,0A,null,00000084)", "IMsgStore::OpenEntry(F1,IMAPIFolder,00000000)",
                     "IMAPIFolder::GetContentsTable(80000000)",
                     std::string("IMAPITable::SetColumns(") + kColumns + ",00000000)",
                     "IMAPITable::SortTable([-30080040],00000000)", "IMAPITable::Restrict(null,00000000)",
                     "IMAPITable::QueryRows(30,00000000)"}));
    EXPECT_EQ(Buffer(), (Words{"03", "02", "01"}));
    EXPECT_EQ(folder.GetItem(3), nullptr);
    EXPECT_TRUE(IsLogged("GetItems useNoCache=false"));

    EXPECT_TRUE(folder.GetItems(true));  // starts from the top, at the server
    EXPECT_EQ(mapi.script.Count("IMsgStore::OpenEntry(F1,IMAPIFolder,00000200)"), 1);
    EXPECT_EQ(Buffer(), (Words{"03", "02", "01"}));
}

TEST_F(FolderTest, StepsAPageAtATimeAndStaysAtTheEnd) {
    AddMails(70);
    Words sizes;
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(In().GetItems(false));
        sizes.push_back(std::to_string(In().GetBufferSize()));
    }
    EXPECT_EQ(sizes, (Words{"30", "30", "10", "0", "0"}));
    EXPECT_EQ(items.Live(), 0);
    EXPECT_EQ(mapi.script.Count("IMAPIFolder::GetContentsTable"), 1);
}

TEST_F(FolderTest, AnEmptyFolderIsReadAndCounted) {
    EXPECT_TRUE(In().GetItems(false));
    EXPECT_EQ(In().GetBufferSize(), 0u);
    EXPECT_EQ(In().GetUnsupportedItemsCount(), 0);
    int before = 7;
    int inRange = 7;
    int after = 7;
    const FILETIME start = At(1);
    const FILETIME end = At(9);
    EXPECT_TRUE(In().CalculateNumberOfItems(&start, &end, false, &before, &inRange, &after));
    EXPECT_EQ(before + inRange + after, 0);
}

TEST_F(FolderTest, GivesAnItemWhatTheRowTells) {
    const auto mail = AddMessage(*model, "ipm.note.smime", 50, {1});
    mail->properties.Set(Number(PR_MESSAGE_FLAGS, MSGFLAG_READ | MSGFLAG_FROMME));
    mail->properties.Set(Binary(PR_LONGTERM_ENTRYID_FROM_TABLE, {0xE1}));
    AddMessage(*model, "IPM.Note", 40, {2})->properties.Set(Number(PR_MESSAGE_FLAGS, MSGFLAG_HASATTACH));
    AddMessage(*model, "IPM.Task", 30, {3})->properties.Set(Number(PR_MESSAGE_FLAGS, MSGFLAG_READ));
    AddMessage(*model, "IPM.Contact", 20, {4})->properties.Remove(PR_LAST_MODIFICATION_TIME);
    EXPECT_TRUE(In().GetItems(false));
    EXPECT_EQ(Buffer(), (Words{"E1", "02", "03", "04"}));
    const int readStates[] = {1, 0, -1, -1};  // told to mails only
    for (std::size_t i = 0; i < 4; ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(In().GetItem(i)->GetReadStatus(), readStates[i]);
        EXPECT_EQ(In().GetItem(i)->GetFolder(), &In());
        EXPECT_EQ(In().GetItem(i)->GetStore(), &Store("0A"));
    }
    EXPECT_EQ(In().GetItem(0)->GetLastModified().dwLowDateTime, 50u);
    EXPECT_EQ(In().GetItem(3)->GetLastModified().dwLowDateTime, 0u);
    EXPECT_TRUE(IsLogged("Item without LastModified. Type eVxItemContact, EID 04 in folder Mail//In"));
}

TEST_F(FolderTest, CountsUnsupportedRowsAndReadsPastPagesOfThem) {
    for (int i = 0; i < 65; ++i) {
        AddMessage(*model, "IPM.Schedule.Meeting.Request", 1000 + i, {0xC0, static_cast<BYTE>(i)});
    }
    AddMails(2);
    AddMessage(*model, "", 5, {0xD0})->properties.Remove(PR_MESSAGE_CLASS_W);
    EXPECT_TRUE(In().GetItems(false));
    EXPECT_EQ(Buffer(), (Words{"02", "01"}));
    EXPECT_EQ(In().GetUnsupportedItemsCount(), 66);
    EXPECT_TRUE(IsLogged("Ignored message of type 'ipm.schedule.meeting.request'"));
    EXPECT_TRUE(IsLogged("Ignored message (no type information)"));
    EXPECT_TRUE(In().GetItems(false));
    EXPECT_EQ(In().GetUnsupportedItemsCount(), 0);
}

TEST(MessageClass, IsKnownWholeOrBeneathAKnownOne) {
    const struct {
        const char* messageClass;
        EVxItemType type;
    } rows[] = {
        {"IPM.Note", eVxItemEmail},
        {"ipm.NOTE", eVxItemEmail},
        {"IPM.Note.SMIME", eVxItemEmail},
        {"IPM.Post", eVxItemEmail},
        {"IPM.Post.Rss", eVxItemEmail},
        {"IPM.Task", eVxItemTask},
        {"ipm.task.x", eVxItemTask},
        {"IPM.Appointment", eVxItemCalendar},
        {"IPM.Appointment.a", eVxItemCalendar},
        {"IPM.Contact", eVxItemContact},
        {"IPM.StickyNote", eVxItemNote},
        {"IPM.Noted", eVxItemUnknown},
        {"IPM.Not", eVxItemUnknown},
        {"", eVxItemUnknown},
        {"IPM.TaskRequest", eVxItemUnknown},
        {"IPM", eVxItemUnknown},
        {"IPM.Schedule.Meeting.Request", eVxItemUnknown},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ItemTypeOfMessageClass(Wide(row.messageClass)), row.type) << row.messageClass;
    }
}

TEST_F(FolderTest, ATimeFilterGivesWhatIsStrictlyNewerOldestFirst) {
    AddMails(4);
    AddMessage(*model, "IPM.Note", 0, {9})->properties.Remove(PR_LAST_MODIFICATION_TIME);
    In().SetItemFilter(At(20));
    mapi.script.TakeCalls();
    EXPECT_TRUE(In().GetItems(false));
    EXPECT_EQ(Buffer(), (Words{"03", "04"}));
    EXPECT_EQ(mapi.script.TakeCalls({"IMAPITable::SortTable", "IMAPITable::Restrict"}),
              (Words{"IMAPITable::SortTable([+30080040],00000000)",
                     "IMAPITable::Restrict(property(3,30080040=20),00000000)"}));

    In().SetItemFilter(At(20));  // the same: table and cursor stay
    EXPECT_TRUE(In().GetItems(false));
    EXPECT_EQ(Buffer(), Words{});
    In().SetItemFilter(At(30));
    EXPECT_TRUE(In().GetItems(false));
    EXPECT_EQ(Buffer(), Words{"04"});
    In().ClearItemFilter();
    EXPECT_TRUE(In().GetItems(false));
    EXPECT_EQ(In().GetBufferSize(), 5u);
}

TEST_F(FolderTest, AnIdFilterGivesTheOneItem) {
    AddMails(40);
    In().SetItemFilter("05"_w);
    const CVxItem* found = In().FindItemByID("05"_w);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(Buffer(), Words{"05"});
    EXPECT_EQ(In().FindItemByID("05"_w), found);
    EXPECT_EQ(mapi.script.Count("IMAPITable::Restrict(or(property(4,66700102=05),property(4,0FFF0102=05)),00000000)"),
              1);
    EXPECT_EQ(mapi.script.Count("IMAPITable::QueryRows(30"), 1);

    EXPECT_EQ(In().FindItemByID("06"_w), nullptr);
    EXPECT_TRUE(IsLogged("itemId 06 not found in buffer Mail//In. Looking for new item..."));
    EXPECT_TRUE(IsLogged("itemId 06 not found in folder Mail//In"));
    In().SetItemFilter("not an id"_w);
    EXPECT_TRUE(In().GetItems(false));
    EXPECT_EQ(Buffer(), Words{});
}

TEST_F(FolderTest, ARestrictionThatFailsIsLoggedAndTheRowsAreLookedAtOneByOne) {
    AddMails(4);
    In().SetItemFilter("02"_w);
    mapi.script.Fail("IMAPITable::Restrict", MAPI_E_NOT_FOUND);
    EXPECT_TRUE(In().GetItems(false));
    EXPECT_EQ(Buffer(), Words{"02"});
    EXPECT_EQ(LogLines({"Item not found EID", "restriction!"}),
              (Words{"DEBUG: Item not found EID: 02", "ERROR: Error in GetItems restriction! (8004010f)"}));
}

TEST_F(FolderTest, StopsBetweenTwoRowsWhenTheHostAsks) {
    AddMails(5);
    int made = 0;
    items.onMake = [&](FakeItem&) { Domain().SetAbort(++made == 3); };
    EXPECT_FALSE(In().GetItems(false));
    EXPECT_EQ(made, 3);
    EXPECT_EQ(In().GetBufferSize(), 0u);
    EXPECT_EQ(LogLines({"Aborting"}), Words{"INFO: GetItems Aborting..."});
    items.onMake = nullptr;
    Domain().SetAbort(false);
    In().EnsureDisconnected();
    EXPECT_TRUE(In().GetItems(false));
    EXPECT_EQ(In().GetBufferSize(), 5u);
}

TEST_F(FolderTest, FailsToReadAtEachStep) {
    AddMails(2);
    const struct {
        FailureRow failure;
        HRESULT lastError;
        bool isConnectError;
    } rows[] = {
        {{"store", "IMAPISession::OpenMsgStore", MAPI_E_NETWORK_ERROR, "Unable to connect to folder: Mail//In"},
         MAPI_E_NETWORK_ERROR,
         true},
        {{"folder", "IMsgStore::OpenEntry(F1", MAPI_E_NO_ACCESS, "Unable to connect to folder: Mail//In"},
         MAPI_E_NO_ACCESS,
         true},
        {{"no folder", "IMsgStore::OpenEntry(F1", S_OK, "MapiConnect failed"}, E_FAIL, true},
        {{"table", "IMAPIFolder::GetContentsTable", E_FAIL, "GetContentsTable failed (80004005) on folder Mail//In"},
         E_FAIL,
         false},
        {{"columns", "IMAPITable::SetColumns", E_FAIL, "SetColumns failed (80004005) on folder Mail//In"},
         E_FAIL,
         false},
        {{"rows", "IMAPITable::QueryRows", E_FAIL, "failed QueryRows"}, S_OK, false},
        {{"a warning for rows", "IMAPITable::QueryRows", MAPI_W_POSITION_CHANGED, "failed QueryRows"}, S_OK, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.failure.name);
        domain.reset();
        mapi.script.ForgetOrders();
        CVxOutlookFolder& folder = In();
        Order(mapi.script, row.failure);
        ForgetLog();
        EXPECT_FALSE(folder.GetItems(false));
        EXPECT_TRUE(IsLogged(row.failure.logged));
        EXPECT_EQ(folder.HasErrors(VxErrorConnect), row.isConnectError);
        EXPECT_EQ(folder.GetLastConnectError(), row.lastError);
        EXPECT_EQ(items.Live(), 0);
        mapi.script.ForgetOrders();
        folder.EnsureDisconnected();
        EXPECT_TRUE(folder.GetItems(false));
        EXPECT_FALSE(folder.HasErrors(VxErrorConnect));
        EXPECT_EQ(folder.GetBufferSize(), 2u);
    }
    mapi.script.Fail("IMAPITable::SortTable", MAPI_E_TOO_COMPLEX);  // not looked at
    In().EnsureDisconnected();
    EXPECT_TRUE(In().GetItems(false));
    EXPECT_EQ(Buffer(), (Words{"01", "02"}));
}

TEST_F(FolderTest, ItemsEndWithTheNextReadAndTheDisconnect) {
    AddMails(40);
    In().GetItems(false);
    EXPECT_EQ(items.Live(), 30);
    In().GetItem(3)->EnsureConnected();
    In().GetItems(false);
    EXPECT_EQ(items.Live(), 10);
    CVxOutlookFolder& folder = In();
    Store("0A").EnsureDisconnected();
    EXPECT_EQ(items.Live(), 0);
    EXPECT_FALSE(folder.IsMapiConnected());
    EXPECT_TRUE(IsLogged("OnDisconnect Folder Mail//In"));
}

TEST_F(FolderTest, CountsAroundATimeRangeWithoutMovingTheCursor) {
    AddMails(10);  // 10, 20, ..., 100
    const struct {
        const char* name;
        int from, to;
        int before, inRange, after;
    } rows[] = {
        {"all", 10, 0, 0, 10, 0},
        {"the end does not count", 20, 40, 1, 2, 7},
        {"between two rows", 41, 49, 4, 0, 6},
        {"before all", 1, 10, 0, 0, 10},
        {"before all, from the beginning of time", 0, 10, 0, 0, 10},
        {"behind all", 101, 200, 10, 0, 0},
        {"the last", 100, 0, 9, 1, 0},
        {"one row", 50, 51, 4, 1, 5},
    };
    EXPECT_TRUE(In().GetItems(false));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const FILETIME start = At(row.from);
        const FILETIME end = At(row.to);
        int before = -1;
        int inRange = -1;
        int after = -1;
        EXPECT_TRUE(In().CalculateNumberOfItems(&start, &end, false, &before, &inRange, &after));
        EXPECT_EQ(before, row.before);
        EXPECT_EQ(inRange, row.inRange);
        EXPECT_EQ(after, row.after);
    }
    EXPECT_TRUE(In().IsMapiConnected());
    EXPECT_TRUE(In().GetItems(false));
    EXPECT_EQ(In().GetBufferSize(), 0u);  // behind the rows of the first read
    EXPECT_TRUE(IsLogged("CalculateNumberOfItems useNoCache=false, nBeforeTmp 4, nInTmp=1, nAfterTmp=5"));
    EXPECT_EQ(mapi.script.Count("IMAPITable::GetRowCount"), 0);
}

TEST_F(FolderTest, CountsByTheseCallsAndClosesWhatItOpened) {
    AddMails(3);
    CVxOutlookFolder& folder = In();
    mapi.script.TakeCalls();
    const FILETIME start = At(20);
    const FILETIME end = At(30);
    int before = 0;
    int inRange = 0;
    int after = 0;
    EXPECT_TRUE(folder.CalculateNumberOfItems(&start, &end, false, &before, &inRange, &after));
    const std::string all = "and(property(3,30080040=0),property(0,30080040=9223372036854775807))";
    const std::string range = "and(property(3,30080040=20),property(0,30080040=30))";
    EXPECT_EQ(mapi.script.TakeCalls({"IMAPITable::SortTable", "IMAPITable::FindRow"}),
              (Words{"IMAPITable::SortTable([+30080040],00000000)", "IMAPITable::FindRow(" + all + ",0,00000000)",
                     "IMAPITable::FindRow(" + all + ",2,00000001)", "IMAPITable::FindRow(" + range + ",0,00000000)",
                     "IMAPITable::FindRow(" + range + ",2,00000001)"}));
    EXPECT_FALSE(folder.IsMapiConnected());
    EXPECT_FALSE(folder.IsConnected());

    const struct {
        FailureRow failure;
        bool isConnectError;
    } rows[] = {
        {{"open", "IMsgStore::OpenEntry(F1", E_FAIL, "CVxOutlookFolder::CalculateNumberOfItems (MapiConnect) failed"},
         true},
        {{"table", "IMAPIFolder::GetContentsTable", E_FAIL,
          "CVxOutlookFolder::CalculateNumberOfItems (OpenContentTable) failed"},
         true},
        {{"find", "IMAPITable::FindRow", E_FAIL, "Clear error 4", 3}, false},
        {{"position", "IMAPITable::QueryPosition", E_FAIL,
          "CalculateNumberOfItems useNoCache=false, nBeforeTmp 0, nInTmp=0, nAfterTmp=0"},
         false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.failure.name);
        mapi.script.ForgetOrders();
        Order(mapi.script, row.failure);
        ForgetLog();
        EXPECT_FALSE(folder.CalculateNumberOfItems(&start, &end, false, &before, &inRange, &after));
        EXPECT_EQ(folder.HasErrors(VxErrorConnect), row.isConnectError);
        EXPECT_TRUE(IsLogged(row.failure.logged));
        EXPECT_FALSE(folder.IsMapiConnected());
    }
}

TEST(ItemsFilters, AreEqualByKindAndWhatItLooksAt) {
    const CItemsFilter none;
    const CItemsFilter id("AB"_w);
    const CItemsFilter time(FILETIME{1, 2});
    EXPECT_TRUE(none == CItemsFilter());
    EXPECT_TRUE(id == CItemsFilter("AB"_w) && id != CItemsFilter("ab"_w));
    EXPECT_TRUE(time == CItemsFilter(FILETIME{1, 2}));
    EXPECT_TRUE(time != CItemsFilter(FILETIME{1, 3}) && time != CItemsFilter(FILETIME{0, 2}));
    EXPECT_TRUE(none != id && id != time && CItemsFilter(CStringW()) != none);
}

TEST(ConnectGuard, ClosesOnlyWhatItOpened) {
    struct Openable {
        bool open = false;
        bool fails = false;
        bool IsMapiConnected() const { return open; }
        bool MapiConnect() { return open = !fails; }
        void MapiDisconnect() { open = false; }
    } object;
    {
        folder_ensure_mapi_connect<Openable> guard(object);
        EXPECT_TRUE(guard.MapiConnect());
        EXPECT_TRUE(object.open);
    }
    EXPECT_FALSE(object.open);
    object.open = true;
    {
        folder_ensure_mapi_connect<Openable> guard(object);
        EXPECT_TRUE(guard.MapiConnect());
        guard.MapiDisconnect();
    }
    EXPECT_TRUE(object.open);
    object = {false, true};
    folder_ensure_mapi_connect<Openable> guard(object);
    EXPECT_FALSE(guard.MapiConnect());
}

}  // namespace
