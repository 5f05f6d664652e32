// Compressed RTF, the form in which messages keep their RTF: [MS-OXRTFCP]. Reading goes in small pieces and never holds
// the whole value. One thread at a time for each object.
#pragma once

#include "localmapi/base/ByteSource.h"
#include "localmapi/base/Bytes.h"
#include "localmapi/base/Result.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace localmapi::rtf {

// The largest RTF that is written, or read strictly. Real bodies have a few megabytes, with pictures some tens.
inline constexpr std::uint64_t kMostRtf = std::uint64_t{256} << 20;

// What damage does to a reading.
enum class Reading : std::uint8_t {
    Strict,   // it is an error, which comes after everything before it has been delivered
    Lenient,  // it is the end of what can be had; only a value that is no compressed RTF at all is an error
};

// The RTF in a value, from its first byte to its last.
class CompressedRtfReader {
public:
    // Reads the header. Corrupt when the value is shorter than that or of no known type. Strictly also: Corrupt when the
    // value cannot hold as much as it declares, or leaves no room for its header; TooLarge when that is beyond kMostRtf.
    // `source` is borrowed and outlives the reader.
    static Result<CompressedRtfReader> Open(ByteSource& source, Reading reading = Reading::Strict);

    // The bytes of RTF that the header declares; in a damaged value they may be more or fewer.
    std::uint32_t RawSize() const noexcept { return m_rawSize; }

    // Copies the next bytes to `out`. Gives their count: fewer than asked only before the end or an error, 0 at the end
    // (or when nothing was asked for). Strictly: Corrupt when the value is cut short, has no end marker, fails its CRC
    // or decodes to another size than it declares; ReadFailed and the like as `source` says. An error stays.
    Result<std::size_t> Read(std::span<std::byte> out);

private:
    enum class Phase : std::uint8_t { Compressed, Stored, Ended };

    CompressedRtfReader(ByteSource& source, Reading reading) : m_source(&source), m_reading(reading) {}
    Status OpenStrictly();

    void FillInput();
    void DecodeSome();
    void DecodeGroup();
    void CopyMatch(std::size_t distance, std::size_t length);
    std::size_t RingPlace() const noexcept;

    std::size_t ReadStored(std::span<std::byte> out);
    void EndStored();
    void EndCompressed(bool hasEndMarker);
    void CutToRawSize();
    void Fail(ErrorCode code, const char* what);

    ByteSource* m_source;
    Reading m_reading;
    Phase m_phase = Phase::Ended;
    std::uint32_t m_rawSize = 0;
    std::uint32_t m_declaredCrc = 0;
    std::uint64_t m_declaredEnd = 0;  // of the value in the source, as its header says
    std::uint64_t m_end = 0;          // where reading ends: the declared end, or that of the source before it
    std::uint64_t m_next = 0;         // what of the source is read next
    std::uint32_t m_crc = 0;          // of all that was read
    std::optional<Error> m_failure;   // given once everything before it was delivered

    Bytes m_input;  // read, and decoded up to m_inputAt
    std::size_t m_inputAt = 0;
    std::size_t m_inputEnd = 0;

    // The last kRingSize bytes of output, and behind them what is decoded now: m_delivered <= m_decoded.
    Bytes m_window;
    std::size_t m_delivered = 0;
    std::size_t m_decoded = 0;
    std::uint64_t m_produced = 0;  // bytes decoded so far
};

// The RTF of a whole value. TooLarge beyond `limit`; otherwise as the reader above. Memory grows as bytes arrive: what
// the header declares is not believed.
Result<Bytes> Decompress(ByteSource& source, Reading reading = Reading::Strict, std::uint64_t limit = kMostRtf);
Result<Bytes> Decompress(ByteView value, Reading reading = Reading::Strict, std::uint64_t limit = kMostRtf);

// The value that holds `rtf`, compressed or merely wrapped. TooLarge beyond kMostRtf.
Result<Bytes> Compress(ByteView rtf);
Result<Bytes> Store(ByteView rtf);

}  // namespace localmapi::rtf
