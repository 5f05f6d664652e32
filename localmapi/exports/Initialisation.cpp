#include "localmapi/exports/Initialisation.h"

#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"

#include <atomic>

namespace localmapi {

namespace {

std::atomic<long> g_uses{0};

}  // namespace

HRESULT Initialise(const MAPIINIT_0* init) noexcept {
    if (init != nullptr && init->ulVersion != MAPI_INIT_VERSION) {
        return MAPI_E_INVALID_PARAMETER;
    }
    g_uses.fetch_add(1);
    return S_OK;
}

void Uninitialise() noexcept {
    long uses = g_uses.load();
    while (uses > 0 && !g_uses.compare_exchange_weak(uses, uses - 1)) {
    }
}

bool IsInitialised() noexcept {
    return g_uses.load() > 0;
}

}  // namespace localmapi
