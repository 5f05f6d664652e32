#include "testing/mailbox_builder/items/Task.h"

#include "mapi/PropTags.h"
#include "testing/mailbox_builder/items/Attachments.h"
#include "testing/mailbox_builder/items/Bodies.h"
#include "testing/mailbox_builder/items/Mail.h"
#include "testing/mailbox_builder/items/Naming.h"

namespace mailbox_builder {

Message MakeTask(const TaskFacts& facts) {
    constexpr std::int32_t kNewTaskState = 1;
    Message task = MakeDraft({.subject = facts.subject, .sent = facts.created, .messageClass = Wide("IPM.Task")});
    Properties& properties = task.properties;
    properties.Set(PR_MESSAGE_FLAGS, 1);
    Set(properties, PidLidTaskStatus, static_cast<std::int32_t>(facts.status));
    Set(properties, PidLidPercentComplete, facts.complete);
    Set(properties, PidLidTaskComplete, facts.status == TaskStatus::Complete);
    Set(properties, PidLidTaskOwner, facts.owner.name);
    Set(properties, PidLidTaskOwnership, 0);
    Set(properties, PidLidTaskAcceptanceState, 0);
    Set(properties, PidLidTaskState, kNewTaskState);
    Set(properties, PidLidTeamTask, false);
    Set(properties, PidLidTaskVersion, 1);
    Set(properties, PidLidTaskMultipleRecipients, 0);
    Set(properties, PidLidTaskActualEffort, facts.actualMinutes);
    Set(properties, PidLidTaskEstimatedEffort, facts.estimatedMinutes);
    Set(properties, PidLidTaskFRecurring, facts.recurrence.has_value());
    if (facts.start) {
        Set(properties, PidLidTaskStartDate, At(*facts.start));
        Set(properties, PidLidCommonStart, At(*facts.start));
    }
    if (facts.due) {
        Set(properties, PidLidTaskDueDate, At(*facts.due));
        Set(properties, PidLidCommonEnd, At(*facts.due));
    }
    if (facts.completed) {
        Set(properties, PidLidTaskDateCompleted, At(*facts.completed));
    }
    Set(properties, PidLidReminderSet, facts.reminder.has_value());
    if (facts.reminder) {
        Set(properties, PidLidReminderTime, *facts.reminder);
        Set(properties, PidLidReminderSignalTime, *facts.reminder);
    }
    if (facts.recurrence) {
        Set(properties, PidLidTaskRecurrence, PatternBlob(*facts.recurrence));
        Set(properties, PidLidTaskDeadOccurrence, false);
    }
    if (!facts.notes.empty()) {
        SetPlainBody(task, facts.notes);
    }
    return task;
}

void Assign(Message& task, const Person& assigner, const Person& assignee, Acceptance acceptance) {
    constexpr std::int32_t kAssignersCopy = 1;
    constexpr std::int32_t kSentState = 2;
    Properties& properties = task.properties;
    Set(properties, PidLidTaskOwner, assignee.name);
    Set(properties, PidLidTaskAssigner, assigner.name);
    Set(properties, PidLidTaskLastDelegate, assigner.name);
    Set(properties, PidLidTaskLastUser, assignee.name);
    Set(properties, PidLidTaskOwnership, kAssignersCopy);
    Set(properties, PidLidTaskAcceptanceState, static_cast<std::int32_t>(acceptance));
    Set(properties, PidLidTaskState, kSentState);
    Set(properties, PidLidTaskUpdates, true);
    Set(properties, PidLidTaskRole, Wide("Surveyor"));
    AddRecipient(task, RecipientType::To, assignee);
}

void SetAccounting(Properties& properties, const CStringW& mileage, const CStringW& billing,
                   std::vector<CStringW> companies, std::vector<CStringW> contacts) {
    Set(properties, PidLidMileage, mileage);
    Set(properties, PidLidBilling, billing);
    Set(properties, PidLidCompanies, std::move(companies));
    Set(properties, PidLidContacts, std::move(contacts));
}

Message MakeTaskRequest(const TaskFacts& facts, const Person& assigner, const Person& assignee, Time sent) {
    Message request = MakeMail({.prefix = Wide("Task Request: "),
                                .subject = facts.subject,
                                .from = assigner,
                                .to = {assignee},
                                .sent = sent,
                                .messageClass = Wide("IPM.TaskRequest")});
    Message task = MakeTask(facts);
    Assign(task, assigner, assignee, Acceptance::Unknown);
    request.attachments.push_back(Hidden(AttachMessage(std::move(task))));
    if (!facts.notes.empty()) {
        SetPlainBody(request, facts.notes);
    }
    return request;
}

}  // namespace mailbox_builder
