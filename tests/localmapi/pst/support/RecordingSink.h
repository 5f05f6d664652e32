// A diagnostics sink that keeps what it is told.
#pragma once

#include "localmapi/base/Diagnostics.h"

#include <algorithm>
#include <string>
#include <vector>

namespace localmapi::testing {

class RecordingSink final : public DiagnosticSink {
public:
    void Report(std::string_view problem) override { problems.emplace_back(problem); }

    // How many of the problems hold `text`.
    std::ptrdiff_t Count(std::string_view text) const {
        return std::count_if(problems.begin(), problems.end(),
                             [text](const std::string& problem) { return problem.find(text) != std::string::npos; });
    }

    std::vector<std::string> problems;
};

}  // namespace localmapi::testing
