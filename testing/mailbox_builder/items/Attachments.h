// Attachments of every method, and contents to attach. Any thread.
#pragma once

#include "testing/mailbox_builder/Model.h"

#include <string_view>

namespace mailbox_builder {

// By value, with its names (a short one of eight and three characters, too), extension and media type.
Attachment AttachBytes(const CStringW& fileName, Bytes content,
                       const CStringW& mediaType = "application/octet-stream"_w);

// By value, with neither a name nor a type.
Attachment AttachNameless(Bytes content);

// Shown within the HTML body, which names it by its content id.
Attachment AttachInline(const CStringW& fileName, Bytes content, const CStringW& mediaType, const CStringW& contentId);

// PR_ATTACH_METHOD of those that only have a path.
enum class Reference : std::int32_t { ByReference = 2, Resolve = 3, Only = 4, Web = 7 };
Attachment AttachReference(Reference method, const CStringW& path);

// PR_ATTACH_METHOD 0: an attachment that has just been created.
Attachment AttachNothing();

Attachment AttachMessage(Message message);

// An object of another program, with a picture of it: PR_ATTACH_METHOD 6.
Attachment AttachObject(const CStringW& name, Bytes compoundFile);

// PR_ATTACHMENT_HIDDEN.
Attachment Hidden(Attachment attachment);

// A compound file such as an embedded worksheet is.
Bytes MakeObject(const CStringW& text);

// Files that programs for their kind open: a picture of one colour (GIF), a document of one page (PDF), an
// archive with one stored file (ZIP).
Bytes MakeGif(std::uint8_t red, std::uint8_t green, std::uint8_t blue);
Bytes MakePdf(std::string_view asciiLine);
Bytes MakeZip(std::string_view fileName, std::string_view content);

}  // namespace mailbox_builder
