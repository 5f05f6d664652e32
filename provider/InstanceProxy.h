// InstanceProxy: the provider as a host uses it. An object owns one COutlookInstance and turns each call into a call of
// it; values go in and come out as those of HostValue.h. Needs nothing but the standard library.
//
// Results: a call returns normally when it worked, and also when the profile, store, folder, item or attachment that it
// names does not exist: a Value is then null, a string empty. Whatever fails throws ResultException, E_OUTOFMEMORY too,
// and the references that were passed keep what they held. No other exception comes out.
//
// Threads: one call at a time, except that SetAbort may be called while another call runs that is not ReleaseVxMapi or
// Dispose. InitializeVxMapi is serialised over the process. A call belongs to the thread that makes it: no thread is
// started.
//
//     InstanceProxy proxy;
//     proxy.InitializeVxMapi(u"", u"Info");
//     Value profiles;
//     proxy.GetSystemProfiles(profiles);
//     for (const Value& profile : profiles.Elements()) {
//         Use(profile.At(FieldIndex(RecordKind::Profile, "pi_name")).String());
//     }
#pragma once

#include "provider/HostValue.h"
#include "provider/PublicApi.h"

#include <cstdint>
#include <memory>
#include <string>

class COutlookInstance;

namespace VxOutlookProvider {

class VX_PROVIDER_API InstanceProxy {
public:
    // How a failed call ends: throws, in the host's own code, whatever stands for the code there. An exception must not
    // begin in the library: where it has a C++ runtime of its own linked in, as on Windows, each of the two would count
    // the exceptions of the other wrongly.
    using FailureHandler = void (*)(HResult code);

    explicit InstanceProxy(FailureHandler fail = &ThrowResult);
    ~InstanceProxy();  // as Dispose
    InstanceProxy(const InstanceProxy&) = delete;
    InstanceProxy& operator=(const InstanceProxy&) = delete;

    // Ends the instance: everything is disconnected, and the log of this process falls silent for good. A second call
    // does nothing. Every other call throws E_POINTER from then on.
    void Dispose() noexcept;

    // Does nothing.
    void test() noexcept;

    // ---- Life ----

    // Starts MAPI. `params` are the settings, nine pieces with "|" between them (docs/host-guide.md); `logLevel` is
    // "Off", "Error", "Warning", "Info" or "Verbose". Once initialized, both are ignored until ReleaseVxMapi. E_ABORT
    // when MAPI cannot be had.
    void InitializeVxMapi(const Text& params, const Text& logLevel);

    // Logs off, ends MAPI, forgets the settings.
    void ReleaseVxMapi();

    // Logs off and ends MAPI; the next call starts it again by itself.
    void Disconnect();

    // Forget the folders of one store, or of all stores that are connected, so that they are read anew.
    void ClearFolderCache(const Text& profileName, const Text& storeId);
    void ClearFolderCache();

    // While true, reading stops: queries end early with what they have. It stays until it is set to false.
    void SetAbort(bool abort);

    // ---- The hierarchy: lists of records of the kinds Profile, Store and Folder ----

    void GetSystemProfiles(Value& profiles);
    void GetProfileStores(const Text& profileName, Value& stores);
    void GetStoreFolders(const Text& profileName, const Text& storeId, Value& folders);

    // The direct children of a folder, the store's top for an empty id; their paths begin with `parentFolderPath`.
    void GetSubFolders(const Text& profileName, const Text& storeId, const Text& parentFolderId,
                       const Text& parentFolderPath, Value& folders);

    // `specialFolder`: 0 inbox, 1 sent items, 2 deleted items, 3 outbox, 4 drafts, 5 to 9 conflicts, sync issues, local
    // failures, server failures, junk e-mail. Empty when the store has none.
    void GetSpecialFolderName(const Text& profileName, const Text& storeId, int specialFolder, std::u16string& name);
    void GetExchangeServer(const Text& profileName, std::u16string& server);

    // Shows an entry of the address book to the user, where there is a window to show it in.
    void ShowGABContact(const Text& profileName, const Text& contactEntryId);

    // ---- Items of a folder: URIs ----

    // The next page of a folder's items, those that changed after a time (FILETIME ticks) or all for 0; an empty list
    // at the end. `useNoCache` asks the server instead of a local copy. E_INVALIDARG for a URI of another type.
    void QueryItems(const Value& uri, std::int64_t modifiedSince, bool useNoCache, Value& uris,
                    std::int32_t& unsupportedCount);

    // The attachments and embedded items of an item or of an embedded item. `reserved` becomes 0.
    void QueryAttachments(const Value& uri, Value& uris, std::int32_t& reserved);

    // Counts a folder's items that changed before `from`, from then to before `to`, and from then on; ticks, 0 for an
    // open end.
    void GetChildrenItemsCount(const Value& uri, std::int64_t from, std::int64_t to, bool useNoCache,
                               std::int32_t& before, std::int32_t& in, std::int32_t& after);

    // ---- Content ----
    // `format`: 0 none, 1 text, 2 RTF, 3 HTML, 4 and 5 in a file, 6 in a named memory section (attachments only). With
    // `filterToItem` the folder reads that one item alone.

    // Records of the kind Item.
    void GetItemData(const Value& uri, int format, bool filterToItem, Value& record);
    void GetBinaryItemData(const Value& uri, int format, bool filterToItem, Value& record);

    // The body of an item or embedded item: directly from its store, or through its folder.
    void GetItemBody(const Value& uri, int format, std::u16string& body);
    void GetItemBody(const Value& uri, int format, bool filterToItem, std::u16string& body);

    // The bytes of an attachment: through its folder, or directly from its store.
    void GetBinaryItemBody(const Value& uri, int format, bool filterToItem, Value& bytes);
    void GetAttachment(const Value& uri, int format, Value& bytes);

    // ---- Administration of profiles; false when it did not work, the log says why ----

    bool CreateMAPIProfile(const Text& profileName);
    bool DeleteMAPIProfile(const Text& profileName);
    bool AddPSTToMAPIProfile(const Text& pstPath, const Text& profileName);
    bool AddDelegateToProfile(const Text& displayName, const Text& mailbox, const Text& server, const Text& serverDN,
                              const Text& profileName);
    bool RemoveDelegateStore(const Text& storeName, const Text& profileName);
    // The server comes before the account, unlike elsewhere here.
    bool AddExchangeToProfile(const Text& profileName, const Text& server, const Text& account, bool flag);

private:
    // Fails with a negative result.
    void Check(HResult result) const;

    FailureHandler m_fail;
    std::unique_ptr<COutlookInstance> m_p;  // null once disposed
    bool m_isDisposed = false;
};

}  // namespace VxOutlookProvider
