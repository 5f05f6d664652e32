#include "platform/ResultCodes.h"
#include "provider/Common/Log.h"
#include "provider/Common/ScopedEntryExitLogger.h"
#include "tests/provider/Common/LogTestSupport.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

constexpr auto& kSourcePath = "Common\\ProcessLogTests.cpp"_w;

using Lines = std::vector<std::string>;

// A traced scope that `leave` tells how it ends, if it does not throw.
template <typename LeaveScope>
void Traced(LeaveScope leave) {
    VX_SCOPE_TRACE_EX(trace);
    leave(trace);
}

TEST(ScopeTrace, TellsHowAScopeWasLeft) {
    using Trace = Vx::ScopedEntryExitLoggerEx;
    const struct {
        const char* name;
        void (*leave)(Trace&);
        const char* exitLine;
    } rows[] = {
        {"nothing said", [](Trace&) {}, "INFO Traced: Exit  exception"},
        {"an exception", [](Trace&) { throw std::runtime_error("leaves the scope"); }, "INFO Traced: Exit  exception"},
        {"ok", [](Trace& trace) { trace.ok(); }, "DEBUG Traced: Exit"},
        {"S_OK", [](Trace& trace) { trace.end(S_OK); }, "DEBUG Traced: Exit"},
        {"S_FALSE", [](Trace& trace) { trace.end(S_FALSE); }, "DEBUG Traced: Exit HR=1"},
        {"E_FAIL", [](Trace& trace) { trace.end(E_FAIL); }, "ERROR Traced: Exit HR=-2147467259"},
        {"text", [](Trace& trace) { trace.end("100%s done"_w); }, "INFO Traced: Exit 100%s done"},
        {"result, then text", [](Trace& trace) { trace.end(E_FAIL), trace.end("done"_w); }, "INFO Traced: Exit done"},
        {"text, then result", [](Trace& trace) { trace.end("done"_w), trace.end(E_FAIL); },
         "ERROR Traced: Exit HR=-2147467259"},
        {"result, then ok", [](Trace& trace) { trace.end(E_FAIL), trace.ok(); }, "DEBUG Traced: Exit"},
        {"a null text", [](Trace& trace) { trace.end(nullptr); }, "DEBUG Traced: Exit"},
    };
    for (const auto& row : rows) {
        InstalledLog log;
        try {
            Traced(row.leave);
        } catch (const std::runtime_error&) {
            EXPECT_STREQ(row.name, "an exception");
        }
        EXPECT_EQ(log.Lines(), (Lines{"DEBUG Traced: Enter", row.exitLine})) << row.name;
    }

    InstalledLog log;
    {
        VX_SCOPE_TRACE(trace);
        VX_LOG('W') << "inside"_w;
    }
    EXPECT_EQ(log.Lines(), (Lines{"DEBUG TestBody: Enter", "WARN TestBody: inside", "DEBUG TestBody: Exit"}));
}

TEST(ProcessLog, IsTheFirstOneAskedFor) {
    TemporaryFolder folder;
    CleanLogState state;
    const SYSTEMTIME time = kLeapDay;
    VX_LOG('E') << "before"_w;
    Vx::Log("A.cpp"_w, 1, "F"_w, 'E', &time, 1, "before"_w);
    EXPECT_EQ(Vx::GetLogLevel(), Vx::LogLevel::Off);
    EXPECT_EQ(Vx::GetLogFilePath(), CStringW());
    EXPECT_FALSE(Vx::SetLogLevel(Vx::LogLevel::Verbose));

    Vx::LoggerInit(true, "Error"_w, "Product"_w, "First"_w, FromPath(folder.Path()), 12, false);
    Vx::LoggerInit(true, "Verbose"_w, "Product"_w, "Second"_w, FromPath(folder.Path()), 12, false);
    EXPECT_EQ(ToPath(Vx::GetLogFilePath()), folder.Path() / "First.log");
    EXPECT_FALSE(std::filesystem::exists(folder.Path() / "Second.log"));
    EXPECT_EQ(Vx::GetLogLevel(), Vx::LogLevel::Error);

    // A raised level brings the debug lines, but the texts made for debugging stay away.
    EXPECT_TRUE(Vx::SetLogLevel(Vx::LogLevel::Verbose));
    VX_LOG('D') << Vx::LogMsgDebugOnly("kept %d"_w, 1);
    VX_LOG('D') << Vx::LogMsg("shown %d"_w, 2);
    Vx::Log("A.cpp"_w, 1, "F"_w, 'E', &time, 1, "as given"_w);
    const Lines lines = ReadLines(folder.Path() / "First.log");
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_TRUE(lines[3].ends_with(" - TestBody - ")) << lines[3];
    EXPECT_TRUE(lines[4].ends_with(" - TestBody - shown 2")) << lines[4];
    EXPECT_TRUE(lines[5].starts_with("[log] 29.02.2024 13:05:09,042 ")) << lines[5];
}

TEST(ProcessLog, IsSilentFromTheShutdownOn) {
    InstalledLog log;
    const SYSTEMTIME time = kLeapDay;
    VX_LOG('E') << "before"_w;
    Vx::SetAppShuttingDown(false);
    VX_LOG('E') << "after"_w;
    Vx::Log("A.cpp"_w, 1, "F"_w, 'E', &time, 1, "after"_w);
    { VX_SCOPE_TRACE_EX(trace); }
    EXPECT_EQ(log.Lines(), Lines{"ERROR TestBody: before"});
}

}  // namespace
