// What the loader's tests share: the fake libraries, a call of every function of MAPI, and the machine's registry.
#pragma once

#include "mapi/MapiFunctions.h"
#include "platform/Module.h"
#include "platform/WideText.h"
#include "provider/ImportProcs.h"
#include "tests/provider/mapi/import/fakes/FakeAnswers.h"
#include "tests/provider/mapi/util/TestSupport.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

// The fake libraries' numbers: all functions; a few; all, with the installer's; the installer's alone.
inline constexpr int kClient = 1;
inline constexpr int kFew = 2;
inline constexpr int kSystem = 3;

// ASCII to wide text.
CStringW Wide(std::string_view text);

// The path of a fake library, as the loader takes it.
CStringW FakePath(const char* name);
// Its file, whatever this system calls it.
std::filesystem::path FakeFile(const char* name);

// A fake library's own load count, for taking its test functions by name.
class FakeLibrary {
public:
    explicit FakeLibrary(const char* name);
    ~FakeLibrary() { FreeLibrary(m_module); }
    FakeLibrary(const FakeLibrary&) = delete;
    FakeLibrary& operator=(const FakeLibrary&) = delete;

    HMODULE Module() const { return m_module; }

    template <typename Function>
    Function* Get(const char* name) const {
        return reinterpret_cast<Function*>(reinterpret_cast<void (*)()>(GetProcAddress(m_module, name)));
    }

private:
    HMODULE m_module;
};

// One of the forwarded functions.
struct Probe {
    const char* name;
    std::int64_t (*call)();  // what it gives, which is a fake library's answer when there is one; 0 for nothing
    std::int64_t missing;    // what it gives without MAPI
    bool isVoid = false;
    bool isFew = false;        // one that fake_few has
    bool isDecorated = false;  // has a decorated name, tried first

    // What it gives when it goes to the fake library of that number.
    std::int64_t From(int number) const { return isVoid ? 0 : vx_fake_mapi::Answer(number, name); }
};
std::span<const Probe> Probes();

// Whatever a test loads is unloaded behind it, and before it.
class LoaderTest : public testing::Test {
protected:
    LoaderTest() { UnloadMAPI(); }
    ~LoaderTest() override { UnloadMAPI(); }
};

// A value below a key of HKEY_LOCAL_MACHINE.
struct RegistryRow {
    std::string key;
    std::string name;  // empty: the key's default value
    DWORD type;
    std::string bytes;
};

// UTF-16 bytes of an ASCII text with its terminator.
std::string TextBytes(std::string_view text);

// Keys of HKEY_LOCAL_MACHINE for the life of this object. Linux: they are the whole registry. Windows: they are made
// and deleted again, so they must be the test's own.
class TestRegistry {
public:
    explicit TestRegistry(std::vector<RegistryRow> rows);
    ~TestRegistry();
    TestRegistry(const TestRegistry&) = delete;
    TestRegistry& operator=(const TestRegistry&) = delete;

private:
    std::vector<RegistryRow> m_rows;
    TempFolder m_folder;
};
