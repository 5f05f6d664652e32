// The UTF-8 codec against the C library's, and against a slow decoder that goes by the code points.
#include "tests/platform/text/Conversion.h"

#include <algorithm>
#include <array>
#include <random>

#include <iconv.h>

namespace vx_text_tests {
namespace {

// The C library's conversion; false when it finds the bytes invalid.
bool DecodeByIconv(const std::string& bytes, CStringW& text) {
    const iconv_t converter = iconv_open("UTF-16LE", "UTF-8");
    std::string in = bytes;
    std::vector<WCHAR> out(bytes.size() + 1);
    char* source = in.data();
    std::size_t sourceLeft = in.size();
    char* target = reinterpret_cast<char*>(out.data());
    std::size_t targetLeft = out.size() * sizeof(WCHAR);
    const bool isValid = iconv(converter, &source, &sourceLeft, &target, &targetLeft) == 0;
    iconv_close(converter);
    text.assign(out.data(), out.size() - targetLeft / sizeof(WCHAR));
    return isValid;
}

std::string Utf8Of(std::uint32_t value) {
    std::string bytes;
    const auto add = [&bytes](std::uint32_t byte) { bytes += static_cast<char>(byte); };
    if (value < 0x80) {
        add(value);
    } else if (value < 0x800) {
        add(0xC0 | value >> 6);
        add(0x80 | (value & 0x3F));
    } else if (value < 0x10000) {
        add(0xE0 | value >> 12);
        add(0x80 | (value >> 6 & 0x3F));
        add(0x80 | (value & 0x3F));
    } else {
        add(0xF0 | value >> 18);
        add(0x80 | (value >> 12 & 0x3F));
        add(0x80 | (value >> 6 & 0x3F));
        add(0x80 | (value & 0x3F));
    }
    return bytes;
}

// Whether `bytes` is the beginning of the UTF-8 of some character, or all of it.
bool BeginsACharacter(std::string_view bytes) {
    static const auto kBeginnings = [] {
        std::array<std::vector<std::string>, 5> beginnings;  // by length
        for (std::uint32_t value = 0; value < 0x110000; ++value) {
            if (value >= 0xD800 && value <= 0xDFFF) {
                continue;
            }
            const std::string whole = Utf8Of(value);
            for (std::size_t length = 1; length <= whole.size(); ++length) {
                auto& list = beginnings[length];
                if (list.empty() || list.back() != whole.substr(0, length)) {
                    list.push_back(whole.substr(0, length));
                }
            }
        }
        for (auto& list : beginnings) {
            std::sort(list.begin(), list.end());
        }
        return beginnings;
    }();
    const auto& list = kBeginnings[bytes.size()];
    return std::binary_search(list.begin(), list.end(), bytes);
}

// U+FFFD for the longest beginning of a character that does not end one, else for one byte.
CStringW DecodeSlowly(std::string_view bytes) {
    CStringW text;
    while (!bytes.empty()) {
        std::size_t length = std::min<std::size_t>(4, bytes.size());
        while (length > 1 && !BeginsACharacter(bytes.substr(0, length))) {
            --length;
        }
        CStringW character;
        if (DecodeByIconv(std::string(bytes.substr(0, length)), character)) {
            text += character;
        } else {
            text += WCHAR{0xFFFD};
        }
        bytes.remove_prefix(length);
    }
    return text;
}

// Bytes with a fair share of everything: ASCII runs, whole characters, cut and overlong ones, noise.
std::string RandomBytes(std::mt19937& random) {
    const auto upTo = [&random](std::uint32_t last) { return static_cast<std::uint32_t>(random() % (last + 1)); };
    std::string bytes;
    for (std::uint32_t parts = 1 + upTo(7); parts > 0; --parts) {
        switch (upTo(4)) {
            case 0: bytes.append(upTo(20), static_cast<char>('a' + upTo(25))); break;
            case 1: bytes += Utf8Of(upTo(0x7FF)); break;
            case 2: bytes += Utf8Of(upTo(0x10FFFF)); break;
            case 3: bytes += Utf8Of(0x10000 + upTo(0x1FFFFF)).substr(0, 1 + upTo(3)); break;
            default: bytes += static_cast<char>(0x80 + upTo(0x7F)); break;
        }
    }
    return bytes;
}

TEST(Utf8Differential, AgreesWithTheCLibraryOnWhatIsValidAndWithASlowDecoderOnTheRest) {
    std::mt19937 random(20240209);
    int valid = 0;
    constexpr int kTexts = 20'000;
    for (int i = 0; i < kTexts; ++i) {
        const std::string bytes = RandomBytes(random);
        if (bytes.empty()) {
            continue;
        }
        CStringW expected;
        const bool isValid = DecodeByIconv(bytes, expected);
        const DWORD error = DecodeError(CP_UTF8, bytes, MB_ERR_INVALID_CHARS);
        ASSERT_EQ(error == ERROR_SUCCESS, isValid) << testing::PrintToString(bytes);
        if (isValid) {
            ++valid;
            ASSERT_EQ(Decode(CP_UTF8, bytes), expected) << testing::PrintToString(bytes);
            ASSERT_EQ(Encode(CP_UTF8, expected), bytes);
        } else {
            ASSERT_EQ(Decode(CP_UTF8, bytes), DecodeSlowly(bytes)) << testing::PrintToString(bytes);
        }
    }
    EXPECT_GT(valid, kTexts / 20);
    EXPECT_LT(valid, kTexts / 2);
}

// The fast way through ASCII looks at eight bytes at a time: every place of a character in that rhythm counts.
TEST(Utf8Differential, FindsACharacterAtEveryPlace) {
    struct Character {
        std::string bytes;
        WCHAR unit;
    };
    for (const Character& character : {Character{"\xC2\x80", 0x80}, Character{"\xE2\x82\xAC", 0x20AC}}) {
        for (std::size_t place = 0; place < 400; ++place) {
            const std::size_t before = place % 20;
            const std::size_t behind = place / 20;
            const std::string bytes = std::string(before, 'x') + character.bytes + std::string(behind, 'y');
            const CStringW text = CStringW(before, u'x') + character.unit + CStringW(behind, u'y');
            ASSERT_EQ(Decode(CP_UTF8, bytes), text) << before << ", " << behind;
            ASSERT_EQ(Encode(CP_UTF8, text), bytes) << before << ", " << behind;
        }
    }
}

}  // namespace
}  // namespace vx_text_tests
