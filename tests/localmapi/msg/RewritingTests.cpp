// Messages that exist and are changed: what is not touched stays, what is touched is all that changes, and failures of
// the storage are failures of the call.
#include "localmapi/props/MapiMemory.h"
#include "localmapi/props/Values.h"
#include "mapi/MapiCodes.h"
#include "mapi/PropTags.h"
#include "testing/FaultyBytes.h"
#include "tests/localmapi/msg/support/Files.h"
#include "tests/localmapi/support/ValueText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace localmapi::testing {
namespace {

const WideView kProperties = "__properties_version1.0"_w;
const WideView kSubject = "__substg1.0_0037001F"_w;
const WideView kKeywords = "__substg1.0_8000101F"_w;

// A message by another hand: a subject, three keywords, two recipients, two attachments, and what we do not know.
void PutMessage(IStorage& root) {
    PutStream(root, kProperties,
              PropertyStreamOf(32,
                               {{0x0037001F, 8, 7},
                                {0x001000FD, 0x77, 5},
                                {0x8000101F, 12, 2},
                                {0x0E070003, 0xFFFFFFFF'00000004},
                                {0x10000102, 3},
                                {0x340D0003, 0x40000}},
                               {2, 2, 2, 2}));
    PutStream(root, kSubject, BytesOfText("old"_w));
    PutStream(root, kKeywords, "\4\0\0\0\4\0\0\0\4\0\0\0"_b);
    PutStream(root, "__substg1.0_8000101F-00000000"_w, "a\0\0\0"_b);
    PutStream(root, "__substg1.0_8000101F-00000001"_w, "b\0\0\0"_b);
    PutStream(root, "__substg1.0_8000101F-00000002"_w, "c\0\0\0"_b);
    PutStream(root, "__substg1.0_10000102"_w, "xyz"_b);
    PutStream(root, "MsoDataStore"_w, "kept"_b);
    for (const WideView name :
         {WideView("__recip_version1.0_#00000000"_w), WideView("__recip_version1.0_#00000001"_w)}) {
        PutProperties(*PutStorage(root, name), 8, {{PR_RECIPIENT_TYPE, 1}});
    }
    for (const WideView name :
         {WideView("__attach_version1.0_#00000000"_w), WideView("__attach_version1.0_#00000001"_w)}) {
        const auto part = PutStorage(root, name);
        PutProperties(*part, 8, {{PR_ATTACH_METHOD, 1}, {0x37010102, 2}});
        PutStream(*part, "__substg1.0_37010102"_w, BytesOfText(std::string_view(name.back() == '0' ? "d0" : "d1")));
    }
}

TEST(Rewriting, KeepsWhatIsNotTouched) {
    constexpr CLSID kTemplate = OleGuid(0x0006F046);
    MemoryFile file;
    {
        const auto root = file.Create();
        PutMessage(*root);
        ASSERT_EQ(WriteClassStg(root.Get(), kTemplate), S_OK);
    }
    {
        const auto message = OpenedForWriting(file.Open(STGM_READWRITE | STGM_SHARE_EXCLUSIVE));
        Arena memory;
        EXPECT_TRUE(message->Write(WideValue(PR_SUBJECT_W, "newer"_w, memory)));
        Save(*message);
    }
    const auto root = file.Open();
    CLSID classId{};
    EXPECT_EQ(ReadClassStg(root.Get(), &classId), S_OK);
    EXPECT_TRUE(classId == kTemplate);
    EXPECT_EQ(StreamIn(*root, kProperties),
              PropertyStreamOf(32,
                               {{0x001000FD, 0x77, 5},  // of a type that we do not read: as it was
                                {0x0037001F, 12},
                                {0x0E070003, 0xFFFFFFFF'00000004},
                                {0x10000102, 3},
                                {0x340D0003, 0x40000},
                                {0x8000101F, 12}},
                               {2, 2, 2, 2}));
    EXPECT_EQ(StreamIn(*root, kSubject), BytesOfText("newer"_w));
    EXPECT_EQ(StreamIn(*root, "MsoDataStore"_w), "kept"_b);
    const auto message = Opened(root);
    EXPECT_EQ(ValueOf(*message, 0x8000), "[w'a',w'b',w'c']");
    EXPECT_EQ(ValueOf(*message, 0x1000), "x78797A");
    EXPECT_EQ(message->Recipients()->Count(), 2U);
    const auto attachment = message->OpenAttachment(1);
    ASSERT_TRUE(attachment);
    EXPECT_EQ(BytesIn(**attachment, PROP_ID(PR_ATTACH_DATA_BIN)), "d1");
}

TEST(Rewriting, DeletesWhatIsNotNeededAnyMore) {
    MemoryFile file;
    PutMessage(*file.Create());
    {
        const auto message = OpenedForWriting(file.Open(STGM_READWRITE | STGM_SHARE_EXCLUSIVE));
        Arena memory;
        // One keyword where there were three, a body that was a binary and is a text, no subject, other recipients.
        SPropValue keywords{};
        WCHAR only[] = {'o', 0};
        LPWSTR list[] = {only};
        keywords.ulPropTag = 0x8000101F;
        keywords.Value.MVszW = {1, list};
        EXPECT_TRUE(message->Write(keywords));
        EXPECT_TRUE(message->Write(WideValue(PR_BODY_W, "t"_w, memory)));
        EXPECT_TRUE(message->Remove(PROP_ID(PR_SUBJECT)));
        const Status again = message->Remove(PROP_ID(PR_SUBJECT));
        ASSERT_FALSE(again);
        EXPECT_EQ(again.Failure().code, ErrorCode::NotFound);
        SPropValue type = LongValue(PR_RECIPIENT_TYPE, 3);
        SPropValue missing = ErrorValue(PR_EMAIL_ADDRESS, MAPI_E_NOT_FOUND);
        SPropValue row[] = {type, missing};
        EXPECT_TRUE(message->ReplaceRecipients({{0, 2, row}}));
        EXPECT_TRUE(message->DeleteAttachment(0));
        EXPECT_EQ(message->AttachmentNumbers(), std::vector<ULONG>{1});
        ULONG number = 0;
        const auto attachment = message->CreateAttachment(number);
        ASSERT_TRUE(attachment);
        EXPECT_EQ(number, 2U) << "numbers are not given twice";
        Save(**attachment);
        Save(*message);
    }
    const auto root = file.Open();
    const std::vector<std::string> elements = {
        "MsoDataStore",         "__attach_version1.0_#00000001/", "__attach_version1.0_#00000002/",
        "__nameid_version1.0/", "__properties_version1.0",        "__recip_version1.0_#00000000/",
        "__substg1.0_1000001F", "__substg1.0_8000101F",           "__substg1.0_8000101F-00000000"};
    EXPECT_EQ(ElementsOf(*root), elements);
    const auto message = Opened(root);
    EXPECT_EQ(ValueOf(*message, 0x8000), "[w'o']");
    EXPECT_EQ(ValueOf(*message, 0x1000), "w't'");
    EXPECT_EQ(CellOf(*message->Recipients(), 0, PROP_ID(PR_RECIPIENT_TYPE)), "3");
    EXPECT_EQ(ByteView(StreamIn(*root, kProperties)).U32(20), 2U);
}

TEST(Rewriting, WithoutSaveNothingIsChanged) {
    for (const DWORD mode : {STGM_DIRECT, STGM_TRANSACTED}) {
        SCOPED_TRACE(mode);
        MemoryFile file;
        PutMessage(*file.Create());
        const std::vector<std::string> before = ElementsOf(*file.Open());
        {
            const auto message = OpenedForWriting(file.Open(mode | STGM_READWRITE | STGM_SHARE_EXCLUSIVE));
            Arena memory;
            EXPECT_TRUE(message->Write(WideValue(PR_SUBJECT_W, "lost"_w, memory)));
            EXPECT_TRUE(message->Remove(0x8000));
            EXPECT_TRUE(message->ReplaceRecipients({}));
            EXPECT_TRUE(message->DeleteAttachment(0));
            ULONG number = 0;
            const auto added = message->CreateAttachment(number);
            ASSERT_TRUE(added);
            Save(**added);
            {
                const auto rows = message->Attachments();
                EXPECT_EQ(CellOf(*rows, 0, PROP_ID(PR_ATTACH_METHOD)), "1");
                const auto attachment = message->OpenAttachment(1);
                ASSERT_TRUE(attachment);
                EXPECT_TRUE((*attachment)->Write(LongValue(PR_ATTACH_METHOD, 7)));
            }
            const auto attachment = message->OpenAttachment(1);
            ASSERT_TRUE(attachment);
            EXPECT_EQ(ValueOf(**attachment, PROP_ID(PR_ATTACH_METHOD)), "1") << "what nobody saved is forgotten";
        }
        EXPECT_EQ(ElementsOf(*file.Open()), before);
        const auto message = Opened(file.Open());
        EXPECT_EQ(ValueOf(*message, PROP_ID(PR_SUBJECT)), "w'old'");
        EXPECT_EQ(message->Recipients()->Count(), 2U);
        EXPECT_EQ(message->AttachmentNumbers().size(), 2U);
    }
}

TEST(Rewriting, KeepsTheWidthOfAnEightBitMessage) {
    MemoryFile file;
    {
        const auto root = file.Create();
        PutProperties(*root, 32, {{PR_MESSAGE_CODEPAGE, 1251}, {PR_SUBJECT_A, 4}, {PR_STORE_SUPPORT_MASK, 0x00000E79}});
        PutStream(*root, "__substg1.0_0037001E"_w, "old"_b);
        PutProperties(*PutStorage(*root, "__attach_version1.0_#00000000"_w), 8, {});
    }
    const WCHAR cyrillic[] = {static_cast<WCHAR>(0x0416), static_cast<WCHAR>(0x0430)};
    const WCHAR kanji[] = {static_cast<WCHAR>(0x65E5)};
    Bytes large;
    for (int i = 0; i < 50'000; ++i) {
        large.insert(large.end(), {std::byte{0x16}, std::byte{0x04}});
    }
    {
        const auto message = OpenedForWriting(file.Open(STGM_READWRITE | STGM_SHARE_EXCLUSIVE));
        Arena memory;
        EXPECT_TRUE(message->Write(WideValue(PR_SUBJECT_W, WideView(cyrillic, 2), memory)));
        EXPECT_TRUE(message->Write(WideValue(PR_SENDER_NAME_W, WideView(kanji, 1), memory)));
        MemorySource source(large);
        EXPECT_TRUE(message->Write(PR_BODY_W, source));
        const auto stream = message->OpenForWriting(PR_CONVERSATION_TOPIC_W, true);
        ASSERT_TRUE(stream);
        ULONG written = 0;
        EXPECT_EQ((*stream)->Write(large.data(), 4, &written), S_OK);
        const auto attachment = message->OpenAttachment(0);
        ASSERT_TRUE(attachment);
        EXPECT_TRUE((*attachment)->Write(WideValue(PR_ATTACH_LONG_FILENAME_W, WideView(cyrillic, 2), memory)));
        Save(**attachment);
        Save(*message);
    }
    const auto root = file.Open();
    EXPECT_EQ(StreamIn(*root, "__substg1.0_0037001E"_w), "\xC6\xE0"_b);
    EXPECT_EQ(StreamIn(*root, "__substg1.0_1000001E"_w), Bytes(50'000, std::byte{0xC6}));
    EXPECT_EQ(StreamIn(*root, "__substg1.0_0070001E"_w), "\xC6\xC6"_b);
    EXPECT_EQ(StreamIn(*root, "__substg1.0_0070001F"_w), "no stream"_b);
    EXPECT_EQ(StreamIn(*root, "__substg1.0_0C1A001F"_w), BytesOfText(WideView(kanji, 1)))
        << "the page has no such character";
    EXPECT_EQ(StreamIn(*StorageIn(*root, "__attach_version1.0_#00000000"_w), "__substg1.0_3707001E"_w), "\xC6\xE0"_b);
    EXPECT_EQ(ValueOf(*Opened(root), PROP_ID(PR_STORE_SUPPORT_MASK)), std::to_string(0xE79));
}

TEST(Rewriting, AFaultOfTheMediumIsAFailureOfTheCall) {
#ifdef _WIN32
    GTEST_SKIP() << "a full medium is more than Wine's structured storage bears";
#endif
    const Bytes large(200'000, std::byte{7});
    int failures = 0;
    for (int n = 0;; ++n) {
        SCOPED_TRACE(n);
        ComPtr<ILockBytes> memory;
        ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, memory.Receive()), S_OK);
        vx_testing::FaultyBytes bytes(memory.Get());
        ComPtr<IStorage> root;
        ASSERT_EQ(StgCreateDocfileOnILockBytes(
                      &bytes, STGM_CREATE | STGM_TRANSACTED | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0, root.Receive()),
                  S_OK);
        const auto message = OpenedForWriting(std::move(root));
        bytes.failAt = n;
        MemorySource source(large);
        Status status = message->Write(PR_RTF_COMPRESSED, source);
        if (status) {
            status = message->Save();
        }
        if (bytes.failAt >= 0) {
            EXPECT_TRUE(status) << "nothing has failed";
            break;
        }
        if (!status) {
            ++failures;
            EXPECT_EQ(status.Failure().code, ErrorCode::ReadFailed);
            EXPECT_NE(status.Failure().text.find("0x800300"), std::string::npos) << status.Failure().text;
        }
    }
    EXPECT_GT(failures, 2);
}

}  // namespace
}  // namespace localmapi::testing
