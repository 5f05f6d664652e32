// What a line of the log costs: written and flushed, muted by the level, and muted before it is even formatted; one
// thread and several. The file is an ordinary one in the temporary folder.
#include "platform/Paths.h"
#include "provider/Common/FileLogger.h"
#include "provider/Common/ScopedEntryExitLogger.h"

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>

namespace {

constexpr auto& kSourcePath = "benchmarks\\LogBenchmark.cpp"_w;

// The process's log at a level, for the benchmark's run; made and taken away by its first thread.
class BenchmarkLog {
public:
    BenchmarkLog(const benchmark::State& state, const WCHAR* level) : m_isOwner(state.thread_index() == 0) {
        if (m_isOwner) {
            // No archives: two of one second would want the same name, and the second one wait for it in vain.
            std::filesystem::create_directories(Folder());
            std::ofstream(Folder() / "logs.properties") << "size=2000000";
            Vx::LoggerInit(true, level, "Benchmark"_w, "Benchmark"_w, FromPath(Folder() / "logs"), 12, false);
        }
    }
    BenchmarkLog(const BenchmarkLog&) = delete;
    BenchmarkLog& operator=(const BenchmarkLog&) = delete;
    ~BenchmarkLog() {
        if (m_isOwner) {
            const std::unique_ptr<Vx::FileLogger> owned(Vx::g_pLogger.exchange(nullptr));
            std::error_code ignored;
            std::filesystem::remove_all(Folder(), ignored);
        }
    }

private:
    static const std::filesystem::path& Folder() {
        static const auto folder =
            std::filesystem::temp_directory_path() / ("vx-log-" + std::to_string(std::random_device()()));
        return folder;
    }

    bool m_isOwner;
};

void WriteLines(benchmark::State& state, const WCHAR* level, char letter) {
    const BenchmarkLog log(state, level);
    for (auto _ : state) {
        VX_LOG(letter) << Vx::LogMsg("GetProfileTable failed (%x), %s"_w, 0x8004010F, "profile name"_w);
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK_CAPTURE(WriteLines, ErrorAtVerbose, "Verbose"_w, 'E')->ThreadRange(1, 4)->UseRealTime();
BENCHMARK_CAPTURE(WriteLines, WarningAtVerbose, "Verbose"_w, 'W');
BENCHMARK_CAPTURE(WriteLines, InfoAtVerbose, "Verbose"_w, 'I');
BENCHMARK_CAPTURE(WriteLines, DebugAtVerbose, "Verbose"_w, 'D');
BENCHMARK_CAPTURE(WriteLines, WarningMutedAtError, "Error"_w, 'W');
BENCHMARK_CAPTURE(WriteLines, DebugMutedAtInfo, "Info"_w, 'D')->ThreadRange(1, 4)->UseRealTime();
BENCHMARK_CAPTURE(WriteLines, ErrorMutedAtOff, "Off"_w, 'E');

void MutedDebugOnly(benchmark::State& state) {
    const BenchmarkLog log(state, "Info"_w);
    for (auto _ : state) {
        VX_LOG('D') << Vx::LogMsgDebugOnly("GetProfileTable failed (%x), %s"_w, 0x8004010F, "profile name"_w);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(MutedDebugOnly);

void MutedScopeTrace(benchmark::State& state) {
    const BenchmarkLog log(state, "Info"_w);
    for (auto _ : state) {
        VX_SCOPE_TRACE_EX(trace);
        trace.ok();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(MutedScopeTrace);

void Format(benchmark::State& state) {
    WCHAR text[200];
    for (auto _ : state) {
        Vx::Format(text, "GetProfileTable failed (%x), %s, %5d of %I64d"_w, 0x8004010F, "profile name"_w, 77,
                   1LL << 40);
        benchmark::DoNotOptimize(text);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(Format);

}  // namespace
