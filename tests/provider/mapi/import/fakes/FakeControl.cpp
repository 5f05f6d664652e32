#include "tests/provider/mapi/import/fakes/FakeControl.h"

#include <utility>

namespace vx_fake_mapi {

const char* g_lastVoidCall = "";

}  // namespace vx_fake_mapi

extern "C" const char* FakeLastVoidCall() {
    return std::exchange(vx_fake_mapi::g_lastVoidCall, "");
}
