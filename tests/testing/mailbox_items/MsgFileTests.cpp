// Messages as files of their own, taken apart by the rules of [MS-OXMSG] through the system's structured storage.
#include "mapi/NamedProps.h"
#include "mapi/PropTags.h"
#include "platform/GlobalMemory.h"
#include "platform/Storage.h"
#include "testing/mailbox_builder/ByteWriter.h"
#include "testing/mailbox_builder/items/Attachments.h"
#include "testing/mailbox_builder/items/Mail.h"
#include "testing/mailbox_builder/items/MsgFile.h"
#include "testing/mailbox_builder/items/Naming.h"
#include "testing/mailbox_builder/items/People.h"
#include "testing/mailbox_builder/items/Wording.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

namespace mailbox_builder {
namespace {

struct Releasing {
    void operator()(IUnknown* object) const noexcept { object->Release(); }
};
using HeldStorage = std::unique_ptr<IStorage, Releasing>;

HeldStorage OpenFile(const Bytes& bytes) {
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
    std::memcpy(GlobalLock(block), bytes.data(), bytes.size());
    GlobalUnlock(block);
    ILockBytes* array = nullptr;
    EXPECT_TRUE(SUCCEEDED(CreateILockBytesOnHGlobal(block, TRUE, &array)));
    const std::unique_ptr<ILockBytes, Releasing> held(array);
    IStorage* storage = nullptr;
    EXPECT_TRUE(
        SUCCEEDED(StgOpenStorageOnILockBytes(array, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, nullptr, 0, &storage)));
    return HeldStorage(storage);
}

HeldStorage OpenStorageIn(IStorage& parent, const char* name) {
    IStorage* storage = nullptr;
    EXPECT_TRUE(SUCCEEDED(
        parent.OpenStorage(Wide(name).c_str(), nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, nullptr, 0, &storage)))
        << name;
    return HeldStorage(storage);
}

Bytes ReadStream(IStorage& storage, const char* name) {
    IStream* raw = nullptr;
    if (FAILED(storage.OpenStream(Wide(name).c_str(), nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &raw))) {
        ADD_FAILURE() << name << " is not there";
        return {};
    }
    const std::unique_ptr<IStream, Releasing> stream(raw);
    Bytes bytes(100'000);
    ULONG got = 0;
    EXPECT_TRUE(SUCCEEDED(stream->Read(bytes.data(), static_cast<ULONG>(bytes.size()), &got)));
    bytes.resize(got);
    return bytes;
}

// The eight bytes of a property in a stream of properties.
std::uint64_t EntryOf(const Bytes& list, std::size_t header, std::uint32_t tag) {
    const localmapi::ByteView view(list);
    EXPECT_EQ((list.size() - header) % 16, 0u);
    std::uint32_t last = 0;
    for (std::size_t at = header; at < list.size(); at += 16) {
        EXPECT_GT(view.U32(at), last) << "tags ascend";
        last = view.U32(at);
        if (view.U32(at) == tag) {
            EXPECT_EQ(view.U32(at + 4), 6u);
            return view.U64(at + 8);
        }
    }
    ADD_FAILURE() << std::hex << tag << " is not there";
    return 0;
}

Message Sample() {
    Message inner;
    inner.properties.Set(PR_IMPORTANCE, 2);
    SetSubject(inner.properties, Wide("RE: "), Wide("inside"));
    Set(inner.properties, PidLidLocation, Wide("Quay"));
    Message message;
    message.properties.Set(PR_MESSAGE_CLASS, Wide("IPM.Note"))
        .Set(PR_SUBJECT, Wide("\u0416abc"))
        .Set(PR_CREATION_TIME, Time{0x0102030405060708});
    Set(message.properties, PidNameKeywords, std::vector<CStringW>{Wide("one"), Wide("two!")});
    Set(message.properties, PidLidReminderSet, true);
    message.recipients.push_back(Recipient(RecipientType::Cc, Outsider(Wide("Luca"), Wide("luca@example.org"))));
    message.attachments.push_back(AttachBytes(Wide("a.txt"), AsBytes("content"), Wide("text/plain")));
    message.attachments.push_back(AttachMessage(inner));
    return message;
}

TEST(MsgFile, HoldsAMessageAsTheFormatSays) {
    const Bytes file = MsgFileOf(Sample());
    const HeldStorage root = OpenFile(file);
    ASSERT_TRUE(root);
    CLSID storageClass{};
    EXPECT_TRUE(SUCCEEDED(ReadClassStg(root.get(), &storageClass)));
    EXPECT_EQ(storageClass.Data1, 0x00020D0Bu);

    const Bytes list = ReadStream(*root, "__properties_version1.0");
    const localmapi::ByteView header(list);
    EXPECT_EQ(header.U32(8), 1u);
    EXPECT_EQ(header.U32(12), 2u);
    EXPECT_EQ(header.U32(16), 1u);
    EXPECT_EQ(header.U32(20), 2u);
    EXPECT_EQ(EntryOf(list, 32, PR_CREATION_TIME), 0x0102030405060708u);
    EXPECT_EQ(EntryOf(list, 32, PR_SUBJECT), 10u) << "four units and a terminator that is not stored";
    EXPECT_EQ(ReadStream(*root, "__substg1.0_0037001F"), AsBytes(WideView(Wide("\u0416abc"))));
    EXPECT_NE(EntryOf(list, 32, PR_STORE_SUPPORT_MASK) & 0x00040000, 0u);

    // The names in the order in which they came: "Keywords" of the second set that all files know, then a number.
    EXPECT_EQ(EntryOf(list, 32, 0x8000101F), 8u);
    EXPECT_EQ(ReadStream(*root, "__substg1.0_8000101F"), ByteWriter().U32(8).U32(10).Take());
    EXPECT_EQ(ReadStream(*root, "__substg1.0_8000101F-00000001"), AsBytes(WideView(Wide("two!").c_str(), 5)));
    EXPECT_EQ(EntryOf(list, 32, 0x8001000B), 1u);
    const HeldStorage names = OpenStorageIn(*root, "__nameid_version1.0");
    ASSERT_TRUE(names);
    EXPECT_EQ(ReadStream(*names, "__substg1.0_00020102"),
              ByteWriter().Append(BytesOf(PSETID_Common)).Append(BytesOf(PSETID_Appointment)).Take());
    EXPECT_EQ(ReadStream(*names, "__substg1.0_00030102"),
              ByteWriter().U32(0).U16(5).U16(0).U32(0x8503).U16(6).U16(1).U32(0x8208).U16(8).U16(2).Take());
    EXPECT_EQ(ReadStream(*names, "__substg1.0_00040102"),
              ByteWriter().U32(16).Append(AsBytes(WideView(Wide("Keywords")))).Take());
    // Buckets: the checksum of "Keywords" is 0x2EDA4D3B; 0x1000 + ((hash xor kind) mod 31).
    EXPECT_EQ(ReadStream(*names, "__substg1.0_10150102"), ByteWriter().U32(0x2EDA4D3B).U16(5).U16(0).Take());
    EXPECT_EQ(ReadStream(*names, "__substg1.0_100F0102"), ByteWriter().U32(0x8503).U16(6).U16(1).Take());
}

TEST(MsgFile, HoldsRecipientsAttachmentsAndMessagesWithin) {
    const HeldStorage root = OpenFile(MsgFileOf(Sample()));
    ASSERT_TRUE(root);
    const HeldStorage recipient = OpenStorageIn(*root, "__recip_version1.0_#00000000");
    ASSERT_TRUE(recipient);
    EXPECT_EQ(EntryOf(ReadStream(*recipient, "__properties_version1.0"), 8, PR_RECIPIENT_TYPE), 2u);
    const HeldStorage file = OpenStorageIn(*root, "__attach_version1.0_#00000000");
    ASSERT_TRUE(file);
    EXPECT_EQ(ReadStream(*file, "__substg1.0_37010102"), AsBytes("content"));
    const HeldStorage holder = OpenStorageIn(*root, "__attach_version1.0_#00000001");
    ASSERT_TRUE(holder);
    const Bytes list = ReadStream(*holder, "__properties_version1.0");
    EXPECT_EQ(EntryOf(list, 8, PR_ATTACH_NUM), 1u);
    EXPECT_EQ(EntryOf(list, 8, PR_ATTACH_DATA_OBJ), 0x1FFFFFFFFu);
    const HeldStorage inner = OpenStorageIn(*holder, "__substg1.0_3701000D");
    ASSERT_TRUE(inner);
    const Bytes innerList = ReadStream(*inner, "__properties_version1.0");
    EXPECT_EQ(EntryOf(innerList, 24, PR_IMPORTANCE), 2u);
    EXPECT_EQ(ReadStream(*inner, "__substg1.0_0037001F"), AsBytes(WideView(Wide("RE: inside"))));
    EXPECT_EQ(EntryOf(innerList, 24, 0x8002001F), 10u) << "names are those of the whole file";
}

TEST(MsgFile, IsTheSameEachTime) {
    EXPECT_TRUE(MsgFileOf(Sample()) == MsgFileOf(Sample()));
}

}  // namespace
}  // namespace mailbox_builder
