#include "provider/MapiSearch.h"

#include "platform/CodePage.h"
#include "platform/LastError.h"
#include "platform/Module.h"
#include "platform/ResultCodes.h"
#include "provider/Common/Log.h"
#include "provider/ErrorReport.h"
#include "provider/ImportState.h"
#include "provider/TextConversion.h"

#include <new>
#include <utility>

namespace {

constexpr auto& kSourcePath = "ImportProcs.cpp"_w;
constexpr char kSourceName[] = "ImportProcs.cpp";

// Room for the ANSI path of a component, and how much of it FGetComponentPath is told of and may fill.
constexpr DWORD kComponentPathBytes = 260;
constexpr DWORD kComponentPathUsed = 130;

constexpr auto& kMailClients = "Software\\Clients\\Mail"_w;

// Reports a failed registry call, with the system's text. The call's result as an HRESULT.
HRESULT CheckRegistryCall(LSTATUS status, const char* function, int line) noexcept {
    const HRESULT hr = HRESULT_FROM_WIN32(static_cast<DWORD>(status));
    if (FAILED(hr)) {
        LogError(hr, static_cast<UINT>(status), kSourceName, line, function, false, true);
    }
    return hr;
}

RegistryKey OpenMachineKey(const WCHAR* path) noexcept {
    HKEY key = nullptr;
    const LSTATUS status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, path, 0, KEY_READ, &key);
    return RegistryKey(SUCCEEDED(CheckRegistryCall(status, __func__, __LINE__)) ? key : nullptr);
}

// 8-bit text in the system's code page; null for null, and when it cannot be made.
std::unique_ptr<char[]> ToAnsi(const WCHAR* text) noexcept {
    char* ansi = nullptr;
    CheckHResFn(UnicodeToAnsi(text, &ansi, -1), __func__, 0, kSourceName, __LINE__);
    return std::unique_ptr<char[]>(ansi);
}

struct SystemFolder {
    WCHAR path[MAX_PATH] = {};  // empty when the system did not tell it

    SystemFolder() noexcept {
        const UINT length = GetSystemDirectoryW(path, MAX_PATH);
        if (length == 0 || length >= MAX_PATH) {
            WarnOnWin32Error(kSourceName, __LINE__, __func__);
            path[0] = 0;
        }
    }
};

// GetComponentPath, and a warning when it failed with an error of its own.
void AskForComponent(const WCHAR* component, const WCHAR* qualifier, WCHAR* path, DWORD size) noexcept {
    if (!GetComponentPath(component, qualifier, path, size)) {
        WarnOnWin32Error(kSourceName, __LINE__, __func__);
    }
}

}  // namespace

HRESULT HrGetRegistryValue(HKEY key, const WCHAR* valueName, DWORD& type, RegistryValue& data) noexcept {
    VX_LOG('D') << Vx::LogMsg("HrGetRegistryValue(%s)\n"_w, valueName);
    data.reset();
    type = REG_NONE;
    DWORD size = 0;
    const HRESULT asked =
        CheckRegistryCall(RegQueryValueExW(key, valueName, nullptr, &type, nullptr, &size), __func__, __LINE__);
    const bool isUsable = type == REG_SZ || type == REG_DWORD || type == REG_MULTI_SZ;
    if (FAILED(asked) || size == 0 || !isUsable) {
        return E_INVALIDARG;
    }
    // An odd size leaves its last byte in a unit of its own; one more unit ends the text.
    RegistryValue block(new (std::nothrow) WCHAR[size / sizeof(WCHAR) + 2]());
    if (block == nullptr) {
        return E_OUTOFMEMORY;
    }
    const HRESULT hr = CheckRegistryCall(
        RegQueryValueExW(key, valueName, nullptr, &type, reinterpret_cast<LPBYTE>(block.get()), &size), __func__,
        __LINE__);
    if (SUCCEEDED(hr)) {
        data = std::move(block);
    }
    return hr;
}

RegistryKey GetMailKey(const WCHAR* client) noexcept {
    RegistryValue defaultClient;
    if (client == nullptr) {
        const RegistryKey clients = OpenMachineKey(kMailClients);
        DWORD type = REG_NONE;
        if (clients == nullptr
            || !CheckHResFn(HrGetRegistryValue(clients.get(), nullptr, type, defaultClient), __func__, 0, kSourceName,
                            __LINE__)) {
            return nullptr;
        }
        client = defaultClient.get();
    }
    WCHAR path[512];  // a name that does not fit is longer than a key's can be
    Vx::Format(path, "%s\\%s"_w, kMailClients, client);
    VX_LOG('D') << Vx::LogMsg("Open key %s"_w, path);
    return OpenMachineKey(path);
}

void GetMapiMsiIds(const WCHAR* client, RegistryValue* component, RegistryValue* appLcid,
                   RegistryValue* officeLcid) noexcept {
    const RegistryKey key = GetMailKey(client);
    if (key == nullptr) {
        return;
    }
    const auto read = [&key](const WCHAR* name, RegistryValue* value) {
        if (value != nullptr) {
            DWORD type = REG_NONE;
            HrGetRegistryValue(key.get(), name, type, *value);
        }
    };
    read("MSIComponentID"_w, component);
    read("MSIApplicationLCID"_w, appLcid);
    read("MSIOfficeLCID"_w, officeLcid);
}

void LoadGetComponentPath() noexcept {
    if (pfnFGetComponentPath.IsSet()) {
        return;
    }
    const auto takeFrom = [](std::atomic<HMODULE>& library, const WCHAR* name) {
        if (library == nullptr) {
            library = LoadFromSystemDir(name);
        }
        const HMODULE module = library;
        if (module == nullptr) {
            return;
        }
        const FARPROC function = GetProcAddress(module, "FGetComponentPath");
        if (function == nullptr) {
            WarnOnWin32Error(kSourceName, __LINE__, "LoadGetComponentPath");
        }
        pfnFGetComponentPath.Set(function);
    };
    takeFrom(hModMAPI, "mapi32.dll"_w);
    if (!pfnFGetComponentPath.IsSet()) {
        takeFrom(hModMAPIStub, "mapistub.dll"_w);
    }
    VX_LOG('D') << Vx::LogMsg("FGetComponentPath loaded at 0x%08X\n"_w, pfnFGetComponentPath.Get());
}

bool GetComponentPath(const WCHAR* component, const WCHAR* qualifier, WCHAR* path, DWORD size) noexcept {
    if (size == 0) {
        return false;
    }
    path[0] = 0;
    LoadGetComponentPath();
    const auto getComponentPath = pfnFGetComponentPath.Get();
    if (getComponentPath == nullptr) {
        return false;
    }
    const auto ansiComponent = ToAnsi(component);
    const auto ansiQualifier = ToAnsi(qualifier);
    if ((component != nullptr && ansiComponent == nullptr) || (qualifier != nullptr && ansiQualifier == nullptr)) {
        return false;
    }
    char ansiPath[kComponentPathBytes] = {};
    if (!getComponentPath(ansiComponent.get(), ansiQualifier.get(), ansiPath, kComponentPathUsed, TRUE)
        && FAILED(DialogOnWin32Error(kSourceName, __LINE__, __func__))) {
        return false;
    }
    // The path with its terminator and the zeros behind it, as many units as bytes at most.
    WCHAR widePath[kComponentPathUsed + 1] = {};
    if (MultiByteToWideChar(CP_ACP, 0, ansiPath, kComponentPathUsed, widePath, kComponentPathUsed) == 0) {
        DialogOnWin32Error(kSourceName, __LINE__, __func__);
        return false;
    }
    const WideView text = widePath;
    if (text.size() >= size) {
        return false;
    }
    path[text.copy(path, text.size())] = 0;
    return true;
}

void GetMAPIPath(const WCHAR* client, WCHAR* path, DWORD size) noexcept {
    path[0] = 0;
    RegistryValue component;
    RegistryValue appLcid;
    RegistryValue officeLcid;
    GetMapiMsiIds(client, &component, &appLcid, &officeLcid);
    if (component == nullptr) {
        return;
    }
    if (appLcid != nullptr) {
        AskForComponent(component.get(), appLcid.get(), path, size);
    }
    if (path[0] == 0 && officeLcid != nullptr) {
        AskForComponent(component.get(), officeLcid.get(), path, size);
    }
    if (path[0] == 0) {
        AskForComponent(component.get(), nullptr, path, size);
    }
}

HMODULE MyLoadLibrary(const WCHAR* path) noexcept {
    VX_LOG('D') << Vx::LogMsg("MyLoadLibrary - loading \"%s\"\n"_w, path);
    const HMODULE module = LoadLibraryW(path);
    if (module != nullptr) {
        VX_LOG('D') << Vx::LogMsg("MyLoadLibrary - \"%s\" loaded at 0x%08X\n"_w, path, module);
    } else {
        WarnOnWin32Error(kSourceName, __LINE__, __func__);
        VX_LOG('D') << Vx::LogMsg("MyLoadLibrary - \"%s\" failed to load\n"_w, path);
    }
    return module;
}

HMODULE LoadFromSystemDir(const WCHAR* name) noexcept {
    if (name == nullptr) {
        return nullptr;
    }
    VX_LOG('D') << Vx::LogMsg("LoadFromSystemDir - loading \"%s\"\n"_w, name);
    static const SystemFolder folder;
    WCHAR path[2 * MAX_PATH];
    const int length = Vx::Format(path, "%s\\%s"_w, folder.path, name);
    // Without the folder, or cut, the path would name another file.
    if (folder.path[0] == 0 || length < 0 || length >= static_cast<int>(2 * MAX_PATH)) {
        return nullptr;
    }
    VX_LOG('D') << Vx::LogMsg("LoadFromSystemDir - loading from \"%s\"\n"_w, path);
    return MyLoadLibrary(path);
}
