#include "localmapi/rtf/Charsets.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace localmapi::rtf {

namespace {

struct Charset {
    std::string_view name;  // lower case, letters and digits only
    UINT page;
};

// Sorted by name. The DOS, Windows and IBM names that hold the page's number are not in it.
constexpr auto kCharsets = std::to_array<Charset>({
    {"646", 20127},
    {"88591", 28591},
    {"885911", 874},
    {"885913", 28603},
    {"885915", 28605},
    {"88592", 28592},
    {"88593", 28593},
    {"88594", 28594},
    {"88595", 28595},
    {"88596", 28596},
    {"88597", 28597},
    {"88598", 28598},
    {"88599", 28599},
    {"ansi", 1252},
    {"ansix341968", 20127},
    {"ansix341986", 20127},
    {"arabic", 28596},
    {"ascii", 20127},
    {"asmo708", 28596},
    {"big5", 950},
    {"big5eten", 950},
    {"big5hk", 950},
    {"big5hkscs", 950},
    {"chinese", 936},
    {"cnbig5", 950},
    {"cp819", 28591},
    {"csascii", 20127},
    {"csbig5", 950},
    {"cseuckr", 949},
    {"cseucpkdfmtjapanese", 51932},
    {"csgb18030", 54936},
    {"csgb2312", 936},
    {"csgbk", 936},
    {"csibm866", 866},
    {"csiso2022jp", 50220},
    {"csiso2022jp2w1byte", 50221},
    {"csiso2022kr", 50225},
    {"csiso58gb231280", 936},
    {"csiso885915", 28605},
    {"csiso88598i", 38598},
    {"csisolatin1", 28591},
    {"csisolatin2", 28592},
    {"csisolatin3", 28593},
    {"csisolatin4", 28594},
    {"csisolatin5", 28599},
    {"csisolatin9", 28605},
    {"csisolatinarabic", 28596},
    {"csisolatincyrillic", 28595},
    {"csisolatingreek", 28597},
    {"csisolatinhebrew", 28598},
    {"cskoi8r", 20866},
    {"cskoi8u", 21866},
    {"csksc56011987", 949},
    {"csmacintosh", 10000},
    {"cspc850multilingual", 850},
    {"cspc8codepage437", 437},
    {"cspcp852", 852},
    {"csshiftjis", 932},
    {"cstis620", 874},
    {"csutf16", 1200},
    {"csutf16be", 1201},
    {"csutf16le", 1200},
    {"csutf7", 65000},
    {"csutf8", 65001},
    {"cswindows31j", 932},
    {"cyrillic", 28595},
    {"ecma114", 28596},
    {"ecma118", 28597},
    {"elot928", 28597},
    {"euccn", 936},
    {"eucjp", 51932},
    {"eucjpms", 51932},
    {"eucjpwin", 51932},
    {"euckr", 949},
    {"extendedunixcodepackedformatforjapanese", 51932},
    {"gb", 936},
    {"gb18030", 54936},
    {"gb2312", 936},
    {"gb231280", 936},
    {"gbk", 936},
    {"greek", 28597},
    {"greek8", 28597},
    {"hebrew", 28598},
    {"hz", 52936},
    {"hzgb2312", 52936},
    {"ibm819", 28591},
    {"iso10646ucs2", 1200},
    {"iso2022cn", 50227},
    {"iso2022jp", 50220},
    {"iso2022jp2", 50220},
    {"iso2022jp3", 50222},
    {"iso2022jpms", 50220},
    {"iso2022kr", 50225},
    {"iso646irv1991", 20127},
    {"iso646us", 20127},
    {"iso8859", 28591},
    {"iso88591", 28591},
    {"iso885911", 874},
    {"iso885911987", 28591},
    {"iso885913", 28603},
    {"iso885915", 28605},
    {"iso88591windows30latin1", 28591},
    {"iso88592", 28592},
    {"iso885921987", 28592},
    {"iso88593", 28593},
    {"iso885931988", 28593},
    {"iso88594", 28594},
    {"iso885941988", 28594},
    {"iso88595", 28595},
    {"iso885951988", 28595},
    {"iso88596", 28596},
    {"iso885961987", 28596},
    {"iso88596e", 28596},
    {"iso88596i", 28596},
    {"iso88597", 28597},
    {"iso885971987", 28597},
    {"iso88598", 28598},
    {"iso885981988", 28598},
    {"iso88598e", 28598},
    {"iso88598i", 38598},
    {"iso88599", 28599},
    {"iso885991989", 28599},
    {"isoir100", 28591},
    {"isoir101", 28592},
    {"isoir109", 28593},
    {"isoir110", 28594},
    {"isoir126", 28597},
    {"isoir127", 28596},
    {"isoir138", 28598},
    {"isoir144", 28595},
    {"isoir148", 28599},
    {"isoir149", 949},
    {"isoir166", 874},
    {"isoir58", 936},
    {"isoir6", 20127},
    {"jis", 50220},
    {"johab", 1361},
    {"koi", 20866},
    {"koi8", 20866},
    {"koi8r", 20866},
    {"koi8ru", 21866},
    {"koi8u", 21866},
    {"korean", 949},
    {"ksc5601", 949},
    {"ksc56011987", 949},
    {"ksc56011989", 949},
    {"l1", 28591},
    {"l2", 28592},
    {"l3", 28593},
    {"l4", 28594},
    {"l5", 28599},
    {"l7", 28603},
    {"l9", 28605},
    {"latin0", 28605},
    {"latin1", 28591},
    {"latin2", 28592},
    {"latin3", 28593},
    {"latin4", 28594},
    {"latin5", 28599},
    {"latin7", 28603},
    {"latin9", 28605},
    {"logical", 38598},
    {"mac", 10000},
    {"maccyrillic", 10007},
    {"macintosh", 10000},
    {"macroman", 10000},
    {"mskanji", 932},
    {"pcmultilingual850euro", 858},
    {"shiftjis", 932},
    {"shiftjisopen", 932},
    {"sjis", 932},
    {"tis620", 874},
    {"tis6202533", 874},
    {"ucs2", 1200},
    {"uhc", 949},
    {"unicode", 1200},
    {"unicode11utf7", 65000},
    {"unicode11utf8", 65001},
    {"unicode20utf7", 65000},
    {"unicode20utf8", 65001},
    {"unicodebig", 1201},
    {"unicodefffe", 1201},
    {"unicodelittle", 1200},
    {"us", 20127},
    {"usascii", 20127},
    {"utf16", 1200},
    {"utf16be", 1201},
    {"utf16le", 1200},
    {"utf32", 12000},
    {"utf32be", 12001},
    {"utf32le", 12000},
    {"utf7", 65000},
    {"utf8", 65001},
    {"visual", 28598},
    {"windows31j", 932},
    {"xansi", 1252},
    {"xbig5", 950},
    {"xeuc", 51932},
    {"xeuccn", 936},
    {"xeucjp", 51932},
    {"xgbk", 936},
    {"xhz", 52936},
    {"xmac", 10000},
    {"xmacce", 10029},
    {"xmaccyrillic", 10007},
    {"xmacgreek", 10006},
    {"xmacintosh", 10000},
    {"xmacroman", 10000},
    {"xmacturkish", 10081},
    {"xmacukrainian", 10017},
    {"xsjis", 932},
    {"xunicode20utf7", 65000},
    {"xunicode20utf8", 65001},
    {"xxbig5", 950},
});
static_assert(std::is_sorted(kCharsets.begin(), kCharsets.end(),
                             [](const Charset& a, const Charset& b) { return a.name < b.name; }));

// What may stand before the number of a page.
constexpr auto kPrefixes = std::to_array<std::string_view>({
    "cp",
    "dos",
    "ibm",
    "ms",
    "mscp",
    "pc",
    "win",
    "windows",
    "xcp",
    "xmscp",
    "xwindows",
});

constexpr std::size_t kLongestName = 64;

// "cp1251" and the like.
std::optional<UINT> PageInName(std::string_view name) {
    const std::size_t digits = std::min(name.find_first_of("0123456789"), name.size());
    constexpr std::size_t kMostDigits = 5;
    if (name.size() - digits == 0 || name.size() - digits > kMostDigits
        || std::find(kPrefixes.begin(), kPrefixes.end(), name.substr(0, digits)) == kPrefixes.end()) {
        return std::nullopt;
    }
    UINT page = 0;
    for (const char c : name.substr(digits)) {
        if (c < '0' || c > '9') {
            return std::nullopt;
        }
        page = page * 10 + static_cast<UINT>(c - '0');
    }
    return page;
}

}  // namespace

std::optional<UINT> CodePageOfCharset(std::string_view name) {
    std::array<char, kLongestName> plain{};
    std::size_t length = 0;
    for (const char c : name) {
        if ((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z')) {
            if (length == plain.size()) {
                return std::nullopt;
            }
            plain[length++] = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
        }
    }
    const std::string_view wanted(plain.data(), length);
    const auto* found = std::lower_bound(kCharsets.begin(), kCharsets.end(), wanted,
                                         [](const Charset& row, std::string_view key) { return row.name < key; });
    if (found != kCharsets.end() && found->name == wanted) {
        return found->page;
    }
    return PageInName(wanted);
}

}  // namespace localmapi::rtf
