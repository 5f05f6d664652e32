#include "platform/linux/text/WindowsMappings.h"

#include "platform/linux/text/Kana.h"

#include <algorithm>

namespace vx_text {
namespace {

// A single byte that stands for something else than in the C library.
struct ByteRow {
    UINT page;
    std::uint8_t byte;
    WCHAR unit;
};

constexpr ByteRow kBytes[] = {
    // The percent sign, not the Arabic one.
    {864, 0x25, 0x0025},
    // Greek EBCDIC: unused codes are SUB.
    {875, 0x6A, 0x007C},
    {875, 0x74, 0x00A0},
    {875, 0xDC, 0x001A},
    {875, 0xDD, 0x0387},
    {875, 0xE1, 0x001A},
    {875, 0xEC, 0x001A},
    {875, 0xED, 0x001A},
    {875, 0xFC, 0x001A},
    {875, 0xFD, 0x001A},
    {1026, 0x9D, 0x00B8},
    {1026, 0xBC, 0x00AF},
    {1255, 0xCA, 0x05BA},
    {1361, 0x5C, 0x005C},
    // The ohm and increment signs, not the Greek letters.
    {10000, 0xBD, 0x2126},
    {10000, 0xC6, 0x2206},
    {10000, 0xF0, 0xF8FF},
    {10007, 0xB6, 0x2202},
    // EBCDIC sets of which the C library has pairs of letters exchanged, as their later forms with the euro sign show.
    {20278, 0x71, 0x005C},
    {20278, 0xE0, 0x00C9},
    {20285, 0xA1, 0x00AF},
    {20871, 0x4A, 0x00DE},
    {20871, 0xC0, 0x00FE},
    // The short U of Belarusian, where KOI8-U has box drawing.
    {21866, 0xAE, 0x045E},
    {21866, 0xBE, 0x040E},
};

// Numbers the codes that a page leaves undefined with consecutive units of the private use area, in the order of the
// codes. Rows of a page apply in their order.
struct PrivateRow {
    UINT page;
    ByteRange leads;       // {0, 0} for single bytes
    ByteRange trails;      // or the single bytes
    std::uint8_t gapLast;  // trails from 0x7F to this are no trails of the page
    WCHAR first;
};

constexpr ByteRange kNoLead{0, 0};

constexpr PrivateRow kPrivate[] = {
    // End-user-defined characters.
    {936, {0xAA, 0xAF}, {0xA1, 0xFE}, 0x7F, 0xE000},
    {936, {0xF8, 0xFE}, {0xA1, 0xFE}, 0x7F, 0xE234},
    {936, {0xA1, 0xA7}, {0x40, 0xA0}, 0x7F, 0xE4C6},
    {936, {0xA2, 0xFE}, {0x40, 0xFE}, 0x7F, 0xE766},
    {949, {0xC9, 0xC9}, {0xA1, 0xFE}, 0x7F, 0xE000},
    {949, {0xFE, 0xFE}, {0xA1, 0xFE}, 0x7F, 0xE05E},
    {950, {0xFA, 0xFE}, {0x40, 0xFE}, 0xA0, 0xE000},
    {950, {0x8E, 0xA0}, {0x40, 0xFE}, 0xA0, 0xE311},
    {950, {0x81, 0x8D}, {0x40, 0xFE}, 0xA0, 0xEEB8},
    {1361, {0xD8, 0xD8}, {0x31, 0xFE}, 0x90, 0xE000},
    // Undefined single bytes, which MB_ERR_INVALID_CHARS refuses.
    {857, kNoLead, {0xA0, 0xFF}, 0, 0xF8BB},
    {864, kNoLead, {0xA0, 0xFF}, 0, 0xF8BE},
    {874, kNoLead, {0xA0, 0xFF}, 0, 0xF8C1},
    {932, kNoLead, {0xA0, 0xFF}, 0, 0xF8F0},
    {936, kNoLead, {0xFF, 0xFF}, 0, 0xF8F5},
    {949, kNoLead, {0xFF, 0xFF}, 0, 0xF8F7},
    {950, kNoLead, {0xFF, 0xFF}, 0, 0xF8F8},
    {1253, kNoLead, {0xA0, 0xFF}, 0, 0xF8F9},
    {1255, kNoLead, {0xA0, 0xFF}, 0, 0xF88D},
    {1257, kNoLead, {0xA0, 0xFF}, 0, 0xF8FC},
    {1361, kNoLead, {0xA0, 0xFF}, 0, 0xF8EC},
    {28593, kNoLead, {0xA0, 0xFF}, 0, 0xF7F5},
    {28596, kNoLead, {0xA0, 0xFF}, 0, 0xF7C8},
    // The C library has the later editions of these two sets, with the euro sign and the marks of direction. They are
    // left, so the numbers begin, or end, elsewhere.
    {28597, kNoLead, {0xA0, 0xFF}, 0, 0xF7C5},
    {28598, kNoLead, {0xA0, 0xFF}, 0, 0xF79C},
};

// Of several codes for one unit, the one that Windows writes.
struct PreferredRow {
    UINT page;
    std::uint16_t code;
    WCHAR unit;
};

constexpr PreferredRow kPreferred[] = {
    {950, 0xF9F9, 0x2550},
    {950, 0xF9E9, 0x255E},
    {950, 0xF9EB, 0x2561},
    {950, 0xF9EA, 0x256A},
};

constexpr UINT kUsAscii = 20127;
constexpr UINT kJapaneseEbcdic = 20290;

// The C library has fullwidth katakana for these single bytes.
void MakeKanaHalfwidth(PageMapping& mapping) {
    for (std::uint16_t byte = 0; byte < 0x100; ++byte) {
        const auto* const kana = std::ranges::find(kFullwidthKana, mapping.Unit(byte));
        if (kana != std::end(kFullwidthKana)) {
            mapping.Map(byte, static_cast<WCHAR>(kFirstHalfwidthKana + (kana - kFullwidthKana)));
        }
    }
}

void NumberUndefined(const PrivateRow& row, PageMapping& mapping) {
    WCHAR next = row.first;
    for (unsigned lead = row.leads.first; lead <= row.leads.last; ++lead) {
        for (unsigned trail = row.trails.first; trail <= row.trails.last; ++trail) {
            const auto code = static_cast<std::uint16_t>(lead << 8 | trail);
            const bool isCode =
                lead == 0 ? !mapping.IsLead(static_cast<std::uint8_t>(trail)) : trail < 0x7F || trail > row.gapLast;
            if (isCode && mapping.Unit(code) == kNoUnit) {
                mapping.Map(code, next++);
            }
        }
    }
}

// Undefined bytes from 0x80 to 0x9F are the control characters of their numbers, except in EBCDIC.
void MapControls(PageMapping& mapping) {
    if (mapping.Single('A') != u'A') {
        return;
    }
    for (std::uint8_t byte = 0x80; byte < 0xA0; ++byte) {
        if (!mapping.IsLead(byte) && mapping.Single(byte) == kNoUnit) {
            mapping.Map(byte, byte);
        }
    }
}

}  // namespace

void FinishAsWindows(UINT page, PageMapping& mapping, const std::function<std::uint16_t(WCHAR)>& preferred) {
    for (const ByteRow& row : kBytes) {
        if (row.page == page) {
            mapping.Map(row.byte, row.unit);
        }
    }
    if (page == kUsAscii) {  // the highest bit does not count
        for (std::uint16_t byte = 0x80; byte < 0x100; ++byte) {
            mapping.Map(byte, static_cast<WCHAR>(byte & 0x7F));
        }
    }
    if (page == kJapaneseEbcdic) {
        MakeKanaHalfwidth(mapping);
    }
    MapControls(mapping);
    for (const PrivateRow& row : kPrivate) {
        if (row.page == page) {
            NumberUndefined(row, mapping);
        }
    }
    mapping.BuildReverse(preferred);
    for (const PreferredRow& row : kPreferred) {
        if (row.page == page) {
            mapping.Prefer(row.code, row.unit);
        }
    }
}

}  // namespace vx_text
