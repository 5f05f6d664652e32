// What the sources of one fake library share.
#pragma once

#include "tests/provider/mapi/import/fakes/FakeAnswers.h"

namespace vx_fake_mapi {

extern const char* g_lastVoidCall;

inline LONG OwnAnswer(std::string_view function) {
    return Answer(VX_FAKE_NUMBER, function);
}

}  // namespace vx_fake_mapi
