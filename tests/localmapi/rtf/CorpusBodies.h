// The bodies of every message of the corpus's mailbox and message files, messages within messages too.
#pragma once

#include "localmapi/base/Bytes.h"
#include "platform/WideText.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace localmapi::testing {

struct Bodies {
    std::string where;  // "quick.msg #0": the file, and the message's number in it
    Bytes compressedRtf;
    CStringW plain;  // empty where there is none
    std::optional<Bytes> html;
    UINT htmlPage = 0;
};

// Messages that have compressed RTF or HTML. Empty where there is no corpus.
std::vector<Bodies> BodiesOfStore(const std::filesystem::path& file);
std::vector<Bodies> BodiesOfMessageFile(const std::filesystem::path& file);

}  // namespace localmapi::testing
