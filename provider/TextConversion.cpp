#include "provider/TextConversion.h"

#include "platform/CodePage.h"
#include "platform/LastError.h"
#include "platform/ResultCodes.h"

#include <cstddef>
#include <memory>
#include <new>

namespace {

HRESULT LastErrorAsResult() {
    const HRESULT hr = HRESULT_FROM_WIN32(GetLastError());
    return FAILED(hr) ? hr : E_FAIL;
}

// The two directions differ in nothing but the function called: `convert(units, count)` writes at most `count` units,
// or, with a count of 0, tells how many it would write; 0 is its failure.
template <typename To, typename From, typename Convert>
HRESULT ConvertIntoNewBlock(const From* in, To** out, int length, Convert convert) {
    if (out == nullptr) {
        return E_INVALIDARG;
    }
    *out = nullptr;
    if (in == nullptr) {
        return S_OK;
    }
    if (length < -1) {
        return E_INVALIDARG;
    }
    int needed = 0;  // stays so for a length of 0, which the system's conversion takes for an error
    if (length != 0) {
        needed = convert(nullptr, 0);
        if (needed <= 0) {
            return LastErrorAsResult();
        }
    }
    // With a given length the terminator is not part of what is converted; one unit more than needed ends both forms.
    std::unique_ptr<To[]> block(new (std::nothrow) To[static_cast<std::size_t>(needed) + 1]());
    if (block == nullptr) {
        return E_OUTOFMEMORY;
    }
    if (needed > 0 && convert(block.get(), needed) != needed) {
        return LastErrorAsResult();
    }
    *out = block.release();
    return S_OK;
}

}  // namespace

HRESULT AnsiToUnicode(const char* in, WCHAR** out, int length, UINT codePage) {
    return ConvertIntoNewBlock(in, out, length, [=](WCHAR* units, int count) {
        return MultiByteToWideChar(codePage, 0, in, length, units, count);
    });
}

HRESULT UnicodeToAnsi(const WCHAR* in, char** out, int length, UINT codePage) {
    return ConvertIntoNewBlock(in, out, length, [=](char* bytes, int count) {
        return WideCharToMultiByte(codePage, 0, in, length, bytes, count, nullptr, nullptr);
    });
}

HRESULT UnicodeToAnsi(const WCHAR* in, char** out, int length) {
    return UnicodeToAnsi(in, out, length, CP_ACP);
}
