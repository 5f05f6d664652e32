// Values between host and provider: each kind both ways, and what is refused or read as null.
#include "platform/SafeArray.h"
#include "provider/HostConversion.h"
#include "tests/provider/proxy/ValueText.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <ostream>
#include <string>

namespace VxOutlookProvider {

namespace {

using namespace std::string_literals;

constexpr VARTYPE kBytes = VT_ARRAY | VT_UI1;
constexpr VARTYPE kRecord = VT_ARRAY | VT_VARIANT;

// Arrays in arrays, `depth` of them.
Value Nested(std::size_t depth) {
    Value value;
    for (std::size_t i = 0; i < depth; ++i) {
        Value::Array around;
        around.push_back(std::move(value));
        value = std::move(around);
    }
    return value;
}

struct TypedRow {
    const char* name;
    Value value;
    VARTYPE vt;  // of the VARIANT
};

const TypedRow kTypedRows[] = {
    {"nothing", {}, VT_EMPTY},
    {"smallest integer", std::numeric_limits<std::int32_t>::min(), VT_I4},
    {"64-bit integer", std::numeric_limits<std::int64_t>::min(), VT_I8},
    {"64-bit integer that would fit 32", std::int64_t{7}, VT_I8},
    {"true", true, VT_BOOL},
    {"false", false, VT_BOOL},
    {"double", -0.5, VT_R8},
    {"text", u"\u00E9\u65E5"s, VT_BSTR},
    {"empty text", u""s, VT_BSTR},
    {"zeros inside", u"\0a\0\0b\0"s, VT_BSTR},
    {"lone surrogates", u"\xDC00x\xD800"s, VT_BSTR},
    {"bytes", Value::Bytes{0, 0xFF, 0x80}, kBytes},
    {"no bytes", Value::Bytes{}, kBytes},
    {"no elements", Value::Array{}, kRecord},
    {"a list of records", Value::Array{Value::Array{1, u"a", nullptr}, Value::Array{}, Value::Bytes{1}}, kRecord},
    {"as deep as can be", Nested(kMaxArrayDepth), kRecord},
};

}  // namespace

TEST(HostConversion, GivesBackWhatItTook) {
    for (const TypedRow& row : kTypedRows) {
        SCOPED_TRACE(row.name);
        VariantHolder variant;
        ASSERT_EQ(ToVariant(row.value, variant), S_OK);
        EXPECT_EQ(variant.Get().vt, row.vt);
        EXPECT_EQ(ToHost(variant.Get()), row.value);
        // Into one that holds something, as often as one likes.
        ASSERT_EQ(ToVariant(row.value, variant), S_OK);
        EXPECT_EQ(ToHost(variant.Get()), row.value);
    }
}

TEST(HostConversion, WritesWhatRecordsHold) {
    const Value record(Value::Array{true, false, u"a\0b"s, Value::Bytes{1, 2}});
    VariantHolder holder;
    ASSERT_EQ(ToVariant(record, holder), S_OK);
    const SAFEARRAY& array = *holder.Get().parray;
    ASSERT_EQ(array.cDims, 1);
    EXPECT_EQ(array.cLocks, 0U);
    EXPECT_EQ(array.rgsabound[0].lLbound, 0);
    ASSERT_EQ(array.rgsabound[0].cElements, 4U);
    const auto* fields = static_cast<const VARIANT*>(array.pvData);
    EXPECT_EQ(fields[0].boolVal, -1);
    EXPECT_EQ(fields[1].boolVal, 0);
    EXPECT_EQ(SysStringByteLen(fields[2].bstrVal), 6U);
    EXPECT_EQ(fields[2].bstrVal[3], 0);
    EXPECT_EQ(fields[3].parray->rgsabound[0].cElements, 2U);
    EXPECT_EQ(fields[3].parray->cbElements, 1U);
}

TEST(HostConversion, RefusesWhatIsTooDeepAndHoldsNothingThen) {
    for (const std::size_t depth : {kMaxArrayDepth + 1, std::size_t{1'000}}) {
        VariantHolder variant;
        ASSERT_EQ(ToVariant(Value(1), variant), S_OK);
        EXPECT_EQ(ToVariant(Nested(depth), variant), E_INVALIDARG);
        EXPECT_EQ(variant.Get().vt, VT_EMPTY);
    }
}

TEST(HostConversion, TakesOnlyAnArrayForAUri) {
    for (const TypedRow& row : kTypedRows) {
        SCOPED_TRACE(row.name);
        VariantHolder variant;
        EXPECT_EQ(ToUri(row.value, variant), row.vt == kRecord ? S_OK : E_INVALIDARG);
        EXPECT_EQ(variant.Get().vt, row.vt == kRecord ? row.vt : VARTYPE{VT_EMPTY});
    }
}

namespace {

void PutArray(VARIANT& variant, VARTYPE type, SAFEARRAY* array) {
    variant.vt = static_cast<VARTYPE>(VT_ARRAY | type);
    variant.parray = array;
}

// Arrays in arrays as a fault might make them.
void PutNested(VARIANT& variant, std::size_t depth) {
    VARIANT* inner = &variant;
    for (std::size_t i = 0; i < depth; ++i) {
        PutArray(*inner, VT_VARIANT, SafeArrayCreateVector(VT_VARIANT, 0, 1));
        inner = static_cast<VARIANT*>(inner->parray->pvData);
    }
}

// How many arrays lie inside each other.
std::size_t DepthOf(const Value& value) {
    std::size_t depth = 0;
    for (const Value* at = &value; at->GetKind() == Value::Kind::Array; at = &at->At(0)) {
        ++depth;
    }
    return depth;
}

LONG g_number = 5;

}  // namespace

TEST(HostConversion, ReadsForeignValuesAsWhatTheyAreOrAsNothing) {
    struct Row {
        const char* name;
        std::function<void(VARIANT&)> put;
        Value value;
    };
    SAFEARRAYBOUND square[] = {{2, 0}, {2, 0}};
    const Row rows[] = {
        {"VT_INT", [](VARIANT& v) { v.vt = VT_INT, v.intVal = -3; }, -3},
        {"VT_CY", [](VARIANT& v) { v.vt = VT_CY, v.cyVal.int64 = 1LL << 40; }, std::int64_t{1} << 40},
        {"a boolean other than -1", [](VARIANT& v) { v.vt = VT_BOOL, v.boolVal = 0x100; }, true},
        {"VT_NULL", [](VARIANT& v) { v.vt = VT_NULL; }, nullptr},
        {"a null BSTR", [](VARIANT& v) { v.vt = VT_BSTR, v.bstrVal = nullptr; }, nullptr},
        {"half a unit", [](VARIANT& v) { v.vt = VT_BSTR, v.bstrVal = SysAllocStringByteLen("abc", 3); }, u"\u6261"},
        {"an unknown type", [](VARIANT& v) { v.vt = VT_DATE, v.date = 1; }, nullptr},
        {"a reference", [](VARIANT& v) { v.vt = VT_I4 | VT_BYREF, v.plVal = &g_number; }, nullptr},
        {"no array", [](VARIANT& v) { PutArray(v, VT_VARIANT, nullptr); }, nullptr},
        {"two dimensions", [&](VARIANT& v) { PutArray(v, VT_VARIANT, SafeArrayCreate(VT_VARIANT, 2, square)); },
         nullptr},
        {"two dimensions of bytes", [&](VARIANT& v) { PutArray(v, VT_UI1, SafeArrayCreate(VT_UI1, 2, square)); },
         nullptr},
        {"other elements", [](VARIANT& v) { PutArray(v, VT_I4, SafeArrayCreateVector(VT_I4, 0, 2)); }, nullptr},
        {"elements of another size than the type says",
         [](VARIANT& v) { PutArray(v, VT_VARIANT, SafeArrayCreateVector(VT_UI1, 0, 48)); }, nullptr},
        {"another lower bound", [](VARIANT& v) { PutArray(v, VT_UI1, SafeArrayCreateVector(VT_UI1, 9, 2)); },
         Value::Bytes{0, 0}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        VariantHolder variant;
        row.put(*variant.Put());
        EXPECT_EQ(ToHost(variant.Get()), row.value);
    }
}

TEST(HostConversion, ReadsDeepArraysDownToItsBound) {
    for (const std::size_t depth : {kMaxArrayDepth, kMaxArrayDepth + 1, std::size_t{1'000}}) {
        VariantHolder variant;
        PutNested(*variant.Put(), depth);
        EXPECT_EQ(DepthOf(ToHost(variant.Get())), kMaxArrayDepth);
    }
}

TEST(HostConversion, LendsTextsAndCopiesThemWhole) {
    EXPECT_EQ(ToWide(Text()), nullptr);
    EXPECT_EQ(ToWide(Text(nullptr)), nullptr);
    const Text empty(u"");
    ASSERT_NE(ToWide(empty), nullptr);
    EXPECT_EQ(*ToWide(empty), 0);
    const Text text(u"a\0b"s);
    EXPECT_EQ(ToWide(text), static_cast<const void*>(text.Pointer()));
    EXPECT_EQ(ToWideCopy(Text()), CStringW());
    EXPECT_EQ(ToWideCopy(text), CStringW("a\0b"_w, 3));
    EXPECT_EQ(ToHost(CStringW("a\0b"_w, 3)), u"a\0b"s);
}

}  // namespace VxOutlookProvider
