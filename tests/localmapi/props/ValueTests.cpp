// Values made from bytes, measured, checked and copied.
#include "localmapi/props/Values.h"
#include "mapi/MapiCodes.h"
#include "tests/localmapi/support/LeakCheck.h"
#include "tests/localmapi/support/ValueText.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

class Values : public LeakCheck {};

constexpr ULONG Tag(ULONG type) {
    return PROP_TAG(type, 0x6001);
}

Bytes FromHex(std::string_view hex) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
        bytes.push_back(static_cast<std::byte>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
    }
    return bytes;
}

// A value of each type from the bytes that a file has for it, and what RES_SIZE says of it. Types with pointers to
// pointers are made by hand below.
struct FileRow {
    const char* name;
    ULONG type;
    const char* bytes;
    const char* text;  // null: no value
    std::uint64_t size;
};
constexpr FileRow kFileRows[] = {
    {"I2", PT_I2, "FEFF", "-2:I2", 2},
    {"I2 cut", PT_I2, "FE", nullptr, 0},
    {"long", PT_LONG, "FFFFFF7F", "2147483647", 4},
    {"long with more behind it", PT_LONG, "01000000FF", "1", 4},
    {"long cut", PT_LONG, "010000", nullptr, 0},
    {"float", PT_R4, "0000C03F", "1.5:R4", 4},
    {"double", PT_DOUBLE, "000000000000F8BF", "-1.5:R8", 8},
    {"currency", PT_CURRENCY, "1027000000000000", "10000:CY", 8},
    {"application time", PT_APPTIME, "0000000000000440", "2.5:AT", 8},
    {"error", PT_ERROR, "0F010480", "!0F", 4},
    {"Boolean of one byte", PT_BOOLEAN, "01", "true", 2},
    {"Boolean of two", PT_BOOLEAN, "0000", "false", 2},
    {"Boolean that is neither", PT_BOOLEAN, "0002", "true", 2},
    {"Boolean of none", PT_BOOLEAN, "", nullptr, 0},
    {"I8", PT_I8, "FFFFFFFFFFFFFFFF", "-1:I8", 8},
    {"time", PT_SYSTIME, "0080A0B3C4D5E6F7", "t17863200012815597568", 8},
    {"GUID", PT_CLSID, "0B0D020000000000C000000000000046", "g00020D0B", 16},
    {"GUID cut", PT_CLSID, "0B0D020000000000C0000000000000", nullptr, 0},
    {"8-bit text", PT_STRING8, "616263", "a'abc'", 4},
    {"8-bit text, empty", PT_STRING8, "", "a''", 1},
    {"wide text", PT_UNICODE, "61003D26", "w'a<263D>'", 6},
    {"wide text with half a unit", PT_UNICODE, "610062", "w'a'", 4},
    {"binary", PT_BINARY, "00FF", "x00FF", 2},
    {"binary, empty", PT_BINARY, "", "x", 0},
    {"server's entry id", PT_SVREID, "01", "x01", 1},
    {"several I2", PT_MV_I2, "0100FFFF", "[1,-1]:I2", 4},
    {"several longs", PT_MV_LONG, "0100000002000000", "[1,2]", 8},
    {"several longs, none", PT_MV_LONG, "", "[]", 0},
    {"several longs, one cut", PT_MV_LONG, "010000000200", "[1]", 4},
    {"several longs, all cut", PT_MV_LONG, "0100", nullptr, 0},
    {"several floats", PT_MV_R4, "0000C03F", "[1.5]:R4", 4},
    {"several doubles", PT_MV_DOUBLE, "000000000000F8BF", "[-1.5]:R8", 8},
    {"several currencies", PT_MV_CURRENCY, "1027000000000000", "[10000]:CY", 8},
    {"several application times", PT_MV_APPTIME, "0000000000000440", "[2.5]:AT", 8},
    {"several I8", PT_MV_I8, "0100000000000000FFFFFFFFFFFFFFFF", "[1,-1]:I8", 16},
    {"several times", PT_MV_SYSTIME, "01000000000000000000000001000000", "[t1,t4294967296]", 16},
    {"several GUIDs", PT_MV_CLSID, "0B0D020000000000C000000000000046", "[g00020D0B]", 16},
    {"null", PT_NULL, "00000000", nullptr, 0},
    {"object", PT_OBJECT, "00000000", nullptr, 0},
    {"several texts", PT_MV_UNICODE, "6100", nullptr, 0},
    {"several binaries", PT_MV_BINARY, "6100", nullptr, 0},
    {"restriction", PT_SRESTRICTION, "00000000", nullptr, 0},
    {"no type", 0x0099, "00000000", nullptr, 0},
    {"several Booleans", MV_FLAG | PT_BOOLEAN, "0100", nullptr, 0},
};

TEST_F(Values, ComeFromTheBytesOfFiles) {
    for (const FileRow& row : kFileRows) {
        SCOPED_TRACE(row.name);
        Arena arena;
        const Bytes bytes = FromHex(row.bytes);
        const std::optional<SPropValue> value = ValueFromBytes(Tag(row.type), bytes, arena);
        ASSERT_EQ(value.has_value(), row.text != nullptr);
        if (value) {
            EXPECT_EQ(value->ulPropTag, Tag(row.type));
            EXPECT_EQ(TextOf(*value), row.text);
            EXPECT_EQ(SizeOf(*value), row.size);
            EXPECT_TRUE(IsValid(*value));
        }
    }
}

// A value of each kind that points at something, texts and binaries in numbers included.
struct Made {
    const char* name;
    const char* text;
    std::uint64_t size;
    std::function<SPropValue(ValueMemory&)> make;
};

SPropValue Several(ULONG type, ULONG count, void* elements) {
    SPropValue value{};
    value.ulPropTag = Tag(type);
    value.Value.MVbin = {count, static_cast<SBinary*>(elements)};
    return value;
}

std::vector<Made> MadeValues() {
    std::vector<Made> made;
    for (const FileRow& row : kFileRows) {
        if (row.text != nullptr) {
            made.push_back({row.name, row.text, row.size, [&row](ValueMemory& memory) {
                                return *ValueFromBytes(Tag(row.type), FromHex(row.bytes), memory);
                            }});
        }
    }
    made.push_back({"wide texts", "[w'',w'ab',w'c']", 12, [](ValueMemory& memory) {
                        auto* const texts = memory.Array<LPWSTR>(3);
                        texts[0] = WideValue(Tag(PT_UNICODE), {}, memory).Value.lpszW;
                        texts[1] = WideValue(Tag(PT_UNICODE), "ab"_w, memory).Value.lpszW;
                        texts[2] = WideValue(Tag(PT_UNICODE), "c"_w, memory).Value.lpszW;
                        return Several(PT_MV_UNICODE, 3, texts);
                    }});
    made.push_back({"8-bit texts", "[a'12345678',a'x']", 11, [](ValueMemory& memory) {
                        auto* const texts = memory.Array<LPSTR>(2);
                        texts[0] = NarrowValue(Tag(PT_STRING8), "12345678", memory).Value.lpszA;
                        texts[1] = NarrowValue(Tag(PT_STRING8), "x", memory).Value.lpszA;
                        return Several(PT_MV_STRING8, 2, texts);
                    }});
    made.push_back({"binaries", "[x0102030405060708,x,x09]", 9, [](ValueMemory& memory) {
                        auto* const binaries = memory.Array<SBinary>(3);
                        binaries[0] = BinaryValue(Tag(PT_BINARY), FromHex("0102030405060708"), memory).Value.bin;
                        binaries[1] = {0, nullptr};
                        binaries[2] = BinaryValue(Tag(PT_BINARY), FromHex("09"), memory).Value.bin;
                        return Several(PT_MV_BINARY, 3, binaries);
                    }});
    made.push_back({"no texts", "[]", 0, [](ValueMemory&) { return Several(PT_MV_UNICODE, 0, nullptr); }});
    made.push_back({"null", "null", 0, [](ValueMemory&) { return LongValue(Tag(PT_NULL), 0); }});
    made.push_back({"object", "object", 0, [](ValueMemory&) { return LongValue(Tag(PT_OBJECT), 0); }});
    return made;
}

// The source is gone when the copy is looked at, and the copy has one block of the size announced, no byte more.
TEST_F(Values, CopyIntoOneBlockThatStandsAlone) {
    for (const Made& row : MadeValues()) {
        SCOPED_TRACE(row.name);
        SPropValue copy{};
        std::unique_ptr<std::uint64_t[]> block;
        {
            Arena source;
            const SPropValue value = row.make(source);
            const std::size_t size = PointedSize(value);
            EXPECT_EQ(size % ValueMemory::kAlignment, 0U);
            block = std::make_unique<std::uint64_t[]>(size / sizeof(std::uint64_t));
            BlockMemory memory(block.get(), size);
            ASSERT_EQ(CopyValue(value, memory, copy), S_OK);
            EXPECT_THROW(memory.Allocate(1), std::bad_alloc);
            EXPECT_EQ(SizeOf(value), row.size);
        }
        EXPECT_EQ(TextOf(copy), row.text);
        EXPECT_EQ(SizeOf(copy), row.size);
    }
}

TEST_F(Values, MoveWithTheirBlock) {
    for (const Made& row : MadeValues()) {
        SCOPED_TRACE(row.name);
        Arena arena;
        const SPropValue value = row.make(arena);
        const std::size_t words = PointedSize(value) / sizeof(std::uint64_t);
        std::vector<std::uint64_t> first(words + 1);
        SPropValue copy{};
        BlockMemory memory(first.data(), words * sizeof(std::uint64_t));
        ASSERT_EQ(CopyValue(value, memory, copy), S_OK);
        std::vector<std::uint64_t> second = first;
        ASSERT_TRUE(Relocate(copy, first.data(), second.data(), second.data()));
        std::ranges::fill(first, 0);
        EXPECT_EQ(TextOf(copy), row.text);
    }
}

TEST_F(Values, ThatCannotBeAreRefusedBeforeTheyAreFollowed) {
    SPropValue hugeBinary{};
    hugeBinary.ulPropTag = Tag(PT_BINARY);
    BYTE byte = 0;
    hugeBinary.Value.bin = {0x80000000, &byte};
    LPSTR noText = nullptr;
    SBinary noBytes{3, nullptr};
    LONG one = 1;
    struct Row {
        const char* name;
        SPropValue value;
    };
    const Row rows[] = {
        {"no type", LongValue(Tag(0x0099), 0)},
        {"unspecified", LongValue(Tag(PT_UNSPECIFIED), 0)},
        {"text without pointer", LongValue(Tag(PT_UNICODE), 0)},
        {"8-bit text without pointer", LongValue(Tag(PT_STRING8), 0)},
        {"GUID without pointer", LongValue(Tag(PT_CLSID), 0)},
        {"restriction without pointer", LongValue(Tag(PT_SRESTRICTION), 0)},
        {"actions without pointer", LongValue(Tag(PT_ACTIONS), 0)},
        {"binary without pointer", LongValue(Tag(PT_BINARY), 5)},
        {"binary of 2 GB", hugeBinary},
        {"several without pointer", Several(PT_MV_LONG, 1, nullptr)},
        {"several of 2 GB", Several(PT_MV_LONG, 0x20000000, &one)},
        {"texts, one without pointer", Several(PT_MV_STRING8, 1, &noText)},
        {"binaries, one without pointer", Several(PT_MV_BINARY, 1, &noBytes)},
        {"several Booleans", Several(MV_FLAG | PT_BOOLEAN, 1, &one)},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Arena arena;
        SPropValue copy{};
        EXPECT_FALSE(IsValid(row.value));
        EXPECT_EQ(CopyValue(row.value, arena, copy), MAPI_E_INVALID_PARAMETER);
    }
}

}  // namespace
}  // namespace localmapi::testing
