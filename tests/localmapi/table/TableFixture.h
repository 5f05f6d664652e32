// Tables over rows in memory, and what tests ask of them as short texts.
#pragma once

#include "localmapi/com/ComPtr.h"
#include "localmapi/model/RowSource.h"
#include "localmapi/props/RowSets.h"
#include "localmapi/table/MemoryRows.h"
#include "localmapi/table/Table.h"
#include "mapi/Mapi.h"
#include "tests/localmapi/support/LeakCheck.h"
#include "tests/localmapi/support/Restrictions.h"

#include <cstddef>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace localmapi::testing {

inline constexpr ULONG kName = PROP_TAG(PT_UNICODE, 0x3001);
inline constexpr ULONG kNameA = PROP_TAG(PT_STRING8, 0x3001);
inline constexpr ULONG kText = PROP_TAG(PT_UNICODE, 0x0037);
inline constexpr ULONG kTextA = PROP_TAG(PT_STRING8, 0x0037);
inline constexpr ULONG kNumber = PROP_TAG(PT_LONG, 0x0E08);
inline constexpr ULONG kTime = PROP_TAG(PT_SYSTIME, 0x3008);
inline constexpr ULONG kEntryId = PROP_TAG(PT_BINARY, 0x0FFF);
inline constexpr ULONG kLongTermId = PROP_TAG(PT_BINARY, 0x6670);
inline constexpr ULONG kWords = PROP_TAG(PT_MV_UNICODE, 0x8001);
inline constexpr ULONG kRecipients = PROP_TAG(PT_OBJECT, 0x0E12);

// What a source is asked for while a test looks at it.
struct Traffic {
    std::size_t reads = 0;                 // cells read
    std::map<ULONG, std::size_t> readsOf;  // by property id
};

// Rows that count what is read of them, and may have rows of their own.
class WatchedRows final : public RowSource {
public:
    WatchedRows(std::unique_ptr<RowSource> rows, Traffic& traffic) : m_rows(std::move(rows)), m_traffic(traffic) {}

    // Gives a row recipients with these names.
    void AddRecipients(std::size_t row, std::vector<std::string> names) { m_recipients[row] = std::move(names); }

    // Makes the cells of a property fail.
    void Fail(ULONG id, ErrorCode code) { m_failures[id] = code; }

    std::size_t Count() override { return m_rows->Count(); }
    std::vector<ULONG> Columns() override { return m_rows->Columns(); }
    Status Read(std::size_t row, ULONG id, ValueMemory& memory, SPropValue& value) override;
    UINT CodePage(std::size_t row) override { return m_rows->CodePage(row); }
    bool IsIndexed(ULONG id) const override { return m_rows->IsIndexed(id); }
    std::optional<std::size_t> Find(ULONG id, ByteView key) override { return m_rows->Find(id, key); }
    Result<std::unique_ptr<RowSource>> RowsWithin(std::size_t row, ULONG objectTag) override;

private:
    std::unique_ptr<RowSource> m_rows;
    Traffic& m_traffic;
    std::map<std::size_t, std::vector<std::string>> m_recipients;
    std::map<ULONG, ErrorCode> m_failures;
};

class TableFixture : public LeakCheck {
protected:
    using Maker = RestrictionMaker;

    // A row as its values; the values live as long as m_maker.
    using Row = std::vector<SPropValue>;

    ComPtr<IMAPITable> TableOf(std::unique_ptr<RowSource> rows, ULONG flags = MAPI_UNICODE);
    ComPtr<IMAPITable> TableOf(const std::vector<Row>& rows, ULONG flags = MAPI_UNICODE, UINT codePage = 1252);

    // A table of rows that have a name alone, one character each: "cab" is three rows.
    ComPtr<IMAPITable> Letters(std::string_view letters);

    // What a call of QueryRows gives: the rows with spaces between them.
    static std::string Read(IMAPITable& table, LONG count, ULONG flags = 0);

    // All rows from the beginning; for rows of one text column its characters alone.
    static std::string All(IMAPITable& table);

    static HRESULT SetColumns(IMAPITable& table, std::initializer_list<ULONG> columns);
    static HRESULT Sort(IMAPITable& table, std::initializer_list<SSortOrder> sorts);
    static HRESULT Restrict(IMAPITable& table, SRestriction restriction) { return table.Restrict(&restriction, 0); }
    static HRESULT Find(IMAPITable& table, SRestriction restriction, BOOKMARK origin = BOOKMARK_BEGINNING,
                        ULONG flags = 0) {
        return table.FindRow(&restriction, origin, flags);
    }
    // The position that a search ends at; nothing when it finds none.
    static std::optional<ULONG> Found(IMAPITable& table, const SRestriction& restriction,
                                      BOOKMARK origin = BOOKMARK_BEGINNING, ULONG flags = 0);
    SRestriction Name(ULONG relop, std::string_view name) { return m_maker.Property(relop, m_maker.Wide(name)); }
    static ULONG Position(IMAPITable& table);
    static ULONG RowCount(IMAPITable& table);

    RestrictionMaker m_maker;
    SharedLock m_lock = std::make_shared<std::recursive_mutex>();
};

}  // namespace localmapi::testing
