// Elements: names and their order, what creating, opening, renaming, destroying and copying them answers and does.
#include "StorageTestSupport.h"

#include <functional>

using namespace storage_test;

namespace {

class StorageElements : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ(StgCreateDocfile(m_folder.Name("file").c_str(), kExclusive, 0, m_root.Put()), S_OK);
    }
    void Reopen(DWORD mode) {
        m_root.Reset();
        ASSERT_EQ(StgOpenStorage(m_folder.Name("file").c_str(), nullptr, mode, nullptr, 0, m_root.Put()), S_OK);
    }
    Held<IStorage> MakeStorage(IStorage* parent, const CStringW& name) {
        Held<IStorage> storage;
        EXPECT_EQ(parent->CreateStorage(name.c_str(), kExclusive, 0, 0, storage.Put()), S_OK);
        return storage;
    }

    TestFolder m_folder;
    Held<IStorage> m_root;
};

const CStringW kLongestName = "1234567890123456789012345678901"_w;
const CStringW kTooLongName = "12345678901234567890123456789012"_w;

TEST_F(StorageElements, AnswerTheCodesOfTheirTable) {
    AddStream(m_root.Get(), "stream"_w, {1});
    MakeStorage(m_root.Get(), "storage"_w);
    Held<IStream> stream;
    Held<IStorage> storage;
    IStorage* const root = m_root.Get();
    const struct {
        const char* name;
        std::function<HRESULT()> call;
        HRESULT expected;
    } rows[] = {
        {"a stream of a taken name", [&] { return root->CreateStream("stream"_w, kExclusive, 0, 0, stream.Put()); },
         STG_E_FILEALREADYEXISTS},
        {"in other case", [&] { return root->CreateStream("STREAM"_w, kExclusive, 0, 0, stream.Put()); },
         STG_E_FILEALREADYEXISTS},
        {"a stream with the name of a storage",
         [&] { return root->CreateStream("storage"_w, kExclusive, 0, 0, stream.Put()); }, STG_E_FILEALREADYEXISTS},
        {"a storage with the name of a stream",
         [&] { return root->CreateStorage("stream"_w, kExclusive, 0, 0, storage.Put()); }, STG_E_FILEALREADYEXISTS},
        {"no name", [&] { return root->CreateStream(nullptr, kExclusive, 0, 0, stream.Put()); }, STG_E_INVALIDNAME},
        {"a name too long", [&] { return root->CreateStream(kTooLongName.c_str(), kExclusive, 0, 0, stream.Put()); },
         STG_E_INVALIDNAME},
        {"the longest name", [&] { return root->CreateStream(kLongestName.c_str(), kExclusive, 0, 0, stream.Put()); },
         S_OK},
        {"reserved parameters", [&] { return root->CreateStream("r"_w, kExclusive, 1, 0, stream.Put()); },
         STG_E_INVALIDPARAMETER},
        {"nowhere to put it", [&] { return root->CreateStream("r"_w, kExclusive, 0, 0, nullptr); },
         STG_E_INVALIDPOINTER},
        {"open a stream that is missing",
         [&] { return root->OpenStream("none"_w, nullptr, kExclusive, 0, stream.Put()); }, STG_E_FILENOTFOUND},
        {"open a storage as stream",
         [&] { return root->OpenStream("storage"_w, nullptr, kExclusive, 0, stream.Put()); }, STG_E_FILENOTFOUND},
        {"open a stream as storage",
         [&] { return root->OpenStorage("stream"_w, nullptr, kExclusive, nullptr, 0, storage.Put()); },
         STG_E_FILENOTFOUND},
        {"open in other case", [&] { return root->OpenStream("StReAm"_w, nullptr, kExclusive, 0, stream.Put()); },
         S_OK},
        {"open twice", [&] { return root->OpenStream("stream"_w, nullptr, kReadOnly, 0, Held<IStream>().Put()); },
         STG_E_ACCESSDENIED},
        {"rename what is open", [&] { return root->RenameElement("stream"_w, "other"_w); }, STG_E_ACCESSDENIED},
        {"close", [&] { return stream.Reset(), S_OK; }, S_OK},
        {"rename to a taken name", [&] { return root->RenameElement("stream"_w, "STORAGE"_w); },
         STG_E_FILEALREADYEXISTS},
        {"rename what is missing", [&] { return root->RenameElement("none"_w, "other"_w); }, STG_E_FILENOTFOUND},
        {"destroy what is missing", [&] { return root->DestroyElement("none"_w); }, STG_E_FILENOTFOUND},
        {"copy into itself", [&] { return root->CopyTo(0, nullptr, nullptr, root); }, STG_E_ACCESSDENIED},
        {"copy to nothing", [&] { return root->CopyTo(0, nullptr, nullptr, nullptr); }, STG_E_INVALIDPOINTER},
        {"open a storage",
         [&] { return root->OpenStorage("storage"_w, nullptr, kExclusive, nullptr, 0, storage.Put()); }, S_OK},
        {"copy into what lies within", [&] { return root->CopyTo(0, nullptr, nullptr, storage.Get()); },
         STG_E_ACCESSDENIED},
        {"open a storage twice",
         [&] { return root->OpenStorage("storage"_w, nullptr, kReadOnly, nullptr, 0, Held<IStorage>().Put()); },
         STG_E_ACCESSDENIED},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_CODE(row.call(), row.expected);
    }
}

TEST_F(StorageElements, OfAReadOnlyStorageCannotChange) {
    MakeStorage(m_root.Get(), "inner"_w);
    AddStream(m_root.Get(), "stream"_w, {1});
    Reopen(kReadOnly);
    Held<IStream> stream;
    Held<IStorage> storage;
    EXPECT_CODE(m_root->CreateStream("new"_w, kExclusive, 0, 0, stream.Put()), STG_E_ACCESSDENIED);
    EXPECT_CODE(m_root->DestroyElement("stream"_w), STG_E_ACCESSDENIED);
    EXPECT_TRUE(FAILED(m_root->OpenStream("stream"_w, nullptr, kExclusive, 0, stream.Put())));
    ASSERT_EQ(m_root->OpenStream("stream"_w, nullptr, kReadOnly, 0, stream.Put()), S_OK);
    ULONG written = 0;
    EXPECT_CODE(stream->Write("x", 1, &written), STG_E_ACCESSDENIED);
    EXPECT_CODE(stream->SetSize(Size(0)), STG_E_ACCESSDENIED);
    EXPECT_EQ(ReadAll(stream.Get()), Bytes{1});
}

TEST_F(StorageElements, AreEnumeratedByLengthThenUpperCase) {
    const CStringW names[] = {"s64"_w,
                              "aB"_w,
                              "B"_w,
                              "empty"_w,
                              "b1"_w,
                              "AA"_w,
                              "a"_w,
                              "a-b"_w,
                              "sub"_w,
                              "__substg1.0_001A001F"_w,
                              "\x01"
                              "c"_w};
    for (const CStringW& name : names) {
        AddStream(m_root.Get(), name, {});
    }
    MakeStorage(m_root.Get(), "C"_w);
    Reopen(kExclusive);
    EXPECT_EQ(Names(m_root.Get()), Wide({"a", "B", "C/",
                                         "\x01"
                                         "c",
                                         "AA", "aB", "b1", "a-b", "s64", "sub", "empty", "__substg1.0_001A001F"}));
}

TEST_F(StorageElements, EnumeratorsCountSkipCloneAndSeeChanges) {
    for (const auto* name : {"a"_w, "b"_w, "c"_w, "d"_w, "e"_w}) {
        AddStream(m_root.Get(), name, {1, 2, 3});
    }
    Held<IEnumSTATSTG> enumerator;
    ASSERT_EQ(m_root->EnumElements(0, nullptr, 0, enumerator.Put()), S_OK);
    STATSTG stats[8] = {};
    ULONG fetched = 9;
    const auto next = [&](IEnumSTATSTG* from, ULONG count) {
        const HRESULT hr = from->Next(count, stats, &fetched);
        CStringW names;
        for (ULONG i = 0; i < fetched; ++i) {
            names += stats[i].pwcsName;
            EXPECT_EQ(stats[i].cbSize.QuadPart, 3U);
            EXPECT_EQ(stats[i].type, static_cast<DWORD>(STGTY_STREAM));
            CoTaskMemFree(stats[i].pwcsName);
        }
        return std::pair(hr, names);
    };
    using Result = std::pair<HRESULT, CStringW>;
    EXPECT_EQ(next(enumerator.Get(), 2), Result(S_OK, "ab"_w));
    Held<IEnumSTATSTG> clone;
    ASSERT_EQ(enumerator->Clone(clone.Put()), S_OK);
    EXPECT_CODE(enumerator->Next(2, stats, nullptr), E_INVALIDARG);
    EXPECT_CODE(enumerator->Next(1, nullptr, &fetched), E_INVALIDARG);
    EXPECT_EQ(m_root->DestroyElement("c"_w), S_OK);
    EXPECT_EQ(next(enumerator.Get(), 1), Result(S_OK, "d"_w));
    EXPECT_EQ(next(enumerator.Get(), 5), Result(S_FALSE, "e"_w));
    EXPECT_EQ(next(enumerator.Get(), 1), Result(S_FALSE, CStringW()));
    EXPECT_EQ(enumerator->Reset(), S_OK);
    EXPECT_EQ(enumerator->Skip(3), S_OK);
    EXPECT_EQ(next(enumerator.Get(), 2), Result(S_FALSE, "e"_w));
    EXPECT_EQ(enumerator->Skip(1), S_FALSE);
    EXPECT_EQ(next(clone.Get(), 2), Result(S_OK, "de"_w));
}

TEST_F(StorageElements, KeepContentsUnderANewName) {
    AddStream(m_root.Get(), "old"_w, Pattern(5000, 1));
    MakeStorage(m_root.Get(), "folder"_w);
    EXPECT_EQ(m_root->RenameElement("old"_w, "a much longer new name"_w), S_OK);
    EXPECT_EQ(m_root->RenameElement("FOLDER"_w, "f"_w), S_OK);
    Reopen(kReadOnly);
    EXPECT_EQ(Names(m_root.Get()), Wide({"f/", "a much longer new name"}));
    Bytes bytes;
    EXPECT_EQ(ReadStream(m_root.Get(), "a much longer new name"_w, bytes), S_OK);
    EXPECT_EQ(bytes, Pattern(5000, 1));
}

TEST_F(StorageElements, ThatAreReplacedOrDestroyedAreReverted) {
    Held<IStorage> storage = MakeStorage(m_root.Get(), "storage"_w);
    Held<IStream> inner;
    Held<IStream> stream;
    ASSERT_EQ(storage->CreateStream("inner"_w, kExclusive, 0, 0, inner.Put()), S_OK);
    ASSERT_EQ(m_root->CreateStream("stream"_w, kExclusive, 0, 0, stream.Put()), S_OK);
    EXPECT_EQ(m_root->DestroyElement("storage"_w), S_OK);
    Held<IStream> replacement;
    EXPECT_EQ(m_root->CreateStream("stream"_w, kExclusive | STGM_CREATE, 0, 0, replacement.Put()), S_OK);

    Held<IStream> target;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, target.Put()), S_OK);
    Held<IStream> clone;
    STATSTG stat = {};
    ULONG count = 0;
    std::uint8_t byte = 0;
    for (IStream* dead : {inner.Get(), stream.Get()}) {
        EXPECT_CODE(dead->Read(&byte, 1, &count), STG_E_REVERTED);
        EXPECT_CODE(dead->Write(&byte, 1, &count), STG_E_REVERTED);
        EXPECT_CODE(dead->Seek(Offset(0), STREAM_SEEK_SET, nullptr), STG_E_REVERTED);
        EXPECT_CODE(dead->SetSize(Size(1)), STG_E_REVERTED);
        EXPECT_CODE(dead->CopyTo(target.Get(), Size(1), nullptr, nullptr), STG_E_REVERTED);
        EXPECT_CODE(dead->Commit(STGC_DEFAULT), STG_E_REVERTED);
        EXPECT_CODE(dead->Stat(&stat, STATFLAG_NONAME), STG_E_REVERTED);
        EXPECT_CODE(dead->Clone(clone.Put()), STG_E_REVERTED);
    }
    EXPECT_CODE(storage->CreateStream("more"_w, kExclusive, 0, 0, clone.Put()), STG_E_REVERTED);
    EXPECT_CODE(storage->Stat(&stat, STATFLAG_NONAME), STG_E_REVERTED);
    WriteAll(replacement.Get(), {7});
    replacement.Reset();
    Reopen(kReadOnly);
    EXPECT_EQ(Tree(m_root.Get()), (std::map<CStringW, Bytes>{{"stream"_w, {7}}}));
}

TEST_F(StorageElements, OfAReleasedStorageAreReverted) {
    Held<IStorage> storage = MakeStorage(m_root.Get(), "storage"_w);
    Held<IStream> stream;
    ASSERT_EQ(storage->CreateStream("stream"_w, kExclusive, 0, 0, stream.Put()), S_OK);
    WriteAll(stream.Get(), {1, 2});
    storage.Reset();
    ULONG count = 0;
    std::uint8_t byte = 0;
    EXPECT_CODE(stream->Read(&byte, 1, &count), STG_E_REVERTED);
    // The storage is free again, and so is the stream, though somebody still holds an object on it.
    ASSERT_EQ(m_root->OpenStorage("storage"_w, nullptr, kExclusive, nullptr, 0, storage.Put()), S_OK);
    Bytes bytes;
    EXPECT_CODE(ReadStream(storage.Get(), "stream"_w, bytes), S_OK);
    EXPECT_EQ(bytes, (Bytes{1, 2}));
    storage.Reset();
    m_root.Reset();
    EXPECT_CODE(stream->Write(&byte, 1, &count), STG_E_REVERTED);
}

TEST_F(StorageElements, AreObjectsOfTheirInterfacesOnly) {
    Held<IStream> stream;
    Held<IEnumSTATSTG> enumerator;
    ASSERT_EQ(m_root->CreateStream("s"_w, kExclusive, 0, 0, stream.Put()), S_OK);
    ASSERT_EQ(m_root->EnumElements(0, nullptr, 0, enumerator.Put()), S_OK);
    const struct {
        const char* name;
        IUnknown* object;
        std::vector<IID> known;
    } rows[] = {
        {"storage", m_root.Get(), {IID_IUnknown, IID_IStorage}},
        {"stream", stream.Get(), {IID_IUnknown, IID_ISequentialStream, IID_IStream}},
        {"enumerator", enumerator.Get(), {IID_IUnknown, IID_IEnumSTATSTG}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Held<IUnknown> identity;
        ASSERT_EQ(row.object->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(identity.Put())), S_OK);
        for (const IID& iid : {IID_IUnknown, IID_IStorage, IID_ISequentialStream, IID_IStream, IID_IEnumSTATSTG,
                               IID_ILockBytes, IID_IMalloc}) {
            const bool known =
                std::any_of(row.known.begin(), row.known.end(), [&](const IID& one) { return IsEqualGUID(one, iid); });
            Held<IUnknown> found;
            Held<IUnknown> again;
            EXPECT_CODE(row.object->QueryInterface(iid, reinterpret_cast<void**>(found.Put())),
                        known ? S_OK : E_NOINTERFACE);
            EXPECT_EQ(static_cast<bool>(found), known);
            if (known) {
                EXPECT_EQ(found->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(again.Put())), S_OK);
                EXPECT_EQ(again.Get(), identity.Get());
            }
        }
    }
}

TEST_F(StorageElements, CarryClassAndStateBits) {
    const CLSID message = OleGuid(0x00020D0B);
    EXPECT_EQ(WriteClassStg(m_root.Get(), message), S_OK);
    Held<IStorage> storage = MakeStorage(m_root.Get(), "storage"_w);
    EXPECT_EQ(storage->SetClass(OleGuid(0x1234)), S_OK);
    EXPECT_EQ(storage->SetStateBits(0xFF, 0xF0), S_OK);
    EXPECT_EQ(storage->SetStateBits(0x0F, 0x8C), S_OK);
    STATSTG stat = {};
    ASSERT_EQ(storage->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(stat.grfStateBits, 0x7CU);
    storage.Reset();
    Reopen(kReadOnly);
    CLSID clsid = {};
    EXPECT_EQ(ReadClassStg(m_root.Get(), &clsid), S_OK);
    EXPECT_TRUE(IsEqualGUID(clsid, message));
    ASSERT_EQ(m_root->OpenStorage("storage"_w, nullptr, kReadOnly, nullptr, 0, storage.Put()), S_OK);
    ASSERT_EQ(storage->Stat(&stat, STATFLAG_DEFAULT), S_OK);
    EXPECT_EQ(CStringW(stat.pwcsName), "storage"_w);
    CoTaskMemFree(stat.pwcsName);
    EXPECT_TRUE(IsEqualGUID(stat.clsid, OleGuid(0x1234)));
    EXPECT_EQ(stat.type, static_cast<DWORD>(STGTY_STORAGE));
    EXPECT_EQ(stat.grfMode, kReadOnly);
    EXPECT_CODE(ReadClassStg(nullptr, &clsid), E_INVALIDARG);
}

TEST_F(StorageElements, CopyToMergesStoragesAndReplacesStreams) {
    Held<IStorage> source;
    ASSERT_EQ(StgCreateDocfile(m_folder.Name("source").c_str(), kExclusive, 0, source.Put()), S_OK);
    source->SetClass(OleGuid(7));
    AddStream(source.Get(), "both"_w, Pattern(70'000, 1));
    AddStream(source.Get(), "left out"_w, {1});
    {
        Held<IStorage> shared = MakeStorage(source.Get(), "shared"_w);
        AddStream(shared.Get(), "new"_w, {2});
        AddStream(shared.Get(), "left out"_w, {3});  // only names of the first storage are excluded
        MakeStorage(shared.Get(), "empty"_w);
    }
    AddStream(m_root.Get(), "BOTH"_w, {9, 9});
    AddStream(m_root.Get(), "own"_w, {8});
    {
        Held<IStorage> shared = MakeStorage(m_root.Get(), "shared"_w);
        AddStream(shared.Get(), "old"_w, {7});
    }
    CStringW excluded = "left out"_w;
    OLECHAR* names[] = {excluded.data(), nullptr};
    // What is open in the source is copied like everything else.
    Held<IStream> open;
    ASSERT_EQ(source->OpenStream("both"_w, nullptr, kExclusive, 0, open.Put()), S_OK);
    EXPECT_CODE(source->CopyTo(0, nullptr, names, m_root.Get()), S_OK);
    Reopen(kReadOnly);
    const std::map<CStringW, Bytes> expected = {{"both"_w, Pattern(70'000, 1)}, {"own"_w, {8}},
                                                {"shared/new"_w, {2}},          {"shared/left out"_w, {3}},
                                                {"shared/old"_w, {7}},          {"shared/empty/"_w, {}}};
    EXPECT_EQ(Tree(m_root.Get()), expected);
    STATSTG stat = {};
    EXPECT_EQ(m_root->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_TRUE(IsEqualGUID(stat.clsid, OleGuid(7)));
}

TEST_F(StorageElements, CopyToLeavesOutKinds) {
    AddStream(m_root.Get(), "stream"_w, {1});
    {
        Held<IStorage> inner = MakeStorage(m_root.Get(), "inner"_w);
        AddStream(inner.Get(), "deep"_w, {2});
    }
    const struct {
        const char* name;
        std::vector<IID> excluded;
        std::vector<std::string> expected;
    } rows[] = {
        {"nothing", {}, {"inner/deep", "stream"}},
        {"storages", {IID_IStorage}, {"stream"}},
        {"streams", {IID_IStream}, {"inner/"}},
        {"both", {IID_IStream, IID_IStorage}, {}},
        {"something else", {IID_ILockBytes}, {"inner/deep", "stream"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Held<IStorage> target;
        ASSERT_EQ(StgCreateDocfile(m_folder.Name("target").c_str(), kExclusive | STGM_CREATE, 0, target.Put()), S_OK);
        EXPECT_EQ(m_root->CopyTo(static_cast<DWORD>(row.excluded.size()), row.excluded.data(), nullptr, target.Get()),
                  S_OK);
        std::vector<CStringW> found;
        for (const auto& [path, bytes] : Tree(target.Get())) {
            found.push_back(path);
        }
        EXPECT_EQ(found, Wide(row.expected));
    }
}

}  // namespace
