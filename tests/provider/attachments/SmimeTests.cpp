// Attachments of decoded e-mails, and the converter's ways that no item goes.
#include "platform/Paths.h"
#include "provider/Attachments/SmimeMsgConverter.h"
#include "provider/Attachments/VxSmimeAttachment.h"
#include "testing/StubInterfaces.h"
#include "tests/provider/items/ItemTestSupport.h"

#include <filesystem>

namespace {

using namespace scripted_mapi;

const CStringW kFile = "x.msg"_w;

class SmimeTest : public ItemTest {
protected:
    SmimeTest() {
        decode = [this] {
            auto made = std::make_unique<FakeEmail>();
            made->plain = "plain";
            made->parts = {{"a.txt", "bytes"}, {"?", "x"}};
            made->canSave = canSave;
            return made;
        };
    }

    bool canSave = true;
};

TEST_F(SmimeTest, AnAttachmentHasItsBytesButNoVectorOfThem) {
    FakeEmail email;
    email.parts = {{"a.txt", "bytes"}, {"?", "x"}, {"c.txt", "unreadable"}};
    CVxItem& item = Item();
    CVxSmimeAttachment attachment(&item);
    ASSERT_TRUE(attachment.Init(0, email));
    EXPECT_EQ(Ascii(attachment.GetFileName() + attachment.GetLongFileName() + attachment.GetDisplayName()),
              "a.txta.txta.txt");
    EXPECT_EQ(attachment.GetBlobData(), nullptr);  // no format asked for
    attachment.SetRequestBodyFormat(eBodyText);
    ASSERT_EQ(attachment.GetBlobDataSize(), 5);
    EXPECT_EQ(std::string(attachment.GetBlobData(), attachment.GetBlobData() + 5), "bytes");
    EXPECT_TRUE(attachment.GetBlobDataVector().empty());
    EXPECT_EQ(attachment.GetSize(), 0);
    attachment.Clear();
    EXPECT_EQ(attachment.GetBlobDataSize(), 5);  // its bytes are its own
    attachment.SetAttachmentFileName(nullptr);
    EXPECT_TRUE(attachment.GetDisplayName().empty());
    for (const LONG index : {1, 2}) {
        CVxSmimeAttachment other(&item);
        EXPECT_FALSE(other.Init(index, email));
    }
}

TEST_F(SmimeTest, AnAttachmentAboveTheLimitHasAName) {
    FakeEmail email;
    email.parts = {{"a.txt", "bytes"}};
    for (const LONG limit : {5, 4}) {
        Params().m_bodySizeLimit = limit;
        CVxSmimeAttachment attachment(&Item());
        attachment.SetRequestBodyFormat(eBodyText);
        EXPECT_TRUE(attachment.Init(0, email));
        EXPECT_EQ(Ascii(attachment.GetDisplayName()), "a.txt");
        EXPECT_EQ(attachment.GetBlobDataSize(), limit == 5 ? 5 : 0);
        EXPECT_EQ(attachment.getVxErrors(), 0);
    }
}

TEST_F(SmimeTest, ABodyIsTheOneAskedForAndStaysWithoutAnEmail) {
    CSmimeMsgConverter converter;
    converter.ReadBody(kFile, true);
    EXPECT_EQ(Ascii(converter.GetBodyText()), "plain");
    decode = nullptr;
    converter.ReadBody(kFile, true);
    EXPECT_EQ(Ascii(converter.GetBodyText()), "plain");
    EXPECT_EQ(converter.GetEmail(), nullptr);
    EXPECT_EQ(decodedPaths, (Words{"x.msg", "x.msg"}));
    EXPECT_TRUE(converter.ConvertMsg(kFile).empty());
}

TEST_F(SmimeTest, SavesAnAttachmentUnderANewName) {
    CSmimeMsgConverter converter;
    const CStringW target = folder.File("");
    CStringW name;
    CMapiUtil::s_tempFilesCounter = 41;
    const CStringW path = converter.SaveAttachmentFromSmimeMsgOnDisk(kFile, target, 0, name);
    EXPECT_EQ(path, target + "tmp_42a.txt"_w);
    EXPECT_EQ(Ascii(name), "a.txt");
    EXPECT_EQ(ReadFile(path), "bytes");
    canSave = false;
    EXPECT_TRUE(converter.SaveAttachmentFromSmimeMsgOnDisk(kFile, target, 0, name).empty());
    decode = nullptr;
    EXPECT_TRUE(converter.SaveAttachmentFromSmimeMsgOnDisk(kFile, target, 0, name).empty());
}

// A stream that keeps what is written into it, for a body that is set.
class WrittenStream final : public vx_testing::StubStream {
public:
    explicit WrittenStream(Bytes& bytes) : m_bytes(bytes) {}
    HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG size, ULONG*) override {
        const auto* first = static_cast<const BYTE*>(bytes);
        m_bytes.insert(m_bytes.end(), first, first + size);
        return S_OK;
    }

private:
    Bytes& m_bytes;
};

TEST_F(SmimeTest, ConvertsAMessageFileIntoOneWithTheText) {
    const CStringW path = folder.File("in.msg");
    {
        VxMapiPtr<IStorage> storage;
        ASSERT_EQ(StgCreateDocfile(path.c_str(), STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0, &storage),
                  S_OK);
    }
    AllowMessageFiles();
    Bytes written;
    WrittenStream stream(written);
    auto model = std::make_shared<MessageModel>();
    model->openers[PR_BODY_W] = [&](const IID*, ULONG, IUnknown** object) {
        stream.AddRef();
        *object = &stream;
        return S_OK;
    };
    mapi.openMessageOnStorage = [&](IStorage*, ULONG, IMessage** opened) {
        *opened = mapi.OpenMessage(model);
        return S_OK;
    };
    CSmimeMsgConverter converter;
    mapi.script.TakeCalls();
    const CStringW converted = converter.ConvertSmimeMSG(path, folder.File(""));
    EXPECT_TRUE(converted.starts_with(folder.File("")) && converted.ends_with(".msg"_w));
    EXPECT_TRUE(std::filesystem::exists(ToPath(converted)));
    EXPECT_EQ(written, (Bytes{'p', 0, 'l', 0, 'a', 0, 'i', 0, 'n', 0}));
    EXPECT_EQ(mapi.script.Calls().front(), "OpenIMsgOnIStg(no session,80000000)");
    EXPECT_EQ(mapi.script.Count("IMessage::OpenProperty(1000001F,IStream,0,0000000B)"), 1);
    EXPECT_EQ(mapi.script.Count("IMessage::CopyTo"), 1);

    mapi.script.Fail("IMessage::OpenProperty", E_FAIL);
    EXPECT_TRUE(converter.ConvertSmimeMSG(path, folder.File("")).empty());
    EXPECT_TRUE(converter.ConvertSmimeMSG(folder.File("missing.msg"), folder.File("")).empty());
}

}  // namespace
