// From the names that a host gives to the nodes of the tree. Everything here connects what it passes, and gives null for
// what does not exist. What is given is owned by the tree, and good until the host's next call.
#pragma once

#include "platform/Variant.h"
#include "platform/WideText.h"
#include "provider/URIObjectData.h"

class CVxDomain;
class CVxOutlookFolder;
class CVxOutlookStore;

// A host's text; a null pointer is an empty one.
inline CStringW HostText(const WCHAR* text) {
    return text == nullptr ? CStringW() : CStringW(text);
}

CVxOutlookStore* FindStore(CVxDomain& domain, const CStringW& profileName, const CStringW& storeId);

// Leaves the store with the folder as its filter.
CVxOutlookFolder* FindFolder(CVxDomain& domain, const CStringW& profileName, const CStringW& storeId,
                             const CStringW& folderId);

// The store and the folder that a URI names.
inline CVxOutlookStore* FindStore(CVxDomain& domain, const CURIObjectData& uri) {
    return FindStore(domain, uri.ProfileName(), uri.StoreId());
}
inline CVxOutlookFolder* FindFolder(CVxDomain& domain, const CURIObjectData& uri) {
    return FindFolder(domain, uri.ProfileName(), uri.StoreId(), uri.FolderId());
}
