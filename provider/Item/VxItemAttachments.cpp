// Attachments and embedded items: the message's table turned into nodes, and nodes found by their paths.
#include "mapi/MapiFlags.h"
#include "mapi/PropTags.h"
#include "platform/Paths.h"
#include "provider/AttachmentText.h"
#include "provider/Attachments/VxRegularAttachment.h"
#include "provider/Attachments/VxSmimeAttachment.h"
#include "provider/Common/Log.h"
#include "provider/Common/StringHelpers.h"
#include "provider/ImportProcs.h"
#include "provider/Item/VxItem.h"
#include "provider/RowValues.h"
#include "provider/StoreAndFolder/VxOutlookFolder.h"
#include "provider/WholeTable.h"
#include "provider/mime/EmailDecoding.h"

#include <filesystem>
#include <system_error>
#include <utility>

namespace {

constexpr auto& kSourcePath = "Item\\VxItem.cpp"_w;

// How an MSG file that stands for an embedded item is opened.
constexpr DWORD kMsgFileMode = STGM_TRANSACTED | STGM_READ;

constexpr auto kTableColumns =
    MakeTagArray(PR_ATTACH_METHOD, PR_ATTACH_NUM, PR_ATTACH_FILENAME_W, PR_ATTACH_LONG_FILENAME_W, PR_DISPLAY_NAME_W,
                 PR_ATTACH_SIZE, PR_URL_COMP_NAME_W);
constexpr ULONG kMethodColumn = 0;
constexpr ULONG kNumberColumn = 1;
constexpr ULONG kFirstValueColumn = 2;

// The same without the first two: what the attachment itself is asked for.
constexpr auto kValueTags = MakeTagArray(PR_ATTACH_FILENAME_W, PR_ATTACH_LONG_FILENAME_W, PR_DISPLAY_NAME_W,
                                         PR_ATTACH_SIZE, PR_URL_COMP_NAME_W);

// Takes the values, which begin at a column of the row, in the order of kValueTags, in the place of what is known; one
// in error takes no place. Gives whether there was a size.
bool TakeValues(const SRow& row, ULONG column, AttachmentValues& values) {
    const auto takeText = [&](ULONG place, CStringW& text) {
        if (ColumnOfType(row, column + place, PT_UNICODE) != nullptr) {
            text = TextColumn(row, column + place);
        }
    };
    takeText(0, values.fileName);
    takeText(1, values.longFileName);
    takeText(2, values.displayName);
    takeText(4, values.urlCompName);
    const SPropValue* size = ColumnOfType(row, column + 3, PT_LONG);
    if (size != nullptr) {
        values.size = size->Value.l;
    }
    if (values.displayName.empty()) {
        values.displayName = values.longFileName.empty() ? values.fileName : values.longFileName;
    }
    return size != nullptr;
}

bool IsMsgFileName(const CStringW& name) {
    constexpr WideView kExtension = ".msg"_w;
    return name.size() >= kExtension.size()
           && EqualIgnoringAsciiCase(WideView(name).substr(name.size() - kExtension.size()), kExtension);
}

// The kind of attachment that a row's method stands for; eVxATUnknown for those that are no objects here.
EVxAttachType AttachTypeOf(const SRow& row) {
    const SPropValue* method = ColumnOfType(row, kMethodColumn, PT_LONG);
    switch (method != nullptr ? method->Value.l : -1) {
        case ATTACH_BY_VALUE: return eVxATByValue;
        case ATTACH_EMBEDDED_MSG: return eVxATEmbedded;
        case ATTACH_OLE: return eVxATOle;
        default: return eVxATUnknown;
    }
}

}  // namespace

void CVxItem::ClearAttachments() {
    m_attachmentMap.clear();
    while (!m_attachments.empty()) {
        m_attachments.pop_back();
    }
    m_attachmentList.clear();
}

bool CVxItem::GetAttachments() {
    if (m_isSigned) {
        return true;
    }
    VxLpRowsPtr<SRowSet> rows;
    if (!ReadAttachmentRows(rows)) {
        return false;
    }
    for (ULONG i = 0; i < rows->cRows; ++i) {
        AddAttachmentRow((&rows->aRow[0])[i]);
    }
    return true;
}

bool CVxItem::ReadAttachmentRows(VxLpRowsPtr<SRowSet>& rows) {
    if (m_message.get() == nullptr) {
        return false;
    }
    VxMapiPtr<IMAPITable> table;
    const HRESULT hr = m_message->GetAttachmentTable(0, &table);
    if (FAILED(hr) || table.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("GetAttachmentTable failed (%x)"_w, hr);
        return false;
    }
    return ReadWholeTable(table, kTableColumns, rows, VX_LOG('E'));
}

void CVxItem::AddAttachmentRow(const SRow& row) {
    const EVxAttachType type = AttachTypeOf(row);
    const SPropValue* numberValue = ColumnOfType(row, kNumberColumn, PT_LONG);
    if (type == eVxATUnknown || numberValue == nullptr) {
        return;
    }
    const ULONG number = numberValue->Value.ul;
    auto attachment = std::make_unique<CVxRegularAttachment>(type == eVxATEmbedded ? nullptr : this);
    attachment->SetAttachType(type);
    attachment->SetAttachNum(number);
    AttachmentValues values;
    const bool hasSize = TakeValues(row, kFirstValueColumn, values);
    const bool isComplete = hasSize && !values.displayName.empty();
    attachment->SetValues(std::move(values));
    if (!isComplete && !ReadAttachmentValuesForMsgFile(*attachment, number)) {
        return;
    }
    m_attachmentList += AttachmentListName(attachment->GetDisplayName());
    std::unique_ptr<CVxItem> item;
    if (type == eVxATEmbedded) {
        item = CreateEmbeddedItem(std::move(attachment));
    } else if (IsMsgFileName(attachment->GetDisplayName())) {
        item = CreateItemOfMsgAttachment(std::move(attachment));
    } else {
        CVxAttachment& added = *attachment;
        AddAttachment(std::move(attachment), static_cast<LONG>(number));
        m_attachmentList += AttachmentListFileId(added.GetEmbeddedItemId());
    }
    if (item != nullptr) {
        CVxItem& added = *item;
        AddEmbeddedItem(std::move(item), number);
        m_attachmentList += AttachmentListItemId(added.GetType(), added.GetEmbeddedItemId());
    }
}

bool CVxItem::ReadAttachmentValuesForMsgFile(CVxAttachment& attachment, ULONG number) {
    VxMapiPtr<IAttach> attach;
    if (m_message->OpenAttach(number, nullptr, MAPI_BEST_ACCESS, &attach) != S_OK || attach.get() == nullptr) {
        return false;
    }
    ULONG count = 0;
    VxMapiFrBufPtr<SPropValue> read;
    if (FAILED(attach->GetProps(kValueTags, MAPI_UNICODE, &count, &read)) || read.get() == nullptr) {
        return false;
    }
    AttachmentValues values = attachment.GetValues();
    TakeValues(SRow{0, count, read}, 0, values);
    if (values.displayName.empty()) {
        values.displayName = "Attachment"_w;
    }
    attachment.SetValues(std::move(values));
    return true;
}

void CVxItem::GetSmimeAttachments(DecodedEmail* email) {
    const LONG count = email != nullptr ? email->GetNumAttachments() : 0;
    for (LONG index = 0; index < count; ++index) {
        auto attachment = std::make_unique<CVxSmimeAttachment>(this);
        if (!attachment->Init(index, *email)) {
            continue;
        }
        CVxAttachment& added = *attachment;
        m_attachmentList += AttachmentListName(added.GetDisplayName());
        AddAttachment(std::move(attachment), index);
        m_attachmentList += AttachmentListSmimeId(added.GetEmbeddedItemId());
    }
}

std::unique_ptr<CVxItem> CVxItem::CreateItemInside(std::unique_ptr<CVxAttachment> attachment, IMessage* message) {
    CVxOutlookStore* store = m_folder != nullptr ? m_folder->GetStore() : nullptr;
    std::unique_ptr<CVxItem> item = CreateItem(this, m_id, m_folder, store, message);
    if (item != nullptr) {
        item->m_parentItem = this;
        item->m_store = m_store;
        item->m_isAttachment = true;
        item->m_attachInfo = std::move(attachment);
    }
    return item;
}

std::unique_ptr<CVxItem> CVxItem::CreateEmbeddedItem(std::unique_ptr<CVxAttachment> attachment) {
    const VxMapiPtr<IMessage> message(OpenAttachedMapiMessage(attachment->GetAttachNum(), m_message));
    return message.get() != nullptr ? CreateItemInside(std::move(attachment), message) : nullptr;
}

std::unique_ptr<CVxItem> CVxItem::CreateItemOfMsgAttachment(std::unique_ptr<CVxAttachment> attachment) {
    const CStringW path = CMapiUtil::GetATempFileName() + ".msg"_w;
    std::unique_ptr<CVxItem> item;
    if (!CMapiUtil::SaveMsgAttachmentOnDisk(attachment->GetAttachNum(), m_message, path).empty()) {
        item = CreateMsgItem(std::move(attachment), path);
    }
    // Where an open file cannot be deleted, the item does it in the end.
    std::error_code ignored;
    std::filesystem::remove(ToPath(path), ignored);
    return item;
}

std::unique_ptr<CVxItem> CVxItem::CreateMsgItem(std::unique_ptr<CVxAttachment> attachment, const CStringW& path) {
    const LPMALLOC allocator = MAPIGetDefaultMalloc();
    VxMapiPtr<IStorage> storage;  // released after the message
    if (FAILED(StgOpenStorage(path.c_str(), nullptr, kMsgFileMode, nullptr, 0, &storage)) || storage.get() == nullptr) {
        return nullptr;
    }
    VxMapiPtr<IMessage> message;
    if (FAILED(OpenIMsgOnIStg(nullptr, &MAPIAllocateBuffer, &MAPIAllocateMore, &MAPIFreeBuffer, allocator, nullptr,
                              storage, nullptr, 0, 0, &message))
        || message.get() == nullptr) {
        return nullptr;
    }
    std::unique_ptr<CVxItem> item = CreateItemInside(std::move(attachment), message);
    if (item != nullptr) {
        item->m_storage.reset(storage.releasePointer());
        item->m_message.reset(message.releasePointer());
        item->m_tempFile = path;
    }
    return item;
}

void CVxItem::AddEmbeddedItem(std::unique_ptr<CVxItem> item, ULONG number) {
    item->m_embeddedId = EmbeddedItemPath(m_embeddedId, static_cast<LONG>(number));
    item->m_embedDepth = m_embedDepth + 1;
    item->m_rootItem = this;
    m_attachmentMap[item->m_embeddedId] = item.get();
    m_attachments.push_back(std::move(item));
}

void CVxItem::AddAttachment(std::unique_ptr<CVxAttachment> attachment, LONG number) {
    attachment->SetEmbeddedItemId(AttachmentPath(m_embeddedId, number));
    m_attachmentMap[attachment->GetEmbeddedItemId()] = attachment.get();
    m_attachments.push_back(std::move(attachment));
}

std::size_t CVxItem::GetChildCount() {
    EnsureConnected();
    return m_attachments.size();
}

CVxConnectable* CVxItem::GetAttachment(std::size_t index) {
    EnsureConnected();
    return index < m_attachments.size() ? m_attachments[index].get() : nullptr;
}

CVxConnectable* CVxItem::LookUp(const CStringW& id) const {
    const auto found = m_attachmentMap.find(CStringW(FirstComponents(id, static_cast<std::size_t>(m_embedDepth) + 1)));
    return found != m_attachmentMap.end() ? found->second : nullptr;
}

CVxConnectable* CVxItem::FindAttachment(const CStringW& id) {
    if (!MapiConnect() || !GetAttachments()) {
        VX_LOG('D') << Vx::LogMsg("Failed to get attachments for item: %s"_w, m_id);
        return nullptr;
    }
    if (id == m_embeddedId) {
        return this;
    }
    CVxConnectable* found = LookUp(id);
    CVxItem* item = found != nullptr ? found->GetVxItem() : nullptr;
    return item != nullptr ? item->FindAttachment(id) : found;
}

CVxConnectable* CVxItem::FindAttachmentByAttachNum(const CStringW& id) {
    if (!EnsureConnected()) {
        return nullptr;
    }
    if (id == m_embeddedId) {
        return this;
    }
    CVxConnectable* found = LookUp(id);
    CVxItem* item = found != nullptr ? found->GetVxItem() : nullptr;
    return item != nullptr ? item->FindAttachmentByAttachNum(id) : found;
}
