#include "localmapi/pst/source/AttachmentProperties.h"

#include "localmapi/pst/messaging/PropertyIds.h"

#include <algorithm>
#include <array>
#include <utility>

namespace localmapi::pst {

Result<std::unique_ptr<AttachmentProperties>> AttachmentProperties::OpenObject(Message& message, NodeId id,
                                                                               ULONG number) {
    VX_TRY_ASSIGN(Attachment attachment, message.OpenAttachment(id));
    return std::make_unique<AttachmentProperties>(std::make_unique<Attachment>(std::move(attachment)),
                                                  message.CodePage(), number);
}

std::span<const ULONG> AttachmentProperties::MadeIds() const {
    static constexpr auto kIds =
        std::to_array<ULONG>({PROP_ID(PR_ATTACH_SIZE), PROP_ID(PR_ATTACH_NUM), PROP_ID(PR_ATTACH_METHOD)});
    return kIds;
}

std::optional<ULONG> AttachmentProperties::MadeTag(ULONG id) {
    switch (id) {
        case PROP_ID(PR_ATTACH_NUM): return PR_ATTACH_NUM;
        case PROP_ID(PR_ATTACH_SIZE): return IsStored(id) ? std::nullopt : std::optional(PR_ATTACH_SIZE);
        case PROP_ID(PR_ATTACH_METHOD): return IsStored(id) ? std::nullopt : std::optional(PR_ATTACH_METHOD);
        default: return std::nullopt;
    }
}

Result<Bytes> AttachmentProperties::Make(ULONG id, std::uint64_t) {
    switch (id) {
        case PROP_ID(PR_ATTACH_NUM): return LittleEndian(m_number, 4);
        case PROP_ID(PR_ATTACH_SIZE):
            return LittleEndian(std::min<std::uint64_t>(SizeOf(PROP_ID(PR_ATTACH_DATA_BIN)), INT32_MAX), 4);
        case PROP_ID(PR_ATTACH_METHOD): return LittleEndian(static_cast<std::uint32_t>(m_attachment->Method()), 4);
        default: return NoSuchProperty(id);
    }
}

std::optional<ULONG> AttachmentProperties::StoredTag(ULONG id) {
    const auto tag = ObjectProperties::StoredTag(id);
    return tag == PR_ATTACH_DATA_OBJ && m_attachment->Method() == AttachMethod::ByValue ? PR_ATTACH_DATA_BIN : tag;
}

Result<PropertyValue> AttachmentProperties::OpenStored(ULONG id) {
    const bool isObject = ObjectProperties::StoredTag(id) == PR_ATTACH_DATA_OBJ;
    if (!isObject || m_attachment->Method() == AttachMethod::EmbeddedMessage) {
        return ObjectProperties::OpenStored(id);
    }
    VX_TRY_ASSIGN(ValueStream data, m_attachment->OpenData());
    return PropertyValue{PropertyType::Binary, std::move(data)};
}

}  // namespace localmapi::pst
