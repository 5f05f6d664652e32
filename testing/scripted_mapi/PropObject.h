// Scripted objects with properties: IMAPIProp's methods over a bag, under the interface's own name in the script.
#pragma once

#include "mapi/MapiFlags.h"
#include "mapi/MapiInterfaces.h"
#include "testing/scripted_mapi/Model.h"
#include "testing/scripted_mapi/Object.h"

namespace scripted_mapi {

// The bodies that all interfaces share. Tags may be null for all properties.
HRESULT ReadProps(const Bag& bag, const SPropTagArray* tags, ULONG flags, ULONG* count, LPSPropValue* properties);
HRESULT FindNamedIds(Names& names, ULONG count, LPMAPINAMEID* asked, ULONG flags, LPSPropTagArray* tags);
HRESULT OpenAsStream(const std::shared_ptr<Context>& context, const Bag& bag, ULONG tag, const IID* iid,
                     IUnknown** object);
HRESULT DescribeError(HRESULT result, LPMAPIERROR* error);
std::string NamesText(ULONG count, const MAPINAMEID* const* names);

// A stream over bytes of its own. Calls are noted as "IStream::Read(4000)".
IUnknown* NewStream(const std::shared_ptr<Context>& context, Bytes bytes);

template <typename Stub>
class PropObject : public Object<Stub> {
public:
    // `name` is the interface's; `bag` shares the model's data.
    PropObject(std::shared_ptr<Context> context, const char* name, std::shared_ptr<Bag> bag)
        : Object<Stub>(std::move(context)), m_name(name), m_bag(std::move(bag)) {}

    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT result, ULONG, LPMAPIERROR* error) override {
        return DescribeError(result, error);
    }
    HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG flags, ULONG* count,
                                       LPSPropValue* properties) override {
        if (const auto answer = EnterMethod("GetProps", TagsText(tags), Hex8(flags))) {
            return *answer;
        }
        return ReadProps(*m_bag, tags, flags, count, properties);
    }
    HRESULT STDMETHODCALLTYPE SetProps(ULONG count, LPSPropValue properties, LPSPropProblemArray*) override {
        if (const auto answer = EnterMethod("SetProps", ValuesText(count, properties))) {
            return *answer;
        }
        for (ULONG i = 0; i < count; ++i) {
            m_bag->Set(CopyOf(properties[i]));
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SaveChanges(ULONG flags) override {
        return EnterMethod("SaveChanges", Hex8(flags)).value_or(S_OK);
    }
    HRESULT STDMETHODCALLTYPE CopyTo(ULONG, LPCIID, LPSPropTagArray excluded, ULONG_PTR, LPMAPIPROGRESS, LPCIID iid,
                                     LPVOID, ULONG flags, LPSPropProblemArray*) override {
        return EnterMethod("CopyTo", TagsText(excluded), InterfaceName(iid), Hex8(flags)).value_or(E_NOTIMPL);
    }
    HRESULT STDMETHODCALLTYPE GetIDsFromNames(ULONG count, LPMAPINAMEID* names, ULONG flags,
                                              LPSPropTagArray* tags) override {
        if (const auto answer = EnterMethod("GetIDsFromNames", NamesText(count, names), Hex8(flags))) {
            return *answer;
        }
        return FindNamedIds(this->GetContext()->names, count, names, flags, tags);
    }
    HRESULT STDMETHODCALLTYPE OpenProperty(ULONG tag, LPCIID iid, ULONG options, ULONG flags,
                                           LPUNKNOWN* object) override {
        if (const auto answer = EnterMethod("OpenProperty", Hex8(tag), InterfaceName(iid), options, Hex8(flags))) {
            return *answer;
        }
        return OpenObject(tag, iid, flags, object);
    }

protected:
    bool IsInterface(REFIID iid) const override { return iid == IID_IMAPIProp; }

    // What OpenProperty gives when no order answers.
    virtual HRESULT OpenObject(ULONG tag, const IID* iid, ULONG /*flags*/, IUnknown** object) {
        return OpenAsStream(this->GetContext(), *m_bag, tag, iid, object);
    }

    template <typename... Arguments>
    std::optional<HRESULT> EnterMethod(const char* method, const Arguments&... arguments) {
        return this->Enter(m_name + "::" + method, arguments...);
    }
    HRESULT GiveTableBy(const char* method, ULONG flags, std::vector<Bag> rows, IMAPITable** table) {
        return this->GiveTable(m_name + "::" + method, flags, std::move(rows), table);
    }

private:
    std::string m_name;
    std::shared_ptr<Bag> m_bag;
};

}  // namespace scripted_mapi
