// vxhost index over the sample mailbox: its lines against the description that the file was written from.
#include "mapi/PropTags.h"
#include "provider/HostValue.h"
#include "tests/host/VxhostRun.h"
#include "tests/provider/mailbox/ExpectedRecords.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>

namespace vx_testing {
namespace {

using mailbox_builder::Form;
using mailbox_builder::Message;
using VxOutlookProvider::FieldIndex;
using VxOutlookProvider::FieldsOf;
using VxOutlookProvider::RecordKind;
using VxOutlookProvider::Value;

std::u16string Wide(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end())).u16string();
}

// A record as the provider gave it, from its JSON.
Value RecordOf(const json& object) {
    const auto fields = FieldsOf(RecordKind::Item);
    Value::Array record(fields.size());
    for (const auto& [key, value] : object.items()) {
        const std::size_t index = FieldIndex(RecordKind::Item, key);
        switch (fields[index].type) {
            case 'S': record[index] = Value(Wide(value.get<std::string>())); break;
            case 'I': record[index] = Value(value.get<std::int32_t>()); break;
            case 'L': record[index] = Value(value.get<std::int64_t>()); break;
            case 'B': record[index] = Value(value.get<bool>()); break;
            case 'D': record[index] = Value(value.get<double>()); break;
            default: ADD_FAILURE() << key;
        }
    }
    return Value(std::move(record));
}

// The number of a message within its entry id, which the last four bytes are.
std::uint32_t NodeOf(const json& line) {
    const auto id = line["uri"]["uri_itemId"].get<std::string>();
    const auto written = static_cast<std::uint32_t>(std::stoul(id.substr(id.size() - 8), nullptr, 16));
    return written >> 24 | (written >> 8 & 0xFF00) | (written << 8 & 0xFF0000) | written << 24;
}

std::map<std::uint32_t, const Message*> SampleMessages() {
    std::map<std::uint32_t, const Message*> messages;
    for (const mailbox_builder::WrittenFolder& folder : SampleFolders()) {
        for (std::size_t i = 0; i < folder.messages.size(); ++i) {
            messages[folder.messages[i].node] = &folder.description->messages[i];
        }
    }
    return messages;
}

// The message or attachment at the end of a path such as "VxEMBITEM2/VxEMBITEM0/4"; both null for one that is read from a
// message file, of which there is no description.
struct Described {
    const Message* message = nullptr;
    const mailbox_builder::Attachment* attachment = nullptr;
};
Described AtPath(const Message& root, const std::string& path) {
    Described at{&root, nullptr};
    constexpr std::string_view kMark = "VxEMBITEM";
    std::istringstream components(path);
    for (std::string component; std::getline(components, component, '/');) {
        if (at.message == nullptr) {
            return {};
        }
        component.erase(0, component.starts_with(kMark) ? kMark.size() : 0);
        at.attachment = &at.message->attachments.at(std::stoul(component));
        at.message = at.attachment->embedded.get();
    }
    return at;
}

std::optional<std::string> BytesOf(const mailbox_builder::Attachment& attachment) {
    const auto* data = attachment.properties.Find(PR_ATTACH_DATA_BIN);
    const auto* bytes = data == nullptr ? nullptr : std::get_if<mailbox_builder::Bytes>(&data->value);
    if (bytes == nullptr) {
        return std::nullopt;
    }
    return std::string(reinterpret_cast<const char*>(bytes->data()), bytes->size());
}

bool IsItemUri(const json& line, int type) {
    return line["uri"]["uri_type"] == type;
}

std::string PathOf(const json& line) {
    return line["uri"].value("uri_attachmentNum", "");
}

class IndexOfForm : public VxhostRun, public ::testing::WithParamInterface<Form> {};

TEST_P(IndexOfForm, SaysWhatWasWritten) {
    const RunResult result = Run({"index", Utf8(SampleFile(GetParam()))});
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_NE(result.errors.find("no errors"), std::string::npos);
    const std::vector<json> lines = result.Lines();
    const auto messages = SampleMessages();
    std::vector<std::string> differences;
    std::map<std::string, std::int64_t> kinds;
    std::set<std::uint32_t> seen;
    std::size_t embedded = 0;
    for (const json& line : lines) {
        ++kinds[line["kind"]];
        if (line["kind"] != "item") {
            continue;
        }
        ASSERT_TRUE(messages.contains(NodeOf(line))) << line;
        const Message& root = *messages.at(NodeOf(line));
        const bool isEmbedded = IsItemUri(line, 9);
        const Described described = isEmbedded ? AtPath(root, PathOf(line)) : Described{&root, nullptr};
        EXPECT_TRUE(isEmbedded || seen.insert(NodeOf(line)).second) << "twice: " << line;
        if (described.message != nullptr) {
            const Message& message = *described.message;
            CompareRecord(RecordOf(line["record"]), GetParam() == Form::Ansi ? InItsPage(message) : message, isEmbedded,
                          PathOf(line) + line["record"].value("common_sURLSubject", ""), differences);
            embedded += isEmbedded ? 1 : 0;
        }
    }
    for (const std::string& difference : differences) {
        ADD_FAILURE() << difference;
    }
    const mailbox_builder::Inventory inventory = Sample().Count();
    EXPECT_EQ(kinds["store"], 1);
    EXPECT_EQ(kinds["folder"], static_cast<std::int64_t>(inventory.folders) + 1) << "and the topmost one";
    EXPECT_EQ(kinds["folder-summary"], kinds["folder"]);
    EXPECT_EQ(kinds["error"], 0);
    EXPECT_GT(embedded, 5U);
    EXPECT_GT(kinds["attachment"], 50);
    std::size_t unsupported = 0;
    for (const json& summary : OfKind(lines, "folder-summary")) {
        unsupported += summary["unsupported"].get<std::size_t>();
        EXPECT_EQ(summary["errors"], 0);
    }
    EXPECT_EQ(seen.size() + unsupported, inventory.messages);
    EXPECT_TRUE(Profiles().empty());
}

INSTANTIATE_TEST_SUITE_P(Forms, IndexOfForm, ::testing::Values(Form::Unicode, Form::Ansi, Form::LargePages),
                         [](const ::testing::TestParamInfo<Form>& form) {
                             return std::string(form.param == Form::Unicode ? "Unicode"
                                                : form.param == Form::Ansi  ? "Ansi"
                                                                            : "LargePages");
                         });

class Index : public VxhostRun {
protected:
    RunResult IndexSample(std::vector<std::string> options) const {
        options.insert(options.begin(), {"index", Utf8(SampleFile())});
        return Run(options);
    }
};

// A store, then folder by folder its items, each followed by what is in it, then the folder's summary.
TEST_F(Index, KeepsTheOrderOfTheMailbox) {
    const std::vector<json> lines = IndexSample({}).Lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.front()["kind"], "store");
    json folder;
    json item;
    std::int64_t items = 0;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const json& line = lines[i];
        SCOPED_TRACE(line.dump());
        EXPECT_EQ(line["kind"] == "folder", folder.is_null());
        if (line["kind"] == "folder") {
            folder = line["record"];
            item = nullptr;
            items = 0;
        } else if (line["kind"] == "folder-summary") {
            EXPECT_EQ(line["path"], folder["fi_folderPath"]);
            EXPECT_EQ(line["items"], items);
            folder = nullptr;
        } else if (IsItemUri(line, 8)) {
            EXPECT_EQ(line["uri"]["uri_folderId"], folder["fi_folderId"]);
            item = line["uri"];
            ++items;
        } else {
            EXPECT_EQ(line["uri"]["uri_itemId"], item["uri_itemId"]) << "behind its item";
        }
    }
    EXPECT_TRUE(folder.is_null());
}

TEST_F(Index, HasKeysInTheRecordsOrderAndTimesToTheTick) {
    const RunResult result = IndexSample({"--folder", "/Inbox", "--body", "none"});
    std::size_t items = 0;
    for (std::size_t begin = 0, end = 0; (end = result.output.find('\n', begin)) != std::string::npos;
         begin = end + 1) {
        const auto line = nlohmann::ordered_json::parse(result.output.substr(begin, end - begin));
        EXPECT_EQ(line.begin().key(), "kind");
        if (line["kind"] != "item") {
            continue;
        }
        std::vector<std::size_t> places;
        for (const auto& [key, value] : line["record"].items()) {
            places.push_back(FieldIndex(RecordKind::Item, key));
        }
        EXPECT_TRUE(std::is_sorted(places.begin(), places.end()));
        EXPECT_EQ(line["record"].value("email_sBody", ""), "");
        EXPECT_EQ(line["record"]["common_lUTCLastModifiedTime"], line["uri"]["uri_modifiedTime"]);
        ++items;
    }
    EXPECT_GT(items, 10U);
}

TEST_F(Index, ReadsOnlyWhatChangedSince) {
    constexpr std::int64_t kTime = 134'000'000'000'000'000;
    std::set<std::uint32_t> expected;
    std::int64_t exact = 0;
    for (const auto& [node, message] : SampleMessages()) {
        const auto* modified = message->properties.Find(PR_LAST_MODIFICATION_TIME);
        const std::int64_t ticks = modified != nullptr ? std::get<mailbox_builder::Time>(modified->value).ticks : 0;
        if (ticks > kTime && ItemTypeOf(*message) != -1) {
            expected.insert(node);
            exact = exact == 0 ? ticks : std::min(exact, ticks);
        }
    }
    ASSERT_GT(expected.size(), 20U);
    const auto read = [&](std::int64_t since) {
        const RunResult result = IndexSample({"--since", std::to_string(since)});
        EXPECT_EQ(result.status, 0) << result.errors;
        std::set<std::uint32_t> nodes;
        for (const json& line : OfKind(result.Lines(), "item")) {
            if (IsItemUri(line, 8)) {
                nodes.insert(NodeOf(line));
            }
        }
        return nodes;
    };
    // Hidden and search folders' messages are not read, so what is read may be less, but never something older.
    const auto nodes = read(kTime);
    EXPECT_TRUE(std::includes(expected.begin(), expected.end(), nodes.begin(), nodes.end()));
    EXPECT_GT(nodes.size(), 20U);
    const auto behind = read(exact);
    EXPECT_LT(behind.size(), nodes.size()) << "the time itself is not behind it";
}

TEST_F(Index, ReadsAFolderAndWhatIsBelowIt) {
    const auto paths = [&](const std::string& folder) {
        std::vector<std::string> found;
        for (const json& line : OfKind(IndexSample({"--folder", folder}).Lines(), "folder")) {
            found.push_back(line["record"]["fi_folderPath"]);
        }
        return found;
    };
    const std::vector<std::string> inbox = paths("/Inbox");
    ASSERT_GT(inbox.size(), 2U);
    for (const std::string& path : inbox) {
        EXPECT_TRUE(path == "/Inbox" || path.starts_with("/Inbox/")) << path;
    }
    EXPECT_EQ(paths("inbox"), inbox) << "without the slash, in another case";
    EXPECT_EQ(paths("/Sample mailbox"), std::vector<std::string>{"/Sample mailbox"});
    EXPECT_TRUE(paths("/Inb").empty()) << "a part of a name is no folder";
}

TEST_F(Index, SavesTheBytesOfAttachments) {
    const std::filesystem::path folder = Folder() / "attachments";
    const RunResult result = IndexSample({"--save-attachments", Utf8(folder)});
    EXPECT_EQ(result.status, 0) << result.errors;
    const auto messages = SampleMessages();
    std::vector<std::string> files;
    std::size_t compared = 0;
    for (const json& line : OfKind(result.Lines(), "attachment")) {
        SCOPED_TRACE(line.dump());
        ASSERT_TRUE(line.contains("file"));
        files.push_back(line["file"]);
        const Described described = AtPath(*messages.at(NodeOf(line)), PathOf(line));
        const auto bytes = described.attachment != nullptr ? BytesOf(*described.attachment) : std::nullopt;
        if (bytes) {
            EXPECT_TRUE(ReadFile(folder / Wide(files.back())) == *bytes) << "another content";
            ++compared;
        }
    }
    EXPECT_GT(compared, 50U);
    std::sort(files.begin(), files.end());
    EXPECT_EQ(FilesOf(folder), files) << "nothing else may be there";
    const std::size_t count = files.size();
    EXPECT_EQ(IndexSample({"--save-attachments", Utf8(folder), "--folder", "/Inbox"}).status, 0);
    EXPECT_GT(FilesOf(folder).size(), count) << "a second run adds and replaces nothing";
}

TEST_F(Index, LeavesOutWhatIsTooLarge) {
    const std::filesystem::path folder = Folder() / "attachments";
    const RunResult small = IndexSample({"--save-attachments", Utf8(folder), "--max-attachment", "500"});
    EXPECT_EQ(small.status, 0) << small.errors;
    EXPECT_NE(small.errors.find("left out as too large"), std::string::npos);
    for (const std::string& name : FilesOf(folder)) {
        EXPECT_LE(std::filesystem::file_size(folder / Wide(name)), 500U) << name;
    }
    const RunResult bodies = IndexSample({"--max-body", "3K", "-q"});
    EXPECT_EQ(bodies.status, 3);
    EXPECT_TRUE(bodies.errors.empty()) << "quiet";
    const std::vector<json> errors = OfKind(bodies.Lines(), "error");
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors.front()["operation"], "GetItemData");
    EXPECT_EQ(errors.front()["errors"], 1);
    EXPECT_EQ(errors.front()["names"], json::array({"VxErrorBodyTooBig"}));
    EXPECT_TRUE(errors.front()["uri"].contains("uri_itemId"));
}

TEST_F(Index, GoesOnBehindASourceThatCannotBeOpened) {
    const std::string none = Utf8(Folder() / "none.pst");
    const std::filesystem::path text = Folder() / "text.pst";
    std::ofstream(text) << "Dear Ada";
    const RunResult result = Run({"index", none, Utf8(SampleFile()), Utf8(text)});
    EXPECT_EQ(result.status, 2);
    const std::vector<json> lines = result.Lines();
    EXPECT_EQ(CountKind(lines, "store"), 1U);
    const std::vector<json> errors = OfKind(lines, "error");
    ASSERT_EQ(errors.size(), 2U);
    EXPECT_EQ(errors[0]["source"], none);
    EXPECT_EQ(errors[1]["source"], Utf8(text));
    // Alone, it gives nothing, and no file.
    const std::filesystem::path output = Folder() / "out.ndjson";
    const RunResult alone = Run({"index", none, "-o", Utf8(output)});
    EXPECT_EQ(alone.status, 2);
    EXPECT_FALSE(std::filesystem::exists(output));
    EXPECT_TRUE(Run({"index", none}).output.empty());
}

TEST_F(Index, WritesAFileAsItWritesStandardOutput) {
    const std::filesystem::path file = Folder() / "out.ndjson";
    const RunResult toFile = IndexSample({"-o", Utf8(file)});
    EXPECT_EQ(toFile.status, 0) << toFile.errors;
    EXPECT_TRUE(toFile.output.empty());
    EXPECT_EQ(FilesOf(Folder()), std::vector<std::string>{"out.ndjson"});
    const auto withoutProfile = [](const std::string& text) {
        std::vector<json> lines = RunResult{0, text, {}}.Lines();
        for (json& line : lines) {
            line.erase("profile");
            if (line.contains("uri")) {
                line["uri"].erase("uri_ProfileName");
            }
        }
        return lines;
    };
    EXPECT_TRUE(withoutProfile(ReadFile(file)) == withoutProfile(IndexSample({}).output));
}

}  // namespace
}  // namespace vx_testing
