#include "platform/linux/storage/CompoundFile.h"

#include "platform/linux/storage/DirectoryReader.h"

#include <algorithm>

namespace vx_storage {

HRESULT CompoundFile::OpenImage() {
    return CompoundReader::Open(m_store->Bytes(), m_image);
}

HRESULT CompoundFile::ReadTree(std::shared_ptr<Node>& root) const {
    if (m_image == nullptr) {
        root = std::make_shared<Node>();
        return S_OK;
    }
    return ReadDirectory(m_image, root);
}

HRESULT CompoundFile::Save(Node& root, DWORD commitFlags) {
    if ((commitFlags & STGC_ONLYIFCURRENT) != 0 && !m_store->IsCurrent()) {
        return STG_E_NOTCURRENT;
    }
    ImageLayout layout;
    if (const HRESULT hr = PlanImage(root, layout); FAILED(hr)) {
        return hr;
    }
    // The tree itself is about to read from the new image. Whoever else holds the old one is another transaction, or an
    // element that is gone but still open.
    const auto inTree =
        std::ranges::count_if(layout.nodes, [&](const Node* node) { return node->content.File() == m_image.get(); });
    const bool keepOld = m_image != nullptr && m_image.use_count() > inTree + 1;
    const Durability durability =
        (commitFlags & STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE) != 0 ? Durability::Cached : Durability::OnDisk;
    std::shared_ptr<CompoundReader> image;
    const HRESULT hr = m_store->Replace(layout, m_image, keepOld, durability, image);
    if (image == nullptr) {
        return hr;
    }
    for (std::size_t id = 0; id < layout.nodes.size(); ++id) {
        const DirectoryEntry& entry = layout.entries[id];
        if (entry.type == EntryType::Stream) {
            layout.nodes[id]->content = StreamContent(image, entry.startSector, entry.size);
        }
    }
    m_image = std::move(image);
    return hr;
}

Transaction::Transaction(std::shared_ptr<Transaction> outer, std::shared_ptr<Node> published)
    : m_file(outer->File()),
      m_outer(std::move(outer)),
      m_published(std::move(published)),
      m_top(CopyTree(*m_published)),
      m_changed(false) {}

HRESULT Transaction::Commit(DWORD commitFlags) {
    if (!m_changed) {
        return S_OK;
    }
    if (m_outer == nullptr) {
        const HRESULT hr = m_file->Save(*m_top, commitFlags);
        m_changed = FAILED(hr);
        return hr;
    }
    const std::shared_ptr<Node> copy = CopyTree(*m_top);
    m_published->clsid = copy->clsid;
    m_published->stateBits = copy->stateBits;
    m_published->created = copy->created;
    m_published->modified = copy->modified;
    m_published->children = std::move(copy->children);
    m_outer->NoteChange();
    m_changed = false;
    return S_OK;
}

HRESULT Transaction::Revert() {
    if (m_outer != nullptr) {
        m_top = CopyTree(*m_published);
    } else if (const HRESULT hr = m_file->ReadTree(m_top); FAILED(hr)) {
        return hr;
    }
    m_changed = m_outer == nullptr && !m_file->HasImage();
    return S_OK;
}

}  // namespace vx_storage
