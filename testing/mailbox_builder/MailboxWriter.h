// Writes a mailbox file (.pst, .ost) in one pass, in bounded memory: what is kept is a few dozen bytes a message, and a
// few kilobytes a folder, however large the messages are. Equal input gives equal bytes: there is no clock and no chance
// in it. [MS-PST] 2.7 lists what a file must hold; the form with 4 KiB pages has no published description.
//
// One thread at a time. Messages may be added to several folders in any interleaving: each folder's table is written
// piece by piece beside the messages, not spooled. Folders and the store's own properties are written by Finish, so they
// may be changed until then. The first failure ends the writing: every later call gives it again.
#pragma once

#include "testing/mailbox_builder/ByteSink.h"
#include "testing/mailbox_builder/Model.h"

#include <array>
#include <compare>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>

namespace mailbox_builder {

enum class Form : std::uint8_t {
    Unicode,     // wVer 23
    Ansi,        // wVer 14: 32-bit offsets, up to 2 GiB, 8-bit strings
    LargePages,  // wVer 36: 4 KiB pages, blocks compressed where that makes them smaller
};

enum class Encryption : std::uint8_t { None, Permute, Cyclic };

// How a client lays out the tree of folders above the one that users see.
enum class Shape : std::uint8_t {
    Pst,  // the visible tree, the wastebasket and the finder are named by entry ids of the store
    Ost,  // "Root - Mailbox" above "IPM_SUBTREE", which readers know by name
};

// Whether the file is as long as a client makes it, or ends behind its last page. Small files are mostly padding.
enum class FileEnd : std::uint8_t { WholeInterval, Early };

using RecordKey = std::array<std::byte, 16>;

struct WriterOptions {
    Form form = Form::Unicode;
    Encryption encryption = Encryption::Permute;
    Shape shape = Shape::Pst;
    FileEnd end = FileEnd::WholeInterval;
    CStringW displayName = "Mailbox"_w;
    // The identity of the store, which its entry ids carry. Fixed, so that files are equal from run to run.
    RecordKey key = {std::byte{0x5B}, std::byte{0x1E}, std::byte{0x0C}, std::byte{0x42},
                     std::byte{0x9A}, std::byte{0x77}, std::byte{0x4D}, std::byte{0x10},
                     std::byte{0xA3}, std::byte{0x61}, std::byte{0xF8}, std::byte{0x25},
                     std::byte{0x3D}, std::byte{0xC4}, std::byte{0x86}, std::byte{0xE9}};
    // CRC of the password's bytes; none: no password.
    std::optional<std::uint32_t> passwordCrc = std::nullopt;
    // The page of the folders' names and the store's texts in files of the ANSI form.
    unsigned codePage = 1252;
};

// The node of a folder or message: the number within its entry id.
struct FolderId {
    std::uint32_t node = 0;
    auto operator<=>(const FolderId&) const = default;
};
struct MessageId {
    std::uint32_t node = 0;
    auto operator<=>(const MessageId&) const = default;
};

class MailboxWriter {
public:
    // A file on disk is removed when the writer goes before Finish has succeeded.
    static Result<std::unique_ptr<MailboxWriter>> Create(const std::filesystem::path& path,
                                                         const WriterOptions& options);
    static Result<std::unique_ptr<MailboxWriter>> Create(std::unique_ptr<ByteSink> sink, const WriterOptions& options);

    ~MailboxWriter();
    MailboxWriter(const MailboxWriter&) = delete;
    MailboxWriter& operator=(const MailboxWriter&) = delete;

    // The folders that every file has. Root is the topmost one, which users do not see; what they see stands below
    // IpmSubtree, DeletedItems ("Deleted Items") among it. Search folders belong to the Finder.
    FolderId Root() const noexcept;
    FolderId IpmSubtree() const noexcept;
    FolderId DeletedItems() const noexcept;
    FolderId Finder() const noexcept;

    // A folder with at least PR_DISPLAY_NAME; PR_CONTAINER_CLASS is usual. The counts are the writer's.
    Result<FolderId> AddFolder(FolderId parent, const Properties& properties);

    // A folder that shows the results of a search: without results, and with as much of a search as readers need to
    // know it for what it is.
    Result<FolderId> AddSearchFolder(FolderId parent, const Properties& properties);

    // A message, or a hidden one, whose properties are stored as they are given: a PR_SUBJECT with a hidden prefix is
    // given with it. The writer adds, where they are not given, PR_MESSAGE_CLASS_W ("IPM.Note"), PR_MESSAGE_FLAGS,
    // PR_MESSAGE_SIZE, PR_MESSAGE_CODEPAGE and the PR_DISPLAY_TO_W, _CC_W and _BCC_W that the recipients make; and the
    // flag of having attachments always. Of an attachment it adds PR_ATTACH_METHOD, PR_ATTACH_SIZE and
    // PR_RENDERING_POSITION (-1). The row in the folder's table is filled from the same properties.
    //
    // Unsupported when a value does not suit the type of its property, or two recipients disagree in one; TooLarge for
    // values of 4 GiB and beyond what the form of the file can hold.
    Result<MessageId> AddMessage(FolderId folder, const Message& message);
    Result<MessageId> AddAssociated(FolderId folder, const Message& message);

    // One more property of the store, or of a folder, in place of what it was. Entry ids of folders and messages that
    // were added before are set so.
    Status SetStoreProperty(std::uint32_t tag, Value value);
    Status SetFolderProperty(FolderId folder, std::uint32_t tag, Value value);

    // 24 bytes: [MS-PST] 2.4.3.2.
    Bytes EntryIdOf(FolderId folder) const;
    Bytes EntryIdOf(MessageId message) const;

    // Where new messages of a class go; the empty class is the default, IpmSubtree until it is set.
    Status SetReceiveFolder(const CStringW& messageClass, FolderId folder);

    // The id in this file of a named property, which gets one if it had none.
    Result<std::uint16_t> IdOfName(const Name& name);

    // Writes what is left: folders, tables, b-trees, maps and the header. Nothing can be added afterwards.
    Status Finish();

    // Bytes of the file so far; after Finish, its size.
    std::uint64_t Size() const noexcept;

private:
    class Impl;
    explicit MailboxWriter(std::unique_ptr<Impl> impl);

    std::unique_ptr<Impl> m_impl;
};

}  // namespace mailbox_builder
