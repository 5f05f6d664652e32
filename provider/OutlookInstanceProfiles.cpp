// COutlookInstance: the administration of profiles. The host's order of arguments differs from one operation to the
// next.
#include "provider/FacadeCall.h"
#include "provider/FacadeTargets.h"
#include "provider/OutlookInstance.h"
#include "provider/VxDomain.h"

namespace {

constexpr auto& kSourcePath = "OutlookInstance.cpp"_w;

// Makes the change with a line before it and one after it; what came of it is `result`, which is left alone without a
// domain.
template <typename Change>
HRESULT Administrate(const FacadeCall& call, CVxDomain* domain, const Vx::LogMsg& before, const WCHAR* after,
                     bool& result, Change change) {
    return call.Run([&]() -> HRESULT {
        if (const HRESULT hr = call.RequireDomain(domain); FAILED(hr)) {
            return hr;
        }
        call.Log('I', before);
        domain->EnsureConnected();  // after Disconnect there is no engine that could make the change
        result = change(*domain);
        call.Log('I', Vx::LogMsg(after, static_cast<int>(result)));
        return S_OK;
    });
}

}  // namespace

HRESULT COutlookInstance::CreateMAPIProfile(const WCHAR* profileName, bool& result) {
    VX_FACADE_CALL(call, CreateMAPIProfile);
    return Administrate(call, m_domain, Vx::LogMsg("CreateMAPIProfile %s"_w, profileName), "CreateMAPIProfile res %d"_w,
                        result, [&](CVxDomain& domain) { return domain.CreateProfile(HostText(profileName)); });
}

HRESULT COutlookInstance::DeleteMAPIProfile(const WCHAR* profileName, bool& result) {
    VX_FACADE_CALL(call, DeleteMAPIProfile);
    return Administrate(call, m_domain, Vx::LogMsg("DeleteMAPIProfile %s"_w, profileName), "DeleteMAPIProfile res %d"_w,
                        result, [&](CVxDomain& domain) { return domain.DeleteProfile(HostText(profileName)); });
}

HRESULT COutlookInstance::AddExchangeToProfile(const WCHAR* profileName, const WCHAR* mailbox, const WCHAR* server,
                                               bool flag, bool& result) {
    VX_FACADE_CALL(call, AddExchangeToProfile);
    return Administrate(
        call, m_domain,
        Vx::LogMsg("AddExchangeToProfile %s, %s, %s, %d"_w, profileName, mailbox, server, static_cast<int>(flag)),
        "AddExchangeToProfile res %d"_w, result, [&](CVxDomain& domain) {
            return domain.AddExchangeToProfile(HostText(profileName), HostText(mailbox), HostText(server), flag);
        });
}

HRESULT COutlookInstance::AddDelegateStoreToProfile(const WCHAR* displayName, const WCHAR* mailbox, const WCHAR* server,
                                                    const WCHAR* serverDN, const WCHAR* profileName, bool& result) {
    VX_FACADE_CALL(call, AddDelegateStoreToProfile);
    return Administrate(call, m_domain, Vx::LogMsg("AddDelegateStoreToProfile %s, %s"_w, profileName, displayName),
                        "AddDelegateStoreToProfile res %d"_w, result, [&](CVxDomain& domain) {
                            return domain.AddDelegateToProfile(HostText(profileName), HostText(displayName),
                                                               HostText(mailbox), HostText(server), HostText(serverDN));
                        });
}

HRESULT COutlookInstance::RemoveDelegateStore(const WCHAR* storeName, const WCHAR* profileName, bool& result) {
    VX_FACADE_CALL(call, RemoveDelegateStore);
    return Administrate(call, m_domain, Vx::LogMsg("RemoveDelegateStore %s, %s"_w, profileName, storeName),
                        "RemoveDelegateStore res %d"_w, result, [&](CVxDomain& domain) {
                            return domain.RemoveDelegateStore(HostText(profileName), HostText(storeName));
                        });
}

HRESULT COutlookInstance::AddPSTToMAPIProfile(const WCHAR* pstPath, const WCHAR* profileName, bool& result) {
    VX_FACADE_CALL(call, AddPSTToMAPIProfile);
    return Administrate(call, m_domain, Vx::LogMsg("AddPSTToMAPIProfile %s, %s"_w, profileName, pstPath),
                        "AddPSTToMAPIProfile res %d"_w, result, [&](CVxDomain& domain) {
                            return domain.AddPSTToProfile(HostText(profileName), HostText(pstPath));
                        });
}
