#include "tests/localmapi/table/TableFixture.h"

#include "localmapi/props/Values.h"
#include "tests/localmapi/support/ValueText.h"

#include <algorithm>

namespace localmapi::testing {

Status WatchedRows::Read(std::size_t row, ULONG id, ValueMemory& memory, SPropValue& value) {
    ++m_traffic.reads;
    ++m_traffic.readsOf[id];
    if (const auto failure = m_failures.find(id); failure != m_failures.end()) {
        return Error{failure->second, "the test makes it fail"};
    }
    return m_rows->Read(row, id, memory, value);
}

Result<std::unique_ptr<RowSource>> WatchedRows::RowsWithin(std::size_t row, ULONG objectTag) {
    const auto found = m_recipients.find(row);
    if (objectTag != kRecipients || found == m_recipients.end()) {
        return Error{ErrorCode::NotFound, "no rows within"};
    }
    auto rows = std::make_unique<MemoryRows>(std::vector<ULONG>{kName});
    RestrictionMaker maker;
    for (const std::string& name : found->second) {
        const SPropValue value = maker.Wide(name);
        rows->Add({&value, 1});
    }
    return std::unique_ptr<RowSource>(std::move(rows));
}

ComPtr<IMAPITable> TableFixture::TableOf(std::unique_ptr<RowSource> rows, ULONG flags) {
    return MakeTable(std::move(rows), nullptr, flags, m_lock);
}

ComPtr<IMAPITable> TableFixture::TableOf(const std::vector<Row>& rows, ULONG flags, UINT codePage) {
    auto kept = std::make_unique<MemoryRows>(std::vector<ULONG>{kName, kNumber}, codePage);
    for (const Row& row : rows) {
        kept->Add(row);
    }
    return TableOf(std::move(kept), flags);
}

ComPtr<IMAPITable> TableFixture::Letters(std::string_view letters) {
    std::vector<Row> rows;
    for (const char& letter : letters) {
        rows.push_back({m_maker.Wide({&letter, 1})});
    }
    ComPtr<IMAPITable> table = TableOf(rows);
    EXPECT_EQ(SetColumns(*table, {kName}), S_OK);
    return table;
}

std::string TableFixture::Read(IMAPITable& table, LONG count, ULONG flags) {
    LPSRowSet got = nullptr;
    if (const HRESULT result = table.QueryRows(count, flags, &got); result != S_OK) {
        return "failed";
    }
    const RowSetPointer rows(got);
    std::string text;
    for (ULONG i = 0; i < rows->cRows; ++i) {
        std::string row = TextOf(rows->aRow[i]);
        if (row.size() == 4 && row.starts_with("w'")) {
            row = row.substr(2, 1);
        } else if (i > 0) {
            row.insert(0, " ");
        }
        text += row;
    }
    return text;
}

std::string TableFixture::All(IMAPITable& table) {
    EXPECT_EQ(table.SeekRow(BOOKMARK_BEGINNING, 0, nullptr), S_OK);
    return Read(table, 1'000'000);
}

HRESULT TableFixture::SetColumns(IMAPITable& table, std::initializer_list<ULONG> columns) {
    std::vector<ULONG> array{static_cast<ULONG>(columns.size())};
    array.insert(array.end(), columns.begin(), columns.end());
    return table.SetColumns(reinterpret_cast<LPSPropTagArray>(array.data()), 0);
}

HRESULT TableFixture::Sort(IMAPITable& table, std::initializer_list<SSortOrder> sorts) {
    SizedSSortOrderSet<8> set{};
    set.cSorts = static_cast<ULONG>(sorts.size());
    std::ranges::copy(sorts, set.aSort);
    return table.SortTable(set, 0);
}

std::optional<ULONG> TableFixture::Found(IMAPITable& table, const SRestriction& restriction, BOOKMARK origin,
                                         ULONG flags) {
    const HRESULT result = Find(table, restriction, origin, flags);
    EXPECT_TRUE(result == S_OK || result == MAPI_E_NOT_FOUND) << result;
    return result == S_OK ? std::optional(Position(table)) : std::nullopt;
}

ULONG TableFixture::Position(IMAPITable& table) {
    ULONG row = 0;
    ULONG numerator = 0;
    ULONG denominator = 0;
    EXPECT_EQ(table.QueryPosition(&row, &numerator, &denominator), S_OK);
    EXPECT_EQ(numerator, row);
    EXPECT_GT(denominator, 0U);
    return row;
}

ULONG TableFixture::RowCount(IMAPITable& table) {
    ULONG count = 0;
    EXPECT_EQ(table.GetRowCount(0, &count), S_OK);
    return count;
}

}  // namespace localmapi::testing
