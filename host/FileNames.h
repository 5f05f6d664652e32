// File names out of foreign texts: attachments are named by whoever sent them. Any thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace vxhost {

// A name, in UTF-8, that is a file's in one folder on Windows and Linux, whatever the text: no separators, no
// characters that either system refuses, no controls and no marks that turn the direction of text around (all become
// "_"), no device of Windows', not hidden, no dots or blanks at the ends, at most kMostNameBytes bytes. A long name keeps
// its extension. "attachment" when nothing is left.
std::string SafeFileName(std::u16string_view text);

inline constexpr std::size_t kMostNameBytes = 150;

// Gives the files of a folder names that no other file in it has: "000001-report.pdf", counted up from the highest
// number that is there already. So nothing is ever replaced, and the folder lists in the order of the mailbox. One
// thread.
class NumberedNames {
public:
    // The folder must be there. Throws std::filesystem::filesystem_error when it cannot be listed.
    explicit NumberedNames(std::filesystem::path folder);

    // Moves a file into the folder under the next name, and gives that. Throws std::filesystem::filesystem_error; the
    // file then is where it was.
    std::string MoveIn(const std::filesystem::path& file, std::u16string_view name);

private:
    std::filesystem::path m_folder;
    std::uint64_t m_last = 0;
};

// Gives `from` the name `to` unless there is a file of that name. False when there is; throws
// std::filesystem::filesystem_error when it cannot be done for another reason.
bool MoveWithoutReplacing(const std::filesystem::path& from, const std::filesystem::path& to);

}  // namespace vxhost
