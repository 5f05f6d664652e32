#include "tests/provider/mailbox/MailboxHost.h"

#include "mapi/PropTags.h"
#include "tests/provider/mailbox/ExpectedRecords.h"

#include <cstdint>

namespace vx_testing {

const Value& Get(const Value& record, RecordKind kind, std::string_view key) {
    return record.At(FieldIndex(kind, key));
}

std::u16string WellFormed(std::u16string text) {
    const auto isHigh = [](char16_t unit) { return unit >= 0xD800 && unit < 0xDC00; };
    const auto isLow = [](char16_t unit) { return unit >= 0xDC00 && unit < 0xE000; };
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (isHigh(text[i]) && i + 1 < text.size() && isLow(text[i + 1])) {
            ++i;
        } else if (isHigh(text[i]) || isLow(text[i])) {
            text[i] = 0xFFFD;
        }
    }
    return text;
}

std::string Narrow(std::u16string_view text) {
    const std::u8string bytes = std::filesystem::path(WellFormed(std::u16string(text))).u8string();
    return std::string(bytes.begin(), bytes.end());
}

std::u16string Wide(const std::filesystem::path& path) {
    return path.u16string();
}

void MailboxHost::SetUp() {
    m_home.emplace();
    host.emplace();
    ASSERT_NO_THROW(host->InitializeVxMapi(u"", u"Off"));
}

void MailboxHost::TearDown() {
    host->ReleaseVxMapi();
    EXPECT_EQ(CountLiveMapi(), (LiveMapi{0, 0}));
    host.reset();
    m_home.reset();
}

Value MailboxHost::AddMailbox(const Text& profile, const std::filesystem::path& file) {
    EXPECT_TRUE(host->CreateMAPIProfile(profile));
    EXPECT_TRUE(host->AddPSTToMAPIProfile(Wide(file), profile));
    Value stores;
    host->GetProfileStores(profile, stores);
    EXPECT_EQ(stores.Elements().size(), 1U);
    return stores.At(0);
}

std::map<std::string, Value> MailboxHost::FoldersOf(const Text& profile, const Value& store) {
    Value folders;
    host->GetStoreFolders(profile, Get(store, RecordKind::Store, "si_storeId").String(), folders);
    std::map<std::string, Value> byPath;
    for (const Value& folder : folders.Elements()) {
        const std::string path = byPath.empty() ? "/" : Narrow(Get(folder, RecordKind::Folder, "fi_folderPath"));
        EXPECT_TRUE(byPath.emplace(path, folder).second) << path << " twice";
    }
    return byPath;
}

Value MailboxHost::FolderUri(const Text& profile, const Value& folder) {
    Value::Array uri(VxOutlookProvider::FieldsOf(RecordKind::Uri).size());
    uri[FieldIndex(RecordKind::Uri, "uri_type")] = Value(kFolderUri);
    uri[FieldIndex(RecordKind::Uri, "uri_ProfileName")] = Value(profile.Units());
    uri[FieldIndex(RecordKind::Uri, "uri_storeId")] = Get(folder, RecordKind::Folder, "fi_storeId");
    uri[FieldIndex(RecordKind::Uri, "uri_folderId")] = Get(folder, RecordKind::Folder, "fi_folderId");
    return Value(uri);
}

std::vector<Value> MailboxHost::AllItems(const Value& folderUri, std::int64_t modifiedSince) {
    std::vector<Value> items;
    for (;;) {
        Value page;
        std::int32_t unsupported = 0;
        host->QueryItems(folderUri, modifiedSince, false, page, unsupported);
        if (page.Elements().empty()) {
            return items;
        }
        items.insert(items.end(), page.Elements().begin(), page.Elements().end());
    }
}

namespace {

// The number of a folder or message within its entry id, which the last four bytes are.
std::uint32_t NodeOf(const std::u16string& entryId) {
    const std::string digits = Narrow(std::u16string_view(entryId)).substr(entryId.size() - 8);
    const auto written = static_cast<std::uint32_t>(std::stoul(digits, nullptr, 16));
    return written >> 24 | (written >> 8 & 0xFF00) | (written << 8 & 0xFF0000) | written << 24;
}

std::string SubjectOf(const mailbox_builder::Message& message) {
    const auto* subject = message.properties.Find(PR_SUBJECT_W);
    const auto* text = subject == nullptr ? nullptr : std::get_if<CStringW>(&subject->value);
    return text == nullptr ? "" : Narrow(std::u16string_view(std::u16string(text->begin(), text->end())));
}

}  // namespace

std::size_t MailboxHost::VisitSample(const Text& profile, const Value& store,
                                     const std::function<void(const ItemPlace&)>& visit) {
    std::map<std::uint32_t, const mailbox_builder::Message*> messages;
    for (const mailbox_builder::WrittenFolder& folder : SampleFolders()) {
        if (folder.description->place != mailbox_builder::Place::Visible) {
            continue;
        }
        for (std::size_t i = 0; i < folder.messages.size(); ++i) {
            messages[folder.messages[i].node] = &folder.description->messages[i];
        }
    }
    std::size_t unsupportedItems = 0;
    for (const auto& [path, folder] : FoldersOf(profile, store)) {
        const Value uri = FolderUri(profile, folder);
        for (;;) {
            Value page;
            std::int32_t unsupported = 0;
            host->QueryItems(uri, 0, false, page, unsupported);
            unsupportedItems += static_cast<std::size_t>(unsupported);
            if (page.Elements().empty()) {
                break;
            }
            for (const Value& item : page.Elements()) {
                const auto known = messages.find(NodeOf(Get(item, RecordKind::Uri, "uri_itemId").String()));
                if (known == messages.end()) {
                    ADD_FAILURE() << "an item in " << path << " that nobody wrote, or that was given before";
                    continue;
                }
                visit({item, known->second, path + ": " + SubjectOf(*known->second)});
                messages.erase(known);
            }
        }
    }
    EXPECT_EQ(messages.size(), unsupportedItems);
    for (const auto& [node, message] : messages) {
        EXPECT_EQ(ItemTypeOf(*message), -1) << "never given: " << SubjectOf(*message);
    }
    return unsupportedItems;
}

}  // namespace vx_testing
