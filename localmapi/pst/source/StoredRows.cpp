#include "localmapi/pst/source/StoredRows.h"

#include "localmapi/props/Values.h"
#include "mapi/PropTags.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <string>
#include <utility>

namespace localmapi::pst {

namespace {

// Row ids and versions, which every table has for itself: [MS-PST] 2.3.4.4.1.
constexpr std::uint16_t kRowId = 0x67F2;
constexpr std::uint16_t kRowVersion = 0x67F3;

Error NothingThere(ULONG id) {
    return Error{ErrorCode::NotFound, "the row has no property " + Hex(id)};
}

}  // namespace

Status StoredRows::Read(std::size_t row, ULONG id, ValueMemory& memory, SPropValue& value) {
    if (row >= Count() || id == PROP_ID_NULL || id >= PROP_ID_INVALID) {
        return NothingThere(id);
    }
    if (auto known = Known(row, id)) {
        return known->tag == PR_NULL ? Status(NothingThere(id))
                                     : ToValue(known->tag, std::move(known->bytes), memory, value);
    }
    Status cell = ReadCell(row, static_cast<std::uint16_t>(id), memory, value);
    if (cell || cell.Failure().code == ErrorCode::TooLarge) {
        return cell;
    }
    if (cell.Failure().code != ErrorCode::NotFound) {
        m_mailbox->Report(cell.Failure(), "the object is asked in place of its row");
    }
    Error failure = NothingThere(id);
    ObjectProperties* object = Object(row, &failure);
    return object == nullptr ? Status(std::move(failure)) : object->Read(id, kLargestCell, memory, value);
}

Status StoredRows::ReadCell(std::size_t row, std::uint16_t id, ValueMemory& memory, SPropValue& value) {
    VX_TRY_ASSIGN(PropertyValue cell, Cell(row, id));
    const auto tag = OfferedTag(id, cell.type);
    if (!tag || PROP_TYPE(*tag) == PT_OBJECT) {
        return NothingThere(id);
    }
    const UINT codePage = MayBeNarrow(cell) ? CodePage(row) : CP_ACP;
    if (*tag != PR_SUBJECT_W && *tag != PR_SUBJECT_A) {
        return ToValue(*tag, cell, codePage, kLargestCell, memory, value);
    }
    VX_TRY_ASSIGN(Bytes subject, WholeBytes(cell, codePage, kLargestCell));
    return ToValue(*tag, SplitSubjectBytes(std::move(subject), *tag == PR_SUBJECT_W).text, memory, value);
}

ObjectProperties* StoredRows::Object(std::size_t row, Error* failure) {
    if (!m_opened || m_opened->row != row) {
        m_opened.reset();
        m_opened.emplace(Opened{row, OpenObject(row)});
    }
    if (!m_opened->object) {
        if (failure != nullptr) {
            *failure = m_opened->object.Failure();
        }
        return nullptr;
    }
    return m_opened->object->get();
}

std::vector<ULONG> ColumnsOf(std::span<const ULONG> first, std::span<const TableContext::Column> stored) {
    std::vector<ULONG> columns(first.begin(), first.end());
    for (const TableContext::Column& column : stored) {
        const auto tag = OfferedTag(column.id, column.type);
        if (!tag || column.id == kRowId || column.id == kRowVersion) {
            continue;
        }
        const auto same =
            std::find_if(columns.begin(), columns.end(), [&](ULONG other) { return PROP_ID(other) == column.id; });
        if (same == columns.end()) {
            columns.push_back(*tag);
        } else if (static_cast<std::size_t>(same - columns.begin()) < first.size() && IsTextType(PROP_TYPE(*tag))
                   && IsTextType(PROP_TYPE(*same))) {
            *same = *tag;
        }
    }
    return columns;
}

}  // namespace localmapi::pst
