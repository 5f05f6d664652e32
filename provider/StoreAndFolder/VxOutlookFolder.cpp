#include "provider/StoreAndFolder/VxOutlookFolder.h"

#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "provider/Common/AsciiCase.h"
#include "provider/Common/FileTimeHelpers.h"
#include "provider/Common/Log.h"
#include "provider/Item/VxItem.h"
#include "provider/ItemFactory.h"
#include "provider/MessageClass.h"
#include "provider/RowValues.h"
#include "provider/StoreAndFolder/EnsureMapiConnect.h"
#include "provider/StoreAndFolder/VxOutlookStore.h"
#include "provider/VxDomain.h"

#include <algorithm>
#include <utility>

namespace {

constexpr auto& kSourcePath = "StoreAndFolder\\VxOutlookFolder.cpp"_w;

// The contents table's columns.
constexpr auto kColumns = MakeTagArray(PR_LONGTERM_ENTRYID_FROM_TABLE, PR_MESSAGE_CLASS_W, PR_RECORD_KEY,
                                       PR_LAST_MODIFICATION_TIME, PR_MESSAGE_FLAGS, PR_ENTRYID);
enum ContentsColumn : ULONG {
    kLongTermIdColumn = 0,
    kClassColumn = 1,
    kTimeColumn = 3,
    kFlagsColumn = 4,
    kEntryIdColumn = 5,
};

constexpr FILETIME kEndOfTime = {0xFFFFFFFF, 0x7FFFFFFF};

const WCHAR* BoolText(bool value) noexcept {
    return value ? "true"_w : "false"_w;
}

CStringW LowerAscii(CStringW text) {
    MakeLowerAscii(text);
    return text;
}

SRestriction PropertyRestriction(ULONG relop, SPropValue& value) noexcept {
    SRestriction restriction = {RES_PROPERTY, {}};
    restriction.res.resProperty = {relop, value.ulPropTag, &value};
    return restriction;
}

SPropValue TimeValue(const FILETIME& time) noexcept {
    SPropValue value = {PR_LAST_MODIFICATION_TIME, 0, {}};
    value.Value.ft = time;
    return value;
}

}  // namespace

CVxOutlookFolder::CVxOutlookFolder(const CStringW& entryId, const CStringW& name, const CStringW& path,
                                   const CStringW& storePath, CVxOutlookStore* store, const FILETIME& lastModified,
                                   EVxFolderType containerClass, bool hasSubFolders)
    : CVxConnectable(store),
      m_store(store),
      m_entryId(entryId),
      m_name(name),
      m_path(path),
      m_storePath(storePath),
      m_hasSubFolders(hasSubFolders),
      m_containerClass(containerClass),
      m_lastModified(lastModified) {}

CVxOutlookFolder::~CVxOutlookFolder() {
    EnsureDisconnected();
    CVxOutlookFolder::Clear();
}

void CVxOutlookFolder::ForcePaths(const CStringW& name, const CStringW& path, const CStringW& storePath) {
    m_name = name;
    m_path = path;
    m_storePath = storePath;
}

// ---- Connecting ------------------------------------------------------------------------------------------------------

bool CVxOutlookFolder::OnConnect() {
    Clear();
    if (!MapiConnect()) {
        VX_LOG('E') << Vx::LogMsg("MapiConnect failed"_w);
        return false;
    }
    return true;
}

void CVxOutlookFolder::OnDisconnect() {
    VX_LOG('D') << Vx::LogMsg("OnDisconnect Folder %s"_w, m_storePath);
    Clear();
    MapiDisconnect();
}

bool CVxOutlookFolder::MapiConnect() {
    m_lastConnectError = S_OK;
    m_folder.release();
    std::vector<BYTE> id;
    HRESULT hr = MAPI_E_INVALID_ENTRYID;
    if (CMapiUtil::Hex2Bin(m_entryId, id)) {
        ULONG type = 0;
        hr = m_store->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<ENTRYID*>(id.data()), &IID_IMAPIFolder,
                                m_useNoCache ? MAPI_NO_CACHE : 0, &type, reinterpret_cast<IUnknown**>(&m_folder));
    }
    if (FAILED(hr) || m_folder.get() == nullptr) {
        m_lastConnectError = FAILED(hr) ? hr : E_FAIL;
        VX_LOG('E') << Vx::LogMsg("Unable to connect to folder: %s"_w, m_storePath);
        return false;
    }
    return true;
}

void CVxOutlookFolder::MapiDisconnect() {
    m_folder.release();
    m_contentTable.release();
}

bool CVxOutlookFolder::IsMapiConnected() const {
    return m_folder.get() != nullptr;
}

void CVxOutlookFolder::Clear() {
    m_itemMap.clear();
    while (!m_items.empty()) {
        m_items.pop_back();
    }
    m_unsupportedItems = 0;
}

void CVxOutlookFolder::ChangeFilter(const CItemsFilter& filter) {
    if (filter != m_filter) {
        EnsureDisconnected();
        m_filter = filter;
    }
}

void CVxOutlookFolder::ChangeUseNoCache(bool useNoCache) {
    if (useNoCache != m_useNoCache) {
        EnsureDisconnected();
        m_useNoCache = useNoCache;
    }
}

// ---- The buffer ------------------------------------------------------------------------------------------------------

std::size_t CVxOutlookFolder::GetBufferSize() {
    EnsureConnected();
    return m_items.size();
}

std::int64_t CVxOutlookFolder::GetUnsupportedItemsCount() {
    EnsureConnected();
    return m_unsupportedItems;
}

CVxItem* CVxOutlookFolder::GetItem(std::size_t index) {
    EnsureConnected();
    return index < m_items.size() ? m_items[index].get() : nullptr;
}

CVxItem* CVxOutlookFolder::FindItemByID(const CStringW& id) {
    if (!EnsureConnected()) {
        return nullptr;
    }
    const auto inBuffer = [&] {
        const auto found = m_itemMap.find(id);
        return found != m_itemMap.end() ? found->second : nullptr;
    };
    if (CVxItem* item = inBuffer()) {
        return item;
    }
    VX_LOG('D') << Vx::LogMsg("itemId %s not found in buffer %s. Looking for new item..."_w, id, m_storePath);
    if (!GetItems(false)) {
        return nullptr;
    }
    CVxItem* item = inBuffer();
    if (item == nullptr) {
        VX_LOG('W') << Vx::LogMsg("itemId %s not found in folder %s"_w, id, m_storePath);
    }
    return item;
}

void CVxOutlookFolder::AddItemToBuffer(std::unique_ptr<CVxItem> item) {
    m_itemMap[item->GetID()] = item.get();
    m_items.push_back(std::move(item));
}

bool CVxOutlookFolder::GetItems(bool useNoCache) {
    ChangeUseNoCache(useNoCache);
    VX_LOG('D') << Vx::LogMsg("GetItems useNoCache=%s"_w, BoolText(useNoCache));
    EnsureConnected();
    EnsureChildDisconnected();
    Clear();
    for (int rowsRead = 0;;) {
        if (!FillBuffer(&rowsRead)) {
            return false;
        }
        if (rowsRead == 0 || !m_items.empty()) {
            return true;
        }
    }
}

bool CVxOutlookFolder::IsAborting() {
    const CVxDomain* domain = GetDomain();
    if (domain == nullptr || !domain->GetAbort()) {
        return false;
    }
    VX_LOG('I') << Vx::LogMsg("GetItems Aborting..."_w);
    return true;
}

bool CVxOutlookFolder::FillBuffer(int* rowsRead) {
    *rowsRead = 0;
    IMAPITable* table = GetContentTable();
    if (table == nullptr) {
        return false;
    }
    VxLpRowsPtr<SRowSet> rows;
    const HRESULT hr = CMapiUtil::QueryRows(table, kPageRows, 0, &rows);
    if (hr != S_OK || rows.get() == nullptr) {
        VX_LOG('W') << Vx::LogMsg("failed QueryRows"_w);
        return false;
    }
    *rowsRead = static_cast<int>(rows->cRows);
    for (ULONG i = 0; i < rows->cRows; ++i) {
        if (IsAborting()) {
            Clear();
            return false;
        }
        std::unique_ptr<CVxItem> item;
        switch (MakeItem(rows->aRow[i], GetItemEidFromQuery(rows->aRow[i]), item)) {
            case eItemSkipped: break;
            case eItemMade: AddItemToBuffer(std::move(item)); break;
            case eItemUnsupported: ++m_unsupportedItems; break;
        }
    }
    return true;
}

CStringW CVxOutlookFolder::GetItemEidFromQuery(const SRow& row) {
    const bool hasLongTermId = ColumnOfType(row, kLongTermIdColumn, PT_BINARY) != nullptr;
    return HexColumn(row, hasLongTermId ? kLongTermIdColumn : kEntryIdColumn);
}

bool CVxOutlookFolder::ShouldSkipItem(const CStringW& id) const {
    return m_filter.GetKind() == CItemsFilter::Kind::ById && id != m_filter.GetId();
}

bool CVxOutlookFolder::ShouldSkipItem(const FILETIME& time) const {
    return m_filter.GetKind() == CItemsFilter::Kind::ByTime && !IsZero(time)
           && FileTimeTicks(m_filter.GetTime()) >= FileTimeTicks(time);
}

TItemState CVxOutlookFolder::MakeItem(const SRow& row, const CStringW& id, std::unique_ptr<CVxItem>& item) {
    VX_LOG('D') << Vx::LogMsgDebugOnly("EID: %s"_w, id);
    const FILETIME time = TimeColumn(row, kTimeColumn);
    if (ShouldSkipItem(id) || ShouldSkipItem(time)) {
        return eItemSkipped;
    }
    if (ColumnOfType(row, kClassColumn, PT_UNICODE) == nullptr) {
        VX_LOG('D') << Vx::LogMsg("Ignored message (no type information)"_w);
        return eItemUnsupported;
    }
    const CStringW messageClass = TextColumn(row, kClassColumn);
    CVxDomain* domain = GetDomain();
    if (domain != nullptr) {
        item = domain->GetItemFactory().MakeItem(ItemTypeOfMessageClass(messageClass), this);
    }
    if (item == nullptr) {
        VX_LOG('D') << Vx::LogMsg("Ignored message of type '%s'"_w, LowerAscii(messageClass));
        return eItemUnsupported;
    }
    if (IsZero(time)) {
        VX_LOG('W') << Vx::LogMsg("Item without LastModified. Type %s, EID %s in folder %s"_w, item->GetTypePsz(), id,
                                  m_storePath);
    }
    const SPropValue* flags = ColumnOfType(row, kFlagsColumn, PT_LONG);
    if (item->GetType() == eVxItemEmail && flags != nullptr) {
        item->SetReadStatus((flags->Value.ul & MSGFLAG_READ) != 0);
    }
    item->SetLastModified(time);
    item->SetEntryId(id);
    item->SetFolder(this);
    item->SetStore(m_store);
    return eItemMade;
}

// ---- The contents table ----------------------------------------------------------------------------------------------

IMAPITable* CVxOutlookFolder::GetContentTable() {
    if (m_contentTable.get() != nullptr) {
        return m_contentTable;
    }
    if (!OpenContentTable(HaveFilter(), m_contentTable)) {
        return nullptr;
    }
    if (const HRESULT hr = RestrictContentTable(); FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("Error in GetItems restriction! (%x)"_w, hr);
    }
    return m_contentTable;
}

bool CVxOutlookFolder::OpenContentTable(bool ascending, VxMapiPtr<IMAPITable>& table) {
    table.release();
    if (m_folder.get() == nullptr) {
        return false;  // why is told by the connect that failed
    }
    HRESULT hr = m_folder->GetContentsTable(MAPI_UNICODE, &table);
    if (FAILED(hr) || table.get() == nullptr) {
        m_lastConnectError = FAILED(hr) ? hr : E_FAIL;
        VX_LOG('E') << Vx::LogMsg("GetContentsTable failed (%x) on folder %s"_w, hr, m_storePath);
        return false;
    }
    hr = CMapiUtil::SetColumns(table, kColumns, 0);
    if (FAILED(hr)) {
        m_lastConnectError = hr;
        VX_LOG('E') << Vx::LogMsg("SetColumns failed (%x) on folder %s"_w, hr, m_storePath);
        table.release();
        return false;
    }
    SortByCreationTime(table, ascending);
    return true;
}

HRESULT CVxOutlookFolder::SortByCreationTime(IMAPITable* table, bool ascending) {
    // In spite of the name it is the time of the last change: only that one moves when an item is edited.
    const SizedSSortOrderSet<1> order = {
        .aSort = {{PR_LAST_MODIFICATION_TIME, ascending ? TABLE_SORT_ASCEND : TABLE_SORT_DESCEND}}};
    return CMapiUtil::SortTable(table, order, 0);
}

HRESULT CVxOutlookFolder::RestrictContentTable() {
    switch (m_filter.GetKind()) {
        case CItemsFilter::Kind::ByTime: return RestrictCursorToBound(m_filter.GetTime());
        case CItemsFilter::Kind::ById: return RestrictCursorToBound(m_filter.GetId());
        case CItemsFilter::Kind::None: break;
    }
    return m_contentTable->Restrict(nullptr, 0);
}

HRESULT CVxOutlookFolder::RestrictCursorToBound(const FILETIME& time) {
    if (m_contentTable.get() == nullptr) {
        return S_FALSE;
    }
    SetupRestrictionWithinDateRange(time);
    return m_contentTable->Restrict(&m_restriction.root, 0);
}

HRESULT CVxOutlookFolder::RestrictCursorToBound(const CStringW& id) {
    if (m_contentTable.get() == nullptr) {
        return S_FALSE;
    }
    SetupRestrictionForItemId(id);
    const HRESULT hr = m_contentTable->Restrict(&m_restriction.root, 0);
    if (hr == MAPI_E_NOT_FOUND) {
        VX_LOG('D') << Vx::LogMsg("Item not found EID: %s"_w, id);
    }
    return hr;
}

void CVxOutlookFolder::SetupRestrictionWithinDateRange(const FILETIME& start) {
    m_restriction.values[0] = TimeValue(start);
    m_restriction.root = PropertyRestriction(RELOP_GE, m_restriction.values[0]);
}

void CVxOutlookFolder::SetupRestrictionWithinDateRange(const FILETIME& start, const FILETIME& end) {
    m_restriction.values[0] = TimeValue(start);
    m_restriction.values[1] = TimeValue(IsZero(end) ? kEndOfTime : end);
    m_restriction.children[0] = PropertyRestriction(RELOP_GE, m_restriction.values[0]);
    m_restriction.children[1] = PropertyRestriction(RELOP_LT, m_restriction.values[1]);
    m_restriction.root.rt = RES_AND;
    m_restriction.root.res.resAnd = {2, m_restriction.children};
}

void CVxOutlookFolder::SetupRestrictionForItemId(const CStringW& id) {
    m_restrictionId.clear();
    if (!CMapiUtil::Hex2Bin(id, m_restrictionId)) {
        m_restrictionId.clear();  // what is no id matches nothing
    }
    constexpr ULONG kIdTags[] = {PR_LONGTERM_ENTRYID_FROM_TABLE, PR_ENTRYID};
    for (std::size_t i = 0; i < 2; ++i) {
        m_restriction.values[i] = {kIdTags[i], 0, {}};
        m_restriction.values[i].Value.bin = {static_cast<ULONG>(m_restrictionId.size()), m_restrictionId.data()};
        m_restriction.children[i] = PropertyRestriction(RELOP_EQ, m_restriction.values[i]);
    }
    m_restriction.root.rt = RES_OR;
    m_restriction.root.res.resOr = {2, m_restriction.children};
}

// ---- Counting --------------------------------------------------------------------------------------------------------

bool CVxOutlookFolder::CalculateNumberOfItems(const FILETIME* start, const FILETIME* end, bool useNoCache, int* before,
                                              int* inRange, int* after) {
    ChangeUseNoCache(useNoCache);
    folder_ensure_mapi_connect<CVxOutlookFolder> guard(*this);
    if (!guard.MapiConnect()) {
        RegisteError(VxErrorConnect);
        VX_LOG('E') << Vx::LogMsg("CVxOutlookFolder::CalculateNumberOfItems (MapiConnect) failed"_w);
        return false;
    }
    VxMapiPtr<IMAPITable> table;  // of its own, so that the cursor stays where it is
    if (!OpenContentTable(true, table)) {
        RegisteError(VxErrorConnect);
        VX_LOG('E') << Vx::LogMsg("CVxOutlookFolder::CalculateNumberOfItems (OpenContentTable) failed"_w);
        return false;
    }
    const bool counted = GetNumberOfRows(table, *start, *end, before, inRange, after);
    guard.MapiDisconnect();
    VX_LOG('D') << Vx::LogMsg("CalculateNumberOfItems useNoCache=%s, nBeforeTmp %d, nInTmp=%d, nAfterTmp=%d"_w,
                              BoolText(useNoCache), *before, *inRange, *after);
    ClearError(VxErrorConnect);
    return counted;
}

bool CVxOutlookFolder::FindBound(IMAPITable* table, const FILETIME& from, const FILETIME& to, BOOKMARK origin,
                                 ULONG flags, int& row) {
    SetupRestrictionWithinDateRange(from, to);
    const HRESULT hr = table->FindRow(&m_restriction.root, origin, flags);
    if (hr == MAPI_E_NOT_FOUND) {
        row = -1;
        return true;
    }
    if (FAILED(hr)) {
        return false;
    }
    ULONG position = 0;
    ULONG numerator = 0;
    ULONG denominator = 0;
    if (FAILED(table->QueryPosition(&position, &numerator, &denominator))) {
        return false;
    }
    row = static_cast<int>(position);
    return true;
}

bool CVxOutlookFolder::Bounds(IMAPITable* table, const FILETIME& from, const FILETIME& to, RowRange& range) {
    return FindBound(table, from, to, BOOKMARK_BEGINNING, 0, range.first)
           && FindBound(table, from, to, BOOKMARK_END, DIR_BACKWARD, range.last);
}

bool CVxOutlookFolder::GetNumberOfRows(IMAPITable* table, const FILETIME& start, const FILETIME& end, int* before,
                                       int* inRange, int* after) {
    *before = *inRange = *after = 0;
    RowRange range;
    if (!Bounds(table, FTZero(), kEndOfTime, range)) {
        return false;
    }
    const int total = range.last + 1;
    if (total == 0) {
        return true;
    }
    if (!Bounds(table, start, end, range)) {
        return false;
    }
    if (range.first != -1) {
        *inRange = range.last - range.first + 1;
        *before = range.first;
        *after = total - range.last - 1;
        return true;
    }
    // Nothing is before the beginning of time; asking would take the zero for an open end.
    range = {};
    if (!IsZero(start) && !Bounds(table, FTZero(), start, range)) {
        return false;
    }
    *before = range.first != -1 ? range.last + 1 : 0;
    *after = range.first != -1 ? total - range.last - 1 : total;
    return true;
}
