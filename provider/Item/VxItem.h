// CVxItem: the base of all items, which are mails, contacts, appointments, tasks and notes. A folder makes it from a row
// and gives it what the row tells: id, type, time, read status. Connected, it is open and read: fields, body, and the
// list of its attachments, among which messages are items again. Disconnected, it has what the row told.
//
// The folder owns its items until its next GetItems, an item its attachments and embedded items; an item that a store
// opens directly has no folder. An embedded item has the id of the item around it, and is told apart by its path.
// One thread at a time, as all nodes.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "platform/Storage.h"
#include "platform/WideText.h"
#include "provider/ItemTypes.h"
#include "provider/MapiHolders.h"
#include "provider/VxConnectable.h"
#include "provider/VxMapiProp.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

class CMPParams;
class CVxAttachment;
class CVxOutlookFolder;
class CVxOutlookStore;
class DecodedEmail;

class CVxItem : public CVxConnectable, public CVxMapiProp {
public:
    // The largest body that is loaded, whatever the host asks for.
    static constexpr LONG kMostBodyBytes = 0x6400000;

    explicit CVxItem(CVxConnectable* parent);
    ~CVxItem() override;

    CVxItem* GetVxItem() override { return this; }
    bool OnConnect() override;
    void OnDisconnect() override;

    // ---- Making and opening ----

    // An item of the class that the open message's own class asks for; null when there is none. The message is looked at
    // and not kept.
    static std::unique_ptr<CVxItem> CreateItem(CVxConnectable* parent, const CStringW& id, CVxOutlookFolder* folder,
                                               CVxOutlookStore* store, IMessage* message);

    // An item of a class by its kind, as CreateItem makes it before it knows more; null for a kind without a class.
    static std::unique_ptr<CVxItem> MakeItem(EVxItemType type, CVxConnectable* parent);

    // Open messages, with a reference of the caller's; null on failure, and for a message that opens with a warning.
    static IMessage* OpenMapiMessage(const CStringW& id, IMsgStore* store);
    static IMessage* OpenAttachedMapiMessage(ULONG attachNum, IMessage* message);

    // Opens and releases the message, without reading it. True too when it is open already. An embedded item needs the
    // item around it open.
    virtual bool MapiConnect();
    virtual void MapiDisconnect();

    // Forgets the body, the attachments and what else connecting has read; what the row told stays.
    virtual void Clear();

    IMAPIProp* GetMapiPropObj() override { return m_message; }

    // Lent; null while the item is closed.
    IMessage* GetMapiMessage() const noexcept { return m_message; }

    // ---- What every item tells ----

    // The time that lists are sorted by, in milliseconds since 1970.
    virtual std::int64_t GetDateTimeForDisplay() = 0;

    virtual CStringW GetUISubject() = 0;

    // The item's part of a URL; for an embedded item that of the item around it. Found once and kept.
    virtual CStringW GetURLSubject();

    EVxItemType GetType() const noexcept { return m_type; }
    const WCHAR* GetTypePsz() const noexcept { return ItemTypeToPsz(m_type); }

    // The entry id as hexadecimal text.
    const CStringW& GetID() const noexcept { return m_id; }
    void SetEntryId(const CStringW& id) { m_id = id; }

    // The path shown to users, once the item has been connected.
    const CStringW& GetUiID() const noexcept { return m_uiId; }

    // Null for an item that was opened directly from its store.
    CVxOutlookFolder* GetFolder() const noexcept { return m_folder; }
    void SetFolder(CVxOutlookFolder* folder) noexcept { m_folder = folder; }
    CVxOutlookStore* GetStore() const noexcept { return m_store; }
    void SetStore(CVxOutlookStore* store) noexcept { m_store = store; }

    // The folder's values; empty without one.
    CStringW GetFolderPath() const;
    CStringW GetFullPath() const;
    CStringW GetFolderId() const;
    CStringW GetFolderName() const;

    const FILETIME& GetFlagCompleteTime() const noexcept { return m_flagCompleteTime; }

    // The sender's name and address. Found once and kept; an address of Exchange's own kind is looked up.
    const CStringW& GetFrom();

    // A number that differs for most items, embedded ones included; it names their files.
    std::uint32_t GetSimpleHash() const;

    // ---- The body ----

    // The format in which the body is loaded the next time; nothing is loaded by this.
    void SetRequestBodyFormat(TBodyFormat format) noexcept { m_requestBodyFormat = format; }

    // The body in the requested format, loaded if need be; empty when none was asked for or it cannot be loaded. A body
    // that is a file is "File:" and its path.
    virtual CStringW GetBody();

    // Loads the body in the requested format, in preview mode in the host's. A body that is larger than the limit is a
    // success without a body, which VxErrorBodyTooBig tells. No format falls back on another one; what MAPI does not
    // give is looked for in the decoded message.
    virtual bool LoadBody();
    bool LoadBody(const CMPParams& params);

    void ClearBody();

    // What the limit is held against: the message's size, -1 where there is none.
    virtual LONG GetBodySizeProperty() { return -1; }

    // The most bytes that are read with these parameters.
    static LONG GetBodySizeLimit(const CMPParams& params) noexcept;

    // Saves the RTF body into the folder for temporary files, as LoadBody does for the whole message.
    bool SaveBodyAsRtf(const CMPParams& params);

    // Whether the body came out of decoding. The attachments then are those of the decoded e-mail.
    bool IsDigitallysigned() const noexcept { return m_isSigned; }

    // ---- Attachments, in the order of the message's table; the first three connect the item first ----

    virtual std::size_t GetChildCount();
    std::size_t GetAttachmentCount() { return GetChildCount(); }

    // Null past the end.
    CVxConnectable* GetAttachment(std::size_t index);

    // The attachment, or embedded item, with that path beneath this item; the item itself for its own path. The first
    // opens what is on the way and lists it anew, the second connects it. Null when there is none. Owned by the item.
    virtual CVxConnectable* FindAttachment(const CStringW& id);
    CVxConnectable* FindAttachmentByAttachNum(const CStringW& id);

    // All attachments as one text; see AttachmentText.h.
    const CStringW& GetAttachmentList() const noexcept { return m_attachmentList; }

    // ---- Embedded items ----

    bool GetIsAttachment() const noexcept { return m_isAttachment; }

    // The item around this one, or this one; only the latter is at the top.
    CVxItem* GetRootItem() noexcept { return m_rootItem != nullptr ? m_rootItem : this; }
    const CStringW& GetEmbeddedItemId() const noexcept { return m_embeddedId; }

    // What the attachment table tells of an embedded item; null for every other one.
    CVxAttachment* GetAttachInfo() const noexcept { return m_attachInfo.get(); }

protected:
    // What connecting reads last: the rows of the attachment table. Adds to what is listed; true at once where the
    // attachments come from decoding. False when the table cannot be read.
    bool GetAttachments();

    // Gives each "?" in `urlName`, from the first on, the slash that stands in its place in `subject`: "_xF8FF_" for "/"
    // and "_xF8FE_" for "\". Those for which the subject has no more slashes stay.
    static void ReplaceSlashesInSubject(const CStringW& subject, CStringW& urlName);

    TBodyFormat m_requestBodyFormat = eBodyText;
    TBodyFormat m_loadedBodyFormat = eBodyNone;  // of what m_body holds
    CStringW m_body;                             // text, or "File:" and a path, or what went wrong
    CVxOutlookStore* m_store = nullptr;          // not owned
    CVxOutlookFolder* m_folder = nullptr;        // not owned
    CVxItem* m_parentItem = nullptr;             // not owned; set for an embedded item
    CVxItem* m_rootItem = nullptr;               // not owned; the item that holds this one
    EVxItemType m_type = eVxItemUnknown;
    CStringW m_id;
    CStringW m_uiId;

private:
    VxMapiPtr<IStorage> m_storage;  // beneath m_message, for an item in a file

protected:
    VxMapiPtr<IMessage> m_message;
    bool m_isAttachment = false;

private:
    CMPParams DomainParams();

    bool LoadPlainBody();
    bool LoadBodyAsRft(const CMPParams& params);
    bool LoadBodyAsHtml(const CMPParams& params);
    bool SaveAsMsg(const CMPParams& params);
    bool LoadEncodedBody(TBodyFormat format);
    UINT HtmlCodePage();
    HRESULT OpenStream(ULONG tag, VxMapiPtr<IUnknown>& stream);

    void ClearAttachments();
    bool ReadAttachmentRows(VxLpRowsPtr<SRowSet>& rows);
    void AddAttachmentRow(const SRow& row);
    bool ReadAttachmentValuesForMsgFile(CVxAttachment& attachment, ULONG number);
    void GetSmimeAttachments(DecodedEmail* email);

    // An item of a message inside this one; null when it cannot be opened or is of no known class. The attachment stands
    // for the item from then on, and ends with it, or at once.
    std::unique_ptr<CVxItem> CreateEmbeddedItem(std::unique_ptr<CVxAttachment> attachment);
    std::unique_ptr<CVxItem> CreateMsgItem(std::unique_ptr<CVxAttachment> attachment, const CStringW& path);
    std::unique_ptr<CVxItem> CreateItemInside(std::unique_ptr<CVxAttachment> attachment, IMessage* message);
    std::unique_ptr<CVxItem> CreateItemOfMsgAttachment(std::unique_ptr<CVxAttachment> attachment);

    void AddEmbeddedItem(std::unique_ptr<CVxItem> item, ULONG number);
    void AddAttachment(std::unique_ptr<CVxAttachment> attachment, LONG number);
    CVxConnectable* LookUp(const CStringW& id) const;

    CStringW FindSenderAddress();

    std::unique_ptr<CVxAttachment> m_attachInfo;
    CStringW m_attachmentList;
    std::vector<std::unique_ptr<CVxConnectable>> m_attachments;
    std::map<CStringW, CVxConnectable*> m_attachmentMap;  // the same, by path
    CStringW m_embeddedId;
    LONG m_embedDepth = 0;  // 0 at the top
    bool m_isSigned = false;
    CStringW m_tempFile;  // the MSG file behind the item; deleted with it

protected:
    CStringW m_urlSubject;  // empty until it is asked for
    CStringW m_urlCompName;
    FILETIME m_flagCompleteTime = {0, 0};
    CStringW m_senderEmail;
    CStringW m_senderAddrType;
    CStringW m_senderName;
    CStringW m_from;  // empty until it is asked for
};
