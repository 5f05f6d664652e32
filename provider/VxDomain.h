// CVxDomain: the root of the object tree. It reads the host's parameters, starts the log, holds MAPI's engine and the
// system's profiles, and passes the administration of profiles on to the engine.
//
// Connected, the engine is up and the profiles are listed, none of them logged on. Only one profile is logged on at a
// time. One thread at a time, but SetAbort and GetTempFolder from any.
#pragma once

#include "provider/MPParams.h"
#include "provider/VxConnectable.h"
#include "provider/VxMAPIRecords.h"
#include "provider/VxMapiEngine.h"

#include <atomic>
#include <memory>
#include <vector>

class CVxItemFactory;
class CVxOutlookProfile;

class CVxDomain : public CVxConnectable {
public:
    // `params` are the pieces of CMPParams::parse with "|" between them; empty pieces are dropped, so that the later
    // ones move up. Without a data folder in the registry there is no log. `logLevel` is a name of
    // Vx::TranslateLogNameToLevel. `items` outlives the domain.
    CVxDomain(const CStringW& params, const CStringW& logLevel, const CVxItemFactory& items);
    ~CVxDomain() override;

    CVxDomain* GetDomain() override { return this; }
    bool OnConnect() override;
    void OnDisconnect() override;

    // Creates and deletes the engine. An engine that could not initialize MAPI stays and is not tried again.
    bool MapiConnect();
    void MapiDisconnect();

    // Deletes every profile.
    void Clear();

    // The host's wish that reading stops. Looked at while a folder reads its rows, and taken back by the host alone.
    void SetAbort(bool abort) noexcept { m_abort = abort; }
    bool GetAbort() const noexcept { return m_abort; }

    CMPParams* getMPParams() noexcept { return &m_params; }
    const CVxItemFactory& GetItemFactory() const noexcept { return m_items; }

    // Where temporary files go: the parameters' folder, else the system's. Of the process, set by its latest domain.
    static CStringW GetTempFolder();

    // The profile of exactly that name, connected or not. One that is not in the list, which a domain that is not
    // connected reads first, is tried: it joins the list when it can be connected. Null otherwise. Takes the lock.
    CVxOutlookProfile* GetProfile(const CStringW& name);

    // Adds a profile that is not connected, unless there is one of that name.
    void AddProfile(const CStringW& name, bool isDefault);

    // Adds the profiles of the system. Negative when they cannot be read; to have none is a success.
    HRESULT InitSystemProfiles();

    // ---- Queries; each connects the domain first, and does without where that fails ----

    // Replace the list by an element for each profile. No profile is connected.
    void GetProfileList(std::vector<CVxMAPIProfile>& profiles);
    void GetSystemProfiles(std::vector<CStringW>& names);

    // Log an error for a profile that is not there, and leave `stores` as it is.
    void GetProfileStores(const CStringW& profileName, std::vector<CVxMAPIStore>& stores);
    void ShowGABContact(const CStringW& profileName, const CStringW& entryIdHex);

    // ---- Administration: the engine's operations of the same names; false without an engine ----
    // A profile that they worked on joins the list. One that is there already shows what was added when it connects the
    // next time. DeleteProfile takes the profile out of the list first, whatever then becomes of it.

    bool CreateProfile(const CStringW& profileName);
    bool DeleteProfile(const CStringW& profileName);
    bool AddPSTToProfile(const CStringW& profileName, const CStringW& pstPath);
    bool AddExchangeToProfile(const CStringW& profileName, const CStringW& serverName, const CStringW& accountName,
                              bool cached);
    bool AddDelegateToProfile(const CStringW& profileName, const CStringW& storeName, const CStringW& storeDN,
                              const CStringW& server, const CStringW& serverDN);
    bool RemoveDelegateStore(const CStringW& profileName, const CStringW& storeName);

private:
    using ProfileList = std::vector<std::unique_ptr<CVxOutlookProfile>>;

    void StartLog(const CStringW& logLevel) const;
    ProfileList::iterator FindProfile(const CStringW& name);

    // Makes the call on the engine; when it gives true, the profile is in the list.
    template <typename Call>
    bool Administrate(const CStringW& profileName, Call call);

    bool m_mapiConnected = false;             // the engine is initialized
    std::unique_ptr<CVxMapiEngine> m_engine;  // outlives the profiles: MAPI ends after their sessions
    ProfileList m_profiles;                   // in the order of the system's table, later ones behind
    CMPParams m_params;
    const CVxItemFactory& m_items;
    std::atomic<bool> m_abort = false;
};
