// Compound files: writing and reading, as one large stream and as many small ones, in bytes per second of contents; and
// reading one file beside the gsf tool, where that is installed, as a ratio of times.
#include "platform/Storage.h"
#include "platform/WideText.h"

#include <benchmark/benchmark.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

namespace {

constexpr DWORD kExclusive = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
constexpr DWORD kReadOnly = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr std::int64_t kLargeBytes = std::int64_t{256} << 20U;
constexpr std::int64_t kSmallStreams = 20'000;
constexpr std::int64_t kSmallBytes = 600;  // what a short text property has
constexpr ULONG kPieceBytes = 64 * 1024;

void Require(HRESULT hr, const char* what) {
    if (FAILED(hr)) {
        std::fprintf(stderr, "%s: %08X\n", what, static_cast<unsigned>(hr));
        std::abort();
    }
}

// A file of the benchmark's own, gone with the program.
class BenchmarkFile {
public:
    explicit BenchmarkFile(const char* name)
        : m_path(std::filesystem::temp_directory_path() / (std::string(name) + std::to_string(getpid()))) {}
    BenchmarkFile(const BenchmarkFile&) = delete;
    BenchmarkFile& operator=(const BenchmarkFile&) = delete;
    ~BenchmarkFile() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    const std::filesystem::path& Path() const { return m_path; }
    CStringW Name() const { return m_path.u16string(); }

private:
    std::filesystem::path m_path;
};

CStringW Numbered(std::int64_t number) {
    const std::string text = "__substg1.0_" + std::to_string(number);
    return {text.begin(), text.end()};
}

void WriteStream(IStorage* storage, const CStringW& name, std::int64_t size) {
    static const std::vector<char> s_piece(kPieceBytes, 'x');
    IStream* stream = nullptr;
    Require(storage->CreateStream(name.c_str(), kExclusive, 0, 0, &stream), "CreateStream");
    for (std::int64_t left = size; left > 0;) {
        const auto count = static_cast<ULONG>(std::min<std::int64_t>(left, kPieceBytes));
        Require(stream->Write(s_piece.data(), count, nullptr), "Write");
        left -= count;
    }
    stream->Release();
}

std::size_t ReadStream(IStorage* storage, const CStringW& name) {
    static std::vector<char> s_piece(kPieceBytes);
    IStream* stream = nullptr;
    Require(storage->OpenStream(name.c_str(), nullptr, kReadOnly, 0, &stream), "OpenStream");
    std::size_t total = 0;
    for (ULONG got = 1; got > 0; total += got) {
        Require(stream->Read(s_piece.data(), kPieceBytes, &got), "Read");
    }
    stream->Release();
    return total;
}

// Writes and commits, without waiting for the disk: that would measure the disk.
template <class Fill>
void WriteFile(const BenchmarkFile& file, Fill&& fill) {
    IStorage* root = nullptr;
    Require(StgCreateDocfile(file.Name().c_str(), kExclusive | STGM_TRANSACTED | STGM_CREATE, 0, &root), "create");
    fill(root);
    Require(root->Commit(STGC_DANGEROUSLYCOMMITMERELYTODISKCACHE), "Commit");
    root->Release();
}

IStorage* OpenFile(const BenchmarkFile& file) {
    IStorage* root = nullptr;
    Require(StgOpenStorage(file.Name().c_str(), nullptr, STGM_SHARE_DENY_WRITE, nullptr, 0, &root), "open");
    return root;
}

void FillLarge(IStorage* root) {
    WriteStream(root, "large"_w, kLargeBytes);
}

void FillSmall(IStorage* root) {
    for (std::int64_t i = 0; i < kSmallStreams; ++i) {
        WriteStream(root, Numbered(i), kSmallBytes);
    }
}

void WriteOneLargeStream(benchmark::State& state) {
    const BenchmarkFile file("vx-bench-large-");
    for (auto _ : state) {
        WriteFile(file, FillLarge);
    }
    state.SetBytesProcessed(state.iterations() * kLargeBytes);
}
BENCHMARK(WriteOneLargeStream)->Unit(benchmark::kMillisecond);

void ReadOneLargeStream(benchmark::State& state) {
    const BenchmarkFile file("vx-bench-large-");
    WriteFile(file, FillLarge);
    for (auto _ : state) {
        IStorage* const root = OpenFile(file);
        benchmark::DoNotOptimize(ReadStream(root, "large"_w));
        root->Release();
    }
    state.SetBytesProcessed(state.iterations() * kLargeBytes);
}
BENCHMARK(ReadOneLargeStream)->Unit(benchmark::kMillisecond);

void WriteManySmallStreams(benchmark::State& state) {
    const BenchmarkFile file("vx-bench-small-");
    for (auto _ : state) {
        WriteFile(file, FillSmall);
    }
    state.SetBytesProcessed(state.iterations() * kSmallStreams * kSmallBytes);
    state.SetItemsProcessed(state.iterations() * kSmallStreams);
}
BENCHMARK(WriteManySmallStreams)->Unit(benchmark::kMillisecond);

void ReadManySmallStreams(benchmark::State& state) {
    const BenchmarkFile file("vx-bench-small-");
    WriteFile(file, FillSmall);
    for (auto _ : state) {
        IStorage* const root = OpenFile(file);
        for (std::int64_t i = 0; i < kSmallStreams; ++i) {
            benchmark::DoNotOptimize(ReadStream(root, Numbered(i)));
        }
        root->Release();
    }
    state.SetBytesProcessed(state.iterations() * kSmallStreams * kSmallBytes);
    state.SetItemsProcessed(state.iterations() * kSmallStreams);
}
BENCHMARK(ReadManySmallStreams)->Unit(benchmark::kMillisecond);

double Seconds(const std::chrono::steady_clock::time_point& since) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// What the gsf tool needs for its answer, its start included; negative where it is not installed.
double GsfSeconds(const std::string& arguments) {
    const auto start = std::chrono::steady_clock::now();
    const int status = std::system(("gsf " + arguments + " >/dev/null 2>&1").c_str());
    return status == 0 ? Seconds(start) : -1.0;
}

void CompareWithGsf(benchmark::State& state, void (*fill)(IStorage*), const char* verb, const char* member,
                    void (*ours)(IStorage*)) {
    const BenchmarkFile file("vx-bench-gsf-");
    WriteFile(file, fill);
    double own = 0;
    double gsf = 0;
    for (auto _ : state) {
        const double seconds = GsfSeconds(std::string(verb) + " " + file.Path().string() + " " + member);
        if (seconds < 0) {
            state.SkipWithError("the gsf tool is not installed");
            return;
        }
        gsf += seconds;
        const auto start = std::chrono::steady_clock::now();
        IStorage* const root = OpenFile(file);
        ours(root);
        root->Release();
        own += Seconds(start);
    }
    state.counters["gsf_time_over_ours"] = gsf / own;
    state.SetLabel("gsf's time includes the start of its process");
}

void ListAll(IStorage* root) {
    IEnumSTATSTG* enumerator = nullptr;
    Require(root->EnumElements(0, nullptr, 0, &enumerator), "EnumElements");
    while (enumerator->Skip(1) == S_OK) {
    }
    enumerator->Release();
}

BENCHMARK_CAPTURE(CompareWithGsf, read_one_large_stream, FillLarge, "cat", "large",
                  [](IStorage* root) { ReadStream(root, "large"_w); })
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);
BENCHMARK_CAPTURE(CompareWithGsf, list_many_small_streams, FillSmall, "list", "", ListAll)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(3);

}  // namespace
