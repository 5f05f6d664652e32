// The forms that a mail can have: of its body, its people, its marks; and the scripts that it can be written in.
#include "mapi/PropTags.h"
#include "testing/mailbox_builder/items/Attachments.h"
#include "testing/mailbox_builder/items/Bodies.h"
#include "testing/mailbox_builder/items/Dates.h"
#include "testing/mailbox_builder/items/Mail.h"
#include "testing/mailbox_builder/items/Naming.h"
#include "testing/mailbox_builder/items/Wording.h"
#include "testing/mailbox_builder/sample/Languages.h"
#include "testing/mailbox_builder/sample/Parts.h"

#include <string>

namespace mailbox_builder::sample {
namespace {

// Adds messages to one folder, an hour apart.
class Series {
public:
    Series(SampleFolder& folder, Time begin) : m_folder(&folder), m_next(begin) {}

    // A mail from Ines to Mara, unless `envelope` says otherwise.
    Message& Add(Envelope envelope) {
        const Cast& cast = People();
        if (envelope.from.smtp.empty()) {
            envelope.from = cast.ines;
        }
        if (envelope.to.empty()) {
            envelope.to = {cast.mara};
        }
        envelope.sent = m_next;
        m_next = After(m_next, 60);
        return m_folder->messages.emplace_back(MakeMail(envelope));
    }
    Message& Add(const char* subject) { return Add({.subject = Wide(subject)}); }

private:
    SampleFolder* m_folder;
    Time m_next;
};

const char* const kText =
    "The gauges on the eastern pier were read at six.\r\nAll values lie within the limits; see the "
    "table.\r\n\r\nInes\r\n";
const char* const kHtml =
    "<html><head><title>Gauges</title></head><body><h2>Gauges</h2>"
    "<p>The gauges on the <b>eastern</b> pier were read at six.<br>All values lie within the limits &amp; the table."
    "</p><ul><li>north: 12&nbsp;mm</li><li>south: 9&nbsp;mm</li></ul></body></html>";

std::string LongText() {
    std::string text;
    for (int line = 1; text.size() < 60'000; ++line) {
        text += "Line " + std::to_string(line) + ": the gauge stood at " + std::to_string(line * 37 % 101)
                + " millimetres and the wind came from the west.\r\n";
    }
    return text;
}

void DescribeBodies(Tree& tree) {
    Series series(tree.At(Wide("Forms of mail")), At(2024, 6, 3, 8));
    SetPlainBody(series.Add("Plain text only"), Wide(kText));
    SetHtmlBody(series.Add("HTML only"), kHtml);
    SetHtmlBody(series.Add("HTML only, ISO 8859-1"), kHtml, 28591);
    SetRtfBody(series.Add("Rich text only"), RtfOfText(Wide(kText)));
    SetRtfBody(series.Add("Rich text only, not compressed"), RtfOfText(Wide(kText)), RtfForm::Stored);
    SetRtfBody(series.Add("Rich text only, with HTML inside"), RtfOfHtml(kHtml));

    Message& all = series.Add("Plain text, HTML and rich text");
    SetHtmlBody(all, kHtml);
    SetPlainBody(all, Wide(kText));
    SetRtfBody(all, RtfOfHtml(kHtml));

    Message& wide = series.Add("HTML as text");
    wide.properties.Set(PR_BODY_HTML, Wide(kHtml)).Set(PR_INTERNET_CPID, 65001);

    series.Add("No body at all");
    SetPlainBody(series.Add("Empty body"), {});
    SetPlainBody(series.Add("Long body"), Wide(LongText()));
    SetHtmlBody(series.Add("Long HTML body"), HtmlOfText(Wide(LongText()), "utf-8"));
    SetPlainBody(series.Add(""), Wide("This one has no subject.\r\n"));

    Message& spare = series.Add("Headers of its own");
    AddHeader(spare.properties, Wide("X-Mailer"), Wide("Example Courier 4.2"));
    Set(spare.properties, PidNameContentClass, Wide("urn:content-classes:message"));
    constexpr TextNamedProperty kMailer = {&PS_INTERNET_HEADERS, "x-mailer"_w, PT_UNICODE};
    Set(spare.properties, kMailer, Wide("Example Courier 4.2"));
    SetPlainBody(spare, Wide(kText));
}

void DescribePeopleOfMail(Tree& tree) {
    const Cast& cast = People();
    Series series(tree.At(Wide("Forms of mail")), At(2024, 6, 10, 8));
    Message& behalf =
        series.Add({.subject = Wide("On behalf of the director"), .from = cast.tobias, .onBehalfOf = cast.oluwaseun});
    SetPlainBody(behalf, Wide(kText));

    Message& everybody = series.Add({.subject = Wide("To everybody"),
                                     .to = {cast.mara, cast.priya, cast.hanna},
                                     .cc = {cast.tobias, cast.luca},
                                     .bcc = {cast.oluwaseun, cast.marek}});
    SetPlainBody(everybody, Wide(kText));
    AddRecipient(everybody, RecipientType::Originator, cast.ines);
    AddRecipient(everybody, RecipientType::To, {.name = Wide("someone at the quay")}, Resolution::Unresolved);
    AddRecipient(everybody, RecipientType::Cc, Outsider({}, Wide("Front.Desk@Harbour.Example.NET")));
    AddRecipient(everybody, RecipientType::To,
                 {.name = Wide("Bridge crew"), .type = AddressType::PrivateList, .address = Wide("Bridge crew")});
    AddRecipient(
        everybody, RecipientType::Cc,
        {.name = Wide("Harbour fax"), .type = AddressType::Fax, .address = Wide("Harbour fax@+46 8 5550 0199")});
    // An address that only the transport knew.
    Person moved = Colleague(Wide("Former Colleague"), Wide("former.colleague"));
    moved.smtp.clear();
    AddRecipient(everybody, RecipientType::Cc, moved);
    everybody.recipients.back().Set(PR_ORG_EMAIL_ADDR, Wide("former.colleague@example.com"));

    Message& crowd = series.Add("Invitation to two hundred");
    for (int guest = 1; guest <= 200; ++guest) {
        const std::string number = std::to_string(guest);
        AddRecipient(crowd, guest % 3 == 0 ? RecipientType::Cc : RecipientType::To,
                     Outsider(Wide("Guest " + number), Wide("guest" + number + "@example.org")));
    }
    SetPlainBody(crowd, Wide("You are all welcome.\r\n"));

    Message& replies = series.Add({.subject = Wide("Reply elsewhere"), .from = cast.newsletter});
    const Person elsewhere[] = {Outsider(Wide("Letters to the editor"), Wide("letters@tideline.example.org")),
                                cast.hanna};
    SetReplyTo(replies.properties, elsewhere);
    SetPlainBody(replies, Wide(kText));

    Message& nobody = series.Add("Nobody left in the list");
    nobody.recipients.clear();
    SetPlainBody(nobody, Wide(kText));
}

void DescribeMarks(Tree& tree) {
    Series series(tree.At(Wide("Forms of mail")), At(2024, 6, 17, 8));
    const auto add = [&](const char* subject) -> Properties& {
        Message& message = series.Add(subject);
        SetPlainBody(message, Wide(kText));
        return message.properties;
    };
    SetImportance(add("High importance"), Importance::High);
    SetImportance(add("Low importance"), Importance::Low);
    SetSensitivity(add("Personal"), Sensitivity::Personal);
    SetSensitivity(add("Private"), Sensitivity::Private);
    SetSensitivity(add("Company confidential"), Sensitivity::Confidential);
    MarkUnread(add("Unread"));
    MarkAnswered(add("Answered"), AnsweredBy::Reply, At(2024, 6, 18, 9));
    MarkAnswered(add("Answered to all"), AnsweredBy::ReplyToAll, At(2024, 6, 18, 10));
    MarkAnswered(add("Forwarded"), AnsweredBy::Forward, At(2024, 6, 18, 11));
    SetFollowUp(add("To be followed up"),
                {.start = At(2024, 6, 20), .due = At(2024, 6, 24), .reminder = At(2024, 6, 23, 7)});
    SetFollowUp(add("Followed up"), {.start = At(2024, 6, 20), .due = At(2024, 6, 24), .completed = At(2024, 6, 22)});
    add("Flag that was taken away").Set(PR_FLAG_STATUS, 0);
    SetCategories(add("One category"), {Wide("Bridge survey")});
    SetCategories(add("Categories"), {Wide("Bridge survey"), Wide("\u00C5rsrapport"), Wide("\u91CD\u8981")});

    Properties& receipts = add("Receipts wanted");
    receipts.Set(PR_ORIGINATOR_DELIVERY_REPORT_REQUESTED, true)
        .Set(PR_READ_RECEIPT_REQUESTED, true)
        .Set(PR_EXPIRY_TIME, At(2026, 12, 31, 23, 59));
    Set(receipts, PidLidContactLinkName, Wide("Hanna Oksanen; Luca Ferri"));

    SetSubject(add("Prefix of four letters"), Wide("AW: "), Wide("Slashes / and \\ backslashes in a subject"));
    Properties& bare = add("-");
    bare.Set(PR_SUBJECT, Wide("A subject without a hidden prefix"));

    // A property of every type that has not come by so far.
    constexpr TextNamedProperty kShorts = {&PS_PUBLIC_STRINGS, "x-example-shorts"_w, PT_MV_SHORT};
    constexpr TextNamedProperty kTimes = {&PS_PUBLIC_STRINGS, "x-example-times"_w, PT_MV_SYSTIME};
    constexpr TextNamedProperty kNumbers = {&PS_PUBLIC_STRINGS, "x-example-numbers"_w, PT_MV_I8};
    constexpr TextNamedProperty kGuids = {&PS_PUBLIC_STRINGS, "x-example-guids"_w, PT_MV_CLSID};
    constexpr TextNamedProperty kRatio = {&PS_PUBLIC_STRINGS, "x-example-ratio"_w, PT_FLOAT};
    constexpr TextNamedProperty kPrice = {&PS_PUBLIC_STRINGS, "x-example-price"_w, PT_CURRENCY};
    constexpr TextNamedProperty kMoment = {&PS_PUBLIC_STRINGS, "x-example-moment"_w, PT_APPTIME};
    Properties& types = add("Properties of many types");
    Set(types, kShorts, std::vector<std::int16_t>{-1, 0, 32767});
    Set(types, kTimes, std::vector<Time>{At(1601, 1, 1), At(1969, 12, 31, 23, 59), At(2038, 1, 19, 3, 14)});
    Set(types, kNumbers, std::vector<std::int64_t>{-1, std::int64_t{1} << 40});
    Set(types, kGuids, std::vector<GUID>{PS_MAPI, PSETID_Task});
    Set(types, kRatio, 0.75f);
    Set(types, kPrice, std::int64_t{12'345'600});  // 1,234.56
    Set(types, kMoment, 45000.5);                  // noon of 2023-03-15
    types.Set(PR_CREATION_VERSION, std::int64_t{1} << 33).Set(PR_FORM_CLSID, PS_PUBLIC_STRINGS);
}

// Sets what mail in an 8-bit script says of itself.
void SetLocale(Message& message, const Language& language) {
    message.properties.Set(PR_MESSAGE_LOCALE_ID, language.locale)
        .Set(PR_INTERNET_CPID, static_cast<std::int32_t>(language.codePage));
}

void DescribeLanguage(Tree& tree, const Language& language, Time begin) {
    Series series(tree.At(Wide("Inbox/Languages")), begin);
    const Person writer = Outsider(Wide(language.person), Wide(std::string(language.alias) + "@example.org"));
    const CStringW body = Wide(language.body);
    const CStringW subject = Wide(language.subject);

    Message& plain = series.Add({.subject = subject, .from = writer, .codePage = language.codePage});
    SetPlainBody(plain, body);
    SetLocale(plain, language);
    plain.attachments.push_back(
        AttachBytes(Wide(language.fileName), AsBytes(ToCodePage(body, language.codePage)), Wide("text/plain")));

    Message& html =
        series.Add({.prefix = Wide("FW: "), .subject = subject, .from = writer, .codePage = language.codePage});
    SetLocale(html, language);
    SetHtmlBody(html, HtmlOfText(body, "windows-" + std::to_string(language.codePage)), language.codePage);

    // Texts of 8 bits in files of every form, as converters from old mailboxes leave them.
    Message& narrow = series.Add({.subject = subject, .from = writer, .codePage = language.codePage});
    SetLocale(narrow, language);
    narrow.properties.Set(PR_BODY_A, Text8{ToCodePage(body, language.codePage)})
        .Set(PR_SENDER_NAME_A, Text8{ToCodePage(writer.name, language.codePage)});
}

void DescribeUnusualTexts(Tree& tree) {
    Series series(tree.At(Wide("Inbox/Languages")), At(2025, 2, 20, 8));
    const auto add = [&](const CStringW& subject, const CStringW& body) -> Message& {
        Message& message = series.Add({.subject = subject});
        SetPlainBody(message, body);
        return message;
    };
    // Pictures beyond the first plane: a party popper, a family joined by invisible characters, a flag.
    add(Wide("\U0001F389 Opening day \U0001F468\u200D\U0001F469\u200D\U0001F467 \U0001F1F8\U0001F1EA"),
        Wide("See you there \U0001F44D\U0001F3FD \U0001D11E\r\n"));
    // The same name with letters that have their accents, and with accents that follow letters.
    add(Wide("Zo\u00EB and Zoe\u0308"),
        Wide("Composed: \u00E9\u00F1\u1EC7. Combining: e\u0301n\u0303e\u0323\u0302.\r\n"));
    CStringW broken = Wide("Cut in the middle: ");
    broken += static_cast<WCHAR>(0xD83D);
    broken += Wide(" and its other half: ");
    broken += static_cast<WCHAR>(0xDE00);
    add(broken, broken + Wide("\r\n"));
    // Marks that turn the direction of what follows.
    add(Wide("Invoice \u202Efdp.exe\u202C and \u05E9\u05DC\u05D5\u05DD"),
        Wide("\u200F\u05D0\u05D1\u05D2\u200E abc\r\n"));
    add(CStringW(900, WCHAR{'w'}), Wide("A subject as long as a subject can be.\r\n"));
    add(Wide("Full width \uFF21\uFF22\uFF23, ligature \uFB01, zero width\u200Bspace"), Wide("\uFEFFA mark first.\r\n"));
}

}  // namespace

void DescribeMailForms(Tree& tree) {
    DescribeBodies(tree);
    DescribePeopleOfMail(tree);
    DescribeMarks(tree);
}

void DescribeLanguages(Tree& tree) {
    unsigned month = 0;
    for (const Language& language : Languages()) {
        DescribeLanguage(tree, language, At(2024 + static_cast<int>(month / 12), month % 12 + 1, 15, 9));
        ++month;
    }
    DescribeUnusualTexts(tree);
}

}  // namespace mailbox_builder::sample
