#include "localmapi/object/PropCore.h"

#include "localmapi/object/ValueStreams.h"
#include "mapi/MapiFlags.h"
#include "mapi/PropTags.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace localmapi {

namespace {

ULONG TypeOf(ULONG tag) noexcept {
    return PROP_TYPE(tag) & ~MV_INSTANCE;
}

bool IsBytesType(ULONG type) noexcept {
    return type == PT_STRING8 || type == PT_UNICODE || type == PT_BINARY;
}

SPropValue ValueOf(ULONG tag, const Bytes& bytes, ValueMemory& memory) {
    switch (TypeOf(tag)) {
        case PT_UNICODE: {
            CStringW text(bytes.size() / sizeof(WCHAR), WCHAR{});
            std::memcpy(text.data(), bytes.data(), text.size() * sizeof(WCHAR));
            return WideValue(tag, text, memory);
        }
        case PT_STRING8: return NarrowValue(tag, {reinterpret_cast<const char*>(bytes.data()), bytes.size()}, memory);
        default: return BinaryValue(tag, bytes, memory);
    }
}

Content OwnedContent(ULONG tag, Bytes bytes) {
    return Content{tag, std::make_unique<OwnedBytes>(std::move(bytes))};
}

Content ContentOf(const SPropValue& value) {
    const auto* begin = reinterpret_cast<const std::byte*>(value.Value.lpszA);
    switch (TypeOf(value.ulPropTag)) {
        case PT_UNICODE: {
            const WideView text(value.Value.lpszW);
            return OwnedContent(value.ulPropTag, Bytes(begin, begin + text.size() * sizeof(WCHAR)));
        }
        case PT_STRING8: return OwnedContent(value.ulPropTag, Bytes(begin, begin + std::strlen(value.Value.lpszA)));
        default: {
            const ByteView bytes = BytesOf(value.Value.bin);
            return OwnedContent(value.ulPropTag, Bytes(bytes.Span().begin(), bytes.Span().end()));
        }
    }
}

Error NoSuchProperty(ULONG tag) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "the object has no property 0x";
    for (int shift = 28; shift >= 0; shift -= 4) {
        text += kDigits[(tag >> shift) & 0xF];
    }
    return Error{ErrorCode::NotFound, std::move(text)};
}

MapiPointer<SPropTagArray> MakeTagArray(const std::vector<ULONG>& tags) {
    auto array = MakeRoot<SPropTagArray>(CbNewSPropTagArray(tags.size()));
    array->cValues = static_cast<ULONG>(tags.size());
    std::copy(tags.begin(), tags.end(), array->aulPropTag);
    return array;
}

}  // namespace

PropCore::PropCore(std::unique_ptr<PropertySource> source, ComPtr<IUnknown> keeps, PropertyNames* names,
                   const SharedLock& lock, LastFailure& failure)
    : m_keeps(std::move(keeps)),
      m_source(std::move(source)),
      m_names(names == nullptr ? &m_ownNames : names),
      m_sharedLock(lock),
      m_lastFailure(failure) {}

bool PropCore::Compute(ULONG, ValueMemory&, SPropValue&) {
    return false;
}
std::vector<ULONG> PropCore::ComputedTags() {
    return {};
}
bool PropCore::IsFixed(ULONG) {
    return false;
}
Result<Content> PropCore::Derive(ULONG tag) {
    return NoSuchProperty(tag);
}
std::vector<ULONG> PropCore::DerivedTags() {
    return {};
}
UINT PropCore::PageOf(ULONG) {
    return m_source->CodePage();
}

// ---- Reading --------------------------------------------------------------------------------------------------------

std::optional<SPropValue> PropCore::StoredValue(ULONG tag, bool wide, ValueMemory& memory, HRESULT& failure) {
    const ULONG id = PROP_ID(tag);
    SPropValue value{};
    if (!Compute(id, memory, value)) {
        const std::optional<ULONG> stored = m_source->TagOf(id);
        if (!stored || GivenType(TypeOf(tag), TypeOf(*stored), wide) == PT_NULL) {
            failure = MAPI_E_NOT_FOUND;
            return std::nullopt;
        }
        if (const Status read = m_source->Read(id, kLargestValue, memory, value); !read) {
            const bool isAnswer =
                read.Failure().code == ErrorCode::NotFound || read.Failure().code == ErrorCode::TooLarge;
            failure = isAnswer ? ResultOf(read.Failure().code) : m_lastFailure.Set(read.Failure());
            return std::nullopt;
        }
    }
    const ULONG type = GivenType(TypeOf(tag), TypeOf(value.ulPropTag), wide);
    if (type == PT_NULL) {
        failure = MAPI_E_NOT_FOUND;
        return std::nullopt;
    }
    ChangeWidth(value, type, PageOf(id), memory);
    value.ulPropTag = PROP_TAG(type, id);
    return value;
}

HRESULT PropCore::ReadValue(ULONG tag, bool wide, ValueMemory& memory, SPropValue& value) {
    HRESULT failure = MAPI_E_NOT_FOUND;
    if (const auto stored = StoredValue(tag, wide, memory, failure)) {
        value = *stored;
        return S_OK;
    }
    if (failure != MAPI_E_NOT_FOUND) {
        return failure;
    }
    auto derived = Derive(tag);
    if (!derived) {
        return derived.IsNotFound() ? MAPI_E_NOT_FOUND : m_lastFailure.Set(derived.Failure());
    }
    auto bytes = ReadAll(*derived->bytes, kLargestValue);
    if (!bytes) {
        return ResultOf(bytes.Failure().code);
    }
    value = ValueOf(derived->tag, *bytes, memory);
    const ULONG type = GivenType(TypeOf(tag), TypeOf(value.ulPropTag), wide);
    ChangeWidth(value, type == PT_NULL ? TypeOf(value.ulPropTag) : type, PageOf(PROP_ID(tag)), memory);
    return S_OK;
}

std::vector<ULONG> PropCore::AllTags(bool wide) {
    std::vector<ULONG> tags = ComputedTags();
    const std::vector<ULONG> stored = m_source->Tags();
    tags.insert(tags.end(), stored.begin(), stored.end());
    const std::vector<ULONG> derived = DerivedTags();
    tags.insert(tags.end(), derived.begin(), derived.end());
    for (ULONG& tag : tags) {
        tag = PROP_TAG(GivenType(PT_UNSPECIFIED, TypeOf(tag), wide), PROP_ID(tag));
    }
    std::stable_sort(tags.begin(), tags.end(), [](ULONG a, ULONG b) { return PROP_ID(a) < PROP_ID(b); });
    tags.erase(std::unique(tags.begin(), tags.end(), [](ULONG a, ULONG b) { return PROP_ID(a) == PROP_ID(b); }),
               tags.end());
    return tags;
}

Result<Content> PropCore::ChangeWidthOf(Content content, ULONG type) {
    const ULONG has = TypeOf(content.tag);
    if (has == type || !IsTextType(has)) {
        return content;
    }
    VX_TRY_ASSIGN(const Bytes bytes, ReadAll(*content.bytes, kLargestText));
    const ULONG tag = PROP_TAG(type, PROP_ID(content.tag));
    const UINT page = PageOf(PROP_ID(content.tag));
    if (type == PT_UNICODE) {
        const CStringW text = ToWide({reinterpret_cast<const char*>(bytes.data()), bytes.size()}, page);
        const auto* begin = reinterpret_cast<const std::byte*>(text.data());
        return OwnedContent(tag, Bytes(begin, begin + text.size() * sizeof(WCHAR)));
    }
    CStringW text(bytes.size() / sizeof(WCHAR), WCHAR{});
    std::memcpy(text.data(), bytes.data(), text.size() * sizeof(WCHAR));
    const std::string narrow = ToNarrow(text, page);
    const auto* begin = reinterpret_cast<const std::byte*>(narrow.data());
    return OwnedContent(tag, Bytes(begin, begin + narrow.size()));
}

Result<Content> PropCore::ReadContent(ULONG tag, bool wide) {
    const ULONG id = PROP_ID(tag);
    const ULONG asked = TypeOf(tag);
    Arena memory;
    SPropValue computed{};
    if (Compute(id, memory, computed)) {
        const ULONG type = GivenType(asked, TypeOf(computed.ulPropTag), wide);
        if (type == PT_NULL || !IsBytesType(TypeOf(computed.ulPropTag))) {
            return NoSuchProperty(tag);
        }
        return ChangeWidthOf(ContentOf(computed), type);
    }
    if (const auto stored = m_source->TagOf(id)) {
        const ULONG type = GivenType(asked, TypeOf(*stored), wide);
        if (type != PT_NULL) {
            const ULONG kept = TypeOf(*stored) == PT_SVREID ? PT_BINARY : TypeOf(*stored);
            if (!IsBytesType(kept) && kept != PT_OBJECT) {
                return Error{ErrorCode::Unsupported, "only texts, binaries and objects are read by stream"};
            }
            VX_TRY_ASSIGN(std::unique_ptr<ByteSource> bytes, m_source->Open(id));
            return ChangeWidthOf(Content{PROP_TAG(kept, id), std::move(bytes)}, type);
        }
    }
    VX_TRY_ASSIGN(Content derived, Derive(tag));
    const ULONG type = GivenType(asked, TypeOf(derived.tag), wide);
    return type == PT_NULL ? Result<Content>(std::move(derived)) : ChangeWidthOf(std::move(derived), type);
}

// ---- The methods ----------------------------------------------------------------------------------------------------

HRESULT PropCore::GetProps(SPropTagArray* tags, ULONG flags, ULONG* count, SPropValue** values) {
    if (count == nullptr || values == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *count = 0;
    *values = nullptr;
    const bool wide = (flags & MAPI_UNICODE) != 0;
    const bool all = tags == nullptr;
    std::vector<ULONG> asked =
        all ? AllTags(wide) : std::vector<ULONG>(tags->aulPropTag, tags->aulPropTag + tags->cValues);

    auto array = MakeRoot<SPropValue>(std::max<std::size_t>(asked.size(), 1) * sizeof(SPropValue));
    RootMemory memory(array.get());
    HRESULT result = S_OK;
    for (std::size_t i = 0; i < asked.size(); ++i) {
        SPropValue& value = array.get()[i];
        value = {};
        if (PROP_ID(asked[i]) == PROP_ID_NULL) {
            value.ulPropTag = PR_NULL;
            continue;
        }
        const HRESULT read = ReadValue(asked[i], wide, memory, value);
        if (FAILED(read)) {
            value = ErrorValue(asked[i], read);
            result = MAPI_W_ERRORS_RETURNED;
        }
    }
    *count = static_cast<ULONG>(asked.size());
    *values = array.release();
    return result;
}

HRESULT PropCore::GetPropList(ULONG flags, SPropTagArray** tags) {
    if (tags == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *tags = MakeTagArray(AllTags((flags & MAPI_UNICODE) != 0)).release();
    return S_OK;
}

HRESULT PropCore::OpenStream(ULONG tag, ULONG interfaceOptions, ULONG flags, ComPtr<IUnknown> keeps,
                             IUnknown** stream) {
    static constexpr ULONG kWriting = STGM_WRITE | STGM_READWRITE;
    if ((flags & (MAPI_CREATE | MAPI_MODIFY)) != 0 || (interfaceOptions & kWriting) != 0) {
        return OpenStreamForWriting(tag, (flags & MAPI_CREATE) != 0, stream);
    }
    auto content = ReadContent(tag, (flags & MAPI_UNICODE) != 0);
    if (!content) {
        return m_lastFailure.Set(content.Failure());
    }
    *stream = MakeReadStream(std::move(content->bytes), std::move(keeps), m_sharedLock).Detach();
    return S_OK;
}

HRESULT PropCore::OpenStreamForWriting(ULONG tag, bool replace, IUnknown** stream) {
    if (!IsBytesType(TypeOf(tag))) {
        return MAPI_E_INTERFACE_NOT_SUPPORTED;
    }
    auto opened = m_source->OpenForWriting(tag, replace);
    if (!opened) {
        return m_lastFailure.Set(opened.Failure());
    }
    *stream = opened->Detach();
    return S_OK;
}

HRESULT PropCore::Save() {
    const Status saved = m_source->Save();
    return saved ? S_OK : m_lastFailure.Set(saved.Failure());
}

namespace {

// Problems of SetProps and DeleteProps, for callers that want to know them.
class ProblemList {
public:
    void Add(ULONG index, ULONG tag, HRESULT result) { m_problems.push_back({index, tag, result}); }
    std::size_t Count() const noexcept { return m_problems.size(); }

    void Give(SPropProblemArray** problems) const {
        if (problems == nullptr) {
            return;
        }
        *problems = nullptr;
        if (m_problems.empty()) {
            return;
        }
        auto array = MakeRoot<SPropProblemArray>(CbNewSPropProblemArray(m_problems.size()));
        array->cProblem = static_cast<ULONG>(m_problems.size());
        std::copy(m_problems.begin(), m_problems.end(), array->aProblem);
        *problems = array.release();
    }

private:
    std::vector<SPropProblem> m_problems;
};

}  // namespace

HRESULT PropCore::SetProps(ULONG count, const SPropValue* values, SPropProblemArray** problems) {
    if (values == nullptr && count > 0) {
        return MAPI_E_INVALID_PARAMETER;
    }
    if (!m_source->IsWritable()) {
        return m_lastFailure.Set(MAPI_E_NO_ACCESS, "the object is open for reading only");
    }
    ProblemList refused;
    for (ULONG i = 0; i < count; ++i) {
        const ULONG tag = values[i].ulPropTag;
        if (TypeOf(tag) == PT_ERROR || PROP_ID(tag) == PROP_ID_NULL) {
            continue;  // published to be ignored, so that the result of GetProps can be set as it is
        }
        if (TypeOf(tag) == PT_OBJECT || IsFixed(PROP_ID(tag))) {
            refused.Add(i, tag, TypeOf(tag) == PT_OBJECT ? MAPI_E_INVALID_TYPE : MAPI_E_COMPUTED);
        } else if (!IsValid(values[i])) {
            refused.Add(i, tag, MAPI_E_INVALID_PARAMETER);
        } else if (const Status written = m_source->Write(values[i]); !written) {
            refused.Add(i, tag, m_lastFailure.Set(written.Failure()));
        }
    }
    refused.Give(problems);
    return S_OK;
}

HRESULT PropCore::DeleteProps(const SPropTagArray* tags, SPropProblemArray** problems) {
    if (tags == nullptr || tags->cValues == 0) {
        return MAPI_E_INVALID_PARAMETER;
    }
    if (!m_source->IsWritable()) {
        return m_lastFailure.Set(MAPI_E_NO_ACCESS, "the object is open for reading only");
    }
    ProblemList refused;
    for (ULONG i = 0; i < tags->cValues; ++i) {
        const ULONG tag = tags->aulPropTag[i];
        if (const Status removed = m_source->Remove(PROP_ID(tag)); !removed) {
            refused.Add(i, tag, ResultOf(removed.Failure().code));
        }
    }
    refused.Give(problems);
    return S_OK;
}

}  // namespace localmapi
