#include "localmapi/pst/messaging/NamedProperties.h"

#include "localmapi/base/NameList.h"
#include "localmapi/base/Result.h"

#include <utility>

namespace localmapi::pst {

namespace {

Bytes StreamOf(PropertyContext& map, std::uint16_t id, Diagnostics& problems) {
    Result<PropertyValue> value = map.Read(id);
    Result<Bytes> bytes = value ? value->bytes.ReadAll() : Result<Bytes>(value.TakeFailure());
    if (!bytes) {
        if (!bytes.IsNotFound()) {
            problems.Report(bytes.Failure().text + "; the names of named properties in it are lost");
        }
        return {};
    }
    return *std::move(bytes);
}

}  // namespace

std::vector<NamedId> LoadNames(PropertyContext& map, Diagnostics& problems) {
    const NameList list{StreamOf(map, NameList::kSetsId, problems), StreamOf(map, NameList::kEntriesId, problems),
                        StreamOf(map, NameList::kTextsId, problems)};
    return ReadNames(list, Name(map.OwnerId()), problems);
}

}  // namespace localmapi::pst
