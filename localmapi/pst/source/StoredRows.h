// Rows that a table of the file keeps, with the objects that they stand for behind them. Rules as in RowSource.h.
#pragma once

#include "localmapi/model/RowSource.h"
#include "localmapi/pst/source/Mailbox.h"
#include "localmapi/pst/source/ObjectProperties.h"

#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace localmapi::pst {

class StoredRows : public RowSource {
public:
    // A value comes from what the row is known to be, else from its cell, else from its object. A cell that cannot be
    // read is reported, and the object is asked.
    Status Read(std::size_t row, ULONG id, ValueMemory& memory, SPropValue& value) final;

protected:
    explicit StoredRows(MailboxPtr mailbox) : m_mailbox(std::move(mailbox)) {}

    // What is known of a row besides its cells. Ids that no file keeps are answered here too, by PR_NULL.
    virtual std::optional<MadeValue> Known(std::size_t row, ULONG id) = 0;

    // NotFound, Corrupt or ReadFailed, each of which sends the question on to the object.
    virtual Result<PropertyValue> Cell(std::size_t row, std::uint16_t id) = 0;

    // The object of a row. Of rows that stand for none: NotFound.
    virtual Result<std::unique_ptr<ObjectProperties>> OpenObject(std::size_t row) = 0;

    // The last object stays open, as a row is mostly asked for several columns: null, with the reason in `failure`,
    // when it cannot be opened.
    ObjectProperties* Object(std::size_t row, Error* failure = nullptr);

    const MailboxPtr& File() const noexcept { return m_mailbox; }

private:
    Status ReadCell(std::size_t row, std::uint16_t id, ValueMemory& memory, SPropValue& value);

    struct Opened {
        std::size_t row;
        Result<std::unique_ptr<ObjectProperties>> object;
    };
    MailboxPtr m_mailbox;
    std::optional<Opened> m_opened;
};

// The first columns, in the type that the table stores them in, and the table's further ones.
std::vector<ULONG> ColumnsOf(std::span<const ULONG> first, std::span<const TableContext::Column> stored);

}  // namespace localmapi::pst
