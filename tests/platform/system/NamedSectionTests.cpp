// Named sections within one process: making, finding, mapping, and the end of names and views.
#include "platform/NamedSection.h"
#include "tests/platform/system/SystemTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace {

// A name that no other run of these tests uses.
CStringW UniqueName(const char* kind) {
    const std::string text = "vx:%%1234%%" + std::to_string(GetCurrentProcessId()) + kind;
    return CStringW(text.begin(), text.end());
}

HANDLE Create(const CStringW& name, DWORD size) {
    return CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, name.c_str());
}

// The last error of a call that has to fail.
template <typename Call>
DWORD ErrorOf(Call&& call) {
    SetLastError(0);
    EXPECT_FALSE(call());
    return GetLastError();
}

TEST(NamedSection, IsFoundByItsNameAndHoldsTheSameBytes) {
    const CStringW name = UniqueName("found.bin");
    SetLastError(ERROR_MORE_DATA);
    HANDLE first = Create(name, 1234);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(GetLastError(), 0U);
    auto* written = static_cast<char*>(MapViewOfFile(first, FILE_MAP_WRITE, 0, 0, 0));
    ASSERT_NE(written, nullptr);
    EXPECT_EQ(std::count(written, written + 1234, '\0'), 1234) << "fresh memory is zero";
    std::copy_n("payload", 7, written);
    written[1233] = '!';

    HANDLE second = Create(name, 1234);
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_ALREADY_EXISTS});
    HANDLE third = OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str());
    ASSERT_NE(third, nullptr);
    for (HANDLE handle : {second, third}) {
        const auto* read = static_cast<const char*>(MapViewOfFile(handle, FILE_MAP_READ, 0, 0, 0));
        ASSERT_NE(read, nullptr);
        EXPECT_EQ(std::memcmp(read, "payload", 7), 0);
        EXPECT_EQ(read[1233], '!');
        EXPECT_TRUE(UnmapViewOfFile(read));
    }
    EXPECT_TRUE(UnmapViewOfFile(written));
    for (HANDLE handle : {first, second, third}) {
        EXPECT_TRUE(CloseHandle(handle));
    }
    EXPECT_EQ(ErrorOf([&] { return OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str()); }),
              DWORD{ERROR_FILE_NOT_FOUND});
}

TEST(NamedSection, KeepsItsNameUntilTheLastHandleAndItsBytesUntilTheLastView) {
    const CStringW name = UniqueName("life.bin");
    HANDLE first = Create(name, 100);
    HANDLE second = OpenFileMappingW(FILE_MAP_WRITE | FILE_MAP_READ, FALSE, name.c_str());
    ASSERT_NE(second, nullptr);
    EXPECT_TRUE(CloseHandle(first));
    auto* view = static_cast<char*>(MapViewOfFile(second, FILE_MAP_WRITE, 0, 0, 100));
    ASSERT_NE(view, nullptr);
    HANDLE third = OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str());
    EXPECT_NE(third, nullptr) << "the second handle still carries the name";
    EXPECT_TRUE(CloseHandle(third));
    EXPECT_TRUE(CloseHandle(second));

    view[99] = 'x';
    EXPECT_EQ(view[99], 'x');
    HANDLE fresh = Create(name, 50);
    EXPECT_EQ(GetLastError(), 0U) << "the name is free again";
    const auto* other = static_cast<const char*>(MapViewOfFile(fresh, FILE_MAP_READ, 0, 0, 0));
    ASSERT_NE(other, nullptr);
    view[0] = 'y';
    EXPECT_EQ(other[0], '\0');
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_TRUE(UnmapViewOfFile(other));
    EXPECT_TRUE(CloseHandle(fresh));
}

TEST(NamedSection, TakesNamesThatAreNoFileNames) {
    const CStringW names[] = {{'r', 0xE9, 's', 'u', 'm', 0xE9, '.', 'p', 'd', 'f'},
                              {'a', '/', 'b', ':', '*', '?', '"', '<', '%', 0xD83D, 0xDE00},
                              CStringW(4'000, 'n')};
    for (const CStringW& ending : names) {
        const CStringW name = UniqueName("") + ending;
        HANDLE made = Create(name, 9);
        ASSERT_NE(made, nullptr) << testing::PrintToString(name);
        HANDLE found = OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str());
        EXPECT_NE(found, nullptr);
        EXPECT_EQ(OpenFileMappingW(FILE_MAP_READ, FALSE, (name + WCHAR{'x'}).c_str()), nullptr);
        EXPECT_TRUE(CloseHandle(found));
        EXPECT_TRUE(CloseHandle(made));
    }
}

TEST(NamedSection, MapsOnlyWhatItsSizeAndTheHandlesRightsAllow) {
    const CStringW name = UniqueName("rights.bin");
    HANDLE made = Create(name, 100'000);
    HANDLE readOnly = OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str());
    ASSERT_NE(readOnly, nullptr);
    const struct {
        const char* name;
        HANDLE handle;
        DWORD access;
        DWORD offset;
        SIZE_T bytes;
        DWORD error;  // 0: the view exists
    } rows[] = {
        {"all", made, FILE_MAP_ALL_ACCESS, 0, 0, 0},
        {"read", readOnly, FILE_MAP_READ, 0, 0, 0},
        {"private copy of a read-only handle", readOnly, FILE_MAP_COPY, 0, 0, 0},
        {"write without the right", readOnly, FILE_MAP_WRITE, 0, 0, ERROR_ACCESS_DENIED},
        {"second granule", made, FILE_MAP_WRITE, 65'536, 34'464, 0},
        {"offset between granules", made, FILE_MAP_WRITE, 4'096, 0, ERROR_MAPPED_ALIGNMENT},
        {"past the end", made, FILE_MAP_READ, 0, 200'000, ERROR_ACCESS_DENIED},
        {"more than there is", made, FILE_MAP_READ, 65'536, SIZE_MAX - 65'535, ERROR_ACCESS_DENIED},
        {"a handle that never was", reinterpret_cast<HANDLE>(ULONG_PTR{0x12345678}), FILE_MAP_READ, 0, 0,
         ERROR_INVALID_HANDLE},
        {"no handle", nullptr, FILE_MAP_READ, 0, 0, ERROR_INVALID_HANDLE},
    };
    for (const auto& row : rows) {
        SetLastError(0);
        void* view = MapViewOfFile(row.handle, row.access, 0, row.offset, row.bytes);
        EXPECT_EQ(view != nullptr, row.error == 0) << row.name;
        EXPECT_EQ(GetLastError(), row.error) << row.name;
        EXPECT_TRUE(view == nullptr || UnmapViewOfFile(view)) << row.name;
    }
    EXPECT_TRUE(CloseHandle(readOnly));
    EXPECT_TRUE(CloseHandle(made));
}

TEST(NamedSection, KeepsAPrivateCopysChangesToItself) {
    const CStringW name = UniqueName("copy.bin");
    HANDLE made = Create(name, 10);
    auto* shared = static_cast<char*>(MapViewOfFile(made, FILE_MAP_WRITE, 0, 0, 0));
    auto* copy = static_cast<char*>(MapViewOfFile(made, FILE_MAP_COPY, 0, 0, 0));
    ASSERT_TRUE(shared != nullptr && copy != nullptr);
    copy[0] = 'c';
    EXPECT_EQ(shared[0], '\0');
    EXPECT_TRUE(UnmapViewOfFile(copy) && UnmapViewOfFile(shared) && CloseHandle(made));
}

TEST(NamedSection, TellsWhyItRefuses) {
    const CStringW name = UniqueName("refused.bin");
    const auto create = [&](DWORD protection, DWORD size) {
        return [=] { return CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, protection, 0, size, name.c_str()); };
    };
    EXPECT_EQ(ErrorOf(create(PAGE_READWRITE, 0)), DWORD{ERROR_INVALID_PARAMETER}) << "no size";
    EXPECT_EQ(ErrorOf(create(0x77, 10)), DWORD{ERROR_INVALID_PARAMETER}) << "no such protection";
    EXPECT_EQ(ErrorOf([&] { return OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str()); }),
              DWORD{ERROR_FILE_NOT_FOUND});
    EXPECT_EQ(ErrorOf([&] { return OpenFileMappingW(FILE_MAP_READ, FALSE, nullptr); }), DWORD{ERROR_INVALID_PARAMETER});

    HANDLE handle = Create(name, 10);
    void* view = MapViewOfFile(handle, FILE_MAP_READ, 0, 0, 0);
    EXPECT_TRUE(CloseHandle(handle));
    EXPECT_EQ(ErrorOf([&] { return CloseHandle(handle); }), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_EQ(ErrorOf([&] { return UnmapViewOfFile(view); }), DWORD{ERROR_INVALID_ADDRESS});
    EXPECT_EQ(ErrorOf([&] { return UnmapViewOfFile(nullptr); }), DWORD{ERROR_INVALID_ADDRESS});
}

}  // namespace
