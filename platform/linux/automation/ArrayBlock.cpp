#include "platform/linux/automation/ArrayBlock.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <limits>

namespace automation {

namespace {

constexpr std::size_t kFactBytes = 16;
constexpr std::size_t kTypeOffset = 12;  // of the VARTYPE among the facts
constexpr ULONG kPointerBytes = sizeof(void*);
constexpr std::uint64_t kMaxElementBytes = std::numeric_limits<ULONG>::max();

constexpr IID kIidDispatch = OleGuid(0x00020400);

constexpr ElementType kElementTypes[] = {
    {VT_I1, FADF_HAVEVARTYPE, 1},
    {VT_UI1, FADF_HAVEVARTYPE, 1},
    {VT_I2, FADF_HAVEVARTYPE, 2},
    {VT_UI2, FADF_HAVEVARTYPE, 2},
    {VT_BOOL, FADF_HAVEVARTYPE, 2},
    {VT_I4, FADF_HAVEVARTYPE, 4},
    {VT_UI4, FADF_HAVEVARTYPE, 4},
    {VT_INT, FADF_HAVEVARTYPE, 4},
    {VT_UINT, FADF_HAVEVARTYPE, 4},
    {VT_R4, FADF_HAVEVARTYPE, 4},
    {VT_ERROR, FADF_HAVEVARTYPE, 4},
    {VT_I8, FADF_HAVEVARTYPE, 8},
    {VT_UI8, FADF_HAVEVARTYPE, 8},
    {VT_INT_PTR, FADF_HAVEVARTYPE, 8},
    {VT_UINT_PTR, FADF_HAVEVARTYPE, 8},
    {VT_R8, FADF_HAVEVARTYPE, 8},
    {VT_CY, FADF_HAVEVARTYPE, 8},
    {VT_DATE, FADF_HAVEVARTYPE, 8},
    {VT_DECIMAL, FADF_HAVEVARTYPE, sizeof(DECIMAL)},
    {VT_BSTR, FADF_HAVEVARTYPE | FADF_BSTR, kPointerBytes},
    {VT_VARIANT, FADF_HAVEVARTYPE | FADF_VARIANT, sizeof(VARIANT)},
    {VT_UNKNOWN, FADF_HAVEIID | FADF_UNKNOWN, kPointerBytes},
    {VT_DISPATCH, FADF_HAVEIID | FADF_DISPATCH, kPointerBytes},
};

std::byte* FactsOf(const SAFEARRAY& array) {
    return reinterpret_cast<std::byte*>(const_cast<SAFEARRAY*>(&array)) - kFactBytes;
}

// Bytes of the descriptor, rounded up so that elements behind it are aligned for any type.
std::size_t DescriptorBytes(USHORT dims) {
    const std::size_t bytes = offsetof(SAFEARRAY, rgsabound) + dims * sizeof(SAFEARRAYBOUND);
    return (bytes + 15) & ~std::size_t{15};
}

// Product of the counts, or more than kMaxElementBytes when it is too large for any array.
std::uint64_t CountElements(const SAFEARRAYBOUND* bounds, USHORT dims) {
    std::uint64_t count = 1;
    if (std::any_of(bounds, bounds + dims, [](const SAFEARRAYBOUND& bound) { return bound.cElements == 0; })) {
        return 0;
    }
    for (USHORT i = 0; i < dims && count <= kMaxElementBytes; ++i) {
        count *= bounds[i].cElements;  // below 2^64: both factors are below 2^32
    }
    return count;
}

// No array is without memory for elements, not even an empty one.
void* AllocateElements(std::uint64_t bytes) {
    return std::calloc(1, std::max<std::size_t>(bytes, 1));
}

// The descriptor alone or with its elements, type and bounds filled in, the facts and pvData of a separate block not.
SAFEARRAY* AllocateBlock(const ElementType& type, USHORT dims, const SAFEARRAYBOUND* bounds) {
    const std::uint64_t count = CountElements(bounds, dims);
    if (count > kMaxElementBytes / type.size) {
        return nullptr;
    }
    const std::uint64_t bytes = count * type.size;
    const bool together = (type.features & kOneBlock) != 0;
    const std::size_t before = kFactBytes + DescriptorBytes(dims);
    auto* block = static_cast<std::byte*>(std::calloc(1, before + (together ? bytes : 0)));
    if (block == nullptr) {
        return nullptr;
    }
    auto* array = reinterpret_cast<SAFEARRAY*>(block + kFactBytes);
    array->pvData = together ? block + before : AllocateElements(bytes);
    if (array->pvData == nullptr) {
        std::free(block);
        return nullptr;
    }
    array->cDims = dims;
    array->fFeatures = type.features;
    array->cbElements = type.size;
    std::memcpy(array->rgsabound, bounds, dims * sizeof(SAFEARRAYBOUND));
    return array;
}

}  // namespace

const ElementType* FindElementType(VARTYPE vt) noexcept {
    const auto* found = std::find_if(std::begin(kElementTypes), std::end(kElementTypes),
                                     [vt](const ElementType& type) { return type.vt == vt; });
    return found == std::end(kElementTypes) ? nullptr : found;
}

SAFEARRAY* AllocateArray(const ElementType& type, USHORT dims, const SAFEARRAYBOUND* bounds) noexcept {
    SAFEARRAY* array = AllocateBlock(type, dims, bounds);
    if (array == nullptr) {
        return nullptr;
    }
    if ((type.features & FADF_HAVEIID) != 0) {
        const IID& iid = type.vt == VT_DISPATCH ? kIidDispatch : IID_IUnknown;
        std::memcpy(FactsOf(*array), &iid, sizeof(iid));
    } else {
        const ULONG vt = type.vt;
        std::memcpy(FactsOf(*array) + kTypeOffset, &vt, sizeof(vt));
    }
    return array;
}

SAFEARRAY* AllocateLike(const SAFEARRAY& model) noexcept {
    const ElementType type = {VT_EMPTY, model.fFeatures, model.cbElements};
    SAFEARRAY* array = AllocateBlock(type, model.cDims, model.rgsabound);
    if (array != nullptr) {
        std::memcpy(FactsOf(*array), FactsOf(model), kFactBytes);
    }
    return array;
}

void FreeArray(SAFEARRAY* array) noexcept {
    if ((array->fFeatures & kOneBlock) == 0) {
        std::free(array->pvData);
    }
    std::free(FactsOf(*array));
}

void DropElementMemory(SAFEARRAY& array) noexcept {
    if ((array.fFeatures & kOneBlock) != 0) {
        std::memset(array.pvData, 0, ElementCount(array) * array.cbElements);
    } else {
        std::free(array.pvData);
        array.pvData = nullptr;
    }
}

bool ResizeLastDimension(SAFEARRAY& array, const SAFEARRAYBOUND& bound) noexcept {
    const std::uint64_t before = ElementCount(array);
    const std::uint64_t after = ElementCountWith(array, bound.cElements);
    if (after > before || array.pvData == nullptr) {
        if (after > kMaxElementBytes / array.cbElements) {
            return false;
        }
        // A block of its own from here on; the room inside a vector's block stays unused.
        void* elements = AllocateElements(after * array.cbElements);
        if (elements == nullptr) {
            return false;
        }
        if (before != 0) {
            std::memcpy(elements, array.pvData, before * array.cbElements);
        }
        if ((array.fFeatures & kOneBlock) == 0) {
            std::free(array.pvData);
        }
        array.pvData = elements;
        array.fFeatures = static_cast<USHORT>(array.fFeatures & ~kOneBlock);
    }
    array.rgsabound[0] = bound;
    return true;
}

std::uint64_t ElementCount(const SAFEARRAY& array) noexcept {
    return array.pvData == nullptr ? 0 : CountElements(array.rgsabound, array.cDims);
}

std::uint64_t ElementCountWith(const SAFEARRAY& array, ULONG cElements) noexcept {
    const std::uint64_t others =
        CountElements(array.rgsabound + 1, static_cast<USHORT>(array.cDims == 0 ? 0 : array.cDims - 1));
    return std::min<std::uint64_t>(others, kMaxElementBytes) * cElements;
}

Content ContentOf(const SAFEARRAY& array) noexcept {
    if ((array.fFeatures & FADF_VARIANT) != 0) {
        return Content::Variants;
    }
    if ((array.fFeatures & FADF_BSTR) != 0) {
        return Content::Texts;
    }
    return (array.fFeatures & (FADF_UNKNOWN | FADF_DISPATCH)) != 0 ? Content::Interfaces : Content::Plain;
}

bool IsOurs(const SAFEARRAY& array) noexcept {
    return (array.fFeatures & (FADF_AUTO | FADF_STATIC | FADF_EMBEDDED)) == 0 && array.cDims != 0
           && array.cbElements != 0;
}

VARTYPE StoredType(const SAFEARRAY& array) noexcept {
    ULONG vt = 0;
    std::memcpy(&vt, FactsOf(array) + kTypeOffset, sizeof(vt));
    return static_cast<VARTYPE>(vt);
}

SAFEARRAY* Link(const SAFEARRAY& array) noexcept {
    SAFEARRAY* next = nullptr;
    std::memcpy(&next, FactsOf(array), kPointerBytes);
    return next;
}

void SetLink(SAFEARRAY& array, SAFEARRAY* next) noexcept {
    std::memcpy(FactsOf(array), &next, kPointerBytes);
}

}  // namespace automation
