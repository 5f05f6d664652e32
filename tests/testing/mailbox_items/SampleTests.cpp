// The sample mailbox in each form of the file: read without a complaint, equal to its description, the same each time.
#include "mapi/NamedProps.h"
#include "mapi/PropTags.h"
#include "testing/mailbox_builder/SampleMailbox.h"
#include "testing/mailbox_builder/items/Naming.h"
#include "testing/mailbox_builder/items/Wording.h"
#include "tests/localmapi/pst/support/RecordingSink.h"
#include "tests/testing/mailbox_builder/Compare.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>

namespace mailbox_builder {
namespace {

namespace pst = localmapi::pst;

const SampleMailbox& Sample() {
    static const SampleMailbox sample;
    return sample;
}

struct WrittenSample {
    Bytes bytes;
    std::vector<WrittenFolder> folders;
};

WrittenSample Write(const SampleMailbox& sample, Form form) {
    WrittenSample written;
    WriterOptions options;
    options.form = form;
    auto writer = MailboxWriter::Create(CreateMemorySink(written.bytes), options);
    EXPECT_TRUE(writer);
    auto folders = sample.AddTo(**writer);
    EXPECT_TRUE(folders) << folders.Failure().text;
    written.folders = *std::move(folders);
    const Status finished = (*writer)->Finish();
    EXPECT_TRUE(finished);
    return written;
}

// The value as a file of 8-bit strings can hold it: with question marks for what its page lacks.
Value AsHeld(const Value& value, unsigned codePage) {
    if (const auto* text = std::get_if<CStringW>(&value)) {
        return FromCodePage(ToCodePage(*text, codePage), codePage);
    }
    if (const auto* texts = std::get_if<std::vector<CStringW>>(&value)) {
        std::vector<CStringW> held;
        for (const CStringW& text : *texts) {
            held.push_back(FromCodePage(ToCodePage(text, codePage), codePage));
        }
        return held;
    }
    return value;
}

Properties AsHeld(const Properties& properties, unsigned codePage) {
    Properties held;
    for (const Property& property : properties.All()) {
        if (property.name) {
            held.Set(*property.name, static_cast<std::uint16_t>(property.tag), AsHeld(property.value, codePage));
        } else {
            held.Set(property.tag, AsHeld(property.value, codePage));
        }
    }
    return held;
}

Message AsHeld(const Message& message) {
    Message held = message;
    held.properties = AsHeld(message.properties, message.codePage);
    for (Properties& recipient : held.recipients) {
        recipient = AsHeld(recipient, message.codePage);
    }
    for (Attachment& attachment : held.attachments) {
        attachment.properties = AsHeld(attachment.properties, message.codePage);
        if (attachment.embedded) {
            attachment.embedded = std::make_shared<const Message>(AsHeld(*attachment.embedded));
        }
    }
    return held;
}

class SampleInForm : public testing::TestWithParam<Form> {
protected:
    SampleInForm() : m_written(Write(Sample(), GetParam())) {
        pst::StoreOptions options;
        options.database.sink = &m_sink;
        options.codePage = 1252;
        auto opened = pst::Store::Open(std::make_unique<localmapi::MemorySource>(m_written.bytes), options);
        EXPECT_TRUE(opened) << opened.Failure().text;
        m_store = *std::move(opened);
    }

    const WrittenFolder& Folder(const CStringW& path) const {
        return *std::find_if(m_written.folders.begin(), m_written.folders.end(), [&](const WrittenFolder& folder) {
            return folder.description->path == path && folder.description->place == Place::Visible;
        });
    }

    // The folder that an entry id names; empty when it names none.
    CStringW NameOf(pst::PropertyContext& holder, std::uint32_t tag) {
        auto value = holder.Read(static_cast<std::uint16_t>(tag >> 16));
        EXPECT_TRUE(value) << std::hex << tag;
        Bytes id(24);
        EXPECT_EQ(value ? *value->bytes.ReadAt(0, id) : 0, 24u);
        return NameOf(id);
    }
    CStringW NameOf(localmapi::ByteView entryId) {
        const auto node = m_store->NodeOf(entryId);
        auto folder = m_store->OpenFolder(node.value_or(pst::NodeId{}));
        return folder ? folder->DisplayName() : CStringW();
    }

    WrittenSample m_written;
    localmapi::testing::RecordingSink m_sink;
    std::unique_ptr<pst::Store> m_store;
};

TEST_P(SampleInForm, IsReadAsItWasDescribed) {
    const auto held = [](const auto& given, auto... page) {
        return GetParam() == Form::Ansi ? AsHeld(given, page...) : given;
    };
    Comparison comparison(*m_store, GetParam());
    for (const WrittenFolder& written : m_written.folders) {
        auto folder = m_store->OpenFolder(pst::NodeId{written.id.node});
        ASSERT_TRUE(folder) << folder.Failure().text;
        comparison.OfFolder(written.id, held(written.description->properties, 1252u));
        pst::ItemList messages = folder->Messages();
        pst::ItemList associated = folder->AssociatedMessages();
        ASSERT_EQ(messages.Count(), written.messages.size());
        ASSERT_EQ(associated.Count(), written.associated.size());
        for (std::size_t i = 0; i < written.messages.size(); ++i) {
            comparison.OfMessage(written.messages[i], held(written.description->messages[i]), messages);
        }
        for (std::size_t i = 0; i < written.associated.size(); ++i) {
            comparison.OfMessage(written.associated[i], held(written.description->associated[i]), associated);
        }
    }
    EXPECT_EQ(comparison.Differences(), std::vector<std::string>());
    EXPECT_EQ(m_sink.problems, std::vector<std::string>());
}

TEST_P(SampleInForm, NamesItsSpecialFoldersWhereClientsLook) {
    struct Row {
        std::uint32_t tag;
        const char* name;
    };
    constexpr Row kRows[] = {
        {PR_IPM_APPOINTMENT_ENTRYID, "Calendar"}, {PR_IPM_CONTACT_ENTRYID, "Contacts"},
        {PR_IPM_JOURNAL_ENTRYID, "Journal"},      {PR_IPM_NOTE_ENTRYID, "Notes"},
        {PR_IPM_TASK_ENTRYID, "Tasks"},           {PR_IPM_DRAFTS_ENTRYID, "Drafts"},
    };
    auto root = m_store->OpenFolder(pst::Store::kRootFolder);
    auto inbox = m_store->OpenFolder(pst::NodeId{Folder("Inbox"_w).id.node});
    ASSERT_TRUE(root && inbox);
    for (const Row& row : kRows) {
        EXPECT_EQ(NameOf(*root->Properties(), row.tag), Wide(row.name));
        EXPECT_EQ(NameOf(*inbox->Properties(), row.tag), Wide(row.name));
    }

    // A list of binary values: their count, where each begins, and the values.
    auto value = inbox->Properties()->Read(static_cast<std::uint16_t>(PR_ADDITIONAL_REN_ENTRYIDS >> 16));
    ASSERT_TRUE(value);
    Bytes list(static_cast<std::size_t>(value->bytes.Size()));
    ASSERT_TRUE(value->bytes.ReadAt(0, list));
    const localmapi::ByteView view(list);
    ASSERT_EQ(view.U32(0), 5u);
    constexpr const char* kFurther[] = {"Conflicts", "Sync Issues", "Local Failures", "Server Failures", "Junk Email"};
    for (std::size_t i = 0; i < 5; ++i) {
        EXPECT_EQ(NameOf(view.Part(view.U32(4 + 4 * i), 24)), Wide(kFurther[i]));
    }

    using Special = pst::SpecialFolder;
    const std::pair<Special, const char*> kOfStore[] = {{Special::Outbox, "Outbox"},
                                                        {Special::SentMail, "Sent Items"},
                                                        {Special::Wastebasket, "Deleted Items"},
                                                        {Special::Views, "Views"},
                                                        {Special::CommonViews, "Common Views"}};
    for (const auto& [special, name] : kOfStore) {
        const auto node = m_store->Find(special);
        ASSERT_TRUE(node) << name;
        EXPECT_EQ(m_store->OpenFolder(*node)->DisplayName(), Wide(name));
    }
    bool hasDefault = false;
    for (const pst::ReceiveFolder& receive : m_store->ReceiveFolders()) {
        hasDefault |= receive.messageClass.empty() && receive.folder == pst::NodeId{Folder("Inbox"_w).id.node};
    }
    EXPECT_TRUE(hasDefault);
    EXPECT_EQ(m_sink.problems, std::vector<std::string>());
}

TEST_P(SampleInForm, IsTheSameEachTime) {
    const SampleMailbox again;
    EXPECT_TRUE(Write(again, GetParam()).bytes == m_written.bytes);
}

std::string NameOfForm(const testing::TestParamInfo<Form>& form) {
    constexpr const char* kNames[] = {"Unicode", "Ansi", "LargePages"};
    return kNames[static_cast<std::size_t>(form.param)];
}

INSTANTIATE_TEST_SUITE_P(Forms, SampleInForm, testing::Values(Form::Unicode, Form::Ansi, Form::LargePages), NameOfForm);

// All properties of all messages, embedded ones too.
void Collect(const Message& message, std::vector<const Properties*>& all) {
    all.push_back(&message.properties);
    for (const Attachment& attachment : message.attachments) {
        if (attachment.embedded) {
            Collect(*attachment.embedded, all);
        }
    }
}

TEST(Sample, HasEveryPropertyThatTheItemsOfAnIndexAreMadeOf) {
    std::vector<const Properties*> all;
    for (const SampleFolder& folder : Sample().Folders()) {
        for (const Message& message : folder.messages) {
            Collect(message, all);
        }
    }
    const auto occurs = [&](auto key) {
        return std::any_of(all.begin(), all.end(), [&](const Properties* one) { return one->Find(key) != nullptr; });
    };
    for (const std::uint32_t tag : {PR_SUBJECT,
                                    PR_URL_COMP_NAME,
                                    PR_SENDER_ADDRTYPE,
                                    PR_SENDER_EMAIL_ADDRESS,
                                    PR_SENDER_NAME,
                                    PR_SENDER_ENTRYID,
                                    PR_CLIENT_SUBMIT_TIME,
                                    PR_MESSAGE_DELIVERY_TIME,
                                    PR_CREATION_TIME,
                                    PR_LAST_MODIFICATION_TIME,
                                    PR_IMPORTANCE,
                                    PR_MESSAGE_FLAGS,
                                    PR_SENSITIVITY,
                                    PR_ORIGINATOR_DELIVERY_REPORT_REQUESTED,
                                    PR_READ_RECEIPT_REQUESTED,
                                    PR_EXPIRY_TIME,
                                    PR_CONVERSATION_TOPIC,
                                    PR_CONVERSATION_INDEX,
                                    PR_FLAG_COMPLETE_TIME,
                                    PR_REPLY_RECIPIENT_NAMES,
                                    PR_FLAG_STATUS,
                                    PR_ICON_INDEX,
                                    PR_BODY,
                                    PR_HTML,
                                    PR_RTF_COMPRESSED,
                                    PR_INTERNET_CPID,
                                    PR_TRANSPORT_MESSAGE_HEADERS,
                                    PR_GENDER,
                                    PR_BIRTHDAY,
                                    PR_WEDDING_ANNIVERSARY,
                                    PR_CHILDRENS_NAMES,
                                    PR_HOME_ADDRESS_STREET,
                                    PR_RADIO_TELEPHONE_NUMBER,
                                    PR_CALLBACK_TELEPHONE_NUMBER,
                                    PR_PREFERRED_BY_NAME,
                                    PR_GOVERNMENT_ID_NUMBER,
                                    PR_ORGANIZATIONAL_ID_NUMBER}) {
        EXPECT_TRUE(occurs(tag)) << std::hex << tag;
    }
    constexpr NamedProperty kNamed[] = {PidLidReminderSignalTime,
                                        PidLidContactLinkName,
                                        PidLidReminderTime,
                                        PidLidReminderSet,
                                        PidLidFlagRequest,
                                        PidLidContacts,
                                        PidLidCompanies,
                                        PidLidMileage,
                                        PidLidBilling,
                                        PidLidCommonStart,
                                        PidLidFileUnder,
                                        PidLidHtml,
                                        PidLidInstantMessagingAddress,
                                        PidLidOtherAddress,
                                        PidLidEmail1OriginalDisplayName,
                                        PidLidEmail2OriginalDisplayName,
                                        PidLidEmail3OriginalDisplayName,
                                        PidLidAppointmentStateFlags,
                                        PidLidAppointmentReplyTime,
                                        PidLidAppointmentStartWhole,
                                        PidLidAppointmentEndWhole,
                                        PidLidClipStart,
                                        PidLidClipEnd,
                                        PidLidAppointmentRecur,
                                        PidLidRecurrenceType,
                                        PidLidAppointmentDuration,
                                        PidLidLocation,
                                        PidLidResponseStatus,
                                        PidLidConferencingCheck,
                                        PidLidAppointmentSubType,
                                        PidLidBusyStatus,
                                        PidLidTaskStatus,
                                        PidLidTaskOwner,
                                        PidLidTaskRecurrence,
                                        PidLidTeamTask,
                                        PidLidTaskOwnership,
                                        PidLidTaskComplete,
                                        PidLidTaskMultipleRecipients,
                                        PidLidTaskAcceptanceState,
                                        PidLidTaskAssigner,
                                        PidLidTaskRole,
                                        PidLidTaskDueDate,
                                        PidLidTaskStartDate,
                                        PidLidTaskDateCompleted,
                                        PidLidPercentComplete,
                                        PidLidTaskActualEffort,
                                        PidLidTaskEstimatedEffort,
                                        PidLidNoteColor,
                                        // Where some clients look for what has other names as well.
                                        {&PSETID_Note, 0x831C, PT_LONG},
                                        {&PSETID_Address, 0x8056, PT_UNICODE},
                                        {&PSETID_Address, 0x8534, PT_UNICODE},
                                        {&PSETID_Address, 0x8535, PT_UNICODE}};
    for (const NamedProperty& named : kNamed) {
        EXPECT_TRUE(occurs(NameOf(named))) << std::hex << named.id;
    }
    EXPECT_TRUE(occurs(NameOf(PidNameKeywords)));
}

TEST(Sample, HasItemsAndAttachmentsOfEveryKind) {
    const Inventory inventory = Sample().Count();
    EXPECT_GE(inventory.messages, 250u);
    EXPECT_LE(inventory.messages, 400u);
    for (const char* messageClass : {"IPM.Note",
                                     "IPM.Contact",
                                     "IPM.DistList",
                                     "IPM.Appointment",
                                     "IPM.Task",
                                     "IPM.TaskRequest",
                                     "IPM.StickyNote",
                                     "IPM.Activity",
                                     "IPM.Post",
                                     "IPM.Post.Rss",
                                     "REPORT.IPM.Note.NDR",
                                     "REPORT.IPM.Note.IPNRN",
                                     "IPM.Note.SMIME",
                                     "IPM.Note.SMIME.MultipartSigned",
                                     "IPM.Schedule.Meeting.Request",
                                     "IPM.Schedule.Meeting.Resp.Pos",
                                     "IPM.Schedule.Meeting.Resp.Tent",
                                     "IPM.Schedule.Meeting.Resp.Neg",
                                     "IPM.Schedule.Meeting.Canceled",
                                     "IPM.Document.PDF",
                                     "IPM.Noted",
                                     ""}) {
        EXPECT_TRUE(inventory.messagesByClass.contains(Wide(messageClass))) << messageClass;
    }
    for (int method = 0; method <= 7; ++method) {
        EXPECT_TRUE(inventory.attachmentsByMethod.contains(method)) << method;
    }
    std::set<CStringW> containerClasses;
    for (const SampleFolder& folder : Sample().Folders()) {
        const Property* containerClass = folder.properties.Find(PR_CONTAINER_CLASS);
        containerClasses.insert(containerClass == nullptr ? CStringW() : std::get<CStringW>(containerClass->value));
    }
    for (const char* containerClass : {"IPF.Note", "IPF.Contact", "IPF.Appointment", "IPF.Task", "IPF.StickyNote",
                                       "IPF.Journal", "IPF.Configuration", "IPF.Files", ""}) {
        EXPECT_TRUE(containerClasses.contains(Wide(containerClass))) << containerClass;
    }
}

}  // namespace
}  // namespace mailbox_builder
