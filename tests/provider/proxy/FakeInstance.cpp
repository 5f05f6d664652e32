#include "tests/provider/proxy/FakeInstance.h"

#include "platform/Bstr.h"
#include "provider/HostConversion.h"
#include "provider/OutlookInstance.h"
#include "tests/provider/proxy/ValueText.h"

#include <type_traits>

namespace VxOutlookProvider {

FakeFacade& Facade() {
    static FakeFacade facade;
    return facade;
}

namespace {

std::string Shown(WideView text) {
    return TextOfUnits(std::u16string(text.begin(), text.end()));
}
std::string Shown(const WCHAR* text) {
    return text == nullptr ? "null" : Shown(WideView(text));
}
std::string Shown(const VARIANT& uri) {
    return TextOf(ToHost(uri));
}
std::string Shown(bool value) {
    return value ? "true" : "false";
}
template <typename T>
requires std::is_integral_v<T> || std::is_enum_v<T> std::string Shown(T value) {
    return std::to_string(static_cast<long long>(value));
}

template <typename... Arguments>
HRESULT Note(const char* name, const Arguments&... arguments) {
    std::string text;
    ((text += (text.empty() ? "" : ", ") + Shown(arguments)), ...);
    Facade().call = std::string(name) + "(" + text + ")";
    return Facade().result;
}

void Fill(VARIANT* out) {
    if (Facade().fillsResults) {
        out->vt = VT_BSTR;
        out->bstrVal = SysAllocString("given"_w);
    }
}
void Fill(CStringW& out) {
    if (Facade().fillsResults) {
        out = "given"_w;
    }
}
void Fill(LONG* out, LONG more) {
    if (Facade().fillsResults) {
        *out += more;
    }
}
void Fill(bool& out) {
    out = Facade().fillsResults;
}

void RunDuring() {
    const std::function<void()> during = Facade().during;  // which may set another one
    if (during) {
        during();
    }
}

}  // namespace

}  // namespace VxOutlookProvider

using namespace VxOutlookProvider;

COutlookInstance::COutlookInstance() noexcept {
    ++Facade().live;
}
COutlookInstance::~COutlookInstance() {
    --Facade().live;
}

HRESULT COutlookInstance::GetItemData(VARIANT uri, TBodyFormat format, bool filterToItem, VARIANT* record) {
    Fill(record);
    return Note("GetItemData", uri, format, filterToItem);
}
HRESULT COutlookInstance::GetItemBody(VARIANT uri, TBodyFormat format, CStringW& body) {
    Fill(body);
    return Note("GetItemBody", uri, format);
}
HRESULT COutlookInstance::GetItemBody(VARIANT uri, TBodyFormat format, bool filterToItem, CStringW& body) {
    Fill(body);
    return Note("GetItemBody", uri, format, filterToItem);
}
HRESULT COutlookInstance::InitializeVxMapi(const CStringW& params, const CStringW& logLevel) {
    RunDuring();
    return Note("InitializeVxMapi", WideView(params), WideView(logLevel));
}
HRESULT COutlookInstance::ReleaseVxMapi() {
    return Note("ReleaseVxMapi");
}
HRESULT COutlookInstance::SetAbort(bool abort) {
    RunDuring();
    return Note("SetAbort", abort);
}
HRESULT COutlookInstance::Disconnect() {
    return Note("Disconnect");
}
HRESULT COutlookInstance::ClearFolderCache(const WCHAR* profileName, const WCHAR* storeId) {
    return Note("ClearFolderCache", profileName, storeId);
}
HRESULT COutlookInstance::ClearFolderCache() {
    return Note("ClearFolderCache");
}
HRESULT COutlookInstance::GetSystemProfiles(VARIANT* profiles) {
    Fill(profiles);
    return Note("GetSystemProfiles");
}
HRESULT COutlookInstance::ShowGABContact(const WCHAR* profileName, const WCHAR* contactEntryId) {
    return Note("ShowGABContact", profileName, contactEntryId);
}
HRESULT COutlookInstance::GetProfileStores(const WCHAR* profileName, VARIANT* stores) {
    Fill(stores);
    return Note("GetProfileStores", profileName);
}
HRESULT COutlookInstance::GetStoreFolders(const WCHAR* profileName, const WCHAR* storeId, VARIANT* folders) {
    Fill(folders);
    return Note("GetStoreFolders", profileName, storeId);
}
HRESULT COutlookInstance::GetProfileFolders(WCHAR*, VARIANT*) {
    return Note("GetProfileFolders");
}
HRESULT COutlookInstance::GetSubFolders(const WCHAR* profileName, const WCHAR* storeId, const WCHAR* parentFolderId,
                                        const WCHAR* parentFolderPath, VARIANT* folders) {
    Fill(folders);
    return Note("GetSubFolders", profileName, storeId, parentFolderId, parentFolderPath);
}
HRESULT COutlookInstance::GetFolderItemURIs(WCHAR*, WCHAR*, WCHAR*, VARIANT*) {
    return Note("GetFolderItemURIs");
}
HRESULT COutlookInstance::QueryItems(VARIANT uri, std::int64_t modifiedSince, bool useNoCache, VARIANT* uris,
                                     LONG* unsupportedCount) {
    RunDuring();
    Fill(uris);
    Fill(unsupportedCount, 1);
    return Note("QueryItems", uri, modifiedSince, useNoCache);
}
HRESULT COutlookInstance::QueryAttachments(VARIANT uri, VARIANT* uris, LONG* reserved) {
    Fill(uris);
    Fill(reserved, 1);
    return Note("QueryAttachments", uri);
}
HRESULT COutlookInstance::GetChildrenItemsCount(VARIANT uri, std::int64_t from, std::int64_t to, bool useNoCache,
                                                LONG* nBefore, LONG* nIn, LONG* nAfter) {
    Fill(nBefore, 1);
    Fill(nIn, 2);
    Fill(nAfter, 3);
    return Note("GetChildrenItemsCount", uri, from, to, useNoCache);
}
HRESULT COutlookInstance::GetSpecialFolderName(const WCHAR* profileName, const WCHAR* storeId, int specialFolder,
                                               CStringW& name) {
    Fill(name);
    return Note("GetSpecialFolderName", profileName, storeId, specialFolder);
}
HRESULT COutlookInstance::GetExchangeServer(const WCHAR* profileName, CStringW& server) {
    Fill(server);
    return Note("GetExchangeServer", profileName);
}
HRESULT COutlookInstance::GetAttachment(VARIANT uri, TBodyFormat format, VARIANT* bytes) {
    Fill(bytes);
    return Note("GetAttachment", uri, format);
}
HRESULT COutlookInstance::GetBinaryItemBody(VARIANT uri, TBodyFormat format, bool filterToItem, VARIANT* bytes) {
    Fill(bytes);
    return Note("GetBinaryItemBody", uri, format, filterToItem);
}
HRESULT COutlookInstance::GetBinaryItemData(VARIANT uri, TBodyFormat format, bool filterToItem, VARIANT* record) {
    Fill(record);
    return Note("GetBinaryItemData", uri, format, filterToItem);
}
HRESULT COutlookInstance::CreateMAPIProfile(const WCHAR* profileName, bool& result) {
    Fill(result);
    return Note("CreateMAPIProfile", profileName);
}
HRESULT COutlookInstance::DeleteMAPIProfile(const WCHAR* profileName, bool& result) {
    Fill(result);
    return Note("DeleteMAPIProfile", profileName);
}
HRESULT COutlookInstance::AddDelegateStoreToProfile(const WCHAR* displayName, const WCHAR* mailbox, const WCHAR* server,
                                                    const WCHAR* serverDN, const WCHAR* profileName, bool& result) {
    Fill(result);
    return Note("AddDelegateStoreToProfile", displayName, mailbox, server, serverDN, profileName);
}
HRESULT COutlookInstance::RemoveDelegateStore(const WCHAR* storeName, const WCHAR* profileName, bool& result) {
    Fill(result);
    return Note("RemoveDelegateStore", storeName, profileName);
}
HRESULT COutlookInstance::AddPSTToMAPIProfile(const WCHAR* pstPath, const WCHAR* profileName, bool& result) {
    Fill(result);
    return Note("AddPSTToMAPIProfile", pstPath, profileName);
}
HRESULT COutlookInstance::AddExchangeToProfile(const WCHAR* profileName, const WCHAR* mailbox, const WCHAR* server,
                                               bool flag, bool& result) {
    Fill(result);
    return Note("AddExchangeToProfile", profileName, mailbox, server, flag);
}
