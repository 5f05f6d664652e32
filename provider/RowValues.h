// Values of a row or of a GetProps call, read with a look at their type: a provider may answer with PT_ERROR, with
// another type than was asked for, or with fewer columns. All of these count as a missing value.
//
// A pointer that comes back lies in the row and lives as long as it.
#pragma once

#include "mapi/MapiTypes.h"
#include "platform/WideText.h"
#include "provider/MAPIUtils.h"

#include <cstddef>
#include <span>

// The value in a column when it is there and has that type; otherwise null.
inline const SPropValue* ColumnOfType(const SRow& row, ULONG column, ULONG type) noexcept {
    if (column >= row.cValues || row.lpProps == nullptr || PROP_TYPE(row.lpProps[column].ulPropTag) != type) {
        return nullptr;
    }
    return &row.lpProps[column];
}

// The bytes of a PT_BINARY column; empty when there are none.
inline std::span<const BYTE> BinaryColumn(const SRow& row, ULONG column) noexcept {
    const SPropValue* value = ColumnOfType(row, column, PT_BINARY);
    if (value == nullptr || value->Value.bin.lpb == nullptr) {
        return {};
    }
    return {value->Value.bin.lpb, value->Value.bin.cb};
}

// The same as upper-case hexadecimal text.
inline CStringW HexColumn(const SRow& row, ULONG column) {
    const std::span<const BYTE> bytes = BinaryColumn(row, column);
    return CMapiUtil::Bin2Hex(static_cast<ULONG>(bytes.size()), bytes.data());
}

// The text of a PT_UNICODE column; empty when there is none.
inline CStringW TextColumn(const SRow& row, ULONG column) {
    return CMapiUtil::Mapi2SimpleString(ColumnOfType(row, column, PT_UNICODE));
}

// Whether a PT_BOOLEAN column holds exactly 1.
inline bool FlagColumn(const SRow& row, ULONG column) noexcept {
    const SPropValue* value = ColumnOfType(row, column, PT_BOOLEAN);
    return value != nullptr && value->Value.b == 1;
}

// The time of a PT_SYSTIME column; zero when there is none.
inline FILETIME TimeColumn(const SRow& row, ULONG column) noexcept {
    const SPropValue* value = ColumnOfType(row, column, PT_SYSTIME);
    return value != nullptr ? value->Value.ft : FILETIME{0, 0};
}

// The identifier in a PT_BINARY column of exactly 16 bytes; null when there is none. MAPI asks for such identifiers
// through pointers to non-const, and some calls write through them.
inline MAPIUID* UidColumn(const SRow& row, ULONG column) noexcept {
    const std::span<const BYTE> bytes = BinaryColumn(row, column);
    return bytes.size() == sizeof(MAPIUID) ? reinterpret_cast<MAPIUID*>(const_cast<BYTE*>(bytes.data())) : nullptr;
}
