// The forms of a message's body that are made from another form, as a message store makes them: plain text out of HTML
// or RTF, HTML out of RTF that carries it, and HTML as bytes, 8-bit text or wide text out of each other. A message whose
// file has no body at all has none.
#pragma once

#include "localmapi/model/MessageSource.h"
#include "localmapi/object/PropCore.h"

#include <memory>
#include <optional>
#include <vector>

namespace localmapi {

// Keeps the last form that it made. Called under the message's lock; `source` outlives it.
class BodyForms {
public:
    explicit BodyForms(MessageSource& source) noexcept : m_source(&source) {}

    // A form of PR_BODY or PR_HTML that is not stored in the type that `tag` asks for. NotFound for other properties,
    // and when there is nothing to make it from; Corrupt or ReadFailed when that cannot be read.
    Result<Content> Make(ULONG tag);

    // PR_BODY_W and PR_HTML where they would be made.
    std::vector<ULONG> Tags();

    // PR_NATIVE_BODY_INFO for a message that does not tell it: the form that the others are made from. 0: no body.
    std::int32_t NativeForm();

    // The page of PR_HTML's bytes where they are made here.
    UINT HtmlPage();

private:
    // Above it, a body is not turned into another form.
    static constexpr std::uint64_t kLargestBody = std::uint64_t{128} << 20;

    bool Has(ULONG id);
    bool CarriesHtml();
    Result<Bytes> ReadStored(ULONG id);
    Result<CStringW> ReadHtml();
    Result<CStringW> ReadPlain();
    Result<Bytes> ReadRtf();
    std::optional<std::int32_t> Number(ULONG tag);
    Content Keep(ULONG tag, Bytes bytes);

    MessageSource* m_source;
    std::optional<bool> m_carriesHtml;  // of the RTF
    ULONG m_keptTag = 0;
    std::shared_ptr<const Bytes> m_kept;
};

}  // namespace localmapi
