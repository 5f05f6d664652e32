// Profiles, sessions and what goes wrong with the files behind them.
#include "tests/localmapi/library/Client.h"

#include <cstring>
#include <fstream>

namespace vx_testing {

namespace {

using Profiles = Client;

LPTSTR Narrow(const char* text) {
    return reinterpret_cast<LPTSTR>(const_cast<char*>(text));
}

TEST_F(Profiles, LogOnByNameByDefaultAndNotAtAll) {
    ComPtr<IMAPISession> session;
    EXPECT_EQ(MAPILogonEx(0, Narrow("Nobody"), nullptr, MAPI_NEW_SESSION, session.Receive()), MAPI_E_LOGON_FAILED);
    EXPECT_EQ(MAPILogonEx(0, nullptr, nullptr, MAPI_NEW_SESSION | MAPI_USE_DEFAULT, session.Receive()),
              MAPI_E_LOGON_FAILED);
    ASSERT_EQ(MakeProfile("Mine", SampleFile()), S_OK) << lastProblem;
    ComPtr<IProfAdmin> admin;
    ASSERT_EQ(MAPIAdminProfiles(0, admin.Receive()), S_OK);
    ASSERT_EQ(admin->SetDefaultProfile(Narrow("Mine"), 0), S_OK);
    EXPECT_EQ(MAPILogonEx(0, nullptr, nullptr, MAPI_NEW_SESSION | MAPI_USE_DEFAULT, session.Receive()), S_OK);
    EXPECT_EQ(MAPILogonEx(0, reinterpret_cast<LPTSTR>(const_cast<LPWSTR>("mine"_w)), nullptr,
                          MAPI_NEW_SESSION | MAPI_UNICODE, session.Receive()),
              S_OK)
        << "profiles are told apart without regard to case";

    ComPtr<IMAPITable> table;
    ASSERT_EQ(admin->GetProfileTable(0, table.Receive()), S_OK);
    const Rows rows = AllRows(*table, {PR_DISPLAY_NAME_A, PR_DEFAULT_PROFILE});
    ASSERT_EQ(rows->cRows, 1U);
    EXPECT_STREQ(Cell(rows, 0, 0).Value.lpszA, "Mine");
    EXPECT_EQ(Cell(rows, 0, 1).Value.b, 1);

    ASSERT_EQ(session->Logoff(0, 0, 0), S_OK);
    ComPtr<IMAPITable> stores;
    EXPECT_EQ(session->GetMsgStoresTable(0, stores.Receive()), MAPI_E_END_OF_SESSION);
    ComPtr<IMsgServiceAdmin> services;
    EXPECT_EQ(session->AdminServices(0, services.Receive()), MAPI_E_END_OF_SESSION);
    ComPtr<IAddrBook> book;
    EXPECT_EQ(session->OpenAddressBook(0, nullptr, AB_NO_DIALOG, book.Receive()), MAPI_E_END_OF_SESSION);
}

// What a person gets to read who names the wrong file.
TEST_F(Profiles, RefuseFilesThatAreNoMailboxes) {
    const std::filesystem::path text = Folder() / "letter.pst";
    std::ofstream(text) << "Dear reader, this is no mailbox at all.";
    struct Case {
        const char* name;
        std::filesystem::path file;
        std::string says;
    };
    const Case cases[] = {
        {"missing", Folder() / "nowhere.pst", "nowhere.pst"},
        {"foreign", text, "letter.pst"},
        {"folder", Folder(), Folder().filename().string()},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        const std::string profile = std::string("Of ") + row.name;
        const HRESULT result = MakeProfile(profile.c_str(), row.file);
        EXPECT_TRUE(FAILED(result));
        EXPECT_NE(lastProblem.find(row.says), std::string::npos) << lastProblem;
    }
}

// The file goes after the profile was made: the store is still listed, and opening it says why it fails.
TEST_F(Profiles, TellWhenAMailboxIsGone) {
    const std::filesystem::path copy = Folder() / "mine.pst";
    std::filesystem::copy_file(SampleFile(), copy);
    ASSERT_EQ(MakeProfile("Mine", copy), S_OK) << lastProblem;
    std::filesystem::remove(copy);
    const auto session = LogOn("Mine");
    ComPtr<IMAPITable> table;
    ASSERT_EQ(session->GetMsgStoresTable(0, table.Receive()), S_OK);
    const Rows rows = AllRows(*table, {PR_ENTRYID, PR_DISPLAY_NAME_W});
    ASSERT_EQ(rows->cRows, 1U);
    EXPECT_EQ(NameOf(rows->aRow[0], 1), "Sample mailbox");
    const SBinary& id = Cell(rows, 0, 0).Value.bin;
    ComPtr<IMsgStore> store;
    const HRESULT opened =
        session->OpenMsgStore(0, id.cb, reinterpret_cast<LPENTRYID>(id.lpb), nullptr, MDB_WRITE, store.Receive());
    EXPECT_EQ(opened, MAPI_E_NOT_FOUND);
    MAPIERROR* error = nullptr;
    ASSERT_EQ(session->GetLastError(opened, 0, &error), S_OK);
    const Buffer<MAPIERROR> hold(error);
    ASSERT_NE(error, nullptr);
    EXPECT_NE(std::string(reinterpret_cast<const char*>(error->lpszError)).find("mine.pst"), std::string::npos)
        << reinterpret_cast<const char*>(error->lpszError);
}

TEST_F(Profiles, HoldSeveralStoresOneOfThemTheDefault) {
    const std::filesystem::path second = Folder() / "second.pst";
    mailbox_builder::WriterOptions options;
    options.displayName = "Second"_w;
    options.key[0] = std::byte{0x77};
    ASSERT_TRUE(mailbox_builder::WriteSampleMailbox(second, options));
    ASSERT_EQ(MakeProfile("Both", SampleFile()), S_OK) << lastProblem;
    const auto session = LogOn("Both");
    ComPtr<IMsgServiceAdmin> services;
    ASSERT_EQ(session->AdminServices(0, services.Receive()), S_OK);
    std::string problem;
    ASSERT_EQ(AddStore(*services, second, problem), S_OK) << problem;

    auto list = [&] {
        ComPtr<IMAPITable> table;
        EXPECT_EQ(session->GetMsgStoresTable(0, table.Receive()), S_OK);
        return AllRows(*table, {PR_DISPLAY_NAME_W, PR_DEFAULT_STORE, PR_ENTRYID});
    };
    Rows rows = list();
    ASSERT_EQ(rows->cRows, 2U);
    EXPECT_EQ(Cell(rows, 0, 1).Value.b, 1);
    EXPECT_EQ(Cell(rows, 1, 1).Value.b, 0);
    const SBinary& id = Cell(rows, 1, 2).Value.bin;
    ASSERT_EQ(session->SetDefaultStore(MAPI_DEFAULT_STORE, id.cb, reinterpret_cast<LPENTRYID>(id.lpb)), S_OK);
    rows = list();
    ASSERT_EQ(rows->cRows, 2U);
    EXPECT_EQ(Cell(rows, 0, 1).Value.b + Cell(rows, 1, 1).Value.b, 1);
    EXPECT_EQ(Cell(rows, 1, 1).Value.b, 1);
}

TEST_F(Profiles, SectionsKeepWhatIsSetAtOnce) {
    ASSERT_EQ(MakeProfile("Mine", SampleFile()), S_OK) << lastProblem;
    static constexpr MAPIUID kGlobal = {
        {0x13, 0xDB, 0xB0, 0xC8, 0xAA, 0x05, 0x10, 0x1A, 0x9B, 0xB0, 0x00, 0xAA, 0x00, 0x2F, 0xC4, 0x5A}};
    auto* uid = const_cast<LPMAPIUID>(&kGlobal);
    {
        const auto session = LogOn("Mine");
        ComPtr<IProfSect> section;
        ASSERT_EQ(session->OpenProfileSection(uid, nullptr, MAPI_MODIFY, section.Receive()), S_OK);
        SPropValue flags{};
        flags.ulPropTag = PROP_TAG(PT_LONG, 0x6601);
        flags.Value.l = 0x580;
        ASSERT_EQ(section->SetProps(1, &flags, nullptr), S_OK);
    }
    const auto session = LogOn("Mine");
    ComPtr<IProfSect> section;
    ASSERT_EQ(session->OpenProfileSection(uid, nullptr, 0, section.Receive()), S_OK);
    SPropValue* flags = nullptr;
    ASSERT_EQ(HrGetOneProp(section.Get(), PROP_TAG(PT_LONG, 0x6601), &flags), S_OK);
    const Buffer<SPropValue> hold(flags);
    EXPECT_EQ(flags->Value.l, 0x580);
}

using AddressBook = Client;

TEST_F(AddressBook, KnowsRecipientsThatSayThemselvesWhoTheyAre) {
    ASSERT_EQ(MakeProfile("Mine", SampleFile()), S_OK) << lastProblem;
    const auto session = LogOn("Mine");
    ComPtr<IAddrBook> book;
    ASSERT_EQ(session->OpenAddressBook(0, nullptr, AB_NO_DIALOG, book.Receive()), S_OK);
    ULONG size = 0;
    LPENTRYID id = nullptr;
    ASSERT_EQ(
        book->CreateOneOff(reinterpret_cast<LPTSTR>(const_cast<LPWSTR>("Ada"_w)),
                           reinterpret_cast<LPTSTR>(const_cast<LPWSTR>("SMTP"_w)),
                           reinterpret_cast<LPTSTR>(const_cast<LPWSTR>("ada@example.com"_w)), MAPI_UNICODE, &size, &id),
        S_OK);
    const Buffer<ENTRYID> hold(id);
    // [MS-OXCDATA] 2.2.5.1: 24 bytes, then three texts of 4, 5 and 16 units with their terminators.
    EXPECT_EQ(size, 24U + 2 * (4 + 5 + 16));
    ULONG type = 0;
    IUnknown* opened = nullptr;
    ASSERT_EQ(session->OpenEntry(size, id, &IID_IMailUser, 0, &type, &opened), S_OK);
    const auto user = ComPtr<IMailUser>::Adopt(static_cast<IMailUser*>(opened));
    EXPECT_EQ(type, static_cast<ULONG>(MAPI_MAILUSER));
    SPropValue* address = nullptr;
    ASSERT_EQ(HrGetOneProp(user.Get(), PR_SMTP_ADDRESS_W, &address), S_OK);
    const Buffer<SPropValue> holdAddress(address);
    EXPECT_EQ(Utf8(address->Value.lpszW), "ada@example.com");

    IUnknown* root = nullptr;
    ASSERT_EQ(book->OpenEntry(0, nullptr, &IID_IABContainer, 0, &type, &root), S_OK);
    const auto container = ComPtr<IABContainer>::Adopt(static_cast<IABContainer*>(root));
    ComPtr<IMAPITable> table;
    ASSERT_EQ(container->GetHierarchyTable(MAPI_UNICODE, table.Receive()), S_OK);
    EXPECT_EQ(AllRows(*table, {PR_DISPLAY_TYPE, PR_ENTRYID, PR_DISPLAY_NAME_W})->cRows, 0U);
}

}  // namespace

}  // namespace vx_testing
