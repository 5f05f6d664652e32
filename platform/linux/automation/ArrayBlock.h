// The memory of a SAFEARRAY: one block that holds 16 bytes of facts, the descriptor, and for a vector the elements. The
// elements of every other array have a block of their own. All blocks come zeroed from the C library's heap.
#pragma once

#include "platform/SafeArray.h"

#include <cstddef>
#include <cstdint>

namespace automation {

// Among an array's features, one of the reserved ones, and the one that Windows uses for the same: the elements lie in
// the descriptor's block.
inline constexpr USHORT kOneBlock = 0x2000;

// What the elements of an array own.
enum class Content { Plain, Texts, Interfaces, Variants };

// How an element type is stored: a row of a table, or null for a type that no element has.
struct ElementType {
    VARTYPE vt;
    USHORT features;  // FADF_ flags of an array of it
    ULONG size;       // bytes
};
const ElementType* FindElementType(VARTYPE vt) noexcept;

// A new array with elements of zeros, or null: no memory, or the elements would take 2^32 bytes or more. `bounds` has
// `dims` entries, in the descriptor's order (last dimension first). The features may have
// kOneBlock.
SAFEARRAY* AllocateArray(const ElementType& type, USHORT dims, const SAFEARRAYBOUND* bounds) noexcept;

// A new array of the same type and bounds with elements of zeros, or null when memory is short.
SAFEARRAY* AllocateLike(const SAFEARRAY& model) noexcept;

// Frees the memory without looking at the elements.
void FreeArray(SAFEARRAY* array) noexcept;

// Frees the elements' memory, or zeroes it where it is part of the descriptor's block.
void DropElementMemory(SAFEARRAY& array) noexcept;

// Makes the last dimension `bound`, moves the elements where they have to and zeroes the new ones; elements past the
// end must have been given up. False when memory is short or the elements would take 2^32 bytes or more, with nothing
// changed. Never fails when the array does not grow.
bool ResizeLastDimension(SAFEARRAY& array, const SAFEARRAYBOUND& bound) noexcept;

// Number of elements, over all dimensions; 0 when their memory is gone.
std::uint64_t ElementCount(const SAFEARRAY& array) noexcept;

// Number of elements that the array has with `cElements` in its last dimension.
std::uint64_t ElementCountWith(const SAFEARRAY& array, ULONG cElements) noexcept;

Content ContentOf(const SAFEARRAY& array) noexcept;

// Whether AllocateArray made it. Others (FADF_AUTO, FADF_STATIC, FADF_EMBEDDED) have no facts before the descriptor.
bool IsOurs(const SAFEARRAY& array) noexcept;

// The facts before the descriptor. The link is for an array that is about to be freed: it takes the place of the
// interface identifier.
VARTYPE StoredType(const SAFEARRAY& array) noexcept;
SAFEARRAY* Link(const SAFEARRAY& array) noexcept;
void SetLink(SAFEARRAY& array, SAFEARRAY* next) noexcept;

}  // namespace automation
