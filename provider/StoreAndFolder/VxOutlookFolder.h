// CVxOutlookFolder: one folder of a store. Connected, it has the folder of MAPI open; its contents table, opened at the
// first read, is a cursor that each GetItems moves on by a page of rows, of which it makes items. So reading a folder is
// calling GetItems until it gives nothing more; disconnecting, or another filter, starts again from the top.
//
// Items are the folder's own, and live until its next GetItems, Clear or disconnect.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "platform/WideText.h"
#include "provider/ItemTypes.h"
#include "provider/MapiHolders.h"
#include "provider/StoreAndFolder/ItemsFilter.h"
#include "provider/VxConnectable.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

class CVxOutlookStore;

// What became of a row.
enum TItemState : int {
    eItemSkipped = 0,  // the filter does not want it
    eItemMade = 1,
    eItemUnsupported = 2,  // its message class is missing, or none of ours
};

class CVxOutlookFolder : public CVxConnectable {
public:
    // `path` begins with "/"; `storePath` is the store's name, "/" and the path.
    CVxOutlookFolder(const CStringW& entryId, const CStringW& name, const CStringW& path, const CStringW& storePath,
                     CVxOutlookStore* store, const FILETIME& lastModified, EVxFolderType containerClass,
                     bool hasSubFolders);
    ~CVxOutlookFolder() override;

    bool OnConnect() override;
    void OnDisconnect() override;

    // Replaces the buffer's items by those of the next rows: pages without any item are passed over. False when the rows
    // cannot be read, and when the host has asked to stop; the buffer is then empty. At the end of the folder it is
    // empty, too, and the result true. With `useNoCache` the server is asked instead of a local copy; a change of that
    // starts from the top.
    virtual bool GetItems(bool useNoCache);

    // Counts the items changed before `start`, from then to before `end`, and from then on, without reading them or
    // moving the cursor. A zero `end` is the end of time. False when they cannot be counted.
    virtual bool CalculateNumberOfItems(const FILETIME* start, const FILETIME* end, bool useNoCache, int* before,
                                        int* inRange, int* after);

    // Opens and closes the folder of MAPI, the contents table with it. A failure is GetLastConnectError.
    virtual bool MapiConnect();
    virtual void MapiDisconnect();
    virtual bool IsMapiConnected() const;

    // Deletes the buffer's items and forgets the count of unsupported ones. The cursor stays.
    virtual void Clear();

    // The cursor, opened at the first call: newest first, or with a filter what it lets through, oldest first. Lent;
    // null when it cannot be opened.
    virtual IMAPITable* GetContentTable();

    // ---- Which items are wanted: those changed after a time, the one with an id, or all ----
    // A filter that is not the one before disconnects the folder.

    void SetItemFilter(const FILETIME& time) { ChangeFilter(CItemsFilter(time)); }
    void SetItemFilter(const CStringW& id) { ChangeFilter(CItemsFilter(id)); }
    void ClearItemFilter() { ChangeFilter(CItemsFilter()); }
    bool HaveFilter() const noexcept { return m_filter.HaveFilter(); }

    // ---- The buffer; each connects the folder first, but AddItemToBuffer ----

    std::size_t GetBufferSize();
    std::int64_t GetUnsupportedItemsCount();

    // Null behind the end.
    CVxItem* GetItem(std::size_t index);

    // The item with that id: of the buffer, or of the page behind it. Null, with a line in the log, when it is in neither.
    CVxItem* FindItemByID(const CStringW& id);

    void AddItemToBuffer(std::unique_ptr<CVxItem> item);

    // ---- What the store's row told ----

    // Overwrites name and paths, as the root of a store has them from the store.
    void ForcePaths(const CStringW& name, const CStringW& path, const CStringW& storePath);

    const CStringW& GetEntryId() const noexcept { return m_entryId; }
    const CStringW& GetName() const noexcept { return m_name; }
    const CStringW& GetFolderName() const noexcept { return m_name; }
    const CStringW& GetFullPath() const noexcept { return m_path; }
    const CStringW& GetFolderPath() const noexcept { return m_path; }
    const CStringW& GetStorePath() const noexcept { return m_storePath; }
    bool GetHasSubFolders() const noexcept { return m_hasSubFolders; }
    EVxFolderType GetContainerClass() const noexcept { return m_containerClass; }
    const FILETIME& GetLastModified() const noexcept { return m_lastModified; }
    CVxOutlookStore* GetStore() const noexcept { return m_store; }

protected:
    // Rows that one read asks for.
    static constexpr LONG kPageRows = 30;

    // Whether the host has asked to stop; then a line in the log says so.
    bool IsAborting();

    VxMapiPtr<IMAPITable> m_contentTable;

private:
    // Conditions on rows as the table gets them: a node, its two children and their values. It lives in the folder,
    // since a table may hold on to it.
    struct Restriction {
        SRestriction root;
        SRestriction children[2];
        SPropValue values[2];
    };

    // The first and the last row of a range, -1 for none.
    struct RowRange {
        int first = -1;
        int last = -1;
    };

    void ChangeFilter(const CItemsFilter& filter);
    void ChangeUseNoCache(bool useNoCache);

    bool OpenContentTable(bool ascending, VxMapiPtr<IMAPITable>& table);
    static HRESULT SortByCreationTime(IMAPITable* table, bool ascending);
    HRESULT RestrictContentTable();

    void SetupRestrictionWithinDateRange(const FILETIME& start);
    void SetupRestrictionWithinDateRange(const FILETIME& start, const FILETIME& end);
    void SetupRestrictionForItemId(const CStringW& id);
    HRESULT RestrictCursorToBound(const FILETIME& time);
    HRESULT RestrictCursorToBound(const CStringW& id);

    bool FillBuffer(int* rowsRead);
    TItemState MakeItem(const SRow& row, const CStringW& id, std::unique_ptr<CVxItem>& item);
    bool ShouldSkipItem(const CStringW& id) const;
    bool ShouldSkipItem(const FILETIME& time) const;
    static CStringW GetItemEidFromQuery(const SRow& row);

    bool Bounds(IMAPITable* table, const FILETIME& from, const FILETIME& to, RowRange& range);
    bool FindBound(IMAPITable* table, const FILETIME& from, const FILETIME& to, BOOKMARK origin, ULONG flags, int& row);
    bool GetNumberOfRows(IMAPITable* table, const FILETIME& start, const FILETIME& end, int* before, int* inRange,
                         int* after);

    VxMapiPtr<IMAPIFolder> m_folder;
    CVxOutlookStore* m_store;  // not owned; the parent
    CStringW m_entryId;
    CStringW m_name;
    CStringW m_path;
    CStringW m_storePath;
    bool m_hasSubFolders;
    bool m_useNoCache = false;
    EVxFolderType m_containerClass;
    FILETIME m_lastModified;
    CItemsFilter m_filter;
    Restriction m_restriction = {};
    std::vector<BYTE> m_restrictionId;              // the bytes of an id that m_restriction asks for
    std::vector<std::unique_ptr<CVxItem>> m_items;  // the buffer, in the order of the rows
    std::map<CStringW, CVxItem*> m_itemMap;         // the same by id
    std::int64_t m_unsupportedItems = 0;            // rows since the last Clear
};
