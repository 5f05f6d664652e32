// Mailboxes of any number of items and any size, for measuring and for what only shows in large files. Items are made
// one after the other and forgotten: memory does not grow with the size. Equal options give equal files.
#pragma once

#include "testing/mailbox_builder/MailboxWriter.h"

#include <cstdint>
#include <filesystem>

namespace mailbox_builder {

struct LargeMailboxOptions {
    std::uint64_t items = 100'000;
    // Of the finished file, within two percent, if the items fit into it: they need some 6 KB each. Files end at whole
    // intervals of 248 KiB, of nearly 16 MiB in the form with large pages, unless the writer's options say otherwise.
    std::uint64_t bytes = std::uint64_t{1} << 30;
    unsigned folders = 50;         // beside the wastebasket; at least 4, one for each kind of item
    double attachmentShare = 0.1;  // of the mails; they fill what the texts leave
    std::uint64_t seed = 1;
    WriterOptions writer = {};
};

struct LargeMailboxFacts {
    std::uint64_t items = 0;
    std::uint64_t attachments = 0;
    std::uint64_t contentBytes = 0;  // of the attachments
    std::uint64_t fileBytes = 0;
};

// Mails for the most part; of twenty items one is a contact, one an appointment, and one in forty is a task. Mails have
// text, HTML or both, of a few hundred bytes to some 20 KB; attachments have any size that makes the total come out.
// Unsupported when there are fewer than 4 folders or the share is not between 0 and 1; else as the writer fails.
Result<LargeMailboxFacts> WriteLargeMailbox(std::unique_ptr<ByteSink> sink, const LargeMailboxOptions& options);
Result<LargeMailboxFacts> WriteLargeMailbox(const std::filesystem::path& path, const LargeMailboxOptions& options);

}  // namespace mailbox_builder
