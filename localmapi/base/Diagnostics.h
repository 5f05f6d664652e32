// Where readers of damaged files tell what they found and what they did about it.
//
// A problem is either returned to the caller, as the Error of an operation, or reported here by the place that goes on
// in spite of it; never both and never neither. One thread at a time, like the reader that reports.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_set>

namespace localmapi {

// Receives one line for each problem: object, reason, and what happens next ("node 0x8042: block 0x1F4A at 0x2E400
// fails its CRC; it is read all the same"). Must not throw and must not call the reader back.
class DiagnosticSink {
public:
    virtual ~DiagnosticSink() = default;
    virtual void Report(std::string_view problem) = 0;
};

// Passes each problem on once, however often the reader meets it. A file with very many problems is cut short: after
// kDistinctProblems one line says so, and the rest is only counted.
class Diagnostics {
public:
    static constexpr std::size_t kDistinctProblems = 5000;

    // `sink` is not owned, outlives this object, and may be null.
    explicit Diagnostics(DiagnosticSink* sink) noexcept : m_sink(sink) {}

    void Report(std::string_view problem);

    // Problems seen, repetitions not counted.
    std::size_t Count() const noexcept { return m_count; }

private:
    DiagnosticSink* m_sink;
    std::unordered_set<std::uint64_t> m_seen;  // hashes of the lines passed on
    std::size_t m_count = 0;
};

}  // namespace localmapi
