// Values made from bytes, measured, checked and copied.
#include "localmapi/props/Values.h"
#include "mapi/MapiCodes.h"
#include "tests/localmapi/support/EveryValue.h"
#include "tests/localmapi/support/LeakCheck.h"
#include "tests/localmapi/support/ValueText.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace localmapi::testing {
namespace {

class Values : public LeakCheck {};

constexpr ULONG Tag(ULONG type) {
    return PROP_TAG(type, 0x6001);
}

TEST_F(Values, ComeFromTheBytesOfFiles) {
    for (const FileValue& row : FileValues()) {
        SCOPED_TRACE(row.name);
        Arena arena;
        const std::optional<SPropValue> value = ValueFromBytes(Tag(row.type), FromHex(row.hex), arena);
        ASSERT_EQ(value.has_value(), row.text != nullptr);
        if (value) {
            EXPECT_EQ(value->ulPropTag, Tag(row.type));
            EXPECT_EQ(TextOf(*value), row.text);
        }
    }
}

// The source is gone when the copies are looked at, and each has one block of the size announced, no byte more.
TEST_F(Values, CopyIntoOneBlockThatStandsAlone) {
    struct Copy {
        SPropValue value{};
        std::unique_ptr<std::uint64_t[]> block;
    };
    std::vector<Copy> copies;
    auto source = std::make_unique<Arena>();
    const auto values = EveryValue(*source);
    for (const NamedValue& row : values) {
        SCOPED_TRACE(row.name);
        const std::size_t size = PointedSize(row.value);
        EXPECT_EQ(size % ValueMemory::kAlignment, 0U);
        EXPECT_EQ(SizeOf(row.value), row.size);
        EXPECT_TRUE(IsValid(row.value));
        Copy& copy = copies.emplace_back();
        copy.block = std::make_unique<std::uint64_t[]>(size / sizeof(std::uint64_t));
        BlockMemory memory(copy.block.get(), size);
        ASSERT_EQ(CopyValue(row.value, memory, copy.value), S_OK);
        EXPECT_THROW(memory.Allocate(1), std::bad_alloc);
    }
    source.reset();
    for (std::size_t i = 0; i < copies.size(); ++i) {
        EXPECT_EQ(TextOf(copies[i].value), values[i].text) << values[i].name;
    }
}

TEST_F(Values, ThatCannotBeAreRefusedBeforeTheyAreFollowed) {
    const auto several = [](ULONG type, ULONG count, void* elements) {
        SPropValue value{};
        value.ulPropTag = Tag(type);
        value.Value.MVbin = {count, static_cast<SBinary*>(elements)};
        return value;
    };
    LPSTR noText = nullptr;
    SBinary noBytes{3, nullptr};
    LONG one = 1;
    SPropValue hugeBinary = several(PT_BINARY, 0x80000000, &one);
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
        {"several without pointer", several(PT_MV_LONG, 1, nullptr)},
        {"several of 2 GB", several(PT_MV_LONG, 0x20000000, &one)},
        {"texts, one without pointer", several(PT_MV_STRING8, 1, &noText)},
        {"binaries, one without pointer", several(PT_MV_BINARY, 1, &noBytes)},
        {"several Booleans", several(MV_FLAG | PT_BOOLEAN, 1, &one)},
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
