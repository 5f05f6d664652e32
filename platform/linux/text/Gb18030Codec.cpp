#include "platform/linux/text/Gb18030Codec.h"

#include "platform/linux/text/Iconv.h"

#include <utility>

namespace vx_text {
namespace {

constexpr const char* kName = "GB18030";
constexpr ByteRange kLeads[] = {{0x81, 0xFE}};

constexpr std::uint32_t kBmpCodes = 39420;        // from 81308130 to 8431A439
constexpr std::uint32_t kSupplementary = 189000;  // place of 90308130, which is U+10000
constexpr WCHAR kHole = 0;                        // in the table of those; U+FFFF is one of its units
constexpr std::uint32_t kLastPlace = kSupplementary + 0xFFFFF;

// Four-byte codes count like numbers whose digits have 126, 10, 126 and 10 values.
std::array<std::uint8_t, 4> CodeAt(std::uint32_t place) noexcept {
    const auto digit = [](std::uint32_t value, std::uint32_t base) { return static_cast<std::uint8_t>(base + value); };
    return {digit(place / 12600, 0x81), digit(place / 1260 % 10, 0x30), digit(place / 10 % 126, 0x81),
            digit(place % 10, 0x30)};
}

// The place of the code that `bytes` begins with; above kLastPlace when it begins with none.
std::uint32_t PlaceOf(Bytes bytes) noexcept {
    const auto isHigh = [](std::uint8_t byte) { return byte >= 0x81 && byte <= 0xFE; };
    const auto isDigit = [](std::uint8_t byte) { return byte >= 0x30 && byte <= 0x39; };
    if (bytes.size() < 4 || !isHigh(bytes[0]) || !isDigit(bytes[1]) || !isHigh(bytes[2]) || !isDigit(bytes[3])) {
        return kLastPlace + 1;
    }
    return (bytes[0] - 0x81u) * 12600 + (bytes[1] - 0x30u) * 1260 + (bytes[2] - 0x81u) * 10 + (bytes[3] - 0x30u);
}

}  // namespace

std::unique_ptr<const Gb18030Codec> Gb18030Codec::Create() {
    std::unique_ptr<PageMapping> shortCodes = PageMapping::FromIconv(kName, kLeads);
    if (shortCodes == nullptr) {
        return nullptr;
    }
    shortCodes->BuildReverse([](WCHAR) { return kNoCode; });

    Iconv toUtf16("UTF-16LE", kName);
    std::vector<WCHAR> units(kBmpCodes, kHole);
    for (std::uint32_t place = 0; place < kBmpCodes; ++place) {
        const std::array<std::uint8_t, 4> code = CodeAt(place);
        std::array<char, 4> in{};
        std::array<char, 8> out{};
        std::memcpy(in.data(), code.data(), code.size());
        if (toUtf16.Convert(in, out) == 2) {
            std::memcpy(&units[place], out.data(), sizeof(WCHAR));
        }
    }
    return std::make_unique<const Gb18030Codec>(std::move(shortCodes), std::move(units));
}

Gb18030Codec::Gb18030Codec(std::unique_ptr<const PageMapping> shortCodes, std::vector<WCHAR> fourBytes)
    : m_short(std::move(shortCodes)), m_fourBytes(std::move(fourBytes)), m_places(0x10000, kNoCode) {
    for (std::size_t place = 0; place < m_fourBytes.size(); ++place) {
        const WCHAR unit = m_fourBytes[place];
        if (unit != kHole && m_short->Code(unit) == kNoCode) {
            m_places[unit] = static_cast<std::uint16_t>(place);
        }
    }
}

bool Gb18030Codec::Decode(Bytes bytes, WideSink& out) const noexcept {
    bool valid = true;
    while (!bytes.empty() && !out.Overflowed()) {
        if (bytes[0] < 0x80) {
            const std::size_t run = AsciiRun(bytes);
            out.PutAscii(bytes.data(), run);
            bytes = bytes.subspan(run);
            continue;
        }
        const std::uint32_t place = PlaceOf(bytes);
        if (place >= kSupplementary && place <= kLastPlace) {
            PutCodePoint(0x10000 + place - kSupplementary, out);
            bytes = bytes.subspan(4);
            continue;
        }
        if (place < kBmpCodes && m_fourBytes[place] != kHole) {
            out.Put(m_fourBytes[place]);
            bytes = bytes.subspan(4);
            continue;
        }
        const WCHAR unit = bytes.size() > 1 ? m_short->Pair(bytes[0], bytes[1]) : kNoUnit;
        valid = valid && unit != kNoUnit;
        out.Put(unit == kNoUnit ? kReplacement : unit);
        bytes = bytes.subspan(unit == kNoUnit ? 1 : 2);
    }
    return valid;
}

bool Gb18030Codec::Encode(WideView text, ByteSink& out, const EncodeOptions&) const noexcept {
    bool complete = true;
    while (!text.empty() && !out.Overflowed()) {
        const auto [value, units] = FirstCodePoint(text);
        if (units == 2) {
            out.Put(CodeAt(kSupplementary + value - 0x10000));
        } else if (m_short->Code(text[0]) != kNoCode) {
            PutCode(m_short->Code(text[0]), out);
        } else if (m_places[text[0]] != kNoCode) {
            out.Put(CodeAt(m_places[text[0]]));
        } else {
            out.Put('?');
            complete = false;
        }
        text.remove_prefix(units);
    }
    return complete;
}

}  // namespace vx_text
