// CVxMapiEngine: MAPI's start and end in this process, what can be asked without a session, and the administration of
// profiles. It opens no session of the tree's.
//
// The administration builds its MAPI objects anew for each call and keeps nothing. A failure is told by one line in the
// log, and what was done before it stays done. Calls that may change the process's current directory restore it.
// One thread at a time; nothing here takes a lock.
#pragma once

#include "platform/WideText.h"

#include <functional>

class CVxMapiEngine {
public:
    // Initializes MAPI, which loads it; see Initialized.
    CVxMapiEngine();

    // Ends MAPI, whether it had begun or not.
    virtual ~CVxMapiEngine();

    CVxMapiEngine(const CVxMapiEngine&) = delete;
    CVxMapiEngine& operator=(const CVxMapiEngine&) = delete;

    // Whether the constructor's MAPIInitialize gave S_OK. It is not tried a second time.
    bool Initialized() const noexcept { return m_initialized; }

    // Initializes MAPI for notifications on any thread; where the thread's COM apartment does not fit, once more with
    // COM left alone. True for S_OK alone: a warning counts as failure.
    bool MAPIInitialize();
    void MAPIUnInitialize();

    // ---- Without a session ----

    // The short path of the folder that the application's key names for the provider's data; an empty name stands for
    // "Vx Desktop Search". Empty when there is none, the folder does not exist, or its path has more than 259
    // characters. Never logs: what it gives decides whether there is a log at all.
    static CStringW GetDataPath(const CStringW& applicationName);

    // Empty when no profile is the default, or none can be read.
    static CStringW GetDefaultProfileName();

    // Whether the profile has an Exchange service. False when that cannot be told; so is a profile without services,
    // which is logged as an error.
    static bool CheckForExchangeProfile(const CStringW& profileName);

    // Calls `visit` with the name and the default mark of each of the system's profiles, in the order of MAPI's table,
    // until it gives false. Names are logged as they come. S_OK too when there are none, or when MAPI gives no
    // administration object or table; otherwise the failure, which is logged.
    using ProfileVisitor = std::function<bool(const CStringW& name, bool isDefault)>;
    static HRESULT VisitSystemProfiles(const ProfileVisitor& visit);

    // ---- Administration of profiles; true when all was done ----

    // On failure the profile of that name is deleted, also when it failed because there was one before.
    bool CreateProfile(const CStringW& profileName);
    bool DeleteProfile(const CStringW& profileName);

    // Adds an Exchange service and configures it without any dialog. Then a logon is tried; when it works, the service
    // has to be in the session's list. `cached` changes nothing.
    bool AddExchangeToProfile(const CStringW& profileName, const CStringW& serverName, const CStringW& accountName,
                              bool cached);

    // Adds another user's mailbox to the first Exchange service, and puts it last in the list of stores.
    bool AddDelegateToProfile(const CStringW& profileName, const CStringW& storeName, const CStringW& storeDN,
                              const CStringW& server, const CStringW& serverDN);

    // Deletes the first Exchange service's first provider of exactly that name. The list of stores keeps its entry.
    bool RemoveDelegateStore(const CStringW& profileName, const CStringW& storeName);

    // Adds a service for a PST file, which must exist. An Exchange service is created before and deleted after, since
    // some clients refuse a profile without one; when a step in between fails, it stays.
    bool AddPSTToProfile(const CStringW& profileName, const CStringW& pstPath);

private:
    bool m_initialized = false;
};
