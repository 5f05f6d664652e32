// Reads b-tree pages and checks them. Knows pages; knows nothing of what their entries mean. One thread at a time.
#pragma once

#include "localmapi/base/ByteSource.h"
#include "localmapi/base/Diagnostics.h"
#include "localmapi/base/Result.h"
#include "localmapi/pst/ndb/BufferCache.h"
#include "localmapi/pst/ndb/Ids.h"
#include "localmapi/pst/ndb/Layout.h"

#include <cstdint>
#include <optional>

namespace localmapi::pst {

// The two b-trees, by the type that their pages carry: [MS-PST] 2.2.2.7.1.
enum class TreeKind : std::uint8_t { Blocks = 0x80, Nodes = 0x81 };

// Entry `index` of a page, and its key: a block id without its bit 0, or a node id.
ByteView EntryOf(const Buffer& page, unsigned index) noexcept;
std::uint64_t KeyOf(const Layout& layout, TreeKind kind, ByteView entry) noexcept;

class PageReader {
public:
    // All are borrowed and outlive the reader.
    PageReader(ByteSource& source, const Layout& layout, BufferCache& cache, Diagnostics& problems) noexcept
        : m_source(&source), m_layout(&layout), m_cache(&cache), m_problems(&problems) {}

    // The page at `ref`, which is to belong to the tree `kind` and to stand at `level`; a root may stand at any.
    // Corrupt when it lies outside the file or cannot be a page of that tree. A page that only fails its CRC, or only
    // carries another id, is reported and given: its flags say so.
    Result<BufferHold> Read(PageRef ref, TreeKind kind, std::optional<unsigned> level);

    // Checks a page that lies at `at`, as it is stored, with nothing known of it but its place. Null unless everything
    // about it fits: trailer, CRC, signature, entries. For finding pages in a damaged file.
    BufferHold Recognize(FileOffset at, ByteView stored, TreeKind kind) const;

    const Layout& Form() const noexcept { return *m_layout; }
    ByteSource& Source() const noexcept { return *m_source; }
    Diagnostics& Problems() const noexcept { return *m_problems; }

private:
    Status CheckTrailer(Buffer& page, PageRef ref, TreeKind kind);
    Status CheckEntries(Buffer& page, PageRef ref, TreeKind kind, std::optional<unsigned> level) const;
    unsigned ExpectedEntrySize(TreeKind kind, unsigned level) const noexcept;
    void ReportDisorder(const Buffer& page, PageRef ref, TreeKind kind) const;

    ByteSource* m_source;
    const Layout* m_layout;
    BufferCache* m_cache;
    Diagnostics* m_problems;
};

}  // namespace localmapi::pst
