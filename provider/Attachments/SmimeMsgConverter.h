// CSmimeMsgConverter: the last resort for a message whose text MAPI does not give. It writes the message into a file,
// and has a message file decoded. Used by one thread.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "platform/WideText.h"
#include "provider/mime/EmailDecoding.h"

#include <memory>

class CSmimeMsgConverter {
public:
    // Writes the whole message as an MSG file, in the place of what has the path. The result of the step that failed;
    // a file may then be left.
    static HRESULT SaveToMSG(IMessage* message, const CStringW& path);

    // Decodes the message file. The text becomes its plain body, or its HTML one; empty when there is none. It stays as
    // it is when the file holds no e-mail.
    void ReadBody(const CStringW& path, bool plainText);

    const CStringW& GetBodyText() const noexcept { return m_bodyText; }

    // The e-mail of the last ReadBody, null for none; lent as long as the converter lives.
    DecodedEmail* GetEmail() const noexcept { return m_email.get(); }

    // Writes a copy of the MSG file with the decoded text as its plain body into the folder. Its path; empty when the
    // file cannot be opened as a message.
    CStringW ConvertSmimeMSG(const CStringW& path, const CStringW& folder);

    // Decodes the message file and saves one of its attachments under a new name. The path: `folder`, which ends in a
    // separator, and that name; empty when it cannot be saved. `name` is the attachment's own.
    CStringW SaveAttachmentFromSmimeMsgOnDisk(const CStringW& path, const CStringW& folder, LONG index, CStringW& name);

    // Converts nothing: always empty.
    CStringW ConvertMsg(const CStringW& /*path*/) { return {}; }

private:
    CStringW m_bodyText;
    std::unique_ptr<DecodedEmail> m_email;
};
