#include "platform/linux/storage/DirectoryReader.h"

#include "platform/linux/storage/Limits.h"

#include <unordered_set>
#include <utility>
#include <vector>

namespace vx_storage {
namespace {

class DirectoryWalk {
public:
    explicit DirectoryWalk(const std::shared_ptr<CompoundReader>& file) : m_file(file) {}

    HRESULT Run(const std::shared_ptr<Node>& root) {
        const DirectoryEntry& entry = m_file->Root();
        root->clsid = entry.clsid;
        root->stateBits = entry.stateBits;
        root->created = entry.created;
        root->modified = entry.modified;
        m_seen.insert(0);
        Visit(entry.child, *root, 0);
        while (!m_left.empty()) {
            if (m_seen.size() > kMaxElements) {
                return STG_E_DOCFILETOOLARGE;
            }
            Step step = std::move(m_left.back());
            m_left.pop_back();
            if (step.entry.type == EntryType::Unused) {
                if (const HRESULT hr = Expand(step); FAILED(hr)) {
                    return hr;
                }
            } else {
                Place(std::move(step));
            }
        }
        return S_OK;
    }

private:
    // Something left to do: read entry `id` and what hangs on it, or, with the entry read, give it its place.
    struct Step {
        std::uint32_t id;
        Node* storage;      // owned by the tree
        std::size_t depth;  // of that storage
        DirectoryEntry entry;
    };

    void Visit(std::uint32_t id, Node& storage, std::size_t depth) {
        if (id != kNoEntry && m_seen.insert(id).second) {
            m_left.push_back({id, &storage, depth, {}});
        }
    }

    // Left neighbours before the entry before right ones: where two elements have one name, the first in order stays.
    HRESULT Expand(const Step& step) {
        DirectoryEntry entry;
        const HRESULT hr = m_file->ReadEntry(step.id, entry);
        if (FAILED(hr)) {
            return hr == STG_E_DOCFILECORRUPT ? S_OK : hr;
        }
        if (entry.type == EntryType::Unused) {
            return S_OK;
        }
        const std::uint32_t left = entry.left;
        Visit(entry.right, *step.storage, step.depth);
        m_left.push_back({step.id, step.storage, step.depth, std::move(entry)});
        Visit(left, *step.storage, step.depth);
        return S_OK;
    }

    void Place(Step&& step) {
        DirectoryEntry& entry = step.entry;
        if (entry.name.empty()) {
            return;
        }
        auto node = std::make_shared<Node>();
        node->name = entry.name;
        if (entry.type == EntryType::Stream) {
            node->kind = NodeKind::Stream;
            node->content = StreamContent(m_file, entry.startSector, entry.size);
        } else {
            node->clsid = entry.clsid;
            node->stateBits = entry.stateBits;
            node->created = entry.created;
            node->modified = entry.modified;
        }
        Node& placed = *node;
        const bool isNew = step.storage->children.emplace(std::move(entry.name), std::move(node)).second;
        if (isNew && placed.kind == NodeKind::Storage && step.depth + 1 < kMaxDepth) {
            Visit(entry.child, placed, step.depth + 1);
        }
    }

    const std::shared_ptr<CompoundReader>& m_file;
    std::vector<Step> m_left;
    std::unordered_set<std::uint32_t> m_seen;
};

}  // namespace

HRESULT ReadDirectory(const std::shared_ptr<CompoundReader>& file, std::shared_ptr<Node>& root) {
    auto tree = std::make_shared<Node>();
    const HRESULT hr = DirectoryWalk(file).Run(tree);
    if (SUCCEEDED(hr)) {
        root = std::move(tree);
    }
    return hr;
}

}  // namespace vx_storage
