#include "platform/NamedSection.h"

#include "platform/linux/system/Failure.h"
#include "platform/linux/system/FileDescriptor.h"
#include "platform/linux/system/HandleTable.h"
#include "platform/linux/system/Immortal.h"

#include <cerrno>
#include <chrono>
#include <limits>
#include <optional>
#include <thread>
#include <utility>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

// How a name lives as long as its users, which shared memory objects know nothing of: whoever has a section open holds a
// shared lock (flock) on the object. Whoever lets go tries for the exclusive lock; the one who gets it is the last and
// removes the name. The same try tells a leftover of a killed process, which nobody has locked, from a section in use.
// A lock is taken on an object that was opened before, so after each lock a look at the link count tells whether the
// name was removed in between.

namespace vx_system {

namespace {

constexpr ULONGLONG kGranularity = 65'536;  // of a view's offset
constexpr ULONGLONG kPage = 4'096;          // a view may reach to the end of the last page

// Another process may be anywhere between two steps of making or removing the same object; its step takes microseconds.
constexpr int kAttempts = 200;
constexpr std::chrono::milliseconds kPause{1};

constexpr DWORD kViewRights = FILE_MAP_READ | FILE_MAP_WRITE;

// Mapped memory, unmapped at the end of its life.
class Mapping {
public:
    Mapping(void* base, SIZE_T bytes) noexcept : m_base(base), m_bytes(bytes) {}
    Mapping(Mapping&& other) noexcept : m_base(std::exchange(other.m_base, nullptr)), m_bytes(other.m_bytes) {}
    Mapping& operator=(Mapping&&) = delete;
    ~Mapping() {
        if (m_base != nullptr) {
            ::munmap(m_base, m_bytes);
        }
    }

    [[nodiscard]] void* Base() const noexcept { return m_base; }

private:
    void* m_base;
    SIZE_T m_bytes;
};

// An open section: a shared memory object and this user's shared lock on it.
class Section {
public:
    // `rights` are FILE_MAP_READ and FILE_MAP_WRITE, or one of them.
    Section(FileDescriptor object, std::string objectName, ULONGLONG size, DWORD rights) noexcept
        : m_object(std::move(object)),
          m_objectName(std::move(objectName)),
          m_size(size),
          m_rights(rights),
          m_maker(::getpid()) {}
    Section(const Section&) = delete;
    Section& operator=(const Section&) = delete;
    ~Section() { LeaveName(); }

    // Removes the name unless somebody else uses it. A child that was forked off shares the lock but leaves this to its
    // parent, whose section it is.
    void LeaveName() noexcept {
        const bool isOurs = !m_objectName.empty() && m_maker == ::getpid();
        if (isOurs && ::flock(m_object.Get(), LOCK_EX | LOCK_NB) == 0 && HasName()) {
            ::shm_unlink(m_objectName.c_str());
        }
        m_objectName.clear();
    }

    // A mapping of `bytes` bytes, or to the end with 0; nothing, with the last error set, when that cannot be.
    std::optional<Mapping> Map(DWORD access, ULONGLONG offset, SIZE_T bytes) const noexcept;

private:
    [[nodiscard]] bool HasName() const noexcept {
        struct stat status = {};
        return ::fstat(m_object.Get(), &status) == 0 && status.st_nlink > 0;
    }

    FileDescriptor m_object;
    std::string m_objectName;
    ULONGLONG m_size;
    DWORD m_rights;
    pid_t m_maker;
};

std::optional<Mapping> Section::Map(DWORD access, ULONGLONG offset, SIZE_T bytes) const noexcept {
    const bool isWritten = (access & FILE_MAP_WRITE) != 0;
    const bool isPrivate = !isWritten && (access & FILE_MAP_READ) == 0 && (access & FILE_MAP_COPY) != 0;
    if (!isPrivate && (access & kViewRights) == 0) {
        return FailWith(ERROR_INVALID_PARAMETER, std::nullopt);
    }
    if (offset % kGranularity != 0) {
        return FailWith(ERROR_MAPPED_ALIGNMENT, std::nullopt);
    }
    const ULONGLONG end = (m_size + kPage - 1) / kPage * kPage;
    const DWORD needed = isWritten ? FILE_MAP_WRITE : FILE_MAP_READ;
    if ((m_rights & needed) == 0 || offset >= m_size || bytes > end - offset) {
        return FailWith(ERROR_ACCESS_DENIED, std::nullopt);
    }
    const SIZE_T length = bytes != 0 ? bytes : static_cast<SIZE_T>(m_size - offset);
    void* base = ::mmap(nullptr, length, isWritten || isPrivate ? PROT_READ | PROT_WRITE : PROT_READ,
                        isPrivate ? MAP_PRIVATE : MAP_SHARED, m_object.Get(), static_cast<off_t>(offset));
    if (base == MAP_FAILED) {
        return FailWith(ErrorFromErrno(errno), std::nullopt);
    }
    return Mapping(base, length);
}

// The mapped views, by their first byte. A view needs neither the handle nor the name that it was made from.
class ViewTable {
public:
    // Gives where the view begins.
    void* Add(Mapping mapping) {
        void* base = mapping.Base();
        const std::lock_guard lock(m_lock);
        m_views.emplace(base, std::move(mapping));
        return base;
    }

    // False when no view begins at `base`.
    bool Unmap(const void* base) {
        std::unique_lock lock(m_lock);
        const auto view = m_views.extract(base);
        lock.unlock();
        return !view.empty();
    }

private:
    std::mutex m_lock;
    std::map<const void*, Mapping> m_views;  // guarded by m_lock
};

HandleTable<Section>& Handles() {
    static Immortal<HandleTable<Section>> handles;
    return *handles;
}

ViewTable& Views() {
    static Immortal<ViewTable> views;
    return *views;
}

// Removes the names of what is still open when the program ends; the memory itself goes with the process.
struct AtExit {
    ~AtExit() {
        Handles().ForEach([](Section& section) { section.LeaveName(); });
    }
};
const AtExit g_atExit;

// The outcome of one attempt at an object that other processes may be making or removing at the same moment.
enum class Attempt {
    Done,
    Missing,  // there is no object of that name
    Taken,    // there is one already
    Again,    // another process was between two of its steps
    Failed    // for good; the last error is set
};

// Gives the object its size and its memory, so that no later write finds none.
DWORD Reserve(const FileDescriptor& object, ULONGLONG size) noexcept {
    int error = 0;
    do {
        error = ::posix_fallocate(object.Get(), 0, static_cast<off_t>(size));
    } while (error == EINTR);
    const bool isFull = error == ENOSPC || error == ENOMEM || error == EFBIG || error == EDQUOT;
    return isFull ? ERROR_COMMITMENT_LIMIT : ErrorFromErrno(error);
}

// Makes the object anew, locked and of its full size.
Attempt Make(const std::string& name, ULONGLONG size, FileDescriptor& object) noexcept {
    object = FileDescriptor(::shm_open(name.c_str(), O_CREAT | O_EXCL | O_RDWR, S_IRUSR | S_IWUSR));
    if (!object) {
        return errno == EEXIST ? Attempt::Taken : FailWith(ErrorFromErrno(errno), Attempt::Failed);
    }
    struct stat status = {};
    const bool isLocked = ::flock(object.Get(), LOCK_SH | LOCK_NB) == 0;
    if (!isLocked || ::fstat(object.Get(), &status) != 0 || status.st_nlink == 0) {
        return Attempt::Again;  // not locked yet, it looked like a leftover to another process
    }
    if (const DWORD error = Reserve(object, size); error != ERROR_SUCCESS) {
        ::shm_unlink(name.c_str());
        return FailWith(error, Attempt::Failed);
    }
    return Attempt::Done;
}

// Opens and locks the object that has the name, if it is in use; a leftover is removed and counts as missing.
Attempt Join(const std::string& name, int mode, FileDescriptor& object, ULONGLONG& size) noexcept {
    object = FileDescriptor(::shm_open(name.c_str(), mode, 0));
    if (!object) {
        return errno == ENOENT ? Attempt::Missing : FailWith(ErrorFromErrno(errno), Attempt::Failed);
    }
    struct stat status = {};
    if (::fstat(object.Get(), &status) != 0 || status.st_uid != ::geteuid() || (status.st_mode & 0077) != 0) {
        return FailWith(ERROR_ACCESS_DENIED, Attempt::Failed);
    }
    if (::flock(object.Get(), LOCK_EX | LOCK_NB) == 0) {
        if (::fstat(object.Get(), &status) == 0 && status.st_nlink > 0) {
            ::shm_unlink(name.c_str());
        }
        return Attempt::Missing;
    }
    const bool isLocked = ::flock(object.Get(), LOCK_SH | LOCK_NB) == 0;
    if (!isLocked || ::fstat(object.Get(), &status) != 0 || status.st_nlink == 0 || status.st_size == 0) {
        return Attempt::Again;  // being removed, or made but not yet of its size
    }
    size = static_cast<ULONGLONG>(status.st_size);
    return Attempt::Done;
}

struct Opened {
    std::shared_ptr<Section> section;
    bool isNew;
};

// Nothing, with the last error set, when the section can be neither made nor joined.
std::optional<Opened> MakeOrJoin(const std::string& name, ULONGLONG size, DWORD rights) {
    for (int i = 0; i < kAttempts; ++i) {
        FileDescriptor object;
        Attempt attempt = Make(name, size, object);
        if (attempt == Attempt::Done) {
            return Opened{std::make_shared<Section>(std::move(object), name, size, rights), true};
        }
        ULONGLONG found = 0;
        if (attempt == Attempt::Taken) {
            attempt = Join(name, O_RDWR, object, found);
        }
        if (attempt == Attempt::Failed) {
            return std::nullopt;
        }
        if (attempt == Attempt::Done) {
            auto section = std::make_shared<Section>(std::move(object), name, found, rights);
            if (found < size) {
                return FailWith(ERROR_INVALID_PARAMETER, std::nullopt);
            }
            return Opened{std::move(section), false};
        }
        std::this_thread::sleep_for(kPause);
    }
    return FailWith(ERROR_BUSY, std::nullopt);
}

HANDLE Create(WideView name, ULONGLONG size, DWORD rights) {
    const std::optional<Opened> opened = MakeOrJoin(NamedSectionObjectName(name), size, rights);
    if (!opened) {
        return nullptr;
    }
    const HANDLE handle = Handles().Add(opened->section);
    SetLastError(opened->isNew ? ERROR_SUCCESS : ERROR_ALREADY_EXISTS);
    return handle;
}

HANDLE Open(DWORD access, WideView name) {
    const std::string objectName = NamedSectionObjectName(name);
    const int mode = (access & FILE_MAP_WRITE) != 0 ? O_RDWR : O_RDONLY;
    for (int i = 0; i < kAttempts; ++i) {
        FileDescriptor object;
        ULONGLONG size = 0;
        switch (Join(objectName, mode, object, size)) {
            case Attempt::Done:
                return Handles().Add(
                    std::make_shared<Section>(std::move(object), objectName, size, access & kViewRights));
            case Attempt::Missing: return FailWith(ERROR_FILE_NOT_FOUND, nullptr);
            case Attempt::Failed: return nullptr;
            default: std::this_thread::sleep_for(kPause);
        }
    }
    return FailWith(ERROR_FILE_NOT_FOUND, nullptr);
}

}  // namespace

}  // namespace vx_system

HANDLE CreateFileMappingW(HANDLE file, SECURITY_ATTRIBUTES* security, DWORD protection, DWORD sizeHigh, DWORD sizeLow,
                          LPCWSTR name) noexcept {
    using namespace vx_system;
    const ULONGLONG size = ULONGLONG{sizeHigh} << 32 | sizeLow;
    const DWORD pages = protection & ~SEC_COMMIT;
    if (file != INVALID_HANDLE_VALUE) {
        return FailWith(ERROR_INVALID_HANDLE, nullptr);
    }
    if (security != nullptr) {
        return FailWith(ERROR_NOT_SUPPORTED, nullptr);
    }
    const bool hasSize = size != 0 && size <= static_cast<ULONGLONG>(std::numeric_limits<off_t>::max());
    if (!hasSize || (pages != PAGE_READWRITE && pages != PAGE_READONLY) || name == nullptr || name[0] == 0) {
        return FailWith(ERROR_INVALID_PARAMETER, nullptr);
    }
    const DWORD rights = pages == PAGE_READWRITE ? FILE_MAP_READ | FILE_MAP_WRITE : FILE_MAP_READ;
    return Guarded<HANDLE>(nullptr, [&] { return Create(name, size, rights); });
}

HANDLE OpenFileMappingW(DWORD access, BOOL /*inherit*/, LPCWSTR name) noexcept {
    using namespace vx_system;
    if (name == nullptr || name[0] == 0) {
        return FailWith(ERROR_INVALID_PARAMETER, nullptr);
    }
    return Guarded<HANDLE>(nullptr, [&] { return Open(access, name); });
}

LPVOID MapViewOfFile(HANDLE section, DWORD access, DWORD offsetHigh, DWORD offsetLow, SIZE_T bytes) noexcept {
    using namespace vx_system;
    return Guarded<LPVOID>(nullptr, [&]() -> LPVOID {
        const std::shared_ptr<Section> found = Handles().Find(section);
        if (found == nullptr) {
            return FailWith(ERROR_INVALID_HANDLE, nullptr);
        }
        std::optional<Mapping> mapping = found->Map(access, ULONGLONG{offsetHigh} << 32 | offsetLow, bytes);
        return mapping ? Views().Add(std::move(*mapping)) : nullptr;
    });
}

BOOL UnmapViewOfFile(LPCVOID base) noexcept {
    return vx_system::Views().Unmap(base) ? TRUE : vx_system::FailWith(ERROR_INVALID_ADDRESS, FALSE);
}

BOOL CloseHandle(HANDLE handle) noexcept {
    return vx_system::Handles().Remove(handle) ? TRUE : vx_system::FailWith(ERROR_INVALID_HANDLE, FALSE);
}
