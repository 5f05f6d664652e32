#include "localmapi/pst/ndb/BlockReader.h"

#include "localmapi/pst/ndb/Checksum.h"
#include "localmapi/pst/ndb/Inflate.h"

#include <memory>
#include <string>
#include <utility>

namespace localmapi::pst {

namespace {

std::string Subject(NodeId owner, const BlockEntry& entry) {
    return Name(owner) + ": " + Name(entry.id) + " at " + Hex(entry.at.value);
}

Error Broken(NodeId owner, const BlockEntry& entry, const std::string& reason) {
    return Error{ErrorCode::Corrupt, Subject(owner, entry) + " " + reason};
}

// Keys of blocks in the cache are odd: bit 0 of a block's id is always clear, and so is that of a page's offset.
std::uint64_t CacheKey(BlockId id) noexcept {
    return id.value | 1;
}

}  // namespace

Result<BlockEntry> BlockReader::Find(BlockId id, NodeId owner) {
    Result<LeafEntry> found = m_tree->Find(id.value);
    if (!found) {
        const ErrorCode code = found.IsNotFound() ? ErrorCode::Corrupt : found.Failure().code;
        return Error{code, Name(owner) + ": " + found.Failure().text};
    }
    const Layout& layout = Form();
    const ByteView bytes = found->bytes;
    const unsigned sizeAt = 2 * layout.idWidth;
    BlockEntry entry{id, FileOffset{bytes.Number(layout.idWidth, layout.idWidth)}, bytes.U16(sizeAt),
                     bytes.U16(sizeAt)};
    if (layout.block.mayBeCompressed) {
        const std::uint32_t inflated = bytes.U16(sizeAt + 2);
        entry.size = inflated != 0 ? inflated : entry.storedSize;
    }
    if (entry.storedSize > layout.FullBlock() || entry.size > layout.FullBlock()) {
        return Broken(owner, entry, "is said to hold more than a block can");
    }
    if (!Inside(entry.at.value, RoundUp(entry.storedSize + layout.block.trailerSize, layout.block.alignment),
                FileSize())) {
        return Broken(owner, entry, "lies past the end of the file");
    }
    return entry;
}

Result<BufferHold> BlockReader::Read(BlockId id, NodeId owner) {
    if (BufferHold kept = m_cache->Find(CacheKey(id))) {
        return kept;
    }
    VX_TRY_ASSIGN(const BlockEntry entry, Find(id, owner));
    return Read(entry, owner);
}

Result<BufferHold> BlockReader::Read(const BlockEntry& entry, NodeId owner) {
    if (BufferHold kept = m_cache->Find(CacheKey(entry.id))) {
        return kept;
    }
    const Layout& layout = Form();
    Bytes stored(
        static_cast<std::size_t>(RoundUp(entry.storedSize + layout.block.trailerSize, layout.block.alignment)));
    if (Status read = m_pages->Source().ReadAt(entry.at.value, stored); !read) {
        return Error{read.Failure().code, Subject(owner, entry) + " cannot be read: " + read.Failure().text};
    }
    const ByteView view(stored);
    auto block = std::make_shared<Buffer>();
    VX_TRY_ASSIGN(block->crcFits, CheckTrailer(entry, owner, view.Part(0, entry.storedSize),
                                               view.Part(view.Size() - layout.block.trailerSize)));
    if (entry.size != entry.storedSize) {
        auto inflated = Inflate(view.Part(0, entry.storedSize), entry.size);
        if (!inflated) {
            return Broken(owner, entry,
                          "does not inflate to the " + std::to_string(entry.size) + " bytes that it is to hold");
        }
        block->bytes = *std::move(inflated);
    } else {
        stored.resize(entry.storedSize);
        block->bytes = std::move(stored);
    }
    if (!entry.id.IsInternal()) {
        Decode(m_encoding, entry.id, block->bytes);
    }
    m_cache->Keep(CacheKey(entry.id), block);
    return BufferHold(std::move(block));
}

Result<bool> BlockReader::CheckTrailer(const BlockEntry& entry, NodeId owner, ByteView stored, ByteView trailer) const {
    const Layout& layout = Form();
    const std::uint64_t rawId = trailer.Number(layout.TrailerIdAt(), layout.idWidth);
    const bool idFits = BlockId::FromDisk(rawId) == entry.id;
    const bool sizeFits = trailer.U16(0) == entry.storedSize;
    const bool crcFits = trailer.U32(layout.TrailerCrcAt()) == Crc(stored);
    // The CRC of zeros is zero: a zeroed block must not vouch for itself.
    const bool crcVouches = crcFits && trailer.U32(layout.TrailerCrcAt()) != 0;
    if (!crcVouches && !(idFits && sizeFits)) {
        return Broken(owner, entry, "is not there: neither id and size nor CRC are its own");
    }
    const char* doubt = !crcFits                                       ? " fails its CRC"
                        : !idFits                                      ? " carries another id"
                        : !sizeFits                                    ? " carries another size"
                        : trailer.U16(2) != Signature(entry.at, rawId) ? " fails its signature"
                                                                       : nullptr;
    if (doubt != nullptr) {
        Problems().Report(Subject(owner, entry) + doubt + "; it is read all the same");
    }
    return crcFits;
}

void BlockReader::SetDataEncoding(Encoding encoding) {
    if (encoding != m_encoding) {
        m_encoding = encoding;
        m_cache->Clear();
    }
}

}  // namespace localmapi::pst
