#include "platform/linux/text/CodePages.h"

#include "platform/linux/system/Immortal.h"
#include "platform/linux/text/Gb18030Codec.h"
#include "platform/linux/text/HzCodec.h"
#include "platform/linux/text/Iconv.h"
#include "platform/linux/text/Iso2022Codec.h"
#include "platform/linux/text/TableCodec.h"
#include "platform/linux/text/UnicodeCodecs.h"
#include "platform/linux/text/Utf7Codec.h"
#include "platform/linux/text/Utf8Codec.h"
#include "platform/linux/text/WindowsMappings.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>

namespace vx_text {
namespace {

enum class Kind {
    Bytes,  // by table: one byte a character
    ShiftJis,
    Gbk,  // and others whose lead bytes are 0x81 to 0xFE
    Johab,
    EucJapanese,
    Same,  // another page by a second number
    Gb18030,
    Iso2022,
    Hz,
    Utf16,
    Utf32,
    Utf7,
    Utf8,
};

struct Row {
    UINT number;
    Kind kind;
    const char* set = nullptr;  // the C library's name of a page by table
    UINT base = 0;              // the page that this one is made from, or is the same as
    Iso2022Form form = {};
    ByteOrder order = {};
};

// Sorted by number.
constexpr auto kRows = std::to_array<Row>({
    {37, Kind::Bytes, "IBM037"},
    {437, Kind::Bytes, "IBM437"},
    {500, Kind::Bytes, "IBM500"},
    {737, Kind::Bytes, "CP737"},
    {775, Kind::Bytes, "CP775"},
    {850, Kind::Bytes, "IBM850"},
    {852, Kind::Bytes, "IBM852"},
    {855, Kind::Bytes, "IBM855"},
    {857, Kind::Bytes, "IBM857"},
    {858, Kind::Bytes, "IBM858"},
    {860, Kind::Bytes, "IBM860"},
    {861, Kind::Bytes, "IBM861"},
    {862, Kind::Bytes, "IBM862"},
    {863, Kind::Bytes, "IBM863"},
    {864, Kind::Bytes, "IBM864"},
    {865, Kind::Bytes, "IBM865"},
    {866, Kind::Bytes, "IBM866"},
    {869, Kind::Bytes, "IBM869"},
    {870, Kind::Bytes, "IBM870"},
    {874, Kind::Bytes, "WINDOWS-874"},
    {875, Kind::Bytes, "IBM875"},
    {932, Kind::ShiftJis, "CP932"},
    {936, Kind::Gbk, "CP936"},
    {949, Kind::Gbk, "CP949"},
    {950, Kind::Gbk, "CP950"},
    {1026, Kind::Bytes, "IBM1026"},
    {1047, Kind::Bytes, "IBM1047"},
    {1140, Kind::Bytes, "IBM1140"},
    {1141, Kind::Bytes, "IBM1141"},
    {1142, Kind::Bytes, "IBM1142"},
    {1143, Kind::Bytes, "IBM1143"},
    {1144, Kind::Bytes, "IBM1144"},
    {1145, Kind::Bytes, "IBM1145"},
    {1146, Kind::Bytes, "IBM1146"},
    {1147, Kind::Bytes, "IBM1147"},
    {1148, Kind::Bytes, "IBM1148"},
    {1149, Kind::Bytes, "IBM1149"},
    {.number = 1200, .kind = Kind::Utf16, .order = ByteOrder::Little},
    {.number = 1201, .kind = Kind::Utf16, .order = ByteOrder::Big},
    {1250, Kind::Bytes, "CP1250"},
    {1251, Kind::Bytes, "CP1251"},
    {1252, Kind::Bytes, "CP1252"},
    {1253, Kind::Bytes, "CP1253"},
    {1254, Kind::Bytes, "CP1254"},
    {1255, Kind::Bytes, "CP1255"},
    {1256, Kind::Bytes, "CP1256"},
    {1257, Kind::Bytes, "CP1257"},
    {1258, Kind::Bytes, "CP1258"},
    {1361, Kind::Johab, "JOHAB"},
    {10000, Kind::Bytes, "MACINTOSH"},
    {10007, Kind::Bytes, "CP10007"},
    {10017, Kind::Bytes, "MAC-UK"},
    {10029, Kind::Bytes, "MAC-CENTRALEUROPE"},
    {.number = 12000, .kind = Kind::Utf32, .order = ByteOrder::Little},
    {.number = 12001, .kind = Kind::Utf32, .order = ByteOrder::Big},
    {20127, Kind::Bytes, "US-ASCII"},
    {20273, Kind::Bytes, "IBM273"},
    {20277, Kind::Bytes, "IBM277"},
    {20278, Kind::Bytes, "IBM278"},
    {20280, Kind::Bytes, "IBM280"},
    {20284, Kind::Bytes, "IBM284"},
    {20285, Kind::Bytes, "IBM285"},
    {20290, Kind::Bytes, "IBM290"},
    {20297, Kind::Bytes, "IBM297"},
    {20420, Kind::Bytes, "IBM420"},
    {20423, Kind::Bytes, "IBM423"},
    {20424, Kind::Bytes, "IBM424"},
    {20866, Kind::Bytes, "KOI8-R"},
    {20871, Kind::Bytes, "IBM871"},
    {20880, Kind::Bytes, "IBM880"},
    {20905, Kind::Bytes, "IBM905"},
    {.number = 20936, .kind = Kind::Same, .base = 936},
    {.number = 20949, .kind = Kind::Same, .base = 949},
    {21025, Kind::Bytes, "IBM1025"},
    {21866, Kind::Bytes, "KOI8-U"},
    {28591, Kind::Bytes, "ISO-8859-1"},
    {28592, Kind::Bytes, "ISO-8859-2"},
    {28593, Kind::Bytes, "ISO-8859-3"},
    {28594, Kind::Bytes, "ISO-8859-4"},
    {28595, Kind::Bytes, "ISO-8859-5"},
    {28596, Kind::Bytes, "ISO-8859-6"},
    {28597, Kind::Bytes, "ISO-8859-7"},
    {28598, Kind::Bytes, "ISO-8859-8"},
    {28599, Kind::Bytes, "ISO-8859-9"},
    {28603, Kind::Bytes, "ISO-8859-13"},
    {28605, Kind::Bytes, "ISO-8859-15"},
    {.number = 38598, .kind = Kind::Same, .base = 28598},  // Hebrew in logical order
    {.number = 50220, .kind = Kind::Iso2022, .base = 51932, .form = Iso2022Form::JapaneseFullwidth},
    {.number = 50221, .kind = Kind::Iso2022, .base = 51932, .form = Iso2022Form::JapaneseEscape},
    {.number = 50222, .kind = Kind::Iso2022, .base = 51932, .form = Iso2022Form::JapaneseShift},
    {.number = 50225, .kind = Kind::Iso2022, .base = 949, .form = Iso2022Form::Korean},
    {.number = 50227, .kind = Kind::Iso2022, .base = 936, .form = Iso2022Form::Chinese},
    {.number = 51932, .kind = Kind::EucJapanese, .base = 932},
    {.number = 51936, .kind = Kind::Same, .base = 936},  // EUC-CN, with what mail labelled so really holds
    {.number = 51949, .kind = Kind::Same, .base = 949},  // EUC-KR, likewise
    {.number = 52936, .kind = Kind::Hz, .base = 936},
    {54936, Kind::Gb18030},
    {65000, Kind::Utf7},
    {65001, Kind::Utf8},
    {.number = 65005, .kind = Kind::Utf32, .order = ByteOrder::Little},
    {.number = 65006, .kind = Kind::Utf32, .order = ByteOrder::Big},
});
static_assert(std::ranges::adjacent_find(kRows, std::ranges::greater_equal{}, &Row::number) == kRows.end());

constexpr ByteRange kShiftJisLeads[] = {{0x81, 0x9F}, {0xE0, 0xFC}};
constexpr ByteRange kGbkLeads[] = {{0x81, 0xFE}};
constexpr ByteRange kJohabLeads[] = {{0x84, 0xD3}, {0xD8, 0xDE}, {0xE0, 0xF9}};
constexpr ByteRange kEucJapaneseLeads[] = {{0x8E, 0x8E}, {0xA1, 0xFE}};

std::unique_ptr<const Codec> MakeTable(const Row& row, std::span<const ByteRange> leads, WCHAR replacement) {
    std::unique_ptr<PageMapping> mapping = PageMapping::FromIconv(row.set, leads);
    if (mapping == nullptr) {
        return nullptr;
    }
    Iconv fromUtf16(row.set, "UTF-16LE");
    FinishAsWindows(row.number, *mapping, [&fromUtf16](WCHAR unit) {
        const std::array<char, 2> in{static_cast<char>(unit), static_cast<char>(unit >> 8)};
        std::array<char, 4> out{};
        switch (fromUtf16.Convert(in, out)) {
            case 1: return static_cast<std::uint16_t>(static_cast<std::uint8_t>(out[0]));
            case 2:
                return static_cast<std::uint16_t>(static_cast<std::uint8_t>(out[0]) << 8
                                                  | static_cast<std::uint8_t>(out[1]));
            default: return kNoCode;
        }
    });
    return std::make_unique<TableCodec>(std::move(mapping), replacement);
}

// The code in page 932 of row and cell `first` and `second` (0x21 to 0x7E) of JIS X 0208.
constexpr std::uint16_t ShiftJisOf(unsigned first, unsigned second) noexcept {
    const unsigned row = first - 0x21;
    const unsigned lead = row / 2 + (row < 62 ? 0x81 : 0xC1);
    const unsigned evenTrail = second + (second < 0x60 ? 0x1F : 0x20);  // 0x7F is left out
    return static_cast<std::uint16_t>(lead << 8 | (row % 2 == 0 ? evenTrail : second + 0x7E));
}

// EUC-JP with page 932's characters, so that both pages write the same text for the same thing.
std::unique_ptr<const Codec> MakeEucJapanese(const PageMapping& shiftJis) {
    auto mapping = std::make_unique<PageMapping>(kEucJapaneseLeads);
    for (std::uint16_t byte = 0; byte < 0xA0; ++byte) {
        if (!mapping->IsLead(static_cast<std::uint8_t>(byte))) {
            mapping->Map(byte, byte);
        }
    }
    for (std::uint8_t kana = 0xA1; kana <= 0xDF; ++kana) {
        mapping->Map(static_cast<std::uint16_t>(0x8E00 | kana), shiftJis.Single(kana));
    }
    for (unsigned first = 0x21; first < 0x7F; ++first) {
        for (unsigned second = 0x21; second < 0x7F; ++second) {
            mapping->Map(static_cast<std::uint16_t>(first << 8 | second | 0x8080),
                         shiftJis.Unit(ShiftJisOf(first, second)));
        }
    }
    mapping->BuildReverse([](WCHAR) { return kNoCode; });
    constexpr WCHAR kMiddleDot = 0x30FB;
    return std::make_unique<TableCodec>(std::move(mapping), kMiddleDot);
}

const Codec* CodecOf(const Row& row);

const Row* FindRow(UINT number) noexcept {
    const auto row = std::ranges::lower_bound(kRows, number, {}, &Row::number);
    return row != kRows.end() && row->number == number ? &*row : nullptr;
}

// The mapping of the page that `row` is made from; null when that page is not there.
const PageMapping* BaseMapping(const Row& row) {
    const Codec* const base = CodecOf(*FindRow(row.base));
    return base == nullptr ? nullptr : &static_cast<const TableCodec*>(base)->Mapping();
}

std::unique_ptr<const Codec> MakeFromBase(const Row& row) {
    const PageMapping* const base = BaseMapping(row);
    if (base == nullptr) {
        return nullptr;
    }
    switch (row.kind) {
        case Kind::EucJapanese: return MakeEucJapanese(*base);
        case Kind::Iso2022: return std::make_unique<Iso2022Codec>(row.form, *base);
        default: return std::make_unique<HzCodec>(*base);
    }
}

std::unique_ptr<const Codec> Make(const Row& row) {
    switch (row.kind) {
        case Kind::Bytes: return MakeTable(row, {}, u'?');
        case Kind::ShiftJis: return MakeTable(row, kShiftJisLeads, 0x30FB);
        case Kind::Gbk: return MakeTable(row, kGbkLeads, u'?');
        case Kind::Johab: return MakeTable(row, kJohabLeads, u'?');
        case Kind::Gb18030: return Gb18030Codec::Create();
        case Kind::Utf16: return std::make_unique<Utf16Codec>(row.order);
        case Kind::Utf32: return std::make_unique<Utf32Codec>(row.order);
        case Kind::Utf7: return std::make_unique<Utf7Codec>();
        case Kind::Utf8: return std::make_unique<Utf8Codec>();
        default: return MakeFromBase(row);
    }
}

// A codec that is made once, or found to be missing once.
struct Slot {
    std::once_flag once;
    std::unique_ptr<const Codec> codec;
};

const Codec* CodecOf(const Row& row) {
    static vx_system::Immortal<std::array<Slot, kRows.size()>> slots;
    if (row.kind == Kind::Same) {
        return CodecOf(*FindRow(row.base));
    }
    Slot& slot = (*slots)[static_cast<std::size_t>(&row - kRows.data())];
    std::call_once(slot.once, [&slot, &row] { slot.codec = Make(row); });
    return slot.codec.get();
}

Page Describe(const Row& row) noexcept {
    switch (row.kind) {
        case Kind::Bytes: return {row.number, FlagRule::All, 1, 1, nullptr};
        case Kind::Iso2022:
        case Kind::Hz:
        case Kind::Utf7: return {row.number, FlagRule::None, 5, 1, nullptr};
        case Kind::Utf16: return {row.number, FlagRule::InvalidOnly, 4, 2, nullptr};
        case Kind::Utf32: return {row.number, FlagRule::InvalidOnly, 4, 4, nullptr};
        case Kind::Gb18030:
        case Kind::Utf8: return {row.number, FlagRule::InvalidOnly, 4, 1, nullptr};
        case Kind::Same: return Describe(*FindRow(row.base));
        default: return {row.number, FlagRule::All, 2, 1, nullptr};
    }
}

}  // namespace

Page FindCodePage(UINT number) {
    const Row* const row = FindRow(number);
    if (row == nullptr) {
        return {number, FlagRule::None, 0, 1, nullptr};
    }
    Page page = Describe(*row);
    page.codec = CodecOf(*row);
    return page;
}

}  // namespace vx_text
