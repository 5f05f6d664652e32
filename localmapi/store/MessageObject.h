// Messages and attachments as COM objects, over a message source of any format.
#pragma once

#include "localmapi/model/MessageSource.h"
#include "localmapi/object/PropObject.h"
#include "localmapi/store/Bodies.h"
#include "localmapi/store/Identity.h"
#include "mapi/MapiInterfaces.h"

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace localmapi {

struct MessageOptions {
    // What the message says of itself and of the store around it; may be null.
    std::shared_ptr<const Identity> identity;

    // Called when the last reference has gone, with the message's address.
    std::function<void(IMessage*)> released;
};

class MessageObject final : public PropObject<IMessage> {
public:
    // `keeps` is what the source borrows from.
    MessageObject(std::unique_ptr<MessageSource> source, ComPtr<IUnknown> keeps, MessageOptions options,
                  SharedLock lock);

    HRESULT STDMETHODCALLTYPE GetAttachmentTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE OpenAttach(ULONG number, LPCIID interfaceId, ULONG flags, LPATTACH* attach) override;
    HRESULT STDMETHODCALLTYPE CreateAttach(LPCIID interfaceId, ULONG flags, ULONG* number, LPATTACH* attach) override;
    HRESULT STDMETHODCALLTYPE DeleteAttach(ULONG number, ULONG_PTR window, LPMAPIPROGRESS progress,
                                           ULONG flags) override;
    HRESULT STDMETHODCALLTYPE GetRecipientTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE ModifyRecipients(ULONG flags, LPADRLIST changes) override;
    HRESULT STDMETHODCALLTYPE SubmitMessage(ULONG flags) override;
    HRESULT STDMETHODCALLTYPE SetReadFlag(ULONG flags) override;

    MessageSource& TheMessage() noexcept { return *m_message; }

protected:
    ~MessageObject() override;

    bool Implements(REFIID interfaceId) const override;
    HRESULT OpenAs(ULONG tag, REFIID interfaceId, ULONG interfaceOptions, ULONG flags, IUnknown** object) override;
    HRESULT CopyObject(const CopyRequest& request, void* target, SPropProblemArray** problems) override;

    bool Compute(ULONG id, ValueMemory& memory, SPropValue& value) override;
    std::vector<ULONG> ComputedTags() override;
    bool IsFixed(ULONG id) override;
    Result<Content> Derive(ULONG tag) override { return m_bodies.Make(tag); }
    std::vector<ULONG> DerivedTags() override { return m_bodies.Tags(); }
    UINT PageOf(ULONG id) override;

private:
    HRESULT ChangeRecipients(ULONG flags, const ADRLIST& changes);
    FILETIME StandInForModification();

    MessageSource* m_message;
    MessageOptions m_options;
    BodyForms m_bodies;
};

class AttachObject final : public PropObject<IAttach> {
public:
    AttachObject(std::unique_ptr<AttachmentSource> source, ComPtr<IUnknown> keeps, PropertyNames& names, ULONG number,
                 std::shared_ptr<const Identity> storeIdentity, SharedLock lock);

    AttachmentSource& TheAttachment() noexcept { return *m_attachment; }

protected:
    bool Implements(REFIID interfaceId) const override;
    HRESULT OpenAs(ULONG tag, REFIID interfaceId, ULONG interfaceOptions, ULONG flags, IUnknown** object) override;
    HRESULT CopyObject(const CopyRequest& request, void* target, SPropProblemArray** problems) override;

    bool Compute(ULONG id, ValueMemory& memory, SPropValue& value) override;
    std::vector<ULONG> ComputedTags() override;
    bool IsFixed(ULONG id) override;

private:
    HRESULT OpenMessage(ULONG flags, IUnknown** object);
    HRESULT OpenStorage(ULONG flags, IUnknown** object);

    AttachmentSource* m_attachment;
    std::shared_ptr<const Identity> m_storeIdentity;
    Identity m_identity;
};

// The message of an attachment, for reading.
Result<ComPtr<MessageObject>> OpenAttachedMessage(AttachObject& attach);

}  // namespace localmapi
