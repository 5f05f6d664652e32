// The payload of an attachment of MAPI: from a stream or a storage, as bytes, in a file, or in a memory section.
#include "platform/GlobalMemory.h"
#include "platform/NamedSection.h"
#include "platform/Paths.h"
#include "provider/Attachments/VxRegularAttachment.h"
#include "tests/provider/items/ItemTestSupport.h"

#include <cstring>
#include <filesystem>

namespace {

using namespace scripted_mapi;

class RegularAttachmentTest : public ItemTest {
protected:
    RegularAttachmentTest() { SetClass("IPM.StickyNote"); }

    // The item's first attachment, to be loaded in that format.
    CVxRegularAttachment& Opened(TBodyFormat format) {
        auto& attachment = dynamic_cast<CVxRegularAttachment&>(*Connected().GetAttachment(0));
        attachment.SetRequestBodyFormat(format);
        mapi.script.TakeCalls();
        return attachment;
    }

    static std::string Payload(CVxRegularAttachment& attachment) {
        const std::vector<unsigned char> blob = attachment.GetBlobDataVector();
        const BYTE* data = attachment.GetBlobData();
        EXPECT_EQ(attachment.GetBlobDataSize(), static_cast<LONG>(blob.size()));
        EXPECT_EQ(data == nullptr, blob.empty());
        EXPECT_TRUE(data == nullptr || std::memcmp(data, blob.data(), blob.size()) == 0);
        return std::string(blob.begin(), blob.end());
    }

    // A payload that is UTF-16 text.
    static std::string PayloadText(CVxRegularAttachment& attachment) {
        const std::string bytes = Payload(attachment);
        CStringW text(bytes.size() / sizeof(WCHAR), WCHAR{0});
        std::memcpy(text.data(), bytes.data(), text.size() * sizeof(WCHAR));
        return Ascii(text);
    }

    // An OLE object whose data are a storage with a stream "data" of that text.
    void AttachStorage(const char* text) {
        auto attachment = Attach(ATTACH_OLE, "object", "");
        attachment->properties.Remove(PR_ATTACH_DATA_BIN);
        attachment->openers[PR_ATTACH_DATA_OBJ] = [this, text](const IID* iid, ULONG, IUnknown** object) -> HRESULT {
            if (*iid != IID_IStorage) {
                return MAPI_E_INTERFACE_NOT_SUPPORTED;
            }
            const CStringW path = folder.File("source");
            IStorage* storage = nullptr;
            EXPECT_EQ(StgCreateDocfile(path.c_str(), STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0, &storage),
                      S_OK);
            VxMapiPtr<IStream> stream;
            EXPECT_EQ(
                storage->CreateStream("data"_w, STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0, 0, &stream),
                S_OK);
            stream->Write(text, static_cast<ULONG>(std::strlen(text)), nullptr);
            *object = storage;
            return S_OK;
        };
    }
};

constexpr std::string_view kCompoundFile = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";  // how each one begins

TEST_F(RegularAttachmentTest, IsItsBytesInTheFormatsOfText) {
    const std::string data = std::string("some\0bytes", 10);
    Attach(ATTACH_BY_VALUE, "a.bin", data)->properties.Set(Number(PR_ATTACH_SIZE, 999));
    for (const TBodyFormat format : {eBodyText, eBodyRtf, eBodyHtml}) {
        auto& attachment = Opened(format);
        ASSERT_TRUE(attachment.EnsureConnected());
        EXPECT_EQ(
            mapi.script.TakeCalls({"IMessage::OpenAttach", "IAttach::"}),
            (Words{"IMessage::OpenAttach(0,null,00000010)", "IAttach::OpenProperty(37010102,IStream,0,00000000)"}));
        EXPECT_EQ(Payload(attachment), data);
        EXPECT_EQ(attachment.GetSize(), 10);  // what was read, not what the table said
        EXPECT_EQ(mapi.script.TakeCalls(), Words{});
        attachment.EnsureDisconnected();
        EXPECT_TRUE(attachment.GetBlobDataVector().empty());
    }
}

TEST_F(RegularAttachmentTest, IsNothingUnlessAskedFor) {
    Attach(ATTACH_BY_VALUE, "a.bin", "data");
    auto& attachment = Opened(eBodyNone);
    ASSERT_TRUE(attachment.EnsureConnected());
    EXPECT_EQ(Payload(attachment), "");
    EXPECT_EQ(mapi.script.Count("IAttach::OpenProperty"), 0);
    attachment.SetRequestBodyFormat(eBodyText);
    EXPECT_EQ(attachment.GetBlobDataSize(), 4);  // loaded when it is asked for
}

TEST_F(RegularAttachmentTest, OfAnOleObjectIsTheFirstFormThatOpens) {
    auto attachment = Attach(ATTACH_OLE, "object", "");
    const auto stream = [this](const char* text) {
        return [this, text](const IID* iid, ULONG, IUnknown** object) -> HRESULT {
            if (*iid != IID_IStreamDocfile) {
                return MAPI_E_INTERFACE_NOT_SUPPORTED;
            }
            auto model = std::make_shared<MessageModel>();
            model->properties = {Binary(PR_ATTACH_DATA_BIN, BytesOf(text))};
            const VxMapiPtr<IMessage> carrier(mapi.OpenMessage(model));
            return carrier->OpenProperty(PR_ATTACH_DATA_BIN, &IID_IStream, 0, 0, object);
        };
    };
    attachment->openers[PR_ATTACH_DATA_OBJ] = stream("object");
    attachment->openers[PR_ATTACH_DATA_BIN] = stream("bytes");
    auto& opened = Opened(eBodyText);
    EXPECT_TRUE(opened.EnsureConnected());
    EXPECT_EQ(Payload(opened), "object");

    attachment->openers[PR_ATTACH_DATA_OBJ] = [](const IID*, ULONG, IUnknown**) { return MAPI_E_NOT_FOUND; };
    opened.EnsureDisconnected();
    EXPECT_TRUE(opened.EnsureConnected());
    EXPECT_EQ(Payload(opened), "bytes");

    attachment->openers.clear();
    attachment->properties.Remove(PR_ATTACH_DATA_BIN);
    opened.EnsureDisconnected();
    mapi.script.TakeCalls();
    EXPECT_FALSE(opened.EnsureConnected());
    EXPECT_TRUE(opened.HasErrors(VxErrorConnect));
    EXPECT_TRUE(opened.GetBlobDataVector().empty());
    EXPECT_EQ(mapi.script.Count("IAttach::OpenProperty(3701000D,"), 2);
    EXPECT_EQ(mapi.script.Count("IAttach::OpenProperty(37010102,"), 1);
    EXPECT_EQ(mapi.script.Count("IAttach::OpenProperty(3701000D,IStorage,0,00000000)"), 1);
}

// Whether a storage's streams can be copied into a simple storage in memory. Wine's CopyTo ends the program there.
bool CopiesIntoSimpleStorages() {
    constexpr DWORD kExclusive = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
    VxMapiPtr<ILockBytes> bytes;
    VxMapiPtr<IStorage> storage;
    VxMapiPtr<IStream> stream;
    return SUCCEEDED(CreateILockBytesOnHGlobal(nullptr, TRUE, &bytes))
           && SUCCEEDED(StgCreateDocfileOnILockBytes(bytes, STGM_SIMPLE | STGM_CREATE | kExclusive, 0, &storage))
           && SUCCEEDED(storage->CreateStream("data"_w, STGM_CREATE | kExclusive, 0, 0, &stream));
}

TEST_F(RegularAttachmentTest, OfAStorageIsACompoundFile) {
    if (!CopiesIntoSimpleStorages()) {
        GTEST_SKIP() << "this system's structured storage cannot be copied into a simple one";
    }
    AttachStorage("inside");
    for (const TBodyFormat format : {eBodyText, eBodyFile}) {
        auto& attachment = Opened(format);
        ASSERT_TRUE(attachment.EnsureConnected());
        std::string file = format == eBodyText ? Payload(attachment) : "";
        if (format == eBodyFile) {
            const std::string reference = PayloadText(attachment);
            ASSERT_EQ(reference.substr(0, 5), "File:");
            file = ReadFile(Wide(reference.substr(5)));
            std::filesystem::remove(reference.substr(5));
        }
        EXPECT_EQ(file.substr(0, 8), kCompoundFile);
        EXPECT_NE(file.find("inside"), std::string::npos);
        attachment.EnsureDisconnected();
    }
}

TEST_F(RegularAttachmentTest, InAFileStaysForItsReader) {
    Attach(ATTACH_BY_VALUE, "long: name.txt", "data")->properties.Set(Text(PR_ATTACH_FILENAME_W, "short.txt"));
    for (const TBodyFormat format : {eBodyFile, eBodyFileKept}) {
        auto& attachment = Opened(format);
        ASSERT_TRUE(attachment.EnsureConnected());
        const std::string reference = PayloadText(attachment);
        ASSERT_EQ(reference.substr(0, 5), "File:");
        EXPECT_TRUE(reference.ends_with("long%3a name.txt")) << reference;
        EXPECT_EQ(attachment.GetSize(), 4);
        attachment.EnsureDisconnected();
        EXPECT_EQ(ReadFile(Wide(reference.substr(5))), "data");
        std::filesystem::remove(reference.substr(5));
    }
}

// ---- Memory sections ----

TEST_F(RegularAttachmentTest, InASectionIsFoundByAnotherReaderUntilItIsForgotten) {
    Attach(ATTACH_BY_VALUE, "", "shared bytes")->properties.Set(Text(PR_ATTACH_FILENAME_W, "short.txt"));
    auto& attachment = Opened(eBodySection);
    ASSERT_TRUE(attachment.EnsureConnected());
    EXPECT_EQ(PayloadText(attachment), "vx:%%12%%short.txt");
    EXPECT_EQ(attachment.GetSize(), 12);
    HANDLE section = OpenFileMappingW(FILE_MAP_READ, FALSE, "vx:%%12%%short.txt"_w);
    ASSERT_NE(section, nullptr);
    const void* view = MapViewOfFile(section, FILE_MAP_READ, 0, 0, 12);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(std::memcmp(view, "shared bytes", 12), 0);
    UnmapViewOfFile(view);
    CloseHandle(section);
    attachment.EnsureDisconnected();
    EXPECT_EQ(OpenFileMappingW(FILE_MAP_READ, FALSE, "vx:%%12%%short.txt"_w), nullptr);
}

TEST_F(RegularAttachmentTest, OfAStorageInASection) {
    if (!CopiesIntoSimpleStorages()) {
        GTEST_SKIP() << "this system's structured storage cannot be copied into a simple one";
    }
    AttachStorage("inside");
    auto& attachment = Opened(eBodySection);
    ASSERT_TRUE(attachment.EnsureConnected());
    const std::string name = PayloadText(attachment);
    const auto size = static_cast<std::size_t>(std::stoul(name.substr(5)));
    EXPECT_EQ(name, "vx:%%" + std::to_string(size) + "%%object");
    HANDLE section = OpenFileMappingW(FILE_MAP_READ, FALSE, Wide(name).c_str());
    ASSERT_NE(section, nullptr);
    const void* view = MapViewOfFile(section, FILE_MAP_READ, 0, 0, size);
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(std::memcmp(view, kCompoundFile.data(), kCompoundFile.size()), 0);
    UnmapViewOfFile(view);
    CloseHandle(section);
}

TEST_F(RegularAttachmentTest, ASectionOfNothingCannotBeMade) {
    Attach(ATTACH_BY_VALUE, "empty.txt", "");
    EXPECT_FALSE(Opened(eBodySection).EnsureConnected());
    const Words lines = LogLines({"CreateFileMapping failed"});
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_TRUE(lines[0].ends_with(", dataSize 0, filename empty.txt")) << lines[0];
}

// ---- Limits and failures ----

TEST_F(RegularAttachmentTest, IsLoadedUpToTheLimit) {
    struct Row {
        const char* name;
        LONG told;  // PR_ATTACH_SIZE
        std::size_t bytes;
        bool isLoaded;
        bool isOpened;
    };
    constexpr Row kRows[] = {{"at the limit", 8, 8, true, true},
                             {"told to be more", 9, 8, false, false},
                             {"more than told", 8, 9, false, true}};
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.name);
        domain.reset();
        message->attachments.clear();
        Attach(ATTACH_BY_VALUE, "a", std::string(row.bytes, 'x'))->properties.Set(Number(PR_ATTACH_SIZE, row.told));
        Params().m_bodySizeLimit = 8;
        auto& attachment = Opened(eBodyText);
        EXPECT_TRUE(attachment.EnsureConnected());
        EXPECT_EQ(attachment.getVxErrors(), row.isLoaded ? std::int64_t{0} : std::int64_t{VxErrorAttachmentBody});
        EXPECT_EQ(attachment.GetBlobDataVector().size(), row.isLoaded ? row.bytes : 0U);
        EXPECT_EQ(mapi.script.Count("IAttach::OpenProperty"), row.isOpened ? 1 : 0);
    }
}

TEST_F(RegularAttachmentTest, TheLimitHasALimit) {
    for (const auto& [limit, expected] :
         {std::pair<std::int64_t, LONG>{-1, 104857600}, {104857601, 104857600}, {5, 5}}) {
        CMPParams params;
        params.m_bodySizeLimit = limit;
        EXPECT_EQ(CVxAttachment::GetBodySizeLimit(params), expected);
    }
}

TEST_F(RegularAttachmentTest, FailsWithWhatIsBeneathIt) {
    Attach(ATTACH_BY_VALUE, "a", "data");
    for (const TBodyFormat format : {eBodyText, eBodyFile, eBodySection}) {
        for (const char* call : {"IMessage::OpenAttach", "IAttach::OpenProperty", "IStream::Read"}) {
            SCOPED_TRACE(testing::Message() << call << " in format " << format);
            auto& attachment = Opened(format);
            mapi.script.Fail(call, E_FAIL);
            EXPECT_FALSE(attachment.EnsureConnected());
            EXPECT_EQ(attachment.getVxErrors(), VxErrorConnect);
            EXPECT_TRUE(attachment.GetBlobDataVector().empty());
            mapi.script.ForgetOrders();
        }
    }
    // Too little memory is taken for too much data.
    auto& attachment = Opened(eBodySection);
    mapi.script.Fail("IStream::Stat", E_OUTOFMEMORY);
    EXPECT_TRUE(attachment.EnsureConnected());
    EXPECT_TRUE(attachment.HasErrors(VxErrorAttachmentBody));
}

TEST_F(RegularAttachmentTest, KeepsExceptionsToItself) {
    Attach(ATTACH_BY_VALUE, "a", "data");
    auto& attachment = Opened(eBodyNone);
    ASSERT_TRUE(attachment.EnsureConnected());
    attachment.SetRequestBodyFormat(eBodyText);
    mapi.script.On("IAttach::OpenProperty", []() -> std::optional<HRESULT> { throw std::runtime_error("foreign"); });
    EXPECT_EQ(attachment.GetBlobData(), nullptr);
    EXPECT_EQ(LogLines({"exception!"}), Words{"DEBUG: EnsureBodyLoaded exception!"});
}

TEST_F(RegularAttachmentTest, ThatStandsForAnItemHasNoPayload) {
    Embed(*message, "inner", "IPM.Note");
    CVxAttachment* info = Connected().GetAttachment(0)->GetVxItem()->GetAttachInfo();
    ASSERT_NE(info, nullptr);
    info->SetRequestBodyFormat(eBodyText);
    EXPECT_FALSE(info->LoadBody(CMPParams()));
    EXPECT_EQ(info->GetBlobData(), nullptr);
    EXPECT_EQ(info->GetParentItem(), nullptr);
    EXPECT_FALSE(info->OnConnect());
}

TEST_F(RegularAttachmentTest, HasAUrlBeneathItsItems) {
    Attach(ATTACH_BY_VALUE, "a", "x")->properties.Set(Text(PR_URL_COMP_NAME_W, "part.txt"));
    auto inner = Embed(*message, "inner", "IPM.Note");
    inner->properties.Set(Text(PR_URL_COMP_NAME_W, "inner.EML"));
    message->attachments.back()->properties.Set(Text(PR_URL_COMP_NAME_W, "embedded"));
    SetClass("IPM.Note");
    message->properties.Set(Text(PR_URL_COMP_NAME_W, "outer.EML"));
    CVxItem& item = Connected();
    EXPECT_EQ(Ascii(item.GetAttachment(0)->GetVxAttachment()->GetURLSubject()), "outer.EML/part.txt");
    EXPECT_EQ(Ascii(item.GetAttachment(1)->GetVxItem()->GetAttachInfo()->GetURLSubject()), "embedded");
    EXPECT_EQ(item.GetAttachment(0)->GetVxAttachment()->GetChildCount(), 0U);
}

// The way of a store that opens one attachment without its folder.
TEST_F(RegularAttachmentTest, IsOpenedTwiceWithoutALeak) {
    Attach(ATTACH_BY_VALUE, "a", "data");
    auto& attachment = Opened(eBodyText);
    EXPECT_TRUE(attachment.OnConnect());
    EXPECT_TRUE(attachment.OnConnect());
    EXPECT_EQ(Payload(attachment), "data");
    attachment.OnDisconnect();
}

}  // namespace
