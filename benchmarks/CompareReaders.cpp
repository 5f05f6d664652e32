// Indexes one large mailbox file with vxhost, and reads it with pffexport and readpst, in turn and in one run. Prints what
// each took: processor time, wall time, peak memory, items a second, and the ratios. The three do different things:
// vxhost writes one line for each item with all its fields and its text; the other two write a file or several for each
// item, attachments among them. Our engine alone, which only reads, stands beside them. Linux.
//
//     compare_readers [--items N] [--bytes N] [--runs N] [--limit SECONDS] [--folder PATH]
#include "localmapi/pst/messaging/Store.h"
#include "testing/mailbox_builder/LargeMailbox.h"
#include "tests/localmapi/pst/support/ReadEverything.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Usage {
    double cpu = 0;     // seconds
    double wall = 0;    // seconds
    double memory = 0;  // MiB at the peak
};

double Seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

enum class Outcome { Done, Failed, TooSlow };

// Runs `body` in a process of its own, which nobody hears and which may take so many seconds of processor time, and
// gives what it used.
template <class Body>
Outcome Measure(const Body& body, unsigned limit, Usage& usage) {
    const auto start = std::chrono::steady_clock::now();
    std::fflush(nullptr);
    const pid_t child = ::fork();
    if (child == 0) {
        const int nowhere = ::open("/dev/null", O_WRONLY);
        ::dup2(nowhere, STDOUT_FILENO);
        ::dup2(nowhere, STDERR_FILENO);
        const rlimit most{limit, limit};
        ::setrlimit(RLIMIT_CPU, &most);
        ::_exit(body());
    }
    int status = 0;
    rusage used{};
    if (child < 0 || ::wait4(child, &status, 0, &used) != child) {
        return Outcome::Failed;
    }
    usage.cpu = Seconds(used.ru_utime) + Seconds(used.ru_stime);
    usage.wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    usage.memory = static_cast<double>(used.ru_maxrss) / 1024;
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        return Outcome::Done;
    }
    // The signal comes when whole seconds are over; some programs end themselves when they hear it.
    return usage.cpu >= limit - 1.0 ? Outcome::TooSlow : Outcome::Failed;
}

int Run(const std::vector<std::string>& command) {
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    ::execvp(arguments[0], arguments.data());
    return 127;
}

int ReadWithOurs(const std::filesystem::path& file) {
    const auto store = localmapi::pst::Store::Open(file, {});
    return store && localmapi::testing::ReadEverything(**store).errors == 0 ? 0 : 1;
}

Usage Median(std::vector<Usage> runs) {
    auto middle = [&runs](double Usage::*field) {
        std::sort(runs.begin(), runs.end(), [field](const Usage& a, const Usage& b) { return a.*field < b.*field; });
        return runs[runs.size() / 2].*field;
    };
    return {middle(&Usage::cpu), middle(&Usage::wall), middle(&Usage::memory)};
}

// The median of the runs, unless one of them fails. The output folder is emptied before each.
template <class Body>
Outcome MeasureRuns(int runs, unsigned limit, const std::filesystem::path& output, const Body& body, Usage& median) {
    std::vector<Usage> all;
    for (int run = 0; run < runs; ++run) {
        std::filesystem::remove_all(output);
        std::filesystem::create_directories(output);
        Usage usage;
        const Outcome outcome = Measure(body, limit, usage);
        if (outcome != Outcome::Done) {
            return outcome;
        }
        all.push_back(usage);
    }
    std::filesystem::remove_all(output);
    median = Median(std::move(all));
    return Outcome::Done;
}

struct Contender {
    std::string name;
    std::function<int()> body;  // in a process of its own; 0 when it worked
};

void Print(const std::string& name, const Usage& usage, const Usage& first, std::uint64_t items) {
    std::printf("%-16s %9.2f s %9.2f s %9.1f MiB %9.0f   %6.2f x %6.2f x %6.2f x\n", name.c_str(), usage.cpu,
                usage.wall, usage.memory, static_cast<double>(items) / usage.wall, usage.cpu / first.cpu,
                usage.wall / first.wall, usage.memory / first.memory);
    std::fflush(stdout);
}

// Each in turn; the ratios are to the first, which has to work.
bool Compare(const std::vector<Contender>& contenders, int runs, unsigned limit, const std::filesystem::path& output,
             std::uint64_t items) {
    std::printf("%-16s %11s %11s %13s %9s   %8s %8s %8s\n", "", "cpu", "wall", "peak memory", "items/s", "cpu", "wall",
                "memory");
    Usage first;
    for (const Contender& contender : contenders) {
        Usage usage;
        const Outcome outcome = MeasureRuns(runs, limit, output, contender.body, usage);
        if (outcome == Outcome::Done) {
            first = first.cpu == 0 ? usage : first;
            Print(contender.name, usage, first, items);
        } else if (outcome == Outcome::TooSlow) {
            std::printf("%-16s was stopped after %u s of processor time\n", contender.name.c_str(), limit);
        } else {
            std::printf("%-16s failed, or is not installed\n", contender.name.c_str());
        }
        if (first.cpu == 0) {
            return false;
        }
    }
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Compares readers of mailbox files on one large file");
    mailbox_builder::LargeMailboxOptions options;
    std::filesystem::path folder = std::filesystem::temp_directory_path() / "vx-compare-readers";
    int runs = 1;
    unsigned limit = 600;
    app.add_option("--items", options.items, "items of the file")->capture_default_str();
    app.add_option("--bytes", options.bytes, "size of the file")->transform(CLI::AsSizeValue(false));
    app.add_option("--runs", runs, "runs of each reader; the median counts")->check(CLI::Range(1, 99));
    app.add_option("--limit", limit, "seconds of processor time after which a reader is stopped")
        ->capture_default_str();
    app.add_option("--folder", folder, "where the file and the output go; emptied");
    CLI11_PARSE(app, argc, argv);

    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    const std::filesystem::path file = folder / "large.pst";
    const auto facts = mailbox_builder::WriteLargeMailbox(file, options);
    if (!facts) {
        std::fprintf(stderr, "%s: %s\n", file.c_str(), facts.Failure().text.c_str());
        return 1;
    }
    std::printf("%llu items, %llu attachments, %.1f MiB\n", static_cast<unsigned long long>(facts->items),
                static_cast<unsigned long long>(facts->attachments), static_cast<double>(facts->fileBytes) / (1 << 20));
    const std::filesystem::path output = folder / "output";
    ::setenv("VX_HOME", (folder / "home").c_str(), 1);
    const std::vector<Contender> contenders = {
        {"vxhost index",
         [&] {
             return Run({VX_HOST_PROGRAM, "index", file, "-o", output / "index.ndjson"});
         }},
        {"our engine", [&] { return ReadWithOurs(file); }},
        {"readpst",
         [&] {
             return Run({"readpst", "-j", "0", "-q", "-e", "-o", output, file});
         }},
        {"pffexport",
         [&] {
             return Run({"pffexport", "-q", "-t", output / "export", file});
         }},
    };
    const bool worked = Compare(contenders, runs, limit, output, facts->items);
    std::filesystem::remove_all(folder);
    return worked ? 0 : 1;
}
