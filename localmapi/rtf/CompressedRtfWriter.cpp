#include "localmapi/rtf/CompressedRtfWriter.h"

#include "localmapi/base/Crc.h"
#include "localmapi/rtf/CompressedRtfFormat.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string>
#include <utility>

namespace localmapi::rtf {

namespace {

constexpr unsigned kHashBits = 14;

// Candidates that are compared for one match. Text has fewer; what repeats itself without end would take the square of
// its size.
constexpr int kMostCandidates = 256;

// The last bytes wait for more: the longest match there, and what to remember of it, is not known yet. So the value does
// not depend on the pieces in which the RTF arrives.
constexpr std::size_t kLookahead = kLongestMatch + kShortestMatch;

// Old text is dropped when this much of it has gathered.
constexpr std::size_t kDropAt = 8 * kRingSize;

unsigned At(const Bytes& bytes, std::size_t index) {
    return std::to_integer<unsigned>(bytes[index]);
}

std::size_t PairAt(const Bytes& bytes, std::size_t index) {
    return At(bytes, index) << 8 | At(bytes, index + 1);
}

std::size_t TripleHashAt(const Bytes& bytes, std::size_t index) {
    const std::uint32_t triple = At(bytes, index) << 16 | At(bytes, index + 1) << 8 | At(bytes, index + 2);
    return (triple * 2'654'435'761U) >> (32 - kHashBits);
}

void PutNumber(Bytes& bytes, std::size_t at, std::uint32_t number) {
    for (std::size_t i = 0; i < 4; ++i) {
        bytes[at + i] = static_cast<std::byte>(number >> (8 * i));
    }
}

Bytes WithHeader(std::uint32_t type, std::size_t rawSize, std::size_t room) {
    Bytes value;
    value.reserve(kHeaderSize + room);
    value.resize(kHeaderSize);
    PutNumber(value, kRawSizeAt, static_cast<std::uint32_t>(rawSize));
    PutNumber(value, kTypeAt, type);
    return value;
}

void PutSize(Bytes& value) {
    PutNumber(value, 0, static_cast<std::uint32_t>(value.size() - kSizeField));
}

Error TooLarge(std::uint64_t size) {
    return {ErrorCode::TooLarge, std::to_string(size) + " bytes of RTF are too many to be kept in a message"};
}

}  // namespace

CompressedRtfWriter::CompressedRtfWriter()
    : m_lastPair(std::size_t{1} << 16),
      m_lastTriple(std::size_t{1} << kHashBits),
      m_beforeThat(kRingSize),
      m_value(WithHeader(kCompressedType, 0, 0)) {
    const auto preset = std::as_bytes(std::span(kPreset));
    m_text.assign(preset.begin(), preset.end());
    for (; m_next < kPreset.size() - kShortestMatch; ++m_next) {
        Remember(m_next);
    }
    m_next = kPreset.size();
}

Status CompressedRtfWriter::Append(ByteView rtf) {
    const std::uint64_t before = m_dropped + m_text.size() - kPreset.size();
    if (rtf.Size() > kMostRtf - before) {
        return TooLarge(before + rtf.Size());
    }
    while (!rtf.IsEmpty()) {
        const ByteView piece = rtf.Part(0, kDropAt);
        rtf = rtf.Part(piece.Size());
        m_text.insert(m_text.end(), piece.Span().begin(), piece.Span().end());
        EncodeUpTo(m_text.size() - std::min(m_text.size(), kLookahead));
        ForgetOld();
    }
    return {};
}

Bytes CompressedRtfWriter::Finish() {
    EncodeUpTo(m_text.size());
    const std::size_t end = m_dropped + m_text.size();
    PutReference(end & kRingMask, 0);
    PutNumber(m_value, kRawSizeAt, static_cast<std::uint32_t>(end - kPreset.size()));
    PutNumber(m_value, kCrcAt, Crc(ByteView(m_value).Part(kHeaderSize)));
    PutSize(m_value);
    return std::move(m_value);
}

// Encodes what begins before `end`. A match may reach beyond it.
void CompressedRtfWriter::EncodeUpTo(std::size_t end) {
    while (m_next < end) {
        const Match match = FindMatch(m_next);
        if (match.length >= kShortestMatch) {
            PutReference((match.from - 1) & kRingMask, match.length - kShortestMatch);
        } else {
            AnnounceItem(false);
            m_value.push_back(m_text[m_next]);
        }
        for (const std::size_t after = m_next + std::max<std::size_t>(match.length, 1); m_next < after; ++m_next) {
            Remember(m_next);
        }
    }
}

void CompressedRtfWriter::ForgetOld() {
    if (m_next < kDropAt + kRingSize) {
        return;
    }
    const std::size_t count = m_next - kRingSize;
    m_text.erase(m_text.begin(), m_text.begin() + static_cast<std::ptrdiff_t>(count));
    m_dropped += count;
    m_next -= count;
}

// The longest earlier text that is also at `at`, the nearest among equals. A match may reach into what it describes:
// a reader copies byte by byte.
CompressedRtfWriter::Match CompressedRtfWriter::FindMatch(std::size_t at) const {
    const std::size_t most = std::min(m_text.size() - at, kLongestMatch);
    if (most < kShortestMatch) {
        return {};
    }
    const Place here = PlaceOf(at);
    const auto isReached = [here](Place place) { return place != 0 && here - place < kRingSize; };
    Match best;
    if (most > kShortestMatch) {
        Place candidate = m_lastTriple[TripleHashAt(m_text, at)];
        for (int tries = 0; isReached(candidate) && tries < kMostCandidates && best.length < most; ++tries) {
            const std::size_t index = IndexOf(candidate);
            if (m_text[index + best.length] == m_text[at + best.length]) {
                if (const std::size_t length = MatchLength(candidate, at); length > best.length) {
                    best = {candidate, length};
                }
            }
            const Place earlier = m_beforeThat[(candidate - 1) & kRingMask];
            candidate = earlier < candidate ? earlier : 0;
        }
    }
    if (best.length < kShortestMatch) {
        if (const Place pair = m_lastPair[PairAt(m_text, at)]; isReached(pair)) {
            best = {pair, kShortestMatch};
        }
    }
    return best;
}

std::size_t CompressedRtfWriter::MatchLength(Place candidate, std::size_t at) const {
    const std::size_t most = std::min(m_text.size() - at, kLongestMatch);
    const std::size_t from = IndexOf(candidate);
    std::size_t length = 0;
    while (length < most && m_text[from + length] == m_text[at + length]) {
        ++length;
    }
    return length;
}

// Makes the text at `at` findable. The last two bytes of all are never looked for.
void CompressedRtfWriter::Remember(std::size_t at) {
    if (at + kShortestMatch >= m_text.size()) {
        return;
    }
    const Place here = PlaceOf(at);
    m_lastPair[PairAt(m_text, at)] = here;
    Place& last = m_lastTriple[TripleHashAt(m_text, at)];
    m_beforeThat[(here - 1) & kRingMask] = last;
    last = here;
}

void CompressedRtfWriter::PutReference(std::size_t ringPlace, std::size_t lengthField) {
    AnnounceItem(true);
    const std::size_t reference = ringPlace << 4 | lengthField;
    m_value.push_back(static_cast<std::byte>(reference >> 8));
    m_value.push_back(static_cast<std::byte>(reference & 0xFF));
}

void CompressedRtfWriter::AnnounceItem(bool isReference) {
    if (m_items % kGroupItems == 0) {
        m_controlAt = m_value.size();
        m_value.push_back(std::byte{0});
        m_items = 0;
    }
    if (isReference) {
        m_value[m_controlAt] |= std::byte{1} << m_items;
    }
    ++m_items;
}

Result<Bytes> Compress(ByteView rtf) {
    CompressedRtfWriter writer;
    VX_TRY(writer.Append(rtf));
    return writer.Finish();
}

Result<Bytes> Store(ByteView rtf) {
    if (rtf.Size() > kMostRtf) {
        return TooLarge(rtf.Size());
    }
    Bytes value = WithHeader(kStoredType, rtf.Size(), rtf.Size());
    value.insert(value.end(), rtf.Span().begin(), rtf.Span().end());
    PutSize(value);
    return value;
}

}  // namespace localmapi::rtf
