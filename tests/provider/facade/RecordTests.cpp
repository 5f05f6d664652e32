// What records say beyond their items' properties, which are compared with whole mailboxes elsewhere.
#include "provider/ItemRecords.h"
#include "tests/provider/facade/FacadeTestSupport.h"

#include <utility>

namespace {

using namespace scripted_mapi;

std::int64_t Ticks(std::size_t seconds) {
    return 116444736000000000 + static_cast<std::int64_t>(seconds) * 10000000;
}

class RecordTest : public FacadeTest {
protected:
    RecordTest() {
        message->properties.Set(Number(PR_MESSAGE_SIZE, 4711))
            .Set(Text(PR_URL_COMP_NAME_W, "a.EML"))
            .Set(Time(PR_FLAG_COMPLETE_TIME, Ticks(9)))
            .Set(Number(PR_FLAG_STATUS, 2))
            .Set(Number(PR_MESSAGE_FLAGS, MSGFLAG_READ))
            .Set(Text(PR_SENDER_NAME_W, "Dora"))
            .Set(Text(PR_SENDER_EMAIL_ADDRESS_W, "D@x"))
            .Set(Text(PR_SUBJECT_W, "subject"))
            .Set(Time(PR_MESSAGE_DELIVERY_TIME, Ticks(3)))
            .Set(Time(PR_CLIENT_SUBMIT_TIME, Ticks(2)))
            .Set(Number(PR_IMPORTANCE, 2))
            .Set(Number(PR_SENSITIVITY, 1));
        for (const auto& [type, name] : {std::pair(1, "Ann"), {2, "Bob"}, {3, "Cy"}}) {
            message->recipients.push_back({Number(PR_RECIPIENT_TYPE, type), Text(PR_DISPLAY_NAME_W, name)});
        }
    }

    // These fields of the record that the host has, as text.
    std::string Fields(std::size_t first, std::size_t last) {
        std::string text = ShowField(host.value, first);
        while (first++ < last) {
            text += "|" + ShowField(host.value, first);
        }
        return text;
    }
};

TEST_F(RecordTest, OnlyAMailTellsThatItIsEmbedded) {
    Embed(*message, "card", "IPM.Contact")->properties.Set(Text(PR_BODY_W, "x"));
    Initialize();
    EXPECT_EQ(instance.GetItemData(host.Embedded(), eBodyText, false, &host.value), S_OK);
    EXPECT_EQ(ShowField(host.value, "email_bIsAttached"_field), "yes");
    EXPECT_EQ(ShowField(host.value, "email_sReadStatus"_field), "0");
    EXPECT_EQ(ShowField(host.value, "email_sFlagText"_field), "");
    EXPECT_EQ(ShowField(host.value, "email_sEID"_field), "E1");
    host.Reset();
    EXPECT_EQ(instance.GetItemData(host.Uri(eUriAttachment, "VxEMBITEM2"_w), eBodyText, false, &host.value), S_OK);
    EXPECT_EQ(ShowField(host.value, "contacts_bIsAttached"_field), "no");
    EXPECT_EQ(ShowField(host.value, "email_bIsAttached"_field), "-");
}

TEST_F(RecordTest, AContactOfTheAddressListHasItsSmtpAddress) {
    AddService(*mapi.profiles.front(), "MSEMS", 0x11);
    AddAddressList(*mapi.profiles.front(), "All", DT_GLOBAL, {0x61})
        ->entries.push_back({Binary(PR_ENTRYID, {0xAA}), Text(PR_SMTP_ADDRESS_W, "ann@x")});
    Initialize();
    host.store = "GAB"_w;
    host.folder = "61"_w;
    host.item = "AA"_w;
    EXPECT_EQ(instance.GetItemData(host.Item(), eBodyText, false, &host.value), S_OK);
    EXPECT_EQ(ShowField(host.value, "contacts_sEmail"_field), "ann@x");
    EXPECT_EQ(ShowField(host.value, "common_iSize"_field), "0");
}

TEST_F(RecordTest, OfAnAttachmentTellsWhatItsItemKnows) {
    const struct {
        const char* messageClass;
        const char* blobToSent;  // the fields of attachments, in their order
        const char* urlSubject;
    } rows[] = {
        {"IPM.Note", "<64617461>|Dora <d@x>|a.txt|Email Item|4|subject|Ann|3000L|2000L", "a.EML"},
        {"IPM.Contact", "<64617461>|-|a.txt|Contact Item|4|-|-|0L|0L", "a.EML"},
        {"IPM.Appointment", "<64617461>||a.txt|Calendar Item|4|subject||0L|0L", "a.EML"},
        {"IPM.Task", "<64617461>||a.txt|Task Item|4|subject||0L|0L", "a.EML"},
        {"IPM.StickyNote", "<64617461>|-|a.txt|Note Item|4|-|-|0L|0L", ""},
    };
    // An attachment's size is what was read; nobody says that it is public.
    const std::string before = "4|-|-|0L|-|Inbox|/Inbox|-|F1|-|-|-|4|116444736070000000L|0L|-|-|";
    for (const auto& row : rows) {
        SCOPED_TRACE(row.messageClass);
        SetClass(row.messageClass);
        Initialize();
        EXPECT_EQ(instance.GetBinaryItemData(host.Plain(), eBodyText, false, &host.value), S_OK);
        EXPECT_EQ(Fields(0, 18), before + row.urlSubject + "|no");
        EXPECT_EQ((Fields(19, 111) + Fields(121, 197)).find_first_not_of("-|"), std::string::npos);
        EXPECT_EQ(Fields(112, 120), row.blobToSent);
        host.Reset();
        EXPECT_EQ(instance.ReleaseVxMapi(), S_OK);
    }
}

TEST_F(RecordTest, OfAnAttachmentHasTheFirstNameThatSaysSomething) {
    const struct {
        const char* longName;
        const char* displayName;
        const char* shortName;
        const char* expected;
    } rows[] = {
        {"long", "display", "short", "long"},
        {"", "display", "short", "display"},
        {"", "", "short", "short"},
    };
    for (const auto& row : rows) {
        message->attachments[0]
            ->properties.Set(Text(PR_ATTACH_LONG_FILENAME_W, row.longName))
            .Set(Text(PR_DISPLAY_NAME_W, row.displayName))
            .Set(Text(PR_ATTACH_FILENAME_W, row.shortName));
        Initialize();
        EXPECT_EQ(instance.GetBinaryItemData(host.Plain(), eBodyText, false, &host.value), S_OK);
        EXPECT_EQ(ShowField(host.value, "attachments_sName"_field), row.expected);
        host.Reset();
        EXPECT_EQ(instance.ReleaseVxMapi(), S_OK);
    }
}

TEST_F(RecordTest, ADecodedMailSaysThatItWasSigned) {
    AllowMessageFiles();
    message->properties.Remove(PR_BODY_W);
    decode = [] {
        auto email = std::make_unique<FakeEmail>();
        email->plain = "signed";
        email->parts = {{"part.txt", "bytes"}};
        return email;
    };
    Initialize();
    EXPECT_EQ(instance.GetItemData(host.Item(), eBodyText, false, &host.value), S_OK);
    EXPECT_EQ(ShowField(host.value, "common_sDigitallySigned"_field), "yes");
    EXPECT_EQ(ShowField(host.value, "email_sBody"_field), "signed");
    host.Reset();
    EXPECT_EQ(instance.GetBinaryItemData(host.Plain(), eBodyText, false, &host.value), S_OK);
    EXPECT_EQ(ShowField(host.value, "common_sDigitallySigned"_field), "yes");
    EXPECT_EQ(ShowField(host.value, "attachments_sName"_field), "part.txt");
}

// An item of no kind that records know.
struct OddItem final : CVxItem {
    OddItem() : CVxItem(nullptr) {}
    bool OnConnect() override { return true; }
    std::int64_t GetDateTimeForDisplay() override { return 0; }
    CStringW GetUISubject() override { return {}; }
    bool GetTypeSpecificProperties() override { return true; }
    void GetProperty(ULONG, const SPropValue*) override {}
};

TEST_F(RecordTest, AnItemOfNoKnownKindHasTheCommonFieldsOnly) {
    OddItem item;
    CExchObjectData record;
    EXPECT_TRUE(SetObjectData(item, record, true));
    record.Dettach(&host.value);
    EXPECT_EQ(Fields(0, 18), "-|-|-|0L|-|||-||-|-|-|0|0L|0L|-|-|-|no");
    EXPECT_EQ(Fields(19, 197).find_first_not_of("-|"), std::string::npos);
}

}  // namespace
