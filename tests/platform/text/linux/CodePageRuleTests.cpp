// Rules of Windows' documentation that Wine does not follow, and those that are this system's own.
#include "tests/platform/text/Conversion.h"

#include <cstdlib>

namespace vx_text_tests {
namespace {

TEST(CodePageRule, RefusesTheFlagsThatAPageDoesNotTake) {
    struct Row {
        UINT page;
        DWORD flags;
        bool isTakenToWide;
        bool isTakenToBytes;
    };
    const Row rows[] = {
        {1252, MB_PRECOMPOSED, true, false},           {CP_UTF8, MB_PRECOMPOSED, false, false},
        {CP_UTF8, MB_ERR_INVALID_CHARS, true, false},  {CP_UTF8, WC_ERR_INVALID_CHARS, false, true},
        {CP_UTF8, WC_NO_BEST_FIT_CHARS, false, false}, {1252, WC_ERR_INVALID_CHARS, false, false},
        {1252, WC_NO_BEST_FIT_CHARS, false, true},     {54936, MB_ERR_INVALID_CHARS, true, false},
        {50220, MB_ERR_INVALID_CHARS, false, false},   {52936, WC_ERR_INVALID_CHARS, false, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::Message() << "page " << row.page << ", flags " << row.flags);
        EXPECT_EQ(DecodeError(row.page, "a", row.flags), row.isTakenToWide ? ERROR_SUCCESS : ERROR_INVALID_FLAGS);
        EXPECT_EQ(Encode(row.page, "a"_w, row.flags), row.isTakenToBytes ? "a" : "");
    }
}

TEST(CodePageRule, TakesADefaultCharacterOnlyForPagesOfOneAndTwoBytes) {
    BOOL usedDefault = FALSE;
    for (const UINT page : {CP_UTF8, 50220u, 54936u, 1200u}) {
        EXPECT_EQ(WideCharToMultiByte(page, 0, "a"_w, 1, nullptr, 0, "?", nullptr), 0) << page;
        EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
        EXPECT_EQ(WideCharToMultiByte(page, 0, "a"_w, 1, nullptr, 0, nullptr, &usedDefault), 0) << page;
    }
}

TEST(CodePageRule, RefusesABufferThatIsTheInput) {
    alignas(WCHAR) char buffer[16] = "abc";
    WCHAR* const wide = reinterpret_cast<WCHAR*>(buffer);
    EXPECT_EQ(MultiByteToWideChar(1252, 0, buffer, 3, wide, 8), 0);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(WideCharToMultiByte(1252, 0, wide, 2, buffer, 16, nullptr, nullptr), 0);
    EXPECT_EQ(MultiByteToWideChar(1252, 0, buffer, 3, wide, 0), 3) << "the size may be asked for";
}

TEST(CodePageRule, DoesNotCutACharacterInTwo) {
    WCHAR wide[2] = {kWideCanary, kWideCanary};
    EXPECT_EQ(ToWide(CP_UTF8, 0, "\xF0\x9F\x98\x80", wide, 1), 0);
    EXPECT_EQ(GetLastError(), ERROR_INSUFFICIENT_BUFFER);
    EXPECT_EQ(wide[0], kWideCanary);
}

TEST(CodePageRule, TellsAnEmptyResultFromAFailure) {
    SetLastError(ERROR_GEN_FAILURE);
    EXPECT_EQ(ToWide(50220, 0, "\x1B(B", nullptr, 0), 0);
    EXPECT_EQ(GetLastError(), ERROR_SUCCESS);
}

// [Unicode] 3.9, tables 3-8 to 3-11.
TEST(CodePageRule, Utf8ReplacesEachMaximalPartOfABrokenSequence) {
    constexpr WCHAR kBad = 0xFFFD;
    const BrokenUtf8 rows[] = {
        {"table 3-8: overlong forms",
         "\xC0\xAF\xE0\x80\xBF\xF0\x81\x82\x41",
         {kBad, kBad, kBad, kBad, kBad, kBad, kBad, kBad, 'A'}},
        {"table 3-9: surrogates",
         "\xED\xA0\x80\xED\xBF\xBF\xED\xAF\x41",
         {kBad, kBad, kBad, kBad, kBad, kBad, kBad, kBad, 'A'}},
        {"table 3-10: beyond the last, and no lead bytes",
         "\xF4\x91\x92\x93\xFF\x41\x80\xBF\x42",
         {kBad, kBad, kBad, kBad, kBad, 'A', kBad, kBad, 'B'}},
        {"table 3-11: truncated sequences", "\xE1\x80\xE2\xF0\x91\x92\xF1\xBF\x41", {kBad, kBad, kBad, kBad, 'A'}},
    };
    for (const BrokenUtf8& row : rows) {
        ExpectReplaced(row);
    }
}

// The variable is read once in a process, so each setting needs a process of its own.
TEST(CodePageRuleDeathTest, TakesTheAnsiPageFromTheEnvironment) {
    struct Row {
        const char* setting;
        UINT page;
    };
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    for (const Row& row : {Row{nullptr, 65001}, Row{"", 65001}, Row{"1252", 1252}, Row{"932", 932}, Row{"65001", 65001},
                           Row{"1200", 65001}, Row{"50220", 65001}, Row{"99999", 65001}, Row{"1252x", 65001},
                           Row{" 1252", 65001}, Row{"99999999999", 65001}, Row{"0", 65001}}) {
        SCOPED_TRACE(row.setting == nullptr ? "not set" : row.setting);
        const auto check = [&row] {
            row.setting == nullptr ? unsetenv("VX_ANSI_CODEPAGE") : setenv("VX_ANSI_CODEPAGE", row.setting, 1);
            const bool isRight = GetACP() == row.page && GetOEMCP() == row.page
                                 && Decode(CP_ACP, "\xC3\xA4") == Decode(row.page, "\xC3\xA4")
                                 && Decode(CP_THREAD_ACP, "\xC3\xA4") == Decode(row.page, "\xC3\xA4");
            std::exit(isRight ? 0 : 1);
        };
        EXPECT_EXIT(check(), testing::ExitedWithCode(0), "");
    }
}

}  // namespace
}  // namespace vx_text_tests
