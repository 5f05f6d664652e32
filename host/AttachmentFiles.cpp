#include "host/AttachmentFiles.h"

#include "host/Failures.h"
#include "host/Text.h"

#include <fstream>
#include <string_view>
#include <system_error>

namespace vxhost {

namespace {

using VxOutlookProvider::Value;

constexpr int kBytesFormat = 1;
constexpr int kFileFormat = 4;

std::filesystem::path MadeFolder(const std::filesystem::path& folder) {
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (!std::filesystem::is_directory(folder)) {
        throw Failure(Status::NotOpened, PathText(folder) + " is no folder and cannot be made one: " + error.message(),
                      "Name another folder for the attachments.");
    }
    return folder;
}

// Beside the files, so that they need only be renamed; elsewhere when the provider cannot be told of the place, since
// its settings stand between bars.
std::filesystem::path PlaceForTemporaryFiles(const std::filesystem::path& folder) {
    const std::filesystem::path absolute = std::filesystem::absolute(folder);
    return PathText(absolute).find('|') == std::string::npos ? absolute : std::filesystem::temp_directory_path();
}

[[noreturn]] void FailToSave(const std::filesystem::path& file, const std::string& reason) {
    throw Failure(Status::NotOpened,
                  "An attachment cannot be written to " + PathText(file.parent_path()) + ": " + reason,
                  "See whether the disk is full and the folder may be written to.");
}

// The text that bytes are in the place of data: UTF-16LE. Empty for what is too long to be a path.
std::u16string ReferenceText(const Value::Bytes& bytes) {
    constexpr std::size_t kMostReferenceBytes = 65'536;
    std::u16string text;
    if (bytes.size() > kMostReferenceBytes) {
        return text;
    }
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        text += static_cast<char16_t>(bytes[i] | (bytes[i + 1] << 8));
    }
    return text;
}

}  // namespace

AttachmentFiles::AttachmentFiles(const std::filesystem::path& folder, std::int64_t limit)
    : m_limit(limit), m_temp(PlaceForTemporaryFiles(MadeFolder(folder))), m_names(folder) {}

bool AttachmentFiles::IsTooLarge(std::uint64_t bytes) const noexcept {
    return m_limit >= 0 && bytes > static_cast<std::uint64_t>(m_limit);
}

AttachmentFiles::Fetched AttachmentFiles::Fetch(InstanceProxy& provider, const Value& uri, std::uint64_t size) {
    if (IsTooLarge(size)) {
        return Fetched::TooLarge;
    }
    m_temp.Empty();
    Value data;
    provider.GetBinaryItemBody(uri, kFileFormat, false, data);
    if (!TakeFile(ReferenceText(data.Data()))) {
        // Decoded attachments have their bytes at hand and make no file of them; and a file is refused whose name is
        // too long for the system. What is nothing in this form, too, cannot be had.
        if (data.Data().empty()) {
            provider.GetBinaryItemBody(uri, kBytesFormat, false, data);
        }
        if (data.Data().empty() && size != 0) {
            return Fetched::Nothing;
        }
        TakeBytes(data.Data());
    }
    return IsTooLarge(m_bytes) ? Fetched::TooLarge : Fetched::File;
}

AttachmentFiles::Fetched AttachmentFiles::FetchItem(InstanceProxy& provider, const Value& uri) {
    m_temp.Empty();
    std::u16string reference;
    provider.GetItemBody(uri, kFileFormat, true, reference);
    return TakeFile(reference) ? Fetched::File : Fetched::Nothing;
}

// A reference is "File:" and a path. It may be a mail's own bytes that read like one, so no path counts that does not
// lead to a file that was put into the run's own folder.
bool AttachmentFiles::TakeFile(std::u16string_view reference) {
    constexpr std::u16string_view kMark = u"File:";
    if (!reference.starts_with(kMark)) {
        return false;
    }
    std::filesystem::path file = ToPath(ToUtf8(reference.substr(kMark.size())));
    std::error_code error;
    if (file.filename() != file.filename().lexically_normal()
        || !std::filesystem::equivalent(file.parent_path(), m_temp.Path(), error)
        || !std::filesystem::is_regular_file(std::filesystem::symlink_status(file, error))) {
        return false;
    }
    m_bytes = std::filesystem::file_size(file, error);
    m_file = std::move(file);
    return !error;
}

void AttachmentFiles::TakeBytes(const Value::Bytes& bytes) {
    m_file = m_temp.Path() / "bytes";
    std::ofstream stream(m_file, std::ios::binary | std::ios::trunc);
    stream.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    if (!stream) {
        FailToSave(m_file, "the disk takes no more");
    }
    m_bytes = bytes.size();
}

std::string AttachmentFiles::Keep(std::u16string_view name) {
    try {
        return m_names.MoveIn(m_file, name);
    } catch (const std::filesystem::filesystem_error& error) {
        FailToSave(m_file, error.code().message());
    }
}

void AttachmentFiles::KeepAs(const std::filesystem::path& file) {
    bool isMoved = false;
    try {
        isMoved = MoveWithoutReplacing(m_file, file);
    } catch (const std::filesystem::filesystem_error& error) {
        FailToSave(file, error.code().message());
    }
    if (!isMoved) {
        throw Failure(Status::Usage, PathText(file) + " is there already", "Name another file with -o.");
    }
}

}  // namespace vxhost
