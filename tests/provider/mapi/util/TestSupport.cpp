#include "tests/provider/mapi/util/TestSupport.h"

#include "platform/Process.h"
#include "provider/Common/Log.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <iterator>
#include <utility>

namespace {

// An entry is "[log] <time> [group-Scanner] <level>   [(<thread>) <source>.cpp (<line>)] [log] - <function> - <text>".
constexpr std::string_view kEntryStart = "[log] ";
constexpr std::string_view kBeforeLevel = " [group-Scanner] ";
constexpr std::string_view kBeforeThread = "   [(";
constexpr std::string_view kBeforeSource = ") ";
constexpr std::string_view kBeforeLine = ".cpp (";
constexpr std::string_view kBeforeFunction = ")] [log] - ";
constexpr std::string_view kBeforeText = " - ";

// What stands before `mark`, which is taken away with it. A text without the mark is no entry of this layout.
std::string_view CutBefore(std::string_view& rest, std::string_view mark) {
    const std::size_t at = rest.find(mark);
    if (at == std::string_view::npos) {
        ADD_FAILURE() << "no \"" << mark << "\" in the log's entry: " << rest;
        return {};
    }
    const std::string_view piece = rest.substr(0, at);
    rest.remove_prefix(at + mark.size());
    return piece;
}

LogLine ParseEntry(std::string_view entry) {
    CutBefore(entry, kBeforeLevel);
    const std::string_view level = CutBefore(entry, kBeforeThread);
    for (const std::string_view mark : {kBeforeSource, kBeforeLine, kBeforeFunction, kBeforeText}) {
        CutBefore(entry, mark);
    }
    entry.remove_suffix(entry.ends_with("\r\n") ? 2 : 0);
    return {std::string(level), std::string(entry)};
}

// Where the entry after the one at `start` begins: a text may hold line breaks, but not the start of an entry.
std::size_t NextEntry(std::string_view log, std::size_t start) {
    const std::size_t lineEnd = log.find("\r\n[log] ", start);
    return lineEnd == std::string_view::npos ? log.size() : lineEnd + 2;
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
    const std::string_view log = all;
    std::vector<LogLine> lines;
    for (std::size_t at = std::min(m_start, log.size()); at < log.size();) {
        const std::size_t next = NextEntry(log, at);
        const std::string_view entry = log.substr(at, next - at);
        EXPECT_TRUE(entry.starts_with(kEntryStart)) << entry;
        lines.push_back(ParseEntry(entry));
        at = next;
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
