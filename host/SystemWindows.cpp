#include "host/Failures.h"
#include "host/System.h"
#include "host/Text.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

// clang-format off
#include <windows.h>  // before the headers that need what it declares
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>
// clang-format on

namespace vxhost {

// ---- Arguments, terminals --------------------------------------------------------------------------------------------

namespace {

std::string FromWide(const wchar_t* text) {
    std::u16string units;
    for (; *text != 0; ++text) {
        units += static_cast<char16_t>(*text);
    }
    return ToUtf8(units);
}

HANDLE HandleOf(Stream stream) noexcept {
    return GetStdHandle(stream == Stream::Output ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
}

}  // namespace

// What the C runtime gives a program is in the ANSI page, and not every file's name is.
std::vector<std::string> Arguments(int /*argc*/, char** /*argv*/) {
    std::vector<std::string> arguments;
    int count = 0;
    wchar_t** wide = CommandLineToArgvW(GetCommandLineW(), &count);
    for (int i = 1; wide != nullptr && i < count; ++i) {
        arguments.push_back(FromWide(wide[i]));
    }
    LocalFree(wide);
    return arguments;
}

Console::Console() : m_before(GetConsoleOutputCP()) {
    SetConsoleOutputCP(CP_UTF8);
    _setmode(_fileno(stdout), _O_BINARY);
    for (const Stream stream : {Stream::Output, Stream::Error}) {
        DWORD mode = 0;
        if (GetConsoleMode(HandleOf(stream), &mode) != 0) {
            SetConsoleMode(HandleOf(stream), mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
        }
    }
}

Console::~Console() {
    std::fflush(stdout);
    SetConsoleOutputCP(m_before);
}

bool Console::IsTerminal(Stream stream) {
    DWORD mode = 0;
    return GetConsoleMode(HandleOf(stream), &mode) != 0;
}

std::size_t Console::Width(Stream stream) {
    CONSOLE_SCREEN_BUFFER_INFO info = {};
    if (GetConsoleScreenBufferInfo(HandleOf(stream), &info) == 0 || info.srWindow.Right < info.srWindow.Left) {
        return 80;
    }
    return static_cast<std::size_t>(info.srWindow.Right - info.srWindow.Left + 1);
}

bool Console::IsReaderGone(int error) noexcept {
    return error == EPIPE || error == EINVAL;  // the second is what the C runtime makes of ERROR_NO_DATA
}

// ---- Ctrl-C ----------------------------------------------------------------------------------------------------------

// The system has a thread of its own for it, but passes no context.
struct Interruption::Watch {
    static inline std::atomic<Interruption*> s_current = nullptr;

    static BOOL WINAPI Handle(DWORD event) {
        Interruption* current = s_current;
        if (current == nullptr) {
            return FALSE;
        }
        if (current->m_isRaised.exchange(true)) {
            ExitProcess(static_cast<UINT>(Status::Interrupted));
        }
        current->m_raise();
        if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
            Sleep(INFINITE);  // the window is closed, and the process ends with this function
        }
        return TRUE;
    }
};

Interruption::Interruption(std::function<void()> raise) : m_raise(std::move(raise)) {
    Watch::s_current = this;
    SetConsoleCtrlHandler(&Watch::Handle, TRUE);
}

Interruption::~Interruption() {
    SetConsoleCtrlHandler(&Watch::Handle, FALSE);
    Watch::s_current = nullptr;
}

// ---- The process, its environment, its files -------------------------------------------------------------------------

unsigned ProcessId() noexcept {
    return GetCurrentProcessId();
}

std::string Variable(const char* name) {
    const std::wstring wideName(name, name + std::char_traits<char>::length(name));
    const wchar_t* value = _wgetenv(wideName.c_str());
    return value != nullptr ? FromWide(value) : std::string();
}

void SetVariable(const char* name, const std::string& value) {
    const std::wstring wideName(name, name + std::char_traits<char>::length(name));
    _wputenv_s(wideName.c_str(), ToPath(value).c_str());
}

int ProbeForReading(const std::filesystem::path& file) {
    const int descriptor = _wopen(file.c_str(), _O_RDONLY | _O_BINARY);
    if (descriptor < 0) {
        return errno;
    }
    _close(descriptor);
    return 0;
}

bool IsNameableInProfile(const std::filesystem::path& file) {
    const std::wstring& name = file.native();
    const UINT page = GetACP();
    if (page == CP_UTF8) {
        return true;
    }
    BOOL isLossy = FALSE;
    const int length = WideCharToMultiByte(page, WC_NO_BEST_FIT_CHARS, name.data(), static_cast<int>(name.size()),
                                           nullptr, 0, nullptr, &isLossy);
    return length > 0 && isLossy == FALSE;
}

std::filesystem::path ShortPath(const std::filesystem::path& file) {
    std::wstring path(32'768, L'\0');
    const DWORD length = GetShortPathNameW(file.c_str(), path.data(), static_cast<DWORD>(path.size()));
    path.resize(length < path.size() ? length : 0);
    return !path.empty() && IsNameableInProfile(path) ? std::filesystem::path(path) : std::filesystem::path();
}

// ---- The log ---------------------------------------------------------------------------------------------------------

// A key that the registry itself forgets at the user's next logon, should nobody delete it.
LogRegistration::LogRegistration(const std::string& name, const std::filesystem::path& folder,
                                 const std::filesystem::path& /*workFolder*/)
    : m_before("Software\\" + name) {
    HKEY key = nullptr;
    LSTATUS status = RegCreateKeyExW(HKEY_CURRENT_USER, ToPath(m_before).c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                                     KEY_SET_VALUE, nullptr, &key, nullptr);
    if (status == ERROR_SUCCESS) {
        const std::wstring& value = folder.native();
        status = RegSetValueExW(key, L"DataPath", 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                                static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
        RegCloseKey(key);
    }
    if (status != ERROR_SUCCESS) {
        throw Failure(Status::NotOpened,
                      "HKEY_CURRENT_USER\\" + m_before + " cannot be written (error " + std::to_string(status) + ")",
                      "The log needs it; leave --log-dir away.");
    }
}

LogRegistration::~LogRegistration() {
    RegDeleteKeyW(HKEY_CURRENT_USER, ToPath(m_before).c_str());
}

}  // namespace vxhost
