#include "localmapi/base/Diagnostics.h"

#include <functional>

namespace localmapi {

void Diagnostics::Report(std::string_view problem) {
    const std::uint64_t hash = std::hash<std::string_view>{}(problem);
    if (m_seen.contains(hash)) {
        return;
    }
    ++m_count;
    if (m_seen.size() >= kDistinctProblems) {
        if (m_sink != nullptr && m_count == kDistinctProblems + 1) {
            m_sink->Report("too many problems in this file; further ones are not reported");
        }
        return;
    }
    m_seen.insert(hash);
    if (m_sink != nullptr) {
        m_sink->Report(problem);
    }
}

}  // namespace localmapi
