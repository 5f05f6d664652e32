#include "host/ProblemLog.h"

#include "host/System.h"
#include "host/Text.h"

#include <fstream>
#include <functional>
#include <system_error>

namespace vxhost {

namespace {

constexpr char kVariable[] = "VX_MAPI_LOG";

}  // namespace

ProblemLog::ProblemLog(const std::filesystem::path& file) : m_isOurs(Variable(kVariable).empty()) {
    if (m_isOurs) {
        SetVariable(kVariable, PathText(file));
    }
    m_file = ToPath(Variable(kVariable));
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(m_file, error);
    m_read = error ? 0 : size;
}

ProblemLog::~ProblemLog() {
    if (m_isOurs) {
        SetVariable(kVariable, {});
    }
}

std::vector<std::string> ProblemLog::TakeNew(const std::filesystem::path& mailbox) {
    std::vector<std::string> problems;
    std::ifstream stream(m_file, std::ios::binary);
    if (!stream.seekg(static_cast<std::streamoff>(m_read))) {
        return problems;  // no file: there were none
    }
    const std::string prefix = PathText(mailbox) + ": ";
    for (std::string line; std::getline(stream, line);) {
        m_read += line.size() + 1;
        if (!m_known.insert(std::hash<std::string>()(line)).second) {
            continue;
        }
        problems.push_back(line.starts_with(prefix) ? line.substr(prefix.size()) : line);
    }
    return problems;
}

}  // namespace vxhost
