// Deep copies of restrictions and of the actions of rules.
#include "localmapi/props/Values.h"
#include "mapi/MapiCodes.h"
#include "tests/localmapi/support/LeakCheck.h"
#include "tests/localmapi/support/Restrictions.h"
#include "tests/localmapi/support/ValueText.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

namespace localmapi::testing {
namespace {

class RestrictionCopy : public LeakCheck {};

constexpr ULONG kNumber = PROP_TAG(PT_LONG, 0x6001);

// The source is gone when the copy is looked at.
TEST_F(RestrictionCopy, StandsAloneForEveryKindOfNode) {
    auto source = std::make_unique<RestrictionMaker>();
    RestrictionMaker& m = *source;
    const SRestriction child = RestrictionMaker::Exist(kNumber);
    const SRestriction all =
        m.And({m.Property(RELOP_EQ, m.Wide("x")), m.Or({}), m.Not(m.Bits(BMR_NEZ, kNumber, 0xFF)),
               m.Content(FL_SUBSTRING | FL_IGNORECASE, m.Narrow("x")), m.CompareProps(RELOP_NE, kNumber, 0x60020003),
               m.Size(RELOP_GT, kNumber, 70), m.Sub(0x0E12000D, child), m.Count(3, m.Or({child})),
               m.Comment(nullptr, m.Binary("ab")), m.Comment(&child, LongValue(kNumber, 7), RES_ANNOTATION)});
    const MapiPointer<SRestriction> copy = MakeRoot<SRestriction>(sizeof(SRestriction));
    RootMemory memory(copy.get());
    ASSERT_EQ(CopyRestriction(all, memory, *copy), S_OK);
    source.reset();
    EXPECT_EQ(TextOf(*copy),
              "and(prop(4,3001001F,w'x'),or(),not(bits(1,60010003,FF)),content(10001,3001001E,a'x'),"
              "compare(5,60010003,60020003),size(2,60010003,70),sub(0E12000D,exist(60010003)),"
              "count(3,or(exist(60010003))),comment(x6162,-),comment(7,exist(60010003)))");
}

TEST_F(RestrictionCopy, IsBoundedInDepthAndSize) {
    const auto nested = [](RestrictionMaker& maker, unsigned levels) {
        SRestriction made = RestrictionMaker::Exist(kNumber);
        for (unsigned i = 0; i < levels; ++i) {
            made = maker.Not(made);
        }
        return made;
    };
    RestrictionMaker maker;
    Arena arena;
    SRestriction copy{};
    EXPECT_EQ(CopyRestriction(nested(maker, kDeepestRestriction), arena, copy), S_OK);
    EXPECT_EQ(CopyRestriction(nested(maker, kDeepestRestriction + 1), arena, copy), MAPI_E_TOO_COMPLEX);

    // A node that is its own child, twice: bounded by depth alone it would never end.
    SRestriction loop[2] = {};
    for (SRestriction& node : loop) {
        node.rt = RES_AND;
        node.res.resAnd = {2, loop};
    }
    EXPECT_EQ(CopyRestriction(loop[0], arena, copy), MAPI_E_TOO_COMPLEX);

    std::vector<SRestriction> wide(kLargestRestriction + 1, RestrictionMaker::Exist(kNumber));
    SRestriction many{};
    many.res.resAnd = {static_cast<ULONG>(wide.size() - 1), wide.data()};
    EXPECT_EQ(CopyRestriction(many, arena, copy), S_OK);
    ++many.res.resAnd.cRes;
    EXPECT_EQ(CopyRestriction(many, arena, copy), MAPI_E_TOO_COMPLEX);
}

TEST_F(RestrictionCopy, OfWhatIsNoneIsRefused) {
    RestrictionMaker maker;
    std::vector<SRestriction> broken;
    for (const ULONG kind :
         {RES_NOT, RES_SUBRESTRICTION, RES_COUNT, RES_PROPERTY, RES_CONTENT, RES_AND, RES_COMMENT, ULONG{0xD}}) {
        broken.emplace_back().rt = kind;  // without what it should point at, or unknown
    }
    broken[5].res.resAnd.cRes = 1;
    broken[6].res.resComment.cValues = 1;
    broken.push_back(maker.Property(RELOP_EQ, LongValue(PROP_TAG(PT_UNICODE, 0x3001), 0)));
    for (const SRestriction& made : broken) {
        SCOPED_TRACE(made.rt);
        const SRestriction around = maker.Or({RestrictionMaker::Exist(kNumber), made});
        Arena arena;
        SRestriction copy{};
        EXPECT_EQ(CopyRestriction(around, arena, copy), MAPI_E_INVALID_PARAMETER);
    }
}

SPropValue ActionsValue(std::vector<ACTION>& actions, ACTIONS& holder) {
    holder = {EDK_RULES_VERSION, static_cast<UINT>(actions.size()), actions.data()};
    SPropValue value{};
    value.ulPropTag = PROP_TAG(PT_ACTIONS, 0x6680);
    value.Value.lpszA = reinterpret_cast<LPSTR>(&holder);
    return value;
}

TEST_F(RestrictionCopy, GoesIntoRestrictionsAndActionsWithinValues) {
    auto maker = std::make_unique<RestrictionMaker>();
    const SPropValue id = maker->Binary("id");
    const auto entryId = reinterpret_cast<LPENTRYID>(id.Value.bin.lpb);
    SRestriction child = maker->Property(RELOP_EQ, maker->Wide("x"));
    SPropTagArray tags{1, {kNumber}};
    SPropValue addressee[] = {maker->Wide("to")};
    ADRLIST addresses{1, {{0, 1, addressee}}};

    std::vector<ACTION> actions(7);
    actions[0].acttype = OP_MOVE;
    actions[0].actMoveCopy = {2, entryId, 1, entryId};
    actions[1].acttype = OP_REPLY;
    actions[1].actReply = {2, entryId, {}};
    actions[2].acttype = OP_DEFER_ACTION;
    actions[2].actDeferAction = {1, id.Value.bin.lpb};
    actions[3].acttype = OP_FORWARD;
    actions[3].lpadrlist = &addresses;
    actions[4].acttype = OP_TAG;
    actions[4].propTag = maker->Wide("tag");
    actions[5].acttype = OP_BOUNCE;
    actions[5].lpRes = &child;
    actions[5].lpPropTagArray = &tags;
    actions[6].acttype = OP_DELETE;

    ACTIONS holder{};
    const SPropValue value = ActionsValue(actions, holder);
    EXPECT_EQ(PointedSize(value), 0U);
    const MapiPointer<SPropValue> root = MakeRoot<SPropValue>(sizeof(SPropValue));
    RootMemory memory(root.get());
    ASSERT_EQ(CopyValue(value, memory, *root), S_OK);
    maker.reset();
    actions.assign(7, ACTION{});
    addressee[0] = LongValue(kNumber, 0);
    child = RestrictionMaker::Exist(0);
    tags.aulPropTag[0] = 0;
    EXPECT_EQ(TextOf(*root),
              "action 1 x6964 x69; action 3 x6964; action 5 x69; action 7 {w'to'}; action 9 w'tag'; "
              "action 6 prop(4,3001001F,w'x') tag 60010003; action 10");

    std::vector<ACTION> bad(1);
    for (const int kind : {99, int{OP_FORWARD}, int{OP_TAG}}) {  // unknown, or without what it should hold
        bad[0].acttype = static_cast<ACTTYPE>(kind);
        SPropValue copy{};
        EXPECT_EQ(CopyValue(ActionsValue(bad, holder), memory, copy), MAPI_E_INVALID_PARAMETER) << kind;
    }
}

}  // namespace
}  // namespace localmapi::testing
