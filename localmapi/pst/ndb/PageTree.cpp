#include "localmapi/pst/ndb/PageTree.h"

#include <algorithm>
#include <string>
#include <utility>

namespace localmapi::pst {

namespace {

Error NoSuchKey(TreeKind kind, std::uint64_t key) {
    return Error{ErrorCode::NotFound,
                 std::string(kind == TreeKind::Nodes ? "node " : "block ") + Hex(key) + " is not in the file"};
}

}  // namespace

PageRef PageTree::ChildAt(const Buffer& page, unsigned index) const noexcept {
    const ByteView entry = EntryOf(page, index);
    const unsigned width = m_pages->Form().idWidth;
    return {entry.Number(width, width), FileOffset{entry.Number(std::uint64_t{2} * width, width)}};
}

// The child with the highest key that is not above the wanted one, else the one with the lowest. All entries are looked
// at, so that a page whose entries are out of order still gives an answer.
unsigned PageTree::ChildFor(const Buffer& page, std::uint64_t key) const noexcept {
    unsigned best = 0;
    std::uint64_t bestKey = KeyOf(m_pages->Form(), m_kind, EntryOf(page, 0));
    for (unsigned i = 1; i < page.entryCount; ++i) {
        const std::uint64_t other = KeyOf(m_pages->Form(), m_kind, EntryOf(page, i));
        if (bestKey > key ? other < bestKey : other <= key && other > bestKey) {
            best = i;
            bestKey = other;
        }
    }
    return best;
}

std::optional<LeafEntry> PageTree::FindInLeaf(const BufferHold& page, std::uint64_t key) const noexcept {
    for (unsigned i = 0; i < page->entryCount; ++i) {
        const ByteView entry = EntryOf(*page, i);
        if (KeyOf(m_pages->Form(), m_kind, entry) == key) {
            return LeafEntry{page, entry};
        }
    }
    return std::nullopt;
}

Result<LeafEntry> PageTree::Find(std::uint64_t key) {
    PageRef ref = m_root;
    std::optional<unsigned> level;
    std::uint64_t lowest = 0;  // no key of the page in hand is below this one in a sound tree
    for (;;) {
        Result<BufferHold> page = m_pages->Read(ref, m_kind, level);
        if (!page) {
            return FindByScan(key, page.TakeFailure());
        }
        if ((*page)->level == 0) {
            if (auto entry = FindInLeaf(*page, key)) {
                return *std::move(entry);
            }
            // A page that was put to another use since its parent was written says nothing about this key.
            const bool strange = !(*page)->idFits && (*page)->entryCount > 0
                                 && KeyOf(m_pages->Form(), m_kind, EntryOf(**page, 0)) < lowest;
            return strange ? FindByScan(key, NoSuchKey(m_kind, key)) : Result<LeafEntry>(NoSuchKey(m_kind, key));
        }
        if (!(*page)->crcFits && m_scan->Covering(m_kind, key)) {
            return FindByScan(key, NoSuchKey(m_kind, key));
        }
        const unsigned child = ChildFor(**page, key);
        ref = ChildAt(**page, child);
        lowest = KeyOf(m_pages->Form(), m_kind, EntryOf(**page, child));
        level = (*page)->level - 1;  // each step goes down, so the search ends
    }
}

Result<LeafEntry> PageTree::FindByScan(std::uint64_t key, Error otherwise) {
    const std::optional<PageRef> leaf = m_scan->Covering(m_kind, key);
    if (otherwise.code != ErrorCode::NotFound) {
        m_pages->Problems().Report(otherwise.text + "; the pages below it are looked for in the whole file");
    }
    if (!leaf) {
        return otherwise;
    }
    VX_TRY_ASSIGN(const BufferHold page, m_pages->Read(*leaf, m_kind, 0));
    if (auto entry = FindInLeaf(page, key)) {
        return *std::move(entry);
    }
    return NoSuchKey(m_kind, key);
}

void PageTree::Walk(std::uint64_t from, const Visitor& visit) {
    WalkState state{&visit, {}};
    WalkPage(m_root, std::nullopt, Keys{from, UINT64_MAX}, state);
}

// The walks give false when the visitor wants no more. The key ranges of different pages of a level never meet, so that
// a tree that leads to the same pages again and again still costs no more than its file.
bool PageTree::WalkPage(PageRef ref, std::optional<unsigned> level, Keys keys, WalkState& state) {
    const auto lose = [&](const std::string& reason) {
        m_pages->Problems().Report(reason + "; its keys are looked for in the whole file");
        return WalkByScan(keys, state);
    };
    if (!state.visited.insert(ref.at.value).second) {
        return lose("page " + Hex(ref.id) + " at " + Hex(ref.at.value) + " stands in its b-tree twice");
    }
    const Result<BufferHold> page = m_pages->Read(ref, m_kind, level);
    if (!page) {
        return lose(page.Failure().text);
    }
    if ((*page)->level > 0) {
        return WalkInner(**page, keys, state);
    }
    if (IsStrange(**page, keys)) {
        return lose("page " + Hex(ref.id) + " at " + Hex(ref.at.value) + " was put to another use");
    }
    return WalkLeaf(**page, keys, state);
}

// A page that was put to another use since its parent was written says nothing about the keys that it once held.
bool PageTree::IsStrange(const Buffer& page, Keys keys) const noexcept {
    if (page.idFits || page.entryCount == 0) {
        return false;
    }
    const std::uint64_t first = KeyOf(m_pages->Form(), m_kind, EntryOf(page, 0));
    return first < keys.first || first > keys.last;
}

// The keys that Find would look for below entry `index`: from its own key, or the lowest of all, to the next higher one.
// None for the second of two equal entries.
std::optional<PageTree::Keys> PageTree::KeysBelow(const Buffer& page, unsigned index, Keys keys) const noexcept {
    const std::uint64_t own = KeyOf(m_pages->Form(), m_kind, EntryOf(page, index));
    bool isLowest = true;
    for (unsigned i = 0; i < page.entryCount; ++i) {
        const std::uint64_t other = KeyOf(m_pages->Form(), m_kind, EntryOf(page, i));
        if (other > own) {
            keys.last = std::min(keys.last, other - 1);
        } else if (other < own) {
            isLowest = false;
        } else if (i < index) {
            return std::nullopt;
        }
    }
    keys.first = isLowest ? keys.first : std::max(keys.first, own);
    return keys.first <= keys.last ? std::optional(keys) : std::nullopt;
}

bool PageTree::WalkInner(const Buffer& page, Keys keys, WalkState& state) {
    const std::uint64_t first = KeyOf(m_pages->Form(), m_kind, EntryOf(page, 0));
    if (!page.crcFits && m_scan->Covering(m_kind, std::max(keys.first, first))) {
        return WalkByScan(keys, state);
    }
    for (unsigned i = 0; i < page.entryCount; ++i) {
        const std::optional<Keys> below = KeysBelow(page, i, keys);
        if (below && !WalkPage(ChildAt(page, i), page.level - 1, *below, state)) {
            return false;
        }
    }
    return true;
}

bool PageTree::WalkLeaf(const Buffer& page, Keys keys, WalkState& state) const {
    for (unsigned i = 0; i < page.entryCount; ++i) {
        const ByteView entry = EntryOf(page, i);
        const std::uint64_t key = KeyOf(m_pages->Form(), m_kind, entry);
        if (key >= keys.first && key <= keys.last && !(*state.visit)(key, entry)) {
            return false;
        }
    }
    return true;
}

bool PageTree::WalkByScan(Keys keys, WalkState& state) {
    for (const LeafScan::Range& range : m_scan->From(m_kind, keys.first)) {
        if (range.first > keys.last) {
            break;
        }
        const Result<BufferHold> page = m_pages->Read(range.leaf, m_kind, 0);
        const Keys within{std::max(keys.first, range.first), std::min(keys.last, range.last)};
        if (page && !WalkLeaf(**page, within, state)) {
            return false;
        }
    }
    return true;
}

}  // namespace localmapi::pst
