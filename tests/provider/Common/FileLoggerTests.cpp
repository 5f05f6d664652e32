#include "provider/Common/FileLogger.h"
#include "provider/Common/PlatformInfo.h"
#include "tests/provider/Common/AllocationCounter.h"
#include "tests/provider/Common/LogTestSupport.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <thread>

namespace {

TEST(FileLogger, WritesTheEntriesThatItsLevelOpens) {
    const struct {
        const char* level;
        const char* labels;  // of entries D, E, I, W and another letter, as far as they are written
    } rows[] = {
        {"Off", ""},
        {"Error", "ERROR "},
        {"Warning", "ERROR WARN "},
        {"Info", "ERROR INFO WARN "},
        {"Verbose", "DEBUG ERROR INFO WARN TRACE "},
        {"vERBOSE", "DEBUG ERROR INFO WARN TRACE "},
        {"off", ""},
        {"Debug", "ERROR INFO WARN "},
        {"", "ERROR INFO WARN "},
    };
    for (const auto& row : rows) {
        LogFixture log(row.level);
        for (const char letter : {'D', 'E', 'I', 'W', 'x'}) {
            log.Write(letter, "message");
        }
        std::string labels;
        for (const std::string& line : log.Lines()) {
            const std::size_t label = line.find("[group-Scanner] ") + 16;
            labels += line.substr(label, line.find(' ', label) + 1 - label);
        }
        EXPECT_EQ(labels, row.labels) << row.level;
    }
    EXPECT_EQ(Ascii(Vx::TranslateLogLevelToName(static_cast<Vx::LogLevel>(5))), "Off");
    EXPECT_EQ(Ascii(Vx::TranslateLogLevelToName(static_cast<Vx::LogLevel>(-1))), "Off");
}

TEST(FileLogger, WritesHeaderAndLinesInTheStatedLayout) {
    LogFixture log("warning");
    const SYSTEMTIME time = {2009, 1, 0, 3, 4, 5, 6, 7};
    log.logger->Log("StoreAndFolder\\VxOutlookStore.cpp"_w, 1234, "GetItems"_w, 'E', time, 0x1A2B, "a - b %s"_w);
    log.logger->Log("NoFolder.cpp"_w, 1, nullptr, 'W', time, 0xF, WideView());
    EXPECT_EQ(ReadFile(log.live),
              "Vx MAPI Engine loaded on 02/29/24 at 13:05:09. Log level Warning\r\n" + Ascii(Vx::GetPlatformInfo())
                  + "\r\n\r\n"
                    "[log] 03.01.2009 04:05:06,007 [group-Scanner] ERROR   [(1a2b) VxOutlookStore.cpp (1234)] [log] - "
                    "GetItems - a - b %s\r\n"
                    "[log] 03.01.2009 04:05:06,007 [group-Scanner] WARN   [(f) NoFolder.cpp (1)] [log] - (null) - \r\n");

    log.logger =
        std::make_unique<Vx::FileLogger>(false, "Error"_w, ""_w, "Plain"_w, FromPath(log.logs), 12, false, log.clock);
    log.logger->Log("A\\B.cpp"_w, 2, "F"_w, 'E', time, 0xAB, "message"_w);
    EXPECT_TRUE(
        ReadFile(log.logs / "Plain.log").ends_with("\r\n\r\nE 03/01/2009 04:05:06 [ab] B.cpp (2) - F - message\n"));
}

TEST(FileLogger, TakesTimeAndThreadOfTheCallAndCutsFormattedText) {
    LogFixture log;
    const CStringW longText(2000, WCHAR{'y'});
    const auto args = Vx::MakeFormatArgs(longText);
    log.logger->Log("A.cpp"_w, 1, "F"_w, 'I', "%s"_w, args);
    log.logger->Log("A.cpp"_w, 1, CStringW(5000, WCHAR{'f'}).c_str(), 'I', "<end>"_w);
    const std::vector<std::string> lines = log.Lines();
    ASSERT_EQ(lines.size(), 2u);
    char thread[16];
    std::snprintf(thread, sizeof(thread), "(%x)", static_cast<unsigned>(GetCurrentThreadId()));
    EXPECT_TRUE(lines[0].starts_with("[log] 29.02.2024 13:05:09,042 ")) << lines[0];
    EXPECT_NE(lines[0].find(thread), std::string::npos) << lines[0];
    EXPECT_TRUE(lines[0].ends_with(" - " + std::string(1023, 'y'))) << lines[0].size();
    EXPECT_EQ(lines[1].size(), 4079u + 5u) << "the prefix is cut at its buffer, the message follows";
    EXPECT_TRUE(lines[1].ends_with("f<end>"));
}

TEST(FileLogger, WritesUtf8WithPairsWholeAcrossItsPieces) {
    for (std::size_t before = 508; before <= 516; ++before) {
        LogFixture log;
        CStringW message(before, WCHAR{'a'});
        message += {WCHAR{0xD83D}, WCHAR{0xDE00}, WCHAR{0x20AC}, WCHAR{0xDC00}, WCHAR{0xE9}, WCHAR{0xD800}};
        log.logger->Log("A.cpp"_w, 1, "F"_w, 'E', message);
        ASSERT_EQ(log.Lines().size(), 1u);
        EXPECT_TRUE(log.Lines()[0].ends_with(" - " + std::string(before, 'a')
                                             + "\xF0\x9F\x98\x80\xE2\x82\xAC\xEF\xBF\xBD\xC3\xA9\xEF\xBF\xBD"))
            << before;
    }
}

TEST(FileLogger, FollowsTheSourceOfItsLevel) {
    LogFixture log("Error");
    Vx::LogLevel cell = Vx::LogLevel::Off;
    log.logger->SetLogLevelSource(&cell);
    EXPECT_EQ(cell, Vx::LogLevel::Error) << "the cell takes the logger's level";
    cell = Vx::LogLevel::Verbose;
    log.Write('D', "by the cell");
    EXPECT_TRUE(log.logger->SetLogLevel(Vx::LogLevel::Off));
    EXPECT_EQ(cell, Vx::LogLevel::Off);
    log.Write('E', "muted");
    cell = Vx::LogLevel::Info;
    EXPECT_EQ(log.logger->GetLogLevel(), Vx::LogLevel::Info);
    log.logger->ResetLogLevelSource();
    cell = Vx::LogLevel::Off;
    log.Write('I', "the level last read stays");
    log.logger->SetLogLevel(Vx::LogLevel::Error);
    log.Write('I', "muted");
    const auto lines = log.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_TRUE(lines[0].ends_with("by the cell"));
    EXPECT_TRUE(lines[1].ends_with("the level last read stays"));
}

TEST(FileLogger, NamesItsFileAfterBaseProcessAndFolder) {
    LogFixture log;
    const std::string process = std::to_string(GetCurrentProcessId());
    Vx::FileLogger own(true, "Info"_w, "P"_w, "Engine"_w, FromPath(log.logs), 12, true, log.clock);
    EXPECT_EQ(ToPath(own.GetLogFilePath()), log.logs / ("Engine_" + process + ".log"));

    // Later lines go to the new folder, of which only the last level is made.
    log.WriteLines(1);
    log.logger->SetLogDirectory(FromPath(log.folder.Path() / "other"));
    log.WriteLines(2);
    EXPECT_EQ(log.Lines().size(), 1u);
    EXPECT_EQ(ReadLines(log.folder.Path() / "other" / "Engine.log").size(), 2u);
    log.logger->SetLogDirectory(FromPath(log.folder.Path() / "missing" / "deeper"));
    log.WriteLines(1);
    EXPECT_FALSE(std::filesystem::exists(log.folder.Path() / "missing"));

    // What could not be opened is tried again with the next line.
    std::filesystem::create_directory(log.folder.Path() / "missing");
    log.WriteLines(1);
    EXPECT_EQ(ReadLines(log.folder.Path() / "missing" / "deeper" / "Engine.log").size(), 1u);

    // Without a folder it is one of the product's name in the current directory.
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(log.folder.Path());
    const Vx::FileLogger inPlace(true, "Info"_w, "Product"_w, "Engine"_w, ""_w, 12, false, log.clock);
    std::filesystem::current_path(before);
    EXPECT_TRUE(std::filesystem::exists(log.folder.Path() / "Product" / "Engine.log"));
}

TEST(FileLogger, LosesOnlyTheLinesThatCannotBeWritten) {
    LogFixture log;
    std::filesystem::remove(log.live);
    std::error_code error;
    std::filesystem::create_symlink("/dev/full", log.live, error);
    if (error || kPathSeparator == '\\') {
        GTEST_SKIP() << "this system has no file that is always full";
    }
    log.WriteLines(2);
    std::filesystem::remove(log.live);
    log.Write('E', "after");
    ASSERT_EQ(ReadLines(log.live).size(), 1u);
    EXPECT_TRUE(ReadLines(log.live)[0].ends_with("after"));
}

// Opening the file and the checks of a first line take memory, which fails at each request in turn.
TEST(FileLogger, OutlivesEveryFailureOfMemory) {
    bool failed = true;
    std::size_t granted = 0;
    for (; failed; ++granted) {
        LogFixture log;
        WriteFile(log.properties, "size=1000");
        const CStringW message = "line"_w;
        {
            const LimitedHeap heap(granted);
            log.logger->Log("A.cpp"_w, 1, "F"_w, 'E', message);
            failed = heap.Failed();
        }
        log.Write('E', "after");
        const auto lines = log.Lines();
        ASSERT_EQ(lines.size(), failed ? 1u : 2u) << granted;
        EXPECT_TRUE(lines.back().ends_with("after")) << granted;
    }
    EXPECT_GT(granted, 3u);
}

TEST(FileLogger, LosesNoLineAndTearsNoneWhenManyThreadsWriteAndTheFileIsPutAside) {
    constexpr int kThreads = 4;
    constexpr int kLines = 2000;
    const auto message = [](int thread, int line) {
        return std::to_string(thread) + ":" + std::to_string(line)
               + std::string(static_cast<std::size_t>(line % 300), '.');
    };
    const FakeClock clock({2024, 5, 0, 6, 10, 0, 0, 0}, 1);  // every archive gets a stamp of its own
    LogFixture log("Verbose", 12, &clock);
    WriteFile(log.properties, "size=30\r\n");
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([&log, &message, thread] {
            for (int line = 0; line < kLines; ++line) {
                log.Write("DEIW"[thread], message(thread, line));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    std::vector<std::filesystem::path> files = log.Archives();
    EXPECT_GT(files.size(), 10u);
    files.push_back(log.live);
    std::map<std::string, int> seen;  // "LABEL message"
    for (const auto& file : files) {
        for (const std::string& line : ReadLines(file)) {
            const std::size_t label = line.find("[group-Scanner] ");
            const std::size_t text = line.find(" Source.cpp (77)] [log] - Function - ");
            if (line.starts_with("[log] 06.05.2024 1") && label == 30 && text != std::string::npos) {
                ++seen[line.substr(46, 5) + line.substr(text + 37)];
            } else {
                EXPECT_EQ(line.find("[log]"), std::string::npos) << "torn: " << line;
            }
        }
    }
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(kThreads * kLines));
    constexpr const char* kLabels[] = {"DEBUG", "ERROR", "INFO ", "WARN "};
    for (int thread = 0; thread < kThreads; ++thread) {
        for (int line = 0; line < kLines; ++line) {
            EXPECT_EQ(seen[kLabels[thread] + message(thread, line)], 1) << thread << ":" << line;
        }
    }
}

TEST(PlatformInfo, NamesTheSystemsOfItsTable) {
    const struct {
        DWORD platform, major, minor, build;
        BYTE product;
        WORD suites;
        bool extended;
        const char* expected;
    } rows[] = {
        {2, 3, 51, 1057, 1, 0, true, "Windows NT 3.51 3.51 (Build 1057) SP, Service Pack Version: 6.1"},
        {2, 4, 0, 1381, 1, 0, false, "Windows NT 4.0 4.0 (Build 1381) SP"},
        {2, 5, 0, 2195, 3, 0, true, "Windows 2000 Server 5.0 (Build 2195) SP, Service Pack Version: 6.1"},
        {2, 5, 0, 2195, 2, 0, true, "Windows 2000 5.0 (Build 2195) SP, Service Pack Version: 6.1"},
        {2, 5, 0, 2195, 3, 0, false, "Windows 2000 5.0 (Build 2195) SP"},
        {2, 5, 1, 2600, 3, 0, true, "Windows .NET Server 5.1 (Build 2600) SP, Service Pack Version: 6.1"},
        {2, 5, 1, 2600, 1, 0x300, true, "Windows XP Home 5.1 (Build 2600) SP, Service Pack Version: 6.1"},
        {2, 5, 1, 2600, 1, 0x100, true, "Windows XP Professional 5.1 (Build 2600) SP, Service Pack Version: 6.1"},
        {2, 10, 0, 0x54A64, 1, 0, true, "Windows 10.0 (Build 19044) SP, Service Pack Version: 6.1"},
        {1, 4, 0, 950, 0, 0, false, "Windows 95 4.0 (Build 950) SP"},
        {1, 4, 10, 0x040A08AE, 0, 0, false, "Windows 98 4.10 (Build 2222) SP"},
        {1, 4, 90, 3000, 0, 0, false, "Windows Me 4.90 (Build 3000) SP"},
        {0, 3, 10, 0, 0, 0, false, "Win32s on Windows 3.1 3.10 (Build 0) SP"},
        {4, 6, 1, 115, 1, 0, true, "Windows 6.1 (Build 115) SP, Service Pack Version: 6.1"},
    };
    for (const auto& row : rows) {
        OSVERSIONINFOEXW version = {};
        version.dwPlatformId = row.platform;
        version.dwMajorVersion = row.major;
        version.dwMinorVersion = row.minor;
        version.dwBuildNumber = row.build;
        version.wProductType = row.product;
        version.wSuiteMask = row.suites;
        version.wServicePackMajor = 6;
        version.wServicePackMinor = 1;
        version.szCSDVersion[0] = 'S';
        version.szCSDVersion[1] = 'P';
        EXPECT_EQ(Ascii(Vx::DescribePlatform(version, row.extended)), std::string("OS Version: ") + row.expected);
    }
}

}  // namespace
