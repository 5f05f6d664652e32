#include "localmapi/profile/Profile.h"

#include "localmapi/props/TextFolding.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/CodePage.h"
#include "platform/ResultCodes.h"

#include <algorithm>
#include <cstring>
#include <random>
#include <utility>

namespace localmapi::profile {

namespace {

constexpr ULONG kProviderLists[] = {PR_STORE_PROVIDERS, PR_AB_PROVIDERS, PR_TRANSPORT_PROVIDERS};

std::vector<MAPIUID> UidsIn(ByteView list) {
    std::vector<MAPIUID> uids(list.Size() / sizeof(MAPIUID));
    for (std::size_t i = 0; i < uids.size(); ++i) {
        std::memcpy(uids[i].ab, list.Data() + i * sizeof(MAPIUID), sizeof(MAPIUID));
    }
    return uids;
}

ByteView BytesOf(const std::vector<MAPIUID>& uids) {
    return {reinterpret_cast<const std::byte*>(uids.data()), uids.size() * sizeof(MAPIUID)};
}

auto HasUid(const MAPIUID& uid) {
    return [&uid](const Section& section) { return section.Uid() == uid; };
}

}  // namespace

// ---- Section --------------------------------------------------------------------------------------------------------

std::size_t Section::Place(ULONG id) const noexcept {
    const auto at =
        std::lower_bound(m_properties.begin(), m_properties.end(), id,
                         [](const SPropValue& value, ULONG wanted) { return PROP_ID(value.ulPropTag) < wanted; });
    return static_cast<std::size_t>(at - m_properties.begin());
}

const SPropValue* Section::Find(ULONG id) const noexcept {
    const std::size_t at = Place(id);
    return at < m_properties.size() && PROP_ID(m_properties[at].ulPropTag) == id ? &m_properties[at] : nullptr;
}

CStringW Section::Text(ULONG tag) const {
    const SPropValue* value = Find(PROP_ID(tag));
    switch (value == nullptr ? PT_NULL : PROP_TYPE(value->ulPropTag)) {
        case PT_UNICODE: return value->Value.lpszW;
        case PT_STRING8: return ToWide(value->Value.lpszA, CP_ACP);
        default: return {};
    }
}

std::optional<LONG> Section::Long(ULONG tag) const noexcept {
    const SPropValue* value = Find(PROP_ID(tag));
    return value != nullptr && PROP_TYPE(value->ulPropTag) == PT_LONG ? std::optional(value->Value.l) : std::nullopt;
}

bool Section::Bool(ULONG tag) const noexcept {
    const SPropValue* value = Find(PROP_ID(tag));
    return value != nullptr && PROP_TYPE(value->ulPropTag) == PT_BOOLEAN && value->Value.b != 0;
}

ByteView Section::Binary(ULONG tag) const noexcept {
    const SPropValue* value = Find(PROP_ID(tag));
    return value != nullptr && PROP_TYPE(value->ulPropTag) == PT_BINARY ? localmapi::BytesOf(value->Value.bin)
                                                                        : ByteView();
}

HRESULT Section::Set(const SPropValue& value) {
    SPropValue copy{};
    const HRESULT copied = CopyValue(value, *m_memory, copy);
    if (FAILED(copied)) {
        return copied;
    }
    const ULONG id = PROP_ID(value.ulPropTag);
    const std::size_t at = Place(id);
    if (at < m_properties.size() && PROP_ID(m_properties[at].ulPropTag) == id) {
        m_properties[at] = copy;
    } else {
        m_properties.insert(m_properties.begin() + static_cast<std::ptrdiff_t>(at), copy);
    }
    return S_OK;
}

void Section::SetText(ULONG tag, WideView text) {
    Set(WideValue(tag, text, *m_memory));
}

void Section::SetLong(ULONG tag, LONG number) {
    Set(LongValue(tag, number));
}

void Section::SetBool(ULONG tag, bool truth) {
    Set(BoolValue(tag, truth));
}

void Section::SetBinary(ULONG tag, ByteView bytes) {
    Set(BinaryValue(tag, bytes, *m_memory));
}

bool Section::Remove(ULONG id) {
    const std::size_t at = Place(id);
    if (at == m_properties.size() || PROP_ID(m_properties[at].ulPropTag) != id) {
        return false;
    }
    m_properties.erase(m_properties.begin() + static_cast<std::ptrdiff_t>(at));
    return true;
}

// ---- Profile --------------------------------------------------------------------------------------------------------

Profile::Profile(CStringW profileName)
    : name(std::move(profileName)), global(kGlobalProfileSection, std::make_shared<Arena>()) {
    global.SetBinary(PR_STORE_PROVIDERS, {});
    global.SetLong(PR_PROFILE_CONFIG_FLAGS, 0);
}

Service* Profile::FindService(const MAPIUID& uid) noexcept {
    const auto found = std::find_if(services.begin(), services.end(),
                                    [&](const Service& service) { return service.section.Uid() == uid; });
    return found == services.end() ? nullptr : &*found;
}

const Service* Profile::ServiceOf(const MAPIUID& provider) const noexcept {
    const auto found = std::find_if(services.begin(), services.end(), [&](const Service& service) {
        return std::any_of(service.providers.begin(), service.providers.end(), HasUid(provider));
    });
    return found == services.end() ? nullptr : &*found;
}

Service* Profile::ServiceOf(const MAPIUID& provider) noexcept {
    return const_cast<Service*>(std::as_const(*this).ServiceOf(provider));
}

Section* Profile::FindProvider(const MAPIUID& uid) noexcept {
    Service* service = ServiceOf(uid);
    return service == nullptr ? nullptr
                              : &*std::find_if(service->providers.begin(), service->providers.end(), HasUid(uid));
}

Section* Profile::FindSection(const MAPIUID& uid) noexcept {
    if (uid == global.Uid()) {
        return &global;
    }
    if (Service* service = FindService(uid)) {
        return &service->section;
    }
    if (Section* provider = FindProvider(uid)) {
        return provider;
    }
    const auto found = std::find_if(others.begin(), others.end(), HasUid(uid));
    return found == others.end() ? nullptr : &*found;
}

Section& Profile::SectionFor(const MAPIUID& uid) {
    Section* found = FindSection(uid);
    return found != nullptr ? *found : others.emplace_back(NewSection(uid));
}

bool Profile::RemoveService(const MAPIUID& uid) {
    const Service* service = FindService(uid);
    if (service == nullptr) {
        return false;
    }
    for (const Section& provider : service->providers) {
        Delist(provider.Uid());
    }
    services.erase(services.begin() + (service - services.data()));
    return true;
}

bool Profile::RemoveProvider(const MAPIUID& uid) {
    Service* service = ServiceOf(uid);
    if (service == nullptr) {
        return false;
    }
    std::erase_if(service->providers, HasUid(uid));
    Delist(uid);
    return true;
}

void Profile::Enlist(ULONG listTag, const MAPIUID& provider) {
    std::vector<MAPIUID> uids = UidsIn(global.Binary(listTag));
    uids.push_back(provider);
    global.SetBinary(listTag, BytesOf(uids));
}

void Profile::MoveToFront(ULONG listTag, std::span<const MAPIUID> order) {
    std::vector<MAPIUID> uids;
    const auto append = [&uids](const MAPIUID& uid) {
        if (std::find(uids.begin(), uids.end(), uid) == uids.end()) {
            uids.push_back(uid);
        }
    };
    std::for_each(order.begin(), order.end(), append);
    const std::vector<MAPIUID> before = UidsIn(global.Binary(listTag));
    std::for_each(before.begin(), before.end(), append);
    global.SetBinary(listTag, BytesOf(uids));
}

void Profile::Delist(const MAPIUID& provider) {
    for (const ULONG list : kProviderLists) {
        std::vector<MAPIUID> uids = UidsIn(global.Binary(list));
        if (std::erase(uids, provider) > 0) {
            global.SetBinary(list, BytesOf(uids));
        }
    }
}

std::vector<const Section*> Profile::StoreProviders() const {
    std::vector<const Section*> stores;
    for (const Service& service : services) {
        for (const Section& provider : service.providers) {
            if (provider.Long(PR_RESOURCE_TYPE) == static_cast<LONG>(MAPI_STORE_PROVIDER)) {
                stores.push_back(&provider);
            }
        }
    }
    const std::vector<MAPIUID> order = UidsIn(global.Binary(PR_STORE_PROVIDERS));
    std::stable_sort(stores.begin(), stores.end(), [&](const Section* left, const Section* right) {
        return std::find(order.begin(), order.end(), left->Uid()) < std::find(order.begin(), order.end(), right->Uid());
    });
    return stores;
}

MAPIUID NewUid() {
    std::random_device random;
    MAPIUID uid;
    for (std::size_t at = 0; at < sizeof(uid.ab); at += sizeof(std::uint32_t)) {
        const std::uint32_t number = random();
        std::memcpy(uid.ab + at, &number, sizeof(number));
    }
    return uid;
}

bool IsNameBefore(WideView left, WideView right) {
    return std::ranges::lexicographical_compare(left, right, {}, FoldCase, FoldCase);
}

bool IsSameName(WideView left, WideView right) {
    return std::ranges::equal(left, right, {}, FoldCase, FoldCase);
}

}  // namespace localmapi::profile
