#include "platform/Module.h"

#include "platform/Paths.h"
#include "platform/linux/system/Environment.h"
#include "platform/linux/system/Failure.h"
#include "platform/linux/system/FileDescriptor.h"
#include "platform/linux/system/Immortal.h"
#include "platform/linux/system/TextBuffer.h"
#include "platform/linux/system/Utf8.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

#include <dlfcn.h>
#include <elf.h>
#include <fcntl.h>
#include <link.h>

namespace vx_system {

namespace {

// The libraries that LoadLibraryW loaded. It alone says what is a module handle: the system's own functions would take
// any value for one.
class ModuleTable {
public:
    void CountLoad(void* handle, const std::filesystem::path& path) {
        const std::lock_guard lock(m_lock);
        Module& module = m_modules[handle];
        module.path = path;
        ++module.loads;
    }

    // False when the handle means nothing.
    bool CountUnload(void* handle) {
        const std::lock_guard lock(m_lock);
        const auto found = m_modules.find(handle);
        if (found == m_modules.end()) {
            return false;
        }
        if (--found->second.loads == 0) {
            m_modules.erase(found);
        }
        return true;
    }

    bool Has(void* handle) {
        const std::lock_guard lock(m_lock);
        return m_modules.contains(handle);
    }

    std::optional<std::filesystem::path> PathOf(void* handle) {
        const std::lock_guard lock(m_lock);
        const auto found = m_modules.find(handle);
        return found == m_modules.end() ? std::nullopt : std::optional(found->second.path);
    }

    void* Find(const std::filesystem::path& path) {
        const std::lock_guard lock(m_lock);
        const auto found = std::find_if(m_modules.begin(), m_modules.end(),
                                        [&path](const auto& entry) { return entry.second.path == path; });
        return found == m_modules.end() ? nullptr : found->first;
    }

private:
    struct Module {
        std::filesystem::path path;
        unsigned loads = 0;
    };

    std::mutex m_lock;
    std::map<void*, Module> m_modules;  // by what dlopen gave; guarded by m_lock
};

ModuleTable& Modules() {
    static Immortal<ModuleTable> modules;
    return *modules;
}

std::filesystem::path FindOwnFolder() noexcept {
    try {
        Dl_info info = {};
        link_map* library = nullptr;
        std::error_code error;
        const bool isKnown = ::dladdr1(reinterpret_cast<const void*>(&FindOwnFolder), &info,
                                       reinterpret_cast<void**>(&library), RTLD_DL_LINKMAP)
                             != 0;
        // The program itself has no name in that list.
        const bool isLibrary = isKnown && library != nullptr && library->l_name[0] != '\0';
        return std::filesystem::canonical(isLibrary ? library->l_name : "/proc/self/exe", error).parent_path();
    } catch (const std::exception&) {
        return {};
    }
}

// The folder of the library that holds this code, or of the program when it is linked into that.
const std::filesystem::path& OwnFolder() noexcept {
    static const std::filesystem::path folder = FindOwnFolder();
    return folder;
}

// Asked for while this code is being loaded: a relative name of the library still holds then.
[[maybe_unused]] const std::filesystem::path& g_ownFolder = OwnFolder();

std::filesystem::path SystemFolder() {
    std::filesystem::path chosen = AbsoluteVariable("VX_SYSTEM_DIR");
    return chosen.empty() ? OwnFolder() : chosen;
}

std::string LowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; });
    return text;
}

// The file names that the last part of a library's path may stand for, in the order of the search.
std::vector<std::string> FileNames(const std::string& leaf) {
    constexpr std::string_view kExtension = ".dll";
    const bool isDll = leaf.size() > kExtension.size() && LowerCase(leaf).ends_with(kExtension);
    if (!isDll && leaf.find('.') != std::string::npos) {
        return {leaf};
    }
    const std::string stem = isDll ? leaf.substr(0, leaf.size() - kExtension.size()) : leaf;
    return {"lib" + stem + ".so", "lib" + LowerCase(stem) + ".so"};
}

// The path of the existing file that `name` stands for; nothing when there is none.
std::optional<std::filesystem::path> FindLibrary(LPCWSTR name) {
    std::string text = ToPath(name).native();
    std::replace(text.begin(), text.end(), '\\', '/');
    const std::size_t slash = text.rfind('/');
    const std::filesystem::path folder =
        slash == std::string::npos ? SystemFolder() : std::filesystem::path(text.substr(0, slash + 1));
    const std::string leaf = text.substr(slash == std::string::npos ? 0 : slash + 1);
    if (!folder.is_absolute() || leaf.empty()) {
        return std::nullopt;
    }
    for (const std::string& fileName : FileNames(leaf)) {
        std::error_code error;
        const std::filesystem::path path = std::filesystem::canonical(folder / fileName, error);
        if (!error && std::filesystem::is_regular_file(path, error)) {
            return path;
        }
    }
    return std::nullopt;
}

// The head of an ELF file of 64 bits; nothing when the file has none.
std::optional<Elf64_Ehdr> ElfHeader(const char* path) noexcept {
    const FileDescriptor file(::open(path, O_RDONLY | O_CLOEXEC));
    Elf64_Ehdr header = {};
    const bool isRead = file && ::read(file.Get(), &header, sizeof(header)) == static_cast<ssize_t>(sizeof(header));
    const bool isElf = isRead && std::memcmp(header.e_ident, ELFMAG, SELFMAG) == 0;
    return isElf && header.e_ident[EI_CLASS] == ELFCLASS64 ? std::optional(header) : std::nullopt;
}

// True for a shared library that this process could hold, as far as its head tells.
bool IsLibraryOfThisMachine(const std::filesystem::path& path) noexcept {
    const std::optional<Elf64_Ehdr> library = ElfHeader(path.c_str());
    const std::optional<Elf64_Ehdr> program = ElfHeader("/proc/self/exe");
    return library && library->e_type == ET_DYN && (!program || library->e_machine == program->e_machine);
}

HMODULE Load(LPCWSTR name) {
    const std::optional<std::filesystem::path> path = FindLibrary(name);
    if (!path) {
        return FailWith(ERROR_MOD_NOT_FOUND, nullptr);
    }
    void* handle = ::dlopen(path->c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        return FailWith(IsLibraryOfThisMachine(*path) ? ERROR_MOD_NOT_FOUND : ERROR_BAD_EXE_FORMAT, nullptr);
    }
    Modules().CountLoad(handle, *path);
    return static_cast<HMODULE>(handle);
}

// dlsym looks into the libraries beneath the module too; what it found there is not the module's.
bool BelongsTo(void* handle, void* address) noexcept {
    link_map* module = nullptr;
    link_map* holder = nullptr;
    Dl_info info = {};
    return ::dlinfo(handle, RTLD_DI_LINKMAP, &module) == 0
           && ::dladdr1(address, &info, reinterpret_cast<void**>(&holder), RTLD_DL_LINKMAP) != 0 && module == holder;
}

}  // namespace

}  // namespace vx_system

HMODULE LoadLibraryW(LPCWSTR name) noexcept {
    if (name == nullptr) {
        return vx_system::FailWith(ERROR_INVALID_PARAMETER, nullptr);
    }
    return vx_system::Guarded<HMODULE>(nullptr, [&] { return vx_system::Load(name); });
}

BOOL FreeLibrary(HMODULE module) noexcept {
    if (!vx_system::Modules().CountUnload(module)) {
        return vx_system::FailWith(ERROR_MOD_NOT_FOUND, FALSE);
    }
    ::dlclose(module);
    return TRUE;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) noexcept {
    constexpr ULONG_PTR kHighestOrdinal = 0xFFFF;
    if (!vx_system::Modules().Has(module)) {
        return vx_system::FailWith(ERROR_MOD_NOT_FOUND, nullptr);
    }
    void* address = reinterpret_cast<ULONG_PTR>(name) <= kHighestOrdinal ? nullptr : ::dlsym(module, name);
    if (address == nullptr || !vx_system::BelongsTo(module, address)) {
        return vx_system::FailWith(ERROR_PROC_NOT_FOUND, nullptr);
    }
    return reinterpret_cast<FARPROC>(address);
}

HMODULE GetModuleHandleW(LPCWSTR name) noexcept {
    if (name == nullptr) {
        return vx_system::FailWith(ERROR_INVALID_PARAMETER, nullptr);
    }
    return vx_system::Guarded<HMODULE>(nullptr, [&]() -> HMODULE {
        const auto path = vx_system::FindLibrary(name);
        void* handle = path ? vx_system::Modules().Find(*path) : nullptr;
        return handle == nullptr ? vx_system::FailWith<HMODULE>(ERROR_MOD_NOT_FOUND, nullptr)
                                 : static_cast<HMODULE>(handle);
    });
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR buffer, DWORD size) noexcept {
    return vx_system::Guarded<DWORD>(0, [&]() -> DWORD {
        std::error_code error;
        const std::optional<std::filesystem::path> path = module == nullptr
                                                              ? std::filesystem::read_symlink("/proc/self/exe", error)
                                                              : vx_system::Modules().PathOf(module);
        if (!path || error) {
            return vx_system::FailWith(ERROR_MOD_NOT_FOUND, 0U);
        }
        const CStringW text = FromPath(*path);
        const DWORD length = vx_system::CopyText(text, buffer, size);
        if (length == text.size()) {
            return length;
        }
        if (buffer != nullptr && size > 0) {
            *std::copy_n(text.begin(), size - 1, buffer) = 0;
        }
        return vx_system::FailWith(ERROR_INSUFFICIENT_BUFFER, size);
    });
}

UINT GetSystemDirectoryW(LPWSTR buffer, UINT size) noexcept {
    return vx_system::Guarded<UINT>(0, [&]() -> UINT {
        const std::filesystem::path folder = vx_system::SystemFolder();
        return folder.empty() ? vx_system::FailWith(ERROR_PATH_NOT_FOUND, 0U)
                              : vx_system::CopyText(FromPath(folder), buffer, size);
    });
}
