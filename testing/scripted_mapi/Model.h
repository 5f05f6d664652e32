// What a scripted MAPI serves: profiles with services, providers and sections; stores with folders, messages and
// attachments; address lists. Plain data, filled by a test before and between the calls. Objects that are open share
// the data, and show what it holds at the moment of the call; tables show what it held when they were made.
#pragma once

#include "platform/Guid.h"
#include "platform/Unknown.h"
#include "testing/scripted_mapi/Script.h"
#include "testing/scripted_mapi/Values.h"

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace scripted_mapi {

struct MessageModel;

// Opens a property as an object, in the place of the stream over its bytes.
using PropertyOpener = std::function<HRESULT(const IID* iid, ULONG flags, IUnknown** object)>;

struct AttachmentModel {
    Bag properties;
    std::shared_ptr<MessageModel> embedded;  // what PR_ATTACH_DATA_OBJ opens as IMessage
    std::map<ULONG, PropertyOpener> openers;
};

struct MessageModel {
    Bag properties;
    std::vector<std::shared_ptr<AttachmentModel>> attachments;
    std::vector<Bag> recipients;
    std::map<ULONG, PropertyOpener> openers;
};

struct FolderModel {
    Bag properties;
    std::vector<std::shared_ptr<FolderModel>> folders;
    std::vector<std::shared_ptr<MessageModel>> messages;
};

struct StoreModel {
    Bag row;         // of the profile's table of stores
    Bag properties;  // of the open store
    std::shared_ptr<FolderModel> root = std::make_shared<FolderModel>();
    Bytes receiveFolder;     // the entry id of the inbox; empty: there is none
    bool isWrapped = false;  // the store is opened as a proxy of itself
};

struct ProviderModel {
    Bag row;      // of the table of providers
    Bag section;  // of the profile
};

struct ServiceModel {
    Bag row;  // of the table of services
    std::vector<std::shared_ptr<ProviderModel>> providers;
    Bag configuration;  // what ConfigureMsgService has set
};

struct AddressListModel {
    Bag row;  // of the address book's hierarchy
    std::vector<Bag> entries;
};

struct ProfileModel {
    std::string name;
    bool isDefault = false;
    std::vector<std::shared_ptr<ServiceModel>> services;
    Bag globalSection;
    std::vector<std::shared_ptr<StoreModel>> stores;
    std::vector<std::shared_ptr<AddressListModel>> addressLists;
};

// The ids of named properties, from 0x8000 on; one map for all stores.
class Names {
public:
    // The id of a name, 0 for one that is not known and not to be created.
    ULONG IdOf(const MAPINAMEID& name, bool create);

    // The tag under which a test puts a named property into a bag.
    ULONG Tag(const GUID& set, LONG id, ULONG type);
    ULONG Tag(const GUID& set, const WCHAR* name, ULONG type);

    // From now on no names are created, also not when a caller asks for it.
    void Close() { m_isClosed = true; }

private:
    using Key = std::tuple<std::string, ULONG, LONG, CStringW>;  // set, kind, number, text
    std::map<Key, ULONG> m_ids;
    bool m_isClosed = false;
};

// What all objects of one scripted MAPI share.
struct Context {
    Script script;
    Names names;
    std::vector<std::shared_ptr<ProfileModel>> profiles;
    BYTE nextUid = 0x80;  // the next service's or provider's identifier is sixteen of these bytes

    std::shared_ptr<ProfileModel> FindProfile(std::string_view name) const;
    MAPIUID NewUid();
};

// ---- Making data ----

// A service with its identifier, sixteen times the byte.
std::shared_ptr<ServiceModel> AddService(ProfileModel& profile, std::string_view name, BYTE uid);

// A provider of a service, with its identifier and, for a store's, PR_RESOURCE_TYPE.
std::shared_ptr<ProviderModel> AddProvider(ServiceModel& service, std::string_view displayName, BYTE uid);

// A store with its row, and a root folder that PR_IPM_SUBTREE_ENTRYID names. Its id is
// the store's and one more byte, 0xFF.
std::shared_ptr<StoreModel> AddStore(ProfileModel& profile, std::string_view name, Bytes id, const MAPIUID& provider);

// A folder beneath another, which then says that it has one.
std::shared_ptr<FolderModel> AddFolder(FolderModel& parent, std::string_view name, std::string_view containerClass,
                                       Bytes id);

std::shared_ptr<MessageModel> AddMessage(FolderModel& folder, std::string_view messageClass, std::int64_t ticks,
                                         Bytes id);

// An attachment with the next number of its message.
std::shared_ptr<AttachmentModel> AddAttachment(MessageModel& message, LONG method, std::string_view name);

// An address list of that display type.
std::shared_ptr<AddressListModel> AddAddressList(ProfileModel& profile, std::string_view name, ULONG displayType,
                                                 Bytes id);

}  // namespace scripted_mapi
