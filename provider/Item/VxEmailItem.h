// CVxEmailItem: a message, and whatever else has a class beneath "IPM.Note" or "IPM.Post".
#pragma once

#include "provider/Item/ItemFields.h"
#include "provider/Item/VxItem.h"

class CVxEmailItem final : public CVxItem {
public:
    explicit CVxEmailItem(CVxConnectable* parent);

    // The first of the times of change, sending, delivery and creation that there is.
    std::int64_t GetDateTimeForDisplay() override;
    CStringW GetURLSubject() override;
    CStringW GetUISubject() override { return m_subject; }
    void Clear() override;
    LONG GetBodySizeProperty() override { return m_size; }
    void SetReadStatus(bool isRead) override { m_readStatus = isRead ? 1 : 0; }
    int GetReadStatus() override { return m_readStatus; }
    bool GetTypeSpecificProperties() override;
    void GetProperty(ULONG field, const SPropValue* value) override;

    const CStringW& GetSubject() const noexcept { return m_subject; }
    const CStringW& GetReplyto() const noexcept { return m_replyTo; }
    const CStringW& GetSensitivity() const noexcept { return m_sensitivity; }
    const CStringW& GetTo() const noexcept { return m_to; }
    const CStringW& GetCC() const noexcept { return m_cc; }
    const CStringW& GetBCC() const noexcept { return m_bcc; }
    const CStringW& GetCategories() const noexcept { return m_categories; }
    const CStringW& GetContacts() const noexcept { return m_contacts; }

    // PR_CONVERSATION_TOPIC, in spite of the name.
    const CStringW& GetConversationIndex() const noexcept { return m_conversationTopic; }
    const CStringW& GetPR_CONVERSATION_INDEX() const noexcept { return m_conversationIndex; }

    const FILETIME& GetSentDateTime() const noexcept { return m_sentTime; }
    const FILETIME& GetReceivedDateTime() const noexcept { return m_receivedTime; }
    const FILETIME& GetExpireDateTime() const noexcept { return m_expiryTime; }
    const FILETIME& GetReminder() const noexcept { return m_reminderTime; }

    // 0 low, 1 normal, 2 high; -1 for a number that is none of them.
    LONG GetImportance() const noexcept { return m_importance; }
    LONG GetSize() const noexcept { return m_size; }
    bool GetDeliveryRequest() const noexcept { return m_deliveryRequest; }
    bool GetReadRequest() const noexcept { return m_readRequest; }

    // Flagged is every message that has a flag status, whatever it says. The text is that of the last status that had
    // one.
    bool GetFlagged() const noexcept { return m_flagged; }
    const CStringW& GetFlagText() const noexcept { return m_flagText; }

private:
    static const ItemRow<CVxEmailItem> s_rows[22];
    static const std::array<VxField, 22> aVxEmailFields;

    static void ReadReadStatus(CVxEmailItem& item, const SPropValue& value);
    bool ReadLong(ULONG tag, LONG& value);
    void ReadFlagStatus();
    void ReadIconIndex();

    CStringW m_subject;
    CStringW m_replyTo;
    CStringW m_sensitivity;
    CStringW m_to;
    CStringW m_cc;
    CStringW m_bcc;
    CStringW m_conversationTopic;
    CStringW m_categories;
    CStringW m_contacts;
    CStringW m_conversationIndex;
    FILETIME m_sentTime = {0, 0};
    FILETIME m_receivedTime = {0, 0};
    FILETIME m_expiryTime = {0, 0};
    FILETIME m_reminderTime = {0, 0};
    FILETIME m_creationTime = {0, 0};
    LONG m_importance = 1;
    LONG m_readStatus = 0;
    LONG m_size = 0;
    bool m_deliveryRequest = false;
    bool m_readRequest = false;
    bool m_flagged = false;
    bool m_forwarded = false;
    bool m_replied = false;
    CStringW m_flagText;
};
