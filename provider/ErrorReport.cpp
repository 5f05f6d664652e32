#include "provider/ErrorReport.h"

#include "platform/LastError.h"
#include "platform/ResultCodes.h"
#include "platform/WideText.h"
#include "provider/Common/Log.h"
#include "provider/ErrorNames.h"

#include <memory>

namespace {

constexpr auto& kSourcePath = "MAPIUtils.cpp"_w;

struct FreeLocal {
    void operator()(WCHAR* block) const noexcept { LocalFree(block); }
};
using LocalText = std::unique_ptr<WCHAR, FreeLocal>;

// The system's own text for an error number; null when it has none.
LocalText SystemText(DWORD number) {
    WCHAR* text = nullptr;
    // With ALLOCATE_BUFFER the function takes the pointer's address in place of a buffer.
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, number, 0,
                                        reinterpret_cast<LPWSTR>(&text), 0, nullptr);
    return LocalText(length > 0 ? text : nullptr);
}

HRESULT ReportLastError(const char* file, int line, const char* function, bool isError) {
    const DWORD code = GetLastError();
    if (code == ERROR_SUCCESS) {
        return S_OK;
    }
    const HRESULT hr = HRESULT_FROM_WIN32(code);
    LogError(hr, code, file, line, function, isError, true);
    return hr;
}

}  // namespace

void LogError(HRESULT hr, UINT resourceId, const char* file, int line, const char* function, bool /*isError*/,
              bool fromSystem) {
    const LocalText systemText = fromSystem ? SystemText(resourceId) : LocalText();
    const WCHAR* text = systemText != nullptr ? systemText.get() : ""_w;
    const Vx::LogMsg report("%s: %s\r\nCode: %s == 0x%08X\r\nFunction %hs\r\nFile %hs\r\nLine %d"_w,
                            FAILED(hr) ? "Error"_w : "Warning"_w, text, ErrorNameFromErrorCode(hr), hr, function, file,
                            line);
    VX_LOG('E') << Vx::LogMsg("%s"_w, report.Text());
}

bool CheckHResFn(HRESULT hr, const char* function, UINT resourceId, const char* file, int line) {
    if (hr == S_OK) {
        return true;
    }
    LogError(hr, resourceId, file, line, function, true, false);
    return false;
}

bool WarnHResFn(HRESULT hr, const char* function, UINT resourceId, const char* file, int line) {
    if (hr != S_OK) {
        LogError(hr, resourceId, file, line, function, false, false);
    }
    return SUCCEEDED(hr);
}

HRESULT DialogOnWin32Error(const char* file, int line, const char* function) {
    return ReportLastError(file, line, function, true);
}

HRESULT WarnOnWin32Error(const char* file, int line, const char* function) {
    return ReportLastError(file, line, function, false);
}
