// Wide literals and the scalar types under them, on every compiler.
#include "platform/Guid.h"
#include "platform/ResultCodes.h"
#include "platform/Unknown.h"
#include "platform/WideText.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

static_assert(std::is_same_v<decltype(("IPM"_w)), const WCHAR (&)[4]>);
static_assert("IPM"_w[0] == 'I' && "IPM"_w[2] == 'M' && "IPM"_w[3] == 0);
static_assert(""_w[0] == 0);

TEST(WideLiteral, IsOneConstantArrayWithTheLifeOfTheProgram) {
    const WCHAR* first = "IPM.Note"_w;
    const WCHAR* second = "IPM.Note"_w;
    EXPECT_EQ(first, second);
    EXPECT_EQ(CStringW(first), CStringW({'I', 'P', 'M', '.', 'N', 'o', 't', 'e'}));
    EXPECT_EQ(CStringW("a\0b"_w, 3).size(), 3U);
}

TEST(ResultCode, FromWin32KeepsSuccessAndResultCodesAndMapsTheRest) {
    struct Row {
        unsigned code;
        unsigned expected;
    };
    for (const Row& row : {Row{0, 0}, Row{5, 0x80070005}, Row{0x12345, 0x80072345}, Row{0x80030005, 0x80030005}}) {
        EXPECT_EQ(static_cast<unsigned>(HRESULT_FROM_WIN32(row.code)), row.expected) << row.code;
    }
}

TEST(Guid, OfTheOleFamilyHasThePublishedBytes) {
    const GUID expected = {0x00020D0B, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
    EXPECT_TRUE(IsEqualGUID(OleGuid(0x00020D0B), expected));
    EXPECT_FALSE(IsEqualGUID(OleGuid(0x00020D0C), expected));
}

}  // namespace
