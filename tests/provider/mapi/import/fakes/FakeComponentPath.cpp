// The installer as the system's MAPI libraries know it. It answers for the component VX_FAKE_COMPONENT with the
// qualifier VX_FAKE_QUALIFIER ("-" for none), with the path VX_FAKE_PATH; the path "*" fills the buffer with x.
#include "provider/ImportState.h"
#include "tests/provider/mapi/import/fakes/FakeControl.h"

#include <cstdlib>
#include <cstring>
#include <string>

namespace {

std::string g_calls;

std::string Setting(const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

}  // namespace

extern "C" {

const char* FakeComponentCalls() {
    return g_calls.c_str();
}

BOOL STDAPICALLTYPE FGetComponentPath(LPSTR szComponent, LPSTR szQualifier, LPSTR szDllPath, DWORD cchBufferSize,
                                      BOOL fInstall) {
    const std::string qualifier = szQualifier != nullptr ? szQualifier : "-";
    g_calls += std::string(szComponent) + "/" + qualifier + " ";
    const std::string path = Setting("VX_FAKE_PATH");
    if (szComponent != Setting("VX_FAKE_COMPONENT") || qualifier != Setting("VX_FAKE_QUALIFIER") || !fInstall
        || path.size() >= cchBufferSize) {
        return FALSE;
    }
    if (path == "*") {
        std::memset(szDllPath, 'x', cchBufferSize);
    } else {
        std::memcpy(szDllPath, path.c_str(), path.size() + 1);
    }
    return TRUE;
}
}
