// The body of a message in its forms. Any thread.
//
// A message has any of the three forms; PR_NATIVE_BODY_INFO names the one that was written first: it is that of the
// first Set...Body called.
#pragma once

#include "testing/mailbox_builder/Model.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace mailbox_builder {

void SetPlainBody(Message& message, const CStringW& text);

// `html` is UTF-8 and is stored in the bytes of `codePage`, which PR_INTERNET_CPID tells.
void SetHtmlBody(Message& message, std::string_view html, unsigned codePage = 65001);

// PR_RTF_COMPRESSED. Stored is a value whose header says that what follows is not compressed: [MS-OXRTFCP] 2.1.3.1.
enum class RtfForm : std::uint8_t { Compressed, Stored };
void SetRtfBody(Message& message, std::string_view rtf, RtfForm form = RtfForm::Compressed);

// RTF of plain text: characters beyond ASCII as \u with a question mark to fall back on.
std::string RtfOfText(WideView text);

// RTF that carries HTML: [MS-OXRTFEX] 2.1.3.1. `html` is UTF-8.
std::string RtfOfHtml(std::string_view html);

// A page of HTML around the paragraphs of `text`, UTF-8, with a declaration of `charset`.
std::string HtmlOfText(WideView text, std::string_view charset);

}  // namespace mailbox_builder
