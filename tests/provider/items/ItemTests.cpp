// What all items share: how they are made, opened and closed, and what they say of themselves.
#include "provider/Attachments/VxAttachment.h"
#include "provider/Item/VxContact.h"
#include "provider/Item/VxEmailItem.h"
#include "tests/provider/items/ItemTestSupport.h"

namespace {

using namespace scripted_mapi;

class ItemBaseTest : public ItemTest {
protected:
    // The kind of item that a message of that class is, opened from the store; eVxItemUnknown for none.
    EVxItemType TypeOf(std::string_view messageClass) {
        SetClass(messageClass);
        const VxMapiPtr<IMessage> opened(mapi.OpenMessage(message));
        const auto item = CVxItem::CreateItem(nullptr, "E1"_w, nullptr, nullptr, opened);
        return item != nullptr ? item->GetType() : eVxItemUnknown;
    }
};

TEST_F(ItemBaseTest, IsOfTheClassOfItsMessage) {
    EXPECT_EQ(TypeOf("ipm.NOTE"), eVxItemEmail);
    EXPECT_EQ(TypeOf("IPM.Post.RSS"), eVxItemEmail);
    EXPECT_EQ(TypeOf("IPM.Contact"), eVxItemContact);
    EXPECT_EQ(TypeOf("IPM.Appointment"), eVxItemCalendar);
    EXPECT_EQ(TypeOf("IPM.Task.x"), eVxItemTask);
    EXPECT_EQ(TypeOf("IPM.StickyNote"), eVxItemNote);
    EXPECT_EQ(LogLines({"ignored"}), Words{});
    EXPECT_EQ(TypeOf("IPM.Noted"), eVxItemUnknown);
    EXPECT_EQ(LogLines({"ignored"}), Words{"DEBUG: ignored message of type 'IPM.Noted'"});
    message->properties.Remove(PR_MESSAGE_CLASS_W);
    const VxMapiPtr<IMessage> opened(mapi.OpenMessage(message));
    EXPECT_EQ(CVxItem::CreateItem(nullptr, "E1"_w, nullptr, nullptr, opened), nullptr);
    EXPECT_EQ(CVxItem::CreateItem(nullptr, "E1"_w, nullptr, nullptr, nullptr), nullptr);
}

TEST_F(ItemBaseTest, OpensOnlyWithoutAWarningAndOnlyAMessage) {
    ASSERT_TRUE(Store().MapiConnect());
    IMsgStore* store = Store().GetMapiStore();
    const auto opens = [&](const CStringW& id) {
        const VxMapiPtr<IMessage> opened(CVxItem::OpenMapiMessage(id, store));
        return opened.get() != nullptr;
    };
    EXPECT_TRUE(opens("E1"_w));
    EXPECT_FALSE(opens("E2"_w));
    EXPECT_FALSE(opens("E"_w));
    EXPECT_FALSE(opens("F1"_w));  // a folder
    EXPECT_EQ(CVxItem::OpenMapiMessage("E1"_w, nullptr), nullptr);
    mapi.script.Fail("IMsgStore::OpenEntry", MAPI_W_ERRORS_RETURNED);
    EXPECT_FALSE(opens("E1"_w));
}

TEST_F(ItemBaseTest, AFailedStepFailsTheConnectAndSaysSo) {
    struct Row {
        const char* call;
        const char* line;
        bool asContact;
        const char* contactLine;
    };
    constexpr Row kRows[] = {
        {"IMsgStore::OpenEntry", "ERROR: MapiConnect failed", true, "ERROR: MapiConnect failed"},
        {"HrGetOneProp(30080040)", "DEBUG: Failed to get properties for item: E1", true,
         "ERROR: Failed to get properties for item: E1"},
        {"IMessage::GetAttachmentTable", "DEBUG: Failed to get attachments for item: E1", true,
         "DEBUG: Failed to get attachments for item: E1"},
    };
    for (const Row& row : kRows) {
        for (const bool isContact : {false, true}) {
            SCOPED_TRACE(testing::Message() << row.call << (isContact ? ", contact" : ""));
            domain.reset();
            SetClass(isContact ? "IPM.Contact" : "IPM.Note");
            CVxItem& item = Item();
            item.SetRequestBodyFormat(eBodyNone);
            mapi.script.Fail(row.call, E_FAIL);
            ForgetLog();
            EXPECT_FALSE(item.EnsureConnected());
            EXPECT_TRUE(item.HasErrors(VxErrorConnect));
            EXPECT_EQ(LogLines({"MapiConnect failed", "Failed to get"}), Words{isContact ? row.contactLine : row.line});
            mapi.script.ForgetOrders();
            EXPECT_TRUE(item.EnsureConnected());
        }
    }
}

TEST_F(ItemBaseTest, ForgetsWhatItHasReadAndKeepsItsRow) {
    message->properties.Set(Text(PR_SUBJECT_W, "Hello")).Set(Text(PR_BODY_W, "text"));
    message->recipients.push_back({Number(PR_RECIPIENT_TYPE, 1), Text(PR_DISPLAY_NAME_W, "Ann")});
    Attach(ATTACH_BY_VALUE, "a.txt", "x");
    auto& item = ConnectedAs<CVxEmailItem>("IPM.Note", eBodyText);
    EXPECT_EQ(item.GetChildCount(), 1U);
    item.EnsureDisconnected();
    EXPECT_EQ(item.GetMapiMessage(), nullptr);
    EXPECT_EQ(Ascii(item.GetSubject()) + Ascii(item.GetTo()) + Ascii(item.GetAttachmentList()), "");
    EXPECT_EQ(Ascii(item.GetID()) + " " + Ascii(item.GetTypePsz()), "E1 eVxItemEmail");
    EXPECT_EQ(CMapiUtil::FromFileTimeToUnix(item.GetLastModified()), 7000);
    ASSERT_TRUE(item.EnsureConnected());
    EXPECT_EQ(Ascii(item.GetSubject()) + Ascii(item.GetTo()) + Ascii(item.GetBody()), "HelloAnntext");
    EXPECT_EQ(item.GetChildCount(), 1U);
}

TEST_F(ItemBaseTest, AContactOfAStoreIsReadThroughASecondOpen) {
    message->properties.Set(Text(PR_DISPLAY_NAME_W, "Ann"));
    auto& contact = ConnectedAs<CVxContact>("IPM.Contact");
    EXPECT_FALSE(contact.IsGlobalAddressBook());
    EXPECT_EQ(mapi.script.TakeCalls({"IMsgStore::OpenEntry"}),
              (Words{"IMsgStore::OpenEntry(E1,null,00000010)", "IMsgStore::OpenEntry(E1,null,00000010)"}));
    EXPECT_NE(contact.GetMapiPropObj(), contact.GetMapiMessage());
    contact.EnsureDisconnected();
    EXPECT_EQ(contact.GetMapiPropObj(), nullptr);
    contact.SetEntryId("E"_w);
    EXPECT_FALSE(contact.MapiConnect());
    EXPECT_EQ(LogLines({"Hex2Bin"}), Words{"INFO: Exit Hex2Bin ID failed"});
}

// ---- The sender ----

class SenderTest : public ItemTest {
protected:
    std::string From(std::string_view address) {
        message->properties.Set(Text(PR_SENDER_NAME_W, "Ann")).Set(Text(PR_SENDER_EMAIL_ADDRESS_W, address));
        domain.reset();
        return Ascii(Connected().GetFrom());
    }
    void AddSender(std::string_view smtp) {
        auto list = AddAddressList(*mapi.profiles.front(), "GAL", DT_GLOBAL, {0x61});
        list->entries.push_back({Binary(PR_ENTRYID, {0xAA}), Text(PR_SMTP_ADDRESS_W, smtp)});
        message->properties.Set(Binary(PR_SENDER_ENTRYID, {0xAA}));
    }
};

TEST_F(SenderTest, IsNameAndLowerCaseAddress) {
    EXPECT_EQ(From("Ann@Example.COM"), "Ann <ann@example.com>");
    EXPECT_EQ(From(""), "Ann <>");
}

TEST_F(SenderTest, OfExchangeIsLookedUp) {
    AddSender("Ann@Example.com");
    EXPECT_EQ(From("/o=Org/cn=Ann"), "Ann <ann@example.com>");
    EXPECT_EQ(mapi.script.Count("IMAPISession::OpenEntry(AA,IMailUser,00000000)"), 1);
    CVxItem& item = Item();
    EXPECT_EQ(Ascii(item.GetFrom()), "Ann <ann@example.com>");
    EXPECT_EQ(mapi.script.Count("IMAPISession::OpenEntry"), 1);  // once
}

TEST_F(SenderTest, IsTheNameAloneWhenTheLookUpFails) {
    AddSender("");
    EXPECT_EQ(From("/o=Org"), "Ann ");
    message->properties.Remove(PR_SENDER_ENTRYID);
    EXPECT_EQ(From("/o=Org"), "Ann ");
    message->properties.Set(Binary(PR_SENDER_ENTRYID, {0xAB}));
    EXPECT_EQ(From("/o=Org"), "Ann ");
}

// ---- URLs and hashes ----

TEST_F(ItemBaseTest, TheUrlSubjectGetsItsSlashesBack) {
    struct Row {
        const char* subject;
        const char* urlName;
        const char* expected;
    };
    constexpr Row kRows[] = {
        {"a/b", "a?b.EML", "a_xF8FF_b.EML"}, {"a\\b", "a?b", "a_xF8FE_b"}, {"/\\/", "???", "_xF8FF__xF8FE__xF8FF_"},
        {"one / only", "? ?", "_xF8FF_ ?"},  {"none", "a?", "a?"},         {"a/b", "ab", "ab"}};
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.subject);
        domain.reset();
        message->properties.Set(Text(PR_SUBJECT_W, row.subject)).Set(Text(PR_URL_COMP_NAME_W, row.urlName));
        EXPECT_EQ(Ascii(Connected().GetURLSubject()), row.expected);
    }
}

// The reflected CRC-32 polynomial over the bytes 45 00 31 00, a bit at a time.
TEST_F(ItemBaseTest, TheHashIsThatOfTheIdsUnits) {
    Embed(*message, "inner", "IPM.Note");
    CVxItem& item = Connected();
    std::uint32_t crc = 0;
    for (const unsigned byte : {0x45U, 0x00U, 0x31U, 0x00U}) {
        crc ^= byte;
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320U : 0U);
        }
    }
    EXPECT_EQ(item.GetSimpleHash(), crc);
    EXPECT_EQ(item.GetAttachment(0)->GetVxItem()->GetSimpleHash(), crc * 6);
}

// ---- The global address list ----

class AddressListContactTest : public ItemTest {
protected:
    AddressListContactTest() {
        auto& profile = *mapi.profiles.front();
        AddService(profile, "MSEMS", 0x11);
        auto list = AddAddressList(profile, "GAL", DT_GLOBAL, {0x61});
        list->entries.push_back({Binary(PR_ENTRYID, {0xAA}), Text(PR_SMTP_ADDRESS_W, "ann@x"),
                                 Text(PR_DISPLAY_NAME_W, "Ann"), Text(PR_BODY_W, "no body")});
    }
};

TEST_F(AddressListContactTest, HasNeitherBodyNorAttachmentsNorATimeOfChange) {
    Store();
    CVxOutlookStore* book = Domain().GetProfile("Work"_w)->GetStorebyId("GAB"_w);
    ASSERT_NE(book, nullptr);
    CVxOutlookFolder* contacts = book->GetFolder(0U);
    ASSERT_NE(contacts, nullptr);
    ASSERT_TRUE(contacts->GetItems(false));
    auto& contact = dynamic_cast<CVxContact&>(*contacts->GetItem(0));
    contact.SetRequestBodyFormat(eBodyText);
    mapi.script.TakeCalls();
    ASSERT_TRUE(contact.EnsureConnected());
    EXPECT_TRUE(contact.IsGlobalAddressBook());
    EXPECT_EQ(Ascii(contact.GetSmtpAddress()) + Ascii(contact.GetDisplayName()) + Ascii(contact.GetBody()), "ann@xAnn");
    EXPECT_EQ(contact.GetChildCount(), 0U);
    EXPECT_EQ(contact.FindAttachment("0"_w), nullptr);
    EXPECT_EQ(mapi.script.Count("IMessage::"), 0);
    EXPECT_EQ(mapi.script.Count("HrGetOneProp"), 0);
}

}  // namespace
