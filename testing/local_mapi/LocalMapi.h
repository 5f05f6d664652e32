// Programs of tests that use local MAPI as any program does: found and loaded at run time. Their CTest entry is made by
// vx_local_mapi_environment, which says where the library is and, under Wine, puts it in place of the system's.
#pragma once

#include "platform/BaseTypes.h"
#include "testing/mailbox_builder/SampleMailbox.h"

#include <filesystem>
#include <string>
#include <vector>

namespace vx_testing {

// Makes a folder of the calling test's own, empty, and the configuration folder of local MAPI: its profiles live there.
// Removed with everything in it at the end.
class LocalMapiHome {
public:
    LocalMapiHome();
    ~LocalMapiHome();
    LocalMapiHome(const LocalMapiHome&) = delete;
    LocalMapiHome& operator=(const LocalMapiHome&) = delete;

    const std::filesystem::path& Path() const noexcept { return m_path; }

private:
    std::filesystem::path m_path;
};

// What of the library's is alive in this process, of all its users. -1 when another library than ours was loaded.
struct LiveMapi {
    LONGLONG objects = -1;
    LONGLONG buffers = -1;
    friend bool operator==(const LiveMapi&, const LiveMapi&) = default;
};
LiveMapi CountLiveMapi();

void SetEnvironment(const char* name, const std::string& value);

// The sample mailbox in a form, written once for all tests of the program, and what it was written from. The file goes
// with the program.
const std::filesystem::path& SampleFile(mailbox_builder::Form form = mailbox_builder::Form::Unicode);
const mailbox_builder::SampleMailbox& Sample();
const std::vector<mailbox_builder::WrittenFolder>& SampleFolders();

}  // namespace vx_testing
