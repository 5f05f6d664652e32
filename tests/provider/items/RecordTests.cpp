// The values that records are made of: each property that a kind of item reads, and where it comes out. Tags and names
// are written as numbers, as the published properties have them.
#include "provider/Item/VxCalendarItem.h"
#include "provider/Item/VxContact.h"
#include "provider/Item/VxEmailItem.h"
#include "provider/Item/VxNoteItem.h"
#include "provider/Item/VxTaskItem.h"
#include "tests/provider/items/ItemTestSupport.h"

namespace {

using namespace scripted_mapi;

// Ticks of a time so many seconds after 1970, and its milliseconds.
std::int64_t Ticks(int seconds) {
    return 116444736000000000 + seconds * std::int64_t{10000000};
}

std::int64_t Seconds(const FILETIME& time) {
    return CMapiUtil::FromFileTimeToUnix(time) / 1000;
}

// A text property under its record key, and how the item gives it.
template <typename Class>
struct TextRow {
    const char* key;
    const GUID* set;  // null: `id` is a tag
    ULONG id;
    const CStringW& (Class::*read)() const noexcept;
};

template <typename Class, std::size_t N>
void SetTexts(const TextRow<Class> (&rows)[N], Names& names, Bag& bag) {
    for (const TextRow<Class>& row : rows) {
        const ULONG tag = row.set != nullptr ? names.Tag(*row.set, static_cast<LONG>(row.id), PT_UNICODE) : row.id;
        bag.Set(Text(tag, row.key));
    }
}

template <typename Class, std::size_t N>
void ExpectTexts(const TextRow<Class> (&rows)[N], const Class& item) {
    for (const TextRow<Class>& row : rows) {
        EXPECT_EQ(Ascii((item.*row.read)()), row.key);
    }
}

class RecordTest : public ItemTest {
protected:
    Bag& Values() { return message->properties; }
    ULONG Named(const GUID& set, LONG id, ULONG type) { return mapi.names.Tag(set, id, type); }
    ULONG Keywords() { return mapi.names.Tag(PS_PUBLIC_STRINGS, "Keywords"_w, PT_MV_UNICODE); }
};

TEST_F(RecordTest, OfAnEmail) {
    constexpr TextRow<CVxEmailItem> kTexts[] = {
        {"email_sSubject", nullptr, 0x0037001F, &CVxEmailItem::GetSubject},
        {"email_sReplyTo", nullptr, 0x0050001F, &CVxEmailItem::GetReplyto},
        {"email_sConversationIndex", nullptr, 0x0070001F, &CVxEmailItem::GetConversationIndex},
        {"email_sContacts", &PSETID_Common, 0x8586, &CVxEmailItem::GetContacts},
    };
    SetTexts(kTexts, mapi.names, Values());
    Values()
        .Set(Texts(Keywords(), {"red", "blue"}))
        .Set(Time(Named(PSETID_Common, 0x8560, PT_SYSTIME), Ticks(1)))
        .Set(Time(0x00390040, Ticks(2)))
        .Set(Time(0x0E060040, Ticks(3)))
        .Set(Time(0x00150040, Ticks(4)))
        .Set(Time(0x10910040, Ticks(5)))
        .Set(Number(0x00170003, 2))
        .Set(Number(0x0E070003, 0x11))
        .Set(Number(0x00360003, 3))
        .Set(Number(0x0E080003, 4711))
        .Set(Flag(0x0023000B, true))
        .Set(Flag(0x0029000B, true))
        .Set(Binary(0x00710102, {0x01, 0xAB}))
        .Set(Number(0x10900003, 2));
    auto& item = ConnectedAs<CVxEmailItem>("IPM.Note");
    ExpectTexts(kTexts, item);
    EXPECT_EQ(item.GetType(), eVxItemEmail);
    EXPECT_EQ(Ascii(item.GetCategories()), "red, blue");
    EXPECT_EQ(Seconds(item.GetReminder()), 1);
    EXPECT_EQ(Seconds(item.GetSentDateTime()), 2);
    EXPECT_EQ(Seconds(item.GetReceivedDateTime()), 3);
    EXPECT_EQ(Seconds(item.GetExpireDateTime()), 4);
    EXPECT_EQ(Seconds(item.GetFlagCompleteTime()), 5);
    EXPECT_EQ(item.GetImportance(), 2);
    EXPECT_EQ(item.GetReadStatus(), 1);
    EXPECT_EQ(Ascii(item.GetSensitivity()), "Confidential");
    EXPECT_EQ(item.GetSize(), 4711);
    EXPECT_TRUE(item.GetDeliveryRequest() && item.GetReadRequest() && item.GetFlagged());
    EXPECT_EQ(Ascii(item.GetPR_CONVERSATION_INDEX()), "01AB");
    EXPECT_EQ(Ascii(item.GetFlagText()), "follow-up");
    EXPECT_EQ(item.GetDateTimeForDisplay(), 7000);
    EXPECT_EQ(Ascii(item.GetUiID()), Ascii(item.GetFolder()->GetStorePath()) + "/email_sSubject");
    EXPECT_EQ(Ascii(item.GetFolderId()) + Ascii(item.GetFolderName()) + Ascii(item.GetFolderPath()),
              "F1Inbox" + Ascii(item.GetFolder()->GetFolderPath()));
}

TEST_F(RecordTest, OfAContact) {
    constexpr TextRow<CVxContact> kTexts[] = {
        {"contacts_sBusinessPhone", nullptr, 0x3A08001F, &CVxContact::GetBusinessTelephoneNumber},
        {"contacts_sHomePhone", nullptr, 0x3A09001F, &CVxContact::GetHomeTelephoneNumber},
        {"contacts_sBusinessFAX", nullptr, 0x3A24001F, &CVxContact::GetBusinessFaxNumber},
        {"contacts_sMobilePhone", nullptr, 0x3A1C001F, &CVxContact::GetMobileTelephoneNumber},
        {"contacts_sJobTitle", nullptr, 0x3A17001F, &CVxContact::GetJobTitle},
        {"contacts_sCompany", nullptr, 0x3A16001F, &CVxContact::GetCompanyName},
        {"contacts_sBusinessWebPage", nullptr, 0x3A51001F, &CVxContact::GetBusinessHomePage},
        {"contacts_sGivenName", nullptr, 0x3A06001F, &CVxContact::GetGivenName},
        {"contacts_sMiddleName", nullptr, 0x3A44001F, &CVxContact::GetMiddleName},
        {"contacts_sSurname", nullptr, 0x3A11001F, &CVxContact::GetSurname},
        {"contacts_sTitle", nullptr, 0x3A45001F, &CVxContact::GetTitle},
        {"contacts_sGeneration", nullptr, 0x3A05001F, &CVxContact::GetGeneration},
        {"contacts_sDisplayName", nullptr, 0x3001001F, &CVxContact::GetDisplayName},
        {"contacts_sLanguage", nullptr, 0x3A0C001F, &CVxContact::GetLanguage},
        {"contacts_sDepartment", nullptr, 0x3A18001F, &CVxContact::GetDepartmentName},
        {"contacts_sOffice", nullptr, 0x3A19001F, &CVxContact::GetOfficeLocation},
        {"contacts_sPrimaryPhone", nullptr, 0x3A1A001F, &CVxContact::GetPrimaryTelephoneNumber},
        {"contacts_sBusinessPhone2", nullptr, 0x3A1B001F, &CVxContact::GetBusiness2TelephoneNumber},
        {"contacts_sCarPhone", nullptr, 0x3A1E001F, &CVxContact::GetCarTelephoneNumber},
        {"contacts_sOtherPhone", nullptr, 0x3A1F001F, &CVxContact::GetOtherTelephoneNumber},
        {"contacts_sPager", nullptr, 0x3A21001F, &CVxContact::GetPagerTelephoneNumber},
        {"contacts_sPrimaryFAX", nullptr, 0x3A23001F, &CVxContact::GetPrimaryFaxNumber},
        {"contacts_sHomeFAX", nullptr, 0x3A25001F, &CVxContact::GetHomeFaxNumber},
        {"contacts_sAssistantPhone", nullptr, 0x3A2E001F, &CVxContact::GetAssistantTelephoneNumber},
        {"contacts_sHomePhone2", nullptr, 0x3A2F001F, &CVxContact::GetHome2TelephoneNumber},
        {"contacts_sAssistant", nullptr, 0x3A30001F, &CVxContact::GetAssistant},
        {"contacts_sHobbies", nullptr, 0x3A43001F, &CVxContact::GetHobbies},
        {"contacts_sProfession", nullptr, 0x3A46001F, &CVxContact::GetProfession},
        {"contacts_sSpouse", nullptr, 0x3A48001F, &CVxContact::GetSpouseName},
        {"contacts_sComputerNetwork", nullptr, 0x3A49001F, &CVxContact::GetComputerNetworkName},
        {"contacts_sFTPSite", nullptr, 0x3A4C001F, &CVxContact::GetFtpSite},
        {"contacts_sOrganizationalID", nullptr, 0x3A10001F, &CVxContact::GetOrganizationalIdNumber},
        {"contacts_sGovernmentID", nullptr, 0x3A07001F, &CVxContact::GetGovernmentIdNumber},
        {"contacts_sCustomerID", nullptr, 0x3A4A001F, &CVxContact::GetCustomerId},
        {"contacts_sPreferredByName", nullptr, 0x3A47001F, &CVxContact::GetPreferredByName},
        {"contacts_sManager", nullptr, 0x3A4E001F, &CVxContact::GetManagerName},
        {"contacts_sNickname", nullptr, 0x3A4F001F, &CVxContact::GetNickname},
        {"contacts_sPersonalWebPage", nullptr, 0x3A50001F, &CVxContact::GetPersonalHomePage},
        {"contacts_sCompanyMainPhone", nullptr, 0x3A57001F, &CVxContact::GetCompanyMainPhoneNumber},
        {"contacts_sTTYTDDPhone", nullptr, 0x3A4B001F, &CVxContact::GetTTYTDDPhoneNumber},
        {"contacts_sCallbackPhone", nullptr, 0x3A02001F, &CVxContact::GetCallbackTelephoneNumber},
        {"contacts_sRadioPhone", nullptr, 0x3A1D001F, &CVxContact::GetRadioTelephoneNumber},
        {"contacts_sISDNNumber", nullptr, 0x3A2D001F, &CVxContact::GetISDNNumber},
        {"contacts_sTelexNumber", nullptr, 0x3A2C001F, &CVxContact::GetTelexNumber},
        {"contacts_sEmail, of an address book", nullptr, 0x39FE001F, &CVxContact::GetSmtpAddress},
        {"contacts_sEmail", &PSETID_Address, 0x8084, &CVxContact::GetEmail1},
        {"contacts_sEmail2", &PSETID_Address, 0x8094, &CVxContact::GetEmail2},
        {"contacts_sEmail3", &PSETID_Address, 0x80A4, &CVxContact::GetEmail3},
        {"contacts_sFileAs", &PSETID_Address, 0x8005, &CVxContact::GetFileAs},
        {"contacts_sIMAddress", &PSETID_Address, 0x8062, &CVxContact::GetIMAddress},
        {"contacts_sOtherAddress", &PSETID_Address, 0x801C, &CVxContact::GetOtherAddress},
        {"contacts_sFlagText", &PSETID_Common, 0x8530, &CVxContact::GetFlagText},
    };
    SetTexts(kTexts, mapi.names, Values());
    const ULONG pieces[] = {0x3A29001F, 0x3A27001F, 0x3A28001F, 0x3A26001F, 0x3A2A001F,
                            0x3A5D001F, 0x3A59001F, 0x3A5C001F, 0x3A5A001F, 0x3A5B001F};
    for (std::size_t i = 0; i < std::size(pieces); ++i) {
        Values().Set(Text(pieces[i], std::to_string(i)));
    }
    Values()
        .Set(Texts(0x3A58101F, {"Ann", "Bob"}))
        .Set(Texts(Keywords(), {"x", "y"}))
        .Set(Texts(Named(PSETID_Common, 0x853A, PT_MV_UNICODE), {"c", "d"}))
        .Set(Time(0x3A420040, Ticks(1)))
        .Set(Time(0x3A410040, Ticks(2)))
        .Set(Time(Named(PSETID_Common, 0x8560, PT_SYSTIME), Ticks(3)))
        .Set(Number(0x00360003, 9))
        .Set(Number(0x00170003, 3))
        .Set(Number(0x3A4D0002, 1));
    auto& item = ConnectedAs<CVxContact>("IPM.Contact");
    ExpectTexts(kTexts, item);
    EXPECT_EQ(item.GetDisplayNamePrefix(), item.GetTitle());
    EXPECT_EQ(Ascii(item.GetBusinessAddress()), "0 1 2 3 4");
    EXPECT_EQ(Ascii(item.GetHomeAddress()), "5 6 7 8 9");
    EXPECT_EQ(Ascii(item.GetHomeAddress()), "5 6 7 8 9");
    EXPECT_EQ(Ascii(item.GetChildrensNames()) + Ascii(item.GetCategories()) + Ascii(item.GetContacts()),
              "Ann, Bobx, yc, d");
    EXPECT_EQ(Seconds(item.GetBirthday()), 1);
    EXPECT_EQ(Seconds(item.GetWeddingAnniversary()), 2);
    EXPECT_EQ(Seconds(item.GetReminder()), 3);
    EXPECT_EQ(Ascii(item.GetSensitivity()), "Unknown");
    EXPECT_EQ(item.GetImportance(), -1);
    EXPECT_EQ(Ascii(item.GetGender()), "Female");
    EXPECT_EQ(Ascii(item.GetEntryId()), "E1");
    EXPECT_EQ(Ascii(item.GetUISubject()), "contacts_sDisplayName");
    EXPECT_EQ(item.GetDateTimeForDisplay(), 7000);
}

TEST_F(RecordTest, OfAnAppointment) {
    constexpr TextRow<CVxCalendarItem> kTexts[] = {
        {"calendar_sSubject", nullptr, 0x0037001F, &CVxCalendarItem::GetSubject},
        {"calendar_sOrganizer", nullptr, 0x0C1A001F, &CVxCalendarItem::GetOrganizer},
        {"calendar_sLocation", &PSETID_Appointment, 0x8208, &CVxCalendarItem::GetLocation},
        {"calendar_sMileage", &PSETID_Common, 0x8534, &CVxCalendarItem::GetMileage},
        {"calendar_sBillingInfo", &PSETID_Common, 0x8535, &CVxCalendarItem::GetBillingInfo},
    };
    SetTexts(kTexts, mapi.names, Values());
    const auto setTime = [&](const GUID& set, LONG id, int seconds) {
        Values().Set(Time(Named(set, id, PT_SYSTIME), Ticks(seconds)));
    };
    const auto setNumber = [&](LONG id, LONG value) {
        Values().Set(Number(Named(PSETID_Appointment, id, PT_LONG), value));
    };
    setTime(PSETID_Appointment, 0x8220, 1);
    setTime(PSETID_Appointment, 0x820D, 2);
    setTime(PSETID_Appointment, 0x820E, 3);
    setTime(PSETID_Appointment, 0x8235, 4);
    setTime(PSETID_Appointment, 0x8236, 5);
    setTime(PSETID_Common, 0x8516, 6);
    setNumber(0x8217, 11);
    setNumber(0x8213, 12);
    setNumber(0x8218, -13);
    setNumber(0x8205, 14);
    Values()
        .Set(Time(0x30070040, Ticks(8)))
        .Set(Number(0x00170003, 0))
        .Set(Number(0x00360003, 2))
        .Set(Number(0x0E080003, 99))
        .Set(Flag(Named(PSETID_Appointment, 0x8215, PT_BOOLEAN), true))
        .Set(Binary(Named(PSETID_Appointment, 0x8216, PT_BINARY), {4, 0x30, 4, 0x30, 11, 0x20}))
        .Set(Texts(Named(PSETID_Common, 0x8539, PT_MV_UNICODE), {"A", "B"}))
        .Set(Texts(Named(PSETID_Common, 0x853A, PT_MV_UNICODE), {"C"}))
        .Set(Texts(Keywords(), {"D", "E", "F"}));
    auto& item = ConnectedAs<CVxCalendarItem>("IPM.Appointment");
    ExpectTexts(kTexts, item);
    EXPECT_EQ(Seconds(item.GetReplyTime()), 1);
    EXPECT_EQ(Seconds(item.GetStartTime()), 2);
    EXPECT_EQ(Seconds(item.GetEndTime()), 3);
    EXPECT_EQ(Seconds(item.GetStartDate()), 4);
    EXPECT_EQ(Seconds(item.GetEndDate()), 5);
    EXPECT_EQ(Seconds(item.GetReminder()), 6);
    EXPECT_EQ(Seconds(item.GetCreatedTime()), 8);
    EXPECT_EQ(item.GetStatus(), 11);
    EXPECT_EQ(item.GetDuration(), 12);
    EXPECT_EQ(Ascii(item.GetResponse()), "-13");
    EXPECT_EQ(item.GetBusyStatus(), 14);
    EXPECT_EQ(item.GetImportance(), 0);
    EXPECT_EQ(item.GetSize(), 99);
    EXPECT_EQ(Ascii(item.GetSensitivity()) + Ascii(item.GetEvent()), "PrivateTrue");
    EXPECT_EQ(Ascii(item.GetRecurrenceType()) + Ascii(item.GetRecurrence()), "WeeklyRecurrent");
    EXPECT_EQ(Ascii(item.GetCompany()) + Ascii(item.GetContacts()) + Ascii(item.GetCategories()), "A, BCD, E, F");
    EXPECT_EQ(Ascii(item.GetUISubject()), "calendar_sSubject");
}

TEST_F(RecordTest, OfATask) {
    constexpr TextRow<CVxTaskItem> kTexts[] = {
        {"tasks_sSubject", nullptr, 0x0037001F, &CVxTaskItem::GetSubject},
        {"tasks_sOwner", &PSETID_Task, 0x811F, &CVxTaskItem::GetOwner},
        {"tasks_sDelegator", &PSETID_Task, 0x8121, &CVxTaskItem::GetDelegator},
        {"tasks_sRole", &PSETID_Task, 0x8127, &CVxTaskItem::GetRole},
        {"tasks_sMileage", &PSETID_Common, 0x8534, &CVxTaskItem::GetMileage},
        {"tasks_sBillingInfo", &PSETID_Common, 0x8535, &CVxTaskItem::GetBilling},
    };
    SetTexts(kTexts, mapi.names, Values());
    const auto setTime = [&](const GUID& set, LONG id, int seconds) {
        Values().Set(Time(Named(set, id, PT_SYSTIME), Ticks(seconds)));
    };
    const auto setNumber = [&](LONG id, LONG value) { Values().Set(Number(Named(PSETID_Task, id, PT_LONG), value)); };
    setTime(PSETID_Task, 0x8105, 1);
    setTime(PSETID_Task, 0x8104, 2);
    setTime(PSETID_Task, 0x810F, 3);
    setTime(PSETID_Common, 0x8502, 4);
    setNumber(0x8101, 5);
    setNumber(0x8129, 6);
    setNumber(0x8120, 7);
    setNumber(0x812A, 8);
    setNumber(0x8110, 9);
    setNumber(0x8111, 10);
    Values()
        .Set(Time(0x30070040, Ticks(11)))
        .Set(Number(0x00170003, 1))
        .Set(Number(0x00360003, 1))
        .Set(Number(0x0E080003, 98))
        .Set(Binary(Named(PSETID_Task, 0x8116, PT_BINARY), {4, 0x30, 4, 0x30, 13}))
        .Set(Flag(Named(PSETID_Task, 0x8103, PT_BOOLEAN), false))
        .Set(Flag(Named(PSETID_Task, 0x811C, PT_BOOLEAN), true))
        .Set(Real(Named(PSETID_Task, 0x8102, PT_DOUBLE), 0.25))
        .Set(Texts(Named(PSETID_Common, 0x8539, PT_MV_UNICODE), {"A", "B"}))
        .Set(Texts(Named(PSETID_Common, 0x853A, PT_MV_UNICODE), {"C"}))
        .Set(Texts(Keywords(), {"D"}));
    auto& item = ConnectedAs<CVxTaskItem>("IPM.Task");
    ExpectTexts(kTexts, item);
    EXPECT_EQ(Seconds(item.GetDueDate()), 1);
    EXPECT_EQ(Seconds(item.GetStartDate()), 2);
    EXPECT_EQ(Seconds(item.GetCompletedDate()), 3);
    EXPECT_EQ(Seconds(item.GetReminder()), 4);
    EXPECT_EQ(Seconds(item.GetCreatedTime()), 11);
    EXPECT_EQ(item.GetStatus(), 5);
    EXPECT_EQ(Ascii(item.GetOwnership()) + Ascii(item.GetResponse()) + Ascii(item.GetDelegation()), "678");
    EXPECT_EQ(item.GetActualWork(), 9);
    EXPECT_EQ(item.GetTotalWork(), 10);
    EXPECT_EQ(item.GetImportance(), 1);
    EXPECT_EQ(item.GetSize(), 98);
    EXPECT_EQ(Ascii(item.GetSensitivity()) + Ascii(item.GetGroup()), "PersonalFalse");
    EXPECT_TRUE(item.GetIsComplete());
    EXPECT_EQ(item.GetPercentComplete(), 0.25);
    EXPECT_EQ(Ascii(item.GetRecurrenceType()) + Ascii(item.GetRecurrence()), "YearlyRecurrent");
    EXPECT_EQ(Ascii(item.GetCompany()) + Ascii(item.GetContacts()) + Ascii(item.GetCategories()), "A, BCD");
    EXPECT_EQ(Ascii(item.GetUpdateList()), "tasks_sDelegator");  // and there are no recipients
    EXPECT_EQ(item.GetDateTimeForDisplay(), 7000);
}

TEST_F(RecordTest, OfANote) {
    Values()
        .Set(Texts(Keywords(), {"k"}))
        .Set(Text(Named(PSETID_Common, 0x8586, PT_UNICODE), "contacts"))
        .Set(Number(Named(PSETID_Note, 0x831C, PT_LONG), 3))
        .Set(Time(0x0E060040, Ticks(1)))
        .Set(Text(0x0037001F, "subject"))
        .Set(Number(0x0E080003, 97))
        .Set(Text(0x0070001F, "topic"))
        .Set(Binary(0x00710102, {0xCD}));
    auto& item = ConnectedAs<CVxNoteItem>("IPM.StickyNote");
    EXPECT_EQ(Ascii(item.GetCategories()) + Ascii(item.GetContacts()) + Ascii(item.GetSubject()), "kcontactssubject");
    EXPECT_EQ(item.GetColor(), 3);
    EXPECT_EQ(item.GetSize(), 97);
    EXPECT_EQ(Seconds(item.GetCreatedTime()), 1);
    EXPECT_EQ(Ascii(item.GetConversationIndex()) + Ascii(item.GetPR_CONVERSATION_INDEX()), "topicCD");
    EXPECT_EQ(mapi.script.Count("IMessage::GetRecipientTable"), 0);
}

// The calls of a connect, in their order, with all that they ask for.
TEST_F(RecordTest, OfANoteTakesOneCallForAKindOfValues) {
    ConnectedAs<CVxNoteItem>("IPM.StickyNote");
    EXPECT_EQ(
        mapi.script.TakeCalls(),
        (Words{"IMsgStore::OpenEntry(E1,null,00000010)", "HrGetOneProp(30080040)", "MAPIAllocateBuffer(44)",
               "IMessage::GetIDsFromNames({00020329:Keywords,00062008:00008586,0006200E:0000831C},00000002)",
               "IMessage::GetProps([8000101F,8001001F,80020003],80000000)",
               "IMessage::GetProps([0E060040,0037001F,0E080003,0070001F,00710102],80000000)",
               "IMessage::GetAttachmentTable(00000000)",
               "IMAPITable::SetColumns([37050003,0E210003,3704001F,3707001F,3001001F,0E200003,10F3001F],00000000)",
               "IMAPITable::SeekRow(0,0)", "HrQueryAllRows(null,null,null,0)"}));
}

TEST_F(RecordTest, LeavesOutValuesInErrorAndOfOtherTypes) {
    Values()
        .Set(Failing(0x0037001F))
        .Set(AsItIs(Number(0x10F30003, 5)))     // text was asked for
        .Set(AsItIs(Number(0x00710003, 5)))     // bytes were
        .Set(AsItIs(Text(0x0017001F, "high")))  // a number was
        .Set(AsItIs(Text(0x0036001F, "none")))
        .Set(AsItIs(Text(0x0039001F, "yesterday")))
        .Set(AsItIs(Text(CHANGE_PROP_TYPE(Keywords(), PT_UNICODE), "one")));
    auto& item = ConnectedAs<CVxEmailItem>("IPM.Note");
    EXPECT_EQ(Ascii(item.GetSubject()) + Ascii(item.GetURLSubject()) + Ascii(item.GetPR_CONVERSATION_INDEX()), "");
    EXPECT_EQ(item.GetImportance(), 1);
    EXPECT_EQ(Ascii(item.GetSensitivity()) + Ascii(item.GetCategories()), "");
    EXPECT_EQ(Seconds(item.GetSentDateTime()), 0);
}

TEST_F(RecordTest, TellsRecurrencesByOneByte) {
    struct Row {
        BYTE frequency;
        const char* type;
        const char* recurrence;
    };
    constexpr Row kRows[] = {{9, "None", "None"},
                             {10, "Daily", "Recurrent"},
                             {12, "Monthly", "Recurrent"},
                             {14, "Unknown", "Unknown"},
                             {0x8A, "Unknown", "Unknown"}};
    for (const Row& row : kRows) {
        const Bytes pattern = {0, 0, 0, 0, row.frequency};
        for (const std::size_t size : {pattern.size(), pattern.size() - 1}) {
            SCOPED_TRACE(testing::Message() << int{row.frequency} << ", bytes " << size);
            domain.reset();
            Values().Set(Binary(Named(PSETID_Appointment, 0x8216, PT_BINARY),
                                Bytes(pattern.begin(), pattern.begin() + static_cast<std::ptrdiff_t>(size))));
            auto& item = ConnectedAs<CVxCalendarItem>("IPM.Appointment");
            EXPECT_EQ(Ascii(item.GetRecurrenceType()), size == 5 ? row.type : "Unknown");
            EXPECT_EQ(Ascii(item.GetRecurrence()), size == 5 ? row.recurrence : "Unknown");
        }
    }
}

TEST_F(RecordTest, OfAContactWithoutPostalFieldsHasFourBlanks) {
    Values().Set(Number(0x3A4D0002, 0));
    auto& item = ConnectedAs<CVxContact>("IPM.Contact");
    EXPECT_EQ(Ascii(item.GetBusinessAddress()) + "|" + Ascii(item.GetHomeAddress()), "    |    ");
    EXPECT_EQ(Ascii(item.GetGender()), "");
    EXPECT_EQ(Ascii(item.GetSensitivity()), "Normal");
    EXPECT_EQ(item.GetImportance(), 1);
}

TEST_F(RecordTest, FlagsAreSetByTheMerePresenceOfTheStatus) {
    struct Row {
        const char* name;
        bool isThere;
        LONG status;
        bool isFlagged;
        const char* text;
    };
    // The text is not emptied with the rest, so it is looked at with a new item each.
    constexpr Row kRows[] = {{"none", false, 0, false, ""},
                             {"zero", true, 0, true, ""},
                             {"complete", true, 1, true, "complete"},
                             {"marked", true, 2, true, "follow-up"},
                             {"negative", true, -1, false, ""}};
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        domain.reset();
        Values().Remove(0x10900003);
        if (row.isThere) {
            Values().Set(Number(0x10900003, row.status));
        }
        auto& item = ConnectedAs<CVxEmailItem>("IPM.Note");
        EXPECT_EQ(item.GetFlagged(), row.isFlagged);
        EXPECT_EQ(Ascii(item.GetFlagText()), row.text);
    }
}

TEST_F(RecordTest, TheTimeForDisplayIsTheFirstOneThereIs) {
    Values().Set(Time(PR_LAST_MODIFICATION_TIME, 0)).Set(Time(0x0E060040, Ticks(3))).Set(Time(0x30070040, Ticks(4)));
    EXPECT_EQ(ConnectedAs<CVxEmailItem>("IPM.Note").GetDateTimeForDisplay(), 3000);
    domain.reset();
    EXPECT_EQ(ConnectedAs<CVxTaskItem>("IPM.Task").GetDateTimeForDisplay(), 4000);
    domain.reset();
    Values().Set(Time(Named(PSETID_Appointment, 0x820D, PT_SYSTIME), Ticks(5)));
    EXPECT_EQ(ConnectedAs<CVxCalendarItem>("IPM.Appointment").GetDateTimeForDisplay(), 5000);
    domain.reset();
    Values().Remove(0x0E060040);
    Values().Remove(0x30070040);
    EXPECT_EQ(ConnectedAs<CVxEmailItem>("IPM.Note").GetDateTimeForDisplay(), 0);
}

}  // namespace
