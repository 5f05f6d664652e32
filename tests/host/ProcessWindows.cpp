#include "tests/host/Process.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include <windows.h>

namespace vx_testing {

namespace {

std::string Contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

// An argument in quotation marks, as CommandLineToArgvW takes it apart again.
std::wstring Quoted(const std::wstring& argument) {
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t unit : argument) {
        if (unit == L'"') {
            quoted.append(backslashes + 1, L'\\');
        }
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        quoted += unit;
    }
    return quoted.append(backslashes, L'\\') + L'"';
}

HANDLE Inheritable(HANDLE handle) {
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    return handle;
}

HANDLE NewFile(const std::filesystem::path& file) {
    return Inheritable(CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_ALWAYS,
                                   FILE_ATTRIBUTE_NORMAL, nullptr));
}

HANDLE UnreadPipe() {
    HANDLE readEnd = nullptr;
    HANDLE writeEnd = nullptr;
    EXPECT_NE(CreatePipe(&readEnd, &writeEnd, nullptr, 0), 0);
    CloseHandle(readEnd);
    return Inheritable(writeEnd);
}

}  // namespace

struct Process::Handles {
    PROCESS_INFORMATION process = {};
};

Process::Process(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                 const std::filesystem::path& folder, Reader reader)
    : m_output(folder / "output"), m_errors(folder / "errors"), m_handles(std::make_unique<Handles>()) {
    std::wstring command = Quoted(program.native());
    for (const std::string& argument : arguments) {
        const std::filesystem::path wide(std::u8string(argument.begin(), argument.end()));
        command += L' ' + Quoted(wide.native());
    }
    STARTUPINFOW start = {};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
    start.hStdOutput = reader == Reader::Gone ? UnreadPipe() : NewFile(m_output);
    start.hStdError = NewFile(m_errors);
    EXPECT_NE(CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                             &m_handles->process),
              0)
        << program;
    CloseHandle(start.hStdOutput);
    CloseHandle(start.hStdError);
}

Process::~Process() {
    if (m_handles->process.hProcess != nullptr) {
        TerminateProcess(m_handles->process.hProcess, 1);
        Wait();
    }
}

// The programs of a test run have no console, and without one there is no Ctrl-C.
bool Process::Interrupt() {
    return false;
}

int Process::Wait() {
    DWORD status = 0;
    WaitForSingleObject(m_handles->process.hProcess, INFINITE);
    EXPECT_NE(GetExitCodeProcess(m_handles->process.hProcess, &status), 0);
    CloseHandle(m_handles->process.hThread);
    CloseHandle(m_handles->process.hProcess);
    m_handles->process = {};
    return static_cast<int>(status);
}

std::string Process::Output() const {
    return Contents(m_output);
}

std::string Process::Errors() const {
    return Contents(m_errors);
}

}  // namespace vx_testing
