// What only Linux' shared memory objects raise: their names, other processes, leftovers, foreign objects.
#include "platform/NamedSection.h"
#include "tests/platform/system/SystemTestSupport.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

CStringW UniqueName(const char* kind) {
    const std::string text = "vx:%%64%%" + std::to_string(::getpid()) + kind;
    return CStringW(text.begin(), text.end());
}

HANDLE Create(const CStringW& name, DWORD size) {
    return CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, size, name.c_str());
}

bool ObjectExists(const CStringW& name) {
    const int object = ::shm_open(NamedSectionObjectName(name).c_str(), O_RDONLY, 0);
    if (object >= 0) {
        ::close(object);
    }
    return object >= 0;
}

// Another process of this program, which does one thing and tells its exit status.
class Child {
public:
    explicit Child(const std::function<int()>& body) {
        std::fflush(nullptr);  // or the child would print what is still buffered once more
        m_id = ::fork();
        if (m_id == 0) {
            ::_exit(body());
        }
    }

    int Wait() const {
        int status = 0;
        ::waitpid(m_id, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }

private:
    pid_t m_id = -1;
};

TEST(NamedSectionObjectName, IsTheNameInPercentForm) {
    CStringW accented = "vx:%%1234%%r_sum_.pdf"_w;
    accented[12] = accented[16] = 0xE9;
    const struct {
        const char* name;
        CStringW section;
        const char* object;
    } rows[] = {
        {"plain", "Report-1_a.TXT"_w, "/vx-Report-1_a.TXT"},
        {"a blob's name", accented, "/vx-vx%3A%25%251234%25%25r%C3%A9sum%C3%A9.pdf"},
        {"separators", "a/b\\c"_w, "/vx-a%2Fb%5Cc"},
        {"a dot is no folder", ".."_w, "/vx-.."},
        {"what looks encoded", "%2F#~"_w, "/vx-%252F%23%7E"},
        {"outside the plane", CStringW({0xD83D, 0xDE00}), "/vx-%F0%9F%98%80"},
        {"unpaired surrogates stay apart", CStringW({0xDE00, 0xD83D}), "/vx-%ED%B8%80%ED%A0%BD"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(NamedSectionObjectName(row.section), row.object) << row.name;
    }
}

TEST(NamedSectionObjectName, OfALongNameIsItsBeginningAndItsHash) {
    // The longest name in percent form, and the first that is hashed.
    EXPECT_EQ(NamedSectionObjectName(CStringW(246, 'a')), "/vx-" + std::string(246, 'a'));
    const std::string hashed = NamedSectionObjectName(CStringW(247, 'a'));
    EXPECT_EQ(hashed.size(), 250U);
    EXPECT_EQ(hashed.substr(0, 218), "/vx-" + std::string(213, 'a') + "#");
    EXPECT_EQ(hashed.substr(218), "4f22deda9cfdc98e488b286eac64139e");

    // Never cut inside a percent form: 71 forms have 213 digits, and one more unit in front shifts them.
    EXPECT_EQ(NamedSectionObjectName(CStringW(300, '/')).find('#'), 4U + 213U);
    EXPECT_EQ(NamedSectionObjectName(WCHAR{'a'} + CStringW(300, '/')).find('#'), 4U + 211U);
    EXPECT_NE(NamedSectionObjectName(CStringW(300, 'a') + WCHAR{'b'}),
              NamedSectionObjectName(CStringW(300, 'a') + WCHAR{'c'}));
}

TEST(NamedSection, IsReadByAnotherProcessWithoutThisCode) {
    const CStringW name = UniqueName("plain.bin");
    HANDLE handle = Create(name, 64);
    auto* view = static_cast<char*>(MapViewOfFile(handle, FILE_MAP_WRITE, 0, 0, 0));
    ASSERT_NE(view, nullptr);
    std::memcpy(view, "hello", 6);
    const Child consumer([&] {
        const int object = ::shm_open(NamedSectionObjectName(name).c_str(), O_RDONLY, 0);
        struct stat status = {};
        if (object < 0 || ::fstat(object, &status) != 0 || status.st_size != 64 || (status.st_mode & 0777) != 0600) {
            return 1;
        }
        const void* bytes = ::mmap(nullptr, 64, PROT_READ, MAP_SHARED, object, 0);
        return bytes != MAP_FAILED && std::strcmp(static_cast<const char*>(bytes), "hello") == 0 ? 0 : 2;
    });
    EXPECT_EQ(consumer.Wait(), 0);
    EXPECT_TRUE(CloseHandle(handle));
    EXPECT_TRUE(UnmapViewOfFile(view));
    EXPECT_FALSE(ObjectExists(name));
}

TEST(NamedSection, LivesOnInTheProcessThatStillHasItOpen) {
    const CStringW name = UniqueName("handover.bin");
    int ready[2];
    int leave[2];
    ASSERT_TRUE(::pipe(ready) == 0 && ::pipe(leave) == 0);
    HANDLE handle = Create(name, 64);
    const Child other([&] {
        HANDLE opened = OpenFileMappingW(FILE_MAP_READ | FILE_MAP_WRITE, FALSE, name.c_str());
        char token = 'r';
        const bool isPassed = ::write(ready[1], &token, 1) == 1 && ::read(leave[0], &token, 1) == 1;
        return opened != nullptr && isPassed && CloseHandle(opened) ? 0 : 1;
    });
    char token = 0;
    ASSERT_EQ(::read(ready[0], &token, 1), 1);
    EXPECT_TRUE(CloseHandle(handle));
    EXPECT_TRUE(ObjectExists(name)) << "the other process still uses it";
    ASSERT_EQ(::write(leave[1], &token, 1), 1);
    EXPECT_EQ(other.Wait(), 0);
    EXPECT_FALSE(ObjectExists(name)) << "the other process was the last";
    for (const int end : {ready[0], ready[1], leave[0], leave[1]}) {
        ::close(end);
    }
}

TEST(NamedSection, LeavesNothingBehindWhenAProcessEndsNormally) {
    const CStringW name = UniqueName("forgotten.bin");
    const Child forgetful([&]() -> int {
        if (Create(name, 64) == nullptr) {
            return 1;
        }
        std::exit(0);  // as at the end of main, with the handle still open
    });
    EXPECT_EQ(forgetful.Wait(), 0);
    EXPECT_FALSE(ObjectExists(name));
}

TEST(NamedSection, OfAParentSurvivesAChildThatClosesItsCopy) {
    const CStringW name = UniqueName("inherited.bin");
    HANDLE handle = Create(name, 64);
    EXPECT_EQ(Child([&] { return CloseHandle(handle) ? 0 : 1; }).Wait(), 0);
    EXPECT_TRUE(ObjectExists(name));
    EXPECT_TRUE(CloseHandle(handle));
    EXPECT_FALSE(ObjectExists(name));
}

TEST(NamedSection, ReplacesWhatAKilledProcessLeft) {
    const CStringW name = UniqueName("leftover.bin");
    EXPECT_EQ(Child([&] { return Create(name, 16) != nullptr ? 0 : 1; }).Wait(), 0);
    ASSERT_TRUE(ObjectExists(name)) << "the child ended without any clean-up";
    HANDLE handle = Create(name, 64);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(GetLastError(), 0U);
    EXPECT_NE(MapViewOfFile(handle, FILE_MAP_READ, 0, 0, 64), nullptr);
    EXPECT_TRUE(CloseHandle(handle));

    EXPECT_EQ(Child([&] { return Create(name, 16) != nullptr ? 0 : 1; }).Wait(), 0);
    EXPECT_EQ(OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(ObjectExists(name));
}

TEST(NamedSection, IsMadeOnceByManyProcessesAtATime) {
    const CStringW name = UniqueName("race.bin");
    for (int round = 0; round < 20; ++round) {
        HANDLE anchor = round % 2 == 0 ? nullptr : Create(name, 64);
        std::vector<Child> racers;
        racers.reserve(4);
        for (int i = 0; i < 4; ++i) {
            racers.emplace_back([&] {
                for (int turn = 0; turn < 20; ++turn) {
                    HANDLE handle = Create(name, 64);
                    void* view = handle == nullptr ? nullptr : MapViewOfFile(handle, FILE_MAP_WRITE, 0, 0, 64);
                    if (view == nullptr) {
                        return 1;
                    }
                    std::memset(view, turn, 64);  // a view without its memory would end the process here
                    UnmapViewOfFile(view);
                    CloseHandle(handle);
                }
                return 0;
            });
        }
        for (const Child& racer : racers) {
            EXPECT_EQ(racer.Wait(), 0);
        }
        EXPECT_TRUE(anchor == nullptr || CloseHandle(anchor));
        EXPECT_FALSE(ObjectExists(name));
    }
}

TEST(NamedSection, WaitsForAnObjectThatIsStillBeingMade) {
    const CStringW name = UniqueName("making.bin");
    const std::string objectName = NamedSectionObjectName(name);
    const int object = ::shm_open(objectName.c_str(), O_CREAT | O_EXCL | O_RDWR, 0600);
    ASSERT_TRUE(object >= 0 && ::flock(object, LOCK_SH) == 0);
    std::thread maker([object] {
        Sleep(30);
        EXPECT_EQ(::ftruncate(object, 64), 0);
    });
    HANDLE joined = Create(name, 64);
    const DWORD error = GetLastError();
    maker.join();
    EXPECT_NE(joined, nullptr);
    EXPECT_EQ(error, ERROR_ALREADY_EXISTS);
    ::close(object);
    EXPECT_TRUE(CloseHandle(joined));
    EXPECT_FALSE(ObjectExists(name));
}

TEST(NamedSection, NeverJoinsAnObjectThatACopyWouldOverrun) {
    const CStringW name = UniqueName("small.bin");
    HANDLE small = Create(name, 64);
    EXPECT_EQ(Create(name, 65), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_TRUE(CloseHandle(small));
    EXPECT_FALSE(ObjectExists(name));
}

TEST(NamedSection, RefusesAnObjectThatOthersCouldReach) {
    const CStringW name = UniqueName("open.bin");
    const std::string object = NamedSectionObjectName(name);
    const int planted = ::shm_open(object.c_str(), O_CREAT | O_EXCL | O_RDWR, 0600);
    ASSERT_GE(planted, 0);
    ASSERT_TRUE(::fchmod(planted, 0666) == 0 && ::ftruncate(planted, 64) == 0);
    EXPECT_EQ(Create(name, 64), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(OpenFileMappingW(FILE_MAP_READ, FALSE, name.c_str()), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    ::close(planted);
    ::shm_unlink(object.c_str());
}

TEST(NamedSection, TellsAtOnceWhenTheMemoryIsNotThere) {
    struct statvfs memory = {};
    if (::statvfs("/dev/shm", &memory) != 0 || memory.f_blocks == 0) {
        GTEST_SKIP() << "the shared memory of this system has no limit";
    }
    const CStringW name = UniqueName("huge.bin");
    const ULONGLONG size = ULONGLONG{memory.f_blocks} * memory.f_frsize + 1;
    EXPECT_EQ(CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, static_cast<DWORD>(size >> 32),
                                 static_cast<DWORD>(size), name.c_str()),
              nullptr);
    EXPECT_EQ(GetLastError(), ERROR_COMMITMENT_LIMIT);
    EXPECT_FALSE(ObjectExists(name));
}

}  // namespace
