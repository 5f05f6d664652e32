// Records as the host sees them, and what they own.
#include "provider/ExchObject.h"
#include "provider/ExchObjectData.h"
#include "tests/platform/automation/CountedObject.h"
#include "tests/provider/records/HostValue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace {

constexpr std::size_t kField = 5;  // any field: the setters do not look at the tables

void Hold(VARIANT& element, CountedObject& object) {
    object.AddRef();
    element.vt = VT_UNKNOWN;
    element.punkVal = &object;
}

TEST(Record, HasTheWireFormat) {
    CExchObjectData record;
    const std::uint8_t bytes[] = {1, 0, 255};
    record.SetIntFieldVal(0, -2, true);
    record.SetLongLongFieldVal(3, std::numeric_limits<std::int64_t>::min(), true);
    record.SetStringFieldVal(5, CStringW({'A', 0x00E9}), true);
    record.SetBooleanFieldVal(16, true, true);
    record.SetBooleanFieldVal(18, false, true);
    record.SetBinaryBlobFieldVal(112, bytes, 3);
    record.SetDoubleFieldVal(171, 0.25);
    record.SetStringFieldVal(197, ""_w, true);

    HostValue host = HostValue::From(record);
    ASSERT_EQ(host->vt, 0x200C);
    EXPECT_EQ(host.Array().cDims, 1);
    EXPECT_EQ(host.Array().cLocks, 0U);
    EXPECT_EQ(host.Array().rgsabound[0].lLbound, 0);
    const auto elements = host.Elements();
    ASSERT_EQ(elements.size(), 198U);
    EXPECT_EQ(elements[0].vt, 3);
    EXPECT_EQ(elements[0].lVal, -2);
    EXPECT_EQ(elements[1].vt, 0);
    EXPECT_EQ(elements[3].vt, 20);
    EXPECT_EQ(elements[3].llVal, std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(elements[5].vt, 8);
    EXPECT_EQ(TextOf(elements[5]), CStringW({'A', 0x00E9}));
    EXPECT_EQ(elements[16].vt, 11);
    EXPECT_EQ(elements[16].boolVal, -1);
    EXPECT_EQ(elements[18].vt, 11);
    EXPECT_EQ(elements[18].boolVal, 0);
    ASSERT_EQ(elements[112].vt, 0x2011);
    EXPECT_EQ(elements[112].parray->rgsabound[0].cElements, 3U);
    EXPECT_EQ(elements[112].parray->rgsabound[0].lLbound, 0);
    EXPECT_EQ(std::memcmp(elements[112].parray->pvData, bytes, 3), 0);
    EXPECT_EQ(elements[171].vt, 5);
    EXPECT_EQ(elements[171].dblVal, 0.25);
    ASSERT_EQ(elements[197].vt, 8);
    ASSERT_NE(elements[197].bstrVal, nullptr);
    EXPECT_EQ(SysStringByteLen(elements[197].bstrVal), 0U);
}

TEST(Record, TextArrivesAsUtf8CanCarryIt) {
    struct Row {
        const char* name;
        CStringW text, expected;
    };
    const Row rows[] = {
        {"plain", "plain"_w, "plain"_w},
        {"empty", ""_w, ""_w},
        {"pair", {0xD83D, 0xDE00}, {0xD83D, 0xDE00}},
        {"first and last pair", {0xD800, 0xDC00, 0xDBFF, 0xDFFF}, {0xD800, 0xDC00, 0xDBFF, 0xDFFF}},
        {"high half alone", {'a', 0xD83D, 'b'}, {'a', 0xFFFD, 'b'}},
        {"low half alone", {'a', 0xDE00, 'b'}, {'a', 0xFFFD, 'b'}},
        {"halves exchanged", {0xDE00, 0xD83D}, {0xFFFD, 0xFFFD}},
        {"high half at the end", {'a', 0xDBFF}, {'a', 0xFFFD}},
        {"high half before a pair", {0xD83D, 0xD83D, 0xDE00}, {0xFFFD, 0xD83D, 0xDE00}},
        {"around the surrogates", {0xD7FF, 0xE000}, {0xD7FF, 0xE000}},
        {"noncharacters and byte order mark", {0xFEFF, 0xFFFE, 0xFFFF}, {0xFEFF, 0xFFFE, 0xFFFF}},
        {"cut at the first zero", CStringW("a\0b"_w, 3), "a"_w},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        CProfileInfoObjectData record;
        record.SetStringFieldVal(0, row.text, true);
        HostValue host = HostValue::From(record);
        ASSERT_EQ(host.Elements()[0].vt, 8);
        EXPECT_EQ(TextOf(host.Elements()[0]), row.expected);
    }
}

TEST(Record, TextMayBeTheElementsOwn) {
    CProfileInfoObjectData record;
    record.SetStringFieldVal(0, "old text"_w, true);
    record.SetStringFieldVal(0, static_cast<const WCHAR*>(record.GetData(0)->bstrVal + 4), false);
    EXPECT_EQ(record.GetStringFieldVal(0), _bstr_t("text"_w));
}

// What the setters do with the former content of an element, seen by whether an object in it is released.
TEST(Record, SettersGiveUpTheFormerContentAsEachIsMeantTo) {
    using Setter = std::function<void(CExchObject&, bool fresh)>;
    struct Row {
        const char* name;
        Setter set;
        bool releasedIfFresh, releasedOtherwise;
    };
    VARIANT number;
    VariantInit(&number);
    number.vt = VT_I4;
    const Row rows[] = {
        {"int", [](CExchObject& r, bool fresh) { r.SetIntFieldVal(kField, 1, fresh); }, false, true},
        {"64-bit", [](CExchObject& r, bool fresh) { r.SetLongLongFieldVal(kField, 1, fresh); }, true, true},
        {"boolean", [](CExchObject& r, bool fresh) { r.SetBooleanFieldVal(kField, true, fresh); }, true, true},
        {"double", [](CExchObject& r, bool) { r.SetDoubleFieldVal(kField, 1); }, false, false},
        {"text", [](CExchObject& r, bool fresh) { r.SetStringFieldVal(kField, "x"_w, fresh); }, false, true},
        {"owned text", [](CExchObject& r, bool fresh) { r.SetStringFieldVal(kField, CStringW("x"_w), fresh); }, false,
         true},
        {"null text", [](CExchObject& r, bool fresh) { r.SetStringFieldVal(kField, nullptr, fresh); }, true, true},
        {"bytes", [](CExchObject& r, bool) { r.SetBinaryBlobFieldVal(kField, nullptr, 0); }, false, false},
        {"variant", [&](CExchObject& r, bool fresh) { r.SetVariantFieldVal(kField, &number, fresh); }, false, true},
    };
    for (const Row& row : rows) {
        for (const bool fresh : {true, false}) {
            SCOPED_TRACE(testing::Message() << row.name << (fresh ? ", fresh" : ""));
            CountedObject object;
            CExchObjectData record;
            Hold(*record.GetData(kField), object);
            row.set(record, fresh);
            EXPECT_NE(record.GetData(kField)->vt, VT_UNKNOWN);
            EXPECT_EQ(object.References() == 0, fresh ? row.releasedIfFresh : row.releasedOtherwise);
        }
    }
}

TEST(Record, NullTextIsStoredAsAnEmptyOne) {
    CProfileInfoObjectData record;
    record.SetStringFieldVal(0, nullptr, true);
    ASSERT_EQ(record.GetData(0)->vt, VT_BSTR);
    ASSERT_NE(record.GetData(0)->bstrVal, nullptr);
    EXPECT_EQ(SysStringByteLen(record.GetData(0)->bstrVal), 0U);
}

TEST(Record, ElementMayBeSetToItself) {
    CountedObject object;
    CExchObjectData record;
    Hold(*record.GetData(kField), object);
    record.SetVariantFieldVal(kField, record.GetData(kField), false);
    EXPECT_EQ(record.GetData(kField)->vt, VT_UNKNOWN);
    EXPECT_EQ(object.References(), 1U);
}

TEST(Record, StaysLockedFromTheFirstAccessUntilItIsReleased) {
    HostValue host = HostValue::Record(3);
    {
        const CProfileInfoObjectData record(host.Get());
        EXPECT_EQ(host.Array().cLocks, 0U);
        EXPECT_FALSE(record.IsFieldSet(0));
        EXPECT_EQ(record.GetIntFieldVal(1), 0);
        EXPECT_EQ(host.Array().cLocks, 1U);
        record.ReleaseLock();
        record.ReleaseLock();
        EXPECT_EQ(host.Array().cLocks, 0U);
        record.EnsureLock();
        EXPECT_EQ(host.Array().cLocks, 1U);
    }
    EXPECT_EQ(host.Array().cLocks, 0U);
}

TEST(Record, OwnsItsArrayUntilItIsDetached) {
    CountedObject object;
    {
        CExchObjectData record;
        Hold(*record.GetData(kField), object);
    }
    EXPECT_EQ(object.References(), 0U);

    HostValue host;
    {
        CExchObjectData record;
        Hold(*record.GetData(kField), object);
        record.Dettach(host.Get());
        EXPECT_EQ(host.Array().cLocks, 0U);
        EXPECT_TRUE(record.IsFieldSet(kField));  // still sees what is no longer its own
    }
    EXPECT_EQ(object.References(), 1U);
    EXPECT_EQ(host.Elements()[kField].vt, VT_UNKNOWN);
    EXPECT_EQ(host.Array().cLocks, 0U);

    CExchObjectData bare;
    Hold(*bare.GetData(kField), object);
    SAFEARRAY* array = bare.Dettach();
    EXPECT_EQ(object.References(), 2U);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(object.References(), 1U);
}

TEST(Record, BorrowedArrayIsWrittenThroughAndNeverDestroyed) {
    HostValue host = HostValue::Record(198);
    {
        CExchObjectData record(host.Get());
        record.SetIntFieldVal(0, 7, true);
    }
    EXPECT_EQ(host.Elements()[0].lVal, 7);
}

TEST(Record, CopyIsDeepAndOwned) {
    CountedObject object;
    HostValue host = HostValue::Record(3);
    {
        CProfileInfoObjectData source(host.Get());
        source.SetStringFieldVal(0, "profile"_w, true);
        Hold(*source.GetData(1), object);
        EXPECT_EQ(host.Array().cLocks, 1U);
        CProfileInfoObjectData copy(source);
        EXPECT_EQ(host.Array().cLocks, 0U);
        EXPECT_EQ(object.References(), 2U);
        copy.SetStringFieldVal(0, "changed"_w, false);
        EXPECT_EQ(source.GetStringFieldVal(0), _bstr_t("profile"_w));

        CProfileInfoObjectData other;
        Hold(*other.GetData(2), object);
        other.InitFrom(copy);
        EXPECT_EQ(other.GetStringFieldVal(0), _bstr_t("changed"_w));
        EXPECT_FALSE(other.IsFieldSet(2));
        EXPECT_EQ(object.References(), 3U);
    }
    EXPECT_EQ(object.References(), 1U);
}

TEST(Record, ListHoldsRecordsByValue) {
    CArrayObjectData list(std::size_t{2});
    for (std::size_t i = 0; i < 2; ++i) {
        CFolderInfoObjectData record;
        record.SetStringFieldVal("fi_folderPath"_field, i == 0 ? "Inbox"_w : "Sent"_w, true);
        VARIANT element;
        record.Dettach(&element);
        list.SetVariantFieldVal(i, &element, true);
    }
    HostValue host = HostValue::From(list);
    ASSERT_EQ(host->vt, 0x200C);
    ASSERT_EQ(host.Elements().size(), 2U);
    ASSERT_EQ(host.Elements()[1].vt, 0x200C);
    const auto second = HostValue::ElementsOf(host.Elements()[1]);
    ASSERT_EQ(second.size(), 6U);
    EXPECT_EQ(TextOf(second[0]), "Sent"_w);

    CArrayObjectData copy = CArrayObjectData(host.Get());
    VARIANT& nested = *copy.GetData(0);
    EXPECT_EQ(CFolderInfoObjectData(&nested).GetStringFieldVal(0), _bstr_t("Inbox"_w));
}

TEST(Record, ListKnowsItsLength) {
    CArrayObjectData none(std::size_t{0});
    EXPECT_EQ(none.GetSize(), 0U);
    HostValue host = HostValue::From(none);
    EXPECT_EQ(host->vt, 0x200C);
    EXPECT_EQ(host.Elements().size(), 0U);
    EXPECT_EQ(CArrayObjectData(host.Get()).GetSize(), 0U);

    HostValue shifted = HostValue::Record(3, -7);
    EXPECT_EQ(CArrayObjectData(shifted.Get()).GetSize(), 3U);
    HostValue empty;
    empty.Get()->vt = VT_ARRAY | VT_VARIANT;
    empty.Get()->parray = nullptr;
    EXPECT_EQ(CArrayObjectData(empty.Get()).GetSize(), 0U);
}

TEST(Record, ListOfAHundredThousandRecordsIsBuiltCopiedAndDestroyed) {
    constexpr std::size_t kCount = 100'000;
    CArrayObjectData list(kCount);
    for (std::size_t i = 0; i < kCount; ++i) {
        CProfileInfoObjectData record;
        record.SetIntFieldVal(1, static_cast<int>(i), true);
        VARIANT element;
        record.Dettach(&element);
        list.SetVariantFieldVal(i, &element, true);
    }
    const CArrayObjectData copy(list);
    HostValue host = HostValue::From(list);
    for (const std::size_t i : {std::size_t{0}, kCount / 2, kCount - 1}) {
        EXPECT_EQ(HostValue::ElementsOf(*copy.GetData(i))[1].lVal, static_cast<LONG>(i));
        EXPECT_NE(copy.GetData(i)->parray, host.Elements()[i].parray);
    }
}

TEST(Record, BytesComeBackAndNoneAreNotUnset) {
    CExchObjectData record;
    std::string read = "before";
    record.GetBinaryBlobFieldVal(112, read);
    EXPECT_TRUE(read.empty());
    EXPECT_FALSE(record.IsFieldSet(112));

    record.SetBinaryBlobFieldVal(112, nullptr, 0);
    EXPECT_TRUE(record.IsFieldSet(112));
    EXPECT_EQ(record.GetData(112)->vt, 0x2011);
    EXPECT_EQ(record.GetData(112)->parray->rgsabound[0].cElements, 0U);
    read = "before";
    record.GetBinaryBlobFieldVal(112, read);
    EXPECT_TRUE(read.empty());

    std::vector<std::uint8_t> large(std::size_t{64} << 20);
    large.front() = 1;
    large.back() = 255;
    record.SetBinaryBlobFieldVal(113, large.data(), static_cast<int>(large.size()));
    record.GetBinaryBlobFieldVal(113, read);
    ASSERT_EQ(read.size(), large.size());
    EXPECT_EQ(std::memcmp(read.data(), large.data(), large.size()), 0);

    SAFEARRAY* bytes = record.GetData(113)->parray;
    bytes->cDims = 0;
    record.GetBinaryBlobFieldVal(113, read);
    EXPECT_TRUE(read.empty());
    bytes->cDims = 1;

    HostValue bare;
    CExchObject::SetBinaryInVariant(bare.Get(), nullptr, -1);
    EXPECT_EQ(bare->vt, 0x2011);
    EXPECT_EQ(bare->parray->rgsabound[0].cElements, 0U);
}

// The getters and GetDataType over elements of each type, set as a host would.
TEST(Record, ElementsOfAnyTypeAreReadAsWhatIsAskedFor) {
    struct Row {
        const char* name;
        std::int64_t value, longLong;
        int integer, type;
        VARTYPE vt;
        bool set, boolean;
    };
    constexpr std::int64_t kWide = 0x1122334480000001;
    constexpr int kLow = std::numeric_limits<int>::min() + 1;
    const Row rows[] = {
        {"unset", kWide, 0, kLow, 0, VT_EMPTY, false, false},
        {"null", kWide, 0, kLow, 0, VT_NULL, false, false},
        {"VT_I4", 5, 5, 5, 1, VT_I4, true, true},
        {"VT_INT", -1, -1, -1, 1, VT_INT, true, true},
        {"VT_I8", kWide, kWide, kLow, 3, VT_I8, true, true},
        {"VT_CY", kWide, kWide, kLow, 3, VT_CY, true, true},
        {"VT_BOOL of 1", 1, 1, 1, 4, VT_BOOL, true, true},
        {"VT_BOOL of a high bit", 0x8000, 0x8000, 0x8000, 4, VT_BOOL, true, true},
        {"VT_BOOL without its 16 bits", 0x10000, 0x10000, 0x10000, 4, VT_BOOL, true, false},
        {"VT_R8", 0x3FD0000000000000, 0x3FD0000000000000, 0, 6, VT_R8, true, false},
        {"VT_I2", 3, 3, 3, 0, VT_I2, true, true},
        {"VT_DATE", 0, 0, 0, 0, VT_DATE, true, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        HostValue host = HostValue::Record(3);
        host.Elements()[2].vt = row.vt;
        host.Elements()[2].llVal = row.value;
        const CProfileInfoObjectData record(host.Get());
        EXPECT_EQ(record.GetDataType(2), row.type);
        EXPECT_EQ(record.IsFieldSet(2), row.set);
        EXPECT_EQ(record.GetBooleanFieldVal(2), row.boolean);
        EXPECT_EQ(record.GetLongLongFieldVal(2), row.longLong);
        EXPECT_EQ(record.GetIntFieldVal(2), row.integer);
        if (row.vt == VT_R8 || !row.set) {
            EXPECT_EQ(record.GetDoubleFieldVal(2), row.set ? 0.25 : 0.0);
        }
        EXPECT_TRUE(record.GetStringFieldVal(2).IsNull());
        std::string bytes;
        record.GetBinaryBlobFieldVal(2, bytes);
        EXPECT_TRUE(bytes.empty());
    }
}

TEST(Record, TextsAndBytesOfTheHostAreReadWhole) {
    HostValue host = HostValue::Record(4);
    host.Elements()[0].vt = VT_BSTR;
    host.Elements()[0].bstrVal = SysAllocStringLen("a\0b"_w, 3);
    host.Elements()[1].vt = VT_BSTR;
    host.Elements()[1].bstrVal = nullptr;
    host.Elements()[2].vt = VT_ARRAY | VT_UI1;
    host.Elements()[2].parray = SafeArrayCreateVector(VT_UI1, 3, 2);
    std::memcpy(host.Elements()[2].parray->pvData, "\0z", 2);
    host.Elements()[3].vt = VT_ARRAY | VT_I4;
    host.Elements()[3].parray = nullptr;

    const CArrayObjectData record(host.Get());
    EXPECT_EQ(record.GetStringFieldVal(0), _bstr_t(CStringW("a\0b"_w, 3)));
    EXPECT_EQ(record.GetDataType(0), 2);
    EXPECT_TRUE(record.GetStringFieldVal(1).IsNull());
    EXPECT_TRUE(record.IsFieldSet(1));
    EXPECT_EQ(record.GetDataType(2), 5);
    std::string bytes;
    record.GetBinaryBlobFieldVal(2, bytes);
    EXPECT_EQ(bytes, std::string("\0z", 2));
    record.GetBinaryBlobFieldVal(3, bytes);
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(record.GetDataType(3), 0);
}

// Hosts hand in what they have: shorter arrays, arrays of other things, nothing at all.
TEST(Record, FieldThatTheArrayDoesNotHaveReadsAsUnsetAndIsNotWritten) {
    HostValue tooShort = HostValue::Record(2);
    HostValue bytes;
    CExchObject::SetBinaryInVariant(bytes.Get(), reinterpret_cast<const std::uint8_t*>("0123456789"), 10);
    HostValue empty;
    empty.Get()->parray = nullptr;
    struct Row {
        const char* name;
        VARIANT* value;
    };
    for (const Row& row : {Row{"two fields", tooShort.Get()}, Row{"bytes", bytes.Get()}, Row{"no array", empty.Get()},
                           Row{"no VARIANT", nullptr}}) {
        SCOPED_TRACE(row.name);
        CExchObjectData record(row.value);
        for (const std::size_t index : {std::size_t{2}, std::size_t{197}, std::numeric_limits<std::size_t>::max()}) {
            record.SetIntFieldVal(index, 1, false);
            record.SetLongLongFieldVal(index, 1, false);
            record.SetBooleanFieldVal(index, true, false);
            record.SetDoubleFieldVal(index, 1);
            record.SetStringFieldVal(index, "text"_w, false);
            record.SetBinaryBlobFieldVal(index, nullptr, 0);
            EXPECT_EQ(record.GetData(index), nullptr);
            EXPECT_FALSE(record.IsFieldSet(index));
            EXPECT_EQ(record.GetDataType(index), 0);
            EXPECT_EQ(record.GetIntFieldVal(index), 0);
            EXPECT_EQ(record.GetLongLongFieldVal(index), 0);
            EXPECT_TRUE(record.GetStringFieldVal(index).IsNull());
        }
    }
    EXPECT_EQ(std::memcmp(bytes->parray->pvData, "0123456789", 10), 0);
}

}  // namespace
