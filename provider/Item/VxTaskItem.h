// CVxTaskItem: a task.
#pragma once

#include "provider/Item/ItemFields.h"
#include "provider/Item/VxPlannedItem.h"

class CVxTaskItem final : public CVxPlannedItem {
public:
    explicit CVxTaskItem(CVxConnectable* parent);

    // The time of the last change, else of creation.
    std::int64_t GetDateTimeForDisplay() override;
    void Clear() override;
    bool GetTypeSpecificProperties() override;
    void GetProperty(ULONG field, const SPropValue* value) override;

    // Numbers of MAPI's, passed on as they are.
    const CStringW& GetOwnership() const noexcept { return m_ownership; }
    const CStringW& GetDelegation() const noexcept { return m_delegation; }

    const CStringW& GetOwner() const noexcept { return m_owner; }
    const CStringW& GetDelegator() const noexcept { return m_delegator; }
    const CStringW& GetRole() const noexcept { return m_role; }

    // "True" or "False"; empty when it is not known.
    const CStringW& GetGroup() const noexcept { return m_group; }
    bool GetIsComplete() const noexcept { return m_isComplete; }
    double GetPercentComplete() const noexcept { return m_percentComplete; }  // 1 is all of it
    LONG GetActualWork() const noexcept { return m_actualWork; }              // in minutes, as the next
    LONG GetTotalWork() const noexcept { return m_totalWork; }

    const CStringW& GetBilling() const noexcept { return m_billing; }

    // Who is told of the task's progress: the delegator, and those to whom it was given.
    const CStringW& GetUpdateList() const noexcept { return m_updateList; }

    const FILETIME& GetDueDate() const noexcept { return m_dueDate; }
    const FILETIME& GetStartDate() const noexcept { return m_startDate; }
    const FILETIME& GetCompletedDate() const noexcept { return m_completedDate; }

private:
    static const ItemRow<CVxTaskItem> s_rows[28];
    static const std::array<VxField, 28> aVxTaskFields;

    static void ReadDelegator(CVxTaskItem& item, const SPropValue& value);

    CStringW m_ownership;
    CStringW m_delegation;
    CStringW m_owner;
    CStringW m_delegator;
    CStringW m_role;
    CStringW m_group;
    CStringW m_updateList;
    LONG m_actualWork = 0;
    LONG m_totalWork = 0;
    double m_percentComplete = 0;
    bool m_isComplete = false;
    FILETIME m_dueDate = {0, 0};
    FILETIME m_startDate = {0, 0};
    FILETIME m_completedDate = {0, 0};
};
