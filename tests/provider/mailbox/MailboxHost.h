// A host over local MAPI, for tests of the whole way: from a mailbox file through the provider to values.
#pragma once

#include "provider/InstanceProxy.h"
#include "testing/local_mapi/LocalMapi.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vx_testing {

using VxOutlookProvider::FieldIndex;
using VxOutlookProvider::InstanceProxy;
using VxOutlookProvider::RecordKind;
using VxOutlookProvider::Text;
using VxOutlookProvider::Value;

inline constexpr int kFolderUri = 6;
inline constexpr int kItemUri = 8;
inline constexpr int kAttachmentUri = 9;

enum Format : int { kNone = 0, kPlain = 1, kRtf = 2, kHtml = 3, kFile = 4, kSection = 6 };

// A field of a record by its key.
const Value& Get(const Value& record, RecordKind kind, std::string_view key);
inline const Value& Get(const Value& item, std::string_view key) {
    return Get(item, RecordKind::Item, key);
}

// Surrogates without their partners become U+FFFD, as in all that reaches a host.
std::u16string WellFormed(std::u16string text);

// UTF-8, for messages and comparisons.
std::string Narrow(std::u16string_view text);
inline std::string Narrow(const Value& text) {
    return Narrow(std::u16string_view(text.String()));
}
std::u16string Wide(const std::filesystem::path& path);

// An item's URI, and the place of what it names in the description that the file was written from.
struct ItemPlace {
    Value uri;
    const mailbox_builder::Message* description = nullptr;
    std::string where;  // folder and subject, for messages
};

// Each test has a home of its own, the provider initialised on local MAPI, and at its end, once the provider has released
// everything, nothing of MAPI's left alive.
class MailboxHost : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // Makes a profile of one store on the file; its record.
    Value AddMailbox(const Text& profile, const std::filesystem::path& file);

    // The folders of a store by path ("/Inbox"), their records. The topmost one, which has the path of a folder with the
    // store's name, is "/".
    std::map<std::string, Value> FoldersOf(const Text& profile, const Value& store);

    static Value FolderUri(const Text& profile, const Value& folder);

    // All items of a folder, page by page.
    std::vector<Value> AllItems(const Value& folderUri, std::int64_t modifiedSince = 0);

    // Calls for each item of the sample with its description, page by page; items of classes that the provider does not
    // know have no URI and are not visited. The number of those.
    std::size_t VisitSample(const Text& profile, const Value& store,
                            const std::function<void(const ItemPlace& item)>& visit);

    const std::filesystem::path& Home() const { return m_home->Path(); }

    std::optional<InstanceProxy> host;

private:
    std::optional<LocalMapiHome> m_home;
};

}  // namespace vx_testing
