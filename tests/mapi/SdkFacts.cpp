#include "platform/WindowsSdk.h"
#include "tests/mapi/Facts.h"

// The SDK's headers declare identifiers as external constants of one name for the whole program, which would be ours:
// here they are constants of this file, made when the headers that mention them over and over are through.
#undef DEFINE_GUID
#define DEFINE_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8)

namespace vx_sdk_mapi {

// clang-format off
#include <mapix.h>
#include <mapiutil.h>
#include <mapiform.h>
#include <mapitags.h>
#include <imessage.h>
#include <tnef.h>

#undef DEFINE_GUID
#define DEFINE_GUID(name, l, w1, w2, b1, b2, b3, b4, b5, b6, b7, b8) \
    [[maybe_unused]] static const GUID name = {l, w1, w2, {b1, b2, b3, b4, b5, b6, b7, b8}};
#include <mapiguid.h>
// clang-format on

using namespace vx_mapi_facts;

static Facts ListFacts() {
    Facts facts;
#define VX_FUNCTION(name, type) facts.push_back({#name, Signature<decltype(name)>::Text()});
#include "tests/mapi/FactList.inc"
    return facts;
}

}  // namespace vx_sdk_mapi

namespace vx_mapi_facts {

Facts SdkFacts() {
    return vx_sdk_mapi::ListFacts();
}

}  // namespace vx_mapi_facts
