// What the fake MAPI libraries share with each other and with the tests, which take these functions by name. Every
// library is told its number when it is compiled; its functions answer with that number and their own name in one,
// where the answer is free, so that a test sees who was called.
#pragma once

#include "mapi/MapiTypes.h"

#include <string_view>

namespace vx_fake_mapi {

// The answer of one function of one library: positive, and different for all of them.
constexpr LONG Answer(int number, std::string_view function) {
    ULONG hash = 0;
    for (const char character : function) {
        hash = (hash * 31 + static_cast<ULONG>(character)) % 1'000'003;
    }
    return static_cast<LONG>(hash) + number * 10'000'000;
}

}  // namespace vx_fake_mapi

// Sizes, counts and tags that ask a function for its answer instead of its work.
inline constexpr ULONG kProbeSize = 0xABCD;
inline constexpr int kProbeCount = 0;
inline constexpr ULONG kProbeTag = 0x12340001;  // of PT_NULL

extern "C" {

// The name of the function without a result that was called last; empty when none was since this was asked last.
const char* FakeLastVoidCall();

// Blocks that were allocated and are not freed.
int FakeLiveBlocks();

// Lets the n-th allocation from now on fail; 0 lets all succeed.
void FakeFailAllocation(int n);

// What FGetComponentPath was asked, "component/qualifier" for each call, with "-" for null, and a blank behind each.
const char* FakeComponentCalls();
}
