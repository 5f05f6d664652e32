// Messages of a store into message files and back, and compressed RTF by stream.
#include "platform/Paths.h"
#include "platform/Storage.h"
#include "provider/MAPIUtils.h"
#include "tests/localmapi/library/Client.h"
#include "tests/localmapi/library/Expectations.h"

#include <algorithm>
#include <array>

namespace vx_testing {

namespace {

using mailbox_builder::WrittenFolder;

using MessageFiles = Client;

ComPtr<IMessage> OpenFile(const std::filesystem::path& file, DWORD mode) {
    ComPtr<IStorage> storage;
    EXPECT_EQ(StgOpenStorage(FromPath(file).c_str(), nullptr, mode, nullptr, 0, storage.Receive()), S_OK);
    ComPtr<IMessage> message;
    EXPECT_EQ(OpenIMsgOnIStg(nullptr, MAPIAllocateBuffer, MAPIAllocateMore, MAPIFreeBuffer, MAPIGetDefaultMalloc(),
                             nullptr, storage.Get(), nullptr, 0, 0, message.Receive()),
              S_OK);
    return message;
}

// The first items of every folder and all that hold something, with their recipients, attachments and what is in them,
// go into files as a host saves them, and come back as they were described.
TEST_F(MessageFiles, HoldAllOfAnItem) {
    ASSERT_EQ(MakeProfile("Test", SampleFile()), S_OK) << lastProblem;
    const auto session = LogOn("Test");
    const auto store = OpenOnlyStore(*session);
    std::vector<std::string> differences;
    for (const WrittenFolder& written : SampleFolders()) {
        for (std::size_t i = 0; i < written.messages.size(); ++i) {
            if (i > 4 && written.description->messages[i].attachments.empty()
                && written.description->path.find("Languages"_w) == CStringW::npos) {
                continue;
            }
            const auto message = Open<IMessage>(*store, EntryIdOf(*store, written.messages[i].node));
            CStringW path = FromPath(Folder() / "item.msg");
            ASSERT_EQ(CMapiUtil::SaveMessageInFile(message.Get(), path), S_OK);
            const auto back = OpenFile(ToPath(path), STGM_READ | STGM_SHARE_EXCLUSIVE);
            ASSERT_TRUE(back);
            CompareMessage(*back, written.description->messages[i],
                           Utf8(written.description->path) + " " + std::to_string(i), differences);
        }
    }
    std::string first = std::to_string(differences.size()) + " differences";
    for (std::size_t i = 0; i < std::min<std::size_t>(differences.size(), 20); ++i) {
        first += "\n  " + differences[i];
    }
    EXPECT_TRUE(differences.empty()) << first;
}

TEST_F(MessageFiles, AreMadeFromNothing) {
    const std::filesystem::path file = Folder() / "new.msg";
    {
        ComPtr<IStorage> storage;
        ASSERT_EQ(StgCreateDocfile(FromPath(file).c_str(),
                                   STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE | STGM_TRANSACTED, 0,
                                   storage.Receive()),
                  S_OK);
        ComPtr<IMessage> message;
        ASSERT_EQ(OpenIMsgOnIStg(nullptr, MAPIAllocateBuffer, MAPIAllocateMore, MAPIFreeBuffer, MAPIGetDefaultMalloc(),
                                 nullptr, storage.Get(), nullptr, 0, MAPI_UNICODE, message.Receive()),
                  S_OK);
        SPropValue subject{};
        subject.ulPropTag = PR_SUBJECT_W;
        subject.Value.lpszW = const_cast<LPWSTR>("Made here"_w);
        ASSERT_EQ(HrSetOneProp(message.Get(), &subject), S_OK);
        SPropValue object{};
        object.ulPropTag = PR_ATTACH_DATA_OBJ;
        EXPECT_EQ(HrSetOneProp(message.Get(), &object), MAPI_E_INVALID_TYPE) << "the problem of the one property";
        SPropValue* missing = nullptr;
        EXPECT_EQ(HrGetOneProp(message.Get(), PR_BODY_W, &missing), MAPI_E_NOT_FOUND);
        EXPECT_EQ(missing, nullptr);
        ULONG number = 99;
        ComPtr<IAttach> attach;
        ASSERT_EQ(message->CreateAttach(nullptr, 0, &number, attach.Receive()), S_OK);
        EXPECT_EQ(number, 0U);
        SPropValue method{};
        method.ulPropTag = PR_ATTACH_METHOD;
        method.Value.l = ATTACH_BY_VALUE;
        ASSERT_EQ(attach->SetProps(1, &method, nullptr), S_OK);
        IUnknown* opened = nullptr;
        ASSERT_EQ(
            attach->OpenProperty(PR_ATTACH_DATA_BIN, &IID_IStream, STGM_READWRITE, MAPI_CREATE | MAPI_MODIFY, &opened),
            S_OK);
        const auto stream = ComPtr<IStream>::Adopt(static_cast<IStream*>(opened));
        ASSERT_EQ(stream->Write("content", 7, nullptr), S_OK);
        ASSERT_EQ(stream->Commit(STGC_DEFAULT), S_OK);
        ASSERT_EQ(attach->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
        ASSERT_EQ(message->SaveChanges(KEEP_OPEN_READWRITE), S_OK);
    }
    const auto back = OpenFile(file, STGM_READ | STGM_SHARE_EXCLUSIVE);
    SPropValue* subject = nullptr;
    ASSERT_EQ(HrGetOneProp(back.Get(), PR_SUBJECT_W, &subject), S_OK);
    const Buffer<SPropValue> hold(subject);
    EXPECT_EQ(Utf8(subject->Value.lpszW), "Made here");
    ComPtr<IAttach> attach;
    ASSERT_EQ(back->OpenAttach(0, nullptr, 0, attach.Receive()), S_OK);
    EXPECT_EQ(StreamOf(*attach, PR_ATTACH_DATA_BIN), "content");
    SPropValue changed = *subject;
    EXPECT_EQ(HrSetOneProp(back.Get(), &changed), MAPI_E_NO_ACCESS) << "opened for reading only";
}

ULONG g_releasedData = 0;
void STDAPICALLTYPE OnRelease(ULONG callerData, LPMESSAGE) {
    g_releasedData = callerData;
}

TEST_F(MessageFiles, TellWhenTheyAreReleased) {
    ComPtr<ILockBytes> bytes;
    ComPtr<IStorage> storage;
    ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.Receive()), S_OK);
    ASSERT_EQ(StgCreateDocfileOnILockBytes(bytes.Get(), STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0,
                                           storage.Receive()),
              S_OK);
    LPMSGSESS together = nullptr;
    ASSERT_EQ(OpenIMsgSession(MAPIGetDefaultMalloc(), 0, &together), S_OK);
    {
        ComPtr<IMessage> message;
        ASSERT_EQ(OpenIMsgOnIStg(together, MAPIAllocateBuffer, MAPIAllocateMore, MAPIFreeBuffer, MAPIGetDefaultMalloc(),
                                 nullptr, storage.Get(), OnRelease, 77, 0, message.Receive()),
                  S_OK);
        EXPECT_EQ(g_releasedData, 0U);
    }
    EXPECT_EQ(g_releasedData, 77U);
    CloseIMsgSession(together);
}

using CompressedRtf = Client;

std::string ReadToEnd(IStream& stream, HRESULT& last) {
    std::string all;
    std::array<char, 100> piece;
    ULONG got = 0;
    while ((last = stream.Read(piece.data(), static_cast<ULONG>(piece.size()), &got)) == S_OK && got > 0) {
        all.append(piece.data(), got);
    }
    return all;
}

TEST_F(CompressedRtf, IsWrittenAndReadAndItsDamageFound) {
    for (const ULONG form : {ULONG{0}, STORE_UNCOMPRESSED_RTF}) {
        SCOPED_TRACE(form);
        ComPtr<IStream> compressed;
        ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, compressed.Receive()), S_OK);
        std::string document = "{\\rtf1\\ansi ";
        for (int i = 0; i < 500; ++i) {
            document += "line " + std::to_string(i) + "\\par ";
        }
        document += "}";
        {
            ComPtr<IStream> plain;
            ASSERT_EQ(WrapCompressedRTFStream(compressed.Get(), MAPI_MODIFY | form, plain.Receive()), S_OK);
            ASSERT_EQ(plain->Write(document.data(), static_cast<ULONG>(document.size()), nullptr), S_OK);
            ASSERT_EQ(plain->Commit(STGC_DEFAULT), S_OK);
        }
        ComPtr<IStream> plain;
        ASSERT_EQ(compressed->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
        ASSERT_EQ(WrapCompressedRTFStream(compressed.Get(), 0, plain.Receive()), S_OK);
        HRESULT last = S_OK;
        EXPECT_EQ(ReadToEnd(*plain, last), document);
        EXPECT_EQ(last, S_OK);
        ASSERT_EQ(plain->Seek({}, STREAM_SEEK_SET, nullptr), S_OK);
        EXPECT_EQ(ReadToEnd(*plain, last), document);
        plain = {};

        // Cut short: all that is there, then the failure.
        ULARGE_INTEGER size;
        STATSTG stat{};
        ASSERT_EQ(compressed->Stat(&stat, STATFLAG_NONAME), S_OK);
        size.QuadPart = stat.cbSize.QuadPart - 20;
        ASSERT_EQ(compressed->SetSize(size), S_OK);
        ASSERT_EQ(WrapCompressedRTFStream(compressed.Get(), 0, plain.Receive()), S_OK);
        const std::string part = ReadToEnd(*plain, last);
        EXPECT_EQ(last, MAPI_E_CORRUPT_DATA);
        EXPECT_EQ(document.compare(0, std::min<std::size_t>(part.size(), 3000), part, 0, 3000), 0);
    }
    ComPtr<IStream> other;
    ComPtr<IStream> plain;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, other.Receive()), S_OK);
    ASSERT_EQ(other->Write("no compressed RTF at all", 24, nullptr), S_OK);
    EXPECT_EQ(WrapCompressedRTFStream(other.Get(), 0, plain.Receive()), MAPI_E_CORRUPT_DATA);
}

}  // namespace

}  // namespace vx_testing
