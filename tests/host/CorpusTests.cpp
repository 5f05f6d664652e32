// Real mailbox files: every one is indexed to its end, with the items that other programs found.
#include "testing/corpus/StoreParameters.h"
#include "tests/host/VxhostRun.h"

#include <algorithm>
#include <cctype>

namespace vx_testing {
namespace {

class Corpus : public VxhostRun, public ::testing::WithParamInterface<std::filesystem::path> {};

// A path of the record names folders on disk, where some characters had to be replaced.
std::string OnDisk(std::string path) {
    std::replace_if(
        path.begin(), path.end(), [](char c) { return c == '@' || c == '~'; }, '_');
    return path;
}

// The record's folder with that path below the visible tree; null when there is none, or when it says nothing of items.
const json* FolderOf(const json& truth, const std::string& path) {
    const json* shortest = nullptr;
    for (const json& folder : truth["folders"]) {
        const auto recorded = folder["path"].get<std::string>();
        if (recorded.ends_with(OnDisk(path)) && folder.contains("classes")
            && (shortest == nullptr || recorded.size() < (*shortest)["path"].get<std::string>().size())) {
            shortest = &folder;
        }
    }
    return shortest;
}

std::size_t ItemsOf(const json& folder) {
    std::size_t items = 0;
    for (const auto& [name, count] : folder["classes"].items()) {
        items += count.get<std::size_t>();
    }
    return items;
}

TEST_P(Corpus, IsIndexedWithTheCountsOfItsRecord) {
    if (GetParam().empty()) {
        GTEST_SKIP() << "there is no corpus beside the tree";
    }
    const RunResult result = Run({"index", Utf8(GetParam())});
    if (GetParam().filename() == "corrupt-header.pst") {
        EXPECT_EQ(result.status, 3) << result.errors;
        return;
    }
    EXPECT_EQ(result.status, 0) << result.errors;
    const json truth = json::parse(vx_testing::TruthOf(GetParam()));
    std::vector<json> folders = OfKind(result.Lines(), "folder-summary");
    ASSERT_FALSE(folders.empty());
    folders.erase(folders.begin());  // the topmost one, which has the name of the store
    for (const json& summary : folders) {
        const json* folder = FolderOf(truth, summary["path"]);
        if (folder != nullptr) {
            EXPECT_EQ(summary["items"].get<std::size_t>() + summary["unsupported"].get<std::size_t>(), ItemsOf(*folder))
                << summary;
        }
        EXPECT_EQ(summary["errors"], 0) << summary;
    }
}

INSTANTIATE_TEST_SUITE_P(Stores, Corpus, ::testing::ValuesIn(StoreParameters()), StoreName);

}  // namespace
}  // namespace vx_testing
