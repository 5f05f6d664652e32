#include "localmapi/rtf/CodePageText.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace localmapi::rtf {

namespace {

// What stands in for pages that not every system converts.
struct Alternative {
    UINT page;
    UINT instead;
};
constexpr auto kAlternatives = std::to_array<Alternative>({
    {20932, 51932},  // Japanese EUC has two numbers
    {51932, 20932},
    {51936, 936},  // Chinese and Korean EUC are parts of Windows' pages
    {51949, 949},
    {54936, 936},
    {28601, 874},    // Thai
    {38598, 28598},  // Hebrew in logical order, as all of it is by now
    {38596, 28596},
});

bool IsSevenBit(UINT page) noexcept {
    return (page >= 50220 && page <= 50229) || page == 52936 || page == 65000;
}

bool IsEbcdic(UINT page) noexcept {
    return page == 37 || page == 500 || page == 870 || page == 875 || page == 1026 || page == 1047
           || (page >= 1140 && page <= 1149) || (page >= 20273 && page <= 20424) || page == 20833 || page == 20838
           || page == 20871 || page == 20880 || page == 20905 || page == 20924 || page == 21025;
}

// Converts into room for a unit a byte, which nearly every page keeps to; else asks for the size first.
std::optional<std::size_t> Convert(UINT page, DWORD flags, std::string_view bytes, CStringW& text) {
    const std::size_t before = text.size();
    const int size = static_cast<int>(bytes.size());
    text.resize(before + bytes.size());
    int length = MultiByteToWideChar(page, flags, bytes.data(), size, text.data() + before, size);
    if (length <= 0) {
        length = MultiByteToWideChar(page, flags, bytes.data(), size, nullptr, 0);
        if (length <= size) {
            text.resize(before);
            return std::nullopt;
        }
        text.resize(before + static_cast<std::size_t>(length));
        length = MultiByteToWideChar(page, flags, bytes.data(), size, text.data() + before, length);
    }
    text.resize(before + static_cast<std::size_t>(std::max(length, 0)));
    return static_cast<std::size_t>(length);
}

// The conversions count in int. No body is that long; of what is, the beginning is read.
std::string_view Limited(std::string_view bytes) {
    return bytes.substr(0, std::numeric_limits<int>::max() / 4);
}

void AppendUtf16(CStringW& text, std::string_view bytes, bool isBigEndian) {
    text.reserve(text.size() + bytes.size() / 2);
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const auto first = static_cast<unsigned char>(bytes[i]);
        const auto second = static_cast<unsigned char>(bytes[i + 1]);
        text.push_back(static_cast<WCHAR>(isBigEndian ? first << 8 | second : second << 8 | first));
    }
}

}  // namespace

UINT UsablePage(UINT codePage) noexcept {
    if (codePage == kUtf16Page || codePage == kUtf16BigEndianPage || IsValidCodePage(codePage)) {
        return codePage;
    }
    const auto* found = std::find_if(kAlternatives.begin(), kAlternatives.end(),
                                     [codePage](const Alternative& row) { return row.page == codePage; });
    return found != kAlternatives.end() && IsValidCodePage(found->instead) ? found->instead : 0;
}

bool IsAsciiSuperset(UINT codePage) noexcept {
    const bool isWide = codePage == kUtf16Page || codePage == kUtf16BigEndianPage || codePage == 12000
                        || codePage == 12001 || codePage == 65005 || codePage == 65006;
    return !isWide && !IsSevenBit(codePage) && !IsEbcdic(codePage);
}

bool IsAscii(std::string_view bytes) noexcept {
    constexpr std::uint64_t kHighBits = 0x8080808080808080;
    std::size_t i = 0;
    for (std::uint64_t eight = 0; i + sizeof(eight) <= bytes.size(); i += sizeof(eight)) {
        std::memcpy(&eight, bytes.data() + i, sizeof(eight));
        if ((eight & kHighBits) != 0) {
            return false;
        }
    }
    return std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(i), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

void AppendAscii(CStringW& text, std::string_view bytes) {
    text.append(bytes.begin(), bytes.end());
}

void AppendDecoded(CStringW& text, std::string_view bytes, UINT codePage) {
    const UINT page = UsablePage(codePage);
    if (page == kUtf16Page || page == kUtf16BigEndianPage) {
        AppendUtf16(text, bytes, page == kUtf16BigEndianPage);
        return;
    }
    if ((page == 0 || IsAsciiSuperset(page)) && IsAscii(bytes)) {
        AppendAscii(text, bytes);
        return;
    }
    bytes = Limited(bytes);
    if (page == 0 || !Convert(page, 0, bytes, text)) {
        Convert(kWesternPage, 0, bytes, text);
    }
}

std::optional<CStringW> DecodeStrictly(std::string_view bytes, UINT codePage) {
    const UINT page = UsablePage(codePage);
    CStringW text;
    if (page == kUtf16Page || page == kUtf16BigEndianPage) {
        AppendUtf16(text, bytes, page == kUtf16BigEndianPage);
        return text;
    }
    if (page == 0) {
        return std::nullopt;
    }
    bytes = Limited(bytes);
    if (!bytes.empty() && !Convert(page, IsSevenBit(page) ? 0 : MB_ERR_INVALID_CHARS, bytes, text)) {
        return std::nullopt;
    }
    return text;
}

}  // namespace localmapi::rtf
