// Attachments saved as files of one folder. The provider writes each to a file of a folder of the run's own, from where
// it is moved into place under a safe name: memory does not grow with an attachment's size. One thread.
#pragma once

#include "host/FileNames.h"
#include "host/Session.h"
#include "host/TempFolder.h"
#include "provider/HostValue.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace vxhost {

class AttachmentFiles {
public:
    // Makes the folder unless it is there. `limit` is the most bytes of a file, -1 for any. Throws Failure.
    AttachmentFiles(const std::filesystem::path& folder, std::int64_t limit);

    // Where the provider is to put files (Settings::tempFolder).
    const std::filesystem::path& TempPath() const noexcept { return m_temp.Path(); }

    // What Fetch has brought, until the next one.
    enum class Fetched { Nothing, TooLarge, File };

    // Brings the bytes of an attachment into a file. `size` is what its item says of it, more or less. Nothing when there
    // ought to be bytes and the provider gives none. Throws what the provider throws, and Failure when there is no room
    // for them.
    Fetched Fetch(InstanceProxy& provider, const VxOutlookProvider::Value& uri, std::uint64_t size);

    // Brings an item, or an item embedded in another, as a message file.
    Fetched FetchItem(InstanceProxy& provider, const VxOutlookProvider::Value& uri);

    // Puts the fetched file into the folder under a name like that one, with a number before it: its name there. Throws
    // Failure.
    std::string Keep(std::u16string_view name);

    // Puts the fetched file somewhere else on the same disk. Throws Failure, also when there is a file already.
    void KeepAs(const std::filesystem::path& file);

    // Of the fetched file.
    std::uint64_t Bytes() const noexcept { return m_bytes; }

private:
    bool IsTooLarge(std::uint64_t bytes) const noexcept;
    bool TakeFile(std::u16string_view reference);
    void TakeBytes(const VxOutlookProvider::Value::Bytes& bytes);

    std::int64_t m_limit;
    TempFolder m_temp;
    NumberedNames m_names;
    std::filesystem::path m_file;
    std::uint64_t m_bytes = 0;
};

}  // namespace vxhost
