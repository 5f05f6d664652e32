// The rule of the one connected path, on nodes that do nothing but tell what happens to them.
#include "provider/VxConnectable.h"
#include "tests/provider/tree/TreeTestSupport.h"

namespace {

class Node final : public CVxConnectable {
public:
    Node(CVxConnectable* parent, const char* name, Words& events)
        : CVxConnectable(parent), m_name(name), m_events(events) {}

    bool OnConnect() override {
        m_events.push_back("+" + m_name);
        return !fails;
    }
    void OnDisconnect() override { m_events.push_back("-" + m_name); }

    using CVxConnectable::ClearError;
    using CVxConnectable::RegisteError;

    bool fails = false;

private:
    std::string m_name;
    Words& m_events;
};

class ConnectableTest : public TreeTest {
protected:
    Words Take() { return std::exchange(events, {}); }

    Words events;
    Node root{nullptr, "root", events};
    Node a{&root, "a", events};
    Node a1{&a, "a1", events};
    Node b{&root, "b", events};
    Node b1{&b, "b1", events};
};

TEST_F(ConnectableTest, ConnectsFromTheRootDownAndDisconnectsTheOldPathFromItsLeafUp) {
    EXPECT_TRUE(a1.EnsureConnected());
    EXPECT_EQ(Take(), (Words{"+root", "+a", "+a1"}));
    EXPECT_TRUE(a1.EnsureConnected());
    EXPECT_EQ(Take(), Words{});

    EXPECT_TRUE(b1.EnsureConnected());
    EXPECT_EQ(Take(), (Words{"-a1", "-a", "+b", "+b1"}));
    EXPECT_FALSE(a.IsConnected());

    EXPECT_TRUE(root.EnsureDisconnected());
    EXPECT_EQ(Take(), (Words{"-b1", "-b", "-root"}));
}

TEST_F(ConnectableTest, OnlyWhatIsBeneathANodeMayBeDisconnected) {
    a1.EnsureConnected();
    Take();
    EXPECT_TRUE(root.EnsureChildDisconnected());
    EXPECT_EQ(Take(), (Words{"-a1", "-a"}));
    EXPECT_TRUE(root.IsConnected());

    a1.EnsureConnected();
    Take();
    EXPECT_TRUE(root.EnsureChainIsConnected(nullptr));
    EXPECT_EQ(Take(), (Words{"-a1", "-a"}));
}

TEST_F(ConnectableTest, AConnectedNodeDoesNotLookAtItsParents) {
    a1.EnsureConnected();
    root.Disconnect();  // past the children
    Take();
    EXPECT_TRUE(a1.EnsureConnected());
    EXPECT_EQ(Take(), Words{});
}

TEST_F(ConnectableTest, AFailedParentIsNotedInTheChildWhichIsTriedAllTheSame) {
    root.fails = true;
    EXPECT_TRUE(a.EnsureConnected());
    EXPECT_EQ(Take(), (Words{"+root", "+a"}));
    EXPECT_FALSE(a.HasErrors(VxErrorConnect));  // its own connect worked, which clears it again
    EXPECT_TRUE(root.HasErrors(VxErrorConnect));

    b.fails = true;
    EXPECT_FALSE(b.EnsureConnected());
    EXPECT_TRUE(b.HasErrors(VxErrorConnect));
    EXPECT_FALSE(b.IsConnected());
    b.fails = false;
    EXPECT_TRUE(b.EnsureConnected());
    EXPECT_EQ(b.getVxErrors(), 0);
}

TEST_F(ConnectableTest, ErrorBitsBelongToTheirNodeAndAreLoggedAsTold) {
    a.ClearError(VxErrorConnect);
    EXPECT_EQ(LogLines({" error "}), Words{});
    a.RegisteError(VxErrorConnect);
    a.RegisteError(VxErrorConnect);
    a.RegisteError(VxErrorBodyTooBig);
    a.ClearError(VxErrorConnect);
    EXPECT_EQ(LogLines({" error "}), (Words{"INFO: Register error 4", "INFO: Register error 4",
                                            "INFO: Register error 1", "INFO: Clear error 4"}));
    EXPECT_EQ(a.getVxErrors(), VxErrorBodyTooBig);
    EXPECT_EQ(root.getVxErrors(), 0);
    a.OnErrorsProcessed();
    EXPECT_EQ(a.getVxErrors(), 0);
}

TEST_F(ConnectableTest, AChildThatEndsIsNotFollowedAfterwards) {
    {
        Node passing(&root, "passing", events);
        passing.EnsureConnected();
        Take();
    }
    EXPECT_TRUE(a.EnsureConnected());
    root.EnsureDisconnected();
    EXPECT_EQ(Take(), (Words{"+a", "-a", "-root"}));
}

TEST_F(ConnectableTest, ANodeWithoutAParentIsInNoDomain) {
    EXPECT_EQ(a1.GetDomain(), nullptr);
    EXPECT_TRUE(IsLogged("m_parent == NULL in GetDomain()"));
}

}  // namespace
