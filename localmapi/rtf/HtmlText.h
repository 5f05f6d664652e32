// HTML bodies: their bytes to text, and their text without the markup. Any thread. Never fails; time and memory grow
// with the size of the body only.
#pragma once

#include "localmapi/base/Bytes.h"
#include "platform/WideText.h"

namespace localmapi::rtf {

// An HTML body as text. `declaredPage` is what the message says about it (PR_INTERNET_CPID), 0 when it says nothing. The
// page is, in this order:
//   1. that of a byte order mark; UTF-16 without one, when the bytes can be nothing else;
//   2. UTF-8, when the message or the HTML's own charset says so and all the bytes agree;
//   3. the declared page, then the HTML's own, whichever comes first to make sense of all the bytes: messages are
//      converted on their way, and their HTML keeps telling what it was in before;
//   4. UTF-8, when the bytes can be read so;
//   5. the declared page, the HTML's own or 1252, with replacement characters.
// Latin-1 and ASCII are read as 1252, which is what mail means by them.
CStringW DecodeHtml(ByteView html, UINT declaredPage);

// What a reader sees of the HTML. Markup, comments (conditional ones too), scripts, styles and the title are left out.
// Blocks and <br> end lines with CRLF, an empty line stands between paragraphs, a tab between the cells of a row, "* "
// before a list's item. White space becomes one space, but in <pre>. Character references are resolved, with or without
// their semicolon; soft hyphens are left out. Markup that is never closed does not hide what follows: only an unclosed
// comment, script or style does, as in any browser.
CStringW TextOfHtml(WideView html);

}  // namespace localmapi::rtf
