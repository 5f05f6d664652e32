// What the tree tells the facade about profiles, stores and folders: plain values, copied out of the nodes.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/WideText.h"
#include "provider/ItemTypes.h"

struct CVxMAPIProfile {
    CStringW name;
    bool isDefault = false;
    bool isExchange = false;  // the profile has an Exchange service
};

struct CVxMAPIStore {
    CStringW displayName;
    CStringW storeDN;  // the three of Exchange are empty for every other store
    CStringW server;
    CStringW serverDN;
    CStringW entryId;  // hexadecimal, as the next
    CStringW recordKey;
    EVxStoreType type = static_cast<EVxStoreType>(-1);
    bool isDefault = false;
    bool isCached = false;  // read from a file on this machine
};

struct CVxMAPIFolder {
    CStringW path;     // the store's name, "/" and the path inside the store
    CStringW entryId;  // hexadecimal, as the next
    CStringW storeEntryId;
    bool hasSubFolders = false;
    EVxFolderType containerClass = eVxFolderUnknown;
    FILETIME lastModified = {0, 0};
};
