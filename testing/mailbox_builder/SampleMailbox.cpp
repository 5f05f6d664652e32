#include "testing/mailbox_builder/SampleMailbox.h"

#include "mapi/PropTags.h"
#include "testing/mailbox_builder/sample/Parts.h"

#include <algorithm>

namespace mailbox_builder {
namespace {

void CountEmbedded(const Message& message, Inventory& inventory) {
    for (const Attachment& attachment : message.attachments) {
        if (attachment.embedded) {
            ++inventory.embedded;
            CountEmbedded(*attachment.embedded, inventory);
        }
    }
}

void CountMessage(const Message& message, Inventory& inventory) {
    ++inventory.messages;
    inventory.recipients += message.recipients.size();
    const Property* messageClass = message.properties.Find(PR_MESSAGE_CLASS);
    ++inventory.messagesByClass[std::get<CStringW>(messageClass->value)];
    for (const Attachment& attachment : message.attachments) {
        const Property* method = attachment.properties.Find(PR_ATTACH_METHOD);
        ++inventory.attachmentsByMethod[std::get<std::int32_t>(method->value)];
    }
    CountEmbedded(message, inventory);
}

// Where a folder's id is told: on the topmost folder and the inbox, or by the store.
struct FolderName {
    std::uint32_t tag;
    const char* path;
};
constexpr FolderName kNamedByFolders[] = {
    {PR_IPM_APPOINTMENT_ENTRYID, "Calendar"}, {PR_IPM_CONTACT_ENTRYID, "Contacts"}, {PR_IPM_JOURNAL_ENTRYID, "Journal"},
    {PR_IPM_NOTE_ENTRYID, "Notes"},           {PR_IPM_TASK_ENTRYID, "Tasks"},       {PR_IPM_DRAFTS_ENTRYID, "Drafts"},
};
constexpr FolderName kNamedByStore[] = {
    {PR_IPM_OUTBOX_ENTRYID, "Outbox"},
    {PR_IPM_SENTMAIL_ENTRYID, "Sent Items"},
};
constexpr FolderName kTopmostNamedByStore[] = {
    {PR_VIEWS_ENTRYID, "Views"},
    {PR_COMMON_VIEWS_ENTRYID, "Common Views"},
};

// The folders of PR_ADDITIONAL_REN_ENTRYIDS, in its order: [MS-OXOSFLD] 2.2.4.
constexpr const char* kFurtherNamed[] = {"Sync Issues/Conflicts", "Sync Issues", "Sync Issues/Local Failures",
                                         "Sync Issues/Server Failures", "Junk Email"};

CStringW FromAscii(const char* text) {
    const std::string_view view(text);
    return CStringW(view.begin(), view.end());
}

// Adds one description to one file.
class Adding {
public:
    Adding(const SampleMailbox& sample, MailboxWriter& writer) : m_sample(&sample), m_writer(&writer) {}

    Result<std::vector<WrittenFolder>> Run() {
        std::vector<WrittenFolder> written;
        for (const SampleFolder& folder : m_sample->Folders()) {
            VX_TRY_ASSIGN(const FolderId id, AddFolder(folder));
            m_ids[{folder.place, folder.path}] = id;
            WrittenFolder& added = written.emplace_back(WrittenFolder{&folder, id, {}, {}});
            for (const Message& message : folder.messages) {
                VX_TRY_ASSIGN(const MessageId messageId, m_writer->AddMessage(id, message));
                added.messages.push_back(messageId);
            }
            for (const Message& message : folder.associated) {
                VX_TRY_ASSIGN(const MessageId messageId, m_writer->AddAssociated(id, message));
                added.associated.push_back(messageId);
            }
        }
        VX_TRY(NameSpecialFolders());
        return written;
    }

private:
    Result<FolderId> AddFolder(const SampleFolder& folder) {
        if (folder.place == Place::Visible && folder.path == "Deleted Items"_w) {
            // Every file has it: only what it has beyond that is added.
            for (const Property& property : folder.properties.All()) {
                VX_TRY(m_writer->SetFolderProperty(m_writer->DeletedItems(), property.tag, property.value));
            }
            return m_writer->DeletedItems();
        }
        if (folder.place == Place::Search) {
            return m_writer->AddSearchFolder(m_writer->Finder(), folder.properties);
        }
        const CStringW parent = folder.ParentPath();
        if (!parent.empty()) {
            return m_writer->AddFolder(m_ids.at({folder.place, parent}), folder.properties);
        }
        const bool isVisible = folder.place == Place::Visible;
        return m_writer->AddFolder(isVisible ? m_writer->IpmSubtree() : m_writer->Root(), folder.properties);
    }

    Bytes EntryIdOf(const char* path, Place place = Place::Visible) const {
        return m_writer->EntryIdOf(m_ids.at({place, FromAscii(path)}));
    }

    Status NameSpecialFolders() {
        std::vector<Bytes> further;
        for (const char* path : kFurtherNamed) {
            further.push_back(EntryIdOf(path));
        }
        const FolderId inbox = m_ids.at({Place::Visible, "Inbox"_w});
        for (const FolderId holder : {m_writer->Root(), inbox}) {
            for (const FolderName& row : kNamedByFolders) {
                VX_TRY(m_writer->SetFolderProperty(holder, row.tag, EntryIdOf(row.path)));
            }
            VX_TRY(m_writer->SetFolderProperty(holder, PR_ADDITIONAL_REN_ENTRYIDS, further));
        }
        for (const FolderName& row : kNamedByStore) {
            VX_TRY(m_writer->SetStoreProperty(row.tag, EntryIdOf(row.path)));
        }
        for (const FolderName& row : kTopmostNamedByStore) {
            VX_TRY(m_writer->SetStoreProperty(row.tag, EntryIdOf(row.path, Place::Topmost)));
        }
        VX_TRY(m_writer->SetReceiveFolder({}, inbox));
        VX_TRY(m_writer->SetReceiveFolder("IPM.Note"_w, inbox));
        return m_writer->SetReceiveFolder("REPORT.IPM.Note"_w, inbox);
    }

    const SampleMailbox* m_sample;
    MailboxWriter* m_writer;
    std::map<std::pair<Place, CStringW>, FolderId> m_ids;
};

}  // namespace

CStringW SampleFolder::Name() const {
    return path.substr(path.rfind(WCHAR{'/'}) + 1);
}

CStringW SampleFolder::ParentPath() const {
    const std::size_t slash = path.rfind(WCHAR{'/'});
    return slash == CStringW::npos ? CStringW() : path.substr(0, slash);
}

SampleMailbox::SampleMailbox() {
    sample::Tree tree(m_folders);
    sample::AddFolders(tree);
    sample::DescribeThreads(tree);
    sample::DescribeRoutineMail(tree);
    sample::DescribeMailForms(tree);
    sample::DescribeLanguages(tree);
    sample::DescribeAttachments(tree);
    sample::DescribeContacts(tree);
    sample::DescribeCalendar(tree);
    sample::DescribeTasksAndNotes(tree);
    sample::DescribeRareItems(tree);
}

const SampleFolder* SampleMailbox::Find(const CStringW& path, Place place) const noexcept {
    const auto found = std::find_if(m_folders.begin(), m_folders.end(), [&](const SampleFolder& folder) {
        return folder.place == place && folder.path == path;
    });
    return found == m_folders.end() ? nullptr : &*found;
}

Inventory SampleMailbox::Count() const {
    Inventory inventory;
    for (const SampleFolder& folder : m_folders) {
        inventory.associated += folder.associated.size();
        if (folder.place != Place::Visible) {
            continue;
        }
        ++inventory.folders;
        inventory.messagesByFolder[folder.path] = folder.messages.size();
        for (const Message& message : folder.messages) {
            CountMessage(message, inventory);
        }
    }
    return inventory;
}

Result<std::vector<WrittenFolder>> SampleMailbox::AddTo(MailboxWriter& writer) const {
    return Adding(*this, writer).Run();
}

Status WriteSampleMailbox(const std::filesystem::path& path, WriterOptions options) {
    options.displayName = "Sample mailbox"_w;
    VX_TRY_ASSIGN(const auto writer, MailboxWriter::Create(path, options));
    const SampleMailbox sample;
    VX_TRY(sample.AddTo(*writer));
    return writer->Finish();
}

}  // namespace mailbox_builder
