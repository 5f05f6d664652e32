#include "localmapi/store/Bodies.h"

#include "localmapi/object/ValueStreams.h"
#include "localmapi/props/Values.h"
#include "localmapi/rtf/CompressedRtf.h"
#include "localmapi/rtf/HtmlText.h"
#include "localmapi/rtf/RtfText.h"
#include "mapi/PropTags.h"
#include "platform/CodePage.h"

#include <array>
#include <cstring>
#include <string>
#include <utility>

namespace localmapi {

namespace {

constexpr ULONG kBody = PROP_ID(PR_BODY_W);
constexpr ULONG kHtml = PROP_ID(PR_HTML);
constexpr ULONG kRtf = PROP_ID(PR_RTF_COMPRESSED);

// Enough of an RTF document to tell what it carries.
constexpr std::size_t kRtfHead = 4096;

CStringW WideOf(const Bytes& bytes) {
    CStringW text(bytes.size() / sizeof(WCHAR), WCHAR{});
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(WCHAR));
    return text;
}

Bytes BytesOfText(WideView text) {
    const auto* begin = reinterpret_cast<const std::byte*>(text.data());
    return Bytes(begin, begin + text.size() * sizeof(WCHAR));
}

Bytes BytesOfText(std::string_view text) {
    const auto* begin = reinterpret_cast<const std::byte*>(text.data());
    return Bytes(begin, begin + text.size());
}

bool IsHighSurrogate(WCHAR unit) noexcept {
    return (unit & 0xFC00) == 0xD800;
}
bool IsLowSurrogate(WCHAR unit) noexcept {
    return (unit & 0xFC00) == 0xDC00;
}

// True when the page has all of the characters.
bool Fits(WideView text, UINT page) {
    return ToWide(ToNarrow(text, page), page) == text;
}

// HTML in a page; characters that the page lacks become references, so that nothing is lost.
Bytes HtmlInPage(WideView html, UINT page) {
    if (page == CP_UTF8 || Fits(html, page)) {
        return BytesOfText(ToNarrow(html, page));
    }
    std::string out;
    for (std::size_t i = 0; i < html.size(); ++i) {
        const WCHAR unit = html[i];
        if (unit < 0x80) {
            out.push_back(static_cast<char>(unit));
            continue;
        }
        const bool isPair = IsHighSurrogate(unit) && i + 1 < html.size() && IsLowSurrogate(html[i + 1]);
        const WideView character = html.substr(i, isPair ? 2 : 1);
        if (Fits(character, page)) {
            out += ToNarrow(character, page);
        } else {
            const std::uint32_t code = isPair ? 0x10000U + ((unit & 0x3FFU) << 10) + (html[i + 1] & 0x3FFU) : unit;
            out += "&#" + std::to_string(code) + ";";
        }
        i += isPair ? 1 : 0;
    }
    return BytesOfText(out);
}

Error NoBody() {
    return Error{ErrorCode::NotFound, "the message has no body that this form could be made from"};
}

}  // namespace

bool BodyForms::Has(ULONG id) {
    return m_source->TagOf(id).has_value();
}

std::optional<std::int32_t> BodyForms::Number(ULONG tag) {
    Arena memory;
    SPropValue value{};
    if (!m_source->Read(PROP_ID(tag), sizeof(LONG), memory, value) || PROP_TYPE(value.ulPropTag) != PT_LONG) {
        return std::nullopt;
    }
    return value.Value.l;
}

UINT BodyForms::HtmlPage() {
    const auto stored = Number(PR_INTERNET_CPID);
    return stored && *stored > 0 ? static_cast<UINT>(*stored) : static_cast<UINT>(CP_UTF8);
}

Result<Bytes> BodyForms::ReadStored(ULONG id) {
    VX_TRY_ASSIGN(const std::unique_ptr<ByteSource> bytes, m_source->Open(id));
    return ReadAll(*bytes, kLargestBody);
}

Result<Bytes> BodyForms::ReadRtf() {
    VX_TRY_ASSIGN(const std::unique_ptr<ByteSource> bytes, m_source->Open(kRtf));
    return rtf::Decompress(*bytes, rtf::Reading::Lenient, kLargestBody);
}

bool BodyForms::CarriesHtml() {
    if (!m_carriesHtml) {
        m_carriesHtml = false;
        if (auto bytes = m_source->Open(kRtf)) {
            std::array<std::byte, kRtfHead> head;
            auto reader = rtf::CompressedRtfReader::Open(**bytes, rtf::Reading::Lenient);
            const auto got = reader ? reader->Read(head) : Result<std::size_t>(reader.TakeFailure());
            m_carriesHtml = got && rtf::KindOf({head.data(), *got}) == rtf::RtfKind::EncapsulatedHtml;
        }
    }
    return *m_carriesHtml;
}

// The HTML as wide text, from whatever form it is stored in.
Result<CStringW> BodyForms::ReadHtml() {
    if (const auto stored = m_source->TagOf(kHtml)) {
        VX_TRY_ASSIGN(const Bytes bytes, ReadStored(kHtml));
        switch (PROP_TYPE(*stored)) {
            case PT_UNICODE: return WideOf(bytes);
            case PT_STRING8:
            case PT_BINARY: return rtf::DecodeHtml(bytes, static_cast<UINT>(Number(PR_INTERNET_CPID).value_or(0)));
            default: return NoBody();
        }
    }
    if (!CarriesHtml()) {
        return NoBody();
    }
    VX_TRY_ASSIGN(const Bytes document, ReadRtf());
    return rtf::HtmlOf(document);
}

Result<CStringW> BodyForms::ReadPlain() {
    if (Has(kHtml)) {
        VX_TRY_ASSIGN(const CStringW html, ReadHtml());
        return rtf::TextOfHtml(html);
    }
    if (!Has(kRtf)) {
        return NoBody();
    }
    VX_TRY_ASSIGN(const Bytes document, ReadRtf());
    return rtf::TextOf(document);
}

Content BodyForms::Keep(ULONG tag, Bytes bytes) {
    m_keptTag = tag;
    m_kept = std::make_shared<const Bytes>(std::move(bytes));
    return Content{tag, std::make_unique<OwnedBytes>(m_kept)};
}

Result<Content> BodyForms::Make(ULONG tag) {
    const ULONG id = PROP_ID(tag);
    const ULONG type = PROP_TYPE(tag);
    if (id == kBody && (type == PT_UNICODE || type == PT_STRING8 || type == PT_UNSPECIFIED)) {
        if (Has(kBody)) {
            return NoBody();  // it is stored; what failed is reading it
        }
        if (m_keptTag == PR_BODY_W) {
            return Content{PR_BODY_W, std::make_unique<OwnedBytes>(m_kept)};
        }
        VX_TRY_ASSIGN(const CStringW text, ReadPlain());
        return Keep(PR_BODY_W, BytesOfText(text));
    }
    if (id != kHtml) {
        return NoBody();
    }
    const ULONG made = type == PT_UNSPECIFIED ? PT_BINARY : type;
    if (m_keptTag == PROP_TAG(made, kHtml)) {
        return Content{m_keptTag, std::make_unique<OwnedBytes>(m_kept)};
    }
    switch (made) {
        case PT_UNICODE: {
            VX_TRY_ASSIGN(const CStringW html, ReadHtml());
            return Keep(PROP_TAG(PT_UNICODE, kHtml), BytesOfText(html));
        }
        case PT_STRING8:
        case PT_BINARY: {
            // Bytes and 8-bit text are the same, in the page that PR_INTERNET_CPID tells.
            const auto stored = m_source->TagOf(kHtml);
            if (stored && PROP_TYPE(*stored) != PT_UNICODE) {
                VX_TRY_ASSIGN(std::unique_ptr<ByteSource> bytes, m_source->Open(kHtml));
                return Content{PROP_TAG(made, kHtml), std::move(bytes)};
            }
            VX_TRY_ASSIGN(const CStringW html, ReadHtml());
            return Keep(PROP_TAG(made, kHtml), HtmlInPage(html, HtmlPage()));
        }
        default: return NoBody();
    }
}

std::vector<ULONG> BodyForms::Tags() {
    std::vector<ULONG> tags;
    if (!Has(kBody) && (Has(kHtml) || Has(kRtf))) {
        tags.push_back(PR_BODY_W);
    }
    if (!Has(kHtml) && CarriesHtml()) {
        tags.push_back(PR_HTML);
    }
    return tags;
}

std::int32_t BodyForms::NativeForm() {
    static constexpr std::int32_t kPlain = 1;
    static constexpr std::int32_t kRich = 2;
    static constexpr std::int32_t kHypertext = 3;
    if (Has(kHtml) || CarriesHtml()) {
        return kHypertext;
    }
    if (Has(kRtf)) {
        return kRich;
    }
    return Has(kBody) ? kPlain : 0;
}

}  // namespace localmapi
