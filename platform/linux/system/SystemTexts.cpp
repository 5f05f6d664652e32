#include "platform/linux/system/SystemTexts.h"

#include "platform/LastError.h"
#include "platform/ResultCodes.h"

#include <algorithm>
#include <array>

namespace vx_system {

namespace {

struct TextRow {
    DWORD code;
    std::string_view text;
};

constexpr DWORD Code(HRESULT hr) noexcept {
    return static_cast<DWORD>(hr);
}

constexpr auto kTexts = std::to_array<TextRow>({
    {ERROR_SUCCESS, "The operation completed successfully.\r\n"},
    {ERROR_INVALID_FUNCTION, "Incorrect function.\r\n"},
    {ERROR_FILE_NOT_FOUND, "The system cannot find the file specified.\r\n"},
    {ERROR_PATH_NOT_FOUND, "The system cannot find the path specified.\r\n"},
    {ERROR_TOO_MANY_OPEN_FILES, "The system cannot open the file.\r\n"},
    {ERROR_ACCESS_DENIED, "Access is denied.\r\n"},
    {ERROR_INVALID_HANDLE, "The handle is invalid.\r\n"},
    {ERROR_NOT_ENOUGH_MEMORY, "Not enough memory resources are available to process this command.\r\n"},
    {ERROR_BAD_FORMAT, "An attempt was made to load a program with an incorrect format.\r\n"},
    {ERROR_INVALID_DATA, "The data is invalid.\r\n"},
    {ERROR_OUTOFMEMORY, "Not enough memory resources are available to complete this operation.\r\n"},
    {ERROR_NOT_SAME_DEVICE, "The system cannot move the file to a different disk drive.\r\n"},
    {ERROR_NO_MORE_FILES, "There are no more files.\r\n"},
    {ERROR_WRITE_PROTECT, "The media is write protected.\r\n"},
    {ERROR_SEEK, "The drive cannot locate a specific area or track on the disk.\r\n"},
    {ERROR_WRITE_FAULT, "The system cannot write to the specified device.\r\n"},
    {ERROR_READ_FAULT, "The system cannot read from the specified device.\r\n"},
    {ERROR_GEN_FAILURE, "A device attached to the system is not functioning.\r\n"},
    {ERROR_SHARING_VIOLATION, "The file is being used by another process.\r\n"},
    {ERROR_LOCK_VIOLATION, "Another process has locked a portion of the file.\r\n"},
    {ERROR_HANDLE_EOF, "Reached the end of the file.\r\n"},
    {ERROR_NOT_SUPPORTED, "The request is not supported.\r\n"},
    {ERROR_FILE_EXISTS, "The file exists.\r\n"},
    {ERROR_CANNOT_MAKE, "The directory or file cannot be created.\r\n"},
    {ERROR_INVALID_PARAMETER, "The parameter is incorrect.\r\n"},
    {ERROR_BROKEN_PIPE, "The pipe has been ended.\r\n"},
    {ERROR_DISK_FULL, "There is not enough space on the disk.\r\n"},
    {ERROR_CALL_NOT_IMPLEMENTED, "This function is not supported on this system.\r\n"},
    {ERROR_INSUFFICIENT_BUFFER, "The data area passed to a system call is too small.\r\n"},
    {ERROR_INVALID_NAME, "The filename, directory name, or volume label syntax is incorrect.\r\n"},
    {ERROR_MOD_NOT_FOUND, "The specified module could not be found.\r\n"},
    {ERROR_PROC_NOT_FOUND, "The specified procedure could not be found.\r\n"},
    {ERROR_NEGATIVE_SEEK, "The file pointer cannot be moved before the beginning of the file.\r\n"},
    {ERROR_DIR_NOT_EMPTY, "The directory is not empty.\r\n"},
    {ERROR_BAD_PATHNAME, "The specified path is invalid.\r\n"},
    {ERROR_BUSY, "The requested resource is in use.\r\n"},
    {ERROR_ALREADY_EXISTS, "Cannot create a file when that file already exists.\r\n"},
    {ERROR_BAD_EXE_FORMAT, "%1 is not a valid Win32 application.\r\n"},
    {ERROR_ENVVAR_NOT_FOUND, "The system could not find the environment option that was entered.\r\n"},
    {ERROR_FILENAME_EXCED_RANGE, "The filename or extension is too long.\r\n"},
    {ERROR_FILE_TOO_LARGE, "The file size exceeds the limit allowed and cannot be saved.\r\n"},
    {ERROR_MORE_DATA, "More data is available.\r\n"},
    {ERROR_NO_WORK_DONE, "There was nothing to do.\r\n"},
    {ERROR_NO_MORE_ITEMS, "No more data is available.\r\n"},
    {ERROR_DIRECTORY, "The directory name is invalid.\r\n"},
    {ERROR_MR_MID_NOT_FOUND, "There is no message text for message number 0x%1 in the message file for %2.\r\n"},
    {ERROR_INVALID_ADDRESS, "Attempt to access invalid address.\r\n"},
    {ERROR_INVALID_FLAGS, "Invalid flags.\r\n"},
    {ERROR_BADKEY, "The configuration registry key is invalid.\r\n"},
    {ERROR_NO_UNICODE_TRANSLATION, "The Unicode character has no counterpart in the target code page.\r\n"},
    {ERROR_DLL_INIT_FAILED, "A dynamic link library (DLL) initialization routine failed.\r\n"},
    {ERROR_MAPPED_ALIGNMENT, "The base address or the file offset does not have the proper alignment.\r\n"},
    {ERROR_NOT_FOUND, "Element not found.\r\n"},
    {ERROR_CANCELLED, "The operation was canceled by the user.\r\n"},
    {ERROR_COMMITMENT_LIMIT, "The paging file is too small for this operation to complete.\r\n"},
    {ERROR_TIMEOUT, "The timeout period expired.\r\n"},
    {ERROR_CANT_RESOLVE_FILENAME, "The name of the file cannot be resolved by the system.\r\n"},
    {Code(E_NOTIMPL), "Not implemented\r\n"},
    {Code(E_NOINTERFACE), "No such interface supported\r\n"},
    {Code(E_POINTER), "Invalid pointer\r\n"},
    {Code(E_ABORT), "Operation aborted\r\n"},
    {Code(E_FAIL), "Unspecified error\r\n"},
    {Code(E_UNEXPECTED), "Catastrophic failure\r\n"},
    {Code(RPC_E_CHANGED_MODE), "Cannot change thread mode after it is set.\r\n"},
});

static_assert(std::adjacent_find(kTexts.begin(), kTexts.end(),
                                 [](const TextRow& a, const TextRow& b) { return a.code >= b.code; })
                  == kTexts.end(),
              "the rows are searched by halves");

constexpr DWORD kCarriesWin32Number = 0x80070000;  // severity and facility of HRESULT_FROM_WIN32

}  // namespace

std::string_view SystemText(DWORD code) noexcept {
    const DWORD number = (code & 0xFFFF0000U) == kCarriesWin32Number ? code & 0xFFFFU : code;
    const auto row = std::lower_bound(kTexts.begin(), kTexts.end(), number,
                                      [](const TextRow& candidate, DWORD wanted) { return candidate.code < wanted; });
    return row != kTexts.end() && row->code == number ? row->text : std::string_view();
}

}  // namespace vx_system
