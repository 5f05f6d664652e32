#include "localmapi/base/StringPages.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <array>

namespace localmapi {

namespace {

constexpr UINT kWesternPage = 1252;

// Primary languages ([MS-LCID] 2.2) whose ANSI page is not 1252, with that page.
struct LanguagePage {
    LCID language;
    UINT page;
};
constexpr auto kLanguagePages = std::to_array<LanguagePage>({
    {0x01, 1256},  // Arabic
    {0x02, 1251},  // Bulgarian
    {0x05, 1250},  // Czech
    {0x08, 1253},  // Greek
    {0x0D, 1255},  // Hebrew
    {0x0E, 1250},  // Hungarian
    {0x11, 932},   // Japanese
    {0x12, 949},   // Korean
    {0x15, 1250},  // Polish
    {0x18, 1250},  // Romanian
    {0x19, 1251},  // Russian
    {0x1A, 1250},  // Croatian, Serbian
    {0x1B, 1250},  // Slovak
    {0x1C, 1250},  // Albanian
    {0x1E, 874},   // Thai
    {0x1F, 1254},  // Turkish
    {0x20, 1256},  // Urdu
    {0x22, 1251},  // Ukrainian
    {0x23, 1251},  // Belarusian
    {0x24, 1250},  // Slovenian
    {0x25, 1257},  // Estonian
    {0x26, 1257},  // Latvian
    {0x27, 1257},  // Lithuanian
    {0x29, 1256},  // Persian
    {0x2A, 1258},  // Vietnamese
    {0x2C, 1254},  // Azeri
    {0x2F, 1251},  // Macedonian
    {0x3F, 1251},  // Kazakh
    {0x43, 1254},  // Uzbek
    {0x44, 1251},  // Tatar
    {0x50, 1251},  // Mongolian
});

// Languages that are written in more than one script have a page a locale.
constexpr auto kLocalePages = std::to_array<LanguagePage>({
    {0x0404, 950},   // Chinese, Taiwan
    {0x0804, 936},   // Chinese, PRC
    {0x0C04, 950},   // Chinese, Hong Kong
    {0x1004, 936},   // Chinese, Singapore
    {0x1404, 950},   // Chinese, Macao
    {0x0C1A, 1251},  // Serbian, Cyrillic
    {0x1C1A, 1251},  // Serbian, Cyrillic, Bosnia
    {0x201A, 1251},  // Bosnian, Cyrillic
    {0x082C, 1251},  // Azeri, Cyrillic
    {0x0843, 1251},  // Uzbek, Cyrillic
});

}  // namespace

UINT DefaultCodePage() noexcept {
    const UINT page = GetACP();
    return IsStringPage(page) ? page : kWesternPage;
}

bool IsStringPage(UINT codePage) noexcept {
    const bool isDoubleByte = codePage == 932 || codePage == 936 || codePage == 949 || codePage == 950;
    return isDoubleByte || codePage == 874 || (codePage >= 1250 && codePage <= 1258)
           || (codePage >= 28591 && codePage <= 28605);
}

UINT PageOfLocale(LCID locale) noexcept {
    const LCID id = locale & 0xFFFF;
    const auto pageIn = [](const auto& rows, LCID wanted) -> UINT {
        const auto found = std::find_if(rows.begin(), rows.end(),
                                        [wanted](const LanguagePage& row) { return row.language == wanted; });
        return found != rows.end() ? found->page : 0;
    };
    if (const UINT page = pageIn(kLocalePages, id); page != 0) {
        return page;
    }
    const LCID language = id & 0x3FF;
    if (const UINT page = pageIn(kLanguagePages, language); page != 0) {
        return page;
    }
    // 0 is no language, and Chinese without a country is no script.
    constexpr LCID kChinese = 0x04;
    constexpr LCID kLastWithPage = 0x6F;  // languages added later have no ANSI page
    return language == 0 || language == kChinese || language > kLastWithPage ? 0 : kWesternPage;
}

}  // namespace localmapi
