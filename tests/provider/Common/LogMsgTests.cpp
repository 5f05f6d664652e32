#include "provider/Common/LogMsg.h"
#include "provider/Common/ScopedEntryExitLogger.h"
#include "tests/provider/Common/AllocationCounter.h"
#include "tests/provider/Common/LogTestSupport.h"

#include <gtest/gtest.h>

namespace {

constexpr auto& kSourcePath = "Common\\LogMsgTests.cpp"_w;

// Text that counts how often a format asks for it.
struct Asked {
    mutable int times = 0;
    // NOLINTNEXTLINE(google-explicit-constructor): texts of others convert this way.
    operator const WCHAR*() const {
        ++times;
        return "text"_w;
    }
};

TEST(LogMsg, KeepsTextsOfEveryLengthAndTakesHeapFrom199CharactersOn) {
    for (const std::size_t length : {0u, 1u, 197u, 198u, 199u, 200u, 201u, 1000u, 70000u}) {
        const CStringW text(length, WCHAR{'x'});
        const std::size_t before = AllocationsOfThisThread();
        const Vx::LogMsg formatted("%s"_w, text);
        const std::size_t afterFormat = AllocationsOfThisThread();
        const Vx::LogMsg asItIs(text);
        const std::size_t after = AllocationsOfThisThread();
        EXPECT_EQ(formatted.Text(), text) << length;
        EXPECT_EQ(asItIs.Text(), text) << length;
        EXPECT_EQ(afterFormat - before, length < 199 ? 0u : 1u) << length;
        EXPECT_EQ(after - afterFormat, length < 199 ? 0u : 1u) << length;
    }
    EXPECT_EQ(Vx::LogMsg(static_cast<const WCHAR*>(nullptr)).Text(), WideView());
    EXPECT_EQ(Vx::LogMsg("Profile 100%s"_w).Text(), WideView("Profile 100%s"_w));
}

TEST(LogMsg, SaysSoWhenMemoryDoesNotSufficeForItsText) {
    const CStringW text(1000, WCHAR{'x'});
    const LimitedHeap heap(0);
    EXPECT_EQ(Vx::LogMsg("%s"_w, text).Text(), WideView("Error in LogMsg(*)!"_w));
    EXPECT_EQ(Vx::LogMsg(text).Text(), WideView("Error in LogMsg(*)!"_w));
}

TEST(LogMsg, AWholeLineTakesNoHeapBetweenChecks) {
    InstalledLog log;
    VX_LOG('E') << Vx::LogMsg("opens the file"_w);
    const std::size_t before = AllocationsOfThisThread();
    VX_LOG('E') << Vx::LogMsg("GetProfileTable failed (%x) for %s, %hs"_w, 0x8004010F, "profile"_w, "narrow");
    { VX_SCOPE_TRACE_EX(trace); }
    EXPECT_EQ(AllocationsOfThisThread() - before, 0u);
    EXPECT_EQ(log.Lines().size(), 4u);
}

TEST(LogMsg, ADebugTextIsMadeOnlyWhenTheProcessStartedVerbose) {
    CleanLogState state;
    const Asked asked;
    EXPECT_EQ(Vx::LogMsgDebugOnly("%s"_w, asked).Text(), WideView());
    EXPECT_EQ(Vx::LogMsgDebugOnly(CStringW("plain"_w)).Text(), WideView());
    EXPECT_EQ(asked.times, 0);
    Vx::s_IsDebugLevel = true;
    EXPECT_EQ(Vx::LogMsgDebugOnly("%s"_w, asked).Text(), WideView("text"_w));
    EXPECT_EQ(Vx::LogMsgDebugOnly(CStringW("plain"_w)).Text(), WideView("plain"_w));
    EXPECT_EQ(asked.times, 1);
}

}  // namespace
