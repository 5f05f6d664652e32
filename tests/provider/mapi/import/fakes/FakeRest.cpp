// The functions that a whole MAPI library has besides the few, under undecorated names. Memory and properties really
// work, as far as the copies under test need them: PT_LONG, PT_BOOLEAN, PT_UNICODE and PT_BINARY; PT_I8 is counted, but
// fails to be copied.
#include "mapi/MapiCodes.h"
#include "mapi/MapiFunctions.h"
#include "tests/provider/mapi/import/fakes/FakeControl.h"

#include <cstddef>
#include <cstring>
#include <map>
#include <memory>
#include <vector>

using vx_fake_mapi::g_lastVoidCall;
using vx_fake_mapi::OwnAnswer;

namespace {

using Block = std::unique_ptr<std::byte[]>;

// Roots, each with the blocks that go with it; the first one is the root itself.
std::map<void*, std::vector<Block>> g_roots;
int g_allocationsToFailure = 0;

bool ShallFail() {
    return g_allocationsToFailure > 0 && --g_allocationsToFailure == 0;
}

// Bytes behind the SPropValue itself, a multiple of 8; negative for a type that is not known.
int ExtraBytes(const SPropValue& prop) {
    std::size_t bytes = 0;
    switch (PROP_TYPE(prop.ulPropTag)) {
        case PT_LONG:
        case PT_BOOLEAN:
        case PT_I8: break;
        case PT_BINARY: bytes = prop.Value.bin.cb; break;
        case PT_UNICODE:
            while (prop.Value.lpszW[bytes / sizeof(WCHAR)] != 0) {
                bytes += sizeof(WCHAR);
            }
            bytes += sizeof(WCHAR);
            break;
        default: return -1;
    }
    return static_cast<int>((bytes + 7) / 8 * 8);
}

// Copies what `prop` points at to `extra`, and points it there.
void MoveExtra(SPropValue& prop, std::byte* extra) {
    if (PROP_TYPE(prop.ulPropTag) == PT_BINARY) {
        std::memcpy(extra, prop.Value.bin.lpb, prop.Value.bin.cb);
        prop.Value.bin.lpb = reinterpret_cast<LPBYTE>(extra);
    } else if (PROP_TYPE(prop.ulPropTag) == PT_UNICODE) {
        std::size_t units = 0;
        do {
            std::memcpy(extra + units * sizeof(WCHAR), prop.Value.lpszW + units, sizeof(WCHAR));
        } while (prop.Value.lpszW[units++] != 0);
        prop.Value.lpszW = reinterpret_cast<LPWSTR>(extra);
    }
}

}  // namespace

extern "C" {

int FakeLiveBlocks() {
    std::size_t blocks = 0;
    for (const auto& [root, parts] : g_roots) {
        blocks += parts.size();
    }
    return static_cast<int>(blocks);
}

void FakeFailAllocation(int n) {
    g_allocationsToFailure = n;
}

SCODE STDAPICALLTYPE MAPIAllocateBuffer(ULONG cbSize, LPVOID* lppBuffer) {
    if (cbSize == kProbeSize) {
        return OwnAnswer(__func__);
    }
    if (ShallFail()) {
        return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    Block block = std::make_unique<std::byte[]>(cbSize);
    *lppBuffer = block.get();
    g_roots[*lppBuffer].push_back(std::move(block));
    return S_OK;
}

SCODE STDAPICALLTYPE MAPIAllocateMore(ULONG cbSize, LPVOID lpObject, LPVOID* lppBuffer) {
    if (cbSize == kProbeSize) {
        return OwnAnswer(__func__);
    }
    const auto root = g_roots.find(lpObject);
    if (root == g_roots.end()) {
        return MAPI_E_INVALID_PARAMETER;
    }
    if (ShallFail()) {
        return MAPI_E_NOT_ENOUGH_MEMORY;
    }
    root->second.push_back(std::make_unique<std::byte[]>(cbSize));
    *lppBuffer = root->second.back().get();
    return S_OK;
}

ULONG STDAPICALLTYPE MAPIFreeBuffer(LPVOID lpBuffer) {
    g_roots.erase(lpBuffer);
    return static_cast<ULONG>(OwnAnswer(__func__));
}

HRESULT STDAPICALLTYPE HrGetOneProp(LPMAPIPROP, ULONG, LPSPropValue*) {
    return OwnAnswer(__func__);
}

void STDAPICALLTYPE MAPIUninitialize() {
    g_lastVoidCall = __func__;
}

LPSPropValue STDAPICALLTYPE PpropFindProp(LPSPropValue, ULONG, ULONG) {
    return reinterpret_cast<LPSPropValue>(static_cast<ULONG_PTR>(OwnAnswer(__func__)));
}

SCODE STDAPICALLTYPE ScDupPropset(int, LPSPropValue, LPALLOCATEBUFFER, LPSPropValue*) {
    return OwnAnswer(__func__);
}

SCODE STDAPICALLTYPE ScCountProps(int cValues, LPSPropValue lpPropArray, ULONG* lpcb) {
    if (cValues == kProbeCount) {
        return OwnAnswer(__func__);
    }
    ULONG bytes = 0;
    for (int i = 0; i < cValues; ++i) {
        const int extra = ExtraBytes(lpPropArray[i]);
        if (extra < 0) {
            return MAPI_E_INVALID_PARAMETER;
        }
        bytes += static_cast<ULONG>(sizeof(SPropValue)) + static_cast<ULONG>(extra);
    }
    *lpcb = bytes;
    return S_OK;
}

SCODE STDAPICALLTYPE ScCopyProps(int cValues, LPSPropValue lpPropArray, LPVOID lpvDst, ULONG*) {
    if (cValues == kProbeCount) {
        return OwnAnswer(__func__);
    }
    auto* const props = static_cast<LPSPropValue>(lpvDst);
    auto* extra = reinterpret_cast<std::byte*>(props + cValues);
    for (int i = 0; i < cValues; ++i) {
        if (PROP_TYPE(lpPropArray[i].ulPropTag) == PT_I8) {
            return MAPI_E_TYPE_NO_SUPPORT;
        }
        props[i] = lpPropArray[i];
        MoveExtra(props[i], extra);
        extra += ExtraBytes(lpPropArray[i]);
    }
    return S_OK;
}

SCODE STDAPICALLTYPE OpenIMsgOnIStg(LPMSGSESS, LPALLOCATEBUFFER, LPALLOCATEMORE, LPFREEBUFFER, LPMALLOC, LPVOID,
                                    IStorage*, MSGCALLRELEASE*, ULONG, ULONG, LPMESSAGE*) {
    return OwnAnswer(__func__);
}

LPMALLOC STDAPICALLTYPE MAPIGetDefaultMalloc() {
    return reinterpret_cast<LPMALLOC>(static_cast<ULONG_PTR>(OwnAnswer(__func__)));
}

HRESULT STDAPICALLTYPE OpenTnefStreamEx(LPVOID, IStream*, LPTSTR, ULONG, LPMESSAGE, WORD, LPADRBOOK, LPITNEF*) {
    return OwnAnswer(__func__);
}

HRESULT STDAPICALLTYPE OpenStreamOnFile(LPALLOCATEBUFFER, LPFREEBUFFER, ULONG, LPTSTR, LPTSTR, IStream**) {
    return OwnAnswer(__func__);
}

HRESULT STDAPICALLTYPE LAUNCHWIZARD(HWND, ULONG, LPCSTR*, ULONG, LPSTR) {
    return OwnAnswer(__func__);
}

void STDAPICALLTYPE CloseIMsgSession(LPMSGSESS) {
    g_lastVoidCall = __func__;
}

SCODE STDAPICALLTYPE OpenIMsgSession(LPMALLOC, ULONG, LPMSGSESS*) {
    return OwnAnswer(__func__);
}

HRESULT STDAPICALLTYPE MAPIOpenFormMgr(LPMAPISESSION, LPMAPIFORMMGR*) {
    return OwnAnswer(__func__);
}

HRESULT STDAPICALLTYPE RTFSync(LPMESSAGE, ULONG, BOOL*) {
    return OwnAnswer(__func__);
}

HRESULT STDAPICALLTYPE HrSetOneProp(LPMAPIPROP, LPSPropValue) {
    return OwnAnswer(__func__);
}

void STDAPICALLTYPE FreePadrlist(LPADRLIST) {
    g_lastVoidCall = __func__;
}

SCODE STDAPICALLTYPE PropCopyMore(LPSPropValue lpSPropValueDest, LPSPropValue lpSPropValueSrc,
                                  ALLOCATEMORE* lpfAllocMore, LPVOID lpvObject) {
    if (lpSPropValueSrc->ulPropTag == kProbeTag) {
        return OwnAnswer(__func__);
    }
    *lpSPropValueDest = *lpSPropValueSrc;
    const int extra = ExtraBytes(*lpSPropValueSrc);
    if (extra <= 0) {
        return extra < 0 ? MAPI_E_INVALID_PARAMETER : S_OK;
    }
    LPVOID block = nullptr;
    const SCODE result = lpfAllocMore(static_cast<ULONG>(extra), lpvObject, &block);
    if (SUCCEEDED(result)) {
        MoveExtra(*lpSPropValueDest, static_cast<std::byte*>(block));
    }
    return result;
}

HRESULT STDAPICALLTYPE WrapCompressedRTFStream(IStream*, ULONG, IStream**) {
    return OwnAnswer(__func__);
}

HRESULT STDAPICALLTYPE MAPILogonEx(ULONG_PTR, LPTSTR, LPTSTR, ULONG, LPMAPISESSION*) {
    return OwnAnswer(__func__);
}

HRESULT STDAPICALLTYPE MAPIAdminProfiles(ULONG, LPPROFADMIN*) {
    return OwnAnswer(__func__);
}

HRESULT STDAPICALLTYPE HrValidateIPMSubtree(LPMDB, ULONG, ULONG*, LPSPropValue*, LPMAPIERROR*) {
    return OwnAnswer(__func__);
}

HRESULT STDAPICALLTYPE MAPIOpenLocalFormContainer(LPMAPIFORMCONTAINER*) {
    return OwnAnswer(__func__);
}

HRESULT STDAPICALLTYPE HrDispatchNotifications(ULONG) {
    return OwnAnswer(__func__);
}
}
