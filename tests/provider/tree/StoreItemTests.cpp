// One item's body or attachment, directly from the store.
#include "provider/URIObjectData.h"
#include "tests/provider/tree/TreeTestSupport.h"

namespace {

using namespace scripted_mapi;

class StoreItemTest : public TreeTest {
protected:
    StoreItemTest() {
        const auto model = AddStore(*mapi.profiles.front(), "Mail", {0x0A}, kPersonalFoldersStore);
        AddMessage(*model->root, "IPM.Note", 1, {0xE1});
        items.onMake = [this](FakeItem& item) {
            if (item.children.empty() && !m_isChild) {
                m_isChild = true;  // one level of children
                item.children["3"_w] = std::make_unique<FakeAttachment>(&item, items.events);
                item.children["VxEMBITEM1"_w] = items.MakeItem(eVxItemEmail, nullptr);
                m_isChild = false;
            }
        };
    }

    std::string Body(const char* id, TBodyFormat format, UriType type, const char* attachment) {
        CStringW body = "left over"_w;
        Store("0A").GetItemBody(Wide(id), format, body, type, Uri(type, attachment));
        return Ascii(body);
    }

    std::string Payload(const char* id, TBodyFormat format, const char* attachment) {
        std::vector<unsigned char> bytes = {'x'};
        Store("0A").GetAttachment(Wide(id), format, bytes, eUriAttachment, Uri(eUriAttachment, attachment));
        return std::string(bytes.begin(), bytes.end());
    }

private:
    static CURIObjectData Uri(UriType type, const char* attachment) {
        return {type, "Work"_w, "0A"_w, CStringW(), 0, false, "E1"_w, Wide(attachment), eVxItemEmail};
    }

    bool m_isChild = false;
};

TEST_F(StoreItemTest, GivesTheItemsBodyAndClosesTheItemNotTheStore) {
    EXPECT_EQ(Body("E1", eBodyHtml, eUriItem, ""), "body in format 3");
    EXPECT_EQ(items.events, (Words{"item opens", "item closes"}));
    EXPECT_EQ(items.Live(), 0);
    EXPECT_TRUE(Store("0A").IsMapiConnected());
    EXPECT_FALSE(Store("0A").IsConnected());
    EXPECT_EQ(mapi.script.Count("IMsgStore::OpenEntry(E1,null,00000010)"), 1);
}

TEST_F(StoreItemTest, GivesAnEmbeddedItemsBody) {
    EXPECT_EQ(Body("E1", eBodyText, eUriAttachment, "VxEMBITEM1"), "body in format 1");
    EXPECT_EQ(items.events, (Words{"item opens", "item opens", "item clears", "item closes", "item closes"}));
    EXPECT_EQ(Body("E1", eBodyText, eUriAttachment, "9"), "");
    EXPECT_TRUE(IsLogged("item NOT found!"));
    EXPECT_EQ(Body("E1", eBodyText, eUriAttachment, "3"), "");  // an attachment has no body
}

TEST_F(StoreItemTest, GivesAnAttachmentsPayload) {
    EXPECT_EQ(Payload("E1", eBodyFile, "3"), "blob");
    EXPECT_EQ(items.events,
              (Words{"item opens", "attachment connects for 4", "attachment disconnects", "item closes"}));
    EXPECT_EQ(Payload("E1", eBodyFile, "VxEMBITEM1"), "");
    EXPECT_EQ(LogLines({"item NOT found!"}), Words{});
    EXPECT_EQ(Payload("E1", eBodyFile, "4"), "");
    EXPECT_EQ(LogLines({"item NOT found!"}), Words{"WARN: item NOT found!"});
}

TEST_F(StoreItemTest, IsEmptyWhereAStepFails) {
    EXPECT_EQ(Body("E", eBodyText, eUriItem, ""), "");
    EXPECT_EQ(Body(std::string(0x2002, 'E').c_str(), eBodyText, eUriItem, ""), "");  // a longer id than any
    EXPECT_FALSE(Store("0A").IsMapiConnected());
    EXPECT_EQ(Body("E2", eBodyText, eUriItem, ""), "");
    EXPECT_EQ(Payload("E2", eBodyText, "3"), "");
    Store("0A").MapiDisconnect();
    mapi.script.Fail("IMAPISession::OpenMsgStore", E_FAIL);
    EXPECT_EQ(Body("E1", eBodyText, eUriItem, ""), "");
    EXPECT_EQ(items.events, Words{});
}

}  // namespace
