// The shape of a compressed RTF value, for the two who read and write it: [MS-OXRTFCP] 2.1.3.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace localmapi::rtf {

// The header: sizes, type and checksum, 32 bits each.
inline constexpr std::size_t kHeaderSize = 16;
inline constexpr std::size_t kRawSizeAt = 4;
inline constexpr std::size_t kTypeAt = 8;
inline constexpr std::size_t kCrcAt = 12;

// The first field counts the bytes behind itself.
inline constexpr std::uint32_t kSizeField = 4;

inline constexpr std::uint32_t kCompressedType = 0x75465A4C;  // the bytes "LZFu"
inline constexpr std::uint32_t kStoredType = 0x414C454D;      // the bytes "MELA"

// The ring that references point into. A reference to the place that is written next ends the data.
inline constexpr std::size_t kRingSize = 4096;
inline constexpr std::size_t kRingMask = kRingSize - 1;

inline constexpr std::size_t kShortestMatch = 2;
inline constexpr std::size_t kLongestMatch = 17;

// What one control byte announces: eight literals or references.
inline constexpr std::size_t kGroupItems = 8;
inline constexpr std::size_t kGroupInput = 1 + kGroupItems * 2;
inline constexpr std::size_t kGroupOutput = kGroupItems * kLongestMatch;

// What the ring holds to begin with, from its place 0 on; zeros follow.
inline constexpr std::string_view kPreset =
    "{\\rtf1\\ansi\\mac\\deff0\\deftab720{\\fonttbl;}{\\f0\\fnil \\froman \\fswiss \\fmodern \\fscript \\fdecor "
    "MS Sans SerifSymbolArialTimes New RomanCourier{\\colortbl\\red0\\green0\\blue0\r\n\\par "
    "\\pard\\plain\\f0\\fs20\\b\\i\\u\\tab\\tx";
static_assert(kPreset.size() == 207);

}  // namespace localmapi::rtf
