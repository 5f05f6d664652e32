#include "localmapi/msg/NameStreams.h"

#include "localmapi/base/Crc.h"
#include "localmapi/base/NameList.h"
#include "localmapi/msg/ElementNames.h"
#include "localmapi/msg/ValueCoding.h"
#include "mapi/MapiGuids.h"

#include <algorithm>
#include <array>
#include <map>
#include <vector>

namespace localmapi::msg {

namespace {

constexpr ULONG kSetStream = PROP_TAG(PT_BINARY, NameList::kSetsId);
constexpr ULONG kEntryStream = PROP_TAG(PT_BINARY, NameList::kEntriesId);
constexpr ULONG kTextStream = PROP_TAG(PT_BINARY, NameList::kTextsId);

constexpr ULONG kFirstHashStream = 0x1000;
constexpr std::uint32_t kHashStreams = 0x1F;

// What the three streams may hold at most: as many names as there are ids, with texts of a hundred characters.
constexpr std::uint64_t kMostStreamBytes = std::uint64_t{8} << 20;

Bytes ReadStream(OpenedStorage& storage, ULONG tag, Diagnostics& problems) {
    auto stream = storage.OpenStream(ValueName(tag));
    auto bytes = stream ? (*stream)->ReadAll(kMostStreamBytes) : Result<Bytes>(stream.TakeFailure());
    if (!bytes) {
        problems.Report(bytes.Failure().text + "; the names of named properties that it holds are lost");
        return {};
    }
    return *std::move(bytes);
}

// What the streams of the storage are made of, name by name.
class NameWriter {
public:
    void Add(const NamedId& named) {
        const auto index = static_cast<std::uint16_t>(named.id - kFirstNamedId);
        // Readers take an entry's place for its index: a place without a name is filled.
        while (m_list.entries.size() / NameList::kEntrySize < index) {
            AppendEntry(m_list.entries, 0, 0, static_cast<std::uint16_t>(m_list.entries.size() / NameList::kEntrySize));
        }
        const PropertyName& name = named.name;
        const auto kindAndSet = static_cast<std::uint16_t>(SetNumber(name.set) << 1 | (name.isText ? 1 : 0));
        const std::uint32_t hash = name.isText ? HashOf(name.text) : name.number;
        AppendEntry(m_list.entries, name.isText ? AddText(name.text) : name.number, kindAndSet, index);
        AppendEntry(m_hashes[(hash ^ kindAndSet) % kHashStreams], hash, kindAndSet, index);
    }

    const NameList& List() const noexcept { return m_list; }
    const std::map<std::uint32_t, Bytes>& Hashes() const noexcept { return m_hashes; }

private:
    static void AppendEntry(Bytes& stream, std::uint32_t first, std::uint16_t kindAndSet, std::uint16_t index) {
        AppendNumber(stream, first, 4);
        AppendNumber(stream, kindAndSet, 2);
        AppendNumber(stream, index, 2);
    }

    static std::uint32_t HashOf(const CStringW& text) {
        Bytes bytes;
        AppendUtf16(bytes, text);
        return Crc(bytes);
    }

    std::uint32_t AddText(const CStringW& text) {
        const auto at = static_cast<std::uint32_t>(m_list.texts.size());
        AppendNumber(m_list.texts, text.size() * 2, 4);
        AppendUtf16(m_list.texts, text);
        m_list.texts.resize(static_cast<std::size_t>(RoundUp(m_list.texts.size(), 4)));
        return at;
    }

    std::uint16_t SetNumber(const GUID& set) {
        if (set == GUID{}) {
            return NameList::kNoSet;
        }
        if (set == PS_MAPI) {
            return NameList::kMapiSet;
        }
        if (set == PS_PUBLIC_STRINGS) {
            return NameList::kPublicStringsSet;
        }
        auto known = std::find(m_sets.begin(), m_sets.end(), set);
        if (known == m_sets.end()) {
            known = m_sets.insert(m_sets.end(), set);
            AppendGuid(m_list.sets, set);
        }
        return static_cast<std::uint16_t>(NameList::kFirstListedSet + (known - m_sets.begin()));
    }

    NameList m_list;
    std::vector<GUID> m_sets;  // of m_list.sets
    std::map<std::uint32_t, Bytes> m_hashes;
};

}  // namespace

PropertyNames LoadNames(OpenedStorage& root, Diagnostics& problems) {
    PropertyNames names;
    const CStringW storageName(kNameStorage);
    auto opened = root.OpenStorage(storageName);
    if (!opened) {
        if (!opened.IsNotFound()) {
            problems.Report(opened.Failure().text + "; the names of named properties are lost");
        }
        return names;
    }
    OpenedStorage storage(*std::move(opened), root.NameOf(storageName) + '/', root.IsWritable());
    const NameList list{ReadStream(storage, kSetStream, problems), ReadStream(storage, kEntryStream, problems),
                        ReadStream(storage, kTextStream, problems)};
    for (NamedId& named : ReadNames(list, storage.Path(), problems)) {
        names.Insert(named.id, std::move(named.name));
    }
    return names;
}

Status SaveNames(OpenedStorage& root, const PropertyNames& names) {
    std::vector<NamedId> sorted(names.Entries().begin(), names.Entries().end());
    std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.id < b.id; });
    NameWriter writer;
    for (const NamedId& named : sorted) {
        writer.Add(named);
    }
    const CStringW storageName(kNameStorage);
    VX_TRY_ASSIGN(auto made, root.CreateStorage(storageName));
    OpenedStorage storage(std::move(made), root.NameOf(storageName) + '/', true);
    VX_TRY(storage.WriteStream(ValueName(kSetStream), writer.List().sets));
    VX_TRY(storage.WriteStream(ValueName(kEntryStream), writer.List().entries));
    VX_TRY(storage.WriteStream(ValueName(kTextStream), writer.List().texts));
    for (const auto& [number, hashes] : writer.Hashes()) {
        VX_TRY(storage.WriteStream(ValueName(PROP_TAG(PT_BINARY, kFirstHashStream + number)), hashes));
    }
    return {};
}

}  // namespace localmapi::msg
