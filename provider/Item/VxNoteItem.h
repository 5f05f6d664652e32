// CVxNoteItem: a sticky note.
#pragma once

#include "provider/Item/ItemFields.h"
#include "provider/Item/VxItem.h"

class CVxNoteItem final : public CVxItem {
public:
    explicit CVxNoteItem(CVxConnectable* parent);

    // The time of the last change, else of delivery.
    std::int64_t GetDateTimeForDisplay() override;
    CStringW GetUISubject() override { return m_subject; }
    void Clear() override;
    LONG GetBodySizeProperty() override { return m_size; }
    bool GetTypeSpecificProperties() override;
    void GetProperty(ULONG field, const SPropValue* value) override;

    const CStringW& GetSubject() const noexcept { return m_subject; }
    LONG GetSize() const noexcept { return m_size; }

    // 0 blue, 1 green, 2 pink, 3 yellow, 4 white ([MS-OXONOTE] 2.2.1.1).
    LONG GetColor() const noexcept { return m_color; }
    const CStringW& GetCategories() const noexcept { return m_categories; }
    const CStringW& GetContacts() const noexcept { return m_contacts; }

    // PR_MESSAGE_DELIVERY_TIME, in spite of the name.
    const FILETIME& GetCreatedTime() const noexcept { return m_createdTime; }

    // PR_CONVERSATION_TOPIC, in spite of the name.
    const CStringW& GetConversationIndex() const noexcept { return m_conversationTopic; }
    const CStringW& GetPR_CONVERSATION_INDEX() const noexcept { return m_conversationIndex; }

private:
    static const ItemRow<CVxNoteItem> s_rows[8];
    static const std::array<VxField, 8> aVxNoteFields;

    CStringW m_subject;
    CStringW m_categories;
    CStringW m_contacts;
    CStringW m_conversationTopic;
    CStringW m_conversationIndex;
    LONG m_size = 0;
    LONG m_color = 0;
    FILETIME m_createdTime = {0, 0};
};
