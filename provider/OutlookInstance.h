// COutlookInstance: the provider's one exported class. A host names profiles, stores, folders and objects; it gets
// records, texts and HRESULTs.
//
// Results: S_OK; S_FALSE for a profile, store, folder, item or attachment that does not exist, which is no error;
// E_INVALIDARG for a URI of the wrong type; E_POINTER for a null out pointer; E_FAIL before InitializeVxMapi and for
// every fault inside, with a line in the log; or what MAPI answered when an object could not be opened. Nothing else
// leaves the class, exceptions neither. What is given out is given at the very end: after a failure a VARIANT is empty.
//
// URIs and out values: a URI is a record (URIObjectData.h), borrowed for the call. An out VARIANT is overwritten as it
// stands, except that GetBinaryItemBody and GetAttachment clear it first; the receiver owns it.
//
// Threads: one call at a time, but SetAbort at any time. Nothing is started here.
#pragma once

#include "platform/Variant.h"
#include "platform/WideText.h"
#include "provider/ItemTypes.h"
#include "provider/PublicApi.h"

#include <cstdint>

class CExchObjectData;
class CFolderInfoObjectData;
class CVxAttachment;
class CVxDomain;
class CVxItem;
class CVxOutlookFolder;
struct CVxMAPIFolder;

class VX_PROVIDER_API COutlookInstance final {
public:
    COutlookInstance() noexcept;

    // Silences the log for good and releases everything.
    ~COutlookInstance();

    // Copies share one domain without counting, so only one of them may be released or destroyed while initialized.
    COutlookInstance(const COutlookInstance& other) noexcept;
    COutlookInstance& operator=(const COutlookInstance& other) noexcept;

    // ---- Content. Errors inside an item are bits of its record's eobj_vx_lErrors; reading takes them away ----

    // An item's or embedded item's record. With `filterToItem` the folder loads that item alone.
    virtual HRESULT GetItemData(VARIANT uri, TBodyFormat format, bool filterToItem, VARIANT* record);

    // The body directly from the store, empty when the message cannot be opened.
    virtual HRESULT GetItemBody(VARIANT uri, TBodyFormat format, CStringW& body);

    // The body through the folder.
    virtual HRESULT GetItemBody(VARIANT uri, TBodyFormat format, bool filterToItem, CStringW& body);

    // ---- Life ----

    // Makes the domain of the settings (MPParams.h) unless there is one, and connects it; E_ABORT when that fails.
    virtual HRESULT InitializeVxMapi(const CStringW& params, const CStringW& logLevel);
    virtual HRESULT ReleaseVxMapi();

    // While true, the reading of folders stops. Taken back by the host alone.
    virtual HRESULT SetAbort(bool abort);

    // Logs off everything; the next query connects again.
    virtual HRESULT Disconnect();
    virtual HRESULT ClearFolderCache(const WCHAR* profileName, const WCHAR* storeId);
    virtual HRESULT ClearFolderCache();

    // ---- The hierarchy: lists of records ----

    virtual HRESULT GetSystemProfiles(VARIANT* profiles);
    virtual HRESULT ShowGABContact(const WCHAR* profileName, const WCHAR* contactEntryId);

    // An unknown profile gives an empty list.
    virtual HRESULT GetProfileStores(const WCHAR* profileName, VARIANT* stores);
    virtual HRESULT GetStoreFolders(const WCHAR* profileName, const WCHAR* storeId, VARIANT* folders);

    // The folders of all stores; one store that cannot be opened fails the call.
    virtual HRESULT GetProfileFolders(WCHAR* profileName, VARIANT* folders);
    virtual HRESULT GetSubFolders(const WCHAR* profileName, const WCHAR* storeId, const WCHAR* parentFolderId,
                                  const WCHAR* parentFolderPath, VARIANT* folders);
    virtual HRESULT GetFolderItemURIs(WCHAR* profileName, WCHAR* storeId, WCHAR* folderId, VARIANT* uris);

    // ---- Queries for items ----

    // The next page of a folder's items that changed after a time (ticks), of all for 0; an empty list at the end.
    virtual HRESULT QueryItems(VARIANT uri, std::int64_t modifiedSince, bool useNoCache, VARIANT* uris,
                               LONG* unsupportedCount);

    // A URI that names a plain attachment gives an empty list.
    virtual HRESULT QueryAttachments(VARIANT uri, VARIANT* uris, LONG* reserved);

    // Items that changed before, in and after the window [from, to) of ticks.
    virtual HRESULT GetChildrenItemsCount(VARIANT uri, std::int64_t from, std::int64_t to, bool useNoCache,
                                          LONG* nBefore, LONG* nIn, LONG* nAfter);

    // `specialFolder` is an EVxSpecialFolder (VxOutlookStore.h).
    virtual HRESULT GetSpecialFolderName(const WCHAR* profileName, const WCHAR* storeId, int specialFolder,
                                         CStringW& name);
    virtual HRESULT GetExchangeServer(const WCHAR* profileName, CStringW& server);

    // ---- Attachments ----

    // The bytes directly from the store; an empty array when it has none.
    virtual HRESULT GetAttachment(VARIANT uri, TBodyFormat format, VARIANT* bytes);

    // The bytes through the folder.
    virtual HRESULT GetBinaryItemBody(VARIANT uri, TBodyFormat format, bool filterToItem, VARIANT* bytes);
    virtual HRESULT GetBinaryItemData(VARIANT uri, TBodyFormat format, bool filterToItem, VARIANT* record);

    // ---- Administration of profiles: `result` says whether it worked ----
    // Of an Exchange account the server comes before the account, whatever the two are called: the texts go on by their
    // places.

    virtual HRESULT CreateMAPIProfile(const WCHAR* profileName, bool& result);
    virtual HRESULT DeleteMAPIProfile(const WCHAR* profileName, bool& result);
    virtual HRESULT AddDelegateStoreToProfile(const WCHAR* displayName, const WCHAR* mailbox, const WCHAR* server,
                                              const WCHAR* serverDN, const WCHAR* profileName, bool& result);
    virtual HRESULT RemoveDelegateStore(const WCHAR* storeName, const WCHAR* profileName, bool& result);
    virtual HRESULT AddPSTToMAPIProfile(const WCHAR* pstPath, const WCHAR* profileName, bool& result);
    virtual HRESULT AddExchangeToProfile(const WCHAR* profileName, const WCHAR* mailbox, const WCHAR* server, bool flag,
                                         bool& result);

private:
    HRESULT FinalConstruct() noexcept { return S_OK; }
    void FinalRelease() noexcept;

    static void SetFolderInfoData(const CVxOutlookFolder& folder, CFolderInfoObjectData& record);
    static void SetFolderInfoData(const CVxMAPIFolder& folder, CFolderInfoObjectData& record);

    // Find what the URI names, on the way of the folder. `expectBinary` tells an attachment's caller from an item's;
    // the first gives one of `item` and `attachment`, connected.
    HRESULT GetItemBody(VARIANT& uri, TBodyFormat format, bool expectBinary, bool filterToItem, CVxItem*& item,
                        CVxAttachment*& attachment);
    HRESULT GetItemData(VARIANT& uri, TBodyFormat format, CExchObjectData& data, bool expectBinary, bool filterToItem);

    CVxDomain* m_domain = nullptr;  // owned; null while not initialized
};
