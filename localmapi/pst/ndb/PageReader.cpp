#include "localmapi/pst/ndb/PageReader.h"

#include "localmapi/pst/ndb/Checksum.h"

#include <algorithm>
#include <memory>
#include <string>
#include <utility>

namespace localmapi::pst {

namespace {

constexpr unsigned kHighestLevel = 7;  // b-trees of eight levels hold more entries than a file has room for

std::string NameOf(PageRef ref, TreeKind kind) {
    return std::string(kind == TreeKind::Nodes ? "node" : "block") + " b-tree: page " + Hex(ref.id) + " at "
           + Hex(ref.at.value);
}

Error Broken(PageRef ref, TreeKind kind, const char* reason) {
    return Error{ErrorCode::Corrupt, NameOf(ref, kind) + " " + reason};
}

}  // namespace

ByteView EntryOf(const Buffer& page, unsigned index) noexcept {
    return ByteView(page.bytes).Part(std::uint64_t{index} * page.entrySize, page.entrySize);
}

std::uint64_t KeyOf(const Layout& layout, TreeKind kind, ByteView entry) noexcept {
    const std::uint64_t key = entry.Number(0, layout.idWidth);
    return kind == TreeKind::Nodes ? key & UINT32_MAX : BlockId::FromDisk(key).value;
}

unsigned PageReader::ExpectedEntrySize(TreeKind kind, unsigned level) const noexcept {
    if (level > 0) {
        return m_layout->InnerEntrySize();
    }
    return kind == TreeKind::Nodes ? m_layout->NodeEntrySize() : m_layout->BlockEntrySize();
}

Result<BufferHold> PageReader::Read(PageRef ref, TreeKind kind, std::optional<unsigned> level) {
    // Offsets of pages are even and keys of blocks odd, so that both live in one cache. A page that was asked for by
    // another name is looked at again.
    const std::size_t typeAt = m_layout->page.size - m_layout->page.trailerSize;
    if (BufferHold kept = m_cache->Find(ref.at.value);
        kept && kept->askedFor == ref.id && (!level || kept->level == *level)
        && ByteView(kept->bytes).U8(typeAt) == static_cast<std::uint8_t>(kind)) {
        return kept;
    }
    if (ref.at.value % m_layout->page.size != 0) {
        return Broken(ref, kind, "does not begin where a page can begin");
    }
    if (!Inside(ref.at.value, m_layout->page.size, m_source->Size())) {
        return Broken(ref, kind, "lies past the end of the file");
    }
    auto page = std::make_shared<Buffer>();
    page->bytes.resize(m_layout->page.size);
    VX_TRY(m_source->ReadAt(ref.at.value, page->bytes));
    VX_TRY(CheckTrailer(*page, ref, kind));
    VX_TRY(CheckEntries(*page, ref, kind, level));
    ReportDisorder(*page, ref, kind);
    page->askedFor = ref.id;
    if (page->crcFits) {  // what else such a page is taken to be hangs on who asks for it
        m_cache->Keep(ref.at.value, page);
    }
    return BufferHold(std::move(page));
}

// The types are outside the CRC: when it fits, one of them is enough.
Status PageReader::CheckTrailer(Buffer& page, PageRef ref, TreeKind kind) {
    const ByteView view(page.bytes);
    const ByteView trailer = view.Part(m_layout->page.size - m_layout->page.trailerSize);
    const auto type = static_cast<std::uint8_t>(kind);
    page.crcFits =
        Crc(view.Part(0, m_layout->page.size - m_layout->page.trailerSize)) == trailer.U32(m_layout->TrailerCrcAt());
    const int typesRight = (trailer.U8(0) == type ? 1 : 0) + (trailer.U8(1) == type ? 1 : 0);
    if (typesRight == 0 || (typesRight == 1 && !page.crcFits)) {
        return Broken(ref, kind, "is no page of this tree");
    }
    const std::uint64_t id = trailer.Number(m_layout->TrailerIdAt(), m_layout->idWidth);
    page.idFits = id == ref.id;
    const char* doubt = !page.crcFits                             ? " fails its CRC"
                        : typesRight == 1                         ? " carries two types"
                        : !page.idFits                            ? " carries another id"
                        : trailer.U16(2) != Signature(ref.at, id) ? " fails its signature"
                                                                  : nullptr;
    if (doubt != nullptr) {
        m_problems->Report(NameOf(ref, kind) + doubt + "; it is used with caution");
    }
    page.bytes[m_layout->page.size - m_layout->page.trailerSize] = std::byte{type};
    return {};
}

Status PageReader::CheckEntries(Buffer& page, PageRef ref, TreeKind kind, std::optional<unsigned> level) const {
    const ByteView view(page.bytes);
    page.level = view.U8(m_layout->page.levelAt);
    page.entrySize = view.U8(m_layout->page.entrySizeAt);
    page.entryCount = static_cast<unsigned>(view.Number(m_layout->page.countAt, m_layout->page.countWidth));
    if (!page.crcFits && level) {
        page.level = *level;  // the parent knows better than a page that fails its CRC
    }
    if (page.level > kHighestLevel || (level && page.level != *level)) {
        return Broken(ref, kind, "stands at a level where the tree cannot have it");
    }
    const unsigned expected = ExpectedEntrySize(kind, page.level);
    if (!page.crcFits) {
        page.entrySize = expected;
        page.entryCount = std::min(page.entryCount, m_layout->page.entriesSize / expected);
    }
    if (page.entrySize < expected || std::uint64_t{page.entryCount} * page.entrySize > m_layout->page.entriesSize) {
        return Broken(ref, kind, "claims more entries than fit into a page");
    }
    if (page.level > 0 && page.entryCount == 0) {
        return Broken(ref, kind, "has a level below it and no entries");
    }
    return {};
}

void PageReader::ReportDisorder(const Buffer& page, PageRef ref, TreeKind kind) const {
    for (unsigned i = 1; i < page.entryCount; ++i) {
        if (KeyOf(*m_layout, kind, EntryOf(page, i - 1)) >= KeyOf(*m_layout, kind, EntryOf(page, i))) {
            m_problems->Report(NameOf(ref, kind) + " holds its entries out of order; it is searched from end to end");
            return;
        }
    }
}

BufferHold PageReader::Recognize(FileOffset at, ByteView stored, TreeKind kind) const {
    const auto type = static_cast<std::uint8_t>(kind);
    const ByteView content = stored.Part(0, m_layout->page.size - m_layout->page.trailerSize);
    const ByteView trailer = stored.Part(m_layout->page.size - m_layout->page.trailerSize);
    const std::uint64_t id = trailer.Number(m_layout->TrailerIdAt(), m_layout->idWidth);
    if (trailer.U8(0) != type || trailer.U8(1) != type || trailer.U16(2) != Signature(at, id)
        || trailer.U32(m_layout->TrailerCrcAt()) != Crc(content)) {
        return nullptr;
    }
    auto page = std::make_shared<Buffer>();
    page->bytes.assign(stored.Data(), stored.Data() + stored.Size());
    if (!CheckEntries(*page, PageRef{id, at}, kind, std::nullopt)) {
        return nullptr;
    }
    return page;
}

}  // namespace localmapi::pst
