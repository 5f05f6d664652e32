// The sample's attachments, of every method, on both ways and in every form.
#include "mapi/PropTags.h"
#include "platform/Bstr.h"
#include "platform/NamedSection.h"
#include "tests/provider/mailbox/ExpectedRecords.h"
#include "tests/provider/mailbox/MailboxHost.h"
#include "tests/provider/mailbox/SectionReader.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>

namespace vx_testing {
namespace {

using Bytes = Value::Bytes;
using mailbox_builder::Attachment;

Bytes Read(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(file), {});
}

// A text that stands in the place of bytes, as UTF-16.
std::u16string TextIn(const Bytes& bytes) {
    std::u16string text(bytes.size() / 2, 0);
    for (std::size_t i = 0; i < text.size(); ++i) {
        text[i] = static_cast<char16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
    }
    return text;
}

std::optional<Bytes> BytesOf(const Attachment& attachment) {
    const auto* data = attachment.properties.Find(PR_ATTACH_DATA_BIN);
    const auto* bytes = data == nullptr ? nullptr : std::get_if<mailbox_builder::Bytes>(&data->value);
    if (bytes == nullptr) {
        return std::nullopt;
    }
    const auto* begin = reinterpret_cast<const std::uint8_t*>(bytes->data());
    return Bytes(begin, begin + bytes->size());
}

bool HasBackslash(const Attachment& attachment) {
    const auto* name = attachment.properties.Find(PR_ATTACH_LONG_FILENAME_W);
    const auto* text = name == nullptr ? nullptr : std::get_if<CStringW>(&name->value);
    return text != nullptr && text->find(WCHAR{'\\'}) != CStringW::npos;
}

class Attachments : public MailboxHost {
protected:
    // Calls for each attachment of the sample's items that has bytes of its own and is not read as an item.
    void VisitPlain(const std::function<void(const Value& uri, const Attachment& described, const Bytes& bytes,
                                             const std::string& where)>& visit) {
        const Value store = AddMailbox(u"Mail", SampleFile());
        VisitSample(u"Mail", store, [&](const ItemPlace& item) {
            Value uris;
            std::int32_t reserved = 0;
            host->QueryAttachments(item.uri, uris, reserved);
            for (const Value& uri : uris.Elements()) {
                const std::string path = Narrow(Get(uri, RecordKind::Uri, "uri_attachmentNum"));
                if (Get(uri, RecordKind::Uri, "uri_itemType").Integer() != -1) {
                    continue;
                }
                const Attachment& described = item.description->attachments.at(std::stoul(path));
                if (const auto bytes = BytesOf(described)) {
                    visit(uri, described, *bytes, item.where + " / " + path);
                }
            }
        });
    }
};

TEST_F(Attachments, AreTheSameBytesOnBothWaysAndInTheRecord) {
    std::size_t seen = 0;
    VisitPlain([&](const Value& uri, const Attachment&, const Bytes& bytes, const std::string& where) {
        SCOPED_TRACE(where);
        Value throughFolder;
        host->GetBinaryItemBody(uri, kPlain, false, throughFolder);
        EXPECT_TRUE(throughFolder.Data() == bytes);
        Value direct;
        host->GetAttachment(uri, kPlain, direct);
        EXPECT_TRUE(direct.Data() == bytes);
        Value record;
        host->GetBinaryItemData(uri, kPlain, false, record);
        EXPECT_TRUE(Get(record, "attachments_abBinaryBlob").Data() == bytes);
        EXPECT_EQ(Get(record, "attachments_iSize").Integer(), static_cast<std::int64_t>(bytes.size()));
        EXPECT_EQ(Get(record, "schemaUID").Integer(), 4);
        EXPECT_EQ(Get(record, "eobj_vx_lErrors").Integer(), 0);
        ++seen;
    });
    EXPECT_GT(seen, 20U);
}

TEST_F(Attachments, AreSavedIntoFilesOfTheirName) {
    std::size_t seen = 0;
    VisitPlain([&](const Value& uri, const Attachment&, const Bytes& bytes, const std::string& where) {
        if (++seen % 5 != 0 || bytes.empty()) {
            return;
        }
        SCOPED_TRACE(where);
        Value saved;
        host->GetAttachment(uri, kFile, saved);
        const std::u16string reference = TextIn(saved.Data());
        ASSERT_TRUE(reference.starts_with(u"File:")) << Narrow(std::u16string_view(reference));
        const std::filesystem::path path(reference.substr(5));
        EXPECT_TRUE(Read(path) == bytes);
        std::filesystem::remove(path);
    });
    EXPECT_GT(seen, 20U);
}

// Through the system alone: this program has nothing of the provider's but the name.
Bytes ReadSection(const std::u16string& name, std::size_t size) {
    const CStringW wide(name.begin(), name.end());
    const HANDLE section = OpenFileMappingW(FILE_MAP_READ, FALSE, wide.c_str());
    if (section == nullptr) {
        return {};
    }
    Bytes bytes;
    if (const void* view = MapViewOfFile(section, FILE_MAP_READ, 0, 0, size)) {
        const auto* begin = static_cast<const std::uint8_t*>(view);
        bytes.assign(begin, begin + size);
        UnmapViewOfFile(view);
    }
    CloseHandle(section);
    return bytes;
}

TEST_F(Attachments, LieInNamedSectionsForAsLongAsTheyAreTheLastOnesRead) {
    std::size_t seen = 0;
    VisitPlain([&](const Value& uri, const Attachment& described, const Bytes& bytes, const std::string& where) {
        if (bytes.empty()) {
            return;
        }
        SCOPED_TRACE(where);
        Value section;
        host->GetBinaryItemBody(uri, kSection, false, section);
        if (HasBackslash(described) && section.Data().empty()) {
            return;  // Windows takes it for the end of a folder's name, and has no such folder
        }
        const std::u16string name = TextIn(section.Data());
        EXPECT_TRUE(name.starts_with(u"vx:%%" + Wide(std::to_string(bytes.size())) + u"%%"))
            << Narrow(std::u16string_view(name));
        EXPECT_TRUE(ReadInAnotherProcess(name, bytes));
        EXPECT_TRUE(ReadSection(name, bytes.size()) == bytes);
        Value plain;
        host->GetBinaryItemBody(uri, kPlain, false, plain);
        EXPECT_TRUE(ReadSection(name, bytes.size()).empty()) << "still there";
        ++seen;
    });
    EXPECT_GT(seen, 20U);
}

TEST_F(Attachments, OfItemsAreItems) {
    const Value store = AddMailbox(u"Mail", SampleFile());
    std::size_t files = 0;
    std::size_t deepest = 0;
    VisitSample(u"Mail", store, [&](const ItemPlace& item) {
        Value uris;
        std::int32_t reserved = 0;
        host->QueryAttachments(item.uri, uris, reserved);
        for (Value uri : uris.Elements()) {
            for (std::size_t depth = 1; Get(uri, RecordKind::Uri, "uri_itemType").Integer() != -1; ++depth) {
                SCOPED_TRACE(item.where + " > " + Narrow(Get(uri, RecordKind::Uri, "uri_attachmentNum")));
                deepest = std::max(deepest, depth);
                EXPECT_EQ(Get(uri, RecordKind::Uri, "uri_itemId"), Get(item.uri, RecordKind::Uri, "uri_itemId"));
                Value record;
                host->GetItemData(uri, kPlain, false, record);
                EXPECT_EQ(Get(record, "schemaUID"), Get(uri, RecordKind::Uri, "uri_itemType"));
                const std::string path = Narrow(Get(uri, RecordKind::Uri, "uri_attachmentNum"));
                const std::size_t number = depth == 1 ? std::stoul(path.substr(9)) : 0;
                files += depth == 1 && BytesOf(item.description->attachments.at(number)).has_value() ? 1U : 0U;
                std::u16string direct;
                std::u16string throughFolder;
                host->GetItemBody(uri, kPlain, direct);
                host->GetItemBody(uri, kPlain, false, throughFolder);
                EXPECT_EQ(Narrow(std::u16string_view(direct)), Narrow(std::u16string_view(throughFolder)));
                Value inner;
                host->QueryAttachments(uri, inner, reserved);
                if (inner.Elements().empty()) {
                    break;
                }
                uri = inner.At(0);
            }
        }
    });
    EXPECT_GE(files, 2U) << "message files";
    EXPECT_GE(deepest, 3U);
}

TEST_F(Attachments, AreRefusedToTheCallsOfTheOtherKind) {
    const Value store = AddMailbox(u"Mail", SampleFile());
    Value plain;
    Value embedded;
    VisitSample(u"Mail", store, [&](const ItemPlace& item) {
        Value uris;
        std::int32_t reserved = 0;
        host->QueryAttachments(item.uri, uris, reserved);
        for (const Value& uri : uris.Elements()) {
            (Get(uri, RecordKind::Uri, "uri_itemType").Integer() == -1 ? plain : embedded) = uri;
        }
    });
    constexpr VxOutlookProvider::HResult kFail = static_cast<VxOutlookProvider::HResult>(0x80004005);
    const auto failure = [](auto call) -> VxOutlookProvider::HResult {
        try {
            call();
            return 0;
        } catch (const VxOutlookProvider::ResultException& thrown) {
            return thrown.Code();
        }
    };
    Value out(u"as it was");
    EXPECT_EQ(failure([&] { host->GetItemData(plain, kPlain, false, out); }), kFail);
    EXPECT_EQ(failure([&] { host->GetBinaryItemData(embedded, kPlain, false, out); }), kFail);
    EXPECT_EQ(failure([&] { host->GetBinaryItemBody(embedded, kPlain, false, out); }), kFail);
    EXPECT_EQ(out, Value(u"as it was"));
    std::int32_t reserved = 0;
    host->QueryAttachments(plain, out, reserved);
    EXPECT_EQ(out, Value(Value::Array()));
}

}  // namespace
}  // namespace vx_testing
