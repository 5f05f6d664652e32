// CVxOutlookStore: one message store of a profile, such as a mailbox, public folders or a PST file. It reads the tree of
// folders into a flat list, finds folders by id, names the special ones, and gives one item's body or attachment
// directly.
//
// Two things are open or closed apart from each other: the node is connected when its folders are loaded, and the
// store of MAPI is open when it is needed. The folders are loaded once and outlive a disconnect; only Clear, which a
// change of filter brings about, forgets them. A pointer to a folder is good until then.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "platform/WideText.h"
#include "provider/MapiHolders.h"
#include "provider/StoreAndFolder/ItemsFilter.h"
#include "provider/StoreAndFolder/VxOutlookFolder.h"
#include "provider/VxConnectable.h"
#include "provider/VxMAPIRecords.h"

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

class CURIObjectData;
class CVxOutlookProfile;

// Folders that a store knows by what they are for.
enum EVxSpecialFolder : int {
    eVxSpecialInbox = 0,
    eVxSpecialSentItems = 1,
    eVxSpecialDeletedItems = 2,
    eVxSpecialOutbox = 3,
    eVxSpecialDrafts = 4,
    eVxSpecialAdditional0 = 5,  // the elements of PR_ADDITIONAL_REN_ENTRYIDS
    eVxSpecialAdditional1 = 6,
    eVxSpecialAdditional2 = 7,
    eVxSpecialAdditional3 = 8,
    eVxSpecialAdditional4 = 9,
    eVxSpecialAdditionalEx = 10,  // never has a name
};

// Which element of PR_ADDITIONAL_REN_ENTRYIDS.
enum EAdditionalFolderIndex : int {
    eAdditionalNone = -1,
    eAdditional0 = 0,
    eAdditional1 = 1,
    eAdditional2 = 2,
    eAdditional3 = 3,
    eAdditional4 = 4,
};

class CVxOutlookStore : public CVxConnectable {
public:
    // Folders in the order in which they were read, and the same by id.
    using FolderList = std::vector<std::unique_ptr<CVxOutlookFolder>>;
    using FolderMap = std::map<CStringW, CVxOutlookFolder*>;

    explicit CVxOutlookStore(CVxOutlookProfile* profile);
    ~CVxOutlookStore() override;

    // Loads the folders, unless that was tried before: a tree of which a part could not be read fails once and is then
    // taken as it is. Disconnecting keeps everything.
    bool OnConnect() override;
    void OnDisconnect() override;

    // The direct children of a folder, the root for an empty id, read anew and not kept. `parentPath` is what their
    // paths begin with. False when they could not all be read; `folders` is then empty.
    virtual bool GetSubFolders(const CStringW& folderId, const CStringW& parentPath,
                               std::vector<CVxMAPIFolder>& folders);

    // Opens an object of the store, opening the store itself if need be. Failures are logged, with what the store says
    // of them.
    virtual HRESULT OpenEntry(ULONG size, ENTRYID* entryId, const IID* interfaceId, ULONG flags, ULONG* objectType,
                              IUnknown** object);

    // Opens and closes the store of MAPI. A failure is GetLastConnectError.
    virtual bool MapiConnect();
    virtual void MapiDisconnect();
    virtual bool IsMapiConnected() const;

    // Reads the folders: all of them, or with a filter the root, the wanted folder and what is between them.
    virtual bool AddSubFolders();

    // Deletes the folders and closes the store, so that the next connect loads anew.
    virtual void Clear();

    // ---- Which folders are wanted ----

    // One folder and its parents. A store that has its whole tree loaded keeps it, and stays without a filter; one that
    // is connected with another filter forgets its folders; one that is not connected keeps what it has.
    void SetItemFilter(const CStringW& folderId);

    // All folders; what was loaded with a filter is forgotten.
    void ClearItemFilter();

    // All folders, and what was loaded is forgotten.
    void ClearFolderCache();

    bool HaveFilter() const noexcept { return m_filter.HaveFilter(); }

    // ---- Folders; each connects the store first, but GetCachedFolder ----

    std::size_t GetAllFolderCount();

    // Null for an index, or an id, that is not there; an id is logged. Ids compare with regard to case.
    CVxOutlookFolder* GetFolder(std::size_t index);
    CVxOutlookFolder* GetFolder(const CStringW& id);
    CVxOutlookFolder* GetCachedFolder(const CStringW& id) const;

    // One record for each folder, in their order; empty, and false, when the store could not be connected.
    bool GetFolderList(std::vector<CVxMAPIFolder>& folders);

    // The display name of a special folder, also in `result`; empty when there is none.
    CStringW GetSpecialFolderName(CStringW& result, EVxSpecialFolder which);

    // ---- One item, without its folder ----
    // Open the store if need be and leave it open. `out` is empty when a step fails. With `uriType` eUriAttachment the
    // body is that of the embedded item that `uri` names; an attachment is always named by `uri`.

    void GetItemBody(const CStringW& id, TBodyFormat format, CStringW& out, UriType uriType, const CURIObjectData& uri);
    void GetAttachment(const CStringW& id, TBodyFormat format, std::vector<unsigned char>& out, UriType uriType,
                       const CURIObjectData& uri);

    // ---- What the profile's row tells ----

    const CStringW& GetStoreEntryId() const noexcept { return m_entryId; }
    void SetStoreEntryId(const CStringW& id) { m_entryId = id; }
    const CStringW& GetStoreRecordKey() const noexcept { return m_recordKey; }
    void SetStoreRecordKey(const CStringW& key) { m_recordKey = key; }
    const CStringW& GetDisplayName() const noexcept { return m_displayName; }
    void SetStoreName(const CStringW& name) { m_displayName = name; }
    const CStringW& GetServer() const noexcept { return m_server; }
    void SetServer(const CStringW& server) { m_server = server; }
    const CStringW& GetServerDN() const noexcept { return m_serverDN; }
    void SetServerDN(const CStringW& serverDN) { m_serverDN = serverDN; }
    const CStringW& GetStoreDN() const noexcept { return m_storeDN; }
    void SetStoreDN(const CStringW& storeDN) { m_storeDN = storeDN; }
    EVxStoreType GetStoreType() const noexcept { return m_storeType; }
    void SetStoreType(EVxStoreType type) noexcept { m_storeType = type; }
    bool GetIsCached() const noexcept { return m_isCached; }
    void SetIsCached(bool isCached) noexcept { m_isCached = isCached; }
    bool GetIsDefault() const noexcept { return m_isDefault; }
    void SetStoreIsDefault(bool isDefault) noexcept { m_isDefault = isDefault; }

    CVxOutlookProfile* GetProfileRoot() const noexcept { return m_profile; }

    // Lent; null while the store is closed.
    IMsgStore* GetMapiStore() const noexcept { return m_store; }

protected:
    // Adds a folder to a list and its map. An id that is there already is logged, and the folder deleted: null.
    static CVxOutlookFolder* AddFolder(std::unique_ptr<CVxOutlookFolder> folder, FolderList& list, FolderMap& index);

    CVxMAPIFolder SerializeFolder(const CVxOutlookFolder& folder) const;

    FolderList m_folders;
    FolderMap m_folderMap;

private:
    // What a row of a hierarchy table, or a folder's own properties, tell.
    struct FolderProperties;

    static FolderProperties GetFolderPropertiesFromTable(const SRow& row);
    std::unique_ptr<CVxOutlookFolder> MakeFolder(const FolderProperties& properties, const CStringW& path);
    bool AddFolder(const CStringW& parentPath, const SRow& row, FolderList& list, FolderMap& index,
                   CVxOutlookFolder** added);

    HRESULT OpenFolder(ULONG size, const BYTE* entryId, VxMapiPtr<IMAPIFolder>& folder);
    HRESULT OpenFolder(const CStringW& id, VxMapiPtr<IMAPIFolder>& folder);
    bool OpenRootFolder(VxMapiPtr<IMAPIFolder>& folder, CStringW& rootId);
    bool ReadFolderProperties(IMAPIFolder* folder, FolderProperties& properties);
    void AddRootFolder(IMAPIFolder* root);

    // Adds what is beneath a folder, depth first, in the order of the tables; direct children only without `recurse`.
    // False when a part could not be read; the rest is there all the same.
    bool TraverseFolder(IMAPIFolder* folder, const CStringW& parentPath, bool recurse, FolderList& list,
                        FolderMap& index);

    // Adds a folder by its id, and those of its parents that are missing. Null when it cannot be had.
    CVxOutlookFolder* AddFolderAndParents(const CStringW& id, const CStringW& rootId);

    bool OpenInbox(VxMapiPtr<IMAPIFolder>& inbox);
    CStringW GetInboxDisplayName();
    CStringW GetFolderDisplayName(ULONG tag, EAdditionalFolderIndex index);
    std::vector<BYTE> FindSpecialFolder(ULONG tag, EAdditionalFolderIndex index);

    // Opens the item with that id and calls `use` with it; then it is closed and gone.
    template <typename Use>
    void WithItem(const CStringW& id, Use use);

    VxMapiPtr<IMsgStore> m_store;
    CItemsFilter m_filter;  // none, or a folder's id
    CStringW m_entryId;
    CStringW m_recordKey;
    CStringW m_displayName;  // what every path begins with
    CStringW m_server;
    CStringW m_serverDN;
    CStringW m_storeDN;
    CVxOutlookProfile* m_profile;  // not owned; the parent
    EVxStoreType m_storeType = static_cast<EVxStoreType>(-1);
    bool m_foldersLoaded = false;  // or loading them was tried
    bool m_isCached = false;
    bool m_isDefault = false;
};
