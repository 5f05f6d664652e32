#include "provider/MapiCopy.h"

#include "mapi/MapiCodes.h"
#include "provider/ErrorReport.h"
#include "provider/ImportProcs.h"

#include <cstring>
#include <limits>

namespace {

constexpr char kSourceName[] = "ImportProcs.cpp";

SCODE Allocate(std::size_t bytes, LPVOID parent, LPVOID* block) noexcept {
    *block = nullptr;
    if (bytes > std::numeric_limits<ULONG>::max()) {
        return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    const auto size = static_cast<ULONG>(bytes);
    return parent != nullptr ? MAPIAllocateMore(size, parent, block) : MAPIAllocateBuffer(size, block);
}

// Properties of these types carry their pointer where a text's would be.
LPSRestriction RestrictionOf(const SPropValue& prop) noexcept {
    return reinterpret_cast<LPSRestriction>(prop.Value.lpszA);
}

LPACTIONS ActionsOf(const SPropValue& prop) noexcept {
    return reinterpret_cast<LPACTIONS>(prop.Value.lpszA);
}

// Copies one tree. Each operation writes null where its source is null or counts nothing, and takes the depth at which
// its source stands.
class TreeCopier {
public:
    // Without a parent the first block becomes the root of all others.
    explicit TreeCopier(LPVOID parent) noexcept : m_root(parent), m_hasParent(parent != nullptr) {}

    HRESULT CopyRestrictions(const SRestriction* source, ULONG count, ULONG depth, LPSRestriction& copy) noexcept {
        return CopyArray(source, count, depth, copy, &TreeCopier::FillRestriction);
    }

    HRESULT CopyActions(const ACTIONS* source, ULONG depth, LPACTIONS& copy) noexcept {
        return CopyArray(source, 1, depth, copy, &TreeCopier::FillActions);
    }

    // The same into an array that is there already.
    HRESULT FillRestrictions(const SRestriction* source, ULONG count, LPSRestriction copy) noexcept {
        const HRESULT hr = Enter(count, 0);
        return FAILED(hr) ? hr : FillArray(source, count, 0, copy, &TreeCopier::FillRestriction);
    }

    // `copy` is a plain copy of its source already.
    HRESULT CopyProp(const SPropValue& source, ULONG depth, SPropValue& copy) noexcept {
        HRESULT hr = S_OK;
        if (PROP_TYPE(source.ulPropTag) == PT_RESTRICTION) {
            LPSRestriction restriction = nullptr;
            hr = CopyRestrictions(RestrictionOf(source), 1, depth, restriction);
            copy.Value.lpszA = reinterpret_cast<LPSTR>(restriction);
        } else if (PROP_TYPE(source.ulPropTag) == PT_ACTIONS) {
            LPACTIONS actions = nullptr;
            hr = CopyActions(ActionsOf(source), depth, actions);
            copy.Value.lpszA = reinterpret_cast<LPSTR>(actions);
        } else {
            hr = PropCopyMore(&copy, const_cast<LPSPropValue>(&source), MAPIAllocateMore, m_root);
        }
        return hr;
    }

    // Takes back what was made without a parent.
    void Abandon() noexcept {
        if (!m_hasParent) {
            MAPIFreeBuffer(m_root);
        }
    }

private:
    template <typename T>
    using Fill = HRESULT (TreeCopier::*)(const T& source, ULONG depth, T& copy) noexcept;

    // Counts nodes that are about to be made.
    HRESULT Enter(ULONG count, ULONG depth) noexcept {
        if (depth >= kMaxCopyDepth || count > kMaxCopyNodes - m_nodes) {
            return MAPI_E_TOO_COMPLEX;
        }
        m_nodes += count;
        return S_OK;
    }

    HRESULT AllocateBlock(std::size_t bytes, LPVOID* block) noexcept {
        const SCODE result = Allocate(bytes, m_root, block);
        if (m_root == nullptr) {
            m_root = *block;
        }
        return result;
    }

    template <typename T>
    HRESULT CopyArray(const T* source, ULONG count, ULONG depth, T*& copy, Fill<T> fill) noexcept {
        copy = nullptr;
        if (source == nullptr || count == 0) {
            return S_OK;
        }
        HRESULT hr = Enter(count, depth);
        LPVOID block = nullptr;
        if (SUCCEEDED(hr)) {
            hr = AllocateBlock(std::size_t{count} * sizeof(T), &block);
        }
        if (FAILED(hr)) {
            return hr;
        }
        copy = static_cast<T*>(block);
        return FillArray(source, count, depth, copy, fill);
    }

    template <typename T>
    HRESULT FillArray(const T* source, ULONG count, ULONG depth, T* copy, Fill<T> fill) noexcept {
        HRESULT hr = S_OK;
        for (ULONG i = 0; i < count && SUCCEEDED(hr); ++i) {
            copy[i] = source[i];
            hr = (this->*fill)(source[i], depth, copy[i]);
        }
        return hr;
    }

    template <typename T>
    HRESULT CopyBytes(const T* source, std::size_t bytes, T*& copy) noexcept {
        copy = nullptr;
        if (source == nullptr || bytes == 0) {
            return S_OK;
        }
        LPVOID block = nullptr;
        const HRESULT hr = AllocateBlock(bytes, &block);
        if (SUCCEEDED(hr)) {
            std::memcpy(block, source, bytes);
            copy = static_cast<T*>(block);
        }
        return hr;
    }

    HRESULT CopyProps(LPSPropValue source, ULONG count, LPSPropValue& copy) noexcept {
        copy = nullptr;
        if (source == nullptr || count == 0) {
            return S_OK;
        }
        if (count > kMaxCopyNodes) {
            return MAPI_E_TOO_COMPLEX;
        }
        return HrDupPropset(static_cast<int>(count), source, m_root, &copy);
    }

    // The node is a plain copy of its source when the Fill operations get it; they replace its pointers.
    HRESULT FillRestriction(const SRestriction& source, ULONG depth, SRestriction& copy) noexcept {
        const auto& from = source.res;
        auto& to = copy.res;
        switch (source.rt) {
            case RES_AND: return CopyRestrictions(from.resAnd.lpRes, from.resAnd.cRes, depth + 1, to.resAnd.lpRes);
            case RES_OR: return CopyRestrictions(from.resOr.lpRes, from.resOr.cRes, depth + 1, to.resOr.lpRes);
            case RES_NOT: return CopyRestrictions(from.resNot.lpRes, 1, depth + 1, to.resNot.lpRes);
            case RES_SUBRESTRICTION: return CopyRestrictions(from.resSub.lpRes, 1, depth + 1, to.resSub.lpRes);
            case RES_COUNT: return CopyRestrictions(from.resCount.lpRes, 1, depth + 1, to.resCount.lpRes);
            case RES_CONTENT: return CopyProps(from.resContent.lpProp, 1, to.resContent.lpProp);
            case RES_PROPERTY: return CopyProps(from.resProperty.lpProp, 1, to.resProperty.lpProp);
            case RES_COMMENT:
            case RES_ANNOTATION: {
                const HRESULT hr = CopyProps(from.resComment.lpProp, from.resComment.cValues, to.resComment.lpProp);
                return FAILED(hr) ? hr : CopyRestrictions(from.resComment.lpRes, 1, depth + 1, to.resComment.lpRes);
            }
            case RES_COMPAREPROPS:
            case RES_BITMASK:
            case RES_SIZE:
            case RES_EXIST: return S_OK;
            default: return MAPI_E_INVALID_PARAMETER;
        }
    }

    HRESULT FillActions(const ACTIONS& source, ULONG depth, ACTIONS& copy) noexcept {
        return CopyArray<ACTION>(source.lpAction, source.cActions, depth, copy.lpAction, &TreeCopier::FillAction);
    }

    HRESULT FillAction(const ACTION& source, ULONG depth, ACTION& copy) noexcept {
        HRESULT hr = CopyRestrictions(source.lpRes, 1, depth + 1, copy.lpRes);
        if (SUCCEEDED(hr)) {
            const SPropTagArray* const tags = source.lpPropTagArray;
            hr = CopyBytes(source.lpPropTagArray, tags != nullptr ? CbNewSPropTagArray(tags->cValues) : 0,
                           copy.lpPropTagArray);
        }
        return FAILED(hr) ? hr : FillActionData(source, depth, copy);
    }

    HRESULT FillActionData(const ACTION& source, ULONG depth, ACTION& copy) noexcept {
        switch (source.acttype) {
            case OP_MOVE:
            case OP_COPY: {
                const ACTION::MoveCopy& from = source.actMoveCopy;
                ACTION::MoveCopy& to = copy.actMoveCopy;
                const HRESULT hr = CopyBytes(from.lpStoreEntryId, from.cbStoreEntryId, to.lpStoreEntryId);
                return FAILED(hr) ? hr : CopyBytes(from.lpFldEntryId, from.cbFldEntryId, to.lpFldEntryId);
            }
            case OP_REPLY:
            case OP_OOF_REPLY:
                return CopyBytes(source.actReply.lpEntryId, source.actReply.cbEntryId, copy.actReply.lpEntryId);
            case OP_DEFER_ACTION:
                return CopyBytes(source.actDeferAction.pbData, source.actDeferAction.cbData,
                                 copy.actDeferAction.pbData);
            case OP_FORWARD:
            case OP_DELEGATE: return CopyAddresses(source.lpadrlist, depth, copy.lpadrlist);
            case OP_TAG: return CopyProp(source.propTag, depth + 1, copy.propTag);
            case OP_BOUNCE:
            case OP_DELETE:
            case OP_MARK_AS_READ: return S_OK;
            default: return MAPI_E_INVALID_PARAMETER;
        }
    }

    // The entries' properties go with the tree, unlike those of an address list that MAPI gives.
    HRESULT CopyAddresses(const ADRLIST* source, ULONG depth, LPADRLIST& copy) noexcept {
        copy = nullptr;
        if (source == nullptr) {
            return S_OK;
        }
        HRESULT hr = Enter(source->cEntries, depth);
        LPVOID block = nullptr;
        if (SUCCEEDED(hr)) {
            hr = AllocateBlock(CbNewADRLIST(source->cEntries), &block);
        }
        if (FAILED(hr)) {
            return hr;
        }
        copy = static_cast<LPADRLIST>(block);
        copy->cEntries = source->cEntries;
        for (ULONG i = 0; i < source->cEntries && SUCCEEDED(hr); ++i) {
            copy->aEntries[i] = source->aEntries[i];
            hr = CopyProps(source->aEntries[i].rgPropVals, source->aEntries[i].cValues, copy->aEntries[i].rgPropVals);
        }
        return hr;
    }

    LPVOID m_root;      // what every block goes with; null until the first one, when there is no parent
    bool m_hasParent;   // the root is the caller's
    ULONG m_nodes = 0;  // made so far, at most kMaxCopyNodes
};

// A copy that either is whole or is not there.
template <typename T, typename Copy>
HRESULT CopyTree(LPVOID parent, T** copy, Copy copyInto) noexcept {
    if (copy == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    TreeCopier copier(parent);
    const HRESULT hr = copyInto(copier, *copy);
    if (FAILED(hr)) {
        copier.Abandon();
        *copy = nullptr;
    }
    return hr;
}

}  // namespace

HRESULT HrDupPropset(int count, LPSPropValue props, LPVOID parent, LPSPropValue* copy) noexcept {
    if (copy == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *copy = nullptr;
    const auto failed = [](HRESULT result, int line) {
        return !WarnHResFn(result, "HrDupPropset", 0, kSourceName, line);
    };
    ULONG bytes = 0;
    HRESULT hr = ScCountProps(count, props, &bytes);
    if (failed(hr, __LINE__)) {
        return hr;
    }
    LPVOID block = nullptr;
    hr = Allocate(bytes, parent, &block);
    if (failed(hr, __LINE__)) {
        return hr;
    }
    hr = ScCopyProps(count, props, block, &bytes);
    if (failed(hr, __LINE__)) {
        if (parent == nullptr) {
            MAPIFreeBuffer(block);
        }
        return hr;
    }
    *copy = static_cast<LPSPropValue>(block);
    return hr;
}

HRESULT HrCopyRestriction(const SRestriction* source, LPVOID parent, LPSRestriction* copy) noexcept {
    return CopyTree(parent, copy, [source](TreeCopier& copier, LPSRestriction& root) {
        return copier.CopyRestrictions(source, 1, 0, root);
    });
}

HRESULT HrCopyActions(const ACTIONS* source, LPVOID parent, LPACTIONS* copy) noexcept {
    return CopyTree(parent, copy,
                    [source](TreeCopier& copier, LPACTIONS& root) { return copier.CopyActions(source, 0, root); });
}

HRESULT HrCopyRestrictionArray(const SRestriction* source, LPVOID parent, ULONG count, LPSRestriction copy) noexcept {
    if (source == nullptr || parent == nullptr || copy == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    return TreeCopier(parent).FillRestrictions(source, count, copy);
}

bool IsCopiedHere(const SPropValue& prop) noexcept {
    return PROP_TYPE(prop.ulPropTag) == PT_RESTRICTION || PROP_TYPE(prop.ulPropTag) == PT_ACTIONS;
}

HRESULT HrCopySpecialProp(const SPropValue& source, LPVOID parent, SPropValue& copy) noexcept {
    copy = source;
    TreeCopier copier(parent);
    const HRESULT hr = copier.CopyProp(source, 0, copy);
    if (!CheckHResFn(hr, __func__, 0, kSourceName, __LINE__)) {
        copier.Abandon();
        copy.Value.lpszA = nullptr;
    }
    return hr;
}
