// Foreign and damaged compound files: what a file of another writer may look like, what each kind of damage costs, and
// that no cut and no changed byte costs more than an error.
#include "HandMadeFile.h"

#include <functional>

#include <pthread.h>

using namespace storage_test;

namespace {

const std::vector<HandMadeFile::Stream> kStreams = {
    {"tiny", {1, 2, 3}},        {"Small", Pattern(1000, 1)},   {"empty", {}},
    {"aaaa", Pattern(4096, 2)}, {"large", Pattern(20'000, 3)}, {"B", Pattern(64, 4)},
};

Held<ILockBytes> BytesOver(const Bytes& file) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, file.size());
    if (!file.empty()) {
        std::copy(file.begin(), file.end(), static_cast<std::uint8_t*>(GlobalLock(block)));
        GlobalUnlock(block);
    }
    Held<ILockBytes> bytes;
    EXPECT_EQ(CreateILockBytesOnHGlobal(block, TRUE, bytes.Put()), S_OK);
    return bytes;
}

HRESULT OpenBytes(const Bytes& file, Held<IStorage>& root) {
    const Held<ILockBytes> bytes = BytesOver(file);
    return StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kReadOnly, nullptr, 0, root.Put());
}

// Reads a stream to its end or to its damage. `bytes` is what came before.
HRESULT ReadUntilDamage(IStorage* storage, const CStringW& name, Bytes& bytes) {
    Held<IStream> stream;
    bytes.clear();
    HRESULT hr = storage->OpenStream(name.c_str(), nullptr, kReadOnly, 0, stream.Put());
    Bytes buffer(3000);
    ULONG got = 1;
    while (SUCCEEDED(hr) && got > 0) {
        hr = stream->Read(buffer.data(), static_cast<ULONG>(buffer.size()), &got);
        bytes.insert(bytes.end(), buffer.begin(), buffer.begin() + got);
    }
    return hr;
}

CStringW Widen(const std::string& name) {
    return {name.begin(), name.end()};
}

TEST(ForeignFiles, OfBothVersionsReadWhole) {
    for (const unsigned version : {3U, 4U}) {
        SCOPED_TRACE(version);
        const HandMadeFile file(version, kStreams);
        Held<IStorage> root;
        ASSERT_EQ(OpenBytes(file.bytes, root), S_OK);
        std::map<CStringW, Bytes> expected = {{"Folder/inside"_w, Bytes(10, 'i')}};
        for (const auto& stream : kStreams) {
            expected[Widen(stream.name)] = stream.bytes;
        }
        EXPECT_EQ(Tree(root.Get()), expected);
        EXPECT_EQ(Names(root.Get()), Wide({"B", "aaaa", "tiny", "empty", "large", "Small", "Folder/"}))
            << "whatever order the file has";
    }
}

TEST(ForeignFiles, AreChangedLikeOwnOnes) {
    const HandMadeFile file(4, kStreams);
    const Held<ILockBytes> bytes = BytesOver(file.bytes);
    Held<IStorage> root;
    ASSERT_EQ(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kExclusive, nullptr, 0, root.Put()), S_OK);
    auto expected = Tree(root.Get());
    AddStream(root.Get(), "LARGE"_w, Pattern(100'000, 9));
    expected.erase("large"_w);
    expected["LARGE"_w] = Pattern(100'000, 9);
    EXPECT_EQ(root->Commit(STGC_DEFAULT), S_OK);
    EXPECT_EQ(Tree(root.Get()), expected);
    root.Reset();
    ASSERT_EQ(StgOpenStorageOnILockBytes(bytes.Get(), nullptr, kReadOnly, nullptr, 0, root.Put()), S_OK);
    EXPECT_EQ(Tree(root.Get()), expected);
}

// A damage, what opening answers, and what it costs: streams that fail, with the bytes that still come before; elements
// that are gone; streams that end early without anybody being able to tell.
struct Damage {
    const char* name;
    void (*apply)(HandMadeFile& file);
    HRESULT open = S_OK;
    std::map<std::string, std::size_t> lost = {};
    std::vector<std::string> missing = {};
    std::map<std::string, std::size_t> shorter = {};
};

std::uint32_t NthSector(const HandMadeFile& file, const std::string& name, int n) {
    std::uint32_t sector = file.StartOf(name);
    while (n-- > 0) {
        sector = file.Get(file.FatSlotAt(sector));
    }
    return sector;
}

const Damage kDamages[] = {
    {"none", [](HandMadeFile&) {}},
    // The header.
    {"signature", [](HandMadeFile& f) { f.bytes[3] ^= 1; }, STG_E_FILEALREADYEXISTS},
    {"version 2", [](HandMadeFile& f) { f.bytes[26] = 2; }, STG_E_OLDFORMAT},
    {"version 5", [](HandMadeFile& f) { f.bytes[26] = 5; }, STG_E_DOCFILECORRUPT},
    {"byte order", [](HandMadeFile& f) { f.Set(28, 0x9FEFF); }, STG_E_DOCFILECORRUPT},
    {"sectors of 2 to the 31", [](HandMadeFile& f) { f.bytes[30] = 31; }, STG_E_DOCFILECORRUPT},
    {"mini sectors of 1", [](HandMadeFile& f) { f.bytes[32] = 0; }, STG_E_DOCFILECORRUPT},
    {"cutoff of 0", [](HandMadeFile& f) { f.Set(56, 0); }, STG_E_DOCFILECORRUPT},
    {"minor version", [](HandMadeFile& f) { f.bytes[24] = 0x21; }},
    {"count of FAT sectors", [](HandMadeFile& f) { f.Set(44, 0xFFFFFFFF); }},
    {"count of mini FAT sectors", [](HandMadeFile& f) { f.Set(64, 0); }},
    {"count of DIFAT sectors", [](HandMadeFile& f) { f.Set(72, 0x7FFFFFFF); }},
    {"DIFAT sector that is none", [](HandMadeFile& f) { f.Set(68, 0x12345678); }},
    {"first DIFAT sector left as free", [](HandMadeFile& f) { f.Set(68, kFree); }},
    {"no FAT", [](HandMadeFile& f) { f.Set(76, kFree); }, STG_E_DOCFILECORRUPT},
    {"FAT beyond the file", [](HandMadeFile& f) { f.Set(76, 60'000); }, STG_E_DOCFILECORRUPT},
    {"the same FAT sector 109 times, then DIFAT in a ring",
     [](HandMadeFile& f) {
         for (std::size_t i = 0; i < 109; ++i) {
             f.Set(76 + 4 * i, f.fatSector);
         }
         f.Set(68, f.fatSector);
     }},
    {"no directory", [](HandMadeFile& f) { f.Set(48, kEnd); }, STG_E_DOCFILECORRUPT},
    {"directory beyond the file", [](HandMadeFile& f) { f.Set(48, 100'000); }, STG_E_DOCFILECORRUPT},
    {"no mini FAT", [](HandMadeFile& f) { f.Set(60, kEnd); }, S_OK, {{"Small", 64}}},
    // The FAT.
    {"directory in a ring",
     [](HandMadeFile& f) { f.Set(f.FatSlotAt(f.directorySectors.back()), f.directorySectors.front()); }},
    {"chain in a ring",
     [](HandMadeFile& f) { f.Set(f.FatSlotAt(NthSector(f, "large", 4)), NthSector(f, "large", 2)); },
     S_OK,
     {{"large", 5 * 512}}},
    {"chain in a ring that shows behind the end",
     [](HandMadeFile& f) { f.Set(f.FatSlotAt(NthSector(f, "large", 35)), NthSector(f, "large", 16)); },
     S_OK,
     {{"large", 36 * 512}}},
    {"chain in a ring behind the end",
     [](HandMadeFile& f) { f.Set(f.FatSlotAt(NthSector(f, "large", 39)), NthSector(f, "large", 3)); }},
    {"chain to itself",
     [](HandMadeFile& f) { f.Set(f.FatSlotAt(f.StartOf("large")), f.StartOf("large")); },
     S_OK,
     {{"large", 512}}},
    {"chain that ends early",
     [](HandMadeFile& f) { f.Set(f.FatSlotAt(NthSector(f, "large", 9)), kEnd); },
     S_OK,
     {{"large", 10 * 512}}},
    {"chain to a free slot",
     [](HandMadeFile& f) { f.Set(f.FatSlotAt(NthSector(f, "large", 9)), kFree); },
     S_OK,
     {{"large", 10 * 512}}},
    {"chain beyond the file",
     [](HandMadeFile& f) { f.Set(f.FatSlotAt(NthSector(f, "large", 9)), 5000); },
     S_OK,
     {{"large", 10 * 512}}},
    {"chain longer than the stream",
     [](HandMadeFile& f) { f.Set(f.EntryAt(f.IdOf("large")) + kSizeField, 4100); },
     S_OK,
     {},
     {},
     {{"large", 4100}}},
    {"mini stream in a ring",
     [](HandMadeFile& f) { f.Set(f.FatSlotAt(f.Get(f.EntryAt(0) + kStart)), f.Get(f.EntryAt(0) + kStart)); },
     S_OK,
     {{"Small", 0}, {"B", 0}}},
    // The mini FAT.
    {"mini chain in a ring",
     [](HandMadeFile& f) { f.Set(f.MiniFatSlotAt(f.StartOf("Small") - 3), f.StartOf("Small")); },
     S_OK,
     {{"Small", 256}}},
    {"mini chain that ends early",
     [](HandMadeFile& f) { f.Set(f.MiniFatSlotAt(f.StartOf("Small") - 3), kEnd); },
     S_OK,
     {{"Small", 256}}},
    {"mini chain beyond the mini stream",
     [](HandMadeFile& f) { f.Set(f.MiniFatSlotAt(f.StartOf("Small") - 3), 100'000); },
     S_OK,
     {{"Small", 256}}},
    // The directory.
    {"root of another type", [](HandMadeFile& f) { f.bytes[f.EntryAt(0) + 66] = 1; }, STG_E_DOCFILECORRUPT},
    {"size that lies",
     [](HandMadeFile& f) { f.Set(f.EntryAt(f.IdOf("large")) + kSizeField, 25'000); },
     S_OK,
     {{"large", 20'480}}},
    {"size of nearly 4 GiB",
     [](HandMadeFile& f) { f.Set(f.EntryAt(f.IdOf("large")) + kSizeField, 0xFFFFFFFF); },
     S_OK,
     {{"large", 20'480}}},
    {"upper half of a size", [](HandMadeFile& f) { f.Set(f.EntryAt(f.IdOf("large")) + kSizeField + 4, 0xABCD1234); }},
    {"start beyond the file",
     [](HandMadeFile& f) { f.Set(f.EntryAt(f.IdOf("large")) + kStart, 77'777); },
     S_OK,
     {{"large", 0}}},
    {"mini start beyond the mini stream",
     [](HandMadeFile& f) { f.Set(f.EntryAt(f.IdOf("B")) + kStart, 77'777); },
     S_OK,
     {{"B", 0}}},
    {"empty stream that starts somewhere", [](HandMadeFile& f) { f.Set(f.EntryAt(f.IdOf("empty")) + kStart, 3); }},
    {"mini stream size of 0",
     [](HandMadeFile& f) { f.Set(f.EntryAt(0) + kSizeField, 0); },
     S_OK,
     {{"tiny", 0}, {"Small", 0}, {"B", 0}, {"Folder/inside", 0}}},
    {"mini stream that ends within its last piece",
     [](HandMadeFile& f) { f.Set(f.EntryAt(0) + kSizeField, f.Get(f.EntryAt(0) + kSizeField) - 40); }},
    {"mini stream size of 4 GiB", [](HandMadeFile& f) { f.Set(f.EntryAt(0) + kSizeField, 0xFFFFFFFF); }},
    {"sibling that is itself", [](HandMadeFile& f) { f.Set(f.EntryAt(f.IdOf("B")) + kRight, f.IdOf("B")); }},
    {"sibling that is the root", [](HandMadeFile& f) { f.Set(f.EntryAt(f.IdOf("B")) + kLeft, 0); }},
    {"siblings in a ring", [](HandMadeFile& f) { f.Set(f.EntryAt(f.IdOf("B")) + kRight, 1); }},
    {"sibling beyond the directory", [](HandMadeFile& f) { f.Set(f.EntryAt(f.IdOf("B")) + kLeft, 123'456); }},
    {"sibling that is unused", [](HandMadeFile& f) { f.bytes[f.EntryAt(f.IdOf("B")) + 66] = 0; }, S_OK, {}, {"B"}},
    {"sibling of an unknown type", [](HandMadeFile& f) { f.bytes[f.EntryAt(f.IdOf("B")) + 66] = 3; }, S_OK, {}, {"B"}},
    {"storage that contains itself", [](HandMadeFile& f) { f.Set(f.EntryAt(2) + kRight, 1); }},
    {"stream with children", [](HandMadeFile& f) { f.Set(f.EntryAt(f.IdOf("B")) + kChild, 1); }},
    {"element without a name", [](HandMadeFile& f) { f.bytes[f.EntryAt(f.IdOf("B")) + 64] = 0; }, S_OK, {}, {"B"}},
    {"name length that lies", [](HandMadeFile& f) { f.Set(f.EntryAt(f.IdOf("B")) + 64, 0x0002FFFF); }},
    {"colours all red",
     [](HandMadeFile& f) {
         for (std::uint32_t id = 0; id < 9; ++id) {
             f.bytes[f.EntryAt(id) + 67] = 0;
         }
     }},
    {"second element of one name",
     [](HandMadeFile& f) {
         f.bytes[f.EntryAt(f.IdOf("B")) + 64] = 2 * (4 + 1);
         for (std::size_t i = 0; i < 4; ++i) {
             f.bytes[f.EntryAt(f.IdOf("B")) + 2 * i] = static_cast<std::uint8_t>("TINY"[i]);
         }
     },
     S_OK,
     {},
     {"B"}},
};

TEST(DamagedFiles, CostWhatIsDamagedAndNothingElse) {
    for (const Damage& damage : kDamages) {
        SCOPED_TRACE(damage.name);
        HandMadeFile file(3, kStreams);
        damage.apply(file);
        Held<IStorage> root;
        ASSERT_EQ(Code{OpenBytes(file.bytes, root)}, Code{damage.open});
        if (FAILED(damage.open)) {
            continue;
        }
        std::map<std::string, Bytes> expected = {{"Folder/inside", Bytes(10, 'i')}};
        for (const auto& stream : kStreams) {
            expected[stream.name] = stream.bytes;
        }
        Held<IStorage> folder;
        ASSERT_EQ(root->OpenStorage("Folder"_w, nullptr, kReadOnly, nullptr, 0, folder.Put()), S_OK);
        for (const auto& [path, whole] : expected) {
            SCOPED_TRACE(path);
            const bool isInside = path == "Folder/inside";
            Bytes bytes;
            const HRESULT hr = ReadUntilDamage(isInside ? folder.Get() : root.Get(),
                                               isInside ? "inside"_w : CStringW(path.begin(), path.end()), bytes);
            if (std::count(damage.missing.begin(), damage.missing.end(), path) != 0) {
                EXPECT_CODE(hr, STG_E_FILENOTFOUND);
                continue;
            }
            const auto lost = damage.lost.find(path);
            const auto shorter = damage.shorter.find(path);
            const std::size_t sound = lost != damage.lost.end()         ? lost->second
                                      : shorter != damage.shorter.end() ? shorter->second
                                                                        : whole.size();
            EXPECT_CODE(hr, lost != damage.lost.end() ? STG_E_DOCFILECORRUPT : S_OK);
            // In a ring, more may come than is sound before it shows.
            EXPECT_TRUE(lost != damage.lost.end() ? bytes.size() >= sound : bytes.size() == sound) << bytes.size();
            const auto end = whole.begin() + static_cast<std::ptrdiff_t>(std::min(sound, whole.size()));
            EXPECT_TRUE(bytes.size() >= sound && std::equal(whole.begin(), end, bytes.begin()));
        }
    }
}

// Opens, lists, reads and copies whatever is there. The answers must be codes of this part, and the whole bounded.
void VisitEverything(IStorage* storage, std::uint64_t& bytesRead) {
    Held<IEnumSTATSTG> enumerator;
    ASSERT_EQ(storage->EnumElements(0, nullptr, 0, enumerator.Put()), S_OK);
    STATSTG stat = {};
    while (enumerator->Next(1, &stat, nullptr) == S_OK) {
        const CStringW name = stat.pwcsName;
        CoTaskMemFree(stat.pwcsName);
        if (stat.type == STGTY_STREAM) {
            Bytes bytes;
            const HRESULT hr = ReadUntilDamage(storage, name, bytes);
            EXPECT_TRUE(hr == S_OK || hr == STG_E_DOCFILECORRUPT) << std::hex << hr;
            EXPECT_TRUE(hr != S_OK || bytes.size() == stat.cbSize.QuadPart);
            bytesRead += bytes.size();
        } else {
            Held<IStorage> inner;
            ASSERT_EQ(storage->OpenStorage(name.c_str(), nullptr, kReadOnly, nullptr, 0, inner.Put()), S_OK);
            VisitEverything(inner.Get(), bytesRead);
        }
    }
}

void VisitFile(const Bytes& file) {
    Held<IStorage> root;
    const HRESULT hr = OpenBytes(file, root);
    if (FAILED(hr)) {
        EXPECT_TRUE(hr == STG_E_DOCFILECORRUPT || hr == STG_E_FILEALREADYEXISTS || hr == STG_E_OLDFORMAT)
            << std::hex << hr;
        return;
    }
    std::uint64_t bytesRead = 0;
    VisitEverything(root.Get(), bytesRead);
    EXPECT_LE(bytesRead, 100 * file.size());
    Held<ILockBytes> copyBytes;
    Held<IStorage> copy;
    ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, copyBytes.Put()), S_OK);
    ASSERT_EQ(StgCreateDocfileOnILockBytes(copyBytes.Get(), kExclusive, 0, copy.Put()), S_OK);
    const HRESULT copied = root->CopyTo(0, nullptr, nullptr, copy.Get());
    EXPECT_TRUE(copied == S_OK || copied == STG_E_DOCFILECORRUPT || copied == STG_E_INVALIDNAME) << std::hex << copied;
}

TEST(DamagedFiles, CutAnywhereAreAnErrorAtMost) {
    for (const unsigned version : {3U, 4U}) {
        const HandMadeFile file(version, kStreams);
        const std::size_t step = version == 3 ? 61 : 509;
        for (std::size_t size = 0; size < file.bytes.size(); size += size < 600 ? 7 : step) {
            SCOPED_TRACE(testing::Message() << "version " << version << ", " << size << " bytes");
            VisitFile({file.bytes.begin(), file.bytes.begin() + static_cast<std::ptrdiff_t>(size)});
            if (testing::Test::HasFailure()) {
                return;
            }
        }
    }
}

TEST(DamagedFiles, WithAnyByteChangedAreAnErrorAtMost) {
    const HandMadeFile file(3, kStreams);
    std::vector<std::size_t> starts = {0, file.SectorAt(file.fatSector), file.SectorAt(file.miniFatSector)};
    for (const std::uint32_t sector : file.directorySectors) {
        starts.push_back(file.SectorAt(sector));
    }
    Bytes changed = file.bytes;
    for (const std::size_t start : starts) {
        for (std::size_t at = start; at < start + file.sectorBytes; ++at) {
            const std::uint8_t original = changed[at];
            for (const int value : {original ^ 1, original ^ 0xFF, original ^ 0x80, 0, 2}) {
                SCOPED_TRACE(testing::Message() << "byte " << at << " from " << int{original} << " to " << value);
                changed[at] = static_cast<std::uint8_t>(value);
                VisitFile(changed);
                if (testing::Test::HasFailure()) {
                    return;
                }
            }
            changed[at] = original;
        }
    }
}

TEST(DamagedFiles, ThatGiveAllStreamsTheSameSectorsAreNotCopied) {
    std::vector<HandMadeFile::Stream> streams = {{"large", Pattern(20'000, 3)}};
    for (char c = 'a'; c <= 'z'; ++c) {
        streams.push_back({std::string(1, c), {}});
    }
    HandMadeFile file(3, streams);
    for (char c = 'a'; c <= 'z'; ++c) {
        const std::size_t entry = file.EntryAt(file.IdOf(std::string(1, c)));
        file.Set(entry + kStart, file.StartOf("large"));
        file.Set(entry + kSizeField, 20'000);
    }
    Held<IStorage> root;
    ASSERT_EQ(OpenBytes(file.bytes, root), S_OK);
    Bytes bytes;
    EXPECT_EQ(ReadUntilDamage(root.Get(), "q"_w, bytes), S_OK) << "one of them alone is whole";
    Held<ILockBytes> copyBytes;
    Held<IStorage> copy;
    ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, copyBytes.Put()), S_OK);
    ASSERT_EQ(StgCreateDocfileOnILockBytes(copyBytes.Get(), kExclusive, 0, copy.Put()), S_OK);
    EXPECT_CODE(root->CopyTo(0, nullptr, nullptr, copy.Get()), STG_E_DOCFILECORRUPT);
}

void OnASmallStack(const std::function<void()>& body) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 128 * 1024);
    pthread_t thread = {};
    ASSERT_EQ(pthread_create(
                  &thread, &attributes,
                  [](void* run) -> void* { return (*static_cast<const std::function<void()>*>(run))(), nullptr; },
                  const_cast<std::function<void()>*>(&body)),
              0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

// Storages in storages, 100,000 deep: neither the walk nor the end of the tree may use the stack for it.
TEST(DamagedFiles, WithStoragesWithoutEndOpen) {
    constexpr std::uint32_t kCount = 100'000;
    const std::size_t directorySectors = kCount / 4;
    const std::size_t fatSectors = (directorySectors + 127) / 126;
    const std::size_t difatSectors = (fatSectors - 109 + 126) / 127;
    HandMadeFile file(3, {});
    const std::size_t firstFat = directorySectors;
    const std::size_t firstDifat = firstFat + fatSectors;
    Bytes header(file.bytes.begin(), file.bytes.begin() + 512);
    file.bytes.assign(512 * (1 + firstDifat + difatSectors), 0xFF);
    std::copy(header.begin(), header.end(), file.bytes.begin());
    const auto slot = [&](std::size_t sector) { return 512 * (1 + firstFat) + 4 * sector; };
    for (std::size_t i = 0; i < directorySectors; ++i) {
        file.Set(slot(i), i + 1 < directorySectors ? static_cast<std::uint32_t>(i + 1) : kEnd);
    }
    std::size_t next = 0;
    for (; next < std::min<std::size_t>(109, fatSectors); ++next) {
        file.Set(76 + 4 * next, static_cast<std::uint32_t>(firstFat + next));
    }
    for (std::size_t i = 0; i < difatSectors; ++i) {
        const std::size_t at = 512 * (1 + firstDifat + i);
        for (std::size_t k = 0; k < 127 && next < fatSectors; ++k, ++next) {
            file.Set(at + 4 * k, static_cast<std::uint32_t>(firstFat + next));
        }
        file.Set(at + 508, i + 1 < difatSectors ? static_cast<std::uint32_t>(firstDifat + i + 1) : kEnd);
    }
    file.Set(48, 0);
    file.Set(60, kEnd);
    file.Set(68, static_cast<std::uint32_t>(firstDifat));
    for (std::uint32_t id = 0; id < kCount; ++id) {
        const std::size_t at = 512 + 128 * std::size_t{id};
        std::fill_n(file.bytes.begin() + static_cast<std::ptrdiff_t>(at), 128, std::uint8_t{0});
        file.bytes[at] = 's';
        file.bytes[at + 64] = 4;
        file.bytes[at + 66] = id == 0 ? 5 : 1;
        file.Set(at + kLeft, kFree);
        file.Set(at + kRight, kFree);
        file.Set(at + kChild, id + 1 < kCount ? id + 1 : kFree);
    }
    OnASmallStack([&] {
        Held<IStorage> root;
        EXPECT_EQ(OpenBytes(file.bytes, root), S_OK);
    });
    Held<IStorage> root;
    ASSERT_EQ(OpenBytes(file.bytes, root), S_OK);
    std::vector<Held<IStorage>> levels(1);
    ASSERT_EQ(root->OpenStorage("s"_w, nullptr, kReadOnly, nullptr, 0, levels[0].Put()), S_OK);
    HRESULT hr = S_OK;
    while (SUCCEEDED(hr) && levels.size() < kCount) {
        Held<IStorage> inner;
        hr = levels.back()->OpenStorage("s"_w, nullptr, kReadOnly, nullptr, 0, inner.Put());
        levels.push_back(std::move(inner));
    }
    EXPECT_CODE(hr, STG_E_FILENOTFOUND) << "the depth is bounded";
    EXPECT_GT(levels.size(), 500U);
}

}  // namespace
