#include "testing/mailbox_builder/items/Bodies.h"

#include "localmapi/rtf/CompressedRtfWriter.h"
#include "mapi/PropTags.h"
#include "testing/mailbox_builder/ByteWriter.h"
#include "testing/mailbox_builder/items/Wording.h"

namespace mailbox_builder {
namespace {

enum class NativeBody : std::int32_t { Plain = 1, Rtf = 2, Html = 3 };

void NoteNative(Message& message, NativeBody form) {
    if (message.properties.Find(PR_NATIVE_BODY_INFO) == nullptr) {
        message.properties.Set(PR_NATIVE_BODY_INFO, static_cast<std::int32_t>(form));
    }
}

void AppendRtfUnit(std::string& rtf, WCHAR unit) {
    if (unit == '\\' || unit == '{' || unit == '}') {
        rtf += '\\';
        rtf += static_cast<char>(unit);
    } else if (unit == '\n') {
        rtf += "\\par\r\n";
    } else if (unit == '\t') {
        rtf += "\\tab ";
    } else if (unit >= 0x80) {
        // The parameter of \u is a signed number of 16 bits.
        rtf += "\\u" + std::to_string(static_cast<std::int16_t>(unit)) + "?";
    } else if (unit >= ' ') {
        rtf += static_cast<char>(unit);
    }
}

std::string RtfEscaped(WideView text) {
    std::string rtf;
    for (const WCHAR unit : text) {
        AppendRtfUnit(rtf, unit);
    }
    return rtf;
}

std::string HtmlEscaped(std::string_view utf8) {
    std::string html;
    for (const char c : utf8) {
        switch (c) {
            case '&': html += "&amp;"; break;
            case '<': html += "&lt;"; break;
            case '>': html += "&gt;"; break;
            case '\r': break;
            default: html += c; break;
        }
    }
    return html;
}

Bytes StoredRtf(std::string_view rtf) {
    constexpr std::uint32_t kNotCompressed = 0x414C454D;
    constexpr std::uint32_t kHeaderBehindFirstField = 12;
    return ByteWriter()
        .U32(rtf.size() + kHeaderBehindFirstField)
        .U32(rtf.size())
        .U32(kNotCompressed)
        .U32(0)
        .Append(AsBytes(rtf))
        .Take();
}

// Ours is far below what the writer refuses.
Bytes CompressedRtf(std::string_view rtf) {
    localmapi::rtf::CompressedRtfWriter writer;
    const Bytes bytes = AsBytes(rtf);
    (void)writer.Append(bytes);
    return writer.Finish();
}

bool EndsLine(std::string_view tag) {
    return tag == "<br>" || tag == "</p>" || tag == "</li>" || tag == "</tr>";
}

}  // namespace

void SetPlainBody(Message& message, const CStringW& text) {
    NoteNative(message, NativeBody::Plain);
    message.properties.Set(PR_BODY, text);
}

void SetHtmlBody(Message& message, std::string_view html, unsigned codePage) {
    NoteNative(message, NativeBody::Html);
    message.properties.Set(PR_HTML, AsBytes(ToCodePage(Wide(html), codePage)))
        .Set(PR_INTERNET_CPID, static_cast<std::int32_t>(codePage));
}

void SetRtfBody(Message& message, std::string_view rtf, RtfForm form) {
    NoteNative(message, NativeBody::Rtf);
    message.properties.Set(PR_RTF_COMPRESSED, form == RtfForm::Stored ? StoredRtf(rtf) : CompressedRtf(rtf))
        .Set(PR_RTF_IN_SYNC, true);
}

std::string RtfOfText(WideView text) {
    return "{\\rtf1\\ansi\\ansicpg1252\\deff0\\uc1{\\fonttbl{\\f0\\fswiss\\fcharset0 Calibri;}"
           "{\\f1\\froman\\fcharset0 Cambria;}}\r\n{\\colortbl ;\\red31\\green73\\blue125;}\r\n"
           "{\\*\\generator Riched20 10.0}\\viewkind4\\pard\\sa200\\f0\\fs22 "
           + RtfEscaped(text) + "\\par\r\n{\\b\\cf1 }\\f1\\par\r\n}\r\n";
}

std::string RtfOfHtml(std::string_view html) {
    std::string rtf =
        "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1 \\deff0{\\fonttbl\r\n{\\f0\\fswiss Arial;}\r\n"
        "{\\f1\\fmodern Courier New;}}\r\n{\\colortbl\\red0\\green0\\blue0;\\red0\\green0\\blue255;}\r\n"
        "\\uc1\\pard\\plain\\deftab360 \\f0\\fs24 \r\n";
    while (!html.empty()) {
        const bool isTag = html.front() == '<';
        const std::size_t end = isTag ? html.find('>') + 1 : html.find('<');
        const std::string_view piece = html.substr(0, end);
        html.remove_prefix(piece.size());
        if (isTag) {
            rtf += "{\\*\\htmltag64 " + RtfEscaped(Wide(piece)) + "}";
            rtf += EndsLine(piece) ? "\\htmlrtf \\par\\htmlrtf0\r\n" : "\r\n";
        } else {
            rtf += RtfEscaped(Wide(piece));
        }
    }
    return rtf + "}\r\n";
}

std::string HtmlOfText(WideView text, std::string_view charset) {
    std::string html = "<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; charset=";
    html += charset;
    html += "\"><style>p { margin: 0 0 8pt 0; font-family: Calibri, sans-serif; }</style></head><body>\r\n";
    while (!text.empty()) {
        const std::size_t end = text.find(WCHAR{'\n'});
        const WideView line = text.substr(0, end);
        text.remove_prefix(end == WideView::npos ? text.size() : end + 1);
        html += "<p>" + HtmlEscaped(ToCodePage(CStringW(line), 65001)) + "</p>\r\n";
    }
    return html + "</body></html>\r\n";
}

}  // namespace mailbox_builder
