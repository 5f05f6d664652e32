// Reads every message file of the corpus and compares it with what is recorded there. What is known to differ, and who
// is right, stands in docs/msg-corpus-differences.md.
#include "localmapi/props/Values.h"
#include "mapi/PropTags.h"
#include "testing/corpus/Corpus.h"
#include "tests/localmapi/msg/corpus/MessageFacts.h"
#include "tests/localmapi/msg/support/Files.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace localmapi::testing {
namespace {

std::vector<std::filesystem::path> MessageFiles() {
    std::vector<std::filesystem::path> files;
    if (const std::filesystem::path folder = vx_testing::CorpusFolder(); !folder.empty()) {
        for (const auto& entry : std::filesystem::directory_iterator(folder / "msg")) {
            files.push_back(entry.path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

// Facts of damaged files that differ, and are left out of the comparison; the document says why.
struct Difference {
    const char* file;
    const char* fact;
};
constexpr auto kDifferences = std::to_array<Difference>({
    {"odd-fuzz-a.msg", "property_count"},
    {"odd-fuzz-a.msg", "attachment 1 filename"},
    {"odd-fuzz-a.msg", "attachment 1 method"},
    {"odd-unknown-properties.msg", "property_count"},
    {"odd-unknown-properties.msg", "received_by_name"},
});

// What can be had of a damaged compound file hangs on the structured storage.
#ifdef _WIN32
constexpr bool kReadsDamage = false;
#else
constexpr bool kReadsDamage = true;
#endif

std::string ValueIn(const Facts& facts, const std::string& name) {
    const auto found = facts.find(name);
    return found != facts.end() ? found->second : "nothing";
}

// What is listed as different has to be: a reader that comes to agree with the record changes the list.
void TakeOutDifferences(const std::string& file, Facts& recorded, Facts& found) {
    for (const Difference& difference : kDifferences) {
        if (file == difference.file) {
            EXPECT_NE(ValueIn(recorded, difference.fact), ValueIn(found, difference.fact)) << difference.fact;
            recorded.erase(difference.fact);
            found.erase(difference.fact);
        }
    }
}

// The record counts the terminator that some bodies are stored with; we strip it.
void TakeTerminatedBodies(const Facts& recorded, Facts& found) {
    constexpr std::string_view kEnd = " terminated";
    const Facts all = found;
    for (const auto& [name, value] : all) {
        if (name.ends_with(kEnd)) {
            const std::string body = name.substr(0, name.size() - kEnd.size());
            found.erase(name);
            if (ValueIn(recorded, body) == value) {
                found[body] = value;
            }
        }
    }
}

bool IsDamaged(const std::string& file) {
    return std::any_of(kDifferences.begin(), kDifferences.end(),
                       [&](const Difference& difference) { return file == difference.file; });
}

void Compare(const Facts& recorded, const Facts& found) {
    for (const auto& [name, value] : recorded) {
        EXPECT_EQ(ValueIn(found, name), value) << name << ", as it is recorded";
    }
    for (const auto& [name, value] : found) {
        EXPECT_TRUE(recorded.contains(name)) << name << " is not recorded, but found: " << value;
    }
}

TEST(MessageCorpus, EveryFileReadsAsItIsRecorded) {
    const auto files = MessageFiles();
    if (files.empty()) {
        GTEST_SKIP() << "there is no corpus: set VX_CORPUS";
    }
    EXPECT_GE(files.size(), 67U);
    for (const std::filesystem::path& path : files) {
        const std::string name = path.filename().string();
        SCOPED_TRACE(name);
        MemoryFile file(ReadFile(path));
        const auto message = Opened(file.Open());
        if (IsDamaged(name) && !kReadsDamage) {
            EXPECT_FALSE(FactsOf(*message).empty());
            continue;
        }
        Facts recorded = FactsOf(nlohmann::json::parse(vx_testing::TruthOf(path)));
        Facts found = FactsOf(*message);
        TakeOutDifferences(name, recorded, found);
        TakeTerminatedBodies(recorded, found);
        Compare(recorded, found);
    }
}

// A sound message that is written anew, with one property more, says the same as before.
TEST(MessageCorpus, EveryFileSaysTheSameWhenItIsSaved) {
    const auto files = MessageFiles();
    if (files.empty()) {
        GTEST_SKIP() << "there is no corpus: set VX_CORPUS";
    }
    for (const std::filesystem::path& path : files) {
        SCOPED_TRACE(path.filename().string());
        if (IsDamaged(path.filename().string())) {
            continue;
        }
        MemoryFile file(ReadFile(path));
        Facts before;
        bool hadMask = false;
        {
            const auto message = Opened(file.Open());
            before = FactsOf(*message);
            hadMask = message->TagOf(PROP_ID(PR_STORE_SUPPORT_MASK)).has_value();
        }
        {
            const auto message = OpenedForWriting(file.Open(STGM_READWRITE | STGM_SHARE_EXCLUSIVE));
            const auto id = message->Names().FindOrAdd({GUID{}, true, 0, CStringW("vx-test"_w)});
            ASSERT_TRUE(id);
            EXPECT_TRUE(message->Write(LongValue(PROP_TAG(PT_LONG, *id), 5)));
            for (const ULONG number : message->AttachmentNumbers()) {
                const auto attachment = message->OpenAttachment(number);
                EXPECT_TRUE(attachment && (*attachment)->Save());
            }
            const Status saved = message->Save();
            EXPECT_TRUE(saved) << saved.Failure().text;
        }
        const auto message = Opened(file.Open());
        const auto id = message->Names().Find({GUID{}, true, 0, CStringW("vx-test"_w)});
        ASSERT_TRUE(id);
        EXPECT_EQ(ValueOf(*message, *id), "5");
        Facts after = FactsOf(*message);
        const bool hasMaskNow = message->TagOf(PROP_ID(PR_STORE_SUPPORT_MASK)) && !hadMask;
        after["property_count"] = std::to_string(std::stoi(after["property_count"]) - (hasMaskNow ? 2 : 1));
        Compare(before, after);
    }
}

}  // namespace
}  // namespace localmapi::testing
