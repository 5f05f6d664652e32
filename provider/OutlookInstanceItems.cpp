// COutlookInstance: lists of items, and their content. There are two ways to an item: through its folder, whose page of
// items is searched, and directly from its store by its id.
#include "provider/Attachments/VxAttachment.h"
#include "provider/ExchObjectData.h"
#include "provider/FacadeCall.h"
#include "provider/FacadeTargets.h"
#include "provider/Item/VxItem.h"
#include "provider/ItemRecords.h"
#include "provider/MAPIUtils.h"
#include "provider/OutlookInstance.h"
#include "provider/RecordList.h"
#include "provider/StoreAndFolder/VxOutlookFolder.h"
#include "provider/StoreAndFolder/VxOutlookStore.h"
#include "provider/VxDomain.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

constexpr auto& kSourcePath = "OutlookInstance.cpp"_w;

// A borrowed URI becomes a record of its own. Returning the local would give it out as it is, borrowing.
CURIObjectData CopyOf(VARIANT& uri) {
    const CURIObjectData borrowed(&uri);
    return CURIObjectData(borrowed);
}

void NameItem(CVxItem& item, CURIObjectData& uri) {
    uri.SetItemId(item.GetID(), item.GetType(), CMapiUtil::FromFileTimeToInt64(item.GetLastModified()),
                  item.GetReadStatus() != 0);
}

// S_FALSE, with a line.
HRESULT ItemNotFound(const FacadeCall& call) {
    call.Log('W', "item NOT found!"_w);
    return S_FALSE;
}

// A byte array of the receiver's; an empty one for no bytes at all.
void GiveBytes(VARIANT* out, const BYTE* bytes, std::size_t size) {
    CExchObject::SetBinaryInVariant(out, bytes, bytes == nullptr ? 0 : static_cast<int>(size));
}

// The item whose attachments a URI asks for; null for a plain attachment, which is logged.
HRESULT FindAttachmentOwner(const FacadeCall& call, const CURIObjectData& uri, CVxItem& item, CVxItem*& owner) {
    owner = &item;
    if (uri.GetUriType() != eUriAttachment) {
        return S_OK;
    }
    CVxConnectable* found = item.FindAttachmentByAttachNum(uri.AttachmentNum());
    if (found == nullptr) {
        return ItemNotFound(call);
    }
    owner = found->GetVxItem();
    if (owner == nullptr) {
        call.Log('E', "Invalid call: QueryAttachments for non-item object (binary attachment)."_w);
    }
    return S_OK;
}

// The item that a URI names or is about, found in its folder.
HRESULT FindItem(const FacadeCall& call, CVxDomain& domain, const CURIObjectData& uri, bool filterToItem,
                 CVxItem*& item) {
    CVxOutlookFolder* folder = FindFolder(domain, uri);
    if (folder == nullptr) {
        return S_FALSE;
    }
    if (filterToItem) {
        folder->SetItemFilter(uri.ItemId());
    }
    item = folder->FindItemByID(uri.ItemId());
    return item == nullptr ? ItemNotFound(call) : S_OK;
}

// What an attachment's URI names inside its item. It has to be of the kind that the operation is for, an attachment with
// `expectBinary` and an item without; E_FAIL, with a line that names the operation, when it is not.
HRESULT FindInside(const FacadeCall& call, const WCHAR* operation, CVxItem& item, const CURIObjectData& uri,
                   bool expectBinary, CVxConnectable*& found) {
    found = item.FindAttachmentByAttachNum(uri.AttachmentNum());
    if (found == nullptr) {
        return ItemNotFound(call);
    }
    if ((found->GetVxItem() != nullptr) != expectBinary) {
        return S_OK;
    }
    call.Log('E', expectBinary ? Vx::LogMsg(
                      "Invalid call: %s for non-item object (binary attachment) was called for sub-item."_w, operation)
                               : Vx::LogMsg("Invalid call: %s for sub-item object was called for binary attachment."_w,
                                            operation));
    return E_FAIL;
}

}  // namespace

// ---- Lists ----

HRESULT COutlookInstance::GetFolderItemURIs(WCHAR* profileName, WCHAR* storeId, WCHAR* folderId, VARIANT* uris) {
    VX_FACADE_CALL(call, GetFolderItemURIs);
    return call.Query(uris, m_domain, [&](CVxDomain& domain) -> HRESULT {
        CVxOutlookFolder* folder = FindFolder(domain, HostText(profileName), HostText(storeId), HostText(folderId));
        if (folder == nullptr) {
            return S_FALSE;
        }
        folder->ClearItemFilter();
        const std::size_t count = folder->GetBufferSize();
        if (folder->HasErrors(VxErrorConnect)) {
            return folder->GetLastConnectError();
        }
        RecordList list(count);
        for (std::size_t i = 0; i < count; ++i) {
            CVxItem& item = *folder->GetItem(i);
            CURIObjectData uri;
            uri.SetStringFieldVal("uri_ProfileName"_field, profileName, true);
            uri.SetStringFieldVal("uri_storeId"_field, storeId, true);
            uri.SetStringFieldVal("uri_folderId"_field, folderId, true);
            NameItem(item, uri);
            if (const CVxAttachment* attachment = item.GetVxAttachment()) {
                uri.SetAttachmentNum(attachment->GetEmbeddedItemId(), item.GetType());
            }
            list.Add(uri);
        }
        list.Give(uris);
        return S_OK;
    });
}

HRESULT COutlookInstance::QueryItems(VARIANT uri, std::int64_t modifiedSince, bool useNoCache, VARIANT* uris,
                                     LONG* unsupportedCount) {
    VX_FACADE_CALL(call, QueryItems);
    return call.Run([&]() -> HRESULT {
        VariantInit(uris);
        *unsupportedCount = 0;
        if (const HRESULT hr = call.RequireDomain(m_domain); FAILED(hr)) {
            return hr;
        }
        const CURIObjectData target(&uri);
        if (target.GetUriType() != eUriFolder) {
            return call.Refuse(Vx::LogMsg("Unsupported URI type in QueryItems: %d"_w, target.GetUriType()));
        }
        CVxOutlookFolder* folder = FindFolder(*m_domain, target);
        if (folder == nullptr) {
            return S_FALSE;
        }
        if (modifiedSince != 0) {
            folder->SetItemFilter(CMapiUtil::FileTimeFromInt64(modifiedSince));
        } else {
            folder->ClearItemFilter();
        }
        folder->GetItems(useNoCache);  // what could be read by then is what the host gets
        if (folder->HasErrors(VxErrorConnect)) {
            return folder->GetLastConnectError();
        }
        *unsupportedCount = static_cast<LONG>(folder->GetUnsupportedItemsCount());
        const std::size_t count = folder->GetBufferSize();
        RecordList list(count);
        for (std::size_t i = 0; i < count; ++i) {
            CURIObjectData element = CopyOf(uri);
            NameItem(*folder->GetItem(i), element);
            list.Add(element);
        }
        list.Give(uris);
        return S_OK;
    });
}

HRESULT COutlookInstance::QueryAttachments(VARIANT uri, VARIANT* uris, LONG* reserved) {
    VX_FACADE_CALL(call, QueryAttachments);
    return call.Run([&]() -> HRESULT {
        VariantInit(uris);
        *reserved = 0;
        if (const HRESULT hr = call.RequireDomain(m_domain); FAILED(hr)) {
            return hr;
        }
        const CURIObjectData target(&uri);
        if (target.GetUriType() != eUriItem && target.GetUriType() != eUriAttachment) {
            return call.Refuse(Vx::LogMsg("Unsupported URI type in QueryAttachments: %d"_w, target.GetUriType()));
        }
        CVxOutlookFolder* folder = FindFolder(*m_domain, target);
        CVxItem* item = folder == nullptr ? nullptr : folder->FindItemByID(target.ItemId());
        if (item == nullptr || !item->EnsureConnected()) {
            return S_FALSE;
        }
        CVxItem* owner = nullptr;
        if (const HRESULT hr = FindAttachmentOwner(call, target, *item, owner); hr != S_OK) {
            return hr;
        }
        const std::size_t count = owner == nullptr ? 0 : owner->GetAttachmentCount();
        RecordList list(count);
        for (std::size_t i = 0; i < count; ++i) {
            CVxConnectable* found = owner->GetAttachment(i);
            if (found == nullptr) {
                return ItemNotFound(call);
            }
            CURIObjectData element = CopyOf(uri);
            if (const CVxItem* subItem = found->GetVxItem()) {
                element.SetAttachmentNum(subItem->GetEmbeddedItemId(), subItem->GetType());
            } else {
                element.SetAttachmentNum(found->GetVxAttachment()->GetEmbeddedItemId(), eVxItemUnknown);
            }
            list.Add(element);
        }
        list.Give(uris);
        return S_OK;
    });
}

HRESULT COutlookInstance::GetChildrenItemsCount(VARIANT uri, std::int64_t from, std::int64_t to, bool useNoCache,
                                                LONG* nBefore, LONG* nIn, LONG* nAfter) {
    VX_FACADE_CALL(call, GetChildrenItemsCount);
    return call.Run([&]() -> HRESULT {
        if (const HRESULT hr = call.RequireDomain(m_domain); FAILED(hr)) {
            return hr;
        }
        if (nBefore == nullptr || nIn == nullptr || nAfter == nullptr) {
            return E_POINTER;
        }
        *nBefore = 0;
        *nIn = 0;
        *nAfter = 0;
        CVxOutlookFolder* folder = FindFolder(*m_domain, CURIObjectData(&uri));
        if (folder == nullptr) {
            return S_FALSE;
        }
        const FILETIME start = CMapiUtil::FileTimeFromInt64(from);
        const FILETIME end = CMapiUtil::FileTimeFromInt64(to);
        int before = 0;
        int in = 0;
        int after = 0;
        if (!folder->CalculateNumberOfItems(&start, &end, useNoCache, &before, &in, &after)) {
            return folder->HasErrors(VxErrorConnect) ? folder->GetLastConnectError() : S_FALSE;
        }
        *nBefore = before;
        *nIn = in;
        *nAfter = after;
        return S_OK;
    });
}

// ---- Directly from the store ----

HRESULT COutlookInstance::GetItemBody(VARIANT uri, TBodyFormat format, CStringW& body) {
    VX_FACADE_CALL(call, GetItemBody);
    return call.Run([&]() -> HRESULT {
        if (const HRESULT hr = call.RequireDomain(m_domain); FAILED(hr)) {
            return hr;
        }
        body.clear();
        const CURIObjectData target = CopyOf(uri);
        if (target.GetUriType() < eUriItem) {
            return call.Refuse(Vx::LogMsg("Unsupported type!"_w));
        }
        CVxOutlookStore* store = FindStore(*m_domain, target);
        if (store == nullptr) {
            return S_FALSE;
        }
        store->GetItemBody(target.ItemId(), format, body, target.GetUriType(), target);
        return S_OK;
    });
}

HRESULT COutlookInstance::GetAttachment(VARIANT uri, TBodyFormat format, VARIANT* bytes) {
    VX_FACADE_CALL(call, GetAttachment);
    return call.Run([&]() -> HRESULT {
        if (const HRESULT hr = call.RequireDomain(m_domain); FAILED(hr)) {
            return hr;
        }
        if (bytes == nullptr) {
            return E_POINTER;
        }
        VariantClear(bytes);
        const CURIObjectData target = CopyOf(uri);
        if (target.GetUriType() != eUriAttachment) {
            return call.Refuse(Vx::LogMsg("Unsupported type!"_w));
        }
        CVxOutlookStore* store = FindStore(*m_domain, target);
        if (store == nullptr) {
            return S_FALSE;
        }
        std::vector<unsigned char> data;
        store->GetAttachment(target.ItemId(), format, data, eUriAttachment, target);
        GiveBytes(bytes, data.empty() ? nullptr : data.data(), data.size());
        return S_OK;
    });
}

// ---- Through the folder ----

HRESULT COutlookInstance::GetItemBody(VARIANT uri, TBodyFormat format, bool filterToItem, CStringW& body) {
    VX_FACADE_CALL(call, GetItemBody);
    return call.Query(body, m_domain, [&](CVxDomain&) -> HRESULT {
        CVxItem* item = nullptr;
        CVxAttachment* attachment = nullptr;
        if (const HRESULT hr = GetItemBody(uri, format, false, filterToItem, item, attachment); hr != S_OK) {
            return hr;
        }
        if (item == nullptr) {
            return S_FALSE;
        }
        body = item->GetBody();
        return S_OK;
    });
}

HRESULT COutlookInstance::GetBinaryItemBody(VARIANT uri, TBodyFormat format, bool filterToItem, VARIANT* bytes) {
    VX_FACADE_CALL(call, GetBinaryItemBody);
    return call.Run([&]() -> HRESULT {
        if (bytes == nullptr) {
            return E_POINTER;
        }
        VariantClear(bytes);
        if (const HRESULT hr = call.RequireDomain(m_domain); FAILED(hr)) {
            return hr;
        }
        CVxItem* item = nullptr;
        CVxAttachment* attachment = nullptr;
        if (const HRESULT hr = GetItemBody(uri, format, true, filterToItem, item, attachment); hr != S_OK) {
            return hr;
        }
        if (attachment == nullptr) {
            return S_FALSE;
        }
        const BYTE* data = attachment->GetBlobData();
        GiveBytes(bytes, data, data == nullptr ? 0 : static_cast<std::size_t>(attachment->GetBlobDataSize()));
        return S_OK;
    });
}

HRESULT COutlookInstance::GetItemData(VARIANT uri, TBodyFormat format, bool filterToItem, VARIANT* record) {
    VX_FACADE_CALL(call, GetItemData);
    return call.Query(record, m_domain, [&](CVxDomain&) -> HRESULT {
        CExchObjectData data;
        const HRESULT hr = GetItemData(uri, format, data, false, filterToItem);
        if (hr == S_OK) {
            data.Dettach(record);
        }
        return hr;
    });
}

HRESULT COutlookInstance::GetBinaryItemData(VARIANT uri, TBodyFormat format, bool filterToItem, VARIANT* record) {
    VX_FACADE_CALL(call, GetBinaryItemData);
    return call.Query(record, m_domain, [&](CVxDomain&) -> HRESULT {
        if (const UriType type = CURIObjectData(&uri).GetUriType(); type != eUriAttachment) {
            return call.Refuse(Vx::LogMsg("Unsupported uriType %d!"_w, type));
        }
        CExchObjectData data;
        const HRESULT hr = GetItemData(uri, format, data, true, filterToItem);
        if (hr == S_OK) {
            data.Dettach(record);
        }
        return hr;
    });
}

HRESULT COutlookInstance::GetItemBody(VARIANT& uri, TBodyFormat format, bool expectBinary, bool filterToItem,
                                      CVxItem*& item, CVxAttachment*& attachment) {
    VX_FACADE_CALL(call, GetItemBody);
    const CURIObjectData target(&uri);
    if (target.GetUriType() < eUriItem) {
        return call.Refuse(Vx::LogMsg("Unsupported type!"_w));
    }
    if (const HRESULT hr = FindItem(call, *m_domain, target, filterToItem, item); hr != S_OK) {
        return hr;
    }
    if (target.GetUriType() != eUriAttachment) {
        item->SetRequestBodyFormat(format);
        return item->EnsureConnected() ? S_OK : S_FALSE;
    }
    CVxConnectable* found = nullptr;
    if (const HRESULT hr = FindInside(call, "GetItemBody"_w, *item, target, expectBinary, found); hr != S_OK) {
        return hr;
    }
    if (CVxItem* subItem = found->GetVxItem()) {
        item = subItem;
        subItem->SetRequestBodyFormat(format);
    } else {
        attachment = found->GetVxAttachment();
        attachment->SetRequestBodyFormat(format);
    }
    found->EnsureConnected();  // what cannot be opened has no body
    return S_OK;
}

HRESULT COutlookInstance::GetItemData(VARIANT& uri, TBodyFormat format, CExchObjectData& data, bool expectBinary,
                                      bool filterToItem) {
    VX_FACADE_CALL(call, GetItemData);
    const CURIObjectData target(&uri);
    if (target.GetUriType() < eUriItem) {
        return call.Refuse(Vx::LogMsg("Unsupported type (yet)!"_w));
    }
    CVxItem* item = nullptr;
    if (const HRESULT hr = FindItem(call, *m_domain, target, filterToItem, item); hr != S_OK) {
        return hr;
    }
    item->SetRequestBodyFormat(format);
    if (!item->EnsureConnected()) {
        return S_FALSE;
    }
    if (target.GetUriType() == eUriAttachment) {
        CVxConnectable* found = nullptr;
        if (const HRESULT hr = FindInside(call, "GetItemData"_w, *item, target, expectBinary, found); hr != S_OK) {
            return hr;
        }
        if (CVxAttachment* attachment = found->GetVxAttachment()) {
            attachment->SetRequestBodyFormat(format);
            SetBinaryObjectData(*attachment, data);
            return S_OK;
        }
        item = found->GetVxItem();
        item->SetRequestBodyFormat(format);
    }
    data.SetBooleanFieldVal("common_bIsPublic"_field, false, true);
    SetObjectData(*item, data, target.GetUriType() == eUriAttachment);
    return S_OK;
}
