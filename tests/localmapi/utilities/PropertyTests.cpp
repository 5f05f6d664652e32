// The functions on memory and on arrays of values.
#include "localmapi/utilities/Utilities.h"
#include "mapi/Mapi.h"
#include "testing/StubInterfaces.h"
#include "tests/localmapi/support/LeakCheck.h"
#include "tests/localmapi/support/Restrictions.h"
#include "tests/localmapi/support/ValueText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

constexpr ULONG kName = PROP_TAG(PT_UNICODE, 0x3001);
constexpr ULONG kNumber = PROP_TAG(PT_LONG, 0x0E08);

class Utilities : public LeakCheck {
protected:
    std::vector<SPropValue> MixedValues() {
        auto* const binaries = m_maker.Memory().Array<SBinary>(3);
        binaries[0] = m_maker.Binary("ab").Value.bin;
        binaries[1] = {0, nullptr};
        binaries[2] = m_maker.Binary("0123456789").Value.bin;
        SPropValue several{};
        several.ulPropTag = PROP_TAG(PT_MV_BINARY, 0x7001);
        several.Value.MVbin = {3, binaries};
        auto* const longs = m_maker.Memory().Array<LONG>(2);
        longs[0] = 5;
        longs[1] = -5;
        SPropValue numbers{};
        numbers.ulPropTag = PROP_TAG(PT_MV_LONG, 0x7002);
        numbers.Value.MVl = {2, longs};
        return {m_maker.Wide("name"),
                LongValue(kNumber, 7),
                m_maker.Narrow("narrow"),
                m_maker.Binary(""),
                several,
                numbers,
                ErrorValue(PROP_TAG(PT_LONG, 0x7003), MAPI_E_NOT_FOUND),
                LongValue(PR_NULL, 0)};
    }
    static constexpr const char* kMixedText = "w'name'|7|a'narrow'|x|[x6162,x,x30313233343536373839]|[5,-5]|!0F|null";

    RestrictionMaker m_maker;
};

TEST_F(Utilities, CountAndCopyValuesIntoOneBlock) {
    std::vector<SPropValue> values = MixedValues();
    const auto count = static_cast<int>(values.size());
    ULONG size = 0;
    ASSERT_EQ(ScCountProps(count, values.data(), &size), S_OK);
    std::vector<std::uint64_t> block(size / 8 + 2, 0xAAAAAAAAAAAAAAAA);
    EXPECT_EQ(size % 8, 0U);
    ULONG copied = 0;
    ASSERT_EQ(ScCopyProps(count, values.data(), block.data(), &copied), S_OK);
    EXPECT_EQ(copied, size);
    EXPECT_EQ(block[size / 8], 0xAAAAAAAAAAAAAAAA) << "nothing is written behind the size counted";
    m_maker.Memory().Clear();
    auto* const copies = reinterpret_cast<SPropValue*>(block.data());
    EXPECT_EQ(TextOf(std::span<const SPropValue>(copies, values.size())), kMixedText);
    ASSERT_EQ(ScCountProps(count, copies, &copied), S_OK);
    EXPECT_EQ(copied, size);
}

// As a program does that writes values to a file and reads them back to another address.
TEST_F(Utilities, MoveABlockThroughAFile) {
    std::vector<SPropValue> values = MixedValues();
    const auto count = static_cast<int>(values.size());
    ULONG size = 0;
    ASSERT_EQ(ScCountProps(count, values.data(), &size), S_OK);
    std::vector<std::uint64_t> block(size / 8);
    ASSERT_EQ(ScCopyProps(count, values.data(), block.data(), nullptr), S_OK);
    m_maker.Memory().Clear();
    ULONG counted = 0;
    ASSERT_EQ(ScRelocProps(count, reinterpret_cast<LPSPropValue>(block.data()), block.data(), nullptr, &counted), S_OK);
    EXPECT_EQ(counted, size);
    std::vector<std::uint64_t> read = block;
    std::ranges::fill(block, 0);
    counted = 0;
    auto* const back = reinterpret_cast<LPSPropValue>(read.data());
    ASSERT_EQ(ScRelocProps(count, back, nullptr, read.data(), &counted), S_OK);
    EXPECT_EQ(counted, size);
    EXPECT_EQ(TextOf(std::span<const SPropValue>(back, values.size())), kMixedText);
}

TEST_F(Utilities, DuplicateValuesAsOneRoot) {
    std::vector<SPropValue> values = MixedValues();
    LPSPropValue copy = nullptr;
    ASSERT_EQ(ScDupPropset(static_cast<int>(values.size()), values.data(), MAPIAllocateBuffer, &copy), S_OK);
    m_maker.Memory().Clear();
    EXPECT_EQ(TextOf(std::span<const SPropValue>(copy, values.size())), kMixedText);
    EXPECT_EQ(LiveBuffers(), 1);
    EXPECT_EQ(MAPIFreeBuffer(copy), 0U);
    ALLOCATEBUFFER* const fails = [](ULONG, LPVOID*) -> SCODE { return MAPI_E_NOT_ENOUGH_RESOURCES; };
    EXPECT_EQ(ScDupPropset(0, values.data(), fails, &copy), MAPI_E_NOT_ENOUGH_RESOURCES);
    EXPECT_EQ(copy, nullptr);
}

TEST_F(Utilities, CopyAValueWithBlocksOfSomebodysOwn) {
    SRestriction tree = m_maker.Property(RELOP_EQ, m_maker.Wide("x"));
    SPropValue treeValue{};
    treeValue.ulPropTag = PROP_TAG(PT_SRESTRICTION, 0x6801);
    treeValue.Value.lpszA = reinterpret_cast<LPSTR>(&tree);
    std::vector<SPropValue> values = MixedValues();
    values.push_back(treeValue);
    void* root = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(static_cast<ULONG>(values.size() * sizeof(SPropValue)), &root), S_OK);
    auto* const copies = static_cast<SPropValue*>(root);
    for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(PropCopyMore(&copies[i], &values[i], MAPIAllocateMore, root), S_OK) << i;
    }
    m_maker.Memory().Clear();
    EXPECT_EQ(TextOf(std::span<const SPropValue>(copies, values.size())),
              std::string(kMixedText) + "|prop(4,3001001F,w'x')");

    ALLOCATEMORE* const fails = [](ULONG, LPVOID, LPVOID*) -> SCODE { return MAPI_E_NOT_ENOUGH_MEMORY; };
    SPropValue name = m_maker.Wide("name");
    EXPECT_EQ(PropCopyMore(&copies[0], &name, fails, root), MAPI_E_NOT_ENOUGH_MEMORY);
    SPropValue number = LongValue(kNumber, 8);
    EXPECT_EQ(PropCopyMore(&copies[0], &number, fails, root), S_OK) << "a number needs no memory";
    MAPIFreeBuffer(root);
}

TEST_F(Utilities, RefuseWhatIsNoArrayOfValues) {
    SPropValue number = LongValue(kNumber, 1);
    SPropValue noText = LongValue(kName, 0);
    SRestriction tree = RestrictionMaker::Exist(kName);
    SPropValue treeValue{};
    treeValue.ulPropTag = PROP_TAG(PT_SRESTRICTION, 0x6801);
    treeValue.Value.lpszA = reinterpret_cast<LPSTR>(&tree);
    struct Case {
        const char* name;
        int count;
        LPSPropValue values;
    };
    std::uint64_t block[16] = {};
    for (const Case& c : {Case{"a negative count", -1, &number}, Case{"no array", 1, nullptr},
                          Case{"a text that is none", 1, &noText}, Case{"a restriction", 1, &treeValue}}) {
        SCOPED_TRACE(c.name);
        ULONG size = 0;
        LPSPropValue copy = nullptr;
        EXPECT_EQ(ScCountProps(c.count, c.values, &size), MAPI_E_INVALID_PARAMETER);
        EXPECT_EQ(ScCopyProps(c.count, c.values, block, &size), MAPI_E_INVALID_PARAMETER);
        EXPECT_EQ(ScDupPropset(c.count, c.values, MAPIAllocateBuffer, &copy), MAPI_E_INVALID_PARAMETER);
    }
    EXPECT_EQ(ScCopyProps(1, &number, nullptr, nullptr), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(PropCopyMore(nullptr, &number, MAPIAllocateMore, block), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(PropCopyMore(&number, &number, nullptr, block), MAPI_E_INVALID_PARAMETER);
}

TEST_F(Utilities, FindAValueByItsTagOrById) {
    SPropValue values[] = {ErrorValue(kNumber, MAPI_E_NOT_FOUND), LongValue(kNumber, 1), m_maker.Wide("name")};
    EXPECT_EQ(PpropFindProp(values, 3, kNumber), &values[1]);
    EXPECT_EQ(PpropFindProp(values, 3, PROP_TAG(PT_UNSPECIFIED, 0x0E08)), &values[0]);
    EXPECT_EQ(PpropFindProp(values, 3, kName), &values[2]);
    EXPECT_EQ(PpropFindProp(values, 3, PROP_TAG(PT_STRING8, 0x3001)), nullptr);
    EXPECT_EQ(PpropFindProp(values, 1, kNumber), nullptr);
    EXPECT_EQ(PpropFindProp(nullptr, 0, kNumber), nullptr);
}

TEST_F(Utilities, GiveAndTakeMemory) {
    void* root = nullptr;
    void* more = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(8, &root), S_OK);
    EXPECT_EQ(MAPIAllocateMore(8, root, &more), S_OK);
    EXPECT_EQ(MAPIAllocateMore(8, more, &more), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(more, nullptr);
    EXPECT_EQ(MAPIAllocateMore(8, nullptr, &more), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(MAPIAllocateBuffer(8, nullptr), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(MAPIFreeBuffer(nullptr), 0U);
    EXPECT_EQ(MAPIFreeBuffer(static_cast<std::byte*>(root) + 4), static_cast<ULONG>(MAPI_E_INVALID_PARAMETER));
    EXPECT_EQ(MAPIFreeBuffer(root), 0U);

    const LPMALLOC allocator = MAPIGetDefaultMalloc();
    ASSERT_NE(allocator, nullptr);
    void* const block = allocator->Alloc(100);
    ASSERT_NE(block, nullptr);
    std::memset(block, 1, 100);
    CoTaskMemFree(block);
    allocator->Release();
}

TEST_F(Utilities, FreeAddressListsWithTheirEntries) {
    void* list = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(static_cast<ULONG>(CbNewADRLIST(3)), &list), S_OK);
    auto* const addresses = static_cast<LPADRLIST>(list);
    addresses->cEntries = 3;
    for (ULONG i = 0; i < 3; ++i) {
        addresses->aEntries[i] = {};
        if (i != 1) {
            void* values = nullptr;
            ASSERT_EQ(MAPIAllocateBuffer(sizeof(SPropValue), &values), S_OK);
            addresses->aEntries[i].rgPropVals = static_cast<LPSPropValue>(values);
        }
    }
    FreePadrlist(addresses);
    FreePadrlist(nullptr);
    FreeProws(nullptr);
}

// An object with one property, which may be there, be missing, or be refused.
class OneProperty final : public vx_testing::StubMapiProp<IMAPIProp> {
public:
    OneProperty(HRESULT answer, SCODE problem) : m_answer(answer), m_problem(problem) {}

    HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG, ULONG* count, LPSPropValue* values) override {
        if (FAILED(m_answer)) {
            return m_answer;
        }
        MapiPointer<SPropValue> value = MakeRoot<SPropValue>(sizeof(SPropValue));
        const ULONG tag = tags->aulPropTag[0];
        *value = m_problem == S_OK ? LongValue(tag, m_number) : ErrorValue(tag, m_problem);
        *count = 1;
        *values = value.release();
        return m_problem == S_OK ? S_OK : MAPI_W_ERRORS_RETURNED;
    }
    HRESULT STDMETHODCALLTYPE SetProps(ULONG, LPSPropValue values, LPSPropProblemArray* problems) override {
        if (FAILED(m_answer)) {
            return m_answer;
        }
        if (m_problem == S_OK) {
            m_number = values->Value.l;
            return S_OK;
        }
        MapiPointer<SPropProblemArray> array = MakeRoot<SPropProblemArray>(sizeof(SPropProblemArray));
        *array = {1, {{0, values->ulPropTag, m_problem}}};
        *problems = array.release();
        return S_OK;
    }

private:
    HRESULT m_answer;  // of both calls
    SCODE m_problem;   // of the property
    LONG m_number = 0;
};

TEST_F(Utilities, GetAndSetOneProperty) {
    struct Case {
        const char* name;
        HRESULT answer;
        SCODE problem;
        HRESULT result;
    };
    for (const Case& c : {Case{"sound", S_OK, S_OK, S_OK}, Case{"a problem", S_OK, MAPI_E_NOT_FOUND, MAPI_E_NOT_FOUND},
                          Case{"a failure", MAPI_E_NO_ACCESS, S_OK, MAPI_E_NO_ACCESS}}) {
        SCOPED_TRACE(c.name);
        OneProperty object(c.answer, c.problem);
        SPropValue value = LongValue(kNumber, 7);
        EXPECT_EQ(HrSetOneProp(&object, &value), c.result);
        LPSPropValue got = nullptr;
        EXPECT_EQ(HrGetOneProp(&object, kNumber, &got), c.result);
        ASSERT_EQ(got != nullptr, c.result == S_OK);
        if (got != nullptr) {
            EXPECT_EQ(TextOf(*got), "7");
        }
        MAPIFreeBuffer(got);
    }
    LPSPropValue got = nullptr;
    EXPECT_EQ(HrGetOneProp(nullptr, kNumber, &got), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(HrSetOneProp(nullptr, nullptr), MAPI_E_INVALID_PARAMETER);
}

}  // namespace
}  // namespace localmapi::testing
