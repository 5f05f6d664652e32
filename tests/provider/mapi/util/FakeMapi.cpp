#include "tests/provider/mapi/util/FakeMapi.h"

#include "platform/TaskMemory.h"
#include "provider/ImportProcs.h"

#include <cstdlib>

namespace {

FakeMapi* g_fake = nullptr;
int g_liveBlocks = 0;
int g_openSessions = 0;
char g_session = 0;

LPMSGSESS Session() {
    return reinterpret_cast<LPMSGSESS>(&g_session);
}

void* Allocate(std::size_t bytes) {
    ++g_liveBlocks;
    return std::calloc(1, bytes);
}

void Free(void* block) {
    if (block != nullptr) {
        --g_liveBlocks;
        std::free(block);
    }
}

std::string Hex(ULONG value) {
    char text[16];
    std::snprintf(text, sizeof(text), "%08X", static_cast<unsigned>(value));
    return text;
}

}  // namespace

FakeMapi::FakeMapi() {
    g_fake = this;
    g_liveBlocks = 0;
    g_openSessions = 0;
}

FakeMapi::~FakeMapi() {
    g_fake = nullptr;
}

LPSPropValue FakeMapi::NewProps(ULONG count) {
    return static_cast<LPSPropValue>(Allocate(count * sizeof(SPropValue)));
}

LPSRowSet FakeMapi::NewRows(ULONG count) {
    const auto rows = static_cast<LPSRowSet>(Allocate(CbNewSRowSet(count)));
    rows->cRows = count;
    for (ULONG i = 0; i < count; ++i) {
        rows->aRow[i] = {0, 2, NewProps(2)};
    }
    return rows;
}

int FakeMapi::LiveBlocks() {
    return g_liveBlocks;
}

int FakeMapi::OpenSessions() {
    return g_openSessions;
}

LPMALLOC MAPIGetDefaultMalloc() {
    static LPMALLOC s_malloc = [] {
        LPMALLOC taskAllocator = nullptr;
        return SUCCEEDED(CoGetMalloc(1, &taskAllocator)) ? taskAllocator : nullptr;
    }();
    return s_malloc;
}

SCODE MAPIAllocateBuffer(ULONG size, LPVOID* block) {
    *block = Allocate(size);
    return S_OK;
}

SCODE MAPIAllocateMore(ULONG, LPVOID, LPVOID*) {
    return E_NOTIMPL;
}

ULONG MAPIFreeBuffer(LPVOID block) {
    Free(block);
    return 0;
}

void FreeProws(LPSRowSet rows) {
    for (ULONG i = 0; i < rows->cRows; ++i) {
        Free(rows->aRow[i].lpProps);
    }
    Free(rows);
}

HRESULT HrQueryAllRows(LPMAPITABLE, LPSPropTagArray columns, LPSRestriction restriction, LPSSortOrderSet order,
                       LONG maximum, LPSRowSet* rows) {
    g_fake->argumentsAsExpected &= columns == nullptr && restriction == nullptr && order == nullptr && maximum == 0;
    return g_fake->queryAllRows(rows);
}

SCODE OpenIMsgSession(LPMALLOC allocator, ULONG flags, LPMSGSESS* session) {
    g_fake->calls.push_back("OpenIMsgSession");
    g_fake->argumentsAsExpected &= allocator != nullptr && allocator == MAPIGetDefaultMalloc() && flags == 0;
    if (SUCCEEDED(g_fake->openSessionResult)) {
        *session = Session();
        ++g_openSessions;
    }
    return g_fake->openSessionResult;
}

void CloseIMsgSession(LPMSGSESS session) {
    g_fake->calls.push_back("CloseIMsgSession");
    g_fake->argumentsAsExpected &= session == Session();
    --g_openSessions;
}

SCODE OpenIMsgOnIStg(LPMSGSESS session, LPALLOCATEBUFFER allocate, LPALLOCATEMORE more, LPFREEBUFFER release,
                     LPMALLOC allocator, LPVOID support, IStorage* storage, MSGCALLRELEASE* callback, ULONG callerData,
                     ULONG flags, LPMESSAGE* message) {
    g_fake->calls.push_back("OpenIMsgOnIStg " + Hex(flags));
    g_fake->argumentsAsExpected &= session == (g_openSessions > 0 ? Session() : nullptr)
                                   && allocate == &MAPIAllocateBuffer && more == &MAPIAllocateMore
                                   && release == &MAPIFreeBuffer && allocator == MAPIGetDefaultMalloc()
                                   && support == nullptr && callback == nullptr && callerData == 0;
    return g_fake->openMessage(storage, flags, message);
}
