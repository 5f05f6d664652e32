#include "localmapi/table/SortKeys.h"

#include "localmapi/props/TextFolding.h"
#include "localmapi/props/Values.h"
#include "mapi/MapiCodes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace localmapi {

namespace {

constexpr std::uint64_t kSign = std::uint64_t{1} << 63U;

std::uint64_t OrderOfSigned(std::int64_t number) noexcept {
    return static_cast<std::uint64_t>(number) ^ kSign;
}

// The bits of a floating-point number ascend with it when those of negative ones are turned round.
std::uint64_t OrderOfFloat(double number) noexcept {
    if (std::isnan(number)) {
        return UINT64_MAX;
    }
    const auto bits = std::bit_cast<std::uint64_t>(number == 0 ? 0.0 : number);
    return (bits & kSign) != 0 ? ~bits : bits ^ kSign;
}

// As Compare orders the numbers of one type.
std::uint64_t OrderOfNumber(const SPropValue& value) noexcept {
    const SPropValue::Contents& v = value.Value;
    switch (PROP_TYPE(value.ulPropTag)) {
        case PT_I2: return OrderOfSigned(v.i);
        case PT_LONG: return OrderOfSigned(v.l);
        case PT_ERROR: return OrderOfSigned(v.err);
        case PT_R4: return OrderOfFloat(v.flt);
        case PT_DOUBLE: return OrderOfFloat(v.dbl);
        case PT_APPTIME: return OrderOfFloat(v.at);
        case PT_BOOLEAN: return v.b != 0 ? 1 : 0;
        case PT_CURRENCY: return OrderOfSigned(v.cur.int64);
        case PT_I8: return OrderOfSigned(v.li.QuadPart);
        case PT_SYSTIME: return std::uint64_t{v.ft.dwHighDateTime} << 32U | v.ft.dwLowDateTime;
        default: return 0;
    }
}

// The first four units of a text, without their case.
std::uint64_t OrderOfText(const WCHAR* text) noexcept {
    std::uint64_t order = 0;
    for (int i = 0; i < 4; ++i) {
        order = order << 16U | (*text != 0 ? FoldCase(*text++) : 0U);
    }
    return order;
}

int Sign(bool isLess) noexcept {
    return isLess ? -1 : 1;
}

}  // namespace

Cell ReadCell(RowSource& rows, std::size_t row, ULONG id, ValueMemory& memory) {
    Cell cell;
    if (const Status read = rows.Read(row, id, memory, cell.value); !read) {
        cell.state = read.Failure().code == ErrorCode::TooLarge ? Cell::State::TooLarge : Cell::State::Missing;
    } else if (IsValid(cell.value)) {
        cell.state = Cell::State::There;
        const ULONG type = PROP_TYPE(cell.value.ulPropTag);
        if (IsTextType(type) && (type & ~MV_FLAG) == PT_STRING8) {
            ChangeWidth(cell.value, PT_UNICODE, rows.CodePage(row), memory);
        }
    }
    return cell;
}

// ---- One column -----------------------------------------------------------------------------------------------------

KeyColumn::KeyColumn(RowSource& rows, ULONG id, std::size_t count) : m_source(&rows), m_id(id), m_count(count) {}

KeyColumn::State KeyColumn::Load(RowNumber row) {
    if (m_states.empty()) {
        m_bits.resize(m_count);
        m_states.resize(m_count, State::Unread);
    }
    State& state = m_states[row];
    if (state != State::Unread) {
        return state;
    }
    m_scratch.Clear();
    const Cell cell = ReadCell(*m_source, row, m_id, m_scratch);
    if (cell.state != Cell::State::There) {
        return state = cell.state == Cell::State::TooLarge ? State::TooLarge : State::Missing;
    }
    const ULONG type = PROP_TYPE(cell.value.ulPropTag);
    if (IsNumberType(type) && (m_type == PT_NULL || m_type == type)) {
        m_type = type;
        std::memcpy(&m_bits[row], &cell.value.Value, sizeof(m_bits[row]));
        return state = State::Inline;
    }
    auto* const value = m_values.Array<SPropValue>(1);
    if (CopyValue(cell.value, m_values, *value) != S_OK) {
        return state = State::Missing;
    }
    m_hasOthers = m_hasOthers || type != PT_UNICODE;
    m_bits[row] = reinterpret_cast<std::uintptr_t>(value);
    return state = State::Boxed;
}

const SPropValue& KeyColumn::Boxed(RowNumber row) const noexcept {
    return *reinterpret_cast<const SPropValue*>(static_cast<std::uintptr_t>(m_bits[row]));
}

SPropValue KeyColumn::Inline(RowNumber row) const noexcept {
    SPropValue value{};
    value.ulPropTag = PROP_TAG(m_type, m_id);
    std::memcpy(&value.Value, &m_bits[row], sizeof(m_bits[row]));
    return value;
}

Cell KeyColumn::At(RowNumber row) {
    switch (Load(row)) {
        case State::Inline: return {Cell::State::There, Inline(row)};
        case State::Boxed: return {Cell::State::There, Boxed(row)};
        case State::TooLarge: return {Cell::State::TooLarge, {}};
        default: return {};
    }
}

KeyColumn::Rank KeyColumn::RankOf(RowNumber row) {
    switch (Load(row)) {
        case State::Inline: return Rank::Number;
        case State::Boxed: return RankOf(Boxed(row));
        default: return Rank::None;
    }
}

KeyColumn::Rank KeyColumn::RankOf(const SPropValue& value) const noexcept {
    const ULONG type = PROP_TYPE(value.ulPropTag);
    if (type == PT_UNICODE || type == PT_STRING8) {
        return Rank::Text;
    }
    return type == m_type ? Rank::Number : Rank::Other;
}

std::uint64_t KeyColumn::OrderOf(RowNumber row) {
    switch (RankOf(row)) {
        case Rank::Number: return OrderOfNumber(Inline(row));
        case Rank::Text: return OrderOfText(Boxed(row).Value.lpszW);
        default: return 0;
    }
}

// ---- All columns ----------------------------------------------------------------------------------------------------

SortKeys::SortKeys(RowSource& rows, std::span<const SSortOrder> sorts) {
    for (const SSortOrder& sort : sorts) {
        m_columns.push_back({std::make_unique<KeyColumn>(rows, PROP_ID(sort.ulPropTag), rows.Count()),
                             sort.ulOrder == TABLE_SORT_DESCEND});
    }
}

KeyColumn* SortKeys::Column(ULONG id) noexcept {
    const auto found =
        std::ranges::find_if(m_columns, [id](const SortColumn& sort) { return sort.column->Id() == id; });
    return found == m_columns.end() ? nullptr : found->column.get();
}

int SortKeys::CompareIn(SortColumn& sort, RowNumber left, RowNumber right) {
    KeyColumn& column = *sort.column;
    const KeyColumn::Rank rank = column.RankOf(left);
    if (const KeyColumn::Rank other = column.RankOf(right); rank != other) {
        return Sign(rank < other);
    }
    const std::uint64_t leftOrder = column.OrderOf(left);
    const std::uint64_t rightOrder = column.OrderOf(right);
    if (leftOrder != rightOrder) {
        return Sign((leftOrder < rightOrder) != sort.descending);
    }
    if (rank == KeyColumn::Rank::Number || rank == KeyColumn::Rank::None) {
        return 0;
    }
    const int order = localmapi::Compare(column.At(left).value, column.At(right).value);
    return sort.descending ? -order : order;
}

int SortKeys::CompareFrom(std::size_t column, RowNumber left, RowNumber right) {
    for (; column < m_columns.size(); ++column) {
        if (const int order = CompareIn(m_columns[column], left, right); order != 0) {
            return order;
        }
    }
    return left == right ? 0 : Sign(left < right);
}

// The first column decides between most rows: what it says of each is laid out side by side for the sorting.
void SortKeys::Sort(std::vector<RowNumber>& rows) {
    struct Item {
        std::uint64_t order;
        const WCHAR* text;  // null for other ranks
        RowNumber row;
        KeyColumn::Rank rank;
    };
    if (rows.size() < 2) {
        return;
    }
    KeyColumn& first = First();
    const bool isDescending = IsFirstDescending();
    std::vector<Item> items;
    items.reserve(rows.size());
    for (const RowNumber row : rows) {
        const KeyColumn::Rank rank = first.RankOf(row);
        const WCHAR* const text = rank == KeyColumn::Rank::Text ? first.TextOf(row) : nullptr;
        items.push_back({first.OrderOf(row) ^ (isDescending ? UINT64_MAX : 0), text, row, rank});
    }
    std::ranges::sort(items, [this, isDescending](const Item& a, const Item& b) {
        if (a.rank != b.rank) {
            return a.rank < b.rank;
        }
        if (a.order != b.order) {
            return a.order < b.order;
        }
        if (a.text != nullptr) {
            if (const int order = CompareWithoutCase(a.text, b.text); order != 0) {
                return (order < 0) != isDescending;
            }
        }
        return CompareFrom(a.rank == KeyColumn::Rank::Other ? 0 : 1, a.row, b.row) < 0;
    });
    std::ranges::transform(items, rows.begin(), &Item::row);
}

}  // namespace localmapi
