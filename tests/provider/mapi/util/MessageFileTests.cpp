// Messages and attachments into files, against a scripted message and the platform's own structured storage.
#include "mapi/MapiCodes.h"
#include "mapi/MapiFlags.h"
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "platform/Storage.h"
#include "provider/MAPIUtils.h"
#include "testing/StubInterfaces.h"
#include "tests/provider/mapi/util/FakeMapi.h"
#include "tests/provider/mapi/util/ScriptedStream.h"
#include "tests/provider/mapi/util/TestSupport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace {

constexpr DWORD kExclusive = STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

// The message that MAPI opens on the file's storage.
class TargetMessage : public vx_testing::StubMessage {
public:
    explicit TargetMessage(FakeMapi& mapi) : m_mapi(mapi) {}

    VxMapiPtr<IStorage> storage;  // a message keeps a reference to its storage
    HRESULT saveResult = S_OK;

    HRESULT STDMETHODCALLTYPE SaveChanges(ULONG flags) override {
        m_mapi.calls.push_back("SaveChanges " + std::to_string(flags));
        return saveResult;
    }
    ULONG STDMETHODCALLTYPE Release() override {
        m_mapi.calls.push_back("Release");
        storage.release();
        return StubMessage::Release();
    }

private:
    FakeMapi& m_mapi;
};

// The message that is saved: copying it makes one stream in the target's storage.
class SourceMessage : public vx_testing::StubMessage {
public:
    explicit SourceMessage(FakeMapi& mapi) : m_mapi(mapi) {}

    bool throws = false;
    HRESULT result = S_OK;

    HRESULT STDMETHODCALLTYPE CopyTo(ULONG excludedCount, LPCIID excluded, LPSPropTagArray excludedTags,
                                     ULONG_PTR window, LPMAPIPROGRESS progress, LPCIID interfaceId, LPVOID target,
                                     ULONG flags, LPSPropProblemArray* problems) override {
        m_mapi.calls.push_back("CopyTo");
        m_mapi.argumentsAsExpected &= excludedCount == 0 && excluded == nullptr && excludedTags == nullptr
                                      && window == 0 && progress == nullptr && IsEqualIID(*interfaceId, IID_IMessage)
                                      && flags == 0 && problems == nullptr;
        if (throws) {
            throw std::runtime_error("the message's provider failed");
        }
        VxMapiPtr<IStream> stream;
        IStorage* const storage = static_cast<TargetMessage*>(static_cast<IMessage*>(target))->storage;
        EXPECT_EQ(storage->CreateStream("__body"_w, STGM_CREATE | kExclusive, 0, 0, &stream), S_OK);
        return result;
    }

private:
    FakeMapi& m_mapi;
};

class MessageInFile : public testing::Test {
protected:
    MessageInFile() {
        mapi.openMessage = [this](IStorage* storage, ULONG flags, LPMESSAGE* message) -> HRESULT {
            if (flags == refusedFlags || refusesAll) {
                return MAPI_E_BAD_CHARWIDTH;
            }
            storage->AddRef();
            target.storage.reset(storage);
            target.AddRef();
            *message = &target;
            return S_OK;
        };
    }

    static void ExpectMessageFile(const CStringW& path) {
        VxMapiPtr<IStorage> storage;
        VxMapiPtr<IStream> stream;
        STATSTG stat = {};
        ASSERT_EQ(StgOpenStorage(path.c_str(), nullptr, STGM_READ | STGM_SHARE_DENY_WRITE, nullptr, 0, &storage), S_OK);
        ASSERT_EQ(storage->Stat(&stat, STATFLAG_NONAME), S_OK);
        EXPECT_TRUE(IsEqualGUID(stat.clsid, OleGuid(0x00020D0B)));
        EXPECT_EQ(storage->OpenStream("__body"_w, nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &stream), S_OK);
    }

    // Every reference and session has come back.
    void ExpectNothingLeft() {
        EXPECT_EQ(target.References(), 1U);
        EXPECT_EQ(source.References(), 1U);
        EXPECT_EQ(FakeMapi::OpenSessions(), 0);
        EXPECT_TRUE(mapi.argumentsAsExpected);
    }

    TempFolder folder;
    FakeMapi mapi;
    TargetMessage target{mapi};
    SourceMessage source{mapi};
    ULONG refusedFlags = 0xFFFFFFFF;
    bool refusesAll = false;
};

TEST_F(MessageInFile, IsCopiedSavedCommittedAndClosedInThisOrder) {
    CStringW path = folder.File("a.msg");
    ASSERT_EQ(CMapiUtil::SaveMessageInFile(&source, path), S_OK);
    EXPECT_EQ(path, folder.File("a.msg"));
    EXPECT_EQ(mapi.calls, (std::vector<std::string>{"OpenIMsgSession", "OpenIMsgOnIStg 80000000", "CopyTo",
                                                    "SaveChanges 2", "Release", "CloseIMsgSession"}));
    ExpectMessageFile(path);
    ExpectNothingLeft();
}

TEST_F(MessageInFile, ReplacesTheFileAndNotesOneThatIsNotThere) {
    CStringW path = folder.File("a.msg");
    const LogCapture log;
    ASSERT_EQ(CMapiUtil::SaveMessageInFile(&source, path), S_OK);
    EXPECT_EQ(log.Texts("DEBUG"), std::vector<std::string>{"DeleteFile failed - error code: 2"});
    WriteFile(path, std::string(100000, 'x'));
    const LogCapture again;
    ASSERT_EQ(CMapiUtil::SaveMessageInFile(&source, path), S_OK);
    EXPECT_TRUE(again.Lines().empty());
    ExpectMessageFile(path);
    EXPECT_LT(std::filesystem::file_size(ToPath(path)), 100000U);
}

TEST_F(MessageInFile, IsWrittenIn8BitTextWhereTheWideFormIsRefused) {
    refusedFlags = 0x80000000;
    CStringW path = folder.File("a.msg");
    ASSERT_EQ(CMapiUtil::SaveMessageInFile(&source, path), S_OK);
    EXPECT_EQ(mapi.calls[1], "OpenIMsgOnIStg 80000000");
    EXPECT_EQ(mapi.calls[2], "OpenIMsgOnIStg 00000000");
    ExpectMessageFile(path);
    ExpectNothingLeft();
}

TEST_F(MessageInFile, LeavesNoFileWhenNoMessageCanBeOpened) {
    refusesAll = true;
    CStringW path = folder.File("a.msg");
    EXPECT_EQ(CMapiUtil::SaveMessageInFile(&source, path), MAPI_E_BAD_CHARWIDTH);
    EXPECT_FALSE(std::filesystem::exists(ToPath(path)));
    ExpectNothingLeft();
}

TEST_F(MessageInFile, IsJudgedByTheCommitAlone) {
    source.result = MAPI_E_CALL_FAILED;
    target.saveResult = MAPI_E_NO_ACCESS;
    mapi.openSessionResult = MAPI_E_NOT_ENOUGH_MEMORY;
    CStringW path = folder.File("a.msg");
    EXPECT_EQ(CMapiUtil::SaveMessageInFile(&source, path), S_OK);
    ExpectMessageFile(path);
    ExpectNothingLeft();
}

TEST_F(MessageInFile, ClosesTheSessionWhenAnExceptionPasses) {
    source.throws = true;
    CStringW path = folder.File("a.msg");
    EXPECT_THROW(CMapiUtil::SaveMessageInFile(&source, path), std::runtime_error);
    EXPECT_EQ(mapi.calls.back(), "CloseIMsgSession");
    ExpectNothingLeft();
}

// A file that somebody works in, and no other may open; null where the system does not refuse it as it should.
VxMapiPtr<IStorage> UseFile(const CStringW& path) {
    VxMapiPtr<IStorage> user;
    EXPECT_EQ(StgCreateDocfile(path.c_str(), STGM_CREATE | kExclusive, 0, &user), S_OK);
    EXPECT_EQ(user->Commit(STGC_DEFAULT), S_OK);
    VxMapiPtr<IStorage> second;
    const bool refused = StgCreateDocfile(path.c_str(), STGM_TRANSACTED | STGM_CREATE | STGM_READWRITE, 0, &second)
                         == STG_E_ACCESSDENIED;
    return refused ? std::move(user) : VxMapiPtr<IStorage>();
}

TEST_F(MessageInFile, TakesAnotherNameWhenTheFileIsInUse) {
    const CStringW used = folder.File("a.b.msg");
    const VxMapiPtr<IStorage> user = UseFile(used);
    if (user.get() == nullptr) {
        GTEST_SKIP() << "this system's storage does not answer STG_E_ACCESSDENIED for a file in use";
    }
    CStringW path = used;
    ASSERT_EQ(CMapiUtil::SaveMessageInFile(&source, path), S_OK);
    EXPECT_EQ(path, folder.File("a.b_tmp.msg"));
    ExpectMessageFile(path);

    VxMapiPtr<IStorage> userOfOther;
    ASSERT_EQ(StgOpenStorage(path.c_str(), nullptr, kExclusive, nullptr, 0, &userOfOther), S_OK);
    path = used;
    EXPECT_EQ(CMapiUtil::SaveMessageInFile(&source, path), STG_E_ACCESSDENIED) << "one other name is tried, no more";
    EXPECT_EQ(path, folder.File("a.b_tmp.msg"));
    EXPECT_EQ(user->Commit(STGC_DEFAULT), S_OK) << "the file in use is still its user's";
    ExpectNothingLeft();
}

TEST_F(MessageInFile, HasNoOtherNameWithoutADot) {
    const CStringW used = folder.File("message");
    const VxMapiPtr<IStorage> user = UseFile(used);
    if (user.get() == nullptr) {
        GTEST_SKIP() << "this system's storage does not answer STG_E_ACCESSDENIED for a file in use";
    }
    CStringW path = used;
    EXPECT_EQ(CMapiUtil::SaveMessageInFile(&source, path), STG_E_ACCESSDENIED);
    EXPECT_EQ(path, used);
    ExpectNothingLeft();
}

// ---- Attachments ----

class ScriptedAttach : public vx_testing::StubAttach {
public:
    CStringW shortName, longName, displayName;  // empty: the property is missing
    HRESULT propsResult = S_OK;

    // What OpenProperty answers; everything else is missing.
    struct Data {
        ULONG tag;
        IID iid;
        IUnknown* object;
    };
    std::vector<Data> data;
    std::vector<std::string> asked;  // tag and interface, in order

    HRESULT STDMETHODCALLTYPE GetProps(LPSPropTagArray tags, ULONG, ULONG* count, LPSPropValue* values) override {
        if (FAILED(propsResult)) {
            return propsResult;
        }
        *count = tags->cValues;
        *values = FakeMapi::NewProps(tags->cValues);
        for (ULONG i = 0; i < tags->cValues; ++i) {
            SPropValue& value = (*values)[i];
            CStringW* const text = Text(tags->aulPropTag[i]);
            if (text == nullptr || text->empty()) {
                value.ulPropTag = PROP_TAG(PT_ERROR, PROP_ID(tags->aulPropTag[i]));
                value.Value.err = MAPI_E_NOT_FOUND;
            } else {
                value.ulPropTag = tags->aulPropTag[i];
                value.Value.lpszW = text->data();
            }
        }
        return propsResult;
    }

    HRESULT STDMETHODCALLTYPE OpenProperty(ULONG tag, LPCIID iid, ULONG, ULONG, LPUNKNOWN* object) override {
        char text[32];
        std::snprintf(text, sizeof(text), "%08X %08X", static_cast<unsigned>(tag), static_cast<unsigned>(iid->Data1));
        asked.push_back(text);
        for (const Data& row : data) {
            if (row.tag == tag && IsEqualIID(row.iid, *iid)) {
                row.object->AddRef();
                *object = row.object;
                return S_OK;
            }
        }
        return MAPI_E_NOT_FOUND;
    }

private:
    CStringW* Text(ULONG tag) {
        return tag == 0x3704001F   ? &shortName
               : tag == 0x3707001F ? &longName
               : tag == 0x3001001F ? &displayName
                                   : nullptr;
    }
};

class AttachmentTable : public vx_testing::StubTable {
public:
    HRESULT columnsResult = S_OK;
    HRESULT seekResult = S_OK;
    std::vector<ULONG> columns;

    HRESULT STDMETHODCALLTYPE SetColumns(LPSPropTagArray tags, ULONG) override {
        columns.assign(tags->aulPropTag, tags->aulPropTag + tags->cValues);
        return columnsResult;
    }
    HRESULT STDMETHODCALLTYPE SeekRow(BOOKMARK origin, LONG rowCount, LONG*) override {
        return origin == BOOKMARK_BEGINNING && rowCount == 0 ? seekResult : E_INVALIDARG;
    }
};

struct TableRow {
    ULONG method;
    ULONG number;
    bool methodMissing = false;
    bool numberMissing = false;
    bool empty = false;  // a row without values
};

// A message with attachments after a list of rows.
class MessageWithAttachments : public vx_testing::StubMessage {
public:
    explicit MessageWithAttachments(FakeMapi& mapi, std::vector<TableRow> given) : rows(std::move(given)) {
        mapi.queryAllRows = [this](LPSRowSet* set) {
            if (SUCCEEDED(queryResult)) {
                *set = MakeRows();
            }
            return queryResult;
        };
    }

    std::vector<TableRow> rows;
    AttachmentTable table;
    ScriptedAttach attach;
    HRESULT tableResult = S_OK;
    HRESULT queryResult = S_OK;
    HRESULT openResult = S_OK;
    std::vector<ULONG> opened;  // number and flags of OpenAttach

    HRESULT STDMETHODCALLTYPE GetAttachmentTable(ULONG, LPMAPITABLE* given) override {
        if (SUCCEEDED(tableResult)) {
            table.AddRef();
            *given = &table;
        }
        return tableResult;
    }
    HRESULT STDMETHODCALLTYPE OpenAttach(ULONG number, LPCIID, ULONG flags, LPATTACH* given) override {
        opened = {number, flags};
        if (SUCCEEDED(openResult)) {
            attach.AddRef();
            *given = &attach;
        }
        return openResult;
    }

    // Every reference and block has come back.
    void ExpectNothingLeft() {
        EXPECT_EQ(table.References(), 1U);
        EXPECT_EQ(attach.References(), 1U);
        EXPECT_EQ(FakeMapi::LiveBlocks(), 0);
    }

private:
    LPSRowSet MakeRows() const {
        const LPSRowSet set = FakeMapi::NewRows(static_cast<ULONG>(rows.size()));
        for (std::size_t i = 0; i < rows.size(); ++i) {
            SRow& row = set->aRow[i];
            row.lpProps[0].ulPropTag = rows[i].methodMissing ? PROP_TAG(PT_ERROR, 0x3705) : 0x37050003;
            row.lpProps[0].Value.ul = rows[i].method;
            row.lpProps[1].ulPropTag = rows[i].numberMissing ? PROP_TAG(PT_ERROR, 0x0E21) : 0x0E210003;
            row.lpProps[1].Value.ul = rows[i].number;
            row.cValues = rows[i].empty ? 0 : 2;
        }
        return set;
    }
};

TEST(Attachment, IsFoundByItsNumberAndOpenedByItsMethod) {
    struct Row {
        const char* name;
        std::vector<TableRow> rows;
        bool expected;
        ULONG method;
    };
    const Row rows[] = {
        {"by value", {{1, 3}}, true, 1},
        {"embedded message", {{5, 3}}, true, 5},
        {"OLE object", {{6, 3}}, true, 6},
        {"no attachment at all", {{0, 3}}, false, 0},
        {"by reference", {{2, 3}}, false, 2},
        {"by reference, resolved", {{3, 3}}, false, 3},
        {"reference only", {{4, 3}}, false, 4},
        {"on the web", {{7, 3}}, false, 7},
        {"among others", {{1, 0}, {5, 1}, {6, 3}}, true, 6},
        {"the first of two", {{5, 3}, {1, 3}}, true, 5},
        {"not there", {{1, 0}, {1, 2}}, false, 99},
        {"no rows", {}, false, 99},
        {"a row without number is skipped", {{1, 3, false, true}, {6, 3}}, true, 6},
        {"a row without values is skipped", {{1, 3, false, false, true}, {6, 3}}, true, 6},
        {"a row without method ends the search", {{1, 3, true}, {6, 3}}, false, 99},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        FakeMapi mapi;
        MessageWithAttachments message(mapi, row.rows);
        message.attach.longName = "n.txt"_w;
        VxMapiPtr<IAttach> attach;
        ULONG method = 99;
        CStringW name;
        EXPECT_EQ(CMapiUtil::GetAttachment(3, &message, attach, method, name), row.expected);
        EXPECT_EQ(method, row.method);
        EXPECT_EQ(attach.get(), row.expected ? &message.attach : nullptr);
        EXPECT_EQ(name, row.expected ? CStringW("n.txt"_w) : CStringW());
        EXPECT_EQ(message.table.columns, (std::vector<ULONG>{0x37050003, 0x0E210003}));
        EXPECT_EQ(message.opened, row.expected ? (std::vector<ULONG>{3, 0x10}) : std::vector<ULONG>());
        EXPECT_TRUE(mapi.argumentsAsExpected);
        attach.release();
        message.ExpectNothingLeft();
    }
}

TEST(Attachment, IsNotFoundWhenAStepFails) {
    for (int step = 0; step < 5; ++step) {
        SCOPED_TRACE(step);
        FakeMapi mapi;
        MessageWithAttachments message(mapi, {{1, 3}});
        HRESULT* const results[] = {&message.tableResult, &message.table.columnsResult, &message.table.seekResult,
                                    &message.queryResult, &message.openResult};
        *results[step] = MAPI_E_CALL_FAILED;
        VxMapiPtr<IAttach> attach;
        ULONG method = 0;
        CStringW name;
        EXPECT_FALSE(CMapiUtil::GetAttachment(3, &message, attach, method, name));
        EXPECT_EQ(attach.get(), nullptr);
        message.ExpectNothingLeft();
    }
}

TEST(AttachmentName, IsTheLongShortOrDisplayName) {
    struct Row {
        const char* name;
        CStringW longName, shortName, displayName;
        HRESULT propsResult;
        CStringW expected;
    };
    const Row rows[] = {
        {"all", "long.txt"_w, "SHORT.TXT"_w, "Display"_w, S_OK, "long.txt"_w},
        {"no long one", ""_w, "SHORT.TXT"_w, "Display"_w, MAPI_W_ERRORS_RETURNED, "SHORT.TXT"_w},
        {"display name only", ""_w, ""_w, "Display"_w, MAPI_W_ERRORS_RETURNED, "Display"_w},
        {"none", ""_w, ""_w, ""_w, MAPI_W_ERRORS_RETURNED, ""_w},
        {"call fails", "long.txt"_w, ""_w, ""_w, MAPI_E_NO_ACCESS, ""_w},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        FakeMapi mapi;
        MessageWithAttachments message(mapi, {{1, 3}});
        message.attach.longName = row.longName;
        message.attach.shortName = row.shortName;
        message.attach.displayName = row.displayName;
        message.attach.propsResult = row.propsResult;
        VxMapiPtr<IAttach> attach;
        ULONG method = 0;
        CStringW name;
        EXPECT_TRUE(CMapiUtil::GetAttachment(3, &message, attach, method, name));
        EXPECT_EQ(name, row.expected);
        attach.release();
        message.ExpectNothingLeft();
    }
}

TEST(AttachmentOnDisk, TakesTheFirstFormOfDataThatOpens) {
    constexpr IID kDocfileStream = OleGuid(0x0002032C);
    constexpr IID kStream = OleGuid(0x0000000C);
    enum class Form { None, Stream, Storage };
    struct Row {
        const char* name;
        ULONG method;
        ULONG tag;
        IID iid;
        Form form;
        std::vector<std::string> asked;
        bool written;
    };
    const std::string docfileObject = "3701000D 0002032C", docfileBinary = "37010102 0002032C",
                      storageObject = "3701000D 0000000B", streamBinary = "37010102 0000000C";
    const Row rows[] = {
        {"by value", 1, 0x37010102, kStream, Form::Stream, {streamBinary}, true},
        {"by value without data", 1, 0x37010102, kStream, Form::None, {streamBinary}, false},
        {"embedded message", 5, 0x37010102, kStream, Form::Stream, {}, false},
        {"OLE object as a stream", 6, 0x3701000D, kDocfileStream, Form::Stream, {docfileObject}, true},
        {"OLE object in the binary property",
         6,
         0x37010102,
         kDocfileStream,
         Form::Stream,
         {docfileObject, docfileBinary},
         true},
        {"OLE object as a storage",
         6,
         0x3701000D,
         OleGuid(0x0000000B),
         Form::Storage,
         {docfileObject, docfileBinary, storageObject},
         true},
        {"OLE object without data", 6, 0, kStream, Form::None, {docfileObject, docfileBinary, storageObject}, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const TempFolder folder;
        const CStringW path = folder.File("data.bin");
        FakeMapi mapi;
        MessageWithAttachments message(mapi, {{row.method, 3}});
        message.attach.longName = "other.name"_w;
        vx_testing::ScriptedStream stream;
        stream.bytes.assign(65536 * 2 + 1, 'd');
        VxMapiPtr<ILockBytes> bytes;
        VxMapiPtr<IStorage> storage;
        ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, &bytes), S_OK);
        ASSERT_EQ(StgCreateDocfileOnILockBytes(bytes, STGM_CREATE | kExclusive, 0, &storage), S_OK);
        if (row.form == Form::Stream) {
            message.attach.data = {{row.tag, row.iid, &stream}};
        } else if (row.form == Form::Storage) {
            message.attach.data = {{row.tag, row.iid, storage}};
        }
        EXPECT_EQ(CMapiUtil::SaveMsgAttachmentOnDisk(3, &message, path), row.written ? path : CStringW());
        EXPECT_EQ(message.attach.asked, row.asked);
        if (row.written && row.form == Form::Stream) {
            EXPECT_EQ(ReadFile(path), std::string(stream.bytes.begin(), stream.bytes.end()));
        } else if (row.written) {
            EXPECT_EQ(StgIsStorageFile(path.c_str()), S_OK);
        } else {
            EXPECT_FALSE(std::filesystem::exists(ToPath(path)));
        }
        EXPECT_EQ(stream.References(), 1U);
        message.ExpectNothingLeft();
    }
}

TEST(AttachmentOnDisk, KeepsWhatABrokenStreamGaveAndNeedsAFile) {
    const TempFolder folder;
    FakeMapi mapi;
    MessageWithAttachments message(mapi, {{1, 3}});
    vx_testing::ScriptedStream stream;
    stream.bytes.assign(100000, 'd');
    stream.failAt = 65536;
    message.attach.data = {{0x37010102, OleGuid(0x0000000C), &stream}};
    const CStringW path = folder.File("data.bin");
    EXPECT_EQ(CMapiUtil::SaveMsgAttachmentOnDisk(3, &message, path), path);
    EXPECT_EQ(ReadFile(path), std::string(65536, 'd'));
    EXPECT_EQ(CMapiUtil::SaveMsgAttachmentOnDisk(3, &message, FromPath(folder.Path() / "no" / "a")), CStringW());
    EXPECT_EQ(CMapiUtil::SaveMsgAttachmentOnDisk(4, &message, path), CStringW());
    message.ExpectNothingLeft();
}

}  // namespace
