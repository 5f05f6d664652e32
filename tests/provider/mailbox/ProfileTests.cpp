// Profiles made and changed through the proxy, and what the queries then say of them.
#include "tests/provider/mailbox/MailboxHost.h"

#include <fstream>
#include <iterator>

namespace vx_testing {
namespace {

class Profiles : public MailboxHost {
protected:
    // Names of the system's profiles; those with an Exchange service have a star.
    std::vector<std::string> Names() {
        Value profiles;
        host->GetSystemProfiles(profiles);
        std::vector<std::string> names;
        for (const Value& profile : profiles.Elements()) {
            names.push_back(Narrow(Get(profile, RecordKind::Profile, "pi_name")));
            names.back() += Get(profile, RecordKind::Profile, "pi_isExchange").Boolean() ? "*" : "";
        }
        return names;
    }

    std::string ProfileFile(const std::string& name) {
        std::ifstream file(Home() / "profiles" / (name + ".profile"), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    }

    std::vector<std::string> StoresOf(const Text& profile) {
        Value stores;
        host->GetProfileStores(profile, stores);
        std::vector<std::string> names;
        for (const Value& store : stores.Elements()) {
            names.push_back(Narrow(Get(store, RecordKind::Store, "si_storeName")) + ":"
                            + std::to_string(Get(store, RecordKind::Store, "si_storeType").Integer()));
        }
        return names;
    }
};

using Texts = std::vector<std::string>;

TEST_F(Profiles, AreThereWhenTheyAreMadeAndGoneWhenTheyAreDeleted) {
    EXPECT_EQ(Names(), Texts{});
    EXPECT_TRUE(host->CreateMAPIProfile(u"One"));
    EXPECT_TRUE(host->CreateMAPIProfile(u"Two %s"));
    EXPECT_EQ(Names(), (Texts{"One", "Two %s"}));
    EXPECT_TRUE(host->AddPSTToMAPIProfile(Wide(SampleFile()), u"One"));
    EXPECT_EQ(StoresOf(u"One"), (Texts{"Sample mailbox:3"}));
    EXPECT_EQ(StoresOf(u"Two %s"), Texts{});
    EXPECT_TRUE(host->DeleteMAPIProfile(u"One"));
    EXPECT_EQ(Names(), (Texts{"Two %s"}));
    EXPECT_EQ(StoresOf(u"One"), Texts{});
    EXPECT_FALSE(host->DeleteMAPIProfile(u"One"));
    host->Disconnect();
    EXPECT_EQ(Names(), (Texts{"Two %s"})) << "after a new start";
}

TEST_F(Profiles, RefuseFilesThatAreNoMailboxes) {
    const std::filesystem::path text = Home() / "notes.pst";
    std::ofstream(text) << "not a mailbox at all, but long enough for a look at its beginning";
    EXPECT_TRUE(host->CreateMAPIProfile(u"One"));
    EXPECT_FALSE(host->AddPSTToMAPIProfile(Wide(Home() / "missing.pst"), u"One"));
    EXPECT_FALSE(host->AddPSTToMAPIProfile(Wide(text), u"One"));
    EXPECT_FALSE(host->AddPSTToMAPIProfile(Wide(SampleFile()), u"No such profile"));
}

TEST_F(Profiles, HoldSeveralMailboxes) {
    EXPECT_TRUE(host->CreateMAPIProfile(u"Both"));
    EXPECT_TRUE(host->AddPSTToMAPIProfile(Wide(SampleFile()), u"Both"));
    EXPECT_TRUE(host->AddPSTToMAPIProfile(Wide(SampleFile(mailbox_builder::Form::Ansi)), u"Both"));
    Value stores;
    host->GetProfileStores(u"Both", stores);
    ASSERT_EQ(stores.Elements().size(), 2U);
    std::size_t counts[2] = {};
    for (std::size_t i = 0; i < 2; ++i) {
        counts[i] = FoldersOf(u"Both", stores.At(i)).size();
    }
    EXPECT_GT(counts[0], 30U);
    EXPECT_EQ(counts[0], counts[1]);
}

TEST_F(Profiles, TakeExchangeServicesAndDelegates) {
    EXPECT_TRUE(host->CreateMAPIProfile(u"Office"));
    EXPECT_FALSE(host->AddDelegateToProfile(u"Shared", u"/o=X/cn=shared", u"server", u"/o=X/cn=server", u"Office"))
        << "without an Exchange service";
    EXPECT_TRUE(host->AddExchangeToProfile(u"Office", u"server.example.com", u"mara", true));
    const std::string written = ProfileFile("Office");
    EXPECT_NE(written.find("PR_PROFILE_UNRESOLVED_NAME = string8:\"=mara\""), std::string::npos) << written;
    EXPECT_NE(written.find("PR_PROFILE_UNRESOLVED_SERVER = string8:\"server.example.com\""), std::string::npos);
    host->Disconnect();
    EXPECT_EQ(Names(), (Texts{"Office*"}));
    EXPECT_TRUE(host->AddDelegateToProfile(u"Shared", u"/o=X/cn=shared", u"server", u"/o=X/cn=server", u"Office"));
    EXPECT_FALSE(host->RemoveDelegateStore(u"Other", u"Office"));
    EXPECT_TRUE(host->RemoveDelegateStore(u"Shared", u"Office"));
    EXPECT_FALSE(host->RemoveDelegateStore(u"Shared", u"Office"));
}

}  // namespace
}  // namespace vx_testing
