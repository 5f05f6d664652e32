#include "testing/scripted_mapi/Model.h"

#include "mapi/MapiFlags.h"
#include "mapi/PropTags.h"

#include <algorithm>

namespace scripted_mapi {

namespace {

Bytes UidBytes(BYTE byte) {
    return Bytes(sizeof(MAPIUID), byte);
}

}  // namespace

ULONG Names::IdOf(const MAPINAMEID& name, bool create) {
    const auto* set = reinterpret_cast<const char*>(name.lpguid);
    const bool isNumber = name.ulKind == MNID_ID;
    const Key key(set == nullptr ? std::string() : std::string(set, sizeof(GUID)), name.ulKind,
                  isNumber ? name.Kind.lID : 0, isNumber ? CStringW() : CStringW(name.Kind.lpwstrName));
    if (const auto known = m_ids.find(key); known != m_ids.end()) {
        return known->second;
    }
    if (!create || m_isClosed) {
        return 0;
    }
    const auto id = static_cast<ULONG>(0x8000 + m_ids.size());
    m_ids[key] = id;
    return id;
}

ULONG Names::Tag(const GUID& set, LONG id, ULONG type) {
    MAPINAMEID name = {const_cast<GUID*>(&set), MNID_ID, {}};
    name.Kind.lID = id;
    return PROP_TAG(type, IdOf(name, true));
}

ULONG Names::Tag(const GUID& set, const WCHAR* text, ULONG type) {
    MAPINAMEID name = {const_cast<GUID*>(&set), MNID_STRING, {}};
    name.Kind.lpwstrName = const_cast<WCHAR*>(text);
    return PROP_TAG(type, IdOf(name, true));
}

std::shared_ptr<ProfileModel> Context::FindProfile(std::string_view name) const {
    const auto found =
        std::find_if(profiles.begin(), profiles.end(), [&](const auto& profile) { return profile->name == name; });
    return found != profiles.end() ? *found : nullptr;
}

MAPIUID Context::NewUid() {
    MAPIUID uid = {};
    std::fill(std::begin(uid.ab), std::end(uid.ab), nextUid++);
    return uid;
}

std::shared_ptr<ServiceModel> AddService(ProfileModel& profile, std::string_view name, BYTE uid) {
    auto service = std::make_shared<ServiceModel>();
    service->row = {Text(PR_SERVICE_NAME_W, name), Text(PR_DISPLAY_NAME_W, name),
                    Binary(PR_SERVICE_UID, UidBytes(uid))};
    profile.services.push_back(service);
    return service;
}

std::shared_ptr<ProviderModel> AddProvider(ServiceModel& service, std::string_view displayName, BYTE uid) {
    auto provider = std::make_shared<ProviderModel>();
    provider->row = {Text(PR_DISPLAY_NAME_W, displayName), Binary(PR_PROVIDER_UID, UidBytes(uid)),
                     Number(PR_RESOURCE_TYPE, MAPI_STORE_PROVIDER)};
    service.providers.push_back(provider);
    return provider;
}

std::shared_ptr<StoreModel> AddStore(ProfileModel& profile, std::string_view name, Bytes id, const MAPIUID& provider) {
    auto store = std::make_shared<StoreModel>();
    Bytes rootId = id;
    rootId.push_back(0xFF);
    store->row = {Flag(PR_DEFAULT_STORE, profile.stores.empty()), Text(PR_DISPLAY_NAME_W, name), Binary(PR_ENTRYID, id),
                  Binary(PR_MDB_PROVIDER, Bytes(std::begin(provider.ab), std::end(provider.ab))),
                  Binary(PR_RECORD_KEY, id)};
    store->properties = {Text(PR_DISPLAY_NAME_W, name), Binary(PR_ENTRYID, id), Binary(PR_IPM_SUBTREE_ENTRYID, rootId)};
    store->root->properties = {Text(PR_DISPLAY_NAME_W, "Top"), Binary(PR_ENTRYID, rootId),
                               Binary(PR_PARENT_ENTRYID, rootId), Flag(PR_SUBFOLDERS, false)};
    profile.stores.push_back(store);
    return store;
}

std::shared_ptr<FolderModel> AddFolder(FolderModel& parent, std::string_view name, std::string_view containerClass,
                                       Bytes id) {
    auto folder = std::make_shared<FolderModel>();
    folder->properties = {Text(PR_DISPLAY_NAME_W, name), Binary(PR_ENTRYID, std::move(id)),
                          Binary(PR_PARENT_ENTRYID, parent.properties.BytesOf(PR_ENTRYID)), Flag(PR_SUBFOLDERS, false)};
    if (!containerClass.empty()) {
        folder->properties.Set(Text(PR_CONTAINER_CLASS_W, containerClass));
    }
    parent.properties.Set(Flag(PR_SUBFOLDERS, true));
    parent.folders.push_back(folder);
    return folder;
}

std::shared_ptr<MessageModel> AddMessage(FolderModel& folder, std::string_view messageClass, std::int64_t ticks,
                                         Bytes id) {
    auto message = std::make_shared<MessageModel>();
    message->properties = {Text(PR_MESSAGE_CLASS_W, messageClass), Time(PR_LAST_MODIFICATION_TIME, ticks),
                           Binary(PR_ENTRYID, std::move(id))};
    folder.messages.push_back(message);
    return message;
}

std::shared_ptr<AttachmentModel> AddAttachment(MessageModel& message, LONG method, std::string_view name) {
    auto attachment = std::make_shared<AttachmentModel>();
    attachment->properties = {Number(PR_ATTACH_NUM, static_cast<LONG>(message.attachments.size())),
                              Number(PR_ATTACH_METHOD, method), Text(PR_ATTACH_LONG_FILENAME_W, name)};
    message.attachments.push_back(attachment);
    return attachment;
}

std::shared_ptr<AddressListModel> AddAddressList(ProfileModel& profile, std::string_view name, ULONG displayType,
                                                 Bytes id) {
    auto list = std::make_shared<AddressListModel>();
    list->row = {Number(PR_DISPLAY_TYPE, static_cast<LONG>(displayType)), Text(PR_DISPLAY_NAME_W, name),
                 Binary(PR_ENTRYID, std::move(id))};
    profile.addressLists.push_back(list);
    return list;
}

}  // namespace scripted_mapi
