// Direct and transacted modes: what reaches the file when, and what a revert takes back.
#include "StorageTestSupport.h"

using namespace storage_test;

namespace {

constexpr DWORD kTransacted = kExclusive | STGM_TRANSACTED;

class StorageTransactions : public testing::Test {
protected:
    void Create(DWORD mode) { ASSERT_EQ(StgCreateDocfile(m_name.c_str(), mode, 0, m_root.Put()), S_OK); }
    void Open(DWORD mode) {
        m_root.Reset();
        ASSERT_EQ(StgOpenStorage(m_name.c_str(), nullptr, mode, nullptr, 0, m_root.Put()), S_OK);
    }
    std::map<CStringW, Bytes> Saved() {
        Open(kReadOnly);
        return Tree(m_root.Get());
    }
    Held<IStorage> Inner(IStorage* parent, const CStringW& name, DWORD mode) {
        Held<IStorage> storage;
        EXPECT_EQ(parent->CreateStorage(name.c_str(), mode, 0, 0, storage.Put()), S_OK);
        return storage;
    }

    TestFolder m_folder;
    CStringW m_name = m_folder.Name("file");
    Held<IStorage> m_root;
};

using Expected = std::map<CStringW, Bytes>;

TEST_F(StorageTransactions, DirectChangesReachTheFileByTheLastRelease) {
    Create(kExclusive);
    AddStream(m_root.Get(), "a"_w, {1});
    EXPECT_EQ(Saved(), (Expected{{"a"_w, {1}}}));
    Open(kExclusive);
    EXPECT_EQ(m_root->DestroyElement("a"_w), S_OK);
    EXPECT_EQ(m_root->Revert(), S_OK);
    AddStream(m_root.Get(), "b"_w, {2});
    EXPECT_EQ(Saved(), (Expected{{"b"_w, {2}}})) << "a direct storage has nothing to revert";
}

TEST_F(StorageTransactions, WithoutCommitAreLost) {
    Create(kTransacted);
    AddStream(m_root.Get(), "lost"_w, Pattern(10'000, 1));
    EXPECT_EQ(Saved(), Expected{}) << "a new file stands for an empty storage";
    Open(kTransacted);
    AddStream(m_root.Get(), "kept"_w, {1});
    EXPECT_EQ(m_root->Commit(STGC_DEFAULT), S_OK);
    AddStream(m_root.Get(), "kept"_w, {2});
    AddStream(m_root.Get(), "lost"_w, {3});
    EXPECT_EQ(m_root->DestroyElement("kept"_w), S_OK);
    EXPECT_EQ(Saved(), (Expected{{"kept"_w, {1}}}));
}

TEST_F(StorageTransactions, RevertTakesBackEverythingSinceTheLastCommit) {
    Create(kTransacted);
    AddStream(m_root.Get(), "stream"_w, Pattern(6000, 1));
    Inner(m_root.Get(), "storage"_w, kExclusive);
    EXPECT_EQ(m_root->Commit(STGC_DEFAULT), S_OK);

    Held<IStream> stream;
    Held<IStorage> storage;
    ASSERT_EQ(m_root->OpenStream("stream"_w, nullptr, kExclusive, 0, stream.Put()), S_OK);
    ASSERT_EQ(m_root->OpenStorage("storage"_w, nullptr, kExclusive, nullptr, 0, storage.Put()), S_OK);
    WriteAll(stream.Get(), {9, 9, 9});
    AddStream(storage.Get(), "inner"_w, {1});
    EXPECT_EQ(m_root->SetClass(OleGuid(1)), S_OK);
    EXPECT_EQ(m_root->Revert(), S_OK);

    ULONG count = 0;
    std::uint8_t byte = 0;
    EXPECT_CODE(stream->Read(&byte, 1, &count), STG_E_REVERTED);
    EXPECT_CODE(storage->DestroyElement("inner"_w), STG_E_REVERTED);
    const Expected before = {{"stream"_w, Pattern(6000, 1)}, {"storage/"_w, {}}};
    EXPECT_EQ(Tree(m_root.Get()), before) << "though the reverted objects are still held";
    EXPECT_EQ(m_root->Commit(STGC_DEFAULT), S_OK);
    stream.Reset();
    storage.Reset();
    EXPECT_EQ(Saved(), before);
    CLSID clsid = {};
    EXPECT_EQ(ReadClassStg(m_root.Get(), &clsid), S_OK);
    EXPECT_TRUE(IsEqualGUID(clsid, CLSID{}));
}

TEST_F(StorageTransactions, OpenObjectsGoOnAfterACommit) {
    Create(kTransacted);
    Held<IStorage> storage = Inner(m_root.Get(), "storage"_w, kExclusive);
    Held<IStream> stream;
    ASSERT_EQ(storage->CreateStream("stream"_w, kExclusive, 0, 0, stream.Put()), S_OK);
    Bytes expected;
    for (std::uint32_t round = 0; round < 5; ++round) {
        const Bytes more = Pattern(40'000, round);
        WriteAll(stream.Get(), more);
        expected.insert(expected.end(), more.begin(), more.end());
        EXPECT_EQ(m_root->Commit(STGC_DEFAULT), S_OK);
    }
    EXPECT_EQ(ReadAll(stream.Get()), expected);
    stream.Reset();
    storage.Reset();
    EXPECT_EQ(Saved(), (Expected{{"storage/stream"_w, expected}}));
}

TEST_F(StorageTransactions, WithinAStoragePublishToTheirParentOnly) {
    Create(kTransacted);
    Held<IStorage> outer = Inner(m_root.Get(), "outer"_w, kTransacted);
    Held<IStorage> inner = Inner(outer.Get(), "inner"_w, kTransacted);
    AddStream(inner.Get(), "s"_w, {1});
    EXPECT_EQ(inner->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(outer->Commit(STGC_DEFAULT), S_OK);
    AddStream(inner.Get(), "s"_w, {2});
    AddStream(inner.Get(), "not committed"_w, {3});
    inner.Reset();
    // The inner commit of a second transaction ends at the outer one.
    ASSERT_EQ(outer->OpenStorage("inner"_w, nullptr, kTransacted, nullptr, 0, inner.Put()), S_OK);
    EXPECT_EQ(Tree(inner.Get()), (Expected{{"s"_w, {1}}}));
    AddStream(inner.Get(), "s"_w, {4});
    EXPECT_EQ(inner->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(outer->Revert(), S_OK);
    STATSTG stat = {};
    EXPECT_CODE(inner->Stat(&stat, STATFLAG_NONAME), STG_E_REVERTED);
    inner.Reset();
    EXPECT_EQ(Tree(outer.Get()), (Expected{{"inner/s"_w, {1}}}));
    outer.Reset();
    EXPECT_EQ(m_root->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(Saved(), (Expected{{"outer/inner/s"_w, {1}}}));
}

TEST_F(StorageTransactions, WithinADirectFileKeepApartWhatTheyRead) {
    Create(kExclusive);
    const Bytes large = Pattern(300'000, 1);
    {
        Held<IStorage> inner = Inner(m_root.Get(), "inner"_w, kExclusive);
        AddStream(inner.Get(), "large"_w, large);
        AddStream(inner.Get(), "small"_w, {1});
    }
    Open(kExclusive);
    Held<IStorage> inner;
    ASSERT_EQ(m_root->OpenStorage("inner"_w, nullptr, kTransacted, nullptr, 0, inner.Put()), S_OK);
    // The file is written anew under the open transaction, with everything in another place.
    AddStream(m_root.Get(), "a"_w, Pattern(50'000, 2));
    EXPECT_EQ(m_root->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(Tree(inner.Get()), (Expected{{"large"_w, large}, {"small"_w, {1}}}));
    AddStream(inner.Get(), "small"_w, {2});
    EXPECT_EQ(inner->Commit(STGC_DEFAULT), S_OK);
    inner.Reset();
    EXPECT_EQ(Saved(), (Expected{{"a"_w, Pattern(50'000, 2)}, {"inner/large"_w, large}, {"inner/small"_w, {2}}}));
}

TEST_F(StorageTransactions, WithinAnotherDoNotWriteThroughToIt) {
    // Data that neither has committed yet, in one block and in several.
    for (const std::size_t size : {std::size_t{1000}, std::size_t{200'000}}) {
        SCOPED_TRACE(size);
        const Bytes before = Pattern(size, 1);
        Create(kTransacted | STGM_CREATE);
        Held<IStorage> inner = Inner(m_root.Get(), "inner"_w, kExclusive);
        AddStream(inner.Get(), "s"_w, before);
        inner.Reset();
        const auto change = [&](std::uint8_t value) {
            Held<IStream> stream;
            ASSERT_EQ(inner->OpenStream("s"_w, nullptr, kExclusive, 0, stream.Put()), S_OK);
            ASSERT_EQ(stream->Seek(Offset(500), STREAM_SEEK_SET, nullptr), S_OK);
            WriteAll(stream.Get(), {value});
        };
        ASSERT_EQ(m_root->OpenStorage("inner"_w, nullptr, kTransacted, nullptr, 0, inner.Put()), S_OK);
        change(before[500] ^ 1);
        EXPECT_EQ(inner->Revert(), S_OK);
        EXPECT_EQ(Tree(inner.Get()), (Expected{{"s"_w, before}}));
        change(before[500] ^ 2);
        EXPECT_EQ(inner->Commit(STGC_DEFAULT), S_OK);
        change(before[500] ^ 4);
        inner.Reset();
        EXPECT_EQ(m_root->Commit(STGC_DEFAULT), S_OK);
        Bytes after = before;
        after[500] ^= 2;
        EXPECT_EQ(Saved(), (Expected{{"inner/s"_w, after}}));
        m_root.Reset();
    }
}

TEST_F(StorageTransactions, DirectStoragesInATransactedFileHaveNothingOfTheirOwn) {
    Create(kTransacted);
    Held<IStorage> storage = Inner(m_root.Get(), "storage"_w, kExclusive);
    AddStream(storage.Get(), "s"_w, {1});
    EXPECT_EQ(storage->Revert(), S_OK);
    EXPECT_EQ(storage->Commit(STGC_DEFAULT), S_OK);
    EXPECT_TRUE(HasStream(storage.Get(), "s"_w));
    storage.Reset();
    EXPECT_EQ(Saved(), Expected{});
}

TEST_F(StorageTransactions, OnlyIfCurrentRefusesASecondWriter) {
    constexpr DWORD kShared = STGM_READWRITE | STGM_TRANSACTED | STGM_SHARE_DENY_NONE;
    Create(kExclusive);
    Open(kShared);
    Held<IStorage> second;
    ASSERT_EQ(StgOpenStorage(m_name.c_str(), nullptr, kShared, nullptr, 0, second.Put()), S_OK);
    AddStream(m_root.Get(), "first"_w, Pattern(5000, 1));
    EXPECT_EQ(m_root->Commit(STGC_DEFAULT), S_OK);
    AddStream(second.Get(), "second"_w, {1});
    EXPECT_CODE(second->Commit(STGC_ONLYIFCURRENT), STG_E_NOTCURRENT);
    AddStream(m_root.Get(), "more"_w, {2});
    EXPECT_CODE(m_root->Commit(STGC_ONLYIFCURRENT), S_OK);
    second.Reset();
    EXPECT_EQ(Saved(), (Expected{{"first"_w, Pattern(5000, 1)}, {"more"_w, {2}}}));
}

TEST_F(StorageTransactions, CopyOfAWholeFileArrivesWithTheCommit) {
    Create(kExclusive);
    AddStream(m_root.Get(), "s"_w, Pattern(100'000, 1));
    Inner(m_root.Get(), "folder"_w, kExclusive);
    const CStringW copyName = m_folder.Name("copy");
    for (int round = 0; round < 2; ++round) {  // the second time over the file of the first
        Held<IStorage> copy;
        ASSERT_EQ(StgCreateDocfile(copyName.c_str(), STGM_TRANSACTED | STGM_CREATE | STGM_READWRITE, 0, copy.Put()),
                  S_OK);
        EXPECT_EQ(m_root->CopyTo(0, nullptr, nullptr, copy.Get()), S_OK);
        EXPECT_EQ(copy->Commit(STGC_DEFAULT), S_OK);
        copy.Reset();
        ASSERT_EQ(StgOpenStorage(copyName.c_str(), nullptr, kReadOnly, nullptr, 0, copy.Put()), S_OK);
        EXPECT_EQ(Tree(copy.Get()), (Expected{{"s"_w, Pattern(100'000, 1)}, {"folder/"_w, {}}}));
    }
}

}  // namespace
