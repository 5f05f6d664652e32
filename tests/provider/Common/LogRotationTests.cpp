#include "provider/Common/FileLogger.h"
#include "provider/Common/LogFiles.h"
#include "tests/provider/Common/LogTestSupport.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

namespace {

namespace fs = std::filesystem;

void GrowTo(const fs::path& file, std::uintmax_t size) {
    std::ofstream(file, std::ios::binary | std::ios::app) << std::string(size - fs::file_size(file), '.');
}

TEST(LogRotation, PutsTheFileAsideAtExactlyItsLimit) {
    const struct {
        const char* name;
        const char* properties;
        std::uintmax_t limit;
    } limits[] = {
        {"without properties", "", 5'242'880},
        {"by properties", "size=10\r\n", 10'000},
        {"a kilobyte of 1000 bytes", "size=1000\n", 1'000'000},
        {"zero is the default", "size=0", 5'242'880},
        {"so is no number", "size=many", 5'242'880},
    };
    for (const auto& row : limits) {
        for (const int beyond : {-1, 0, 1}) {
            SCOPED_TRACE(testing::Message() << row.name << " " << beyond);
            LogFixture log;
            WriteFile(log.properties, row.properties);
            GrowTo(log.live, row.limit + static_cast<std::uintmax_t>(beyond));
            log.Write('E', "first line");
            if (beyond < 0) {
                EXPECT_TRUE(log.Archives().empty());
            } else {
                const fs::path archive = log.logs / "Engine-[2024-02-29@13h05m09s].log";
                EXPECT_EQ(log.Archives(), std::vector{archive});
                EXPECT_EQ(fs::file_size(archive), row.limit + static_cast<std::uintmax_t>(beyond));
                ASSERT_EQ(ReadLines(log.live).size(), 1u) << "the line went to a new file, without a header";
                EXPECT_TRUE(ReadLines(log.live)[0].ends_with("first line"));
            }
        }
    }
}

TEST(LogRotation, LooksAtTheSizeEvery256Lines) {
    LogFixture log;
    WriteFile(log.properties, "size=1");
    log.WriteLines(256);
    EXPECT_TRUE(log.Archives().empty());
    EXPECT_EQ(log.Lines().size(), 256u);
    log.WriteLines(1);
    ASSERT_EQ(log.Archives().size(), 1u);
    EXPECT_EQ(ReadLines(log.Archives()[0]).size(), 3u + 256u);
    EXPECT_EQ(ReadLines(log.live).size(), 1u);
}

TEST(LogRotation, ReadsThePropertiesEvery4096Lines) {
    const FakeClock clock({2024, 5, 0, 6, 1, 0, 0, 0}, 1);
    LogFixture log("Verbose", 12, &clock);
    log.WriteLines(4096);
    EXPECT_TRUE(log.Archives().empty());
    WriteFile(log.properties, "# limits\r\nsize=1\r\n");
    log.WriteLines(4096);
    EXPECT_EQ(log.Archives().size(), 16u) << "once at each of 16 looks";
    fs::remove(log.properties);
    log.WriteLines(257);
    EXPECT_EQ(log.Archives().size(), 18u) << "a missing file changes nothing";
    WriteFile(log.properties, "size=0");
    log.WriteLines(4096 - 257 + 1024);
    EXPECT_EQ(log.Archives().size(), 32u) << "the default from line 12,289 on";
}

// The end of the day keeps the seconds of the moment when the file was opened: here 23:59:09.999.
TEST(LogRotation, PutsTheFileAsideOnceItsDayIsOver) {
    const struct {
        const char* name;
        SYSTEMTIME check;
        const char* archive;  // null when the file stays
    } rows[] = {
        {"last moment", {2024, 2, 0, 29, 23, 59, 9, 999}, nullptr},
        {"before midnight", {2024, 2, 0, 29, 23, 59, 10, 0}, "Engine-[2024-02-28@23h59m10s].log"},
        {"after midnight", {2024, 3, 0, 1, 0, 10, 33, 5}, "Engine-[2024-02-29@23h59m33s].log"},
        {"into the next year", {2025, 1, 0, 1, 8, 0, 1, 0}, "Engine-[2024-12-31@23h59m01s].log"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        LogFixture log;
        log.WriteLines(1);
        log.clock.Set(row.check);
        log.WriteLines(255);
        EXPECT_TRUE(log.Archives().empty()) << "between looks";
        log.WriteLines(1);
        if (row.archive == nullptr) {
            EXPECT_TRUE(log.Archives().empty());
        } else {
            EXPECT_EQ(log.Archives(), std::vector{log.logs / row.archive});
        }
        log.WriteLines(256);
        EXPECT_LE(log.Archives().size(), 1u) << "a new file has a new day";
    }
}

TEST(LogRotation, TriesForTenSecondsToMoveTheFileAndThenGoesOnWithIt) {
    LogFixture log;
    const fs::path taken = log.logs / "Engine-[2024-02-29@13h05m09s].log";
    WriteFile(taken, "older archive");
    WriteFile(log.properties, "size=1");
    GrowTo(log.live, 1000);
    log.Write('E', "first line");
    EXPECT_EQ(log.clock.Paused(), 100u * 100u);
    EXPECT_EQ(ReadFile(taken), "older archive");
    EXPECT_TRUE(ReadLines(log.live).back().ends_with("first line"));
    log.WriteLines(255);
    log.clock.Set({2024, 2, 0, 29, 14, 0, 0, 0});
    log.WriteLines(1);
    EXPECT_TRUE(fs::exists(log.logs / "Engine-[2024-02-29@14h00m00s].log"));
    EXPECT_EQ(log.clock.Paused(), 100u * 100u);
}

TEST(LogRotation, DeletesWhatBeginsWithItsNameAndIsTooOld) {
    const struct {
        const char* name;
        int ageInMinutes;
        bool stays;
    } rows[] = {
        {"Engine-[2020-01-01@00h00m00s].log", 12 * 60 + 1, false},
        {"Engine-[2020-01-02@00h00m00s].log", 12 * 60 - 1, true},
        {"Engine", 13 * 60, false},
        {"Engine.log.bak", 24 * 60 * 400, false},
        {"EngineRoom.txt", 13 * 60, false},
        {"engine.txt", 13 * 60, true},
        {"Engin.log", 13 * 60, true},
        {"MyEngine.log", 13 * 60, true},
        {"Engine of tomorrow.log", -60, true},
        {"Engine.log", 13 * 60, true},
    };
    LogFixture log("Info", 12);
    fs::create_directory(log.logs / "Engine folder");
    for (const auto& row : rows) {
        WriteFile(log.logs / row.name, "x");
    }
    for (const auto& row : rows) {
        fs::last_write_time(log.logs / row.name,
                            fs::file_time_type::clock::now() - std::chrono::minutes(row.ageInMinutes));
    }
    const auto longAgo = fs::file_time_type::clock::now() - std::chrono::hours(100);
    std::error_code ignored;
    fs::last_write_time(log.logs / "Engine folder", longAgo, ignored);

    log.logger->SetLogDirectory(FromPath(log.logs));
    for (const auto& row : rows) {
        EXPECT_EQ(fs::exists(log.logs / row.name), row.stays) << row.name;
    }
    EXPECT_TRUE(fs::exists(log.logs / "Engine folder"));

    // A path beyond 257 characters is left alone; "/." repeated makes one that names the same folder.
    WriteFile(log.logs / "Engine old", "x");
    fs::last_write_time(log.logs / "Engine old", longAgo);
    CStringW longer = FromPath(log.logs);
    while (longer.size() <= 257) {
        longer = Vx::LogFiles::Join(longer, "."_w);
    }
    Vx::LogFiles::CleanupOldLogFiles("Engine"_w, longer, "Engine.log"_w, 12);
    EXPECT_TRUE(fs::exists(log.logs / "Engine old"));
    Vx::LogFiles::CleanupOldLogFiles("Engine"_w, FromPath(log.logs), "Engine.log"_w, 12);
    EXPECT_FALSE(fs::exists(log.logs / "Engine old"));
}

TEST(LogRotation, TakesTheFirstSizeOfTheProperties) {
    const std::string filler(150, '#');
    const struct {
        const char* name;
        std::string text;
        std::optional<int> expected;
    } rows[] = {
        {"empty", "", std::nullopt},
        {"other keys", "level=4\r\nSize=3\r\n size=4\r\n", std::nullopt},
        {"first one counts", "x\r\nsize=7\r\nsize=8\r\n", 7},
        {"empty lines before", "\n\n\nsize=7", 7},
        {"empty value", "size=\n5", 0},
        {"words", "size=big", 0},
        {"number and words", "size= \t12 MB", 12},
        {"signs", "size=-3", -3},
        {"plus", "size=+3", 3},
        {"beyond an int", "size=99999999999999999999", 2147483647},
        {"beyond, negative", "size=-99999999999999999999", -2147483647 - 1},
        {"behind a long line", filler + "\nsize=9\n", 9},
        {"the rest of a long line is no line", filler.substr(0, 100) + "size=5\nsize=6", 6},
        {"a line of just 100", filler.substr(0, 100) + "\nsize=6", 6},
        {"a key at the cut", "size=" + std::string(94, ' ') + "12", 1},
    };
    TemporaryFolder folder;
    for (const auto& row : rows) {
        WriteFile(folder.Path() / "logs.properties", row.text);
        EXPECT_EQ(Vx::LogFiles::ReadSizeProperty(FromPath(folder.Path() / "logs.properties")), row.expected)
            << row.name;
    }
    EXPECT_EQ(Vx::LogFiles::ReadSizeProperty(FromPath(folder.Path() / "missing")), std::nullopt);
    EXPECT_EQ(Vx::LogFiles::ReadSizeProperty(FromPath(folder.Path())), std::nullopt);
}

}  // namespace
