// What this platform layer promises beyond Windows: nesting to any depth takes no stack, and sizes that cannot be are
// refused before any memory is asked for.
#include "platform/SafeArray.h"
#include "platform/WideText.h"

#include <gtest/gtest.h>

namespace {

// An array in an array in an array; the innermost holds a text. The text's fate tells whether all levels were visited.
SAFEARRAY* Nested(int depth) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, 1);
    static_cast<VARIANT*>(array->pvData)->vt = VT_BSTR;
    static_cast<VARIANT*>(array->pvData)->bstrVal = SysAllocString("innermost"_w);
    for (int level = 1; level < depth; ++level) {
        SAFEARRAY* outer = SafeArrayCreateVector(VT_VARIANT, 0, 1);
        static_cast<VARIANT*>(outer->pvData)->vt = VT_ARRAY | VT_VARIANT;
        static_cast<VARIANT*>(outer->pvData)->parray = array;
        array = outer;
    }
    return array;
}

TEST(DeepNesting, IsCopiedClearedAndDestroyedWithoutRecursion) {
    constexpr int kDepth = 200'000;
    VARIANT value = {};
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = Nested(kDepth);
    VARIANT copy = {};
    ASSERT_EQ(VariantCopy(&copy, &value), S_OK);
    SAFEARRAY* second = nullptr;
    ASSERT_EQ(SafeArrayCopy(copy.parray, &second), S_OK);
    EXPECT_EQ(VariantClear(&value), S_OK);
    EXPECT_EQ(VariantClear(&copy), S_OK);

    int depth = 1;
    const VARIANT* element = static_cast<const VARIANT*>(second->pvData);
    for (; element->vt == (VT_ARRAY | VT_VARIANT); ++depth) {
        element = static_cast<const VARIANT*>(element->parray->pvData);
    }
    EXPECT_EQ(depth, kDepth);
    ASSERT_EQ(element->vt, VT_BSTR);
    EXPECT_EQ(CStringW(element->bstrVal), "innermost"_w);
    EXPECT_EQ(SafeArrayDestroy(second), S_OK);
}

TEST(DeepNesting, CopyThatMeetsABadElementLeavesNothingBehind) {
    SAFEARRAY* inner = Nested(3);
    SAFEARRAY* outer = SafeArrayCreateVector(VT_VARIANT, 0, 3);
    auto* elements = static_cast<VARIANT*>(outer->pvData);
    elements[0].vt = VT_BSTR;
    elements[0].bstrVal = SysAllocString("copied, then freed"_w);
    elements[1].vt = VT_ARRAY | VT_VARIANT;
    elements[1].parray = inner;
    auto* innermost = static_cast<VARIANT*>(static_cast<VARIANT*>(inner->pvData)->parray->pvData);
    const VARTYPE good = innermost->vt;
    innermost->vt = 99;
    SAFEARRAY* copy = outer;
    EXPECT_EQ(SafeArrayCopy(outer, &copy), DISP_E_BADVARTYPE);
    EXPECT_EQ(copy, nullptr);

    VARIANT source = {};
    source.vt = VT_ARRAY | VT_VARIANT;
    source.parray = outer;
    VARIANT target = {};
    target.vt = VT_I4;
    EXPECT_EQ(VariantCopy(&target, &source), DISP_E_BADVARTYPE);
    EXPECT_EQ(target.vt, VT_I4);
    innermost->vt = good;
    EXPECT_EQ(VariantClear(&source), S_OK);
}

TEST(DeepNesting, SourceOfACopyMayBelongToItsTarget) {
    VARIANT value = {};
    value.vt = VT_ARRAY | VT_VARIANT;
    value.parray = Nested(2);
    ASSERT_EQ(VariantCopy(&value, static_cast<VARIANT*>(value.parray->pvData)), S_OK);
    ASSERT_EQ(value.vt, VT_ARRAY | VT_VARIANT);
    ASSERT_EQ(VariantCopy(&value, static_cast<VARIANT*>(value.parray->pvData)), S_OK);
    ASSERT_EQ(value.vt, VT_BSTR);
    EXPECT_EQ(CStringW(value.bstrVal), "innermost"_w);
    EXPECT_EQ(VariantClear(&value), S_OK);
}

TEST(ArraySize, BeyondThirtyTwoBitsIsRefused) {
    EXPECT_EQ(SafeArrayCreateVector(VT_VARIANT, 0, 0xFFFFFFFF), nullptr);
    EXPECT_EQ(SafeArrayCreateVector(VT_VARIANT, 0, 0xFFFFFFFF / sizeof(VARIANT) + 1), nullptr);
    SAFEARRAYBOUND wrapsTo0[] = {{0x10000, 0}, {0x10000, 0}, {0x10000, 0}, {0x10000, 0}};
    EXPECT_EQ(SafeArrayCreate(VT_UI1, 4, wrapsTo0), nullptr);
    SAFEARRAYBOUND bounds[] = {{0x10000, 0}, {1, 0}};
    SAFEARRAY* array = SafeArrayCreate(VT_UI1, 2, bounds);
    ASSERT_NE(array, nullptr);
    SAFEARRAYBOUND tooMany = {0x10000, 0};
    EXPECT_EQ(SafeArrayRedim(array, &tooMany), E_OUTOFMEMORY);
    EXPECT_EQ(array->rgsabound[0].cElements, 1U);
    EXPECT_EQ(SafeArrayDestroy(array), S_OK);
}

}  // namespace
