// The system's version, and the process' own numbers and clock.
#include "platform/Process.h"
#include "platform/SystemVersion.h"
#include "platform/WideText.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <fstream>
#include <thread>

namespace {

TEST(SystemVersion, FillsEitherStructureAndNothingBehindTheShortOne) {
    OSVERSIONINFOEXW both;
    std::memset(static_cast<void*>(&both), 0x55, sizeof(both));
    both.dwOSVersionInfoSize = sizeof(OSVERSIONINFOW);
    ASSERT_TRUE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&both)));
    EXPECT_EQ(both.wServicePackMajor, 0x5555);
    EXPECT_EQ(both.wProductType, 0x55);
    const DWORD major = both.dwMajorVersion;
    EXPECT_GT(major, 0U);
    EXPECT_LT(major, 100U);

    both.dwOSVersionInfoSize = sizeof(OSVERSIONINFOEXW);
    ASSERT_TRUE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&both)));
    EXPECT_EQ(both.dwMajorVersion, major);
    EXPECT_TRUE(both.wProductType >= VER_NT_WORKSTATION && both.wProductType <= VER_NT_SERVER);
    both.dwOSVersionInfoSize = 12;
    EXPECT_FALSE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&both)));
}

#ifndef _WIN32

TEST(SystemVersion, IsTheKernelsAndTheDistributions) {
    OSVERSIONINFOW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    ASSERT_TRUE(GetVersionExW(&version));
    // The kernel tells the same in another place: "Linux version 6.1.0-18-amd64 (...".
    std::ifstream file("/proc/sys/kernel/osrelease");
    unsigned major = 0;
    unsigned minor = 0;
    char dot = 0;
    file >> major >> dot >> minor;
    EXPECT_EQ(version.dwMajorVersion, major);
    EXPECT_EQ(version.dwMinorVersion, minor);
    EXPECT_GT(version.dwPlatformId, VER_PLATFORM_WIN32_NT) << "no Windows' number";
    EXPECT_TRUE(CStringW(version.szCSDVersion).starts_with("Linux"_w));
}

#endif

TEST(Process, TellsThreadsApartAndWaitsLongEnough) {
    DWORD other = 0;
    std::thread([&] { other = GetCurrentThreadId(); }).join();
    EXPECT_NE(other, GetCurrentThreadId());
    EXPECT_NE(other, 0U);

    const ULONGLONG before = GetTickCount64();
    const auto start = std::chrono::steady_clock::now();
    Sleep(60);
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(55));
    EXPECT_GE(GetTickCount64() - before, 40U);  // Windows' own clock ticks every 16 ms
}

}  // namespace
