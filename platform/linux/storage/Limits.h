// What bounds the memory and the time that a compound file may cost, each with its reason.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vx_storage {

// Bytes of the file kept in memory: 64 lines of 8 KiB. A line serves 16 sectors of 512 bytes, so walking a table or
// reading small streams costs one system call for 8 KiB, and the random access of a table walk finds its lines again.
inline constexpr std::size_t kCacheLineBytes = 8 * 1024;
inline constexpr std::size_t kCacheLines = 64;

// Elements of one file. The directory is the one thing that is held whole (some 300 bytes an element), because every
// look-up, enumeration and change is about it. A message of thousands of recipients and attachments has some 100,000.
inline constexpr std::size_t kMaxElements = 512 * 1024;

// Storages inside storages. A walker holds an open object a level.
inline constexpr std::size_t kMaxDepth = 1024;

// Written data that waits for a commit in memory, per root; what goes beyond waits in the scratch file.
inline constexpr std::size_t kPendingMemoryBytes = 4 * 1024 * 1024;

// The unit in which written data is kept, and in which data is copied.
inline constexpr std::size_t kBlockBytes = 64 * 1024;

// Marks in a chain from which a backward seek starts again. At most this many sector numbers are kept per stream that
// was read, and at most one for every kChainMarkStride sectors of it.
inline constexpr std::size_t kMaxChainMarks = 512;
inline constexpr std::uint64_t kChainMarkStride = 64;

// The largest file and the largest stream of version 3: [MS-CFB] 2.6.3.
inline constexpr std::uint64_t kMaxImageBytes = 0x80000000;

}  // namespace vx_storage
