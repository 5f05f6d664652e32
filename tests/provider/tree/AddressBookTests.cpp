#include "provider/StoreAndFolder/VxAddressBook.h"
#include "provider/StoreAndFolder/VxOutlookAddrFolder.h"
#include "tests/provider/tree/TreeTestSupport.h"

namespace {

using namespace scripted_mapi;

class AddressBookTest : public TreeTest {
protected:
    AddressBookTest() {
        AddService(*mapi.profiles.front(), "MSEMS", 0x11);
        AddAddressList(*mapi.profiles.front(), "Personal", DT_LOCAL, {0xA0});
        list = AddAddressList(*mapi.profiles.front(), "Everybody", DT_GLOBAL, {0xA1});
        AddAddressList(*mapi.profiles.front(), "Another", DT_GLOBAL, {0xA2});
        for (int i = 0; i < 35; ++i) {
            list->entries.push_back({Binary(PR_ENTRYID, {0xC0, static_cast<BYTE>(i)})});
        }
    }

    CVxAddressBook& Book() { return *dynamic_cast<CVxAddressBook*>(&Store("GAB")); }
    CVxOutlookFolder& Contacts() { return *Book().GetFolder("A1"_w); }

    std::shared_ptr<AddressListModel> list;
};

TEST_F(AddressBookTest, StandsLastAmongTheStoresWithOneFolder) {
    AddStore(*mapi.profiles.front(), "Mail", {0x0A}, kPersonalFoldersStore);
    std::vector<CVxMAPIStore> stores;
    Profile().GetStores(stores);
    ASSERT_EQ(stores.size(), 2u);
    EXPECT_EQ(stores[1].displayName, "Global Address Book"_w);
    EXPECT_EQ(stores[1].entryId, "GAB"_w);
    EXPECT_EQ(stores[1].type, -1);

    std::vector<CVxMAPIFolder> folders;
    EXPECT_TRUE(Book().GetFolderList(folders));
    ASSERT_EQ(folders.size(), 1u);
    EXPECT_EQ(folders[0].path, "Global Address Book/Contacts"_w);
    EXPECT_EQ(folders[0].entryId, "A1"_w);
    EXPECT_EQ(folders[0].containerClass, eVxFolderContact);
    EXPECT_TRUE(Book().GetSubFolders("ignored"_w, "too"_w, folders));  // made once more, and dropped
    EXPECT_EQ(folders.size(), 1u);
    EXPECT_FALSE(Book().IsMapiConnected());
}

TEST_F(AddressBookTest, OpensTheFirstGlobalListByTheseCalls) {
    CVxAddressBook& book = Book();
    mapi.script.TakeCalls();
    EXPECT_TRUE(book.MapiConnect());
    EXPECT_TRUE(book.MapiConnect());
    EXPECT_EQ(mapi.script.TakeCalls(),
              (Words{"IMAPISession::OpenAddressBook(0,null,00000001)",
                     "IAddrBook::OpenEntry(null,IABContainer,00000000)", "IABContainer::GetHierarchyTable(80000000)",
                     "IMAPITable::SetColumns([39000003,0FFF0102,3001001F],00000000)", "IMAPITable::SeekRow(0,0)",
                     "HrQueryAllRows(null,null,null,0)", "IAddrBook::OpenEntry(A1,IABContainer,00000000)"}));
    book.MapiDisconnect();

    const FailureRow rows[] = {
        {"book", "IMAPISession::OpenAddressBook", E_FAIL, "OpenAddressBook failed (80004005)"},
        {"root", "IAddrBook::OpenEntry(null", E_FAIL, "OpenEntry(root container) failed (80004005)"},
        {"table", "IABContainer::GetHierarchyTable", E_FAIL, "GetHierarchyTable failed (80004005)"},
        {"columns", "IMAPITable::SetColumns", E_FAIL, "SetColumns failed (80004005)"},
        {"seek", "IMAPITable::SeekRow", E_FAIL, "SeekRow failed (80004005)"},
        {"rows", "HrQueryAllRows", E_FAIL, "HrQueryAllRows failed (80004005)"},
        {"list", "IAddrBook::OpenEntry(A1", E_FAIL, "OpenEntry(global addr book) failed (80004005)"},
    };
    for (const FailureRow& row : rows) {
        SCOPED_TRACE(row.name);
        mapi.script.ForgetOrders();
        Order(mapi.script, row);
        ForgetLog();
        EXPECT_FALSE(book.EnsureConnected());
        EXPECT_TRUE(IsLogged(row.logged));
        EXPECT_TRUE(IsLogged("CVxMapi::OpenMsgStore for Global Address Book failed."));
        book.ClearFolderCache();
    }
}

TEST_F(AddressBookTest, WithoutAGlobalListIsListedAndFails) {
    for (const auto& each : mapi.profiles.front()->addressLists) {
        each->row.Set(Number(PR_DISPLAY_TYPE, DT_LOCAL));
    }
    list->row.Set(Failing(PR_DISPLAY_TYPE));
    EXPECT_FALSE(Book().EnsureConnected());
    EXPECT_TRUE(IsLogged("Unable to find global address book"));
    EXPECT_EQ(Book().GetAllFolderCount(), 0u);
}

TEST_F(AddressBookTest, GivesContactsThirtyAtATime) {
    CVxOutlookFolder& contacts = Contacts();
    mapi.script.TakeCalls();
    EXPECT_TRUE(contacts.GetItems(false));
    EXPECT_EQ(mapi.script.TakeCalls({"IABContainer", "IMAPITable::SetColumns([0FFF0102]", "IMAPITable::QueryRows"}),
              (Words{"IABContainer::GetHierarchyTable(80000000)", "IABContainer::GetContentsTable(80000000)",
                     "IMAPITable::SetColumns([0FFF0102],00000000)", "IMAPITable::QueryRows(30,00000000)"}));
    EXPECT_EQ(contacts.GetBufferSize(), 30u);
    const CVxItem* first = contacts.GetItem(0);
    EXPECT_EQ(first->GetID(), "C000"_w);
    EXPECT_EQ(first->GetType(), eVxItemContact);
    EXPECT_EQ(first->GetFolder(), &contacts);
    EXPECT_EQ(first->GetStore(), &Book());
    EXPECT_TRUE(contacts.GetItems(true));  // goes on all the same
    EXPECT_EQ(contacts.GetBufferSize(), 5u);
    EXPECT_TRUE(contacts.GetItems(false));
    EXPECT_EQ(contacts.GetBufferSize(), 0u);
    EXPECT_EQ(mapi.script.Count("IABContainer::GetContentsTable"), 0);
}

TEST_F(AddressBookTest, AnEntryWithoutAnIdIsAContactWithAnEmptyOne) {
    list->entries[1].Set(Failing(PR_ENTRYID));
    EXPECT_TRUE(Contacts().GetItems(false));
    EXPECT_EQ(Contacts().GetBufferSize(), 30u);
    EXPECT_EQ(Contacts().GetItem(1)->GetID(), CStringW());
}

TEST_F(AddressBookTest, StopsWhenTheHostAsks) {
    CVxOutlookFolder& contacts = Contacts();
    Domain().SetAbort(true);
    EXPECT_FALSE(contacts.GetItems(false));
    EXPECT_EQ(mapi.script.Count("IABContainer::GetContentsTable"), 0);
    Domain().SetAbort(false);
    items.onMake = [&](FakeItem&) { Domain().SetAbort(items.Live() == 4); };
    EXPECT_FALSE(contacts.GetItems(false));
    EXPECT_EQ(items.Live(), 0);
    EXPECT_EQ(LogLines({"Aborting"}).size(), 2u);
}

TEST_F(AddressBookTest, FailsToReadWithoutWaiting) {
    mapi.script.FailNth(1, "IMAPITable::QueryRows", MAPI_E_BUSY);
    EXPECT_FALSE(Contacts().GetItems(false));
    EXPECT_TRUE(IsLogged("failed QueryRows"));
    EXPECT_TRUE(Contacts().GetItems(false));
    Contacts().EnsureDisconnected();
    mapi.script.FailNth(1, "IMAPITable::SetColumns([0FFF0102]", E_FAIL);
    EXPECT_FALSE(Contacts().GetItems(false));
    EXPECT_TRUE(Contacts().GetItems(false));  // the table stays, with the columns that it has of itself
    Contacts().EnsureDisconnected();
    mapi.script.Fail("IABContainer::GetContentsTable", E_FAIL);
    EXPECT_FALSE(Contacts().GetItems(false));
}

TEST_F(AddressBookTest, CountsTheWholeListWhateverTheTimes) {
    const FILETIME never = {0, 0};
    int before = 9;
    int inRange = 9;
    int after = 9;
    EXPECT_TRUE(Contacts().CalculateNumberOfItems(&never, &never, true, &before, &inRange, &after));
    EXPECT_EQ(inRange, 35);
    EXPECT_EQ(before + after, 0);
    EXPECT_FALSE(Book().IsMapiConnected());
    mapi.script.Fail("IMAPITable::GetRowCount", E_FAIL);
    EXPECT_TRUE(Contacts().CalculateNumberOfItems(&never, &never, true, &before, &inRange, &after));
    EXPECT_EQ(inRange, 0);
    mapi.script.Fail("IABContainer::GetContentsTable", E_FAIL);
    EXPECT_FALSE(Contacts().CalculateNumberOfItems(&never, &never, true, &before, &inRange, &after));
    mapi.script.Fail("IMAPISession::OpenAddressBook", E_FAIL);
    EXPECT_FALSE(Contacts().CalculateNumberOfItems(&never, &never, true, &before, &inRange, &after));
    EXPECT_TRUE(IsLogged("MapiConnect failed for Global Address Book."));
}

TEST_F(AddressBookTest, OpensEntriesOfTheList) {
    BYTE id[] = {0xC0, 0x01};
    ULONG type = 0;
    IUnknown* user = nullptr;
    EXPECT_EQ(Book().OpenEntry(2, reinterpret_cast<ENTRYID*>(id), &IID_IMailUser, 0, &type, &user), S_OK);
    user->Release();
    id[0] = 0;
    EXPECT_EQ(Book().OpenEntry(2, reinterpret_cast<ENTRYID*>(id), &IID_IMailUser, 0, &type, &user), MAPI_E_NOT_FOUND);
    EXPECT_TRUE(IsLogged("Unable to connect to GAB Contacts folder. Mapi Error: (8004010f)"));
    Book().MapiDisconnect();
    mapi.script.Fail("IMAPISession::OpenAddressBook", E_FAIL);
    EXPECT_LT(Book().OpenEntry(2, reinterpret_cast<ENTRYID*>(id), &IID_IMailUser, 0, &type, &user), 0);
}

}  // namespace
