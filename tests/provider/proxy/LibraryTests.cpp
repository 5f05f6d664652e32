// The library as a host meets it, over local MAPI: what crosses the boundary between two modules, and from where.
#include "provider/InstanceProxy.h"
#include "testing/local_mapi/LocalMapi.h"
#include "tests/provider/proxy/ValueText.h"

#include <gtest/gtest.h>

#include <exception>
#include <future>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>

namespace VxOutlookProvider {

namespace {

// Published numbers of the codes.
constexpr HResult kInvalidArgument = static_cast<HResult>(0x80070057);
constexpr HResult kFail = static_cast<HResult>(0x80004005);

const Value& Get(const Value& record, RecordKind kind, std::string_view key) {
    return record.At(FieldIndex(kind, key));
}

// A host with a profile "work" on the sample mailbox.
class ProviderLibrary : public testing::Test {
protected:
    void SetUp() override {
        m_home.emplace();
        proxy.InitializeVxMapi(u"", u"Off");
        ASSERT_TRUE(proxy.CreateMAPIProfile(u"work"));
        ASSERT_TRUE(proxy.AddPSTToMAPIProfile(vx_testing::SampleFile().u16string(), u"work"));
    }

    Value FolderUri(std::u16string_view path) {
        Value stores;
        proxy.GetProfileStores(u"work", stores);
        const Value& storeId = Get(stores.At(0), RecordKind::Store, "si_storeId");
        Value folders;
        proxy.GetStoreFolders(u"work", storeId.String(), folders);
        for (const Value& folder : folders.Elements()) {
            if (Get(folder, RecordKind::Folder, "fi_folderPath").String() == path) {
                return Value::Array{6,       u"work", storeId, Get(folder, RecordKind::Folder, "fi_folderId"),
                                    nullptr, nullptr, nullptr, nullptr,
                                    nullptr};
            }
        }
        ADD_FAILURE() << "no folder " << TextOfUnits(path);
        return {};
    }

    // Everything that a query gives, page by page.
    Value::Array Items(const Value& folder) {
        Value::Array items;
        for (;;) {
            Value page;
            std::int32_t unsupported = 0;
            proxy.QueryItems(folder, 0, false, page, unsupported);
            if (page.Elements().empty()) {
                return items;
            }
            items.insert(items.end(), page.Elements().begin(), page.Elements().end());
        }
    }

    InstanceProxy proxy;

private:
    std::optional<vx_testing::LocalMapiHome> m_home;
};

// Whether a field may hold such a value.
bool Suits(const Field& field, const Value& value) {
    static const std::map<char, Value::Kind> kinds = {{'S', Value::Kind::Text},   {'I', Value::Kind::Int32},
                                                      {'L', Value::Kind::Int64},  {'B', Value::Kind::Bool},
                                                      {'D', Value::Kind::Double}, {'A', Value::Kind::Bytes}};
    const auto kind = kinds.find(field.type);
    return value.IsNull() || (kind != kinds.end() && value.GetKind() == kind->second);
}

void ExpectRecord(const Value& record, RecordKind kind) {
    const auto fields = FieldsOf(kind);
    ASSERT_EQ(record.Elements().size(), fields.size());
    for (std::size_t i = 0; i < fields.size(); ++i) {
        EXPECT_TRUE(Suits(fields[i], record.At(i))) << fields[i].key << " holds " << TextOf(record.At(i));
    }
}

}  // namespace

TEST_F(ProviderLibrary, TakesUrisBackAsItGaveThem) {
    std::set<std::string> contents;
    for (const Value& uri : Items(FolderUri(u"/Attachments"))) {
        ExpectRecord(uri, RecordKind::Uri);
        Value record;
        proxy.GetItemData(uri, 1, true, record);
        ExpectRecord(record, RecordKind::Item);
        EXPECT_EQ(Get(record, RecordKind::Item, "common_sFolderPath").String(), u"/Attachments");

        Value parts;
        std::int32_t reserved = 1;
        proxy.QueryAttachments(uri, parts, reserved);
        EXPECT_EQ(reserved, 0);
        for (const Value& part : parts.Elements()) {
            ExpectRecord(part, RecordKind::Uri);
            Value bytes;
            proxy.GetAttachment(part, 1, bytes);
            contents.insert(std::string(bytes.Data().begin(), bytes.Data().end()));
        }
    }
    for (int i = 1; i <= 40; ++i) {
        EXPECT_EQ(contents.count("part " + std::to_string(i) + "\r\n"), 1U) << i;
    }
}

TEST_F(ProviderLibrary, FailsWithExceptionsThatAreTheHostsOwn) {
    Value uri = FolderUri(u"/Inbox");
    std::u16string body = u"before";
    // As the library's own class, as the standard library's, and with nothing left over in the runtime's count.
    try {
        proxy.GetItemBody(uri, 1, body);
        FAIL() << "a folder has no body";
    } catch (const ResultException& failure) {
        EXPECT_EQ(failure.Code(), kInvalidArgument);
        EXPECT_STREQ(failure.what(), ResultText(kInvalidArgument).c_str());
    }
    EXPECT_THROW(proxy.GetItemBody(Value(6), 1, body), std::exception);
    EXPECT_EQ(std::uncaught_exceptions(), 0);
    EXPECT_EQ(body, u"before");

    // Between two failures the library is as usable as before.
    Value items;
    std::int32_t unsupported = 0;
    EXPECT_NO_THROW(proxy.QueryItems(uri, 0, false, items, unsupported));
    EXPECT_FALSE(items.Elements().empty());
}

TEST_F(ProviderLibrary, GivesNothingForWhatDoesNotExist) {
    Value value = u"before";
    proxy.GetStoreFolders(u"nobody", u"00", value);
    EXPECT_TRUE(value.IsNull()) << TextOf(value);
    value = u"before";
    proxy.GetStoreFolders(nullptr, nullptr, value);
    EXPECT_TRUE(value.IsNull()) << TextOf(value);
    std::u16string name = u"before";
    proxy.GetSpecialFolderName(u"work", u"00", 0, name);
    EXPECT_EQ(name, u"");
    name = u"before";
    proxy.GetExchangeServer(u"work", name);
    EXPECT_EQ(name, u"");
}

TEST_F(ProviderLibrary, NeedsToBeInitialized) {
    InstanceProxy fresh;
    Value profiles = u"before";
    try {
        fresh.GetSystemProfiles(profiles);
        FAIL() << "nothing was initialized";
    } catch (const ResultException& failure) {
        EXPECT_EQ(failure.Code(), kFail);
    }
    EXPECT_EQ(profiles, Value(u"before"));
    EXPECT_NO_THROW(fresh.InitializeVxMapi(nullptr, nullptr));
    fresh.GetSystemProfiles(profiles);
    EXPECT_EQ(Get(profiles.At(0), RecordKind::Profile, "pi_name").String(), u"work");
}

TEST_F(ProviderLibrary, InitializesOnTwoThreads) {
    const auto count = [] {
        InstanceProxy own;
        std::size_t profiles = 0;
        for (int i = 0; i < 5; ++i) {
            own.InitializeVxMapi(u"", u"Off");
            Value list;
            own.GetSystemProfiles(list);
            profiles += list.Elements().size();
            own.ReleaseVxMapi();
        }
        return profiles;
    };
    proxy.ReleaseVxMapi();
    auto other = std::async(std::launch::async, count);
    EXPECT_EQ(count(), 5U);
    EXPECT_EQ(other.get(), 5U);
}

TEST_F(ProviderLibrary, StopsReadingWhileAborted) {
    const Value folder = FolderUri(u"/Inbox");
    std::thread([this] { proxy.SetAbort(true); }).join();
    EXPECT_TRUE(Items(folder).empty());
    proxy.SetAbort(false);
    proxy.ClearFolderCache();
    EXPECT_FALSE(Items(folder).empty());
}

TEST(ResultTexts, NameTheCodeAndItsNumber) {
    struct Row {
        std::uint32_t code;
        const char* name;
        const char* text;
    };
    const Row rows[] = {
        {0x8004010F, "MAPI_E_NOT_FOUND", "MAPI_E_NOT_FOUND (0x8004010F)"},
        {0x80040111, "MAPI_E_LOGON_FAILED", "MAPI_E_LOGON_FAILED (0x80040111)"},
        {0x80990001, "0x80990001", "0x80990001"},
        {0x0000000A, "0x0000000A", "0x0000000A"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(ResultName(static_cast<HResult>(row.code)), row.name);
        EXPECT_EQ(ResultText(static_cast<HResult>(row.code)), row.text);
        EXPECT_STREQ(ResultException(static_cast<HResult>(row.code)).what(), row.text);
    }
}

// Positions are the protocol between host and provider.
TEST(RecordFields, StandWhereHostsKnowThem) {
    struct Row {
        RecordKind kind;
        std::size_t size;
        std::string_view key;
        std::size_t index;
        char type;
    };
    const Row rows[] = {
        {RecordKind::Profile, 3, "pi_isExchange", 2, 'B'},  {RecordKind::Store, 9, "si_storeType", 2, 'I'},
        {RecordKind::Folder, 6, "fi_modifiedTime", 5, 'L'}, {RecordKind::Uri, 9, "uri_type", 0, 'I'},
        {RecordKind::Item, 198, "email_sSubject", 36, 'S'}, {RecordKind::Item, 198, "folder_iCount", 1, '-'},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.key);
        EXPECT_EQ(FieldsOf(row.kind).size(), row.size);
        EXPECT_EQ(FieldIndex(row.kind, row.key), row.index);
        EXPECT_EQ(FieldsOf(row.kind)[row.index].type, row.type);
        EXPECT_THROW(static_cast<void>(FieldIndex(row.kind, "no_such_key")), std::out_of_range);
    }
    std::set<std::string_view> keys;
    for (const Field& field : FieldsOf(RecordKind::Item)) {
        EXPECT_TRUE(keys.insert(field.key).second) << field.key;
    }
    EXPECT_TRUE(FieldsOf(static_cast<RecordKind>(99)).empty());
}

}  // namespace VxOutlookProvider
