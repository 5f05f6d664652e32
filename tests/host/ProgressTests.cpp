#include "host/Progress.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace vxhost {
namespace {

using std::chrono::milliseconds;

// The lines written, without what moves the cursor.
struct Screen {
    std::vector<std::string> lines;
    std::size_t writes = 0;

    Progress::Write Writer() {
        return [this](const std::string& text) {
            ++writes;
            lines.push_back(text.substr(text.find_first_not_of('\r')));
            lines.back().resize(lines.back().find("\x1b[K"));
        };
    }
};

TEST(ProgressLine, TellsFolderCountRateAndTimeLeft) {
    Screen screen;
    Progress progress(screen.Writer(), 80);
    const auto start = Progress::Clock::now();
    progress.Expect(400);
    progress.Expect(600);
    progress.EnterFolder(
        u"/In\x1b"
        u"box");
    for (int i = 0; i < 500; ++i) {
        progress.CountItem(start + milliseconds(i * 10));
    }
    // At most five a second, for five seconds.
    EXPECT_LE(screen.writes, 25U);
    EXPECT_GE(screen.writes, 20U);
    EXPECT_TRUE(screen.lines.front().starts_with("/In?box  21 of 1,000 items, ")) << screen.lines.front();
    EXPECT_EQ(screen.lines.front().find("left"), std::string::npos) << "too early to tell";
    EXPECT_TRUE(screen.lines.back().ends_with("left")) << screen.lines.back();
    EXPECT_NE(screen.lines.back().find(" of 1,000 items, "), std::string::npos) << screen.lines.back();
    progress.Clear();
    EXPECT_EQ(screen.lines.back(), "");
    const std::size_t writes = screen.writes;
    progress.Clear();
    EXPECT_EQ(screen.writes, writes);
}

TEST(ProgressLine, NeverFillsTheTerminalsWidth) {
    for (const std::size_t width : {0U, 1U, 10U, 30U, 50U}) {
        Screen screen;
        Progress progress(screen.Writer(), width);
        progress.EnterFolder(std::u16string(100, u'x'));
        progress.CountItem(Progress::Clock::now() + std::chrono::seconds(10));
        ASSERT_EQ(screen.lines.size(), 1U);
        EXPECT_LT(screen.lines[0].size(), std::max<std::size_t>(width, 1)) << width;
    }
}

TEST(ProgressLine, CountsMoreThanWasExpected) {
    Screen screen;
    {
        Progress progress(screen.Writer(), 80);
        progress.Expect(1);
        const auto now = Progress::Clock::now();
        progress.CountItem(now);
        progress.CountItem(now + std::chrono::seconds(5));
        EXPECT_EQ(screen.lines.back().find(" of "), std::string::npos) << screen.lines.back();
    }
    EXPECT_EQ(screen.lines.back(), "") << "the line is gone at the end";
}

}  // namespace
}  // namespace vxhost
