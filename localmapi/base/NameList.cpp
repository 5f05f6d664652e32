#include "localmapi/base/NameList.h"

#include "localmapi/base/Format.h"
#include "localmapi/base/Utf16.h"
#include "mapi/MapiGuids.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace localmapi {

namespace {

constexpr std::size_t kGuidSize = 16;
constexpr std::uint16_t kMostNames = kLastNamedId - kFirstNamedId + 1;

// A name's text. Names have 254 characters at most; entries of a damaged list may all lead to the same long one.
constexpr std::uint32_t kMostTextBytes = 2048;

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

std::optional<GUID> SetOf(unsigned number, ByteView sets) noexcept {
    switch (number) {
        case NameList::kNoSet: return GUID{};
        case NameList::kMapiSet: return PS_MAPI;
        case NameList::kPublicStringsSet: return PS_PUBLIC_STRINGS;
        default: break;
    }
    const std::uint64_t at = std::uint64_t{number - NameList::kFirstListedSet} * kGuidSize;
    return sets.Has(at, kGuidSize) ? std::optional(GuidAt(sets, at)) : std::nullopt;
}

std::optional<CStringW> TextAt(ByteView texts, std::uint64_t at) {
    const std::uint32_t size = texts.U32(at);
    if (!texts.Has(at, 4) || size > kMostTextBytes || !texts.Has(at + 4, size)) {
        return std::nullopt;
    }
    return FromUtf16(texts.Part(at + 4, size));
}

std::optional<NamedId> ReadEntry(ByteView entry, const NameList& list) {
    const std::uint32_t numberOrPlace = entry.U32(0);
    const unsigned kindAndSet = entry.U16(4);
    const std::uint16_t index = entry.U16(6);
    const auto set = SetOf(kindAndSet >> 1, list.sets);
    if (!set || index >= kMostNames) {
        return std::nullopt;
    }
    const auto id = static_cast<std::uint16_t>(kFirstNamedId + index);
    if ((kindAndSet & 1) == 0) {
        return NamedId{id, {*set, false, numberOrPlace, {}}};
    }
    auto text = TextAt(list.texts, numberOrPlace);
    return text ? std::optional(NamedId{id, {*set, true, 0, *std::move(text)}}) : std::nullopt;
}

bool IsFiller(ByteView entry) noexcept {
    return entry.U32(0) == 0 && entry.U16(4) == 0;
}

}  // namespace

std::vector<NamedId> ReadNames(const NameList& list, std::string_view owner, Diagnostics& problems) {
    const std::string prefix = std::string(owner) + ": ";
    ByteView entries(list.entries);
    constexpr std::uint64_t kMostBytes = std::uint64_t{kMostNames} * NameList::kEntrySize;
    if (entries.Size() > kMostBytes) {
        problems.Report(prefix + "the list of named properties is longer than there are ids; what lies behind "
                        + Hex(kMostBytes) + " is left out");
        entries = entries.Part(0, kMostBytes);
    }
    std::vector<NamedId> names;
    for (std::uint64_t at = 0; entries.Has(at, NameList::kEntrySize); at += NameList::kEntrySize) {
        const ByteView entry = entries.Part(at, NameList::kEntrySize);
        if (IsFiller(entry)) {
            continue;
        }
        if (auto name = ReadEntry(entry, list)) {
            names.push_back(*std::move(name));
        } else {
            problems.Report(prefix + "the named property at " + Hex(at)
                            + " of the list contradicts itself; it is left out");
        }
    }
    std::ranges::stable_sort(names, {}, &NamedId::id);
    const auto isSameId = [](const NamedId& a, const NamedId& b) { return a.id == b.id; };
    names.erase(std::unique(names.begin(), names.end(), isSameId), names.end());
    return names;
}

}  // namespace localmapi
