#include "localmapi/msg/TextWidth.h"

#include "localmapi/msg/ValueCoding.h"
#include "localmapi/props/Values.h"

#include <algorithm>
#include <string>

namespace localmapi::msg {

namespace {

constexpr std::size_t kPiece = std::size_t{64} << 10;

// The bytes of a narrow piece that end with a whole character. In the double-byte pages no byte below 0x30 is part of a
// longer character; a piece without one is taken as it is.
std::size_t WholeNarrow(ByteView piece) noexcept {
    for (std::size_t i = piece.Size(); i > 0; --i) {
        if (piece.U8(i - 1) < 0x30) {
            return i;
        }
    }
    return piece.Size();
}

// The bytes of a wide piece that end neither within a code unit nor within a surrogate pair.
std::size_t WholeWide(ByteView piece) noexcept {
    const std::size_t even = piece.Size() & ~std::size_t{1};
    const bool endsInPair = even > 2 && (piece.U16(even - 2) & 0xFC00) == 0xD800;
    return endsInPair ? even - 2 : even;
}

CStringW WideText(ByteView bytes) {
    CStringW text(bytes.Size() / 2, WCHAR{0});
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<WCHAR>(bytes.U16(2 * i));
    }
    return text;
}

Status Convert(ByteView piece, bool toWide, UINT codePage, const PieceSink& sink) {
    if (toWide) {
        Bytes wide;
        AppendUtf16(wide, ToWide({reinterpret_cast<const char*>(piece.Data()), piece.Size()}, codePage));
        return sink(wide);
    }
    const std::string narrow = ToNarrow(WideText(piece), codePage);
    return sink(ByteView(reinterpret_cast<const std::byte*>(narrow.data()), narrow.size()));
}

// Gives the text in pieces that end with whole characters.
Status ForEachPiece(ByteSource& text, ULONG tag, const PieceSink& take) {
    Bytes buffer(kPiece);
    for (std::uint64_t at = 0; at < text.Size();) {
        const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(text.Size() - at, kPiece));
        VX_TRY(text.ReadAt(at, std::span(buffer).first(count)));
        const ByteView read(buffer.data(), count);
        const bool isLast = at + count == text.Size();
        const std::size_t whole = isLast ? count : PROP_TYPE(tag) == PT_UNICODE ? WholeWide(read) : WholeNarrow(read);
        VX_TRY(take(read.Part(0, whole)));
        at += whole;
    }
    return {};
}

}  // namespace

Status CopyText(ByteSource& text, ULONG tag, ULONG targetTag, UINT codePage, const PieceSink& sink) {
    if (tag == targetTag || !IsText(tag)) {
        return ForEachPiece(text, PT_UNICODE, sink);
    }
    const bool toWide = PROP_TYPE(targetTag) == PT_UNICODE;
    return ForEachPiece(text, tag, [&](ByteView piece) { return Convert(piece, toWide, codePage, sink); });
}

Result<bool> FitsPage(ByteSource& wideText, UINT codePage) {
    bool fits = true;
    const Status read = ForEachPiece(wideText, PT_UNICODE, [&](ByteView piece) {
        const CStringW text = WideText(piece);
        fits = fits && ToWide(ToNarrow(text, codePage), codePage) == text;
        return Status();
    });
    if (!read) {
        return read.Failure();
    }
    return fits;
}

}  // namespace localmapi::msg
