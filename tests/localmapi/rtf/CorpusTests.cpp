// Every body of the corpus: RTF against the digests that another program made of it, texts against the plain body of
// the same message.
#include "localmapi/rtf/CompressedRtf.h"
#include "localmapi/rtf/HtmlText.h"
#include "localmapi/rtf/RtfText.h"
#include "testing/corpus/Corpus.h"
#include "tests/localmapi/pst/support/Sha1.h"
#include "tests/localmapi/rtf/CorpusBodies.h"
#include "tests/localmapi/rtf/RtfTesting.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

namespace localmapi::testing {
namespace {

using rtf::RtfKind;

std::vector<std::filesystem::path> MessageFiles() {
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(vx_testing::CorpusFolder() / "msg")) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

// The bodies of each file of the corpus, read once.
const std::map<std::filesystem::path, std::vector<Bodies>>& AllBodies() {
    static const auto all = [] {
        std::map<std::filesystem::path, std::vector<Bodies>> bodies;
        for (const auto& file : vx_testing::CorpusStores()) {
            bodies[file] = BodiesOfStore(file);
        }
        for (const auto& file : MessageFiles()) {
            bodies[file] = BodiesOfMessageFile(file);
        }
        return bodies;
    }();
    return all;
}

class CorpusRtf : public ::testing::Test {
protected:
    void SetUp() override {
        if (vx_testing::CorpusFolder().empty()) {
            GTEST_SKIP() << "there is no corpus: set VX_CORPUS to its folder";
        }
    }
};

// Length and digest of a decompressed body, and whether it carries HTML.
using Print = std::tuple<std::uint64_t, std::string, bool>;

void CollectPrints(const nlohmann::json& node, std::set<Print>& prints) {
    if (node.is_object() && node.contains("rtf") && node["rtf"].contains("sha1")) {
        const nlohmann::json& rtf = node["rtf"];
        prints.emplace(rtf["length"].get<std::uint64_t>(), rtf["sha1"].get<std::string>(), rtf["fromhtml"].get<bool>());
    }
    if (node.is_structured()) {
        for (const nlohmann::json& child : node) {
            CollectPrints(child, prints);
        }
    }
}

std::set<Print> RecordedPrints(const std::filesystem::path& file) {
    std::set<Print> prints;
    if (const std::string truth = vx_testing::TruthOf(file); !truth.empty()) {
        CollectPrints(nlohmann::json::parse(truth), prints);
    }
    return prints;
}

TEST_F(CorpusRtf, DecompressesToWhatAnotherProgramMadeOfIt) {
    std::size_t compared = 0;
    for (const auto& [file, list] : AllBodies()) {
        std::set<Print> found;
        for (const Bodies& bodies : list) {
            if (bodies.compressedRtf.empty()) {
                continue;
            }
            const Result<Bytes> rtf = rtf::Decompress(bodies.compressedRtf);
            ASSERT_TRUE(rtf) << bodies.where << ": " << rtf.Failure().text;
            found.emplace(rtf->size(), Sha1Of(*rtf), rtf::KindOf(*rtf) == RtfKind::EncapsulatedHtml);
        }
        for (const Print& print : RecordedPrints(file)) {
            EXPECT_TRUE(found.contains(print)) << file.filename() << ": " << std::get<1>(print);
            ++compared;
        }
    }
    EXPECT_GT(compared, 90U);
}

// Both decompress to the same; together our values are no longer than those of the programs that wrote the messages.
TEST_F(CorpusRtf, IsCompressedAsWellAsItWas) {
    std::size_t theirs = 0;
    std::size_t ours = 0;
    for (const auto& [file, list] : AllBodies()) {
        if (file.filename() == "many-3000.pst") {
            continue;  // ten messages again and again
        }
        for (const Bodies& bodies : list) {
            if (const Result<Bytes> rtf = rtf::Decompress(bodies.compressedRtf)) {
                const Result<Bytes> value = rtf::Compress(*rtf);
                const Result<Bytes> again = rtf::Decompress(*value);
                ASSERT_TRUE(again) << bodies.where << ": " << again.Failure().text;
                EXPECT_TRUE(*again == *rtf) << bodies.where;
                theirs += bodies.compressedRtf.size();
                ours += value->size();
            }
        }
    }
    EXPECT_LE(ours, theirs);
}

// Marks that one body has and the other lacks, or has in ASCII: the no-break and the zero-width space, the apostrophe, the
// trademark sign (once as the control character of its number in Windows-1252).
std::string WithoutMarks(std::string utf8) {
    for (const std::string_view mark : {"\u00A0", "\u200B", "\u2019", "\u2122", "\u0099"}) {
        for (std::size_t at = utf8.find(mark); at != std::string::npos; at = utf8.find(mark, at)) {
            utf8.replace(at, mark.size(), " ");
        }
    }
    return utf8;
}

// Words of three letters and more, in lower case as far as ASCII goes; what is joined to an address or a link is none.
std::set<std::string> WordsOf(const std::string& text) {
    const std::string utf8 = WithoutMarks(text);
    std::set<std::string> words;
    std::size_t at = 0;
    while (at < utf8.size()) {
        const std::size_t end = std::min(utf8.find_first_of(std::string_view(" \t\r\n<>\""), at), utf8.size());
        const std::string piece = utf8.substr(at, end - at);
        at = end + 1;
        if (piece.find("://") != std::string::npos || piece.find('@') != std::string::npos || piece.starts_with("www.")
            || piece.starts_with("cid:")) {
            continue;
        }
        std::string word;
        for (const char c : piece + ' ') {
            if ((c >= 'a' && c <= 'z') || static_cast<unsigned char>(c) >= 0x80) {
                word.push_back(c);
            } else if (c >= 'A' && c <= 'Z') {
                word.push_back(static_cast<char>(c - 'A' + 'a'));
            } else {
                if (word.size() >= 3) {
                    words.insert(word);
                }
                word.clear();
            }
        }
    }
    return words;
}

// The words of the plain body that `text` lacks.
std::string Missing(const Bodies& bodies, const CStringW& text) {
    const std::set<std::string> wanted = WordsOf(ToUtf8(bodies.plain));
    const std::set<std::string> found = WordsOf(ToUtf8(text));
    std::string missing;
    for (const std::string& word : wanted) {
        missing += found.contains(word) ? "" : word + ' ';
    }
    return missing;
}

// The writer of a plain body added to it what no reader of the other body sees.
struct Difference {
    std::string_view where;
    std::string_view words;  // only in the plain body
};

void ExpectWords(const Bodies& bodies, const CStringW& text, std::span<const Difference> known) {
    const auto* const found = std::find_if(known.data(), known.data() + known.size(),
                                           [&bodies](const Difference& row) { return row.where == bodies.where; });
    const bool isKnown = found != known.data() + known.size();
    EXPECT_EQ(Missing(bodies, text), isKnown ? found->words : std::string_view()) << bodies.where;
}

TEST_F(CorpusRtf, HasTheWordsOfThePlainBody) {
    constexpr Difference known[] = {
        {"class-meeting-request.msg #0", "aspx "},    // an address that is broken into two lines
        {"mime-composed-sample.msg #0", "cid gif "},  // names of pictures
        {"unicode-high-quickquick.pst #10", "explorer media netmeeting technologies windows "},
    };
    std::set<Bytes> seen;
    for (const auto& [file, list] : AllBodies()) {
        for (const Bodies& bodies : list) {
            const Result<Bytes> rtf = rtf::Decompress(bodies.compressedRtf, rtf::Reading::Lenient);
            if (rtf && !bodies.plain.empty() && seen.insert(bodies.compressedRtf).second) {
                ExpectWords(bodies, rtf::TextOf(*rtf), known);
            }
        }
    }
    EXPECT_GT(seen.size(), 60U);
}

TEST_F(CorpusRtf, HasTheWordsOfThePlainBodyInHtmlToo) {
    constexpr Difference known[] = {
        {"mime-composed-sample.msg #0", "cid gif "},
        {"ost36-zlib-mixed.ost #1", "forum icon iconwrite lead symbolising "},  // descriptions of pictures, as below
        {"unicode-french-folders.pst #0", "com facebook find linkedin twitter "},
        {"unicode-high-quickquick.pst #0", "explorer media netmeeting technologies windows "},
    };
    std::set<Bytes> seen;
    for (const auto& [file, list] : AllBodies()) {
        for (const Bodies& bodies : list) {
            if (bodies.html && !bodies.plain.empty() && seen.insert(*bodies.html).second) {
                ExpectWords(bodies, rtf::TextOfHtml(rtf::DecodeHtml(*bodies.html, bodies.htmlPage)), known);
            }
        }
    }
    EXPECT_GT(seen.size(), 35U);
}

// A few messages have their HTML twice, as it is and in RTF.
TEST_F(CorpusRtf, GivesTheSameTextFromHtmlInRtfAsFromTheHtml) {
    int compared = 0;
    for (const auto& [file, list] : AllBodies()) {
        for (const Bodies& bodies : list) {
            const Result<Bytes> rtf = rtf::Decompress(bodies.compressedRtf);
            if (rtf && bodies.html) {
                const CStringW text = rtf::TextOfHtml(rtf::DecodeHtml(*bodies.html, bodies.htmlPage));
                EXPECT_EQ(ToUtf8(rtf::TextOf(*rtf)), ToUtf8(text)) << bodies.where;
                ++compared;
            }
        }
    }
    EXPECT_GE(compared, 3);
}

}  // namespace
}  // namespace localmapi::testing
