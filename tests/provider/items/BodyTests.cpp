// Bodies: formats, limits, preview, and the way through a message file.
#include "platform/Paths.h"
#include "provider/Item/VxEmailItem.h"
#include "tests/provider/items/ItemTestSupport.h"

#include <filesystem>

namespace {

using namespace scripted_mapi;

class BodyTest : public ItemTest {
protected:
    // The body in that format, of an item whose body was not loaded before.
    std::string Body(TBodyFormat format) {
        if (m_item == nullptr) {
            m_item = &Connected();
        }
        m_item->ClearBody();
        m_item->SetRequestBodyFormat(format);
        return Ascii(m_item->GetBody());
    }

    CVxItem* m_item = nullptr;
};

TEST_F(BodyTest, PlainTextIsReadInPieces) {
    for (const std::size_t length : {0U, 1U, 1999U, 2000U, 2001U, 4000U, 10001U}) {
        SCOPED_TRACE(length);
        const std::string text(length, 'x');
        message->properties.Set(Text(PR_BODY_W, text));
        mapi.script.TakeCalls();
        EXPECT_EQ(Body(eBodyText), text);
        EXPECT_EQ(mapi.script.Count("IStream::Read(4000)"), static_cast<int>((length + 1999) / 2000 + 1));
    }
    EXPECT_EQ(mapi.script.Count("IMessage::OpenProperty(1000001F,IStream,0,00000008)"), 1);
}

TEST_F(BodyTest, APieceEndsAtItsFirstZero) {
    CStringW text(2100, 'a');
    text[10] = 0;
    message->properties.Set(WideText(PR_BODY_W, text));
    EXPECT_EQ(Body(eBodyText), std::string(10 + 100, 'a'));
}

TEST_F(BodyTest, AReadThatFailsLosesTheBody) {
    message->properties.Set(Text(PR_BODY_W, std::string(5000, 'x')));
    Connected();
    mapi.script.FailNth(2, "IStream::Read", E_FAIL);
    EXPECT_EQ(Body(eBodyText), "");
}

TEST_F(BodyTest, RtfIsTheUncompressedText) {
    mapi.uncompressRtf = [](Bytes bytes) {
        bytes.insert(bytes.begin(), {'{', '\\', 'r', 't', 'f'});
        return bytes;
    };
    message->properties.Set(Binary(PR_RTF_COMPRESSED, {'1', '}', 0, 'x'}));
    EXPECT_EQ(Body(eBodyRtf), "{\\rtf1}");
    EXPECT_EQ(mapi.script.Count("WrapCompressedRTFStream(00000000)"), 1);
}

TEST_F(BodyTest, HtmlIsDecodedFromItsCodePage) {
    struct Row {
        const char* name;
        LONG page;
        const char* bytes;
        std::vector<unsigned> units;
    };
    const Row rows[] = {{"Windows Cyrillic", 1251, "\xCF\xF0", {0x41F, 0x440}},
                        {"UTF-8", 65001, "\xD0\x9F\xE2\x82\xAC", {0x41F, 0x20AC}},
                        {"Shift JIS", 932, "\x93\xFA", {0x65E5}},
                        {"no such page", 4711, "abc", {}}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Bytes html = BytesOf(row.bytes);
        message->openers[0x1013001E] = [&](const IID*, ULONG, IUnknown** object) {
            auto model = std::make_shared<MessageModel>();
            model->properties = {Binary(PR_ATTACH_DATA_BIN, html)};
            const VxMapiPtr<IMessage> carrier(mapi.OpenMessage(model));
            return carrier->OpenProperty(PR_ATTACH_DATA_BIN, &IID_IStream, 0, 0, object);
        };
        message->properties.Set(Number(PR_INTERNET_CPID, row.page));
        CVxItem& item = m_item != nullptr ? *m_item : *(m_item = &Connected());
        item.ClearBody();
        item.SetRequestBodyFormat(eBodyHtml);
        const CStringW body = item.GetBody();
        EXPECT_EQ(std::vector<unsigned>(body.begin(), body.end()), row.units);
    }
}

TEST_F(BodyTest, WideHtmlIsTheSecondTry) {
    message->properties.Set(Text(PR_BODY_HTML_W, "<b>x</b>"));
    mapi.script.Fail("IMessage::OpenProperty(1013001E", MAPI_E_NOT_FOUND);
    EXPECT_EQ(Body(eBodyHtml), "<b>x</b>");
    EXPECT_EQ(LogLines({"HTML"}),
              (Words{"DEBUG: Open HTML_BODY failed. Try with unicode.", "DEBUG: Open with PR_HTML_BODY_W succeeded."}));
    message->properties.Set(Binary(PR_BODY_HTML_W, {'a', 0, 'b', 0, 'c'}));  // an odd byte at its end
    EXPECT_EQ(Body(eBodyHtml), "ab");
}

TEST_F(BodyTest, NoneIsLoadedUnlessAskedFor) {
    message->properties.Set(Text(PR_BODY_W, "text"));
    EXPECT_EQ(Body(eBodyNone), "");
    EXPECT_EQ(mapi.script.Count("IMessage::OpenProperty"), 0);
    EXPECT_EQ(LogLines({"Skip"}),
              (Words{"DEBUG: Skip body load - requested format is 'none'", "DEBUG: Skip Body info - not requested"}));
    EXPECT_EQ(Body(eBodyText), "text");
    EXPECT_EQ(Ascii(m_item->GetBody()), "text");
    EXPECT_EQ(mapi.script.Count("IMessage::OpenProperty"), 1);  // loaded once
    // A format of attachments reads plain text, and anew each time, since text is what it finds loaded.
    EXPECT_EQ(Body(eBodySection), "text");
    EXPECT_EQ(Ascii(m_item->GetBody()), "text");
    EXPECT_EQ(mapi.script.Count("IMessage::OpenProperty"), 3);
}

// ---- Limits ----

TEST_F(BodyTest, ALimitRefusesByTheMessagesSize) {
    struct Row {
        LONG size;
        std::int64_t limit;
        bool isRefused;
    };
    constexpr Row kRows[] = {{100, -1, false}, {100, 101, false}, {100, 100, true}, {0, 0, true}, {5, 0, true}};
    for (const Row& row : kRows) {
        SCOPED_TRACE(testing::Message() << row.size << " of " << row.limit);
        domain.reset();
        message->properties.Set(Number(PR_MESSAGE_SIZE, row.size)).Set(Text(PR_BODY_W, "text"));
        Params().m_bodySizeLimit = row.limit;
        CVxItem& item = Connected(eBodyText);
        EXPECT_EQ(item.getVxErrors(), row.isRefused ? std::int64_t{VxErrorBodyTooBig} : 0);
        EXPECT_EQ(mapi.script.Count("IMessage::OpenProperty"), row.isRefused ? 0 : 1);
        EXPECT_EQ(Ascii(item.GetBody()), row.isRefused ? "" : "text");
    }
}

TEST_F(BodyTest, AContactIsNeverRefused) {
    message->properties.Set(Number(PR_MESSAGE_SIZE, 1000)).Set(Text(PR_BODY_W, "text"));
    SetClass("IPM.Contact");
    Params().m_bodySizeLimit = 0;
    EXPECT_EQ(Ascii(Connected(eBodyText).GetBody()), "text");
}

TEST_F(BodyTest, ALimitEndsTheStreamsOfHtmlAndRtf) {
    message->properties.Set(Text(PR_BODY_HTML_W, "12345678")).Set(Binary(PR_RTF_COMPRESSED, BytesOf("12345678")));
    Params().m_bodySizeLimit = 8;
    EXPECT_EQ(Body(eBodyHtml), "12345678");
    EXPECT_EQ(Body(eBodyRtf), "12345678");
    Params().m_bodySizeLimit = 7;
    EXPECT_EQ(Body(eBodyHtml), "");
    EXPECT_EQ(Body(eBodyRtf), "");
    EXPECT_EQ(CVxItem::GetBodySizeLimit(CMPParams()), 0x6400000);
    CMPParams wide;
    wide.m_bodySizeLimit = 0x6400001;
    EXPECT_EQ(CVxItem::GetBodySizeLimit(wide), 0x6400000);
}

// ---- Preview ----

TEST_F(BodyTest, PreviewOverridesTheRequest) {
    AllowMessageFiles();
    message->properties.Set(Text(PR_BODY_W, "text")).Set(Text(PR_BODY_HTML_W, "html"));
    Params().m_previewMode = true;
    CVxItem& item = Connected(eBodyNone);
    EXPECT_EQ(mapi.script.Count("IMessage::OpenProperty(1013001E"), 1);
    item.SetRequestBodyFormat(eBodyText);
    EXPECT_EQ(Ascii(item.GetBody()), "html");
    EXPECT_EQ(mapi.script.Count("IMessage::OpenProperty(1013001E"), 2);  // what is loaded is not what was asked for
    Params().m_tempFolder = FromPath(folder.Path());
    EXPECT_EQ(Ascii(item.GetBody()).substr(0, 5), "File:");
}

// ---- Files ----

TEST_F(BodyTest, AFileIsTheWholeMessageInTheHostsFolder) {
    AllowMessageFiles();
    Params().m_tempFolder = FromPath(folder.Path());
    const std::string body = Body(eBodyFile);
    char hash[16];
    std::snprintf(hash, sizeof(hash), "%x", static_cast<unsigned>(m_item->GetSimpleHash()));
    EXPECT_EQ(body, "File:" + Ascii(folder.File(std::string(hash) + "-body.msg")));
    EXPECT_EQ(std::filesystem::exists(folder.Path() / (std::string(hash) + "-body.msg")), true);
    EXPECT_EQ(Body(eBodyFileKept), body);
    m_item->ClearBody();
    EXPECT_EQ(LogLines({"Skip Delete"}), Words{"DEBUG: Skip Delete temp file " + body});
}

TEST_F(BodyTest, AFileThatCannotBeWrittenIsTriedElsewhere) {
    Params().m_tempFolder = folder.File("missing");
    AllowMessageFiles();
    const CStringW path = Wide(Body(eBodyFile).substr(5));
    EXPECT_EQ(LogLines({"SaveMessageInFile hr=0x80"}).size(), 1U);
    EXPECT_TRUE(path.ends_with(".msg"_w));
    EXPECT_TRUE(std::filesystem::remove(ToPath(path)));
}

TEST_F(BodyTest, RtfIsSavedUnderItsName) {
    message->properties.Set(Binary(PR_RTF_COMPRESSED, BytesOf("{rtf}")));
    CMPParams params;
    params.m_tempFolder = FromPath(folder.Path());
    CVxItem& item = Connected();
    EXPECT_TRUE(item.SaveBodyAsRtf(params));
    EXPECT_EQ(ReadFile(folder.File("body.rft")), "{rtf}");
    message->properties.Remove(PR_RTF_COMPRESSED);
    EXPECT_FALSE(item.SaveBodyAsRtf(params));
    EXPECT_EQ(LogLines({"SaveStorageInFile"}), Words{"ERROR: SaveStorageInFile hr=0x8004010f"});
}

// ---- Decoding ----

TEST_F(BodyTest, AMessageWithoutTheFormatIsDecoded) {
    AllowMessageFiles();
    decode = [] {
        auto email = std::make_unique<FakeEmail>();
        email->plain = "plain";
        email->html = "html";
        return email;
    };
    EXPECT_EQ(Body(eBodyText), "plain");
    EXPECT_EQ(Body(eBodyHtml), "html");
    EXPECT_EQ(Body(eBodyRtf), "html");
    EXPECT_TRUE(m_item->IsDigitallysigned());
    EXPECT_EQ(LogLines({"Try to decode it"}),
              Words{"DEBUG: Unable to get contact body (8004010f). Try to decode it..."});
    ASSERT_EQ(decodedPaths.size(), 3U);
    EXPECT_EQ(LogLines({"Delete temp file"}).size(), 3U);
    EXPECT_FALSE(std::filesystem::exists(decodedPaths[0]));
}

TEST_F(BodyTest, WritesTheMessageFileInThisOrder) {
    AllowMessageFiles();
    Connected();
    mapi.script.TakeCalls();
    Body(eBodyText);
    EXPECT_EQ(
        mapi.script.TakeCalls(),
        (Words{"IMessage::OpenProperty(1000001F,IStream,0,00000008)", "HrGetOneProp(0037001F)",
               "OpenIMsgSession(00000000)", "OpenIMsgOnIStg(session,80000000)",
               "IMessage::CopyTo(null,IMessage,00000000)", "IMessage::SaveChanges(00000002)", "CloseIMsgSession()"}));
}

TEST_F(BodyTest, AMessageFileThatFailsLeavesNoFile) {
    AllowMessageFiles();
    for (const char* call : {"OpenIMsgSession", "OpenIMsgOnIStg", "IMessage::CopyTo"}) {
        SCOPED_TRACE(call);
        mapi.script.ForgetOrders();
        mapi.script.Fail(call, E_FAIL);
        ForgetLog();
        EXPECT_EQ(Body(eBodyText), "");
        const Words lines = LogLines({"Delete temp file"});
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_FALSE(std::filesystem::exists(lines[0].substr(lines[0].find("file ") + 5)));
    }
    EXPECT_EQ(decodedPaths, Words{});
}

TEST_F(BodyTest, DecodedToNothingItKeepsItsOwnAttachments) {
    AllowMessageFiles();
    Attach(ATTACH_BY_VALUE, "smime.p7m", "x");
    for (const bool hasEmail : {false, true}) {
        SCOPED_TRACE(hasEmail);
        domain.reset();
        decode = [hasEmail] { return hasEmail ? std::make_unique<FakeEmail>() : nullptr; };
        CVxItem& item = Connected(eBodyText);
        EXPECT_FALSE(item.IsDigitallysigned());
        EXPECT_EQ(Ascii(item.GetAttachmentList()), "//vxAtt:smime.p7m//vxAttId:B:0");
    }
}

TEST_F(BodyTest, ADecodedEmailGivesTheAttachments) {
    AllowMessageFiles();
    Attach(ATTACH_BY_VALUE, "smime.p7m", "x");
    decode = [] {
        auto email = std::make_unique<FakeEmail>();
        email->plain = "plain";
        email->html = "html";
        email->parts = {{"a.txt", "A"}, {"?", "B"}, {"c.txt", "C"}, {"d.txt", "unreadable"}};
        return email;
    };
    CVxItem& item = Connected(eBodyText);
    const char* list = "//vxAtt:a.txt//vxAttId://vxAttId:S:0//vxAtt:c.txt//vxAttId://vxAttId:S:2";
    EXPECT_EQ(Ascii(item.GetAttachmentList()), list);
    EXPECT_EQ(mapi.script.Count("IMessage::GetAttachmentTable"), 0);
    EXPECT_EQ(item.GetChildCount(), 2U);
    EXPECT_NE(item.FindAttachmentByAttachNum("2"_w), nullptr);
    item.SetRequestBodyFormat(eBodyHtml);
    EXPECT_EQ(Ascii(item.GetBody()), "html");
    EXPECT_EQ(Ascii(item.GetAttachmentList()), list);  // not listed twice
}

}  // namespace
