// Object URIs as this program makes them. Those of items and attachments come from the provider and go back unchanged.
#pragma once

#include "provider/HostValue.h"

#include <cstdint>
#include <string>

namespace vxhost {

// The numbers that the provider knows kinds of URIs by.
enum class UriKind : std::int32_t { None = 0, Folder = 6, Item = 8, Attachment = 9 };

// A URI of a profile, of a store in it, of a folder in that, of an item in that, of an attachment of it: the texts that
// are not empty. With UriKind::None it serves to tell what was concerned, as a store.
VxOutlookProvider::Value MakeUri(UriKind kind, const std::u16string& profile, const std::u16string& store,
                                 const std::u16string& folder = {}, const std::u16string& item = {},
                                 const std::u16string& attachment = {});

}  // namespace vxhost
