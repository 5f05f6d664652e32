#include "localmapi/pst/ltp/PropertyContext.h"

#include "localmapi/pst/ltp/BTreeOnHeap.h"

#include <algorithm>
#include <string>
#include <utility>

namespace localmapi::pst {

namespace {

constexpr unsigned kKeySize = 2;
constexpr unsigned kDataSize = 6;

bool ById(const PropertyContext::Record& a, const PropertyContext::Record& b) {
    return a.id < b.id;
}

}  // namespace

Result<PropertyContext> PropertyContext::Open(Database& database, const NodeEntry& node, NodeId owner) {
    VX_TRY_ASSIGN(Heap heap, Heap::Open(database, node, owner));
    if (heap.ClientSignature() != static_cast<std::uint8_t>(Heap::Use::Properties)) {
        return heap.Broken("is used for something else than properties (" + Hex(heap.ClientSignature()) + ")");
    }
    PropertyContext context(std::move(heap));
    VX_TRY(context.LoadRecords());
    return context;
}

Status PropertyContext::LoadRecords() {
    VX_TRY_ASSIGN(BTreeOnHeap tree, BTreeOnHeap::Open(m_heap, m_heap.UserRoot()));
    if (tree.KeySize() != kKeySize || tree.DataSize() != kDataSize) {
        return m_heap.Broken("keeps its properties in a b-tree of other sizes than theirs");
    }
    tree.ForEach(
        [this](ByteView key, ByteView data) {
            const Record record{key.U16(0), static_cast<PropertyType>(data.U16(0)), data.U32(2)};
            if (IsKnown(record.type)) {
                m_records.push_back(record);
            } else if (record.type != PropertyType{}) {
                m_heap.Owner().Problems().Report(Name(OwnerId()) + ": property " + Hex(record.id)
                                                 + " has the unknown type " + Hex(data.U16(0)) + "; it is left out");
            }
        },
        "the properties in it are lost");
    std::stable_sort(m_records.begin(), m_records.end(), ById);
    const auto sameId = [](const Record& a, const Record& b) { return a.id == b.id; };
    m_records.erase(std::unique(m_records.begin(), m_records.end(), sameId), m_records.end());
    return {};
}

const PropertyContext::Record* PropertyContext::Find(std::uint16_t id) const noexcept {
    const auto found = std::lower_bound(m_records.begin(), m_records.end(), Record{id, {}, 0}, ById);
    return found != m_records.end() && found->id == id ? &*found : nullptr;
}

Result<PropertyValue> PropertyContext::Read(std::uint16_t id) {
    const Record* record = Find(id);
    if (record == nullptr) {
        return Error{ErrorCode::NotFound, Name(OwnerId()) + ": there is no property " + Hex(id)};
    }
    return Read(*record);
}

Result<PropertyValue> PropertyContext::Read(const Record& record) {
    const unsigned size = FixedSize(record.type);
    if (size > 0 && size <= 4) {
        return PropertyValue{record.type, ValueStream::Inline(record.value, size)};
    }
    VX_TRY_ASSIGN(ValueStream bytes, m_heap.OpenValue(record.value));
    if (bytes.Size() < size) {
        return Error{ErrorCode::Corrupt, Name(OwnerId()) + ": property " + Hex(record.id) + " is cut short"};
    }
    return PropertyValue{record.type, std::move(bytes)};
}

Result<ObjectReference> PropertyContext::ReadObject(std::uint16_t id) {
    VX_TRY_ASSIGN(PropertyValue value, Read(id));
    std::array<std::byte, 8> bytes{};
    VX_TRY_ASSIGN(const std::size_t size, value.bytes.ReadAt(0, bytes));
    if (value.type != PropertyType::Object || size < bytes.size()) {
        return Error{ErrorCode::Corrupt, Name(OwnerId()) + ": property " + Hex(id) + " leads to no object"};
    }
    const ByteView view(bytes.data(), bytes.size());
    return ObjectReference{NodeId{view.U32(0)}, view.U32(4)};
}

}  // namespace localmapi::pst
