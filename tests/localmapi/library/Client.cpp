#include "tests/localmapi/library/Client.h"

#include "platform/Module.h"
#include "platform/Paths.h"
#include "platform/Process.h"
#include "platform/Storage.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>

namespace vx_testing {

namespace {

void SetVariable(const char* name, const std::string& value) {
#ifdef _WIN32
    _putenv_s(name, value.c_str());
#else
    ::setenv(name, value.c_str(), 1);
#endif
}

std::string Narrow(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

// On Windows the system folder's library is looked for: the test's prefix gets ours there. On Linux $VX_SYSTEM_DIR
// names our folder.
void InstallLibrary() {
#ifdef _WIN32
    std::array<WCHAR, MAX_PATH> folder{};
    ASSERT_NE(GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size())), 0U);
    const std::filesystem::path target = std::filesystem::path(folder.data()) / "mapi32.dll";
    const char* library = std::getenv("VX_TEST_MAPI");
    ASSERT_NE(library, nullptr);
    std::filesystem::copy_file(library, target, std::filesystem::copy_options::overwrite_existing);
#endif
}

using LiveCounts = void STDAPICALLTYPE(LONGLONG* objects, LONGLONG* buffers);

HMODULE LoadedLibrary() {
    return LoadLibraryW("mapi32.dll"_w);
}

LPTSTR NarrowArgument(const char* text) {
    return reinterpret_cast<LPTSTR>(const_cast<char*>(text));
}

}  // namespace

void Client::SetUp() {
    static const bool installed = [] {
        InstallLibrary();
        return true;
    }();
    ASSERT_TRUE(installed);
    const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
    std::string name = "vx-mapi-" + std::to_string(GetCurrentProcessId()) + "-" + test->name();
    std::replace(name.begin(), name.end(), '/', '-');  // of tests with parameters
    m_folder = std::filesystem::temp_directory_path() / name;
    std::filesystem::remove_all(m_folder);
    std::filesystem::create_directories(m_folder);
    SetVariable("VX_HOME", Narrow(m_folder));
    MAPIINIT_0 init{MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
    ASSERT_EQ(MAPIInitialize(&init), S_OK) << "the library was not found";
}

void Client::TearDown() {
    const HMODULE library = LoadedLibrary();
    ASSERT_NE(library, nullptr);
    auto* counts = reinterpret_cast<LiveCounts*>(reinterpret_cast<void*>(GetProcAddress(library, "VxMapiLiveCounts")));
    ASSERT_NE(counts, nullptr) << "another library than ours was loaded";
    LONGLONG objects = -1;
    LONGLONG buffers = -1;
    counts(&objects, &buffers);
    EXPECT_EQ(objects, 0);
    EXPECT_EQ(buffers, 0);
    FreeLibrary(library);
    MAPIUninitialize();
    UnloadMAPI();
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
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

namespace {

// The sample's files, made when they are first asked for; they go with the program. Several programs run at once.
struct SampleFiles {
    SampleFiles()
        : folder(std::filesystem::temp_directory_path() / ("vx-mapi-sample-" + std::to_string(GetCurrentProcessId()))) {
        std::filesystem::remove_all(folder);
        std::filesystem::create_directories(folder);
    }
    ~SampleFiles() {
        std::error_code ignored;
        std::filesystem::remove_all(folder, ignored);
    }

    std::filesystem::path folder;
    mailbox_builder::SampleMailbox sample;
    std::map<mailbox_builder::Form, std::filesystem::path> files;
    std::vector<mailbox_builder::WrittenFolder> written;  // the ids are alike in all forms
};

SampleFiles& Files() {
    static SampleFiles files;
    return files;
}

}  // namespace

const std::filesystem::path& Client::SampleFile(mailbox_builder::Form form) {
    SampleFiles& files = Files();
    std::filesystem::path& path = files.files[form];
    if (path.empty()) {
        path = files.folder / ("sample-" + std::to_string(static_cast<int>(form)) + ".pst");
        mailbox_builder::WriterOptions options;
        options.form = form;
        options.displayName = "Sample mailbox"_w;
        auto writer = mailbox_builder::MailboxWriter::Create(path, options);
        EXPECT_TRUE(writer) << writer.Failure().text;
        auto written = files.sample.AddTo(**writer);
        EXPECT_TRUE(written) << written.Failure().text;
        files.written = *std::move(written);
        EXPECT_TRUE((*writer)->Finish());
    }
    return path;
}

const mailbox_builder::SampleMailbox& Client::Sample() {
    return Files().sample;
}

const std::vector<mailbox_builder::WrittenFolder>& Client::SampleFolders() {
    static_cast<void>(SampleFile());
    return Files().written;
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
