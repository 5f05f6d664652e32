// Copies elements of a tree into a storage of any implementation, through its interface.
#pragma once

#include "platform/Storage.h"
#include "platform/WideText.h"
#include "platform/linux/storage/ElementName.h"
#include "platform/linux/storage/Node.h"

#include <memory>
#include <set>

namespace vx_storage {

// What IStorage::CopyTo leaves out: kinds everywhere, names in the first storage only.
struct CopyExclusions {
    bool storages = false;
    bool streams = false;
    std::set<CStringW, NameLess> names;
};

// Copies class, state bits and elements of a storage. Storages of one name are merged, streams replaced.
// STG_E_DOCFILECORRUPT for streams that cannot be read, and when they claim more than their file holds.
[[nodiscard]] HRESULT CopyStorage(const std::shared_ptr<Node>& from, const CopyExclusions& exclusions, IStorage& to);

// Copies one element under another name. STG_E_FILEALREADYEXISTS when the name is taken; no half copy remains.
[[nodiscard]] HRESULT CopyElement(const std::shared_ptr<Node>& from, const CStringW& name, IStorage& to);

}  // namespace vx_storage
