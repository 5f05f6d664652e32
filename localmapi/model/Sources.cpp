// What a source answers that is only read, and rows that no index finds.
#include "localmapi/model/MessageSource.h"
#include "localmapi/model/RowSource.h"

namespace localmapi {

namespace {

Error OnlyRead(const char* what) {
    return Error{ErrorCode::AccessDenied, std::string(what) + ": the object is open for reading only"};
}

}  // namespace

Status PropertySource::Write(const SPropValue&) {
    return OnlyRead("a property cannot be set");
}
Status PropertySource::Write(ULONG, ByteSource&) {
    return OnlyRead("a property cannot be set");
}
Status PropertySource::Remove(ULONG) {
    return OnlyRead("a property cannot be deleted");
}
Result<ComPtr<IStream>> PropertySource::OpenForWriting(ULONG, bool) {
    return OnlyRead("a property cannot be written");
}
Status PropertySource::Save() {
    return OnlyRead("changes cannot be saved");
}

bool RowSource::IsIndexed(ULONG) const {
    return false;
}
std::optional<std::size_t> RowSource::Find(ULONG, ByteView) {
    return std::nullopt;
}
Result<std::unique_ptr<RowSource>> RowSource::RowsWithin(std::size_t, ULONG) {
    return Error{ErrorCode::NotFound, "these rows are no messages and hold no rows of their own"};
}

Result<std::unique_ptr<MessageSource>> AttachmentSource::CreateMessage() {
    return OnlyRead("a message cannot be put into an attachment");
}
Result<ComPtr<IStorage>> AttachmentSource::CreateStorage() {
    return OnlyRead("a storage cannot be put into an attachment");
}

Status MessageSource::ReplaceRecipients(const std::vector<SRow>&) {
    return OnlyRead("recipients cannot be changed");
}
Result<std::unique_ptr<AttachmentSource>> MessageSource::CreateAttachment(ULONG&) {
    return OnlyRead("an attachment cannot be added");
}
Status MessageSource::DeleteAttachment(ULONG) {
    return OnlyRead("an attachment cannot be deleted");
}

}  // namespace localmapi
