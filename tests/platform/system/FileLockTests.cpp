// Locks that processes share, and files that are replaced as a whole.
#include "platform/DurableFile.h"
#include "platform/FileLock.h"
#include "tests/platform/system/SystemTestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#ifndef _WIN32
#include <csignal>

#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

DWORD Replace(const std::filesystem::path& path, std::string_view text) {
    return ReplaceFileContents(path, std::as_bytes(std::span(text)));
}

std::string Read(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(FileLock, HasOneHolderAtATime) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.Path() / "lock";
    FileLock first;
    FileLock second;
    ASSERT_EQ(first.Acquire(file, 0), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(second.Acquire(file, 0), DWORD{ERROR_TIMEOUT});
    EXPECT_FALSE(second.IsHeld());

    FileLock moved = std::move(first);
    EXPECT_TRUE(moved.IsHeld());
    EXPECT_EQ(second.Acquire(file, 30), DWORD{ERROR_TIMEOUT}) << "moving does not let go";
    moved.Release();
    EXPECT_EQ(second.Acquire(file, 0), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(second.Acquire(file, 0), DWORD{ERROR_SUCCESS}) << "one's own lock is released first";
}

TEST(FileLock, IsWaitedFor) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.Path() / "lock";
    FileLock first;
    ASSERT_EQ(first.Acquire(file, 0), DWORD{ERROR_SUCCESS});
    std::thread holder([&first] {
        Sleep(60);
        first.Release();
    });
    FileLock second;
    EXPECT_EQ(second.Acquire(file, 10'000), DWORD{ERROR_SUCCESS});
    holder.join();
}

TEST(FileLock, NeedsItsFolder) {
    const TemporaryFolder folder;
    FileLock lock;
    const DWORD result = lock.Acquire(folder.Path() / "none" / "lock", 1'000);
    EXPECT_TRUE(result == ERROR_FILE_NOT_FOUND || result == ERROR_PATH_NOT_FOUND) << result;
    EXPECT_FALSE(lock.IsHeld());
}

#ifndef _WIN32

TEST(FileLock, IsFreeWhenItsHolderWasKilled) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.Path() / "lock";
    const pid_t child = ::fork();
    if (child == 0) {
        FileLock held;
        (void)held.Acquire(file, 0);
        ::raise(SIGKILL);
    }
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    ASSERT_TRUE(std::filesystem::exists(file)) << "the child had it";
    FileLock lock;
    EXPECT_EQ(lock.Acquire(file, 0), DWORD{ERROR_SUCCESS});
}

TEST(FileLock, OfAFileThatWasRemovedKeepsNobodyOut) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.Path() / "lock";
    FileLock stale;
    ASSERT_EQ(stale.Acquire(file, 0), DWORD{ERROR_SUCCESS});
    std::filesystem::remove(file);
    FileLock first;
    FileLock second;
    EXPECT_EQ(first.Acquire(file, 0), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(second.Acquire(file, 0), DWORD{ERROR_TIMEOUT});
}

#endif

TEST(DurableFile, IsReplacedAsAWhole) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.Path() / "a";
    EXPECT_EQ(Replace(file, "first, and longer"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Read(file), "first, and longer");
    folder.Write("a.new", "what a killed program left behind, longer than all");
    EXPECT_EQ(Replace(file, "second"), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Read(file), "second");
    EXPECT_EQ(Replace(file, ""), DWORD{ERROR_SUCCESS});
    EXPECT_EQ(Read(file), "");
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "a.new"));
}

TEST(DurableFile, StaysWhatItWasWhenItCannotBeReplaced) {
    const TemporaryFolder folder;
    EXPECT_NE(Replace(folder.Path() / "none" / "a", "x"), DWORD{ERROR_SUCCESS});
    // A folder in the file's place cannot be replaced, and nothing is left beside it.
    std::filesystem::create_directories(folder.Path() / "b" / "inside");
    EXPECT_NE(Replace(folder.Path() / "b", "x"), DWORD{ERROR_SUCCESS});
    EXPECT_TRUE(std::filesystem::exists(folder.Path() / "b" / "inside"));
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "b.new"));
}

}  // namespace
