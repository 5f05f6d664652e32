// The functions on memory and on arrays of values.
#include "localmapi/utilities/Utilities.h"
#include "mapi/Mapi.h"
#include "tests/localmapi/support/EveryValue.h"
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

// An array with a value of every type, which a test copies and then forgets.
class Utilities : public LeakCheck {
protected:
    Utilities() {
        for (const NamedValue& each : EveryValue(m_maker.Memory())) {
            values.push_back(each.value);
            m_text += (m_text.empty() ? "" : "|") + std::string(each.text);
        }
    }
    int Count() const { return static_cast<int>(values.size()); }

    // That the copies stand alone, and are what was copied.
    void ExpectCopied(const SPropValue* copies) {
        m_maker.Memory().Clear();
        std::memset(m_maker.Memory().Allocate(4000), 0, 4000);
        EXPECT_EQ(TextOf(std::span(copies, values.size())), m_text);
    }

    std::vector<SPropValue> values;
    RestrictionMaker m_maker;

private:
    std::string m_text;
};

// As a program does that writes values to a file and reads them back to another address.
TEST_F(Utilities, CopyValuesIntoOneBlockThatMayMove) {
    ULONG size = 0;
    ASSERT_EQ(ScCountProps(Count(), values.data(), &size), S_OK);
    ASSERT_EQ(size % 8, 0U);
    std::vector<std::uint64_t> block(size / 8 + 1, 0xAAAAAAAAAAAAAAAA);
    ULONG counted = 0;
    ASSERT_EQ(ScCopyProps(Count(), values.data(), block.data(), &counted), S_OK);
    EXPECT_EQ(counted, size);
    EXPECT_EQ(block.back(), 0xAAAAAAAAAAAAAAAA) << "nothing is written behind the size counted";
    auto* const copies = reinterpret_cast<LPSPropValue>(block.data());
    ExpectCopied(copies);
    ASSERT_EQ(ScRelocProps(Count(), copies, copies, nullptr, &counted), S_OK);
    EXPECT_EQ(counted, size);
    std::vector<std::uint64_t> read = block;
    std::ranges::fill(block, 0);
    auto* const back = reinterpret_cast<LPSPropValue>(read.data());
    counted = 0;
    ASSERT_EQ(ScRelocProps(Count(), back, nullptr, back, &counted), S_OK);
    EXPECT_EQ(counted, size);
    ExpectCopied(back);
}

TEST_F(Utilities, DuplicateValuesAsOneRoot) {
    LPSPropValue copy = nullptr;
    ALLOCATEBUFFER* const fails = [](ULONG, LPVOID*) -> SCODE { return MAPI_E_NOT_ENOUGH_RESOURCES; };
    EXPECT_EQ(ScDupPropset(Count(), values.data(), fails, &copy), MAPI_E_NOT_ENOUGH_RESOURCES);
    EXPECT_EQ(copy, nullptr);
    ASSERT_EQ(ScDupPropset(Count(), values.data(), MAPIAllocateBuffer, &copy), S_OK);
    ExpectCopied(copy);
    EXPECT_EQ(LiveBuffers(), 1);
    EXPECT_EQ(MAPIFreeBuffer(copy), 0U);
}

SPropValue TreeValue(SRestriction& tree) {
    SPropValue value{};
    value.ulPropTag = PROP_TAG(PT_SRESTRICTION, 0x6801);
    value.Value.lpszA = reinterpret_cast<LPSTR>(&tree);
    return value;
}

TEST_F(Utilities, CopyAValueWithBlocksOfSomebodysOwn) {
    void* root = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(static_cast<ULONG>((values.size() + 1) * sizeof(SPropValue)), &root), S_OK);
    auto* const copies = static_cast<SPropValue*>(root);
    for (std::size_t i = 0; i < values.size(); ++i) {
        ASSERT_EQ(PropCopyMore(&copies[i], &values[i], MAPIAllocateMore, root), S_OK) << i;
    }
    SRestriction tree = m_maker.Property(RELOP_EQ, m_maker.Wide("x"));
    SPropValue treeValue = TreeValue(tree);
    ASSERT_EQ(PropCopyMore(&copies[values.size()], &treeValue, MAPIAllocateMore, root), S_OK);
    ExpectCopied(copies);
    EXPECT_EQ(TextOf(copies[values.size()]), "prop(4,3001001F,w'x')");

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
    SPropValue treeValue = TreeValue(tree);
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
}

TEST_F(Utilities, FindAValueByItsTagOrById) {
    SPropValue three[] = {ErrorValue(kNumber, MAPI_E_NOT_FOUND), LongValue(kNumber, 1), m_maker.Wide("name")};
    EXPECT_EQ(PpropFindProp(three, 3, kNumber), &three[1]);
    EXPECT_EQ(PpropFindProp(three, 3, PROP_TAG(PT_UNSPECIFIED, 0x0E08)), &three[0]);
    EXPECT_EQ(PpropFindProp(three, 3, PROP_TAG(PT_STRING8, 0x3001)), nullptr);
    EXPECT_EQ(PpropFindProp(three, 1, kNumber), nullptr);
}

// What is freed behind a root's back, and rows and addresses of which some are empty; the fixture counts what is left.
TEST_F(Utilities, FreeWhatIsTheirsAndNothingElse) {
    void* root = nullptr;
    void* more = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(static_cast<ULONG>(CbNewADRLIST(3)), &root), S_OK);
    EXPECT_EQ(MAPIAllocateMore(8, root, &more), S_OK);
    EXPECT_EQ(MAPIAllocateMore(8, more, &more), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(MAPIFreeBuffer(static_cast<std::byte*>(root) + 4), static_cast<ULONG>(MAPI_E_INVALID_PARAMETER));
    auto* const addresses = static_cast<LPADRLIST>(root);
    addresses->cEntries = 3;
    for (ULONG i = 0; i < 3; ++i) {
        addresses->aEntries[i] = {0, 0, i == 1 ? nullptr : MakeRoot<SPropValue>(sizeof(SPropValue)).release()};
    }
    FreePadrlist(addresses);
    FreePadrlist(nullptr);
    FreeProws(nullptr);
}

}  // namespace
}  // namespace localmapi::testing
