// What the tests of this folder share: environment variables and folders that last for one scope.
#pragma once

#include "platform/Paths.h"
#include "platform/Process.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>

// Sets an environment variable, or takes it away with a null value, and puts back what was there.
class ScopedVariable {
public:
    ScopedVariable(const char* name, const char* value) : m_name(name) {
        if (const char* before = std::getenv(name)) {
            m_before = before;
        }
        Set(value);
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;
    ~ScopedVariable() { Set(m_before ? m_before->c_str() : nullptr); }

private:
    void Set(const char* value) {
#ifdef _WIN32
        SetEnvironmentVariableA(m_name, value);
#else
        value == nullptr ? ::unsetenv(m_name) : ::setenv(m_name, value, 1);
#endif
    }

    const char* m_name;
    std::optional<std::string> m_before;
};

// An empty folder of its own, removed with all that is in it.
class TemporaryFolder {
public:
    TemporaryFolder() {
        static int count = 0;
        m_path = std::filesystem::temp_directory_path()
                 / ("vx-system-tests-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count));
        std::filesystem::create_directories(m_path);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }

    [[nodiscard]] const std::filesystem::path& Path() const { return m_path; }

    std::filesystem::path Write(std::string_view name, std::string_view bytes) const {
        std::filesystem::path path = m_path / name;
        std::ofstream(path, std::ios::binary) << bytes;
        return path;
    }

private:
    std::filesystem::path m_path;
};

// Comes back to the current directory that it found.
class ScopedCurrentDirectory {
public:
    explicit ScopedCurrentDirectory(const std::filesystem::path& folder) : m_before(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
    }
    ScopedCurrentDirectory(const ScopedCurrentDirectory&) = delete;
    ScopedCurrentDirectory& operator=(const ScopedCurrentDirectory&) = delete;
    ~ScopedCurrentDirectory() { std::filesystem::current_path(m_before); }

private:
    std::filesystem::path m_before;
};
