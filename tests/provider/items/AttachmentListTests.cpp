// The attachments of an item: which rows become what, how they are listed, and how they are found.
#include "platform/Paths.h"
#include "provider/Attachments/VxRegularAttachment.h"
#include "provider/Item/VxEmailItem.h"
#include "tests/provider/items/ItemTestSupport.h"

#include <filesystem>

namespace {

using namespace scripted_mapi;

class AttachmentListTest : public ItemTest {
protected:
    std::string List() {
        domain.reset();
        return Ascii(Connected().GetAttachmentList());
    }

    // The message behind each message file that is opened.
    void OpenMessageFilesAs(std::string_view messageClass) {
        mapi.openMessageOnStorage = [this, messageClass](IStorage* storage, ULONG, IMessage** opened) {
            auto model = std::make_shared<MessageModel>();
            model->properties = {Text(PR_MESSAGE_CLASS_W, messageClass), Time(PR_LAST_MODIFICATION_TIME, 1),
                                 Text(PR_SUBJECT_W, "filed"), Text(PR_BODY_W, "body of a file")};
            *opened = mapi.OpenMessage(model);
            return storage != nullptr ? S_OK : E_INVALIDARG;
        };
    }

    // The bytes of an empty compound file.
    std::string CompoundFile() {
        const CStringW path = folder.File("empty");
        {
            VxMapiPtr<IStorage> storage;
            EXPECT_EQ(StgCreateDocfile(path.c_str(), STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0, &storage),
                      S_OK);
            storage->Commit(STGC_DEFAULT);
        }
        return ReadFile(path);
    }
};

TEST_F(AttachmentListTest, NamesAttachmentsAndEmbeddedItems) {
    Attach(ATTACH_BY_VALUE, "a.txt", "x");
    Attach(ATTACH_OLE, "sheet", "x");
    Embed(*message, "letter", "IPM.Note");
    Embed(*message, "task", "IPM.Task");
    Embed(*message, "unknown", "IPM.Journal");
    EXPECT_EQ(List(),
              "//vxAtt:a.txt//vxAttId:B:0//vxAtt:sheet//vxAttId:B:1//vxAtt:letter//vxAttId:1:VxEMBITEM2"
              "//vxAtt:task//vxAttId:7:VxEMBITEM3//vxAtt:unknown");
    EXPECT_EQ(Item().GetChildCount(), 4U);
    EXPECT_EQ(Item().GetAttachment(4), nullptr);
}

TEST_F(AttachmentListTest, LeavesOutWhatIsNoObject) {
    for (const LONG method : {0, 2, 3, 4, 7}) {
        Attach(method, "other", "x");
    }
    Attach(ATTACH_BY_VALUE, "failing method", "x")->properties.Set(Failing(PR_ATTACH_METHOD));
    Attach(ATTACH_BY_VALUE, "failing number", "x")->properties.Set(Failing(PR_ATTACH_NUM));
    EXPECT_EQ(List(), "");
}

TEST_F(AttachmentListTest, TakesTheFirstNameThatSaysSomething) {
    struct Row {
        const char* display;
        const char* longName;
        const char* shortName;
        bool hasSize;
        const char* expected;
        int reads;  // of the attachment itself
    };
    constexpr Row kRows[] = {{"display", "long", "short", true, "display", 0},
                             {"", "long", "short", true, "long", 0},
                             {"", "", "short", true, "short", 0},
                             {"", "", "", true, "Attachment", 1},
                             {"display", "long", "short", false, "display", 1}};
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.expected);
        message->attachments.clear();
        auto& values = Attach(ATTACH_BY_VALUE, row.longName, "x")->properties;
        values.Set(Text(PR_DISPLAY_NAME_W, row.display)).Set(Text(PR_ATTACH_FILENAME_W, row.shortName));
        if (!row.hasSize) {
            values.Remove(PR_ATTACH_SIZE);
        }
        EXPECT_EQ(List(), std::string("//vxAtt:") + row.expected + "//vxAttId:B:0");
        EXPECT_EQ(mapi.script.Count("IAttach::GetProps([3704001F,3707001F,3001001F,0E200003,10F3001F],80000000)"),
                  row.reads);
    }
    mapi.script.Fail("IAttach::GetProps", E_FAIL);
    EXPECT_EQ(List(), "");  // the last one cannot be read
}

TEST_F(AttachmentListTest, ATableThatFailsFailsTheItem) {
    struct Row {
        const char* call;
        const char* line;
    };
    constexpr Row kRows[] = {{"IMessage::GetAttachmentTable", "ERROR: GetAttachmentTable failed (80004005)"},
                             {"IMAPITable::SetColumns([3705", "ERROR: SetColumns failed (80004005)"},
                             {"IMAPITable::SeekRow", "ERROR: SeekRow failed (80004005)"},
                             {"HrQueryAllRows(null,null,null,0)", "ERROR: HrQueryAllRows failed (80004005)"}};
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.call);
        domain.reset();
        SetClass("IPM.StickyNote");  // which has no recipients' table
        CVxItem& item = Item();
        item.SetRequestBodyFormat(eBodyNone);
        ForgetLog();
        mapi.script.Fail(row.call, E_FAIL);
        EXPECT_FALSE(item.EnsureConnected());
        EXPECT_EQ(item.FindAttachment("0"_w), nullptr);
        mapi.script.ForgetOrders();
        const Words lines = LogLines({"(80004005)"});
        EXPECT_EQ(lines, (Words{row.line, row.line}));
    }
}

// ---- Embedded items ----

TEST_F(AttachmentListTest, FindsWhatIsEmbeddedInWhatIsEmbedded) {
    Attach(ATTACH_BY_VALUE, "a.txt", "x");
    auto inner = Embed(*message, "inner", "IPM.Note");
    inner->properties.Set(Text(PR_SUBJECT_W, "inner"));
    auto innermost = Embed(*inner, "innermost", "IPM.Appointment");
    innermost->properties.Set(Text(PR_SUBJECT_W, "innermost"));
    AddAttachment(*innermost, ATTACH_BY_VALUE, "deep.txt")->properties.Set(Number(PR_ATTACH_SIZE, 1));
    for (const bool connects : {false, true}) {
        SCOPED_TRACE(connects ? "connected" : "opened");
        // Each from the start: finding without connecting lists the attachments again.
        const auto find = [&](const char* path) {
            domain.reset();
            CVxItem& item = Item();
            item.SetRequestBodyFormat(eBodyNone);
            return connects ? item.FindAttachmentByAttachNum(Wide(path)) : item.FindAttachment(Wide(path));
        };
        ASSERT_NE(find("0"), nullptr);
        EXPECT_NE(find("0")->GetVxAttachment(), nullptr);
        EXPECT_EQ(Ascii(find("VxEMBITEM1")->GetVxItem()->GetEmbeddedItemId()), "VxEMBITEM1");
        CVxConnectable* second = find("VxEMBITEM1/VxEMBITEM0");
        ASSERT_NE(second, nullptr);
        EXPECT_EQ(second->GetVxItem()->GetType(), eVxItemCalendar);
        EXPECT_EQ(Ascii(second->GetVxItem()->GetEmbeddedItemId()), "VxEMBITEM1/VxEMBITEM0");
        CVxConnectable* deep = find("VxEMBITEM1/VxEMBITEM0/0");
        ASSERT_NE(deep, nullptr);
        EXPECT_EQ(Ascii(deep->GetVxAttachment()->GetDisplayName()), "deep.txt");
        CVxConnectable* itself = find("");
        EXPECT_EQ(itself, &Item());
        for (const char* path : {"1", "VxEMBITEM0", "VxEMBITEM1/0", "VxEMBITEM1/VxEMBITEM0/7", "x/y", "/"}) {
            EXPECT_EQ(find(path), nullptr) << path;
        }
    }
}

TEST_F(AttachmentListTest, AnEmbeddedItemIsReadLikeAnyOther) {
    auto inner = Embed(*message, "inner", "IPM.Note");
    inner->properties.Set(Text(PR_SUBJECT_W, "inner")).Set(Text(PR_BODY_W, "inner text"));
    message->properties.Set(Text(PR_URL_COMP_NAME_W, "outer.EML"));
    CVxItem& item = Connected();
    CVxItem* embedded = item.GetAttachment(0)->GetVxItem();
    ASSERT_NE(embedded, nullptr);
    embedded->SetRequestBodyFormat(eBodyText);
    mapi.script.TakeCalls();
    ASSERT_TRUE(embedded->EnsureConnected());
    EXPECT_EQ(mapi.script.TakeCalls({"IMessage::OpenAttach", "IAttach::OpenProperty"}),
              (Words{"IMessage::OpenAttach(0,null,00000010)", "IAttach::OpenProperty(3701000D,IMessage,0,00000000)"}));
    EXPECT_EQ(Ascii(embedded->GetUISubject()) + ": " + Ascii(embedded->GetBody()), "inner: inner text");
    EXPECT_EQ(Ascii(embedded->GetURLSubject()), "outer.EML");
    EXPECT_EQ(Ascii(embedded->GetID()), "E1");
    EXPECT_EQ(embedded->GetRootItem(), &item);
    EXPECT_TRUE(embedded->GetIsAttachment());
    ASSERT_NE(embedded->GetAttachInfo(), nullptr);
    EXPECT_EQ(Ascii(embedded->GetAttachInfo()->GetDisplayName()), "inner");
    embedded->EnsureDisconnected();
    EXPECT_TRUE(embedded->EnsureConnected());
}

TEST_F(AttachmentListTest, AnEmbeddedContactIsNotTheItemAroundIt) {
    auto inner = Embed(*message, "card", "IPM.Contact");
    inner->properties.Set(Text(PR_DISPLAY_NAME_W, "Ann"));
    message->properties.Set(Text(PR_DISPLAY_NAME_W, "the mail around it"));
    CVxItem* embedded = Connected().GetAttachment(0)->GetVxItem();
    ASSERT_NE(embedded, nullptr);
    embedded->SetRequestBodyFormat(eBodyNone);
    ASSERT_TRUE(embedded->EnsureConnected());
    EXPECT_EQ(Ascii(embedded->GetUISubject()), "Ann");
}

// ---- Message files ----

TEST_F(AttachmentListTest, AMessageFileIsAnItem) {
    OpenMessageFilesAs("IPM.Note");
    Attach(ATTACH_BY_VALUE, "Letter.MSG", CompoundFile());
    EXPECT_EQ(List(), "//vxAtt:Letter.MSG//vxAttId:1:VxEMBITEM0");
    EXPECT_EQ(mapi.script.Count("OpenIMsgOnIStg(no session,00000000)"), 1);
    CVxItem* filed = Item().GetAttachment(0)->GetVxItem();
    ASSERT_NE(filed, nullptr);
    filed->SetRequestBodyFormat(eBodyText);
    ASSERT_TRUE(filed->EnsureConnected());
    EXPECT_EQ(Ascii(filed->GetUISubject()) + ": " + Ascii(filed->GetBody()), "filed: body of a file");
    ForgetLog();
    domain.reset();
    const Words lines = LogLines({"Delete temp file"});
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_FALSE(std::filesystem::exists(lines[0].substr(lines[0].find("file ") + 5)));
}

TEST_F(AttachmentListTest, AMessageFileThatIsNoneIsOnlyNamed) {
    OpenMessageFilesAs("IPM.Journal");
    Attach(ATTACH_BY_VALUE, "of another class.msg", CompoundFile());
    Attach(ATTACH_BY_VALUE, "no message.msg", "plain text");
    Attach(ATTACH_BY_VALUE, "msg", "x");
    EXPECT_EQ(List(), "//vxAtt:of another class.msg//vxAtt:no message.msg//vxAtt:msg//vxAttId:B:2");
}

}  // namespace
