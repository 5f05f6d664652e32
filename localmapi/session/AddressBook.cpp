#include "localmapi/session/AddressBook.h"

#include "localmapi/com/CallArguments.h"
#include "localmapi/object/MemoryProperties.h"
#include "localmapi/object/PropObject.h"
#include "localmapi/props/Values.h"
#include "localmapi/session/OneOff.h"
#include "localmapi/table/MemoryRows.h"
#include "localmapi/table/Table.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

namespace localmapi {

namespace {

std::unique_ptr<MemoryProperties> EntryProperties(ULONG objectType, ULONG displayType, WideView name) {
    Arena memory;
    auto properties = std::make_unique<MemoryProperties>();
    properties->Set(LongValue(PR_OBJECT_TYPE, static_cast<LONG>(objectType)));
    properties->Set(LongValue(PR_DISPLAY_TYPE, static_cast<LONG>(displayType)));
    properties->Set(WideValue(PR_DISPLAY_NAME_W, name, memory));
    return properties;
}

std::unique_ptr<MemoryProperties> RecipientProperties(const OneOff& recipient, ByteView entryId) {
    Arena memory;
    auto properties = EntryProperties(MAPI_MAILUSER, DT_MAILUSER, recipient.name);
    properties->Set(BinaryValue(PR_ENTRYID, entryId, memory));
    properties->Set(BinaryValue(PR_RECORD_KEY, entryId, memory));
    properties->Set(WideValue(PR_ADDRTYPE_W, recipient.addressType, memory));
    properties->Set(WideValue(PR_EMAIL_ADDRESS_W, recipient.address, memory));
    properties->Set(BoolValue(PR_SEND_RICH_INFO, recipient.isRich));
    static constexpr const auto& kInternet = "SMTP"_w;
    if (recipient.addressType == kInternet) {
        properties->Set(WideValue(PR_SMTP_ADDRESS_W, recipient.address, memory));
    }
    return properties;
}

// The topmost container: no containers in it, and nobody.
class RootContainer final : public PropObject<IABContainer> {
public:
    RootContainer(ComPtr<IUnknown> session, SharedLock lock)
        : PropObject(EntryProperties(MAPI_ABCONT, DT_NOT_SPECIFIC, {}), std::move(session), std::move(lock)) {}

    HRESULT STDMETHODCALLTYPE GetContentsTable(ULONG flags, LPMAPITABLE* table) override {
        return GiveEmptyTable({PR_ENTRYID, PR_DISPLAY_NAME_W, PR_OBJECT_TYPE, PR_DISPLAY_TYPE}, flags, table);
    }
    HRESULT STDMETHODCALLTYPE GetHierarchyTable(ULONG flags, LPMAPITABLE* table) override {
        return GiveEmptyTable(
            {PR_ENTRYID, PR_DISPLAY_NAME_W, PR_OBJECT_TYPE, PR_DISPLAY_TYPE, PR_DEPTH, PR_CONTAINER_FLAGS}, flags,
            table);
    }
    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID entryId, LPCIID interfaceId, ULONG, ULONG* type,
                                        LPUNKNOWN* object) override;
    HRESULT STDMETHODCALLTYPE SetSearchCriteria(LPSRestriction, LPENTRYLIST, ULONG) override {
        return MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE GetSearchCriteria(ULONG, LPSRestriction*, LPENTRYLIST*, ULONG*) override {
        return MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE CreateEntry(ULONG, LPENTRYID, ULONG, LPMAPIPROP* entry) override {
        if (entry != nullptr) {
            *entry = nullptr;
        }
        return MAPI_E_NO_ACCESS;
    }
    HRESULT STDMETHODCALLTYPE CopyEntries(LPENTRYLIST, ULONG_PTR, LPMAPIPROGRESS, ULONG) override {
        return MAPI_E_NO_ACCESS;
    }
    HRESULT STDMETHODCALLTYPE DeleteEntries(LPENTRYLIST, ULONG) override { return MAPI_E_NO_ACCESS; }

    // Nobody is known, so every flag stays MAPI_UNRESOLVED.
    HRESULT STDMETHODCALLTYPE ResolveNames(LPSPropTagArray, ULONG, LPADRLIST list, LPFlagList flags) override {
        return list == nullptr || flags == nullptr ? MAPI_E_INVALID_PARAMETER : S_OK;
    }

protected:
    bool Implements(REFIID interfaceId) const override {
        return interfaceId == IID_IABContainer || interfaceId == IID_IMAPIContainer
               || PropObject::Implements(interfaceId);
    }

private:
    HRESULT GiveEmptyTable(std::vector<ULONG> columns, ULONG flags, LPMAPITABLE* table) {
        if (table == nullptr) {
            return MAPI_E_INVALID_PARAMETER;
        }
        *table = nullptr;
        return Guarded([&] {
            *table = MakeTable(std::make_unique<MemoryRows>(std::move(columns)), ComPtr<IUnknown>(this), flags, Lock())
                         .Detach();
            return S_OK;
        });
    }
};

HRESULT STDMETHODCALLTYPE RootContainer::OpenEntry(ULONG size, LPENTRYID entryId, LPCIID interfaceId, ULONG,
                                                   ULONG* type, LPUNKNOWN* object) {
    if (object == nullptr) {
        return MAPI_E_INVALID_PARAMETER;
    }
    *object = nullptr;
    return Guarded([&] { return GiveAddressEntry(ViewOf(size, entryId), interfaceId, Keeps(), Lock(), type, object); });
}

class AddressBook final : public PropObject<IAddrBook> {
public:
    AddressBook(ComPtr<IUnknown> session, SharedLock lock)
        : PropObject(EntryProperties(MAPI_ADDRBOOK, DT_NOT_SPECIFIC, {}), std::move(session), std::move(lock)) {}

    HRESULT STDMETHODCALLTYPE OpenEntry(ULONG size, LPENTRYID entryId, LPCIID interfaceId, ULONG, ULONG* type,
                                        LPUNKNOWN* object) override {
        if (object == nullptr) {
            return MAPI_E_INVALID_PARAMETER;
        }
        *object = nullptr;
        return Guarded(
            [&] { return GiveAddressEntry(ViewOf(size, entryId), interfaceId, Keeps(), Lock(), type, object); });
    }
    HRESULT STDMETHODCALLTYPE CompareEntryIDs(ULONG firstSize, LPENTRYID first, ULONG secondSize, LPENTRYID second,
                                              ULONG, ULONG* result) override {
        return CompareIds(ViewOf(firstSize, first), ViewOf(secondSize, second), result);
    }
    HRESULT STDMETHODCALLTYPE CreateOneOff(LPTSTR name, LPTSTR addressType, LPTSTR address, ULONG flags, ULONG* size,
                                           LPENTRYID* entryId) override {
        if (addressType == nullptr || address == nullptr || size == nullptr || entryId == nullptr) {
            return MAPI_E_INVALID_PARAMETER;
        }
        *entryId = nullptr;
        return Guarded([&] {
            const OneOff recipient{CallText(name, flags), CallText(addressType, flags), CallText(address, flags),
                                   (flags & MAPI_SEND_NO_RICH_INFO) == 0};
            const Bytes bytes = MakeOneOff(recipient, (flags & MAPI_UNICODE) != 0);
            GiveId(bytes, size, entryId);
            return S_OK;
        });
    }

    // Without lists to look names up in, nothing resolves.
    HRESULT STDMETHODCALLTYPE ResolveName(ULONG_PTR, ULONG, LPTSTR, LPADRLIST list) override {
        return list == nullptr ? MAPI_E_INVALID_PARAMETER : MAPI_E_NOT_FOUND;
    }
    HRESULT STDMETHODCALLTYPE PrepareRecips(ULONG, LPSPropTagArray, LPADRLIST) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetSearchPath(ULONG, LPSRowSet* path) override {
        if (path == nullptr) {
            return MAPI_E_INVALID_PARAMETER;
        }
        *path = nullptr;
        return Guarded([&] {
            auto rows = MakeRoot<SRowSet>(CbNewSRowSet(0));
            rows->cRows = 0;
            *path = rows.release();
            return S_OK;
        });
    }
    HRESULT STDMETHODCALLTYPE Advise(ULONG, LPENTRYID, ULONG, LPMAPIADVISESINK, ULONG_PTR*) override {
        return MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE Unadvise(ULONG_PTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetPAB(ULONG* size, LPENTRYID* entryId) override { return NoContainer(size, entryId); }
    HRESULT STDMETHODCALLTYPE GetDefaultDir(ULONG* size, LPENTRYID* entryId) override {
        return NoContainer(size, entryId);
    }

    // Dialogs, and what would change the book.
    HRESULT STDMETHODCALLTYPE NewEntry(ULONG_PTR, ULONG, ULONG, LPENTRYID, ULONG, LPENTRYID, ULONG*,
                                       LPENTRYID*) override {
        return MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE Address(ULONG_PTR*, LPADRPARM, LPADRLIST*) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE Details(ULONG_PTR*, LPFNDISMISS, LPVOID, ULONG, LPENTRYID, LPFNBUTTON, LPVOID, LPTSTR,
                                      ULONG) override {
        return MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE RecipOptions(ULONG_PTR, ULONG, LPADRENTRY) override { return MAPI_E_NO_SUPPORT; }
    HRESULT STDMETHODCALLTYPE QueryDefaultRecipOpt(LPTSTR, ULONG, ULONG*, LPSPropValue*) override {
        return MAPI_E_NO_SUPPORT;
    }
    HRESULT STDMETHODCALLTYPE SetPAB(ULONG, LPENTRYID) override { return MAPI_E_NO_ACCESS; }
    HRESULT STDMETHODCALLTYPE SetDefaultDir(ULONG, LPENTRYID) override { return MAPI_E_NO_ACCESS; }
    HRESULT STDMETHODCALLTYPE SetSearchPath(ULONG, LPSRowSet) override { return MAPI_E_NO_ACCESS; }

protected:
    bool Implements(REFIID interfaceId) const override {
        return interfaceId == IID_IAddrBook || PropObject::Implements(interfaceId);
    }

private:
    static HRESULT NoContainer(ULONG* size, LPENTRYID* entryId) {
        if (size == nullptr || entryId == nullptr) {
            return MAPI_E_INVALID_PARAMETER;
        }
        *size = 0;
        *entryId = nullptr;
        return MAPI_E_NOT_FOUND;
    }
};

}  // namespace

ComPtr<IAddrBook> MakeAddressBook(ComPtr<IUnknown> session, SharedLock lock) {
    return ComPtr<IAddrBook>(MakeObject<AddressBook>(std::move(session), std::move(lock)).Get());
}

HRESULT GiveAddressEntry(ByteView entryId, LPCIID interfaceId, const ComPtr<IUnknown>& session, const SharedLock& lock,
                         ULONG* type, LPUNKNOWN* object) {
    ULONG entryType = MAPI_ABCONT;
    ComPtr<IUnknown> entry;
    if (entryId.IsEmpty()) {
        entry = ComPtr<IUnknown>(MakeObject<RootContainer>(session, lock).Get());
    } else {
        static constexpr std::size_t kSmallest = sizeof(ULONG) + sizeof(MAPIUID);
        const auto recipient = ParseOneOff(entryId);
        if (!recipient) {
            return entryId.Size() < kSmallest ? MAPI_E_INVALID_ENTRYID : MAPI_E_UNKNOWN_ENTRYID;
        }
        entryType = MAPI_MAILUSER;
        entry = ComPtr<IUnknown>(
            MakeObject<SimpleObject<IMailUser>>(IID_IMailUser, RecipientProperties(*recipient, entryId), session, lock)
                .Get());
    }
    if (type != nullptr) {
        *type = entryType;
    }
    return GiveAs(entry, interfaceId, entryType == MAPI_ABCONT ? IID_IABContainer : IID_IMailUser, object);
}

}  // namespace localmapi
