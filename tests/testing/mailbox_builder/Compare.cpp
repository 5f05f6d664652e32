#include "tests/testing/mailbox_builder/Compare.h"

#include "localmapi/base/Format.h"
#include "localmapi/pst/ltp/Values.h"
#include "mapi/PropTags.h"

#include <algorithm>
#include <bit>
#include <set>

namespace mailbox_builder {

namespace pst = localmapi::pst;
using localmapi::Hex;

namespace {

constexpr std::int32_t kHasAttachments = 0x10;

// Of a message and of an attachment, what the writer may add.
const std::vector<std::uint16_t> kAddedToMessages = {0x001A, 0x0E02, 0x0E03, 0x0E04, 0x0E07, 0x0E08, 0x3FFD};
const std::vector<std::uint16_t> kAddedToAttachments = {0x0E20, 0x3701, 0x3705, 0x370B};

GUID GuidOf(ByteView bytes) {
    GUID guid{bytes.U32(0), bytes.U16(4), bytes.U16(6), {}};
    for (unsigned i = 0; i < 8; ++i) {
        guid.Data4[i] = bytes.U8(8 + i);
    }
    return guid;
}

std::string NarrowOf(ByteView bytes) {
    return std::string(reinterpret_cast<const char*>(bytes.Data()), bytes.Size());
}

// Says whether a value that was read is the one of the model.
class Equals {
public:
    Equals(pst::PropertyValue& got, unsigned codePage) : m_got(got), m_codePage(codePage) {}

    bool operator()(bool value) { return pst::Integer(m_got) == (value ? 1 : 0); }
    bool operator()(std::int16_t value) { return pst::Integer(m_got) == value; }
    bool operator()(std::int32_t value) { return pst::Integer(m_got) == value; }
    bool operator()(std::int64_t value) { return pst::Integer(m_got) == value; }
    bool operator()(Time value) { return pst::Integer(m_got) == value.ticks; }
    bool operator()(float value) { return Whole() == Bits(value); }
    bool operator()(double value) { return Whole() == Bits(value); }
    bool operator()(const GUID& value) { return Whole().size() == 16 && GuidOf(Whole()) == value; }
    bool operator()(const CStringW& value) {
        const Result<CStringW> text = pst::Text(m_got, m_codePage);
        return text && *text == value;
    }
    bool operator()(const Text8& value) {
        if (m_got.type == pst::PropertyType::Unicode) {
            const Result<CStringW> text = pst::Text(m_got, m_codePage);
            return text && *text == pst::FromCodePage(ByteView(std::as_bytes(std::span(value.bytes))), m_codePage);
        }
        return NarrowOf(Whole()) == value.bytes;
    }
    bool operator()(const Bytes& value) { return Whole() == value; }
    bool operator()(const Content& content) {
        Bytes wanted(64 << 10);
        Bytes given(wanted.size());
        for (std::uint64_t at = 0; at < content.size; at += wanted.size()) {
            wanted.resize(static_cast<std::size_t>(std::min<std::uint64_t>(wanted.size(), content.size - at)));
            given.resize(wanted.size());
            content.fill(at, wanted);
            const Result<std::size_t> count = m_got.bytes.ReadAt(at, given);
            if (!count || *count != wanted.size() || given != wanted) {
                return false;
            }
        }
        return m_got.bytes.Size() == content.size;
    }
    template <class T>
    bool operator()(const std::vector<T>& values) {
        const Result<pst::ValueList> list = pst::ValueList::Parse(m_got.type, Whole());
        if (!list || list->Count() != values.size()) {
            return false;
        }
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (!IsElement(list->At(i), values[i])) {
                return false;
            }
        }
        return true;
    }

private:
    Bytes Whole() {
        Result<Bytes> bytes = m_got.bytes.ReadAll();
        return bytes ? *std::move(bytes) : Bytes{std::byte{0xDE}, std::byte{0xAD}};
    }
    template <class T>
    static Bytes Bits(T value) {
        const auto bytes = std::as_bytes(std::span(&value, 1));
        return Bytes(bytes.begin(), bytes.end());
    }

    template <class T>
    static bool IsElement(ByteView bytes, const T& value) {
        const Bytes bits = Bits(value);
        return std::equal(bytes.Span().begin(), bytes.Span().end(), bits.begin(), bits.end());
    }
    static bool IsElement(ByteView bytes, const GUID& value) { return GuidOf(bytes) == value; }
    static bool IsElement(ByteView bytes, const Text8& value) { return NarrowOf(bytes) == value.bytes; }
    static bool IsElement(ByteView bytes, const Bytes& value) {
        return std::equal(bytes.Span().begin(), bytes.Span().end(), value.begin(), value.end());
    }
    bool IsElement(ByteView bytes, const CStringW& value) const {
        return pst::BaseOf(m_got.type) == pst::PropertyType::String8 ? pst::FromCodePage(bytes, m_codePage) == value
                                                                     : FromUtf16(bytes) == value;
    }

    pst::PropertyValue& m_got;
    unsigned m_codePage;
};

bool IsText(std::uint16_t type) {
    return (type | 1) == 0x001F;
}

}  // namespace

std::uint16_t Comparison::IdOf(const Property& property) {
    if (!property.name) {
        return static_cast<std::uint16_t>(property.tag >> 16);
    }
    const Name& name = *property.name;
    const localmapi::PropertyName wanted{name.set, !name.text.empty(), name.number, name.text};
    const auto found = std::ranges::find(m_names, wanted, &localmapi::NamedId::name);
    return found == m_names.end() ? 0 : found->id;
}

void Comparison::CompareValue(const Context& at, const Property& expected, Result<pst::PropertyValue> got,
                              bool isOfTable) {
    const Context here{at.where + ", " + Hex(std::uint32_t{IdOf(expected)} << 16 | (expected.tag & 0xFFFF)),
                       at.codePage};
    if (!got) {
        Differ(here, got.Failure().text);
        return;
    }
    auto type = static_cast<std::uint16_t>(expected.tag);
    type = m_isAnsi && (type & 0xEFFF) == 0x001F ? static_cast<std::uint16_t>(type - 1) : type;
    const auto gotType = static_cast<std::uint16_t>(got->type);
    if (gotType != type && !(isOfTable && IsText(type) && IsText(gotType))) {
        Differ(here, "has type " + Hex(gotType));
    } else if (!std::visit(Equals(*got, at.codePage), expected.value)) {
        Differ(here, "another value");
    }
}

void Comparison::Compare(const Context& at, const Properties& expected, pst::PropertyContext& got,
                         const std::vector<std::uint16_t>& added) {
    std::set<std::uint16_t> known(added.begin(), added.end());
    for (const Property& property : expected.All()) {
        known.insert(IdOf(property));
        if (property.tag != PR_MESSAGE_FLAGS) {
            CompareValue(at, property, got.Read(IdOf(property)), false);
        }
    }
    for (const pst::PropertyContext::Record& record : got.Records()) {
        if (!known.contains(record.id)) {
            Differ(at, "has " + Hex(record.id) + ", which was not given");
        }
    }
}

void Comparison::OfMessage(MessageId id, const Message& expected, pst::ItemList& list) {
    const Context at{Hex(id.node), expected.codePage};
    Result<pst::Message> got = m_store.OpenMessage(pst::NodeId{id.node});
    if (!got) {
        Differ(at, got.Failure().text);
        return;
    }
    Compare(at, expected, *got);
    for (std::size_t row = 0; row < list.Count(); ++row) {
        if (list.Id(row).value == id.node) {
            CompareRow(at, expected, list, row);
            return;
        }
    }
    Differ(at, "has no row");
}

void Comparison::OfFolder(FolderId id, const Properties& expected) {
    const Context at{Hex(id.node), m_store.CodePage()};
    Result<pst::Folder> got = m_store.OpenFolder(pst::NodeId{id.node});
    if (!got || got->Properties() == nullptr) {
        Differ(at, "cannot be opened");
        return;
    }
    for (const Property& property : expected.All()) {
        CompareValue(at, property, got->Properties()->Read(IdOf(property)), false);
    }
}

void Comparison::Compare(const Context& at, const Message& expected, pst::Message& got) {
    const Property* page = expected.properties.Find(PR_MESSAGE_CODEPAGE);
    if (page == nullptr && got.CodePage() != expected.codePage) {
        Differ(at, "its texts are taken to be in page " + std::to_string(got.CodePage()));
    }
    Compare(at, expected.properties, got.Properties(), kAddedToMessages);
    const Property* flags = expected.properties.Find(PR_MESSAGE_FLAGS);
    const std::int32_t given = flags != nullptr ? std::get<std::int32_t>(flags->value) : 0;
    if (pst::ReadInteger(got.Properties(), 0x0E07)
        != (expected.attachments.empty() ? given : given | kHasAttachments)) {
        Differ(at, "has other flags");
    }
    CompareRecipients(at, expected, got);
    CompareAttachments(at, expected, got);
}

// A cell holds what the model has for its column, or what the message itself says of a property that the writer adds.
void Comparison::CompareRow(const Context& at, const Message& expected, pst::ItemList& list, std::size_t row) {
    const Context here{at.where + ", row", at.codePage};
    for (const pst::TableContext::Column& column : list.Columns()) {
        const std::uint32_t tag = std::uint32_t{column.id} << 16;
        const Property* property = expected.properties.Find(tag);
        Result<pst::PropertyValue> cell = list.Cell(row, column.id);
        const bool isAdded = std::count(kAddedToMessages.begin(), kAddedToMessages.end(), column.id) > 0;
        const bool isOfTable = column.id == 0x67F2 || column.id == 0x67F3;
        if (property != nullptr && property->tag != PR_MESSAGE_FLAGS) {
            CompareValue(here, *property, std::move(cell), true);
        } else if (static_cast<bool>(cell) != (isAdded || isOfTable)) {
            Differ(here, cell ? "has a cell in " + Hex(column.id) : cell.Failure().text);
        }
    }
}

void Comparison::CompareRecipients(const Context& at, const Message& expected, pst::Message& got) {
    Result<pst::TableContext> table = got.OpenRecipients();
    if (!table || table->RowCount() != expected.recipients.size()) {
        Differ(at, table ? "has other recipients" : table.Failure().text);
        return;
    }
    for (std::size_t row = 0; row < table->RowCount(); ++row) {
        const Context here{at.where + ", recipient " + std::to_string(row), at.codePage};
        std::set<std::uint16_t> known = {0x67F2, 0x67F3};
        for (const Property& property : expected.recipients[row].All()) {
            known.insert(IdOf(property));
            CompareValue(here, property, table->Cell(row, IdOf(property)), true);
        }
        for (const pst::TableContext::Column& column : table->Columns()) {
            if (!known.contains(column.id) && table->Cell(row, column.id)) {
                Differ(here, "has " + Hex(column.id) + ", which was not given");
            }
        }
    }
}

void Comparison::CompareAttachments(const Context& at, const Message& expected, pst::Message& got) {
    const std::vector<pst::NodeId> ids = got.Attachments();
    if (ids.size() != expected.attachments.size()) {
        Differ(at, "has " + std::to_string(ids.size()) + " attachments");
        return;
    }
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const Context here{at.where + ", attachment " + std::to_string(i), at.codePage};
        Result<pst::Attachment> attachment = got.OpenAttachment(ids[i]);
        if (attachment) {
            Compare(here, expected.attachments[i], *attachment);
        } else {
            Differ(here, attachment.Failure().text);
        }
    }
}

void Comparison::Compare(const Context& at, const Attachment& expected, pst::Attachment& got) {
    Compare(at, expected.properties, got.Properties(), kAddedToAttachments);
    if (expected.embedded) {
        Result<pst::Message> inner = got.OpenMessage();
        if (got.Method() != pst::AttachMethod::EmbeddedMessage || !inner) {
            Differ(at, "holds no message");
            return;
        }
        Compare(Context{at.where + ", message", expected.embedded->codePage}, *expected.embedded, *inner);
    } else if (expected.ole) {
        Result<pst::ValueStream> data = got.OpenData();
        const Result<Bytes> bytes = data ? data->ReadAll() : Result<Bytes>(data.TakeFailure());
        if (got.Method() != pst::AttachMethod::Ole || !bytes || *bytes != *expected.ole) {
            Differ(at, "holds another object");
        }
    } else if (got.Method() == pst::AttachMethod::EmbeddedMessage || got.Method() == pst::AttachMethod::Ole) {
        Differ(at, "holds a sub-object, which was not given");
    }
}

}  // namespace mailbox_builder
