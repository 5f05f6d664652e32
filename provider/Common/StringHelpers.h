// Cutting and comparing wide text. Case counts except where told. Any thread; what allocates throws std::bad_alloc.
#pragma once

#include "platform/WideText.h"

#include <cstddef>
#include <vector>

bool StartsWith(const CStringW& text, const CStringW& prefix) noexcept;
bool EndsWith(const CStringW& text, const CStringW& suffix) noexcept;

// Whether two texts differ in nothing but the case of the letters A to Z.
bool EqualIgnoringAsciiCase(WideView first, WideView second) noexcept;

// Whether `data` begins with the UTF-16 bytes of `prefix`, the low byte of each unit first. Leaves a trace in the log.
bool StartsWith(const std::vector<unsigned char>& data, const CStringW& prefix) noexcept;

// Replaces `positions` by the index of every delimiter in `text`, and `length` as a last entry.
void Split(const WCHAR* text, std::size_t length, std::vector<std::size_t>& positions, WCHAR delimiter);

// Replaces `pieces` by the parts of `text` between delimiters. Empty parts are kept, or dropped with skipEmpty; so an
// empty text gives one empty piece, or none.
void SplitS(const CStringW& text, std::vector<CStringW>& pieces, WCHAR delimiter, bool skipEmpty);

// Cuts `name` to maxLength characters, the extension (given without its dot) included, which goes to the end:
//   a name that fits         stays as it is
//   a maxLength up to 5      the bare beginning of the name
//   an extension too long    for maxLength - 4: the name's beginning and ".tmp"
//   otherwise                the name's beginning, "." and the extension
void TrunkName(CStringW& name, const CStringW& extension, std::size_t maxLength);
