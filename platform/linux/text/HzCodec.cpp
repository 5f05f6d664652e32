#include "platform/linux/text/HzCodec.h"

#include "platform/linux/text/BestFit.h"

namespace vx_text {
namespace {

// Rows 1 to 87 of GB 2312: the rows above would read as the "~" of an escape or hold private characters.
constexpr bool IsHzPair(std::uint16_t code) noexcept {
    const unsigned lead = code >> 8u;
    const unsigned trail = code & 0xFFu;
    return lead >= 0xA1 && lead <= 0xF7 && trail >= 0xA1 && trail <= 0xFE;
}

class Reader {
public:
    Reader(const PageMapping& gbk, WideSink& out) noexcept : m_gbk(gbk), m_out(out) {}

    // Converts what `bytes` begins with and gives its length.
    std::size_t Step(Bytes bytes) noexcept {
        const std::uint8_t byte = bytes[0];
        const int next = bytes.size() > 1 ? bytes[1] : -1;
        if (byte >= 0x80) {
            return StepPair(bytes, 0);
        }
        if (m_chinese) {
            if (byte == '~' && next == '}') {
                m_chinese = false;
                return 2;
            }
            if (byte > 0x20 && byte < 0x7F) {
                return StepPair(bytes, 0x80);
            }
            m_chinese = byte != '\n';
        } else if (byte == '~') {
            return StepTilde(next);
        }
        m_out.Put(byte);
        return 1;
    }

    [[nodiscard]] bool Valid() const noexcept { return m_valid; }

private:
    std::size_t StepTilde(int next) noexcept {
        switch (next) {
            case '{': m_chinese = true; return 2;
            case '~': m_out.Put(u'~'); return 2;
            case '\n': return 2;  // a line that goes on
            default:
                m_valid = false;
                m_out.Put(u'~');
                return 1;
        }
    }

    std::size_t StepPair(Bytes bytes, std::uint8_t highBit) noexcept {
        WCHAR unit = kNoUnit;
        if (bytes.size() > 1 && (highBit == 0 || (bytes[1] > 0x20 && bytes[1] < 0x7F))) {
            unit = m_gbk.Pair(bytes[0] | highBit, bytes[1] | highBit);
        }
        m_valid = m_valid && unit != kNoUnit;
        m_out.Put(unit == kNoUnit ? WCHAR{'?'} : unit);
        return unit == kNoUnit ? 1 : 2;
    }

    const PageMapping& m_gbk;
    WideSink& m_out;
    bool m_chinese = false;
    bool m_valid = true;
};

class Writer {
public:
    Writer(const PageMapping& gbk, ByteSink& out) noexcept : m_gbk(gbk), m_out(out) {}

    // False for a character that is not there and became a '?'.
    bool Put(WCHAR unit) noexcept {
        if (PutIfKnown(unit)) {
            return true;
        }
        const Alike alike = LooksLike(unit);
        if (PutIfKnown(alike.wide) || PutIfKnown(alike.ascii)) {
            return true;
        }
        PutIfKnown(u'?');
        return false;
    }

    void SwitchTo(bool chinese) noexcept {
        if (chinese != m_chinese) {
            m_out.Put({'~', static_cast<std::uint8_t>(chinese ? '{' : '}')});
            m_chinese = chinese;
        }
    }

private:
    bool PutIfKnown(WCHAR unit) noexcept {
        if (unit < 0x80) {
            SwitchTo(false);
            m_out.Put(static_cast<std::uint8_t>(unit));
            if (unit == u'~') {
                m_out.Put('~');
            }
            return true;
        }
        const std::uint16_t code = m_gbk.Code(unit);
        if (code == kNoCode || IsPrivateUse(unit) || !IsHzPair(code)) {
            return false;
        }
        SwitchTo(true);
        PutCode(code & 0x7F7F, m_out);
        return true;
    }

    const PageMapping& m_gbk;
    ByteSink& m_out;
    bool m_chinese = false;
};

}  // namespace

bool HzCodec::Decode(Bytes bytes, WideSink& out) const noexcept {
    Reader reader(*m_gbk, out);
    while (!bytes.empty() && !out.Overflowed()) {
        bytes = bytes.subspan(reader.Step(bytes));
    }
    return reader.Valid();
}

bool HzCodec::Encode(WideView text, ByteSink& out, const EncodeOptions&) const noexcept {
    Writer writer(*m_gbk, out);
    bool complete = true;
    for (; !text.empty() && !out.Overflowed(); text.remove_prefix(1)) {
        complete = writer.Put(text[0]) && complete;
    }
    writer.SwitchTo(false);
    return complete;
}

}  // namespace vx_text
