#include "testing/scripted_mapi/StoreObjects.h"

#include "mapi/MapiCodes.h"
#include "mapi/PropTags.h"
#include "platform/Storage.h"
#include "testing/StubAdminInterfaces.h"
#include "testing/scripted_mapi/PropObject.h"

#include <cstring>

namespace scripted_mapi {

namespace {

using namespace vx_testing;

template <typename Model>
std::shared_ptr<Bag> BagOf(const std::shared_ptr<Model>& model) {
    return std::shared_ptr<Bag>(model, &model->properties);
}

bool HasId(const Bag& bag, const Bytes& id) {
    return bag.BytesOf(PR_ENTRYID) == id || bag.BytesOf(PR_LONGTERM_ENTRYID_FROM_TABLE) == id;
}

// The folder or the message with an id, in a tree of folders.
struct Found {
    std::shared_ptr<FolderModel> folder;
    std::shared_ptr<MessageModel> message;
};

Found Find(const std::shared_ptr<FolderModel>& folder, const Bytes& id) {
    if (HasId(folder->properties, id)) {
        return {folder, nullptr};
    }
    for (const auto& message : folder->messages) {
        if (HasId(message->properties, id)) {
            return {nullptr, message};
        }
    }
    for (const auto& child : folder->folders) {
        if (Found found = Find(child, id); found.folder != nullptr || found.message != nullptr) {
            return found;
        }
    }
    return {};
}

class Attachment final : public PropObject<StubAttach> {
public:
    Attachment(const std::shared_ptr<Context>& context, std::shared_ptr<AttachmentModel> model)
        : PropObject(context, "IAttach", BagOf(model)), m_model(std::move(model)) {}

private:
    bool IsInterface(REFIID iid) const override { return iid == IID_IMAPIProp || iid == IID_IAttachment; }

    HRESULT OpenObject(ULONG tag, const IID* iid, ULONG flags, IUnknown** object) override {
        if (const auto opener = m_model->openers.find(tag); opener != m_model->openers.end()) {
            return opener->second(iid, flags, object);
        }
        if (tag == PR_ATTACH_DATA_OBJ && m_model->embedded != nullptr && iid != nullptr && *iid == IID_IMessage) {
            *object = NewMessage(GetContext(), m_model->embedded);
            return S_OK;
        }
        return PropObject::OpenObject(tag, iid, flags, object);
    }

    std::shared_ptr<AttachmentModel> m_model;
};

class Message final : public PropObject<StubMessage> {
public:
    Message(const std::shared_ptr<Context>& context, std::shared_ptr<MessageModel> model)
        : PropObject(context, "IMessage", BagOf(model)), m_model(std::move(model)) {}

    HRESULT STDMETHODCALLTYPE GetAttachmentTable(ULONG flags, LPMAPITABLE* table) override {
        return GiveTableBy("GetAttachmentTable", flags, RowsOf(m_model->attachments, &AttachmentModel::properties),
                           table);
    }
    HRESULT STDMETHODCALLTYPE GetRecipientTable(ULONG flags, LPMAPITABLE* table) override {
        return GiveTableBy("GetRecipientTable", flags, m_model->recipients, table);
    }
    HRESULT STDMETHODCALLTYPE OpenAttach(ULONG number, LPCIID iid, ULONG flags, LPATTACH* attachment) override {
        if (const auto answer = EnterMethod("OpenAttach", number, InterfaceName(iid), Hex8(flags))) {
            return *answer;
        }
        for (const auto& model : m_model->attachments) {
            const Value* own = model->properties.Find(PR_ATTACH_NUM);
            if (own != nullptr && static_cast<ULONG>(std::get<LONG>(own->data)) == number) {
                *attachment = new Attachment(GetContext(), model);
                return S_OK;
            }
        }
        return MAPI_E_NOT_FOUND;
    }

private:
    bool IsInterface(REFIID iid) const override { return iid == IID_IMAPIProp || iid == IID_IMessage; }

    HRESULT OpenObject(ULONG tag, const IID* iid, ULONG flags, IUnknown** object) override {
        if (const auto opener = m_model->openers.find(tag); opener != m_model->openers.end()) {
            return opener->second(iid, flags, object);
        }
        return PropObject::OpenObject(tag, iid, flags, object);
    }

    std::shared_ptr<MessageModel> m_model;
};

class Folder final : public PropObject<StubFolder> {
public:
    Folder(const std::shared_ptr<Context>& context, std::shared_ptr<StoreModel> store,
           std::shared_ptr<FolderModel> model)
        : PropObject(context, "IMAPIFolder", BagOf(model)), m_store(std::move(store)), m_model(std::move(model)) {}

    HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG flags, LPMAPITABLE* table) override {
        return GiveTableBy("GetContentsTable", flags, RowsOf(m_model->messages, &MessageModel::properties), table);
    }
    HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG flags, LPMAPITABLE* table) override {
        return GiveTableBy("GetHierarchyTable", flags, RowsOf(m_model->folders, &FolderModel::properties), table);
    }
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID entryId, LPCIID iid, ULONG flags, ULONG* objectType,
                                        LPUNKNOWN* object) override {
        if (const auto answer = EnterMethod("OpenEntry", EntryIdText(size, entryId), InterfaceName(iid), Hex8(flags))) {
            return *answer;
        }
        return OpenStoreEntry(GetContext(), m_store, size, entryId, iid, objectType, object);
    }

private:
    bool IsInterface(REFIID iid) const override {
        return iid == IID_IMAPIProp || iid == IID_IMAPIContainer || iid == IID_IMAPIFolder;
    }

    std::shared_ptr<StoreModel> m_store;
    std::shared_ptr<FolderModel> m_model;
};

// The proxy in front of a store: it holds a second store object, and lends it.
class StoreProxy final : public Object<StubUnknown<IProxyStoreObject>> {
public:
    StoreProxy(const std::shared_ptr<Context>& context, IMsgStore* inner) : Object(context), m_inner(inner) {}
    ~StoreProxy() override { m_inner->Release(); }

    HRESULT STDMETHODCALLTYPE PlaceHolder1() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE PlaceHolder2() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnwrapNoRef(LPVOID* object) override {
        if (const auto answer = Enter("IProxyStoreObject::UnwrapNoRef")) {
            return *answer;
        }
        *object = m_inner;
        return S_OK;
    }

private:
    IMsgStore* m_inner;  // owned
};

class Store final : public PropObject<StubStore> {
public:
    Store(const std::shared_ptr<Context>& context, std::shared_ptr<StoreModel> model, bool isWrapped)
        : PropObject(context, "IMsgStore", BagOf(model)), m_model(std::move(model)) {
        if (isWrapped) {
            m_proxy = new StoreProxy(context, new Store(context, m_model, false));
        }
    }
    ~Store() override {
        if (m_proxy != nullptr) {
            m_proxy->Release();
        }
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (iid == IID_IProxyStoreObject && m_proxy != nullptr) {
            m_proxy->AddRef();
            *object = m_proxy;
            return S_OK;
        }
        return PropObject::QueryInterface(iid, object);
    }
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID entryId, LPCIID iid, ULONG flags, ULONG* objectType,
                                        LPUNKNOWN* object) override {
        if (const auto answer = EnterMethod("OpenEntry", EntryIdText(size, entryId), InterfaceName(iid), Hex8(flags))) {
            return *answer;
        }
        return OpenStoreEntry(GetContext(), m_model, size, entryId, iid, objectType, object);
    }
    HRESULT STDMETHODCALLTYPE GetReceiveFolder(LPTSTR messageClass, ULONG flags, ULONG* size, LPENTRYID* entryId,
                                               LPTSTR*) override {
        if (const auto answer =
                EnterMethod("GetReceiveFolder", CallerText(messageClass, (flags & MAPI_UNICODE) != 0), Hex8(flags))) {
            return *answer;
        }
        const Bytes& id = m_model->receiveFolder;
        if (id.empty()) {
            return MAPI_E_NOT_FOUND;
        }
        auto* copy = memory::Allocate(id.size());
        std::memcpy(copy, id.data(), id.size());
        *size = static_cast<ULONG>(id.size());
        *entryId = static_cast<LPENTRYID>(copy);
        return S_OK;
    }

private:
    bool IsInterface(REFIID iid) const override { return iid == IID_IMAPIProp || iid == IID_IMsgStore; }

    std::shared_ptr<StoreModel> m_model;
    StoreProxy* m_proxy = nullptr;  // owned
};

}  // namespace

IMsgStore* NewStore(const std::shared_ptr<Context>& context, const std::shared_ptr<StoreModel>& model) {
    return new Store(context, model, model->isWrapped);
}

IMAPIFolder* NewFolder(const std::shared_ptr<Context>& context, const std::shared_ptr<StoreModel>& store,
                       const std::shared_ptr<FolderModel>& model) {
    return new Folder(context, store, model);
}

IMessage* NewMessage(const std::shared_ptr<Context>& context, const std::shared_ptr<MessageModel>& model) {
    return new Message(context, model);
}

HRESULT OpenStoreEntry(const std::shared_ptr<Context>& context, const std::shared_ptr<StoreModel>& store, ULONG size,
                       const ENTRYID* entryId, const IID* iid, ULONG* objectType, IUnknown** object) {
    Found found = {store->root, nullptr};
    if (entryId != nullptr && size != 0) {
        const auto* bytes = reinterpret_cast<const BYTE*>(entryId);
        found = Find(store->root, Bytes(bytes, bytes + size));
    }
    if (found.folder == nullptr && found.message == nullptr) {
        return MAPI_E_NOT_FOUND;
    }
    const IID& own = found.folder != nullptr ? IID_IMAPIFolder : IID_IMessage;
    if (iid != nullptr && *iid != own) {
        return MAPI_E_INTERFACE_NOT_SUPPORTED;
    }
    if (found.folder != nullptr) {
        *objectType = MAPI_FOLDER;
        *object = NewFolder(context, store, found.folder);
    } else {
        *objectType = MAPI_MESSAGE;
        *object = NewMessage(context, found.message);
    }
    return S_OK;
}

}  // namespace scripted_mapi
