// IMAPIProp's slots over a PropCore, for every interface that derives from it. Objects that only have properties are
// made with SimpleObject.
#pragma once

#include "localmapi/com/ComObject.h"
#include "localmapi/object/PropCopy.h"
#include "localmapi/object/PropCore.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"

#include <memory>
#include <span>
#include <utility>

namespace localmapi {

template <class Interface>
class PropObject : public ComObject<Interface>, public PropCore {
public:
    PropObject(std::unique_ptr<PropertySource> source, ComPtr<IUnknown> keeps, PropertyNames& names, SharedLock lock)
        : ComObject<Interface>(std::move(lock)),
          PropCore(std::move(source), std::move(keeps), &names, this->Lock(), this->Failure()) {}

    // With names of its own.
    PropObject(std::unique_ptr<PropertySource> source, ComPtr<IUnknown> keeps, SharedLock lock)
        : ComObject<Interface>(std::move(lock)),
          PropCore(std::move(source), std::move(keeps), nullptr, this->Lock(), this->Failure()) {}

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT result, ULONG flags, LPMAPIERROR* error) override {
        return this->GiveLastError(result, flags, error);
    }
    HRESULT STDMETHODCALLTYPE SaveChanges(ULONG) override {
        return this->Guarded([&] { return SaveObject(); });
    }
    HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count, LPSPropValue* values) override {
        return this->Guarded([&] { return PropCore::GetProps(tags, flags, count, values); });
    }
    HRESULT STDMETHODCALLTYPE GetPropList(ULONG flags, LPSPropTagArray* tags) override {
        return this->Guarded([&] { return PropCore::GetPropList(flags, tags); });
    }
    HRESULT STDMETHODCALLTYPE OpenProperty(ULONG tag, LPCIID interfaceId, ULONG interfaceOptions, ULONG flags,
                                           LPUNKNOWN* object) override {
        if (interfaceId == nullptr || object == nullptr) {
            return MAPI_E_INVALID_PARAMETER;
        }
        *object = nullptr;
        return this->Guarded([&] { return OpenAs(tag, *interfaceId, interfaceOptions, flags, object); });
    }
    HRESULT STDMETHODCALLTYPE SetProps(ULONG count, LPSPropValue values, LPSPropProblemArray* problems) override {
        return this->Guarded([&] { return PropCore::SetProps(count, values, problems); });
    }
    HRESULT STDMETHODCALLTYPE DeleteProps(LPSPropTagArray tags, LPSPropProblemArray* problems) override {
        return this->Guarded([&] { return PropCore::DeleteProps(tags, problems); });
    }
    HRESULT STDMETHODCALLTYPE CopyTo(ULONG excludedInterfaces, LPCIID interfaces, LPSPropTagArray excluded, ULONG_PTR,
                                     LPMAPIPROGRESS progress, LPCIID, LPVOID target, ULONG flags,
                                     LPSPropProblemArray* problems) override {
        return this->Guarded([&] {
            const CopyRequest request{
                .all = true,
                .tags = excluded,
                .excludedInterfaces = {interfaces, interfaces == nullptr ? 0 : excludedInterfaces},
                .progress = progress,
                .flags = flags};
            return CopyObject(request, target, problems);
        });
    }
    HRESULT STDMETHODCALLTYPE CopyProps(LPSPropTagArray included, ULONG_PTR, LPMAPIPROGRESS progress, LPCIID,
                                        LPVOID target, ULONG flags, LPSPropProblemArray* problems) override {
        return this->Guarded([&] {
            const CopyRequest request{
                .all = false, .tags = included, .excludedInterfaces = {}, .progress = progress, .flags = flags};
            return CopyObject(request, target, problems);
        });
    }
    HRESULT STDMETHODCALLTYPE GetNamesFromIDs(LPSPropTagArray* tags, LPGUID set, ULONG flags, ULONG* count,
                                              LPMAPINAMEID** names) override {
        return this->Guarded([&] { return PropCore::GetNamesFromIDs(tags, set, flags, count, names); });
    }
    HRESULT STDMETHODCALLTYPE GetIDsFromNames(ULONG count, LPMAPINAMEID* names, ULONG flags,
                                              LPSPropTagArray* tags) override {
        return this->Guarded([&] { return PropCore::GetIDsFromNames(count, names, flags, tags); });
    }

protected:
    bool Implements(REFIID interfaceId) const override { return interfaceId == IID_IMAPIProp; }

    virtual HRESULT SaveObject() { return Save(); }

    // OpenProperty, for other interfaces than streams: a derived class looks at its own and passes the rest on.
    virtual HRESULT OpenAs(ULONG tag, REFIID interfaceId, ULONG interfaceOptions, ULONG flags, IUnknown** object) {
        if (interfaceId != IID_IStream) {
            return MAPI_E_INTERFACE_NOT_SUPPORTED;
        }
        return OpenStream(tag, interfaceOptions, flags, ComPtr<IUnknown>(static_cast<Interface*>(this)), object);
    }

    // CopyTo and CopyProps; a message copies its recipients and attachments too.
    virtual HRESULT CopyObject(const CopyRequest& request, void* target, SPropProblemArray** problems) {
        return CopyProperties(*this, request, static_cast<IMAPIProp*>(target), this->Failure(), problems);
    }
};

// An object that is its properties.
template <class Interface>
class SimpleObject final : public PropObject<Interface> {
public:
    SimpleObject(REFIID interfaceId, std::unique_ptr<PropertySource> source, ComPtr<IUnknown> keeps,
                 PropertyNames& names, SharedLock lock)
        : PropObject<Interface>(std::move(source), std::move(keeps), names, std::move(lock)),
          m_interfaceId(interfaceId) {}
    SimpleObject(REFIID interfaceId, std::unique_ptr<PropertySource> source, ComPtr<IUnknown> keeps, SharedLock lock)
        : PropObject<Interface>(std::move(source), std::move(keeps), std::move(lock)), m_interfaceId(interfaceId) {}

protected:
    bool Implements(REFIID interfaceId) const override {
        return interfaceId == m_interfaceId || PropObject<Interface>::Implements(interfaceId);
    }

private:
    IID m_interfaceId;
};

}  // namespace localmapi
