// A mailbox in which everything occurs: folders of every class, items of every type, attachments of every method,
// bodies of every form, a dozen scripts. A few hundred items of the years 2024 to 2026, equal from run to run, with
// people and places that do not exist. One thread at a time.
//
// Tests look up what they expect in the description that the file was written from.
#pragma once

#include "testing/mailbox_builder/MailboxWriter.h"
#include "testing/mailbox_builder/Model.h"

#include <cstddef>
#include <deque>
#include <filesystem>
#include <map>
#include <vector>

namespace mailbox_builder {

// What a folder hangs from.
enum class Place : std::uint8_t {
    Visible,  // the tree that users see
    Topmost,  // beside that tree
    Search,   // a search folder of the finder
};

struct SampleFolder {
    Place place = Place::Visible;
    CStringW path;  // names below the place, joined with "/"; none of the names holds a "/"
    Properties properties;
    std::vector<Message> messages;
    std::vector<Message> associated;

    CStringW Name() const;
    CStringW ParentPath() const;  // empty for a folder directly below its place
};

// How much there is: what a reader of the file should count.
struct Inventory {
    std::size_t folders = 0;                           // visible ones
    std::size_t messages = 0;                          // in visible folders, neither hidden nor embedded ones
    std::size_t associated = 0;                        // in all folders
    std::size_t embedded = 0;                          // at any depth
    std::size_t recipients = 0;                        // of the messages, not of embedded ones
    std::map<CStringW, std::size_t> messagesByFolder;  // by path
    std::map<CStringW, std::size_t> messagesByClass;   // without embedded ones
    std::map<int, std::size_t> attachmentsByMethod;    // of the messages, not of embedded ones
};

// Where a file holds a folder of the description; the ids are in the order of its messages.
struct WrittenFolder {
    const SampleFolder* description = nullptr;
    FolderId id;
    std::vector<MessageId> messages;
    std::vector<MessageId> associated;
};

class SampleMailbox {
public:
    // Describes the mailbox: a few megabytes.
    SampleMailbox();

    // Parents before their children.
    const std::deque<SampleFolder>& Folders() const noexcept { return m_folders; }

    // Null when there is none.
    const SampleFolder* Find(const CStringW& path, Place place = Place::Visible) const noexcept;

    Inventory Count() const;

    // Adds everything to a file that is new, and names its special folders; the caller finishes the file. What it gives
    // is in the order of Folders() and borrows from them.
    Result<std::vector<WrittenFolder>> AddTo(MailboxWriter& writer) const;

private:
    std::deque<SampleFolder> m_folders;
};

// Describes and writes a whole file. The display name of the store is "Sample mailbox".
Status WriteSampleMailbox(const std::filesystem::path& path, WriterOptions options = {});

}  // namespace mailbox_builder
