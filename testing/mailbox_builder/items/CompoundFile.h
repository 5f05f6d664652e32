// Compound files as plain data: [MS-CFB]. Any thread.
#pragma once

#include "testing/mailbox_builder/Model.h"

#include <vector>

namespace mailbox_builder {

struct CompoundStream {
    CStringW name;
    Bytes content;
};

struct CompoundStorage {
    CStringW name = {};  // the root has none
    GUID storageClass{};
    std::vector<CompoundStream> streams = {};
    std::vector<CompoundStorage> storages = {};
};

// The bytes of a file with `root` for its root storage. Empty when the system refuses to make one: for a name that is
// none, or out of memory.
Bytes CompoundFileOf(const CompoundStorage& root);

}  // namespace mailbox_builder
