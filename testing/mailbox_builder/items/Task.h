// Tasks: [MS-OXOTASK]. Any thread.
#pragma once

#include "testing/mailbox_builder/Model.h"
#include "testing/mailbox_builder/items/People.h"
#include "testing/mailbox_builder/items/Recurrence.h"

#include <optional>
#include <vector>

namespace mailbox_builder {

// PidLidTaskStatus: 2.2.2.2.2.
enum class TaskStatus : std::int32_t { NotStarted = 0, InProgress = 1, Complete = 2, Waiting = 3, Deferred = 4 };

// Start and due are dates; their times are midnight UTC, as tasks have them.
struct TaskFacts {
    CStringW subject = {};
    Person owner = {};
    TaskStatus status = TaskStatus::NotStarted;
    double complete = 0;  // 0 to 1
    std::optional<Day> start = {};
    std::optional<Day> due = {};
    std::optional<Day> completed = {};
    std::optional<Time> reminder = {};
    int estimatedMinutes = 0;
    int actualMinutes = 0;
    CStringW notes = {};
    Time created = {};
    std::optional<Recurrence> recurrence = {};
};

Message MakeTask(const TaskFacts& facts);

// A task that `assigner` has given away: PidLidTaskOwnership 2.2.2.2.29, PidLidTaskAcceptanceState 2.2.2.2.30.
enum class Acceptance : std::int32_t { NotAssigned = 0, Unknown = 1, Accepted = 2, Rejected = 3 };
void Assign(Message& task, const Person& assigner, const Person& assignee, Acceptance acceptance);

// The texts that a form for tasks has on its second page, and the like of appointments.
void SetAccounting(Properties& properties, const CStringW& mileage, const CStringW& billing,
                   std::vector<CStringW> companies, std::vector<CStringW> contacts);

// A request to take over the task, which is embedded in it: 2.2.2.1.
Message MakeTaskRequest(const TaskFacts& facts, const Person& assigner, const Person& assignee, Time sent);

}  // namespace mailbox_builder
