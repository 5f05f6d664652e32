#include "localmapi/com/ComObject.h"
#include "localmapi/props/MapiMemory.h"
#include "localmapi/props/Values.h"
#include "localmapi/utilities/Utilities.h"
#include "mapi/MapiCodes.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <optional>
#include <span>

namespace localmapi {

namespace {

// The blocks of somebody's MAPIAllocateMore.
class ForeignMemory final : public ValueMemory {
public:
    ForeignMemory(LPALLOCATEMORE allocateMore, void* object) noexcept
        : m_allocateMore(allocateMore), m_object(object) {}

    void* Allocate(std::size_t size) override {
        void* block = nullptr;
        if (size > std::numeric_limits<ULONG>::max()
            || FAILED(m_allocateMore(static_cast<ULONG>(size), m_object, &block)) || block == nullptr) {
            throw std::bad_alloc();
        }
        return block;
    }

private:
    LPALLOCATEMORE m_allocateMore;
    void* m_object;
};

// The array as a span; nothing when it cannot be one.
std::optional<std::span<SPropValue>> ArrayOf(int count, LPSPropValue values) noexcept {
    if (count < 0 || (count > 0 && values == nullptr)) {
        return std::nullopt;
    }
    return std::span(values, static_cast<std::size_t>(count));
}

// The size of a block for the values and all they point at.
SCODE BlockSize(std::span<const SPropValue> values, ULONG& size) noexcept {
    std::uint64_t sum = values.size_bytes();
    for (const SPropValue& value : values) {
        if (!IsValid(value) || IsTree(value)) {
            return MAPI_E_INVALID_PARAMETER;
        }
        sum += PointedSize(value);
    }
    if (sum > std::numeric_limits<ULONG>::max()) {
        return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    size = static_cast<ULONG>(sum);
    return S_OK;
}

// Runs what may throw.
template <class Body>
SCODE WithoutExceptions(Body&& body) noexcept {
    try {
        return body();
    } catch (...) {
        return ResultOfException();
    }
}

// Copies values into a block of the size that BlockSize says.
SCODE CopyArray(std::span<const SPropValue> values, void* block, ULONG size) noexcept {
    return WithoutExceptions([&]() -> SCODE {
        auto* const copies = static_cast<SPropValue*>(block);
        BlockMemory memory(copies + values.size(), size - values.size_bytes());
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (const HRESULT result = CopyValue(values[i], memory, copies[i]); FAILED(result)) {
                return result;
            }
        }
        return S_OK;
    });
}

}  // namespace

// ---- Properties of objects ------------------------------------------------------------------------------------------

HRESULT HrGetOneProp(LPMAPIPROP object, ULONG tag, LPSPropValue* value) noexcept {
    if (object == nullptr || value == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *value = nullptr;
    SPropTagArray tags{1, {tag}};
    ULONG count = 0;
    LPSPropValue got = nullptr;
    const HRESULT result = object->GetProps(&tags, 0, &count, &got);
    MapiPointer<SPropValue> values(got);
    if (FAILED(result)) {
        return result;
    }
    if (values == nullptr || count == 0) {
        return MAPI_E_NOT_FOUND;
    }
    if (PROP_TYPE(values->ulPropTag) == PT_ERROR && PROP_TYPE(tag) != PT_ERROR) {
        return values->Value.err;
    }
    *value = values.release();
    return S_OK;
}

HRESULT HrSetOneProp(LPMAPIPROP object, LPSPropValue value) noexcept {
    if (object == nullptr || value == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    LPSPropProblemArray problems = nullptr;
    const HRESULT result = object->SetProps(1, value, &problems);
    const MapiPointer<SPropProblemArray> held(problems);
    const bool hasProblem = SUCCEEDED(result) && held != nullptr && held->cProblem > 0;
    return hasProblem ? held->aProblem[0].scode : result;
}

// ---- Arrays of values -----------------------------------------------------------------------------------------------

LPSPropValue PpropFindProp(LPSPropValue values, ULONG count, ULONG tag) noexcept {
    if (values == nullptr) {
        return nullptr;
    }
    const bool anyType = PROP_TYPE(tag) == PT_UNSPECIFIED;
    const auto matches = [=](const SPropValue& value) {
        return value.ulPropTag == tag || (anyType && PROP_ID(value.ulPropTag) == PROP_ID(tag));
    };
    LPSPropValue const found = std::find_if(values, values + count, matches);
    return found == values + count ? nullptr : found;
}

SCODE ScCountProps(int count, LPSPropValue values, ULONG* size) noexcept {
    const auto array = ArrayOf(count, values);
    return !array || size == nullptr ? MAPI_E_INVALID_PARAMETER : BlockSize(*array, *size);
}

SCODE ScCopyProps(int count, LPSPropValue values, LPVOID block, ULONG* size) noexcept {
    const auto array = ArrayOf(count, values);
    if (!array || block == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    ULONG needed = 0;
    SCODE result = BlockSize(*array, needed);
    if (SUCCEEDED(result)) {
        result = CopyArray(*array, block, needed);
    }
    if (SUCCEEDED(result) && size != nullptr) {
        *size = needed;
    }
    return result;
}

SCODE ScRelocProps(int count, LPSPropValue values, LPVOID from, LPVOID to, ULONG* size) noexcept {
    const auto array = ArrayOf(count, values);
    if (!array) {
        return MAPI_E_INVALID_PARAMETER;
    }
    // The size is counted where the pointers can be followed: before they are moved away, or after they have come.
    const bool isUsable = from == values;
    ULONG needed = 0;
    SCODE result = isUsable ? BlockSize(*array, needed) : S_OK;
    for (std::size_t i = 0; SUCCEEDED(result) && i < array->size(); ++i) {
        result = Relocate((*array)[i], from, values, to) ? S_OK : MAPI_E_INVALID_PARAMETER;
    }
    if (SUCCEEDED(result) && !isUsable && to == values) {
        result = BlockSize(*array, needed);
    }
    if (SUCCEEDED(result) && size != nullptr) {
        *size = needed;
    }
    return result;
}

SCODE ScDupPropset(int count, LPSPropValue values, LPALLOCATEBUFFER allocate, LPSPropValue* copy) noexcept {
    const auto array = ArrayOf(count, values);
    if (!array || allocate == nullptr || copy == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *copy = nullptr;
    ULONG size = 0;
    if (const SCODE result = BlockSize(*array, size); FAILED(result)) {
        return result;
    }
    void* block = nullptr;
    if (const SCODE result = allocate(size, &block); FAILED(result)) {
        return result;
    }
    // The values were checked and the block has their size: nothing is left to fail.
    const SCODE result = CopyArray(*array, block, size);
    *copy = static_cast<LPSPropValue>(block);
    return result;
}

SCODE PropCopyMore(LPSPropValue to, LPSPropValue from, LPALLOCATEMORE allocateMore, LPVOID object) noexcept {
    if (to == nullptr || from == nullptr || allocateMore == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    return WithoutExceptions([&] {
        ForeignMemory memory(allocateMore, object);
        return CopyValue(*from, memory, *to);
    });
}

}  // namespace localmapi
