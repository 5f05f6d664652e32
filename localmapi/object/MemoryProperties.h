// Properties that only live in memory: of address book entries, status rows, and whatever has no file. One thread at a
// time.
#pragma once

#include "localmapi/model/PropertySource.h"
#include "localmapi/props/MapiMemory.h"

#include <map>

namespace localmapi {

class MemoryProperties final : public PropertySource {
public:
    // Takes a deep copy. A value of the same id is replaced.
    void Set(const SPropValue& value);

    std::vector<ULONG> Tags() override;
    std::optional<ULONG> TagOf(ULONG id) override;
    std::uint64_t SizeOf(ULONG id) override;
    Status Read(ULONG id, std::uint64_t limit, ValueMemory& memory, SPropValue& value) override;
    Result<std::unique_ptr<ByteSource>> Open(ULONG id) override;
    UINT CodePage() override;

private:
    Arena m_memory;
    std::map<ULONG, SPropValue> m_values;  // by id
};

}  // namespace localmapi
