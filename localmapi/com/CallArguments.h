// What comes in and goes out through MAPI's calls: texts in the width that the flags say, entry ids, objects in the
// interface asked for. Any thread.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/com/ComPtr.h"
#include "localmapi/props/MapiMemory.h"
#include "localmapi/props/Values.h"
#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiTypes.h"
#include "platform/CodePage.h"
#include "platform/WideText.h"

#include <algorithm>
#include <cstring>

namespace localmapi {

// The width is what `flags` says, whatever the parameter's type. Empty for a null pointer.
inline CStringW CallText(LPTSTR text, ULONG flags) {
    if (text == nullptr) {
        return {};
    }
    return (flags & MAPI_UNICODE) != 0 ? CStringW(reinterpret_cast<const WCHAR*>(text))
                                       : ToWide(reinterpret_cast<const char*>(text), CP_ACP);
}

// Empty for a null pointer.
inline ByteView ViewOf(ULONG size, const ENTRYID* entryId) noexcept {
    return entryId == nullptr ? ByteView() : ByteView(reinterpret_cast<const std::byte*>(entryId), size);
}

// CompareEntryIDs of every object that has it: ids are the same when their bytes are.
inline HRESULT CompareIds(ByteView one, ByteView other, ULONG* result) noexcept {
    if (result == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    const auto same = std::equal(one.Span().begin(), one.Span().end(), other.Span().begin(), other.Span().end());
    *result = same ? TRUE : FALSE;
    return S_OK;
}

// An entry id as a block of its own.
inline void GiveId(ByteView bytes, ULONG* size, LPENTRYID* entryId) {
    auto block = MakeRoot<ENTRYID>(std::max(bytes.Size(), sizeof(ENTRYID)));
    std::memcpy(block.get(), bytes.Data(), bytes.Size());
    *size = static_cast<ULONG>(bytes.Size());
    *entryId = block.release();
}

// An opened object in the interface that the caller asks for; null asks for the object's own.
inline HRESULT GiveAs(const ComPtr<IUnknown>& object, LPCIID interfaceId, const IID& own, LPUNKNOWN* given) {
    void* found = nullptr;
    const HRESULT result = object->QueryInterface(interfaceId == nullptr ? own : *interfaceId, &found);
    *given = static_cast<IUnknown*>(found);
    return result;
}

}  // namespace localmapi
