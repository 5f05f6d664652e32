// CVxRegularAttachment: an attachment of a message of MAPI, with its data attached by value or as an OLE object.
//
// The payload is the data, or with a format of a file or a section a text as UTF-16 without an end: "File:" and the path
// of a file, which stays for the consumer, or the name of a memory section, which lives until the payload is forgotten.
// See AttachmentText.h.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "platform/NamedSection.h"
#include "platform/Storage.h"
#include "provider/Attachments/VxAttachment.h"
#include "provider/MapiHolders.h"

// How the data are attached.
enum EVxAttachType : LONG {
    eVxATUnknown = -1,
    eVxATByValue = 0,
    eVxATEmbedded = 1,  // as a message, which is an item of its own: the attachment has no payload
    eVxATOle = 2,
};

class CVxRegularAttachment final : public CVxAttachment {
public:
    explicit CVxRegularAttachment(CVxItem* parent) noexcept : CVxAttachment(parent) {}
    ~CVxRegularAttachment() override;

    void SetAttachType(EVxAttachType type) noexcept { m_attachType = type; }

    // Opens the attachment of the parent's open message and loads the payload.
    bool OnConnect() override;
    void OnDisconnect() override;

    const BYTE* GetBlobData() override;
    LONG GetBlobDataSize() override;

    // Does not load: connect first.
    std::vector<unsigned char> GetBlobDataVector() override { return m_blob; }

    bool IsVxRegularAttachment() const override { return true; }

    using CVxAttachment::LoadBody;
    bool LoadBody(const CMPParams& params) override;
    void ClearBody() override;

private:
    bool LoadOle(ULONG limit);
    bool OpenData(ULONG tag, const IID& iid, VxMapiPtr<IUnknown>& data);

    // Make the payload of what was opened, in the requested form.
    bool InitFromStream(IStream* stream, ULONG limit);
    bool InitFromStorage(IStorage* storage, ULONG limit);

    // Whether a copy's result counts as done; one that is too large does, and leaves its error bit.
    bool Judge(HRESULT hr);

    // The payload becomes the text's units, or the data as they are.
    void SetBlobText(const CStringW& text);
    bool TakeBytes(ULONG size);

    // Moves the bytes into a new memory section; the payload becomes its name.
    bool MakeSection(const BYTE* bytes, ULONG size);
    bool FillSection(const CStringW& section, const BYTE* bytes, ULONG size);

    EVxAttachType m_attachType = eVxATUnknown;
    std::vector<BYTE> m_blob;
    VxMapiPtr<IAttach> m_attach;
    LONG m_blobSize = 0;
    HANDLE m_fileMapping = nullptr;  // of the section form, as the next
    void* m_mappedView = nullptr;
};
