// Bodies of messages: compressed RTF, RTF and HTML. The input is read as each of them. Two ways to the same must agree:
// in small pieces and whole, strictly and leniently, compressed again and read back.
#include "localmapi/rtf/CompressedRtf.h"
#include "localmapi/rtf/CompressedRtfWriter.h"
#include "localmapi/rtf/HtmlText.h"
#include "localmapi/rtf/RtfText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <optional>
#include <span>

namespace {

using namespace localmapi;
using namespace localmapi::rtf;

void Require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

struct Outcome {
    Bytes rtf;
    bool hasFailed = false;
};

// Nothing when the header is refused.
std::optional<Outcome> ReadInPieces(ByteView value, Reading reading) {
    MemorySource source(value);
    Result<CompressedRtfReader> reader = CompressedRtfReader::Open(source, reading);
    if (!reader) {
        return std::nullopt;
    }
    Outcome outcome;
    std::array<std::byte, 61> piece;
    for (;;) {
        const Result<std::size_t> count = reader->Read(piece);
        if (!count || *count == 0) {
            outcome.hasFailed = !count;
            return outcome;
        }
        outcome.rtf.insert(outcome.rtf.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(*count));
    }
}

void ReadValue(ByteView value) {
    const auto strict = ReadInPieces(value, Reading::Strict);
    const auto lenient = ReadInPieces(value, Reading::Lenient);
    const Result<Bytes> whole = Decompress(value);
    Require(bool{whole} == (strict && !strict->hasFailed));
    Require(!whole || *whole == strict->rtf);
    Require(lenient || !strict);
    Require(!lenient || !lenient->hasFailed);
    // What strictness refuses to go on with is a beginning of what can be had.
    Require(!strict
            || (strict->rtf.size() <= lenient->rtf.size()
                && std::equal(strict->rtf.begin(), strict->rtf.end(), lenient->rtf.begin())));
}

void WriteAndReadBack(ByteView rtf) {
    const Result<Bytes> value = Compress(rtf);
    const Result<Bytes> again = Decompress(*value);
    Require(again && std::equal(again->begin(), again->end(), rtf.Span().begin(), rtf.Span().end()));
    CompressedRtfWriter writer;
    for (ByteView rest = rtf; !rest.IsEmpty(); rest = rest.Part(5)) {
        Require(bool{writer.Append(rest.Part(0, 5))});
    }
    Require(writer.Finish() == *value);
}

void ReadText(ByteView document) {
    const RtfKind kind = KindOf(document);
    AnsiCodePage(document);
    const CStringW html = HtmlOf(document);
    const CStringW text = TextOf(document);
    Require(kind == RtfKind::EncapsulatedHtml ? text == TextOfHtml(html) : html.empty());
    Require(kind != RtfKind::NotRtf || text.empty());
    // The longest that a byte can become is an entity or the lines and mark before it.
    Require(text.size() <= document.Size() * 4 && html.size() <= document.Size() * 4);

    const UINT pages[] = {0, 932, 1252, 65001, 50220};
    const UINT page = pages[document.Size() % std::size(pages)];
    const CStringW decoded = DecodeHtml(document, page);
    Require(decoded.size() <= document.Size() * 2);
    Require(TextOfHtml(decoded).size() <= decoded.size() * 4);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // A copy, so that a read beyond the input is a read beyond a block.
    const auto bytes = std::as_bytes(std::span(data, size));
    const Bytes input(bytes.begin(), bytes.end());
    ReadValue(input);
    WriteAndReadBack(input);
    ReadText(input);
    if (const Result<Bytes> rtf = Decompress(input, Reading::Lenient)) {
        ReadText(*rtf);
    }
    return 0;
}
