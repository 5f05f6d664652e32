// An open file of the system, closed at the end of its scope.
#pragma once

#include <utility>

#include <unistd.h>

namespace vx_system {

class FileDescriptor {
public:
    FileDescriptor() noexcept = default;
    // Takes over `descriptor`, or what a failed call gave.
    explicit FileDescriptor(int descriptor) noexcept : m_descriptor(descriptor) {}
    FileDescriptor(FileDescriptor&& other) noexcept : m_descriptor(std::exchange(other.m_descriptor, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(m_descriptor, other.m_descriptor);
        return *this;
    }
    ~FileDescriptor() {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }

    [[nodiscard]] int Get() const noexcept { return m_descriptor; }
    explicit operator bool() const noexcept { return m_descriptor >= 0; }

private:
    int m_descriptor = -1;
};

}  // namespace vx_system
