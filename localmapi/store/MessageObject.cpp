#include "localmapi/store/MessageObject.h"

#include "localmapi/object/ValueStreams.h"
#include "localmapi/store/MessageCopy.h"
#include "localmapi/table/Table.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/CodePage.h"

#include <utility>

namespace localmapi {

MessageObject::MessageObject(std::unique_ptr<MessageSource> source, ComPtr<IUnknown> keeps, MessageOptions options,
                             SharedLock lock)
    : PropObject(nullptr, std::move(keeps), source->Names(), std::move(lock)),
      m_message(source.get()),
      m_options(std::move(options)),
      m_bodies(*source) {
    TakeSource(std::move(source));
}

MessageObject::~MessageObject() {
    if (m_options.released) {
        m_options.released(this);
    }
}

bool MessageObject::Implements(REFIID interfaceId) const {
    return interfaceId == IID_IMessage || PropObject::Implements(interfaceId);
}

// ---- Properties -----------------------------------------------------------------------------------------------------

bool MessageObject::Compute(ULONG id, ValueMemory& memory, SPropValue& value) {
    if (m_options.identity && m_options.identity->Read(id, memory, value)) {
        return true;
    }
    switch (id) {
        case PROP_ID(PR_OBJECT_TYPE): value = LongValue(PR_OBJECT_TYPE, MAPI_MESSAGE); return true;
        case PROP_ID(PR_ACCESS): {
            const bool canChange = m_message->IsWritable();
            value = LongValue(PR_ACCESS, static_cast<LONG>(MAPI_ACCESS_READ | (canChange ? MAPI_ACCESS_MODIFY : 0)));
            return true;
        }
        case PROP_ID(PR_ACCESS_LEVEL):
            value = LongValue(PR_ACCESS_LEVEL, m_message->IsWritable() ? static_cast<LONG>(MAPI_MODIFY) : 0);
            return true;
        case PROP_ID(PR_NATIVE_BODY_INFO): {
            const std::int32_t form = m_message->TagOf(id) ? 0 : m_bodies.NativeForm();
            value = LongValue(PR_NATIVE_BODY_INFO, form);
            return form != 0;
        }
        case PROP_ID(PR_INTERNET_CPID):
            // HTML that is made here is in UTF-8 unless the message says otherwise.
            if (m_message->TagOf(id) || m_message->TagOf(PROP_ID(PR_HTML)) || m_bodies.Tags().size() < 2) {
                return false;
            }
            value = LongValue(PR_INTERNET_CPID, static_cast<LONG>(m_bodies.HtmlPage()));
            return true;
        case PROP_ID(PR_LAST_MODIFICATION_TIME):
            if (m_message->IsWritable() || m_message->TagOf(id)) {
                return false;
            }
            value = SPropValue{PR_LAST_MODIFICATION_TIME, 0, {}};
            value.Value.ft = StandInForModification();
            return true;
        default: return false;
    }
}

// Many programs leave the time of the last change out of message files. Callers sort by it, and take a message without it
// for a broken one.
FILETIME MessageObject::StandInForModification() {
    Arena memory;
    for (const ULONG tag : {PR_CREATION_TIME, PR_MESSAGE_DELIVERY_TIME, PR_CLIENT_SUBMIT_TIME}) {
        SPropValue value{};
        if (m_message->TagOf(PROP_ID(tag)) == tag && m_message->Read(PROP_ID(tag), kLargestValue, memory, value)) {
            return value.Value.ft;
        }
    }
    return FILETIME{};
}

std::vector<ULONG> MessageObject::ComputedTags() {
    std::vector<ULONG> tags = {PR_OBJECT_TYPE, PR_ACCESS, PR_ACCESS_LEVEL};
    if (m_options.identity) {
        m_options.identity->AppendTags(tags);
    }
    Arena memory;
    SPropValue value{};
    for (const ULONG tag : {PR_NATIVE_BODY_INFO, PR_INTERNET_CPID, PR_LAST_MODIFICATION_TIME}) {
        if (Compute(PROP_ID(tag), memory, value)) {
            tags.push_back(tag);
        }
    }
    return tags;
}

bool MessageObject::IsFixed(ULONG id) {
    Arena memory;
    SPropValue value{};
    return id == PROP_ID(PR_OBJECT_TYPE) || id == PROP_ID(PR_ACCESS) || id == PROP_ID(PR_ACCESS_LEVEL)
           || (m_options.identity && m_options.identity->Read(id, memory, value));
}

UINT MessageObject::PageOf(ULONG id) {
    return id == PROP_ID(PR_HTML) ? m_bodies.HtmlPage() : m_message->CodePage();
}

HRESULT MessageObject::OpenAs(ULONG tag, REFIID interfaceId, ULONG interfaceOptions, ULONG flags, IUnknown** object) {
    if (interfaceId == IID_IMAPITable) {
        IMAPITable* table = nullptr;
        HRESULT opened = MAPI_E_NO_SUPPORT;
        if (PROP_ID(tag) == PROP_ID(PR_MESSAGE_RECIPIENTS)) {
            opened = GetRecipientTable(flags, &table);
        } else if (PROP_ID(tag) == PROP_ID(PR_MESSAGE_ATTACHMENTS)) {
            opened = GetAttachmentTable(flags, &table);
        }
        *object = table;
        return opened;
    }
    return PropObject::OpenAs(tag, interfaceId, interfaceOptions, flags, object);
}

HRESULT MessageObject::CopyObject(const CopyRequest& request, void* target, SPropProblemArray** problems) {
    return CopyMessage(*this, request, static_cast<IMAPIProp*>(target), Failure(), problems);
}

// ---- Attachments ----------------------------------------------------------------------------------------------------

HRESULT MessageObject::GetAttachmentTable(ULONG flags, LPMAPITABLE* table) {
    if (table == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *table = nullptr;
    return Guarded([&] {
        *table = MakeTable(m_message->Attachments(), ComPtr<IUnknown>(this), flags, Lock()).Detach();
        return S_OK;
    });
}

HRESULT MessageObject::OpenAttach(ULONG number, LPCIID interfaceId, ULONG, LPATTACH* attach) {
    if (attach == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *attach = nullptr;
    if (interfaceId != nullptr && *interfaceId != IID_IAttachment && *interfaceId != IID_IMAPIProp) {
        return MAPI_E_INTERFACE_NOT_SUPPORTED;
    }
    return Guarded([&] {
        auto source = m_message->OpenAttachment(number);
        if (!source) {
            return Fail(source.Failure());
        }
        *attach = MakeObject<AttachObject>(*std::move(source), ComPtr<IUnknown>(this), Names(), number,
                                           m_options.identity, Lock())
                      .Detach();
        return S_OK;
    });
}

HRESULT MessageObject::CreateAttach(LPCIID interfaceId, ULONG, ULONG* number, LPATTACH* attach) {
    if (number == nullptr || attach == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *attach = nullptr;
    if (interfaceId != nullptr && *interfaceId != IID_IAttachment && *interfaceId != IID_IMAPIProp) {
        return MAPI_E_INTERFACE_NOT_SUPPORTED;
    }
    return Guarded([&] {
        auto source = m_message->CreateAttachment(*number);
        if (!source) {
            return Fail(source.Failure());
        }
        *attach = MakeObject<AttachObject>(*std::move(source), ComPtr<IUnknown>(this), Names(), *number,
                                           m_options.identity, Lock())
                      .Detach();
        return S_OK;
    });
}

HRESULT MessageObject::DeleteAttach(ULONG number, ULONG_PTR, LPMAPIPROGRESS, ULONG) {
    return Guarded([&] {
        const Status deleted = m_message->DeleteAttachment(number);
        return deleted ? S_OK : Fail(deleted.Failure());
    });
}

// ---- Recipients -----------------------------------------------------------------------------------------------------

HRESULT MessageObject::GetRecipientTable(ULONG flags, LPMAPITABLE* table) {
    if (table == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *table = nullptr;
    return Guarded([&] {
        *table = MakeTable(m_message->Recipients(), ComPtr<IUnknown>(this), flags, Lock()).Detach();
        return S_OK;
    });
}

HRESULT MessageObject::ModifyRecipients(ULONG flags, LPADRLIST changes) {
    static constexpr ULONG kWays = MODRECIP_ADD | MODRECIP_MODIFY | MODRECIP_REMOVE;
    const ULONG way = flags & kWays;
    if (changes == nullptr || (way & (way - 1)) != 0) {
        return MAPI_E_INVALID_PARAMETER;
    }
    return Guarded([&] { return ChangeRecipients(way, *changes); });
}

HRESULT MessageObject::ChangeRecipients(ULONG way, const ADRLIST& changes) {
    Arena memory;
    std::vector<SRow> rows = way == 0 ? std::vector<SRow>() : ReadRecipients(*m_message, memory);
    const HRESULT changed = MergeRecipients(rows, way, changes, memory);
    if (FAILED(changed)) {
        return Fail(changed, "a recipient to be changed or removed is not in the list");
    }
    const Status replaced = m_message->ReplaceRecipients(rows);
    return replaced ? S_OK : Fail(replaced.Failure());
}

HRESULT MessageObject::SubmitMessage(ULONG) {
    return MAPI_E_NO_SUPPORT;
}
HRESULT MessageObject::SetReadFlag(ULONG) {
    return MAPI_E_NO_ACCESS;
}

// ---- Attachment objects ---------------------------------------------------------------------------------------------

AttachObject::AttachObject(std::unique_ptr<AttachmentSource> source, ComPtr<IUnknown> keeps, PropertyNames& names,
                           ULONG number, std::shared_ptr<const Identity> storeIdentity, SharedLock lock)
    : PropObject(nullptr, std::move(keeps), names, std::move(lock)),
      m_attachment(source.get()),
      m_storeIdentity(std::move(storeIdentity)) {
    TakeSource(std::move(source));
    m_identity.Set(PR_ATTACH_NUM, number);
    m_identity.Set(PR_OBJECT_TYPE, MAPI_ATTACH);
    m_identity.Set(PR_ACCESS_LEVEL, m_attachment->IsWritable() ? MAPI_MODIFY : 0);
}

bool AttachObject::Implements(REFIID interfaceId) const {
    return interfaceId == IID_IAttachment || PropObject::Implements(interfaceId);
}

bool AttachObject::Compute(ULONG id, ValueMemory& memory, SPropValue& value) {
    return m_identity.Read(id, memory, value);
}
std::vector<ULONG> AttachObject::ComputedTags() {
    std::vector<ULONG> tags;
    m_identity.AppendTags(tags);
    return tags;
}
bool AttachObject::IsFixed(ULONG id) {
    Arena memory;
    SPropValue value{};
    return Compute(id, memory, value);
}

HRESULT AttachObject::OpenAs(ULONG tag, REFIID interfaceId, ULONG interfaceOptions, ULONG flags, IUnknown** object) {
    const bool isData = PROP_ID(tag) == PROP_ID(PR_ATTACH_DATA_OBJ);
    if (isData && interfaceId == IID_IMessage) {
        return OpenMessage(flags, object);
    }
    if (isData && interfaceId == IID_IStorage) {
        return OpenStorage(flags, object);
    }
    // The bytes of a compound file; where the object is a storage within another file there are none.
    if (isData && interfaceId == IID_IStreamDocfile) {
        auto bytes = m_attachment->Open(PROP_ID(tag));
        if (!bytes) {
            return Fail(bytes.Failure());
        }
        *object = MakeReadStream(*std::move(bytes), ComPtr<IUnknown>(this), Lock()).Detach();
        return S_OK;
    }
    return PropObject::OpenAs(tag, interfaceId, interfaceOptions, flags, object);
}

HRESULT AttachObject::OpenMessage(ULONG flags, IUnknown** object) {
    auto source = (flags & MAPI_CREATE) != 0 ? m_attachment->CreateMessage() : m_attachment->OpenMessage();
    if (!source) {
        return Fail(source.Failure());
    }
    *object = MakeObject<MessageObject>(*std::move(source), ComPtr<IUnknown>(this), MessageOptions{}, Lock()).Detach();
    return S_OK;
}

HRESULT AttachObject::OpenStorage(ULONG flags, IUnknown** object) {
    auto storage = (flags & MAPI_CREATE) != 0 ? m_attachment->CreateStorage() : m_attachment->OpenStorage();
    if (!storage) {
        return Fail(storage.Failure());
    }
    *object = storage->Detach();
    return S_OK;
}

HRESULT AttachObject::CopyObject(const CopyRequest& request, void* target, SPropProblemArray** problems) {
    return CopyAttachment(*this, request, static_cast<IMAPIProp*>(target), Failure(), problems);
}

Result<ComPtr<MessageObject>> OpenAttachedMessage(AttachObject& attach) {
    VX_TRY_ASSIGN(std::unique_ptr<MessageSource> source, attach.TheAttachment().OpenMessage());
    return MakeObject<MessageObject>(std::move(source), ComPtr<IUnknown>(&attach), MessageOptions{}, attach.Lock());
}

}  // namespace localmapi
