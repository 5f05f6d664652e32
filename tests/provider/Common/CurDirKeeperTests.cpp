#include "provider/Common/CurDirKeeper.h"
#include "tests/provider/Common/LogTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace {

namespace fs = std::filesystem;

using Lines = std::vector<std::string>;

class CurDirKeeper : public testing::Test {
protected:
    ~CurDirKeeper() override { fs::current_path(m_before); }

    static void Enter(const fs::path& folder) { fs::current_path(folder); }
    std::string Here() const { return Ascii(FromPath(fs::current_path())); }

    fs::path m_before = fs::current_path();
    TemporaryFolder m_one;
    TemporaryFolder m_other;
    InstalledLog m_log;
};

TEST_F(CurDirKeeper, ComesBackOnceAndOnlyWhenAsked) {
    Enter(m_one.Path());
    const std::string one = Here();
    {
        const CCurrDirKeeper forgotten;
        Enter(m_other.Path());
    }
    const std::string other = Here();
    EXPECT_NE(other, one);

    CCurrDirKeeper keeper;
    Enter(m_one.Path());
    keeper.Restore();
    EXPECT_EQ(Here(), other);
    EXPECT_EQ(m_log.Lines(), Lines());
    Enter(m_one.Path());
    keeper.Restore();
    EXPECT_EQ(Here(), one);
    EXPECT_EQ(m_log.Lines(),
              Lines{"ERROR Restore: CCurrDirKeeper::Restore(): current directory already \t\t\t\t\t\t\t\t"
                    " restored and no current directory is saved to restore it!"});
}

TEST_F(CurDirKeeper, TellsWhetherTheDirectoryChanged) {
    Enter(m_one.Path());
    const std::string one = Here();
    CCurrDirKeeper keeper;
    keeper.Check("%d "_w);
    Enter(m_other.Path());
    keeper.Check("A: "_w);
    const std::string other = Here();
    keeper.Restore();
    keeper.Check("B: "_w);
    EXPECT_EQ(m_log.Lines(),
              (Lines{"DEBUG Check: %d CCurrDirKeeper::Check(): current directory has not \t\t\t\t\t\t\t\t\t\t changed.",
                     "ERROR Check: A: CCurrDirKeeper::Check(): current directory has changed: GetCurrentDirectory() "
                     "returned '"
                         + other + "', saved current \t\t\t\t\t\t\t directory is '" + one + "'!",
                     "ERROR Check: B: CCurrDirKeeper::Check(): current directory already \t\t\t\t\t\t\t\t"
                     " restored and no current directory is saved to check against!"}));
}

TEST_F(CurDirKeeper, SavesNothingThatIsTooLong) {
    if (kPathSeparator == '\\') {
        GTEST_SKIP() << "a current directory has at most 260 characters on this system";
    }
    Enter(m_one.Path());
    for (int level = 0; level < 8; ++level) {
        const std::string name(80, 'd');
        fs::create_directory(name);
        fs::current_path(name);
    }
    CCurrDirKeeper keeper;
    Enter(m_other.Path());
    const std::string other = Here();
    keeper.Restore();
    EXPECT_EQ(Here(), other);
    EXPECT_EQ(m_log.Lines().at(0),
              "ERROR CCurrDirKeeper: CCurrDirKeeper::CCurrDirKeeper(): GetCurrentDirectory() \t\t\t"
              "            failed!");
}

}  // namespace
