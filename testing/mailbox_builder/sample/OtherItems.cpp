// Tasks, notes, journal, and items that are rarely met.
#include "testing/mailbox_builder/items/OtherItems.h"

#include "mapi/PropTags.h"
#include "testing/mailbox_builder/items/Attachments.h"
#include "testing/mailbox_builder/items/Bodies.h"
#include "testing/mailbox_builder/items/Dates.h"
#include "testing/mailbox_builder/items/Naming.h"
#include "testing/mailbox_builder/items/Task.h"
#include "testing/mailbox_builder/items/Wording.h"
#include "testing/mailbox_builder/sample/Parts.h"

#include <string>

namespace mailbox_builder::sample {
namespace {

void DescribeTasks(Tree& tree) {
    const Cast& cast = People();
    std::vector<Message>& tasks = tree.At(Wide("Tasks")).messages;
    constexpr const char* kPlain[] = {"Order rope",           "Renew the boat licence", "Send slides to Priya",
                                      "Archive 2023",         "Water the ficus",        "Book the train",
                                      "Check the tide table", "Answer the auditors",    "Repair the bicycle"};
    int number = 0;
    for (const char* subject : kPlain) {
        const auto status = static_cast<TaskStatus>(number % 5);
        const Day start = DayOf(2025, 1, 10) + std::chrono::days{20 * number};
        TaskFacts facts = {.subject = Wide(subject),
                           .owner = cast.mara,
                           .status = status,
                           .complete = status == TaskStatus::Complete ? 1.0 : 0.25 * (number % 4),
                           .start = start,
                           .due = start + std::chrono::days{9},
                           .estimatedMinutes = 60 * number,
                           .actualMinutes = 45 * number,
                           .notes = Wide("Ask Tobias for the list.\r\n"),
                           .created = At(start - std::chrono::days{2}, 11)};
        if (status == TaskStatus::Complete) {
            facts.completed = start + std::chrono::days{5};
        }
        if (number % 3 == 0) {
            facts.reminder = At(start, 7, 30);
        }
        Message task = MakeTask(facts);
        SetAccounting(task.properties, Wide(std::to_string(number * 12) + " km"), Wide("Account 47"),
                      {Wide("Example Works"), Wide("Quay Lamps")}, {Wide("Tobias Ahn")});
        SetCategories(task.properties, {Wide(number % 2 == 0 ? "Office" : "Boat")});
        tasks.push_back(std::move(task));
        ++number;
    }
    tasks.push_back(MakeTask({.subject = Wide("No dates at all"), .owner = cast.mara, .created = At(2025, 2, 2)}));

    const Recurrence patterns[] = {
        {.frequency = Frequency::Daily, .picks = Picks::Days, .start = DayOf(2025, 5, 1), .every = 10, .count = 6},
        {.frequency = Frequency::Weekly, .picks = Picks::Weekdays, .start = DayOf(2025, 5, 2), .weekdays = kFriday},
        {.frequency = Frequency::Monthly,
         .picks = Picks::MonthDay,
         .start = DayOf(2025, 5, 15),
         .day = 15,
         .until = DayOf(2026, 5, 15)},
        {.frequency = Frequency::Yearly,
         .picks = Picks::MonthDay,
         .start = DayOf(2025, 5, 31),
         .every = 12,
         .day = 31}};
    constexpr const char* kRecurring[] = {"Grease valves", "Back up the logger", "Pay the mooring", "Tax return"};
    for (std::size_t i = 0; i < std::size(patterns); ++i) {
        tasks.push_back(MakeTask({.subject = Wide(kRecurring[i]),
                                  .owner = cast.mara,
                                  .start = patterns[i].start,
                                  .due = patterns[i].start,
                                  .created = At(2025, 4, 20),
                                  .recurrence = patterns[i]}));
    }

    const TaskFacts given = {.subject = Wide("Measure the northern span"),
                             .owner = cast.mara,
                             .due = DayOf(2025, 6, 18),
                             .notes = Wide("By drone, at sunrise.\r\n"),
                             .created = At(2025, 6, 2, 8)};
    Message assigned = MakeTask(given);
    Assign(assigned, cast.mara, cast.tobias, Acceptance::Accepted);
    tasks.push_back(std::move(assigned));
    tree.At(Wide("Sent Items"))
        .messages.push_back(MakeTaskRequest(given, cast.mara, cast.tobias, At(2025, 6, 2, 8, 5)));
}

void DescribeNotes(Tree& tree) {
    constexpr const char* kNotes[] = {
        "Paint: RAL 7016\r\nTwo coats, dry weather.",
        "Gauge 12 sticks",
        "Ideas for the talk\r\n- film first\r\n- one graph",
        "Parking: row C",
        "Luca's recipe\r\nLemons, salt, time.",
    };
    int color = 0;
    for (const char* text : kNotes) {
        tree.At(Wide("Notes"))
            .messages.push_back(MakeNote({.text = Wide(text),
                                          .color = static_cast<NoteColor>(color),
                                          .width = 180 + 20 * color,
                                          .height = 140 + 10 * color,
                                          .created = At(2025, 3, static_cast<unsigned>(1 + 4 * color), 15, 12)}));
        ++color;
    }
    Message marked =
        MakeNote({.text = Wide("\u8CB7\u3044\u7269: \u7D19, \u30A4\u30F3\u30AF"), .created = At(2025, 4, 4)});
    marked.codePage = 932;
    marked.properties.Set(PR_MESSAGE_CODEPAGE, 932);
    SetCategories(marked.properties, {Wide("Shopping")});
    Set(marked.properties, PidLidContactLinkName, Wide("Priya Raman"));
    tree.At(Wide("Notes")).messages.push_back(std::move(marked));
    tree.At(Wide("Notes")).messages.push_back(MakeNote({.text = {}, .created = At(2025, 4, 5)}));
}

void DescribeJournal(Tree& tree) {
    struct Row {
        const char* subject;
        const char* kind;
        int minutes;
    };
    constexpr Row kRows[] = {{"Harbour office", "Phone call", 12},
                             {"Report on pier 4", "Microsoft Word", 145},
                             {"Meeting on the railing", "Meeting", 60},
                             {"Letter to the auditors", "Letter", 25}};
    unsigned day = 3;
    for (const Row& row : kRows) {
        tree.At(Wide("Journal"))
            .messages.push_back(MakeJournalEntry(Wide(row.subject), Wide(row.kind), At(2025, 2, day, 10), row.minutes,
                                                 Wide("Done.\r\n")));
        day += 5;
    }
}

void DescribePosts(Tree& tree) {
    const Cast& cast = People();
    const Envelope question = {
        .subject = Wide("Which gauge for salt water?"), .from = cast.marek, .sent = At(2025, 1, 20, 9)};
    Envelope answer = question;
    answer.prefix = Wide("RE: ");
    answer.from = cast.birgit;
    answer.sent = At(2025, 1, 20, 11, 40);
    std::vector<Message>& folder = tree.At(Wide("Discussions")).messages;
    folder.push_back(MakePost(question, Wide("The old ones corrode within a season. What do you use?\r\n")));
    folder.push_back(MakePost(answer, Wide("Titanium housings. Expensive once, cheap ever after.\r\n")));
    Answer(folder.back(), question);

    constexpr const char* kHeadlines[] = {"Tide gauge network extended", "New standard for railings",
                                          "Storm names 2026"};
    unsigned day = 1;
    for (const char* headline : kHeadlines) {
        tree.At(Wide("Feeds"))
            .messages.push_back(MakeFeedItem(
                Wide(headline), Wide("Coast news"), Wide("https://feeds.example.org/items/" + std::to_string(day)),
                "<html><body><p>" + std::string(headline) + ". Read more on our pages.</p></body></html>",
                At(2026, 1, day, 6)));
        day += 9;
    }
}

void DescribeReports(Tree& tree) {
    const Cast& cast = People();
    const Envelope lost = {.subject = Wide("Invitation to the open day"),
                           .from = cast.mara,
                           .to = {Outsider(Wide("Old Address"), Wide("old.address@harbour.example.net"))},
                           .sent = At(2025, 8, 1, 9)};
    Message sent = MakeMail(lost);
    SetPlainBody(sent, Wide("You are invited.\r\n"));
    std::vector<Message>& inbox = tree.At(Wide("Inbox")).messages;
    inbox.push_back(MakeNonDelivery(lost, sent, cast.postmaster));
    inbox.push_back(MakeReadReceipt(
        {.subject = Wide("Slides for May"), .from = cast.mara, .to = {cast.priya}, .sent = At(2026, 4, 20, 9)},
        cast.priya, At(2026, 4, 20, 10)));
    tree.At(Wide("Sent Items")).messages.push_back(std::move(sent));
}

void DescribeSecured(Tree& tree) {
    const Cast& cast = People();
    std::vector<Message>& folder = tree.At(Wide("Signed and encrypted")).messages;
    const auto envelope = [&](const char* subject, unsigned day) {
        return Envelope{
            .subject = Wide(subject), .from = cast.oluwaseun, .to = {cast.mara}, .sent = At(2025, 3, day, 8)};
    };
    folder.push_back(MakeEncrypted(envelope("Salaries", 3)));
    folder.push_back(MakeEncrypted(envelope("RE: Salaries", 4)));
    folder.push_back(MakeClearSigned(envelope("Approval of the survey", 5), "Approved.\r\n\r\nOluwaseun Bello"));
}

void DescribeUnknown(Tree& tree) {
    std::vector<Message>& documents = tree.At(Wide("Documents")).messages;
    documents.push_back(MakeDocument(Wide("Plan of the quay.pdf"), Wide("PDF"), MakePdf("Plan of the quay"),
                                     Wide("application/pdf"), At(2024, 11, 4)));
    documents.push_back(MakeDocument(Wide("todo.txt"), Wide("txtfile"), AsBytes("paint\r\nrope\r\n"),
                                     Wide("text/plain"), At(2024, 11, 5)));

    // Classes that no program here knows, or that look like known ones without being them.
    constexpr const char* kClasses[] = {
        "IPM.Noted",         "IPM", "IPM.Microsoft.Answer", "ipm.NOTE", "IPM.Note.Custom.Form", "IPM.Example.Unheard",
        "IPM.Outlook.Recall"};
    std::vector<Message>& unfiled = tree.At(Wide("Unfiled")).messages;
    for (const char* messageClass : kClasses) {
        Message message = MakeMail({.subject = Wide("Of the class " + std::string(messageClass)),
                                    .from = People().marek,
                                    .to = {People().mara},
                                    .sent = At(2024, 12, 1, 8, static_cast<int>(unfiled.size())),
                                    .messageClass = Wide(messageClass)});
        SetPlainBody(message, Wide("Can you open this?\r\n"));
        unfiled.push_back(std::move(message));
    }
    Message nameless = MakeMail({.subject = Wide("With an empty class"),
                                 .from = People().marek,
                                 .to = {People().mara},
                                 .sent = At(2024, 12, 1, 9),
                                 .messageClass = {}});
    unfiled.push_back(std::move(nameless));
    Message bare;
    bare.properties.Set(PR_MESSAGE_CLASS, Wide("IPM.Note"));
    unfiled.push_back(std::move(bare));
}

void DescribeHiddenMessages(Tree& tree) {
    const Time then = At(2024, 1, 2, 8);
    tree.At(Wide("Common Views"), Place::Topmost).associated.push_back(MakeViewDefinition(Wide("By size"), then));
    tree.At(Wide("Inbox")).associated.push_back(MakeViewDefinition(Wide("Unread first"), then));
    constexpr std::string_view kNoSettings =
        "<?xml version=\"1.0\"?><UserConfiguration><Info version=\"Sample.1\"/><Data/></UserConfiguration>";
    tree.At(Wide("Calendar")).associated.push_back(MakeSettings(Wide("IPM.Configuration.Calendar"), kNoSettings, then));
    tree.At(Wide("Inbox"))
        .associated.push_back(MakeSettings(Wide("IPM.Configuration.AvailabilityOptions"), kNoSettings, then));
    tree.At(Wide("Quick Step Settings"))
        .messages.push_back(MakeSettings(Wide("IPM.Microsoft.CustomAction"), kNoSettings, then));
    tree.At(Wide("Freebusy Data"), Place::Topmost)
        .messages.push_back(MakeSettings(Wide("IPM.Microsoft.ScheduleData.FreeBusy"), {}, then));
    constexpr const char* kTroubles[] = {"Sync Issues", "Sync Issues/Conflicts", "Sync Issues/Local Failures",
                                         "Sync Issues/Server Failures"};
    unsigned day = 5;
    for (const char* path : kTroubles) {
        Message log = MakeMail({.subject = Wide("Synchronization Log:"),
                                .from = People().mara,
                                .to = {People().mara},
                                .sent = At(2025, 12, day++, 7)});
        SetPlainBody(log, Wide("07:00:01 Synchronizer Version 16.0\r\n07:00:02 Done\r\n"));
        tree.At(Wide(path)).messages.push_back(std::move(log));
    }
}

}  // namespace

void DescribeTasksAndNotes(Tree& tree) {
    DescribeTasks(tree);
    DescribeNotes(tree);
    DescribeJournal(tree);
}

void DescribeRareItems(Tree& tree) {
    DescribePosts(tree);
    DescribeReports(tree);
    DescribeSecured(tree);
    DescribeUnknown(tree);
    DescribeHiddenMessages(tree);
}

}  // namespace mailbox_builder::sample
