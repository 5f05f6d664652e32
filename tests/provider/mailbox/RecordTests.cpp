// All items of the sample, in all forms of files: every field of every record against the description.
#include "tests/provider/mailbox/ExpectedRecords.h"
#include "tests/provider/mailbox/MailboxHost.h"

#include <array>
#include <map>
#include <set>

namespace vx_testing {
namespace {

using mailbox_builder::Form;
using mailbox_builder::Message;

class Records : public MailboxHost, public ::testing::WithParamInterface<Form> {
protected:
    Value DataOf(const Value& uri, Format format) {
        Value record;
        host->GetItemData(uri, format, false, record);
        return record;
    }

    // Compares an item and the items that are embedded in it, and counts both.
    void Compare(const Value& uri, const Message& message, bool isEmbedded, const std::string& where) {
        ++counted[ItemTypeOf(message)];
        embedded += isEmbedded ? 1 : 0;
        const Value record = DataOf(uri, kPlain);
        CompareRecord(record, message, isEmbedded, where, differences);
        for (const std::string& key : ComparedKeys()) {
            const Value& value = Get(record, key);
            if (value.Integer() != 0 || value.Boolean() || value.Real() != 0 || !value.String().empty()) {
                seen.insert(key);
            }
        }
        Value attachments;
        std::int32_t reserved = -1;
        host->QueryAttachments(uri, attachments, reserved);
        EXPECT_EQ(reserved, 0);
        for (const Value& attachment : attachments.Elements()) {
            const std::string path = Narrow(Get(attachment, RecordKind::Uri, "uri_attachmentNum"));
            const std::size_t name = path.rfind("VxEMBITEM");
            if (name == std::string::npos || path.find('/', name) != std::string::npos) {
                continue;
            }
            const auto& described = message.attachments.at(std::stoul(path.substr(name + 9)));
            if (described.embedded != nullptr) {
                Compare(attachment, *described.embedded, true, where + " > " + path);
            }
        }
    }

    std::vector<std::string> differences;
    std::map<int, std::size_t> counted;
    std::size_t embedded = 0;
    std::set<std::string> seen;  // keys that had a value which says something
};

TEST_P(Records, SayWhatWasWritten) {
    const Value store = AddMailbox(u"Mail", SampleFile(GetParam()));
    const std::size_t unsupported = VisitSample(u"Mail", store, [&](const ItemPlace& item) {
        const bool isAnsi = GetParam() == Form::Ansi;
        Compare(item.uri, isAnsi ? InItsPage(*item.description) : *item.description, false, item.where);
    });
    for (const std::string& difference : differences) {
        ADD_FAILURE() << difference;
    }
    for (const int type : {1, 3, 6, 7, 14}) {
        EXPECT_GT(counted[type], 3U) << type;
    }
    EXPECT_GT(embedded, 5U);
    for (const std::string& key : ComparedKeys()) {
        EXPECT_TRUE(seen.contains(key)) << key << " never had a value";
    }
    EXPECT_GT(unsupported, 0U);
}

std::string FormName(const ::testing::TestParamInfo<Form>& info) {
    constexpr std::array<const char*, 3> kNames = {"Unicode", "Ansi", "LargePages"};
    return kNames.at(static_cast<std::size_t>(info.param));
}

INSTANTIATE_TEST_SUITE_P(Files, Records, ::testing::Values(Form::Unicode, Form::Ansi, Form::LargePages), FormName);

}  // namespace
}  // namespace vx_testing
