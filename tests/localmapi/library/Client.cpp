#include "tests/localmapi/library/Client.h"

#include "platform/Paths.h"
#include "platform/Storage.h"

#include <array>

namespace vx_testing {

namespace {

LPTSTR NarrowArgument(const char* text) {
    return reinterpret_cast<LPTSTR>(const_cast<char*>(text));
}

}  // namespace

void Client::SetUp() {
    m_home.emplace();
    MAPIINIT_0 init{MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
    ASSERT_EQ(MAPIInitialize(&init), S_OK) << "the library was not found";
}

void Client::TearDown() {
    EXPECT_EQ(CountLiveMapi(), (LiveMapi{0, 0}));
    MAPIUninitialize();
    UnloadMAPI();
    m_home.reset();
}

HRESULT Client::AddStore(IMsgServiceAdmin& services, const std::filesystem::path& mailbox, std::string& problem) {
    HRESULT result = services.CreateMsgService(NarrowArgument("MSPST MS"), NarrowArgument("Mail"), 0, 0);
    if (FAILED(result)) {
        return result;
    }
    ComPtr<IMAPITable> table;
    EXPECT_EQ(services.GetMsgServiceTable(0, table.Receive()), S_OK);
    const Rows rows = AllRows(*table, {PR_SERVICE_UID});
    EXPECT_GT(rows->cRows, 0U);
    auto* uid = reinterpret_cast<LPMAPIUID>(rows->aRow[rows->cRows - 1].lpProps[0].Value.bin.lpb);
    const CStringW path = FromPath(mailbox);
    SPropValue value{};
    value.ulPropTag = PR_PST_PATH_W;
    value.Value.lpszW = const_cast<LPWSTR>(path.c_str());
    result = services.ConfigureMsgService(uid, 0, 0, 1, &value);
    MAPIERROR* error = nullptr;
    if (FAILED(result) && services.GetLastError(result, 0, &error) == S_OK && error != nullptr) {
        const Buffer<MAPIERROR> hold(error);
        problem = reinterpret_cast<const char*>(error->lpszError);
    }
    return result;
}

HRESULT Client::MakeProfile(const char* name, const std::filesystem::path& mailbox) {
    ComPtr<IProfAdmin> admin;
    HRESULT result = MAPIAdminProfiles(0, admin.Receive());
    if (SUCCEEDED(result)) {
        result = admin->CreateProfile(NarrowArgument(name), nullptr, 0, 0);
    }
    ComPtr<IMsgServiceAdmin> services;
    if (SUCCEEDED(result)) {
        result = admin->AdminServices(NarrowArgument(name), nullptr, 0, 0, services.Receive());
    }
    return FAILED(result) ? result : AddStore(*services, mailbox, lastProblem);
}

ComPtr<IMAPISession> Client::LogOn(const char* profile) {
    ComPtr<IMAPISession> session;
    EXPECT_EQ(MAPILogonEx(0, NarrowArgument(profile), NarrowArgument(""),
                          MAPI_EXTENDED | MAPI_NEW_SESSION | MAPI_NO_MAIL, session.Receive()),
              S_OK);
    return session;
}

ComPtr<IMsgStore> Client::OpenOnlyStore(IMAPISession& session) {
    ComPtr<IMAPITable> table;
    EXPECT_EQ(session.GetMsgStoresTable(0, table.Receive()), S_OK);
    const Rows rows = AllRows(*table, {PR_ENTRYID});
    EXPECT_EQ(rows->cRows, 1U);
    const SBinary& id = Cell(rows, 0, 0).Value.bin;
    ComPtr<IMsgStore> store;
    EXPECT_EQ(session.OpenMsgStore(0, id.cb, reinterpret_cast<LPENTRYID>(id.lpb), nullptr, MDB_WRITE | MDB_NO_MAIL,
                                   store.Receive()),
              S_OK);
    return store;
}

Rows AllRows(IMAPITable& table, const std::vector<ULONG>& columns) {
    std::vector<ULONG> array = {static_cast<ULONG>(columns.size())};
    array.insert(array.end(), columns.begin(), columns.end());
    SRowSet* rows = nullptr;
    EXPECT_EQ(HrQueryAllRows(&table, reinterpret_cast<LPSPropTagArray>(array.data()), nullptr, nullptr, 0, &rows),
              S_OK);
    return Rows(rows);
}

const SPropValue& Cell(const Rows& rows, ULONG row, ULONG column) {
    return rows->aRow[row].lpProps[column];
}

std::string Utf8(WideView text) {
    const std::u16string units(text.begin(), text.end());
    const std::u8string bytes = std::filesystem::path(units).u8string();
    return std::string(bytes.begin(), bytes.end());
}

std::string NameOf(const SRow& row, ULONG column) {
    const SPropValue& value = row.lpProps[column];
    return PROP_TYPE(value.ulPropTag) == PT_UNICODE ? Utf8(value.Value.lpszW) : std::string();
}

localmapi::Bytes EntryIdOf(IMsgStore& store, std::uint32_t node) {
    SPropValue* key = nullptr;
    EXPECT_EQ(HrGetOneProp(&store, PR_RECORD_KEY, &key), S_OK);
    const Buffer<SPropValue> hold(key);
    localmapi::Bytes id(4);
    const auto* begin = reinterpret_cast<const std::byte*>(key->Value.bin.lpb);
    id.insert(id.end(), begin, begin + key->Value.bin.cb);
    for (int shift = 0; shift < 32; shift += 8) {
        id.push_back(static_cast<std::byte>(node >> shift));
    }
    return id;
}

ComPtr<IMAPIFolder> OpenVisibleTree(IMsgStore& store) {
    SPropValue* value = nullptr;
    EXPECT_EQ(HrGetOneProp(&store, PR_IPM_SUBTREE_ENTRYID, &value), S_OK);
    const Buffer<SPropValue> hold(value);
    return value == nullptr ? nullptr : Open<IMAPIFolder>(store, value->Value.bin);
}

std::string StreamOf(IMAPIProp& object, ULONG tag, HRESULT* result) {
    IUnknown* opened = nullptr;
    const HRESULT found = object.OpenProperty(tag, &IID_IStream, 0, 0, &opened);
    if (result != nullptr) {
        *result = found;
    }
    if (FAILED(found)) {
        return {};
    }
    const auto stream = ComPtr<IStream>::Adopt(static_cast<IStream*>(opened));
    std::string bytes;
    std::array<char, 4000> piece;
    ULONG got = 0;
    while (stream->Read(piece.data(), static_cast<ULONG>(piece.size()), &got) == S_OK && got > 0) {
        bytes.append(piece.data(), got);
    }
    return bytes;
}

void WalkFolders(IMsgStore& store, IMAPIFolder& top, const std::string& path,
                 const std::function<void(const std::string& path, IMAPIFolder& folder)>& visit) {
    ComPtr<IMAPITable> table;
    ASSERT_EQ(top.GetHierarchyTable(MAPI_UNICODE, table.Receive()), S_OK);
    const Rows rows = AllRows(*table, {PR_DISPLAY_NAME_W, PR_ENTRYID, PR_SUBFOLDERS});
    for (ULONG row = 0; row < rows->cRows; ++row) {
        const std::string below = (path.empty() ? "" : path + "/") + NameOf(rows->aRow[row], 0);
        const auto folder = Open<IMAPIFolder>(store, Cell(rows, row, 1).Value.bin);
        ASSERT_TRUE(folder);
        visit(below, *folder);
        WalkFolders(store, *folder, below, visit);
    }
}

}  // namespace vx_testing
