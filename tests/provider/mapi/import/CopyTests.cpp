// Deep copies on a fake library whose memory tells what is left, and fails when it is told to.
#include "mapi/MapiCodes.h"
#include "mapi/PropTags.h"
#include "provider/MapiCopy.h"
#include "tests/provider/mapi/import/CopySamples.h"
#include "tests/provider/mapi/import/ImportTestSupport.h"

#include <functional>
#include <string>

namespace {

class Copies : public LoaderTest {
protected:
    Copies() { LoadMAPIFuncs(m_library.Module()); }
    ~Copies() override { EXPECT_EQ(LiveBlocks(), 0); }

    int LiveBlocks() const { return m_library.Get<int()>("FakeLiveBlocks")(); }
    void FailAllocation(int n) const { m_library.Get<void(int)>("FakeFailAllocation")(n); }

    Samples m_samples;

private:
    FakeLibrary m_library{"fake_client"};
};

TEST_F(Copies, OfARestrictionSayTheSameAndPointAtNothingOfItsSource) {
    const LPSRestriction source = m_samples.EveryRestriction();
    const std::string said = Describe(*source);
    LPSRestriction copy = nullptr;
    ASSERT_EQ(HrCopyRestriction(source, nullptr, &copy), S_OK);
    m_samples.Scribble();
    EXPECT_EQ(Describe(*copy), said);
    MAPIFreeBuffer(copy);
}

TEST_F(Copies, OfActionsSayTheSameAndPointAtNothingOfTheirSource) {
    const LPACTIONS source = m_samples.EveryAction();
    const std::string said = Describe(*source);
    LPACTIONS copy = nullptr;
    ASSERT_EQ(HrCopyActions(source, nullptr, &copy), S_OK);
    m_samples.Scribble();
    EXPECT_EQ(Describe(*copy), said);
    MAPIFreeBuffer(copy);
}

TEST_F(Copies, GoWithTheirParent) {
    LPVOID parent = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(1, &parent), S_OK);
    LPSRestriction restriction = nullptr;
    LPACTIONS actions = nullptr;
    LPSPropValue props = nullptr;
    SRestriction array[2] = {};
    EXPECT_EQ(HrCopyRestriction(m_samples.EveryRestriction(), parent, &restriction), S_OK);
    EXPECT_EQ(HrCopyActions(m_samples.EveryAction(), parent, &actions), S_OK);
    EXPECT_EQ(HrDupPropset(1, m_samples.Text("text"), parent, &props), S_OK);
    const LPSRestriction two = m_samples.Array({*m_samples.EveryRestriction(), *m_samples.Nested(3)});
    const std::string first = Describe(two[0]);
    const std::string second = Describe(two[1]);
    EXPECT_EQ(HrCopyRestrictionArray(two, parent, 2, array), S_OK);
    m_samples.Scribble();
    EXPECT_EQ(Describe(array[0]), first);
    EXPECT_EQ(Describe(array[1]), second);
    EXPECT_EQ(Describe(*props), "37001f=text");
    MAPIFreeBuffer(parent);
    EXPECT_EQ(HrCopyRestrictionArray(m_samples.Nested(0), nullptr, 1, array), MAPI_E_INVALID_PARAMETER);
}

TEST_F(Copies, OfPropertiesThatHoldTreesDoNotGoToMapi) {
    LPVOID parent = nullptr;
    ASSERT_EQ(MAPIAllocateBuffer(1, &parent), S_OK);
    SPropValue sources[3] = {*m_samples.Text("plain")};
    sources[1].ulPropTag = PROP_TAG(PT_RESTRICTION, 0x6679);
    sources[1].Value.lpszA = reinterpret_cast<LPSTR>(m_samples.EveryRestriction());
    sources[2].ulPropTag = PROP_TAG(PT_ACTIONS, 0x6680);
    sources[2].Value.lpszA = reinterpret_cast<LPSTR>(m_samples.EveryAction());
    std::string said[3];
    SPropValue copies[3] = {};
    for (int i = 0; i < 3; ++i) {
        said[i] = Describe(sources[i]);
        EXPECT_EQ(PropCopyMore(&copies[i], &sources[i], MAPIAllocateMore, parent), S_OK) << i;
    }
    m_samples.Scribble();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(Describe(copies[i]), said[i]);
    }
    MAPIFreeBuffer(parent);
}

TEST_F(Copies, OfNothingAreNothing) {
    LPSRestriction restriction = m_samples.Nested(0);
    LPACTIONS actions = m_samples.EveryAction();
    EXPECT_EQ(HrCopyRestriction(nullptr, nullptr, &restriction), S_OK);
    EXPECT_EQ(restriction, nullptr);
    EXPECT_EQ(HrCopyActions(nullptr, nullptr, &actions), S_OK);
    EXPECT_EQ(actions, nullptr);
    ACTIONS none = {EDK_RULES_VERSION, 0, nullptr};
    ASSERT_EQ(HrCopyActions(&none, nullptr, &actions), S_OK);
    EXPECT_EQ(Describe(*actions), "version 1:");
    MAPIFreeBuffer(actions);
    EXPECT_EQ(HrCopyRestriction(nullptr, nullptr, nullptr), MAPI_E_INVALID_PARAMETER);
}

TEST_F(Copies, EndAtADepthAndANumberOfNodes) {
    // Two parents over one pair of nodes, again and again: as a tree it is as large as its depth lets it be.
    const LPSRestriction shared = m_samples.Make<SRestriction>(2 * 60);
    for (std::size_t level = 0; level < 60; ++level) {
        for (std::size_t i = 0; i < 2; ++i) {
            SRestriction& node = shared[2 * level + i];
            node.rt = level == 59 ? RES_EXIST : RES_AND;
            node.res.resAnd = {2, shared + 2 * (level + 1)};
        }
    }
    SRestriction lyingCount = {};
    lyingCount.rt = RES_OR;
    lyingCount.res.resOr = {0xFFFFFFFF, shared};
    // Actions that tag a message with the same actions.
    ACTIONS endless = {EDK_RULES_VERSION, 1, m_samples.Make<ACTION>()};
    endless.lpAction->acttype = OP_TAG;
    endless.lpAction->propTag.ulPropTag = PROP_TAG(PT_ACTIONS, 0x6680);
    endless.lpAction->propTag.Value.lpszA = reinterpret_cast<LPSTR>(&endless);

    struct Row {
        const char* name;
        LPSRestriction source;
        HRESULT expected;
    };
    const Row rows[] = {
        {"as deep as may be", m_samples.Nested(kMaxCopyDepth - 1), S_OK},
        {"one deeper", m_samples.Nested(kMaxCopyDepth), MAPI_E_TOO_COMPLEX},
        {"a million deep", m_samples.Nested(1'000'000), MAPI_E_TOO_COMPLEX},
        {"shared nodes", shared, MAPI_E_TOO_COMPLEX},
        {"a count that lies", &lyingCount, MAPI_E_TOO_COMPLEX},
    };
    for (const Row& row : rows) {
        LPSRestriction copy = m_samples.Nested(0);
        EXPECT_EQ(HrCopyRestriction(row.source, nullptr, &copy), row.expected) << row.name;
        EXPECT_EQ(copy != nullptr, row.expected == S_OK) << row.name;
        MAPIFreeBuffer(copy);
        EXPECT_EQ(LiveBlocks(), 0) << row.name;
    }
    LPACTIONS copy = nullptr;
    EXPECT_EQ(HrCopyActions(&endless, nullptr, &copy), MAPI_E_TOO_COMPLEX);
    EXPECT_EQ(copy, nullptr);
}

TEST_F(Copies, OfUnknownKindsFail) {
    SRestriction unknown = {};
    unknown.rt = 0xD;
    LPSRestriction restriction = nullptr;
    EXPECT_EQ(HrCopyRestriction(&unknown, nullptr, &restriction), MAPI_E_INVALID_PARAMETER);

    ACTION action = {};
    action.acttype = static_cast<ACTTYPE>(12);
    ACTIONS actions = {EDK_RULES_VERSION, 1, &action};
    LPACTIONS actionsCopy = nullptr;
    EXPECT_EQ(HrCopyActions(&actions, nullptr, &actionsCopy), MAPI_E_INVALID_PARAMETER);

    // Properties of types that MAPI does not count, or does not copy; the failure is in the log.
    struct Row {
        ULONG type;
        HRESULT expected;
    };
    for (const Row& row : {Row{0x00FF, MAPI_E_INVALID_PARAMETER}, Row{PT_I8, MAPI_E_TYPE_NO_SUPPORT}}) {
        SCOPED_TRACE(row.type);
        SPropValue prop = {};
        prop.ulPropTag = PROP_TAG(row.type, 0x6600);
        LPSPropValue props = nullptr;
        const LogCapture log;
        EXPECT_EQ(HrDupPropset(1, &prop, nullptr, &props), row.expected);
        EXPECT_EQ(props, nullptr);
        EXPECT_EQ(LiveBlocks(), 0);
        ASSERT_EQ(log.Texts("ERROR").size(), 1U);
        EXPECT_NE(log.Texts("ERROR")[0].find("Function HrDupPropset"), std::string::npos) << log.Texts("ERROR")[0];
    }
}

// Lets every allocation of `copy` fail in turn. Gives how many there are.
template <typename Copy>
int FailEachAllocation(const Copy& copy, const std::function<void(int)>& failAllocation) {
    int n = 0;
    HRESULT hr = E_FAIL;
    while (hr != S_OK && n < 1000) {
        failAllocation(++n);
        hr = copy();
        failAllocation(0);
        EXPECT_TRUE(hr == S_OK || hr == MAPI_E_NOT_ENOUGH_MEMORY) << "allocation " << n;
    }
    return n - 1;
}

TEST_F(Copies, ThatRunOutOfMemoryLeaveNothing) {
    const LPSRestriction restriction = m_samples.EveryRestriction();
    const LPACTIONS actions = m_samples.EveryAction();
    SPropValue holder = {};
    holder.ulPropTag = PROP_TAG(PT_ACTIONS, 0x6680);
    holder.Value.lpszA = reinterpret_cast<LPSTR>(actions);
    const auto fail = [this](int n) { FailAllocation(n); };

    EXPECT_GT(FailEachAllocation(
                  [&] {
                      EXPECT_EQ(LiveBlocks(), 0);
                      LPSRestriction copy = m_samples.Nested(0);
                      const HRESULT hr = HrCopyRestriction(restriction, nullptr, &copy);
                      EXPECT_EQ(copy != nullptr, hr == S_OK);
                      MAPIFreeBuffer(copy);
                      return hr;
                  },
                  fail),
              12);
    EXPECT_GT(FailEachAllocation(
                  [&] {
                      EXPECT_EQ(LiveBlocks(), 0);
                      SPropValue copy = {};
                      const HRESULT hr = HrCopySpecialProp(holder, nullptr, copy);
                      EXPECT_EQ(copy.Value.lpszA != nullptr, hr == S_OK);
                      MAPIFreeBuffer(copy.Value.lpszA);
                      return hr;
                  },
                  fail),
              30);
    EXPECT_EQ(FailEachAllocation(
                  [&] {
                      LPSPropValue copy = nullptr;
                      const HRESULT hr = HrDupPropset(1, m_samples.Text("text"), nullptr, &copy);
                      EXPECT_EQ(copy != nullptr, hr == S_OK);
                      MAPIFreeBuffer(copy);
                      return hr;
                  },
                  fail),
              1);
}

}  // namespace
