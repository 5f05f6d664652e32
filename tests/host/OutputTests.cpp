#include "host/Failures.h"
#include "host/Output.h"
#include "host/TempFolder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <sstream>

namespace vxhost {
namespace {

class OutputFile : public ::testing::Test {
protected:
    OutputFile() : folder(std::filesystem::temp_directory_path()), file(folder.Path() / "out.ndjson") {}

    std::string Read() const {
        std::ifstream stream(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }
    std::size_t FilesThere() const {
        return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder.Path()), {}));
    }

    TempFolder folder;
    std::filesystem::path file;
};

TEST_F(OutputFile, AppearsWhenItIsCommitted) {
    std::ofstream(file) << "old";
    const std::string line(1000, 'x');
    std::string all;
    {
        Output output(file);
        for (int i = 0; i < 500; ++i) {
            output.Write(line);
            all += line;
        }
        EXPECT_EQ(Read(), "old");
        EXPECT_EQ(FilesThere(), 2U) << "beside its place";
        output.Commit();
        EXPECT_EQ(output.Bytes(), all.size());
    }
    EXPECT_EQ(Read(), all);
    EXPECT_EQ(FilesThere(), 1U);
}

TEST_F(OutputFile, LeavesNothingWhenItIsNotCommitted) {
    std::ofstream(file) << "old";
    {
        Output output(file);
        output.Write(std::string(1'000'000, 'x'));
    }
    EXPECT_EQ(Read(), "old");
    EXPECT_EQ(FilesThere(), 1U);
}

TEST_F(OutputFile, IsThereWhenItIsEmpty) {
    Output output(file);
    output.Commit();
    EXPECT_TRUE(std::filesystem::is_empty(file));
}

TEST_F(OutputFile, NeedsAPlace) {
    EXPECT_THROW(Output(folder.Path() / "none" / "out"), Failure);
    EXPECT_THROW(Output{folder.Path()}, Failure);
}

TEST(TempFolders, AreGoneWithWhatIsInThem) {
    std::filesystem::path path;
    {
        TempFolder folder(std::filesystem::temp_directory_path());
        path = folder.Path();
        std::filesystem::create_directories(path / "a" / "b");
        std::ofstream(path / "file") << "x";
        const TempFolder other(path.parent_path());
        EXPECT_NE(other.Path(), path);
        folder.Empty();
        EXPECT_TRUE(std::filesystem::is_empty(path));
        std::ofstream(path / "file") << "x";
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_THROW(TempFolder{path / "none"}, Failure);
}

}  // namespace
}  // namespace vxhost
