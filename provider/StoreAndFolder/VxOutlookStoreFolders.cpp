// How a store reads its tree of folders: CVxOutlookStore's second source.
#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "provider/Common/Log.h"
#include "provider/ImportProcs.h"
#include "provider/RowValues.h"
#include "provider/StoreAndFolder/EnsureMapiConnect.h"
#include "provider/StoreAndFolder/HierarchyReader.h"
#include "provider/StoreAndFolder/VxOutlookProfile.h"
#include "provider/StoreAndFolder/VxOutlookStore.h"

#include <algorithm>
#include <utility>

namespace {

constexpr auto& kSourcePath = "StoreAndFolder\\VxOutlookStore.cpp"_w;

constexpr WCHAR kSlash = '/';
constexpr auto& kTopPath = "/"_w;

// An error bit that is honoured should anybody ever set it: parents are then not made up.
constexpr std::int64_t kNoOrphans = 8;

CStringW ChildPath(const CStringW& parentPath, const CStringW& name) {
    return parentPath == kTopPath ? parentPath + name : parentPath + kSlash + name;
}

// One level of a walk: a folder and its children's rows.
struct Level {
    VxMapiPtr<IMAPIFolder> owned;  // null for the folder that the walk began at
    CStringW path;
    HierarchyReader children;
    IMAPIFolder* folder = nullptr;
};

// Opens the folder of a row of its parent's table. An id that is missing is a failure: without one the parent would
// open the root.
HRESULT OpenChild(IMAPIFolder* parent, const SRow& row, VxMapiPtr<IMAPIFolder>& child) {
    const std::span<const BYTE> id = BinaryColumn(row, kFolderEntryId);
    if (id.empty()) {
        return MAPI_E_INVALID_ENTRYID;
    }
    ULONG type = 0;
    const HRESULT hr =
        parent->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<ENTRYID*>(const_cast<BYTE*>(id.data())),
                          &IID_IMAPIFolder, MAPI_BEST_ACCESS, &type, reinterpret_cast<IUnknown**>(&child));
    return SUCCEEDED(hr) && child.get() == nullptr ? E_FAIL : hr;
}

}  // namespace

struct CVxOutlookStore::FolderProperties {
    CStringW name;
    CStringW id;
    CStringW parentId;
    CStringW urlName;
    EVxFolderType containerClass = eVxFolderUnknown;
    bool hasSubFolders = false;
    FILETIME lastModified = {0, 0};
};

CVxOutlookStore::FolderProperties CVxOutlookStore::GetFolderPropertiesFromTable(const SRow& row) {
    FolderProperties properties;
    properties.name = TextColumn(row, kFolderName);
    if (ColumnOfType(row, kFolderContainerClass, PT_UNICODE) != nullptr) {
        properties.containerClass = ParseContainerClass(TextColumn(row, kFolderContainerClass));
    }
    const SPropValue* hasSubFolders = ColumnOfType(row, kFolderHasSubFolders, PT_BOOLEAN);
    properties.hasSubFolders = hasSubFolders != nullptr && hasSubFolders->Value.b != 0;
    properties.id = HexColumn(row, kFolderLongTermId);
    if (properties.id.empty()) {
        properties.id = HexColumn(row, kFolderEntryId);
    }
    properties.parentId = HexColumn(row, kFolderParentEntryId);
    properties.urlName = TextColumn(row, kFolderUrlName);
    properties.lastModified = TimeColumn(row, kFolderLastModified);
    return properties;
}

std::unique_ptr<CVxOutlookFolder> CVxOutlookStore::MakeFolder(const FolderProperties& properties,
                                                              const CStringW& path) {
    // The path begins with a slash of its own, so the store's path has two behind the store's name.
    return std::make_unique<CVxOutlookFolder>(properties.id, properties.name, path, m_displayName + kSlash + path, this,
                                              properties.lastModified, properties.containerClass,
                                              properties.hasSubFolders);
}

CVxOutlookFolder* CVxOutlookStore::AddFolder(std::unique_ptr<CVxOutlookFolder> folder, FolderList& list,
                                             FolderMap& index) {
    if (!index.emplace(folder->GetEntryId(), folder.get()).second) {
        VX_LOG('I') << Vx::LogMsg("Folder already exists: %s"_w, folder->GetName());
        return nullptr;
    }
    return list.emplace_back(std::move(folder)).get();
}

bool CVxOutlookStore::AddFolder(const CStringW& parentPath, const SRow& row, FolderList& list, FolderMap& index,
                                CVxOutlookFolder** added) {
    const FolderProperties properties = GetFolderPropertiesFromTable(row);
    *added = AddFolder(MakeFolder(properties, ChildPath(parentPath, properties.name)), list, index);
    return properties.hasSubFolders;
}

HRESULT CVxOutlookStore::OpenFolder(ULONG size, const BYTE* entryId, VxMapiPtr<IMAPIFolder>& folder) {
    ULONG type = 0;
    const HRESULT hr =
        m_store->OpenEntry(size, reinterpret_cast<ENTRYID*>(const_cast<BYTE*>(entryId)), &IID_IMAPIFolder,
                           MAPI_BEST_ACCESS, &type, reinterpret_cast<IUnknown**>(&folder));
    return SUCCEEDED(hr) && folder.get() == nullptr ? E_FAIL : hr;
}

HRESULT CVxOutlookStore::OpenFolder(const CStringW& id, VxMapiPtr<IMAPIFolder>& folder) {
    std::vector<BYTE> bytes;
    if (!CMapiUtil::Hex2Bin(id, bytes)) {
        return MAPI_E_INVALID_ENTRYID;
    }
    return OpenFolder(static_cast<ULONG>(bytes.size()), bytes.data(), folder);
}

bool CVxOutlookStore::OpenRootFolder(VxMapiPtr<IMAPIFolder>& folder, CStringW& rootId) {
    const ULONG tag = m_storeType == eVxStorePublic ? PR_IPM_PUBLIC_FOLDERS_ENTRYID : PR_IPM_SUBTREE_ENTRYID;
    VxMapiFrBufPtr<SPropValue> id;
    HRESULT hr = m_store.get() != nullptr ? HrGetOneProp(m_store, tag, &id) : MAPI_E_NOT_INITIALIZED;
    if (FAILED(hr) || id.get() == nullptr || id->ulPropTag != tag) {
        VX_LOG('E') << Vx::LogMsg("unable to get IPM root folder (%x)"_w, hr);
        return false;
    }
    rootId = CMapiUtil::Bin2Hex(id->Value.bin.cb, id->Value.bin.lpb);
    hr = OpenFolder(id->Value.bin.cb, id->Value.bin.lpb, folder);
    if (FAILED(hr)) {
        m_lastConnectError = hr;
        VX_LOG('E') << Vx::LogMsg("OpenEntry failed (%x)"_w, hr);
        return false;
    }
    return true;
}

bool CVxOutlookStore::AddSubFolders() {
    folder_ensure_mapi_connect<CVxOutlookStore> guard(*this);
    if (!guard.MapiConnect()) {
        VX_LOG('E') << Vx::LogMsg("CVxMapi::OpenMsgStore for %s failed."_w, m_displayName);
        return false;
    }
    VxMapiPtr<IMAPIFolder> root;
    CStringW rootId;
    if (!OpenRootFolder(root, rootId)) {
        return false;
    }
    AddRootFolder(root);
    if (!m_filter.HaveFilter()) {
        VX_LOG('D') << Vx::LogMsg("Traversing Folder Tree..."_w);
        if (!TraverseFolder(root, kTopPath, true, m_folders, m_folderMap)) {
            return false;
        }
    } else if (!m_filter.GetId().empty() && m_filter.GetId() != rootId) {
        AddFolderAndParents(m_filter.GetId(), rootId);
    }
    VX_LOG('D') << Vx::LogMsg("Added root folder"_w);
    return true;
}

void CVxOutlookStore::AddRootFolder(IMAPIFolder* root) {
    ULONG count = 0;
    VxMapiFrBufPtr<SPropValue> values;
    root->GetProps(HierarchyColumns(), MAPI_UNICODE, &count, &values);
    if (values.get() == nullptr || count == 0) {
        return;
    }
    CVxOutlookFolder* folder = nullptr;
    AddFolder(kTopPath, SRow{0, count, values}, m_folders, m_folderMap, &folder);
    if (folder != nullptr) {
        const CStringW path = kTopPath + m_displayName;
        folder->ForcePaths(m_displayName, path, path);
    }
}

bool CVxOutlookStore::TraverseFolder(IMAPIFolder* folder, const CStringW& parentPath, bool recurse, FolderList& list,
                                     FolderMap& index) {
    bool complete = true;
    const auto fail = [&](HRESULT hr) {
        m_lastConnectError = hr;
        complete = false;
    };
    // A stack of our own, since trees may be deeper than a thread's stack bears.
    std::vector<std::unique_ptr<Level>> levels;
    const auto enter = [&](IMAPIFolder* opened, CStringW path) -> Level& {
        Level& level = *levels.emplace_back(std::make_unique<Level>());
        level.folder = opened;
        level.path = std::move(path);
        if (const HRESULT hr = level.children.Open(opened); FAILED(hr)) {
            fail(hr);
        }
        return level;
    };
    enter(folder, parentPath);
    while (!levels.empty()) {
        Level& level = *levels.back();
        const HierarchyReader::Next next = level.children.NextRow();
        if (next.failed) {
            fail(next.result);
        }
        if (next.row == nullptr) {
            levels.pop_back();
            continue;
        }
        CVxOutlookFolder* added = nullptr;
        const bool hasSubFolders = AddFolder(level.path, *next.row, list, index, &added);
        if (added == nullptr || !hasSubFolders || !recurse) {
            continue;
        }
        VxMapiPtr<IMAPIFolder> child;
        if (const HRESULT hr = OpenChild(level.folder, *next.row, child); FAILED(hr)) {
            fail(hr);
            continue;
        }
        Level& below = enter(child, added->GetFullPath());
        below.owned.reset(child.releasePointer());
    }
    return complete;
}

bool CVxOutlookStore::ReadFolderProperties(IMAPIFolder* folder, FolderProperties& properties) {
    ULONG count = 0;
    VxMapiFrBufPtr<SPropValue> values;
    folder->GetProps(HierarchyColumns(), MAPI_UNICODE, &count, &values);  // what is there counts, whatever it gives
    if (values.get() == nullptr || count == 0) {
        return false;
    }
    properties = GetFolderPropertiesFromTable(SRow{0, count, values});
    return true;
}

CVxOutlookFolder* CVxOutlookStore::AddFolderAndParents(const CStringW& id, const CStringW& rootId) {
    const auto add = [this](const FolderProperties& properties, const CStringW& path) {
        return AddFolder(MakeFolder(properties, path), m_folders, m_folderMap);
    };
    // Upwards, from the wanted folder to one whose place is known.
    std::vector<FolderProperties> missing;  // the wanted folder first
    std::vector<CStringW> asked;            // the ids on the way
    CVxOutlookFolder* above = nullptr;      // the folder of the id asked for last; null when it cannot be had
    for (CStringW current = id;;) {
        asked.push_back(current);
        VxMapiPtr<IMAPIFolder> folder;
        if (const HRESULT hr = OpenFolder(current, folder); FAILED(hr)) {
            VX_LOG('E') << Vx::LogMsg("OpenEntry failed (%x)"_w, hr);
            break;
        }
        FolderProperties properties;
        if (!ReadFolderProperties(folder, properties)) {
            break;
        }
        const CStringW& parentId = properties.parentId;
        if (parentId == current) {
            VX_LOG('W') << Vx::LogMsg("Reached hierarchy root while looking for parent folder. Unsupported case"_w);
            break;
        }
        if (properties.name.empty()) {
            VX_LOG('W') << Vx::LogMsg("Item With no name - Unsupported. (F)Eid: %s"_w, current);
            break;
        }
        if (parentId.empty()) {
            VX_LOG('W') << Vx::LogMsg("Folder without parent tag: eid %s path %s store %s"_w, current,
                                      properties.urlName, m_entryId);
            above = add(properties, kTopPath + properties.name);
            break;
        }
        if (const CVxOutlookFolder* parent = GetCachedFolder(parentId)) {
            const bool isTop = parentId == rootId;
            above = add(properties, (isTop ? CStringW() : parent->GetFullPath()) + kSlash + properties.name);
            break;
        }
        const bool isCircle = std::find(asked.begin(), asked.end(), parentId) != asked.end();
        CStringW next = parentId;
        missing.push_back(std::move(properties));
        if (isCircle) {
            VX_LOG('W') << Vx::LogMsg("Reached hierarchy root while looking for parent folder. Unsupported case"_w);
            break;
        }
        current = std::move(next);
    }
    // Downwards again, each beneath the one before. Without that it becomes an orphan beneath the root.
    for (; !missing.empty(); missing.pop_back()) {
        const FolderProperties& properties = missing.back();
        CStringW path = kTopPath + properties.name;
        if (above != nullptr) {
            path.insert(0, above->GetFullPath());
        } else if (HasErrors(kNoOrphans)) {
            return nullptr;
        } else {
            VX_LOG('W') << Vx::LogMsg("Fail to get parent folder. ParentEID %s"_w, properties.parentId);
            VX_LOG('I') << Vx::LogMsg("current: Folder without parent tag: eid %s path %s store %s"_w,
                                      asked[missing.size() - 1], properties.urlName, m_entryId);
        }
        above = add(properties, path);
    }
    return above;
}

bool CVxOutlookStore::GetSubFolders(const CStringW& folderId, const CStringW& parentPath,
                                    std::vector<CVxMAPIFolder>& folders) {
    folders.clear();
    folder_ensure_mapi_connect<CVxOutlookStore> guard(*this);
    if (!guard.MapiConnect()) {
        RegisteError(VxErrorConnect);
        VX_LOG('E') << Vx::LogMsg("CVxOutlookProfile::OpenMsgStore for %s failed."_w, m_displayName);
        return false;
    }
    ClearError(VxErrorConnect);
    VxMapiPtr<IMAPIFolder> folder;
    if (folderId.empty()) {
        CStringW rootId;
        if (!OpenRootFolder(folder, rootId)) {
            return false;
        }
    } else if (const HRESULT hr = OpenFolder(folderId, folder); FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("unable to get root folder (%x). ID %s"_w, hr, folderId);
        return false;
    }
    VX_LOG('D') << Vx::LogMsg("Traversing Folder Tree..."_w);
    FolderList children;  // of this call alone
    FolderMap index;
    if (!TraverseFolder(folder, parentPath, false, children, index)) {
        return false;
    }
    for (const auto& child : children) {
        folders.push_back(SerializeFolder(*child));
    }
    return true;
}
