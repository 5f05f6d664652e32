// The sample mailbox through the library: all that was written comes back through MAPI's interfaces.
#include "platform/Storage.h"
#include "tests/localmapi/library/Client.h"
#include "tests/localmapi/library/Expectations.h"

#include <algorithm>
#include <cstring>
#include <map>
#include <thread>

namespace vx_testing {

namespace {

using mailbox_builder::Form;
using mailbox_builder::Place;
using mailbox_builder::WrittenFolder;

class MailboxOfForm : public Client, public ::testing::WithParamInterface<Form> {};

std::string FirstOf(const std::vector<std::string>& differences) {
    std::string text = std::to_string(differences.size()) + " differences";
    for (std::size_t i = 0; i < std::min<std::size_t>(differences.size(), 20); ++i) {
        text += "\n  " + differences[i];
    }
    return text;
}

// The folders and how many messages of which class they hold, as the tables tell them.
TEST_P(MailboxOfForm, ListsTheFoldersAndItemsOfTheDescription) {
    ASSERT_EQ(MakeProfile("Test", SampleFile(GetParam())), S_OK) << lastProblem;
    const auto session = LogOn("Test");
    const auto store = OpenOnlyStore(*session);
    const mailbox_builder::Inventory expected = Sample().Count();
    std::map<std::string, std::size_t> byFolder;
    std::map<std::string, std::size_t> byClass;
    WalkFolders(*store, *OpenVisibleTree(*store), "", [&](const std::string& path, IMAPIFolder& folder) {
        ComPtr<IMAPITable> table;
        ASSERT_EQ(folder.GetContentsTable(MAPI_UNICODE, table.Receive()), S_OK);
        ULONG count = 0;
        ASSERT_EQ(table->GetRowCount(0, &count), S_OK);
        if (count > 0) {
            byFolder[path] = count;
        }
        const Rows rows = AllRows(*table, {PR_MESSAGE_CLASS_W});
        for (ULONG row = 0; row < rows->cRows; ++row) {
            ++byClass[NameOf(rows->aRow[row], 0)];
        }
    });
    std::map<std::string, std::size_t> wantedByFolder;
    for (const auto& [path, count] : expected.messagesByFolder) {
        if (count > 0) {
            wantedByFolder[Utf8(path)] = count;
        }
    }
    std::map<std::string, std::size_t> wantedByClass;
    for (const auto& [name, count] : expected.messagesByClass) {
        wantedByClass[Utf8(name)] = count;
    }
    if (GetParam() != Form::Ansi) {  // names of other scripts than the store's have no characters there
        EXPECT_EQ(byFolder, wantedByFolder);
    } else {
        EXPECT_EQ(byFolder.size(), wantedByFolder.size());
    }
    EXPECT_EQ(byClass, wantedByClass);
}

INSTANTIATE_TEST_SUITE_P(Forms, MailboxOfForm, ::testing::Values(Form::Unicode, Form::Ansi, Form::LargePages),
                         [](const ::testing::TestParamInfo<Form>& form) {
                             return std::string(form.param == Form::Unicode ? "Unicode"
                                                : form.param == Form::Ansi  ? "Ansi"
                                                                            : "LargePages");
                         });

using Mailbox = Client;

TEST_F(Mailbox, GivesEveryPropertyOfEveryItem) {
    ASSERT_EQ(MakeProfile("Test", SampleFile()), S_OK) << lastProblem;
    const auto session = LogOn("Test");
    const auto store = OpenOnlyStore(*session);
    std::vector<std::string> differences;
    for (const WrittenFolder& written : SampleFolders()) {
        const std::string path = Utf8(written.description->path);
        for (std::size_t i = 0; i < written.messages.size(); ++i) {
            const auto message = Open<IMessage>(*store, EntryIdOf(*store, written.messages[i].node));
            ASSERT_TRUE(message) << path << " " << i;
            CompareMessage(*message, written.description->messages[i], path + " " + std::to_string(i), differences);
        }
    }
    EXPECT_TRUE(differences.empty()) << FirstOf(differences);
}

// What a caller that reads plain text gets of messages in other forms.
TEST_F(Mailbox, MakesTheFormsOfABodyFromEachOther) {
    ASSERT_EQ(MakeProfile("Test", SampleFile()), S_OK) << lastProblem;
    const auto session = LogOn("Test");
    const auto store = OpenOnlyStore(*session);
    std::map<std::string, int> kinds;
    for (const WrittenFolder& written : SampleFolders()) {
        for (std::size_t i = 0; i < written.messages.size(); ++i) {
            const mailbox_builder::Properties& model = written.description->messages[i].properties;
            const bool hasText = model.Find(PR_BODY_W) != nullptr;
            const bool hasHtml = model.Find(PR_HTML) != nullptr;
            const bool hasRtf = model.Find(PR_RTF_COMPRESSED) != nullptr;
            const auto message = Open<IMessage>(*store, EntryIdOf(*store, written.messages[i].node));
            HRESULT result = S_OK;
            const std::string text = StreamOf(*message, PR_BODY_W, &result);
            if (!hasText && !hasHtml && !hasRtf) {
                EXPECT_EQ(result, MAPI_E_NOT_FOUND);
                ++kinds["none"];
            } else if (!hasText) {
                EXPECT_EQ(result, S_OK);
                EXPECT_GT(text.size(), 2U) << Utf8(written.description->path) << " " << i;
                EXPECT_EQ(text.find(std::string("<\0/", 3)), std::string::npos) << "markup in plain text";
                ++kinds[hasHtml ? "from HTML" : "from RTF"];
            }
            if (hasHtml) {
                const std::string bytes = StreamOf(*message, PR_HTML);
                EXPECT_EQ(StreamOf(*message, PROP_TAG(PT_STRING8, PROP_ID(PR_HTML))), bytes);
                EXPECT_GE(StreamOf(*message, PROP_TAG(PT_UNICODE, PROP_ID(PR_HTML))).size(), bytes.size() / 2);
            }
        }
    }
    EXPECT_GT(kinds["none"], 0);
    EXPECT_GT(kinds["from HTML"], 0);
    EXPECT_GT(kinds["from RTF"], 0);
}

TEST_F(Mailbox, NamesItsSpecialFolders) {
    ASSERT_EQ(MakeProfile("Test", SampleFile()), S_OK) << lastProblem;
    const auto session = LogOn("Test");
    const auto store = OpenOnlyStore(*session);
    ULONG size = 0;
    LPENTRYID inboxId = nullptr;
    ASSERT_EQ(store->GetReceiveFolder(nullptr, 0, &size, &inboxId, nullptr), S_OK);
    const Buffer<ENTRYID> hold(inboxId);
    const auto inbox = Open<IMAPIFolder>(*store, SBinary{size, reinterpret_cast<LPBYTE>(inboxId)});
    SPropValue* name = nullptr;
    ASSERT_EQ(HrGetOneProp(inbox.Get(), PR_DISPLAY_NAME_W, &name), S_OK);
    const Buffer<SPropValue> holdName(name);
    EXPECT_EQ(Utf8(name->Value.lpszW), "Inbox");
    for (const ULONG tag : {PR_IPM_SENTMAIL_ENTRYID, PR_IPM_WASTEBASKET_ENTRYID, PR_IPM_OUTBOX_ENTRYID}) {
        SPropValue* id = nullptr;
        ASSERT_EQ(HrGetOneProp(store.Get(), tag, &id), S_OK);
        const Buffer<SPropValue> holdId(id);
        EXPECT_TRUE(Open<IMAPIFolder>(*store, id->Value.bin));
    }
}

TEST_F(Mailbox, SaysWhatItIs) {
    ASSERT_EQ(MakeProfile("Test", SampleFile()), S_OK) << lastProblem;
    const auto session = LogOn("Test");
    ComPtr<IMAPITable> table;
    ASSERT_EQ(session->GetMsgStoresTable(0, table.Receive()), S_OK);
    const Rows rows = AllRows(*table, {PR_DEFAULT_STORE, PR_DISPLAY_NAME_W, PR_PROVIDER_DISPLAY_W, PR_ENTRYID,
                                       PR_MDB_PROVIDER, PR_RECORD_KEY});
    ASSERT_EQ(rows->cRows, 1U);
    EXPECT_EQ(Cell(rows, 0, 0).Value.b, 1);
    EXPECT_EQ(NameOf(rows->aRow[0], 1), "Sample mailbox");
    EXPECT_FALSE(NameOf(rows->aRow[0], 2).empty());
    static constexpr unsigned char kPst[] = {0x4E, 0x49, 0x54, 0x41, 0xF9, 0xBF, 0xB8, 0x01,
                                             0x00, 0xAA, 0x00, 0x37, 0xD9, 0x6E, 0x00, 0x00};
    const SBinary& provider = Cell(rows, 0, 4).Value.bin;
    ASSERT_EQ(provider.cb, 16U);
    EXPECT_EQ(std::memcmp(provider.lpb, kPst, 16), 0);

    // The store knows itself by the same ids, and another session finds them again.
    const auto store = OpenOnlyStore(*session);
    SPropValue* id = nullptr;
    ASSERT_EQ(HrGetOneProp(store.Get(), PR_ENTRYID, &id), S_OK);
    const Buffer<SPropValue> holdId(id);
    ULONG isSame = FALSE;
    const SBinary& listed = Cell(rows, 0, 3).Value.bin;
    ASSERT_EQ(store->CompareEntryIDs(listed.cb, reinterpret_cast<LPENTRYID>(listed.lpb), id->Value.bin.cb,
                                     reinterpret_cast<LPENTRYID>(id->Value.bin.lpb), 0, &isSame),
              S_OK);
    EXPECT_TRUE(isSame);
    SPropValue* key = nullptr;
    ASSERT_EQ(HrGetOneProp(store.Get(), PR_RECORD_KEY, &key), S_OK);
    const Buffer<SPropValue> holdKey(key);
    const SBinary& listedKey = Cell(rows, 0, 5).Value.bin;
    ASSERT_EQ(key->Value.bin.cb, listedKey.cb);
    EXPECT_EQ(std::memcmp(key->Value.bin.lpb, listedKey.lpb, listedKey.cb), 0);
}

TEST_F(Mailbox, RefusesToBeChanged) {
    ASSERT_EQ(MakeProfile("Test", SampleFile()), S_OK) << lastProblem;
    const auto session = LogOn("Test");
    const auto store = OpenOnlyStore(*session);
    const auto top = OpenVisibleTree(*store);
    IMessage* message = nullptr;
    EXPECT_EQ(top->CreateMessage(nullptr, 0, &message), MAPI_E_NO_ACCESS);
    EXPECT_EQ(message, nullptr);
    EXPECT_EQ(top->EmptyFolder(0, nullptr, 0), MAPI_E_NO_ACCESS);
    SPropValue value{};
    value.ulPropTag = PR_SUBFOLDERS;
    EXPECT_EQ(top->SetProps(1, &value, nullptr), MAPI_E_NO_ACCESS);
    EXPECT_EQ(top->SaveChanges(0), MAPI_E_NO_ACCESS);
    IUnknown* stream = nullptr;
    EXPECT_EQ(top->OpenProperty(PR_DISPLAY_NAME_W, &IID_IStream, STGM_READWRITE, 0, &stream), MAPI_E_NO_ACCESS);
    EXPECT_EQ(top->OpenProperty(PR_DISPLAY_NAME_W, &IID_IStream, 0, MAPI_MODIFY, &stream), MAPI_E_NO_ACCESS);
    EXPECT_EQ(stream, nullptr);
    MAPIERROR* error = nullptr;
    ASSERT_EQ(top->GetLastError(MAPI_E_NO_ACCESS, 0, &error), S_OK);
    const Buffer<MAPIERROR> hold(error);
    ASSERT_NE(error, nullptr);
    EXPECT_NE(std::string(reinterpret_cast<const char*>(error->lpszError)).find("reading only"), std::string::npos);
}

TEST_F(Mailbox, UnknownEntryIdsAreToldApart) {
    ASSERT_EQ(MakeProfile("Test", SampleFile()), S_OK) << lastProblem;
    const auto session = LogOn("Test");
    const auto store = OpenOnlyStore(*session);
    auto open = [&](localmapi::Bytes id) {
        ULONG type = 0;
        IUnknown* object = nullptr;
        const HRESULT result = store->OpenEntry(static_cast<ULONG>(id.size()), reinterpret_cast<LPENTRYID>(id.data()),
                                                nullptr, 0, &type, &object);
        EXPECT_EQ(object, nullptr);
        return result;
    };
    localmapi::Bytes known = EntryIdOf(*store, SampleFolders().front().id.node);
    EXPECT_EQ(open(localmapi::Bytes(known.begin(), known.begin() + 10)), MAPI_E_INVALID_ENTRYID);
    localmapi::Bytes foreign = known;
    foreign[8] ^= std::byte{0xFF};
    EXPECT_EQ(open(foreign), MAPI_E_UNKNOWN_ENTRYID);
    localmapi::Bytes missing = EntryIdOf(*store, 0x7FFFFE4);
    EXPECT_EQ(open(missing), MAPI_E_NOT_FOUND);
}

// Sessions share nothing that could get into each other's way.
TEST_F(Mailbox, IsReadByTwoThreadsWithASessionEach) {
    ASSERT_EQ(MakeProfile("Test", SampleFile()), S_OK) << lastProblem;
    std::size_t counts[2] = {0, 0};
    auto read = [](std::size_t& count) {
        const auto session = LogOn("Test");
        const auto store = OpenOnlyStore(*session);
        WalkFolders(*store, *OpenVisibleTree(*store), "", [&](const std::string&, IMAPIFolder& folder) {
            ComPtr<IMAPITable> table;
            ASSERT_EQ(folder.GetContentsTable(0, table.Receive()), S_OK);
            const Rows rows = AllRows(*table, {PR_ENTRYID, PR_SUBJECT_W});
            for (ULONG row = 0; row < rows->cRows; ++row) {
                const auto message = Open<IMessage>(*store, Cell(rows, row, 0).Value.bin);
                ULONG values = 0;
                SPropValue* properties = nullptr;
                EXPECT_TRUE(SUCCEEDED(message->GetProps(nullptr, MAPI_UNICODE, &values, &properties)));
                const Buffer<SPropValue> hold(properties);
                count += values;
            }
        });
    };
    std::thread first([&] { read(counts[0]); });
    std::thread second([&] { read(counts[1]); });
    first.join();
    second.join();
    EXPECT_GT(counts[0], 1000U);
    EXPECT_EQ(counts[0], counts[1]);
}

}  // namespace

}  // namespace vx_testing
