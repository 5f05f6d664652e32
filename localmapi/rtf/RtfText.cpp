#include "localmapi/rtf/RtfText.h"

#include "localmapi/rtf/HtmlText.h"
#include "localmapi/rtf/RtfConverter.h"
#include "localmapi/rtf/RtfKeywords.h"
#include "localmapi/rtf/RtfTokenizer.h"

namespace localmapi::rtf {

namespace {

// A document says what it is within its first 10 tokens: [MS-OXRTFEX] 2.1.3.1. Some writers come to it a little later,
// none behind its font table.
constexpr int kHeaderTokens = 24;

struct Header {
    RtfKind kind = RtfKind::NotRtf;
    UINT ansiCodePage = 0;
};

Header ReadHeader(ByteView rtf) {
    RtfTokenizer tokens(rtf);
    Header header;
    if (tokens.Next().kind != RtfToken::Kind::GroupBegin || tokens.Next().text != "rtf") {
        return header;
    }
    header.kind = RtfKind::Rtf;
    for (int i = 0; i < kHeaderTokens; ++i) {
        const RtfToken token = tokens.Next();
        if (token.kind != RtfToken::Kind::Word) {
            break;
        }
        const RtfKeyword* keyword = FindRtfKeyword(token.text);
        if (keyword == nullptr) {
            continue;
        }
        if (keyword->action == RtfAction::FromHtml && header.kind == RtfKind::Rtf
            && (!token.hasParameter || token.parameter != 0)) {
            header.kind = RtfKind::EncapsulatedHtml;
        } else if (keyword->action == RtfAction::FromText && header.kind == RtfKind::Rtf) {
            header.kind = RtfKind::EncapsulatedText;
        } else if (keyword->action == RtfAction::AnsiCodePage && token.parameter > 0) {
            header.ansiCodePage = static_cast<UINT>(token.parameter);
        }
    }
    return header;
}

}  // namespace

RtfKind KindOf(ByteView rtf) {
    return ReadHeader(rtf).kind;
}

std::optional<UINT> AnsiCodePage(ByteView rtf) {
    const UINT page = ReadHeader(rtf).ansiCodePage;
    return page != 0 ? std::optional(page) : std::nullopt;
}

CStringW TextOf(ByteView rtf) {
    switch (KindOf(rtf)) {
        case RtfKind::NotRtf: return {};
        case RtfKind::EncapsulatedHtml: return TextOfHtml(HtmlOf(rtf));
        case RtfKind::Rtf:
        case RtfKind::EncapsulatedText: break;
    }
    return RtfConverter(rtf, RtfConverter::Output::Text).Run();
}

CStringW HtmlOf(ByteView rtf) {
    if (KindOf(rtf) != RtfKind::EncapsulatedHtml) {
        return {};
    }
    return RtfConverter(rtf, RtfConverter::Output::Html).Run();
}

}  // namespace localmapi::rtf
