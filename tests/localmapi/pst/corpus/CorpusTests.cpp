// Reads every store of the corpus and compares folders, items, texts, bodies and attachments with what other programs
// found there. What is known to differ, and who is right, stands in docs/pst-corpus-differences.md.
#include "localmapi/pst/ltp/Values.h"
#include "localmapi/pst/messaging/PropertyIds.h"
#include "localmapi/pst/messaging/Store.h"
#include "testing/corpus/Corpus.h"
#include "tests/localmapi/pst/corpus/ItemFacts.h"
#include "tests/localmapi/pst/support/RecordingSink.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace localmapi::testing {
namespace {

// The record's 8-bit texts were read in this page, whatever they are in.
constexpr UINT kRecordedPage = 1252;

// What the reader finds in a store.
struct Found {
    std::set<std::string> folders;                    // paths
    std::map<std::string, std::vector<Facts>> items;  // by path
};

// The record's paths were names of folders on disk, where some characters had to be replaced.
std::string PathPart(const CStringW& name) {
    std::string part = Utf8(name);
    std::replace_if(
        part.begin(), part.end(), [](char c) { return c == '@' || c == '~'; }, '_');
    return part;
}

Found ReadWhole(pst::Store& store) {
    Found found;
    std::vector<std::string> path;
    store.WalkFolders(pst::Store::kRootFolder, pst::SearchFolders::Include, [&](pst::Folder& folder, unsigned depth) {
        std::string name;
        if (depth > 0) {
            path.resize(depth);
            path[depth - 1] = PathPart(folder.DisplayName());
            for (const std::string& part : path) {
                name += (name.empty() ? "" : "/") + part;
            }
            found.folders.insert(name);
        }
        pst::ItemList messages = folder.Messages();
        for (std::size_t i = 0; i < messages.Count(); ++i) {
            Result<pst::Message> message = store.OpenMessage(messages.Id(i));
            EXPECT_TRUE(message) << message.Failure().text;
            if (message) {
                message->SetCodePage(kRecordedPage);
                found.items[name].push_back(FactsOf(*message));
            }
        }
        return true;
    });
    return found;
}

// The record lists the items of a folder in another order. Equal items change places freely.
std::vector<Facts> InOrder(std::vector<Facts> items) {
    const auto key = [](const Facts& facts) {
        std::string text;
        for (const char* name : {"created", "delivery", "size_0e08", "subject", "plain", "html", "rtf compressed"}) {
            const auto found = facts.find(name);
            text += (found != facts.end() ? found->second : "") + '\n';
        }
        return text;
    };
    std::stable_sort(items.begin(), items.end(), [&](const Facts& a, const Facts& b) { return key(a) < key(b); });
    return items;
}

// The attachments that the second of the two recording programs found in the messages of a subject: name and length.
std::set<std::pair<std::string, std::string>> SecondRecord(const nlohmann::json& truth, const std::string& subject) {
    std::set<std::pair<std::string, std::string>> attachments;
    for (const nlohmann::json& file : truth["readpst"]["files"]) {
        if (file.value("subject", std::string()) == subject && file.contains("attachments")) {
            for (const nlohmann::json& attachment : file["attachments"]) {
                attachments.emplace(attachment[0].get<std::string>(), attachment[1].dump());
            }
        }
    }
    return attachments;
}

// The first program gave no content for some attachments, and lost those of a few messages altogether. The second one's
// names and lengths stand in; what was checked against them is taken out of `found`.
void CheckBySecondRecord(const nlohmann::json& truth, const Facts& recorded, Facts& found) {
    const bool allLost = recorded.at("attachments") == "0";
    const auto second = SecondRecord(truth, found.contains("subject") ? found.at("subject") : std::string());
    const int count = std::stoi(found.at("attachments"));
    for (int i = 0; i < count; ++i) {
        const std::string prefix = "attachment " + std::to_string(i) + ' ';
        if (!found.contains(prefix + "content") || recorded.contains(prefix + "content")) {
            continue;
        }
        EXPECT_TRUE(second.contains({found.at(prefix + "long name"), found.at(prefix + "length")}))
            << found.at("subject") << ": " << found.at(prefix + "long name");
        std::erase_if(found, [&](const auto& fact) {
            return fact.first == prefix + "content" || (allLost && fact.first.starts_with(prefix));
        });
    }
    if (allLost) {
        EXPECT_EQ(static_cast<std::size_t>(count), second.size());
        found["attachments"] = "0";
    }
}

// True for a fact that is found and may be missing from the record: names of attached messages, and helpers.
bool MayBeUnrecorded(const std::string& name) {
    return name.starts_with("attachment") && (name.ends_with(" name") || name.ends_with(" length"));
}

// Of a file's two names the record has sometimes the one and sometimes the other.
std::string LongName(const std::string& name) {
    return name.substr(0, name.size() - std::string_view("name").size()) + "long name";
}

void Compare(const Facts& recorded, const Facts& found, const std::string& where) {
    for (const auto& [name, value] : recorded) {
        const auto ours = found.find(name);
        const bool isOtherName = name.starts_with("attachment") && name.ends_with(" name")
                                 && found.contains(LongName(name)) && found.at(LongName(name)) == value;
        EXPECT_TRUE(isOtherName || (ours != found.end() && ours->second == value))
            << where << ": " << name << "\n  recorded: " << value
            << "\n  found:    " << (ours != found.end() ? ours->second : "nothing");
    }
    for (const auto& [name, value] : found) {
        EXPECT_TRUE(recorded.contains(name) || MayBeUnrecorded(name))
            << where << ": " << name << "\n  found and not recorded: " << value;
    }
}

// What the record leaves out, and why it does: docs/pst-corpus-differences.md.
struct LeftOut {
    std::string_view store;
    std::string_view folder;
    std::string_view messageClass;
    std::size_t count;
};
constexpr auto kLeftOut = std::to_array<LeftOut>({
    {"ansi-empty-password.pst", "Top of Personal Folders/Folder", "IPM.Post", 1},
    {"ost36-task-journal.ost", "Freebusy Data", "IPM.Microsoft.ScheduleData.FreeBusy", 1},
    {"ost36-zlib-mixed.ost", "Freebusy Data", "IPM.Microsoft.ScheduleData.FreeBusy", 1},
    {"unicode-distlist-recurring.pst", "Freebusy Data", "IPM.Microsoft.ScheduleData.FreeBusy", 1},
    {"unicode-outlook-mixed.pst", "Freebusy Data", "IPM.Microsoft.ScheduleData.FreeBusy", 1},
    {"unicode-passworded.pst", "Freebusy Data", "IPM.Microsoft.ScheduleData.FreeBusy", 1},
    {"unicode-task-journal-distlist.pst", "Freebusy Data", "IPM.Microsoft.ScheduleData.FreeBusy", 1},
    {"unicode-split-part0.pst", "Top of Personal Folders/My Messages", "IPM.Note", 3},
});
constexpr std::string_view kRefusedByOthers = "corrupt-header.pst";

// Takes out of `items` what the record leaves out, and checks that it is there.
void TakeLeftOut(const std::string& store, std::map<std::string, std::vector<Facts>>& items) {
    for (const LeftOut& row : kLeftOut) {
        if (row.store == store) {
            std::vector<Facts>& list = items[std::string(row.folder)];
            EXPECT_EQ(std::erase_if(list, [&](Facts& facts) { return facts["class"] == row.messageClass; }), row.count);
        }
    }
}

class Corpus : public ::testing::TestWithParam<std::filesystem::path> {
protected:
    void SetUp() override {
        options.database.sink = &sink;
        options.codePage = kRecordedPage;
        Result<std::unique_ptr<pst::Store>> opened = pst::Store::Open(GetParam(), options);
        ASSERT_TRUE(opened) << opened.Failure().text;
        store = *std::move(opened);
    }

    std::string FileName() const { return GetParam().filename().string(); }

    RecordingSink sink;
    pst::StoreOptions options;
    std::unique_ptr<pst::Store> store;
};

TEST_P(Corpus, HoldsWhatOtherProgramsFind) {
    if (FileName() == kRefusedByOthers) {
        GTEST_SKIP() << "no other program reads this one";
    }
    const nlohmann::json truth = nlohmann::json::parse(vx_testing::TruthOf(GetParam()));
    Found found = ReadWhole(*store);
    TakeLeftOut(FileName(), found.items);
    std::map<std::string, std::vector<Facts>> items;
    for (const nlohmann::json& item : truth["items"]) {
        items[item.value("folder", std::string())].push_back(FactsOf(item));
    }
    std::set<std::string> folders;
    for (const nlohmann::json& folder : truth["folders"]) {
        const auto path = folder["path"].get<std::string>();
        folders.insert(path);
        std::vector<Facts> actual = found.items[path];
        std::vector<Facts> recorded = items[path];
        EXPECT_EQ(actual.size(), folder["exported"].get<std::size_t>()) << path;
        actual.resize(std::min(actual.size(), recorded.size()));  // of very long lists the first items are recorded
        recorded = InOrder(std::move(recorded));
        actual = InOrder(std::move(actual));
        for (std::size_t i = 0; i < actual.size(); ++i) {
            CheckBySecondRecord(truth, recorded[i], actual[i]);
            Compare(recorded[i], actual[i], path + " #" + std::to_string(i));
        }
    }
    EXPECT_EQ(folders, found.folders);
    EXPECT_EQ(sink.problems, std::vector<std::string>());
}

// A row of a contents table repeats what the message says itself: two ways to the same values.
TEST_P(Corpus, HasTheSameValuesInTablesAndInMessages) {
    constexpr auto kTexts = std::to_array<ULONG>({PR_MESSAGE_CLASS, PR_SUBJECT, PR_DISPLAY_TO});
    constexpr auto kNumbers = std::to_array<ULONG>({PR_MESSAGE_DELIVERY_TIME, PR_IMPORTANCE});
    std::size_t cells = 0;
    store->WalkFolders(pst::Store::kRootFolder, pst::SearchFolders::Skip, [&](pst::Folder& folder, unsigned) {
        pst::ItemList messages = folder.Messages();
        for (std::size_t i = 0; i < messages.Count(); ++i) {
            Result<pst::Message> message = store->OpenMessage(messages.Id(i));
            EXPECT_TRUE(message);
            for (const ULONG tag : kTexts) {
                if (Result<pst::PropertyValue> cell = messages.Cell(i, pst::IdOf(tag))) {
                    const Result<CStringW> text = pst::Text(*cell, message->CodePage());
                    EXPECT_TRUE(text && Utf8(*text) == Utf8(message->Text(pst::IdOf(tag)))) << messages.Id(i).value;
                    ++cells;
                }
            }
            for (const ULONG tag : kNumbers) {
                if (Result<pst::PropertyValue> cell = messages.Cell(i, pst::IdOf(tag))) {
                    EXPECT_EQ(pst::Integer(*cell), pst::ReadInteger(message->Properties(), pst::IdOf(tag)))
                        << messages.Id(i).value << ' ' << std::hex << tag;
                    ++cells;
                }
            }
        }
        return true;
    });
    RecordProperty("cells", static_cast<int>(cells));
}

TEST(CorpusStore, IsFound) {
    if (vx_testing::CorpusFolder().empty()) {
        GTEST_SKIP() << "there is no corpus: set VX_CORPUS to its folder";
    }
    EXPECT_EQ(vx_testing::CorpusStores().size(), 34U);
}

Result<std::unique_ptr<pst::Store>> OpenNamed(const char* name, const pst::StoreOptions& options) {
    return pst::Store::Open(vx_testing::CorpusFolder() / "pst" / name, options);
}

#define SKIP_WITHOUT_CORPUS()                                      \
    if (vx_testing::CorpusFolder().empty()) {                      \
        GTEST_SKIP() << "there is no corpus: set VX_CORPUS to it"; \
    }                                                              \
    static_assert(true)

TEST(CorpusStore, WithADamagedRootPageIsReadFromItsLeaves) {
    SKIP_WITHOUT_CORPUS();
    RecordingSink sink;
    pst::StoreOptions options;
    options.database.sink = &sink;
    Result<std::unique_ptr<pst::Store>> store = OpenNamed("corrupt-header.pst", options);
    ASSERT_TRUE(store) << store.Failure().text;
    const Found found = ReadWhole(**store);
    for (const char* path : {"Top of Personal Folders", "Top of Personal Folders/Deleted Items", "Search Root"}) {
        EXPECT_TRUE(found.folders.contains(path)) << path;
    }
    EXPECT_EQ(sink.Count("header: its CRC does not fit"), 1);
    EXPECT_EQ(sink.Count("looking through the file"), 1);
}

TEST(CorpusStore, OfJapaneseOutlookHasItsTextsInTheLanguageOfTheMessage) {
    SKIP_WITHOUT_CORPUS();
    Result<std::unique_ptr<pst::Store>> store = OpenNamed("ansi-contact-97-2002.pst", {});
    ASSERT_TRUE(store);
    std::string name;
    (*store)->WalkFolders(pst::Store::kRootFolder, pst::SearchFolders::Skip, [&](pst::Folder& folder, unsigned) {
        pst::ItemList messages = folder.Messages();
        if (messages.Count() == 1) {
            Result<pst::Message> message = (*store)->OpenMessage(messages.Id(0));
            name = message ? Utf8(message->ReadSubject().text) : message.Failure().text;
        }
        return true;
    });
    // "komu dotto iguzanpuru dono": the example of the record, as it is meant to be read.
    EXPECT_EQ(name, "\u30B3\u30E0 \u30C9\u30C3\u30C8 \u30A4\u30B0\u30B6\u30F3\u30D7\u30EB \u6BBF");
}

TEST(CorpusStore, KnowsItsPassword) {
    SKIP_WITHOUT_CORPUS();
    struct Row {
        const char* file;
        std::string_view password;
    };
    constexpr Row rows[] = {
        {"ansi-empty-password.pst", "test"},
        {"ansi-outlook97-294msgs.pst", "pass12345"},
        {"unicode-high-quickquick.pst", "quickquick"},
        {"unicode-noenc-quickquick.pst", "quickquick"},
        {"unicode-passworded-23msgs.pst", "Password1"},
        {"unicode-passworded.pst", "testpassword"},
        {"unicode-permute-quickquick.pst", "quickquick"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.file);
        Result<std::unique_ptr<pst::Store>> store = OpenNamed(row.file, {});
        ASSERT_TRUE(store);
        EXPECT_TRUE((*store)->HasPassword());
        EXPECT_TRUE((*store)->IsPassword(std::as_bytes(std::span(row.password))));
        EXPECT_FALSE((*store)->IsPassword(std::as_bytes(std::span(row.password.substr(1)))));
    }
}

std::string NameOf(const ::testing::TestParamInfo<std::filesystem::path>& file) {
    std::string name = file.param.filename().string();
    std::replace_if(
        name.begin(), name.end(), [](char c) { return !((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z')); }, '_');
    return name;
}

GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(Corpus);
INSTANTIATE_TEST_SUITE_P(Stores, Corpus, ::testing::ValuesIn(vx_testing::CorpusStores()), NameOf);

}  // namespace
}  // namespace localmapi::testing
