// Counts what the streams of a tree take from their files. A damaged directory can give the same sectors to any number
// of streams, so that a copy of a small file would never end; but streams cannot hold more than their file does.
#pragma once

#include "platform/linux/storage/StreamContent.h"

#include <cstdint>
#include <map>

namespace vx_storage {

class FileTally {
public:
    // False when the streams added so far hold more than their file.
    bool Add(const StreamContent& content) {
        if (content.BytesInFile() == 0) {
            return true;
        }
        std::uint64_t& taken = m_taken[content.File()];
        const std::uint64_t left = content.File()->SectorBytesInFile() - taken;
        taken += content.BytesInFile() <= left ? content.BytesInFile() : 0;
        return content.BytesInFile() <= left;
    }

private:
    std::map<const CompoundReader*, std::uint64_t> m_taken;
};

}  // namespace vx_storage
