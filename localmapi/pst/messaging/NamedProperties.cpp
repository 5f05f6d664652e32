#include "localmapi/pst/messaging/NamedProperties.h"

#include "localmapi/base/Format.h"
#include "localmapi/pst/ltp/Values.h"
#include "mapi/MapiGuids.h"

#include <algorithm>
#include <cstring>
#include <numeric>
#include <string>
#include <tuple>

namespace localmapi::pst {

namespace {

// The streams of the map, by their property ids.
constexpr std::uint16_t kGuidStream = 0x0002;
constexpr std::uint16_t kEntryStream = 0x0003;
constexpr std::uint16_t kTextStream = 0x0004;

constexpr unsigned kEntrySize = 8;  // NAMEID: number or place of the text, kind and set, index
constexpr unsigned kGuidSize = 16;
constexpr std::uint32_t kMostNames = 0x7FFF;

Bytes StreamOf(PropertyContext& map, std::uint16_t id, Diagnostics& problems) {
    Result<PropertyValue> value = map.Read(id);
    Result<Bytes> bytes = value ? value->bytes.ReadAll() : Result<Bytes>(value.TakeFailure());
    if (!bytes) {
        if (!bytes.IsNotFound()) {
            problems.Report(bytes.Failure().text + "; the names of named properties in it are lost");
        }
        return {};
    }
    return *std::move(bytes);
}

GUID GuidAt(ByteView stream, std::uint64_t at) {
    GUID guid{};
    guid.Data1 = stream.U32(at);
    guid.Data2 = stream.U16(at + 4);
    guid.Data3 = stream.U16(at + 6);
    for (unsigned i = 0; i < 8; ++i) {
        guid.Data4[i] = stream.U8(at + 8 + i);
    }
    return guid;
}

// The set that an entry names: none, one of two that every file knows, or one of the stream.
std::optional<GUID> SetOf(std::uint32_t index, ByteView guids) {
    switch (index) {
        case 0: return GUID{};
        case 1: return PS_MAPI;
        case 2: return PS_PUBLIC_STRINGS;
        default: break;
    }
    const std::uint64_t at = std::uint64_t{index - 3} * kGuidSize;
    return guids.Has(at, kGuidSize) ? std::optional(GuidAt(guids, at)) : std::nullopt;
}

std::optional<PropertyName> NameOfEntry(ByteView entry, ByteView guids, ByteView texts) {
    const std::uint16_t kindAndSet = entry.U16(4);
    const auto set = SetOf(kindAndSet >> 1, guids);
    if (!set) {
        return std::nullopt;
    }
    PropertyName name{*set, (kindAndSet & 1) != 0, 0, {}};
    if (!name.isText) {
        name.number = entry.U32(0);
        return name;
    }
    const std::uint64_t at = entry.U32(0);
    const std::uint32_t length = texts.U32(at);
    if (!texts.Has(at, 4) || !texts.Has(at + 4, length)) {
        return std::nullopt;
    }
    name.text = FromUtf16(texts.Part(at + 4, length));
    return name;
}

bool Before(const PropertyName& a, const PropertyName& b) {
    const int sets = std::memcmp(&a.set, &b.set, sizeof(GUID));
    return sets != 0 ? sets < 0 : std::tie(a.isText, a.number, a.text) < std::tie(b.isText, b.number, b.text);
}

}  // namespace

NamedProperties NamedProperties::Load(PropertyContext& map, Diagnostics& problems) {
    const Bytes guids = StreamOf(map, kGuidStream, problems);
    const Bytes entries = StreamOf(map, kEntryStream, problems);
    const Bytes texts = StreamOf(map, kTextStream, problems);
    NamedProperties names;
    const ByteView view(entries);
    for (std::uint64_t at = 0; view.Has(at, kEntrySize); at += kEntrySize) {
        const ByteView entry = view.Part(at, kEntrySize);
        const std::uint16_t index = entry.U16(6);
        auto name = index <= kMostNames ? NameOfEntry(entry, guids, texts) : std::nullopt;
        if (!name) {
            problems.Report(Name(map.OwnerId()) + ": the named property at " + Hex(at)
                            + " of the list contradicts itself; it is left out");
            continue;
        }
        names.m_entries.push_back(Entry{static_cast<std::uint16_t>(kFirstId + index), *std::move(name)});
    }
    std::stable_sort(names.m_entries.begin(), names.m_entries.end(),
                     [](const Entry& a, const Entry& b) { return a.id < b.id; });
    names.m_entries.erase(std::unique(names.m_entries.begin(), names.m_entries.end(),
                                      [](const Entry& a, const Entry& b) { return a.id == b.id; }),
                          names.m_entries.end());
    names.m_byName.resize(names.m_entries.size());
    std::iota(names.m_byName.begin(), names.m_byName.end(), 0U);
    std::stable_sort(names.m_byName.begin(), names.m_byName.end(), [&](std::uint32_t a, std::uint32_t b) {
        return Before(names.m_entries[a].name, names.m_entries[b].name);
    });
    return names;
}

std::optional<std::uint16_t> NamedProperties::Find(const PropertyName& name) const {
    const auto found = std::lower_bound(
        m_byName.begin(), m_byName.end(), name,
        [this](std::uint32_t index, const PropertyName& wanted) { return Before(m_entries[index].name, wanted); });
    if (found == m_byName.end() || !(m_entries[*found].name == name)) {
        return std::nullopt;
    }
    return m_entries[*found].id;
}

const PropertyName* NamedProperties::NameOf(std::uint16_t id) const {
    const auto found = std::lower_bound(m_entries.begin(), m_entries.end(), id,
                                        [](const Entry& entry, std::uint16_t wanted) { return entry.id < wanted; });
    return found != m_entries.end() && found->id == id ? &found->name : nullptr;
}

}  // namespace localmapi::pst
