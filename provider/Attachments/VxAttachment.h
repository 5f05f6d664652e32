// CVxAttachment: the node of one attachment of an item. Its payload is bytes, or a text in their place that says in
// which file or memory section they are.
//
// The item owns its attachments. One that stands for an embedded item has no parent and never any payload of its own: it
// only keeps the number and the names. One thread at a time, as all nodes.
#pragma once

#include "platform/BaseTypes.h"
#include "platform/WideText.h"
#include "provider/ItemTypes.h"
#include "provider/VxConnectable.h"

#include <cstddef>
#include <utility>
#include <vector>

class CMPParams;
class CVxItem;

// What an attachment table, or the attachment itself, tells of it.
struct AttachmentValues {
    CStringW fileName;      // PR_ATTACH_FILENAME_W
    CStringW longFileName;  // PR_ATTACH_LONG_FILENAME_W
    CStringW displayName;   // PR_DISPLAY_NAME_W; where there is none, the long name or else the short one
    CStringW urlCompName;   // PR_URL_COMP_NAME_W
    LONG size = 0;          // PR_ATTACH_SIZE
};

class CVxAttachment : public CVxConnectable {
public:
    // The largest payload that is loaded, whatever the host asks for.
    static constexpr LONG kMostBytes = 0x6400000;

    // `parent` outlives the attachment; null for one that stands for an embedded item.
    explicit CVxAttachment(CVxItem* parent) noexcept;

    CVxAttachment* GetVxAttachment() override { return this; }
    bool OnConnect() override { return false; }
    void OnDisconnect() override {}

    // Connects the attachment, and tells that it has no children.
    virtual std::size_t GetChildCount();

    // The payload, loaded in the requested form if need be; null and 0 when none is wanted or it cannot be loaded. Lent
    // until the attachment is loaded anew or disconnected.
    virtual const BYTE* GetBlobData() = 0;
    virtual LONG GetBlobDataSize() = 0;

    // A copy of the payload that connecting has loaded; empty when there is none.
    virtual std::vector<unsigned char> GetBlobDataVector() { return {}; }

    virtual bool IsVxRegularAttachment() const { return false; }
    virtual bool IsVxSmimeAttachment() const { return false; }

    // Forgets the payload.
    virtual void Clear() { ClearBody(); }

    // Loads the payload in the requested form. One that is larger than the limit is a success without a payload, which
    // VxErrorAttachmentBody tells.
    virtual bool LoadBody(const CMPParams& params) = 0;

    // The same with the domain's parameters, and without a try when the item's table says that it is too large.
    virtual bool LoadBody();

    virtual void ClearBody() = 0;

    // The form in which the payload is loaded by the next connect.
    void SetRequestBodyFormat(TBodyFormat format) noexcept { m_requestBodyFormat = format; }

    CVxItem* GetParentItem() const noexcept { return m_parentItem; }
    ULONG GetAttachNum() const noexcept { return m_attachNum; }
    void SetAttachNum(ULONG number) noexcept { m_attachNum = number; }

    const CStringW& GetFileName() const noexcept { return m_values.fileName; }
    const CStringW& GetLongFileName() const noexcept { return m_values.longFileName; }
    const CStringW& GetDisplayName() const noexcept { return m_values.displayName; }
    LONG GetSize() const noexcept { return m_values.size; }
    const AttachmentValues& GetValues() const noexcept { return m_values; }
    void SetValues(AttachmentValues values) { m_values = std::move(values); }

    // The path under which the item finds the attachment.
    const CStringW& GetEmbeddedItemId() const noexcept { return m_embeddedItemId; }
    void SetEmbeddedItemId(CStringW id) { m_embeddedItemId = std::move(id); }

    // The parent's URL subject, "/" and the attachment's own part of a URL; without a parent its own part alone.
    const CStringW& GetURLSubject();

    // The most bytes that are loaded with these parameters.
    static LONG GetBodySizeLimit(const CMPParams& params) noexcept;

protected:
    // Whether the payload is there in the requested form, loaded if need be.
    bool EnsureBodyLoaded();

    // The domain's parameters; those of a host that sets none where there is no domain.
    CMPParams DomainParams();

    // The name that the payload is saved under: the long one, else the short one.
    const CStringW& SaveName() const noexcept;

    // A new path in the folder for temporary files, with that name at its end.
    CStringW GetTempFileName() const;

    CVxItem* const m_parentItem;  // not owned
    ULONG m_attachNum = 0;        // PR_ATTACH_NUM, or the index in a decoded e-mail
    AttachmentValues m_values;
    CStringW m_urlSubject;  // empty until it is asked for
    TBodyFormat m_requestBodyFormat = eBodyNone;
    TBodyFormat m_loadedBodyFormat = eBodyNone;
    CStringW m_embeddedItemId;
};
