#include "platform/CodePage.h"

#include "platform/LastError.h"
#include "platform/linux/text/CodePages.h"
#include "platform/linux/text/TableCodec.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdlib>
#include <new>
#include <optional>
#include <string_view>

namespace {

using vx_text::Bytes;
using vx_text::ByteSink;
using vx_text::FlagRule;
using vx_text::Page;
using vx_text::PageMapping;
using vx_text::TableCodec;
using vx_text::WideSink;

int Fail(DWORD error) noexcept {
    SetLastError(error);
    return 0;
}

// Lead bytes and the like, of the pages that have a table; null for others.
const PageMapping* MappingOf(const Page& page) noexcept {
    const auto* const table = dynamic_cast<const TableCodec*>(page.codec);
    return table == nullptr ? nullptr : &table->Mapping();
}

UINT ReadAnsiPage() {
    const char* const setting = std::getenv("VX_ANSI_CODEPAGE");
    const std::string_view text = setting == nullptr ? std::string_view() : setting;
    UINT number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) {
        return CP_UTF8;
    }
    return MappingOf(vx_text::FindCodePage(number)) == nullptr ? CP_UTF8 : number;
}

// The page that `page` names. Throws std::bad_alloc.
Page Resolve(UINT page) {
    switch (page) {
        case CP_ACP:
        case CP_OEMCP:
        case CP_THREAD_ACP: return vx_text::FindCodePage(GetACP());
        case CP_MACCP: return vx_text::FindCodePage(10000);
        default: return vx_text::FindCodePage(page);
    }
}

bool TakesFlags(const Page& page, DWORD flags, DWORD invalid, DWORD others) noexcept {
    switch (page.flags) {
        case FlagRule::None: return flags == 0;
        case FlagRule::InvalidOnly: return (flags & ~invalid) == 0;
        case FlagRule::All: return (flags & ~others) == 0;
    }
    return false;
}

// The size of a text of `unitSize` bytes a unit that ends with a zero, which is counted; none beyond INT_MAX units.
std::optional<std::size_t> SizeOfTerminated(const void* text, std::size_t unitSize) noexcept {
    const auto* const bytes = static_cast<const char*>(text);
    if (unitSize == 1) {
        const std::size_t length = std::strlen(bytes) + 1;
        return length > INT_MAX ? std::nullopt : std::optional(length);
    }
    constexpr char kZero[4] = {};
    for (std::size_t units = 0; units < INT_MAX; ++units) {
        if (std::memcmp(bytes + units * unitSize, kZero, unitSize) == 0) {
            return (units + 1) * unitSize;
        }
    }
    return std::nullopt;
}

// What both directions check of their arguments before the page is looked at.
bool AreBuffersUsable(const void* input, int inputSize, const void* output, int outputSize) noexcept {
    return input != nullptr && inputSize != 0 && outputSize >= 0 && (output != nullptr || outputSize == 0)
           && (input != output || outputSize == 0);
}

// Turns what a conversion did into the result of the call.
template <typename Unit>
int Finish(const vx_text::Sink<Unit>& out, bool refused) noexcept {
    if (out.Overflowed()) {
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    if (refused) {
        return Fail(ERROR_NO_UNICODE_TRANSLATION);
    }
    if (out.Count() > INT_MAX) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (out.Count() == 0) {
        SetLastError(ERROR_SUCCESS);
    }
    return static_cast<int>(out.Count());
}

// The caller's default character as the page's bytes: both of a pair, otherwise the first.
Bytes DefaultBytes(const Page& page, LPCSTR defaultChar) noexcept {
    if (defaultChar == nullptr) {
        return {};
    }
    const PageMapping* const mapping = MappingOf(page);
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(defaultChar);
    const bool isPair = mapping != nullptr && mapping->IsLead(bytes[0]) && bytes[1] != 0;
    return {bytes, isPair ? 2u : 1u};
}

int ToWide(UINT codePage, DWORD flags, LPCSTR input, int inputSize, LPWSTR output, int outputSize) {
    const Page page = Resolve(codePage);
    if (page.codec == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (!TakesFlags(page, flags, MB_ERR_INVALID_CHARS, MB_ERR_INVALID_CHARS | MB_PRECOMPOSED)) {
        return Fail(ERROR_INVALID_FLAGS);
    }
    const std::optional<std::size_t> size =
        inputSize < 0 ? SizeOfTerminated(input, page.unitSize) : static_cast<std::size_t>(inputSize);
    if (!size) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    WideSink out = outputSize == 0 ? WideSink() : WideSink({output, static_cast<std::size_t>(outputSize)});
    const bool valid = page.codec->Decode({reinterpret_cast<const std::uint8_t*>(input), *size}, out);
    return Finish(out, !valid && (flags & MB_ERR_INVALID_CHARS) != 0);
}

int ToBytes(UINT codePage, DWORD flags, LPCWSTR input, int inputSize, LPSTR output, int outputSize, LPCSTR defaultChar,
            BOOL* usedDefaultChar) {
    const Page page = Resolve(codePage);
    if (page.codec == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if (!TakesFlags(page, flags, WC_ERR_INVALID_CHARS, WC_NO_BEST_FIT_CHARS)) {
        return Fail(ERROR_INVALID_FLAGS);
    }
    if (page.flags != FlagRule::All && (defaultChar != nullptr || usedDefaultChar != nullptr)) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    const std::size_t length =
        inputSize < 0 ? std::char_traits<WCHAR>::length(input) + 1 : static_cast<std::size_t>(inputSize);
    if (length > INT_MAX) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    ByteSink out = outputSize == 0
                       ? ByteSink()
                       : ByteSink({reinterpret_cast<std::uint8_t*>(output), static_cast<std::size_t>(outputSize)});
    const bool complete = page.codec->Encode(
        {input, length}, out,
        {.bestFit = (flags & WC_NO_BEST_FIT_CHARS) == 0, .defaultBytes = DefaultBytes(page, defaultChar)});
    if (usedDefaultChar != nullptr) {
        *usedDefaultChar = complete ? FALSE : TRUE;
    }
    return Finish(out, !complete && (flags & WC_ERR_INVALID_CHARS) != 0);
}

CPINFO Describe(const Page& page) noexcept {
    CPINFO info{page.maxCharSize, {}, {}};
    std::array<std::uint8_t, 4> question{};
    ByteSink out{std::span(question)};
    page.codec->Encode({u"?", 1}, out, {});
    std::copy_n(question.begin(), std::min<std::size_t>(out.Count(), MAX_DEFAULTCHAR), info.DefaultChar);

    const PageMapping* const mapping = MappingOf(page);
    std::size_t ranges = 0;
    for (unsigned byte = 0; mapping != nullptr && byte < 0x100 && ranges + 2 <= MAX_LEADBYTES - 2u; ++byte) {
        if (!mapping->IsLead(static_cast<std::uint8_t>(byte))) {
            continue;
        }
        info.LeadByte[ranges] = static_cast<BYTE>(byte);
        while (byte < 0xFF && mapping->IsLead(static_cast<std::uint8_t>(byte + 1))) {
            ++byte;
        }
        info.LeadByte[ranges + 1] = static_cast<BYTE>(byte);
        ranges += 2;
    }
    return info;
}

}  // namespace

int MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCSTR lpMultiByteStr, int cbMultiByte, LPWSTR lpWideCharStr,
                        int cchWideChar) noexcept try {
    if (!AreBuffersUsable(lpMultiByteStr, cbMultiByte, lpWideCharStr, cchWideChar)) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    return ToWide(CodePage, dwFlags, lpMultiByteStr, cbMultiByte, lpWideCharStr, cchWideChar);
} catch (const std::bad_alloc&) {
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
}

int WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWSTR lpWideCharStr, int cchWideChar, LPSTR lpMultiByteStr,
                        int cbMultiByte, LPCSTR lpDefaultChar, BOOL* lpUsedDefaultChar) noexcept try {
    if (!AreBuffersUsable(lpWideCharStr, cchWideChar, lpMultiByteStr, cbMultiByte)) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    return ToBytes(CodePage, dwFlags, lpWideCharStr, cchWideChar, lpMultiByteStr, cbMultiByte, lpDefaultChar,
                   lpUsedDefaultChar);
} catch (const std::bad_alloc&) {
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
}

UINT GetACP() noexcept {
    static const UINT page = []() -> UINT {
        try {
            return ReadAnsiPage();
        } catch (const std::bad_alloc&) {
            return CP_UTF8;
        }
    }();
    return page;
}

UINT GetOEMCP() noexcept {
    return GetACP();
}

BOOL IsValidCodePage(UINT CodePage) noexcept try {
    return vx_text::FindCodePage(CodePage).codec != nullptr ? TRUE : FALSE;
} catch (const std::bad_alloc&) {
    return FALSE;
}

BOOL GetCPInfo(UINT CodePage, CPINFO* lpCPInfo) noexcept try {
    const Page page = Resolve(CodePage);
    if (page.codec == nullptr || lpCPInfo == nullptr) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    *lpCPInfo = Describe(page);
    return TRUE;
} catch (const std::bad_alloc&) {
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
}
