// Names of properties.
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "tests/localmapi/object/TestObject.h"
#include "tests/localmapi/support/LeakCheck.h"

namespace localmapi::testing {

namespace {

using ObjectNames = LeakCheck;

// A number, or a text where there is one.
MAPINAMEID Name(const GUID& set, LONG number, LPCWSTR text = nullptr) {
    MAPINAMEID name{};
    name.lpguid = const_cast<GUID*>(&set);
    name.ulKind = text == nullptr ? MNID_ID : MNID_STRING;
    if (text == nullptr) {
        name.Kind.lID = number;
    } else {
        name.Kind.lpwstrName = const_cast<LPWSTR>(text);
    }
    return name;
}

std::vector<ULONG> Listed(SPropTagArray* tags) {
    const MapiPointer<SPropTagArray> hold(tags);
    return tags == nullptr ? std::vector<ULONG>()
                           : std::vector<ULONG>(tags->aulPropTag, tags->aulPropTag + tags->cValues);
}

std::vector<ULONG> Ids(TestObject& object, std::vector<MAPINAMEID> names, ULONG flags, HRESULT expected) {
    std::vector<MAPINAMEID*> pointers;
    for (MAPINAMEID& name : names) {
        pointers.push_back(&name);
    }
    SPropTagArray* tags = nullptr;
    EXPECT_EQ(object.GetIDsFromNames(static_cast<ULONG>(pointers.size()), pointers.data(), flags, &tags), expected);
    return Listed(tags);
}

TEST_F(ObjectNames, GetIdsThatStayAndAreToldBack) {
    Subject subject;
    subject.names.Insert(0x8001, {PSETID_Common, false, 0x8501, {}});
    static constexpr const auto& kKeywords = "Keywords"_w;
    static constexpr const auto& kLower = "keywords"_w;

    // Known; unknown and not to be made; a fixed id under its published set.
    EXPECT_EQ(Ids(*subject.object,
                  {Name(PSETID_Common, 0x8501), Name(PS_PUBLIC_STRINGS, 0, kKeywords), Name(PS_MAPI, 0x0037)}, 0,
                  MAPI_W_ERRORS_RETURNED),
              (std::vector<ULONG>{0x80010000, PT_ERROR, 0x00370000}));

    // Made: the lowest free ids; a name in other letters is another name; a number in another set is another name.
    EXPECT_EQ(Ids(*subject.object,
                  {Name(PS_PUBLIC_STRINGS, 0, kKeywords), Name(PS_PUBLIC_STRINGS, 0, kLower), Name(PSETID_Task, 0x8501),
                   Name(PS_PUBLIC_STRINGS, 0, kKeywords)},
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
    const auto listed = [&subject](const GUID* set, ULONG flags) {
        SPropTagArray* tags = nullptr;
        ULONG count = 0;
        MAPINAMEID** names = nullptr;
        EXPECT_EQ(subject.object->GetNamesFromIDs(&tags, const_cast<GUID*>(set), flags, &count, &names), S_OK);
        const MapiPointer<MAPINAMEID*> hold(names);
        return Listed(tags);
    };
    EXPECT_EQ(listed(nullptr, 0), (std::vector<ULONG>{0x80000000, 0x80010000}));
    EXPECT_EQ(listed(&PSETID_Common, 0), std::vector<ULONG>{0x80000000});
    EXPECT_EQ(listed(nullptr, MAPI_NO_STRINGS), std::vector<ULONG>{0x80000000});
    EXPECT_EQ(listed(nullptr, MAPI_NO_IDS), std::vector<ULONG>{0x80010000});
}

}  // namespace

}  // namespace localmapi::testing
