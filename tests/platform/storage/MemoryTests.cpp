// Task memory, global blocks, and the streams, byte arrays and compound files that lie on them.
#include "StorageTestSupport.h"

using namespace storage_test;

namespace {

Bytes BlockBytes(HGLOBAL block) {
    const auto* const bytes = static_cast<const std::uint8_t*>(GlobalLock(block));
    Bytes copy(bytes, bytes + (bytes == nullptr ? 0 : GlobalSize(block)));
    GlobalUnlock(block);
    return copy;
}

TEST(TaskMemory, GrowsShrinksAndGoes) {
    auto* bytes = static_cast<std::uint8_t*>(CoTaskMemAlloc(3));
    ASSERT_NE(bytes, nullptr);
    std::copy_n("abc", 3, bytes);
    bytes = static_cast<std::uint8_t*>(CoTaskMemRealloc(bytes, 100'000));
    ASSERT_NE(bytes, nullptr);
    EXPECT_TRUE(std::equal(bytes, bytes + 3, "abc"));
    EXPECT_EQ(CoTaskMemRealloc(bytes, 0), nullptr) << "which freed it";
    CoTaskMemFree(nullptr);

    IMalloc* allocator = nullptr;
    ASSERT_EQ(CoGetMalloc(1, &allocator), S_OK);
    void* const empty = allocator->Alloc(0);
    EXPECT_NE(empty, nullptr);
    CoTaskMemFree(empty);
    void* const block = CoTaskMemAlloc(77);
    EXPECT_GE(allocator->GetSize(block), 77U);
    EXPECT_EQ(allocator->GetSize(nullptr), ~SIZE_T{0});
    allocator->Free(block);
    allocator->Release();
    EXPECT_CODE(CoGetMalloc(2, &allocator), E_INVALIDARG);
}

TEST(GlobalMemory, KeepsContentsAndHandleWhileItGrows) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 10);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(BlockBytes(block), Bytes(10));
    std::copy_n("0123456789", 10, static_cast<char*>(GlobalLock(block)));
    GlobalUnlock(block);
    EXPECT_EQ(GlobalReAlloc(block, 1'000'000, GMEM_MOVEABLE | GMEM_ZEROINIT), block);
    Bytes expected = {'0', '1', '2', '3', '4', '5', '6', '7', '8', '9'};
    expected.resize(1'000'000);
    EXPECT_EQ(BlockBytes(block), expected);
    EXPECT_EQ(GlobalReAlloc(block, 4, GMEM_MOVEABLE), block);
    EXPECT_EQ(BlockBytes(block), (Bytes{'0', '1', '2', '3'}));
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(GlobalMemory, CountsLocks) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 10);
    void* const address = GlobalLock(block);
    EXPECT_NE(address, nullptr);
    EXPECT_EQ(GlobalLock(block), address);
    EXPECT_TRUE(GlobalUnlock(block));
    EXPECT_FALSE(GlobalUnlock(block));
    GlobalFree(block);

    HGLOBAL fixed = GlobalAlloc(GMEM_FIXED, 10);
    EXPECT_EQ(GlobalLock(fixed), fixed);
    EXPECT_TRUE(GlobalUnlock(fixed));
    EXPECT_EQ(GlobalSize(fixed), 10U);
    std::copy_n("0123456789", 10, static_cast<char*>(fixed));
    fixed = GlobalReAlloc(fixed, 100'000, GMEM_MOVEABLE);
    ASSERT_NE(fixed, nullptr);
    EXPECT_TRUE(std::equal(static_cast<char*>(fixed), static_cast<char*>(fixed) + 10, "0123456789"));
    GlobalFree(fixed);
}

TEST(GlobalMemory, MayHaveNoBytes) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 0);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(GlobalLock(block), nullptr);
    EXPECT_EQ(GlobalSize(block), 0U);
    EXPECT_EQ(GlobalReAlloc(block, 5, GMEM_MOVEABLE | GMEM_ZEROINIT), block);
    EXPECT_EQ(BlockBytes(block), Bytes(5));
    GlobalFree(block);
}

TEST(MemoryStreams, ReadWriteAndShareTheirBlock) {
    Held<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
    Bytes expected;
    for (std::uint32_t i = 0; i < 200; ++i) {
        const Bytes piece = Pattern(i, i);
        WriteAll(stream.Get(), piece);
        expected.insert(expected.end(), piece.begin(), piece.end());
    }
    EXPECT_EQ(ReadAll(stream.Get(), 333), expected);
    HGLOBAL block = nullptr;
    ASSERT_EQ(GetHGlobalFromStream(stream.Get(), &block), S_OK);
    EXPECT_EQ(BlockBytes(block), expected);

    Held<IStream> clone;
    ASSERT_EQ(stream->Clone(clone.Put()), S_OK);
    EXPECT_EQ(clone->SetSize(Size(10)), S_OK);
    EXPECT_EQ(StreamSize(stream.Get()), 10U);
    stream.Reset();
    expected.resize(10);
    EXPECT_EQ(ReadAll(clone.Get()), expected) << "the block lives as long as the last of them";
    EXPECT_CODE(clone->Seek(Offset(-1), STREAM_SEEK_SET, nullptr), STG_E_SEEKERROR);
}

TEST(MemoryStreams, BeginWithTheBytesOfAGivenBlock) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, 5);
    std::copy_n("hello", 5, static_cast<char*>(GlobalLock(block)));
    GlobalUnlock(block);
    Held<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(block, FALSE, stream.Put()), S_OK);
    EXPECT_EQ(ReadAll(stream.Get()), (Bytes{'h', 'e', 'l', 'l', 'o'}));
    WriteAll(stream.Get(), {'!'});
    stream.Reset();
    EXPECT_EQ(BlockBytes(block), (Bytes{'h', 'e', 'l', 'l', 'o', '!'})) << "the block is the caller's still";
    GlobalFree(block);
}

TEST(MemoryStreams, CopyToTheirOwnEndWithoutRunningOn) {
    Held<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
    WriteAll(stream.Get(), Pattern(1000, 1));
    Held<IStream> end;
    ASSERT_EQ(stream->Clone(end.Put()), S_OK);
    ASSERT_EQ(stream->Seek(Offset(0), STREAM_SEEK_SET, nullptr), S_OK);
    ULARGE_INTEGER written = {};
    EXPECT_EQ(stream->CopyTo(end.Get(), Size(1000), nullptr, &written), S_OK);
    EXPECT_EQ(written.QuadPart, 1000U);
    EXPECT_EQ(StreamSize(stream.Get()), 2000U);
}

TEST(ByteArrays, GrowWithTheirBlock) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 4);
    Held<ILockBytes> bytes;
    ASSERT_EQ(CreateILockBytesOnHGlobal(block, TRUE, bytes.Put()), S_OK);
    ULONG count = 0;
    EXPECT_EQ(bytes->WriteAt(Size(2), "abcd", 4, &count), S_OK);
    EXPECT_EQ(count, 4U);
    HGLOBAL same = nullptr;
    EXPECT_EQ(GetHGlobalFromILockBytes(bytes.Get(), &same), S_OK);
    EXPECT_EQ(same, block);
    EXPECT_EQ(BlockBytes(block), (Bytes{0, 0, 'a', 'b', 'c', 'd'}));
    char read[3] = {};
    EXPECT_EQ(bytes->ReadAt(Size(3), read, 3, &count), S_OK);
    EXPECT_EQ(std::string(read, count), "bcd");
    EXPECT_EQ(bytes->SetSize(Size(3)), S_OK);
    EXPECT_EQ(BlockBytes(block), (Bytes{0, 0, 'a'}));
    EXPECT_CODE(bytes->LockRegion(Size(0), Size(1), LOCK_WRITE), STG_E_INVALIDFUNCTION);
}

// A storage as the bytes of a compound file, the way that callers make them.
TEST(ByteArrays, HoldTheImageOfAStorage) {
    const TestFolder folder;
    Held<IStorage> source;
    ASSERT_EQ(StgCreateDocfile(folder.Name("source").c_str(), kExclusive, 0, source.Put()), S_OK);
    AddStream(source.Get(), "small"_w, Pattern(100, 1));
    AddStream(source.Get(), "large"_w, Pattern(100'000, 2));
    Held<IStorage> inner;
    ASSERT_EQ(source->CreateStorage("inner"_w, kExclusive, 0, 0, inner.Put()), S_OK);
    AddStream(inner.Get(), "deep"_w, Pattern(4096, 3));
    inner.Reset();
    const auto tree = Tree(source.Get());

    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE | GMEM_ZEROINIT, 0x4000);
    Held<ILockBytes> bytes;
    ASSERT_EQ(CreateILockBytesOnHGlobal(block, TRUE, bytes.Put()), S_OK);
    Held<IStorage> target;
    ASSERT_EQ(StgCreateDocfileOnILockBytes(bytes.Get(), kExclusive | STGM_CREATE, 0, target.Put()), S_OK);
    EXPECT_EQ(source->CopyTo(0, nullptr, nullptr, target.Get()), S_OK);
    EXPECT_EQ(target->Commit(STGC_DEFAULT), S_OK);
    target.Reset();
    EXPECT_EQ(bytes->Flush(), S_OK);
    HGLOBAL image = nullptr;
    ASSERT_EQ(GetHGlobalFromILockBytes(bytes.Get(), &image), S_OK);
    STATSTG stat = {};
    ASSERT_EQ(bytes->Stat(&stat, STATFLAG_NONAME), S_OK);
    Bytes file = BlockBytes(image);
    ASSERT_LE(stat.cbSize.QuadPart, file.size());
    file.resize(static_cast<std::size_t>(stat.cbSize.QuadPart));
    EXPECT_EQ(StgIsStorageILockBytes(bytes.Get()), S_OK);

    // The bytes are a file, and the array can be opened again.
    WriteFile(folder.Path("image"), file);
    ASSERT_EQ(StgOpenStorage(folder.Name("image").c_str(), nullptr, kReadOnly, nullptr, 0, target.Put()), S_OK);
    EXPECT_EQ(Tree(target.Get()), tree);
    ASSERT_EQ(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kReadOnly, nullptr, 0, target.Put()), S_OK);
    EXPECT_EQ(Tree(target.Get()), tree);
}

TEST(ByteArrays, AreChangedInPlace) {
    Held<ILockBytes> bytes;
    ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.Put()), S_OK);
    Held<IStorage> root;
    ASSERT_EQ(StgCreateDocfileOnILockBytes(bytes.Get(), kExclusive | STGM_CREATE, 0, root.Put()), S_OK);
    std::map<CStringW, Bytes> expected;
    for (std::uint32_t round = 0; round < 6; ++round) {
        // Streams before the others grow, shrink and go, so that every later one moves in the image.
        const CStringW name = {static_cast<WCHAR>('f' - round)};
        expected[name] = Pattern(3000 * (round + 1), round);
        AddStream(root.Get(), name, expected[name]);
        if (round == 3) {
            EXPECT_EQ(root->DestroyElement("f"_w), S_OK);
            expected.erase("f"_w);
        }
        EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
        EXPECT_EQ(Tree(root.Get()), expected);
        root.Reset();
        ASSERT_EQ(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kExclusive, nullptr, 0, root.Put()), S_OK);
        EXPECT_EQ(Tree(root.Get()), expected);
    }
}

// The commit overwrites the very bytes that the open transaction reads from.
TEST(ByteArrays, AreChangedInPlaceUnderAnOpenTransaction) {
    Held<ILockBytes> bytes;
    ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.Put()), S_OK);
    Held<IStorage> root;
    Held<IStorage> inner;
    ASSERT_EQ(StgCreateDocfileOnILockBytes(bytes.Get(), kExclusive | STGM_CREATE, 0, root.Put()), S_OK);
    ASSERT_EQ(root->CreateStorage("inner"_w, kExclusive, 0, 0, inner.Put()), S_OK);
    AddStream(inner.Get(), "large"_w, Pattern(50'000, 1));
    AddStream(inner.Get(), "small"_w, Pattern(200, 2));
    inner.Reset();
    root.Reset();
    const std::map<CStringW, Bytes> before = {{"large"_w, Pattern(50'000, 1)}, {"small"_w, Pattern(200, 2)}};
    ASSERT_EQ(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kExclusive, nullptr, 0, root.Put()), S_OK);
    ASSERT_EQ(root->OpenStorage("inner"_w, nullptr, kExclusive | STGM_TRANSACTED, nullptr, 0, inner.Put()), S_OK);
    AddStream(root.Get(), "a"_w, Pattern(20'000, 3));
    AddStream(root.Get(), "b"_w, Pattern(100, 4));
    EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(Tree(inner.Get()), before);
    EXPECT_EQ(inner->DestroyElement("small"_w), S_OK);
    EXPECT_EQ(inner->Commit(STGC_DEFAULT), S_OK);
    inner.Reset();
    EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
    root.Reset();
    ASSERT_EQ(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kReadOnly, nullptr, 0, root.Put()), S_OK);
    const std::map<CStringW, Bytes> after = {
        {"a"_w, Pattern(20'000, 3)}, {"b"_w, Pattern(100, 4)}, {"inner/large"_w, Pattern(50'000, 1)}};
    EXPECT_EQ(Tree(root.Get()), after);
}

TEST(ByteArrays, ThatAreNoStorageAreRefused) {
    Held<ILockBytes> bytes;
    ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.Put()), S_OK);
    ULONG count = 0;
    const Bytes text = Pattern(2000, 5);
    ASSERT_EQ(bytes->WriteAt(Size(0), text.data(), 2000, &count), S_OK);
    EXPECT_EQ(StgIsStorageILockBytes(bytes.Get()), S_FALSE);
    Held<IStorage> root;
    EXPECT_TRUE(FAILED(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kReadOnly, nullptr, 0, root.Put())));
    EXPECT_CODE(StgCreateDocfileOnILockBytes(nullptr, kExclusive, 0, root.Put()), STG_E_INVALIDPOINTER);
    EXPECT_CODE(StgCreateDocfileOnILockBytes(bytes.Get(), STGM_READWRITE, 0, root.Put()), STG_E_INVALIDFLAG);
}

}  // namespace
