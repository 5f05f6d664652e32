// Recipients as the texts of records, and what a failure of their table does.
#include "provider/Item/VxCalendarItem.h"
#include "provider/Item/VxEmailItem.h"
#include "provider/Item/VxTaskItem.h"
#include "tests/provider/items/ItemTestSupport.h"

namespace {

using namespace scripted_mapi;

class RecipientTest : public ItemTest {
protected:
    // A row; "-" leaves the column out.
    void Add(LONG type, std::string_view name, std::string_view smtp, std::string_view org, std::string_view address) {
        Bag row = {Number(PR_RECIPIENT_TYPE, type)};
        const auto add = [&](ULONG tag, std::string_view text) {
            if (text != "-") {
                row.Set(Text(tag, text));
            }
        };
        add(PR_DISPLAY_NAME_W, name);
        add(PR_SMTP_ADDRESS_W, smtp);
        add(0x403E001F, org);
        add(PR_EMAIL_ADDRESS_W, address);
        message->recipients.push_back(row);
    }

    template <typename Class>
    Class& Again(std::string_view messageClass) {
        domain.reset();
        return ConnectedAs<Class>(messageClass);
    }
};

TEST_F(RecipientTest, TakeTheFirstAddressThatCameBack) {
    struct Row {
        const char* name;
        const char* display;
        const char* smtp;
        const char* org;
        const char* address;
        const char* mail;  // what a mail and an appointment make of it
        const char* task;
    };
    constexpr Row kRows[] = {
        {"SMTP first", "Ann", "A B@<X>.com", "o@x", "e@x", "Ann <ab@x.com>", "Ann <AB@X.com>"},
        {"then the other one", "Ann", "-", "O@x", "e@x", "Ann <o@x>", "Ann <O@x>"},
        {"then the plain one", "Ann", "-", "-", "/o=Org", "Ann </o=org>", "Ann </o=Org>"},
        {"an SMTP that is empty", "Ann", "", "o@x", "e@x", "Ann", "Ann"},
        {"no plain column", "Ann", "a@x", "-", "-", "Ann", "Ann"},
        {"no name", "", "A b@x", "-", "e@x", "A b@x", "A b@x"},
        {"no name and no plain column", "-", "a@x", "-", "-", "", ""},
        {"nothing but a name", "Ann", "-", "-", "-", "Ann", "Ann"},
    };
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        message->recipients.clear();
        Add(1, row.display, row.smtp, row.org, row.address);
        EXPECT_EQ(Ascii(Again<CVxEmailItem>("IPM.Note").GetTo()), row.mail);
        EXPECT_EQ(Ascii(Again<CVxCalendarItem>("IPM.Appointment").GetReqAttendees()), row.mail);
        EXPECT_EQ(Ascii(Again<CVxTaskItem>("IPM.Task").GetRecipients()), row.task);
    }
}

TEST_F(RecipientTest, GoIntoListsByTheirType) {
    for (const LONG type : {1, 2, 3, 0, 1, 2, 3, 4}) {
        Add(type, "n" + std::to_string(type), "-", "-", "-");
    }
    message->recipients.push_back({Text(PR_DISPLAY_NAME_W, "without a type")});
    auto& mail = Again<CVxEmailItem>("IPM.Note");
    EXPECT_EQ(Ascii(mail.GetTo()) + "|" + Ascii(mail.GetCC()) + "|" + Ascii(mail.GetBCC()), "n1; n1|n2; n2|n3; n3");
    auto& meeting = Again<CVxCalendarItem>("IPM.Appointment");
    EXPECT_EQ(Ascii(meeting.GetReqAttendees()) + "|" + Ascii(meeting.GetOptAttendees()) + "|"
                  + Ascii(meeting.GetResources()) + "|" + Ascii(meeting.GetRecipients()),
              "n1; n1|n2; n2|n3; n3|n1; n1");
    message->properties.Set(Text(mapi.names.Tag(PSETID_Task, 0x8121, PT_UNICODE), "boss"));
    auto& task = Again<CVxTaskItem>("IPM.Task");
    EXPECT_EQ(Ascii(task.GetRecipients()) + "|" + Ascii(task.GetUpdateList()), "n1; n1|boss; n1; n1");
}

TEST_F(RecipientTest, TheirTableFailsAMailOnlyOnceItIsOpen) {
    struct Row {
        const char* call;
        bool mailConnects;
        const char* mailLine;
        const char* otherLine;
    };
    constexpr Row kRows[] = {
        {"IMessage::GetRecipientTable", true, "ERROR: GetRecipientTable Error: (80004005)",
         "ERROR: GetRecipientTable Error: (80004005)"},
        {"IMAPITable::SetColumns([3001001F,0C150003,3003001F,3002001F,39FE001F,403E001F],00000000)", false,
         "ERROR: SetColumns Error: (80004005)", "ERROR: SetColumns failed (80004005)"},
        {"IMAPITable::SeekRow", false, "ERROR: SeekRow Error: (80004005)", "ERROR: SeekRow failed (80004005)"},
        {"HrQueryAllRows(null,null,null,0)", false, "ERROR: HrQueryAllRows Error: (80004005)",
         "ERROR: HrQueryAllRows failed (80004005)"},
    };
    for (const Row& row : kRows) {
        for (const char* itemClass : {"IPM.Note", "IPM.Appointment", "IPM.Task"}) {
            SCOPED_TRACE(testing::Message() << row.call << " of " << itemClass);
            const bool isMail = std::string_view(itemClass) == "IPM.Note";
            domain.reset();
            SetClass(itemClass);
            CVxItem& item = Item();
            item.SetRequestBodyFormat(eBodyNone);
            ForgetLog();
            mapi.script.FailNth(1, row.call, E_FAIL);  // the item's attachments come later
            EXPECT_EQ(item.EnsureConnected(), isMail && row.mailConnects);
            mapi.script.ForgetOrders();
            EXPECT_EQ(LogLines({"(80004005)"}), Words{isMail ? row.mailLine : row.otherLine});
        }
    }
}

}  // namespace
