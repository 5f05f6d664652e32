#include "localmapi/com/ComObject.h"

#include "localmapi/props/MapiMemory.h"
#include "localmapi/props/Values.h"
#include "mapi/MapiFlags.h"
#include "platform/CodePage.h"

#include <cstring>
#include <exception>
#include <new>

namespace localmapi {

namespace {

std::atomic<std::int64_t> g_objects{0};

constexpr std::string_view kComponent = "Local MAPI";

// The text for a MAPIERROR, in the width asked for.
LPTSTR ErrorText(std::string_view text, ULONG flags, ValueMemory& memory) {
    const CStringW wide = ToWide(text, CP_UTF8);
    if ((flags & MAPI_UNICODE) != 0) {
        return reinterpret_cast<LPTSTR>(WideValue(PROP_TAG(PT_UNICODE, 0), wide, memory).Value.lpszW);
    }
    return reinterpret_cast<LPTSTR>(NarrowValue(PROP_TAG(PT_STRING8, 0), ToNarrow(wide, CP_ACP), memory).Value.lpszA);
}

}  // namespace

std::int64_t LiveObjects() noexcept {
    return g_objects.load(std::memory_order_relaxed);
}

void CountObject(int change) noexcept {
    g_objects.fetch_add(change, std::memory_order_relaxed);
}

HRESULT ResultOf(ErrorCode code) noexcept {
    switch (code) {
        case ErrorCode::NotFound: return MAPI_E_NOT_FOUND;
        case ErrorCode::Unsupported: return MAPI_E_NO_SUPPORT;
        case ErrorCode::Corrupt: return MAPI_E_CORRUPT_DATA;
        case ErrorCode::TooLarge: return MAPI_E_NOT_ENOUGH_MEMORY;
        case ErrorCode::Busy: return MAPI_E_BUSY;
        case ErrorCode::AccessDenied: return MAPI_E_NO_ACCESS;
        case ErrorCode::ReadFailed: return MAPI_E_DISK_ERROR;
    }
    return MAPI_E_CALL_FAILED;
}

HRESULT ResultOfException() noexcept {
    try {
        throw;
    } catch (const std::bad_alloc&) {
        return MAPI_E_NOT_ENOUGH_MEMORY;
    } catch (...) {
        return MAPI_E_CALL_FAILED;
    }
}

HRESULT LastFailure::Set(HRESULT result, std::string text) {
    m_result = result;
    m_text = std::move(text);
    return result;
}

HRESULT LastFailure::Give(HRESULT result, ULONG flags, MAPIERROR** error) const {
    if (error == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *error = nullptr;
    if (SUCCEEDED(result) || result != m_result || m_text.empty()) {
        return S_OK;
    }
    MapiPointer<MAPIERROR> given = MakeRoot<MAPIERROR>(sizeof(MAPIERROR));
    *given = {};
    RootMemory memory(given.get());
    given->lpszError = ErrorText(m_text, flags, memory);
    given->lpszComponent = ErrorText(kComponent, flags, memory);
    given->ulLowLevelError = static_cast<ULONG>(m_result);
    *error = given.release();
    return S_OK;
}

}  // namespace localmapi
