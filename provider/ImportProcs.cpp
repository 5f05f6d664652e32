#include "provider/ImportProcs.h"

#include "platform/Module.h"
#include "provider/Common/Log.h"
#include "provider/ErrorReport.h"
#include "provider/ImportState.h"
#include "provider/MapiCopy.h"
#include "provider/MapiSearch.h"

#include <type_traits>

namespace {

constexpr auto& kSourcePath = "ImportProcs.cpp"_w;
constexpr char kSourceName[] = "ImportProcs.cpp";

constinit EntryPoint<LAUNCHWIZARDENTRY> pfnLaunchWizard("pfnLaunchWizard");
constinit EntryPoint<ALLOCATEBUFFER> pfnMAPIAllocateBuffer("pfnMAPIAllocateBuffer");
constinit EntryPoint<ALLOCATEMORE> pfnMAPIAllocateMore("pfnMAPIAllocateMore");
constinit EntryPoint<FREEBUFFER> pfnMAPIFreeBuffer("pfnMAPIFreeBuffer");
constinit EntryPoint<HRGETONEPROP> pfnHrGetOneProp("pfnHrGetOneProp");
constinit EntryPoint<MAPIINITIALIZE> pfnMAPIInitialize("pfnMAPIInitialize");
constinit EntryPoint<MAPIUNINITIALIZE> pfnMAPIUninitialize("pfnMAPIUninitialize");
constinit EntryPoint<FREEPROWS> pfnFreeProws("pfnFreeProws");
constinit EntryPoint<PPROPFINDPROP> pfnPpropFindProp("pfnPpropFindProp");
constinit EntryPoint<SCDUPPROPSET> pfnScDupPropset("pfnScDupPropset");
constinit EntryPoint<SCCOUNTPROPS> pfnScCountProps("pfnScCountProps");
constinit EntryPoint<SCCOPYPROPS> pfnScCopyProps("pfnScCopyProps");
constinit EntryPoint<OPENIMSGONISTG> pfnOpenIMsgOnIStg("pfnOpenIMsgOnIStg");
constinit EntryPoint<MAPIGETDEFAULTMALLOC> pfnMAPIGetDefaultMalloc("pfnMAPIGetDefaultMalloc");
constinit EntryPoint<OPENTNEFSTREAMEX> pfnOpenTnefStreamEx("pfnOpenTnefStreamEx");
constinit EntryPoint<OPENSTREAMONFILE> pfnOpenStreamOnFile("pfnOpenStreamOnFile");
constinit EntryPoint<CLOSEIMSGSESSION> pfnCloseIMsgSession("pfnCloseIMsgSession");
constinit EntryPoint<OPENIMSGSESSION> pfnOpenIMsgSession("pfnOpenIMsgSession");
constinit EntryPoint<HRQUERYALLROWS> pfnHrQueryAllRows("pfnHrQueryAllRows");
constinit EntryPoint<MAPIOPENFORMMGR> pfnMAPIOpenFormMgr("pfnMAPIOpenFormMgr");
constinit EntryPoint<RTFSYNC> pfnRTFSync("pfnRTFSync");
constinit EntryPoint<HRSETONEPROP> pfnHrSetOneProp("pfnHrSetOneProp");
constinit EntryPoint<FREEPADRLIST> pfnFreePadrlist("pfnFreePadrlist");
constinit EntryPoint<PROPCOPYMORE> pfnPropCopyMore("pfnPropCopyMore");
constinit EntryPoint<WRAPCOMPRESSEDRTFSTREAM> pfnWrapCompressedRTFStream("pfnWrapCompressedRTFStream");
constinit EntryPoint<MAPILOGONEX> pfnMAPILogonEx("pfnMAPILogonEx");
constinit EntryPoint<MAPIADMINPROFILES> pfnMAPIAdminProfiles("pfnMAPIAdminProfiles");
constinit EntryPoint<HRVALIDATEIPMSUBTREE> pfnHrValidateIPMSubtree("pfnHrValidateIPMSubtree");
constinit EntryPoint<MAPIOPENLOCALFORMCONTAINER> pfnMAPIOpenLocalFormContainer("pfnMAPIOpenLocalFormContainer");
constinit EntryPoint<HRDISPATCHNOTIFICATIONS> pfnHrDispatchNotifications("pfnHrDispatchNotifications");

// Where a function goes, and the names that libraries export it as, in the order in which they are tried.
struct ImportRow {
    ImportedFunction* function;
    const char* name;
    const char* secondName = nullptr;
};

constexpr ImportRow kImports[] = {
    {&pfnLaunchWizard, "LAUNCHWIZARD"},
    {&pfnMAPIAllocateBuffer, "MAPIAllocateBuffer"},
    {&pfnMAPIAllocateMore, "MAPIAllocateMore"},
    {&pfnMAPIFreeBuffer, "MAPIFreeBuffer"},
    {&pfnHrGetOneProp, "HrGetOneProp@12", "HrGetOneProp"},
    {&pfnMAPIInitialize, "MAPIInitialize"},
    {&pfnMAPIUninitialize, "MAPIUninitialize"},
    {&pfnFreeProws, "FreeProws@4", "FreeProws"},
    {&pfnPpropFindProp, "PpropFindProp@12", "PpropFindProp"},
    {&pfnScDupPropset, "ScDupPropset@16", "ScDupPropset"},
    {&pfnScCountProps, "ScCountProps@12", "ScCountProps"},
    {&pfnScCopyProps, "ScCopyProps@16", "ScCopyProps"},
    {&pfnOpenIMsgOnIStg, "OpenIMsgOnIStg@44", "OpenIMsgOnIStg"},
    {&pfnMAPIGetDefaultMalloc, "MAPIGetDefaultMalloc@0", "MAPIGetDefaultMalloc"},
    {&pfnOpenTnefStreamEx, "OpenTnefStreamEx"},
    {&pfnOpenStreamOnFile, "OpenStreamOnFile"},
    {&pfnCloseIMsgSession, "CloseIMsgSession@4", "CloseIMsgSession"},
    {&pfnOpenIMsgSession, "OpenIMsgSession@12", "OpenIMsgSession"},
    {&pfnHrQueryAllRows, "HrQueryAllRows@24", "HrQueryAllRows"},
    {&pfnMAPIOpenFormMgr, "MAPIOpenFormMgr"},
    {&pfnRTFSync, "RTFSync"},
    {&pfnHrSetOneProp, "HrSetOneProp@8", "HrSetOneProp"},
    {&pfnFreePadrlist, "FreePadrlist@4", "FreePadrlist"},
    {&pfnPropCopyMore, "PropCopyMore@16", "PropCopyMore"},
    {&pfnWrapCompressedRTFStream, "WrapCompressedRTFStream"},
    {&pfnMAPILogonEx, "MAPILogonEx"},
    {&pfnMAPIAdminProfiles, "MAPIAdminProfiles"},
    {&pfnHrValidateIPMSubtree, "HrValidateIPMSubtree@20", "HrValidateIPMSubtree"},
    {&pfnMAPIOpenLocalFormContainer, "MAPIOpenLocalFormContainer"},
    {&pfnHrDispatchNotifications, "HrDispatchNotifications@4", "HrDispatchNotifications"},
};

bool LoadFunction(HMODULE module, ImportedFunction& function, const char* name) noexcept {
    const FARPROC address = GetProcAddress(module, name);
    if (address == nullptr) {
        WarnOnWin32Error(kSourceName, __LINE__, __func__);
        VX_LOG('D') << Vx::LogMsg("Failed to load \"%hs\" from 0x%08X\n"_w, name, module);
        return false;
    }
    function.Set(address);
    return true;
}

// Searches MAPI for a function that is missing.
void Require(const ImportedFunction& function) noexcept {
    if (!function.IsSet()) {
        AutoLoadMAPI();
    }
    if (!function.IsSet()) {
        VX_LOG('D') << Vx::LogMsg("Function %hs not loaded\n"_w, function.PointerName());
    }
}

// The function of an entry point, for which MAPI is searched if need be; null without MAPI.
template <typename Function>
Function* LoadedFunction(const EntryPoint<Function>& entryPoint) noexcept {
    Require(entryPoint);
    return entryPoint.Get();
}

// The call itself. Without MAPI the result is E_FAIL where the function gives an HRESULT or SCODE, which are one type;
// otherwise 0, null or nothing.
template <typename Result, typename... Parameters>
Result Forward(const EntryPoint<Result(Parameters...)>& entryPoint, std::type_identity_t<Parameters>... arguments) {
    if (const auto function = LoadedFunction(entryPoint)) {
        return function(arguments...);
    }
    if constexpr (std::is_same_v<Result, HRESULT>) {
        return E_FAIL;
    } else {
        return Result();
    }
}
static_assert(std::is_same_v<SCODE, HRESULT> && !std::is_same_v<ULONG, HRESULT>);

void Unload(std::atomic<HMODULE>& library) noexcept {
    const HMODULE module = library.exchange(nullptr);
    if (module != nullptr && !FreeLibrary(module)) {
        WarnOnWin32Error(kSourceName, __LINE__, __func__);
    }
}

}  // namespace

constinit std::atomic<HMODULE> hModMSMAPI = nullptr;
constinit std::atomic<HMODULE> hModMAPI = nullptr;
constinit std::atomic<HMODULE> hModMAPIStub = nullptr;
constinit EntryPoint<FGETCOMPONENTPATH> pfnFGetComponentPath("pfnFGetComponentPath");

void AutoLoadMAPI() noexcept {
    VX_LOG('D') << Vx::LogMsg("AutoLoadMAPI - loading MAPI exports\n"_w);
    if (hModMSMAPI == nullptr) {
        WCHAR path[MAX_PATH] = {};
        GetMAPIPath("Microsoft Outlook"_w, path, MAX_PATH);
        if (path[0] != 0) {
            hModMSMAPI = MyLoadLibrary(path);
        }
    }
    if (hModMSMAPI != nullptr) {
        LoadMAPIFuncs(hModMSMAPI);
    }

    if (hModMAPI == nullptr) {
        hModMAPI = LoadFromSystemDir("mapi32.dll"_w);
    }
    if (hModMAPI != nullptr && hModMAPI != hModMSMAPI) {
        LoadMAPIFuncs(hModMAPI);
    }
}

void UnloadMAPI() noexcept {
    VX_LOG('D') << Vx::LogMsg("UnloadMAPI - unloading MAPI exports\n"_w);
    pfnFGetComponentPath.Clear();
    for (const ImportRow& row : kImports) {
        row.function->Clear();
    }
    Unload(hModMSMAPI);
    Unload(hModMAPIStub);
    Unload(hModMAPI);
}

void LoadMAPIFuncs(HMODULE module) noexcept {
    VX_LOG('D') << Vx::LogMsg("LoadMAPIFuncs - loading from 0x%08X\n"_w, module);
    if (module == nullptr) {
        return;
    }
    for (const ImportRow& row : kImports) {
        if (row.function->IsSet() || LoadFunction(module, *row.function, row.name)) {
            continue;
        }
        if (row.secondName != nullptr) {
            LoadFunction(module, *row.function, row.secondName);
        }
    }
}

// ---- The forwarders, in the order of the table ----------------------------------------------------------------------

SCODE STDAPICALLTYPE MAPIAllocateBuffer(ULONG cbSize, LPVOID* lppBuffer) {
    return Forward(pfnMAPIAllocateBuffer, cbSize, lppBuffer);
}

SCODE STDAPICALLTYPE MAPIAllocateMore(ULONG cbSize, LPVOID lpObject, LPVOID* lppBuffer) {
    return Forward(pfnMAPIAllocateMore, cbSize, lpObject, lppBuffer);
}

ULONG STDAPICALLTYPE MAPIFreeBuffer(LPVOID lpBuffer) {
    return lpBuffer == nullptr ? 0 : Forward(pfnMAPIFreeBuffer, lpBuffer);
}

HRESULT STDAPICALLTYPE HrGetOneProp(LPMAPIPROP lpMapiProp, ULONG ulPropTag, LPSPropValue* lppProp) {
    return Forward(pfnHrGetOneProp, lpMapiProp, ulPropTag, lppProp);
}

HRESULT STDAPICALLTYPE MAPIInitialize(LPVOID lpMapiInit) {
    return Forward(pfnMAPIInitialize, lpMapiInit);
}

void STDAPICALLTYPE MAPIUninitialize() {
    Forward(pfnMAPIUninitialize);
}

void STDAPICALLTYPE FreeProws(LPSRowSet lpRows) {
    Forward(pfnFreeProws, lpRows);
}

LPSPropValue STDAPICALLTYPE PpropFindProp(LPSPropValue lpPropArray, ULONG cValues, ULONG ulPropTag) {
    return Forward(pfnPpropFindProp, lpPropArray, cValues, ulPropTag);
}

SCODE STDAPICALLTYPE ScDupPropset(int cValues, LPSPropValue lpPropArray, LPALLOCATEBUFFER lpAllocateBuffer,
                                  LPSPropValue* lppPropArray) {
    return Forward(pfnScDupPropset, cValues, lpPropArray, lpAllocateBuffer, lppPropArray);
}

SCODE STDAPICALLTYPE ScCountProps(int cValues, LPSPropValue lpPropArray, ULONG* lpcb) {
    return Forward(pfnScCountProps, cValues, lpPropArray, lpcb);
}

SCODE STDAPICALLTYPE ScCopyProps(int cValues, LPSPropValue lpPropArray, LPVOID lpvDst, ULONG* lpcb) {
    return Forward(pfnScCopyProps, cValues, lpPropArray, lpvDst, lpcb);
}

SCODE STDAPICALLTYPE OpenIMsgOnIStg(LPMSGSESS lpMsgSess, LPALLOCATEBUFFER lpAllocateBuffer,
                                    LPALLOCATEMORE lpAllocateMore, LPFREEBUFFER lpFreeBuffer, LPMALLOC lpMalloc,
                                    LPVOID lpMapiSup, IStorage* lpStg, MSGCALLRELEASE* lpfMsgCallRelease,
                                    ULONG ulCallerData, ULONG ulFlags, LPMESSAGE* lppMsg) {
    return Forward(pfnOpenIMsgOnIStg, lpMsgSess, lpAllocateBuffer, lpAllocateMore, lpFreeBuffer, lpMalloc, lpMapiSup,
                   lpStg, lpfMsgCallRelease, ulCallerData, ulFlags, lppMsg);
}

LPMALLOC STDAPICALLTYPE MAPIGetDefaultMalloc() {
    return Forward(pfnMAPIGetDefaultMalloc);
}

HRESULT STDAPICALLTYPE OpenTnefStreamEx(LPVOID lpvSupport, IStream* lpStream, LPTSTR lpszStreamName, ULONG ulFlags,
                                        LPMESSAGE lpMessage, WORD wKeyVal, LPADRBOOK lpAdressBook, LPITNEF* lppTNEF) {
    return Forward(pfnOpenTnefStreamEx, lpvSupport, lpStream, lpszStreamName, ulFlags, lpMessage, wKeyVal, lpAdressBook,
                   lppTNEF);
}

void STDAPICALLTYPE CloseIMsgSession(LPMSGSESS lpMsgSess) {
    Forward(pfnCloseIMsgSession, lpMsgSess);
}

SCODE STDAPICALLTYPE OpenIMsgSession(LPMALLOC lpMalloc, ULONG ulFlags, LPMSGSESS* lppMsgSess) {
    return Forward(pfnOpenIMsgSession, lpMalloc, ulFlags, lppMsgSess);
}

HRESULT STDAPICALLTYPE HrQueryAllRows(LPMAPITABLE lpTable, LPSPropTagArray lpPropTags, LPSRestriction lpRestriction,
                                      LPSSortOrderSet lpSortOrderSet, LONG crowsMax, LPSRowSet* lppRows) {
    return Forward(pfnHrQueryAllRows, lpTable, lpPropTags, lpRestriction, lpSortOrderSet, crowsMax, lppRows);
}

HRESULT STDAPICALLTYPE MAPIOpenFormMgr(LPMAPISESSION pSession, LPMAPIFORMMGR* ppmgr) {
    return Forward(pfnMAPIOpenFormMgr, pSession, ppmgr);
}

HRESULT STDAPICALLTYPE RTFSync(LPMESSAGE lpMessage, ULONG ulFlags, BOOL* lpfMessageUpdated) {
    return Forward(pfnRTFSync, lpMessage, ulFlags, lpfMessageUpdated);
}

HRESULT STDAPICALLTYPE HrSetOneProp(LPMAPIPROP lpMapiProp, LPSPropValue lpProp) {
    return Forward(pfnHrSetOneProp, lpMapiProp, lpProp);
}

void STDAPICALLTYPE FreePadrlist(LPADRLIST lpAdrlist) {
    Forward(pfnFreePadrlist, lpAdrlist);
}

SCODE STDAPICALLTYPE PropCopyMore(LPSPropValue lpSPropValueDest, LPSPropValue lpSPropValueSrc,
                                  ALLOCATEMORE* lpfAllocMore, LPVOID lpvObject) {
    const auto function = LoadedFunction(pfnPropCopyMore);
    if (IsCopiedHere(*lpSPropValueSrc)) {
        return HrCopySpecialProp(*lpSPropValueSrc, lpvObject, *lpSPropValueDest);
    }
    return function != nullptr ? function(lpSPropValueDest, lpSPropValueSrc, lpfAllocMore, lpvObject) : E_FAIL;
}

HRESULT STDAPICALLTYPE WrapCompressedRTFStream(IStream* lpCompressedRTFStream, ULONG ulFlags,
                                               IStream** lpUncompressedRTFStream) {
    return Forward(pfnWrapCompressedRTFStream, lpCompressedRTFStream, ulFlags, lpUncompressedRTFStream);
}

HRESULT STDAPICALLTYPE MAPILogonEx(ULONG_PTR ulUIParam, LPTSTR lpszProfileName, LPTSTR lpszPassword, ULONG flFlags,
                                   LPMAPISESSION* lppSession) {
    return Forward(pfnMAPILogonEx, ulUIParam, lpszProfileName, lpszPassword, flFlags, lppSession);
}

HRESULT STDAPICALLTYPE MAPIAdminProfiles(ULONG ulFlags, LPPROFADMIN* lppProfAdmin) {
    return Forward(pfnMAPIAdminProfiles, ulFlags, lppProfAdmin);
}

HRESULT STDAPICALLTYPE HrValidateIPMSubtree(LPMDB lpMDB, ULONG ulFlags, ULONG* lpcValues, LPSPropValue* lppValues,
                                            LPMAPIERROR* lpperr) {
    return Forward(pfnHrValidateIPMSubtree, lpMDB, ulFlags, lpcValues, lppValues, lpperr);
}

HRESULT STDAPICALLTYPE MAPIOpenLocalFormContainer(LPMAPIFORMCONTAINER* ppfcnt) {
    return Forward(pfnMAPIOpenLocalFormContainer, ppfcnt);
}

HRESULT STDAPICALLTYPE HrDispatchNotifications(ULONG ulFlags) {
    return Forward(pfnHrDispatchNotifications, ulFlags);
}
