#include "provider/ServiceAdministration.h"

#include "mapi/MapiCodes.h"
#include "mapi/MapiRestrictions.h"
#include "mapi/PropTags.h"
#include "provider/Common/Log.h"
#include "provider/Common/WLStr.h"
#include "provider/ImportProcs.h"
#include "provider/RowValues.h"

namespace {

constexpr auto& kSourcePath = "VxMapiEngine.cpp"_w;

// The rows whose service is Exchange. Made for each call, since a restriction is handed over as writable.
struct ExchangeFilter {
    SPropValue name = {PR_SERVICE_NAME_W, 0, {}};
    SRestriction restriction = {RES_CONTENT, {}};

    ExchangeFilter() {
        name.Value.lpszW = const_cast<WCHAR*>(static_cast<const WCHAR*>(kExchangeService));
        restriction.res.resContent = {FL_FULLSTRING, PR_SERVICE_NAME_W, &name};
    }
    ExchangeFilter(const ExchangeFilter&) = delete;
    ExchangeFilter& operator=(const ExchangeFilter&) = delete;
};

}  // namespace

bool OpenProfileAdmin(VxMapiPtr<IProfAdmin>& profiles) {
    const HRESULT hr = MAPIAdminProfiles(0, &profiles);
    if (FAILED(hr) || profiles.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("MAPIAdminProfiles failed (%x)"_w, hr);
        return false;
    }
    return true;
}

bool OpenServiceAdmin(const CStringW& profileName, VxMapiPtr<IMsgServiceAdmin>& services, const WCHAR* failureText) {
    VxMapiPtr<IProfAdmin> profiles;
    if (!OpenProfileAdmin(profiles)) {
        return false;
    }
    const VxArrayPtr<char> name = WLStr::ToAscii(profileName.c_str());
    const HRESULT hr = profiles->AdminServices(reinterpret_cast<LPTSTR>(name.get()), nullptr, 0, 0, &services);
    if (FAILED(hr) || services.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg(failureText, hr);
        return false;
    }
    return true;
}

bool ReadServices(IMsgServiceAdmin* services, LPSPropTagArray columns, ServiceFilter filter,
                  VxLpRowsPtr<SRowSet>& rows) {
    VxMapiPtr<IMAPITable> table;
    HRESULT hr = services->GetMsgServiceTable(0, &table);
    if (FAILED(hr) || table.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("GetMsgServiceTable failed (%x)"_w, hr);
        return false;
    }
    ExchangeFilter exchange;
    hr = HrQueryAllRows(table, columns, filter == ServiceFilter::Exchange ? &exchange.restriction : nullptr, nullptr, 0,
                        &rows);
    if (FAILED(hr)) {
        VX_LOG('E') << Vx::LogMsg("HrQueryAllRows failed (%x)"_w, hr);
        return false;
    }
    if (rows.get() == nullptr || rows->cRows == 0) {
        VX_LOG('E') << Vx::LogMsg("HrQueryAllRows returned no services."_w);
        return false;
    }
    return true;
}

bool OpenProviderAdmin(IMsgServiceAdmin* services, const SRow& service, ULONG uidColumn,
                       VxMapiPtr<IProviderAdmin>& providers) {
    MAPIUID* uid = UidColumn(service, uidColumn);
    const HRESULT hr = uid != nullptr ? services->AdminProviders(uid, 0, &providers) : MAPI_E_NOT_FOUND;
    if (FAILED(hr) || providers.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("AdminProviders failed (%x)"_w, hr);
        return false;
    }
    return true;
}
