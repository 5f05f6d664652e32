// How a store finds the display names of its special folders: CVxOutlookStore's third source.
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "provider/Common/Log.h"
#include "provider/ImportProcs.h"
#include "provider/StoreAndFolder/EnsureMapiConnect.h"
#include "provider/StoreAndFolder/VxOutlookStore.h"

#include <algorithm>
#include <array>

namespace {

constexpr auto& kSourcePath = "StoreAndFolder\\VxOutlookStore.cpp"_w;

// Where a special folder's entry id stands. That of the inbox is asked of the store by a call of its own.
struct SpecialFolderRow {
    EVxSpecialFolder folder;
    ULONG tag;
    EAdditionalFolderIndex index = eAdditionalNone;
};

constexpr auto kSpecialFolders = std::to_array<SpecialFolderRow>({
    {eVxSpecialSentItems, PR_IPM_SENTMAIL_ENTRYID},
    {eVxSpecialDeletedItems, PR_IPM_WASTEBASKET_ENTRYID},
    {eVxSpecialOutbox, PR_IPM_OUTBOX_ENTRYID},
    {eVxSpecialDrafts, PR_IPM_DRAFTS_ENTRYID},
    {eVxSpecialAdditional0, PR_ADDITIONAL_REN_ENTRYIDS, eAdditional0},
    {eVxSpecialAdditional1, PR_ADDITIONAL_REN_ENTRYIDS, eAdditional1},
    {eVxSpecialAdditional2, PR_ADDITIONAL_REN_ENTRYIDS, eAdditional2},
    {eVxSpecialAdditional3, PR_ADDITIONAL_REN_ENTRYIDS, eAdditional3},
    {eVxSpecialAdditional4, PR_ADDITIONAL_REN_ENTRYIDS, eAdditional4},
    {eVxSpecialAdditionalEx, PR_ADDITIONAL_REN_ENTRYIDS_EX},
});

std::vector<BYTE> Bytes(const SBinary& binary) {
    return binary.lpb != nullptr ? std::vector<BYTE>(binary.lpb, binary.lpb + binary.cb) : std::vector<BYTE>();
}

CStringW DisplayName(IMAPIFolder* folder) {
    VxMapiFrBufPtr<SPropValue> name;
    if (FAILED(HrGetOneProp(folder, PR_DISPLAY_NAME_W, &name))) {
        return {};
    }
    return CMapiUtil::Mapi2SimpleString(name);
}

}  // namespace

CStringW CVxOutlookStore::GetSpecialFolderName(CStringW& result, EVxSpecialFolder which) {
    result.clear();
    folder_ensure_mapi_connect<CVxOutlookStore> guard(*this);
    if (!guard.MapiConnect() || m_store.get() == nullptr) {
        VX_LOG('E') << Vx::LogMsg("OpenMsgStore for %s failed."_w, m_displayName);
        return result;
    }
    if (which == eVxSpecialInbox) {
        result = GetInboxDisplayName();
        return result;
    }
    const auto row = std::find_if(kSpecialFolders.begin(), kSpecialFolders.end(),
                                  [which](const SpecialFolderRow& candidate) { return candidate.folder == which; });
    if (row != kSpecialFolders.end()) {
        result = GetFolderDisplayName(row->tag, row->index);
    }
    return result;
}

bool CVxOutlookStore::OpenInbox(VxMapiPtr<IMAPIFolder>& inbox) {
    ULONG size = 0;
    VxMapiFrBufPtr<ENTRYID> id;
    if (FAILED(m_store->GetReceiveFolder(nullptr, 0, &size, &id, nullptr)) || id.get() == nullptr) {
        return false;
    }
    return SUCCEEDED(OpenFolder(size, reinterpret_cast<const BYTE*>(id.get()), inbox));
}

CStringW CVxOutlookStore::GetInboxDisplayName() {
    VxMapiPtr<IMAPIFolder> inbox;
    return OpenInbox(inbox) ? DisplayName(inbox) : CStringW();
}

CStringW CVxOutlookStore::GetFolderDisplayName(ULONG tag, EAdditionalFolderIndex index) {
    CStringW result;
    const std::vector<BYTE> id = FindSpecialFolder(tag, index);
    VxMapiPtr<IMAPIFolder> folder;
    if (!id.empty() && SUCCEEDED(OpenFolder(static_cast<ULONG>(id.size()), id.data(), folder))) {
        result = DisplayName(folder);
    }
    VX_LOG('I') << Vx::LogMsg(("GetSpecialFolderName: "_w + result).c_str());
    return result;
}

std::vector<BYTE> CVxOutlookStore::FindSpecialFolder(ULONG tag, EAdditionalFolderIndex index) {
    const bool isOfInbox = index > eAdditional0 || tag == PR_IPM_DRAFTS_ENTRYID || tag == PR_ADDITIONAL_REN_ENTRYIDS_EX;
    VxMapiPtr<IMAPIFolder> inbox;
    if (isOfInbox && !OpenInbox(inbox)) {
        return {};
    }
    IMAPIProp* owner = isOfInbox ? static_cast<IMAPIProp*>(inbox.get()) : m_store.get();
    VxMapiFrBufPtr<SPropValue> value;
    if (FAILED(HrGetOneProp(owner, tag, &value)) || value.get() == nullptr || value->ulPropTag != tag) {
        return {};
    }
    if (index > eAdditional0) {
        const SBinaryArray& ids = value->Value.MVbin;
        const auto element = static_cast<ULONG>(index);
        return element < ids.cValues ? Bytes(ids.lpbin[element]) : std::vector<BYTE>();
    }
    // The extended list is no entry id; neither is the additional list as a whole, which a store does not have anyway.
    const bool isEntryId = PROP_TYPE(tag) == PT_BINARY && tag != PR_ADDITIONAL_REN_ENTRYIDS_EX;
    return isEntryId ? Bytes(value->Value.bin) : std::vector<BYTE>();
}
