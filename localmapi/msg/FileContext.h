// What all messages of one file share. One thread at a time.
#pragma once

#include "localmapi/base/Diagnostics.h"
#include "localmapi/model/PropertyNames.h"
#include "platform/BaseTypes.h"

#include <cstddef>

namespace localmapi::msg {

struct FileContext {
    explicit FileContext(DiagnosticSink* sink) : problems(sink) {}

    Diagnostics problems;
    bool isWritable = false;
    bool commits = true;
    UINT fallbackPage = 0;
    PropertyNames names;
    std::size_t savedNames = 0;  // of `names`, the first ones, are in the file
};

}  // namespace localmapi::msg
