// The administration of profiles: each text of the host's at its place in MAPI, and what is logged.
#include "tests/provider/facade/FacadeTestSupport.h"

namespace {

using namespace scripted_mapi;

class AdministrationTest : public FacadeTest {
protected:
    AdministrationTest() {
        AddProvider(*AddService(*mapi.profiles.front(), "MSEMS", 0x11), "Boss", 0x22);
        mapi.profiles.front()->globalSection.Set(Binary(PR_STORE_PROVIDERS, {1}));
    }
};

TEST_F(AdministrationTest, EachTextArrivesAtItsPlaceAndTheLogTellsOfIt) {
    const std::string path = Ascii(host.file);
    const struct {
        const char* name;
        HRESULT (*call)(Host& host);
        std::string mapiCall;  // what comes first of the call that takes the texts
        std::string before;
        bool worked;
    } rows[] = {
        {"CreateMAPIProfile", [](Host& h) { return h.instance.CreateMAPIProfile("100% s%n"_w, h.result); },
         "IProfAdmin::CreateProfile(100% s%n,null,0,", "100% s%n", true},
        {"DeleteMAPIProfile", [](Host& h) { return h.instance.DeleteMAPIProfile("Nobody"_w, h.result); },
         "IProfAdmin::DeleteProfile(Nobody,", "Nobody", false},
        {"AddDelegateStoreToProfile",
         [](Host& h) {
             return h.instance.AddDelegateStoreToProfile("Chief"_w, "/box"_w, "srv"_w, "/srvdn"_w, "Work"_w, h.result);
         },
         "IProviderAdmin::CreateProvider(EMSDelegate,{3001001F=Chief,660B001E=/box,660C001E=srv,6614001E=/srvdn},",
         "Work, Chief", true},
        {"RemoveDelegateStore", [](Host& h) { return h.instance.RemoveDelegateStore("Boss"_w, "Work"_w, h.result); },
         "IProviderAdmin::DeleteProvider(22222222222222222222222222222222)", "Work, Boss", true},
        {"RemoveDelegateStore", [](Host& h) { return h.instance.RemoveDelegateStore("Work"_w, "Boss"_w, h.result); },
         "IProfAdmin::AdminServices(Boss,", "Boss, Work", false},
        {"AddPSTToMAPIProfile",
         [](Host& h) { return h.instance.AddPSTToMAPIProfile(h.file.c_str(), "Work"_w, h.result); },
         "IMsgServiceAdmin::CreateMsgService(MSPST MS,Work,", "Work, " + path, true},
        {"AddPSTToMAPIProfile",
         [](Host& h) { return h.instance.AddPSTToMAPIProfile("no such file"_w, "Work"_w, h.result); }, "",
         "Work, no such file", false},
        {"AddExchangeToProfile",
         [](Host& h) { return h.instance.AddExchangeToProfile("Work"_w, "second"_w, "third"_w, true, h.result); },
         "IMsgServiceAdmin::ConfigureMsgService(11111111111111111111111111111111,no window,00000000,"
         "{6607001E==third,6608001E=second})",
         "Work, second, third, 1", true},
    };
    Initialize();
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name + (" " + row.before));
        host.result = !row.worked;
        EXPECT_EQ(row.call(host), S_OK);
        EXPECT_EQ(host.result, row.worked);
        const std::string info = std::string("INFO ") + row.name + ": " + row.name;
        EXPECT_EQ(TakeLines(), (Words{info + " " + row.before, info + " res " + (row.worked ? "1" : "0")}));
        if (!row.mapiCall.empty()) {
            EXPECT_EQ(mapi.script.Count(row.mapiCall), 1);
        }
        mapi.script.TakeCalls();
    }
    // What was created is listed.
    EXPECT_EQ(instance.GetSystemProfiles(&host.value), S_OK);
    EXPECT_EQ(TakeList(), (Words{"Work|yes|yes", "100% s%n|no|no"}));
}

TEST_F(AdministrationTest, ConnectsADisconnectedInstanceToo) {
    Initialize();
    EXPECT_EQ(instance.Disconnect(), S_OK);
    host.result = false;
    EXPECT_EQ(instance.CreateMAPIProfile("New"_w, host.result), S_OK);
    EXPECT_TRUE(host.result);
}

}  // namespace
