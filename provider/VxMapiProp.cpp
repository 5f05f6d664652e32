#include "provider/VxMapiProp.h"

#include "mapi/MapiCodes.h"
#include "mapi/PropTags.h"
#include "provider/Common/Log.h"
#include "provider/ImportProcs.h"

#include <algorithm>
#include <vector>

namespace {

constexpr auto& kSourcePath = "VxMapiProp.cpp"_w;

// The tag that a row is asked for by. An id alone moves to where a tag has it.
constexpr ULONG FixedTag(const VxField& field) noexcept {
    const ULONG tag = PROP_ID(field.propTag) == 0 ? field.propTag << 16 : field.propTag;
    return CHANGE_PROP_TYPE(tag, field.propType);
}

// The number that GetProperty is told.
constexpr ULONG FieldNumber(LONG id, LONG altId) noexcept {
    return altId != -1 ? static_cast<ULONG>(altId) | kVxAltField : static_cast<ULONG>(id);
}

struct PropValues {
    ULONG count = 0;
    VxMapiFrBufPtr<SPropValue> values;
};

// The values of a tag array, which is freed. At most one value for each tag counts.
HRESULT ReadValues(IMAPIProp* object, VxMapiFrBufPtr<SPropTagArray>& tags, PropValues& read) {
    const ULONG asked = tags->cValues;
    const HRESULT hr = object->GetProps(tags, MAPI_UNICODE, &read.count, &read.values);
    tags.release();
    read.count = SUCCEEDED(hr) && read.values.get() != nullptr ? std::min(read.count, asked) : 0;
    return hr;
}

}  // namespace

CVxProperties::CVxProperties(LONG fieldCount)
    : m_count(static_cast<ULONG>(std::clamp<LONG>(fieldCount, 0, kMostFields))) {
    if (fieldCount > static_cast<LONG>(kMostFields)) {
        VX_LOG('E') << Vx::LogMsg("FATAL ERROR IN CVxProperties constructor"_w);
    }
}

void CVxProperties::CheckIndex(ULONG index) const {
    if (index > m_count) {
        VX_LOG('E') << Vx::LogMsg("CVxMapiProp::GetProperty"_w);
    }
}

const CVxProperty& CVxProperties::GetProperty(ULONG index) const {
    CheckIndex(index);
    return m_properties[std::min(index, kMostFields - 1)];
}

CVxProperty& CVxProperties::GetProperty(ULONG index) {
    CheckIndex(index);
    return m_properties[std::min(index, kMostFields - 1)];
}

bool CVxMapiProp::GetLastModifiedTime() {
    IMAPIProp* object = GetMapiPropObj();
    VxMapiFrBufPtr<SPropValue> value;
    if (object == nullptr || FAILED(HrGetOneProp(object, PR_LAST_MODIFICATION_TIME, &value)) || value.get() == nullptr
        || value->ulPropTag != PR_LAST_MODIFICATION_TIME) {
        return false;
    }
    m_lastModified = value->Value.ft;
    return true;
}

bool CVxMapiProp::GetProperties() {
    return GetBaseProperties() && GetTypeSpecificProperties();
}

bool CVxMapiProp::GetBaseProperties() {
    CVxProperties props(m_fieldCount);
    if (!GetLastModifiedTime() || !ResolveTags(props)) {
        return false;
    }
    ReadNamedValues(props);
    return ReadFixedValues(props);
}

bool CVxMapiProp::ResolveTags(CVxProperties& props) {
    props.m_namedTags.release();
    props.m_fixedTags.release();
    props.Reset();
    // Room for two more, as a caller may add tags of its own.
    const ULONG size = static_cast<ULONG>(CbNewSPropTagArray(props.Count() + 2));
    const SCODE hr = MAPIAllocateBuffer(size, reinterpret_cast<LPVOID*>(&props.m_fixedTags));
    if (hr != S_OK || props.m_fixedTags.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("MAPIAllocateBuffer failed (%x)"_w, hr);
        return false;
    }
    CollectFixedTags(props);
    FindNamedTags(props);
    return true;
}

void CVxMapiProp::CollectFixedTags(CVxProperties& props) {
    SPropTagArray& tags = *props.m_fixedTags;
    tags.cValues = 0;
    for (ULONG i = 0; i < props.Count(); ++i) {
        const VxField& field = m_fields[i];
        if (field.propTag == 0) {
            continue;
        }
        CVxProperty& element = props.GetProperty(tags.cValues);
        element.fixedId = field.fieldId;
        element.fixedAltId = field.altFieldId;
        (&tags.aulPropTag[0])[tags.cValues++] = FixedTag(field);
    }
}

void CVxMapiProp::FindNamedTags(CVxProperties& props) {
    std::vector<const VxField*> named;
    for (ULONG i = 0; i < props.Count(); ++i) {
        if (m_fields[i].propTag == 0) {
            named.push_back(&m_fields[i]);
        }
    }
    IMAPIProp* object = GetMapiPropObj();
    if (named.empty() || object == nullptr) {
        return;
    }
    std::vector<MAPINAMEID> names;
    for (const VxField* field : named) {
        MAPINAMEID& name = names.emplace_back();
        name.lpguid = const_cast<GUID*>(field->propSet);
        name.ulKind = field->nameKind;
        if (field->nameKind == MNID_ID) {
            name.Kind.lID = field->nameId;
        } else {
            name.Kind.lpwstrName = const_cast<WCHAR*>(field->nameText);
        }
    }
    std::vector<MAPINAMEID*> pointers;
    for (MAPINAMEID& name : names) {
        pointers.push_back(&name);
    }
    LPSPropTagArray tags = nullptr;
    const HRESULT hr =
        object->GetIDsFromNames(static_cast<ULONG>(pointers.size()), pointers.data(), MAPI_CREATE, &tags);
    if (FAILED(hr) || tags == nullptr) {
        return;
    }
    VxMapiFrBufPtr<SPropTagArray> found(tags);
    props.m_namedTags = found;
    const ULONG count = std::min(tags->cValues, static_cast<ULONG>(named.size()));
    for (ULONG i = 0; i < count; ++i) {
        ULONG& tag = (&tags->aulPropTag[0])[i];
        if (tag != 0) {
            CVxProperty& element = props.GetProperty(i);
            element.namedId = named[i]->fieldId;
            element.namedAltId = named[i]->altFieldId;
            tag = CHANGE_PROP_TYPE(tag, named[i]->propType);
        }
    }
}

void CVxMapiProp::ReadNamedValues(CVxProperties& props) {
    if (props.m_namedTags.get() == nullptr || props.m_namedTags->cValues == 0) {
        return;
    }
    PropValues read;
    if (FAILED(ReadValues(GetMapiPropObj(), props.m_namedTags, read))) {
        return;
    }
    for (ULONG i = 0; i < read.count && i < props.Count(); ++i) {
        const SPropValue& value = read.values[i];
        if (PROP_TYPE(value.ulPropTag) != PT_ERROR) {
            const CVxProperty& element = props.GetProperty(i);
            GetProperty(FieldNumber(element.namedId, element.namedAltId), &value);
        }
    }
}

bool CVxMapiProp::ReadFixedValues(CVxProperties& props) {
    if (props.m_fixedTags->cValues == 0) {
        return true;
    }
    PropValues read;
    if (FAILED(ReadValues(GetMapiPropObj(), props.m_fixedTags, read))) {
        return false;
    }
    for (ULONG i = 0; i < read.count; ++i) {
        const CVxProperty& element = props.GetProperty(i);
        GetProperty(FieldNumber(element.fixedId, element.fixedAltId), &read.values[i]);
    }
    return true;
}
