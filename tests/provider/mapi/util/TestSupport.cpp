#include "tests/provider/mapi/util/TestSupport.h"

#include "platform/Process.h"
#include "provider/Common/Log.h"

#include <atomic>
#include <fstream>
#include <iterator>
#include <regex>

namespace {

// Every entry begins with this, up to the text; see FileLogger.h for the layout.
const std::regex& EntryStart() {
    static const std::regex kStart(
        R"(\[log\] \d\d\.\d\d\.\d+ [\d:,]+ \[group-Scanner\] (\w+)   \[\([0-9a-f]+\) \w+\.cpp \(\d+\)\] \[log\] - \w+ - )");
    return kStart;
}

}  // namespace

TempFolder::TempFolder() {
    static std::atomic<int> counter = 0;
    m_path = std::filesystem::temp_directory_path()
             / ("vx-mapi-util-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++counter));
    std::filesystem::create_directories(m_path);
}

TempFolder::~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

std::string ReadFile(const CStringW& path) {
    std::ifstream file(ToPath(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const CStringW& path, std::string_view bytes) {
    std::ofstream file(ToPath(path), std::ios::binary);
    file << bytes;
}

LogCapture::LogCapture() {
    static const TempFolder folder;
    Vx::LoggerInit(true, "Verbose"_w, "Vx utilities' tests"_w, "utilities"_w, FromPath(folder.Path()), 12, false);
    m_start = ReadFile(Vx::GetLogFilePath()).size();
}

std::vector<LogLine> LogCapture::Lines() const {
    const std::string all = ReadFile(Vx::GetLogFilePath());
    const std::string added = m_start <= all.size() ? all.substr(m_start) : all;
    std::vector<LogLine> lines;
    for (auto match = std::sregex_iterator(added.begin(), added.end(), EntryStart()); match != std::sregex_iterator();
         ++match) {
        const auto next = std::next(match);
        const auto from = static_cast<std::size_t>(match->position() + match->length());
        const auto to = next == std::sregex_iterator() ? added.size() : static_cast<std::size_t>(next->position());
        std::string text = added.substr(from, to - from);
        if (text.ends_with("\r\n")) {
            text.resize(text.size() - 2);
        }
        lines.push_back({match->str(1), text});
    }
    return lines;
}

std::vector<std::string> LogCapture::Texts(std::string_view level) const {
    std::vector<std::string> texts;
    for (LogLine& line : Lines()) {
        if (line.level == level) {
            texts.push_back(std::move(line.text));
        }
    }
    return texts;
}
