#include "localmapi/msg/StringPage.h"

#include "localmapi/base/StringPages.h"
#include "localmapi/rtf/CodePageText.h"
#include "localmapi/rtf/CompressedRtf.h"
#include "localmapi/rtf/RtfText.h"
#include "mapi/PropTags.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace localmapi::msg {

namespace {

constexpr UINT kWesternPage = 1252;
constexpr UINT kUtf8Page = 65001;

// What is looked at: of one text, and of all together.
constexpr std::size_t kMostOfText = std::size_t{32} << 10;
constexpr std::size_t kMostOfAll = std::size_t{256} << 10;

// Of an RTF body, in whose first control words the page stands.
constexpr std::size_t kRtfHead = 4096;

// The beginning of a text, cut after a byte that ends a character in every page.
std::string BeginningOf(ByteSource& source) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(source.Size(), kMostOfText));
    std::string text(count, '\0');
    if (!source.ReadAt(0, std::as_writable_bytes(std::span(text)))) {
        return {};
    }
    if (count < source.Size()) {
        const auto last = std::find_if(text.rbegin(), text.rend(), [](char c) { return c >= 0 && c < 0x30; });
        text.resize(static_cast<std::size_t>(text.rend() - last));
    }
    return text;
}

// Beginnings of the 8-bit texts that are not ASCII.
std::vector<std::string> SamplesOf(PropertySet& properties) {
    std::vector<std::string> samples;
    std::size_t total = 0;
    for (const ULONG tag : properties.Tags()) {
        if (PROP_TYPE(tag) != PT_STRING8 || total >= kMostOfAll) {
            continue;
        }
        if (const auto source = properties.Open(PROP_ID(tag))) {
            std::string text = BeginningOf(**source);
            total += text.size();
            if (!rtf::IsAscii(text)) {
                samples.push_back(std::move(text));
            }
        }
    }
    return samples;
}

// Undefined bytes of the Windows pages decode to C1 controls, which no text has.
bool IsValidIn(std::string_view text, UINT page) {
    const auto decoded = rtf::DecodeStrictly(text, page);
    return decoded && std::none_of(decoded->begin(), decoded->end(), [](WCHAR c) { return c >= 0x80 && c < 0xA0; });
}

UINT PageOfRtf(PropertySet& properties) {
    const auto source = properties.Open(PROP_ID(PR_RTF_COMPRESSED));
    auto reader = source ? rtf::CompressedRtfReader::Open(**source, rtf::Reading::Lenient)
                         : Result<rtf::CompressedRtfReader>(source.Failure());
    if (!reader) {
        return 0;
    }
    Bytes head(kRtfHead);
    const auto count = reader->Read(head);
    return count ? rtf::AnsiCodePage(ByteView(head).Part(0, *count)).value_or(0) : 0;
}

// The pages that the message's properties speak of, the most reliable first; 0 where they do not.
std::vector<UINT> DeclaredPages(PropertySet& properties) {
    const auto number = [&](ULONG tag) { return static_cast<UINT>(properties.Long(PROP_ID(tag)).value_or(0)); };
    return {number(PR_MESSAGE_CODEPAGE), PageOfRtf(properties), PageOfLocale(number(PR_MESSAGE_LOCALE_ID)),
            number(PR_INTERNET_CPID)};
}

}  // namespace

UINT StringPageOf(PropertySet& properties, UINT fallback) {
    std::vector<UINT> candidates = DeclaredPages(properties);
    std::erase_if(candidates, [](UINT page) { return !IsStringPage(page); });
    candidates.insert(candidates.end(), {fallback, kWesternPage, kUtf8Page});
    const std::vector<std::string> samples = SamplesOf(properties);
    const auto found = std::find_if(candidates.begin(), candidates.end(), [&](UINT page) {
        return std::all_of(samples.begin(), samples.end(),
                           [page](const std::string& text) { return IsValidIn(text, page); });
    });
    return found != candidates.end() ? *found : kWesternPage;
}

}  // namespace localmapi::msg
