#include "provider/Item/VxItem.h"

#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/Paths.h"
#include "provider/AttachmentText.h"
#include "provider/Attachments/VxAttachment.h"
#include "provider/Common/AsciiCase.h"
#include "provider/Common/Crc32.h"
#include "provider/Common/FileTimeHelpers.h"
#include "provider/Common/Log.h"
#include "provider/ImportProcs.h"
#include "provider/Item/VxCalendarItem.h"
#include "provider/Item/VxContact.h"
#include "provider/Item/VxEmailItem.h"
#include "provider/Item/VxNoteItem.h"
#include "provider/Item/VxTaskItem.h"
#include "provider/MessageClass.h"
#include "provider/StoreAndFolder/VxOutlookFolder.h"
#include "provider/StoreAndFolder/VxOutlookProfile.h"
#include "provider/StoreAndFolder/VxOutlookStore.h"

#include <filesystem>
#include <system_error>

namespace {

constexpr auto& kSourcePath = "Item\\VxItem.cpp"_w;

// Bytes that an item's id may have.
constexpr ULONG kMostIdBytes = 0x1000;

}  // namespace

CVxItem::CVxItem(CVxConnectable* parent) : CVxConnectable(parent) {}

CVxItem::~CVxItem() {
    m_attachInfo.reset();
    if (!m_tempFile.empty()) {
        ClearAttachments();
        m_message.release();
        m_storage.release();
        VX_LOG('D') << Vx::LogMsg("Delete temp file %s"_w, m_tempFile);
        std::error_code ignored;
        std::filesystem::remove(ToPath(m_tempFile), ignored);
    }
}

std::unique_ptr<CVxItem> CVxItem::MakeItem(EVxItemType type, CVxConnectable* parent) {
    switch (type) {
        case eVxItemEmail: return std::make_unique<CVxEmailItem>(parent);
        case eVxItemContact: return std::make_unique<CVxContact>(parent, CStringW(), nullptr, nullptr);
        case eVxItemCalendar: return std::make_unique<CVxCalendarItem>(parent);
        case eVxItemTask: return std::make_unique<CVxTaskItem>(parent);
        case eVxItemNote: return std::make_unique<CVxNoteItem>(parent);
        case eVxItemUnknown: break;
    }
    return nullptr;
}

std::unique_ptr<CVxItem> CVxItem::CreateItem(CVxConnectable* parent, const CStringW& id, CVxOutlookFolder* folder,
                                             CVxOutlookStore* store, IMessage* message) {
    VxMapiFrBufPtr<SPropValue> value;
    if (message == nullptr || FAILED(HrGetOneProp(message, PR_MESSAGE_CLASS_W, &value)) || value.get() == nullptr) {
        return nullptr;
    }
    const CStringW messageClass = CMapiUtil::Mapi2SimpleString(value);
    std::unique_ptr<CVxItem> item = MakeItem(ItemTypeOfMessageClass(messageClass), parent);
    if (item == nullptr) {
        VX_LOG('D') << Vx::LogMsg("ignored message of type '%s'"_w, messageClass);
        return nullptr;
    }
    item->m_id = id;
    item->m_folder = folder;
    item->m_store = store;
    return item;
}

IMessage* CVxItem::OpenMapiMessage(const CStringW& id, IMsgStore* store) {
    BYTE bytes[kMostIdBytes];
    ULONG size = 0;
    if (store == nullptr || !CMapiUtil::Hex2Bin(id, bytes, &size, kMostIdBytes)) {
        return nullptr;
    }
    ULONG type = 0;
    VxMapiPtr<IUnknown> opened;
    const HRESULT hr =
        store->OpenEntry(size, reinterpret_cast<LPENTRYID>(bytes), nullptr, MAPI_BEST_ACCESS, &type, &opened);
    // An id that names a folder opens as one, and must not be taken for a message.
    return hr == S_OK && type == MAPI_MESSAGE ? static_cast<IMessage*>(opened.releasePointer()) : nullptr;
}

IMessage* CVxItem::OpenAttachedMapiMessage(ULONG attachNum, IMessage* message) {
    VxMapiPtr<IAttach> attach;
    if (message == nullptr || FAILED(message->OpenAttach(attachNum, nullptr, MAPI_BEST_ACCESS, &attach))
        || attach.get() == nullptr) {
        return nullptr;
    }
    VxMapiPtr<IUnknown> opened;
    if (FAILED(attach->OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, 0, &opened))) {
        return nullptr;
    }
    return static_cast<IMessage*>(opened.releasePointer());
}

bool CVxItem::MapiConnect() {
    if (m_message.get() != nullptr) {
        return true;
    }
    if (m_isAttachment) {
        m_message.reset(OpenAttachedMapiMessage(m_attachInfo->GetAttachNum(), m_parentItem->m_message));
    } else if (m_store != nullptr) {
        m_message.reset(OpenMapiMessage(m_id, m_store->GetMapiStore()));
    }
    return m_message.get() != nullptr;
}

void CVxItem::MapiDisconnect() {
    m_message.release();
}

bool CVxItem::OnConnect() {
    Clear();
    if (!MapiConnect()) {
        VX_LOG('E') << Vx::LogMsg("MapiConnect failed"_w);
        return false;
    }
    // Loads the body, too: whether the attachments are to be read from MAPI is known after that.
    if (!GetProperties()) {
        VX_LOG('D') << Vx::LogMsg("Failed to get properties for item: %s"_w, m_id);
        return false;
    }
    if (!GetAttachments()) {
        VX_LOG('D') << Vx::LogMsg("Failed to get attachments for item: %s"_w, m_id);
        return false;
    }
    if (m_folder != nullptr) {
        m_uiId = m_folder->GetStorePath() + "/"_w + GetUISubject();
    } else {
        m_uiId = (m_store != nullptr ? m_store->GetDisplayName() : CStringW()) + "//"_w + GetUISubject();
    }
    return true;
}

void CVxItem::OnDisconnect() {
    MapiDisconnect();
    Clear();
}

void CVxItem::Clear() {
    CleanDateTimeValue(m_flagCompleteTime);
    m_isSigned = false;
    ClearBody();
    ClearAttachments();
}

CStringW CVxItem::GetFolderPath() const {
    return m_folder != nullptr ? m_folder->GetFolderPath() : CStringW();
}

CStringW CVxItem::GetFullPath() const {
    return m_folder != nullptr ? m_folder->GetFullPath() : CStringW();
}

CStringW CVxItem::GetFolderId() const {
    return m_folder != nullptr ? m_folder->GetEntryId() : CStringW();
}

CStringW CVxItem::GetFolderName() const {
    return m_folder != nullptr ? m_folder->GetFolderName() : CStringW();
}

std::uint32_t CVxItem::GetSimpleHash() const {
    const std::uint32_t crc = CRC32Block(0, m_id.size() * sizeof(WCHAR), reinterpret_cast<const char*>(m_id.data()));
    return m_parentItem != nullptr ? m_parentItem->GetSimpleHash() + 5 * crc : crc;
}

const CStringW& CVxItem::GetFrom() {
    if (!m_from.empty()) {
        return m_from;
    }
    m_from = m_senderName + " "_w;
    if (m_senderEmail.starts_with('/')) {  // an address of X.500, which nobody outside of Exchange can write to
        CStringW found = FindSenderAddress();
        if (found.empty()) {
            return m_from;
        }
        m_senderEmail = std::move(found);
    }
    MakeLowerAscii(m_senderEmail);
    m_from += '<';
    m_from += m_senderEmail;
    m_from += '>';
    return m_from;
}

CStringW CVxItem::FindSenderAddress() {
    IMAPISession* session = nullptr;
    if (m_store != nullptr && m_store->GetProfileRoot() != nullptr) {
        session = m_store->GetProfileRoot()->GetMAPISession();
    }
    VxMapiFrBufPtr<SPropValue> id;
    if (m_message.get() == nullptr || session == nullptr || FAILED(HrGetOneProp(m_message, PR_SENDER_ENTRYID, &id))
        || id.get() == nullptr || id->ulPropTag != PR_SENDER_ENTRYID) {
        return {};
    }
    ULONG type = 0;
    VxMapiPtr<IUnknown> opened;
    if (FAILED(session->OpenEntry(id->Value.bin.cb, reinterpret_cast<LPENTRYID>(id->Value.bin.lpb), &IID_IMailUser, 0,
                                  &type, &opened))
        || opened.get() == nullptr) {
        return {};
    }
    VxMapiFrBufPtr<SPropValue> address;
    if (FAILED(HrGetOneProp(static_cast<IMailUser*>(opened.get()), PR_SMTP_ADDRESS_W, &address))) {
        return {};
    }
    return CMapiUtil::Mapi2SimpleString(address);
}

CStringW CVxItem::GetURLSubject() {
    if (m_urlSubject.empty()) {
        m_urlSubject = m_rootItem != nullptr ? m_parentItem->GetURLSubject() : m_urlCompName;
    }
    return m_urlSubject;
}

void CVxItem::ReplaceSlashesInSubject(const CStringW& subject, CStringW& urlName) {
    std::size_t position = 0;
    for (std::size_t mark = urlName.find('?'); mark != CStringW::npos; mark = urlName.find('?', mark)) {
        const std::size_t slash = subject.find_first_of("/\\"_w, position);
        if (slash == CStringW::npos) {
            return;
        }
        urlName.replace(mark, 1, subject[slash] == '/' ? "_xF8FF_"_w : "_xF8FE_"_w);
        position = slash + 1;
    }
}
