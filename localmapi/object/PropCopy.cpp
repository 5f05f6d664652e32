#include "localmapi/object/PropCopy.h"

#include "localmapi/object/PropCore.h"
#include "localmapi/object/ValueStreams.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/Storage.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace localmapi {

namespace {

// Values go to the target in groups of so many, or of so many bytes.
constexpr std::size_t kGroupCount = 64;
constexpr std::uint64_t kGroupBytes = 256 * 1024;

// What every object computes for itself, and so what means nothing in another.
constexpr ULONG kOwnProperties[] = {
    PR_ENTRYID,     PR_PARENT_ENTRYID,    PR_STORE_ENTRYID, PR_STORE_RECORD_KEY, PR_RECORD_KEY,   PR_INSTANCE_KEY,
    PR_OBJECT_TYPE, PR_MAPPING_SIGNATURE, PR_ACCESS,        PR_ACCESS_LEVEL,     PR_MESSAGE_SIZE, PR_ATTACH_SIZE,
    PR_ATTACH_NUM,  PR_HASATTACH,         PR_ROWID,         PR_MDB_PROVIDER,     PR_NULL,
};

bool IsOwn(ULONG id) {
    return std::any_of(std::begin(kOwnProperties), std::end(kOwnProperties),
                       [id](ULONG tag) { return PROP_ID(tag) == id; });
}

// Copies the values of one object; holds the group that is not yet set.
class ValueCopier {
public:
    ValueCopier(PropCore& from, IMAPIProp& to, CopyProblems& problems) : m_from(from), m_to(to), m_problems(problems) {}

    // Texts go wide: the target may not know yet in which page its 8-bit texts are.
    void Copy(ULONG tag, ULONG targetTag) {
        const ULONG stored = PROP_TYPE(tag);
        const ULONG type = IsTextType(stored) ? PT_UNICODE | (stored & MV_FLAG) : stored;
        tag = PROP_TAG(type, PROP_ID(tag));
        const bool isBytes = type == PT_STRING8 || type == PT_UNICODE || type == PT_BINARY;
        if (isBytes && m_from.Source().SizeOf(PROP_ID(tag)) > PropCore::kLargestValue) {
            CopyByStream(tag, targetTag);
            return;
        }
        SPropValue value{};
        const HRESULT read = m_from.ReadValue(tag, true, m_memory, value);
        if (read == MAPI_E_NOT_ENOUGH_MEMORY && isBytes) {
            CopyByStream(tag, targetTag);
            return;
        }
        if (FAILED(read)) {
            m_problems.Add(tag, read);
            return;
        }
        value.ulPropTag = PROP_TAG(PROP_TYPE(value.ulPropTag), PROP_ID(targetTag));
        m_group.push_back(value);
        m_bytes += SizeOf(value);
        if (m_group.size() == kGroupCount || m_bytes >= kGroupBytes) {
            Flush();
        }
    }

    void Flush() {
        if (m_group.empty()) {
            return;
        }
        SPropProblemArray* refused = nullptr;
        const HRESULT set = m_to.SetProps(static_cast<ULONG>(m_group.size()), m_group.data(), &refused);
        const MapiPointer<SPropProblemArray> hold(refused);
        if (FAILED(set)) {
            for (const SPropValue& value : m_group) {
                m_problems.Add(value.ulPropTag, set);
            }
        } else if (refused != nullptr) {
            for (ULONG i = 0; i < refused->cProblem; ++i) {
                m_problems.Add(refused->aProblem[i].ulPropTag, refused->aProblem[i].scode);
            }
        }
        m_group.clear();
        m_memory.Clear();
        m_bytes = 0;
    }

private:
    void CopyByStream(ULONG tag, ULONG targetTag) {
        const HRESULT copied = StreamInto(tag, targetTag);
        if (FAILED(copied)) {
            m_problems.Add(tag, copied);
        }
    }

    HRESULT StreamInto(ULONG tag, ULONG targetTag) {
        auto content = m_from.ReadContent(tag, true);
        if (!content) {
            return ResultOf(content.Failure().code);
        }
        ComPtr<IUnknown> object;
        const ULONG written = PROP_TAG(PROP_TYPE(content->tag), PROP_ID(targetTag));
        const HRESULT opened =
            m_to.OpenProperty(written, &IID_IStream, STGM_READWRITE, MAPI_CREATE | MAPI_MODIFY, object.Receive());
        const ComPtr<IStream> stream = FAILED(opened) ? nullptr : QueryFor<IStream>(object.Get(), IID_IStream);
        if (!stream) {
            return FAILED(opened) ? opened : MAPI_E_INTERFACE_NOT_SUPPORTED;
        }
        const HRESULT copied = CopyToStream(*content->bytes, *stream);
        return FAILED(copied) ? copied : stream->Commit(STGC_DEFAULT);
    }

    PropCore& m_from;
    IMAPIProp& m_to;
    CopyProblems& m_problems;
    Arena m_memory;
    std::vector<SPropValue> m_group;
    std::uint64_t m_bytes = 0;
};

// The ids that the target has for the named properties among `tags`; those that it has none for are left out.
std::unordered_map<ULONG, ULONG> TargetIds(PropCore& from, const std::vector<ULONG>& tags, IMAPIProp& to) {
    std::vector<MAPINAMEID> names;
    std::vector<ULONG> ids;
    for (const ULONG tag : tags) {
        const PropertyName* name = from.Names().NameOf(static_cast<std::uint16_t>(PROP_ID(tag)));
        if (PROP_ID(tag) < kFirstNamedId || name == nullptr) {
            continue;
        }
        MAPINAMEID given{};
        given.lpguid = const_cast<GUID*>(&name->set);
        given.ulKind = name->isText ? MNID_STRING : MNID_ID;
        if (name->isText) {
            given.Kind.lpwstrName = const_cast<LPWSTR>(name->text.c_str());
        } else {
            given.Kind.lID = static_cast<LONG>(name->number);
        }
        names.push_back(given);
        ids.push_back(PROP_ID(tag));
    }
    std::unordered_map<ULONG, ULONG> found;
    if (names.empty()) {
        return found;
    }
    std::vector<MAPINAMEID*> pointers;
    for (MAPINAMEID& name : names) {
        pointers.push_back(&name);
    }
    SPropTagArray* given = nullptr;
    const HRESULT asked = to.GetIDsFromNames(static_cast<ULONG>(pointers.size()), pointers.data(), MAPI_CREATE, &given);
    const MapiPointer<SPropTagArray> hold(given);
    for (ULONG i = 0; SUCCEEDED(asked) && given != nullptr && i < given->cValues && i < ids.size(); ++i) {
        if (PROP_ID(given->aulPropTag[i]) != 0) {
            found[ids[i]] = PROP_ID(given->aulPropTag[i]);
        }
    }
    return found;
}

std::unordered_set<ULONG> IdsOf(IMAPIProp& object) {
    std::unordered_set<ULONG> ids;
    SPropTagArray* tags = nullptr;
    if (SUCCEEDED(object.GetPropList(MAPI_UNICODE, &tags))) {
        const MapiPointer<SPropTagArray> hold(tags);
        for (ULONG i = 0; i < tags->cValues; ++i) {
            ids.insert(PROP_ID(tags->aulPropTag[i]));
        }
    }
    return ids;
}

std::vector<ULONG> TagsToCopy(PropCore& from, const CopyRequest& request) {
    std::vector<ULONG> tags;
    if (request.all) {
        for (const ULONG tag : from.Source().Tags()) {
            if (!IsOwn(PROP_ID(tag)) && IsAskedFor(request, PROP_ID(tag))) {
                tags.push_back(tag);
            }
        }
        return tags;
    }
    for (ULONG i = 0; i < request.tags->cValues; ++i) {
        tags.push_back(request.tags->aulPropTag[i]);
    }
    return tags;
}

}  // namespace

bool IsAskedFor(const CopyRequest& request, ULONG id) {
    bool isListed = false;
    for (ULONG i = 0; request.tags != nullptr && i < request.tags->cValues && !isListed; ++i) {
        isListed = PROP_ID(request.tags->aulPropTag[i]) == id;
    }
    return isListed != request.all;
}

HRESULT CopyProblems::Give(SPropProblemArray** problems) const {
    if (problems == nullptr) {
        return S_OK;
    }
    *problems = nullptr;
    if (m_problems.empty()) {
        return S_OK;
    }
    auto array = MakeRoot<SPropProblemArray>(CbNewSPropProblemArray(m_problems.size()));
    array->cProblem = static_cast<ULONG>(m_problems.size());
    std::copy(m_problems.begin(), m_problems.end(), array->aProblem);
    *problems = array.release();
    return S_OK;
}

HRESULT CopyValues(PropCore& from, const CopyRequest& request, IMAPIProp& to, CopyProblems& problems) {
    const std::vector<ULONG> tags = TagsToCopy(from, request);
    const auto targetIds = TargetIds(from, tags, to);
    const auto present = (request.flags & MAPI_NOREPLACE) != 0 ? IdsOf(to) : std::unordered_set<ULONG>();
    ValueCopier copier(from, to, problems);
    for (const ULONG tag : tags) {
        ULONG targetTag = tag;
        if (PROP_ID(tag) >= kFirstNamedId) {
            const auto found = targetIds.find(PROP_ID(tag));
            if (found == targetIds.end()) {
                continue;  // an id without a name means nothing in another object
            }
            targetTag = PROP_TAG(PROP_TYPE(tag), found->second);
        }
        if (PROP_TYPE(tag) != PT_OBJECT && !present.contains(PROP_ID(targetTag))) {
            copier.Copy(tag, targetTag);
        }
    }
    copier.Flush();
    return S_OK;
}

HRESULT CopyProperties(PropCore& from, const CopyRequest& request, IMAPIProp* to, LastFailure& failure,
                       SPropProblemArray** problems) {
    if (problems != nullptr) {
        *problems = nullptr;
    }
    if (to == nullptr || (!request.all && request.tags == nullptr)) {
        return MAPI_E_INVALID_PARAMETER;
    }
    if ((request.flags & MAPI_MOVE) != 0) {
        return failure.Set(MAPI_E_NO_SUPPORT, "the object is open for reading only, so that nothing can be moved out");
    }
    CopyProblems found;
    const HRESULT copied = CopyValues(from, request, *to, found);
    return FAILED(copied) ? copied : found.Give(problems);
}

}  // namespace localmapi
