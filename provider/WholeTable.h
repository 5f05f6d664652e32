// Reading a table of MAPI's from its first row to its last, waiting while MAPI is busy.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "platform/WideText.h"
#include "provider/Common/Log.h"
#include "provider/MapiHolders.h"

// The steps of a reading.
enum class TableStep { Columns, Seek, Rows, Done };

struct TableRead {
    TableStep step;  // the one that failed; Done when none did
    HRESULT hr;
};

// All rows of the table with these columns, which are a constant.
TableRead ReadWholeTable(IMAPITable* table, const SPropTagArray* columns, VxLpRowsPtr<SRowSet>& rows);

// What the log says of the step that failed, with a "%x" for its result.
const WCHAR* FailureFormat(TableStep step) noexcept;

// The same with a line for a failure, in the caller's name. False when there was one.
bool ReadWholeTable(IMAPITable* table, const SPropTagArray* columns, VxLpRowsPtr<SRowSet>& rows,
                    const Vx::LogEntry& failure);
