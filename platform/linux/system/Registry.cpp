#include "platform/Registry.h"

#include "platform/Paths.h"
#include "platform/linux/system/Environment.h"
#include "platform/linux/system/FileDescriptor.h"
#include "platform/linux/system/HandleTable.h"
#include "platform/linux/system/Immortal.h"
#include "platform/linux/system/RegistryText.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <mutex>
#include <optional>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>

namespace vx_system {

namespace {

constexpr REGSAM kWriteRights = KEY_SET_VALUE | KEY_CREATE_SUB_KEY;

// What tells two states of a file apart without reading it.
struct FileStamp {
    std::filesystem::path path;
    dev_t device = 0;
    ino_t number = 0;
    off_t size = 0;
    timespec modified = {};

    bool operator==(const FileStamp& other) const noexcept {
        return path == other.path && device == other.device && number == other.number && size == other.size
               && modified.tv_sec == other.modified.tv_sec && modified.tv_nsec == other.modified.tv_nsec;
    }
};

std::filesystem::path RegistryPath() {
    const std::filesystem::path own = Variable("VX_REGISTRY");
    return own.empty() ? ConfigurationFolder() / "registry.reg" : own;
}

// The file's bytes; nothing when they cannot be read. Never more than `size`, should the file be growing.
std::optional<std::string> ReadAll(const FileDescriptor& file, std::size_t size) {
    std::string bytes(size, '\0');
    std::size_t done = 0;
    while (done < size) {
        const ssize_t count = ::read(file.Get(), bytes.data() + done, size - done);
        if (count < 0 && errno != EINTR) {
            return std::nullopt;
        }
        if (count == 0) {
            break;
        }
        done += count < 0 ? 0 : static_cast<std::size_t>(count);
    }
    bytes.resize(done);
    return bytes;
}

// The registry as it was last read. The tree that it gives out stays as it is while somebody holds it.
class RegistryFile {
public:
    // The tree of the file as it is now, never null.
    std::shared_ptr<const RegistryKey> Current() {
        const RegistryLimits limits;
        FileStamp stamp = {.path = RegistryPath()};
        // O_NONBLOCK: what is there might be a pipe, whose opening would wait.
        const FileDescriptor file(::open(stamp.path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
        struct stat status = {};
        const bool isUsable = file && ::fstat(file.Get(), &status) == 0 && S_ISREG(status.st_mode)
                              && static_cast<std::size_t>(status.st_size) <= limits.fileBytes;
        if (!isUsable) {
            return std::make_shared<RegistryKey>();
        }
        stamp.device = status.st_dev;
        stamp.number = status.st_ino;
        stamp.size = status.st_size;
        stamp.modified = status.st_mtim;

        const std::lock_guard lock(m_lock);
        if (m_tree == nullptr || !(stamp == m_stamp)) {
            const std::optional<std::string> bytes = ReadAll(file, static_cast<std::size_t>(status.st_size));
            if (!bytes) {
                return std::make_shared<RegistryKey>();
            }
            m_tree = ParseRegistry(*bytes, limits);
            m_stamp = std::move(stamp);
        }
        return m_tree;
    }

private:
    std::mutex m_lock;  // guards both fields
    FileStamp m_stamp;  // of what m_tree was read from
    std::shared_ptr<const RegistryKey> m_tree;
};

RegistryFile& File() {
    static Immortal<RegistryFile> file;
    return *file;
}

// An open key is a share of its tree.
HandleTable<const RegistryKey>& Handles() {
    static Immortal<HandleTable<const RegistryKey>> handles;
    return *handles;
}

std::optional<CStringW> RootName(HKEY key) {
    const struct {
        HKEY key;
        LPCWSTR name;
    } roots[] = {{HKEY_CLASSES_ROOT, "HKEY_CLASSES_ROOT"_w},
                 {HKEY_CURRENT_USER, "HKEY_CURRENT_USER"_w},
                 {HKEY_LOCAL_MACHINE, "HKEY_LOCAL_MACHINE"_w},
                 {HKEY_USERS, "HKEY_USERS"_w}};
    for (const auto& root : roots) {
        if (root.key == key) {
            return root.name;
        }
    }
    return std::nullopt;
}

// The key behind a handle or a root; null when the handle means nothing. A root that the file does not mention is an
// empty key, since on Windows it would be there too.
std::shared_ptr<const RegistryKey> KeyOf(HKEY handle) {
    const std::optional<CStringW> root = RootName(handle);
    if (!root) {
        return Handles().Find(handle);
    }
    const std::shared_ptr<const RegistryKey> tree = File().Current();
    const auto found = tree->keys.find(*root);
    return found == tree->keys.end() ? std::make_shared<RegistryKey>()
                                     : std::shared_ptr<const RegistryKey>(tree, found->second.get());
}

// The key at the end of `path` beneath `key`, sharing its tree; null when there is none. Empty names are passed over.
std::shared_ptr<const RegistryKey> Descend(const std::shared_ptr<const RegistryKey>& key, WideView path) {
    const RegistryKey* at = key.get();
    while (!path.empty()) {
        const std::size_t end = path.find(WCHAR{'\\'});
        const WideView name = path.substr(0, end);
        path.remove_prefix(end == WideView::npos ? path.size() : end + 1);
        if (name.empty()) {
            continue;
        }
        const auto found = at->keys.find(FoldCase(name));
        if (found == at->keys.end()) {
            return nullptr;
        }
        at = found->second.get();
    }
    return {key, at};
}

DWORD GiveData(const RegistryValue& value, LPDWORD type, LPBYTE data, LPDWORD size) noexcept {
    if (type != nullptr) {
        *type = value.type;
    }
    if (size == nullptr) {
        return ERROR_SUCCESS;
    }
    const DWORD room = *size;
    *size = static_cast<DWORD>(value.data.size());
    if (data == nullptr) {
        return ERROR_SUCCESS;
    }
    if (room < value.data.size()) {
        return ERROR_MORE_DATA;
    }
    std::copy(value.data.begin(), value.data.end(), data);
    return ERROR_SUCCESS;
}

DWORD GiveName(const CStringW& text, LPWSTR name, LPDWORD nameLength) noexcept {
    if (name == nullptr || *nameLength <= text.size()) {
        return ERROR_MORE_DATA;
    }
    *std::copy(text.begin(), text.end(), name) = 0;
    *nameLength = static_cast<DWORD>(text.size());
    return ERROR_SUCCESS;
}

DWORD OpenKey(HKEY key, LPCWSTR subKey, REGSAM access, HKEY* result) {
    const WideView path = subKey == nullptr ? WideView() : WideView(subKey);
    const std::shared_ptr<const RegistryKey> parent = KeyOf(key);
    if (parent == nullptr) {
        return ERROR_INVALID_HANDLE;
    }
    if (path.starts_with(WCHAR{'\\'})) {
        return ERROR_BAD_PATHNAME;
    }
    const std::shared_ptr<const RegistryKey> found = Descend(parent, path);
    if (found == nullptr) {
        return ERROR_FILE_NOT_FOUND;
    }
    if ((access & kWriteRights) != 0) {
        return ERROR_ACCESS_DENIED;
    }
    *result = static_cast<HKEY>(Handles().Add(found));
    return ERROR_SUCCESS;
}

// Runs one of the functions below and turns what it throws into its result.
template <typename Body>
LSTATUS Guarded(Body&& body) noexcept {
    try {
        return static_cast<LSTATUS>(body());
    } catch (const std::exception&) {  // only memory can run out
        return static_cast<LSTATUS>(ERROR_NOT_ENOUGH_MEMORY);
    }
}

}  // namespace

}  // namespace vx_system

LSTATUS RegOpenKeyExW(HKEY key, LPCWSTR subKey, DWORD /*options*/, REGSAM access, HKEY* result) noexcept {
    if (result == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    *result = nullptr;
    return vx_system::Guarded([&] { return vx_system::OpenKey(key, subKey, access, result); });
}

LSTATUS RegQueryValueExW(HKEY key, LPCWSTR valueName, LPDWORD reserved, LPDWORD type, LPBYTE data,
                         LPDWORD size) noexcept {
    if (reserved != nullptr || (data != nullptr && size == nullptr)) {
        return ERROR_INVALID_PARAMETER;
    }
    return vx_system::Guarded([&]() -> DWORD {
        const auto found = vx_system::KeyOf(key);
        if (found == nullptr) {
            return ERROR_INVALID_HANDLE;
        }
        const auto value = found->values.find(vx_system::FoldCase(valueName == nullptr ? ""_w : valueName));
        return value == found->values.end() ? ERROR_FILE_NOT_FOUND
                                            : vx_system::GiveData(value->second, type, data, size);
    });
}

LSTATUS RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameLength, LPDWORD reserved, LPWSTR className,
                      LPDWORD classLength, FILETIME* lastWritten) noexcept {
    if (reserved != nullptr || nameLength == nullptr) {
        return ERROR_INVALID_PARAMETER;
    }
    return vx_system::Guarded([&]() -> DWORD {
        const auto found = vx_system::KeyOf(key);
        if (found == nullptr) {
            return ERROR_INVALID_HANDLE;
        }
        if (index >= found->keys.size()) {
            return ERROR_NO_MORE_ITEMS;
        }
        if (className != nullptr && classLength != nullptr && *classLength > 0) {
            className[0] = 0;
        }
        if (classLength != nullptr) {
            *classLength = 0;
        }
        if (lastWritten != nullptr) {
            *lastWritten = {};
        }
        return vx_system::GiveName(std::next(found->keys.begin(), index)->second->name, name, nameLength);
    });
}

LSTATUS RegEnumValueW(HKEY key, DWORD index, LPWSTR name, LPDWORD nameLength, LPDWORD reserved, LPDWORD type,
                      LPBYTE data, LPDWORD size) noexcept {
    if (reserved != nullptr || nameLength == nullptr || (data != nullptr && size == nullptr)) {
        return ERROR_INVALID_PARAMETER;
    }
    return vx_system::Guarded([&]() -> DWORD {
        const auto found = vx_system::KeyOf(key);
        if (found == nullptr) {
            return ERROR_INVALID_HANDLE;
        }
        if (index >= found->values.size()) {
            return ERROR_NO_MORE_ITEMS;
        }
        const vx_system::RegistryValue& value = std::next(found->values.begin(), index)->second;
        const DWORD named = vx_system::GiveName(value.name, name, nameLength);
        return named != ERROR_SUCCESS ? named : vx_system::GiveData(value, type, data, size);
    });
}

LSTATUS RegCloseKey(HKEY key) noexcept {
    return vx_system::Guarded([&]() -> DWORD {
        const bool isOpen = vx_system::RootName(key) || vx_system::Handles().Remove(key) != nullptr;
        return isOpen ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
    });
}
