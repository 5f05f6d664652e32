// What the logger does with files and folders, apart from writing. No operation throws anything but std::bad_alloc;
// what cannot be done is not done.
#pragma once

#include "platform/WideText.h"

#include <cstdint>
#include <optional>

namespace Vx::LogFiles {

// `directory`, a separator, `name`.
CStringW Join(WideView directory, WideView name);

// Makes the last level of a path.
void MakeFolder(WideView directory);

bool CanBeRead(WideView path);

// Bytes in the file now, those of writers elsewhere included; 0 when it cannot be opened.
std::uint64_t GetLogSize(WideView path);

// Gives a file another name on the same volume. False when it cannot, and when the new name is taken: an existing file
// is not replaced.
bool Move(WideView from, WideView to);

// Deletes the files of a folder whose names begin with `prefix` and which were last written more than `hoursToKeep`
// hours ago. `currentName` and folders stay. Does nothing in a folder with a path longer than 257 characters.
void CleanupOldLogFiles(WideView prefix, WideView directory, WideView currentName, int hoursToKeep);

// The number behind "size=" in the first line of a text file that begins with that key, of which the first 100
// characters of each line count. Text that is no number is 0; a number out of an int's range is its nearest end.
// Nothing without the file or without the line.
std::optional<int> ReadSizeProperty(WideView path);

}  // namespace Vx::LogFiles
