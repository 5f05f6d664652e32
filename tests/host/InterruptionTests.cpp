// Ctrl-C, and readers of the output that go away.
#include "testing/mailbox_builder/LargeMailbox.h"
#include "tests/host/VxhostRun.h"

#include <chrono>
#include <thread>

namespace vx_testing {
namespace {

// SIGINT, where a slow build is not even ready to catch it.
constexpr int kKilledBeforeItBegan = -2;

class Interruption : public VxhostRun {
protected:
    static const std::filesystem::path& LargeFile() {
        static const std::filesystem::path file = [] {
            const std::filesystem::path path = SampleFile().parent_path() / "large.pst";
            EXPECT_TRUE(mailbox_builder::WriteLargeMailbox(path, {.items = 20'000, .bytes = 200U << 20}));
            return path;
        }();
        return file;
    }
};

TEST_F(Interruption, LeavesNothingBehind) {
    using namespace std::chrono_literals;
    const std::filesystem::path output = Folder() / "out.ndjson";
    const std::filesystem::path attachments = Folder() / "attachments";
    for (const auto delay : {50ms, 200ms, 400ms}) {
        SCOPED_TRACE(delay.count());
        Process process =
            Start({"index", Utf8(LargeFile()), "-o", Utf8(output), "--save-attachments", Utf8(attachments)});
        std::this_thread::sleep_for(delay);
        const auto begin = std::chrono::steady_clock::now();
        if (!process.Interrupt()) {
            GTEST_SKIP() << "there is no console to press Ctrl-C in";
        }
        const int status = process.Wait();
        EXPECT_TRUE(status == 130 || status == kKilledBeforeItBegan) << status << process.Errors();
        EXPECT_LT(std::chrono::steady_clock::now() - begin, 1s);
        EXPECT_TRUE(Profiles().empty());
        EXPECT_FALSE(std::filesystem::exists(output));
        for (const std::string& name : FilesOf(Folder())) {
            EXPECT_EQ(name, "attachments");
        }
        for (const std::string& name : FilesOf(attachments)) {
            EXPECT_FALSE(name.starts_with('.')) << name;
        }
    }
}

TEST_F(Interruption, OfTheReaderIsNoError) {
    Process process = Start({"index", Utf8(LargeFile())}, Process::Reader::Gone);
    EXPECT_EQ(process.Wait(), 130);
    EXPECT_EQ(process.Errors(), "");
    EXPECT_TRUE(Profiles().empty());
}

}  // namespace
}  // namespace vx_testing
