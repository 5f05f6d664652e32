// Scripted COM objects: on the heap, counted among the script's, and answering what they have no script for as
// testing/StubInterfaces.h does.
#pragma once

#include "mapi/MapiGuids.h"
#include "testing/scripted_mapi/CallText.h"
#include "testing/scripted_mapi/Script.h"

#include <memory>
#include <optional>
#include <utility>

namespace scripted_mapi {

// Made with one reference, which is the maker's; the last Release ends it.
template <typename Stub>
class Object : public Stub {
public:
    explicit Object(std::shared_ptr<Script> script) : m_script(std::move(script)) { m_script->ObjectBegins(); }
    virtual ~Object() { m_script->ObjectEnds(); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (iid != IID_IUnknown && !IsInterface(iid)) {
            return E_NOINTERFACE;
        }
        AddRef();
        *object = static_cast<Stub*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
    ULONG STDMETHODCALLTYPE Release() override {
        const ULONG left = --m_references;
        if (left == 0) {
            delete this;
        }
        return left;
    }

protected:
    // Whether the object answers to the identifier, IUnknown's aside.
    virtual bool IsInterface(REFIID) const { return false; }

    // Notes a call of this object, for the first line of a method: if (auto answer = Enter(...)) return *answer;
    template <typename... Arguments>
    std::optional<HRESULT> Enter(const std::string& name, const Arguments&... arguments) {
        return m_script->Enter(CallText(name, arguments...));
    }

    const std::shared_ptr<Script>& GetScript() const { return m_script; }

private:
    std::shared_ptr<Script> m_script;
    ULONG m_references = 1;
};

}  // namespace scripted_mapi
