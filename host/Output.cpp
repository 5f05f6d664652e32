#include "host/Output.h"

#include "host/Failures.h"
#include "host/System.h"
#include "host/Text.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>

namespace vxhost {

namespace {

constexpr std::size_t kBufferBytes = 128 * 1024;

[[noreturn]] void FailToWrite(const std::string& name, int error) {
    throw Failure(Status::NotOpened, name + " cannot be written: " + std::generic_category().message(error),
                  "See whether the disk is full and the folder may be written to.");
}

}  // namespace

Output::Output(std::filesystem::path file) : m_file(std::move(file)) {
    if (m_file.empty()) {
        return;
    }
    std::error_code ignored;
    if (std::filesystem::is_directory(m_file, ignored)) {
        throw Failure(Status::Usage, PathText(m_file) + " is a folder", "Name a file in it.");
    }
    const std::filesystem::path folder = m_file.parent_path();
    if (!folder.empty() && !std::filesystem::is_directory(folder, ignored)) {
        throw Failure(Status::NotOpened,
                      PathText(m_file) + " cannot be written: there is no folder " + PathText(folder),
                      "Make the folder, or name another one.");
    }
}

Output::~Output() {
    if (!m_temporary.empty()) {
        m_stream.close();
        std::error_code ignored;
        std::filesystem::remove(m_temporary, ignored);
    }
}

void Output::Open() {
    m_temporary = m_file;
    m_temporary += ".vxhost" + std::to_string(ProcessId());
    errno = 0;
    m_stream.open(m_temporary, std::ios::binary | std::ios::trunc);
    if (!m_stream) {
        m_temporary.clear();
        FailToWrite(PathText(m_file), errno);
    }
}

void Output::Write(std::string_view text) {
    m_buffer += text;
    m_bytes += text.size();
    if (m_buffer.size() >= kBufferBytes) {
        Flush();
    }
}

void Output::Flush() {
    errno = 0;
    if (m_file.empty()) {
        if (std::fwrite(m_buffer.data(), 1, m_buffer.size(), stdout) != m_buffer.size() || std::fflush(stdout) != 0) {
            const int error = errno;
            if (Console::IsReaderGone(error)) {
                throw Interrupted();
            }
            FailToWrite("Standard output", error);
        }
    } else {
        if (m_temporary.empty()) {
            Open();
        }
        m_stream.write(m_buffer.data(), static_cast<std::streamsize>(m_buffer.size()));
        if (!m_stream.flush()) {
            FailToWrite(PathText(m_file), errno);
        }
    }
    m_buffer.clear();
}

void Output::Commit() {
    Flush();
    if (m_file.empty()) {
        return;
    }
    m_stream.close();
    std::error_code error;
    std::filesystem::rename(m_temporary, m_file, error);
    if (error) {
        throw Failure(Status::NotOpened, PathText(m_file) + " cannot be written: " + error.message(),
                      "Close the program that has it open, or name another file.");
    }
    m_temporary.clear();
}

}  // namespace vxhost
