// Properties as streams, and compound files within properties.
#include "localmapi/object/ValueStreams.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/GlobalMemory.h"
#include "tests/localmapi/object/TestObject.h"
#include "tests/localmapi/support/LeakCheck.h"

namespace localmapi::testing {

namespace {

using ObjectStreams = LeakCheck;

LARGE_INTEGER By(LONGLONG distance) {
    LARGE_INTEGER move;
    move.QuadPart = distance;
    return move;
}

// Bytes that end early: what a file that is cut short looks like.
class BrokenBytes final : public ByteSource {
public:
    std::uint64_t Size() const noexcept override { return 100; }
    Status ReadAt(std::uint64_t offset, std::span<std::byte> out) override {
        if (offset + out.size() > 50) {
            return Error{ErrorCode::ReadFailed, "the file is cut short"};
        }
        std::fill(out.begin(), out.end(), std::byte{'.'});
        return {};
    }
};

TEST_F(ObjectStreams, HoldTheValueWithoutTerminator) {
    Subject subject;
    subject.Scratch().SetBytes(PR_BODY_W, Utf16("wide"));
    subject.Scratch().SetBytes(PR_SUBJECT_A, "narrow");
    subject.Scratch().SetBytes(PR_ENTRYID, std::string("\0\1", 2));
    subject.Scratch().Set(LongValue(PR_IMPORTANCE, 1));
    EXPECT_EQ(subject.Stream(PR_BODY_W), Utf16("wide"));
    EXPECT_EQ(subject.Stream(PR_BODY_A), "wide");
    EXPECT_EQ(subject.Stream(PR_SUBJECT_W), Utf16("narrow"));
    EXPECT_EQ(subject.Stream(PROP_TAG(PT_UNSPECIFIED, PROP_ID(PR_SUBJECT_A)), MAPI_UNICODE), Utf16("narrow"));
    EXPECT_EQ(subject.Stream(PR_ENTRYID), std::string("\0\1", 2));
    EXPECT_EQ(subject.Stream(PR_HTML), "not found");
    EXPECT_EQ(subject.Stream(PR_IMPORTANCE), "no support");

    ComPtr<IUnknown> storage;
    EXPECT_EQ(subject.object->OpenProperty(PR_BODY_W, &IID_IStorage, 0, 0, storage.Receive()),
              MAPI_E_INTERFACE_NOT_SUPPORTED);
}

TEST_F(ObjectStreams, ReadSeekAndCloneByPosition) {
    Subject subject;
    subject.Scratch().SetBytes(PR_ENTRYID, "0123456789");
    ComPtr<IUnknown> opened;
    ASSERT_EQ(subject.object->OpenProperty(PR_ENTRYID, &IID_IStream, 0, 0, opened.Receive()), S_OK);
    const auto stream = QueryFor<IStream>(opened.Get(), IID_IStream);
    ULARGE_INTEGER at;
    ASSERT_EQ(stream->Seek(By(-3), STREAM_SEEK_END, &at), S_OK);
    EXPECT_EQ(at.QuadPart, 7U);
    ComPtr<IStream> clone;
    ASSERT_EQ(stream->Clone(clone.Receive()), S_OK);
    EXPECT_EQ(ReadAllOf(*stream), "789");
    EXPECT_EQ(ReadAllOf(*clone), "789");
    ASSERT_EQ(stream->Seek(By(-9), STREAM_SEEK_CUR, nullptr), S_OK);
    EXPECT_EQ(ReadAllOf(*stream), "123456789");
    EXPECT_EQ(stream->Seek(By(-11), STREAM_SEEK_CUR, nullptr), STG_E_INVALIDFUNCTION);
    ASSERT_EQ(stream->Seek(By(20), STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(ReadAllOf(*stream), "") << "beyond the end";
    EXPECT_EQ(stream->Write("x", 1, nullptr), STG_E_ACCESSDENIED);
    STATSTG stat{};
    ASSERT_EQ(stream->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_EQ(stat.cbSize.QuadPart, 10U);
}

TEST_F(ObjectStreams, ABrokenValueFailsWhereItBreaks) {
    const auto stream =
        MakeReadStream(std::make_unique<BrokenBytes>(), nullptr, std::make_shared<std::recursive_mutex>());
    std::array<char, 50> piece;
    ULONG got = 0;
    EXPECT_EQ(stream->Read(piece.data(), 50, &got), S_OK);
    EXPECT_EQ(got, 50U);
    EXPECT_EQ(stream->Read(piece.data(), 50, &got), STG_E_READFAULT);
    EXPECT_EQ(got, 0U);
    BrokenBytes bytes;
    EXPECT_EQ(ReadAll(bytes, 1000).Failure().code, ErrorCode::ReadFailed);
    EXPECT_EQ(ReadAll(bytes, 99).Failure().code, ErrorCode::TooLarge);
}

TEST_F(ObjectStreams, AStreamKeepsItsObject) {
    ComPtr<IUnknown> opened;
    PropertyNames names;
    {
        auto source = std::make_unique<ScratchProperties>();
        source->SetBytes(PR_ENTRYID, "kept");
        const auto object = MakeObject<TestObject>(std::move(source), names);
        ASSERT_EQ(object->OpenProperty(PR_ENTRYID, &IID_IStream, 0, 0, opened.Receive()), S_OK);
    }
    EXPECT_EQ(LiveObjects(), 2);
    EXPECT_EQ(ReadAllOf(*QueryFor<IStream>(opened.Get(), IID_IStream)), "kept");
}

TEST_F(ObjectStreams, ACompoundFileInAValueOpens) {
    constexpr DWORD kMode = STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
    ComPtr<ILockBytes> memory;
    ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, memory.Receive()), S_OK);
    {
        ComPtr<IStorage> made;
        ComPtr<IStream> content;
        ASSERT_EQ(StgCreateDocfileOnILockBytes(memory.Get(), kMode, 0, made.Receive()), S_OK);
        ASSERT_EQ(made->CreateStream("one"_w, kMode, 0, 0, content.Receive()), S_OK);
        ASSERT_EQ(content->Write("inside", 6, nullptr), S_OK);
    }
    STATSTG stat{};
    ASSERT_EQ(memory->Stat(&stat, STATFLAG_NONAME), S_OK);
    Bytes bytes(static_cast<std::size_t>(stat.cbSize.QuadPart));
    ASSERT_EQ(memory->ReadAt({}, bytes.data(), static_cast<ULONG>(bytes.size()), nullptr), S_OK);
    const auto lock = std::make_shared<std::recursive_mutex>();
    {
        const auto storage = OpenStorageIn(std::make_unique<OwnedBytes>(bytes), nullptr, lock);
        ASSERT_TRUE(storage) << storage.Failure().text;
        ComPtr<IStream> found;
        ASSERT_EQ((*storage)->OpenStream("one"_w, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, found.Receive()), S_OK);
        EXPECT_EQ(ReadAllOf(*found), "inside");
    }
    bytes.resize(300);
    EXPECT_FALSE(OpenStorageIn(std::make_unique<OwnedBytes>(bytes), nullptr, lock));
}

}  // namespace

}  // namespace localmapi::testing
