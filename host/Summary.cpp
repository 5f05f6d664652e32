#include "host/Summary.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace vxhost {

namespace {

std::string Formatted(const char* format, double number) {
    std::array<char, 64> text;
    const int length = std::snprintf(text.data(), text.size(), format, number);
    return std::string(text.data(), static_cast<std::size_t>(length));
}

// "3 folders", "1 folder".
std::string Counted(std::uint64_t count, const char* one) {
    return CountText(count) + ' ' + one + (count == 1 ? "" : "s");
}

std::string KindsText(const Summary& summary) {
    std::string text;
    for (const Summary::Kind& kind : summary.kinds) {
        if (kind.count != 0) {
            text += (text.empty() ? "" : ", ") + CountText(kind.count) + ' ' + kind.name;
        }
    }
    return text;
}

}  // namespace

void Summary::CountItem(int type) noexcept {
    const auto known =
        std::find_if(kinds.begin(), std::prev(kinds.end()), [type](const Kind& k) { return k.type == type; });
    ++known->count;  // the last one stands for all others
    ++items;
}

std::string CountText(std::uint64_t count) {
    std::string text = std::to_string(count);
    for (std::size_t at = text.size(); at > 3;) {
        at -= 3;
        text.insert(at, ",");
    }
    return text;
}

std::string SizeText(std::uint64_t bytes) {
    static constexpr const char* kUnits[] = {"KB", "MB", "GB", "TB"};
    if (bytes < 1000) {
        return Counted(bytes, "byte");
    }
    auto size = static_cast<double>(bytes) / 1000;
    std::size_t unit = 0;
    while (size >= 999.95 && unit + 1 < std::size(kUnits)) {
        size /= 1000;
        ++unit;
    }
    return Formatted("%.1f ", size) + kUnits[unit];
}

std::string DurationText(std::chrono::seconds duration) {
    const long long seconds = duration.count();
    std::array<char, 64> text;
    const int length = seconds < 3600
                           ? std::snprintf(text.data(), text.size(), "%lld:%02lld", seconds / 60, seconds % 60)
                           : std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", seconds / 3600,
                                           seconds / 60 % 60, seconds % 60);
    return std::string(text.data(), static_cast<std::size_t>(length));
}

std::string SummaryText(const Summary& summary, std::uint64_t outputBytes, std::chrono::duration<double> time) {
    const double seconds = std::max(time.count(), 0.001);
    std::string text = Counted(summary.items, "item") + " in " + Counted(summary.folders, "folder") + ", "
                       + Formatted("%.2f s", time.count()) + " ("
                       + CountText(static_cast<std::uint64_t>(static_cast<double>(summary.items) / seconds))
                       + " items/s)\n";
    if (summary.items != 0) {
        text += "  " + KindsText(summary) + '\n';
    }
    if (summary.embedded != 0) {
        text += "  " + Counted(summary.embedded, "embedded item") + '\n';
    }
    text += "  " + Counted(summary.attachments, "attachment") + " (" + SizeText(summary.attachmentBytes) + ")";
    if (summary.saved != 0) {
        text += ", " + CountText(summary.saved) + " saved (" + SizeText(summary.savedBytes) + ")";
    }
    if (summary.leftOut != 0) {
        text += ", " + CountText(summary.leftOut) + " left out as too large";
    }
    text += "\n  " + SizeText(outputBytes) + " of output\n";
    if (summary.unsupported != 0) {
        text += "  " + CountText(summary.unsupported) + " of kinds that are not indexed\n";
    }
    text += summary.errors == 0 ? "  no errors\n"
                                : "  " + Counted(summary.errors, "error") + ": see the lines of kind error\n";
    return text;
}

}  // namespace vxhost
