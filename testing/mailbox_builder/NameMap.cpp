#include "testing/mailbox_builder/NameMap.h"

#include "mapi/MapiGuids.h"
#include "testing/mailbox_builder/ByteWriter.h"
#include "testing/mailbox_builder/PropertyWriter.h"

#include <algorithm>
#include <array>
#include <utility>

namespace mailbox_builder {

namespace {

constexpr std::uint16_t kFirstId = 0x8000;
constexpr std::size_t kMostNames = 0x7FFF;
constexpr std::uint16_t kFirstSet = 3;  // 0 is no set, 1 PS_MAPI, 2 PS_PUBLIC_STRINGS
constexpr std::uint32_t kBuckets = 251;
constexpr std::uint16_t kIsText = 1;

constexpr std::uint32_t kPrivate = 0x8506;  // [MS-OXCMSG] 2.2.1.15

// The properties of the map.
constexpr std::uint32_t kBucketCount = 0x0001'0003;
constexpr std::uint32_t kGuidStream = 0x0002'0102;
constexpr std::uint32_t kEntryStream = 0x0003'0102;
constexpr std::uint32_t kTextStream = 0x0004'0102;
constexpr std::uint32_t kFirstBucket = 0x1000'0102;

Bytes EntryOf(std::uint32_t numberOrText, std::uint16_t kindAndSet, std::size_t index) {
    return ByteWriter().U32(numberOrText).U16(kindAndSet).U16(index).Take();
}

}  // namespace

NameMap::NameMap() {
    (void)IdOf({PS_PUBLIC_STRINGS, 0, "Keywords"_w});
    (void)IdOf({PSETID_Common, kPrivate, {}});
}

std::uint16_t NameMap::SetNumber(const GUID& set) {
    if (set == GUID{}) {
        return 0;
    }
    if (set == PS_MAPI) {
        return 1;
    }
    if (set == PS_PUBLIC_STRINGS) {
        return 2;
    }
    const auto found = std::find(m_sets.begin(), m_sets.end(), set);
    const auto number = static_cast<std::uint16_t>(kFirstSet + (found - m_sets.begin()));
    if (found == m_sets.end()) {
        m_sets.push_back(set);
    }
    return number;
}

Result<std::uint16_t> NameMap::IdOf(const Name& name) {
    const auto known = m_ids.find(Key{BytesOf(name.set), name.number, name.text});
    if (known != m_ids.end()) {
        return known->second;
    }
    if (m_entries.size() == kMostNames) {
        return Error{ErrorCode::TooLarge, "the mailbox has more named properties than a file can name"};
    }
    const auto id = static_cast<std::uint16_t>(kFirstId + m_entries.size());
    m_ids.emplace(Key{BytesOf(name.set), name.number, name.text}, id);
    m_entries.push_back({name, SetNumber(name.set)});
    return id;
}

Result<NodeData> NameMap::Write(DatabaseWriter& database) const {
    ByteWriter guids;
    for (const GUID& set : m_sets) {
        guids.Append(BytesOf(set));
    }
    ByteWriter entries;
    ByteWriter texts;
    std::array<Bytes, kBuckets> buckets;
    for (std::size_t index = 0; index < m_entries.size(); ++index) {
        const auto& [name, set] = m_entries[index];
        const bool isText = !name.text.empty();
        const auto kindAndSet = static_cast<std::uint16_t>(set << 1 | (isText ? kIsText : 0));
        std::uint32_t inStream = name.number;
        std::uint32_t hash = name.number;
        if (isText) {
            const Bytes text = std::get<Bytes>(ToStored(kUnicode, name.text, {}));
            inStream = static_cast<std::uint32_t>(texts.Size());
            hash = Crc(text);
            texts.U32(text.size()).Append(text);
            texts.PadTo(localmapi::RoundUp(texts.Size(), 4));
        }
        entries.Append(EntryOf(inStream, kindAndSet, index));
        // Entries of the buckets hold the hash in place of the text's place.
        const Bytes entry = EntryOf(hash, kindAndSet, index);
        Bytes& bucket = buckets[(hash ^ kindAndSet) % kBuckets];
        bucket.insert(bucket.end(), entry.begin(), entry.end());
    }
    PropertyList map;
    map.Set(kBucketCount, static_cast<std::int32_t>(kBuckets));
    map.Set(kGuidStream, guids.Take());
    map.Set(kEntryStream, entries.Take());
    map.Set(kTextStream, texts.Take());
    for (std::uint32_t number = 0; number < kBuckets; ++number) {
        if (!buckets[number].empty()) {
            map.Set(kFirstBucket + (number << 16), std::move(buckets[number]));
        }
    }
    return WriteProperties(database, map, {});
}

}  // namespace mailbox_builder
