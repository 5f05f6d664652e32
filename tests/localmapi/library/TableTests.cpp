// The contents table of a folder as clients use it: sorted by time, restricted, searched, counted around a window.
#include "tests/localmapi/library/Client.h"

#include <algorithm>
#include <cstring>

namespace vx_testing {

namespace {

class ContentsTable : public Client {
protected:
    void SetUp() override {
        Client::SetUp();
        ASSERT_EQ(MakeProfile("Test", SampleFile()), S_OK) << lastProblem;
        m_session = LogOn("Test");
        m_store = OpenOnlyStore(*m_session);
        std::size_t most = 0;
        WalkFolders(*m_store, *OpenVisibleTree(*m_store), "", [&](const std::string&, IMAPIFolder& folder) {
            ComPtr<IMAPITable> contents;
            ASSERT_EQ(folder.GetContentsTable(MAPI_UNICODE, contents.Receive()), S_OK);
            ULONG count = 0;
            ASSERT_EQ(contents->GetRowCount(0, &count), S_OK);
            if (count > most) {
                most = count;
                table = contents;
            }
        });
        ASSERT_GT(most, 20U);
        rowCount = static_cast<ULONG>(most);
        SizedSPropTagArray<3> columns{.aulPropTag = {PR_ENTRYID, PR_LAST_MODIFICATION_TIME, PR_SUBJECT_W}};
        ASSERT_EQ(table->SetColumns(columns, 0), S_OK);
    }
    void TearDown() override {
        table = {};
        m_store = {};
        m_session = {};
        Client::TearDown();
    }

    void SortByTime(ULONG order) {
        SizedSSortOrderSet<1> sort{.aSort = {{PR_LAST_MODIFICATION_TIME, order}}};
        ASSERT_EQ(table->SortTable(sort, 0), S_OK);
    }

    std::vector<std::uint64_t> Times() {
        SRowSet* rows = nullptr;
        EXPECT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
        EXPECT_EQ(table->QueryRows(100'000, 0, &rows), S_OK);
        const Rows hold(rows);
        std::vector<std::uint64_t> times;
        for (ULONG row = 0; row < rows->cRows; ++row) {
            const FILETIME& time = rows->aRow[row].lpProps[1].Value.ft;
            times.push_back((std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime);
        }
        return times;
    }

    static SRestriction TimeIs(ULONG relation, SPropValue& value, std::uint64_t time) {
        value = {};
        value.ulPropTag = PR_LAST_MODIFICATION_TIME;
        value.Value.ft = {static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
        SRestriction restriction{};
        restriction.rt = RES_PROPERTY;
        restriction.res.resProperty = {relation, PR_LAST_MODIFICATION_TIME, &value};
        return restriction;
    }

    ComPtr<IMAPITable> table;
    ULONG rowCount = 0;

private:
    ComPtr<IMAPISession> m_session;
    ComPtr<IMsgStore> m_store;
};

TEST_F(ContentsTable, IsSortedBothWays) {
    SortByTime(TABLE_SORT_ASCEND);
    const auto ascending = Times();
    EXPECT_EQ(ascending.size(), rowCount);
    EXPECT_TRUE(std::is_sorted(ascending.begin(), ascending.end()));
    SortByTime(TABLE_SORT_DESCEND);
    auto descending = Times();
    std::reverse(descending.begin(), descending.end());
    EXPECT_EQ(ascending, descending);
}

TEST_F(ContentsTable, IsRestrictedToWhatIsNewerAndToOneItem) {
    SortByTime(TABLE_SORT_ASCEND);
    const auto all = Times();
    const std::uint64_t middle = all[all.size() / 2];
    SPropValue value{};
    SRestriction newer = TimeIs(RELOP_GE, value, middle);
    ASSERT_EQ(table->Restrict(&newer, 0), S_OK);
    const auto left = Times();
    EXPECT_EQ(static_cast<long>(left.size()), all.end() - std::lower_bound(all.begin(), all.end(), middle));
    EXPECT_GE(left.front(), middle);
    ASSERT_EQ(table->Restrict(nullptr, 0), S_OK);
    EXPECT_EQ(Times(), all);

    // One item by the id that clients have, which the file may know under either of two names.
    SRowSet* rows = nullptr;
    ASSERT_EQ(table->SeekRow(BOOKMARK_BEGINNING, 7, nullptr), S_OK);
    ASSERT_EQ(table->QueryRows(1, 0, &rows), S_OK);
    const Rows hold(rows);
    SPropValue id = rows->aRow[0].lpProps[0];
    SRestriction either[2] = {};
    either[0].rt = RES_PROPERTY;
    either[0].res.resProperty = {RELOP_EQ, PROP_TAG(PT_BINARY, 0x6670), &id};
    either[1].rt = RES_PROPERTY;
    either[1].res.resProperty = {RELOP_EQ, PR_ENTRYID, &id};
    SRestriction one{};
    one.rt = RES_OR;
    one.res.resOr = {2, either};
    ASSERT_EQ(table->Restrict(&one, 0), S_OK);
    ULONG count = 0;
    ASSERT_EQ(table->GetRowCount(0, &count), S_OK);
    EXPECT_EQ(count, 1U);
    SRowSet* found = nullptr;
    ASSERT_EQ(table->QueryRows(30, 0, &found), S_OK);
    const Rows holdFound(found);
    ASSERT_EQ(found->cRows, 1U);
    EXPECT_EQ(std::memcmp(found->aRow[0].lpProps[0].Value.bin.lpb, id.Value.bin.lpb, id.Value.bin.cb), 0);
}

TEST_F(ContentsTable, FindsTheFirstAndLastRowOfAWindow) {
    SortByTime(TABLE_SORT_ASCEND);
    const auto all = Times();
    const std::uint64_t from = all[5];
    const std::uint64_t to = all[15];
    SPropValue values[2];
    SRestriction both[2] = {TimeIs(RELOP_GE, values[0], from), TimeIs(RELOP_LT, values[1], to)};
    SRestriction window{};
    window.rt = RES_AND;
    window.res.resAnd = {2, both};
    ULONG row = 0;
    ULONG numerator = 0;
    ULONG denominator = 0;
    ASSERT_EQ(table->FindRow(&window, BOOKMARK_BEGINNING, 0), S_OK);
    ASSERT_EQ(table->QueryPosition(&row, &numerator, &denominator), S_OK);
    EXPECT_EQ(row, static_cast<ULONG>(std::lower_bound(all.begin(), all.end(), from) - all.begin()));
    ASSERT_EQ(table->FindRow(&window, BOOKMARK_END, DIR_BACKWARD), S_OK);
    ASSERT_EQ(table->QueryPosition(&row, &numerator, &denominator), S_OK);
    EXPECT_EQ(row, static_cast<ULONG>(std::lower_bound(all.begin(), all.end(), to) - all.begin()) - 1);
    both[0] = TimeIs(RELOP_GE, values[0], all.back() + 1);
    both[1] = TimeIs(RELOP_LT, values[1], all.back() + 2);
    EXPECT_EQ(table->FindRow(&window, BOOKMARK_BEGINNING, 0), MAPI_E_NOT_FOUND);
}

TEST_F(ContentsTable, IsPagedThroughToItsEnd) {
    ULONG seen = 0;
    for (;;) {
        SRowSet* rows = nullptr;
        ASSERT_EQ(table->QueryRows(7, 0, &rows), S_OK);
        const Rows hold(rows);
        if (rows->cRows == 0) {
            break;
        }
        seen += rows->cRows;
    }
    EXPECT_EQ(seen, rowCount);
}

// A mistake of a client's is no crash of its process.
TEST_F(ContentsTable, AndTheFunctionsRefuseNullPointers) {
    ULONG number = 0;
    ULONG_PTR connection = 0;
    SPropValue value{};
    const HRESULT refused[] = {
        table->SetColumns(nullptr, 0),
        table->QueryColumns(0, nullptr),
        table->GetRowCount(0, nullptr),
        table->GetStatus(&number, nullptr),
        table->QueryPosition(&number, nullptr, &number),
        table->FindRow(nullptr, BOOKMARK_BEGINNING, 0),
        table->CreateBookmark(nullptr),
        table->QuerySortOrder(nullptr),
        table->QueryRows(1, 0, nullptr),
        table->Advise(fnevTableModified, nullptr, &connection),
        table->GetLastError(MAPI_E_NOT_FOUND, 0, nullptr),
        HrQueryAllRows(table.Get(), nullptr, nullptr, nullptr, 0, nullptr),
        HrGetOneProp(nullptr, PR_SUBJECT_W, nullptr),
        HrSetOneProp(nullptr, &value),
        MAPIAllocateBuffer(8, nullptr),
    };
    for (std::size_t i = 0; i < std::size(refused); ++i) {
        EXPECT_EQ(refused[i], MAPI_E_INVALID_PARAMETER) << "call " << i;
    }
}

}  // namespace

}  // namespace vx_testing
