#include "provider/Common/WLStr.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <climits>

namespace {

int CountOf(std::size_t size) noexcept {
    return static_cast<int>(std::min<std::size_t>(size, INT_MAX));
}

}  // namespace

std::size_t WLStr::ToAscii(const WCHAR* text, std::size_t length, char* out, std::size_t outSize) noexcept {
    if (length == 0) {
        if (outSize > 0) {
            out[0] = '\0';
        }
        return 0;
    }
    if (length > INT_MAX) {
        return 0;
    }
    const int written =
        WideCharToMultiByte(CP_ACP, 0, text, static_cast<int>(length), out, CountOf(outSize), nullptr, nullptr);
    return static_cast<std::size_t>(std::max(written, 0));
}

VxArrayPtr<char> WLStr::ToAscii(const WCHAR* text, std::size_t length) {
    if (length == 0 && text != nullptr) {
        length = WideView(text).size();
    }
    const std::size_t bytes = text == nullptr || length == 0 ? 0 : ToAscii(text, length, nullptr, 0);
    VxArrayPtr<char> converted(new char[bytes + 1]);
    const std::size_t written = bytes == 0 ? 0 : ToAscii(text, length, converted, bytes);
    converted[written] = '\0';
    return converted;
}
