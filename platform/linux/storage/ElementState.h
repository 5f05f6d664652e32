// What the objects on one opened element share: a stream's clones, a storage and its enumerators.
#pragma once

#include "platform/linux/storage/CompoundFile.h"
#include "platform/linux/storage/Node.h"

#include <cstddef>
#include <memory>

namespace vx_storage {

struct StreamState {
    std::shared_ptr<Transaction> transaction;  // that a change belongs to
    std::shared_ptr<Node> node;
    std::shared_ptr<Scope> scope;  // ended: every operation is STG_E_REVERTED
    DWORD mode = 0;
};

struct StorageState {
    std::shared_ptr<Transaction> transaction;
    bool ownsTransaction = false;  // a root, or opened in transacted mode
    std::shared_ptr<Node> node;    // in the transaction's tree; another one after a revert
    std::shared_ptr<Scope> scope;
    std::shared_ptr<Scope> below;  // what is opened from here hangs under this one, which ends with a revert
    DWORD mode = 0;
    std::size_t depth = 0;  // of the root: 0
    bool isRoot = false;
};

}  // namespace vx_storage
