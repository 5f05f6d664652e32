// Where the image of a root lives, a path or a caller's byte array, and how a new image takes the place of the old one.
// One thread at a time.
#pragma once

#include "platform/Storage.h"
#include "platform/linux/storage/BackingBytes.h"
#include "platform/linux/storage/CompoundReader.h"
#include "platform/linux/storage/FileBytes.h"
#include "platform/linux/storage/ImageLayout.h"

#include <filesystem>
#include <memory>

namespace vx_storage {

class ImageStore {
public:
    virtual ~ImageStore() = default;

    // The bytes of the image that is there now.
    const std::shared_ptr<BackingBytes>& Bytes() const noexcept { return m_bytes; }

    // Writes a new image and puts it in the place of the one that is there. `old` is what the root read from, null when
    // it read from nothing; `keepOld` says that others go on reading from it. `reader` receives the new image, opened.
    // On failure `reader` and the old image are as they were, except for an image written in place, whose target then
    // holds part of each: then `reader` may have received an unnamed copy of the new image, to go on with.
    [[nodiscard]] virtual HRESULT Replace(const ImageLayout& layout, const std::shared_ptr<CompoundReader>& old,
                                          bool keepOld, Durability durability, std::shared_ptr<CompoundReader>& reader);

    // False when somebody else has put another image there since it was opened or replaced here.
    virtual bool IsCurrent() const { return true; }

    // The name of the root: a full path, or empty.
    virtual CStringW Name() const { return {}; }

    // Lets go of the image, and deletes it where that was asked for.
    virtual void Close() noexcept { m_bytes->Close(); }

protected:
    explicit ImageStore(std::shared_ptr<BackingBytes> bytes) noexcept : m_bytes(std::move(bytes)) {}

    std::shared_ptr<BackingBytes> m_bytes;
};

// A byte array of the caller's, written in place: first the bytes, then the size, then Flush.
class LockBytesStore final : public ImageStore {
public:
    explicit LockBytesStore(ILockBytes* bytes);
};

// A file, replaced by writing another one beside it and renaming that; where the folder does not take one, in place. What
// an existing file gets is on the disk when Replace returns, if that is asked for. A file that was made here is left to
// the system's cache: before it was finished there was nothing to lose, and waiting for the disk costs more than writing.
// What takes the place of the empty image that it began with is written in place.
class PathStore final : public ImageStore {
public:
    // Opens an existing file. The codes of FileBytes::Open.
    [[nodiscard]] static HRESULT Open(const std::filesystem::path& path, const ShareClaim& claim,
                                      std::unique_ptr<PathStore>& store);
    // Makes a new file, empty; STG_E_FILEALREADYEXISTS when there is one.
    [[nodiscard]] static HRESULT Create(const std::filesystem::path& path, const ShareClaim& claim,
                                        std::unique_ptr<PathStore>& store);
    // Makes a new file with a name of its own in the folder for temporary files.
    [[nodiscard]] static HRESULT CreateTemporary(const ShareClaim& claim, std::unique_ptr<PathStore>& store);

    PathStore(std::filesystem::path path, const ShareClaim& claim, std::shared_ptr<FileBytes> file, bool isNew);
    PathStore(const PathStore&) = delete;
    PathStore& operator=(const PathStore&) = delete;
    ~PathStore() override;

    void DeleteAtClose() noexcept { m_deleteAtClose = true; }
    // True for a file that was made here and has no image yet.
    bool IsNew() const noexcept { return m_isNew; }

    [[nodiscard]] HRESULT Replace(const ImageLayout& layout, const std::shared_ptr<CompoundReader>& old, bool keepOld,
                                  Durability durability, std::shared_ptr<CompoundReader>& reader) override;
    bool IsCurrent() const override;
    CStringW Name() const override { return m_name; }
    void Close() noexcept override;

private:
    void Remember() noexcept;

    std::filesystem::path m_path;  // absolute, links followed
    CStringW m_name;
    ShareClaim m_claim;
    std::shared_ptr<FileBytes> m_file;  // the same object as m_bytes
    struct stat m_known = {};           // of the file, when it was opened or replaced here
    const bool m_isOurs;                // made here
    bool m_holdsNothing = false;        // its image is that of an empty root
    bool m_isNew;
    bool m_deleteAtClose = false;
};

}  // namespace vx_storage
