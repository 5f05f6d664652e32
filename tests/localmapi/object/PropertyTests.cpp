// Values: widths, types, what is missing or too large, setting and deleting.
#include "localmapi/object/ValueStreams.h"
#include "mapi/MapiFlags.h"
#include "mapi/PropTags.h"
#include "tests/localmapi/object/TestObject.h"
#include "tests/localmapi/support/LeakCheck.h"
#include "tests/localmapi/support/ValueText.h"

namespace localmapi::testing {

namespace {

using ObjectProperties = LeakCheck;

constexpr ULONG kNameA = PR_DISPLAY_NAME_A;
constexpr ULONG kNameW = PR_DISPLAY_NAME_W;
constexpr ULONG kName = PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_DISPLAY_NAME_W));

TEST_F(ObjectProperties, TextsComeInTheWidthAskedFor) {
    struct Case {
        const char* name;
        ULONG stored;
        std::string bytes;
        UINT page;
        ULONG asked;
        ULONG flags;
        const char* given;
    };
    // E9 is e with acute in 1252; D4 is the same letter's neighbour in 1251: CYRILLIC CAPITAL EF, U+0424.
    const Case cases[] = {
        {"wide as wide", kNameW, Utf16("ab"), 1252, kNameW, 0, "w'ab'"},
        {"wide as 8-bit", kNameW, Utf16("ab"), 1252, kNameA, MAPI_UNICODE, "a'ab'"},
        {"8-bit as wide", kNameA, "ab", 1252, kNameW, 0, "w'ab'"},
        {"8-bit in the object's page", kNameW, std::string("\x24\x04", 2), 1251, kNameA, 0, "a'\xD4'"},
        {"unspecified, wide by the flag", kNameA, "ab", 1252, kName, MAPI_UNICODE, "w'ab'"},
        {"unspecified, 8-bit by the flag", kNameW, Utf16("ab"), 1252, kName, 0, "a'ab'"},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.name);
        Subject subject(row.page);
        subject.Scratch().SetBytes(row.stored, row.bytes);
        EXPECT_EQ(subject.Props({row.asked}, row.flags), row.given);
    }
}

TEST_F(ObjectProperties, WhatCannotBeGivenIsAnErrorInItsPlace) {
    Subject subject;
    subject.Scratch().SetBytes(PR_ENTRYID, "id");
    subject.Scratch().Set(LongValue(PR_IMPORTANCE, 2));
    subject.Scratch().Set(LongValue(PR_SENSITIVITY, 1));
    subject.Scratch().unreadable = PROP_ID(PR_SENSITIVITY);
    subject.Scratch().SetBytes(PR_BODY_W, std::string(PropCore::kLargestValue + 2, 'x'));

    // Not there; another type than the stored one; damaged; too large; nothing asked for.
    EXPECT_EQ(subject.Props({PR_SUBJECT_W, PR_IMPORTANCE, PROP_TAG(PT_I8, PROP_ID(PR_IMPORTANCE)), PR_SENSITIVITY,
                             PR_BODY_W, PR_NULL, PR_ENTRYID}),
              "!0F|2|!0F|!1B|!0E|null|x6964 with errors");

    MAPIERROR* error = nullptr;
    ASSERT_EQ(subject.object->GetLastError(MAPI_E_CORRUPT_DATA, 0, &error), S_OK);
    const MapiPointer<MAPIERROR> hold(error);
    ASSERT_NE(error, nullptr);
    EXPECT_STREQ(reinterpret_cast<const char*>(error->lpszError), "the bytes make no sense");

    error = nullptr;
    ASSERT_EQ(subject.object->GetLastError(MAPI_E_NOT_FOUND, MAPI_UNICODE, &error), S_OK);
    EXPECT_EQ(error, nullptr) << "the last failure was another";
}

TEST_F(ObjectProperties, ListsHoldStoredAndDerivedProperties) {
    Subject subject;
    subject.Scratch().SetBytes(kNameA, "n");
    subject.Scratch().Set(LongValue(PR_IMPORTANCE, 2));
    subject.object->derivedTags = {PR_BODY_W, PR_IMPORTANCE};
    subject.object->derive = [](ULONG) -> Result<Content> {
        const std::string text = Utf16("made");
        const auto* begin = reinterpret_cast<const std::byte*>(text.data());
        return Content{PR_BODY_W, std::make_unique<OwnedBytes>(Bytes(begin, begin + text.size()))};
    };
    EXPECT_EQ(subject.AllProps(), "2|w'made'|w'n'");
    EXPECT_EQ(subject.AllProps(0), "2|a'made'|a'n'");

    SPropTagArray* tags = nullptr;
    ASSERT_EQ(subject.object->GetPropList(0, &tags), S_OK);
    const MapiPointer<SPropTagArray> hold(tags);
    EXPECT_EQ(std::vector<ULONG>(tags->aulPropTag, tags->aulPropTag + tags->cValues),
              (std::vector<ULONG>{PR_IMPORTANCE, PR_BODY_A, kNameA}));
}

TEST_F(ObjectProperties, SettingTellsWhatWasRefused) {
    Subject subject;
    Arena memory;
    subject.Scratch().refused = PR_SENSITIVITY;
    SPropValue object{};
    object.ulPropTag = PR_ATTACH_DATA_OBJ;
    SPropValue broken{};
    broken.ulPropTag = PR_SUBJECT_W;
    SPropValue values[] = {LongValue(PR_IMPORTANCE, 1), LongValue(PR_SENSITIVITY, 1), object,
                           ErrorValue(PR_BODY_W, MAPI_E_NOT_FOUND), broken};
    SPropProblemArray* problems = nullptr;
    ASSERT_EQ(subject.object->SetProps(5, values, &problems), S_OK);
    EXPECT_EQ(Told(problems), "1 00360003 005|2 3701000D 302|4 0037001F 057");
    EXPECT_EQ(subject.AllProps(), "1");

    SizedSPropTagArray<2> gone{.aulPropTag = {PR_IMPORTANCE, PR_BODY_W}};
    SPropProblemArray* missing = nullptr;
    ASSERT_EQ(subject.object->DeleteProps(gone, &missing), S_OK);
    EXPECT_EQ(Told(missing), "1 1000001F 10F");
    EXPECT_EQ(subject.AllProps(), "");
}

}  // namespace

}  // namespace localmapi::testing
