#include "localmapi/rtf/CompressedRtf.h"

#include "localmapi/base/Crc.h"
#include "localmapi/base/Format.h"
#include "localmapi/rtf/CompressedRtfFormat.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <utility>

namespace localmapi::rtf {

namespace {

constexpr std::size_t kInputPiece = 8192;
constexpr std::size_t kOutputPiece = 16384;

// A match is copied as if it were the longest; the window has room for what is too much.
constexpr std::size_t kCopyStep = 16;
constexpr std::size_t kSlack = kLongestMatch;

// Two bytes of a reference give 17 bytes at most. A value that declares more than this is lying, or was cut.
constexpr std::uint64_t MostRawSize(std::uint64_t valueSize) {
    return valueSize * 20 + 4096;
}

// Some writers count most of the header into the raw size; the whole size is right then.
constexpr std::uint64_t EndOfStored(std::uint64_t declaredEnd, std::uint32_t rawSize) {
    const std::uint64_t byRawSize = std::uint64_t{rawSize} + kHeaderSize;
    return declaredEnd < kHeaderSize ? byRawSize : std::min(declaredEnd, byRawSize);
}

}  // namespace

Result<CompressedRtfReader> CompressedRtfReader::Open(ByteSource& source, Reading reading) {
    std::array<std::byte, kHeaderSize> bytes{};
    if (source.Size() < bytes.size()) {
        return Error{ErrorCode::Corrupt,
                     "a value of " + std::to_string(source.Size()) + " bytes is too short for compressed RTF"};
    }
    VX_TRY(source.ReadAt(0, bytes));
    const ByteView header(bytes.data(), bytes.size());
    const std::uint32_t type = header.U32(kTypeAt);
    if (type != kCompressedType && type != kStoredType) {
        return Error{ErrorCode::Corrupt, "the value is no compressed RTF: its type is " + Hex(type)};
    }
    CompressedRtfReader reader(source, reading);
    reader.m_rawSize = header.U32(kRawSizeAt);
    reader.m_declaredCrc = header.U32(kCrcAt);
    reader.m_declaredEnd = std::uint64_t{header.U32(0)} + kSizeField;
    reader.m_next = kHeaderSize;
    if (type == kStoredType) {
        reader.m_phase = Phase::Stored;
        reader.m_declaredEnd = EndOfStored(reader.m_declaredEnd, reader.m_rawSize);
    } else {
        reader.m_phase = Phase::Compressed;
        reader.m_input.resize(kInputPiece);
        reader.m_window.resize(kRingSize + kOutputPiece + kSlack);
        std::memcpy(reader.m_window.data() + kRingSize - kPreset.size(), kPreset.data(), kPreset.size());
        reader.m_delivered = kRingSize;
        reader.m_decoded = kRingSize;
    }
    if (reading == Reading::Strict) {
        VX_TRY(reader.OpenStrictly());
    } else if (reader.m_declaredEnd < kHeaderSize) {
        reader.m_declaredEnd = source.Size();
    }
    reader.m_end = std::min(reader.m_declaredEnd, source.Size());
    return reader;
}

Status CompressedRtfReader::OpenStrictly() {
    if (m_rawSize > kMostRtf) {
        return Error{ErrorCode::TooLarge, "the compressed RTF declares " + std::to_string(m_rawSize) + " bytes"};
    }
    if (m_rawSize > MostRawSize(m_source->Size())) {
        return Error{ErrorCode::Corrupt, "a value of " + std::to_string(m_source->Size()) + " bytes cannot hold the "
                                             + std::to_string(m_rawSize) + " bytes of RTF that it declares"};
    }
    if (m_declaredEnd < kHeaderSize) {
        return Error{ErrorCode::Corrupt, "the compressed RTF declares a size smaller than its header"};
    }
    return {};
}

Result<std::size_t> CompressedRtfReader::Read(std::span<std::byte> out) {
    if (m_phase == Phase::Stored) {
        if (const std::size_t count = ReadStored(out); count > 0 || out.empty()) {
            return count;
        }
    }
    std::size_t count = 0;
    while (count < out.size()) {
        if (m_delivered == m_decoded) {
            if (m_phase != Phase::Compressed) {
                break;
            }
            DecodeSome();
            continue;
        }
        const ByteView ready(m_window.data() + m_delivered, m_decoded - m_delivered);
        const std::size_t copied = CopyInto(out.subspan(count), ready);
        count += copied;
        m_delivered += copied;
    }
    if (count == 0 && !out.empty() && m_failure) {
        return *m_failure;
    }
    return count;
}

// Tops up the input, so that it holds a whole group unless the value ends before that.
void CompressedRtfReader::FillInput() {
    const std::size_t left = m_inputEnd - m_inputAt;
    std::memmove(m_input.data(), m_input.data() + m_inputAt, left);
    m_inputAt = 0;
    m_inputEnd = left;
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(m_input.size() - left, m_end - m_next));
    const std::span<std::byte> piece = std::span(m_input).subspan(left, count);
    if (count == 0) {
        return;
    }
    if (Status read = m_source->ReadAt(m_next, piece); !read) {
        m_failure = read.TakeFailure();
        m_end = m_next;
        return;
    }
    if (m_reading == Reading::Strict) {
        m_crc = Crc(ByteView(piece.data(), piece.size()), m_crc);
    }
    m_next += count;
    m_inputEnd += count;
}

// Decodes until the window is full. Everything in it has been delivered.
void CompressedRtfReader::DecodeSome() {
    if (m_decoded > kRingSize) {
        std::memmove(m_window.data(), m_window.data() + m_decoded - kRingSize, kRingSize);
        m_decoded = kRingSize;
        m_delivered = kRingSize;
    }
    while (m_phase == Phase::Compressed && m_decoded + kGroupOutput <= kRingSize + kOutputPiece) {
        if (m_inputEnd - m_inputAt < kGroupInput) {
            FillInput();
        }
        DecodeGroup();
    }
    CutToRawSize();
}

void CompressedRtfReader::DecodeGroup() {
    const std::size_t first = m_decoded;
    if (m_inputAt == m_inputEnd) {
        EndCompressed(false);
        return;
    }
    unsigned control = std::to_integer<unsigned>(m_input[m_inputAt++]);
    for (std::size_t item = 0; item < kGroupItems; ++item, control >>= 1) {
        const bool isReference = (control & 1) != 0;
        if (m_inputEnd - m_inputAt < (isReference ? 2U : 1U)) {
            m_produced += m_decoded - first;
            EndCompressed(false);
            return;
        }
        if (!isReference) {
            m_window[m_decoded++] = m_input[m_inputAt++];
            continue;
        }
        const unsigned reference =
            std::to_integer<unsigned>(m_input[m_inputAt]) << 8 | std::to_integer<unsigned>(m_input[m_inputAt + 1]);
        m_inputAt += 2;
        const std::size_t place = (RingPlace() + (m_decoded - first)) & kRingMask;
        const std::size_t distance = (place - (reference >> 4)) & kRingMask;
        if (distance == 0) {
            m_produced += m_decoded - first;
            EndCompressed(true);
            return;
        }
        CopyMatch(distance, (reference & 0xF) + kShortestMatch);
    }
    m_produced += m_decoded - first;
}

// Where the ring is written next, as of the group's beginning.
std::size_t CompressedRtfReader::RingPlace() const noexcept {
    return static_cast<std::size_t>((kPreset.size() + m_produced) & kRingMask);
}

void CompressedRtfReader::CopyMatch(std::size_t distance, std::size_t length) {
    std::byte* to = m_window.data() + m_decoded;
    const std::byte* from = to - distance;
    if (distance >= kCopyStep) {
        std::memcpy(to, from, kCopyStep);
        std::memcpy(to + kCopyStep, from + kCopyStep, 1);
        static_assert(kLongestMatch == kCopyStep + 1);
    } else {
        // The match reaches into what it writes: bytes are repeated.
        for (std::size_t i = 0; i < length; ++i) {
            to[i] = from[i];
        }
    }
    m_decoded += length;
}

std::size_t CompressedRtfReader::ReadStored(std::span<std::byte> out) {
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(out.size(), m_end - m_next));
    if (count > 0) {
        if (Status read = m_source->ReadAt(m_next, out.first(count)); read) {
            m_next += count;
            return count;
        } else {
            m_failure = read.TakeFailure();
        }
    }
    if (!out.empty()) {
        EndStored();
    }
    return 0;
}

void CompressedRtfReader::EndStored() {
    m_phase = Phase::Ended;
    if (m_end < m_declaredEnd) {
        Fail(ErrorCode::Corrupt, "the stored RTF is cut short");
    }
    if (m_reading == Reading::Lenient) {
        m_failure.reset();
    }
}

// The checks go from the cause to its consequences: a value that is cut has no end marker and fails its CRC too.
void CompressedRtfReader::EndCompressed(bool hasEndMarker) {
    m_phase = Phase::Ended;
    if (m_reading == Reading::Lenient) {
        m_failure.reset();
        return;
    }
    while (m_next < m_end && !m_failure) {
        m_inputAt = m_inputEnd;
        FillInput();
    }
    if (m_declaredEnd > m_source->Size()) {
        Fail(ErrorCode::Corrupt, "the compressed RTF is cut short");
    } else if (m_crc != m_declaredCrc) {
        Fail(ErrorCode::Corrupt, "the compressed RTF fails its CRC");
    } else if (!hasEndMarker) {
        Fail(ErrorCode::Corrupt, "the compressed RTF has no end marker");
    } else if (m_produced != m_rawSize) {
        Fail(ErrorCode::Corrupt, "the compressed RTF decodes to another size than it declares");
    }
}

// More than was declared is not delivered: strictly not a byte of it, otherwise not beyond what is read of any value.
void CompressedRtfReader::CutToRawSize() {
    const std::uint64_t most = m_reading == Reading::Strict ? m_rawSize : kMostRtf;
    if (m_produced > most) {
        m_decoded -= static_cast<std::size_t>(std::min<std::uint64_t>(m_produced - most, m_decoded - kRingSize));
        if (m_phase == Phase::Compressed) {
            EndCompressed(true);
        }
    }
}

// The first reason stays.
void CompressedRtfReader::Fail(ErrorCode code, const char* what) {
    if (!m_failure) {
        m_failure = Error{code, what};
    }
}

Result<Bytes> Decompress(ByteSource& source, Reading reading, std::uint64_t limit) {
    VX_TRY_ASSIGN(CompressedRtfReader reader, CompressedRtfReader::Open(source, reading));
    const std::uint64_t expected = std::min({std::uint64_t{reader.RawSize()}, MostRawSize(source.Size()), limit});
    Bytes rtf(static_cast<std::size_t>(expected) + 1);  // the end is seen at the first reading
    std::size_t size = 0;
    for (;;) {
        VX_TRY_ASSIGN(const std::size_t count, reader.Read(std::span(rtf).subspan(size)));
        size += count;
        if (size > limit) {
            return Error{ErrorCode::TooLarge, "the RTF has more than " + std::to_string(limit) + " bytes"};
        }
        if (count == 0) {
            rtf.resize(size);
            return rtf;
        }
        if (size == rtf.size()) {
            rtf.resize(size + std::max(size, kOutputPiece));
        }
    }
}

Result<Bytes> Decompress(ByteView value, Reading reading, std::uint64_t limit) {
    MemorySource source(value);
    return Decompress(source, reading, limit);
}

}  // namespace localmapi::rtf
