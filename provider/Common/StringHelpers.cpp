#include "provider/Common/StringHelpers.h"

#include "provider/Common/ScopedEntryExitLogger.h"

#include <algorithm>
#include <cstdint>

namespace {

constexpr auto& kSourcePath = "Attachments\\VxRegularAttachment.cpp"_w;

constexpr WCHAR ToLowerAscii(WCHAR unit) noexcept {
    return unit >= 'A' && unit <= 'Z' ? static_cast<WCHAR>(unit + ('a' - 'A')) : unit;
}

}  // namespace

bool StartsWith(const CStringW& text, const CStringW& prefix) noexcept {
    return text.starts_with(prefix);
}

bool EndsWith(const CStringW& text, const CStringW& suffix) noexcept {
    return text.ends_with(suffix);
}

bool EqualIgnoringAsciiCase(WideView first, WideView second) noexcept {
    return std::equal(first.begin(), first.end(), second.begin(), second.end(),
                      [](WCHAR a, WCHAR b) { return ToLowerAscii(a) == ToLowerAscii(b); });
}

bool StartsWith(const std::vector<unsigned char>& data, const CStringW& prefix) noexcept {
    VX_SCOPE_TRACE(trace);
    if (data.size() / sizeof(WCHAR) < prefix.size()) {
        return false;
    }
    for (std::size_t i = 0; i < prefix.size(); ++i) {
        if (data[2 * i] != (prefix[i] & 0xFF) || data[2 * i + 1] != prefix[i] >> 8) {
            return false;
        }
    }
    return true;
}

void Split(const WCHAR* text, std::size_t length, std::vector<std::size_t>& positions, WCHAR delimiter) {
    positions.clear();
    for (std::size_t i = 0; i < length; ++i) {
        if (text[i] == delimiter) {
            positions.push_back(i);
        }
    }
    positions.push_back(length);
}

void SplitS(const CStringW& text, std::vector<CStringW>& pieces, WCHAR delimiter, bool skipEmpty) {
    pieces.clear();
    std::vector<std::size_t> ends;
    Split(text.data(), text.size(), ends, delimiter);
    std::size_t begin = 0;
    for (const std::size_t end : ends) {
        if (end > begin || !skipEmpty) {
            pieces.emplace_back(text, begin, end - begin);
        }
        begin = end + 1;
    }
}

void TrunkName(CStringW& name, const CStringW& extension, std::size_t maxLength) {
    constexpr auto& kFallback = ".tmp"_w;
    if (name.size() <= maxLength) {
        return;
    }
    if (maxLength <= 5) {
        name.resize(maxLength);
    } else if (extension.size() > maxLength - 4) {
        name.resize(maxLength - 4);
        name += kFallback;
    } else {
        name.resize(maxLength - extension.size() - 1);
        name += '.';
        name += extension;
    }
}
