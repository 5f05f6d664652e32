// Makes the compressed form of RTF that arrives in pieces: [MS-OXRTFCP] 3.1.4. One thread at a time.
#pragma once

#include "localmapi/base/Bytes.h"
#include "localmapi/base/Result.h"
#include "localmapi/rtf/CompressedRtf.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace localmapi::rtf {

class CompressedRtfWriter {
public:
    CompressedRtfWriter();

    // Adds the next bytes of RTF. TooLarge when there would be more than kMostRtf; nothing of `rtf` is taken then.
    Status Append(ByteView rtf);

    // The whole value, header included. Ends the writer: only its destruction may follow.
    Bytes Finish();

private:
    // A place in the preset dictionary and the RTF behind it, counted from 1; 0 is no place.
    using Place = std::uint32_t;

    struct Match {
        Place from = 0;
        std::size_t length = 0;
    };

    void EncodeUpTo(std::size_t end);
    void ForgetOld();
    Match FindMatch(std::size_t at) const;
    std::size_t MatchLength(Place candidate, std::size_t at) const;
    void Remember(std::size_t at);
    Place PlaceOf(std::size_t at) const noexcept { return static_cast<Place>(m_dropped + at + 1); }
    std::size_t IndexOf(Place place) const noexcept { return place - 1 - m_dropped; }
    void PutReference(std::size_t ringPlace, std::size_t lengthField);
    void AnnounceItem(bool isReference);

    Bytes m_text;               // the preset and the RTF, but for what no reference reaches any more
    std::size_t m_dropped = 0;  // bytes that were there before m_text
    std::size_t m_next = 0;     // index in m_text of what is encoded next

    std::vector<Place> m_lastPair;    // by the two bytes of a pair: where it came last
    std::vector<Place> m_lastTriple;  // by the hash of three bytes
    std::vector<Place> m_beforeThat;  // by the place in the ring: the place of the same hash before it

    Bytes m_value;
    std::size_t m_controlAt = 0;  // in m_value
    unsigned m_items = 0;         // announced by that control byte
};

}  // namespace localmapi::rtf
