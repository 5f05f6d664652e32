// The folders beneath one folder as rows, read from its hierarchy table a page at a time. One reader for one walk, on
// one thread.
#pragma once

#include "mapi/MapiInterfaces.h"
#include "provider/MapiHolders.h"

// The columns of a hierarchy table, and the properties that are read of an open folder: one order for both.
enum HierarchyColumn : ULONG {
    kFolderName = 0,
    kFolderEntryId = 1,
    kFolderLongTermId = 2,
    kFolderUrlName = 3,
    kFolderHasSubFolders = 4,
    kFolderRecordKey = 5,
    kFolderLastModified = 6,
    kFolderContainerClass = 7,
    kFolderParentEntryId = 8,
};
LPSPropTagArray HierarchyColumns() noexcept;

class HierarchyReader {
public:
    // Opens the table and reads the first page. A folder that supports no hierarchy table has no rows. Failures are
    // logged.
    HRESULT Open(IMAPIFolder* folder);

    // The next row, null behind the last; lent until the next call. A page that cannot be read is `failed`, and gives
    // what SetColumns gave, which is a success: callers report it as it is.
    struct Next {
        const SRow* row = nullptr;
        bool failed = false;
        HRESULT result = S_OK;
    };
    Next NextRow();

private:
    HRESULT ReadPage();

    VxMapiPtr<IMAPITable> m_table;
    VxLpRowsPtr<SRowSet> m_page;  // null at the end
    ULONG m_nextRow = 0;          // of the page
    HRESULT m_columnsResult = S_OK;
};
