// The BSTR functions, and the holder over them.
#include "platform/Bstr.h"
#include "platform/BstrHolder.h"
#include "platform/WideText.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace {

// The text as bytes with its surroundings: length field, text, two zero bytes.
std::string RawBytes(BSTR text) {
    const char* start = reinterpret_cast<const char*>(text) - 4;
    return std::string(start, 4 + SysStringByteLen(text) + 2);
}

CStringW TextOf(BSTR text) {
    return CStringW(text, SysStringLen(text));
}

TEST(Bstr, HasItsByteLengthBeforeAndTwoZeroBytesAfter) {
    using std::string_literals::operator""s;
    struct Row {
        const char* name;
        BSTR text;
        std::string raw;
        UINT units;
    };
    const Row rows[] = {
        {"text", SysAllocString("Ab"_w), "\4\0\0\0A\0b\0\0\0"s, 2},
        {"empty text", SysAllocString(""_w), "\0\0\0\0\0\0"s, 0},
        {"zeros inside", SysAllocStringLen("a\0b"_w, 3), "\6\0\0\0a\0\0\0b\0\0\0"s, 3},
        {"part of a text", SysAllocStringLen("abc"_w, 1), "\2\0\0\0a\0\0\0"s, 1},
        {"bytes", SysAllocStringByteLen("abcd", 4), "\4\0\0\0abcd\0\0"s, 2},
        {"odd number of bytes", SysAllocStringByteLen("abc", 3), "\3\0\0\0abc\0\0"s, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(RawBytes(row.text), row.raw);
        EXPECT_EQ(SysStringLen(row.text), row.units);
        SysFreeString(row.text);
    }
}

TEST(Bstr, WithoutASourceHasTheLengthAndTheEndInPlace) {
    BSTR units = SysAllocStringLen(nullptr, 3);
    EXPECT_EQ(SysStringByteLen(units), 6U);
    EXPECT_EQ(units[3], 0);
    BSTR bytes = SysAllocStringByteLen(nullptr, 5);
    EXPECT_EQ(SysStringByteLen(bytes), 5U);
    EXPECT_EQ(RawBytes(bytes).substr(9), std::string(2, '\0'));
    SysFreeString(units);
    SysFreeString(bytes);
}

TEST(Bstr, NullIsATextOfNoLength) {
    EXPECT_EQ(SysStringLen(nullptr), 0U);
    EXPECT_EQ(SysStringByteLen(nullptr), 0U);
    EXPECT_EQ(SysAllocString(nullptr), nullptr);
    SysFreeString(nullptr);
}

TEST(Bstr, TooLongForItsLengthFieldIsRefused) {
    for (const UINT units : {0x7FFFFFFFU, 0x80000001U, 0xFFFFFFFFU}) {
        EXPECT_EQ(SysAllocStringLen(nullptr, units), nullptr) << units;
    }
    BSTR held = SysAllocString("kept"_w);
    EXPECT_EQ(SysReAllocStringLen(&held, nullptr, 0x7FFFFFFF), FALSE);
    EXPECT_EQ(TextOf(held), "kept"_w);
    SysFreeString(held);
}

TEST(Bstr, IsReplacedByACopyOrResizedInPlace) {
    BSTR held = nullptr;
    EXPECT_EQ(SysReAllocString(&held, "hello"_w), TRUE);
    EXPECT_EQ(TextOf(held), "hello"_w);
    EXPECT_EQ(SysReAllocStringLen(&held, nullptr, 3), TRUE);
    EXPECT_EQ(TextOf(held), "hel"_w);
    EXPECT_EQ(SysReAllocStringLen(&held, nullptr, 5), TRUE);
    EXPECT_EQ(SysStringLen(held), 5U);
    EXPECT_EQ(CStringW(held, 3), "hel"_w);
    EXPECT_EQ(held[5], 0);
    EXPECT_EQ(SysReAllocStringLen(&held, "a\0b"_w, 3), TRUE);
    EXPECT_EQ(TextOf(held), CStringW("a\0b"_w, 3));
    EXPECT_EQ(SysReAllocStringLen(&held, nullptr, 0), TRUE);
    ASSERT_NE(held, nullptr);
    EXPECT_EQ(SysStringLen(held), 0U);
    EXPECT_EQ(SysReAllocString(&held, nullptr), TRUE);
    EXPECT_EQ(held, nullptr);
    EXPECT_EQ(SysReAllocString(nullptr, "x"_w), FALSE);
}

TEST(BstrHolder, TellsNullFromEmpty) {
    const _bstr_t null;
    const _bstr_t empty(""_w);
    const _bstr_t fromNull(static_cast<const WCHAR*>(nullptr));
    EXPECT_TRUE(null.IsNull());
    EXPECT_TRUE(fromNull.IsNull());
    EXPECT_FALSE(empty.IsNull());
    EXPECT_FALSE(_bstr_t(CStringW()).IsNull());
    EXPECT_EQ(static_cast<const WCHAR*>(null), nullptr);
    EXPECT_TRUE(CStringW(null).empty());
    EXPECT_FALSE(null == empty);
    EXPECT_LT(null, empty);
    EXPECT_EQ(null, fromNull);
    EXPECT_EQ(null.copy(), nullptr);
}

TEST(BstrHolder, ComparesAllCodeUnits) {
    const _bstr_t shorter(CStringW("a\0b"_w, 3));
    const _bstr_t longer(CStringW("a\0c"_w, 3));
    EXPECT_EQ(shorter.length(), 3U);
    EXPECT_LT(shorter, longer);
    EXPECT_LT(_bstr_t("a"_w), shorter);
    EXPECT_EQ(_bstr_t(shorter), shorter);
    EXPECT_EQ(CStringW(shorter), CStringW("a\0b"_w, 3));
}

TEST(BstrHolder, OwnsWhatItIsGivenUntilItHandsItOver) {
    BSTR given = SysAllocString("given"_w);
    _bstr_t holder("first"_w);
    holder.Assign(given);
    EXPECT_NE(static_cast<const WCHAR*>(holder), given);
    holder.Attach(given);
    EXPECT_EQ(static_cast<const WCHAR*>(holder), given);
    holder.Attach(given);  // its own text: still owned, once

    _bstr_t copied = holder;
    EXPECT_NE(static_cast<const WCHAR*>(copied), given);
    _bstr_t moved = std::move(holder);
    EXPECT_EQ(static_cast<const WCHAR*>(moved), given);
    copied = moved;
    copied = std::move(moved);
    EXPECT_EQ(static_cast<const WCHAR*>(copied), given);

    BSTR taken = copied.Detach();
    EXPECT_EQ(taken, given);
    EXPECT_TRUE(copied.IsNull());
    SysFreeString(taken);
}

}  // namespace
