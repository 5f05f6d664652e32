// What an RTF document says: its text, or the HTML or plain text that was put into RTF's clothes by a mail program,
// [MS-OXRTFEX]. Any thread. Never fails: what is broken is passed over, and any bytes give some text or none. Time and
// memory grow with the document's size only.
#pragma once

#include "localmapi/base/Bytes.h"
#include "platform/WideText.h"

#include <cstdint>
#include <optional>

namespace localmapi::rtf {

enum class RtfKind : std::uint8_t {
    NotRtf,            // does not begin as RTF does
    Rtf,               // written as RTF
    EncapsulatedHtml,  // carries the HTML that the message was written in
    EncapsulatedText,  // was written as plain text
};

// By the first control words: [MS-OXRTFEX] 2.1.3.1.
RtfKind KindOf(ByteView rtf);

// The code page of the document's 8-bit text as \ansicpg says; nothing where it is missing or 0. Only the header of the
// document is looked at.
std::optional<UINT> AnsiCodePage(ByteView rtf);

// The text that a reader of the document sees, with CRLF at line ends and tabs between the cells of tables. Of
// encapsulated HTML it is the text of the HTML. Empty for what is no RTF.
CStringW TextOf(ByteView rtf);

// The HTML that the document carries, as it was but for its encoding: its declaration of a charset is to be ignored.
// Empty unless KindOf is EncapsulatedHtml.
CStringW HtmlOf(ByteView rtf);

}  // namespace localmapi::rtf
