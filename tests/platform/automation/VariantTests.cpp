// VariantInit, VariantClear and VariantCopy.
#include "platform/SafeArray.h"
#include "platform/Variant.h"
#include "platform/WideText.h"
#include "tests/platform/automation/CountedObject.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

VARIANT Empty() {
    VARIANT value;
    VariantInit(&value);
    return value;
}

VARIANT Text(const WCHAR* text) {
    VARIANT value = Empty();
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(text);
    return value;
}

VARIANT Array(VARTYPE elements, SAFEARRAY* array) {
    VARIANT value = Empty();
    value.vt = static_cast<VARTYPE>(VT_ARRAY | elements);
    value.parray = array;
    return value;
}

TEST(Variant, OfAValidTypeIsClearedAndOfAnyOtherIsRefusedUntouched) {
    struct Row {
        VARTYPE first, last;
        bool valid;
    };
    const Row rows[] = {
        {VT_EMPTY, VT_DECIMAL, true},
        {15, 15, false},
        {VT_I1, VT_UINT, true},
        {VT_VOID, VT_LPWSTR, false},
        {32, 35, false},
        {VT_INT_PTR, VT_VERSIONED_STREAM - 2, false},
        {VT_CLSID, VT_CLSID, true},
        {VT_VERSIONED_STREAM, 0x0FFF, false},
        {VT_VECTOR | VT_I4, VT_VECTOR | VT_I4, false},
        {VT_ARRAY | VT_EMPTY, VT_ARRAY | VT_NULL, false},
        {VT_ARRAY | VT_I2, VT_ARRAY | VT_DECIMAL, true},
        {VT_BYREF | VT_EMPTY, VT_BYREF | VT_NULL, false},
        {VT_BYREF | VT_I2, VT_BYREF | VT_DECIMAL, true},
        {VT_BYREF | VT_ARRAY | VT_I2, VT_BYREF | VT_ARRAY | VT_DECIMAL, true},
        {VT_RESERVED, VT_RESERVED | VT_UINT, false},
        {VT_ILLEGAL, VT_ILLEGAL, false},
    };
    for (const Row& row : rows) {
        for (unsigned vt = row.first; vt <= row.last; ++vt) {
            SCOPED_TRACE(vt);
            VARIANT value = Empty();
            value.vt = static_cast<VARTYPE>(vt);
            EXPECT_EQ(VariantClear(&value), row.valid ? S_OK : DISP_E_BADVARTYPE);
            EXPECT_EQ(value.vt, row.valid ? VARTYPE{VT_EMPTY} : static_cast<VARTYPE>(vt));
        }
    }
}

TEST(Variant, CopiedTextIsATextOfItsOwn) {
    VARIANT source = Text("x"_w);
    ASSERT_EQ(SysReAllocStringLen(&source.bstrVal, "a\0b"_w, 3), TRUE);
    VARIANT copy = Text("replaced"_w);
    ASSERT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_NE(copy.bstrVal, source.bstrVal);
    EXPECT_EQ(VariantClear(&source), S_OK);
    EXPECT_EQ(copy.vt, VT_BSTR);
    EXPECT_EQ(CStringW(copy.bstrVal, SysStringLen(copy.bstrVal)), CStringW("a\0b"_w, 3));
    EXPECT_EQ(VariantClear(&copy), S_OK);
}

TEST(Variant, CopyOfANullTextIsAnEmptyOne) {
    VARIANT source = Text(nullptr);
    VARIANT copy = Empty();
    ASSERT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(copy.vt, VT_BSTR);
    ASSERT_NE(copy.bstrVal, nullptr);
    EXPECT_EQ(SysStringByteLen(copy.bstrVal), 0U);
    VariantClear(&copy);
}

TEST(Variant, CopyOfABytesTextKeepsItsOddLength) {
    VARIANT source = Empty();
    source.vt = VT_BSTR;
    source.bstrVal = SysAllocStringByteLen("abc", 3);
    VARIANT copy = Empty();
    ASSERT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(SysStringByteLen(copy.bstrVal), 3U);
    EXPECT_EQ(std::memcmp(copy.bstrVal, "abc", 3), 0);
    VariantClear(&copy);
    VariantClear(&source);
}

TEST(Variant, ScalarsAreCopiedWhole) {
    VARIANT source = Empty();
    source.vt = VT_DECIMAL;
    source.decVal.scale = 3;
    source.decVal.Hi32 = 0x11223344;
    source.decVal.Lo64 = 0x5566778899AABBCC;
    VARIANT copy = Text("replaced"_w);
    ASSERT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(copy.vt, VT_DECIMAL);
    EXPECT_EQ(copy.decVal.scale, 3);
    EXPECT_EQ(copy.decVal.Hi32, 0x11223344U);
    EXPECT_EQ(copy.decVal.Lo64, 0x5566778899AABBCCU);
}

TEST(Variant, InterfacesAreCountedByCopyAndClear) {
    CountedObject object;
    VARIANT source = Empty();
    source.vt = VT_UNKNOWN;
    source.punkVal = &object;
    object.AddRef();
    VARIANT copy = Empty();
    ASSERT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(object.References(), 2U);
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);  // over itself
    EXPECT_EQ(object.References(), 2U);
    EXPECT_EQ(VariantClear(&copy), S_OK);
    EXPECT_EQ(VariantClear(&copy), S_OK);
    EXPECT_EQ(VariantClear(&source), S_OK);
    EXPECT_EQ(object.References(), 0U);

    source.vt = VT_DISPATCH;
    source.punkVal = nullptr;
    EXPECT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(VariantClear(&copy), S_OK);
}

TEST(Variant, ByReferenceOwnsNothing) {
    VARIANT text = Text("owned elsewhere"_w);
    VARIANT reference = Empty();
    reference.vt = VT_BYREF | VT_BSTR;
    reference.pbstrVal = &text.bstrVal;
    VARIANT copy = Empty();
    ASSERT_EQ(VariantCopy(&copy, &reference), S_OK);
    EXPECT_EQ(copy.pbstrVal, &text.bstrVal);
    EXPECT_EQ(VariantClear(&copy), S_OK);
    EXPECT_EQ(VariantClear(&reference), S_OK);
    EXPECT_EQ(CStringW(text.bstrVal), "owned elsewhere"_w);
    EXPECT_EQ(VariantClear(&text), S_OK);
}

TEST(Variant, BadTypesOnEitherSideOfACopyAreRefused) {
    VARIANT bad = Empty();
    bad.vt = 99;
    VARIANT good = Text("kept"_w);
    EXPECT_EQ(VariantCopy(&good, &bad), DISP_E_BADVARTYPE);
    EXPECT_EQ(CStringW(good.bstrVal), "kept"_w);
    EXPECT_EQ(VariantCopy(&bad, &good), DISP_E_BADVARTYPE);
    EXPECT_EQ(VariantCopy(&good, &good), S_OK);
    EXPECT_EQ(CStringW(good.bstrVal), "kept"_w);
    EXPECT_EQ(VariantClear(&good), S_OK);
}

TEST(Variant, LockedArrayIsNeitherClearedNorCopiedOver) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 1);
    ASSERT_EQ(SafeArrayLock(array), S_OK);
    VARIANT value = Array(VT_I4, array);
    EXPECT_EQ(VariantClear(&value), DISP_E_ARRAYISLOCKED);
    value = Array(VT_I4, array);
    VARIANT source = Empty();
    EXPECT_EQ(VariantCopy(&value, &source), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    value = Array(VT_I4, array);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST(Variant, CopiedArrayIsDeepAndUnlocked) {
    SAFEARRAY* inner = SafeArrayCreateVector(VT_BSTR, 0, 1);
    static_cast<BSTR*>(inner->pvData)[0] = SysAllocString("inner"_w);
    SAFEARRAY* outer = SafeArrayCreateVector(VT_VARIANT, 0, 3);
    static_cast<VARIANT*>(outer->pvData)[1] = Array(VT_BSTR, inner);
    VARIANT source = Array(VT_VARIANT, outer);
    ASSERT_EQ(SafeArrayLock(outer), S_OK);

    VARIANT copy = Empty();
    ASSERT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(SafeArrayUnlock(outer), S_OK);
    EXPECT_EQ(VariantClear(&source), S_OK);
    ASSERT_EQ(copy.vt, VT_ARRAY | VT_VARIANT);
    const auto* elements = static_cast<const VARIANT*>(copy.parray->pvData);
    EXPECT_EQ(elements[0].vt, VT_EMPTY);
    ASSERT_EQ(elements[1].vt, VT_ARRAY | VT_BSTR);
    EXPECT_EQ(CStringW(static_cast<BSTR*>(elements[1].parray->pvData)[0]), "inner"_w);
    EXPECT_EQ(VariantClear(&copy), S_OK);
}

TEST(Variant, OfANullArrayIsCopiedAndCleared) {
    VARIANT source = Array(VT_I4, nullptr);
    VARIANT copy = Empty();
    ASSERT_EQ(VariantCopy(&copy, &source), S_OK);
    EXPECT_EQ(copy.vt, VT_ARRAY | VT_I4);
    EXPECT_EQ(copy.parray, nullptr);
    EXPECT_EQ(VariantClear(&copy), S_OK);
}

}  // namespace
