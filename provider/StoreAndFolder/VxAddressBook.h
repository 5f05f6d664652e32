// CVxAddressBook: the global address list of a profile with Exchange, as a store with one folder of contacts. It stands
// behind the profile's other stores and is used as they are.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "provider/MapiHolders.h"
#include "provider/StoreAndFolder/VxOutlookStore.h"

class CVxAddressBook : public CVxOutlookStore {
public:
    // Named "Global Address Book", with the entry id "GAB".
    explicit CVxAddressBook(CVxOutlookProfile* profile);
    ~CVxAddressBook() override;

    // Both ids are ignored: there is the one folder.
    bool GetSubFolders(const CStringW& folderId, const CStringW& parentPath,
                       std::vector<CVxMAPIFolder>& folders) override;

    // Opens an entry of the list.
    HRESULT OpenEntry(ULONG size, ENTRYID* entryId, const IID* interfaceId, ULONG flags, ULONG* objectType,
                      IUnknown** object) override;

    // Opens and closes the list: the first container of the address book that is a global one.
    bool MapiConnect() override;
    void MapiDisconnect() override;
    bool IsMapiConnected() const override;

    // Makes the folder.
    bool AddSubFolders() override;

    virtual bool GetIsAddressBook() const { return true; }

    // The list's entries, wide texts.
    HRESULT GetContentsTable(IMAPITable** table);

private:
    bool OpenGlobalAddressList(IAddrBook* book);
    bool ReadContainers(IAddrBook* book, VxLpRowsPtr<SRowSet>& rows);
    bool AddGalFolder();

    VxMapiPtr<IABContainer> m_galContainer;
    CStringW m_galEntryId;  // hexadecimal
};
