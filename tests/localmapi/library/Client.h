// A caller of MAPI that knows nothing but its interfaces: the library is found and loaded as by any program.
#pragma once

#include "localmapi/com/ComPtr.h"
#include "mapi/Mapi.h"
#include "platform/WideText.h"
#include "provider/ImportProcs.h"
#include "testing/local_mapi/LocalMapi.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vx_testing {

using localmapi::ComPtr;

struct FreeBuffer {
    void operator()(void* buffer) const { MAPIFreeBuffer(buffer); }
};
template <class T>
using Buffer = std::unique_ptr<T, FreeBuffer>;

struct FreeRows {
    void operator()(SRowSet* rows) const { FreeProws(rows); }
};
using Rows = std::unique_ptr<SRowSet, FreeRows>;

// Each test has a configuration folder of its own, MAPI initialised, and at its end nothing of MAPI's left alive.
class Client : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Makes a profile with one store on the file, as an administrator of profiles does. The result of the last step.
    HRESULT MakeProfile(const char* name, const std::filesystem::path& mailbox);
    static HRESULT AddStore(IMsgServiceAdmin& services, const std::filesystem::path& mailbox, std::string& problem);

    static ComPtr<IMAPISession> LogOn(const char* profile);
    static ComPtr<IMsgStore> OpenOnlyStore(IMAPISession& session);

    const std::filesystem::path& Folder() const { return m_home->Path(); }

    std::string lastProblem;  // of MakeProfile: what GetLastError told

private:
    std::optional<LocalMapiHome> m_home;
};

// All rows with these columns; fails the test otherwise.
Rows AllRows(IMAPITable& table, const std::vector<ULONG>& columns);

const SPropValue& Cell(const Rows& rows, ULONG row, ULONG column);

std::string Utf8(WideView text);
std::string NameOf(const SRow& row, ULONG column);  // a wide text column as UTF-8, or ""

// Opens a folder or message of a store.
template <class T>
ComPtr<T> Open(IMsgStore& store, const SBinary& entryId) {
    ULONG type = 0;
    IUnknown* object = nullptr;
    const HRESULT opened = store.OpenEntry(entryId.cb, reinterpret_cast<LPENTRYID>(entryId.lpb), nullptr,
                                           MAPI_BEST_ACCESS, &type, &object);
    EXPECT_EQ(opened, S_OK);
    return ComPtr<T>::Adopt(static_cast<T*>(object));
}

template <class T>
ComPtr<T> Open(IMsgStore& store, const localmapi::Bytes& entryId) {
    return Open<T>(store, SBinary{static_cast<ULONG>(entryId.size()),
                                  reinterpret_cast<LPBYTE>(const_cast<std::byte*>(entryId.data()))});
}

// The entry id of a folder or message by its number, as mailbox files know them.
localmapi::Bytes EntryIdOf(IMsgStore& store, std::uint32_t node);

ComPtr<IMAPIFolder> OpenVisibleTree(IMsgStore& store);

// The bytes of a property by stream; the result where there are none.
std::string StreamOf(IMAPIProp& object, ULONG tag, HRESULT* result = nullptr);

// Calls for every folder below, with its path.
void WalkFolders(IMsgStore& store, IMAPIFolder& top, const std::string& path,
                 const std::function<void(const std::string& path, IMAPIFolder& folder)>& visit);

}  // namespace vx_testing
