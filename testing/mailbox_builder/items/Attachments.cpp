#include "testing/mailbox_builder/items/Attachments.h"

#include "localmapi/base/Crc.h"
#include "mapi/PropTags.h"
#include "testing/mailbox_builder/ByteWriter.h"
#include "testing/mailbox_builder/items/CompoundFile.h"
#include "testing/mailbox_builder/items/Wording.h"

#include <algorithm>
#include <array>

namespace mailbox_builder {
namespace {

constexpr std::int32_t kByValue = 1;
constexpr std::int32_t kEmbedded = 5;
constexpr std::int32_t kOle = 6;

Attachment Make(std::int32_t method) {
    Attachment attachment;
    attachment.properties.Set(PR_ATTACH_METHOD, method).Set(PR_RENDERING_POSITION, -1).Set(PR_ATTACH_FLAGS, 0);
    return attachment;
}

// The extension with its dot; empty when there is none.
CStringW ExtensionOf(const CStringW& fileName) {
    const std::size_t dot = fileName.rfind(WCHAR{'.'});
    return dot == CStringW::npos ? CStringW() : fileName.substr(dot);
}

bool IsPlain(WCHAR unit) {
    return (unit >= 'A' && unit <= 'Z') || (unit >= 'a' && unit <= 'z') || (unit >= '0' && unit <= '9');
}

// "QUARTE~1.PDF": what file systems with short names would call the file.
CStringW ShortName(const CStringW& fileName) {
    const CStringW extension = ExtensionOf(fileName);
    CStringW plain;
    std::copy_if(fileName.begin(), fileName.end() - static_cast<std::ptrdiff_t>(extension.size()),
                 std::back_inserter(plain), IsPlain);
    if (fileName.size() <= 12 && plain.size() + extension.size() == fileName.size() && plain.size() <= 8) {
        return fileName;
    }
    return plain.substr(0, 6) + "~1"_w + extension.substr(0, 4);
}

}  // namespace

Attachment AttachBytes(const CStringW& fileName, Bytes content, const CStringW& mediaType) {
    Attachment attachment = AttachNameless(std::move(content));
    attachment.properties.Set(PR_ATTACH_LONG_FILENAME, fileName)
        .Set(PR_ATTACH_FILENAME, ShortName(fileName))
        .Set(PR_DISPLAY_NAME, fileName)
        .Set(PR_ATTACH_EXTENSION, ExtensionOf(fileName))
        .Set(PR_ATTACH_MIME_TAG, mediaType);
    return attachment;
}

Attachment AttachNameless(Bytes content) {
    Attachment attachment = Make(kByValue);
    attachment.properties.Set(PR_ATTACH_DATA_BIN, std::move(content));
    return attachment;
}

Attachment AttachInline(const CStringW& fileName, Bytes content, const CStringW& mediaType, const CStringW& contentId) {
    constexpr std::int32_t kReferencedInHtml = 4;  // ATT_MHTML_REF
    Attachment attachment = Hidden(AttachBytes(fileName, std::move(content), mediaType));
    attachment.properties.Set(PR_ATTACH_CONTENT_ID, contentId).Set(PR_ATTACH_FLAGS, kReferencedInHtml);
    return attachment;
}

Attachment AttachReference(Reference method, const CStringW& path) {
    Attachment attachment = Make(static_cast<std::int32_t>(method));
    const std::size_t separator = path.find_last_of("/\\"_w);
    const CStringW fileName = path.substr(separator == CStringW::npos ? 0 : separator + 1);
    attachment.properties.Set(PR_ATTACH_LONG_PATHNAME, path)
        .Set(PR_ATTACH_PATHNAME, path)
        .Set(PR_ATTACH_LONG_FILENAME, fileName)
        .Set(PR_ATTACH_FILENAME, ShortName(fileName))
        .Set(PR_DISPLAY_NAME, fileName);
    return attachment;
}

Attachment AttachNothing() {
    return Make(0);
}

Attachment AttachMessage(Message message) {
    Attachment attachment = Make(kEmbedded);
    const Property* subject = message.properties.Find(PR_NORMALIZED_SUBJECT);
    if (subject != nullptr) {
        attachment.properties.Set(PR_DISPLAY_NAME, subject->value);
    }
    attachment.embedded = std::make_shared<const Message>(std::move(message));
    return attachment;
}

Attachment AttachObject(const CStringW& name, Bytes compoundFile) {
    Attachment attachment = Make(kOle);
    attachment.properties.Set(PR_DISPLAY_NAME, name).Set(PR_RENDERING_POSITION, 12);
    // The tag of an OLE 2 storage object: [MS-OXCMSG] 2.2.2.15.
    constexpr std::array<std::uint8_t, 9> kStorageTag = {0x2A, 0x86, 0x48, 0x86, 0xF7, 0x14, 0x03, 0x0A, 0x03};
    ByteWriter tag;
    for (const std::uint8_t byte : kStorageTag) {
        tag.U8(byte);
    }
    attachment.properties.Set(PR_ATTACH_TAG, tag.U8(0x02).U8(0x01).Take());
    attachment.ole = std::move(compoundFile);
    return attachment;
}

Attachment Hidden(Attachment attachment) {
    attachment.properties.Set(PR_ATTACHMENT_HIDDEN, true);
    return attachment;
}

Bytes MakeObject(const CStringW& text) {
    // The class of a worksheet of spreadsheet programs.
    constexpr GUID kWorksheet = {0x00020820, 0x0000, 0x0000, {0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46}};
    CompoundStorage root;
    root.storageClass = kWorksheet;
    const Bytes units = AsBytes(text);
    root.streams.push_back({CStringW("\001Ole"_w), ByteWriter().U32(0x02000001).U32(0).U32(0).U32(0).U32(0).Take()});
    root.streams.push_back({CStringW("\003ObjInfo"_w), ByteWriter().U16(0).U16(3).U16(4).Take()});
    root.streams.push_back({CStringW("CONTENTS"_w), units});
    // Larger than what lies among the small streams.
    Bytes book;
    while (book.size() < 6000) {
        book.insert(book.end(), units.begin(), units.end());
        book.push_back(std::byte{'\n'});
    }
    root.streams.push_back({CStringW("Workbook"_w), book});
    return CompoundFileOf(root);
}

Bytes MakeGif(std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    ByteWriter gif;
    gif.Append(AsBytes("GIF89a")).U16(1).U16(1).U8(0x80).U8(0).U8(0);
    gif.U8(red).U8(green).U8(blue).U8(0).U8(0).U8(0);
    gif.U8(0x2C).U16(0).U16(0).U16(1).U16(1).U8(0);
    gif.U8(2).U8(2).U8(0x44).U8(0x01).U8(0).U8(0x3B);
    return gif.Take();
}

Bytes MakePdf(std::string_view asciiLine) {
    const std::string stream = "BT /F1 18 Tf 72 720 Td (" + std::string(asciiLine) + ") Tj ET";
    const std::string objects[] = {
        "<< /Type /Catalog /Pages 2 0 R >>",
        "<< /Type /Pages /Kids [3 0 R] /Count 1 >>",
        "<< /Type /Page /Parent 2 0 R /MediaBox [0 0 595 842] /Contents 4 0 R"
        " /Resources << /Font << /F1 5 0 R >> >> >>",
        "<< /Length " + std::to_string(stream.size()) + " >>\nstream\n" + stream + "\nendstream",
        "<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>",
    };
    std::string pdf = "%PDF-1.4\n";
    std::string places = "0000000000 65535 f \n";
    int number = 0;
    for (const std::string& object : objects) {
        std::string place = std::to_string(pdf.size());
        places += std::string(10 - place.size(), '0') + place + " 00000 n \n";
        pdf += std::to_string(++number) + " 0 obj\n" + object + "\nendobj\n";
    }
    const std::size_t table = pdf.size();
    pdf += "xref\n0 6\n" + places + "trailer\n<< /Size 6 /Root 1 0 R >>\nstartxref\n" + std::to_string(table)
           + "\n%%EOF\n";
    return AsBytes(pdf);
}

Bytes MakeZip(std::string_view fileName, std::string_view content) {
    const Bytes data = AsBytes(content);
    // What the format calls CRC-32 starts and ends inverted.
    const std::uint32_t crc = ~localmapi::Crc(data, 0xFFFFFFFFu);
    ByteWriter common;
    common.U16(20).U16(0).U16(0).U16(0x4B21).U16(0x5865).U32(crc).U32(data.size()).U32(data.size());
    common.U16(fileName.size()).U16(0);
    ByteWriter zip;
    zip.U32(0x04034B50).Append(common.View()).Append(AsBytes(fileName)).Append(data);
    const std::size_t directory = zip.Size();
    zip.U32(0x02014B50).U16(20).Append(common.View()).U16(0).U16(0).U16(0).U32(0).U32(0).Append(AsBytes(fileName));
    const std::size_t directorySize = zip.Size() - directory;
    zip.U32(0x06054B50).U16(0).U16(0).U16(1).U16(1).U32(directorySize).U32(directory).U16(0);
    return zip.Take();
}

}  // namespace mailbox_builder
