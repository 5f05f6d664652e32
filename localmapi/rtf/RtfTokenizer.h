// RTF as a row of tokens. Any bytes give tokens; every one but the last takes at least a byte. One thread at a time.
#pragma once

#include "localmapi/base/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace localmapi::rtf {

struct RtfToken {
    enum class Kind : std::uint8_t {
        End,
        GroupBegin,
        GroupEnd,
        Word,     // text: its letters
        Symbol,   // text: the character behind the backslash; a line end is "\n", whichever it was
        HexByte,  // text: the byte itself
        Text,     // text: bytes of some code page; at least one
        Binary,   // \bin and what it announced, which is passed over
    };

    Kind kind = Kind::End;
    bool hasParameter = false;
    std::int32_t parameter = 0;  // of a word; cut to what the type holds
    std::string_view text;       // borrowed from the tokenizer and what it reads, until the next token
};

class RtfTokenizer {
public:
    explicit RtfTokenizer(ByteView rtf) noexcept : m_rest(reinterpret_cast<const char*>(rtf.Data()), rtf.Size()) {}

    RtfToken Next();

private:
    RtfToken ReadControl();
    RtfToken ReadWord();
    RtfToken ReadHexByte();
    void ReadParameter(RtfToken& word);
    std::string_view Take(std::size_t count);

    std::string_view m_rest;
    char m_byte = 0;  // the text of the last HexByte
};

}  // namespace localmapi::rtf
