#include "localmapi/msg/AttachmentNode.h"

#include "localmapi/msg/ElementNames.h"
#include "localmapi/msg/MessageOnStorage.h"
#include "mapi/MapiFlags.h"
#include "mapi/PropTags.h"
#include "platform/GlobalMemory.h"

#include <algorithm>
#include <array>
#include <utility>

namespace localmapi::msg {

namespace {

// What the value area of PR_ATTACH_DATA_OBJ says of the storage: [MS-OXMSG] 2.4.2.2.
constexpr std::uint32_t kIsMessage = 1;
constexpr std::uint32_t kIsStorage = 4;

// An object that is kept as bytes is opened in memory.
constexpr std::uint64_t kLargestObject = std::uint64_t{64} << 20;

// A storage is a message's when it has an element of one; an empty one, when the method says so.
bool HoldsMessage(const std::vector<OpenedStorage::Element>& elements, std::int32_t method) {
    const auto isOfMessage = [](const OpenedStorage::Element& element) {
        return IsSameName(element.name, kPropertyStream) || ParseValueName(element.name)
               || HasPrefix(element.name, kRecipientPrefix) || HasPrefix(element.name, kAttachmentPrefix);
    };
    return elements.empty() ? method == ATTACH_EMBEDDED_MSG
                            : std::any_of(elements.begin(), elements.end(), isOfMessage);
}

Error NoObject(const std::string& path, const char* what) {
    return Error{ErrorCode::NotFound, path + " holds no " + what};
}

Error TooDeep(const std::string& path) {
    return Error{ErrorCode::TooLarge,
                 path + ": messages are nested more than " + std::to_string(kMostNesting) + " deep"};
}

}  // namespace

AttachmentNode::AttachmentNode(std::shared_ptr<MessageNode> owner, ULONG number, ComPtr<IStorage> storage,
                               std::string path)
    : m_owner(std::move(owner)),
      m_number(number),
      m_storage(std::move(storage), std::move(path), m_owner->File().isWritable) {}

std::string AttachmentNode::ObjectPath() const {
    return m_storage.NameOf(ValueName(PR_ATTACH_DATA_OBJ)) + '/';
}

Status AttachmentNode::Load() {
    VX_TRY_ASSIGN(const auto elements, m_storage.Elements());
    m_properties.Load(m_storage, elements, HeaderSize::Part, m_owner->File().problems);
    m_properties.AssumeLong(PR_ATTACH_NUM, static_cast<std::int32_t>(m_number));
    FindObject();
    const bool hasBytes = m_properties.TagOf(PROP_ID(PR_ATTACH_DATA_BIN)) == PR_ATTACH_DATA_BIN;
    if (!m_properties.TagOf(PROP_ID(PR_ATTACH_METHOD)) && hasBytes) {
        m_properties.AssumeLong(PR_ATTACH_METHOD, ATTACH_BY_VALUE);
    }
    return {};
}

// Opens the storage in the attachment, and sees what it is.
void AttachmentNode::FindObject() {
    if (!m_properties.HasObjectStorage(PR_ATTACH_DATA_OBJ)) {
        return;
    }
    if (!m_object) {
        auto opened = m_storage.OpenStorage(ValueName(PR_ATTACH_DATA_OBJ));
        if (!opened) {
            m_owner->File().problems.Report(opened.Failure().text + "; the attachment is without its content");
            return;
        }
        m_object = *std::move(opened);
    }
    const auto elements = OpenedStorage(m_object, ObjectPath(), false).Elements();
    const std::int32_t method = m_properties.Long(PROP_ID(PR_ATTACH_METHOD)).value_or(0);
    m_isMessage = elements && HoldsMessage(*elements, method);
    m_properties.AssumeLong(PR_ATTACH_METHOD, m_isMessage ? ATTACH_EMBEDDED_MSG : ATTACH_OLE);
}

Result<std::shared_ptr<MessageNode>> AttachmentNode::OpenMessage() {
    if (auto open = m_message.lock()) {
        return open;
    }
    if (!m_object || !m_isMessage) {
        return NoObject(m_storage.Path(), "message");
    }
    if (m_owner->Depth() + 1 >= kMostNesting) {
        return TooDeep(m_storage.Path());
    }
    VX_TRY_ASSIGN(auto message, MessageNode::OpenWithin(shared_from_this(), m_object, ObjectPath()));
    m_message = message;
    return message;
}

Result<ComPtr<IStorage>> AttachmentNode::OpenStorage() {
    if (m_object && !m_isMessage) {
        return m_object;
    }
    const bool isBytes = m_properties.Long(PROP_ID(PR_ATTACH_METHOD)) == ATTACH_OLE
                         && m_properties.TagOf(PROP_ID(PR_ATTACH_DATA_BIN)) == PR_ATTACH_DATA_BIN;
    return isBytes ? OpenBytesAsStorage() : NoObject(m_storage.Path(), "storage");
}

// The object of some programs' attachments is a compound file in PR_ATTACH_DATA_BIN.
Result<ComPtr<IStorage>> AttachmentNode::OpenBytesAsStorage() {
    VX_TRY_ASSIGN(const auto bytes, m_properties.Open(PROP_ID(PR_ATTACH_DATA_BIN)));
    if (bytes->Size() > kLargestObject) {
        return Error{ErrorCode::TooLarge, m_storage.Path() + ": an object of more than 64 MiB is read by stream only"};
    }
    const auto size = static_cast<std::size_t>(bytes->Size());
    const HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, size);
    ComPtr<ILockBytes> file;
    if (block == nullptr || FAILED(CreateILockBytesOnHGlobal(block, TRUE, file.Receive()))) {
        GlobalFree(block);
        return Error{ErrorCode::ReadFailed, m_storage.Path() + ": memory is out"};
    }
    auto* data = static_cast<std::byte*>(GlobalLock(block));
    const Status read = bytes->ReadAt(0, std::span(data, size));
    GlobalUnlock(block);
    if (!read) {
        return read.Failure();
    }
    ComPtr<IStorage> storage;
    const HRESULT hr = StgOpenStorageOnILockBytes(file.Get(), nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, nullptr, 0,
                                                  storage.Receive());
    if (FAILED(hr)) {
        Error failure = StorageFailure(hr, m_storage.Path() + ": the object is no storage");
        failure.code = ErrorCode::Corrupt;
        return failure;
    }
    return storage;
}

Status AttachmentNode::ReplaceContent(std::uint32_t kind, std::int32_t method) {
    m_object = {};
    m_message.reset();
    VX_TRY(m_properties.Destroy(PROP_ID(PR_ATTACH_DATA_OBJ)));
    VX_TRY_ASSIGN(m_object, m_storage.CreateStorage(ValueName(PR_ATTACH_DATA_OBJ)));
    m_isMessage = kind == kIsMessage;
    m_properties.SetObject(PR_ATTACH_DATA_OBJ, kind);
    m_properties.SetLong(PR_ATTACH_METHOD, method);
    return {};
}

Result<std::shared_ptr<MessageNode>> AttachmentNode::CreateMessage() {
    if (m_owner->Depth() + 1 >= kMostNesting) {
        return TooDeep(m_storage.Path());
    }
    VX_TRY(ReplaceContent(kIsMessage, ATTACH_EMBEDDED_MSG));
    VX_TRY_ASSIGN(auto message, MessageNode::CreateWithin(shared_from_this(), m_object, ObjectPath()));
    m_message = message;
    return message;
}

Result<ComPtr<IStorage>> AttachmentNode::CreateStorage() {
    VX_TRY(ReplaceContent(kIsStorage, ATTACH_OLE));
    return m_object;
}

Status AttachmentNode::Save() {
    const bool hasBytes = m_properties.TagOf(PROP_ID(PR_ATTACH_DATA_BIN)) == PR_ATTACH_DATA_BIN;
    m_properties.SetLong(PR_ATTACH_NUM, static_cast<std::int32_t>(m_number));
    m_properties.SetLongDefault(PR_ATTACH_METHOD, hasBytes ? ATTACH_BY_VALUE : NO_ATTACHMENT);
    m_properties.SetLongDefault(PR_RENDERING_POSITION, -1);
    m_properties.SetLongDefault(PR_OBJECT_TYPE, static_cast<std::int32_t>(MAPI_ATTACH));
    constexpr std::array<std::byte, static_cast<std::size_t>(HeaderSize::Part)> kHeader{};
    VX_TRY(m_properties.Save(ByteView(kHeader.data(), kHeader.size()), Form()));
    m_owner->NoteSaved(m_number);
    return {};
}

void AttachmentNode::Discard() {
    if (m_properties.HasChanges()) {
        if (const Status loaded = Load(); !loaded) {
            m_owner->File().problems.Report(loaded.Failure().text + "; changes that were not saved stay in memory");
        }
    }
}

}  // namespace localmapi::msg
