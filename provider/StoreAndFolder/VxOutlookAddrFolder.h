// CVxOutlookAddrFolder: the one folder of the address book. Its items are contacts, made of nothing but their ids; what
// has to be open for them is the book, so the folder itself opens only its table.
#pragma once

#include "provider/StoreAndFolder/VxOutlookFolder.h"

class CVxAddressBook;

class CVxOutlookAddrFolder : public CVxOutlookFolder {
public:
    // A folder "Contacts" at the path "Global Address Book/Contacts". `entryId` is the list's.
    CVxOutlookAddrFolder(const CStringW& entryId, CVxAddressBook* book, const FILETIME& lastModified);
    ~CVxOutlookAddrFolder() override;

    CVxAddressBook* GetAddressBook() const noexcept { return m_book; }

    bool OnConnect() override;

    // The contacts of the next rows, 30 at the most; none, and true, at the end of the list. False when the host has
    // asked to stop and when the rows cannot be read. `useNoCache` changes nothing.
    bool GetItems(bool useNoCache) override;

    // The whole list as in range, whatever the times: entries of an address list have none.
    bool CalculateNumberOfItems(const FILETIME* start, const FILETIME* end, bool useNoCache, int* before, int* inRange,
                                int* after) override;

    bool MapiConnect() override { return true; }
    void MapiDisconnect() override;
    bool IsMapiConnected() const override;
    IMAPITable* GetContentTable() override;

private:
    CVxAddressBook* m_book;  // not owned; the folder's store
};
