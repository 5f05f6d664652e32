// Names of properties: ids to names and names to ids.
#include "localmapi/object/PropCore.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"

#include <algorithm>
#include <cstring>

namespace localmapi {

namespace {

// The name of an id below 0x8000 is the id itself, in a set of its own.
PropertyName FixedName(ULONG id) {
    PropertyName name;
    name.set = PS_MAPI;
    name.number = id;
    return name;
}

MAPINAMEID* GiveName(const PropertyName& name, ValueMemory& memory) {
    auto* given = memory.Array<MAPINAMEID>(1);
    *given = {};
    given->lpguid = memory.Array<GUID>(1);
    *given->lpguid = name.set;
    given->ulKind = name.isText ? MNID_STRING : MNID_ID;
    if (name.isText) {
        given->Kind.lpwstrName = WideValue(PROP_TAG(PT_UNICODE, 0), name.text, memory).Value.lpszW;
    } else {
        given->Kind.lID = static_cast<LONG>(name.number);
    }
    return given;
}

bool IsWanted(const PropertyName& name, const GUID* set, ULONG flags) {
    if (set != nullptr && !(name.set == *set)) {
        return false;
    }
    return (flags & (name.isText ? MAPI_NO_STRINGS : MAPI_NO_IDS)) == 0;
}

// The ids that a caller without a list of its own gets the names of.
std::vector<ULONG> TagsOfNames(const PropertyNames& names, const GUID* set, ULONG flags) {
    std::vector<ULONG> tags;
    for (const NamedId& entry : names.Entries()) {
        if (IsWanted(entry.name, set, flags)) {
            tags.push_back(PROP_TAG(PT_UNSPECIFIED, entry.id));
        }
    }
    std::sort(tags.begin(), tags.end());
    return tags;
}

std::optional<PropertyName> TakeName(const MAPINAMEID* from) {
    if (from == nullptr || from->lpguid == nullptr || (from->ulKind != MNID_ID && from->ulKind != MNID_STRING)) {
        return std::nullopt;
    }
    PropertyName name;
    name.set = *from->lpguid;
    name.isText = from->ulKind == MNID_STRING;
    if (!name.isText) {
        name.number = static_cast<std::uint32_t>(from->Kind.lID);
        return name;
    }
    if (from->Kind.lpwstrName == nullptr) {
        return std::nullopt;
    }
    name.text = from->Kind.lpwstrName;
    return name;
}

}  // namespace

HRESULT PropCore::GetNamesFromIDs(SPropTagArray** tags, const GUID* set, ULONG flags, ULONG* count,
                                  MAPINAMEID*** names) {
    if (tags == nullptr || count == nullptr || names == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *count = 0;
    *names = nullptr;
    const bool all = *tags == nullptr;
    std::vector<ULONG> asked = all ? TagsOfNames(*m_names, set, flags)
                                   : std::vector<ULONG>((*tags)->aulPropTag, (*tags)->aulPropTag + (*tags)->cValues);

    auto array = MakeRoot<MAPINAMEID*>(std::max<std::size_t>(asked.size(), 1) * sizeof(MAPINAMEID*));
    RootMemory memory(array.get());
    HRESULT result = S_OK;
    for (std::size_t i = 0; i < asked.size(); ++i) {
        const ULONG id = PROP_ID(asked[i]);
        const PropertyName fixed = FixedName(id);
        const PropertyName* name = id < kFirstNamedId ? &fixed : m_names->NameOf(static_cast<std::uint16_t>(id));
        const bool isGiven = name != nullptr && IsWanted(*name, set, flags);
        array.get()[i] = isGiven ? GiveName(*name, memory) : nullptr;
        result = isGiven ? result : MAPI_W_ERRORS_RETURNED;
    }
    if (all) {
        auto given = MakeRoot<SPropTagArray>(CbNewSPropTagArray(asked.size()));
        given->cValues = static_cast<ULONG>(asked.size());
        std::copy(asked.begin(), asked.end(), given->aulPropTag);
        *tags = given.release();
    }
    *count = static_cast<ULONG>(asked.size());
    *names = array.release();
    return result;
}

HRESULT PropCore::GetIDsFromNames(ULONG count, MAPINAMEID** names, ULONG flags, SPropTagArray** tags) {
    if (tags == nullptr || (count > 0 && names == nullptr)) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *tags = nullptr;
    std::vector<ULONG> found;
    HRESULT result = S_OK;
    if (count == 0) {
        found = TagsOfNames(*m_names, nullptr, 0);
    }
    for (ULONG i = 0; i < count; ++i) {
        const std::optional<PropertyName> name = TakeName(names[i]);
        std::optional<ULONG> id;
        if (name && name->set == PS_MAPI) {
            id = name->isText ? std::nullopt : std::optional<ULONG>(name->number & 0xFFFF);
        } else if (name) {
            id = (flags & MAPI_CREATE) != 0 ? m_names->FindOrAdd(*name) : m_names->Find(*name);
        }
        found.push_back(id ? PROP_TAG(PT_UNSPECIFIED, *id) : PROP_TAG(PT_ERROR, 0));
        result = id ? result : MAPI_W_ERRORS_RETURNED;
    }
    auto array = MakeRoot<SPropTagArray>(CbNewSPropTagArray(found.size()));
    array->cValues = static_cast<ULONG>(found.size());
    std::copy(found.begin(), found.end(), array->aulPropTag);
    *tags = array.release();
    return result;
}

}  // namespace localmapi
