#include "mapi/Mapi.h"
#include "tests/mapi/Facts.h"

namespace vx_mapi_facts {

Facts OurFacts() {
    Facts facts;
#define VX_FUNCTION(name, type) facts.push_back({#name, Signature<type>::Text()});
#include "tests/mapi/FactList.inc"
    return facts;
}

}  // namespace vx_mapi_facts
