// Everyday mail: conversations, and what comes by routine.
#include "testing/mailbox_builder/items/Mail.h"

#include "mapi/PropTags.h"
#include "testing/mailbox_builder/items/Attachments.h"
#include "testing/mailbox_builder/items/Bodies.h"
#include "testing/mailbox_builder/items/Dates.h"
#include "testing/mailbox_builder/items/Wording.h"
#include "testing/mailbox_builder/sample/Parts.h"

#include <string>

namespace mailbox_builder::sample {
namespace {

// A turn of a conversation: who writes, how many minutes after the one before, and what.
struct Turn {
    const Person Cast::*from;
    int minutesLater;
    const char* text;
};

struct Thread {
    const char* folder;
    const char* subject;
    Time begin;
    const Person Cast::*other;  // writes to and with Mara
    std::span<const Turn> turns;
};

constexpr Turn kPiers[] = {
    {&Cast::ines, 0,
     "Hi Mara,\n\nthe divers finished the two southern piers this morning. Pier 4 shows wear at the waterline, about "
     "two centimetres deeper than last spring. Could you have a look at the photos before Thursday?\n\nInes"},
    {&Cast::mara, 95,
     "Thanks, Ines. Two centimetres is within what we assumed, but I would like a second reading with the new gauge. "
     "Is the boat still booked for Wednesday?\n\nMara"},
    {&Cast::ines, 40, "It is, from seven to noon. I have asked Hanna to bring the long cable.\n\nInes"},
    {&Cast::mara, 1500,
     "The second reading agrees to within a millimetre, so the table in section 3 stays as it is. I have moved the "
     "photos to the project drive.\n\nMara"},
    {&Cast::ines, 30, "Wonderful. Then I can close the inspection sheet today.\n\nInes"},
};

constexpr Turn kRailing[] = {
    {&Cast::hanna, 0,
     "Dear Mara,\n\nthe harbour office has no objection to the new railing, provided that the lamps stay where they "
     "are. A signed copy follows by post.\n\nKind regards\nHanna Oksanen\nHarbour Office"},
    {&Cast::mara, 210, "Dear Hanna,\n\nthat is good news, thank you. The lamps stay.\n\nBest wishes\nMara"},
    {&Cast::hanna, 4300,
     "Dear Mara,\n\none more thing: the night work needs a notice to mariners, four weeks ahead. The form is on our "
     "site.\n\nKind regards\nHanna"},
};

constexpr Turn kPump[] = {
    {&Cast::luca, 0,
     "Ciao Mara,\n\nthe second pump stops every night at about three. The log says \"low pressure\", but the gauge "
     "shows 2.4 bar. Any idea?\n\nLuca"},
    {&Cast::mara, 600,
     "Hello Luca,\n\nthat sounds like the valve at row 12 opening for the night cycle. Could you shift it by half an "
     "hour and watch for two nights?\n\nMara"},
    {&Cast::luca, 2900, "It was the valve. Two quiet nights, and the trees look happy.\n\nGrazie!\nLuca"},
    {&Cast::mara, 45, "Great. I shall write it into the manual.\n\nMara"},
};

constexpr Turn kBudget[] = {
    {&Cast::oluwaseun, 0,
     "Mara,\n\nthe budget for next year is due on the 20th. I need your figures for equipment, travel and training, "
     "with one sentence of reason for each line above 5,000.\n\nOluwaseun"},
    {&Cast::mara, 2880,
     "Here they are: equipment 18,400 (the echo sounder is nine years old), travel 6,200, training 3,900.\n\nMara"},
    {&Cast::oluwaseun, 130, "Received, thank you. Travel may come back with questions.\n\nOluwaseun"},
};

constexpr Turn kDrone[] = {
    {&Cast::tobias, 0,
     "Hi Mara,\n\nI flew the northern span at sunrise. The point cloud has 41 million points and one seagull. Where "
     "do you want it?\n\nTobias"},
    {&Cast::mara, 20, "On the project drive, please, under surveys/north. Can you cut the seagull?\n\nMara"},
    {&Cast::tobias, 15, "Never. It is the scale bar.\n\nT."},
};

constexpr Turn kWorkshop[] = {
    {&Cast::priya, 0,
     "Dear all,\n\nfor the workshop in May we have three rooms and about sixty registrations. I suggest that we start "
     "with short talks and leave the afternoon for the clinic.\n\nPriya"},
    {&Cast::mara, 400, "Good plan. I can give the talk on fatigue gauges, twenty minutes with questions.\n\nMara"},
    {&Cast::priya, 70, "Noted: Mara, 10:40, fatigue gauges. Slides by the 2nd, please.\n\nPriya"},
    {&Cast::mara, 8000, "Slides attached. The film in slide 9 needs sound.\n\nMara"},
};

const Thread kThreads[] = {
    {"Inbox/Bridge survey", "Piers 3 and 4: results of the dive", At(2024, 3, 12, 10, 14), &Cast::ines, kPiers},
    {"Inbox/Bridge survey", "New railing on the harbour side", At(2024, 9, 3, 8, 2), &Cast::hanna, kRailing},
    {"Inbox/Bridge survey", "Point cloud of the northern span", At(2025, 6, 19, 4, 41), &Cast::tobias, kDrone},
    {"Inbox/Orchard irrigation", "Pump 2 stops at night", At(2025, 7, 7, 6, 30), &Cast::luca, kPump},
    {"Inbox", "Budget for next year", At(2025, 11, 4, 13, 0), &Cast::oluwaseun, kBudget},
    {"Inbox", "Workshop on structural monitoring", At(2026, 2, 10, 9, 20), &Cast::priya, kWorkshop},
};

void DescribeThread(Tree& tree, const Thread& thread) {
    const Cast& cast = People();
    std::vector<Envelope> before;
    Time when = thread.begin;
    for (const Turn& turn : thread.turns) {
        when = After(when, turn.minutesLater);
        const Person& from = cast.*turn.from;
        const bool isMine = turn.from == &Cast::mara;
        Envelope envelope = {.prefix = before.empty() ? Wide("") : Wide("RE: "),
                             .subject = Wide(thread.subject),
                             .from = from,
                             .to = {isMine ? cast.*thread.other : cast.mara},
                             .sent = when};
        if (before.size() % 2 == 0) {
            envelope.cc = {cast.birgit};
        }
        Message message = MakeMail(envelope);
        SetPlainBody(message, Wide(turn.text));
        SetHtmlBody(message, HtmlOfText(Wide(turn.text), "utf-8"));
        if (!before.empty()) {
            Answer(message, before.front(), std::span(before).subspan(1));
        }
        if (!isMine) {
            SetReceivedBy(message.properties, cast.mara);
            MarkAnswered(message.properties, AnsweredBy::Reply, After(when, 15));
        }
        tree.At(isMine ? Wide("Sent Items") : Wide(thread.folder)).messages.push_back(std::move(message));
        before.push_back(std::move(envelope));
    }
}

constexpr const char* kNewsSubjects[] = {
    "The long winter of the breakwater", "Salt, steel and patience",      "Four lamps that outlived their makers",
    "What the tide tables leave out",    "A ferry that came back",        "Paint: the first line of defence",
    "The quiet work of dredgers",        "Reading rust like a newspaper", "Stone by stone: a quay repaired",
};
constexpr const char* kNewsLines[] = {
    "Storms moved eleven of the tetrapods, and nobody noticed until the low water of February.",
    "A coat of zinc costs less than the meeting in which it is discussed.",
    "The keeper's log, kept since 1931, ends with a drawing of a cormorant.",
    "Our reader from the northern islands sends a photograph of a bollard worn through by one rope.",
    "Registration for the open day closes at the end of the month; children are welcome.",
    "Measured at forty points, the quay has sunk by three millimetres in ten years.",
};

void DescribeNewsletters(Tree& tree) {
    const Cast& cast = People();
    Dice dice(11);
    for (int issue = 0; issue < 24; ++issue) {
        const int year = 2024 + issue / 12;
        const auto month = static_cast<unsigned>(issue % 12 + 1);
        const std::string title = dice.Pick(kNewsSubjects);
        Message message = MakeMail({.subject = Wide("Tideline Weekly #" + std::to_string(101 + issue) + ": " + title),
                                    .from = cast.newsletter,
                                    .to = {cast.mara},
                                    .sent = At(year, month, 2 + static_cast<unsigned>(dice.Roll(20)), 5, 0)});
        std::string html = "<html><body><h1>" + title + "</h1>\r\n";
        for (int line = 0; line < 3; ++line) {
            html += "<p>" + std::string(dice.Pick(kNewsLines)) + "</p>\r\n";
        }
        html += "<p><a href=\"https://tideline.example.org/issues/" + std::to_string(101 + issue)
                + "\">Read on</a></p></body></html>\r\n";
        SetHtmlBody(message, html);
        SetMailingList(message.properties, Wide("weekly"), Wide("tideline.example.org"));
        if (issue % 5 == 4) {
            MarkUnread(message.properties);
        }
        tree.At(Wide("Inbox/Newsletters")).messages.push_back(std::move(message));
    }
}

// Reports that a machine writes, with a table attached.
void DescribeSensorReports(Tree& tree) {
    const Cast& cast = People();
    const Person machine = Outsider({}, Wide("sensors@orchard.example.org"));
    Dice dice(23);
    for (int report = 0; report < 40; ++report) {
        const Day day = DayOf(2025, 4, 1) + std::chrono::days{report * 5};
        const std::size_t wettest = dice.Roll(24) + 1;
        std::string table = "row;moisture;pressure\r\n";
        for (int row = 1; row <= 24; ++row) {
            table += std::to_string(row) + ";" + std::to_string(20 + dice.Roll(40)) + ";2."
                     + std::to_string(dice.Roll(10)) + "\r\n";
        }
        const std::string subject = "Soil moisture, report " + std::to_string(report + 1);
        Message message =
            MakeMail({.subject = Wide(subject), .from = machine, .to = {cast.mara, cast.luca}, .sent = At(day, 3, 5)});
        SetPlainBody(message, Wide("24 rows measured. The wettest is row " + std::to_string(wettest)
                                   + ".\r\nNo valve reported a fault.\r\n"));
        message.attachments.push_back(
            AttachBytes(Wide("moisture-" + std::to_string(report + 1) + ".csv"), AsBytes(table), Wide("text/csv")));
        tree.At(Wide("Inbox/Orchard irrigation/Sensor reports")).messages.push_back(std::move(message));
    }
}

void DescribeLeftOvers(Tree& tree) {
    const Cast& cast = People();
    constexpr const char* kOffers[] = {"You have won a lighthouse", "Cheap rope, today only", "Invoice 000000 (urgent)",
                                       "Meet anchors in your area", "RE: RE: your parcel",    "Double your tonnage"};
    int number = 0;
    for (const char* offer : kOffers) {
        Message message = MakeMail({.subject = Wide(offer),
                                    .from = Outsider(Wide("Prize Office"), Wide("noreply@junk.example.net")),
                                    .to = {cast.mara},
                                    .sent = At(2025, 10, static_cast<unsigned>(++number * 3), 1, 17)});
        SetHtmlBody(message,
                    "<html><body><p>Click <b>now</b>: <a href=\"http://junk.example.net/\">here</a></p></body></html>");
        MarkUnread(message.properties);
        message.properties.Set(PR_CONTENT_FILTER_SCL, 9);
        tree.At(Wide("Junk Email")).messages.push_back(std::move(message));
    }
    constexpr const char* kDone[] = {"Your order has left the warehouse", "Your order has arrived", "How did we do?",
                                     "Parking permit: renewed", "Lunch?"};
    for (const char* subject : kDone) {
        Message message = MakeMail({.subject = Wide(subject),
                                    .from = cast.shop,
                                    .to = {cast.mara},
                                    .sent = At(2024, 5, static_cast<unsigned>(++number), 12, 30)});
        SetPlainBody(message, Wide("Dear customer,\r\n\r\n" + std::string(subject) + ".\r\n\r\nPaper & Ink\r\n"));
        tree.At(Wide("Deleted Items")).messages.push_back(std::move(message));
    }
    constexpr const char* kUnfinished[] = {"Notes for the annual report", "", "Thank you"};
    for (const char* subject : kUnfinished) {
        Message message =
            MakeDraft({.subject = Wide(subject), .sent = At(2026, 1, static_cast<unsigned>(++number), 17)});
        SetPlainBody(message, Wide("Dear ...\r\n\r\n"));
        tree.At(Wide("Drafts")).messages.push_back(std::move(message));
    }
    tree.At(Wide("Drafts"))
        .messages.back()
        .recipients.push_back(
            Recipient(RecipientType::To, {.name = Wide("hanna or her deputy")}, Resolution::Unresolved));

    constexpr std::int32_t kSubmitted = 0x04 | 0x08 | 0x01;
    Message waiting =
        MakeDraft({.subject = Wide("Keys of the boat house"), .to = {cast.hanna}, .sent = At(2026, 4, 2, 18, 5)});
    waiting.properties.Set(PR_MESSAGE_FLAGS, kSubmitted)
        .Set(PR_CLIENT_SUBMIT_TIME, At(2026, 4, 2, 18, 6))
        .Set(PR_DEFERRED_SEND_TIME, At(2026, 4, 3, 6, 0));
    SetPlainBody(waiting, Wide("Dear Hanna, the keys are with the porter.\r\n"));
    tree.At(Wide("Outbox")).messages.push_back(std::move(waiting));
}

}  // namespace

void DescribeThreads(Tree& tree) {
    for (const Thread& thread : kThreads) {
        DescribeThread(tree, thread);
    }
}

void DescribeRoutineMail(Tree& tree) {
    DescribeNewsletters(tree);
    DescribeSensorReports(tree);
    DescribeLeftOvers(tree);
}

}  // namespace mailbox_builder::sample
