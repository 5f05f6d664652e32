// The properties of an object: [MS-PST] 2.3.3. The records, eight bytes each, are loaded at opening; values are read
// when they are asked for. One thread at a time.
#pragma once

#include "localmapi/base/Result.h"
#include "localmapi/pst/ltp/Heap.h"
#include "localmapi/pst/ltp/PropertyType.h"
#include "localmapi/pst/ltp/ValueStream.h"

#include <cstdint>
#include <span>
#include <vector>

namespace localmapi::pst {

// A value and what it is. Numbers are little-endian bytes; text has no terminator.
struct PropertyValue {
    PropertyType type{};
    ValueStream bytes;
};

// The node of an object property (an embedded message, an OLE object) within its owner: [MS-PST] 2.3.3.5.
struct ObjectReference {
    NodeId node;
    std::uint32_t size = 0;
};

class PropertyContext {
public:
    struct Record {
        std::uint16_t id;
        PropertyType type;
        std::uint32_t value;  // a small number itself, else the id of where the value lies
    };

    // The properties of `node`; `owner` as for Heap. Corrupt when the node holds no property context; one that is
    // damaged in parts gives the records that are left. The database outlives the context.
    static Result<PropertyContext> Open(Database& database, const NodeEntry& node, NodeId owner);

    // Sorted by id, one for each; records of unknown types are left out.
    std::span<const Record> Records() const noexcept { return m_records; }

    // Null when there is none.
    const Record* Find(std::uint16_t id) const noexcept;

    // NotFound when the object has no such property, or when its value is missing from a damaged file. Corrupt or
    // ReadFailed when the value cannot be read.
    Result<PropertyValue> Read(std::uint16_t id);
    Result<PropertyValue> Read(const Record& record);

    // Where an object property leads. NotFound; Corrupt when the property is of another type or too short.
    Result<ObjectReference> ReadObject(std::uint16_t id);

    const SubnodeTree& Subnodes() const noexcept { return m_heap.Subnodes(); }
    Result<DataStream> OpenSubnodeData(NodeId id) { return m_heap.OpenSubnodeData(id); }
    Database& Owner() const noexcept { return m_heap.Owner(); }
    NodeId OwnerId() const noexcept { return m_heap.OwnerId(); }

private:
    explicit PropertyContext(Heap heap) : m_heap(std::move(heap)) {}
    Status LoadRecords();

    Heap m_heap;
    std::vector<Record> m_records;
};

}  // namespace localmapi::pst
