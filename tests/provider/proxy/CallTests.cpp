// Each method of the proxy is one call of the facade: what that gets, what the host gets for each result of it.
#include "platform/ResultCodes.h"
#include "provider/InstanceProxy.h"
#include "tests/provider/proxy/FakeInstance.h"
#include "tests/provider/proxy/ValueText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <future>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

namespace VxOutlookProvider {

namespace {

using namespace std::string_literals;

// What a host passes by reference: all of it at once, so that what must not change is seen too.
struct Results {
    Value value = u"before";
    std::u16string text = u"before";
    std::int32_t counts[3] = {10, 20, 30};

    std::string Text() const {
        return TextOf(value) + " " + TextOfUnits(text) + " " + std::to_string(counts[0]) + " "
               + std::to_string(counts[1]) + " " + std::to_string(counts[2]);
    }
};

constexpr char kUntouched[] = "\"before\" before 10 20 30";

const Value& SomeUri() {
    static const Value uri(Value::Array{6, u"p", nullptr});
    return uri;
}

struct Method {
    const char* call;  // what the facade gets
    void (*run)(InstanceProxy& proxy, const Value& uri, Results& out);
    const char* given = kUntouched;    // the host's references after S_OK
    const char* nothing = kUntouched;  // after S_FALSE, when the facade gives nothing

    bool TakesUri() const { return std::string_view(call).find("[6") != std::string_view::npos; }
};

// A bool that is no reference: where the host gets one, it becomes the first count.
const Method kMethods[] = {
    {"InitializeVxMapi(a\\x0000b, )", [](auto& p, auto&, auto&) { p.InitializeVxMapi(u"a\0b"s, nullptr); }},
    {"ReleaseVxMapi()", [](auto& p, auto&, auto&) { p.ReleaseVxMapi(); }},
    {"Disconnect()", [](auto& p, auto&, auto&) { p.Disconnect(); }},
    {"ClearFolderCache(p, null)", [](auto& p, auto&, auto&) { p.ClearFolderCache(u"p", nullptr); }},
    {"ClearFolderCache()", [](auto& p, auto&, auto&) { p.ClearFolderCache(); }},
    {"SetAbort(true)", [](auto& p, auto&, auto&) { p.SetAbort(true); }},
    {"ShowGABContact(p, e)", [](auto& p, auto&, auto&) { p.ShowGABContact(u"p", u"e"); }},
    {"GetSystemProfiles()", [](auto& p, auto&, auto& o) { p.GetSystemProfiles(o.value); }, "\"given\" before 10 20 30",
     "null before 10 20 30"},
    {"GetProfileStores(null)", [](auto& p, auto&, auto& o) { p.GetProfileStores(nullptr, o.value); },
     "\"given\" before 10 20 30", "null before 10 20 30"},
    {"GetStoreFolders(p, )", [](auto& p, auto&, auto& o) { p.GetStoreFolders(u"p", u"", o.value); },
     "\"given\" before 10 20 30", "null before 10 20 30"},
    {"GetSubFolders(p, s, f, q)", [](auto& p, auto&, auto& o) { p.GetSubFolders(u"p", u"s", u"f", u"q", o.value); },
     "\"given\" before 10 20 30", "null before 10 20 30"},
    {"GetSpecialFolderName(p, s, 9)", [](auto& p, auto&, auto& o) { p.GetSpecialFolderName(u"p", u"s", 9, o.text); },
     "\"before\" given 10 20 30", "\"before\"  10 20 30"},
    {"GetExchangeServer(p)", [](auto& p, auto&, auto& o) { p.GetExchangeServer(u"p", o.text); },
     "\"before\" given 10 20 30", "\"before\"  10 20 30"},
    {"QueryItems([6, \"p\", null], 4294967297, true)",
     [](auto& p, auto& uri, auto& o) { p.QueryItems(uri, 0x100000001, true, o.value, o.counts[0]); },
     "\"given\" before 1 20 30", "null before 0 20 30"},
    {"QueryAttachments([6, \"p\", null])",
     [](auto& p, auto& uri, auto& o) { p.QueryAttachments(uri, o.value, o.counts[1]); }, "\"given\" before 10 1 30",
     "null before 10 0 30"},
    {"GetChildrenItemsCount([6, \"p\", null], -1, 2, false)",
     [](auto& p, auto& uri, auto& o) {
         p.GetChildrenItemsCount(uri, -1, 2, false, o.counts[0], o.counts[1], o.counts[2]);
     },
     "\"before\" before 11 22 33"},
    {"GetItemData([6, \"p\", null], 3, true)",
     [](auto& p, auto& uri, auto& o) { p.GetItemData(uri, 3, true, o.value); }, "\"given\" before 10 20 30",
     "null before 10 20 30"},
    {"GetBinaryItemData([6, \"p\", null], 77, false)",
     [](auto& p, auto& uri, auto& o) { p.GetBinaryItemData(uri, 77, false, o.value); }, "\"given\" before 10 20 30",
     "null before 10 20 30"},
    {"GetItemBody([6, \"p\", null], 1)", [](auto& p, auto& uri, auto& o) { p.GetItemBody(uri, 1, o.text); },
     "\"before\" given 10 20 30", "\"before\"  10 20 30"},
    {"GetItemBody([6, \"p\", null], 0, true)", [](auto& p, auto& uri, auto& o) { p.GetItemBody(uri, 0, true, o.text); },
     "\"before\" given 10 20 30", "\"before\"  10 20 30"},
    {"GetBinaryItemBody([6, \"p\", null], -1, true)",
     [](auto& p, auto& uri, auto& o) { p.GetBinaryItemBody(uri, -1, true, o.value); }, "\"given\" before 10 20 30",
     "null before 10 20 30"},
    {"GetAttachment([6, \"p\", null], 6)", [](auto& p, auto& uri, auto& o) { p.GetAttachment(uri, 6, o.value); },
     "\"given\" before 10 20 30", "null before 10 20 30"},
    {"CreateMAPIProfile(p)", [](auto& p, auto&, auto& o) { o.counts[0] = p.CreateMAPIProfile(u"p"); },
     "\"before\" before 1 20 30", "\"before\" before 0 20 30"},
    {"DeleteMAPIProfile(p)", [](auto& p, auto&, auto& o) { o.counts[0] = p.DeleteMAPIProfile(u"p"); },
     "\"before\" before 1 20 30", "\"before\" before 0 20 30"},
    {"AddPSTToMAPIProfile(/m.pst, p)",
     [](auto& p, auto&, auto& o) { o.counts[0] = p.AddPSTToMAPIProfile(u"/m.pst", u"p"); }, "\"before\" before 1 20 30",
     "\"before\" before 0 20 30"},
    {"AddDelegateStoreToProfile(d, m, s, n, p)",
     [](auto& p, auto&, auto& o) { o.counts[0] = p.AddDelegateToProfile(u"d", u"m", u"s", u"n", u"p"); },
     "\"before\" before 1 20 30", "\"before\" before 0 20 30"},
    {"RemoveDelegateStore(s, p)", [](auto& p, auto&, auto& o) { o.counts[0] = p.RemoveDelegateStore(u"s", u"p"); },
     "\"before\" before 1 20 30", "\"before\" before 0 20 30"},
    {"AddExchangeToProfile(p, m, s, true)",
     [](auto& p, auto&, auto& o) { o.counts[0] = p.AddExchangeToProfile(u"p", u"m", u"s", true); },
     "\"before\" before 1 20 30", "\"before\" before 0 20 30"},
};

// The code that the method fails with, S_OK when it returns.
HResult CodeOf(const Method& method, InstanceProxy& proxy, const Value& uri, Results& out) {
    try {
        method.run(proxy, uri, out);
    } catch (const ResultException& failure) {
        return failure.Code();
    }
    return S_OK;
}

class ProxyCalls : public testing::Test {
protected:
    ProxyCalls() { Facade() = {}; }
    ~ProxyCalls() override { Facade() = {}; }

    // Runs each method with this result of the facade.
    template <typename Expect>
    static void ForEach(HRESULT result, const Expect& expect) {
        for (const Method& method : kMethods) {
            SCOPED_TRACE(method.call);
            InstanceProxy proxy;
            Facade().result = result;
            Facade().call.clear();
            expect(method, proxy);
        }
    }
};

}  // namespace

TEST_F(ProxyCalls, PassArgumentsOnAndResultsBack) {
    ForEach(S_OK, [](const Method& method, InstanceProxy& proxy) {
        Results out;
        EXPECT_EQ(CodeOf(method, proxy, SomeUri(), out), S_OK);
        EXPECT_EQ(Facade().call, method.call);
        EXPECT_EQ(out.Text(), method.given);
    });
}

TEST_F(ProxyCalls, GiveNothingForWhatDoesNotExist) {
    Facade().fillsResults = false;
    ForEach(S_FALSE, [](const Method& method, InstanceProxy& proxy) {
        Results out;
        EXPECT_EQ(CodeOf(method, proxy, SomeUri(), out), S_OK);
        EXPECT_EQ(out.Text(), method.nothing);
    });
}

TEST_F(ProxyCalls, KeepTheHostsValuesWhenTheyFail) {
    for (const HRESULT failure : {E_FAIL, E_ABORT, E_OUTOFMEMORY, static_cast<HRESULT>(0x8004010F)}) {
        ForEach(failure, [failure](const Method& method, InstanceProxy& proxy) {
            Results out;
            EXPECT_EQ(CodeOf(method, proxy, SomeUri(), out), failure);
            EXPECT_EQ(out.Text(), kUntouched);
        });
    }
}

TEST_F(ProxyCalls, RefuseAUriThatIsNoRecord) {
    Value deep(Value::Array{});
    for (int i = 0; i < 100; ++i) {
        deep = Value::Array{deep};
    }
    const Value wrong[] = {{}, 6, std::int64_t{6}, true, u"p", Value::Bytes(216), deep};
    for (const Value& uri : wrong) {
        ForEach(S_OK, [&uri](const Method& method, InstanceProxy& proxy) {
            if (method.TakesUri()) {
                Results out;
                EXPECT_EQ(CodeOf(method, proxy, uri, out), E_INVALIDARG);
                EXPECT_EQ(Facade().call, "");
                EXPECT_EQ(out.Text(), kUntouched);
            }
        });
    }
}

TEST_F(ProxyCalls, FailOnceTheProxyIsDisposed) {
    ForEach(S_OK, [](const Method& method, InstanceProxy& proxy) {
        EXPECT_EQ(Facade().live, 1);
        proxy.Dispose();
        EXPECT_EQ(Facade().live, 0);
        proxy.Dispose();
        proxy.test();
        Results out;
        EXPECT_EQ(CodeOf(method, proxy, SomeUri(), out), E_POINTER);
        EXPECT_EQ(Facade().call, "");
        EXPECT_EQ(out.Text(), kUntouched);
    });
    EXPECT_EQ(Facade().live, 0);
}

TEST_F(ProxyCalls, FailInTheHostsOwnWay) {
    struct HostsFailure {
        HResult code;
    };
    InstanceProxy proxy([](HResult code) { throw HostsFailure{code}; });
    Facade().result = E_ABORT;
    try {
        proxy.Disconnect();
        FAIL() << "nothing was thrown";
    } catch (const HostsFailure& failure) {
        EXPECT_EQ(failure.code, E_ABORT);
    }
}

TEST_F(ProxyCalls, TurnWhatIsThrownAroundThemIntoResults) {
    InstanceProxy proxy;
    Results out;
    Facade().during = [] { throw std::bad_alloc(); };
    EXPECT_EQ(CodeOf(kMethods[0], proxy, SomeUri(), out), E_OUTOFMEMORY);
    Facade().during = [] { throw std::length_error("too long"); };
    EXPECT_EQ(CodeOf(kMethods[0], proxy, SomeUri(), out), E_FAIL);
}

TEST_F(ProxyCalls, InitializeOneAfterTheOtherInTheWholeProcess) {
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    std::atomic<int> calls = 0;
    Facade().during = [&] {
        most = std::max<int>(most, ++inside);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
        --inside;
        if (++calls % 2 == 0) {
            throw std::bad_alloc();  // the next one must get in all the same
        }
    };
    InstanceProxy proxies[2];
    const auto initialize = [](InstanceProxy& proxy) {
        int failures = 0;
        for (int i = 0; i < 10; ++i) {
            try {
                proxy.InitializeVxMapi(u"", u"");
            } catch (const ResultException&) {
                ++failures;
            }
        }
        return failures;
    };
    auto other = std::async(std::launch::async, [&] { return initialize(proxies[1]); });
    const int failures = initialize(proxies[0]) + other.get();
    EXPECT_EQ(failures, 10);
    EXPECT_EQ(calls, 20);
    EXPECT_EQ(most, 1);
}

TEST_F(ProxyCalls, AbortFromAnotherThreadDuringAQuery) {
    InstanceProxy proxy;
    std::promise<void> aborted;
    std::thread other;
    Facade().during = [&] {
        Facade().during = [&] { aborted.set_value(); };  // of SetAbort
        other = std::thread([&] { proxy.SetAbort(true); });
        EXPECT_EQ(aborted.get_future().wait_for(std::chrono::seconds(30)), std::future_status::ready);
        other.join();
    };
    Results out;
    proxy.QueryItems(SomeUri(), 0, false, out.value, out.counts[0]);
    EXPECT_EQ(out.Text(), "\"given\" before 1 20 30");
}

}  // namespace VxOutlookProvider
