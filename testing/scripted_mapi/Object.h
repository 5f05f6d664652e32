// Scripted COM objects: on the heap, counted among the script's, and answering what they have no script for as
// testing/StubInterfaces.h does.
#pragma once

#include "mapi/MapiGuids.h"
#include "mapi/MapiInterfaces.h"
#include "testing/scripted_mapi/CallText.h"
#include "testing/scripted_mapi/Model.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace scripted_mapi {

// A table of rows, with one reference, which is the caller's.
IMAPITable* NewTable(const std::shared_ptr<Context>& context, std::vector<Bag> rows);

// A bag of each model, as the rows of a table.
template <typename Model>
std::vector<Bag> RowsOf(const std::vector<std::shared_ptr<Model>>& models, Bag Model::*row) {
    std::vector<Bag> rows;
    for (const auto& model : models) {
        rows.push_back((*model).*row);
    }
    return rows;
}

// Made with one reference, which is the maker's; the last Release ends it.
template <typename Stub>
class Object : public Stub {
public:
    explicit Object(std::shared_ptr<Context> context) : m_context(std::move(context)) {
        m_context->script.ObjectBegins();
    }
    virtual ~Object() { m_context->script.ObjectEnds(); }

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
        return m_context->script.Enter(CallText(name, arguments...));
    }

    // A method that takes flags and gives a table.
    HRESULT GiveTable(const std::string& name, ULONG flags, std::vector<Bag> rows, IMAPITable** table) {
        if (const auto answer = Enter(name, Hex8(flags))) {
            return *answer;
        }
        *table = NewTable(m_context, std::move(rows));
        return S_OK;
    }

    const std::shared_ptr<Context>& GetContext() const { return m_context; }

private:
    std::shared_ptr<Context> m_context;
    ULONG m_references = 1;
};

}  // namespace scripted_mapi
