// Mailbox files with damages: what is readable is read, and the exit status says that something is not.
#include "tests/host/VxhostRun.h"

#include <fstream>
#include <random>

namespace vx_testing {
namespace {

class Damaged : public VxhostRun {
protected:
    static constexpr std::size_t kWhole = 329;  // items in folders of the sample

    RunResult IndexOf(const std::string& bytes) const {
        const std::filesystem::path file = Folder() / "damaged.pst";
        std::ofstream(file, std::ios::binary) << bytes;
        return Run({"index", Utf8(file)});
    }

    static std::size_t ItemsIn(const RunResult& result) {
        std::size_t items = 0;
        for (const json& line : OfKind(result.Lines(), "folder-summary")) {
            items += line["items"].get<std::size_t>();
        }
        return items;
    }
};

TEST_F(Damaged, CutOffFilesAreReadAsFarAsTheyGo) {
    const std::string whole = ReadFile(SampleFile());
    ASSERT_EQ(ItemsIn(IndexOf(whole)), kWhole);
    struct Row {
        const char* what;
        std::size_t bytes;
        std::size_t atLeast;
        int status;
    };
    const Row rows[] = {{"one byte", whole.size() - 1, kWhole, 3},
                        {"the last hundredth", whole.size() / 100 * 99, kWhole, 3},
                        {"the last tenth", whole.size() / 10 * 9, 50, 3},
                        {"all but the header", 10'000, 0, 3},
                        {"a part of the header", 300, 0, 2}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        const RunResult result = IndexOf(whole.substr(0, row.bytes));
        EXPECT_EQ(result.status, row.status) << result.errors;
        EXPECT_GE(ItemsIn(result), row.atLeast);
        EXPECT_EQ(result.status == 3, CountKind(result.Lines(), "error") > 0);
        EXPECT_TRUE(Profiles().empty());
    }
}

TEST_F(Damaged, FlippedBytesCostWhatTheyHit) {
    const std::string whole = ReadFile(SampleFile());
    std::mt19937 random(20'260'301);
    std::size_t told = 0;
    for (const std::size_t flips : {1U, 10U, 100U, 1000U}) {
        std::string bytes = whole;
        for (std::size_t i = 0; i < flips; ++i) {
            bytes[random() % bytes.size()] ^= static_cast<char>(1U << random() % 8);
        }
        SCOPED_TRACE(flips);
        const RunResult result = IndexOf(bytes);
        EXPECT_TRUE(result.status == 0 || result.status == 3) << result.status << result.errors;
        EXPECT_GT(ItemsIn(result), kWhole * 3 / 4);
        told += result.status == 3 ? 1 : 0;
        for (const json& line : OfKind(result.Lines(), "error")) {
            EXPECT_TRUE(line.contains("hresult") || line.contains("names") || line.contains("message")
                        || line.contains("expected"))
                << line;
        }
    }
    EXPECT_GE(told, 3U) << "a single flip may hit what nobody uses";
}

TEST_F(Damaged, OtherCommandsTellToo) {
    const std::filesystem::path file = Folder() / "damaged.pst";
    std::ofstream(file, std::ios::binary) << ReadFile(SampleFile()).substr(0, 1'000'000);
    const RunResult result = Run({"folders", Utf8(file)});
    EXPECT_EQ(result.status, 3);
    EXPECT_NE(result.errors.find("is damaged"), std::string::npos) << result.errors;
}

}  // namespace
}  // namespace vx_testing
