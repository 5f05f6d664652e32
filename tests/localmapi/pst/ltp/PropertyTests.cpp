// Property contexts and values: every type, every place, and what damage does to them.
#include "localmapi/pst/ltp/PropertyContext.h"
#include "localmapi/pst/ltp/Values.h"
#include "tests/localmapi/pst/support/HeapBuilder.h"
#include "tests/localmapi/pst/support/Opened.h"

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

using pst::NodeId;
using pst::PropertyContext;
using pst::PropertyType;
using pst::PropertyValue;
using pst::ValueList;

constexpr std::uint32_t kNode = 0x204;

Result<PropertyContext> OpenContext(Opened& file) {
    return PropertyContext::Open(*file, file.Node(kNode), NodeId{kNode});
}

TEST(PropertyContext, GivesValuesOfEveryTypeFromWhereverTheyLie) {
    const Bytes eight = ByteWriter().U64(0x8877665544332211).Take();
    const std::vector<Property> properties = {
        {0x10010002, ByteWriter().U16(0xFFFE).Take()},
        {0x10020003, Number32(0x80000001)},
        {0x10030004, Number32(0x3F800000)},
        {0x10040005, eight},
        {0x10050006, eight},
        {0x10060007, eight},
        {0x1007000A, Number32(0x8004010F)},
        {0x1008000B, ByteWriter().U8(1).Take()},
        {0x10090014, eight},
        {0x100A001E, BytesOf("8-bit")},
        {0x100B001F, Utf16("wide")},
        {0x100C0040, eight},
        {0x100D0048, Pattern(16)},
        {0x100E0102, Pattern(3580)},
        {0x100F0102, Pattern(3581)},
        {0x10100102, Pattern(100'000)},
        {0x10110102, {}},
        {0x10120FFB & 0xFFFF00FB, Pattern(9)},
        {0x101300FD, Pattern(9)},
        {0x101400FE, Pattern(9)},
        {0x10151003, Pattern(40)},
        {0x1016101F, Pattern(5000)},
    };
    for (const Form* form : kForms) {
        SCOPED_TRACE(form->name);
        ImageBuilder image(*form, pst::Encoding::Permute);
        const NodeData node = AddProperties(image, properties);
        image.AddNode(kNode, node.data, node.subnodes);
        Opened file(image.Build());
        auto context = OpenContext(file);
        ASSERT_TRUE(context) << context.Failure().text;
        EXPECT_EQ(context->Records().size(), properties.size());
        for (const Property& property : properties) {
            auto value = context->Read(static_cast<std::uint16_t>(property.tag >> 16));
            ASSERT_TRUE(value) << std::hex << property.tag;
            EXPECT_EQ(static_cast<std::uint32_t>(value->type), property.tag & 0xFFFF);
            EXPECT_EQ(value->bytes.Size(), property.value.size()) << std::hex << property.tag;
            EXPECT_TRUE(*ReadWhole(value->bytes, 777) == property.value) << std::hex << property.tag;
        }
        EXPECT_TRUE(context->Read(0x2000).IsNotFound());
        EXPECT_TRUE(file.sink.problems.empty());
    }
}

// The records of a context, each as id, type and value.
struct Stored {
    std::uint32_t id, type, value;
};

// A context with exactly these records, and one item, 0x20, of the text "12345678".
void AddRaw(ImageBuilder& image, const std::vector<Stored>& records, std::uint8_t use = 0xBC, unsigned dataSize = 6) {
    HeapBuilder heap(image, use);
    EXPECT_EQ(heap.Add(BytesOf("12345678")), 0x20U);
    HeapBuilder::Records tree;
    for (const Stored& record : records) {
        Bytes data = ByteWriter().U16(record.type).U32(record.value).Take();
        data.resize(dataSize);
        tree.emplace_back(ByteWriter().U16(record.id).Take(), data);
    }
    const NodeData node = heap.Finish(heap.AddTree(2, dataSize, tree));
    image.AddNode(kNode, node.data, node.subnodes);
}

TEST(PropertyContext, KeepsTheRestWhenARecordIsBad) {
    struct Row {
        const char* name;
        Stored record;
        ErrorCode code;
        std::size_t reports;
    };
    constexpr Row rows[] = {
        {"no type", {0x1000, 0, 0}, ErrorCode::NotFound, 0},
        {"unknown type", {0x1000, 0x0099, 0}, ErrorCode::NotFound, 1},
        {"several objects", {0x1000, 0x100D, 0x20}, ErrorCode::NotFound, 1},
        {"sub-node missing", {0x1000, 0x0102, 0x801F}, ErrorCode::NotFound, 1},
        {"item missing", {0x1000, 0x0102, 0x2000}, ErrorCode::Corrupt, 0},
        {"item's block missing", {0x1000, 0x0102, 0x10020}, ErrorCode::Corrupt, 0},
        {"no bytes of a time", {0x1000, 0x0040, 0}, ErrorCode::Corrupt, 0},
        {"half a GUID", {0x1000, 0x0048, 0x20}, ErrorCode::Corrupt, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ImageBuilder image(kUnicode);
        AddRaw(image, {{0x0001, 0x0003, 7}, row.record, {0x2000, 0x0102, 0x20}});
        Opened file(image.Build());
        auto context = OpenContext(file);
        ASSERT_TRUE(context);
        auto bad = context->Read(0x1000);
        ASSERT_FALSE(bad);
        EXPECT_EQ(bad.Failure().code, row.code);
        EXPECT_EQ(file.sink.problems.size(), row.reports);
        auto good = context->Read(0x2000);
        ASSERT_TRUE(good);
        EXPECT_EQ(*ReadWhole(good->bytes), BytesOf("12345678"));
        EXPECT_EQ(context->Find(1)->value, 7U);
    }
}

TEST(PropertyContext, WithRecordsOutOfOrderOrTwiceFindsTheFirstOfEach) {
    ImageBuilder image(kUnicode);
    AddRaw(image, {{0x3000, 3, 1}, {0x1000, 3, 2}, {0x3000, 3, 3}, {0x2000, 3, 4}});
    Opened file(image.Build());
    auto context = OpenContext(file);
    ASSERT_TRUE(context);
    EXPECT_EQ(context->Records().size(), 3U);
    EXPECT_EQ(context->Find(0x3000)->value, 1U);
    EXPECT_EQ(context->Find(0x1000)->value, 2U);
}

TEST(PropertyContext, IsRefusedWhereThereIsNone) {
    for (const bool wrongUse : {true, false}) {
        ImageBuilder image(kUnicode);
        AddRaw(image, {{0x1000, 3, 1}}, wrongUse ? 0x7C : 0xBC, wrongUse ? 6 : 8);
        Opened file(image.Build());
        EXPECT_EQ(OpenContext(file).Failure().code, ErrorCode::Corrupt);
    }
}

TEST(PropertyContext, FollowsObjectPropertiesToTheirNodes) {
    ImageBuilder image(kUnicode);
    const NodeData node = AddProperties(
        image,
        {{0x3701000D, ByteWriter().U32(0x8025).U32(1234).Take()}, {0x3702000D, Number32(5)}, {0x37030102, Pattern(8)}});
    image.AddNode(kNode, node.data, node.subnodes);
    Opened file(image.Build());
    auto context = OpenContext(file);
    ASSERT_TRUE(context);
    const auto object = context->ReadObject(0x3701);
    ASSERT_TRUE(object);
    EXPECT_EQ(object->node.value, 0x8025U);
    EXPECT_EQ(object->size, 1234U);
    EXPECT_EQ(context->ReadObject(0x3702).Failure().code, ErrorCode::Corrupt) << "four bytes";
    EXPECT_EQ(context->ReadObject(0x3703).Failure().code, ErrorCode::Corrupt) << "no object";
}

PropertyValue ValueOf(PropertyType type, const Bytes& bytes) {
    auto buffer = std::make_shared<pst::Buffer>();
    buffer->bytes = bytes;
    return PropertyValue{type, pst::ValueStream(pst::HeldBytes{buffer, ByteView(buffer->bytes)})};
}

TEST(Values, AreNumbersOfTheSignAndWidthOfTheirType) {
    const Bytes bytes = ByteWriter().U64(0xFFFFFFFFFFFFFFFE).Take();
    struct Row {
        PropertyType type;
        std::size_t size;
        std::optional<std::int64_t> number;
    };
    constexpr Row rows[] = {
        {PropertyType::Int16, 2, -2},
        {PropertyType::Int32, 4, -2},
        {PropertyType::Int64, 8, -2},
        {PropertyType::Boolean, 1, 1},
        {PropertyType::Time, 8, -2},
        {PropertyType::Int32, 3, std::nullopt},
        {PropertyType::Guid, 8, std::nullopt},
        {PropertyType::Binary, 8, std::nullopt},
        {pst::Multiple(PropertyType::Int32), 8, std::nullopt},
    };
    for (const Row& row : rows) {
        PropertyValue value = ValueOf(row.type, Bytes(bytes.begin(), bytes.begin() + static_cast<long>(row.size)));
        EXPECT_EQ(pst::Integer(value), row.number) << static_cast<int>(row.type);
    }
}

TEST(Values, AreTextsInTheRightCodePage) {
    struct Row {
        const char* name;
        PropertyType type;
        std::string_view bytes;
        UINT page;
        CStringW text;
    };
    const WCHAR ko = 0x30B3, mu = 0x30E0, lone = 0xD800, e = 0xE9, zhe = 0x436, two = 0x201A;
    const Row rows[] = {
        {"wide", PropertyType::Unicode, {"a\0\xB3\x30", 4}, 1252, {'a', ko}},
        {"wide, terminated", PropertyType::Unicode, {"a\0\0\0b\0", 6}, 1252, {'a'}},
        {"wide, lone surrogate", PropertyType::Unicode, {"\x00\xD8", 2}, 1252, {lone}},
        {"wide, a byte over", PropertyType::Unicode, {"a\0b", 3}, 1252, {'a'}},
        {"bytes said to be wide", PropertyType::Unicode, "abc", 1252, {'a', 'b', 'c'}},
        {"empty", PropertyType::String8, "", 1252, {}},
        {"western", PropertyType::String8, "\xE9", 1252, {e}},
        {"Cyrillic", PropertyType::String8, "\xE6", 1251, {zhe}},
        {"Japanese", PropertyType::String8, "\x83\x52\x83\x80", 932, {ko, mu}},
        {"terminated", PropertyType::String8, {"ab\0cd", 5}, 1252, {'a', 'b'}},
        {"UTF-8 said to be UTF-16", PropertyType::String8, "\xC3\xA9", 1200, {e}},
        {"western said to be UTF-16", PropertyType::String8, "\xE9\x82", 1200, {e, two}},
        {"page unknown", PropertyType::String8, "\xE9", 4711, {e}},
    };
    for (const Row& row : rows) {
        PropertyValue value = ValueOf(row.type, BytesOf(row.bytes));
        const Result<CStringW> text = pst::Text(value, row.page);
        ASSERT_TRUE(text) << row.name;
        EXPECT_TRUE(*text == row.text) << row.name;
    }
    PropertyValue binary = ValueOf(PropertyType::Binary, BytesOf("x"));
    EXPECT_FALSE(pst::Text(binary, 1252));
}

TEST(ValueList, HoldsTheElementsThatItsOffsetsTell) {
    struct Row {
        const char* name;
        std::uint16_t type;
        Bytes bytes;
        std::optional<std::vector<Bytes>> elements;  // none: refused
    };
    const auto offsets = [](const std::vector<std::uint32_t>& numbers, std::string_view text) {
        ByteWriter bytes;
        for (const std::uint32_t number : numbers) {
            bytes.U32(number);
        }
        return bytes.Append(BytesOf(text)).Take();
    };
    const auto texts = [](const std::vector<std::string_view>& all) {
        std::vector<Bytes> elements;
        elements.reserve(all.size());
        for (const std::string_view text : all) {
            elements.push_back(BytesOf(text));
        }
        return elements;
    };
    const Row rows[] = {
        {"numbers", 0x1003, BytesOf("aaaabbbb"), texts({"aaaa", "bbbb"})},
        {"numbers and a rest", 0x1002, BytesOf("aabbc"), texts({"aa", "bb"})},
        {"GUIDs", 0x1048, BytesOf("0123456789abcdefABCDEFGHIJKLMNOP"), texts({"0123456789abcdef", "ABCDEFGHIJKLMNOP"})},
        {"empty", 0x1003, {}, texts({})},
        {"texts", 0x101E, offsets({3, 16, 18, 18}, "abc"), texts({"ab", "", "c"})},
        {"no texts", 0x1102, offsets({0}, ""), texts({})},
        {"no bytes", 0x1102, {}, texts({})},
        {"backwards", 0x101E, offsets({2, 14, 13}, "abc"), std::nullopt},
        {"past the end", 0x101E, offsets({2, 12, 99}, "abc"), std::nullopt},
        {"into the offsets", 0x101E, offsets({2, 4, 12}, "abc"), std::nullopt},
        {"too many", 0x101E, offsets({0x40000000, 12}, "abc"), std::nullopt},
    };
    for (const Row& row : rows) {
        const auto list = ValueList::Parse(static_cast<PropertyType>(row.type), row.bytes);
        ASSERT_EQ(static_cast<bool>(list), row.elements.has_value()) << row.name;
        if (list) {
            ASSERT_EQ(list->Count(), row.elements->size()) << row.name;
            for (std::size_t i = 0; i < list->Count(); ++i) {
                const auto bytes = list->At(i).Span();
                EXPECT_EQ(Bytes(bytes.begin(), bytes.end()), (*row.elements)[i]) << row.name;
            }
        }
    }
}

}  // namespace
}  // namespace localmapi::testing
