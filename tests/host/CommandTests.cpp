// The commands for one object each, by table and by JSON.
#include "tests/host/VxhostRun.h"

#include <algorithm>

namespace vx_testing {
namespace {

constexpr char kReports[] = "/Inbox/Orchard irrigation/Sensor reports";

class Commands : public VxhostRun {
protected:
    // The run's output, of a command that works.
    RunResult Good(const std::vector<std::string>& arguments) const {
        const RunResult result = Run(arguments);
        EXPECT_EQ(result.status, 0) << arguments.front() << ": " << result.errors;
        EXPECT_EQ(result.errors, "");
        return result;
    }

    // The first line of JSON for which `isWanted`, of a command on the sample.
    template <typename Predicate>
    json Find(const std::string& command, std::vector<std::string> arguments, Predicate isWanted) const {
        arguments.insert(arguments.begin(), {command, Utf8(SampleFile())});
        arguments.push_back("--json");
        for (const json& line : Good(arguments).Lines()) {
            if (isWanted(line)) {
                return line;
            }
        }
        ADD_FAILURE() << command << " lists none";
        return {};
    }

    // A mail with an attachment that is a file, and that attachment.
    json FindAttachment() const {
        const json item = Find("items", {kReports}, [](const json&) { return true; });
        return Find("attachments", {kReports, item["uri_itemId"]},
                    [](const json& line) { return line["uri_itemType"] == -1; });
    }
};

TEST_F(Commands, AdministerProfiles) {
    const std::string mailbox = Utf8(SampleFile());
    EXPECT_TRUE(Good({"profiles", "--json"}).output.empty());
    Good({"profile", "create", "Archive"});
    Good({"profile", "add-pst", "Archive", mailbox});
    const std::vector<json> profiles = Good({"profiles", "--json"}).Lines();
    ASSERT_EQ(profiles.size(), 1U);
    EXPECT_EQ(profiles[0]["pi_name"], "Archive");
    const std::vector<json> stores = Good({"stores", "--profile", "archive", "--json"}).Lines();
    ASSERT_EQ(stores.size(), 1U);
    EXPECT_EQ(stores[0]["si_storeName"], "Sample mailbox");

    // The provider deletes what stands in the way of a new profile; this program must not come that far.
    for (const char* name : {"Archive", "ARCHIVE"}) {
        const RunResult again = Run({"profile", "create", name});
        EXPECT_EQ(again.status, 3);
        EXPECT_NE(again.errors.find("already"), std::string::npos);
        EXPECT_EQ(Good({"stores", "--profile", "Archive", "--json"}).Lines().size(), 1U);
    }
    EXPECT_EQ(Run({"profile", "add-pst", "Archive", Utf8(Folder() / "none.pst")}).status, 2);
    EXPECT_EQ(Run({"profile", "add-pst", "Other", mailbox}).status, 3);

    const RunResult all = Run({"index", "--profile", "Archive"});
    EXPECT_EQ(all.status, 0) << all.errors;
    EXPECT_EQ(all.Lines().front()["profile"], "Archive");
    EXPECT_EQ(Good({"profiles", "--json"}).Lines().size(), 1U) << "a profile of the user's stays";

    Good({"profile", "delete", "Archive"});
    EXPECT_EQ(Run({"profile", "delete", "Archive"}).status, 3);
    EXPECT_TRUE(Profiles().empty());
}

TEST_F(Commands, AdministerExchangeAccounts) {
    Good({"profile", "create", "Work"});
    Good({"profile", "add-exchange", "Work", "ada", "mail.example.com"});
    EXPECT_EQ(Good({"profiles", "--json"}).Lines().at(0)["pi_isExchange"], true);
    Good({"profile", "add-delegate", "Work", "Grace", "/o=Example/cn=grace", "mail.example.com", "/o=Example/cn=mail"});
    Good({"profile", "remove-delegate", "Work", "Grace"});
    EXPECT_EQ(Run({"profile", "remove-delegate", "Work", "Grace"}).status, 3);
}

TEST_F(Commands, ListFoldersItemsAndCounts) {
    const std::string mailbox = Utf8(SampleFile());
    const json reports = Find("folders", {}, [](const json& folder) { return folder["fi_folderPath"] == kReports; });
    const std::vector<json> items = Good({"items", mailbox, kReports, "--json"}).Lines();
    ASSERT_GT(items.size(), 30U) << "more than a page";
    for (const std::string& name : {reports["fi_folderId"].get<std::string>(), std::string(kReports).substr(1),
                                    std::string("/inbox/ORCHARD irrigation/sensor reports")}) {
        EXPECT_EQ(Good({"items", mailbox, name, "--json"}).Lines().size(), items.size()) << name;
    }
    EXPECT_EQ(Good({"items", mailbox, kReports, "--json", "--limit", "3"}).Lines().size(), 3U);

    const std::string table = Good({"items", mailbox, kReports}).output;
    EXPECT_EQ(static_cast<std::size_t>(std::count(table.begin(), table.end(), '\n')), items.size() + 1);
    EXPECT_NE(table.find(items[0]["uri_itemId"].get<std::string>()), std::string::npos);

    const auto third = std::to_string(items[2]["uri_modifiedTime"].get<std::int64_t>());  // newest first
    const auto first = std::to_string(items[0]["uri_modifiedTime"].get<std::int64_t>());
    const json all = Find("count", {kReports}, [](const json&) { return true; });
    EXPECT_EQ(all, (json{{"before", 0}, {"in", items.size()}, {"after", 0}}));
    const json window = Find("count", {kReports, "--from", third, "--to", first}, [](const json&) { return true; });
    EXPECT_EQ(window, (json{{"before", items.size() - 3}, {"in", 2}, {"after", 1}}));

    EXPECT_EQ(Find("special-folders", {}, [](const json& line) { return line["special"] == "inbox"; })["name"],
              "Inbox");
    for (const json& folder : Good({"folders", mailbox, "--below", "/Inbox", "--json"}).Lines()) {
        const std::string path = folder["fi_folderPath"];
        EXPECT_TRUE(path.starts_with("Sample mailbox//Inbox/")) << path;
        Good({"items", mailbox, path, "--limit", "1"});
    }
}

TEST_F(Commands, ShowAndSaveOneItem) {
    const json attachment = FindAttachment();
    const std::string mailbox = Utf8(SampleFile());
    const std::string folder = attachment["uri_folderId"];
    const std::string item = attachment["uri_itemId"];
    const std::string path = attachment["uri_attachmentNum"];
    const std::vector<json> shown = Good({"show", mailbox, folder, item, "--json"}).Lines();
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(shown[0]["email_sEID"], item);
    const std::string body = shown[0]["email_sBody"];
    EXPECT_FALSE(body.empty());
    EXPECT_EQ(Good({"body", mailbox, folder, item}).output, body);
    EXPECT_EQ(Good({"body", mailbox, folder, item, "--direct", "--json"}).Lines().at(0)["body"], body);

    const json record = Good({"show", mailbox, folder, item, path, "--json"}).Lines().at(0);
    const std::string name = record["attachments_sName"];
    EXPECT_NE(Good({"show", mailbox, folder, item, path}).output.find(name), std::string::npos);

    EXPECT_EQ(Good({"save", mailbox, folder, item, path, "-o", Utf8(Folder())}).status, 0);
    const std::string saved = ReadFile(Folder() / name);
    EXPECT_FALSE(saved.empty());
    const RunResult again = Run({"save", mailbox, folder, item, path, "-o", Utf8(Folder())});
    EXPECT_EQ(again.status, 1) << "nothing is replaced";
    const json told =
        Good({"save", mailbox, folder, item, path, "-o", Utf8(Folder() / "other"), "--json"}).Lines().at(0);
    EXPECT_EQ(told["bytes"].get<std::size_t>(), saved.size());
    EXPECT_EQ(ReadFile(Folder() / "other"), saved);

    Good({"save", mailbox, folder, item, "-o", Utf8(Folder() / "item.msg")});
    EXPECT_TRUE(ReadFile(Folder() / "item.msg").starts_with("\xD0\xCF\x11\xE0")) << "a message file is a compound file";
    EXPECT_EQ(FilesOf(Folder()).size(), 3U);
}

}  // namespace
}  // namespace vx_testing
