#include "testing/mailbox_builder/ByteSink.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>

namespace mailbox_builder {

namespace {

// What is handed to the system at once.
constexpr std::size_t kGathered = std::size_t{1} << 20;

class FileSink final : public ByteSink {
public:
    explicit FileSink(std::filesystem::path path) : m_path(std::move(path)) {}
    FileSink(const FileSink&) = delete;
    FileSink& operator=(const FileSink&) = delete;

    ~FileSink() override {
        if (m_isOurs && !m_isFinished) {
            m_file.close();
            std::error_code ignored;
            std::filesystem::remove(m_path, ignored);
        }
    }

    Status Open() {
        errno = 0;
        m_file.open(m_path, std::ios::binary | std::ios::out | std::ios::trunc);
        if (!m_file) {
            return Failure("cannot be created");
        }
        m_isOurs = true;
        m_gathered.reserve(kGathered);
        return {};
    }

    Status WriteAt(std::uint64_t offset, ByteView bytes) override {
        if (offset != m_gatheredAt + m_gathered.size() || m_gathered.size() + bytes.Size() > kGathered) {
            VX_TRY(Flush());
            m_gatheredAt = offset;
        }
        m_gathered.insert(m_gathered.end(), bytes.Span().begin(), bytes.Span().end());
        return {};
    }

    Status Finish() override {
        VX_TRY(Flush());
        errno = 0;
        m_file.close();
        if (!m_file) {
            return Failure("cannot be written to its end");
        }
        m_isFinished = true;
        return {};
    }

private:
    Status Flush() {
        errno = 0;
        if (!m_gathered.empty()) {
            m_file.seekp(static_cast<std::streamoff>(m_gatheredAt));
            m_file.write(reinterpret_cast<const char*>(m_gathered.data()),
                         static_cast<std::streamsize>(m_gathered.size()));
            m_gathered.clear();
        }
        return m_file ? Status() : Failure("cannot be written");
    }

    Error Failure(const char* what) const {
        const int code = errno;
        const std::u8string name = m_path.u8string();
        std::string text(name.begin(), name.end());
        text.append(": the file ").append(what);
        if (code != 0) {
            text.append(": ").append(std::generic_category().message(code));
        }
        return Error{ErrorCode::AccessDenied, text};
    }

    std::filesystem::path m_path;
    std::ofstream m_file;
    Bytes m_gathered;  // bytes of the file from m_gatheredAt on that the system has not been given
    std::uint64_t m_gatheredAt = 0;
    bool m_isOurs = false;
    bool m_isFinished = false;
};

class MemorySink final : public ByteSink {
public:
    explicit MemorySink(Bytes& bytes) noexcept : m_bytes(bytes) {}

    Status WriteAt(std::uint64_t offset, ByteView bytes) override {
        const auto at = static_cast<std::size_t>(offset);
        m_bytes.resize(std::max(m_bytes.size(), at + bytes.Size()));
        localmapi::CopyInto(std::span(m_bytes).subspan(at), bytes);
        return {};
    }

    Status Finish() override { return {}; }

private:
    Bytes& m_bytes;
};

}  // namespace

Result<std::unique_ptr<ByteSink>> CreateFileSink(const std::filesystem::path& path) {
    auto sink = std::make_unique<FileSink>(path);
    VX_TRY(sink->Open());
    return std::unique_ptr<ByteSink>(std::move(sink));
}

std::unique_ptr<ByteSink> CreateMemorySink(Bytes& bytes) {
    return std::make_unique<MemorySink>(bytes);
}

}  // namespace mailbox_builder
