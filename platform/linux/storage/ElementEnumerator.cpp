#include "platform/linux/storage/ElementEnumerator.h"

#include "platform/TaskMemory.h"
#include "platform/linux/storage/ComObject.h"
#include "platform/linux/storage/ElementStat.h"

namespace vx_storage {
namespace {

class ElementEnumerator final : public ComObject<ElementEnumerator, IEnumSTATSTG> {
public:
    ElementEnumerator(std::shared_ptr<const StorageState> storage, CStringW last) noexcept
        : m_storage(std::move(storage)), m_last(std::move(last)) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** object) override {
        return Answer(riid, object, IID_IEnumSTATSTG);
    }

    HRESULT STDMETHODCALLTYPE Next(ULONG celt, STATSTG* rgelt, ULONG* pceltFetched) override {
        return Guarded([&] {
            StoreIfWanted(pceltFetched, ULONG{0});
            if (celt != 0 && (rgelt == nullptr || (pceltFetched == nullptr && celt != 1))) {
                return E_INVALIDARG;
            }
            if (m_storage->scope->Ended()) {
                return STG_E_REVERTED;
            }
            ULONG count = 0;
            CStringW last = m_last;
            for (auto at = After(last); count < celt && at != Children().end(); ++at, ++count) {
                last = at->first;
                if (const HRESULT hr = DescribeNode(*at->second, at->first, 0, STATFLAG_DEFAULT, &rgelt[count]);
                    FAILED(hr)) {
                    while (count > 0) {
                        CoTaskMemFree(rgelt[--count].pwcsName);
                    }
                    return hr;
                }
            }
            m_last = std::move(last);
            StoreIfWanted(pceltFetched, count);
            return count == celt ? S_OK : S_FALSE;
        });
    }

    HRESULT STDMETHODCALLTYPE Skip(ULONG celt) override {
        return Guarded([&] {
            if (m_storage->scope->Ended()) {
                return STG_E_REVERTED;
            }
            ULONG left = celt;
            for (auto at = After(m_last); left > 0 && at != Children().end(); ++at, --left) {
                m_last = at->first;
            }
            return left == 0 ? S_OK : S_FALSE;
        });
    }

    HRESULT STDMETHODCALLTYPE Reset() override {
        if (m_storage->scope->Ended()) {
            return STG_E_REVERTED;
        }
        m_last.clear();
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Clone(IEnumSTATSTG** clone) override {
        return Guarded([&] {
            if (clone == nullptr) {
                return STG_E_INVALIDPOINTER;
            }
            *clone = nullptr;
            if (m_storage->scope->Ended()) {
                return STG_E_REVERTED;
            }
            MakeObject<ElementEnumerator>(clone, m_storage, m_last);
            return S_OK;
        });
    }

private:
    const Node::Children& Children() const noexcept { return m_storage->node->children; }
    Node::Children::const_iterator After(const CStringW& name) const { return Children().upper_bound(name); }

    std::shared_ptr<const StorageState> m_storage;
    CStringW m_last;  // empty, which no element is called, before the first
};

}  // namespace

void MakeEnumerator(std::shared_ptr<const StorageState> storage, IEnumSTATSTG** object) {
    MakeObject<ElementEnumerator>(object, std::move(storage), CStringW());
}

}  // namespace vx_storage
