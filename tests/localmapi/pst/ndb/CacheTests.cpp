// The cache keeps what was used last and never more than it may; files are read where they lie.
#include "localmapi/base/ByteSource.h"
#include "localmapi/base/Diagnostics.h"
#include "localmapi/pst/ndb/BufferCache.h"
#include "tests/localmapi/pst/support/ImageBuilder.h"
#include "tests/localmapi/pst/support/Opened.h"

#include <gtest/gtest.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

namespace localmapi::testing {
namespace {

using pst::Buffer;
using pst::BufferCache;

std::shared_ptr<const Buffer> Sized(std::size_t size) {
    auto buffer = std::make_shared<Buffer>();
    buffer->bytes.resize(size);
    return buffer;
}

TEST(BufferCache, DropsWhatWasUsedLongestAgo) {
    BufferCache cache(15'000);
    for (std::uint64_t key = 0; key < 9; ++key) {
        cache.Keep(key, Sized(1000));
    }
    EXPECT_TRUE(cache.Find(0));
    for (std::uint64_t key = 100; key < 108; ++key) {
        cache.Keep(key, Sized(1000));
    }
    EXPECT_TRUE(cache.Find(0)) << "used since";
    EXPECT_FALSE(cache.Find(1));
    EXPECT_TRUE(cache.Find(107));
}

TEST(BufferCache, NeverKeepsMoreThanItMayAndDropsNothingForWhatIsTooLarge) {
    BufferCache cache(10'000);
    for (std::uint64_t key = 0; key < 500; ++key) {
        cache.Keep(key % 70, Sized(key * 37 % 3000));
        ASSERT_LE(cache.Size(), 10'000U);
    }
    const std::size_t before = cache.Size();
    cache.Keep(1000, Sized(20'000));
    EXPECT_EQ(cache.Size(), before);
    EXPECT_FALSE(cache.Find(1000));
    cache.Clear();
    EXPECT_EQ(cache.Size(), 0U);
}

TEST(BufferCache, LeavesAloneWhatSomebodyHolds) {
    BufferCache cache(2000);
    cache.Keep(1, Sized(1000));
    const pst::BufferHold held = cache.Find(1);
    cache.Keep(2, Sized(1000));
    EXPECT_FALSE(cache.Find(1));
    EXPECT_EQ(held->bytes.size(), 1000U);
}

// 3 MB of blocks read through caches of all sizes, even none.
TEST(Database, ReadsTheSameThroughACacheOfAnySize) {
    ImageBuilder image(kUnicode);
    for (std::uint32_t i = 0; i < 40; ++i) {
        image.AddNode(0x21 + i * 0x20, image.AddData(Pattern(80'000, i + 1)));
    }
    const Bytes bytes = image.Build();
    for (const std::size_t capacity : {std::size_t{0}, std::size_t{20'000}, std::size_t{1} << 24}) {
        Opened file(bytes, capacity);
        for (std::uint32_t i = 0; i < 40; ++i) {
            auto stream = file->OpenData(file.Node(0x21 + i * 0x20));
            ASSERT_TRUE(stream);
            ASSERT_TRUE(*ReadWhole(*stream, 10'000) == Pattern(80'000, i + 1));
            ASSERT_LE(file->CachedBytes(), capacity);
        }
    }
}

// A file of the test's own, gone at its end.
class TemporaryFile {
public:
    explicit TemporaryFile(const char* name)
        : path(std::filesystem::temp_directory_path() / (std::string("vx-pst-") + name)) {}
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile() {
        std::error_code ignored;
        std::filesystem::remove(path, ignored);
    }

    void Write(const Bytes& bytes) const {
        std::ofstream(path, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }

    std::filesystem::path path;
};

TEST(FileReader, ReadsByPositionThroughSeveralReadersWhileOthersWriteAndDelete) {
    const TemporaryFile file("shared");
    file.Write(Pattern(5000));
    auto first = OpenFileReadOnly(file.path);
    auto second = OpenFileReadOnly(file.path);
    ASSERT_TRUE(first && second);
    std::array<std::byte, 100> part{};
    for (auto* reader : {&*first, &*second}) {
        EXPECT_EQ((*reader)->Size(), 5000U);
        ASSERT_TRUE((*reader)->ReadAt(4900, part));
        EXPECT_TRUE(std::equal(part.begin(), part.end(), Pattern(5000).begin() + 4900));
        EXPECT_EQ((*reader)->ReadAt(4901, part).Failure().code, ErrorCode::ReadFailed);
        EXPECT_FALSE((*reader)->ReadAt(UINT64_MAX / 2, part));
    }
    {
        std::ofstream writer(file.path, std::ios::binary | std::ios::in | std::ios::out);
        EXPECT_TRUE(writer.write("!", 1).flush());
    }
    ASSERT_TRUE((*first)->ReadAt(0, part));
    EXPECT_EQ(part[0], std::byte{'!'});
    EXPECT_TRUE(std::filesystem::remove(file.path));
}

TEST(FileReader, ReadsBeyondFourGigabytes) {
    const TemporaryFile file("large");
    file.Write({});
    std::error_code failed;
    constexpr std::uint64_t kFar = (std::uint64_t{5} << 30) + 3;
    std::filesystem::resize_file(file.path, kFar, failed);  // a hole: takes no room on disk
    if (failed) {
        GTEST_SKIP() << "this file system cannot hold a large file: " << failed.message();
    }
    std::ofstream(file.path, std::ios::binary | std::ios::app).write("end", 3);
    auto reader = OpenFileReadOnly(file.path);
    ASSERT_TRUE(reader);
    EXPECT_EQ((*reader)->Size(), kFar + 3);
    std::array<std::byte, 3> part{};
    ASSERT_TRUE((*reader)->ReadAt(kFar, part));
    EXPECT_EQ(Bytes(part.begin(), part.end()), BytesOf("end"));
}

TEST(FileReader, SaysWhyAFileCannotBeOpened) {
    const TemporaryFile absent("absent");
    EXPECT_EQ(OpenFileReadOnly(absent.path).Failure().code, ErrorCode::NotFound);
    EXPECT_EQ(OpenFileReadOnly(absent.path / "below").Failure().code, ErrorCode::NotFound);
    const auto folder = OpenFileReadOnly(std::filesystem::temp_directory_path());
    ASSERT_FALSE(folder);
    // Windows does not let a folder be opened like a file; Linux does, and the reader sees what it is.
    EXPECT_TRUE(folder.Failure().code == ErrorCode::Unsupported || folder.Failure().code == ErrorCode::AccessDenied);
}

TEST(Diagnostics, PassEachProblemOnOnceAndEndWithANoticeWhenThereAreTooMany) {
    RecordingSink sink;
    Diagnostics problems(&sink);
    for (std::size_t i = 0; i < Diagnostics::kDistinctProblems + 10; ++i) {
        problems.Report("problem " + std::to_string(i));
        problems.Report("problem 0");
    }
    EXPECT_EQ(sink.problems.size(), Diagnostics::kDistinctProblems + 1);
    EXPECT_EQ(sink.Count("too many problems"), 1);
    EXPECT_EQ(problems.Count(), Diagnostics::kDistinctProblems + 10);
}

}  // namespace
}  // namespace localmapi::testing
