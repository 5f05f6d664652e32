#include "provider/VxMapiEngine.h"

#include "mapi/MapiFlags.h"
#include "mapi/PropTags.h"
#include "platform/CodePage.h"
#include "platform/Paths.h"
#include "platform/Registry.h"
#include "provider/Common/ScopedEntryExitLogger.h"
#include "provider/Common/StringHelpers.h"
#include "provider/ImportProcs.h"
#include "provider/KeepDirectory.h"
#include "provider/MapiHolders.h"
#include "provider/MapiSearch.h"
#include "provider/RowValues.h"
#include "provider/ServiceAdministration.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

constexpr auto& kSourcePath = "VxMapiEngine.cpp"_w;

// Characters that a path or a profile's name may have, the terminator among them.
constexpr DWORD kPathSize = 260;
constexpr std::size_t kNameSize = 1024;

// The name of a profile in wide characters; what does not fit the buffers is cut.
CStringW ProfileName(const char* name) {
    char ansi[kNameSize] = {};
    std::memcpy(ansi, name, std::min(std::strlen(name), kNameSize - 1));
    WCHAR wide[kNameSize] = {};
    const int length = MultiByteToWideChar(CP_ACP, 0, ansi, -1, wide, static_cast<int>(kNameSize));
    return length > 0 ? CStringW(wide) : CStringW();
}

// The value "DataPath", terminated; false when there is none, or it does not fit.
bool ReadDataPath(HKEY key, WCHAR (&path)[kPathSize]) {
    DWORD size = sizeof(path);
    if (RegQueryValueExW(key, "DataPath"_w, nullptr, nullptr, reinterpret_cast<LPBYTE>(path), &size) != 0) {
        return false;
    }
    return std::find(std::begin(path), std::end(path), WCHAR{0}) != std::end(path);
}

}  // namespace

CVxMapiEngine::CVxMapiEngine() {
    m_initialized = MAPIInitialize();
}

CVxMapiEngine::~CVxMapiEngine() {
    ::MAPIUninitialize();
}

bool CVxMapiEngine::MAPIInitialize() {
    VX_SCOPE_TRACE(trace);
    return KeepDirectory([] {
        MAPIINIT_0 start = {MAPI_INIT_VERSION, MAPI_MULTITHREAD_NOTIFICATIONS};
        HRESULT hr = ::MAPIInitialize(&start);
        if (hr == RPC_E_CHANGED_MODE) {
            start.ulFlags |= MAPI_NO_COINIT;
            hr = ::MAPIInitialize(&start);
        }
        return hr == S_OK;
    });
}

void CVxMapiEngine::MAPIUnInitialize() {
    ::MAPIUninitialize();
}

CStringW CVxMapiEngine::GetDataPath(const CStringW& applicationName) {
    constexpr auto& kDefaultApplication = "Vx Desktop Search"_w;
    CStringW keyName = "Software\\"_w;
    keyName += applicationName.empty() ? kDefaultApplication : applicationName.c_str();

    HKEY opened = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, keyName.c_str(), 0, KEY_READ, &opened) != 0) {
        return {};
    }
    const RegistryKey key(opened);
    WCHAR longPath[kPathSize] = {};
    if (!ReadDataPath(key.get(), longPath)) {
        return {};
    }
    WCHAR shortPath[kPathSize] = {};
    const DWORD length = GetShortPathNameW(longPath, shortPath, kPathSize);
    return length > 0 && length < kPathSize ? CStringW(shortPath, length) : CStringW();
}

CStringW CVxMapiEngine::GetDefaultProfileName() {
    VX_SCOPE_TRACE(trace);
    CStringW defaultName;
    VisitSystemProfiles([&](const CStringW& name, bool isDefault) {
        if (isDefault) {
            defaultName = name;
        }
        return !isDefault;
    });
    return defaultName;
}

HRESULT CVxMapiEngine::VisitSystemProfiles(const ProfileVisitor& visit) {
    VxMapiPtr<IProfAdmin> admin;
    HRESULT hr = MAPIAdminProfiles(0, &admin);
    if (FAILED(hr) || admin.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("MAPIAdminProfiles failed (%x)"_w, hr);
        return hr;
    }
    VxMapiPtr<IMAPITable> table;
    hr = admin->GetProfileTable(0, &table);
    if (FAILED(hr) || table.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("GetProfileTable failed (%x)"_w, hr);
        return hr;
    }
    static constexpr auto kColumns = MakeTagArray(PR_DISPLAY_NAME_A, PR_DEFAULT_PROFILE);
    VxLpRowsPtr<SRowSet> rows;
    hr = HrQueryAllRows(table, kColumns, nullptr, nullptr, 0, &rows);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("HrQueryAllRows failed (%x)"_w, hr);
        return hr;
    }
    if (rows.get() == nullptr || rows->cRows == 0) {
        VX_LOG('E') << Vx::LogMsg("HrQueryAllRows returned no profiles."_w);
        return S_OK;
    }
    VX_LOG('I') << Vx::LogMsg("System profiles:"_w);
    for (ULONG i = 0; i < rows->cRows; ++i) {
        const SRow& row = rows->aRow[i];
        const SPropValue* name = ColumnOfType(row, 0, PT_STRING8);
        if (name == nullptr || name->ulPropTag != PR_DISPLAY_NAME_A || name->Value.lpszA == nullptr) {
            continue;
        }
        const CStringW wideName = ProfileName(name->Value.lpszA);
        VX_LOG('I') << Vx::LogMsg(wideName.c_str());
        if (!visit(wideName, FlagColumn(row, 1))) {
            break;
        }
    }
    return S_OK;
}

bool CVxMapiEngine::CheckForExchangeProfile(const CStringW& profileName) {
    VX_SCOPE_TRACE(trace);
    static constexpr auto kColumns = MakeTagArray(PR_SERVICE_NAME_W, PR_SERVICE_UID);
    VxMapiPtr<IMsgServiceAdmin> services;
    VxLpRowsPtr<SRowSet> rows;
    if (!OpenServiceAdmin(profileName, services) || !ReadServices(services, kColumns, ServiceFilter::None, rows)) {
        return false;
    }
    for (ULONG i = 0; i < rows->cRows; ++i) {
        if (EqualIgnoringAsciiCase(TextColumn(rows->aRow[i], 0), kExchangeService)) {
            return true;
        }
    }
    return false;
}
