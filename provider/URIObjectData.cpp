#include "provider/URIObjectData.h"

CURIObjectData::CURIObjectData(UriType type, const CStringW& profile, const CStringW& store, const CStringW& folder,
                               std::int64_t timestamp, bool read, const CStringW& itemId, const CStringW& attachmentNum,
                               EVxItemType itemType) {
    SetIntFieldVal("uri_type"_field, type, true);
    SetStringFieldVal("uri_ProfileName"_field, profile, true);
    SetStringFieldVal("uri_storeId"_field, store, true);
    SetStringFieldVal("uri_folderId"_field, folder, true);
    SetLongLongFieldVal("uri_modifiedTime"_field, timestamp, true);
    SetBooleanFieldVal("uri_readStatus"_field, read, true);
    if (type >= eUriItem) {
        SetStringFieldVal("uri_itemId"_field, itemId, true);
        SetIntFieldVal("uri_itemType"_field, itemType, true);
    }
    if (type >= eUriAttachment) {
        SetStringFieldVal("uri_attachmentNum"_field, attachmentNum, true);
    }
}

void CURIObjectData::SetItemId(const CStringW& itemId, EVxItemType type, std::int64_t timestamp, bool read) {
    SetIntFieldVal("uri_type"_field, eUriItem, false);
    SetStringFieldVal("uri_itemId"_field, itemId, false);
    SetIntFieldVal("uri_itemType"_field, type, false);
    SetLongLongFieldVal("uri_modifiedTime"_field, timestamp, false);
    SetBooleanFieldVal("uri_readStatus"_field, read, false);
}

void CURIObjectData::SetAttachmentNum(const CStringW& attachmentNum, EVxItemType type) {
    SetIntFieldVal("uri_type"_field, eUriAttachment, false);
    SetStringFieldVal("uri_attachmentNum"_field, attachmentNum, false);
    SetIntFieldVal("uri_itemType"_field, type, false);
    SetLongLongFieldVal("uri_modifiedTime"_field, 0, false);
    SetBooleanFieldVal("uri_readStatus"_field, false, false);
}

UriType CURIObjectData::GetUriType() const {
    return static_cast<UriType>(GetIntFieldVal("uri_type"_field));
}

_bstr_t CURIObjectData::ProfileName() const {
    return GetStringFieldVal("uri_ProfileName"_field);
}

_bstr_t CURIObjectData::StoreId() const {
    return GetStringFieldVal("uri_storeId"_field);
}

_bstr_t CURIObjectData::FolderId() const {
    return GetStringFieldVal("uri_folderId"_field);
}

_bstr_t CURIObjectData::ItemId() const {
    return GetStringFieldVal("uri_itemId"_field);
}

_bstr_t CURIObjectData::AttachmentNum() const {
    return GetStringFieldVal("uri_attachmentNum"_field);
}

EVxItemType CURIObjectData::ItemType() const {
    return static_cast<EVxItemType>(GetIntFieldVal("uri_itemType"_field));
}

std::int64_t CURIObjectData::Timestamp() const {
    return GetLongLongFieldVal("uri_modifiedTime"_field);
}

bool CURIObjectData::ReadStatus() const {
    return GetBooleanFieldVal("uri_readStatus"_field);
}
