// Bodies and bytes: what is refused, which form is given, which way an operation goes, and what it costs.
#include "tests/provider/facade/FacadeTestSupport.h"

#include <span>

namespace {

using namespace scripted_mapi;

using Get = HRESULT (*)(Host& host, VARIANT uri, TBodyFormat format);

HRESULT ItemData(Host& h, VARIANT uri, TBodyFormat format) {
    return h.instance.GetItemData(uri, format, false, &h.value);
}
HRESULT BinaryData(Host& h, VARIANT uri, TBodyFormat format) {
    return h.instance.GetBinaryItemData(uri, format, false, &h.value);
}
HRESULT FolderBody(Host& h, VARIANT uri, TBodyFormat format) {
    return h.instance.GetItemBody(uri, format, false, h.text);
}
HRESULT DirectBody(Host& h, VARIANT uri, TBodyFormat format) {
    return h.instance.GetItemBody(uri, format, h.text);
}
HRESULT FolderBytes(Host& h, VARIANT uri, TBodyFormat format) {
    return h.instance.GetBinaryItemBody(uri, format, false, &h.value);
}
HRESULT Items(Host& h, VARIANT uri, TBodyFormat) {
    return h.instance.QueryItems(uri, 0, false, &h.value, &h.counts[0]);
}
HRESULT Attachments(Host& h, VARIANT uri, TBodyFormat) {
    return h.instance.QueryAttachments(uri, &h.value, &h.counts[0]);
}
HRESULT DirectBytes(Host& h, VARIANT uri, TBodyFormat format) {
    return h.instance.GetAttachment(uri, format, &h.value);
}

class ContentTest : public FacadeTest {
protected:
    // The body or the bytes that were given, however that was; "-" for nothing.
    std::string TakeContent() {
        std::string content = Ascii(host.text);
        if (host.value.vt == (VT_ARRAY | VT_VARIANT) && host.value.parray->rgsabound[0].cElements != 0) {
            const std::span<VARIANT> fields = HostValue::ElementsOf(host.value);
            const VARIANT& blob = fields["attachments_abBinaryBlob"_field];
            content = blob.vt != VT_EMPTY ? BytesAsText(blob) : Show(fields["email_sBody"_field]);
        } else if (host.value.vt != VT_I4) {
            content = host.value.vt == (VT_ARRAY | VT_UI1) ? BytesAsText(host.value) : Show(host.value);
        }
        host.Reset();
        return content;
    }

    std::string Errors(Get get, VARIANT uri, TBodyFormat format) {
        EXPECT_EQ(get(host, uri, format), S_OK);
        const std::string errors = ShowField(host.value, "eobj_vx_lErrors"_field);
        host.Reset();
        return errors;
    }

private:
    // 8-bit text, and UTF-16 text without its zeros.
    static std::string BytesAsText(const VARIANT& bytes) {
        const auto* begin = static_cast<const char*>(bytes.parray->pvData);
        std::string text(begin, begin + bytes.parray->rgsabound[0].cElements);
        std::erase(text, '\0');
        return text;
    }
};

std::string InvalidCall(const char* operation, const char* wanted, const char* found) {
    return std::string("ERROR ") + operation + ": Invalid call: " + operation + " for " + wanted + " was called for "
           + found + ".";
}

TEST_F(ContentTest, EachOperationTakesWhatItIsForAndRefusesTheRest) {
    const CStringW none;
    const CStringW nothing = "7"_w;
    const CStringW& plain = host.plain;
    const CStringW& inside = host.embedded;
    const char* const noText = "ERROR GetItemBody: Unsupported type!";
    const char* const noRecord = "ERROR GetItemData: Unsupported type (yet)!";
    const char* const noBytes = "ERROR GetAttachment: Unsupported type!";
    const struct {
        Get get;
        int type;
        const CStringW& path;
        HRESULT result;
        const char* content;
        std::string line;
    } rows[] = {
        {ItemData, 8, none, S_OK, "the body", ""},
        {ItemData, 9, inside, S_OK, "the inner body", ""},
        {ItemData, 10, none, S_OK, "the body", ""},
        {ItemData, 9, plain, E_FAIL, "-", InvalidCall("GetItemData", "sub-item object", "binary attachment")},
        {ItemData, 9, nothing, S_FALSE, "-", "WARN GetItemData: item NOT found!"},
        {ItemData, 7, none, E_INVALIDARG, "-", noRecord},
        {ItemData, -1, none, E_INVALIDARG, "-", noRecord},
        {BinaryData, 9, plain, S_OK, "data", ""},
        {BinaryData, 9, inside, E_FAIL, "-",
         InvalidCall("GetItemData", "non-item object (binary attachment)", "sub-item")},
        {BinaryData, 9, nothing, S_FALSE, "-", "WARN GetItemData: item NOT found!"},
        {BinaryData, 8, none, E_INVALIDARG, "-", "ERROR GetBinaryItemData: Unsupported uriType 8!"},
        {BinaryData, 10, plain, E_INVALIDARG, "-", "ERROR GetBinaryItemData: Unsupported uriType 10!"},
        {FolderBody, 8, none, S_OK, "the body", ""},
        {FolderBody, 9, inside, S_OK, "the inner body", ""},
        {FolderBody, 9, plain, E_FAIL, "", InvalidCall("GetItemBody", "sub-item object", "binary attachment")},
        {FolderBody, 9, nothing, S_FALSE, "", "WARN GetItemBody: item NOT found!"},
        {FolderBody, 7, none, E_INVALIDARG, "", noText},
        {DirectBody, 8, none, S_OK, "the body", ""},
        {DirectBody, 9, inside, S_OK, "the inner body", ""},
        {DirectBody, 9, plain, S_OK, "", ""},
        {DirectBody, 7, none, E_INVALIDARG, "", noText},
        {FolderBytes, 9, plain, S_OK, "data", ""},
        {FolderBytes, 9, inside, E_FAIL, "-",
         InvalidCall("GetItemBody", "non-item object (binary attachment)", "sub-item")},
        {FolderBytes, 8, none, S_FALSE, "-", ""},
        {FolderBytes, 7, none, E_INVALIDARG, "-", noText},
        {DirectBytes, 9, plain, S_OK, "data", ""},
        {DirectBytes, 9, inside, S_OK, "", ""},
        {DirectBytes, 8, none, E_INVALIDARG, "-", noBytes},
        {DirectBytes, 10, plain, E_INVALIDARG, "-", noBytes},
        {Items, 5, none, E_INVALIDARG, "-", "ERROR QueryItems: Unsupported URI type in QueryItems: 5"},
        {Items, 8, none, E_INVALIDARG, "-", "ERROR QueryItems: Unsupported URI type in QueryItems: 8"},
        {Attachments, 6, none, E_INVALIDARG, "-",
         "ERROR QueryAttachments: Unsupported URI type in QueryAttachments: 6"},
        {Attachments, 10, none, E_INVALIDARG, "-",
         "ERROR QueryAttachments: Unsupported URI type in QueryAttachments: 10"},
        {Attachments, 9, nothing, S_FALSE, "-", "WARN QueryAttachments: item NOT found!"},
        {Attachments, 9, plain, S_OK, "",  // an empty list
         "ERROR QueryAttachments: Invalid call: QueryAttachments for non-item object (binary attachment)."},
    };
    Initialize();
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << "row " << &row - rows << ", type " << row.type);
        EXPECT_EQ(row.get(host, host.Uri(row.type, row.path), eBodyText), row.result);
        EXPECT_EQ(TakeContent(), row.content);
        EXPECT_EQ(TakeLines(), row.line.empty() ? Words{} : Words{row.line});
        const Words calls = mapi.script.TakeCalls();
        EXPECT_TRUE(row.result != E_INVALIDARG || calls.empty());  // no profile is touched
    }
}

TEST_F(ContentTest, AFormatReachesWhatItIsAskedOf) {
    AllowMessageFiles();
    message->properties.Set(Binary(PR_RTF_COMPRESSED, BytesOf("{rtf}"))).Set(Text(PR_BODY_HTML_A, "<html>"));
    const struct {
        int format;
        const char* body;  // "...": what begins and ends so
        const char* bytes;
    } rows[] = {
        {0, "", ""},
        {1, "the body", "data"},
        {2, "{rtf}", "data"},
        {3, "<html>", "data"},
        {4, "File:...-body.msg", "File:...a.txt"},
        {5, "File:...-body.msg", "File:...a.txt"},
        {6, "the body", "vx:%%4%%a.txt"},
    };
    const auto matches = [](const std::string& content, const std::string& expected) {
        const std::size_t gap = expected.find("...");
        return gap == std::string::npos
                   ? content == expected
                   : content.starts_with(expected.substr(0, gap)) && content.ends_with(expected.substr(gap + 3));
    };
    Initialize("-1|-1|0|-1|0|" + folder.Path().string());
    for (const auto& row : rows) {
        const auto format = static_cast<TBodyFormat>(row.format);
        for (const Get get : {ItemData, FolderBody, DirectBody}) {
            EXPECT_EQ(get(host, host.Item(), format), S_OK);
            const std::string content = TakeContent();
            EXPECT_TRUE(matches(content, row.body)) << "format " << row.format << ": " << content;
        }
        for (const Get get : {BinaryData, FolderBytes, DirectBytes}) {
            EXPECT_EQ(get(host, host.Plain(), format), S_OK);
            const std::string content = TakeContent();
            EXPECT_TRUE(matches(content, row.bytes)) << "format " << row.format << ": " << content;
        }
    }
}

TEST_F(ContentTest, BytesTakeThePlaceOfWhatTheHostHadThere) {
    Initialize();
    for (const Get get : {FolderBytes, DirectBytes}) {
        for (int i = 0; i < 2; ++i) {
            EXPECT_EQ(get(host, host.Plain(), eBodyText), S_OK);  // the second time over the bytes of the first
        }
        EXPECT_EQ(TakeValue(), "<64617461>");
        EXPECT_EQ(get(host, host.Plain(), eBodyNone), S_OK);
        EXPECT_EQ(TakeValue(), "<>");
    }
}

TEST_F(ContentTest, ErrorsLeaveTheItemWithItsRecord) {
    message->properties.Set(Number(PR_MESSAGE_SIZE, 50));
    message->attachments[0]->properties.Set(Number(PR_ATTACH_SIZE, 51));
    Initialize("50");
    // An attachment's record takes its own errors and copies the item's.
    EXPECT_EQ(Errors(BinaryData, host.Plain(), eBodyNone), "3L");
    EXPECT_EQ(Errors(BinaryData, host.Plain(), eBodyNone), "1L");
    EXPECT_EQ(Errors(ItemData, host.Item(), eBodyNone), "1L");
    EXPECT_EQ(Errors(ItemData, host.Item(), eBodyNone), "0L");
    EXPECT_EQ(Errors(BinaryData, host.Plain(), eBodyNone), "0L");

    // What is too large is left out, and tried and refused anew whenever it is asked for.
    EXPECT_EQ(ItemData(host, host.Item(), eBodyText), S_OK);
    EXPECT_EQ(TakeContent(), "");
    EXPECT_EQ(Errors(ItemData, host.Item(), eBodyText), "1L");
    EXPECT_EQ(BinaryData(host, host.Plain(), eBodyText), S_OK);
    EXPECT_EQ(ShowField(host.value, "attachments_iSize"_field), "0");
    EXPECT_EQ(TakeContent(), "");
    EXPECT_EQ(LogLines({"too big"}).empty(), false);

    // An attachment that does not open is a record without bytes.
    EXPECT_EQ(instance.Disconnect(), S_OK);
    mapi.script.Fail("IMessage::OpenAttach(0", MAPI_E_NO_ACCESS);
    EXPECT_EQ(Errors(BinaryData, host.Plain(), eBodyNone), "5L");
    EXPECT_EQ(TakeLines(), Words{});
}

TEST_F(ContentTest, AFilterForTheItemAsksTheServerForThatItemAlone) {
    constexpr char kOneItem[] = "IMAPITable::Restrict(or(property(4,66700102=E1),property(4,0FFF0102=E1)),00000000)";
    const auto calls = {
        +[](Host& h, bool filter) { return h.instance.GetItemData(h.Item(), eBodyText, filter, &h.value); },
        +[](Host& h, bool filter) { return h.instance.GetItemBody(h.Item(), eBodyText, filter, h.text); },
        +[](Host& h, bool filter) { return h.instance.GetBinaryItemData(h.Plain(), eBodyText, filter, &h.value); },
        +[](Host& h, bool filter) { return h.instance.GetBinaryItemBody(h.Plain(), eBodyText, filter, &h.value); },
    };
    Initialize();
    for (const auto call : calls) {
        for (const bool filter : {true, false}) {
            EXPECT_EQ(instance.Disconnect(), S_OK);
            mapi.script.TakeCalls();
            EXPECT_EQ(call(host, filter), S_OK);
            EXPECT_EQ(mapi.script.TakeCalls({"IMAPITable::Restrict"}),
                      Words{filter ? kOneItem : "IMAPITable::Restrict(null,00000000)"});
            host.Reset();
        }
    }
    // The direct way needs no folder.
    EXPECT_EQ(instance.Disconnect(), S_OK);
    mapi.script.TakeCalls();
    EXPECT_EQ(DirectBody(host, host.Item(), eBodyText), S_OK);
    EXPECT_EQ(DirectBytes(host, host.Plain(), eBodyText), S_OK);
    EXPECT_EQ(mapi.script.TakeCalls({"IMAPIFolder", "IMsgStore::OpenEntry(F1"}), Words{});
}

TEST_F(ContentTest, AnItemOfAFolderThatIsOpenCostsItsOwnCallsAndIsReadOnce) {
    message->attachments.clear();
    Initialize();
    EXPECT_EQ(instance.QueryItems(host.Folder(), 0, false, &host.value, &host.counts[0]), S_OK);
    host.Reset();
    mapi.script.TakeCalls();
    EXPECT_EQ(ItemData(host, host.Item(), eBodyText), S_OK);
    // Opened once; its properties by named ones, fixed ones and two more; body, recipients and attachments once each.
    Words names;
    for (const std::string& call : mapi.script.TakeCalls()) {
        names.push_back(call.substr(0, call.find('(')));
    }
    EXPECT_EQ(names,
              (Words{"IMsgStore::OpenEntry", "HrGetOneProp", "MAPIAllocateBuffer", "IMessage::GetIDsFromNames",
                     "IMessage::GetProps", "IMessage::GetProps", "IMessage::OpenProperty", "IStream::Read",
                     "IStream::Read", "IMessage::GetProps", "IMessage::GetProps", "IMessage::GetRecipientTable",
                     "IMAPITable::SetColumns", "IMAPITable::SeekRow", "HrQueryAllRows", "IMessage::GetAttachmentTable",
                     "IMAPITable::SetColumns", "IMAPITable::SeekRow", "HrQueryAllRows"}));
    host.Reset();
    EXPECT_EQ(ItemData(host, host.Item(), eBodyText), S_OK);
    EXPECT_EQ(mapi.script.TakeCalls(), Words{});
}

}  // namespace
