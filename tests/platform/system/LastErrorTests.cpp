// The last error belongs to its thread, and errno values arrive as the numbers that Windows code looks for.
#include "platform/LastError.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <thread>

namespace {

TEST(LastError, OfOneThreadIsNotSeenByAnother) {
    DWORD atStart = 1;
    std::atomic<int> turn = 0;
    std::thread other([&] {
        while (turn != 1) {
        }
        atStart = GetLastError();
        SetLastError(ERROR_ACCESS_DENIED);
        turn = 2;
    });
    SetLastError(ERROR_MORE_DATA);
    turn = 1;
    while (turn != 2) {
    }
    const DWORD here = GetLastError();  // before the thread library makes calls of its own
    other.join();
    EXPECT_EQ(atStart, 0U);
    EXPECT_EQ(here, DWORD{ERROR_MORE_DATA});
}

TEST(LastError, StaysWhenAFreeSucceeds) {
    HLOCAL block = LocalAlloc(LPTR, 16);
    ASSERT_NE(block, nullptr);
    for (int i = 0; i < 16; ++i) {
        EXPECT_EQ(static_cast<const BYTE*>(block)[i], 0) << i;
    }
    SetLastError(ERROR_MORE_DATA);
    EXPECT_EQ(LocalFree(block), nullptr);
    EXPECT_EQ(LocalFree(nullptr), nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_MORE_DATA});
}

#ifndef _WIN32

TEST(LastError, FromErrnoTellsTheCasesApartThatCallersAskFor) {
    const struct {
        int error;
        DWORD expected;
    } rows[] = {{0, 0},       {ENOENT, 2},   {ENOTDIR, 3}, {EMFILE, 4},      {EACCES, 5},         {EPERM, 5},
                {EBADF, 6},   {ENOMEM, 8},   {EROFS, 19},  {EAGAIN, 32},     {EWOULDBLOCK, 32},   {EEXIST, 80},
                {EINVAL, 87}, {ENOSPC, 112}, {EXDEV, 17},  {ENOTEMPTY, 145}, {ENAMETOOLONG, 206}, {-1, 31}};
    for (const auto& row : rows) {
        EXPECT_EQ(ErrorFromErrno(row.error), row.expected) << "errno " << row.error;
    }
}

#endif

}  // namespace
