// Arrays: layout, bounds, locks, elements and what they own.
#include "platform/SafeArray.h"
#include "platform/WideText.h"
#include "tests/platform/automation/CountedObject.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <vector>

namespace {

template <typename Element>
Element* Elements(SAFEARRAY* array) {
    return static_cast<Element*>(array->pvData);
}

VARIANT TextValue(const WCHAR* text) {
    VARIANT value;
    VariantInit(&value);
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(text);
    return value;
}

TEST(SafeArray, HasTheElementSizeAndFlagsOfItsType) {
    struct Row {
        VARTYPE vt;
        ULONG size;
        int features;
    };
    const Row rows[] = {
        {VT_I1, 1, FADF_HAVEVARTYPE},
        {VT_UI1, 1, FADF_HAVEVARTYPE},
        {VT_I2, 2, FADF_HAVEVARTYPE},
        {VT_BOOL, 2, FADF_HAVEVARTYPE},
        {VT_I4, 4, FADF_HAVEVARTYPE},
        {VT_R4, 4, FADF_HAVEVARTYPE},
        {VT_ERROR, 4, FADF_HAVEVARTYPE},
        {VT_INT, 4, FADF_HAVEVARTYPE},
        {VT_I8, 8, FADF_HAVEVARTYPE},
        {VT_R8, 8, FADF_HAVEVARTYPE},
        {VT_CY, 8, FADF_HAVEVARTYPE},
        {VT_DATE, 8, FADF_HAVEVARTYPE},
        {VT_DECIMAL, 16, FADF_HAVEVARTYPE},
        {VT_BSTR, 8, FADF_HAVEVARTYPE | FADF_BSTR},
        {VT_VARIANT, 24, FADF_HAVEVARTYPE | FADF_VARIANT},
        {VT_UNKNOWN, 8, FADF_HAVEIID | FADF_UNKNOWN},
        {VT_DISPATCH, 8, FADF_HAVEIID | FADF_DISPATCH},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.vt);
        SAFEARRAYBOUND bound = {2, -1};
        SAFEARRAY* vector = SafeArrayCreateVector(row.vt, -1, 2);
        SAFEARRAY* array = SafeArrayCreate(row.vt, 1, &bound);
        for (SAFEARRAY* each : {vector, array}) {
            ASSERT_NE(each, nullptr);
            EXPECT_EQ(each->cDims, 1);
            EXPECT_EQ(each->cbElements, row.size);
            EXPECT_EQ(each->fFeatures & ~FADF_RESERVED, row.features);
            EXPECT_EQ(each->cLocks, 0U);
            EXPECT_EQ(each->rgsabound[0].cElements, 2U);
            EXPECT_EQ(each->rgsabound[0].lLbound, -1);
            const std::vector<char> zeros(std::size_t{2} * row.size);
            EXPECT_EQ(std::memcmp(each->pvData, zeros.data(), zeros.size()), 0);
            VARTYPE vt = 0;
            EXPECT_EQ(SafeArrayGetVartype(each, &vt), S_OK);
            EXPECT_EQ(vt, row.vt);
            EXPECT_EQ(SafeArrayDestroy(each), S_OK);
        }
    }
}

TEST(SafeArray, KeepsItsTypeInTheFourBytesBeforeTheDescriptor) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_UI2, 0, 1);
    ULONG vt = 0;
    std::memcpy(&vt, reinterpret_cast<const char*>(array) - sizeof(vt), sizeof(vt));
    EXPECT_EQ(vt, ULONG{VT_UI2});
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, IsNotMadeOfTypesThatNoElementHas) {
    for (const int vt : {int{VT_EMPTY}, int{VT_NULL}, 15, int{VT_VOID}, int{VT_LPWSTR}, int{VT_ARRAY} | VT_I4,
                         int{VT_BYREF} | VT_I4}) {
        SAFEARRAYBOUND bound = {1, 0};
        EXPECT_EQ(SafeArrayCreateVector(static_cast<VARTYPE>(vt), 0, 1), nullptr) << vt;
        EXPECT_EQ(SafeArrayCreate(static_cast<VARTYPE>(vt), 1, &bound), nullptr) << vt;
    }
    SAFEARRAYBOUND bound = {1, 0};
    EXPECT_EQ(SafeArrayCreate(VT_I4, 0, &bound), nullptr);
}

TEST(SafeArray, OfTwoDimensionsRunsFastestInTheFirst) {
    SAFEARRAYBOUND bounds[] = {{2, 0}, {3, 10}};
    SAFEARRAY* array = SafeArrayCreate(VT_I4, 2, bounds);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(array->rgsabound[0].lLbound, 10);  // the descriptor has the last dimension first
    for (LONG second = 10; second < 13; ++second) {
        for (LONG first = 0; first < 2; ++first) {
            LONG indices[] = {first, second};
            LONG value = 100 * first + second;
            ASSERT_EQ(SafeArrayPutElement(array, indices, &value), S_OK);
        }
    }
    const LONG expected[] = {10, 110, 11, 111, 12, 112};
    EXPECT_EQ(std::memcmp(array->pvData, expected, sizeof(expected)), 0);

    LONG lower = 0, upper = 0;
    EXPECT_EQ(SafeArrayGetLBound(array, 2, &lower), S_OK);
    EXPECT_EQ(SafeArrayGetUBound(array, 2, &upper), S_OK);
    EXPECT_EQ(lower, 10);
    EXPECT_EQ(upper, 12);
    EXPECT_EQ(SafeArrayGetLBound(array, 0, &lower), DISP_E_BADINDEX);
    EXPECT_EQ(SafeArrayGetUBound(array, 3, &upper), DISP_E_BADINDEX);

    SAFEARRAYBOUND longer = {4, 10};
    ASSERT_EQ(SafeArrayRedim(array, &longer), S_OK);
    EXPECT_EQ(std::memcmp(array->pvData, expected, sizeof(expected)), 0);
    LONG last[] = {1, 13};
    LONG value = -1;
    EXPECT_EQ(SafeArrayGetElement(array, last, &value), S_OK);
    EXPECT_EQ(value, 0);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, RefusesIndicesOutsideItsBounds) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 5, 2);
    for (LONG index : {4, 7, -2147483647 - 1, 2147483647}) {
        LONG value = 0;
        void* element = nullptr;
        EXPECT_EQ(SafeArrayPtrOfIndex(array, &index, &element), DISP_E_BADINDEX) << index;
        EXPECT_EQ(SafeArrayGetElement(array, &index, &value), DISP_E_BADINDEX) << index;
        EXPECT_EQ(SafeArrayPutElement(array, &index, &value), DISP_E_BADINDEX) << index;
    }
    EXPECT_EQ(array->cLocks, 0U);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, OfNoElementsIsAnArray) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, 0);
    ASSERT_NE(array, nullptr);
    LONG upper = 0;
    EXPECT_EQ(SafeArrayGetUBound(array, 1, &upper), S_OK);
    EXPECT_EQ(upper, -1);
    void* data = nullptr;
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(copy->rgsabound[0].cElements, 0U);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, LocksAreCountedAndKeepItWhole) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 2);
    void* data = nullptr;
    EXPECT_EQ(SafeArrayLock(array), S_OK);
    EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
    EXPECT_EQ(data, array->pvData);
    EXPECT_EQ(array->cLocks, 2U);
    EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);

    SAFEARRAYBOUND bound = {3, 0};
    EXPECT_EQ(SafeArrayDestroy(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroyData(array), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayRedim(array, &bound), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(array->rgsabound[0].cElements, 2U);
    EXPECT_EQ(SafeArrayUnlock(array), S_OK);
    EXPECT_EQ(SafeArrayUnlock(array), E_UNEXPECTED);

    for (int i = 0; i < 65535; ++i) {
        ASSERT_EQ(SafeArrayLock(array), S_OK) << i;
    }
    EXPECT_EQ(SafeArrayLock(array), E_UNEXPECTED);
    EXPECT_EQ(array->cLocks, 65535U);
    array->cLocks = 0;
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, NullIsDestroyedAndCopiedAndOtherwiseRefused) {
    SAFEARRAY* copy = reinterpret_cast<SAFEARRAY*>(&copy);
    EXPECT_EQ(SafeArrayDestroy(nullptr), S_OK);
    EXPECT_EQ(SafeArrayCopy(nullptr, &copy), S_OK);
    EXPECT_EQ(copy, nullptr);
    EXPECT_EQ(SafeArrayGetDim(nullptr), 0U);
    EXPECT_EQ(SafeArrayGetElemsize(nullptr), 0U);

    LONG bound = 0;
    LONG index = 0;
    VARTYPE vt = 0;
    void* data = nullptr;
    EXPECT_EQ(SafeArrayDestroyData(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayRedim(nullptr, nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayLock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayUnlock(nullptr), E_INVALIDARG);
    EXPECT_EQ(SafeArrayAccessData(nullptr, &data), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetLBound(nullptr, 1, &bound), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetUBound(nullptr, 1, &bound), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetVartype(nullptr, &vt), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPtrOfIndex(nullptr, &index, &data), E_INVALIDARG);
    EXPECT_EQ(SafeArrayGetElement(nullptr, &index, &data), E_INVALIDARG);
    EXPECT_EQ(SafeArrayPutElement(nullptr, &index, &data), E_INVALIDARG);
}

TEST(SafeArray, OfTextsOwnsItsTexts) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_BSTR, 0, 2);
    LONG index = 1;
    BSTR given = SysAllocStringLen("a\0b"_w, 3);
    ASSERT_EQ(SafeArrayPutElement(array, &index, given), S_OK);
    EXPECT_NE(Elements<BSTR>(array)[1], given);
    BSTR taken = nullptr;
    ASSERT_EQ(SafeArrayGetElement(array, &index, &taken), S_OK);
    EXPECT_NE(taken, Elements<BSTR>(array)[1]);
    EXPECT_EQ(CStringW(taken, SysStringLen(taken)), CStringW("a\0b"_w, 3));
    ASSERT_EQ(SafeArrayPutElement(array, &index, taken), S_OK);
    SysFreeString(given);
    SysFreeString(taken);

    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(SafeArrayCopy(array, &copy), S_OK);
    ASSERT_EQ(SafeArrayPutElement(array, &index, nullptr), S_OK);
    EXPECT_EQ(SysStringByteLen(Elements<BSTR>(array)[1]), 0U);
    EXPECT_EQ(Elements<BSTR>(copy)[0], nullptr);
    EXPECT_EQ(SysStringLen(Elements<BSTR>(copy)[1]), 3U);

    index = 0;
    taken = Elements<BSTR>(copy)[1];
    ASSERT_EQ(SafeArrayGetElement(copy, &index, &taken), S_OK);
    EXPECT_EQ(taken, nullptr);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
}

TEST(SafeArray, OfInterfacesHoldsAReferenceForEachElement) {
    CountedObject object;
    SAFEARRAY* array = SafeArrayCreateVector(VT_UNKNOWN, 0, 3);
    for (LONG index : {0, 2}) {
        ASSERT_EQ(SafeArrayPutElement(array, &index, static_cast<IUnknown*>(&object)), S_OK);
    }
    EXPECT_EQ(object.References(), 2U);
    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(SafeArrayCopy(array, &copy), S_OK);
    EXPECT_EQ(object.References(), 4U);

    LONG index = 0;
    IUnknown* taken = nullptr;
    ASSERT_EQ(SafeArrayGetElement(array, &index, &taken), S_OK);
    EXPECT_EQ(object.References(), 5U);
    ASSERT_EQ(SafeArrayPutElement(array, &index, taken), S_OK);  // by itself
    EXPECT_EQ(object.References(), 5U);
    ASSERT_EQ(SafeArrayPutElement(array, &index, nullptr), S_OK);
    EXPECT_EQ(object.References(), 4U);
    taken->Release();

    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
    EXPECT_EQ(SafeArrayDestroyData(array), S_OK);
    EXPECT_EQ(object.References(), 0U);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
    EXPECT_EQ(object.References(), 0U);
}

TEST(SafeArray, OfVariantsOwnsWhatTheyHold) {
    CountedObject object;
    object.AddRef();
    SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, 3);
    Elements<VARIANT>(array)[0].vt = VT_UNKNOWN;
    Elements<VARIANT>(array)[0].punkVal = &object;
    Elements<VARIANT>(array)[1] = TextValue("text"_w);

    LONG index = 1;
    VARIANT taken;
    std::memset(&taken, 0xCC, sizeof(taken));  // what stands in the target is overwritten, not cleared
    ASSERT_EQ(SafeArrayGetElement(array, &index, &taken), S_OK);
    EXPECT_EQ(CStringW(taken.bstrVal), "text"_w);
    index = 0;
    ASSERT_EQ(SafeArrayPutElement(array, &index, &taken), S_OK);
    EXPECT_EQ(object.References(), 0U);
    EXPECT_EQ(VariantClear(&taken), S_OK);
    EXPECT_EQ(CStringW(Elements<VARIANT>(array)[0].bstrVal), "text"_w);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, RedimGivesUpTheElementsPastItsEnd) {
    CountedObject object;
    SAFEARRAYBOUND bound = {4, 0};
    SAFEARRAY* vector = SafeArrayCreateVector(VT_UNKNOWN, 0, 4);
    SAFEARRAY* array = SafeArrayCreate(VT_UNKNOWN, 1, &bound);
    for (SAFEARRAY* each : {vector, array}) {
        for (LONG index = 0; index < 4; ++index) {
            ASSERT_EQ(SafeArrayPutElement(each, &index, static_cast<IUnknown*>(&object)), S_OK);
        }
        bound = {1, 7};
        ASSERT_EQ(SafeArrayRedim(each, &bound), S_OK);
        EXPECT_EQ(each->rgsabound[0].lLbound, 7);
        EXPECT_EQ(object.References(), 1U);
        bound = {1000, 7};
        ASSERT_EQ(SafeArrayRedim(each, &bound), S_OK);
        EXPECT_EQ(Elements<IUnknown*>(each)[0], &object);
        for (int i = 1; i < 1000; ++i) {
            ASSERT_EQ(Elements<IUnknown*>(each)[i], nullptr) << i;
        }
        bound = {0, 7};
        ASSERT_EQ(SafeArrayRedim(each, &bound), S_OK);
        EXPECT_EQ(object.References(), 0U);
        EXPECT_EQ(SafeArrayDestroy(each), S_OK);
    }
}

TEST(SafeArray, OfFixedSizeIsNotResized) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_I4, 0, 2);
    array->fFeatures |= FADF_FIXEDSIZE;
    SAFEARRAYBOUND bound = {3, 0};
    EXPECT_EQ(SafeArrayRedim(array, &bound), DISP_E_ARRAYISLOCKED);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

TEST(SafeArray, CopyOfNestedArraysSharesNothing) {
    SAFEARRAY* inner = SafeArrayCreateVector(VT_VARIANT, 0, 2);
    Elements<VARIANT>(inner)[1] = TextValue("inner"_w);
    SAFEARRAY* bytes = SafeArrayCreateVector(VT_UI1, 0, 3);
    std::memcpy(bytes->pvData, "abc", 3);
    SAFEARRAY* outer = SafeArrayCreateVector(VT_VARIANT, 0, 3);
    Elements<VARIANT>(outer)[0].vt = VT_ARRAY | VT_VARIANT;
    Elements<VARIANT>(outer)[0].parray = inner;
    Elements<VARIANT>(outer)[2].vt = VT_ARRAY | VT_UI1;
    Elements<VARIANT>(outer)[2].parray = bytes;

    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(SafeArrayCopy(outer, &copy), S_OK);
    ASSERT_EQ(SafeArrayDestroy(outer), S_OK);
    const VARIANT* copied = Elements<VARIANT>(copy);
    ASSERT_EQ(copied[0].vt, VT_ARRAY | VT_VARIANT);
    EXPECT_EQ(CStringW(Elements<VARIANT>(copied[0].parray)[1].bstrVal), "inner"_w);
    EXPECT_EQ(copied[1].vt, VT_EMPTY);
    ASSERT_EQ(copied[2].vt, VT_ARRAY | VT_UI1);
    EXPECT_EQ(copied[2].parray->rgsabound[0].cElements, 3U);
    EXPECT_EQ(std::memcmp(copied[2].parray->pvData, "abc", 3), 0);
    EXPECT_EQ(SafeArrayDestroy(copy), S_OK);
}

TEST(SafeArray, LockedArrayInADestroyedOneStaysWithWhoeverLockedIt) {
    SAFEARRAY* inner = SafeArrayCreateVector(VT_I4, 0, 1);
    SAFEARRAY* outer = SafeArrayCreateVector(VT_VARIANT, 0, 2);
    Elements<VARIANT>(outer)[0].vt = VT_ARRAY | VT_I4;
    Elements<VARIANT>(outer)[0].parray = inner;
    Elements<VARIANT>(outer)[1] = TextValue("freed"_w);
    ASSERT_EQ(SafeArrayLock(inner), S_OK);
    EXPECT_EQ(SafeArrayDestroy(outer), S_OK);
    EXPECT_EQ(inner->cDims, 1);
    EXPECT_EQ(SafeArrayUnlock(inner), S_OK);
    EXPECT_EQ(SafeArrayDestroy(inner), S_OK);
}

}  // namespace
