// Names of properties.
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "tests/localmapi/object/TestObject.h"
#include "tests/localmapi/support/LeakCheck.h"

namespace localmapi::testing {

namespace {

using ObjectNames = LeakCheck;

MAPINAMEID Numbered(const GUID& set, LONG number) {
    MAPINAMEID name{};
    name.lpguid = const_cast<GUID*>(&set);
    name.ulKind = MNID_ID;
    name.Kind.lID = number;
    return name;
}

MAPINAMEID Texted(const GUID& set, LPCWSTR text) {
    MAPINAMEID name{};
    name.lpguid = const_cast<GUID*>(&set);
    name.ulKind = MNID_STRING;
    name.Kind.lpwstrName = const_cast<LPWSTR>(text);
    return name;
}

std::vector<ULONG> Ids(TestObject& object, std::vector<MAPINAMEID> names, ULONG flags, HRESULT expected) {
    std::vector<MAPINAMEID*> pointers;
    for (MAPINAMEID& name : names) {
        pointers.push_back(&name);
    }
    SPropTagArray* tags = nullptr;
    EXPECT_EQ(object.GetIDsFromNames(static_cast<ULONG>(pointers.size()), pointers.data(), flags, &tags), expected);
    const MapiPointer<SPropTagArray> hold(tags);
    return tags == nullptr ? std::vector<ULONG>()
                           : std::vector<ULONG>(tags->aulPropTag, tags->aulPropTag + tags->cValues);
}

TEST_F(ObjectNames, GetIdsThatStayAndAreToldBack) {
    Subject subject;
    subject.names.Insert(0x8001, {PSETID_Common, false, 0x8501, {}});
    static constexpr const auto& kKeywords = "Keywords"_w;
    static constexpr const auto& kLower = "keywords"_w;

    // Known; unknown and not to be made; a fixed id under its published set.
    EXPECT_EQ(Ids(*subject.object,
                  {Numbered(PSETID_Common, 0x8501), Texted(PS_PUBLIC_STRINGS, kKeywords), Numbered(PS_MAPI, 0x0037)}, 0,
                  MAPI_W_ERRORS_RETURNED),
              (std::vector<ULONG>{0x80010000, PT_ERROR, 0x00370000}));

    // Made: the lowest free ids; a name in other letters is another name; a number in another set is another name.
    EXPECT_EQ(Ids(*subject.object,
                  {Texted(PS_PUBLIC_STRINGS, kKeywords), Texted(PS_PUBLIC_STRINGS, kLower),
                   Numbered(PSETID_Task, 0x8501), Texted(PS_PUBLIC_STRINGS, kKeywords)},
                  MAPI_CREATE, S_OK),
              (std::vector<ULONG>{0x80000000, 0x80020000, 0x80030000, 0x80000000}));

    SizedSPropTagArray<4> asked{.aulPropTag = {0x80000000, 0x80010003, 0x80FF0000, 0x0037001F}};
    SPropTagArray* tags = asked;
    ULONG count = 0;
    MAPINAMEID** names = nullptr;
    ASSERT_EQ(subject.object->GetNamesFromIDs(&tags, nullptr, 0, &count, &names), MAPI_W_ERRORS_RETURNED);
    const MapiPointer<MAPINAMEID*> hold(names);
    ASSERT_EQ(count, 4U);
    EXPECT_EQ(names[0]->ulKind, MNID_STRING);
    EXPECT_EQ(CStringW(names[0]->Kind.lpwstrName), "Keywords"_w);
    EXPECT_EQ(names[1]->Kind.lID, 0x8501);
    EXPECT_TRUE(*names[1]->lpguid == PSETID_Common);
    EXPECT_EQ(names[2], nullptr);
    ASSERT_NE(names[3], nullptr);
    EXPECT_TRUE(*names[3]->lpguid == PS_MAPI);
}

TEST_F(ObjectNames, AllNamesAreListedByKindAndSet) {
    Subject subject;
    subject.names.Insert(0x8000, {PSETID_Common, false, 1, {}});
    subject.names.Insert(0x8001, {PS_PUBLIC_STRINGS, true, 0, "text"_w});
    struct Case {
        const char* name;
        const GUID* set;
        ULONG flags;
        std::vector<ULONG> given;
    };
    const Case cases[] = {
        {"all", nullptr, 0, {0x80000000, 0x80010000}},
        {"of a set", &PSETID_Common, 0, {0x80000000}},
        {"no texts", nullptr, MAPI_NO_STRINGS, {0x80000000}},
        {"no numbers", nullptr, MAPI_NO_IDS, {0x80010000}},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        SPropTagArray* tags = nullptr;
        ULONG count = 0;
        MAPINAMEID** names = nullptr;
        ASSERT_EQ(subject.object->GetNamesFromIDs(&tags, const_cast<GUID*>(row.set), row.flags, &count, &names), S_OK);
        const MapiPointer<MAPINAMEID*> hold(names);
        const MapiPointer<SPropTagArray> holdTags(tags);
        EXPECT_EQ(std::vector<ULONG>(tags->aulPropTag, tags->aulPropTag + tags->cValues), row.given);
    }
}

}  // namespace

}  // namespace localmapi::testing
