// What the writer puts into files and byte arrays, read by others: the strict checker, and the gsf tool where it is
// installed. And what becomes of the old file when writing fails.
#include "StrictChecker.h"
#include "testing/FaultyBytes.h"

#include <array>
#include <csignal>
#include <cstdio>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace storage_test;

namespace {

CStringW Numbered(const char* prefix, std::size_t number) {
    const std::string name = prefix + std::to_string(number);
    return {name.begin(), name.end()};
}

// Trees of every number of siblings up to some full levels, streams around every boundary, storages in storages.
void Fill(IStorage* root, std::size_t siblings) {
    for (std::size_t i = 0; i < siblings; ++i) {
        AddStream(root, Numbered(i % 3 == 0 ? "x" : "Long name ", i),
                  Pattern(i * 37 % 200, static_cast<std::uint32_t>(i)));
    }
    for (const std::size_t size : {4095U, 4096U, 4097U, 65536U, 70'000U}) {
        AddStream(root, Numbered("size ", size), Pattern(size, 1));
    }
    Held<IStorage> a;
    Held<IStorage> b;
    ASSERT_EQ(root->CreateStorage("a"_w, kExclusive, 0, 0, a.Put()), S_OK);
    ASSERT_EQ(a->CreateStorage("b"_w, kExclusive, 0, 0, b.Put()), S_OK);
    AddStream(b.Get(), "\x05SummaryInformation"_w, Pattern(300, 2));
    ASSERT_EQ(root->CreateStorage("empty"_w, kExclusive, 0, 0, b.Put()), S_OK);
}

TEST(WrittenFiles, ObeyEveryRuleOfTheFormat) {
    const TestFolder folder;
    for (std::size_t siblings = 0; siblings < 40; ++siblings) {
        SCOPED_TRACE(siblings);
        Held<IStorage> root;
        ASSERT_EQ(StgCreateDocfile(folder.Name("file").c_str(), kExclusive | STGM_CREATE, 0, root.Put()), S_OK);
        Fill(root.Get(), siblings);
        const auto tree = Tree(root.Get());
        root.Reset();
        EXPECT_EQ(StrictChecker(ReadFile(folder.Path("file"))).Check(), tree);
    }
}

TEST(WrittenFiles, ObeyTheRulesBeyondTheHeadersFatSectors) {
    // 109 FAT sectors fill the header; a DIFAT sector takes 127 more, so the last row needs two.
    const TestFolder folder;
    for (const std::size_t size : {7'130'000U, 7'138'000U, 7'139'000U, 7'200'000U, 15'600'000U}) {
        SCOPED_TRACE(size);
        Held<IStorage> root;
        ASSERT_EQ(StgCreateDocfile(folder.Name("file").c_str(), kExclusive | STGM_CREATE, 0, root.Put()), S_OK);
        AddStream(root.Get(), "s"_w, Pattern(size, 1));
        root.Reset();
        EXPECT_TRUE(StrictChecker(ReadFile(folder.Path("file"))).Check()
                    == (std::map<CStringW, Bytes>{{"s"_w, Pattern(size, 1)}}));
    }
}

TEST(WrittenFiles, OfNothingAreThreeSectors) {
    const TestFolder folder;
    for (const DWORD mode : {kExclusive, kExclusive | STGM_TRANSACTED}) {
        Held<IStorage> root;
        ASSERT_EQ(StgCreateDocfile(folder.Name("file").c_str(), mode | STGM_CREATE, 0, root.Put()), S_OK);
        EXPECT_EQ(std::filesystem::file_size(folder.Path("file")), 1536U) << "already while it is open";
        root.Reset();
        EXPECT_EQ(StrictChecker(ReadFile(folder.Path("file"))).Check().size(), 0U);
    }
}

TEST(WrittenFiles, AreTheImageInAByteArray) {
    const TestFolder folder;
    Held<IStorage> file;
    ASSERT_EQ(StgCreateDocfile(folder.Name("file").c_str(), kExclusive, 0, file.Put()), S_OK);
    Fill(file.Get(), 10);
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 0x40000);  // larger than the image will be
    Held<ILockBytes> bytes;
    ASSERT_EQ(CreateILockBytesOnHGlobal(block, TRUE, bytes.Put()), S_OK);
    Held<IStorage> simple;
    ASSERT_EQ(StgCreateDocfileOnILockBytes(bytes.Get(), kExclusive | STGM_SIMPLE | STGM_CREATE, 0, simple.Put()), S_OK);
    EXPECT_EQ(file->CopyTo(0, nullptr, nullptr, simple.Get()), S_OK);
    EXPECT_EQ(simple->Commit(STGC_DEFAULT), S_OK);
    const auto tree = Tree(file.Get());
    STATSTG stat = {};
    EXPECT_EQ(bytes->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(stat.cbSize.QuadPart, GlobalSize(block));
    const auto* const at = static_cast<const std::uint8_t*>(GlobalLock(block));
    EXPECT_EQ(StrictChecker(Bytes(at, at + GlobalSize(block))).Check(), tree);
    GlobalUnlock(block);
}

TEST(WrittenFiles, AreNotTouchedWithoutChanges) {
    const TestFolder folder;
    const CStringW name = folder.Name("file");
    Held<IStorage> root;
    ASSERT_EQ(StgCreateDocfile(name.c_str(), kExclusive, 0, root.Put()), S_OK);
    AddStream(root.Get(), "s"_w, Pattern(1000, 1));
    root.Reset();
    struct stat before = {};
    struct stat after = {};
    ASSERT_EQ(stat(folder.Path("file").c_str(), &before), 0);
    ASSERT_EQ(StgOpenStorage(name.c_str(), nullptr, kExclusive, nullptr, 0, root.Put()), S_OK);
    Bytes bytes;
    EXPECT_EQ(ReadStream(root.Get(), "s"_w, bytes), S_OK);
    EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
    root.Reset();
    ASSERT_EQ(stat(folder.Path("file").c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    EXPECT_EQ(before.st_mtim.tv_nsec, after.st_mtim.tv_nsec);
}

TEST(WrittenFiles, KeepPermissionsAndLinks) {
    const TestFolder folder;
    Held<IStorage> root;
    ASSERT_EQ(StgCreateDocfile(folder.Name("file").c_str(), kExclusive, 0, root.Put()), S_OK);
    root.Reset();
    std::filesystem::permissions(folder.Path("file"), std::filesystem::perms(0640));
    std::filesystem::create_symlink("file", folder.Path("link"));
    ASSERT_EQ(StgOpenStorage(folder.Name("link").c_str(), nullptr, kExclusive, nullptr, 0, root.Put()), S_OK);
    AddStream(root.Get(), "s"_w, {1});
    root.Reset();
    EXPECT_TRUE(std::filesystem::is_symlink(folder.Path("link")));
    EXPECT_EQ(std::filesystem::status(folder.Path("file")).permissions(), std::filesystem::perms(0640));
    ASSERT_EQ(StgOpenStorage(folder.Name("file").c_str(), nullptr, kReadOnly, nullptr, 0, root.Put()), S_OK);
    EXPECT_TRUE(HasStream(root.Get(), "s"_w));
}

std::size_t FilesIn(const std::filesystem::path& folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

TEST(WrittenFiles, StayWhatTheyWereWhenTheDiskIsFull) {
    const TestFolder folder;
    Held<IStorage> root;
    ASSERT_EQ(StgCreateDocfile(folder.Name("file").c_str(), kExclusive, 0, root.Put()), S_OK);
    AddStream(root.Get(), "old"_w, Pattern(5000, 1));
    root.Reset();
    const Bytes before = ReadFile(folder.Path("file"));
    ASSERT_EQ(
        StgOpenStorage(folder.Name("file").c_str(), nullptr, kExclusive | STGM_TRANSACTED, nullptr, 0, root.Put()),
        S_OK);
    AddStream(root.Get(), "new"_w, Pattern(1'000'000, 2));

    struct rlimit unlimited = {};
    getrlimit(RLIMIT_FSIZE, &unlimited);
    const struct rlimit small = {100'000, unlimited.rlim_max};
    const auto ignored = signal(SIGXFSZ, SIG_IGN);
    setrlimit(RLIMIT_FSIZE, &small);
    EXPECT_CODE(root->Commit(STGC_DEFAULT), STG_E_MEDIUMFULL);
    setrlimit(RLIMIT_FSIZE, &unlimited);
    signal(SIGXFSZ, ignored);

    EXPECT_EQ(ReadFile(folder.Path("file")), before);
    EXPECT_EQ(FilesIn(folder.Path("")), 1U) << "nothing half-written stays behind";
    Bytes bytes;
    EXPECT_EQ(ReadStream(root.Get(), "new"_w, bytes), S_OK);
    EXPECT_TRUE(bytes == Pattern(1'000'000, 2)) << "and nothing of the transaction is lost";
    EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(FilesIn(folder.Path("")), 1U);
    root.Reset();
    EXPECT_EQ(StrictChecker(ReadFile(folder.Path("file"))).Check().size(), 2U);
}

// Where the folder takes no new file, the file itself is written.
TEST(WrittenFiles, AreReplacedInPlaceInAFolderThatMayNotChange) {
    const TestFolder folder;
    Held<IStorage> root;
    ASSERT_EQ(StgCreateDocfile(folder.Name("file").c_str(), kExclusive, 0, root.Put()), S_OK);
    AddStream(root.Get(), "old"_w, Pattern(30'000, 1));
    root.Reset();
    struct stat before = {};
    struct stat after = {};
    ASSERT_EQ(stat(folder.Path("file").c_str(), &before), 0);
    std::filesystem::permissions(folder.Path("file"), std::filesystem::perms(0666));
    std::filesystem::permissions(folder.Path(""), std::filesystem::perms(0555));
    const pid_t child = fork();
    if (child == 0) {
        constexpr uid_t kNobody = 65534;  // rights do not bind the superuser
        IStorage* opened = nullptr;
        const bool bound = geteuid() != 0 || seteuid(kNobody) == 0;
        const HRESULT hr =
            bound ? StgOpenStorage(folder.Name("file").c_str(), nullptr, kExclusive, nullptr, 0, &opened) : E_FAIL;
        if (SUCCEEDED(hr)) {
            AddStream(opened, "a"_w, Pattern(100'000, 2));
        }
        _exit(SUCCEEDED(hr) && opened->Commit(STGC_DEFAULT) == S_OK ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
    std::filesystem::permissions(folder.Path(""), std::filesystem::perms(0755));
    ASSERT_EQ(stat(folder.Path("file").c_str(), &after), 0);
    EXPECT_EQ(before.st_ino, after.st_ino);
    const std::map<CStringW, Bytes> expected = {{"a"_w, Pattern(100'000, 2)}, {"old"_w, Pattern(30'000, 1)}};
    EXPECT_EQ(StrictChecker(ReadFile(folder.Path("file"))).Check(), expected);
}

TEST(WrittenFiles, SurviveAFaultInEveryCallToTheByteArray) {
    const auto prepare = [](IStorage* root) {
        AddStream(root, "before"_w, Pattern(31'000, 1));
        AddStream(root, "small"_w, Pattern(100, 2));
    };
    int failures = 0;
    for (int n = 0; n < 1000; ++n) {
        SCOPED_TRACE(n);
        Held<ILockBytes> memory;
        ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, memory.Put()), S_OK);
        vx_testing::FaultyBytes bytes(memory.Get());
        Held<IStorage> root;
        ASSERT_EQ(StgCreateDocfileOnILockBytes(&bytes, kExclusive | STGM_TRANSACTED, 0, root.Put()), S_OK);
        prepare(root.Get());
        ASSERT_EQ(root->Commit(STGC_DEFAULT), S_OK);
        AddStream(root.Get(), "a"_w, Pattern(300'000, 3));  // everything else moves
        const std::map<CStringW, Bytes> expected = {
            {"before"_w, Pattern(31'000, 1)}, {"small"_w, Pattern(100, 2)}, {"a"_w, Pattern(300'000, 3)}};
        bytes.failAt = n;
        const HRESULT hr = root->Commit(STGC_DEFAULT);
        const bool reached = bytes.failAt < 0;
        bytes.failAt = -1;
        EXPECT_TRUE(SUCCEEDED(hr) || reached);
        failures += FAILED(hr) ? 1 : 0;  // a read that is merely ahead of its need is done again
        EXPECT_EQ(Tree(root.Get()), expected);
        EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
        EXPECT_EQ(Tree(root.Get()), expected);
        root.Reset();
        EXPECT_EQ(bytes.References(), 1U);
        ASSERT_EQ(StgOpenStorageOnILockBytes(memory.Get(), nullptr, kReadOnly, nullptr, 0, root.Put()), S_OK);
        EXPECT_EQ(Tree(root.Get()), expected);
        if (!reached || testing::Test::HasFailure()) {
            break;
        }
    }
    EXPECT_GT(failures, 3);
}

// --- The gsf tool ------------------------------------------------------------------------------------------------------

// What a command prints.
Bytes OutputOf(const std::string& command) {
    Bytes output;
    FILE* const pipe = popen(command.c_str(), "r");
    std::array<std::uint8_t, 65536> buffer = {};
    for (std::size_t got = 0; (got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) {
        output.insert(output.end(), buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(got));
    }
    pclose(pipe);
    return output;
}

TEST(WrittenFiles, AreReadTheSameByGsf) {
    if (OutputOf("command -v gsf").empty()) {
        GTEST_SKIP() << "the gsf tool is not installed (package libgsf-bin)";
    }
    const TestFolder folder;
    Held<IStorage> root;
    ASSERT_EQ(StgCreateDocfile(folder.Name("file").c_str(), kExclusive, 0, root.Put()), S_OK);
    for (const std::size_t size : {0U, 1U, 63U, 64U, 65U, 4095U, 4096U, 4097U, 70'000U, 8'000'000U}) {
        AddStream(root.Get(), Numbered("s", size), Pattern(size, static_cast<std::uint32_t>(size)));
    }
    Held<IStorage> inner;
    ASSERT_EQ(root->CreateStorage("inner"_w, kExclusive, 0, 0, inner.Put()), S_OK);
    const WCHAR umlauts[] = {0xC4, 0xF6, 0xFC, 0};
    AddStream(inner.Get(), umlauts, Pattern(100, 5));
    inner.Reset();
    const auto tree = Tree(root.Get());
    root.Reset();

    const std::string file = folder.Path("file").string();
    const Bytes listing = OutputOf("gsf list '" + file + "'");
    const std::string lines(listing.begin(), listing.end());
    for (const auto& [path, bytes] : tree) {
        const std::string name = std::filesystem::path(path).string();
        SCOPED_TRACE(name);
        char line[128] = {};
        std::snprintf(line, sizeof line, "f %32zu %s\n", bytes.size(), name.c_str());
        EXPECT_NE(lines.find(line), std::string::npos) << lines;
        EXPECT_TRUE(OutputOf("gsf cat '" + file + "' '" + name + "'") == bytes);
    }
}

}  // namespace
