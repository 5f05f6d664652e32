// The file header: which form of the file this is, how its data is encoded, where its two b-trees begin.
#pragma once

#include "localmapi/base/ByteSource.h"
#include "localmapi/base/Diagnostics.h"
#include "localmapi/base/Result.h"
#include "localmapi/pst/ndb/Encoding.h"
#include "localmapi/pst/ndb/Ids.h"
#include "localmapi/pst/ndb/Layout.h"

#include <cstdint>

namespace localmapi::pst {

// [MS-PST] 2.2.2.6.
struct FileHeader {
    const Layout* layout = nullptr;
    std::uint16_t version = 0;  // wVer: 14, 15, 21, 23, 36 or 37 in sound files
    bool isOst = false;         // written as the offline copy of a server's mailbox
    Encoding encoding = Encoding::None;
    bool isSound = true;  // both checks passed; otherwise layout and encoding are the likeliest ones
    PageRef nodeRoot;     // not checked: a root that cannot be read is for the b-tree's reader to replace
    PageRef blockRoot;
};

// Reads the header. Unsupported for what is no such file, for one too short to hold a header, and for data that is
// encoded by a method that needs keys; ReadFailed. A damaged header is reported and interpreted as far as it goes.
Result<FileHeader> ReadHeader(ByteSource& source, Diagnostics& problems);

}  // namespace localmapi::pst
