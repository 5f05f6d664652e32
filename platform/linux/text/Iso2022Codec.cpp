#include "platform/linux/text/Iso2022Codec.h"

#include "platform/linux/text/BestFit.h"
#include "platform/linux/text/Kana.h"

#include <algorithm>
#include <optional>
#include <string_view>

namespace vx_text {
namespace {

constexpr std::uint8_t kEscape = 0x1B;
constexpr std::uint8_t kShiftOut = 0x0E;
constexpr std::uint8_t kShiftIn = 0x0F;

enum class Charset { Ascii, Katakana, Japanese, Korean, Chinese, Other };

struct Escape {
    std::string_view sequence;  // behind ESC
    int element;                // which of G0 and G1 it designates; -1 for neither
    Charset charset;
};

constexpr Escape kEscapes[] = {
    {"(B", 0, Charset::Ascii},
    // JIS X 0201 Roman, whose yen and overline are read as the ASCII that is meant, and a misnomer for it.
    {"(J", 0, Charset::Ascii},
    {"(H", 0, Charset::Ascii},
    {"(I", 0, Charset::Katakana},
    // JIS C 6226-1978, read as its successor; the successor; the announcement of its edition of 1990; JIS X 0212.
    {"$@", 0, Charset::Japanese},
    {"$B", 0, Charset::Japanese},
    {"&@", -1, Charset::Japanese},
    {"$(D", 0, Charset::Other},
    {"$(C", 0, Charset::Korean},
    {"$A", 0, Charset::Chinese},
    {"$)C", 1, Charset::Korean},
    {"$)A", 1, Charset::Chinese},
    // ISO-IR-165, then planes 1 and 2 of CNS 11643.
    {"$)E", 1, Charset::Other},
    {"$)G", 1, Charset::Other},
    {"$*H", -1, Charset::Other},
};

// The set that the form is about.
constexpr Charset OwnCharset(Iso2022Form form) noexcept {
    switch (form) {
        case Iso2022Form::Korean: return Charset::Korean;
        case Iso2022Form::Chinese: return Charset::Chinese;
        default: return Charset::Japanese;
    }
}

const Escape* FindEscape(Bytes behindEscape) noexcept {
    const auto row = std::ranges::find_if(kEscapes, [behindEscape](const Escape& escape) {
        return behindEscape.size() >= escape.sequence.size()
               && std::equal(escape.sequence.begin(), escape.sequence.end(), behindEscape.begin(),
                             [](char c, std::uint8_t byte) { return static_cast<std::uint8_t>(c) == byte; });
    });
    return row == std::end(kEscapes) ? nullptr : row;
}

// Whether a byte belongs to a set of 94 characters, or of 94 by 94.
constexpr bool IsGraphic(std::uint8_t byte) noexcept {
    return byte > 0x20 && byte < 0x7F;
}

// Reads one text: the sets designated so far, and whether G1 is shifted to.
class Reader {
public:
    Reader(Charset own, const PageMapping& euc, WideSink& out) noexcept
        : m_own(own), m_euc(euc), m_out(out), m_g1(own == Charset::Japanese ? Charset::Katakana : own) {}

    // Converts what `bytes` begins with and gives its length.
    std::size_t Step(Bytes bytes) noexcept {
        const std::uint8_t byte = bytes[0];
        if (byte == kEscape) {
            return StepEscape(bytes);
        }
        if (byte == kShiftOut || byte == kShiftIn) {
            m_shifted = byte == kShiftOut;
            return 1;
        }
        if (byte >= 0x80) {
            return StepHigh(bytes);
        }
        const Charset charset = m_shifted ? m_g1 : m_g0;
        if (charset == Charset::Ascii || !IsGraphic(byte)) {
            m_out.Put(byte);
            return 1;
        }
        if (charset == Charset::Katakana) {
            PutKnown(byte < 0x60 ? static_cast<WCHAR>(kFirstHalfwidthKana + byte - 0x21) : kNoUnit);
            return 1;
        }
        return StepPair(bytes, charset);
    }

    [[nodiscard]] bool Valid() const noexcept { return m_valid; }

private:
    std::size_t StepEscape(Bytes bytes) noexcept {
        const Escape* const escape = FindEscape(bytes.subspan(1));
        if (escape == nullptr) {
            m_valid = false;
            m_out.Put(kEscape);
            return 1;
        }
        if (escape->element == 0) {
            m_g0 = escape->charset;
        } else if (escape->element == 1) {
            m_g1 = escape->charset;
        }
        return 1 + escape->sequence.size();
    }

    std::size_t StepHigh(Bytes bytes) noexcept {
        if (m_own == Charset::Japanese) {
            const bool isKana = bytes[0] >= 0xA1 && bytes[0] <= 0xDF;
            PutKnown(isKana ? static_cast<WCHAR>(kFirstHalfwidthKana + bytes[0] - 0xA1) : kNoUnit);
            return 1;
        }
        const WCHAR unit = bytes.size() > 1 ? m_euc.Pair(bytes[0], bytes[1]) : kNoUnit;
        PutKnown(unit);
        return unit == kNoUnit ? 1 : 2;
    }

    std::size_t StepPair(Bytes bytes, Charset charset) noexcept {
        if (bytes.size() < 2 || !IsGraphic(bytes[1])) {
            PutKnown(kNoUnit);
            return 1;
        }
        PutKnown(charset == m_own ? m_euc.Pair(bytes[0] | 0x80, bytes[1] | 0x80) : kNoUnit);
        return 2;
    }

    void PutKnown(WCHAR unit) noexcept {
        m_valid = m_valid && unit != kNoUnit;
        m_out.Put(unit == kNoUnit ? WCHAR{'?'} : unit);
    }

    Charset m_own;
    const PageMapping& m_euc;
    WideSink& m_out;
    Charset m_g0 = Charset::Ascii;
    Charset m_g1;
    bool m_shifted = false;
    bool m_valid = true;
};

constexpr bool IsHalfwidthKana(WCHAR unit) noexcept {
    return unit >= kFirstHalfwidthKana && unit <= kLastHalfwidthKana;
}

// A character as the form writes it: in one of ASCII, Katakana and the form's own set.
struct Written {
    Charset charset;
    std::uint8_t first;
    std::uint8_t second;  // of the own set only
};

// Writes one text, with the escapes and shifts that each character needs.
class Writer {
public:
    Writer(Iso2022Form form, const PageMapping& euc, ByteSink& out) noexcept
        : m_form(form), m_own(OwnCharset(form)), m_euc(euc), m_out(out) {}

    // RFC 1557: the designation of the Korean set stands at the beginning of the first line.
    void Begin(WideView text) noexcept {
        if (m_form == Iso2022Form::Korean && AsciiRun(std::span(text)) < text.size()) {
            PutEscape("$)C");
        }
    }

    // False for a character that is not there and became a '?'.
    bool Put(WCHAR unit) noexcept {
        std::optional<Written> written = Find(unit);
        if (!written) {
            const Alike alike = LooksLike(unit);
            written = Find(alike.wide);
            if (!written) {
                written = Find(alike.ascii);
            }
        }
        const Written put = written.value_or(Written{Charset::Ascii, '?', 0});
        SwitchTo(put.charset);
        if (put.charset == m_own) {
            m_out.Put({put.first, put.second});
        } else {
            m_out.Put(put.first);
        }
        if (unit == u'\n') {
            m_designated = false;
        }
        return written.has_value();
    }

    void End() noexcept { SwitchTo(Charset::Ascii); }

private:
    [[nodiscard]] std::optional<Written> Find(WCHAR unit) const noexcept {
        if (unit < 0x80) {
            if (unit == kEscape || unit == kShiftOut || unit == kShiftIn) {
                return std::nullopt;
            }
            return Written{Charset::Ascii, static_cast<std::uint8_t>(unit), 0};
        }
        if (IsHalfwidthKana(unit) && m_own == Charset::Japanese) {
            if (m_form != Iso2022Form::JapaneseFullwidth) {
                return Written{Charset::Katakana, static_cast<std::uint8_t>(unit - kFirstHalfwidthKana + 0x21), 0};
            }
            unit = kFullwidthKana[unit - kFirstHalfwidthKana];
        }
        const std::uint16_t code = m_euc.Code(unit);
        const auto lead = static_cast<std::uint8_t>(code >> 8);
        const auto trail = static_cast<std::uint8_t>(code);
        if (code == kNoCode || IsPrivateUse(unit) || lead < 0xA1 || trail < 0xA1) {
            return std::nullopt;
        }
        return Written{m_own, static_cast<std::uint8_t>(lead & 0x7F), static_cast<std::uint8_t>(trail & 0x7F)};
    }

    void SwitchTo(Charset charset) noexcept {
        const bool shift = m_own == Charset::Japanese
                               ? charset == Charset::Katakana && m_form == Iso2022Form::JapaneseShift
                               : charset == m_own;
        if (shift && m_form == Iso2022Form::Chinese && !m_designated) {
            PutEscape("$)A");  // RFC 1922: once in each line that needs it
            m_designated = true;
        }
        if (shift != m_shifted) {
            m_out.Put(shift ? kShiftOut : kShiftIn);
            m_shifted = shift;
        }
        if (!shift && charset != m_g0) {
            PutEscape(charset == Charset::Ascii ? "(B" : charset == Charset::Katakana ? "(I" : "$B");
            m_g0 = charset;
        }
    }

    void PutEscape(std::string_view sequence) noexcept {
        m_out.Put(kEscape);
        m_out.PutAscii(sequence.data(), sequence.size());
    }

    Iso2022Form m_form;
    Charset m_own;
    const PageMapping& m_euc;
    ByteSink& m_out;
    Charset m_g0 = Charset::Ascii;
    bool m_shifted = false;
    bool m_designated = false;  // the Chinese set, in this line
};

}  // namespace

bool Iso2022Codec::Decode(Bytes bytes, WideSink& out) const noexcept {
    Reader reader(OwnCharset(m_form), *m_euc, out);
    while (!bytes.empty() && !out.Overflowed()) {
        bytes = bytes.subspan(reader.Step(bytes));
    }
    return reader.Valid();
}

bool Iso2022Codec::Encode(WideView text, ByteSink& out, const EncodeOptions&) const noexcept {
    Writer writer(m_form, *m_euc, out);
    writer.Begin(text);
    bool complete = true;
    for (; !text.empty() && !out.Overflowed(); text.remove_prefix(1)) {
        complete = writer.Put(text[0]) && complete;
    }
    writer.End();
    return complete;
}

}  // namespace vx_text
