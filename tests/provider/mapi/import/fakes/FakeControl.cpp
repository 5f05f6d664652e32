#include "tests/provider/mapi/import/fakes/FakeControl.h"

namespace vx_fake_mapi {

int g_voidCalls = 0;

}  // namespace vx_fake_mapi

extern "C" int FakeVoidCalls() {
    return vx_fake_mapi::g_voidCalls;
}
