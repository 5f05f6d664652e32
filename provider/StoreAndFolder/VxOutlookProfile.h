// CVxOutlookProfile: one MAPI profile. Connected, it holds a session, the rows of its message stores, and a store
// object for each row of a known kind; with Exchange, the address book behind them as one more store.
//
// Store objects are made anew at each connect: a pointer to one is good until the profile disconnects, which connecting
// another profile does, too.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "mapi/MapiProfileInterfaces.h"
#include "provider/MapiHolders.h"
#include "provider/VxConnectable.h"
#include "provider/VxMAPIRecords.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

class CVxOutlookStore;

class CVxOutlookProfile : public CVxConnectable {
public:
    // Both ask MAPI whether the profile has an Exchange service, the first also whether it is the default profile.
    CVxOutlookProfile(CVxDomain* domain, const CStringW& name);
    CVxOutlookProfile(CVxDomain* domain, const CStringW& name, bool isDefault);

    // Releases the session without a logoff when the profile is not connected.
    ~CVxOutlookProfile() override;

    bool OnConnect() override;
    void OnDisconnect() override;

    const CStringW& GetName() const noexcept { return m_name; }
    bool GetIsDefault() const noexcept { return m_isDefault; }
    bool GetIsExchange() const noexcept { return m_isExchange; }

    // Lent; null while the profile is not connected.
    IMAPISession* GetMAPISession() const noexcept { return m_session; }

    // ---- Stores, in the order of the profile's table; each connects the profile first ----

    void GetStores(std::vector<CVxMAPIStore>& stores);
    std::uint64_t GetStoresCount();

    // Null for an index that is not there.
    CVxOutlookStore* GetStore(std::size_t index);

    // The store with that entry id, in hexadecimal of either case. One that is not found is looked for once more after
    // a logoff and a logon, since it may have been added since; then null. Takes the lock.
    CVxOutlookStore* GetStorebyId(const CStringW& entryIdHex);

    // The direct children of a folder; see CVxOutlookStore::GetSubFolders. False for an unknown store, too.
    bool GetSubFolders(const CStringW& storeId, const CStringW& folderId, const CStringW& parentPath,
                       std::vector<CVxMAPIFolder>& folders);

    // The folders of all stores. False when one of them could not be read; what the others gave is there all the same.
    bool GetAllFolders(std::vector<CVxMAPIFolder>& folders);

    // Connects each store in turn.
    void BuildFolderList();

    // Makes each store forget its folders. Connects nothing.
    void ClearFolderCache();

    // The name of the Exchange server; empty without Exchange, or when it cannot be read. Kept once found.
    CStringW GetExchangeServer();

    // ---- What the stores need of the session ----

    // Opens a message store for writing; E_FAIL for an id that is none, MAPI_E_NOT_INITIALIZED without a session.
    HRESULT OpenMsgStore(const CStringW& entryIdHex, IMsgStore** store);
    HRESULT OpenAddressBook(IAddrBook** book);

    // Shows the details of an entry of the address book and returns when the user has closed them. Failures are logged.
    void ShowGABContact(const CStringW& entryIdHex);

private:
    bool MAPILogon();
    bool InitProfileStores();
    bool ReadStoreRows();
    std::optional<LONG> ReadConfigFlags();
    void AddStore(ULONG row, EVxStoreType type, std::optional<LONG> configFlags);
    void SetStoreDetails(CVxOutlookStore& store);
    CVxOutlookStore* FindStore(const CStringW& entryIdHex);

    // The columns of a row of the stores table.
    CStringW GetProfileMsgStoreID(ULONG row) const;
    CStringW GetProfileStoreRecordKey(ULONG row) const;
    CStringW GetProfileMsgStoreName(ULONG row) const;
    bool GetProfileStoreIsDefault(ULONG row) const;
    bool GetProfileStoreType(ULONG row, EVxStoreType& type) const;

    bool m_isDefault = false;
    bool m_isExchange = false;
    CStringW m_exchangeServer;  // survives a disconnect
    VxMapiPtr<IMAPISession> m_session;
    VxMapiPtr<IMAPITable> m_lptblProfileStores;
    VxLpRowsPtr<SRowSet> m_storeRows;
    CStringW m_name;
    std::vector<std::unique_ptr<CVxOutlookStore>> m_stores;  // released before the session
};
