// Texts of one width copied as texts of the other, in pieces of bounded size. Any thread.
#pragma once

#include "localmapi/base/ByteSource.h"
#include "localmapi/base/Result.h"
#include "mapi/MapiTypes.h"

#include <functional>

namespace localmapi::msg {

using PieceSink = std::function<Status(ByteView)>;

// Copies the text, of the type of `tag`, to `sink` as a text of the type of `targetTag`; what the page lacks becomes
// its replacement. Equal types, and other types, are copied as they are.
Status CopyText(ByteSource& text, ULONG tag, ULONG targetTag, UINT codePage, const PieceSink& sink);

// Whether a wide text can be kept in the page without loss.
Result<bool> FitsPage(ByteSource& wideText, UINT codePage);

}  // namespace localmapi::msg
