#include "provider/FacadeTargets.h"

#include "provider/StoreAndFolder/VxOutlookProfile.h"
#include "provider/StoreAndFolder/VxOutlookStore.h"
#include "provider/VxDomain.h"

CVxOutlookStore* FindStore(CVxDomain& domain, const CStringW& profileName, const CStringW& storeId) {
    CVxOutlookProfile* profile = domain.GetProfile(profileName);
    return profile == nullptr ? nullptr : profile->GetStorebyId(storeId);
}

CVxOutlookFolder* FindFolder(CVxDomain& domain, const CStringW& profileName, const CStringW& storeId,
                             const CStringW& folderId) {
    CVxOutlookStore* store = FindStore(domain, profileName, storeId);
    if (store == nullptr) {
        return nullptr;
    }
    store->SetItemFilter(folderId);
    return store->GetFolder(folderId);
}
