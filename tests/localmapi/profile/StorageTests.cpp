// The profiles folder: names, defaults, damaged files, and several programs at once.
#include "localmapi/profile/FileNames.h"
#include "localmapi/profile/ProfileText.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "tests/localmapi/profile/ProfileTestSupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#ifndef _WIN32
#include <csignal>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace localmapi::profile::testing {
namespace {

// Adds an empty service, as another program would.
Status AddOne(const ProfileStorage& storage, WideView profile) {
    return storage.Change(profile, [](Profile& changed) -> Status {
        changed.services.push_back(Service{changed.NewSection(NewUid()), {}});
        return {};
    });
}

std::size_t CountServices(const ProfileStorage& storage, WideView profile) {
    const auto loaded = storage.Load(profile);
    EXPECT_TRUE(loaded) << loaded.Failure().text;
    return loaded ? loaded->services.size() : 0;
}

TEST(ProfileStorage, KeepsProfilesOfAnyName) {
    const std::string names[] = {"Outlook",
                                 "a/b\\c",
                                 "..",
                                 ".",
                                 "100%",
                                 "trailing ",
                                 "trailing",
                                 "NUL",
                                 "com1.txt",
                                 "line\nbreak",
                                 "\xC3\x9C"
                                 "ber",
                                 "lock",
                                 "default-profile.txt",
                                 "a~2",
                                 "x.profile",
                                 std::string(300, 'n') + "1",
                                 std::string(300, 'n') + "2"};
    const StorageFolder folder;
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        const Status created = folder.storage.Create(Wide(name));
        EXPECT_TRUE(created) << created.Failure().text;
    }
    EXPECT_EQ(folder.storage.List()->size(), std::size(names));
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        const auto loaded = folder.storage.Load(Wide(name));
        ASSERT_TRUE(loaded) << loaded.Failure().text;
        EXPECT_EQ(Utf8(loaded->name), name);
        EXPECT_TRUE(folder.storage.Delete(Wide(name)));
        EXPECT_EQ(folder.storage.Load(Wide(name)).Failure().code, ErrorCode::NotFound);
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder.folder.Path())) {
        EXPECT_NE(entry.path().extension(), ".profile") << entry.path();
    }
}

TEST(ProfileStorage, RefusesNamesThatAreEmptyTooLongOrTaken) {
    const StorageFolder folder;
    EXPECT_EQ(folder.storage.Create({}).Failure().code, ErrorCode::Unsupported);
    const CStringW longest(ProfileStorage::kLongestName, 'x');
    EXPECT_TRUE(folder.storage.Create(longest));
    EXPECT_EQ(folder.storage.Create(longest + CStringW("x"_w)).Failure().code, ErrorCode::Unsupported);

    ASSERT_TRUE(folder.storage.Create(Wide("B\xC3\xBCro")));
    EXPECT_EQ(folder.storage.Create(Wide("b\xC3\x9CRO")).Failure().code, ErrorCode::AccessDenied);
    EXPECT_EQ(Utf8(folder.storage.Load(Wide("b\xC3\x9CRO"))->name), "B\xC3\xBCro");
    ASSERT_TRUE(folder.storage.Create("other"_w));
    EXPECT_EQ(folder.storage.Rename("other"_w, Wide("B\xC3\xBCro")).Failure().code, ErrorCode::AccessDenied);
    EXPECT_EQ(folder.storage.Copy("other"_w, Wide("B\xC3\xBCro")).Failure().code, ErrorCode::AccessDenied);
    EXPECT_EQ(folder.storage.Rename("nobody"_w, "x"_w).Failure().code, ErrorCode::NotFound);
    EXPECT_EQ(folder.storage.Delete("nobody"_w).Failure().code, ErrorCode::NotFound);
}

TEST(ProfileStorage, CopiesAndRenames) {
    const StorageFolder folder;
    ASSERT_TRUE(folder.storage.Create("one"_w));
    ASSERT_TRUE(AddOne(folder.storage, "one"_w));
    ASSERT_TRUE(folder.storage.Copy("one"_w, "two"_w));
    ASSERT_TRUE(AddOne(folder.storage, "two"_w));
    EXPECT_EQ(CountServices(folder.storage, "one"_w), 1U);
    EXPECT_EQ(CountServices(folder.storage, "two"_w), 2U);
    ASSERT_TRUE(folder.storage.Rename("two"_w, "a/b"_w));
    ASSERT_TRUE(folder.storage.Rename("one"_w, "ONE"_w));
    EXPECT_EQ(folder.Names(), "a/b, ONE");
    EXPECT_EQ(CountServices(folder.storage, "A/B"_w), 2U);
    EXPECT_TRUE(std::filesystem::exists(folder.storage.Folder() / "a%2Fb.profile"));
}

TEST(ProfileStorage, KnowsTheDefault) {
    const StorageFolder folder;
    EXPECT_TRUE(folder.storage.DefaultName().IsNotFound());
    ASSERT_TRUE(folder.storage.Create("one"_w));
    ASSERT_TRUE(folder.storage.Create("two"_w));
    EXPECT_EQ(folder.storage.SetDefault("three"_w).Failure().code, ErrorCode::NotFound);
    ASSERT_TRUE(folder.storage.SetDefault("two"_w));
    EXPECT_EQ(Utf8(*folder.storage.DefaultName()), "two");
    ASSERT_TRUE(folder.storage.Rename("TWO"_w, "three"_w));
    EXPECT_EQ(Utf8(*folder.storage.DefaultName()), "three");
    ASSERT_TRUE(folder.storage.Delete("one"_w));
    EXPECT_EQ(Utf8(*folder.storage.DefaultName()), "three");
    ASSERT_TRUE(folder.storage.Delete("three"_w));
    EXPECT_TRUE(folder.storage.DefaultName().IsNotFound());

    folder.WriteFile("default-profile.txt", "# hello\n\nstandard = one\n");
    EXPECT_EQ(folder.storage.DefaultName().Failure().code, ErrorCode::Corrupt);
    EXPECT_NE(folder.storage.DefaultName().Failure().text.find("default-profile.txt:3: "), std::string::npos);
    ASSERT_TRUE(folder.storage.SetDefault({}));
    EXPECT_TRUE(folder.storage.DefaultName().IsNotFound());
}

TEST(ProfileStorage, ADamagedProfileHidesNoOther) {
    const StorageFolder folder;
    ASSERT_TRUE(folder.storage.Create("sound"_w));
    folder.WriteFile("cut%2Foff.profile", "");
    folder.WriteFile("other.profile", "[profile]\nversion = 1\nname = \"named\"\n[gl");
    folder.WriteFile("sound (copy).profile", "[profile]\nversion = 1\nname = \"sound\"\n");
    folder.WriteFile("sound.profile.new", "[pro");  // what a killed program leaves behind
    folder.WriteFile("notes.txt", "nothing of ours");
    std::filesystem::create_directories(folder.storage.Folder() / "folder.profile");
    EXPECT_EQ(folder.Names(), "cut/off!, folder!, named!, sound");

    const auto cut = folder.storage.Load("cut/off"_w);
    ASSERT_FALSE(cut);
    EXPECT_EQ(cut.Failure().code, ErrorCode::Corrupt);
    EXPECT_NE(cut.Failure().text.find("cut%2Foff.profile:0: "), std::string::npos) << cut.Failure().text;
    EXPECT_EQ(AddOne(folder.storage, "named"_w).Failure().code, ErrorCode::Corrupt);
    EXPECT_EQ(folder.storage.Create("named"_w).Failure().code, ErrorCode::AccessDenied);
    EXPECT_TRUE(folder.storage.Delete("named"_w));
    EXPECT_TRUE(folder.storage.Create("named"_w));
    EXPECT_TRUE(AddOne(folder.storage, "sound"_w));
    EXPECT_EQ(CountServices(folder.storage, "sound"_w), 1U);
}

TEST(ProfileStorage, FindsProfilesByTheNamesInTheirFiles) {
    const StorageFolder folder;
    folder.WriteFile("whatever.profile", WriteProfile(Profile("Mine"_w)));
    EXPECT_EQ(folder.Names(), "Mine");
    EXPECT_TRUE(AddOne(folder.storage, "mine"_w));
    EXPECT_TRUE(folder.storage.Load("whatever"_w).IsNotFound());
    // A new profile does not take the file of another.
    EXPECT_TRUE(folder.storage.Create("whatever"_w));
    EXPECT_EQ(folder.Names(), "Mine, whatever");
    EXPECT_EQ(CountServices(folder.storage, "Mine"_w), 1U);
}

TEST(ProfileStorage, AFailedChangeChangesNothing) {
    const StorageFolder folder;
    ASSERT_TRUE(folder.storage.Create("one"_w));
    const Status refused = folder.storage.Change("one"_w, [](Profile& profile) -> Status {
        profile.services.push_back(Service{profile.NewSection(NewUid()), {}});
        return Error{ErrorCode::NotFound, "no"};
    });
    EXPECT_EQ(refused.Failure().text, "no");
    EXPECT_EQ(CountServices(folder.storage, "one"_w), 0U);

    const Status tooLarge = folder.storage.Change("one"_w, [](Profile& profile) -> Status {
        profile.global.SetBinary(PR_RECORD_KEY, Bytes(ProfileStorage::kLargestFile / 2));
        return {};
    });
    EXPECT_EQ(tooLarge.Failure().code, ErrorCode::TooLarge);
    EXPECT_EQ(CountServices(folder.storage, "one"_w), 0U);
}

TEST(ProfileStorage, IsEmptyWithoutAFolderAndWithoutAHome) {
    const StorageFolder folder;
    EXPECT_EQ(folder.Names(), "");
    EXPECT_TRUE(folder.storage.Load("x"_w).IsNotFound());
    EXPECT_FALSE(std::filesystem::exists(folder.storage.Folder())) << "reading leaves no traces";
    const ProfileStorage homeless{std::filesystem::path()};
    EXPECT_EQ(homeless.Create("x"_w).Failure().code, ErrorCode::NotFound);
    const ScopedFolder current(folder.folder.Path());
    folder.folder.Write("x.profile", WriteProfile(Profile("x"_w)));
    EXPECT_TRUE(homeless.Load("x"_w).IsNotFound()) << "the current folder is no home";
}

TEST(ProfileStorage, IsInTheConfigurationFolderOfItsBeginning) {
    const TemporaryFolder home;
    const ScopedFolder current(home.Path());
    const ScopedVariable variable("VX_HOME", "settings");
    const ProfileStorage storage;
    ASSERT_TRUE(storage.Create("x"_w));
    EXPECT_TRUE(std::filesystem::exists(home.Path() / "settings" / "profiles" / "x.profile"));
    const ScopedFolder elsewhere(home.Path() / "settings");
    EXPECT_TRUE(storage.Load("x"_w));
}

TEST(ProfileStorage, LosesNothingToThreads) {
    constexpr int kThreads = 4;
    constexpr int kEach = 15;
    const StorageFolder folder;
    ASSERT_TRUE(folder.storage.Create("shared"_w));
    std::atomic<int> failures{0};
    std::atomic<bool> isDone{false};
    std::thread reader([&] {
        while (!isDone) {
            failures += folder.storage.Load("shared"_w) ? 0 : 1;
        }
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < kEach; ++j) {
                failures += AddOne(folder.storage, "shared"_w) ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    isDone = true;
    reader.join();
    EXPECT_EQ(failures, 0);
    EXPECT_EQ(CountServices(folder.storage, "shared"_w), static_cast<std::size_t>(kThreads * kEach));
}

#ifndef _WIN32

pid_t Fork(const std::function<void()>& body) {
    const pid_t child = ::fork();
    if (child == 0) {
        body();
        ::_exit(0);
    }
    return child;
}

TEST(ProfileStorage, LosesNothingToProcesses) {
    constexpr int kProcesses = 4;
    constexpr int kEach = 15;
    const StorageFolder folder;
    ASSERT_TRUE(folder.storage.Create("shared"_w));
    std::vector<pid_t> children;
    for (int i = 0; i < kProcesses; ++i) {
        children.push_back(Fork([&] {
            for (int j = 0; j < kEach; ++j) {
                if (!AddOne(folder.storage, "shared"_w)) {
                    ::_exit(1);
                }
            }
        }));
    }
    for (const pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    EXPECT_EQ(CountServices(folder.storage, "shared"_w), static_cast<std::size_t>(kProcesses * kEach));
}

// A child changes a profile as fast as it can until it is killed, at another moment each time.
TEST(ProfileStorage, IsWholeAfterAnyKill) {
    const StorageFolder folder;
    ASSERT_TRUE(folder.storage.Create("victim"_w));
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    std::size_t before = 0;
    int kills = 0;
    for (; std::chrono::steady_clock::now() < until && kills < 200; ++kills) {
        const pid_t child = Fork([&] {
            for (;;) {
                (void)AddOne(folder.storage, "victim"_w);
            }
        });
        std::this_thread::sleep_for(std::chrono::microseconds(3'000 + kills * 137 % 5'000));
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        ASSERT_EQ(folder.Names(), "victim") << "after kill " << kills;
        const std::size_t services = CountServices(folder.storage, "victim"_w);
        ASSERT_GE(services, before) << "a finished change was lost";
        before = services;
    }
    EXPECT_GT(before, 0U) << "no change ever came through";
    EXPECT_TRUE(AddOne(folder.storage, "victim"_w)) << "the lock of a dead process is free";
}

TEST(ProfileStorage, TellsWhatMayNotBeRead) {
    const StorageFolder folder;
    const WithoutPrivileges scope(folder.folder.Path());
    ASSERT_TRUE(folder.storage.Create("one"_w));
    const std::filesystem::path file = folder.storage.Folder() / "one.profile";
    ASSERT_EQ(::chmod(file.c_str(), 0), 0);
    EXPECT_EQ(folder.storage.Load("one"_w).Failure().code, ErrorCode::AccessDenied);
    EXPECT_EQ(folder.Names(), "one!");
    ASSERT_EQ(::chmod(folder.storage.Folder().c_str(), 0), 0);
    EXPECT_EQ(folder.storage.List().Failure().code, ErrorCode::AccessDenied);
    EXPECT_EQ(folder.storage.Create("two"_w).Failure().code, ErrorCode::AccessDenied);
    ASSERT_EQ(::chmod(folder.storage.Folder().c_str(), 0700), 0);
}

TEST(ProfileStorage, KeepsItsFilesToTheUser) {
    const StorageFolder folder;
    ASSERT_TRUE(folder.storage.Create("one"_w));
    struct stat facts = {};
    ASSERT_EQ(::stat((folder.storage.Folder() / "one.profile").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0600U);
}

#endif

}  // namespace
}  // namespace localmapi::profile::testing
