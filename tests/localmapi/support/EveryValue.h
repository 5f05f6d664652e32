// Values of every type, for tests of what copies, keeps or moves values.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/props/MapiMemory.h"
#include "mapi/MapiTypes.h"
#include "tests/localmapi/support/Restrictions.h"

#include <cstdint>
#include <span>
#include <vector>

namespace localmapi::testing {

// A value as the bytes that files have for it.
struct FileValue {
    const char* name;
    ULONG type;
    const char* hex;
    const char* text;    // as TextOf writes it; null: the bytes are no value
    std::uint64_t size;  // what RES_SIZE says of it
};
std::span<const FileValue> FileValues();

Bytes FromHex(const char* hex);

struct NamedValue {
    const char* name;
    const char* text;
    std::uint64_t size;
    SPropValue value;
};

// Those of FileValues that are values, and those that no bytes of a file make; ids from 0x6001 on, one a value. What the
// values point at lies in `memory`.
std::vector<NamedValue> EveryValue(ValueMemory& memory);

// Lists of values in ascending order, each of one type or of texts of both widths; ids are 0x0037. What the values point at lives as
// long as the maker.
struct AscendingList {
    const char* name;
    std::vector<SPropValue> values;
};
std::vector<AscendingList> AscendingLists(RestrictionMaker& maker);

}  // namespace localmapi::testing
