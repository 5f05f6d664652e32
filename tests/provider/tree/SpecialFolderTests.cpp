#include "provider/StoreAndFolder/VxOutlookStore.h"
#include "tests/provider/tree/TreeTestSupport.h"

namespace {

using namespace scripted_mapi;

class SpecialFolderTest : public TreeTest {
protected:
    SpecialFolderTest() {
        model = AddStore(*mapi.profiles.front(), "Mail", {0x0A}, kPersonalFoldersStore);
        inbox = AddFolder(*model->root, "Inbox", "IPF.Note", {0x10});
        model->receiveFolder = {0x10};
        const struct {
            const char* name;
            BYTE id;
        } folders[] = {{"Sent", 1}, {"Deleted", 2}, {"Outbox", 3}, {"Drafts", 4}, {"Conflicts", 6}, {"Junk", 9}};
        for (const auto& folder : folders) {
            AddFolder(*model->root, folder.name, "", {folder.id});
        }
        model->properties.Set(Binary(PR_IPM_SENTMAIL_ENTRYID, {1}));
        model->properties.Set(Binary(PR_IPM_WASTEBASKET_ENTRYID, {2}));
        model->properties.Set(Binary(PR_IPM_OUTBOX_ENTRYID, {3}));
        inbox->properties.Set(Binary(PR_IPM_DRAFTS_ENTRYID, {4}));
        inbox->properties.Set(Binaries(PR_ADDITIONAL_REN_ENTRYIDS, {{5}, {6}, {}, {8}, {9}}));
        inbox->properties.Set(Binary(PR_ADDITIONAL_REN_ENTRYIDS_EX, {4}));
    }

    std::string Name(int which) {
        CStringW out = "left over"_w;
        const CStringW given = Store("0A").GetSpecialFolderName(out, static_cast<EVxSpecialFolder>(which));
        EXPECT_EQ(given, out);
        return Ascii(out);
    }

    std::shared_ptr<StoreModel> model;
    std::shared_ptr<FolderModel> inbox;
};

TEST_F(SpecialFolderTest, AreNamedByWhereTheirIdsStand) {
    const struct {
        int which;
        const char* name;
    } rows[] = {
        {0, "Inbox"},     {1, "Sent"},   {2, "Deleted"},
        {3, "Outbox"},    {4, "Drafts"}, {5, ""},  // the store itself has no such list
        {6, "Conflicts"}, {7, ""},                 // an empty id
        {8, ""},                                   // a folder that is not there
        {9, "Junk"},      {10, ""},                // read and thrown away
        {11, ""},         {-1, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.which);
        EXPECT_EQ(Name(row.which), row.name);
    }
    EXPECT_FALSE(Store("0A").IsMapiConnected());
    EXPECT_EQ(LogLines({"GetSpecialFolderName: Drafts"}), Words{"INFO: GetSpecialFolderName: Drafts"});
    EXPECT_EQ(mapi.script.Count("IMsgStore::GetReceiveFolder(null,00000000)"), 7);
}

TEST_F(SpecialFolderTest, HaveNoNameWhereAStepFails) {
    inbox->properties.Set(Binaries(PR_ADDITIONAL_REN_ENTRYIDS, {{5}}));  // a short list
    EXPECT_EQ(Name(6), "");
    model->properties.Set(Binaries(PR_ADDITIONAL_REN_ENTRYIDS, {{6}}));  // a list where an id is looked for
    EXPECT_EQ(Name(5), "");
    inbox->properties.Remove(PR_DISPLAY_NAME_W);
    EXPECT_EQ(Name(0), "");
    model->receiveFolder.clear();
    EXPECT_EQ(Name(0), "");
    EXPECT_EQ(Name(4), "");
    mapi.script.Fail("IMAPISession::OpenMsgStore", E_FAIL);
    EXPECT_EQ(Name(1), "");
    EXPECT_TRUE(IsLogged("OpenMsgStore for Mail failed."));
}

TEST_F(SpecialFolderTest, LeaveAnOpenStoreOpen) {
    Store("0A").MapiConnect();
    EXPECT_EQ(Name(1), "Sent");
    EXPECT_TRUE(Store("0A").IsMapiConnected());
}

}  // namespace
