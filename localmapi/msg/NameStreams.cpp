#include "localmapi/msg/NameStreams.h"

#include "localmapi/base/Crc.h"
#include "localmapi/base/Format.h"
#include "localmapi/msg/ElementNames.h"
#include "localmapi/msg/ValueCoding.h"
#include "mapi/MapiGuids.h"

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <vector>

namespace localmapi::msg {

namespace {

constexpr ULONG kGuidStream = PROP_TAG(PT_BINARY, 0x0002);
constexpr ULONG kEntryStream = PROP_TAG(PT_BINARY, 0x0003);
constexpr ULONG kTextStream = PROP_TAG(PT_BINARY, 0x0004);

constexpr ULONG kFirstHashStream = 0x1000;
constexpr std::uint32_t kHashStreams = 0x1F;

constexpr std::size_t kEntrySize = 8;
constexpr std::size_t kGuidSize = 16;
constexpr std::uint16_t kMostIndexes = PropertyNames::kLastId - PropertyNames::kFirstId;

// Sets that entries name without the GUID stream, which those from kFirstListedSet on are found in.
constexpr std::uint16_t kNoSet = 0;
constexpr std::uint16_t kMapiSet = 1;
constexpr std::uint16_t kPublicStringsSet = 2;
constexpr std::uint16_t kFirstListedSet = 3;

// What the three streams may hold at most: as many names as there are ids, with texts of a hundred characters.
constexpr std::uint64_t kMostStreamBytes = std::uint64_t{8} << 20;

// A name's text. Names have 254 characters at most; entries of a damaged list may all lead to the same long one.
constexpr std::uint32_t kMostTextBytes = 2048;

Bytes ReadStream(OpenedStorage& storage, ULONG tag, Diagnostics& problems) {
    auto stream = storage.OpenStream(ValueName(tag));
    auto bytes = stream ? (*stream)->ReadAll(kMostStreamBytes) : Result<Bytes>(stream.TakeFailure());
    if (!bytes) {
        problems.Report(bytes.Failure().text + "; the names of named properties that it holds are lost");
        return {};
    }
    return *std::move(bytes);
}

GUID GuidAt(ByteView bytes, std::uint64_t at) noexcept {
    GUID guid{};
    guid.Data1 = bytes.U32(at);
    guid.Data2 = bytes.U16(at + 4);
    guid.Data3 = bytes.U16(at + 6);
    for (unsigned i = 0; i < 8; ++i) {
        guid.Data4[i] = bytes.U8(at + 8 + i);
    }
    return guid;
}

std::optional<GUID> SetOf(std::uint16_t number, ByteView guids) noexcept {
    switch (number) {
        case kNoSet: return GUID{};
        case kMapiSet: return PS_MAPI;
        case kPublicStringsSet: return PS_PUBLIC_STRINGS;
        default: break;
    }
    const std::uint64_t at = std::uint64_t{static_cast<std::uint16_t>(number - kFirstListedSet)} * kGuidSize;
    return guids.Has(at, kGuidSize) ? std::optional(GuidAt(guids, at)) : std::nullopt;
}

std::optional<CStringW> TextAt(ByteView texts, std::uint64_t at) {
    const std::uint32_t size = texts.U32(at);
    if (!texts.Has(at, 4) || size > kMostTextBytes || !texts.Has(at + 4, size)) {
        return std::nullopt;
    }
    CStringW text;
    for (std::uint32_t i = 0; i + 1 < size; i += 2) {
        text += static_cast<WCHAR>(texts.U16(at + 4 + i));
    }
    return text;
}

struct NameLists {
    Bytes guids;
    Bytes entries;
    Bytes texts;
};

std::optional<PropertyName> NameOf(ByteView entry, const NameLists& lists) {
    const std::uint16_t kindAndSet = entry.U16(4);
    const auto set = SetOf(kindAndSet >> 1, lists.guids);
    if (!set) {
        return std::nullopt;
    }
    PropertyName name{*set, (kindAndSet & 1) != 0, 0, {}};
    if (!name.isText) {
        name.number = entry.U32(0);
        return name;
    }
    auto text = TextAt(lists.texts, entry.U32(0));
    if (!text) {
        return std::nullopt;
    }
    name.text = *std::move(text);
    return name;
}

// Fills the place of an id without a name.
bool IsFiller(ByteView entry) noexcept {
    return entry.U32(0) == 0 && entry.U16(4) == 0;
}

// What the streams of the storage are made of, name by name.
class NameWriter {
public:
    void Add(const PropertyNames::Entry& entry) {
        const auto index = static_cast<std::uint16_t>(entry.id - PropertyNames::kFirstId);
        // Readers take an entry's place for its index: a place without a name is filled.
        while (m_lists.entries.size() / kEntrySize < index) {
            AppendEntry(m_lists.entries, 0, 0, static_cast<std::uint16_t>(m_lists.entries.size() / kEntrySize));
        }
        const PropertyName& name = entry.name;
        const auto kindAndSet = static_cast<std::uint16_t>(SetNumber(name.set) << 1 | (name.isText ? 1 : 0));
        const std::uint32_t hash = name.isText ? HashOf(name.text) : name.number;
        AppendEntry(m_lists.entries, name.isText ? AddText(name.text) : name.number, kindAndSet, index);
        AppendEntry(m_hashes[(hash ^ kindAndSet) % kHashStreams], hash, kindAndSet, index);
    }

    const NameLists& Lists() const noexcept { return m_lists; }
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
        const auto at = static_cast<std::uint32_t>(m_lists.texts.size());
        AppendNumber(m_lists.texts, text.size() * 2, 4);
        AppendUtf16(m_lists.texts, text);
        m_lists.texts.resize(static_cast<std::size_t>(RoundUp(m_lists.texts.size(), 4)));
        return at;
    }

    std::uint16_t SetNumber(const GUID& set) {
        if (set == GUID{}) {
            return kNoSet;
        }
        if (set == PS_MAPI) {
            return kMapiSet;
        }
        if (set == PS_PUBLIC_STRINGS) {
            return kPublicStringsSet;
        }
        auto known = std::find(m_sets.begin(), m_sets.end(), set);
        if (known == m_sets.end()) {
            known = m_sets.insert(m_sets.end(), set);
            AppendGuid(m_lists.guids, set);
        }
        return static_cast<std::uint16_t>(kFirstListedSet + (known - m_sets.begin()));
    }

    NameLists m_lists;
    std::vector<GUID> m_sets;  // of m_lists.guids
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
    const NameLists lists{ReadStream(storage, kGuidStream, problems), ReadStream(storage, kEntryStream, problems),
                          ReadStream(storage, kTextStream, problems)};
    const ByteView entries(lists.entries);
    for (std::uint64_t at = 0; entries.Has(at, kEntrySize); at += kEntrySize) {
        const ByteView entry = entries.Part(at, kEntrySize);
        const std::uint16_t index = entry.U16(6);
        if (IsFiller(entry)) {
            continue;
        }
        auto name = index <= kMostIndexes ? NameOf(entry, lists) : std::nullopt;
        if (!name) {
            problems.Report(storage.Path() + ": the named property at " + Hex(at)
                            + " of the list contradicts itself; it is left out");
            continue;
        }
        names.Insert(static_cast<std::uint16_t>(PropertyNames::kFirstId + index), *std::move(name));
    }
    return names;
}

Status SaveNames(OpenedStorage& root, const PropertyNames& names) {
    std::vector<PropertyNames::Entry> sorted(names.Entries().begin(), names.Entries().end());
    std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.id < b.id; });
    NameWriter writer;
    for (const PropertyNames::Entry& entry : sorted) {
        writer.Add(entry);
    }
    const CStringW storageName(kNameStorage);
    VX_TRY_ASSIGN(auto made, root.CreateStorage(storageName));
    OpenedStorage storage(std::move(made), root.NameOf(storageName) + '/', true);
    VX_TRY(storage.WriteStream(ValueName(kGuidStream), writer.Lists().guids));
    VX_TRY(storage.WriteStream(ValueName(kEntryStream), writer.Lists().entries));
    VX_TRY(storage.WriteStream(ValueName(kTextStream), writer.Lists().texts));
    for (const auto& [number, hashes] : writer.Hashes()) {
        VX_TRY(storage.WriteStream(ValueName(PROP_TAG(PT_BINARY, kFirstHashStream + number)), hashes));
    }
    return {};
}

}  // namespace localmapi::msg
