#include "localmapi/rtf/HtmlEntities.h"

#include <algorithm>
#include <array>
#include <span>

namespace localmapi::rtf {

namespace {

struct Entity {
    std::string_view name;
    std::uint16_t character;
};

// clang-format off

// Both sorted by name. These are older than the rule of the semicolon.
constexpr auto kOpenEntities = std::to_array<Entity>({
    {"AElig", 0x00C6}, {"AMP", 0x0026}, {"Aacute", 0x00C1}, {"Acirc", 0x00C2}, {"Agrave", 0x00C0}, {"Aring", 0x00C5},
    {"Atilde", 0x00C3}, {"Auml", 0x00C4}, {"COPY", 0x00A9}, {"Ccedil", 0x00C7}, {"ETH", 0x00D0}, {"Eacute", 0x00C9},
    {"Ecirc", 0x00CA}, {"Egrave", 0x00C8}, {"Euml", 0x00CB}, {"GT", 0x003E}, {"Iacute", 0x00CD}, {"Icirc", 0x00CE},
    {"Igrave", 0x00CC}, {"Iuml", 0x00CF}, {"LT", 0x003C}, {"Ntilde", 0x00D1}, {"Oacute", 0x00D3}, {"Ocirc", 0x00D4},
    {"Ograve", 0x00D2}, {"Oslash", 0x00D8}, {"Otilde", 0x00D5}, {"Ouml", 0x00D6}, {"QUOT", 0x0022}, {"REG", 0x00AE},
    {"THORN", 0x00DE}, {"Uacute", 0x00DA}, {"Ucirc", 0x00DB}, {"Ugrave", 0x00D9}, {"Uuml", 0x00DC}, {"Yacute", 0x00DD},
    {"aacute", 0x00E1}, {"acirc", 0x00E2}, {"acute", 0x00B4}, {"aelig", 0x00E6}, {"agrave", 0x00E0}, {"amp", 0x0026},
    {"aring", 0x00E5}, {"atilde", 0x00E3}, {"auml", 0x00E4}, {"brvbar", 0x00A6}, {"ccedil", 0x00E7}, {"cedil", 0x00B8},
    {"cent", 0x00A2}, {"copy", 0x00A9}, {"curren", 0x00A4}, {"deg", 0x00B0}, {"divide", 0x00F7}, {"eacute", 0x00E9},
    {"ecirc", 0x00EA}, {"egrave", 0x00E8}, {"eth", 0x00F0}, {"euml", 0x00EB}, {"frac12", 0x00BD}, {"frac14", 0x00BC},
    {"frac34", 0x00BE}, {"gt", 0x003E}, {"iacute", 0x00ED}, {"icirc", 0x00EE}, {"iexcl", 0x00A1}, {"igrave", 0x00EC},
    {"iquest", 0x00BF}, {"iuml", 0x00EF}, {"laquo", 0x00AB}, {"lt", 0x003C}, {"macr", 0x00AF}, {"micro", 0x00B5},
    {"middot", 0x00B7}, {"nbsp", 0x00A0}, {"not", 0x00AC}, {"ntilde", 0x00F1}, {"oacute", 0x00F3}, {"ocirc", 0x00F4},
    {"ograve", 0x00F2}, {"ordf", 0x00AA}, {"ordm", 0x00BA}, {"oslash", 0x00F8}, {"otilde", 0x00F5}, {"ouml", 0x00F6},
    {"para", 0x00B6}, {"plusmn", 0x00B1}, {"pound", 0x00A3}, {"quot", 0x0022}, {"raquo", 0x00BB}, {"reg", 0x00AE},
    {"sect", 0x00A7}, {"shy", 0x00AD}, {"sup1", 0x00B9}, {"sup2", 0x00B2}, {"sup3", 0x00B3}, {"szlig", 0x00DF},
    {"thorn", 0x00FE}, {"times", 0x00D7}, {"uacute", 0x00FA}, {"ucirc", 0x00FB}, {"ugrave", 0x00F9}, {"uml", 0x00A8},
    {"uuml", 0x00FC}, {"yacute", 0x00FD}, {"yen", 0x00A5}, {"yuml", 0x00FF},
});

constexpr auto kEntities = std::to_array<Entity>({
    {"Abreve", 0x0102}, {"Alpha", 0x0391}, {"Amacr", 0x0100}, {"Aogon", 0x0104}, {"Beta", 0x0392}, {"Cacute", 0x0106},
    {"Ccaron", 0x010C}, {"Ccirc", 0x0108}, {"Cdot", 0x010A}, {"Chi", 0x03A7}, {"Dagger", 0x2021}, {"Dcaron", 0x010E},
    {"Delta", 0x0394}, {"Dstrok", 0x0110}, {"ENG", 0x014A}, {"Ecaron", 0x011A}, {"Edot", 0x0116}, {"Emacr", 0x0112},
    {"Eogon", 0x0118}, {"Epsilon", 0x0395}, {"Eta", 0x0397}, {"Gamma", 0x0393}, {"Gbreve", 0x011E}, {"Gcedil", 0x0122},
    {"Gcirc", 0x011C}, {"Gdot", 0x0120}, {"Hcirc", 0x0124}, {"Hstrok", 0x0126}, {"IJlig", 0x0132}, {"Idot", 0x0130},
    {"Imacr", 0x012A}, {"Iogon", 0x012E}, {"Iota", 0x0399}, {"Itilde", 0x0128}, {"Jcirc", 0x0134}, {"Kappa", 0x039A},
    {"Kcedil", 0x0136}, {"Lacute", 0x0139}, {"Lambda", 0x039B}, {"Lcaron", 0x013D}, {"Lcedil", 0x013B},
    {"Lmidot", 0x013F}, {"Lstrok", 0x0141}, {"Mu", 0x039C}, {"Nacute", 0x0143}, {"Ncaron", 0x0147}, {"Ncedil", 0x0145},
    {"NewLine", 0x000A}, {"Nu", 0x039D}, {"OElig", 0x0152}, {"Odblac", 0x0150}, {"Omacr", 0x014C}, {"Omega", 0x03A9},
    {"Omicron", 0x039F}, {"Phi", 0x03A6}, {"Pi", 0x03A0}, {"Prime", 0x2033}, {"Psi", 0x03A8}, {"Racute", 0x0154},
    {"Rcaron", 0x0158}, {"Rcedil", 0x0156}, {"Rho", 0x03A1}, {"Sacute", 0x015A}, {"Scaron", 0x0160},
    {"Scedil", 0x015E}, {"Scirc", 0x015C}, {"Sigma", 0x03A3}, {"Tab", 0x0009}, {"Tau", 0x03A4}, {"Tcaron", 0x0164},
    {"Tcedil", 0x0162}, {"Theta", 0x0398}, {"Tstrok", 0x0166}, {"Ubreve", 0x016C}, {"Udblac", 0x0170},
    {"Umacr", 0x016A}, {"Uogon", 0x0172}, {"Upsilon", 0x03A5}, {"Uring", 0x016E}, {"Utilde", 0x0168},
    {"Wcirc", 0x0174}, {"Xi", 0x039E}, {"Ycirc", 0x0176}, {"Yuml", 0x0178}, {"Zacute", 0x0179}, {"Zcaron", 0x017D},
    {"Zdot", 0x017B}, {"Zeta", 0x0396}, {"abreve", 0x0103}, {"alefsym", 0x2135}, {"alpha", 0x03B1}, {"amacr", 0x0101},
    {"and", 0x2227}, {"ang", 0x2220}, {"aogon", 0x0105}, {"apos", 0x0027}, {"ast", 0x002A}, {"asymp", 0x2248},
    {"bdquo", 0x201E}, {"beta", 0x03B2}, {"bsol", 0x005C}, {"bull", 0x2022}, {"cacute", 0x0107}, {"cap", 0x2229},
    {"ccaron", 0x010D}, {"ccirc", 0x0109}, {"cdot", 0x010B}, {"check", 0x2713}, {"chi", 0x03C7}, {"circ", 0x02C6},
    {"clubs", 0x2663}, {"colon", 0x003A}, {"comma", 0x002C}, {"commat", 0x0040}, {"cong", 0x2245}, {"copysr", 0x2117},
    {"crarr", 0x21B5}, {"cup", 0x222A}, {"dArr", 0x21D3}, {"dagger", 0x2020}, {"darr", 0x2193}, {"dash", 0x2010},
    {"dcaron", 0x010F}, {"delta", 0x03B4}, {"diams", 0x2666}, {"dollar", 0x0024}, {"dstrok", 0x0111},
    {"ecaron", 0x011B}, {"edot", 0x0117}, {"emacr", 0x0113}, {"empty", 0x2205}, {"emsp", 0x2003}, {"eng", 0x014B},
    {"ensp", 0x2002}, {"eogon", 0x0119}, {"epsilon", 0x03B5}, {"equals", 0x003D}, {"equiv", 0x2261}, {"eta", 0x03B7},
    {"euro", 0x20AC}, {"excl", 0x0021}, {"exist", 0x2203}, {"fnof", 0x0192}, {"forall", 0x2200}, {"frasl", 0x2044},
    {"gamma", 0x03B3}, {"gbreve", 0x011F}, {"gcirc", 0x011D}, {"gdot", 0x0121}, {"ge", 0x2265}, {"grave", 0x0060},
    {"hArr", 0x21D4}, {"harr", 0x2194}, {"hcirc", 0x0125}, {"hearts", 0x2665}, {"hellip", 0x2026}, {"horbar", 0x2015},
    {"hstrok", 0x0127}, {"hyphen", 0x2010}, {"ijlig", 0x0133}, {"imacr", 0x012B}, {"image", 0x2111}, {"infin", 0x221E},
    {"inodot", 0x0131}, {"int", 0x222B}, {"iogon", 0x012F}, {"iota", 0x03B9}, {"isin", 0x2208}, {"itilde", 0x0129},
    {"jcirc", 0x0135}, {"kappa", 0x03BA}, {"kcedil", 0x0137}, {"kgreen", 0x0138}, {"lArr", 0x21D0}, {"lacute", 0x013A},
    {"lambda", 0x03BB}, {"lang", 0x27E8}, {"larr", 0x2190}, {"lcaron", 0x013E}, {"lcedil", 0x013C}, {"lceil", 0x2308},
    {"lcub", 0x007B}, {"ldquo", 0x201C}, {"le", 0x2264}, {"lfloor", 0x230A}, {"lmidot", 0x0140}, {"lowast", 0x2217},
    {"lowbar", 0x005F}, {"loz", 0x25CA}, {"lpar", 0x0028}, {"lrm", 0x200E}, {"lsaquo", 0x2039}, {"lsqb", 0x005B},
    {"lsquo", 0x2018}, {"lstrok", 0x0142}, {"mdash", 0x2014}, {"minus", 0x2212}, {"mu", 0x03BC}, {"nabla", 0x2207},
    {"nacute", 0x0144}, {"napos", 0x0149}, {"ncaron", 0x0148}, {"ncedil", 0x0146}, {"ndash", 0x2013}, {"ne", 0x2260},
    {"ni", 0x220B}, {"notin", 0x2209}, {"nsub", 0x2284}, {"nu", 0x03BD}, {"num", 0x0023}, {"odblac", 0x0151},
    {"oelig", 0x0153}, {"oline", 0x203E}, {"omacr", 0x014D}, {"omega", 0x03C9}, {"omicron", 0x03BF}, {"oplus", 0x2295},
    {"or", 0x2228}, {"otimes", 0x2297}, {"part", 0x2202}, {"percnt", 0x0025}, {"period", 0x002E}, {"permil", 0x2030},
    {"perp", 0x22A5}, {"phi", 0x03C6}, {"phone", 0x260E}, {"pi", 0x03C0}, {"piv", 0x03D6}, {"plus", 0x002B},
    {"prime", 0x2032}, {"prod", 0x220F}, {"prop", 0x221D}, {"psi", 0x03C8}, {"quest", 0x003F}, {"rArr", 0x21D2},
    {"racute", 0x0155}, {"radic", 0x221A}, {"rang", 0x27E9}, {"rarr", 0x2192}, {"rcaron", 0x0159}, {"rcedil", 0x0157},
    {"rceil", 0x2309}, {"rcub", 0x007D}, {"rdquo", 0x201D}, {"real", 0x211C}, {"rfloor", 0x230B}, {"rho", 0x03C1},
    {"rlm", 0x200F}, {"rpar", 0x0029}, {"rsaquo", 0x203A}, {"rsqb", 0x005D}, {"rsquo", 0x2019}, {"sacute", 0x015B},
    {"sbquo", 0x201A}, {"scaron", 0x0161}, {"scedil", 0x015F}, {"scirc", 0x015D}, {"sdot", 0x22C5}, {"semi", 0x003B},
    {"sigma", 0x03C3}, {"sigmaf", 0x03C2}, {"sim", 0x223C}, {"sol", 0x002F}, {"spades", 0x2660}, {"star", 0x2606},
    {"starf", 0x2605}, {"sub", 0x2282}, {"sube", 0x2286}, {"sum", 0x2211}, {"sup", 0x2283}, {"supe", 0x2287},
    {"tau", 0x03C4}, {"tcaron", 0x0165}, {"tcedil", 0x0163}, {"there4", 0x2234}, {"theta", 0x03B8},
    {"thetasym", 0x03D1}, {"thinsp", 0x2009}, {"tilde", 0x02DC}, {"trade", 0x2122}, {"tstrok", 0x0167},
    {"uArr", 0x21D1}, {"uarr", 0x2191}, {"ubreve", 0x016D}, {"udblac", 0x0171}, {"umacr", 0x016B}, {"uogon", 0x0173},
    {"upsih", 0x03D2}, {"upsilon", 0x03C5}, {"uring", 0x016F}, {"utilde", 0x0169}, {"verbar", 0x007C},
    {"wcirc", 0x0175}, {"weierp", 0x2118}, {"xi", 0x03BE}, {"ycirc", 0x0177}, {"zacute", 0x017A}, {"zcaron", 0x017E},
    {"zdot", 0x017C}, {"zeta", 0x03B6}, {"zwj", 0x200D}, {"zwnj", 0x200C},
});

// Windows-1252, 0x80 to 0x9F.
constexpr std::array<std::uint16_t, 32> kWesternControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D,
    0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A,
    0x0153, 0x009D, 0x017E, 0x0178,
};

// clang-format on

constexpr bool ByName(const Entity& a, const Entity& b) {
    return a.name < b.name;
}
constexpr bool IsShort(const Entity& entity) {
    return entity.name.size() <= kLongestEntity;
}
static_assert(std::is_sorted(kOpenEntities.begin(), kOpenEntities.end(), ByName));
static_assert(std::is_sorted(kEntities.begin(), kEntities.end(), ByName));
static_assert(std::all_of(kEntities.begin(), kEntities.end(), IsShort));
static_assert(std::all_of(kOpenEntities.begin(), kOpenEntities.end(), IsShort));

std::optional<std::uint16_t> Find(std::span<const Entity> entities, std::string_view name) noexcept {
    const auto found = std::lower_bound(entities.begin(), entities.end(), name,
                                        [](const Entity& row, std::string_view key) { return row.name < key; });
    return found != entities.end() && found->name == name ? std::optional(found->character) : std::nullopt;
}

}  // namespace

std::optional<std::uint16_t> FindEntity(std::string_view name) noexcept {
    const auto open = FindOpenEntity(name);
    return open ? open : Find(kEntities, name);
}

std::optional<std::uint16_t> FindOpenEntity(std::string_view name) noexcept {
    return Find(kOpenEntities, name);
}

std::uint32_t CharacterOfReference(std::uint32_t number) noexcept {
    constexpr std::uint32_t kReplacement = 0xFFFD;
    constexpr std::uint32_t kLastCharacter = 0x10FFFF;
    if (number >= 0x80 && number < 0x80 + kWesternControls.size()) {
        return kWesternControls[number - 0x80];
    }
    return number == 0 || number > kLastCharacter ? kReplacement : number;
}

}  // namespace localmapi::rtf
