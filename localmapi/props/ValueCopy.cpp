// Deep copies of values, in one block each, and of restrictions and actions, node by node.
#include "localmapi/props/ValueTypes.h"
#include "localmapi/props/Values.h"
#include "mapi/MapiCodes.h"

#include <cstring>

namespace localmapi {

namespace {

std::size_t Rounded(std::uint64_t size) noexcept {
    return static_cast<std::size_t>(RoundUp(size, ValueMemory::kAlignment));
}

// Copies the bytes that one value points at, and makes it point at the copy.
void CopyPointed(const ValueType& type, SPropValue& value, ValueMemory& memory) {
    const auto size = static_cast<std::size_t>(SizeOf(value));
    if (type.kind == ValueKind::Binary) {
        void* const bytes = size == 0 ? nullptr : memory.Allocate(size);
        if (size > 0) {
            std::memcpy(bytes, value.Value.bin.lpb, size);
        }
        value.Value.bin.lpb = static_cast<BYTE*>(bytes);
        return;
    }
    // Texts and GUIDs: the union's pointers all lie at its beginning.
    void* const bytes = memory.Allocate(size);
    std::memcpy(bytes, value.Value.lpszA, size);
    value.Value.lpszA = static_cast<LPSTR>(bytes);
}

void CopyElements(const ValueType& type, SPropValue& value, ValueMemory& memory) {
    const Elements from = ElementsOf(value);
    const std::size_t size = std::size_t{from.count} * type.size;
    if (from.count == 0) {
        SetElements(value, 0, nullptr);
        return;
    }
    auto* const elements = static_cast<std::byte*>(memory.Allocate(size));
    std::memcpy(elements, from.first, size);
    if (type.kind != ValueKind::Number && type.kind != ValueKind::Guid) {
        for (ULONG i = 0; i < from.count; ++i) {
            SPropValue one = ElementAt(value, i);
            CopyPointed(type, one, memory);
            std::memcpy(elements + std::size_t{i} * type.size, &one.Value, type.size);
        }
    }
    SetElements(value, from.count, elements);
}

// Copies one restriction or actions with all below them; counts what it has copied.
class TreeCopier {
public:
    explicit TreeCopier(ValueMemory& memory) noexcept : m_memory(memory) {}

    HRESULT Copy(const SRestriction& from, SRestriction& to);
    HRESULT Copy(const SPropValue& from, SPropValue& to);

private:
    // An array of restrictions or values.
    template <class T>
    HRESULT CopyBelow(ULONG count, const T* from, T*& to);
    HRESULT CopyTree(const SPropValue& from, SPropValue& to);
    HRESULT CopyAction(const ACTION& from, ACTION& to);
    HRESULT CopyAddresses(const ADRLIST* from, ADRLIST*& to);

    // Enters `count` nodes one level further down.
    bool Enter(std::size_t count) noexcept {
        m_nodes += count;
        return ++m_depth <= kDeepestRestriction && m_nodes <= kLargestRestriction;
    }

    template <class T>
    HRESULT CopyBytes(std::size_t size, const T* from, T*& to) {
        to = nullptr;
        if (size == 0) {
            return S_OK;
        }
        if (from == nullptr) {
            return MAPI_E_INVALID_PARAMETER;
        }
        void* const bytes = m_memory.Allocate(size);
        std::memcpy(bytes, from, size);
        to = static_cast<T*>(bytes);
        return S_OK;
    }

    ValueMemory& m_memory;
    unsigned m_depth = 0;
    std::size_t m_nodes = 0;
};

// One level further down.
template <class T>
HRESULT TreeCopier::CopyBelow(ULONG count, const T* from, T*& to) {
    to = nullptr;
    if (count == 0) {
        return S_OK;
    }
    if (from == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    if (!Enter(count)) {
        return MAPI_E_TOO_COMPLEX;
    }
    to = m_memory.Array<T>(count);
    for (ULONG i = 0; i < count; ++i) {
        if (const HRESULT result = Copy(from[i], to[i]); FAILED(result)) {
            return result;
        }
    }
    --m_depth;
    return S_OK;
}

HRESULT TreeCopier::Copy(const SRestriction& from, SRestriction& to) {
    to = from;
    switch (from.rt) {
        case RES_AND: return CopyBelow(from.res.resAnd.cRes, from.res.resAnd.lpRes, to.res.resAnd.lpRes);
        case RES_OR: return CopyBelow(from.res.resOr.cRes, from.res.resOr.lpRes, to.res.resOr.lpRes);
        case RES_NOT: return CopyBelow(1, from.res.resNot.lpRes, to.res.resNot.lpRes);
        case RES_SUBRESTRICTION: return CopyBelow(1, from.res.resSub.lpRes, to.res.resSub.lpRes);
        case RES_COUNT: return CopyBelow(1, from.res.resCount.lpRes, to.res.resCount.lpRes);
        case RES_CONTENT: return CopyBelow(1, from.res.resContent.lpProp, to.res.resContent.lpProp);
        case RES_PROPERTY: return CopyBelow(1, from.res.resProperty.lpProp, to.res.resProperty.lpProp);
        case RES_COMMENT:
        case RES_ANNOTATION: {
            const SCommentRestriction& comment = from.res.resComment;
            const HRESULT result = CopyBelow(comment.cValues, comment.lpProp, to.res.resComment.lpProp);
            return FAILED(result) || comment.lpRes == nullptr ? result
                                                              : CopyBelow(1, comment.lpRes, to.res.resComment.lpRes);
        }
        case RES_COMPAREPROPS:
        case RES_BITMASK:
        case RES_SIZE:
        case RES_EXIST: return S_OK;
        default: return MAPI_E_INVALID_PARAMETER;
    }
}

HRESULT TreeCopier::Copy(const SPropValue& from, SPropValue& to) {
    to = from;
    if (!IsValid(from)) {
        return MAPI_E_INVALID_PARAMETER;
    }
    if (IsTree(from)) {
        return CopyTree(from, to);
    }
    const std::size_t size = PointedSize(from);
    BlockMemory block(size == 0 ? nullptr : m_memory.Allocate(size), size);
    const ValueType& type = *ValueTypeOf(from.ulPropTag);
    if (IsMultiple(from.ulPropTag)) {
        CopyElements(type, to, block);
    } else if (type.kind != ValueKind::None && type.kind != ValueKind::Number) {
        CopyPointed(type, to, block);
    }
    return S_OK;
}

HRESULT TreeCopier::CopyTree(const SPropValue& from, SPropValue& to) {
    if (PROP_TYPE(from.ulPropTag) == PT_SRESTRICTION) {
        SRestriction* copy = nullptr;
        const HRESULT result = CopyBelow(1, reinterpret_cast<const SRestriction*>(from.Value.lpszA), copy);
        to.Value.lpszA = reinterpret_cast<LPSTR>(copy);
        return result;
    }
    const ACTIONS& actions = *reinterpret_cast<const ACTIONS*>(from.Value.lpszA);
    if (actions.cActions > 0 && actions.lpAction == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    if (!Enter(actions.cActions)) {
        return MAPI_E_TOO_COMPLEX;
    }
    auto* const copy = m_memory.Array<ACTIONS>(1);
    *copy = actions;
    copy->lpAction = m_memory.Array<ACTION>(actions.cActions);
    to.Value.lpszA = reinterpret_cast<LPSTR>(copy);
    for (UINT i = 0; i < actions.cActions; ++i) {
        if (const HRESULT result = CopyAction(actions.lpAction[i], copy->lpAction[i]); FAILED(result)) {
            return result;
        }
    }
    --m_depth;
    return S_OK;
}

HRESULT TreeCopier::CopyAction(const ACTION& from, ACTION& to) {
    to = from;
    HRESULT result = from.lpRes == nullptr ? S_OK : CopyBelow(1, from.lpRes, to.lpRes);
    if (SUCCEEDED(result) && from.lpPropTagArray != nullptr) {
        const std::size_t size =
            offsetof(SPropTagArray, aulPropTag) + std::size_t{from.lpPropTagArray->cValues} * sizeof(ULONG);
        result = CopyBytes(size, from.lpPropTagArray, to.lpPropTagArray);
    }
    if (FAILED(result)) {
        return result;
    }
    switch (from.acttype) {
        case OP_MOVE:
        case OP_COPY:
            result = CopyBytes(from.actMoveCopy.cbStoreEntryId, from.actMoveCopy.lpStoreEntryId,
                               to.actMoveCopy.lpStoreEntryId);
            return FAILED(result) ? result
                                  : CopyBytes(from.actMoveCopy.cbFldEntryId, from.actMoveCopy.lpFldEntryId,
                                              to.actMoveCopy.lpFldEntryId);
        case OP_REPLY:
        case OP_OOF_REPLY: return CopyBytes(from.actReply.cbEntryId, from.actReply.lpEntryId, to.actReply.lpEntryId);
        case OP_DEFER_ACTION:
            return CopyBytes(from.actDeferAction.cbData, from.actDeferAction.pbData, to.actDeferAction.pbData);
        case OP_FORWARD:
        case OP_DELEGATE: return CopyAddresses(from.lpadrlist, to.lpadrlist);
        case OP_TAG: return Copy(from.propTag, to.propTag);
        case OP_BOUNCE:
        case OP_DELETE:
        case OP_MARK_AS_READ: return S_OK;
    }
    return MAPI_E_INVALID_PARAMETER;
}

HRESULT TreeCopier::CopyAddresses(const ADRLIST* from, ADRLIST*& to) {
    if (from == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    if (!Enter(from->cEntries)) {
        return MAPI_E_TOO_COMPLEX;
    }
    HRESULT result = CopyBytes(offsetof(ADRLIST, aEntries) + std::size_t{from->cEntries} * sizeof(ADRENTRY), from, to);
    for (ULONG i = 0; SUCCEEDED(result) && i < from->cEntries; ++i) {
        result = CopyBelow(from->aEntries[i].cValues, from->aEntries[i].rgPropVals, to->aEntries[i].rgPropVals);
    }
    --m_depth;
    return result;
}

}  // namespace

HRESULT CopyValue(const SPropValue& from, ValueMemory& memory, SPropValue& to) {
    return TreeCopier(memory).Copy(from, to);
}

HRESULT CopyRestriction(const SRestriction& from, ValueMemory& memory, SRestriction& to) {
    return TreeCopier(memory).Copy(from, to);
}

bool IsTree(const SPropValue& value) noexcept {
    const ValueType* const type = ValueTypeOf(value.ulPropTag);
    return type != nullptr && type->kind == ValueKind::Tree;
}

std::size_t PointedSize(const SPropValue& value) noexcept {
    const ValueType* const type = ValueTypeOf(value.ulPropTag);
    if (type == nullptr || type->kind == ValueKind::None || type->kind == ValueKind::Tree) {
        return 0;
    }
    const bool isFlat = type->kind == ValueKind::Number || type->kind == ValueKind::Guid;
    if (!IsMultiple(value.ulPropTag)) {
        return type->kind == ValueKind::Number ? 0 : Rounded(SizeOf(value));
    }
    const ULONG count = ElementsOf(value).count;
    std::size_t size = Rounded(std::uint64_t{count} * type->size);
    for (ULONG i = 0; !isFlat && i < count; ++i) {
        size += Rounded(SizeOf(ElementAt(value, i)));
    }
    return size;
}

bool Relocate(SPropValue& value, const void* from, void* block, const void* to) noexcept {
    const ValueType* const type = ValueTypeOf(value.ulPropTag);
    if (type == nullptr || type->kind == ValueKind::Tree) {
        return false;
    }
    const std::uintptr_t first = reinterpret_cast<std::uintptr_t>(from);
    const std::uintptr_t target = reinterpret_cast<std::uintptr_t>(to);
    // Moves the pointer at `place`, unless it is null; gives where its bytes are.
    const auto move = [=](void* place) noexcept -> std::byte* {
        std::uintptr_t pointer = 0;
        std::memcpy(&pointer, place, sizeof(pointer));
        if (pointer == 0) {
            return nullptr;
        }
        const std::uintptr_t moved = pointer - first + target;
        std::memcpy(place, &moved, sizeof(moved));
        return static_cast<std::byte*>(block) + (pointer - first);
    };
    const std::size_t inElement = type->kind == ValueKind::Binary ? offsetof(SBinary, lpb) : 0;
    auto* const contents = reinterpret_cast<std::byte*>(&value.Value);
    const bool pointsOn = type->kind != ValueKind::None && type->kind != ValueKind::Number;
    if (!IsMultiple(value.ulPropTag)) {
        if (pointsOn) {
            move(contents + inElement);
        }
        return true;
    }
    std::byte* const elements = move(contents + offsetof(Elements, first));
    for (ULONG i = 0; elements != nullptr && pointsOn && type->kind != ValueKind::Guid && i < ElementsOf(value).count;
         ++i) {
        move(elements + std::size_t{i} * type->size + inElement);
    }
    return true;
}

}  // namespace localmapi
