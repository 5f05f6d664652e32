// What a run has read, and how it is told at the end. Plain values.
#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace vxhost {

struct Summary {
    // Items in folders, by the numbers of their types, and those of other types.
    struct Kind {
        int type;
        const char* name;
        std::uint64_t count = 0;
    };
    std::array<Kind, 6> kinds = {
        {{1, "e-mails"}, {3, "contacts"}, {6, "appointments"}, {7, "tasks"}, {14, "notes"}, {-1, "others"}}};
    std::uint64_t items = 0;  // the sum of the kinds
    std::uint64_t embedded = 0;
    std::uint64_t folders = 0;
    std::uint64_t attachments = 0;
    std::uint64_t attachmentBytes = 0;  // as their items tell them
    std::uint64_t saved = 0;
    std::uint64_t savedBytes = 0;
    std::uint64_t leftOut = 0;  // attachments larger than the user wants
    std::uint64_t unsupported = 0;
    std::uint64_t errors = 0;

    void CountItem(int type) noexcept;
};

// "1,234,567", "1.2 MB", "0:12", "2:03:04".
std::string CountText(std::uint64_t count);
std::string SizeText(std::uint64_t bytes);
std::string DurationText(std::chrono::seconds duration);

// The lines that are printed at the end.
std::string SummaryText(const Summary& summary, std::uint64_t outputBytes, std::chrono::duration<double> time);

}  // namespace vxhost
