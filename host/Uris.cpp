#include "host/Uris.h"

namespace vxhost {

using VxOutlookProvider::FieldIndex;
using VxOutlookProvider::FieldsOf;
using VxOutlookProvider::RecordKind;
using VxOutlookProvider::Value;

Value MakeUri(UriKind kind, const std::u16string& profile, const std::u16string& store, const std::u16string& folder,
              const std::u16string& item, const std::u16string& attachment) {
    Value::Array fields(FieldsOf(RecordKind::Uri).size());
    const auto set = [&](std::string_view key, const std::u16string& text) {
        if (!text.empty()) {
            fields[FieldIndex(RecordKind::Uri, key)] = Value(text);
        }
    };
    if (kind != UriKind::None) {
        fields[FieldIndex(RecordKind::Uri, "uri_type")] = Value(static_cast<std::int32_t>(kind));
    }
    set("uri_ProfileName", profile);
    set("uri_storeId", store);
    set("uri_folderId", folder);
    set("uri_itemId", item);
    set("uri_attachmentNum", attachment);
    return Value(std::move(fields));
}

}  // namespace vxhost
