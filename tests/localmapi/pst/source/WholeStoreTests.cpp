// Whole stores: the same values as from the engine beneath, rows like their objects, and what damage does.
#include "localmapi/base/ByteSource.h"
#include "localmapi/props/Values.h"
#include "localmapi/pst/ltp/Values.h"
#include "localmapi/pst/source/OpenStoreSource.h"
#include "mapi/PropTags.h"
#include "testing/corpus/Corpus.h"
#include "tests/localmapi/pst/source/SourceReading.h"
#include "tests/localmapi/pst/support/StoreBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace localmapi::testing {
namespace {

using pst::Store;

constexpr std::uint64_t kLimit = 8 * 1024;  // of a value; digits of longer ones take their time

// A value of the engine's as the file has it, without the terminator that some texts have.
std::string ShownOf(const pst::PropertyContext::Record& record, Result<pst::PropertyValue> value) {
    const ULONG tag = pst::TagOf(record.id, record.type);
    if (PROP_TYPE(tag) == PT_OBJECT) {
        return Shown(tag, {});
    }
    if (!value) {
        return Why(value.Failure());
    }
    if (value->bytes.Size() > kLimit) {
        return "too large";
    }
    Bytes bytes = *value->bytes.ReadAll();
    if (pst::IsMultiple(record.type)) {
        const auto list = pst::ValueList::Parse(record.type, bytes);
        std::string text = Shown(tag, {});
        for (std::size_t i = 0; list && i < list->Count(); ++i) {
            text += (i == 0 ? "" : ",") + Shown(0, list->At(i)).substr(9);
        }
        return list ? text : "corrupt";
    }
    if (record.type == pst::PropertyType::Unicode || record.type == pst::PropertyType::String8) {
        const std::string text = Shown(tag, bytes);
        return text.ends_with("0000") && record.type == pst::PropertyType::Unicode ? text.substr(0, text.size() - 4)
                                                                                   : text;
    }
    const ULONG offered =
        PROP_TYPE(tag) == PT_SVREID || PROP_TYPE(tag) == PT_ACTIONS || PROP_TYPE(tag) == PT_SRESTRICTION
            ? CHANGE_PROP_TYPE(tag, PT_BINARY)
            : tag;
    return Shown(offered, bytes);
}

void CompareProperties(pst::PropertyContext& stored, PropertySource& source, std::size_t& compared) {
    for (const pst::PropertyContext::Record& record : stored.Records()) {
        // The subject is compared by its texts; its mark is gone.
        if (record.type != pst::PropertyType::Error && record.id != 0x0037) {
            ASSERT_EQ(Shown(source, record.id, kLimit), ShownOf(record, stored.Read(record)));
            ++compared;
        }
    }
}

CStringW WideTextOf(PropertySource& source, ULONG id) {
    Arena memory;
    SPropValue value{};
    if (!source.Read(id, kLimit, memory, value)) {
        return {};
    }
    ChangeWidth(value, PT_UNICODE, source.CodePage(), memory);
    return value.Value.lpszW;
}

void CompareMessages(pst::Message& message, MessageSource& source, std::size_t& compared) {
    CompareProperties(message.Properties(), source, compared);
    EXPECT_TRUE(WideTextOf(source, PROP_ID(PR_SUBJECT)) == message.ReadSubject().text);
    const std::vector<pst::NodeId> ids = message.Attachments();
    ASSERT_EQ(source.AttachmentNumbers().size(), ids.size());
    const auto rows = source.Attachments();
    for (ULONG i = 0; i < ids.size(); ++i) {
        auto attachment = message.OpenAttachment(ids[i]);
        auto opened = source.OpenAttachment(i);
        ASSERT_EQ(static_cast<bool>(attachment), static_cast<bool>(opened));
        if (!opened) {
            continue;
        }
        for (const ULONG id : {0x3705U, 0x3704U, 0x3707U, 0x370EU, 0x0E21U}) {
            EXPECT_EQ(Shown(*rows, i, id), Shown(**opened, id));
        }
        auto inner = attachment->OpenMessage();
        auto innerSource = (*opened)->OpenMessage();
        ASSERT_EQ(static_cast<bool>(inner), static_cast<bool>(innerSource));
        if (inner) {
            CompareMessages(*inner, **innerSource, compared);
        }
    }
}

// Columns of tables that lag behind, or that only tables have.
bool MayDiffer(ULONG tag) {
    return PROP_ID(tag) == PROP_ID(PR_MESSAGE_SIZE);
}
bool IsOfRowsOnly(ULONG tag) {
    switch (PROP_ID(tag)) {
        case PROP_ID(PR_ENTRYID):
        case PROP_ID(PR_RECORD_KEY):
        case PROP_ID(PR_INSTANCE_KEY):
        case PROP_ID(PR_PARENT_ENTRYID):
        case PROP_ID(PR_OBJECT_TYPE):
        case PROP_ID(PR_DEPTH):
        case PROP_ID(PR_STATUS): return true;
        default: return false;
    }
}

void CompareRow(RowSource& rows, std::size_t row, PropertySource& object, std::size_t& compared) {
    for (const ULONG tag : rows.Columns()) {
        const ULONG id = PROP_ID(tag);
        const std::string inRow = Shown(rows, row, id);
        const std::string inObject = Shown(object, id, RowSource::kLargestCell);
        if (!MayDiffer(tag) && !IsOfRowsOnly(tag) && inObject != "not found") {
            ASSERT_EQ(inRow, inObject);
            ++compared;
        }
    }
}

std::unique_ptr<StoreSource> OpenSource(const std::filesystem::path& path) {
    auto source = pst::OpenStoreSource(path, {});
    EXPECT_TRUE(source) << source.Failure().text;
    return source ? *std::move(source) : nullptr;
}

TEST(SourcesOfTheCorpus, GiveWhatTheEngineGivesInTablesAndObjects) {
    const auto paths = vx_testing::CorpusStores();
    if (paths.empty()) {
        GTEST_SKIP() << "there is no corpus: set VX_CORPUS to its folder";
    }
    const std::int64_t buffers = LiveBuffers();
    std::size_t compared = 0;
    for (const std::filesystem::path& path : paths) {
        SCOPED_TRACE(path.filename().string());
        auto engine = Store::Open(path, {});
        const auto source = OpenSource(path);
        ASSERT_TRUE(engine && source);
        (*engine)->WalkFolders(Store::kRootFolder, pst::SearchFolders::Include, [&](pst::Folder& folder, unsigned) {
            auto opened = source->OpenFolder(folder.Id().value);
            EXPECT_TRUE(opened);
            for (const bool hidden : {false, true}) {
                pst::ItemList list = hidden ? folder.AssociatedMessages() : folder.Messages();
                const auto rows = hidden ? (*opened)->AssociatedMessages() : (*opened)->Messages();
                EXPECT_EQ(rows->Count(), list.Count());
                for (std::size_t i = 0; i < list.Count() && !::testing::Test::HasFatalFailure(); ++i) {
                    EXPECT_EQ(rows->Find(PROP_ID(PR_ENTRYID), source->EntryIdOf(list.Id(i).value)), i);
                    auto message = (*engine)->OpenMessage(list.Id(i));
                    auto object = source->OpenMessage(list.Id(i).value);
                    EXPECT_TRUE(message && object);
                    CompareMessages(*message, **object, compared);
                    CompareRow(*rows, i, **object, compared);
                    EXPECT_EQ(source->ParentOf(list.Id(i).value), folder.Id().value);
                }
            }
            const auto folders = (*opened)->Folders();
            for (std::size_t i = 0; i < folders->Count(); ++i) {
                Arena memory;
                SPropValue id{};
                EXPECT_TRUE(folders->Read(i, PROP_ID(PR_ENTRYID), memory, id));
                const auto entry =
                    source->EntryOf({reinterpret_cast<const std::byte*>(id.Value.bin.lpb), id.Value.bin.cb});
                EXPECT_TRUE(entry && entry->kind == EntryKind::Folder);
                auto child = source->OpenFolder(entry->number);
                EXPECT_TRUE(child);
                EXPECT_EQ((*child)->Parent(), folder.Id().value);
                CompareRow(*folders, i, **child, compared);
            }
            return !::testing::Test::HasFatalFailure();
        });
    }
    EXPECT_GT(compared, 100'000U);
    EXPECT_EQ(LiveBuffers(), buffers);
}

// A walk through a store with bytes flipped here and there ends, and finds no more than there can be. For `time`.
void WalkDamaged(const Bytes& sound, std::chrono::milliseconds time) {
    OpenedSource whole(sound);
    const Walked found = WalkThrough(*whole);
    ASSERT_GT(found.messages, 3U);
    ASSERT_EQ(found.errors, 0U);
    std::uint32_t seed = 20'240'229;
    const auto random = [&seed](std::size_t below) {
        seed = seed * 1664525U + 1013904223U;
        return static_cast<std::size_t>((std::uint64_t{seed} * below) >> 32);
    };
    const auto end = std::chrono::steady_clock::now() + time;
    unsigned runs = 0;
    do {
        Bytes bytes = sound;
        for (unsigned flips = 0; flips < 1 + runs % 40; ++flips) {
            bytes[600 + random(bytes.size() - 600)] ^= static_cast<std::byte>(1U << random(8));
        }
        SCOPED_TRACE("run " + std::to_string(runs++));
        OpenedSource store(std::move(bytes));
        EXPECT_LE(WalkThrough(*store).rows, 4 * found.rows);
    } while (std::chrono::steady_clock::now() < end);
}

TEST(Sources, OfADamagedStoreEnd) {
    for (const Form* form : kForms) {
        StoreBuilder builder(*form);
        builder.image.entriesPerPage = 8;
        builder.AddFolder(0x8062, kTop, "Inbox");
        builder.AddFolder(0x8082, 0x8062, "Below");
        for (std::uint32_t i = 0; i < 20; ++i) {
            builder.AddMessage(0x200004 + i * 0x20, i % 2 == 0 ? 0x8062 : 0x8082, "\x01\x05RE: " + std::to_string(i));
        }
        builder.AddMessage(0x200008, 0x8062, "hidden");
        const NodeData attachment = AddProperties(
            builder.image, {{0x37050003, Number32(5)}, {0x3701000D, ByteWriter().U32(0x8024).U32(9).Take()}},
            {{0x8024, AddMessageNode(builder.image, "inner")}});
        builder.AddMessage(0x300004, 0x8082,
                           AddMessageNode(builder.image, "outer", {attachment, attachment},
                                          {{1, {{0x3001001F, Utf16("someone")}, {0x0C150003, Number32(1)}}}}));
        SCOPED_TRACE(form->name);
        WalkDamaged(builder.Build(), std::chrono::milliseconds(500));
    }
}

TEST(SourcesOfTheCorpus, EndInADamagedStore) {
    const auto paths = vx_testing::CorpusStores();
    const auto path = std::find_if(paths.begin(), paths.end(), [](const std::filesystem::path& candidate) {
        return candidate.filename() == "unicode-embedded-4-levels.pst";
    });
    if (path == paths.end()) {
        GTEST_SKIP() << "there is no corpus: set VX_CORPUS to its folder";
    }
    auto file = OpenFileReadOnly(*path);
    ASSERT_TRUE(file);
    Bytes sound(static_cast<std::size_t>((*file)->Size()));
    ASSERT_TRUE((*file)->ReadAt(0, sound));
    WalkDamaged(sound, std::chrono::seconds(3));
}

}  // namespace
}  // namespace localmapi::testing
