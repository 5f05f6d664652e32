// UTF-8 and UTF-16 for file names and the like: every well-formed text both ways, and ill-formed ones replaced.
#include "platform/linux/system/Utf8.h"

#include <gtest/gtest.h>

namespace {

using vx_system::FromUtf8;
using vx_system::ToUtf8;

TEST(SystemUtf8, ConvertsTheEndsOfEachLengthBothWays) {
    const struct {
        std::string_view utf8;
        CStringW utf16;
    } rows[] = {
        {"\x7F", {0x7F}},
        {"\xC2\x80", {0x80}},
        {"\xDF\xBF", {0x7FF}},
        {"\xE0\xA0\x80", {0x800}},
        {"\xED\x9F\xBF", {0xD7FF}},
        {"\xEE\x80\x80", {0xE000}},
        {"\xEF\xBF\xBF", {0xFFFF}},
        {"\xF0\x90\x80\x80", {0xD800, 0xDC00}},
        {"\xF4\x8F\xBF\xBF", {0xDBFF, 0xDFFF}},
        {std::string_view("a\0b", 3), {'a', 0, 'b'}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FromUtf8(row.utf8), row.utf16);
        EXPECT_EQ(ToUtf8(row.utf16), row.utf8);
    }
}

TEST(SystemUtf8, ReplacesEachIllFormedRunOnce) {
    // Rows as in the examples of The Unicode Standard, chapter 3.9, tables 3-8 to 3-11.
    const struct {
        const char* name;
        std::string_view utf8;
        CStringW utf16;
    } rows[] = {
        {"overlong forms",
         "\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41",
         {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0x41}},
        {"surrogates",
         "\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41",
         {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0x41}},
        {"beyond the last plane",
         "\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42",
         {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0x41, 0xFFFD, 0xFFFD, 0x42}},
        {"cut sequences", "\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", {0xFFFD, 0xFFFD, 0xFFFD, 0xFFFD, 0x41}},
        {"cut at the end", "a\xF0\x9F\x98", {'a', 0xFFFD}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(FromUtf8(row.utf8), row.utf16) << row.name;
    }
}

TEST(SystemUtf8, ReplacesOrKeepsUnpairedSurrogates) {
    const CStringW odd = {0xDC00, 'a', 0xD800, 0xD800, 0xDC00, 0xDBFF};
    EXPECT_EQ(ToUtf8(odd),
              "\xEF\xBF\xBD"
              "a"
              "\xEF\xBF\xBD\xF0\x90\x80\x80\xEF\xBF\xBD");
    EXPECT_EQ(ToUtf8(odd, vx_system::Unpaired::Keep),
              "\xED\xB0\x80"
              "a"
              "\xED\xA0\x80\xF0\x90\x80\x80\xED\xAF\xBF");
}

}  // namespace
