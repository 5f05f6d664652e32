// One opened compound file: the image that it reads from, what is written and not committed, and the step from a tree
// of elements to a new image. Shared by all objects opened from one root. One thread at a time.
#pragma once

#include "platform/linux/storage/ImageStore.h"
#include "platform/linux/storage/Node.h"
#include "platform/linux/storage/PendingData.h"

#include <memory>

namespace vx_storage {

class CompoundFile {
public:
    explicit CompoundFile(std::unique_ptr<ImageStore> store) noexcept : m_store(std::move(store)) {}

    // Opens the image that is there. Without this the file reads as empty, until it is saved.
    [[nodiscard]] HRESULT OpenImage();
    bool HasImage() const noexcept { return m_image != nullptr; }

    // Makes the tree of elements that the image holds.
    [[nodiscard]] HRESULT ReadTree(std::shared_ptr<Node>& root) const;

    // Writes a tree as the new image, and makes the tree read from it. STG_E_NOTCURRENT with STGC_ONLYIFCURRENT when
    // somebody else has committed. On failure the tree is as it was.
    [[nodiscard]] HRESULT Save(Node& root, DWORD commitFlags);

    // Lets go of the file; nothing reads from it any more.
    void Close() noexcept { m_store->Close(); }

    CStringW Name() const { return m_store->Name(); }

    // Where what is written waits.
    const std::shared_ptr<PendingData>& Pending() const noexcept { return m_pending; }

private:
    std::unique_ptr<ImageStore> m_store;
    std::shared_ptr<CompoundReader> m_image;  // null: no image yet
    std::shared_ptr<PendingData> m_pending = std::make_shared<PendingData>();
};

// What a storage opened in transacted mode, or a root, keeps to itself until it commits: a tree of its own. Storages
// opened in direct mode work on the tree of the storage that they were opened from.
class Transaction {
public:
    // A root's: commits become images of the file. A file without an image counts as changed.
    Transaction(std::shared_ptr<CompoundFile> file, std::shared_ptr<Node> top) noexcept
        : m_file(std::move(file)), m_top(std::move(top)), m_changed(!m_file->HasImage()) {}
    // Of a storage within: commits go to the element `published` of the outer tree.
    Transaction(std::shared_ptr<Transaction> outer, std::shared_ptr<Node> published);

    const std::shared_ptr<CompoundFile>& File() const noexcept { return m_file; }
    const std::shared_ptr<Node>& Top() const noexcept { return m_top; }
    const std::shared_ptr<PendingData>& Pending() const noexcept { return m_file->Pending(); }

    void NoteChange() noexcept { m_changed = true; }
    bool Changed() const noexcept { return m_changed; }

    // Hands on what was changed; nothing when nothing was.
    [[nodiscard]] HRESULT Commit(DWORD commitFlags);
    // Begins again with what was last committed: `Top` is another node afterwards.
    [[nodiscard]] HRESULT Revert();

private:
    std::shared_ptr<CompoundFile> m_file;
    std::shared_ptr<Transaction> m_outer;  // null for a root
    std::shared_ptr<Node> m_published;
    std::shared_ptr<Node> m_top;
    bool m_changed;
};

}  // namespace vx_storage
