// Words for the numbers in records, for tables. Any thread.
#pragma once

#include "provider/HostValue.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vxhost {

std::string ItemTypeWord(std::int64_t type);
std::string FolderTypeWord(std::int64_t type);
std::string StoreTypeWord(std::int64_t type);

// The subject of an item of whatever type, or a contact's name, on one line.
std::string SubjectOf(const VxOutlookProvider::Value& record);

// A field's value on as many lines as it has, with the moment behind a time.
std::string FieldText(const VxOutlookProvider::Field& field, const VxOutlookProvider::Value& value);

}  // namespace vxhost
