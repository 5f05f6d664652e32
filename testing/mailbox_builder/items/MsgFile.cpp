#include "testing/mailbox_builder/items/MsgFile.h"

#include "localmapi/base/Crc.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "testing/mailbox_builder/ByteWriter.h"
#include "testing/mailbox_builder/items/CompoundFile.h"
#include "testing/mailbox_builder/items/Wording.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>

namespace mailbox_builder {
namespace {

constexpr GUID kMessageStorage = {0x00020D0B, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
constexpr std::uint32_t kReadableAndWritable = 6;
constexpr std::uint32_t kTextsAreWide = 0x00040000;  // STORE_UNICODE_OK

CStringW Hex8(std::uint32_t number) {
    std::array<char, 9> text{};
    std::snprintf(text.data(), text.size(), "%08X", static_cast<unsigned>(number));
    return Wide(text.data());
}

CStringW StreamName(std::uint32_t tag) {
    return "__substg1.0_"_w + Hex8(tag);
}

// The names that the file uses, numbered from 0x8000 on in the order in which they come: 2.2.3.
class NameMap {
public:
    std::uint16_t IdOf(const Name& name) {
        const auto found = std::find_if(m_names.begin(), m_names.end(), [&](const Name& other) {
            return other.set == name.set && other.number == name.number && other.text == name.text;
        });
        const auto index = found - m_names.begin();
        if (found == m_names.end()) {
            m_names.push_back(name);
        }
        return static_cast<std::uint16_t>(0x8000 + index);
    }

    CompoundStorage Write() const {
        constexpr std::uint32_t kBuckets = 0x1F;
        std::vector<GUID> sets;
        ByteWriter setStream;
        ByteWriter entries;
        ByteWriter texts;
        std::array<ByteWriter, kBuckets> buckets;
        for (std::uint32_t index = 0; index < m_names.size(); ++index) {
            const Name& name = m_names[index];
            const bool isText = !name.text.empty();
            const std::uint32_t kind = SetNumber(name.set, sets, setStream) << 1 | (isText ? 1 : 0);
            std::uint32_t hash = name.number;
            if (isText) {
                const Bytes units = AsBytes(name.text);
                hash = localmapi::Crc(units);
                entries.U32(texts.Size());
                texts.U32(units.size()).Append(units).Fill(localmapi::RoundUp(units.size(), 4) - units.size(), 0);
            } else {
                entries.U32(name.number);
            }
            entries.U16(kind).U16(index);
            buckets[(hash ^ kind) % kBuckets].U32(hash).U16(kind).U16(index);
        }
        CompoundStorage storage;
        storage.name = "__nameid_version1.0"_w;
        storage.streams = {{StreamName(0x00020102), setStream.Take()},
                           {StreamName(0x00030102), entries.Take()},
                           {StreamName(0x00040102), texts.Take()}};
        for (std::uint32_t bucket = 0; bucket < kBuckets; ++bucket) {
            if (buckets[bucket].Size() > 0) {
                storage.streams.push_back({StreamName((0x1000 + bucket) << 16 | 0x0102), buckets[bucket].Take()});
            }
        }
        return storage;
    }

private:
    static std::uint32_t SetNumber(const GUID& set, std::vector<GUID>& sets, ByteWriter& stream) {
        constexpr std::uint32_t kFirstListed = 3;
        if (set == PS_MAPI) {
            return 1;
        }
        if (set == PS_PUBLIC_STRINGS) {
            return 2;
        }
        const auto found = std::find(sets.begin(), sets.end(), set);
        const auto index = static_cast<std::uint32_t>(found - sets.begin());
        if (found == sets.end()) {
            sets.push_back(set);
            stream.Append(BytesOf(set));
        }
        return kFirstListed + index;
    }

    std::vector<Name> m_names;
};

// A value as the file keeps it: eight bytes among the properties, or streams beside them.
struct Stored {
    std::uint64_t entry = 0;
    bool isStream = false;
    Bytes stream = {};
    std::vector<Bytes> parts = {};  // of a multi-value whose values have streams of their own
};

template <class T>
std::uint64_t BitsOf(T value) {
    std::uint64_t bits = 0;
    std::memcpy(&bits, &value, sizeof value);
    return bits;
}

Stored InStream(Bytes bytes, std::size_t terminator = 0) {
    const std::size_t size = bytes.size() + terminator;
    return {size, true, std::move(bytes)};
}

// A list of values with streams of their own, led by their lengths.
Stored InParts(std::vector<Bytes> parts) {
    ByteWriter lengths;
    for (const Bytes& part : parts) {
        lengths.U32(part.size());
    }
    Stored stored = InStream(lengths.Take());
    stored.parts = std::move(parts);
    return stored;
}

template <class T>
Stored Packed(const std::vector<T>& values, unsigned width) {
    ByteWriter packed;
    for (const T& value : values) {
        packed.Number(BitsOf(value), width);
    }
    return InStream(packed.Take());
}

struct StoredForm {
    Stored operator()(bool value) const { return {value ? 1u : 0u}; }
    Stored operator()(std::int16_t value) const { return {BitsOf(value)}; }
    Stored operator()(std::int32_t value) const { return {BitsOf(value)}; }
    Stored operator()(std::int64_t value) const { return {BitsOf(value)}; }
    Stored operator()(float value) const { return {BitsOf(value)}; }
    Stored operator()(double value) const { return {BitsOf(value)}; }
    Stored operator()(Time value) const { return {BitsOf(value.ticks)}; }
    Stored operator()(const GUID& value) const { return InStream(BytesOf(value)); }
    Stored operator()(const CStringW& value) const { return InStream(AsBytes(WideView(value)), 2); }
    Stored operator()(const Text8& value) const { return InStream(AsBytes(value.bytes), 1); }
    Stored operator()(const Bytes& value) const { return InStream(value); }
    Stored operator()(const Content& value) const {
        Bytes bytes(static_cast<std::size_t>(value.size));
        value.fill(0, bytes);
        return InStream(std::move(bytes));
    }
    Stored operator()(const std::vector<std::int16_t>& values) const { return Packed(values, 2); }
    Stored operator()(const std::vector<std::int32_t>& values) const { return Packed(values, 4); }
    Stored operator()(const std::vector<std::int64_t>& values) const { return Packed(values, 8); }
    Stored operator()(const std::vector<float>& values) const { return Packed(values, 4); }
    Stored operator()(const std::vector<double>& values) const { return Packed(values, 8); }
    Stored operator()(const std::vector<Time>& values) const { return Packed(values, 8); }
    Stored operator()(const std::vector<GUID>& values) const {
        ByteWriter packed;
        for (const GUID& value : values) {
            packed.Append(BytesOf(value));
        }
        return InStream(packed.Take());
    }
    // Texts of a list keep their terminators, unlike those that stand alone: 2.1.4.
    Stored operator()(const std::vector<CStringW>& values) const {
        std::vector<Bytes> parts;
        for (const CStringW& value : values) {
            parts.push_back(AsBytes(WideView(value.c_str(), value.size() + 1)));
        }
        return InParts(std::move(parts));
    }
    Stored operator()(const std::vector<Text8>& values) const {
        std::vector<Bytes> parts;
        for (const Text8& value : values) {
            parts.push_back(AsBytes(std::string_view(value.bytes.c_str(), value.bytes.size() + 1)));
        }
        return InParts(std::move(parts));
    }
    Stored operator()(const std::vector<Bytes>& values) const {
        ByteWriter lengths;
        for (const Bytes& value : values) {
            lengths.U32(value.size()).U32(0);
        }
        Stored stored = InStream(lengths.Take());
        stored.parts = values;
        return stored;
    }
};

// Puts a message together, and those within it.
class MsgWriter {
public:
    CompoundStorage Write(const Message& message) {
        CompoundStorage root = WriteMessage(message, kRootHeader);
        root.storageClass = kMessageStorage;
        root.storages.push_back(m_names.Write());
        return root;
    }

private:
    static constexpr std::size_t kRootHeader = 32;
    static constexpr std::size_t kEmbeddedHeader = 24;
    static constexpr std::size_t kPartHeader = 8;

    CompoundStorage WriteMessage(const Message& message, std::size_t headerSize) {
        Properties properties = message.properties;
        properties.Set(PR_STORE_SUPPORT_MASK, static_cast<std::int32_t>(kTextsAreWide));
        ShowSubject(properties);
        const std::size_t recipients = message.recipients.size();
        const std::size_t attachments = message.attachments.size();
        ByteWriter header;
        header.Fill(8, 0).U32(recipients).U32(attachments).U32(recipients).U32(attachments).PadTo(headerSize);
        CompoundStorage storage = WriteProperties(properties, header);
        for (std::uint32_t i = 0; i < recipients; ++i) {
            storage.storages.push_back(WriteRecipient(message.recipients[i], i));
            storage.storages.back().name = "__recip_version1.0_#"_w + Hex8(i);
        }
        for (std::uint32_t i = 0; i < attachments; ++i) {
            storage.storages.push_back(WriteAttachment(message.attachments[i], i));
            storage.storages.back().name = "__attach_version1.0_#"_w + Hex8(i);
        }
        return storage;
    }

    // The subject without its hidden prefix, which only mailbox files have: [MS-PST] 2.5.3.1.1.
    static void ShowSubject(Properties& properties) {
        const Property* subject = properties.Find(PR_SUBJECT);
        const auto* text = subject != nullptr ? std::get_if<CStringW>(&subject->value) : nullptr;
        if (text != nullptr && text->size() >= 2 && text->front() == 1) {
            properties.Set(PR_SUBJECT, text->substr(2));
        }
    }

    CompoundStorage WriteRecipient(const Properties& recipient, std::uint32_t index) {
        Properties properties = recipient;
        properties.Set(PR_ROWID, static_cast<std::int32_t>(index));
        ByteWriter header;
        return WriteProperties(properties, header.PadTo(kPartHeader));
    }

    CompoundStorage WriteAttachment(const Attachment& attachment, std::uint32_t index) {
        Properties properties = attachment.properties;
        properties.Set(PR_ATTACH_NUM, static_cast<std::int32_t>(index));
        ByteWriter header;
        header.PadTo(kPartHeader);
        if (!attachment.embedded) {
            if (attachment.ole) {
                properties.Set(PR_ATTACH_DATA_BIN, *attachment.ole);
            }
            return WriteProperties(properties, header);
        }
        constexpr std::uint64_t kObjectIsMessage = std::uint64_t{1} << 32 | 0xFFFFFFFFu;
        CompoundStorage storage = WriteProperties(properties, header, kObjectIsMessage);
        storage.storages.push_back(WriteMessage(*attachment.embedded, kEmbeddedHeader));
        storage.storages.back().name = StreamName(PR_ATTACH_DATA_OBJ);
        return storage;
    }

    // The storage's stream of properties, in the order of their tags, and their own streams: 2.4.
    // `object` is the entry that an embedded message adds to its attachment.
    CompoundStorage WriteProperties(const Properties& properties, const ByteWriter& header,
                                    std::optional<std::uint64_t> object = {}) {
        struct Entry {
            std::uint32_t tag;
            std::uint64_t value;
        };
        CompoundStorage storage;
        std::vector<Entry> entries;
        if (object) {
            entries.push_back({PR_ATTACH_DATA_OBJ, *object});
        }
        for (const Property& property : properties.All()) {
            const std::uint32_t type = property.tag & 0xFFFF;
            const std::uint32_t id = property.name ? m_names.IdOf(*property.name) : property.tag >> 16;
            const std::uint32_t tag = id << 16 | type;
            Stored stored = std::visit(StoredForm{}, property.value);
            entries.push_back({tag, stored.entry});
            if (stored.isStream) {
                storage.streams.push_back({StreamName(tag), std::move(stored.stream)});
            }
            for (std::uint32_t i = 0; i < stored.parts.size(); ++i) {
                storage.streams.push_back({StreamName(tag) + "-"_w + Hex8(i), std::move(stored.parts[i])});
            }
        }
        std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.tag < b.tag; });
        ByteWriter list;
        list.Append(header.View());
        for (const Entry& entry : entries) {
            list.U32(entry.tag).U32(kReadableAndWritable).U64(entry.value);
        }
        storage.streams.push_back({CStringW("__properties_version1.0"_w), list.Take()});
        return storage;
    }

    NameMap m_names;
};

}  // namespace

Bytes MsgFileOf(const Message& message) {
    return CompoundFileOf(MsgWriter().Write(message));
}

}  // namespace mailbox_builder
