// How items read their properties. That each one comes out in its field is compared with whole mailboxes elsewhere.
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

class RecordTest : public ItemTest {
protected:
    Bag& Values() { return message->properties; }
    ULONG Named(const GUID& set, LONG id, ULONG type) { return mapi.names.Tag(set, id, type); }
    ULONG Keywords() { return mapi.names.Tag(PS_PUBLIC_STRINGS, "Keywords"_w, PT_MV_UNICODE); }
};

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
