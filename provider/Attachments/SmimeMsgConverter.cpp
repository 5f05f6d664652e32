#include "provider/Attachments/SmimeMsgConverter.h"

#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/Paths.h"
#include "platform/Storage.h"
#include "provider/Common/Format.h"
#include "provider/Common/WLStr.h"
#include "provider/ImportProcs.h"
#include "provider/MAPIUtils.h"
#include "provider/MapiHolders.h"

#include <filesystem>
#include <string>
#include <system_error>

namespace {

constexpr DWORD kNewFileMode = STGM_TRANSACTED | STGM_CREATE | STGM_READWRITE;
constexpr DWORD kChangedFileMode = STGM_TRANSACTED | STGM_READWRITE;

std::string AnsiPath(const CStringW& path) {
    const VxArrayPtr<char> ansi = WLStr::ToAscii(path.c_str(), path.size());
    return ansi.get() != nullptr ? std::string(ansi.get()) : std::string();
}

// Copies the message, with all that is in it, into the new storage. The session outlives the target.
HRESULT WriteMessage(IMessage* message, IStorage* storage, LPMSGSESS session) {
    VxMapiPtr<IMessage> target;
    HRESULT hr = MyOpenIMsgOnIStg(session, storage, &target);
    if (FAILED(hr) || target.get() == nullptr) {
        return FAILED(hr) ? hr : E_FAIL;
    }
    hr = WriteClassStg(storage, CLSID_MailMessage);
    if (SUCCEEDED(hr)) {
        hr = message->CopyTo(0, nullptr, nullptr, 0, nullptr, &IID_IMessage, target.get(), 0, nullptr);
    }
    if (FAILED(hr)) {
        return hr;
    }
    target->SaveChanges(KEEP_OPEN_READWRITE);
    return storage->Commit(STGC_DEFAULT);
}

// Puts the text in the place of the message's plain body.
bool WriteBody(IMessage* message, const CStringW& text) {
    VxMapiPtr<IUnknown> opened;
    if (FAILED(message->OpenProperty(PR_BODY_W, &IID_IStream, 0, MAPI_MODIFY | MAPI_CREATE | MAPI_DEFERRED_ERRORS,
                                     &opened))
        || opened.get() == nullptr) {
        return false;
    }
    static_cast<IStream*>(opened.get())->Write(text.data(), static_cast<ULONG>(text.size() * sizeof(WCHAR)), nullptr);
    return true;
}

}  // namespace

HRESULT CSmimeMsgConverter::SaveToMSG(IMessage* message, const CStringW& path) {
    // The value is not used: asking makes a store fetch a message that it has only begun to.
    VxMapiFrBufPtr<SPropValue> subject;
    HrGetOneProp(message, PR_SUBJECT_W, &subject);

    std::error_code ignored;
    std::filesystem::remove(ToPath(path), ignored);
    const LPMALLOC allocator = MAPIGetDefaultMalloc();
    VxMapiPtr<IStorage> storage;  // released after the session, and that after the message in it
    HRESULT hr = StgCreateDocfile(path.c_str(), kNewFileMode, 0, &storage);
    if (FAILED(hr)) {
        return hr;
    }
    CMsgSession session;
    hr = OpenIMsgSession(allocator, 0, &session);
    return FAILED(hr) ? hr : WriteMessage(message, storage, session.get());
}

void CSmimeMsgConverter::ReadBody(const CStringW& path, bool plainText) {
    m_email = DecodeEmailFile(AnsiPath(path));
    if (m_email == nullptr) {
        return;
    }
    CStringW text;
    if (plainText) {
        m_email->GetPlainTextBody(text);
    } else {
        m_email->GetHtmlBody(text);
    }
    m_bodyText = std::move(text);
}

CStringW CSmimeMsgConverter::ConvertSmimeMSG(const CStringW& path, const CStringW& folder) {
    ReadBody(path, true);
    VxMapiPtr<IStorage> storage;
    if (MAPIGetDefaultMalloc() == nullptr
        || FAILED(StgOpenStorage(path.c_str(), nullptr, kChangedFileMode, nullptr, 0, &storage))) {
        return {};
    }
    VxMapiPtr<IMessage> message;
    if (FAILED(MyOpenIMsgOnIStg(nullptr, storage, &message)) || message.get() == nullptr
        || !WriteBody(message, m_bodyText)) {
        return {};
    }
    CStringW converted = CMapiUtil::GetATempFileName(folder) + ".msg"_w;
    SaveToMSG(message, converted);
    return converted;
}

CStringW CSmimeMsgConverter::SaveAttachmentFromSmimeMsgOnDisk(const CStringW& path, const CStringW& folder, LONG index,
                                                              CStringW& name) {
    const std::unique_ptr<DecodedEmail> email = DecodeEmailFile(AnsiPath(path));
    if (email == nullptr) {
        return {};
    }
    email->GetAttachmentFilename(index, name);
    const CStringW temporary = Vx::FormatString("tmp_%d%s"_w, ++CMapiUtil::s_tempFilesCounter, name);
    if (!email->SetAttachmentFilename(index, temporary) || !email->SaveAttachedFile(index, folder)) {
        return {};
    }
    return folder + temporary;
}
