// Each call that an operation makes of MAPI, failing or throwing in its turn: nothing leaves the instance but a result,
// nothing is given out by halves, nothing is left behind, and after a disconnect all is as before.
#include "provider/Common/Log.h"
#include "tests/provider/facade/FacadeTestSupport.h"

#include <new>

namespace {

using namespace scripted_mapi;

class FaultTest : public FacadeTest {
protected:
    FaultTest() {
        ProfileModel& work = *mapi.profiles.front();
        auto exchange = AddService(work, "MSEMS", 0x11);
        AddProvider(*exchange, "E1", 0x22);
        work.globalSection = {Binary(PR_STORE_PROVIDERS, {1}), Text(PR_PROFILE_UNRESOLVED_SERVER, "server")};
        AddAddressList(work, "All", DT_GLOBAL, {0x61});
        storeModel->receiveFolder = {0xF1};
        m_work = work;
        m_services = *exchange;
        Vx::SetLogLevel(Vx::LogLevel::Error);
    }
    ~FaultTest() override { Vx::SetLogLevel(Vx::LogLevel::Verbose); }

    // Takes back what administration has done.
    void Restore() {
        mapi.script.ForgetOrders();
        mapi.script.TakeCalls();
        mapi.profiles = {std::make_shared<ProfileModel>(m_work)};
        *m_work.services[0] = m_services;
    }

    // The n-th call of MAPI that comes now does as ordered. Whether it came.
    const bool& OrderNth(int n, std::function<HRESULT()> fault) {
        m_hasCome = false;
        mapi.script.On("", [this, n, fault = std::move(fault)]() mutable -> std::optional<HRESULT> {
            if (--n != 0) {
                return std::nullopt;
            }
            m_hasCome = true;
            return fault();
        });
        return m_hasCome;
    }

    std::string Perform(const Operation& operation) {
        host.Reset();
        EXPECT_EQ(operation.call(host), S_OK);
        return host.Changes();
    }

private:
    ProfileModel m_work;
    ServiceModel m_services;
    bool m_hasCome = false;
};

TEST_F(FaultTest, WhateverCallFailsOrThrowsTheOperationEndsWithAResultAndTheInstanceIsAsGoodAsNew) {
    const struct {
        const char* name;
        HRESULT (*fault)();
        bool throws;
    } faults[] = {
        {"throws", []() -> HRESULT { throw std::bad_alloc(); }, true},
        {"fails", [] { return MAPI_E_CALL_FAILED; }, false},
    };
    for (const Operation& operation : Operations()) {
        if (operation.early != E_FAIL) {
            continue;  // of the instance's life
        }
        Restore();
        instance.ReleaseVxMapi();
        Initialize();
        mapi.script.TakeCalls();
        const std::string expected = Perform(operation);
        if (mapi.script.TakeCalls().empty()) {
            continue;
        }
        for (const auto& fault : faults) {
            for (int n = 1;; ++n) {
                SCOPED_TRACE(testing::Message() << operation.name << ", call " << n << " " << fault.name);
                Restore();
                instance.ReleaseVxMapi();
                Initialize();
                host.Reset();
                TakeLines();
                const bool& hasCome = OrderNth(n, fault.fault);
                const HRESULT hr = operation.call(host);
                mapi.script.ForgetOrders();
                if (!hasCome) {
                    EXPECT_EQ(hr, S_OK);
                    break;
                }
                if (fault.throws) {
                    EXPECT_EQ(hr, E_FAIL);
                    EXPECT_EQ(TakeLines(),
                              Words{std::string("ERROR ") + operation.name + ": " + operation.name + " failed."});
                }
                EXPECT_TRUE(hr == S_OK || host.value.vt == VT_EMPTY || host.value.vt == VT_I4);
                Restore();
                EXPECT_EQ(instance.Disconnect(), S_OK);
                EXPECT_EQ(Perform(operation), expected);
                host.Reset();
                instance.ReleaseVxMapi();
                ASSERT_EQ(mapi.Leaks(), "");
            }
        }
    }
}

TEST_F(FaultTest, ConnectingAndEndingAreBehindTheSameWall) {
    mapi.script.On("MAPIInitialize", []() -> std::optional<HRESULT> { throw std::bad_alloc(); });
    EXPECT_EQ(instance.InitializeVxMapi(CStringW(), CStringW()), E_FAIL);
    EXPECT_EQ(TakeLines(), Words{"ERROR InitializeVxMapi: InitializeVxMapi failed."});
    const struct {
        const char* name;
        HRESULT (COutlookInstance::*end)();
    } rows[] = {{"Disconnect", &COutlookInstance::Disconnect}, {"ReleaseVxMapi", &COutlookInstance::ReleaseVxMapi}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Restore();
        Initialize();
        EXPECT_EQ(instance.GetProfileStores(host.profile.c_str(), &host.value), S_OK);
        host.Reset();
        mapi.script.On("IMAPISession::Logoff", []() -> std::optional<HRESULT> { throw std::bad_alloc(); });
        EXPECT_EQ((instance.*row.end)(), E_FAIL);
        EXPECT_EQ(TakeLines(), Words{std::string("ERROR ") + row.name + ": " + row.name + " failed."});
        instance.ReleaseVxMapi();
        EXPECT_EQ(mapi.Leaks(), "");
    }

    // These call MAPI only to connect, and for a profile that is not in the list.
    Restore();
    Initialize();
    EXPECT_EQ(instance.Disconnect(), S_OK);
    mapi.script.On("MAPI", []() -> std::optional<HRESULT> { throw std::bad_alloc(); });
    EXPECT_EQ(instance.GetSystemProfiles(&host.value), E_FAIL);
    EXPECT_EQ(instance.ClearFolderCache("Nobody"_w, "0A"_w), E_FAIL);
    EXPECT_EQ(TakeLines(), (Words{"ERROR GetSystemProfiles: GetSystemProfiles failed.",
                                  "ERROR ClearFolderCache: ClearFolderCache(.) failed."}));
    mapi.script.ForgetOrders();
}

}  // namespace
