// What the corpus records of a message, and what a reader finds, as lines of text that can be compared: "subject = ...",
// "attachment 0 content = ...".
#pragma once

#include <nlohmann/json.hpp>

#include <array>
#include <cstdint>
#include <cstdio>
#include <map>
#include <string>

namespace localmapi::testing {

// Fact by name. Facts that are empty are left out on both sides.
using Facts = std::map<std::string, std::string>;

// Texts of damaged files may be followed by zeros, of which the record has none or some.
inline void Put(Facts& facts, const std::string& name, const std::string& value) {
    if (const std::size_t last = value.find_last_not_of('\0'); last != std::string::npos) {
        facts[name] = value.substr(0, last + 1);
    }
}

inline void PutAll(Facts& facts, const std::string& prefix, const Facts& more) {
    for (const auto& [name, value] : more) {
        facts[prefix + name] = value;
    }
}

// A time in steps of 100 ns since 1601 as the record writes it; the calendar is computed here, not by what is under test.
inline std::string TimeText(std::uint64_t ticks) {
    const std::uint64_t seconds = ticks / 10'000'000;
    std::uint64_t day = seconds / 86400;
    int year = 1601;
    const auto isLeap = [](int y) { return y % 4 == 0 && (y % 100 != 0 || y % 400 == 0); };
    for (; day >= (isLeap(year) ? 366U : 365U); ++year) {
        day -= isLeap(year) ? 366 : 365;
    }
    const std::array<unsigned, 12> days{31, isLeap(year) ? 29U : 28U, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    unsigned month = 0;
    for (; day >= days[month]; ++month) {
        day -= days[month];
    }
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02u:%02u:%02uZ", year, month + 1,
                  static_cast<unsigned>(day) + 1, static_cast<unsigned>(seconds / 3600 % 24),
                  static_cast<unsigned>(seconds / 60 % 60), static_cast<unsigned>(seconds % 60));
    return text.data();
}

inline std::string StringIn(const nlohmann::json& object, const char* key) {
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) {
        return {};
    }
    return found->is_string() ? found->get<std::string>() : found->dump();
}

// "length sha1" of a part of the record.
inline std::string DigestIn(const nlohmann::json& object, const char* length, const char* sha1) {
    return StringIn(object, length) + ' ' + StringIn(object, sha1);
}

// The elements of a list in the record; none where there is no such list.
inline nlohmann::json ListIn(const nlohmann::json& object, const char* key) {
    return object.value(key, nlohmann::json::array());
}

}  // namespace localmapi::testing
