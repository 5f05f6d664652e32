#include "provider/Attachments/VxSmimeAttachment.h"

#include "provider/MPParams.h"
#include "provider/mime/EmailDecoding.h"

bool CVxSmimeAttachment::Init(LONG index, DecodedEmail& email) {
    m_attachNum = static_cast<ULONG>(index);
    CStringW name;
    if (!email.GetAttachmentFilename(index, name)) {
        return false;
    }
    SetAttachmentFileName(name.c_str());
    if (email.GetAttachmentSize(index) > GetBodySizeLimit(DomainParams())) {
        return true;
    }
    return email.GetAttachmentData(index, m_data);
}

void CVxSmimeAttachment::SetAttachmentFileName(const WCHAR* name) {
    m_values.fileName = name != nullptr ? name : CStringW();
    m_values.longFileName = m_values.fileName;
    m_values.displayName = m_values.fileName;
}

const BYTE* CVxSmimeAttachment::GetBlobData() {
    return EnsureBodyLoaded() && !m_data.empty() ? m_data.data() : nullptr;
}

LONG CVxSmimeAttachment::GetBlobDataSize() {
    return EnsureBodyLoaded() ? static_cast<LONG>(m_data.size()) : 0;
}
