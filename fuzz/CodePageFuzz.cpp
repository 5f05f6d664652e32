// Bytes in any code page to text and back. The first byte chooses the page, the rest is converted.
#include "platform/CodePage.h"
#include "platform/LastError.h"
#include "platform/WideText.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr UINT kPages[] = {65001, 65000, 1200,  1201,  65005, 65006, 54936, 50220, 50221, 50222,
                           50225, 50227, 52936, 51932, 932,   936,   949,   950,   1361,  37,
                           500,   850,   874,   875,   1250,  1251,  1252,  1253,  1254,  1255,
                           1256,  1257,  1258,  10000, 20127, 20290, 20866, 28591, 28597, 28598};

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

// The size that is asked for is the size that is written, into a buffer of just that size; one less is refused.
CStringW Decode(UINT page, DWORD flags, std::string_view bytes) {
    if (bytes.empty()) {
        return {};
    }
    const int count = static_cast<int>(bytes.size());
    const int size = MultiByteToWideChar(page, flags, bytes.data(), count, nullptr, 0);
    Require(size >= 0 && size <= count);
    if (size > 1) {
        std::vector<WCHAR> tooSmall(static_cast<std::size_t>(size) - 1);
        Require(MultiByteToWideChar(page, flags, bytes.data(), count, tooSmall.data(), size - 1) == 0);
        Require(GetLastError() == ERROR_INSUFFICIENT_BUFFER);
    }
    std::vector<WCHAR> text(static_cast<std::size_t>(size));
    Require(size == 0 || MultiByteToWideChar(page, flags, bytes.data(), count, text.data(), size) == size);
    return {text.begin(), text.end()};
}

std::string Encode(UINT page, WideView text) {
    if (text.empty()) {
        return {};
    }
    const int count = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(page, 0, text.data(), count, nullptr, 0, nullptr, nullptr);
    Require(size > 0);
    std::vector<char> bytes(static_cast<std::size_t>(size));
    Require(WideCharToMultiByte(page, 0, text.data(), count, bytes.data(), size, nullptr, nullptr) == size);
    return {bytes.begin(), bytes.end()};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const UINT page = kPages[data[0] % std::size(kPages)];
    // A copy, so that a read beyond the input is a read beyond a block.
    const std::vector<char> input(data + 1, data + size);
    const std::string_view bytes(input.data(), input.size());

    const CStringW text = Decode(page, 0, bytes);
    const CStringW again = Decode(page, 0, Encode(page, text));
    Require(Decode(page, 0, Encode(page, again)) == again);

    // What is valid comes back unchanged. The pages that cannot say what is valid refuse the flag.
    if (MultiByteToWideChar(page, MB_ERR_INVALID_CHARS, bytes.data(), static_cast<int>(bytes.size()), nullptr, 0) > 0) {
        Require(Decode(page, MB_ERR_INVALID_CHARS, bytes) == text && again == text);
    }
    return 0;
}
