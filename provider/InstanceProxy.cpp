#include "provider/InstanceProxy.h"

#include "platform/BaseTypes.h"
#include "platform/ResultCodes.h"
#include "platform/Variant.h"
#include "provider/HostConversion.h"
#include "provider/OutlookInstance.h"

#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

namespace VxOutlookProvider {

namespace {

// Serialises InitializeVxMapi over the process.
std::mutex LOCKInitializeVxMapi;

// An operation of the facade; written out where one name has several.
template <typename... Parameters>
using Operation = HRESULT (COutlookInstance::*)(Parameters...);

// Hosts give any number; the operation says which it knows.
TBodyFormat BodyFormat(int format) noexcept {
    return static_cast<TBodyFormat>(format);
}

// ---- Arguments: a class for each way in which one crosses the boundary ----

// The steps of a call, for arguments that need fewer. Prepare makes what the operation gets, or refuses the call with a
// result; Pass is that. Receive converts what the operation gave. Give hands it to the host and cannot fail, so that the
// host has all results of a call or none.
struct Argument {
    HRESULT Prepare() { return S_OK; }
    void Receive() {}
    void Give() noexcept {}
};

// A number, as it is.
template <typename T>
class In : public Argument {
public:
    explicit In(const T& value) : m_value(value) {}
    T Pass() const noexcept { return m_value; }

private:
    T m_value;
};

// A text, lent.
template <>
class In<Text> : public Argument {
public:
    explicit In(const Text& text) : m_text(text) {}
    const WCHAR* Pass() const noexcept { return ToWide(m_text); }

private:
    const Text& m_text;
};

// A URI: a record of our own, which the operation borrows.
template <>
class In<Value> : public Argument {
public:
    explicit In(const Value& uri) : m_uri(uri) {}
    HRESULT Prepare() { return ToUri(m_uri, m_variant); }
    VARIANT Pass() const noexcept { return m_variant.Get(); }

private:
    const Value& m_uri;
    VariantHolder m_variant;
};

// A text with the zeros inside it; empty for none.
class InWhole : public Argument {
public:
    explicit InWhole(const Text& text) : m_text(text) {}
    HRESULT Prepare() {
        m_copy = ToWideCopy(m_text);
        return S_OK;
    }
    const CStringW& Pass() const noexcept { return m_copy; }

private:
    const Text& m_text;
    CStringW m_copy;
};

template <typename T>
class Out;

template <>
class Out<Value> : public Argument {
public:
    explicit Out(Value& out) : m_out(out) {}
    VARIANT* Pass() noexcept { return m_variant.Put(); }
    void Receive() { m_value = ToHost(m_variant.Get()); }
    void Give() noexcept { m_out = std::move(m_value); }

private:
    Value& m_out;
    VariantHolder m_variant;
    Value m_value;
};

template <>
class Out<std::u16string> : public Argument {
public:
    explicit Out(std::u16string& out) : m_out(out) {}
    CStringW& Pass() noexcept { return m_text; }
    void Receive() { m_value = ToHost(std::move(m_text)); }
    void Give() noexcept { m_out = std::move(m_value); }

private:
    std::u16string& m_out;
    CStringW m_text;
    std::u16string m_value;
};

// A count, which is `start` until the operation says otherwise.
template <>
class Out<std::int32_t> : public Argument {
public:
    explicit Out(std::int32_t& out, std::int32_t start = 0) : m_out(out), m_count(start) {}
    LONG* Pass() noexcept { return &m_count; }
    void Give() noexcept { m_out = m_count; }

private:
    std::int32_t& m_out;
    LONG m_count;
};

// Whether the operation worked, for one that says so besides its result.
template <>
class Out<bool> : public Argument {
public:
    explicit Out(bool& out) : m_out(out) {}
    bool& Pass() noexcept { return m_out; }

private:
    bool& m_out;
};

template <typename T>
Out(T&) -> Out<T>;
template <typename T>
Out(T&, T) -> Out<T>;

// The first refusal of an argument, else S_OK.
template <typename... Arguments>
HRESULT PrepareAll(Arguments&... arguments) {
    HRESULT result = S_OK;
    static_cast<void>((SUCCEEDED(result = arguments.Prepare()) && ...));
    return result;
}

// Runs an operation with its arguments. The facade lets no exception out, so only the conversions around it can throw;
// that ends here.
template <typename... Parameters, typename... Arguments>
HRESULT Try(const std::unique_ptr<COutlookInstance>& instance, Operation<Parameters...> operation,
            Arguments&&... arguments) noexcept {
    if (instance == nullptr) {
        return E_POINTER;
    }
    try {
        HRESULT result = PrepareAll(arguments...);
        if (SUCCEEDED(result)) {
            result = ((*instance).*operation)(arguments.Pass()...);
        }
        if (SUCCEEDED(result)) {
            (arguments.Receive(), ...);
            (arguments.Give(), ...);
        }
        return result;
    } catch (const std::bad_alloc&) {
        return E_OUTOFMEMORY;
    } catch (const std::exception&) {
        return E_FAIL;
    }
}

}  // namespace

void InstanceProxy::Check(HResult result) const {
    if (FAILED(result)) {
        m_fail(result);
    }
}

// ---- Life -----------------------------------------------------------------------------------------------------------

InstanceProxy::InstanceProxy(FailureHandler fail) : m_fail(fail), m_p(new (std::nothrow) COutlookInstance) {
    Check(m_p == nullptr ? E_OUTOFMEMORY : S_OK);
}

InstanceProxy::~InstanceProxy() {
    Dispose();
}

void InstanceProxy::Dispose() noexcept {
    if (!m_isDisposed) {
        m_p.reset();
        m_isDisposed = true;
    }
}

void InstanceProxy::test() noexcept {}

void InstanceProxy::InitializeVxMapi(const Text& params, const Text& logLevel) {
    const std::scoped_lock lock(LOCKInitializeVxMapi);
    Check(Try(m_p, &COutlookInstance::InitializeVxMapi, InWhole(params), InWhole(logLevel)));
}

void InstanceProxy::ReleaseVxMapi() {
    Check(Try(m_p, &COutlookInstance::ReleaseVxMapi));
}

void InstanceProxy::Disconnect() {
    Check(Try(m_p, &COutlookInstance::Disconnect));
}

void InstanceProxy::ClearFolderCache(const Text& profileName, const Text& storeId) {
    Check(Try(m_p, Operation<const WCHAR*, const WCHAR*>(&COutlookInstance::ClearFolderCache), In(profileName),
              In(storeId)));
}

void InstanceProxy::ClearFolderCache() {
    Check(Try(m_p, Operation<>(&COutlookInstance::ClearFolderCache)));
}

void InstanceProxy::SetAbort(bool abort) {
    Check(Try(m_p, &COutlookInstance::SetAbort, In(abort)));
}

// ---- The hierarchy --------------------------------------------------------------------------------------------------

void InstanceProxy::GetSystemProfiles(Value& profiles) {
    Check(Try(m_p, &COutlookInstance::GetSystemProfiles, Out(profiles)));
}

void InstanceProxy::GetProfileStores(const Text& profileName, Value& stores) {
    Check(Try(m_p, &COutlookInstance::GetProfileStores, In(profileName), Out(stores)));
}

void InstanceProxy::GetStoreFolders(const Text& profileName, const Text& storeId, Value& folders) {
    Check(Try(m_p, &COutlookInstance::GetStoreFolders, In(profileName), In(storeId), Out(folders)));
}

void InstanceProxy::GetSubFolders(const Text& profileName, const Text& storeId, const Text& parentFolderId,
                                  const Text& parentFolderPath, Value& folders) {
    Check(Try(m_p, &COutlookInstance::GetSubFolders, In(profileName), In(storeId), In(parentFolderId),
              In(parentFolderPath), Out(folders)));
}

void InstanceProxy::GetSpecialFolderName(const Text& profileName, const Text& storeId, int specialFolder,
                                         std::u16string& name) {
    Check(
        Try(m_p, &COutlookInstance::GetSpecialFolderName, In(profileName), In(storeId), In(specialFolder), Out(name)));
}

void InstanceProxy::GetExchangeServer(const Text& profileName, std::u16string& server) {
    Check(Try(m_p, &COutlookInstance::GetExchangeServer, In(profileName), Out(server)));
}

void InstanceProxy::ShowGABContact(const Text& profileName, const Text& contactEntryId) {
    Check(Try(m_p, &COutlookInstance::ShowGABContact, In(profileName), In(contactEntryId)));
}

// ---- Items of a folder ----------------------------------------------------------------------------------------------

void InstanceProxy::QueryItems(const Value& uri, std::int64_t modifiedSince, bool useNoCache, Value& uris,
                               std::int32_t& unsupportedCount) {
    Check(Try(m_p, &COutlookInstance::QueryItems, In(uri), In(modifiedSince), In(useNoCache), Out(uris),
              Out(unsupportedCount)));
}

void InstanceProxy::QueryAttachments(const Value& uri, Value& uris, std::int32_t& reserved) {
    Check(Try(m_p, &COutlookInstance::QueryAttachments, In(uri), Out(uris), Out(reserved)));
}

void InstanceProxy::GetChildrenItemsCount(const Value& uri, std::int64_t from, std::int64_t to, bool useNoCache,
                                          std::int32_t& before, std::int32_t& in, std::int32_t& after) {
    Check(Try(m_p, &COutlookInstance::GetChildrenItemsCount, In(uri), In(from), In(to), In(useNoCache),
              Out(before, before), Out(in, in), Out(after, after)));
}

// ---- Content --------------------------------------------------------------------------------------------------------

void InstanceProxy::GetItemData(const Value& uri, int format, bool filterToItem, Value& record) {
    Check(Try(m_p, Operation<VARIANT, TBodyFormat, bool, VARIANT*>(&COutlookInstance::GetItemData), In(uri),
              In(BodyFormat(format)), In(filterToItem), Out(record)));
}

void InstanceProxy::GetBinaryItemData(const Value& uri, int format, bool filterToItem, Value& record) {
    Check(
        Try(m_p, &COutlookInstance::GetBinaryItemData, In(uri), In(BodyFormat(format)), In(filterToItem), Out(record)));
}

void InstanceProxy::GetItemBody(const Value& uri, int format, std::u16string& body) {
    Check(Try(m_p, Operation<VARIANT, TBodyFormat, CStringW&>(&COutlookInstance::GetItemBody), In(uri),
              In(BodyFormat(format)), Out(body)));
}

void InstanceProxy::GetItemBody(const Value& uri, int format, bool filterToItem, std::u16string& body) {
    Check(Try(m_p, Operation<VARIANT, TBodyFormat, bool, CStringW&>(&COutlookInstance::GetItemBody), In(uri),
              In(BodyFormat(format)), In(filterToItem), Out(body)));
}

void InstanceProxy::GetBinaryItemBody(const Value& uri, int format, bool filterToItem, Value& bytes) {
    Check(
        Try(m_p, &COutlookInstance::GetBinaryItemBody, In(uri), In(BodyFormat(format)), In(filterToItem), Out(bytes)));
}

void InstanceProxy::GetAttachment(const Value& uri, int format, Value& bytes) {
    Check(Try(m_p, &COutlookInstance::GetAttachment, In(uri), In(BodyFormat(format)), Out(bytes)));
}

// ---- Administration of profiles -------------------------------------------------------------------------------------

bool InstanceProxy::CreateMAPIProfile(const Text& profileName) {
    bool worked = false;
    Check(Try(m_p, &COutlookInstance::CreateMAPIProfile, In(profileName), Out(worked)));
    return worked;
}

bool InstanceProxy::DeleteMAPIProfile(const Text& profileName) {
    bool worked = false;
    Check(Try(m_p, &COutlookInstance::DeleteMAPIProfile, In(profileName), Out(worked)));
    return worked;
}

bool InstanceProxy::AddPSTToMAPIProfile(const Text& pstPath, const Text& profileName) {
    bool worked = false;
    Check(Try(m_p, &COutlookInstance::AddPSTToMAPIProfile, In(pstPath), In(profileName), Out(worked)));
    return worked;
}

bool InstanceProxy::AddDelegateToProfile(const Text& displayName, const Text& mailbox, const Text& server,
                                         const Text& serverDN, const Text& profileName) {
    bool worked = false;
    Check(Try(m_p, &COutlookInstance::AddDelegateStoreToProfile, In(displayName), In(mailbox), In(server), In(serverDN),
              In(profileName), Out(worked)));
    return worked;
}

bool InstanceProxy::RemoveDelegateStore(const Text& storeName, const Text& profileName) {
    bool worked = false;
    Check(Try(m_p, &COutlookInstance::RemoveDelegateStore, In(storeName), In(profileName), Out(worked)));
    return worked;
}

bool InstanceProxy::AddExchangeToProfile(const Text& profileName, const Text& server, const Text& account, bool flag) {
    bool worked = false;
    Check(Try(m_p, &COutlookInstance::AddExchangeToProfile, In(profileName), In(server), In(account), In(flag),
              Out(worked)));
    return worked;
}

}  // namespace VxOutlookProvider
