// CopyTo and CopyProps between objects.
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "tests/localmapi/object/TestObject.h"
#include "tests/localmapi/support/LeakCheck.h"

namespace localmapi::testing {

namespace {

using ObjectCopies = LeakCheck;

HRESULT CopyAll(Subject& from, Subject& to, SPropTagArray* excluded, ULONG flags, SPropProblemArray** problems) {
    return from.object->CopyTo(0, nullptr, excluded, 0, nullptr, &IID_IMAPIProp, to.object.Get(), flags, problems);
}

TEST_F(ObjectCopies, CopyAllButWhatIsExcludedOrTheObjectsOwn) {
    Subject from;
    Subject to;
    from.Scratch().SetBytes(PR_SUBJECT_A, "s");
    from.Scratch().SetBytes(PR_ENTRYID, "mine");
    from.Scratch().Set(LongValue(PR_IMPORTANCE, 2));
    from.Scratch().Set(LongValue(PR_SENSITIVITY, 3));
    SizedSPropTagArray<1> excluded{.aulPropTag = {PR_SENSITIVITY}};
    SPropProblemArray* problems = nullptr;
    ASSERT_EQ(CopyAll(from, to, excluded, 0, &problems), S_OK);
    EXPECT_EQ(Told(problems), "");
    EXPECT_EQ(to.AllProps(), "2|w's'");

    SizedSPropTagArray<1> only{.aulPropTag = {PR_SENSITIVITY}};
    ASSERT_EQ(from.object->CopyProps(only, 0, nullptr, &IID_IMAPIProp, to.object.Get(), 0, nullptr), S_OK);
    EXPECT_EQ(to.AllProps(), "2|3|w's'");
}

TEST_F(ObjectCopies, NamedPropertiesGoByNameNotById) {
    Subject from;
    Subject to;
    from.names.Insert(0x8005, {PSETID_Common, false, 0x8501, {}});
    to.names.Insert(0x8000, {PSETID_Task, false, 1, {}});
    from.Scratch().Set(LongValue(PROP_TAG(PT_LONG, 0x8005), 7));
    from.Scratch().Set(LongValue(PROP_TAG(PT_LONG, 0x8006), 8));  // an id without a name
    ASSERT_EQ(CopyAll(from, to, nullptr, 0, nullptr), S_OK);
    EXPECT_EQ(to.Props({PROP_TAG(PT_LONG, 0x8001)}), "7");
    EXPECT_EQ(to.AllProps(), "7");
}

TEST_F(ObjectCopies, WhatFailsIsAProblemAndTheRestGoesOn) {
    Subject from;
    Subject to;
    from.Scratch().Set(LongValue(PR_IMPORTANCE, 2));
    from.Scratch().Set(LongValue(PR_PRIORITY, 3));
    from.Scratch().SetBytes(PR_SUBJECT_W, Utf16("s"));
    from.Scratch().unreadable = PROP_ID(PR_IMPORTANCE);
    to.Scratch().refused = PR_PRIORITY;
    SPropProblemArray* problems = nullptr;
    ASSERT_EQ(CopyAll(from, to, nullptr, 0, &problems), S_OK);
    EXPECT_EQ(Told(problems), "0 00170003 11B|1 00260003 005");
    EXPECT_EQ(to.AllProps(), "w's'");
}

TEST_F(ObjectCopies, NoReplaceKeepsWhatIsThereAndMovingIsRefused) {
    Subject from;
    Subject to;
    from.Scratch().Set(LongValue(PR_IMPORTANCE, 2));
    from.Scratch().Set(LongValue(PR_PRIORITY, 1));
    to.Scratch().Set(LongValue(PR_IMPORTANCE, 0));
    ASSERT_EQ(CopyAll(from, to, nullptr, MAPI_NOREPLACE, nullptr), S_OK);
    EXPECT_EQ(to.AllProps(), "0|1");
    EXPECT_EQ(CopyAll(from, to, nullptr, MAPI_MOVE, nullptr), MAPI_E_NO_SUPPORT);
    EXPECT_EQ(from.object->CopyTo(0, nullptr, nullptr, 0, nullptr, nullptr, nullptr, 0, nullptr),
              MAPI_E_INVALID_PARAMETER);
}

}  // namespace

}  // namespace localmapi::testing
