#include "testing/mailbox_builder/LargeMailbox.h"

#include "mapi/PropTags.h"
#include "testing/mailbox_builder/items/Appointment.h"
#include "testing/mailbox_builder/items/Attachments.h"
#include "testing/mailbox_builder/items/Bodies.h"
#include "testing/mailbox_builder/items/Contact.h"
#include "testing/mailbox_builder/items/Dates.h"
#include "testing/mailbox_builder/items/Mail.h"
#include "testing/mailbox_builder/items/Task.h"
#include "testing/mailbox_builder/items/Wording.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

namespace mailbox_builder {
namespace {

// A well mixed number for each number: the finaliser of splitmix64.
std::uint64_t Mixed(std::uint64_t value) {
    value += 0x9E3779B97F4A7C15u;
    value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9u;
    value = (value ^ value >> 27) * 0x94D049BB133111EBu;
    return value ^ value >> 31;
}

// Chance that is the same each time: a sequence for each seed.
class Chance {
public:
    explicit Chance(std::uint64_t seed) : m_state(Mixed(seed)) {}

    std::uint64_t Next() { return Mixed(++m_state); }
    std::uint64_t Below(std::uint64_t limit) { return Next() % limit; }

    // 0 up to but not including 1.
    double Fraction() { return static_cast<double>(Next() >> 11) / static_cast<double>(std::uint64_t{1} << 53); }

    // Many small values and a few large ones, with `mean` for their mean and 20 times that for a limit.
    double Skewed(double mean) { return std::min(-std::log(1 - Fraction()), 20.0) * mean; }

private:
    std::uint64_t m_state;
};

// Bytes that no compression makes smaller, known by their position alone.
Content Noise(std::uint64_t size, std::uint64_t seed) {
    return {size, [seed](std::uint64_t offset, std::span<std::byte> out) {
                std::uint64_t word = 0;
                for (std::size_t i = 0; i < out.size(); ++i, ++offset) {
                    if (i == 0 || offset % 8 == 0) {
                        word = Mixed(seed ^ offset / 8);
                    }
                    out[i] = static_cast<std::byte>(word >> offset % 8 * 8);
                }
            }};
}

constexpr std::array<const char*, 24> kSentences = {
    "The second crane is back in service since Monday.",
    "Please send the revised drawings before the end of the week.",
    "We measured twelve millimetres at the northern joint.",
    "Nobody has claimed the blue umbrella from the meeting room.",
    "The invoice covers transport and assembly but not the lamps.",
    "I have moved our appointment to half past ten.",
    "Rain is expected from Wednesday on, so the paint has to wait.",
    "All three offers lie within the budget.",
    "Could you check the figures in the second table once more?",
    "The key to the archive hangs beside the fire door.",
    "Thank you for the quick answer.",
    "Attached you find the minutes of yesterday's round.",
    "The supplier confirms delivery for the last week of the month.",
    "If the pump stops again, take the log along.",
    "Our guests arrive by the early ferry.",
    "The new valve needs a gasket of the larger size.",
    "Training for the night shift takes place in the small hall.",
    "I am on leave until the twentieth and read mail rarely.",
    "The railing on the harbour side was approved without remarks.",
    "Two sensors report no data since the thunderstorm.",
    "Let us decide on Friday which of the two we take.",
    "The translation is good, but the title should be shorter.",
    "Parking is possible behind the granite yard.",
    "With kind regards from a sunny quay.",
};
constexpr std::array<const char*, 12> kSubjects = {
    "Minutes of the round",
    "Offer for lamps",
    "Readings of the week",
    "Question about the drawings",
    "Change of plan",
    "Pump 2",
    "Delivery dates",
    "Leave in summer",
    "Invoice",
    "Night work notice",
    "Guests on the 14th",
    "Spare parts",
};

// The one who makes items, one after the other, and decides how large each may be.
class Maker {
public:
    Maker(MailboxWriter& writer, const LargeMailboxOptions& options)
        : m_writer(&writer), m_options(&options), m_chance(options.seed) {
        for (int i = 0; i < 60; ++i) {
            const std::string number = std::to_string(i);
            m_people.push_back(i % 3 == 0 ? Outsider(Wide("Guest " + number), Wide("guest" + number + "@example.org"))
                                          : Colleague(Wide("Colleague " + number), Wide("colleague" + number)));
        }
        m_lastMail = options.items - 1;
        while (m_lastMail > 0 && KindOf(m_lastMail) != Kind::Mail) {
            --m_lastMail;
        }
    }

    Result<LargeMailboxFacts> Run() {
        VX_TRY(AddFolders());
        for (; m_facts.items < m_options->items; ++m_facts.items) {
            VX_TRY(AddItem());
        }
        VX_TRY(m_writer->Finish());
        m_facts.fileBytes = m_writer->Size();
        return m_facts;
    }

private:
    Status AddFolders() {
        struct FolderKind {
            const char* containerClass;
            const char* name;
            std::vector<FolderId> Maker::*folders;
        };
        const FolderKind kinds[] = {{"IPF.Contact", "Contacts ", &Maker::m_contacts},
                                    {"IPF.Appointment", "Calendar ", &Maker::m_calendars},
                                    {"IPF.Task", "Tasks ", &Maker::m_tasks}};
        const FolderKind mail = {"IPF.Note", "Folder ", &Maker::m_mails};
        for (unsigned i = 0; i < m_options->folders; ++i) {
            // A folder in ten is of another kind, and the first three are, so that there is one of each.
            const FolderKind& kind = i < 3 || i % 10 == 9 ? kinds[i % 3] : mail;
            Properties properties;
            properties.Set(PR_DISPLAY_NAME, Wide(kind.name + std::to_string(i + 1)))
                .Set(PR_CONTAINER_CLASS, Wide(kind.containerClass));
            // Mail is filed in folders of folders, eight to each.
            const std::size_t index = m_mails.size();
            const bool isTop = &kind != &mail || index % 9 == 0;
            VX_TRY_ASSIGN(const FolderId id,
                          m_writer->AddFolder(isTop ? m_writer->IpmSubtree() : m_mails[index / 9 * 9], properties));
            (this->*kind.folders).push_back(id);
        }
        return {};
    }

    FolderId OneOf(const std::vector<FolderId>& folders) { return folders[m_chance.Below(folders.size())]; }

    enum class Kind { Mail, Contact, Appointment, Task };
    static Kind KindOf(std::uint64_t item) {
        switch (item % 40) {
            case 7:
            case 27: return Kind::Contact;
            case 13:
            case 33: return Kind::Appointment;
            case 19: return Kind::Task;
            default: return Kind::Mail;
        }
    }

    Status AddItem() {
        switch (KindOf(m_facts.items)) {
            case Kind::Contact: return Add(OneOf(m_contacts), MakeOneContact());
            case Kind::Appointment: return Add(OneOf(m_calendars), MakeOneAppointment());
            case Kind::Task: return Add(OneOf(m_tasks), MakeOneTask());
            case Kind::Mail: break;
        }
        return Add(OneOf(m_mails), MakeOneMail());
    }

    Status Add(FolderId folder, const Message& message) {
        VX_TRY_ASSIGN([[maybe_unused]] const MessageId id, m_writer->AddMessage(folder, message));
        return {};
    }

    // About as many characters of sentences as asked.
    std::string Text(std::size_t characters) {
        std::string text = "Hello,\r\n\r\n";
        text.reserve(characters + 80);
        for (int sentence = 1; text.size() < characters; ++sentence) {
            text += kSentences[m_chance.Below(kSentences.size())];
            text += sentence % 4 == 0 ? "\r\n" : " ";
        }
        return text;
    }

    // The time of an item: two years in even steps, newest last.
    Time Moment() const {
        constexpr std::int64_t kMinutes = std::int64_t{2} * 365 * 24 * 60;
        const double part = static_cast<double>(m_facts.items) / static_cast<double>(m_options->items);
        return After(At(2024, 1, 1, 8), static_cast<std::int64_t>(part * static_cast<double>(kMinutes)));
    }

    const Person& Somebody() { return m_people[m_chance.Below(m_people.size())]; }

    Message MakeOneMail() {
        const std::string subject =
            std::string(kSubjects[m_chance.Below(kSubjects.size())]) + ", no. " + std::to_string(m_facts.items + 1);
        Envelope envelope = {.subject = Wide(subject), .from = Somebody(), .sent = Moment()};
        for (std::uint64_t i = m_chance.Below(4) + 1; i > 0; --i) {
            envelope.to.push_back(Somebody());
        }
        Message mail = MakeMail(envelope);
        AddBodies(mail);
        if (m_chance.Below(5) == 0) {
            MarkUnread(mail.properties);
        }
        const bool isLast = m_facts.items == m_lastMail && m_options->attachmentShare > 0;
        if (m_chance.Fraction() < m_options->attachmentShare || isLast) {
            AddAttachment(mail);
        }
        return mail;
    }

    // Half of the mails have text and HTML, the others one of them. Without attachments, texts fill the file.
    void AddBodies(Message& mail) {
        constexpr double kUsualMean = 1200;
        constexpr double kUsualMost = 20'000;
        constexpr double kBytesPerCharacter = 2.25;  // text takes two bytes, HTML one; each is in three of four mails
        double characters = 0;
        if (m_options->attachmentShare > 0) {
            const double perItem = static_cast<double>(m_options->bytes) / static_cast<double>(m_options->items);
            characters = std::min(m_chance.Skewed(std::min(kUsualMean, perItem / 8)), kUsualMost);
        } else {
            const double perItem = BytesLeft() / ItemsLeft() - kOtherBytesPerItem;
            characters = m_chance.Skewed(std::max(0.0, perItem) / kBytesPerCharacter / kMailShare);
        }
        const std::string text = Text(static_cast<std::size_t>(characters));
        const std::uint64_t forms = m_chance.Below(4);
        if (forms != 1) {
            SetPlainBody(mail, Wide(text));
        }
        if (forms != 2) {
            SetHtmlBody(mail, HtmlOfText(Wide(text), "utf-8"));
        }
    }

    // As large as the attachments still to come may be on average, give or take; never so large that it takes more than
    // half of what is left, but the last mail's takes the rest.
    void AddAttachment(Message& mail) {
        const double left = BytesLeft() - ItemsLeft() * BytesWithoutContent();
        const double mean = left / (ItemsLeft() * kMailShare * m_options->attachmentShare);
        double size = std::min(m_chance.Skewed(std::max(0.0, mean)), left / 2);
        if (m_facts.items == m_lastMail) {
            size = left;
        }
        const auto bytes = static_cast<std::uint64_t>(std::max(1.0, size));
        Attachment attachment = AttachBytes(Wide("part-" + std::to_string(m_facts.attachments + 1) + ".bin"), {});
        attachment.properties.Set(PR_ATTACH_DATA_BIN, Noise(bytes, m_chance.Next()));
        mail.attachments.push_back(std::move(attachment));
        ++m_facts.attachments;
        m_facts.contentBytes += bytes;
    }

    double ItemsLeft() const { return static_cast<double>(m_options->items - m_facts.items); }

    // What the items left may take, all together.
    double BytesLeft() const {
        // What Finish writes, as measured: tables and trees grow with the items, b-trees and maps with the bytes.
        constexpr double kLaterPerItem = 110;
        constexpr double kLaterPerByte = 2.0 * 24 / 8192;
        const double written = static_cast<double>(m_writer->Size()) * (1 + kLaterPerByte);
        return static_cast<double>(m_options->bytes) - written - kLaterPerItem * static_cast<double>(m_options->items);
    }

    // An item with all that it has but the contents of attachments: what the items so far took, once there are enough.
    double BytesWithoutContent() const {
        constexpr std::uint64_t kEnough = 50;
        if (m_facts.items < kEnough) {
            return 2 * kOtherBytesPerItem;
        }
        return static_cast<double>(m_writer->Size() - m_facts.contentBytes) / static_cast<double>(m_facts.items);
    }

    Message MakeOneContact() {
        const Person& person = Somebody();
        return MakeContact(
            {.given = Wide("Person"),
             .surname = Wide(std::to_string(m_facts.items)),
             .company = Wide("Example Works"),
             .emails = {person},
             .businessPhone = Wide("+46 8 5550 " + std::to_string(1000 + m_facts.items % 9000)),
             .business = {.street = Wide("Quay 4"), .city = Wide("Stockholm"), .country = Wide("Sweden")},
             .notes = Wide(Text(300)),
             .created = Moment()});
    }

    Message MakeOneAppointment() {
        const Time start = After(Moment(), 60 * 24 * 7);
        return MakeAppointment({.subject = Wide(kSubjects[m_chance.Below(kSubjects.size())]),
                                .location = Wide("Room 3"),
                                .organizer = Somebody(),
                                .attendees = {{.person = Somebody()}, {.person = Somebody(), .isRequired = false}},
                                .start = start,
                                .end = After(start, 45),
                                .created = Moment(),
                                .notes = Wide(Text(400))});
    }

    Message MakeOneTask() {
        return MakeTask({.subject = Wide(kSubjects[m_chance.Below(kSubjects.size())]),
                         .owner = Somebody(),
                         .due = DayOf(After(Moment(), 60 * 24 * 10)),
                         .notes = Wide(Text(200)),
                         .created = Moment()});
    }

    static constexpr double kOtherBytesPerItem = 3000;  // beside texts and contents
    static constexpr double kMailShare = 35.0 / 40;

    MailboxWriter* m_writer;
    const LargeMailboxOptions* m_options;
    Chance m_chance;
    std::uint64_t m_lastMail = 0;
    LargeMailboxFacts m_facts;
    std::vector<Person> m_people;
    std::vector<FolderId> m_mails, m_contacts, m_calendars, m_tasks;
};

}  // namespace

Result<LargeMailboxFacts> WriteLargeMailbox(std::unique_ptr<ByteSink> sink, const LargeMailboxOptions& options) {
    if (options.folders < 4 || !(options.attachmentShare >= 0 && options.attachmentShare <= 1)) {
        return Error{ErrorCode::Unsupported,
                     "a large mailbox has at least 4 folders and a share of attachments from 0 to 1"};
    }
    VX_TRY_ASSIGN(const auto writer, MailboxWriter::Create(std::move(sink), options.writer));
    return Maker(*writer, options).Run();
}

Result<LargeMailboxFacts> WriteLargeMailbox(const std::filesystem::path& path, const LargeMailboxOptions& options) {
    VX_TRY_ASSIGN(auto sink, CreateFileSink(path));
    return WriteLargeMailbox(std::move(sink), options);
}

}  // namespace mailbox_builder
