// What readers found wrong with mailbox files, for people: one line each, appended to the file that $VX_MAPI_LOG names.
// Without that variable nothing is written. Any thread.
#pragma once

#include "localmapi/base/Diagnostics.h"

#include <filesystem>

namespace localmapi {

// The sink for problems of one mailbox file; null when there is no log. It lives as long as the process.
DiagnosticSink* ProblemLogFor(const std::filesystem::path& mailbox);

}  // namespace localmapi
