#include "testing/corpus/Corpus.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace vx_testing {

std::filesystem::path CorpusFolder() {
    const char* named = std::getenv("VX_CORPUS");
    const std::filesystem::path folder =
        named != nullptr ? std::filesystem::path(named) : std::filesystem::path(VX_SOURCE_DIR) / "../shared/corpus";
    std::error_code failed;
    return std::filesystem::is_directory(folder / "pst", failed) ? folder : std::filesystem::path();
}

std::vector<std::filesystem::path> CorpusStores() {
    std::vector<std::filesystem::path> stores;
    if (const std::filesystem::path folder = CorpusFolder(); !folder.empty()) {
        for (const auto& entry : std::filesystem::directory_iterator(folder / "pst")) {
            stores.push_back(entry.path());
        }
    }
    std::sort(stores.begin(), stores.end());
    return stores;
}

std::string TruthOf(const std::filesystem::path& store) {
    std::ifstream stream(CorpusFolder() / "truth" / (store.filename().string() + ".json"), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace vx_testing
