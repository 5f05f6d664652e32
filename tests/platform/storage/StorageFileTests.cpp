// Files: which are compound files, temporary ones, and who may open one beside whom.
#include "StorageTestSupport.h"

using namespace storage_test;

namespace {

TEST(StorageFiles, AreKnownByTheirFirstBytes) {
    const TestFolder folder;
    Held<IStorage> root;
    ASSERT_EQ(StgCreateDocfile(folder.Name("storage").c_str(), kExclusive, 0, root.Put()), S_OK);
    root.Reset();
    WriteFile(folder.Path("text"), Pattern(3000, 1));
    WriteFile(folder.Path("nothing"), {});
    WriteFile(folder.Path("short"), {0xD0, 0xCF, 0x11});
    const struct {
        const char* name;
        HRESULT isStorage, open;
    } rows[] = {
        {"storage", S_OK, S_OK},
        {"text", S_FALSE, STG_E_FILEALREADYEXISTS},
        {"nothing", S_FALSE, STG_E_FILEALREADYEXISTS},
        {"short", S_FALSE, STG_E_FILEALREADYEXISTS},
        {"missing", STG_E_FILENOTFOUND, STG_E_FILENOTFOUND},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const CStringW name = folder.Name(row.name);
        EXPECT_CODE(StgIsStorageFile(name.c_str()), row.isStorage);
        EXPECT_CODE(StgOpenStorage(name.c_str(), nullptr, kReadOnly, nullptr, 0, root.Put()), row.open);
        root.Reset();
    }
    const CStringW nowhere = TestFolder::Wide(folder.Path("no folder") / "file");
    EXPECT_CODE(StgOpenStorage(nowhere.c_str(), nullptr, kReadOnly, nullptr, 0, root.Put()), STG_E_PATHNOTFOUND);
    EXPECT_TRUE(FAILED(StgCreateDocfile(nowhere.c_str(), kExclusive, 0, root.Put())));
}

TEST(StorageFiles, AreReplacedOnlyWithCreate) {
    const TestFolder folder;
    const CStringW name = folder.Name("file");
    Held<IStorage> root;
    ASSERT_EQ(StgCreateDocfile(name.c_str(), kExclusive, 0, root.Put()), S_OK);
    AddStream(root.Get(), "old"_w, {1});
    root.Reset();
    EXPECT_CODE(StgCreateDocfile(name.c_str(), kExclusive, 0, root.Put()), STG_E_FILEALREADYEXISTS);
    EXPECT_CODE(StgCreateDocfile(name.c_str(), kExclusive | STGM_CREATE, 0, root.Put()), S_OK);
    EXPECT_EQ(Names(root.Get()).size(), 0U);
    root.Reset();
    ASSERT_EQ(StgOpenStorage(name.c_str(), nullptr, kReadOnly, nullptr, 0, root.Put()), S_OK);
    EXPECT_EQ(Names(root.Get()).size(), 0U);
}

TEST(StorageFiles, WithoutANameGetOne) {
    Held<IStorage> root;
    STATSTG stat = {};
    ASSERT_EQ(StgCreateDocfile(nullptr, kExclusive | STGM_CREATE | STGM_DELETEONRELEASE, 0, root.Put()), S_OK);
    ASSERT_EQ(root->Stat(&stat, STATFLAG_DEFAULT), S_OK);
    const std::filesystem::path deleted(stat.pwcsName);
    CoTaskMemFree(stat.pwcsName);
    EXPECT_TRUE(std::filesystem::exists(deleted));
    AddStream(root.Get(), "s"_w, Pattern(10'000, 1));
    EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
    root.Reset();
    EXPECT_FALSE(std::filesystem::exists(deleted));

    ASSERT_EQ(StgCreateDocfile(nullptr, kExclusive, 0, root.Put()), S_OK);
    ASSERT_EQ(root->Stat(&stat, STATFLAG_DEFAULT), S_OK);
    const CStringW kept = stat.pwcsName;
    CoTaskMemFree(stat.pwcsName);
    AddStream(root.Get(), "s"_w, {1});
    root.Reset();
    ASSERT_EQ(StgOpenStorage(kept.c_str(), nullptr, kReadOnly, nullptr, 0, root.Put()), S_OK);
    EXPECT_TRUE(HasStream(root.Get(), "s"_w));
    root.Reset();
    EXPECT_TRUE(std::filesystem::remove(kept));
}

TEST(StorageFiles, OpenBesideEachOtherAsTheirModesAllow) {
    constexpr DWORD kReadDenyWrite = STGM_SHARE_DENY_WRITE;
    constexpr DWORD kReadShared = STGM_TRANSACTED | STGM_SHARE_DENY_NONE;
    constexpr DWORD kWriteShared = STGM_TRANSACTED | STGM_READWRITE | STGM_SHARE_DENY_NONE;
    constexpr DWORD kWriteDenyWrite = STGM_TRANSACTED | STGM_READWRITE | STGM_SHARE_DENY_WRITE;
    constexpr DWORD kWriteDenyRead = STGM_TRANSACTED | STGM_READWRITE | STGM_SHARE_DENY_READ;
    const struct {
        const char* name;
        DWORD first, second;
        bool allowed;
    } rows[] = {
        {"readers that deny writing", kReadDenyWrite, kReadDenyWrite, true},
        {"reader that denies writing, shared reader", kReadDenyWrite, kReadShared, true},
        {"reader that denies writing, exclusive reader", kReadDenyWrite, kReadOnly, false},
        {"reader that denies writing, exclusive writer", kReadDenyWrite, kExclusive, false},
        {"reader that denies writing, shared writer", kReadDenyWrite, kWriteShared, false},
        {"exclusive reader, reader", kReadOnly, kReadDenyWrite, false},
        {"exclusive writer, reader", kExclusive, kReadDenyWrite, false},
        {"exclusive writer, shared reader", kExclusive, kReadShared, false},
        {"exclusive writer twice", kExclusive, kExclusive, false},
        {"shared reader, reader that denies writing", kReadShared, kReadDenyWrite, true},
        {"shared reader, exclusive writer", kReadShared, kExclusive, false},
        {"shared reader, writer that denies writing", kReadShared, kWriteDenyWrite, true},
        {"shared reader, writer that denies reading", kReadShared, kWriteDenyRead, false},
        {"writer that denies writing, shared reader", kWriteDenyWrite, kReadShared, true},
        {"writer that denies writing, shared writer", kWriteDenyWrite, kWriteShared, false},
        {"shared writers", kWriteShared, kWriteShared, true},
        {"shared writer, reader that denies writing", kWriteShared, kReadDenyWrite, false},
        {"writer that denies reading, shared reader", kWriteDenyRead, kReadShared, false},
    };
    const TestFolder folder;
    const CStringW name = folder.Name("file");
    Held<IStorage> first;
    ASSERT_EQ(StgCreateDocfile(name.c_str(), kExclusive, 0, first.Put()), S_OK);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        first.Reset();
        ASSERT_EQ(StgOpenStorage(name.c_str(), nullptr, row.first, nullptr, 0, first.Put()), S_OK);
        Held<IStorage> second;
        const HRESULT hr = StgOpenStorage(name.c_str(), nullptr, row.second, nullptr, 0, second.Put());
        const bool refused = hr == STG_E_SHAREVIOLATION || hr == STG_E_LOCKVIOLATION;  // Windows knows both
        EXPECT_TRUE(row.allowed ? hr == S_OK : refused) << std::hex << hr;
        second.Reset();
        first.Reset();
        EXPECT_EQ(StgOpenStorage(name.c_str(), nullptr, kExclusive, nullptr, 0, second.Put()), S_OK)
            << "all claims are gone with their openings";
    }
}

TEST(StorageFiles, ThatAreOpenAreNotReplaced) {
    const TestFolder folder;
    const CStringW name = folder.Name("file");
    Held<IStorage> open;
    ASSERT_EQ(StgCreateDocfile(name.c_str(), kExclusive, 0, open.Put()), S_OK);
    AddStream(open.Get(), "s"_w, {1});
    Held<IStorage> second;
    const HRESULT hr = StgCreateDocfile(name.c_str(), STGM_TRANSACTED | STGM_CREATE | STGM_READWRITE, 0, second.Put());
#ifdef _WIN32
    EXPECT_TRUE(FAILED(hr));
#else
    EXPECT_CODE(hr, STG_E_ACCESSDENIED);
#endif
    open.Reset();
    ASSERT_EQ(StgOpenStorage(name.c_str(), nullptr, kReadOnly, nullptr, 0, open.Put()), S_OK);
    EXPECT_TRUE(HasStream(open.Get(), "s"_w));
}

}  // namespace
