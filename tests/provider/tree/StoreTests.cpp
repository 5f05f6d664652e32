#include "provider/BusyPause.h"
#include "provider/StoreAndFolder/VxOutlookFolder.h"
#include "provider/StoreAndFolder/VxOutlookStore.h"
#include "tests/provider/tree/TreeTestSupport.h"

namespace {

using namespace scripted_mapi;

// A store "Mail" with the id 0A, and below its root (0AFF): In (F1) with Deep (F2) with Deeper (F3), and Out (F4).
class StoreTest : public TreeTest {
protected:
    StoreTest() {
        model = AddStore(*mapi.profiles.front(), "Mail", {0x0A}, kPersonalFoldersStore);
        in = AddFolder(*model->root, "In", "IPF.Note", {0xF1});
        deep = AddFolder(*in, "Deep", "IPF.Contact", {0xF2});
        AddFolder(*deep, "Deeper", "IPF.Task", {0xF3});
        AddFolder(*model->root, "Out", "", {0xF4});
    }

    CVxOutlookStore& Mail() { return Store("0A"); }

    Words Paths() {
        std::vector<CVxMAPIFolder> folders;
        Mail().GetFolderList(folders);
        Words paths;
        for (const CVxMAPIFolder& folder : folders) {
            paths.push_back(Ascii(folder.path));
        }
        return paths;
    }

    std::shared_ptr<StoreModel> model;
    std::shared_ptr<FolderModel> in;
    std::shared_ptr<FolderModel> deep;
};

TEST_F(StoreTest, LoadsTheTreeDepthFirstByTheseCallsAndClosesTheStore) {
    CVxOutlookStore& store = Mail();
    mapi.script.TakeCalls();
    EXPECT_TRUE(store.EnsureConnected());
    const std::string columns = "[3001001F,0FFF0102,66700102,6707001F,360A000B,0FF90102,30080040,3613001F,0E090102]";
    const std::string setColumns = "IMAPITable::SetColumns(" + columns + ",00000000)";
    const Words table = {"IMAPIFolder::GetHierarchyTable(80000000)", setColumns, "IMAPITable::QueryRows(25,00000000)"};
    Words expected = {"IMAPISession::OpenMsgStore(0,0A,null,00000084)", "HrGetOneProp(35E00102)",
                      "IMsgStore::OpenEntry(0AFF,IMAPIFolder,00000010)",
                      "IMAPIFolder::GetProps(" + columns + ",80000000)"};
    const auto add = [&](const Words& words) { expected.insert(expected.end(), words.begin(), words.end()); };
    add(table);
    add({"IMAPIFolder::OpenEntry(F1,IMAPIFolder,00000010)"});
    add(table);
    add({"IMAPIFolder::OpenEntry(F2,IMAPIFolder,00000010)"});
    add(table);
    add({"IMAPITable::QueryRows(25,00000000)", "IMAPITable::QueryRows(25,00000000)",
         "IMAPITable::QueryRows(25,00000000)"});
    EXPECT_EQ(mapi.script.TakeCalls(), expected);
    EXPECT_FALSE(store.IsMapiConnected());
    EXPECT_EQ(Paths(), (Words{"/Mail", "Mail//In", "Mail//In/Deep", "Mail//In/Deep/Deeper", "Mail//Out"}));
    EXPECT_EQ(store.GetFolder("F2"_w)->GetContainerClass(), eVxFolderContact);
    EXPECT_EQ(store.GetFolder("F4"_w)->GetContainerClass(), eVxFolderUnknown);
    EXPECT_TRUE(store.GetFolder(1)->GetHasSubFolders());
    EXPECT_EQ(store.GetFolder(5), nullptr);
    EXPECT_EQ(store.GetFolder("F9"_w), nullptr);
    EXPECT_TRUE(IsLogged("folderId F9 not found in Store 0A"));
    EXPECT_EQ(mapi.script.TakeCalls(), Words{});  // all of it from memory
}

TEST_F(StoreTest, StartsAtTheTreeOfItsKind) {
    const auto publicStore = AddStore(*mapi.profiles.front(), "Public", {0x0B}, kExchangePublicStore);
    publicStore->properties.Set(Binary(PR_IPM_PUBLIC_FOLDERS_ENTRYID, {0xF5}));
    AddFolder(*AddFolder(*publicStore->root, "All", "IPF.Note", {0xF5}), "News", "IPF.Note", {0xF6});
    EXPECT_EQ(Store("0B").GetAllFolderCount(), 2u);
    std::vector<CVxMAPIFolder> folders;
    EXPECT_TRUE(Store("0B").GetSubFolders(CStringW(), "/"_w, folders));
    ASSERT_EQ(folders.size(), 1u);
    EXPECT_EQ(folders[0].path, "Public//News"_w);
    EXPECT_EQ(mapi.script.Count("HrGetOneProp(66310102)"), 2);
}

TEST_F(StoreTest, ReadsARowAsFarAsItGoes) {
    in->properties.Set(Binary(PR_LONGTERM_ENTRYID_FROM_TABLE, {0xE1}));
    in->properties.Set(Time(PR_LAST_MODIFICATION_TIME, 0x100000002));
    deep->properties.Set(Failing(PR_DISPLAY_NAME_W)).Set(Failing(PR_LAST_MODIFICATION_TIME));
    deep->properties.Set(Failing(PR_CONTAINER_CLASS_W));
    const auto outClass = AsItIs(Number(PROP_TAG(PT_LONG, PROP_ID(PR_CONTAINER_CLASS_W)), 7));
    model->root->folders[1]->properties.Set(outClass);  // a number where a text is asked for
    model->root->folders[1]->properties.Set(AsItIs(Number(PROP_TAG(PT_LONG, PROP_ID(PR_DISPLAY_NAME_W)), 7)));
    model->root->folders[1]->properties.Set(AsItIs(Flag(PROP_TAG(PT_BOOLEAN, PROP_ID(PR_PARENT_ENTRYID)), true)));
    const CVxOutlookFolder* found = Mail().GetFolder("E1"_w);
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(found->GetLastModified().dwLowDateTime, 2u);
    EXPECT_EQ(found->GetLastModified().dwHighDateTime, 1u);
    EXPECT_EQ(Mail().GetCachedFolder("F1"_w), nullptr);
    const CVxOutlookFolder* bare = Mail().GetFolder("F2"_w);
    ASSERT_NE(bare, nullptr);
    EXPECT_EQ(bare->GetName(), CStringW());
    EXPECT_EQ(bare->GetContainerClass(), eVxFolderUnknown);
    EXPECT_EQ(LogLines({"folder type"}), Words{});
    ASSERT_NE(Mail().GetFolder("F4"_w), nullptr);
    EXPECT_EQ(Mail().GetFolder("F4"_w)->GetFullPath(), "/"_w);
}

TEST_F(StoreTest, ASecondFolderWithAnIdIsDroppedWithAllBeneathIt) {
    AddFolder(*AddFolder(*model->root, "Twin", "IPF.Note", {0xF1}), "Lost", "IPF.Note", {0xF7});
    EXPECT_EQ(Mail().GetAllFolderCount(), 5u);
    EXPECT_TRUE(IsLogged("Folder already exists: Twin"));
    EXPECT_EQ(Mail().GetCachedFolder("F7"_w), nullptr);
}

TEST_F(StoreTest, ReadsManyFoldersAPageAtATimeAndDeepTreesToTheirEnd) {
    for (int i = 0; i < 60; ++i) {
        AddFolder(*deep, "Sub", "IPF.Note", {0xC0, static_cast<BYTE>(i)});
    }
    std::shared_ptr<FolderModel> last = deep;
    for (int i = 0; i < 1000; ++i) {
        last = AddFolder(*last, "x", "IPF.Note", {0xD0, static_cast<BYTE>(i >> 8), static_cast<BYTE>(i)});
    }
    EXPECT_EQ(Mail().GetAllFolderCount(), 1065u);
    EXPECT_EQ(Mail().GetFolder("D003E7"_w)->GetFullPath().size(), std::size_t{8 + 1000 * 2});
}

TEST_F(StoreTest, FailsToLoadAtEachStepOnceAndIsThenTakenAsItIs) {
    const struct {
        FailureRow failure;
        HRESULT lastError;
        bool wasConnect;  // MapiConnect itself
        std::size_t folders;
    } rows[] = {
        {{"open", "IMAPISession::OpenMsgStore", MAPI_E_LOGON_FAILED, "CVxMapi::OpenMsgStore for Mail failed."},
         MAPI_E_LOGON_FAILED,
         true,
         0},
        {{"no store", "IMAPISession::OpenMsgStore", S_OK, "Store is Mail"}, E_FAIL, true, 0},
        {{"root's id", "HrGetOneProp", MAPI_E_NOT_FOUND, "unable to get IPM root folder (8004010f)"}, S_OK, false, 0},
        {{"root", "IMsgStore::OpenEntry", MAPI_E_NO_ACCESS, "OpenEntry failed (80070005)"}, MAPI_E_NO_ACCESS, false, 0},
        {{"table", "IMAPIFolder::GetHierarchyTable", E_FAIL, "TraverseFolder failed case GetHierarchyTable (80004005)"},
         E_FAIL,
         false,
         1},
        {{"columns", "IMAPITable::SetColumns([3001001F,0FFF0102", E_FAIL,
          "TraverseFolder failed case SetColumns (80004005)"},
         E_FAIL,
         false,
         1},
        {{"rows", "IMAPITable::QueryRows", E_FAIL, "QueryRows hr=-2147467259"}, E_FAIL, false, 1},
        {{"later rows", "IMAPITable::QueryRows", E_FAIL, "Traversing Folder Tree...", 4}, S_OK, false, 5},
        {{"a folder", "IMAPIFolder::OpenEntry(F1", MAPI_E_NO_ACCESS, "Traversing Folder Tree..."},
         MAPI_E_NO_ACCESS,
         false,
         3},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.failure.name);
        domain.reset();
        Profile().EnsureConnected();
        mapi.script.ForgetOrders();
        Order(mapi.script, row.failure);
        ForgetLog();
        CVxOutlookStore& store = Mail();
        EXPECT_FALSE(store.EnsureConnected());
        EXPECT_TRUE(store.HasErrors(VxErrorConnect));
        EXPECT_EQ(store.GetLastConnectError(), row.lastError);
        EXPECT_TRUE(IsLogged(row.failure.logged));
        EXPECT_FALSE(IsLogged("Added root folder"));
        EXPECT_FALSE(store.IsMapiConnected());
        mapi.script.ForgetOrders();
        EXPECT_TRUE(store.EnsureConnected());  // with what there is
        EXPECT_EQ(store.GetAllFolderCount(), row.folders);
        EXPECT_FALSE(store.HasErrors(VxErrorConnect));
        store.ClearFolderCache();
        EXPECT_EQ(store.GetAllFolderCount(), 5u);
    }
}

TEST_F(StoreTest, AFolderWithoutAHierarchyHasNoChildren) {
    mapi.script.FailNth(2, "IMAPIFolder::GetHierarchyTable", MAPI_E_NO_SUPPORT);
    EXPECT_TRUE(Mail().EnsureConnected());
    EXPECT_EQ(Mail().GetLastConnectError(), S_OK);
    EXPECT_EQ(Mail().GetAllFolderCount(), 3u);
}

TEST_F(StoreTest, WaitsForABusyServer) {
    static int waits;
    waits = 0;
    const vx_busy_pause::Override override([](DWORD) { ++waits; });
    CVxOutlookStore& store = Mail();
    mapi.script.FailFirst(3, "IMAPITable::QueryRows", MAPI_E_BUSY);
    mapi.script.FailFirst(2, "IMAPITable::SetColumns", MAPI_E_BUSY);
    EXPECT_TRUE(store.EnsureConnected());
    EXPECT_EQ(waits, 5);
    EXPECT_EQ(store.GetAllFolderCount(), 5u);
}

TEST_F(StoreTest, KeepsItsFoldersOverADisconnectUntilItIsCleared) {
    Mail().EnsureConnected();
    const CVxOutlookFolder* folder = Mail().GetFolder("F3"_w);
    Mail().EnsureDisconnected();
    EXPECT_TRUE(IsLogged("OnDisconnect store Mail (keep data)"));
    EXPECT_EQ(Mail().GetCachedFolder("F3"_w), folder);
    EXPECT_TRUE(Mail().EnsureConnected());
    EXPECT_EQ(mapi.script.Count("IMAPISession::OpenMsgStore"), 1);
    Mail().ClearFolderCache();
    EXPECT_TRUE(IsLogged("Clear store Mail"));
    EXPECT_EQ(Mail().GetCachedFolder("F3"_w), nullptr);
    EXPECT_FALSE(Mail().IsConnected());
    EXPECT_EQ(Mail().GetAllFolderCount(), 5u);
}

TEST_F(StoreTest, LoadsWithAFilterTheWantedFolderAndItsParentsOnly) {
    Mail().SetItemFilter("F3"_w);
    EXPECT_TRUE(Mail().HaveFilter());
    EXPECT_EQ(Paths(), (Words{"/Mail", "Mail//In", "Mail//In/Deep", "Mail//In/Deep/Deeper"}));
    EXPECT_EQ(mapi.script.Count("IMAPIFolder::GetHierarchyTable"), 0);

    // Connected with a filter: another one forgets what was loaded.
    Mail().SetItemFilter("F4"_w);
    EXPECT_FALSE(Mail().IsConnected());
    EXPECT_EQ(Paths(), (Words{"/Mail", "Mail//Out"}));
    Mail().SetItemFilter("F4"_w);
    EXPECT_TRUE(Mail().IsConnected());

    // Not connected: what is there stays, whatever the filter is.
    Mail().EnsureDisconnected();
    Mail().SetItemFilter("F1"_w);
    EXPECT_EQ(Paths(), (Words{"/Mail", "Mail//Out"}));

    Mail().ClearItemFilter();
    EXPECT_EQ(Mail().GetAllFolderCount(), 5u);
    Mail().SetItemFilter("F4"_w);  // the whole tree is there
    EXPECT_FALSE(Mail().HaveFilter());
    EXPECT_TRUE(Mail().IsConnected());
    Mail().ClearItemFilter();
    EXPECT_TRUE(Mail().IsConnected());
}

TEST_F(StoreTest, AFilterForTheRootOrNothingLoadsTheRootOnly) {
    for (const char* id : {"0AFF", ""}) {
        SCOPED_TRACE(id);
        Mail().ClearFolderCache();
        Mail().SetItemFilter(Wide(id));
        EXPECT_EQ(Paths(), Words{"/Mail"});
    }
}

TEST_F(StoreTest, PlacesAFolderWhoseParentsCannotBeHadBelowTheRoot) {
    const auto is = [](const char* name, Value value) { return std::pair(name, std::move(value)); };
    const struct {
        const char* name;
        std::pair<const char*, Value> change;  // of Deep (F2), the parent of what is wanted
        Words paths;
        const char* logged;
    } rows[] = {
        {"its own parent",
         is("F2", Binary(PR_PARENT_ENTRYID, {0xF2})),
         {"/Mail", "Mail//Deeper"},
         "Reached hierarchy root while looking for parent folder. Unsupported case"},
        {"a circle",
         is("F2", Binary(PR_PARENT_ENTRYID, {0xF3})),
         {"/Mail", "Mail//Deep", "Mail//Deep/Deeper"},
         "Reached hierarchy root while looking for parent folder. Unsupported case"},
        {"no name",
         is("F2", Failing(PR_DISPLAY_NAME_W)),
         {"/Mail", "Mail//Deeper"},
         "Item With no name - Unsupported. (F)Eid: F2"},
        {"no parent",
         is("F2", Failing(PR_PARENT_ENTRYID)),
         {"/Mail", "Mail//Deep", "Mail//Deep/Deeper"},
         "Folder without parent tag: eid F2 path  store 0A"},
        {"cannot be opened",
         is("F2", Binary(PR_ENTRYID, {0xEE})),
         {"/Mail", "Mail//Deeper"},
         "OpenEntry failed (8004010f)"},
    };
    const Bag before = deep->properties;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        deep->properties = before;
        deep->properties.Set(row.change.second);
        ForgetLog();
        Mail().ClearFolderCache();
        Mail().SetItemFilter("F3"_w);
        EXPECT_EQ(Paths(), row.paths);
        EXPECT_TRUE(IsLogged(row.logged));
    }
    EXPECT_TRUE(IsLogged("Fail to get parent folder. ParentEID F2"));
    EXPECT_TRUE(IsLogged("current: Folder without parent tag: eid F3 path  store 0A"));
}

TEST_F(StoreTest, GivesDirectChildrenWithoutKeepingThem) {
    std::vector<CVxMAPIFolder> folders(3);
    EXPECT_TRUE(Mail().GetSubFolders("F1"_w, "/In"_w, folders));
    ASSERT_EQ(folders.size(), 1u);
    EXPECT_EQ(folders[0].path, "Mail//In/Deep"_w);
    EXPECT_EQ(folders[0].entryId, "F2"_w);
    EXPECT_EQ(folders[0].storeEntryId, "0A"_w);
    EXPECT_TRUE(folders[0].hasSubFolders);
    EXPECT_FALSE(Mail().IsConnected());
    EXPECT_FALSE(Mail().IsMapiConnected());
    EXPECT_EQ(Mail().GetCachedFolder("F2"_w), nullptr);

    const FailureRow rows[] = {
        {"open", "IMAPISession::OpenMsgStore", E_FAIL, "CVxOutlookProfile::OpenMsgStore for Mail failed."},
        {"folder", "IMsgStore::OpenEntry", E_FAIL, "unable to get root folder (80004005). ID F1"},
        {"table", "IMAPIFolder::GetHierarchyTable", E_FAIL, "TraverseFolder failed case GetHierarchyTable (80004005)"},
    };
    for (const FailureRow& row : rows) {
        SCOPED_TRACE(row.name);
        mapi.script.ForgetOrders();
        Order(mapi.script, row);
        EXPECT_FALSE(Mail().GetSubFolders("F1"_w, "/In"_w, folders));
        EXPECT_TRUE(folders.empty());
        EXPECT_TRUE(IsLogged(row.logged));
        EXPECT_EQ(Mail().HasErrors(VxErrorConnect), std::string(row.name) == "open");
    }
    mapi.script.ForgetOrders();
    mapi.script.Fail("IMsgStore::OpenEntry", S_OK);  // no folder, no failure
    EXPECT_FALSE(Mail().GetSubFolders(CStringW(), "/"_w, folders));
    mapi.script.ForgetOrders();
    EXPECT_FALSE(Mail().GetSubFolders("no id"_w, "/"_w, folders));
    EXPECT_TRUE(Mail().GetSubFolders(CStringW(), "/"_w, folders));
    EXPECT_EQ(folders.size(), 2u);
}

TEST_F(StoreTest, UnwrapsAPersonalStoreAndNoOther) {
    const auto other = AddStore(*mapi.profiles.front(), "Box", {0x0B}, kExchangePrivateStore);
    model->isWrapped = other->isWrapped = true;
    EXPECT_TRUE(Mail().MapiConnect());
    EXPECT_EQ(mapi.script.Count("IProxyStoreObject::UnwrapNoRef"), 1);
    Mail().MapiDisconnect();
    mapi.script.Fail("IProxyStoreObject::UnwrapNoRef", E_FAIL);
    EXPECT_TRUE(Mail().MapiConnect());  // as it is
    EXPECT_NE(Mail().GetMapiStore(), nullptr);
    EXPECT_TRUE(Store("0B").MapiConnect());
    EXPECT_EQ(mapi.script.Count("IProxyStoreObject::UnwrapNoRef"), 2);
}

TEST_F(StoreTest, OpensEntriesAndLeavesTheStoreOpen) {
    BYTE id[] = {0xF4};
    ULONG type = 0;
    IUnknown* folder = nullptr;
    EXPECT_EQ(Mail().OpenEntry(1, reinterpret_cast<ENTRYID*>(id), &IID_IMAPIFolder, 0, &type, &folder), S_OK);
    folder->Release();
    EXPECT_TRUE(Mail().IsMapiConnected());
    id[0] = 0xEE;
    EXPECT_EQ(Mail().OpenEntry(1, reinterpret_cast<ENTRYID*>(id), nullptr, 0, &type, &folder), MAPI_E_NOT_FOUND);
    EXPECT_TRUE(IsLogged("Unable to connect to folder. Mapi Error: (8004010f)"));
    EXPECT_TRUE(IsLogged("error is scripted failure "));
    Mail().MapiDisconnect();
    mapi.script.Fail("IMAPISession::OpenMsgStore", MAPI_E_NETWORK_ERROR);
    EXPECT_EQ(Mail().OpenEntry(1, reinterpret_cast<ENTRYID*>(id), nullptr, 0, &type, &folder), MAPI_E_NETWORK_ERROR);
}

}  // namespace
