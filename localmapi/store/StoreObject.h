// A message store and its folders as COM objects, over a store source of any format. Stores are only read: what would
// change one answers MAPI_E_NO_ACCESS, what this system has no part in (sending, waiting for changes) MAPI_E_NO_SUPPORT.
#pragma once

#include "localmapi/model/StoreSource.h"
#include "localmapi/object/PropObject.h"
#include "localmapi/store/Identity.h"
#include "localmapi/store/MessageObject.h"
#include "mapi/MapiInterfaces.h"

#include <memory>

namespace localmapi {

// What the profile knows of a store.
struct StorePlace {
    Bytes entryId;         // of the store itself
    Bytes provider;        // PR_MDB_PROVIDER
    CStringW displayName;  // empty: the store's own
};

class StoreObject final : public PropObject<IMsgStore> {
public:
    StoreObject(std::unique_ptr<StoreSource> source, StorePlace place, SharedLock lock);

    HRESULT STDMETHODCALLTYPE Advise(ULONG size, LPENTRYID entryId, ULONG events, LPMAPIADVISESINK sink,
                                     ULONG_PTR* connection) override;
    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR connection) override;
    HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG firstSize, LPENTRYID first, ULONG secondSize, LPENTRYID second,
                                              ULONG flags, ULONG* result) override;
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID entryId, LPCIID interfaceId, ULONG flags, ULONG* type,
                                        LPUNKNOWN* object) override;
    HRESULT STDMETHODCALLTYPE SetReceiveFolder(LPTSTR messageClass, ULONG flags, ULONG size,
                                               LPENTRYID entryId) override;
    HRESULT STDMETHODCALLTYPE GetReceiveFolder(LPTSTR messageClass, ULONG flags, ULONG* size, LPENTRYID* entryId,
                                               LPTSTR* explicitClass) override;
    HRESULT STDMETHODCALLTYPE GetReceiveFolderTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE StoreLogoff(ULONG* flags) override;
    HRESULT STDMETHODCALLTYPE AbortSubmit(ULONG size, LPENTRYID entryId, ULONG flags) override;
    HRESULT STDMETHODCALLTYPE GetOutgoingQueue(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE SetLockState(LPMESSAGE message, ULONG state) override;
    HRESULT STDMETHODCALLTYPE FinishedMsg(ULONG flags, ULONG size, LPENTRYID entryId) override;
    HRESULT STDMETHODCALLTYPE NotifyNewMail(LPNOTIFICATION notification) override;

    StoreSource& TheStore() noexcept { return *m_store; }

    // What every object of the store says of the store: its ids, its key, what it can do.
    const std::shared_ptr<const Identity>& StoreIdentity() const noexcept { return m_shared; }

    // The identity of one of its folders or messages.
    std::shared_ptr<const Identity> IdentityOf(EntryNumber number, EntryNumber parent);

protected:
    bool Implements(REFIID interfaceId) const override;
    bool Compute(ULONG id, ValueMemory& memory, SPropValue& value) override;
    std::vector<ULONG> ComputedTags() override;
    bool IsFixed(ULONG id) override;

private:
    HRESULT Open(EntryKind kind, EntryNumber number, ComPtr<IUnknown>& object, ULONG& type);
    HRESULT FindReceiveFolder(LPTSTR messageClass, ULONG flags, Bytes& entryId, CStringW& matched);

    StoreSource* m_store;
    StorePlace m_place;
    std::shared_ptr<const Identity> m_shared;
    Identity m_own;
    ULONG_PTR m_nextConnection = 1;
};

class FolderObject final : public PropObject<IMAPIFolder> {
public:
    FolderObject(std::unique_ptr<FolderSource> source, ComPtr<StoreObject> store,
                 std::shared_ptr<const Identity> identity);

    HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG flags, LPMAPITABLE* table) override;
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID entryId, LPCIID interfaceId, ULONG flags, ULONG* type,
                                        LPUNKNOWN* object) override;
    HRESULT STDMETHODCALLTYPE SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG) override;
    HRESULT STDMETHODCALLTYPE GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*) override;
    HRESULT STDMETHODCALLTYPE CreateMessage(LPCIID, ULONG, LPMESSAGE*) override;
    HRESULT STDMETHODCALLTYPE CopyMessages(LPENTRYLIST, LPCIID, LPVOID, ULONG_PTR, LPMAPIPROGRESS, ULONG) override;
    HRESULT STDMETHODCALLTYPE DeleteMessages(LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG) override;
    HRESULT STDMETHODCALLTYPE CreateFolder(ULONG, LPTSTR, LPTSTR, LPCIID, ULONG, IMAPIFolder**) override;
    HRESULT STDMETHODCALLTYPE CopyFolder(ULONG, LPENTRYID, LPCIID, LPVOID, LPTSTR, ULONG_PTR, LPMAPIPROGRESS,
                                         ULONG) override;
    HRESULT STDMETHODCALLTYPE DeleteFolder(ULONG, LPENTRYID, ULONG_PTR, LPMAPIPROGRESS, ULONG) override;
    HRESULT STDMETHODCALLTYPE SetReadFlags(LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG) override;
    HRESULT STDMETHODCALLTYPE GetMessageStatus(ULONG size, LPENTRYID entryId, ULONG flags, ULONG* status) override;
    HRESULT STDMETHODCALLTYPE SetMessageStatus(ULONG, LPENTRYID, ULONG, ULONG, ULONG*) override;
    HRESULT STDMETHODCALLTYPE SaveContentsSort(LPSSortOrderSet, ULONG) override;
    HRESULT STDMETHODCALLTYPE EmptyFolder(ULONG_PTR, LPMAPIPROGRESS, ULONG) override;

protected:
    bool Implements(REFIID interfaceId) const override;
    bool Compute(ULONG id, ValueMemory& memory, SPropValue& value) override;
    std::vector<ULONG> ComputedTags() override;
    bool IsFixed(ULONG id) override;
    HRESULT OpenAs(ULONG tag, REFIID interfaceId, ULONG interfaceOptions, ULONG flags, IUnknown** object) override;

private:
    ComPtr<IMAPITable> TableOver(std::unique_ptr<RowSource> rows, ULONG flags);

    FolderSource* m_folder;
    ComPtr<StoreObject> m_store;
    std::shared_ptr<const Identity> m_identity;
};

}  // namespace localmapi
