// What an object says of its last failure, stores behind wrappers, and the holders of MAPI's memory.
#include "mapi/MapiCodes.h"
#include "mapi/MapiGuids.h"
#include "provider/ImportProcs.h"
#include "provider/MAPIUtils.h"
#include "provider/MapiHolders.h"
#include "testing/StubInterfaces.h"
#include "tests/provider/mapi/util/FakeMapi.h"
#include "tests/provider/mapi/util/TestSupport.h"

#include <gtest/gtest.h>

#include <new>
#include <string>
#include <utility>
#include <vector>

namespace {

struct LastError {
    HRESULT result = S_OK;
    bool given = true;
    const char* component = nullptr;  // 8-bit text
    const char* error = nullptr;
    ULONG context = 0;
    ULONG lowLevel = 0;
    ULONG version = 0;
    std::vector<long long> asked;  // result and flags

    HRESULT Answer(HRESULT hr, ULONG flags, LPMAPIERROR* out) {
        asked = {hr, flags};
        if (given) {
            void* block = nullptr;
            MAPIAllocateBuffer(sizeof(MAPIERROR), &block);
            const auto wide = [](const char* text) { return reinterpret_cast<LPTSTR>(const_cast<char*>(text)); };
            *out = new (block) MAPIERROR{version, wide(error), wide(component), lowLevel, context};
        }
        return result;
    }
};

class FailingSession : public vx_testing::StubSession {
public:
    LastError last;
    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT hr, ULONG flags, LPMAPIERROR* error) override {
        return last.Answer(hr, flags, error);
    }
};

class FailingStore : public vx_testing::StubStore {
public:
    LastError last;
    HRESULT STDMETHODCALLTYPE GetLastError(HRESULT hr, ULONG flags, LPMAPIERROR* error) override {
        return last.Answer(hr, flags, error);
    }
};

TEST(ErrorInformation, IsLoggedAsFarAsItIsThere) {
    const std::string nothing = "get last error did not return information";
    struct Row {
        const char* name;
        LastError last;
        std::vector<std::string> expected;
    };
    const Row rows[] = {
        {"all of it",
         {S_OK, true, "EMSMDB", "Network problems", 0x50B, 0x80040115, 2, {}},
         {"component is EMSMDB ", "error is Network problems ", "context is 50b ", "low level error is 80040115 ",
          "version is 2 "}},
        {"error text only", {S_OK, true, nullptr, "Network problems", 0, 0, 0, {}}, {"error is Network problems "}},
        {"percent signs", {S_OK, true, "%s%n", nullptr, 0, 0, 0, {}}, {"component is %s%n "}},
        {"empty structure", {S_OK, true, nullptr, nullptr, 0, 0, 0, {}}, {}},
        {"none", {S_OK, false, "x", "x", 1, 1, 1, {}}, {nothing}},
        {"call fails", {MAPI_E_NO_SUPPORT, false, "x", "x", 1, 1, 1, {}}, {nothing}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const FakeMapi mapi;
        const std::vector<long long> asked = {MAPI_E_NETWORK_ERROR, 0};
        FailingSession session;
        session.last = row.last;
        const LogCapture ofSession;
        CMapiUtil::PrintErrorInformation(MAPI_E_NETWORK_ERROR, &session);
        EXPECT_EQ(ofSession.Texts("ERROR"), row.expected);
        EXPECT_EQ(session.last.asked, asked);

        FailingStore store;
        store.last = row.last;
        const LogCapture ofStore;
        CMapiUtil::PrintErrorInformation(MAPI_E_NETWORK_ERROR, &store);
        EXPECT_EQ(ofStore.Texts("ERROR"), row.expected);
        EXPECT_EQ(store.last.asked, asked);
        EXPECT_EQ(FakeMapi::LiveBlocks(), 0);
    }
}

class Proxy : public vx_testing::StubUnknown<IProxyStoreObject> {
public:
    HRESULT result = S_OK;
    IMsgStore* store = nullptr;

    HRESULT STDMETHODCALLTYPE PlaceHolder1() override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE UnwrapNoRef(LPVOID* object) override {
        *object = store;
        return result;
    }
    HRESULT STDMETHODCALLTYPE PlaceHolder2() override { return E_NOTIMPL; }
};

class WrappedStore : public vx_testing::StubStore {
public:
    HRESULT result = S_OK;
    Proxy* proxy = nullptr;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        EXPECT_TRUE(IsEqualIID(iid, IID_IProxyStoreObject));
        *object = proxy;
        if (proxy != nullptr) {
            proxy->AddRef();
        }
        return result;
    }
};

TEST(WrappedStore, GivesTheStoreBehindIt) {
    struct Row {
        const char* name;
        HRESULT queryResult;
        bool hasProxy;
        HRESULT unwrapResult;
        bool hasStore;
        HRESULT expected;
        bool unwraps;
    };
    const Row rows[] = {
        {"wrapped", S_OK, true, S_OK, true, S_OK, true},
        {"not wrapped", E_NOINTERFACE, false, S_OK, true, E_NOINTERFACE, false},
        {"no interface in spite of success", S_FALSE, false, S_OK, true, S_FALSE, false},
        {"unwrapping fails", S_OK, true, MAPI_E_CALL_FAILED, true, MAPI_E_CALL_FAILED, false},
        {"nothing behind it", S_OK, true, S_OK, false, S_OK, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        vx_testing::StubStore inner;
        Proxy proxy;
        proxy.result = row.unwrapResult;
        proxy.store = row.hasStore ? &inner : nullptr;
        WrappedStore wrapped;
        wrapped.result = row.queryResult;
        wrapped.proxy = row.hasProxy ? &proxy : nullptr;
        IMsgStore* unwrapped = nullptr;
        EXPECT_EQ(CMapiUtil::HrUnWrapMDB(&wrapped, &unwrapped), row.expected);
        EXPECT_EQ(unwrapped, row.unwraps ? &inner : nullptr);
        EXPECT_EQ(inner.References(), row.unwraps ? 2U : 1U);
        EXPECT_EQ(proxy.References(), 1U);
    }
}

TEST(MapiMemoryHolder, FreesOnceAndHandsOverByAssignment) {
    const FakeMapi mapi;
    {
        VxMapiFrBufPtr<SPropValue> first(FakeMapi::NewProps(1));
        SPropValue* const block = first.get();
        VxMapiFrBufPtr<SPropValue> second;
        second = first;
        EXPECT_EQ(first.get(), nullptr);
        EXPECT_EQ(second.get(), block);
        VxMapiFrBufPtr<SPropValue> third;
        third = std::move(second);
        EXPECT_EQ(second.get(), nullptr);
        EXPECT_EQ(third.get(), block);
        EXPECT_EQ(FakeMapi::LiveBlocks(), 1);
        third.release();
        EXPECT_EQ(FakeMapi::LiveBlocks(), 0);
        third.release();

        // What the target held is not freed: here it has another owner.
        VxMapiFrBufPtr<SPropValue> target(FakeMapi::NewProps(1));
        const VxMapiFrBufPtr<SPropValue> owner(target.get());
        VxMapiFrBufPtr<SPropValue> source(FakeMapi::NewProps(1));
        target = source;
        EXPECT_EQ(FakeMapi::LiveBlocks(), 2);

        VxLpRowsPtr<SRowSet> rows;
        *&rows = FakeMapi::NewRows(3);
        VxLpRowsPtr<SRowSet> otherRows;
        otherRows = rows;
        EXPECT_EQ(FakeMapi::LiveBlocks(), 2 + 4);
    }
    EXPECT_EQ(FakeMapi::LiveBlocks(), 0);
    CMapiUtil::FreeRowSet(nullptr);
}

TEST(MessageSession, IsClosedOnce) {
    FakeMapi mapi;
    {
        CMsgSession session;
        EXPECT_EQ(OpenIMsgSession(MAPIGetDefaultMalloc(), 0, &session), S_OK);
        session.close();
        session.close();
        EXPECT_EQ(session.get(), nullptr);
    }
    { const CMsgSession none; }
    EXPECT_EQ(mapi.calls, (std::vector<std::string>{"OpenIMsgSession", "CloseIMsgSession"}));
    {
        CMsgSession session;
        EXPECT_EQ(OpenIMsgSession(MAPIGetDefaultMalloc(), 0, &session), S_OK);
    }
    EXPECT_EQ(FakeMapi::OpenSessions(), 0);
}

}  // namespace
