// What the fake MAPI libraries share with each other and with the tests, which take these functions by name. Every
// library is told its number when it is compiled; its functions answer with that number where the answer is free, so
// that a test sees who was called.
#pragma once

#include "mapi/MapiTypes.h"

// Sizes, counts and tags that ask a function for the library's number instead of its work.
inline constexpr ULONG kProbeSize = 0xABCD;
inline constexpr int kProbeCount = 0;
inline constexpr ULONG kProbeTag = 0x12340001;  // of PT_NULL

extern "C" {

// Calls so far of the functions that give no result.
int FakeVoidCalls();

// Blocks that were allocated and are not freed.
int FakeLiveBlocks();

// Lets the n-th allocation from now on fail; 0 lets all succeed.
void FakeFailAllocation(int n);

// What FGetComponentPath was asked, "component/qualifier" for each call, with "-" for null, and a blank behind each.
const char* FakeComponentCalls();
}

namespace vx_fake_mapi {

inline constexpr int kNumber = VX_FAKE_NUMBER;

extern int g_voidCalls;

}  // namespace vx_fake_mapi
