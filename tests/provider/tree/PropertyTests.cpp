// Loading an object's fields by their table.
#include "provider/VxMapiProp.h"
#include "tests/provider/tree/TreeTestSupport.h"

namespace {

using namespace scripted_mapi;

class FieldObject final : public CVxMapiProp {
public:
    FieldObject(IMAPIProp* object, const VxField* fields, std::size_t count) : m_object(object) {
        m_fields = fields;
        m_fieldCount = static_cast<LONG>(count);
    }

    IMAPIProp* GetMapiPropObj() override { return m_object; }
    bool GetTypeSpecificProperties() override { return specific; }
    void GetProperty(ULONG field, const SPropValue* value) override {
        const bool isAlternative = (field & kVxAltField) != 0;
        told.push_back((isAlternative ? "alt " : "") + std::to_string(field & ~kVxAltField) + " "
                       + ValueText(CopyOf(*value)));
    }

    Words told;
    bool specific = true;

private:
    IMAPIProp* m_object;
};

class PropertyTest : public TreeTest {
protected:
    PropertyTest() { message->properties = {Time(PR_LAST_MODIFICATION_TIME, 77), Text(PR_SUBJECT_W, "hello")}; }

    // Loads the fields and gives what GetProperty was told; "failed" for a load that failed.
    template <std::size_t N>
    Words Load(const VxField (&fields)[N]) {
        const VxMapiPtr<IMessage> open(mapi.OpenMessage(message));
        FieldObject object(open, fields, N);
        mapi.script.TakeCalls();
        if (!object.GetProperties()) {
            return {"failed"};
        }
        EXPECT_EQ(object.GetLastModified().dwLowDateTime, 77u);
        return object.told;
    }

    std::shared_ptr<MessageModel> message = std::make_shared<MessageModel>();
};

constexpr VxField kFixedFields[] = {
    {.itemType = eVxItemEmail, .fieldId = 5, .propTag = PR_SUBJECT_W, .propType = PT_UNICODE},
    {.itemType = eVxItemEmail, .fieldId = 6, .propTag = 0x3A08, .propType = PT_UNICODE},
    {.itemType = eVxItemEmail, .fieldId = 7, .propTag = PR_MESSAGE_FLAGS, .propType = PT_UNICODE, .altFieldId = 8},
};

TEST_F(PropertyTest, FixedTagsAreReadByTheirTypeAndToldWithTheirErrors) {
    EXPECT_EQ(Load(kFixedFields), (Words{"5 0037001F=hello", "6 3A08000A=8004010F", "alt 8 0E07000A=8004010F"}));
    EXPECT_EQ(mapi.script.TakeCalls(), (Words{"HrGetOneProp(30080040)", "MAPIAllocateBuffer(24)",
                                              "IMessage::GetProps([0037001F,3A08001F,0E07001F],80000000)"}));
}

constexpr VxField kMixedFields[] = {
    {.itemType = eVxItemTask,
     .fieldId = 1,
     .isNamed = 1,
     .propSet = &PSETID_Task,
     .nameId = 0x8104,
     .propType = PT_SYSTIME},
    {.itemType = eVxItemTask, .fieldId = 2, .propTag = PR_SUBJECT_W, .propType = PT_UNICODE},
    {.itemType = eVxItemTask,
     .fieldId = 3,
     .isNamed = 1,
     .propSet = &PS_PUBLIC_STRINGS,
     .nameKind = MNID_STRING,
     .nameText = "Keywords"_w,
     .propType = PT_UNICODE,
     .altFieldId = 0},
    {.itemType = eVxItemTask,
     .fieldId = 4,
     .isNamed = 1,
     .propSet = &PSETID_Task,
     .nameId = 0x8105,
     .propType = PT_LONG},
};

TEST_F(PropertyTest, NamedPropertiesComeFirstAndWithoutTheirErrors) {
    message->properties.Set(Time(mapi.names.Tag(PSETID_Task, 0x8104, PT_SYSTIME), 99));
    message->properties.Set(Text(mapi.names.Tag(PS_PUBLIC_STRINGS, "Keywords"_w, PT_UNICODE), "red"));
    EXPECT_EQ(Load(kMixedFields), (Words{"1 80000040=99", "alt 0 8001001F=red", "2 0037001F=hello"}));
    EXPECT_EQ(mapi.script.TakeCalls({"IMessage"}),
              (Words{"IMessage::GetIDsFromNames({00062003:00008104,00020329:Keywords,00062003:00008105},00000002)",
                     "IMessage::GetProps([80000040,8001001F,80020003],80000000)",
                     "IMessage::GetProps([0037001F],80000000)"}));
}

TEST_F(PropertyTest, ANameThatTheStoreDoesNotKnowKeepsNoNumber) {
    message->properties.Set(Number(mapi.names.Tag(PSETID_Task, 0x8105, PT_LONG), 3));
    mapi.names.Close();
    EXPECT_EQ(Load(kMixedFields), (Words{"4 80000003=3", "2 0037001F=hello"}));
}

TEST_F(PropertyTest, OnlyFixedTagsAndTheTimeCanFailALoad) {
    const struct {
        const char* name;
        const char* call;
        int nth;
        Words told;
    } rows[] = {
        {"no time", "HrGetOneProp(30080040)", 1, {"failed"}},
        {"no memory", "MAPIAllocateBuffer", 1, {"failed"}},
        {"names", "IMessage::GetIDsFromNames", 1, {"2 0037001F=hello"}},
        {"named values", "IMessage::GetProps([8", 1, {"2 0037001F=hello"}},
        {"fixed values", "IMessage::GetProps([0037", 1, {"failed"}},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        mapi.script.ForgetOrders();
        mapi.script.FailNth(row.nth, row.call, MAPI_E_NOT_ENOUGH_MEMORY);
        EXPECT_EQ(Load(kMixedFields), row.told);
    }
    EXPECT_TRUE(IsLogged("MAPIAllocateBuffer failed (8007000e)"));
    mapi.script.ForgetOrders();
    message->properties.Remove(PR_LAST_MODIFICATION_TIME);
    EXPECT_EQ(Load(kMixedFields), Words{"failed"});
}

TEST_F(PropertyTest, ATableLargerThanTheRecordIsCutAndLogged) {
    static VxField fields[300];
    for (std::size_t i = 0; i < 300; ++i) {
        fields[i] = {.itemType = eVxItemEmail,
                     .fieldId = static_cast<LONG>(i),
                     .propTag = static_cast<ULONG>(0x3A00 + i),
                     .propType = PT_LONG};
    }
    EXPECT_EQ(Load(fields).size(), 256u);
    EXPECT_TRUE(IsLogged("FATAL ERROR IN CVxProperties constructor"));

    CVxProperties props(3);
    EXPECT_EQ(props.GetProperty(3).fixedId, 193);
    EXPECT_FALSE(IsLogged("CVxMapiProp::GetProperty"));
    EXPECT_EQ(props.GetProperty(9999).namedAltId, -1);
    EXPECT_TRUE(IsLogged("CVxMapiProp::GetProperty"));
}

}  // namespace
