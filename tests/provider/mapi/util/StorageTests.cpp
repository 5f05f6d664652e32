// Storages and streams into memory and into files, with the platform's own structured storage.
#include "platform/GlobalMemory.h"
#include "platform/ResultCodes.h"
#include "platform/Storage.h"
#include "provider/Common/Holders.h"
#include "provider/MAPIUtils.h"
#include "tests/provider/mapi/util/ScriptedStream.h"
#include "tests/provider/mapi/util/TestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

namespace {

constexpr DWORD kExclusive = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;
constexpr CLSID kClass = OleGuid(0x00020D0B);
const std::string kContents(5000, 'c');

// A storage in memory with a class and one stream, "Data".
VxMapiPtr<IStorage> NewStorage() {
    VxMapiPtr<ILockBytes> bytes;
    VxMapiPtr<IStorage> storage;
    VxMapiPtr<IStream> stream;
    EXPECT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, &bytes), S_OK);
    EXPECT_EQ(StgCreateDocfileOnILockBytes(bytes, STGM_CREATE | kExclusive, 0, &storage), S_OK);
    EXPECT_EQ(storage->SetClass(kClass), S_OK);
    EXPECT_EQ(storage->CreateStream("Data"_w, kExclusive, 0, 0, &stream), S_OK);
    EXPECT_EQ(stream->Write(kContents.data(), static_cast<ULONG>(kContents.size()), nullptr), S_OK);
    return storage;
}

void ExpectCopyOfNewStorage(IStorage* copy) {
    STATSTG stat = {};
    ASSERT_EQ(copy->Stat(&stat, STATFLAG_NONAME), S_OK);
    EXPECT_TRUE(IsEqualGUID(stat.clsid, kClass));
    VxMapiPtr<IStream> stream;
    ASSERT_EQ(copy->OpenStream("Data"_w, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &stream), S_OK);
    std::string contents(kContents.size() + 1, '?');
    ULONG read = 0;
    EXPECT_GE(stream->Read(contents.data(), static_cast<ULONG>(contents.size()), &read), 0);
    contents.resize(read);
    EXPECT_EQ(contents, kContents);
}

// A storage whose copy is made by this test: it does not hang on how the platform copies one of its own.
class CopyingStorage : public vx_testing::StubStorage {
public:
    HRESULT STDMETHODCALLTYPE CopyTo(DWORD excludedCount, const IID* excluded, SNB excludedNames,
                                     IStorage* target) override {
        EXPECT_TRUE(excludedCount == 0 && excluded == nullptr && excludedNames == nullptr);
        VxMapiPtr<IStream> stream;
        EXPECT_EQ(target->SetClass(kClass), S_OK);
        EXPECT_EQ(target->CreateStream("Data"_w, kExclusive, 0, 0, &stream), S_OK);
        return stream->Write(kContents.data(), static_cast<ULONG>(kContents.size()), nullptr);
    }
};

// A storage that cannot be copied.
class BrokenStorage : public vx_testing::StubStorage {
public:
    HRESULT STDMETHODCALLTYPE CopyTo(DWORD, const IID*, SNB, IStorage*) override { return STG_E_READFAULT; }
};
constexpr auto& kReadFaultDecimal = "-2147287010";  // STG_E_READFAULT, 0x8003001E

// Whether a storage of the platform's can be copied into a simple one, for which replacing streams must be allowed.
bool CanCopyIntoSimpleStorages() {
    VxMapiPtr<ILockBytes> bytes;
    VxMapiPtr<IStorage> storage;
    VxMapiPtr<IStream> stream;
    return SUCCEEDED(CreateILockBytesOnHGlobal(nullptr, TRUE, &bytes))
           && SUCCEEDED(StgCreateDocfileOnILockBytes(bytes, STGM_SIMPLE | STGM_CREATE | kExclusive, 0, &storage))
           && SUCCEEDED(storage->CreateStream("Data"_w, STGM_CREATE | kExclusive, 0, 0, &stream));
}

TEST(StorageInMemory, TakesAStorageOfThePlatforms) {
    if (!CanCopyIntoSimpleStorages()) {
        GTEST_SKIP() << "this system's structured storage cannot be copied into a simple one";
    }
    const VxMapiPtr<IStorage> storage = NewStorage();
    std::vector<BYTE> bytes;
    ULONG size = 0;
    ASSERT_EQ(CMapiUtil::ReadStorageInMemory(storage, 0x100000, bytes, &size), S_OK);
    EXPECT_GT(size, kContents.size());
}

TEST(StorageInMemory, IsACompoundFileWithinTheLimit) {
    CopyingStorage source;
    IStorage* const storage = &source;
    std::vector<BYTE> bytes;
    ULONG size = 0;
    ASSERT_EQ(CMapiUtil::ReadStorageInMemory(storage, 0x100000, bytes, &size), S_OK);
    ASSERT_EQ(size, bytes.size());
    EXPECT_GT(size, kContents.size());

    VxMapiPtr<ILockBytes> lockBytes;
    VxMapiPtr<IStorage> copy;
    ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, &lockBytes), S_OK);
    ASSERT_EQ(lockBytes->WriteAt(ULARGE_INTEGER{}, bytes.data(), size, nullptr), S_OK);
    ASSERT_EQ(StgOpenStorageOnILockBytes(lockBytes, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, nullptr, 0, &copy),
              S_OK);
    ExpectCopyOfNewStorage(copy);

    ULONG exact = 0;
    EXPECT_EQ(CMapiUtil::ReadStorageInMemory(storage, size, bytes, &exact), S_OK);
    EXPECT_EQ(exact, size);
    EXPECT_EQ(CMapiUtil::ReadStorageInMemory(storage, size - 1, bytes, &exact), E_OUTOFMEMORY);
    EXPECT_EQ(exact, 0U);
    EXPECT_TRUE(bytes.empty());
}

TEST(StorageInMemory, GivesAFailedCopyOn) {
    BrokenStorage broken;
    std::vector<BYTE> bytes = {1};
    ULONG size = 1;
    const LogCapture log;
    EXPECT_EQ(CMapiUtil::ReadStorageInMemory(&broken, 0x100000, bytes, &size), STG_E_READFAULT);
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(log.Texts("ERROR"),
              std::vector<std::string>{std::string("pStorage->CopyTo failed. ") + kReadFaultDecimal});
    EXPECT_EQ(broken.References(), 1U);
}

TEST(StorageInFile, IsACompoundFileThatReplacesTheOldOne) {
    const TempFolder folder;
    const CStringW path = folder.File("copy.bin");
    WriteFile(path, std::string(100000, 'o'));
    const VxMapiPtr<IStorage> storage = NewStorage();
    ASSERT_EQ(CMapiUtil::SaveStorageInFile(storage, path), S_OK);
    VxMapiPtr<IStorage> copy;
    ASSERT_EQ(StgOpenStorage(path.c_str(), nullptr, STGM_READ | STGM_SHARE_DENY_WRITE, nullptr, 0, &copy), S_OK);
    ExpectCopyOfNewStorage(copy);
}

TEST(StorageInFile, LeavesNoFileBehindAFailure) {
    const TempFolder folder;
    const CStringW path = folder.File("copy.bin");
    BrokenStorage broken;
    const LogCapture log;
    EXPECT_EQ(CMapiUtil::SaveStorageInFile(&broken, path), STG_E_READFAULT);
    EXPECT_FALSE(std::filesystem::exists(ToPath(path)));
    const std::vector<std::string> errors = log.Texts("ERROR");
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_TRUE(errors[0].starts_with(std::string("pStorage->CopyTo. err: ") + kReadFaultDecimal + "; dest file: "));
    EXPECT_TRUE(errors[0].ends_with("copy.bin"));
}

TEST(StorageInFile, FailsWhereNoFileCanBeMade) {
    const TempFolder folder;
    const CStringW path = FromPath(folder.Path() / "no folder" / "copy.bin");
    const VxMapiPtr<IStorage> storage = NewStorage();
    const LogCapture log;
    const HRESULT hr = CMapiUtil::SaveStorageInFile(storage, path);
    EXPECT_LT(hr, 0);
    const std::vector<std::string> errors = log.Texts("ERROR");
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_TRUE(errors[0].starts_with("StgCreateDocfile failed. err: " + std::to_string(hr) + "; file: ")) << errors[0];
}

TEST(StreamInFile, HoldsTheStreamsBytes) {
    const TempFolder folder;
    for (const std::size_t size : {0U, 1U, 4095U, 4096U, 4097U, 70000U}) {
        SCOPED_TRACE(size);
        vx_testing::ScriptedStream stream;
        stream.excess = 9;  // claims are not believed
        for (std::size_t i = 0; i < size; ++i) {
            stream.bytes.push_back(static_cast<BYTE>(i % 251));
        }
        const CStringW path = FromPath(folder.Path() / ToPath(CStringW({'s', 0x00E4, 0x4E2D})));
        WriteFile(path, std::string(80000, 'o'));
        EXPECT_EQ(CMapiUtil::SaveStreamInFile(&stream, path), S_OK);
        EXPECT_EQ(ReadFile(path), std::string(stream.bytes.begin(), stream.bytes.end()));
    }
}

TEST(StreamInFile, GivesTheResultOfTheLastRead) {
    const TempFolder folder;
    vx_testing::ScriptedStream stream;
    stream.bytes.assign(10000, 'a');
    stream.failAt = 8192;
    EXPECT_EQ(CMapiUtil::SaveStreamInFile(&stream, folder.File("a")), STG_E_READFAULT);
    EXPECT_EQ(ReadFile(folder.File("a")), std::string(8192, 'a')) << "what came stays";
}

TEST(StreamInFile, TellsAFileThatCannotBeOpened) {
    const TempFolder folder;
    vx_testing::ScriptedStream stream;
    stream.bytes.assign(10, 'a');
    const CStringW path = FromPath(folder.Path() / "no folder" / "a");
    EXPECT_EQ(static_cast<unsigned>(CMapiUtil::SaveStreamInFile(&stream, path)), 0x80070052U);
    EXPECT_EQ(stream.reads, 0);
}

TEST(StreamInFile, TellsAFileThatTakesNoMore) {
    if (!std::filesystem::exists("/dev/full")) {
        GTEST_SKIP() << "no device here that is always full";
    }
    vx_testing::ScriptedStream endless;
    endless.endless = true;
    EXPECT_EQ(CMapiUtil::SaveStreamInFile(&endless, "/dev/full"_w), STG_E_WRITEFAULT);
    vx_testing::ScriptedStream small;  // less than the file's own buffer, which is written at the end only
    small.bytes.assign(10, 'a');
    EXPECT_EQ(CMapiUtil::SaveStreamInFile(&small, "/dev/full"_w), STG_E_WRITEFAULT);
}

}  // namespace
