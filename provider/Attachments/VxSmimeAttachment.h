// CVxSmimeAttachment: an attachment of an e-mail that was decoded from a message file. It has its bytes from the start,
// so it needs neither the e-mail nor MAPI, and keeps them until it ends.
//
// The bytes are to be had through GetBlobData alone: GetBlobDataVector gives none.
#pragma once

#include "provider/Attachments/VxAttachment.h"

class DecodedEmail;

class CVxSmimeAttachment final : public CVxAttachment {
public:
    explicit CVxSmimeAttachment(CVxItem* parent) noexcept : CVxAttachment(parent) {}

    // Takes name and bytes of an attachment of the e-mail; no bytes, and still true, when they are more than the limit.
    // False when the name or the bytes cannot be had.
    bool Init(LONG index, DecodedEmail& email);

    // All three names; null empties them.
    void SetAttachmentFileName(const WCHAR* name);

    bool OnConnect() override { return true; }
    const BYTE* GetBlobData() override;
    LONG GetBlobDataSize() override;
    bool IsVxSmimeAttachment() const override { return true; }

    using CVxAttachment::LoadBody;
    bool LoadBody(const CMPParams& /*params*/) override { return true; }
    void ClearBody() override {}

private:
    std::vector<BYTE> m_data;
};
