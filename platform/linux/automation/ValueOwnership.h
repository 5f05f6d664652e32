// What VARIANTs and array elements own, given up and duplicated without recursion: an array nested in an array nested
// in an array, to any depth, takes no stack.
#pragma once

#include "platform/SafeArray.h"
#include "platform/Variant.h"

#include <cstdint>
#include <vector>

namespace automation {

// Whether a VARIANT can have this type: VT_CLSID and the types up to VT_UINT, all but VT_EMPTY and VT_NULL with VT_ARRAY
// and VT_BYREF too. Windows knows VT_RECORD besides.
bool IsVariantType(VARTYPE vt) noexcept;

// A copy with the same bytes, null for null or when memory is short.
BSTR Duplicate(BSTR text) noexcept;

// Gives up values, and collects the arrays met on the way to take them apart one after the other. They are linked
// through their own memory, so nothing here can fail.
class Disposal {
public:
    Disposal() = default;
    Disposal(const Disposal&) = delete;
    Disposal& operator=(const Disposal&) = delete;
    ~Disposal() { TakeApart(); }

    // Frees what the value owns and makes it VT_EMPTY. A value of no valid type is left as it is.
    void Add(VARIANT& value);

    // The array will be freed. One that is locked, or not ours, is left alone.
    void Add(SAFEARRAY* array);

    // Gives up `count` elements from the index `first` on, counted over all dimensions; they are zero afterwards.
    void AddElements(const SAFEARRAY& array, std::uint64_t first, std::uint64_t count);

private:
    void TakeApart();

    SAFEARRAY* m_first = nullptr;  // linked by SetLink
};

// Duplicates values, noting the arrays met on the way and duplicating them afterwards, one by one. Operations other
// than the destructor throw std::bad_alloc.
class Duplication {
public:
    // Makes `into`, which must be VT_EMPTY, a copy of `from`. An array in it is there only after Finish.
    // DISP_E_BADVARTYPE, with `into` left empty.
    HRESULT Copy(const VARIANT& from, VARIANT& into);

    // Makes the elements of `into`, all of them zero, copies of those of `from`, which has the same shape.
    HRESULT CopyElements(const SAFEARRAY& from, SAFEARRAY& into);

    // Copies the arrays that were met. When this fails, what was copied already is whole, and owned by its VARIANT.
    HRESULT Finish();

private:
    struct NestedArray {
        const VARIANT* from;
        VARIANT* into;
    };
    std::vector<NestedArray> m_nested;  // both sides outlive the copying: they are elements or the caller's VARIANTs
};

}  // namespace automation
