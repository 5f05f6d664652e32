// Every mailbox of the corpus through the provider: the items of each folder by kind, as other programs counted them, and
// every item, body and attachment read without an error.
#include "testing/corpus/StoreParameters.h"
#include "tests/provider/mailbox/ExpectedRecords.h"
#include "tests/provider/mailbox/MailboxHost.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>

namespace vx_testing {
namespace {

using nlohmann::json;

// Kinds and their numbers; -1 for items that the provider leaves out.
using Kinds = std::map<int, std::int64_t>;

mailbox_builder::Message OfClass(const std::string& messageClass) {
    mailbox_builder::Message message;
    message.properties.Set(0x001A001F, CStringW(messageClass.begin(), messageClass.end()));
    return message;
}

// A path of the record names folders on disk, where some characters had to be replaced.
std::string OnDisk(std::string path) {
    std::replace_if(
        path.begin(), path.end(), [](char c) { return c == '@' || c == '~'; }, '_');
    return path;
}

// What the record lacks and every other reader finds.
constexpr std::array<std::string_view, 2> kFoldersBeyondTheRecord[] = {
    {"ansi-empty-password.pst", "/Folder"},
    {"unicode-split-part0.pst", "/My Messages"},
};

// The record's folder of that path below the visible tree, which stands one or two levels below the topmost folder. Null
// when there is none.
const json* FolderOf(const json& record, const std::string& path) {
    const json* shortest = nullptr;
    for (const json& folder : record["folders"]) {
        const auto recorded = folder["path"].get<std::string>();
        if (recorded.ends_with(OnDisk(path))
            && (shortest == nullptr || recorded.size() < (*shortest)["path"].get<std::string>().size())) {
            shortest = &folder;
        }
    }
    return shortest;
}

Kinds KindsOf(const json& folder) {
    Kinds kinds;
    if (folder.contains("classes")) {
        for (const auto& [messageClass, count] : folder["classes"].items()) {
            kinds[ItemTypeOf(OfClass(messageClass))] += count.get<std::int64_t>();
        }
    }
    return kinds;
}

class Corpus : public MailboxHost, public ::testing::WithParamInterface<std::filesystem::path> {
protected:
    // Reads all that there is to an item: its record, its bodies, what is attached to it.
    void ReadItem(const Value& uri, int depth) {
        Value record;
        host->GetItemData(uri, kPlain, false, record);
        EXPECT_FALSE(record.IsNull()) << "not readable";
        EXPECT_EQ(Get(record, "eobj_vx_lErrors").Integer(), 0);
        EXPECT_EQ(Get(record, "schemaUID"), Get(uri, RecordKind::Uri, "uri_itemType"));
        if (++read > kItemsInAllForms) {
            return;
        }
        std::u16string body;
        for (const int format : {kRtf, kHtml}) {
            host->GetItemBody(uri, format, false, body);
        }
        Value parts;
        std::int32_t reserved = 0;
        host->QueryAttachments(uri, parts, reserved);
        for (const Value& part : parts.Elements()) {
            if (Get(part, RecordKind::Uri, "uri_itemType").Integer() != -1) {
                ASSERT_LT(depth, 20);
                ReadItem(part, depth + 1);
                continue;
            }
            host->GetBinaryItemData(part, kPlain, false, record);
            EXPECT_FALSE(record.IsNull());
            EXPECT_EQ(Get(record, "eobj_vx_lErrors").Integer(), 0);
        }
    }

    static constexpr int kItemsInAllForms = 300;
    int read = 0;

    Kinds ReadFolder(const Value& folderUri) {
        Kinds kinds;
        for (;;) {
            Value page;
            std::int32_t unsupported = 0;
            host->QueryItems(folderUri, 0, false, page, unsupported);
            if (unsupported != 0) {
                kinds[-1] += unsupported;
            }
            if (page.Elements().empty()) {
                return kinds;
            }
            for (const Value& uri : page.Elements()) {
                SCOPED_TRACE(Narrow(Get(uri, RecordKind::Uri, "uri_itemId")));
                ++kinds[static_cast<int>(Get(uri, RecordKind::Uri, "uri_itemType").Integer())];
                ReadItem(uri, 0);
            }
        }
    }
};

TEST_P(Corpus, IsReadWholeWithTheItemsThatOtherProgramsFind) {
    if (GetParam().empty()) {
        GTEST_SKIP() << "there is no corpus beside the tree";
    }
    if (GetParam().filename() == "corrupt-header.pst") {
        GTEST_SKIP() << "no other program reads it: its record is empty";
    }
    const json record = json::parse(vx_testing::TruthOf(GetParam()));
    const std::string file = GetParam().filename().string();
    const Value store = AddMailbox(u"Mail", GetParam());
    std::size_t compared = 0;
    for (const auto& [path, folder] : FoldersOf(u"Mail", store)) {
        SCOPED_TRACE(path);
        const Kinds found = ReadFolder(FolderUri(u"Mail", folder));
        const json* recorded = FolderOf(record, path);
        const bool isBeyond = std::any_of(std::begin(kFoldersBeyondTheRecord), std::end(kFoldersBeyondTheRecord),
                                          [&](const auto& row) { return row[0] == file && row[1] == path; });
        if (recorded != nullptr && !isBeyond) {
            EXPECT_EQ(found, KindsOf(*recorded));
            ++compared;
        }
        EXPECT_TRUE(!isBeyond || !found.empty());
    }
    // The record has the names of that one's folders in the wrong page.
    EXPECT_TRUE(compared > 0 || file == "ansi-contact-97-2002.pst");
}

INSTANTIATE_TEST_SUITE_P(Stores, Corpus, ::testing::ValuesIn(StoreParameters()), StoreName);

}  // namespace
}  // namespace vx_testing
