#include "testing/local_mapi/LocalMapi.h"

#include "platform/Module.h"
#include "platform/Paths.h"
#include "platform/Process.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <map>

namespace vx_testing {

namespace {

// On Windows the system folder's library is looked for: the tests' prefix gets ours there. On Linux $VX_SYSTEM_DIR names
// our folder.
bool InstallLibrary() {
#ifdef _WIN32
    std::array<WCHAR, MAX_PATH> folder{};
    const char* library = std::getenv("VX_TEST_MAPI");
    if (library == nullptr || GetSystemDirectoryW(folder.data(), static_cast<UINT>(folder.size())) == 0) {
        return false;
    }
    std::error_code failure;
    std::filesystem::copy_file(library, std::filesystem::path(folder.data()) / "mapi32.dll",
                               std::filesystem::copy_options::overwrite_existing, failure);
    return !failure;
#else
    return true;
#endif
}

// A name for this test's run: several run at once.
std::string RunName() {
    std::string name = "vx-mapi-" + std::to_string(GetCurrentProcessId());
    if (const auto* test = ::testing::UnitTest::GetInstance()->current_test_info()) {
        name += std::string("-") + test->name();
    }
    std::replace(name.begin(), name.end(), '/', '-');  // of tests with parameters
    return name;
}

std::string Utf8Path(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

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

LocalMapiHome::LocalMapiHome() : m_path(std::filesystem::temp_directory_path() / RunName()) {
    static const bool installed = InstallLibrary();
    EXPECT_TRUE(installed) << "the library could not be put into the system folder";
    std::filesystem::remove_all(m_path);
    std::filesystem::create_directories(m_path);
    SetEnvironment("VX_HOME", Utf8Path(m_path));
}

LocalMapiHome::~LocalMapiHome() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

LiveMapi CountLiveMapi() {
    using LiveCounts = void STDAPICALLTYPE(LONGLONG * objects, LONGLONG * buffers);
    LiveMapi live;
    if (const HMODULE library = LoadLibraryW("mapi32.dll"_w)) {
        auto* count =
            reinterpret_cast<LiveCounts*>(reinterpret_cast<void*>(GetProcAddress(library, "VxMapiLiveCounts")));
        if (count != nullptr) {
            count(&live.objects, &live.buffers);
        }
        FreeLibrary(library);
    }
    return live;
}

void SetEnvironment(const char* name, const std::string& value) {
#ifdef _WIN32
    _putenv_s(name, value.c_str());
#else
    ::setenv(name, value.c_str(), 1);
#endif
}

const std::filesystem::path& SampleFile(mailbox_builder::Form form) {
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

const mailbox_builder::SampleMailbox& Sample() {
    return Files().sample;
}

const std::vector<mailbox_builder::WrittenFolder>& SampleFolders() {
    static_cast<void>(SampleFile());
    return Files().written;
}

}  // namespace vx_testing
