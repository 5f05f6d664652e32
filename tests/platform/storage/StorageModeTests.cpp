// Which modes each call takes, and which code it answers otherwise.
#include "StorageTestSupport.h"

using namespace storage_test;

namespace {

struct ModeRow {
    const char* name;
    DWORD mode;
    HRESULT expected;
};

TEST(StorageModes, OfANewFile) {
    constexpr ModeRow rows[] = {
        {"nothing", 0, STG_E_INVALIDFLAG},
        {"reading only", STGM_SHARE_EXCLUSIVE, STG_E_INVALIDFLAG},
        {"writing only", STGM_WRITE | STGM_SHARE_EXCLUSIVE, S_OK},
        {"both, exclusive", kExclusive, S_OK},
        {"direct, not shared in any way", STGM_READWRITE, STG_E_INVALIDFLAG},
        {"direct, others may read", STGM_READWRITE | STGM_SHARE_DENY_WRITE, STG_E_INVALIDFLAG},
        {"direct, others may do all", STGM_READWRITE | STGM_SHARE_DENY_NONE, STG_E_INVALIDFLAG},
        {"transacted, no share mode", STGM_READWRITE | STGM_TRANSACTED, S_OK},
        {"transacted, others may do all", STGM_READWRITE | STGM_TRANSACTED | STGM_SHARE_DENY_NONE, S_OK},
        {"transacted, reading only", STGM_TRANSACTED | STGM_SHARE_EXCLUSIVE, STG_E_INVALIDFLAG},
        {"simple", kExclusive | STGM_SIMPLE | STGM_CREATE, S_OK},
        {"simple and transacted", kExclusive | STGM_SIMPLE | STGM_TRANSACTED, STG_E_INVALIDFLAG},
        {"no scratch, direct", kExclusive | STGM_NOSCRATCH, STG_E_INVALIDFLAG},
        {"no scratch, transacted", kExclusive | STGM_NOSCRATCH | STGM_TRANSACTED, S_OK},
        {"no snapshot, transacted", STGM_READWRITE | STGM_SHARE_DENY_NONE | STGM_NOSNAPSHOT | STGM_TRANSACTED, S_OK},
        {"access of 3", 3 | STGM_SHARE_EXCLUSIVE, STG_E_INVALIDFLAG},
        {"share mode of 5", STGM_READWRITE | STGM_TRANSACTED | 0x50, STG_E_INVALIDFLAG},
        {"unknown flag", kExclusive | 0x80000000, STG_E_INVALIDFLAG},
        {"convert and create", kExclusive | STGM_CONVERT | STGM_CREATE, STG_E_INVALIDFLAG},
    };
    const TestFolder folder;
    int count = 0;
    for (const ModeRow& row : rows) {
        SCOPED_TRACE(row.name);
        const CStringW name = folder.Name("new" + std::to_string(++count));
        Held<IStorage> root;
        EXPECT_CODE(StgCreateDocfile(name.c_str(), row.mode, 0, root.Put()), row.expected);
        EXPECT_EQ(static_cast<bool>(root), SUCCEEDED(row.expected));
    }
}

TEST(StorageModes, OfAnExistingFile) {
    constexpr ModeRow rows[] = {
        {"nothing", 0, STG_E_INVALIDFLAG},
        {"reading, exclusive", kReadOnly, S_OK},
        {"reading, others may read", STGM_SHARE_DENY_WRITE, S_OK},
        {"reading, others may write", STGM_SHARE_DENY_READ, STG_E_INVALIDFLAG},
        {"reading, others may do all", STGM_SHARE_DENY_NONE, STG_E_INVALIDFLAG},
        {"writing only", STGM_WRITE | STGM_SHARE_EXCLUSIVE, S_OK},
        {"both, exclusive", kExclusive, S_OK},
        {"both, others may read", STGM_READWRITE | STGM_SHARE_DENY_WRITE, STG_E_INVALIDFLAG},
        {"both, others may do all", STGM_READWRITE | STGM_SHARE_DENY_NONE, STG_E_INVALIDFLAG},
        {"both, no share mode", STGM_READWRITE, STG_E_INVALIDFLAG},
        {"transacted reading", STGM_TRANSACTED, S_OK},
        {"transacted, others may do all", STGM_TRANSACTED | STGM_READWRITE | STGM_SHARE_DENY_NONE, S_OK},
        {"create", kExclusive | STGM_CREATE, STG_E_INVALIDFLAG},
        {"priority", STGM_PRIORITY, S_OK},
        {"priority, writing", STGM_PRIORITY | STGM_READWRITE | STGM_SHARE_DENY_NONE, STG_E_INVALIDFLAG},
        {"simple", kExclusive | STGM_SIMPLE, S_OK},
        {"access of 3", 3 | STGM_SHARE_EXCLUSIVE, STG_E_INVALIDFLAG},
    };
    const TestFolder folder;
    const CStringW name = folder.Name("there");
    Held<IStorage> root;
    ASSERT_EQ(StgCreateDocfile(name.c_str(), kExclusive, 0, root.Put()), S_OK);
    root.Reset();
    for (const ModeRow& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_CODE(StgOpenStorage(name.c_str(), nullptr, row.mode, nullptr, 0, root.Put()), row.expected);
        root.Reset();
    }
}

TEST(StorageModes, OfElements) {
    struct Row {
        const char* name;
        DWORD mode;
        HRESULT stream, storage;
    };
    constexpr Row rows[] = {
        {"no share mode", STGM_READWRITE, STG_E_INVALIDFLAG, STG_E_INVALIDFLAG},
        {"reading", kReadOnly, S_OK, S_OK},
        {"writing", STGM_WRITE | STGM_SHARE_EXCLUSIVE, S_OK, S_OK},
        {"both", kExclusive, S_OK, S_OK},
        {"transacted", kExclusive | STGM_TRANSACTED, STG_E_INVALIDFUNCTION, S_OK},
        {"no scratch", kExclusive | STGM_NOSCRATCH, STG_E_INVALIDFLAG, STG_E_INVALIDFLAG},
        {"access of 3", 3 | STGM_SHARE_EXCLUSIVE, STG_E_INVALIDFLAG, STG_E_INVALIDFLAG},
    };
    const TestFolder folder;
    Held<IStorage> root;
    ASSERT_EQ(StgCreateDocfile(folder.Name("f").c_str(), kExclusive, 0, root.Put()), S_OK);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Held<IStream> stream;
        Held<IStorage> storage;
        EXPECT_CODE(root->CreateStream("stream"_w, row.mode, 0, 0, stream.Put()), row.stream);
        EXPECT_CODE(root->CreateStorage("storage"_w, row.mode, 0, 0, storage.Put()), row.storage);
        stream.Reset();
        storage.Reset();
        root->DestroyElement("stream"_w);
        root->DestroyElement("storage"_w);
    }
    AddStream(root.Get(), "stream"_w, {});
    Held<IStorage> made;
    ASSERT_EQ(root->CreateStorage("storage"_w, kExclusive, 0, 0, made.Put()), S_OK);
    made.Reset();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Held<IStream> stream;
        Held<IStorage> storage;
        EXPECT_CODE(root->OpenStream("stream"_w, nullptr, row.mode, 0, stream.Put()), row.stream);
        EXPECT_CODE(root->OpenStorage("storage"_w, nullptr, row.mode, nullptr, 0, storage.Put()), row.storage);
    }
}

}  // namespace
