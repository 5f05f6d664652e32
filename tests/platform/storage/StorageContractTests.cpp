// What Windows publishes and what this implementation promises beyond it, where other implementations differ.
#include "StorageTestSupport.h"

#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace storage_test;

namespace {

class StorageContract : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(StgCreateDocfile(m_name.c_str(), kExclusive, 0, m_root.Put()), S_OK); }
    void Reopen(DWORD mode) {
        m_root.Reset();
        ASSERT_EQ(StgOpenStorage(m_name.c_str(), nullptr, mode, nullptr, 0, m_root.Put()), S_OK);
    }
    Held<IStorage> MakeStorage(const CStringW& name) {
        Held<IStorage> storage;
        EXPECT_EQ(m_root->CreateStorage(name.c_str(), kExclusive, 0, 0, storage.Put()), S_OK);
        return storage;
    }
    Held<IStream> MakeStream(const CStringW& name, DWORD mode = kExclusive) {
        Held<IStream> stream;
        EXPECT_EQ(m_root->CreateStream(name.c_str(), mode, 0, 0, stream.Put()), S_OK);
        return stream;
    }

    TestFolder m_folder;
    CStringW m_name = m_folder.Name("file");
    Held<IStorage> m_root;
};

TEST_F(StorageContract, RefusedCallsAnswerPublishedCodes) {
    MakeStorage("storage"_w);
    AddStream(m_root.Get(), "stream"_w, {1, 2, 3});
    Held<IStorage> storage;
    Held<IStream> stream;
    Held<IEnumSTATSTG> enumerator;
    STATSTG stat = {};
    OLECHAR* noNames[] = {nullptr};
    EXPECT_CODE(m_root->OpenStorage("storage"_w, m_root.Get(), kExclusive, nullptr, 0, storage.Put()),
                STG_E_INVALIDPARAMETER);
    EXPECT_CODE(m_root->OpenStorage("storage"_w, nullptr, kExclusive, noNames, 0, storage.Put()),
                STG_E_INVALIDPARAMETER);
    EXPECT_CODE(m_root->CreateStream("a/b"_w, kExclusive, 0, 0, stream.Put()), STG_E_INVALIDNAME);
    EXPECT_CODE(m_root->CreateStream("a:b"_w, kExclusive, 0, 0, stream.Put()), STG_E_INVALIDNAME);
    EXPECT_CODE(m_root->CreateStream(""_w, kExclusive, 0, 0, stream.Put()), STG_E_INVALIDNAME);
    EXPECT_CODE(m_root->RenameElement("stream"_w, "a\\b"_w), STG_E_INVALIDNAME);
    EXPECT_CODE(m_root->RenameElement("stream"_w, nullptr), STG_E_INVALIDNAME);
    EXPECT_CODE(m_root->CreateStream("c"_w, kExclusive | STGM_CONVERT, 0, 0, stream.Put()), STG_E_INVALIDFLAG);
    EXPECT_CODE(m_root->CreateStream("c"_w, kExclusive | STGM_DELETEONRELEASE, 0, 0, stream.Put()),
                STG_E_INVALIDFUNCTION);
    EXPECT_CODE(m_root->Stat(&stat, 64), STG_E_INVALIDFLAG);
    EXPECT_CODE(m_root->Stat(nullptr, STATFLAG_NONAME), STG_E_INVALIDPOINTER);
    EXPECT_CODE(m_root->Commit(64), STG_E_INVALIDFLAG);
    EXPECT_CODE(m_root->EnumElements(1, nullptr, 0, enumerator.Put()), STG_E_INVALIDPARAMETER);
    EXPECT_CODE(m_root->CopyTo(1, nullptr, nullptr, m_root.Get()), STG_E_INVALIDPOINTER);
    stream = MakeStream("more"_w);
    EXPECT_CODE(stream->LockRegion(Size(0), Size(1), LOCK_WRITE), STG_E_INVALIDFUNCTION);
    EXPECT_CODE(stream->UnlockRegion(Size(0), Size(1), LOCK_WRITE), STG_E_INVALIDFUNCTION);
    ULARGE_INTEGER position = {};
    EXPECT_CODE(stream->Seek(Offset(5), STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_CODE(stream->Seek(Offset(-6), STREAM_SEEK_CUR, &position), STG_E_INVALIDFUNCTION);
    EXPECT_EQ(position.QuadPart, 5U) << "a seek that fails moves nothing";
    EXPECT_CODE(stream->Seek(Offset(INT64_MAX), STREAM_SEEK_CUR, nullptr), STG_E_INVALIDFUNCTION);
    EXPECT_CODE(StgOpenStorage(nullptr, nullptr, kReadOnly, nullptr, 0, storage.Put()), STG_E_INVALIDNAME);
    const WCHAR loneSurrogate[] = {0xD800, 'x', 0};
    EXPECT_CODE(StgOpenStorage(loneSurrogate, nullptr, kReadOnly, nullptr, 0, storage.Put()), STG_E_INVALIDNAME);
    EXPECT_CODE(StgOpenStorage(m_folder.Name("").c_str(), nullptr, kReadOnly, nullptr, 0, storage.Put()),
                STG_E_ACCESSDENIED)
        << "a folder";
    EXPECT_CODE(StgCreateDocfile((m_folder.Name("no folder") + "/file"_w).c_str(), kExclusive, 0, storage.Put()),
                STG_E_PATHNOTFOUND);
    EXPECT_CODE(StgIsStorageILockBytes(nullptr), STG_E_INVALIDPOINTER);
}

TEST_F(StorageContract, WritingOnlyMeansNotReading) {
    AddStream(m_root.Get(), "s"_w, {1});
    Held<IStream> stream;
    ASSERT_EQ(m_root->OpenStream("s"_w, nullptr, STGM_WRITE | STGM_SHARE_EXCLUSIVE, 0, stream.Put()), S_OK);
    std::uint8_t byte = 0;
    EXPECT_CODE(stream->Read(&byte, 1, nullptr), STG_E_ACCESSDENIED);
    EXPECT_CODE(stream->CopyTo(stream.Get(), Size(1), nullptr, nullptr), STG_E_ACCESSDENIED);
    WriteAll(stream.Get(), {2});
    stream.Reset();
    Reopen(STGM_WRITE | STGM_SHARE_EXCLUSIVE);
    EXPECT_CODE(m_root->OpenStream("s"_w, nullptr, kReadOnly, 0, stream.Put()), STG_E_ACCESSDENIED);
    Held<IEnumSTATSTG> enumerator;
    EXPECT_CODE(m_root->EnumElements(0, nullptr, 0, enumerator.Put()), STG_E_ACCESSDENIED);
}

TEST_F(StorageContract, ReadOnlyStoragesRefuseEveryChange) {
    AddStream(m_root.Get(), "s"_w, {1});
    MakeStorage("inner"_w);
    for (const DWORD mode : {kReadOnly, kReadOnly | STGM_TRANSACTED}) {
        Reopen(mode);
        Held<IStorage> target;
        ASSERT_EQ(StgCreateDocfile(m_folder.Name("target").c_str(), kExclusive | STGM_CREATE, 0, target.Put()), S_OK);
        EXPECT_CODE(m_root->SetClass(OleGuid(1)), STG_E_ACCESSDENIED);
        EXPECT_CODE(m_root->SetStateBits(1, 1), STG_E_ACCESSDENIED);
        EXPECT_CODE(m_root->SetElementTimes(nullptr, nullptr, nullptr, nullptr), STG_E_ACCESSDENIED);
        EXPECT_CODE(m_root->RenameElement("s"_w, "t"_w), STG_E_ACCESSDENIED);
        EXPECT_CODE(m_root->MoveElementTo("s"_w, target.Get(), "s"_w, STGMOVE_MOVE), STG_E_ACCESSDENIED);
        EXPECT_CODE(m_root->MoveElementTo("s"_w, target.Get(), "s"_w, STGMOVE_COPY), S_OK);
        EXPECT_CODE(m_root->Commit(STGC_DEFAULT), S_OK);
    }
}

TEST_F(StorageContract, GapsAndRegrownEndsAreZero) {
    // Both within a block and across blocks, for bytes that wait for the commit and for bytes of the file.
    for (const std::size_t unit : {10U, 1000U, 40'000U, 200'000U}) {
        SCOPED_TRACE(unit);
        const CStringW name = "s"_w;
        Held<IStream> stream;
        ASSERT_EQ(m_root->CreateStream(name.c_str(), kExclusive | STGM_CREATE, 0, 0, stream.Put()), S_OK);
        Bytes expected = Pattern(3 * unit, 1);
        WriteAll(stream.Get(), expected);
        const auto shrinkGrowAndLeaveAGap = [&] {
            EXPECT_EQ(stream->SetSize(Size(unit)), S_OK);
            EXPECT_EQ(stream->SetSize(Size(2 * unit)), S_OK);
            EXPECT_EQ(stream->Seek(Offset(static_cast<std::int64_t>(4 * unit)), STREAM_SEEK_SET, nullptr), S_OK);
            WriteAll(stream.Get(), {9});
            expected.resize(unit);
            expected.resize(4 * unit);
            expected.push_back(9);
            EXPECT_TRUE(ReadAll(stream.Get()) == expected);
        };
        shrinkGrowAndLeaveAGap();
        EXPECT_EQ(stream->Seek(Offset(0), STREAM_SEEK_SET, nullptr), S_OK);
        expected = Pattern(4 * unit + 1, 2);
        WriteAll(stream.Get(), expected);
        stream.Reset();
        Reopen(kExclusive);
        ASSERT_EQ(m_root->OpenStream(name.c_str(), nullptr, kExclusive, 0, stream.Put()), S_OK);
        shrinkGrowAndLeaveAGap();
    }
}

TEST_F(StorageContract, StateBitsAndTimesStay) {
    const FILETIME created = {1, 2};
    const FILETIME modified = {3, 4};
    Held<IStorage> storage = MakeStorage("storage"_w);
    STATSTG stat = {};
    EXPECT_EQ(storage->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_NE(stat.ctime.dwHighDateTime, 0U) << "a new storage is stamped";
    EXPECT_EQ(stat.ctime.dwLowDateTime, stat.mtime.dwLowDateTime);
    EXPECT_EQ(storage->SetStateBits(0xABCD, 0xFF00), S_OK);
    AddStream(m_root.Get(), "stream"_w, {});
    EXPECT_CODE(m_root->SetElementTimes("STORAGE"_w, &created, nullptr, nullptr), S_OK);
    EXPECT_CODE(storage->SetElementTimes(nullptr, nullptr, &created, &modified), S_OK);
    EXPECT_CODE(m_root->SetElementTimes("stream"_w, &created, nullptr, &modified), S_OK) << "streams keep none";
    EXPECT_CODE(m_root->SetElementTimes("none"_w, &created, nullptr, nullptr), STG_E_FILENOTFOUND);
    storage.Reset();
    Reopen(kReadOnly);
    ASSERT_EQ(m_root->OpenStorage("storage"_w, nullptr, kReadOnly, nullptr, 0, storage.Put()), S_OK);
    EXPECT_EQ(storage->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(stat.grfStateBits, 0xAB00U);
    EXPECT_EQ(stat.ctime.dwLowDateTime, 1U);
    EXPECT_EQ(stat.ctime.dwHighDateTime, 2U);
    EXPECT_EQ(stat.mtime.dwLowDateTime, 3U);
    EXPECT_EQ(stat.mtime.dwHighDateTime, 4U);
}

TEST_F(StorageContract, NamesDifferByMoreThanCaseInAllScripts) {
    struct Row {
        const char* name;
        WCHAR lower, upper;
        bool same;
    };
    constexpr Row rows[] = {
        {"e with acute", 0xE9, 0xC9, true},
        {"y with diaeresis", 0xFF, 0x178, true},
        {"Polish l", 0x142, 0x141, true},
        {"Greek alpha", 0x3B1, 0x391, true},
        {"Greek final sigma", 0x3C2, 0x3A3, true},
        {"Cyrillic a", 0x430, 0x410, true},
        {"Cyrillic io", 0x451, 0x401, true},
        {"Armenian", 0x561, 0x531, true},
        {"Vietnamese", 0x1EA1, 0x1EA0, true},
        {"wide a", 0xFF41, 0xFF21, true},
        {"division sign, multiplication sign", 0xF7, 0xD7, false},
        {"sharp s", 0xDF, 0x1E9E, false},
        {"Hebrew neighbours", 0x5D0, 0x5D1, false},
        {"halves of a surrogate pair", 0xD800, 0xDC00, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const CStringW lower(3, row.lower);
        const CStringW upper(3, row.upper);
        AddStream(m_root.Get(), lower, {});
        Held<IStream> stream;
        EXPECT_CODE(m_root->CreateStream(upper.c_str(), kExclusive, 0, 0, stream.Put()),
                    row.same ? STG_E_FILEALREADYEXISTS : S_OK);
    }
}

TEST_F(StorageContract, MoveElementToMovesAndCopies) {
    AddStream(m_root.Get(), "stream"_w, Pattern(100'000, 1));
    {
        Held<IStorage> storage = MakeStorage("storage"_w);
        EXPECT_EQ(storage->SetClass(OleGuid(5)), S_OK);
        AddStream(storage.Get(), "inside"_w, {1, 2});
    }
    Held<IStorage> target;
    ASSERT_EQ(StgCreateDocfile(m_folder.Name("target").c_str(), kExclusive, 0, target.Put()), S_OK);
    EXPECT_CODE(m_root->MoveElementTo("none"_w, target.Get(), "x"_w, STGMOVE_MOVE), STG_E_FILENOTFOUND);
    EXPECT_CODE(m_root->MoveElementTo("stream"_w, target.Get(), "x"_w, 7), STG_E_INVALIDFLAG);
    EXPECT_CODE(m_root->MoveElementTo("stream"_w, nullptr, "x"_w, STGMOVE_MOVE), STG_E_INVALIDPOINTER);
    EXPECT_CODE(m_root->MoveElementTo("stream"_w, target.Get(), "copied"_w, STGMOVE_COPY), S_OK);
    EXPECT_CODE(m_root->MoveElementTo("STREAM"_w, target.Get(), "moved"_w, STGMOVE_MOVE), S_OK);
    EXPECT_CODE(m_root->MoveElementTo("storage"_w, target.Get(), "COPIED"_w, STGMOVE_MOVE), STG_E_FILEALREADYEXISTS);
    EXPECT_CODE(m_root->MoveElementTo("storage"_w, m_root.Get(), "renamed"_w, STGMOVE_MOVE), S_OK);
    EXPECT_CODE(m_root->MoveElementTo("renamed"_w, target.Get(), "folder"_w, STGMOVE_MOVE), S_OK);
    const std::map<CStringW, Bytes> expected = {
        {"copied"_w, Pattern(100'000, 1)}, {"moved"_w, Pattern(100'000, 1)}, {"folder/inside"_w, {1, 2}}};
    EXPECT_EQ(Tree(target.Get()), expected);
    EXPECT_EQ(Names(m_root.Get()).size(), 0U);
    Held<IStorage> folder;
    ASSERT_EQ(target->OpenStorage("folder"_w, nullptr, kReadOnly, nullptr, 0, folder.Put()), S_OK);
    CLSID clsid = {};
    EXPECT_EQ(ReadClassStg(folder.Get(), &clsid), S_OK);
    EXPECT_EQ(clsid, OleGuid(5));
    EXPECT_CODE(target->MoveElementTo("folder"_w, m_root.Get(), "x"_w, STGMOVE_COPY), STG_E_ACCESSDENIED)
        << "it is open";
}

TEST_F(StorageContract, CopiesMayGoUpwardsAndSideways) {
    {
        Held<IStorage> inner = MakeStorage("inner"_w);
        AddStream(inner.Get(), "inner2"_w, {1});
        // Copied upwards, this stream takes the place of another element of the tree that is being read.
        AddStream(inner.Get(), "beside"_w, Pattern(100'000, 2));
        Held<IStorage> deep;
        ASSERT_EQ(inner->CreateStorage("beside2"_w, kExclusive, 0, 0, deep.Put()), S_OK);
        AddStream(deep.Get(), "deep"_w, {3});
    }
    AddStream(m_root.Get(), "beside"_w, {9});
    Held<IStorage> inner;
    ASSERT_EQ(m_root->OpenStorage("inner"_w, nullptr, kExclusive, nullptr, 0, inner.Put()), S_OK);
    EXPECT_CODE(inner->CopyTo(0, nullptr, nullptr, m_root.Get()), S_OK);
    inner.Reset();
    const std::map<CStringW, Bytes> expected = {
        {"inner2"_w, {1}},       {"beside"_w, Pattern(100'000, 2)},       {"beside2/deep"_w, {3}},
        {"inner/inner2"_w, {1}}, {"inner/beside"_w, Pattern(100'000, 2)}, {"inner/beside2/deep"_w, {3}}};
    EXPECT_EQ(Tree(m_root.Get()), expected);
}

TEST_F(StorageContract, EnumeratorsEndWithTheirStorage) {
    AddStream(m_root.Get(), "s"_w, {1});
    Held<IEnumSTATSTG> enumerator;
    Held<IEnumSTATSTG> clone;
    ASSERT_EQ(m_root->EnumElements(0, nullptr, 0, enumerator.Put()), S_OK);
    m_root.Reset();
    STATSTG stat = {};
    EXPECT_CODE(enumerator->Next(1, &stat, nullptr), STG_E_REVERTED);
    EXPECT_CODE(enumerator->Skip(1), STG_E_REVERTED);
    EXPECT_CODE(enumerator->Reset(), STG_E_REVERTED);
    EXPECT_CODE(enumerator->Clone(clone.Put()), STG_E_REVERTED);
}

TEST_F(StorageContract, AReleasedRootLetsGoOfItsFile) {
    const Held<IStream> stream = MakeStream("s"_w);
    WriteAll(stream.Get(), Pattern(5000, 1));
    m_root.Reset();
    Reopen(kExclusive);
    Bytes bytes;
    EXPECT_EQ(ReadStream(m_root.Get(), "s"_w, bytes), S_OK) << "though an object of the first root is still held";
    EXPECT_EQ(bytes, Pattern(5000, 1));
}

TEST_F(StorageContract, OpeningsInOtherProcessesCountToo) {
    const auto openInChild = [&](DWORD mode) {
        const pid_t child = fork();
        if (child == 0) {
            IStorage* root = nullptr;
            const HRESULT hr = StgOpenStorage(m_name.c_str(), nullptr, mode, nullptr, 0, &root);
            _exit(hr == S_OK ? 0 : hr == STG_E_SHAREVIOLATION ? 1 : 2);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WEXITSTATUS(status);
    };
    AddStream(m_root.Get(), "s"_w, {1});
    EXPECT_EQ(openInChild(STGM_SHARE_DENY_WRITE), 1);
    Reopen(STGM_SHARE_DENY_WRITE);
    EXPECT_EQ(openInChild(STGM_SHARE_DENY_WRITE), 0);
    EXPECT_EQ(openInChild(kExclusive), 1);
    // The claim stays with the file after it was replaced by a commit.
    Reopen(kExclusive);
    AddStream(m_root.Get(), "t"_w, {1});
    EXPECT_EQ(m_root->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(openInChild(STGM_SHARE_DENY_WRITE), 1);
    m_root.Reset();
    EXPECT_EQ(openInChild(kExclusive), 0);
}

// Between finding a file and claiming it, a commit may put another one in its place.
TEST_F(StorageContract, AnOpeningNeverSlipsInDuringACommit) {
    int done[2] = {};
    ASSERT_EQ(pipe(done), 0);
    const pid_t child = fork();
    if (child == 0) {
        close(done[1]);
        char byte = 0;
        while (true) {
            IStorage* root = nullptr;
            if (StgOpenStorage(m_name.c_str(), nullptr, STGM_SHARE_DENY_WRITE, nullptr, 0, &root)
                != STG_E_SHAREVIOLATION) {
                _exit(1);
            }
            struct pollfd waiting = {done[0], POLLIN | POLLHUP, 0};
            if (poll(&waiting, 1, 0) > 0) {
                _exit(read(done[0], &byte, 1) == 0 ? 0 : 2);
            }
        }
    }
    close(done[0]);
    for (int i = 0; i < 500; ++i) {
        EXPECT_EQ(m_root->SetStateBits(static_cast<DWORD>(i), 0xFFFF), S_OK);
        EXPECT_EQ(m_root->Commit(STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE), S_OK);
    }
    close(done[1]);
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(status, 0);
}

TEST_F(StorageContract, AReplacedFileStaysUntilTheCommit) {
    AddStream(m_root.Get(), "old"_w, {1});
    m_root.Reset();
    const Bytes before = ReadFile(m_folder.Path("file"));
    const DWORD mode = STGM_TRANSACTED | STGM_CREATE | STGM_READWRITE;
    ASSERT_EQ(StgCreateDocfile(m_name.c_str(), mode, 0, m_root.Put()), S_OK);
    AddStream(m_root.Get(), "new"_w, {2});
    m_root.Reset();
    EXPECT_EQ(ReadFile(m_folder.Path("file")), before);
    ASSERT_EQ(StgCreateDocfile(m_name.c_str(), mode, 0, m_root.Put()), S_OK);
    AddStream(m_root.Get(), "new"_w, {2});
    EXPECT_EQ(m_root->Revert(), S_OK);
    EXPECT_EQ(m_root->Commit(STGC_DEFAULT), S_OK);
    Reopen(kReadOnly);
    EXPECT_EQ(Names(m_root.Get()).size(), 0U) << "a commit of nothing still replaces";
}

TEST_F(StorageContract, SizesBeyondTheFormatAreRefused) {
    Held<IStream> a = MakeStream("a"_w);
    EXPECT_CODE(a->SetSize(Size(0x80000001)), STG_E_DOCFILETOOLARGE);
    EXPECT_CODE(a->SetSize(Size(~std::uint64_t{0})), STG_E_DOCFILETOOLARGE);
    EXPECT_EQ(StreamSize(a.Get()), 0U);
    ASSERT_EQ(a->Seek(Offset(0x80000000), STREAM_SEEK_SET, nullptr), S_OK);
    ULONG written = 9;
    EXPECT_CODE(a->Write("x", 1, &written), STG_E_DOCFILETOOLARGE);
    EXPECT_EQ(written, 0U);
    // Each fits, both together do not; nothing is written to find that out.
    Held<IStream> b = MakeStream("b"_w);
    EXPECT_EQ(a->SetSize(Size(0x50000000)), S_OK);
    EXPECT_EQ(b->SetSize(Size(0x50000000)), S_OK);
    EXPECT_CODE(m_root->Commit(STGC_DEFAULT), STG_E_DOCFILETOOLARGE);
    EXPECT_EQ(b->SetSize(Size(100)), S_OK);
    EXPECT_EQ(a->SetSize(Size(100)), S_OK);
    EXPECT_CODE(m_root->Commit(STGC_DEFAULT), S_OK);
}

TEST_F(StorageContract, DepthIsBounded) {
    std::vector<Held<IStorage>> levels;
    levels.push_back(MakeStorage("s"_w));
    HRESULT hr = S_OK;
    while (SUCCEEDED(hr) && levels.size() < 5000) {
        Held<IStorage> inner;
        hr = levels.back()->CreateStorage("s"_w, kExclusive, 0, 0, inner.Put());
        if (SUCCEEDED(hr)) {
            levels.push_back(std::move(inner));
        }
    }
    EXPECT_CODE(hr, STG_E_DOCFILETOOLARGE);
    AddStream(levels.back().Get(), "deepest"_w, {1});
    const std::size_t depth = levels.size();
    while (!levels.empty()) {
        levels.pop_back();
    }
    Reopen(kReadOnly);
    Held<IStorage> level;
    ASSERT_EQ(m_root->OpenStorage("s"_w, nullptr, kReadOnly, nullptr, 0, level.Put()), S_OK);
    levels.push_back(std::move(level));
    for (std::size_t i = 1; i < depth; ++i) {
        ASSERT_EQ(levels.back()->OpenStorage("s"_w, nullptr, kReadOnly, nullptr, 0, level.Put()), S_OK);
        levels.push_back(std::move(level));
    }
    EXPECT_TRUE(HasStream(levels.back().Get(), "deepest"_w)) << "as deep as can be made can be read";
}

std::size_t MemoryInUse() {
    std::ifstream file("/proc/self/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    file >> total >> resident;
    return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

TEST_F(StorageContract, LargeStreamsNeedLittleMemory) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "memory cannot be measured under AddressSanitizer, which keeps what is freed";
#endif
    constexpr std::size_t kPiece = 1'000'000;
    constexpr int kPieces = 150;
    const Bytes piece = Pattern(kPiece, 1);
    const std::size_t before = MemoryInUse();
    std::size_t most = before;
    Held<IStream> stream = MakeStream("s"_w);
    for (int i = 0; i < kPieces; ++i) {
        WriteAll(stream.Get(), piece);
        most = std::max(most, MemoryInUse());
    }
    EXPECT_EQ(m_root->Commit(STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE), S_OK);
    most = std::max(most, MemoryInUse());
    Bytes read(kPiece);
    ASSERT_EQ(stream->Seek(Offset(0), STREAM_SEEK_SET, nullptr), S_OK);
    for (int i = 0; i < kPieces; ++i) {
        ULONG got = 0;
        ASSERT_EQ(stream->Read(read.data(), static_cast<ULONG>(kPiece), &got), S_OK);
        ASSERT_TRUE(read == piece) << i;
        most = std::max(most, MemoryInUse());
    }
    for (int i = kPieces - 1; i >= 0; i -= 7) {
        ULONG got = 0;
        ASSERT_EQ(stream->Seek(Offset(i * static_cast<std::int64_t>(kPiece) + 999), STREAM_SEEK_SET, nullptr), S_OK);
        ASSERT_EQ(stream->Read(read.data(), 1000, &got), S_OK);
        ASSERT_TRUE(std::equal(read.begin(), read.begin() + 1000, piece.begin() + 999)) << i;
    }
    EXPECT_LT(most - before, 16'000'000U);
}

}  // namespace
