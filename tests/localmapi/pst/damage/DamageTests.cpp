// Damaged files: every cut and every flipped byte costs at most the object that holds it, ends, and is told of.
#include "localmapi/pst/messaging/Store.h"
#include "testing/corpus/Corpus.h"
#include "tests/localmapi/pst/support/ReadEverything.h"
#include "tests/localmapi/pst/support/RecordingSink.h"
#include "tests/localmapi/pst/support/StoreBuilder.h"
#include "tests/testing/mailbox_builder/Samples.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace localmapi::testing {
namespace {

using pst::Store;

// Four folders, 40 messages, and one with recipients and attachments; b-trees of three levels.
Bytes SmallStore(const Form& form) {
    StoreBuilder builder(form);
    builder.image.entriesPerPage = 8;
    builder.AddFolder(0x8062, kTop, "Inbox");
    builder.AddFolder(0x8082, kTop, "Other");
    for (std::uint32_t i = 0; i < 40; ++i) {
        builder.AddMessage(0x200004 + i * 0x20, i < 30 ? 0x8062 : 0x8082, "message " + std::to_string(i));
    }
    const NodeData attachment =
        AddProperties(builder.image, {{0x37050003, Number32(1)}, {0x37010102, Pattern(20'000)}});
    builder.AddMessage(
        0x300004, 0x8082,
        AddMessageNode(builder.image, "big", {attachment, attachment}, {{1, {{0x3001001F, Utf16("someone")}}}}));
    return builder.Build();
}

struct Outcome {
    bool opened = false;
    Everything found;
    std::size_t reports = 0;
};

Outcome Read(const Bytes& bytes) {
    RecordingSink sink;
    pst::StoreOptions options;
    options.database.sink = &sink;
    options.database.cacheBytes = 1 << 20;
    auto store = Store::Open(std::make_unique<MemorySource>(bytes), options);
    if (!store) {
        return {};
    }
    return {true, ReadEverything(**store, 1 << 20), sink.problems.size()};
}

TEST(Damage, OfAByteCostsAtMostTheObjectThatHoldsItAndIsNoticed) {
    for (const Form* form : {&kUnicode, &kAnsi}) {
        const Bytes sound = SmallStore(*form);
        const Outcome whole = Read(sound);
        ASSERT_EQ(whole.found.messages.size(), 41U);
        ASSERT_EQ(whole.found.folders.size(), 3U);
        ASSERT_EQ(whole.reports + whole.found.errors, 0U);
        for (std::size_t at = 4; at < sound.size(); at += 13) {
            SCOPED_TRACE(std::string(form->name) + ", byte " + std::to_string(at));
            Bytes bytes = sound;
            bytes[at] ^= static_cast<std::byte>(1U << (at % 8));
            const Outcome outcome = Read(bytes);
            ASSERT_TRUE(outcome.opened);
            EXPECT_GE(outcome.found.messages.size(), 40U);
            EXPECT_GE(outcome.found.folders.size(), 2U);
            const bool isSame =
                outcome.found.bytes == whole.found.bytes && outcome.found.messages == whole.found.messages;
            EXPECT_TRUE(isSame || outcome.reports + outcome.found.errors > 0) << "nobody was told";
        }
    }
}

TEST(Damage, OfAWholePageOrBlockCostsAtMostWhatItHeld) {
    for (const Form* form : kForms) {
        const Bytes sound = SmallStore(*form);
        const std::size_t step = form->pageSize;
        for (std::size_t at = step == 512 ? 1024 : step; at + step <= sound.size(); at += step) {
            SCOPED_TRACE(std::string(form->name) + " at " + std::to_string(at));
            Bytes bytes = sound;
            std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(at), step, std::byte{});
            const Outcome outcome = Read(bytes);
            ASSERT_TRUE(outcome.opened);
            // A page holds eight entries here, and a stretch of that length the blocks of at most eight messages.
            EXPECT_GE(outcome.found.messages.size(), 41U - 8);
            EXPECT_GT(outcome.reports + outcome.found.errors, 0U);
        }
    }
}

struct Written {
    const char* name;
    mailbox_builder::WriterOptions options;
};
constexpr auto kEarly = mailbox_builder::FileEnd::Early;
const Written kWritten[] = {
    {"Unicode", {.end = kEarly}},
    {"Unicode, cyclic", {.encryption = mailbox_builder::Encryption::Cyclic, .end = kEarly}},
    {"ANSI", {.form = mailbox_builder::Form::Ansi, .end = kEarly}},
    {"4 KiB pages, compressed", {.form = mailbox_builder::Form::LargePages, .end = kEarly}},
};

// A file as a client lays it out: a row matrix in a node of its own, long values, names, messages in messages.
Bytes WrittenStore(const mailbox_builder::WriterOptions& options) {
    mailbox_builder::MailboxBuilder builder(options);
    const auto folder = builder.AddFolder("Inbox");
    for (int i = 0; i < 40; ++i) {
        builder.Add(folder, mailbox_builder::SimpleMessage("message " + std::to_string(i)));
    }
    builder.Add(folder, mailbox_builder::NamesAndPages());
    mailbox_builder::Message outer = mailbox_builder::SimpleMessage("outer");
    mailbox_builder::Message inner = mailbox_builder::SimpleMessage("inner");
    inner.attachments.push_back(mailbox_builder::FileAttachment("file", mailbox_builder::Pattern(20'000)));
    outer.attachments.push_back(mailbox_builder::MessageAttachment(std::move(inner)));
    outer.attachments.emplace_back().ole = mailbox_builder::Pattern(9000);
    builder.Add(folder, std::move(outer));
    return builder.Finish().bytes;
}

TEST(Damage, OfAByteOfAWrittenFileCostsAtMostOneObjectAndIsNoticed) {
    for (const Written& written : kWritten) {
        const Bytes sound = WrittenStore(written.options);
        const Outcome whole = Read(sound);
        ASSERT_EQ(whole.found.messages.size(), 42U);
        ASSERT_EQ(whole.reports + whole.found.errors, 0U);
        // Where nothing of the file lies, as at its beginning, damage is no damage.
        for (std::size_t at = 564; at < sound.size(); at += sound[at] == std::byte{} ? 2003 : 151) {
            SCOPED_TRACE(std::string(written.name) + ", byte " + std::to_string(at));
            Bytes bytes = sound;
            bytes[at] ^= static_cast<std::byte>(1U << (at % 8));
            const Outcome outcome = Read(bytes);
            ASSERT_TRUE(outcome.opened);
            EXPECT_GE(outcome.found.messages.size(), 41U);
            EXPECT_GE(outcome.found.folders.size(), whole.found.folders.size() - 1);
            const bool isSame = outcome.found.bytes == whole.found.bytes
                                && outcome.found.messages == whole.found.messages
                                && outcome.found.attachments == whole.found.attachments;
            EXPECT_TRUE(isSame || outcome.reports + outcome.found.errors > 0) << "nobody was told";
        }
    }
}

TEST(Damage, ByCuttingAWrittenFileAnywhereGivesNothingThatWasNotThere) {
    for (const Written& written : kWritten) {
        const Bytes sound = WrittenStore(written.options);
        const Outcome whole = Read(sound);
        for (std::size_t cut = 1; cut < 60; ++cut) {
            const std::size_t size = sound.size() * cut / 60 + cut;
            SCOPED_TRACE(std::string(written.name) + ", cut at " + std::to_string(size));
            const Outcome outcome = Read(Bytes(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(size)));
            ASSERT_TRUE(outcome.opened);
            EXPECT_GT(outcome.reports, 0U);
            EXPECT_TRUE(std::includes(whole.found.messages.begin(), whole.found.messages.end(),
                                      outcome.found.messages.begin(), outcome.found.messages.end()));
            EXPECT_LE(outcome.found.bytes, whole.found.bytes);
        }
    }
}

// Small stores of the corpus, each with what is in it.
std::vector<std::pair<std::string, Bytes>> SmallCorpusStores() {
    constexpr std::uintmax_t kLargest = 600'000;  // keeps a run within seconds
    std::vector<std::pair<std::string, Bytes>> stores;
    for (const std::filesystem::path& path : vx_testing::CorpusStores()) {
        if (std::filesystem::file_size(path) <= kLargest) {
            std::ifstream stream(path, std::ios::binary);
            const std::vector<char> text{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
            const auto bytes = std::as_bytes(std::span(text));
            stores.emplace_back(path.filename().string(), Bytes(bytes.begin(), bytes.end()));
        }
    }
    return stores;
}

TEST(Damage, ByCuttingAFileAnywhereLeavesWhatLiesBeforeTheCut) {
    const auto stores = SmallCorpusStores();
    if (stores.empty()) {
        GTEST_SKIP() << "there is no corpus: set VX_CORPUS to its folder";
    }
    for (const auto& [name, sound] : stores) {
        const Outcome whole = Read(sound);
        for (std::size_t cut = 1; cut <= 8; ++cut) {
            const std::size_t size = sound.size() * cut / 9 + cut;
            SCOPED_TRACE(name + " cut at " + std::to_string(size));
            const Outcome outcome = Read(Bytes(sound.begin(), sound.begin() + static_cast<std::ptrdiff_t>(size)));
            ASSERT_TRUE(outcome.opened);
            EXPECT_GT(outcome.reports, 0U);
            // Pages that were freed before the cut may still tell of messages that were deleted, but not of many.
            EXPECT_LE(outcome.found.messages.size(), whole.found.messages.size() + 20);
        }
    }
}

TEST(Damage, OfEveryRandomKindEnds) {
    const auto stores = SmallCorpusStores();
    if (stores.empty()) {
        GTEST_SKIP() << "there is no corpus: set VX_CORPUS to its folder";
    }
    std::uint32_t seed = 20'240'229;
    const auto random = [&seed](std::size_t below) {
        seed = seed * 1664525U + 1013904223U;
        return static_cast<std::size_t>((std::uint64_t{seed} * below) >> 32);
    };
    for (const auto& [name, sound] : stores) {
        for (unsigned run = 0; run < 8; ++run) {
            Bytes bytes = sound;
            for (unsigned i = 0; i < 12; ++i) {
                // Within the part of the file that is in use, which the high pages of small stores are not.
                const std::size_t at = 512 + random(bytes.size() - 1536);
                const auto place = bytes.begin() + static_cast<std::ptrdiff_t>(at);
                const auto other = bytes.begin() + static_cast<std::ptrdiff_t>(random(bytes.size() - 512));
                switch ((run + i) % 4) {
                    case 0: *place ^= static_cast<std::byte>(1U << random(8)); break;
                    case 1: std::fill_n(place, 1 + random(8), std::byte{0xFF}); break;
                    case 2: std::copy_n(Bytes(other, other + 512).begin(), 512, place); break;
                    default: std::fill_n(place, random(600), std::byte{}); break;
                }
            }
            SCOPED_TRACE(name + ", run " + std::to_string(run));
            const Outcome outcome = Read(bytes);
            EXPECT_TRUE(outcome.opened);
            // However the pieces are mixed, no more is read than so small a file can hold.
            EXPECT_LT(outcome.found.bytes, 200U * sound.size());
        }
    }
}

}  // namespace
}  // namespace localmapi::testing
