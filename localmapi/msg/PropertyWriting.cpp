// How the properties of a set are changed and saved.
#include "localmapi/msg/ElementNames.h"
#include "localmapi/msg/PropertySet.h"
#include "localmapi/msg/TextWidth.h"
#include "localmapi/props/Values.h"

#include <algorithm>
#include <utility>

namespace localmapi::msg {

namespace {

// Values that are given as a source wait for Save in memory up to here; larger ones go into their stream at once.
constexpr std::uint64_t kMostInMemory = std::uint64_t{64} << 10;

constexpr std::uint32_t kObjectSize = 0xFFFFFFFF;
constexpr std::uint32_t kReadableAndWritable = 6;  // the flags of an entry

bool IsBytesType(ULONG tag) noexcept {
    return IsText(tag) || PROP_TYPE(tag) == PT_BINARY;
}

// The tag under which a text of another width is kept, for one value or several.
ULONG TagInForm(ULONG tag, const TextForm& form) noexcept {
    return IsTextType(PROP_TYPE(tag)) ? CHANGE_PROP_TYPE(tag, (form.isWide ? PT_UNICODE : PT_STRING8) | (tag & MV_FLAG))
                                      : tag;
}

bool IsSameText(const SPropValue& left, const SPropValue& right) {
    const StreamValue a = StreamsOf(left);
    const StreamValue b = StreamsOf(right);
    return a.main == b.main && a.parts == b.parts;
}

// The value with its text in the message's form, unless that would lose characters.
SPropValue InForm(const SPropValue& value, const TextForm& form, ValueMemory& memory) {
    const ULONG tag = TagInForm(value.ulPropTag, form);
    SPropValue changed = value;
    if (tag == value.ulPropTag) {
        return changed;
    }
    const UINT page = form.codePage();
    ChangeWidth(changed, PROP_TYPE(tag), page, memory);
    if (form.isWide) {
        return changed;
    }
    SPropValue back = changed;
    ChangeWidth(back, PROP_TYPE(value.ulPropTag), page, memory);
    return IsSameText(back, value) ? changed : value;
}

// As InForm, for a text of any size: the tag under which it is kept.
Result<ULONG> TagInForm(ULONG tag, ByteSource& text, const TextForm& form) {
    const ULONG wanted = TagInForm(tag, form);
    if (wanted == tag || form.isWide) {
        return wanted;
    }
    VX_TRY_ASSIGN(const bool fits, FitsPage(text, form.codePage()));
    return fits ? wanted : tag;
}

Error Unsupported(const std::string& name) {
    return Error{ErrorCode::Unsupported, name + ": message files hold no values of this type"};
}

}  // namespace

// The property of the tag's id, of that tag from now on. What it was kept in goes at the next Save.
PropertySet::Property& PropertySet::Put(ULONG tag) {
    m_hasChanges = true;
    m_streamed.erase(tag);
    if (Property* known = Find(PROP_ID(tag))) {
        if (known->tag != tag) {
            m_streamed.erase(known->tag);
            m_abandoned.insert(known->tag);
            *known = {.tag = tag, .area = 0, .inMemory = nullptr};
        }
        return *known;
    }
    const auto at = std::lower_bound(m_properties.begin(), m_properties.end(), PROP_ID(tag),
                                     [](const Property& property, ULONG id) { return PROP_ID(property.tag) < id; });
    return *m_properties.insert(at, {.tag = tag, .area = 0, .inMemory = nullptr});
}

void PropertySet::SetLong(ULONG tag, std::int32_t number) {
    Put(tag).area = static_cast<std::uint32_t>(number);
}

void PropertySet::SetLongDefault(ULONG tag, std::int32_t number) {
    if (Find(PROP_ID(tag)) == nullptr) {
        SetLong(tag, number);
    }
}

void PropertySet::AssumeLong(ULONG tag, std::int32_t number) {
    const bool hadChanges = m_hasChanges;
    SetLong(tag, number);
    m_hasChanges = hadChanges;
}

void PropertySet::SetObject(ULONG tag, std::uint32_t kind) {
    Put(tag).area = std::uint64_t{kind} << 32 | kObjectSize;
    m_elements[{tag, kMain}] = {0, true};
}

Status PropertySet::Write(const SPropValue& value, const TextForm& form) {
    const ValueForm kind = FormOf(value.ulPropTag);
    if (kind == ValueForm::Unknown || kind == ValueForm::Object) {
        return Unsupported(NameOf(value.ulPropTag));
    }
    if (!IsValid(value)) {
        return Error{ErrorCode::Corrupt, NameOf(value.ulPropTag) + " is given a value that is none"};
    }
    if (kind == ValueForm::Area) {
        const std::uint64_t area = AreaOf(value);
        Put(value.ulPropTag).area = area;
        return {};
    }
    Arena memory;
    const SPropValue kept = InForm(value, form, memory);
    auto streams = std::make_shared<const StreamValue>(StreamsOf(kept));
    Put(kept.ulPropTag).inMemory = std::move(streams);
    return {};
}

Status PropertySet::Write(ULONG tag, ByteSource& bytes, const TextForm& form) {
    if (!IsBytesType(tag)) {
        return Unsupported(NameOf(tag));
    }
    VX_TRY_ASSIGN(const ULONG kept, TagInForm(tag, bytes, form));
    const UINT page = kept == tag ? 0 : form.codePage();
    if (bytes.Size() > kMostInMemory && m_storage != nullptr) {
        return WriteLarge(tag, bytes, kept, page);
    }
    auto value = std::make_shared<StreamValue>();
    VX_TRY(CopyText(bytes, tag, kept, page, [&value](ByteView piece) {
        AppendBytes(value->main, piece);
        return Status();
    }));
    Put(kept).inMemory = std::move(value);
    return {};
}

// A failure leaves no property: its stream holds neither the old nor the new value.
Status PropertySet::WriteLarge(ULONG tag, ByteSource& bytes, ULONG targetTag, UINT codePage) {
    VX_TRY_ASSIGN(const auto stream, m_storage->OpenOrCreateStream(ValueName(targetTag)));
    Put(targetTag).inMemory = nullptr;
    m_elements[{targetTag, kMain}] = {0, false};
    std::uint64_t size = 0;
    Status written = stream->SetSize(0);
    if (written) {
        written = CopyText(bytes, tag, targetTag, codePage, [&](ByteView piece) {
            const Status put = stream->WriteAt(size, piece);
            size += piece.Size();
            return put;
        });
    }
    if (!written) {
        static_cast<void>(Remove(PROP_ID(targetTag)));
        return written;
    }
    TakeStreamed(targetTag, size);
    return {};
}

void PropertySet::TakeStreamed(ULONG tag, std::uint64_t size) {
    m_elements[{tag, kMain}] = {size, false};
    if (Property* property = Find(PROP_ID(tag)); property != nullptr && property->tag == tag) {
        property->area = DeclaredSize(tag, size);
    }
}

Status PropertySet::Remove(ULONG id) {
    const Property* property = Find(id);
    if (property == nullptr) {
        return NotFound(id);
    }
    m_streamed.erase(property->tag);
    m_abandoned.insert(property->tag);
    m_properties.erase(m_properties.begin() + (property - m_properties.data()));
    m_hasChanges = true;
    return {};
}

Status PropertySet::Destroy(ULONG id) {
    if (Find(id) != nullptr) {
        VX_TRY(Remove(id));
    }
    return DestroyElements(PROP_TAG(0, id), PROP_TAG(PROP_TYPE_MASK, id), kMain);
}

Result<ComPtr<IStream>> PropertySet::OpenForWriting(ULONG tag, bool replace, const TextForm& form) {
    if (!IsBytesType(tag) || m_storage == nullptr) {
        return Unsupported(NameOf(tag));
    }
    // What the property holds now: as it is, or as text of the other width.
    const Property* known = Find(PROP_ID(tag));
    const bool isKept = known != nullptr && !replace && (known->tag == tag || (IsText(tag) && IsText(known->tag)));
    std::unique_ptr<ByteSource> content;
    if (isKept && (known->tag != tag || known->inMemory != nullptr)) {
        VX_TRY_ASSIGN(content, OpenStreamOf(*known));
    }
    VX_TRY_ASSIGN(auto stream, m_storage->OpenOrCreateStream(ValueName(tag)));
    if (!isKept || content != nullptr) {
        VX_TRY(stream->SetSize(0));
    }
    if (content != nullptr) {
        std::uint64_t at = 0;
        VX_TRY(CopyText(*content, known->tag, tag, form.codePage(), [&](ByteView piece) {
            const Status put = stream->WriteAt(at, piece);
            at += piece.Size();
            return put;
        }));
    }
    VX_TRY_ASSIGN(const std::uint64_t size, stream->Size());
    VX_TRY_ASSIGN(auto given, stream->Clone());
    Put(tag).inMemory = nullptr;
    TakeStreamed(tag, size);
    m_streamed[tag] = std::move(stream);
    return given;
}

Status PropertySet::Save(ByteView header, const TextForm& form) {
    VX_TRY(SaveStreamed(form));
    VX_TRY(DestroyAbandoned());
    for (Property& property : m_properties) {
        VX_TRY(SaveInMemory(property));
    }
    VX_TRY(m_storage->WriteStream(CStringW(kPropertyStream), PropertyStream(header)));
    m_hasChanges = false;
    return {};
}

// Callers may write on after this, for the next Save.
Status PropertySet::SaveStreamed(const TextForm& form) {
    const auto streamed = m_streamed;
    for (const auto& [tag, stream] : streamed) {
        VX_TRY_ASSIGN(const std::uint64_t size, stream->Size());
        StreamSource source(stream, size);
        VX_TRY_ASSIGN(const ULONG kept, TagInForm(tag, source, form));
        if (kept == tag) {
            TakeStreamed(tag, size);
        } else {
            VX_TRY(Write(tag, source, form));
        }
    }
    return {};
}

Status PropertySet::DestroyAbandoned() {
    for (const ULONG tag : std::exchange(m_abandoned, {})) {
        if (TagOf(PROP_ID(tag)) != tag) {
            VX_TRY(DestroyElements(tag, tag, kMain));
        }
    }
    return {};
}

// Deletes the elements of a range of tags; of the first tag those from a place on.
Status PropertySet::DestroyElements(ULONG firstTag, ULONG lastTag, std::uint64_t fromPlace) {
    auto at = m_elements.lower_bound({firstTag, fromPlace});
    while (at != m_elements.end() && at->first.tag <= lastTag) {
        const auto [tag, place] = at->first;
        VX_TRY(m_storage->Destroy(place == kMain ? ValueName(tag)
                                                 : ValueName(tag, static_cast<std::uint32_t>(place - 1))));
        at = m_elements.erase(at);
    }
    return {};
}

Status PropertySet::SaveInMemory(Property& property) {
    if (property.inMemory == nullptr) {
        return {};
    }
    const ULONG tag = property.tag;
    const StreamValue& value = *property.inMemory;
    VX_TRY(m_storage->WriteStream(ValueName(tag), value.main));
    m_elements[{tag, kMain}] = {value.main.size(), false};
    for (std::size_t i = 0; i < value.parts.size(); ++i) {
        const auto index = static_cast<std::uint32_t>(i);
        VX_TRY(m_storage->WriteStream(ValueName(tag, index), value.parts[i]));
        m_elements[{tag, PlaceOf(index)}] = {value.parts[i].size(), false};
    }
    VX_TRY(DestroyElements(tag, tag, PlaceOf(static_cast<std::uint32_t>(value.parts.size()))));
    property.area = DeclaredSize(tag, value.main.size());
    property.inMemory = nullptr;
    return {};
}

// The sizes that were declared stay as they were where they agree with the streams.
std::uint64_t PropertySet::AreaToWrite(const Property& property) const {
    const ULONG tag = property.tag;
    const ValueForm form = FormOf(tag);
    if (form == ValueForm::Area) {
        return property.area;
    }
    if (form == ValueForm::Object) {
        return (property.area & 0xFF00000000) | kObjectSize;
    }
    const auto found = m_elements.find({tag, kMain});
    const std::uint64_t size = found != m_elements.end() ? found->second.size : 0;
    const auto declared = static_cast<std::uint32_t>(property.area);
    return form == ValueForm::Stream && declared == size ? declared : DeclaredSize(tag, size);
}

Bytes PropertySet::PropertyStream(ByteView header) const {
    std::vector<std::pair<ULONG, Bytes>> entries;
    entries.reserve(m_properties.size() + m_foreign.size());
    for (const auto& foreign : m_foreign) {
        if (const ByteView entry(foreign.data(), foreign.size()); Find(PROP_ID(entry.U32(0))) == nullptr) {
            entries.emplace_back(entry.U32(0), Bytes(foreign.begin(), foreign.end()));
        }
    }
    for (const Property& property : m_properties) {
        Bytes entry;
        AppendNumber(entry, property.tag, 4);
        AppendNumber(entry, kReadableAndWritable, 4);
        AppendNumber(entry, AreaToWrite(property), 8);
        entries.emplace_back(property.tag, std::move(entry));
    }
    std::stable_sort(entries.begin(), entries.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    Bytes stream(header.Span().begin(), header.Span().end());
    for (const auto& entry : entries) {
        AppendBytes(stream, entry.second);
    }
    return stream;
}

}  // namespace localmapi::msg
