#include "testing/mailbox_builder/sample/Parts.h"

#include "mapi/PropTags.h"
#include "testing/mailbox_builder/items/Wording.h"

#include <algorithm>

namespace mailbox_builder::sample {

SampleFolder& Tree::Add(const CStringW& path, const CStringW& containerClass, Place place) {
    SampleFolder& folder = m_folders->emplace_back();
    folder.place = place;
    folder.path = path;
    folder.properties.Set(PR_DISPLAY_NAME, folder.Name());
    if (!containerClass.empty()) {
        folder.properties.Set(PR_CONTAINER_CLASS, containerClass);
    }
    return folder;
}

SampleFolder& Tree::At(const CStringW& path, Place place) {
    return *std::find_if(m_folders->begin(), m_folders->end(),
                         [&](const SampleFolder& folder) { return folder.place == place && folder.path == path; });
}

std::size_t Dice::Roll(std::size_t sides) {
    m_state = m_state * 6364136223846793005u + 1442695040888963407u;
    return static_cast<std::size_t>((m_state >> 33) % sides);
}

const Cast& People() {
    static const Cast cast = {
        .mara = Colleague(Wide("Mara Lindqvist"), Wide("mara.lindqvist")),
        .ines = Colleague(Wide("Ines Duarte"), Wide("ines.duarte")),
        .tobias = Colleague(Wide("Tobias Ahn"), Wide("tobias.ahn")),
        .priya = Colleague(Wide("Priya Raman"), Wide("priya.raman")),
        .oluwaseun = Colleague(Wide("Oluwaseun Bello"), Wide("oluwaseun.bello")),
        .birgit = Colleague(Wide("Birgit Example"), Wide("birgit.example")),
        .marek = Colleague(Wide("Marek Wi\u015Bniewski"), Wide("marek.wisniewski")),
        .hanna = Outsider(Wide("Hanna Oksanen"), Wide("hanna.oksanen@harbour.example.net")),
        .luca = Outsider(Wide("Luca Ferri"), Wide("luca@orchard.example.org")),
        .postmaster = Outsider(Wide("Mail Delivery Subsystem"), Wide("postmaster@example.com")),
        .newsletter = Outsider(Wide("Tideline Weekly"), Wide("weekly@tideline.example.org")),
        .shop = Outsider(Wide("Paper & Ink"), Wide("orders@paperandink.example.net")),
    };
    return cast;
}

namespace {

struct FolderRow {
    const char* path;
    const char* containerClass;
};

constexpr FolderRow kVisibleFolders[] = {
    {"Deleted Items", "IPF.Note"},
    {"Inbox", "IPF.Note"},
    {"Inbox/Bridge survey", "IPF.Note"},
    {"Inbox/Orchard irrigation", "IPF.Note"},
    {"Inbox/Orchard irrigation/Sensor reports", "IPF.Note"},
    {"Inbox/Newsletters", "IPF.Note"},
    {"Inbox/Languages", "IPF.Note"},
    {"Outbox", "IPF.Note"},
    {"Sent Items", "IPF.Note"},
    {"Drafts", "IPF.Note"},
    {"Junk Email", "IPF.Note"},
    {"Sync Issues", "IPF.Note"},
    {"Sync Issues/Conflicts", "IPF.Note"},
    {"Sync Issues/Local Failures", "IPF.Note"},
    {"Sync Issues/Server Failures", "IPF.Note"},
    {"Calendar", "IPF.Appointment"},
    {"Calendar/Team calendar", "IPF.Appointment"},
    {"Contacts", "IPF.Contact"},
    {"Contacts/Suppliers", "IPF.Contact"},
    {"Tasks", "IPF.Task"},
    {"Notes", "IPF.StickyNote"},
    {"Journal", "IPF.Journal"},
    {"Attachments", "IPF.Note"},
    {"Forms of mail", "IPF.Note"},
    {"Discussions", "IPF.Note"},
    {"Feeds", "IPF.Note.OutlookHomepage"},
    {"Signed and encrypted", "IPF.Note"},
    {"Documents", "IPF.Files"},
    {"Unfiled", ""},
    {"Quick Step Settings", "IPF.Configuration"},
    {"Conversation Action Settings", "IPF.Configuration"},
    {"Empty", "IPF.Note"},
};

constexpr FolderRow kTopmostFolders[] = {{"Views", ""}, {"Common Views", ""}, {"Freebusy Data", ""}};
constexpr const char* kSearchFolders[] = {"Unread Mail", "For Follow Up", "Large Mail"};

// Names that are long or in other scripts, each below the one before.
constexpr const char* kUnusualNames[] = {
    "A folder whose name is as long as a patient user with a great deal to say about its contents may have typed it",
    "\u041F\u0440\u043E\u0435\u043A\u0442\u044B",  // "Projects"
    "\u05D0\u05E8\u05DB\u05D9\u05D5\u05DF",        // "Archive"
    "\u8ACB\u6C42\u66F8 2025",                     // "Invoices 2025"
    "\U0001F4C1 Z\u0065\u0301ro \U0001F680",       // pictures, and an accent of its own
    "Back\\slash and % percent & ampersand",
};

}  // namespace

void AddFolders(Tree& tree) {
    for (const FolderRow& row : kVisibleFolders) {
        SampleFolder& folder = tree.Add(Wide(row.path), Wide(row.containerClass));
        if (folder.Name().find(Wide("Settings")) != CStringW::npos) {
            folder.properties.Set(PR_ATTR_HIDDEN, true);
        }
    }
    tree.At(Wide("Inbox")).properties.Set(PR_COMMENT, Wide("What comes in"));
    CStringW path = Wide("Unusual names");
    tree.Add(path, Wide("IPF.Note"));
    for (const char* name : kUnusualNames) {
        path += Wide("/") + Wide(name);
        tree.Add(path, Wide("IPF.Note"));
    }
    for (const FolderRow& row : kTopmostFolders) {
        tree.Add(Wide(row.path), Wide(row.containerClass), Place::Topmost);
    }
    for (const char* name : kSearchFolders) {
        tree.Add(Wide(name), Wide("IPF.Note"), Place::Search);
    }
}

}  // namespace mailbox_builder::sample
