#include "provider/VxDomain.h"

#include "platform/Paths.h"
#include "provider/Common/ScopedCriticalSection.h"
#include "provider/Common/ScopedEntryExitLogger.h"
#include "provider/Common/StringHelpers.h"
#include "provider/StoreAndFolder/VxOutlookProfile.h"

#include <algorithm>
#include <fstream>
#include <mutex>
#include <utility>

namespace {

constexpr auto& kSourcePath = "VxDomain.cpp"_w;

// The folder for temporary files, shared by the process's domains.
struct TempFolder {
    std::mutex lock;  // guards the path
    CStringW path;
};

TempFolder& SharedTempFolder() {
    static TempFolder m_TempFolder;
    return m_TempFolder;
}

CStringW SystemTempFolder() {
    constexpr DWORD kSize = 1023;
    WCHAR path[kSize] = {};
    const DWORD length = GetTempPathW(kSize, path);
    return length < kSize ? CStringW(path, length) : CStringW();
}

CMPParams ParseParams(const CStringW& params) {
    std::vector<CStringW> pieces;
    SplitS(params, pieces, '|', true);
    return CMPParams::parse(pieces, 0);
}

}  // namespace

CVxDomain::CVxDomain(const CStringW& params, const CStringW& logLevel, const CVxItemFactory& items)
    : CVxConnectable(nullptr), m_params(ParseParams(params)), m_items(items) {
    {
        TempFolder& folder = SharedTempFolder();
        const std::scoped_lock held(folder.lock);
        folder.path = m_params.m_tempFolder.empty() ? SystemTempFolder() : m_params.m_tempFolder;
    }
    StartLog(logLevel);
}

CVxDomain::~CVxDomain() {
    EnsureDisconnected();
}

void CVxDomain::StartLog(const CStringW& logLevel) const {
    const CStringW dataPath = CVxMapiEngine::GetDataPath(m_params.m_application);
    if (dataPath.empty()) {
        return;
    }
    const CStringW directory = dataPath + kPathSeparator + "logs"_w;
    Vx::LoggerInit(true, logLevel, "Vx MAPI Engine"_w, m_params.m_logName, directory, m_params.m_logPeriodHours, false);
    // Touches the file, as whoever watches it expects; whether it is there makes no difference.
    const std::ifstream probe(ToPath(directory + kPathSeparator + m_params.m_logName + ".log"_w), std::ios::binary);
}

CStringW CVxDomain::GetTempFolder() {
    TempFolder& folder = SharedTempFolder();
    const std::scoped_lock held(folder.lock);
    return folder.path;
}

bool CVxDomain::OnConnect() {
    // The profile on whose behalf the domain connects is in the midst of its own connect, and stays.
    std::erase_if(m_profiles, [this](const auto& profile) { return profile.get() != ActiveChild(); });
    if (!MapiConnect()) {
        return false;
    }
    if (FAILED(InitSystemProfiles())) {
        return false;
    }
    VX_LOG('I') << Vx::LogMsg("InitSystemProfiles ok"_w);
    return true;
}

void CVxDomain::OnDisconnect() {
    Clear();
    MapiDisconnect();
}

bool CVxDomain::MapiConnect() {
    if (m_mapiConnected) {
        return true;
    }
    if (m_engine == nullptr) {
        m_engine = std::make_unique<CVxMapiEngine>();
    }
    if (m_engine->Initialized()) {
        VX_LOG('I') << Vx::LogMsg("Initialized Vx Mapi engine."_w);
        m_mapiConnected = true;
    } else {
        VX_LOG('E') << Vx::LogMsg("Failed to MapiInitialize"_w);
    }
    return m_mapiConnected;
}

void CVxDomain::MapiDisconnect() {
    if (m_mapiConnected) {
        m_engine.reset();
        m_mapiConnected = false;
    }
}

void CVxDomain::Clear() {
    m_profiles.clear();
}

CVxDomain::ProfileList::iterator CVxDomain::FindProfile(const CStringW& name) {
    return std::find_if(m_profiles.begin(), m_profiles.end(),
                        [&](const auto& profile) { return profile->GetName() == name; });
}

CVxOutlookProfile* CVxDomain::GetProfile(const CStringW& name) {
    const ScopedCriticalSection held(&m_lock);
    auto known = FindProfile(name);
    if (known == m_profiles.end() && !IsConnected()) {
        EnsureConnected();  // reads the list anew
        known = FindProfile(name);
    }
    if (known != m_profiles.end()) {
        return known->get();
    }
    auto profile = std::make_unique<CVxOutlookProfile>(this, name);
    if (!profile->EnsureConnected()) {
        return nullptr;
    }
    return m_profiles.emplace_back(std::move(profile)).get();
}

void CVxDomain::AddProfile(const CStringW& name, bool isDefault) {
    if (FindProfile(name) == m_profiles.end()) {
        m_profiles.push_back(std::make_unique<CVxOutlookProfile>(this, name, isDefault));
    }
}

HRESULT CVxDomain::InitSystemProfiles() {
    return CVxMapiEngine::VisitSystemProfiles([this](const CStringW& name, bool isDefault) {
        AddProfile(name, isDefault);
        return true;
    });
}

void CVxDomain::GetProfileList(std::vector<CVxMAPIProfile>& profiles) {
    VX_SCOPE_TRACE(trace);
    EnsureConnected();
    profiles.clear();
    for (const auto& profile : m_profiles) {
        profiles.push_back({profile->GetName(), profile->GetIsDefault(), profile->GetIsExchange()});
    }
}

void CVxDomain::GetSystemProfiles(std::vector<CStringW>& names) {
    VX_SCOPE_TRACE(trace);
    EnsureConnected();
    names.clear();
    for (const auto& profile : m_profiles) {
        names.push_back(profile->GetName());
    }
}

void CVxDomain::GetProfileStores(const CStringW& profileName, std::vector<CVxMAPIStore>& stores) {
    EnsureConnected();
    CVxOutlookProfile* profile = GetProfile(profileName);
    if (profile == nullptr) {
        VX_LOG('E') << Vx::LogMsg("Failed to get profile: %s"_w, profileName);
        return;
    }
    profile->GetStores(stores);
}

void CVxDomain::ShowGABContact(const CStringW& profileName, const CStringW& entryIdHex) {
    EnsureConnected();
    CVxOutlookProfile* profile = GetProfile(profileName);
    if (profile == nullptr) {
        VX_LOG('E') << Vx::LogMsg("Failed to get profile: %s"_w, profileName);
        return;
    }
    profile->ShowGABContact(entryIdHex);
}

template <typename Call>
bool CVxDomain::Administrate(const CStringW& profileName, Call call) {
    if (m_engine == nullptr || !call(*m_engine)) {
        return false;
    }
    AddProfile(profileName, false);
    return true;
}

bool CVxDomain::CreateProfile(const CStringW& profileName) {
    VX_SCOPE_TRACE(trace);
    return Administrate(profileName, [&](CVxMapiEngine& engine) { return engine.CreateProfile(profileName); });
}

bool CVxDomain::DeleteProfile(const CStringW& profileName) {
    VX_SCOPE_TRACE(trace);
    if (const auto known = FindProfile(profileName); known != m_profiles.end()) {
        (*known)->EnsureDisconnected();
        m_profiles.erase(known);
    }
    return m_engine != nullptr && m_engine->DeleteProfile(profileName);
}

bool CVxDomain::AddPSTToProfile(const CStringW& profileName, const CStringW& pstPath) {
    VX_SCOPE_TRACE(trace);
    return Administrate(profileName,
                        [&](CVxMapiEngine& engine) { return engine.AddPSTToProfile(profileName, pstPath); });
}

bool CVxDomain::AddExchangeToProfile(const CStringW& profileName, const CStringW& serverName,
                                     const CStringW& accountName, bool cached) {
    VX_SCOPE_TRACE(trace);
    return Administrate(profileName, [&](CVxMapiEngine& engine) {
        return engine.AddExchangeToProfile(profileName, serverName, accountName, cached);
    });
}

bool CVxDomain::AddDelegateToProfile(const CStringW& profileName, const CStringW& storeName, const CStringW& storeDN,
                                     const CStringW& server, const CStringW& serverDN) {
    VX_SCOPE_TRACE(trace);
    return Administrate(profileName, [&](CVxMapiEngine& engine) {
        return engine.AddDelegateToProfile(profileName, storeName, storeDN, server, serverDN);
    });
}

bool CVxDomain::RemoveDelegateStore(const CStringW& profileName, const CStringW& storeName) {
    VX_SCOPE_TRACE(trace);
    return Administrate(profileName,
                        [&](CVxMapiEngine& engine) { return engine.RemoveDelegateStore(profileName, storeName); });
}
