#include "testing/scripted_mapi/AdminObjects.h"

#include "mapi/MapiCodes.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "testing/StubAdminInterfaces.h"
#include "testing/scripted_mapi/PropObject.h"
#include "testing/scripted_mapi/StoreObjects.h"

#include <algorithm>
#include <iterator>

namespace scripted_mapi {

namespace {

using namespace vx_testing;

// Texts of these calls are 8-bit: none of them is told MAPI_UNICODE.
std::string AnsiText(LPTSTR text) {
    return CallerText(text, false);
}

Bytes BytesOf(const MAPIUID& uid) {
    return Bytes(std::begin(uid.ab), std::end(uid.ab));
}

template <typename Model>
auto FindByUid(std::vector<std::shared_ptr<Model>>& models, ULONG tag, const MAPIUID* uid) {
    return std::find_if(models.begin(), models.end(),
                        [&](const auto& model) { return model->row.BytesOf(tag) == BytesOf(*uid); });
}

class ProfSect final : public PropObject<StubProfSect> {
public:
    ProfSect(const std::shared_ptr<Context>& context, std::shared_ptr<Bag> bag)
        : PropObject(context, "IProfSect", std::move(bag)) {}
};

class ProviderAdmin final : public Object<StubProviderAdmin> {
public:
    ProviderAdmin(const std::shared_ptr<Context>& context, std::shared_ptr<ProfileModel> profile,
                  std::shared_ptr<ServiceModel> service)
        : Object(context), m_profile(std::move(profile)), m_service(std::move(service)) {}

    HRESULT STDMETHODCALLTYPE GetProviderTable(ULONG flags, LPMAPITABLE* table) override {
        return GiveTable("IProviderAdmin::GetProviderTable", flags, RowsOf(m_service->providers, &ProviderModel::row),
                         table);
    }
    HRESULT STDMETHODCALLTYPE CreateProvider(LPTSTR name, ULONG count, LPSPropValue properties, ULONG_PTR window,
                                             ULONG flags, MAPIUID* uid) override {
        if (const auto answer = Enter("IProviderAdmin::CreateProvider", AnsiText(name), ValuesText(count, properties),
                                      window, Hex8(flags))) {
            return *answer;
        }
        auto provider = std::make_shared<ProviderModel>();
        for (ULONG i = 0; i < count; ++i) {
            provider->section.Set(CopyOf(properties[i]));
        }
        *uid = GetContext()->NewUid();
        provider->row = {
            Binary(PR_PROVIDER_UID, BytesOf(*uid)),
            WideText(PR_DISPLAY_NAME_W, std::get<CStringW>(provider->section.Read(PR_DISPLAY_NAME_W).data)),
            Number(PR_RESOURCE_TYPE, MAPI_STORE_PROVIDER)};
        m_service->providers.push_back(provider);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE DeleteProvider(LPMAPIUID uid) override {
        if (const auto answer = Enter("IProviderAdmin::DeleteProvider", UidText(uid))) {
            return *answer;
        }
        const auto found = FindByUid(m_service->providers, PR_PROVIDER_UID, uid);
        if (found == m_service->providers.end()) {
            return MAPI_E_NOT_FOUND;
        }
        m_service->providers.erase(found);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OpenProfileSection(LPMAPIUID uid, LPCIID iid, ULONG flags, LPPROFSECT* section) override {
        if (const auto answer =
                Enter("IProviderAdmin::OpenProfileSection", UidText(uid), InterfaceName(iid), Hex8(flags))) {
            return *answer;
        }
        return OpenSection(GetContext(), m_profile, uid, section);
    }

private:
    std::shared_ptr<ProfileModel> m_profile;
    std::shared_ptr<ServiceModel> m_service;
};

class ServiceAdmin final : public Object<StubMsgServiceAdmin> {
public:
    ServiceAdmin(const std::shared_ptr<Context>& context, std::shared_ptr<ProfileModel> profile)
        : Object(context), m_profile(std::move(profile)) {}

    HRESULT STDMETHODCALLTYPE GetMsgServiceTable(ULONG flags, LPMAPITABLE* table) override {
        return GiveTable("IMsgServiceAdmin::GetMsgServiceTable", flags, RowsOf(m_profile->services, &ServiceModel::row),
                         table);
    }
    HRESULT STDMETHODCALLTYPE CreateMsgService(LPTSTR service, LPTSTR displayName, ULONG_PTR window,
                                               ULONG flags) override {
        if (const auto answer = Enter("IMsgServiceAdmin::CreateMsgService", AnsiText(service), AnsiText(displayName),
                                      window, Hex8(flags))) {
            return *answer;
        }
        AddService(*m_profile, AnsiText(service), GetContext()->NewUid().ab[0])
            ->row.Set(Text(PR_DISPLAY_NAME_W, AnsiText(displayName)));
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ConfigureMsgService(LPMAPIUID uid, ULONG_PTR window, ULONG flags, ULONG count,
                                                  LPSPropValue properties) override {
        // The window is the host's, so only whether there is one is told.
        if (const auto answer =
                Enter("IMsgServiceAdmin::ConfigureMsgService", UidText(uid), window == 0 ? "no window" : "window",
                      Hex8(flags), ValuesText(count, properties))) {
            return *answer;
        }
        const auto found = FindByUid(m_profile->services, PR_SERVICE_UID, uid);
        if (found == m_profile->services.end()) {
            return MAPI_E_NOT_FOUND;
        }
        for (ULONG i = 0; i < count; ++i) {
            (*found)->configuration.Set(CopyOf(properties[i]));
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE DeleteMsgService(LPMAPIUID uid) override {
        if (const auto answer = Enter("IMsgServiceAdmin::DeleteMsgService", UidText(uid))) {
            return *answer;
        }
        const auto found = FindByUid(m_profile->services, PR_SERVICE_UID, uid);
        if (found == m_profile->services.end()) {
            return MAPI_E_NOT_FOUND;
        }
        m_profile->services.erase(found);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE AdminProviders(LPMAPIUID uid, ULONG flags, LPPROVIDERADMIN* providers) override {
        if (const auto answer = Enter("IMsgServiceAdmin::AdminProviders", UidText(uid), Hex8(flags))) {
            return *answer;
        }
        const auto found = FindByUid(m_profile->services, PR_SERVICE_UID, uid);
        if (found == m_profile->services.end()) {
            return MAPI_E_NOT_FOUND;
        }
        *providers = new ProviderAdmin(GetContext(), m_profile, *found);
        return S_OK;
    }

private:
    std::shared_ptr<ProfileModel> m_profile;
};

class ProfAdmin final : public Object<StubProfAdmin> {
public:
    using Object::Object;

    HRESULT STDMETHODCALLTYPE GetProfileTable(ULONG flags, LPMAPITABLE* table) override {
        std::vector<Bag> rows;
        for (const auto& profile : GetContext()->profiles) {
            rows.push_back({Text(PR_DISPLAY_NAME_A, profile->name), Flag(PR_DEFAULT_PROFILE, profile->isDefault)});
        }
        return GiveTable("IProfAdmin::GetProfileTable", flags, std::move(rows), table);
    }
    HRESULT STDMETHODCALLTYPE CreateProfile(LPTSTR name, LPTSTR password, ULONG_PTR window, ULONG flags) override {
        if (const auto answer =
                Enter("IProfAdmin::CreateProfile", AnsiText(name), AnsiText(password), window, Hex8(flags))) {
            return *answer;
        }
        if (GetContext()->FindProfile(AnsiText(name)) != nullptr) {
            return MAPI_E_NO_ACCESS;
        }
        GetContext()->profiles.push_back(std::make_shared<ProfileModel>());
        GetContext()->profiles.back()->name = AnsiText(name);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE DeleteProfile(LPTSTR name, ULONG flags) override {
        if (const auto answer = Enter("IProfAdmin::DeleteProfile", AnsiText(name), Hex8(flags))) {
            return *answer;
        }
        const auto removed =
            std::erase_if(GetContext()->profiles, [&](const auto& profile) { return profile->name == AnsiText(name); });
        return removed != 0 ? S_OK : MAPI_E_NOT_FOUND;
    }
    HRESULT STDMETHODCALLTYPE AdminServices(LPTSTR name, LPTSTR password, ULONG_PTR window, ULONG flags,
                                            LPSERVICEADMIN* services) override {
        if (const auto answer =
                Enter("IProfAdmin::AdminServices", AnsiText(name), AnsiText(password), window, Hex8(flags))) {
            return *answer;
        }
        auto profile = GetContext()->FindProfile(AnsiText(name));
        if (profile == nullptr) {
            return MAPI_E_NOT_FOUND;
        }
        *services = NewServiceAdmin(GetContext(), std::move(profile));
        return S_OK;
    }
};

}  // namespace

IProfAdmin* NewProfAdmin(const std::shared_ptr<Context>& context) {
    return new ProfAdmin(context);
}

IMsgServiceAdmin* NewServiceAdmin(const std::shared_ptr<Context>& context, std::shared_ptr<ProfileModel> profile) {
    return new ServiceAdmin(context, std::move(profile));
}

HRESULT OpenSection(const std::shared_ptr<Context>& context, const std::shared_ptr<ProfileModel>& profile,
                    const MAPIUID* uid, IProfSect** section) {
    if (*uid == kGlobalProfileSection) {
        *section = new ProfSect(context, std::shared_ptr<Bag>(profile, &profile->globalSection));
        return S_OK;
    }
    for (const auto& service : profile->services) {
        const auto found = FindByUid(service->providers, PR_PROVIDER_UID, uid);
        if (found != service->providers.end()) {
            *section = new ProfSect(context, std::shared_ptr<Bag>(*found, &(*found)->section));
            return S_OK;
        }
    }
    return MAPI_E_NOT_FOUND;
}

}  // namespace scripted_mapi
