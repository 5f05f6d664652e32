// The mailboxes of the corpus as the parameters of a test suite:
//
//     INSTANTIATE_TEST_SUITE_P(Stores, Suite, ::testing::ValuesIn(StoreParameters()), StoreName);
//
// Where there is no corpus that is one empty path, so that the suite can skip aloud.
#pragma once

#include "testing/corpus/Corpus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <string>
#include <vector>

namespace vx_testing {

inline std::vector<std::filesystem::path> StoreParameters() {
    std::vector<std::filesystem::path> stores = CorpusStores();
    return stores.empty() ? std::vector<std::filesystem::path>{{}} : stores;
}

inline std::string StoreName(const ::testing::TestParamInfo<std::filesystem::path>& info) {
    std::string name = info.param.empty() ? "none" : info.param.filename().string();
    const auto isOther = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) == 0; };
    std::replace_if(name.begin(), name.end(), isOther, '_');
    return name;
}

}  // namespace vx_testing
