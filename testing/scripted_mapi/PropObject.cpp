#include "testing/scripted_mapi/PropObject.h"

#include "mapi/MapiCodes.h"
#include "testing/StubInterfaces.h"

#include <algorithm>
#include <cstring>

namespace scripted_mapi {

namespace {

class ByteStream final : public Object<vx_testing::StubStream> {
public:
    ByteStream(const std::shared_ptr<Context>& context, Bytes bytes) : Object(context), m_bytes(std::move(bytes)) {}

    HRESULT STDMETHODCALLTYPE Read(void* buffer, ULONG size, ULONG* read) override {
        if (const auto answer = Enter("IStream::Read", size)) {
            return *answer;
        }
        const std::size_t count = std::min<std::size_t>(size, m_bytes.size() - m_position);
        if (count != 0) {
            std::memcpy(buffer, m_bytes.data() + m_position, count);
        }
        m_position += count;
        if (read != nullptr) {
            *read = static_cast<ULONG>(count);
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin, ULARGE_INTEGER* position) override {
        const LONGLONG from[] = {0, static_cast<LONGLONG>(m_position), static_cast<LONGLONG>(m_bytes.size())};
        if (origin > STREAM_SEEK_END) {
            return E_INVALIDARG;
        }
        const LONGLONG target = std::clamp<LONGLONG>(from[origin] + move.QuadPart, 0, from[STREAM_SEEK_END]);
        m_position = static_cast<std::size_t>(target);
        if (position != nullptr) {
            position->QuadPart = static_cast<ULONGLONG>(target);
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Stat(STATSTG* stat, DWORD) override {
        if (const auto answer = Enter("IStream::Stat")) {
            return *answer;
        }
        *stat = {};
        stat->type = STGTY_STREAM;
        stat->cbSize.QuadPart = m_bytes.size();
        return S_OK;
    }

private:
    bool IsInterface(REFIID iid) const override { return iid == IID_IStream; }

    Bytes m_bytes;
    std::size_t m_position = 0;
};

}  // namespace

IUnknown* NewStream(const std::shared_ptr<Context>& context, Bytes bytes) {
    return new ByteStream(context, std::move(bytes));
}

HRESULT ReadProps(const Bag& bag, const SPropTagArray* tags, ULONG flags, ULONG* count, LPSPropValue* properties) {
    std::vector<Value> values;
    bool hasErrors = false;
    if (tags == nullptr) {
        values = bag.All();
    } else {
        for (ULONG i = 0; i < tags->cValues; ++i) {
            ULONG tag = (&tags->aulPropTag[0])[i];
            const Value* stored = bag.Find(tag);
            const bool isText = stored != nullptr && PROP_TYPE(stored->tag) == PT_UNICODE;
            if (PROP_TYPE(tag) == PT_UNSPECIFIED && isText && (flags & MAPI_UNICODE) == 0) {
                tag = CHANGE_PROP_TYPE(tag, PT_STRING8);
            }
            values.push_back(bag.Read(tag));
            hasErrors = hasErrors || PROP_TYPE(values.back().tag) == PT_ERROR;
        }
    }
    *count = static_cast<ULONG>(values.size());
    *properties = AllocateValues(values);
    return hasErrors ? MAPI_W_ERRORS_RETURNED : S_OK;
}

HRESULT FindNamedIds(Names& names, ULONG count, LPMAPINAMEID* asked, ULONG flags, LPSPropTagArray* tags) {
    auto* found = static_cast<LPSPropTagArray>(memory::Allocate(CbNewSPropTagArray(count)));
    found->cValues = count;
    bool hasUnknown = false;
    for (ULONG i = 0; i < count; ++i) {
        const ULONG id = names.IdOf(*asked[i], (flags & MAPI_CREATE) != 0);
        (&found->aulPropTag[0])[i] = id == 0 ? 0 : PROP_TAG(PT_UNSPECIFIED, id);
        hasUnknown = hasUnknown || id == 0;
    }
    *tags = found;
    return hasUnknown ? MAPI_W_ERRORS_RETURNED : S_OK;
}

HRESULT OpenAsStream(const std::shared_ptr<Context>& context, const Bag& bag, ULONG tag, const IID* iid,
                     IUnknown** object) {
    const Value* value = bag.Find(tag);
    if (value == nullptr || PROP_TYPE(value->tag) == PT_ERROR) {
        return value == nullptr ? MAPI_E_NOT_FOUND : static_cast<HRESULT>(std::get<LONG>(value->data));
    }
    if (iid == nullptr || *iid != IID_IStream) {
        return MAPI_E_INTERFACE_NOT_SUPPORTED;
    }
    *object = NewStream(context, StreamBytes(*value, PROP_TYPE(tag)));
    return S_OK;
}

HRESULT DescribeError(HRESULT result, LPMAPIERROR* error) {
    constexpr char kText[] = "scripted failure";
    auto* told = static_cast<LPMAPIERROR>(memory::Allocate(sizeof(MAPIERROR)));
    auto* text = static_cast<char*>(memory::AllocateMore(sizeof(kText), told));
    std::memcpy(text, kText, sizeof(kText));
    *told = {MAPI_ERROR_VERSION, reinterpret_cast<LPTSTR>(text), nullptr, static_cast<ULONG>(result), 0};
    *error = told;
    return S_OK;
}

std::string NamesText(ULONG count, const MAPINAMEID* const* names) {
    std::string text;
    for (ULONG i = 0; i < count; ++i) {
        const MAPINAMEID& name = *names[i];
        text += i == 0 ? "" : ",";
        text += Hex8(static_cast<ULONG>(name.lpguid->Data1)) + ":";
        text += name.ulKind == MNID_ID ? Hex8(static_cast<ULONG>(name.Kind.lID)) : Ascii(name.Kind.lpwstrName);
    }
    return "{" + text + "}";
}

}  // namespace scripted_mapi
