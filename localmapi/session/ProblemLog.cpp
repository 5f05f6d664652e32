#include "localmapi/session/ProblemLog.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace localmapi {

namespace {

// The log is opened for each line, so that it may be moved away or deleted meanwhile; problems are few.
class LinesOfFile final : public DiagnosticSink {
public:
    LinesOfFile(std::filesystem::path log, std::string mailbox)
        : m_log(std::move(log)), m_mailbox(std::move(mailbox)) {}

    void Report(std::string_view problem) override {
        try {
            const std::scoped_lock hold(s_writing);
            std::ofstream log(m_log, std::ios::app | std::ios::binary);
            log << m_mailbox << ": " << problem << '\n';
        } catch (...) {  // a log that cannot be written must not end the reading
        }
    }

private:
    static inline std::mutex s_writing;

    std::filesystem::path m_log;
    std::string m_mailbox;
};

std::string Utf8(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

}  // namespace

DiagnosticSink* ProblemLogFor(const std::filesystem::path& mailbox) {
    const char* log = std::getenv("VX_MAPI_LOG");
    if (log == nullptr || *log == '\0') {
        return nullptr;
    }
    static std::mutex opening;
    static std::map<std::pair<std::string, std::string>, std::unique_ptr<LinesOfFile>> sinks;
    const std::scoped_lock hold(opening);
    auto& sink = sinks[{log, Utf8(mailbox)}];
    if (!sink) {
        sink = std::make_unique<LinesOfFile>(std::filesystem::path(log), Utf8(mailbox));
    }
    return sink.get();
}

}  // namespace localmapi
