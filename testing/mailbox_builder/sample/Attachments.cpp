// Attachments of every method and of unusual names, sizes and depths.
#include "testing/mailbox_builder/items/Attachments.h"

#include "mapi/PropTags.h"
#include "testing/mailbox_builder/items/Appointment.h"
#include "testing/mailbox_builder/items/Bodies.h"
#include "testing/mailbox_builder/items/Contact.h"
#include "testing/mailbox_builder/items/Dates.h"
#include "testing/mailbox_builder/items/MsgFile.h"
#include "testing/mailbox_builder/items/OtherItems.h"
#include "testing/mailbox_builder/items/Task.h"
#include "testing/mailbox_builder/items/Wording.h"
#include "testing/mailbox_builder/sample/Parts.h"

#include <string>

namespace mailbox_builder::sample {
namespace {

Bytes Noise(std::size_t size, std::uint64_t seed) {
    Dice dice(seed);
    Bytes bytes(size);
    for (std::byte& byte : bytes) {
        byte = static_cast<std::byte>(dice.Roll(256));
    }
    return bytes;
}

// A mail from Tobias with one plain line.
Message MakeCarrier(const CStringW& subject, Time sent) {
    const Cast& cast = People();
    Message message = MakeMail({.subject = subject, .from = cast.tobias, .to = {cast.mara}, .sent = sent});
    SetPlainBody(message, Wide("See the attachment.\r\n\r\nTobias\r\n"));
    return message;
}

struct Row {
    const char* subject;
    Attachment attachment;
};

void AddEach(Tree& tree, Time begin, std::vector<Row> rows) {
    for (Row& row : rows) {
        Message message = MakeCarrier(Wide(row.subject), begin);
        message.attachments.push_back(std::move(row.attachment));
        tree.At(Wide("Attachments")).messages.push_back(std::move(message));
        begin = After(begin, 75);
    }
}

Attachment NamedOnlyShort() {
    Attachment attachment = AttachNameless(AsBytes("8.3\r\n"));
    attachment.properties.Set(PR_ATTACH_FILENAME, Wide("README.TXT"));
    return attachment;
}

void DescribeMethods(Tree& tree) {
    const CStringW share = Wide("\\\\files.example.com\\surveys\\north\\cloud.las");
    AddEach(
        tree, At(2025, 5, 5, 8),
        {{"Text", AttachBytes(Wide("readings.txt"), AsBytes("12 9 11\r\n"), Wide("text/plain"))},
         {"Picture", AttachBytes(Wide("pier 4.gif"), MakeGif(90, 120, 200), Wide("image/gif"))},
         {"Document", AttachBytes(Wide("Report on pier 4.pdf"), MakePdf("Pier 4 stands."), Wide("application/pdf"))},
         {"Archive",
          AttachBytes(Wide("photos.zip"), MakeZip("a.txt", "stored, not squeezed"), Wide("application/zip"))},
         {"No content", AttachBytes(Wide("empty.dat"), {})},
         {"No name", AttachNameless(AsBytes("nameless"))},
         {"Short name only", NamedOnlyShort()},
         {"Exactly a block", AttachBytes(Wide("8176.bin"), Noise(8176, 1))},
         {"A block and a byte", AttachBytes(Wide("8177.bin"), Noise(8177, 2))},
         {"Many blocks", AttachBytes(Wide("300k.bin"), Noise(300'000, 3))},
         {"Hidden", Hidden(AttachBytes(Wide("hidden.txt"), AsBytes("nobody looks here\r\n"), Wide("text/plain")))},
         {"By reference", AttachReference(Reference::ByReference, share)},
         {"By reference, resolved", AttachReference(Reference::Resolve, share)},
         {"By reference only", AttachReference(Reference::Only, Wide("C:\\surveys\\cloud.las"))},
         {"On the web", AttachReference(Reference::Web, Wide("https://files.example.com/surveys/cloud.las"))},
         {"Just created", AttachNothing()},
         {"Worksheet", AttachObject(Wide("Worksheet"), MakeObject(Wide("row 1: 12, row 2: 9")))}});
}

void DescribeNames(Tree& tree) {
    const CStringW longName = CStringW(200, WCHAR{'n'}) + Wide(".txt");
    AddEach(
        tree, At(2025, 5, 12, 8),
        {{"Long name", AttachBytes(longName, AsBytes("long\r\n"), Wide("text/plain"))},
         {"Name in Russian", AttachBytes(Wide("\u041F\u043B\u0430\u043D.txt"), AsBytes("plan\r\n"))},
         {"Name in Japanese", AttachBytes(Wide("\u5831\u544A\u66F8.pdf"), MakePdf("Report"), Wide("application/pdf"))},
         {"Name with a picture", AttachBytes(Wide("\U0001F4F7 pier.gif"), MakeGif(1, 2, 3), Wide("image/gif"))},
         {"Name with an accent apart", AttachBytes(Wide("re\u0301sume\u0301.txt"), AsBytes("cv\r\n"))},
         {"Name that file systems refuse", AttachBytes(Wide("con: a|b?<c>*\".txt"), AsBytes("odd\r\n"))},
         {"Name with a path", AttachBytes(Wide("..\\..\\etc\\passwd"), AsBytes("no way\r\n"))},
         {"Name without extension", AttachBytes(Wide("Makefile"), AsBytes("all:\r\n"), Wide("text/plain"))}});
}

// Messages within messages, the innermost of depth 1.
Message MakeNested(int depth) {
    Message message = MakeCarrier(Wide("Nested, " + std::to_string(depth) + " to go"), At(2025, 5, 20, 8, depth));
    if (depth > 1) {
        message.attachments.push_back(AttachMessage(MakeNested(depth - 1)));
    } else {
        message.attachments.push_back(AttachBytes(Wide("innermost.txt"), AsBytes("found\r\n"), Wide("text/plain")));
    }
    return message;
}

std::vector<Row> ItemsToEmbed() {
    const Cast& cast = People();
    std::vector<Row> rows;
    rows.push_back({"Forwarded mail", AttachMessage(MakeCarrier(Wide("What was forwarded"), At(2025, 5, 19, 7)))});
    rows.push_back({"Forwarded contact", AttachMessage(MakeContact({.given = Wide("Hanna"),
                                                                    .surname = Wide("Oksanen"),
                                                                    .emails = {cast.hanna},
                                                                    .created = At(2025, 1, 7)}))});
    rows.push_back({"Forwarded appointment", AttachMessage(MakeAppointment({.subject = Wide("Dive at pier 4"),
                                                                            .organizer = cast.ines,
                                                                            .start = At(2025, 6, 2, 7),
                                                                            .end = At(2025, 6, 2, 12),
                                                                            .created = At(2025, 5, 1)}))});
    rows.push_back(
        {"Forwarded task", AttachMessage(MakeTask(
                               {.subject = Wide("Grease the valve"), .owner = cast.luca, .created = At(2025, 5, 2)}))});
    rows.push_back({"Forwarded note", AttachMessage(MakeNote({.text = Wide("Boat house: 4711\r\n(not the real one)"),
                                                              .created = At(2025, 5, 3)}))});
    rows.push_back({"Six messages deep", AttachMessage(MakeNested(6))});
    return rows;
}

void DescribeMessageFiles(Tree& tree) {
    const Cast& cast = People();
    Message inside = MakeCarrier(Wide("Mail in a file"), At(2025, 5, 21, 6));
    inside.attachments.push_back(AttachBytes(Wide("inside.txt"), AsBytes("deep\r\n"), Wide("text/plain")));
    inside.attachments.push_back(AttachMessage(MakeNested(2)));
    const CStringW type = Wide("application/vnd.ms-outlook");
    AddEach(
        tree, At(2025, 5, 21, 8),
        {{"Mail as a file", AttachBytes(Wide("Mail in a file.msg"), MsgFileOf(inside), type)},
         {"Task as a file, capital letters",
          AttachBytes(
              Wide("TASK.MSG"),
              MsgFileOf(MakeTask({.subject = Wide("Task in a file"), .owner = cast.mara, .created = At(2025, 5, 4)})),
              type)},
         {"A file that only looks like a message",
          AttachBytes(Wide("broken.msg"), AsBytes("not a compound file"), type)}});
}

void DescribeInline(Tree& tree) {
    Message message = MakeCarrier(Wide("Pictures in the text"), At(2025, 5, 22, 8));
    SetHtmlBody(message,
                "<html><body><p>North: <img src=\"cid:north@example.com\"></p>"
                "<p>South: <img src=\"cid:south@example.com\"></p></body></html>");
    message.attachments.push_back(
        AttachInline(Wide("image001.gif"), MakeGif(200, 30, 30), Wide("image/gif"), Wide("north@example.com")));
    message.attachments.push_back(
        AttachInline(Wide("image002.gif"), MakeGif(30, 30, 200), Wide("image/gif"), Wide("south@example.com")));
    message.attachments.push_back(AttachBytes(Wide("table.csv"), AsBytes("north;12\r\nsouth;9\r\n"), Wide("text/csv")));
    tree.At(Wide("Attachments")).messages.push_back(std::move(message));

    Message many = MakeCarrier(Wide("Forty attachments"), At(2025, 5, 22, 9));
    for (int i = 1; i <= 40; ++i) {
        const std::string number = std::to_string(i);
        many.attachments.push_back(AttachBytes(Wide("part " + number + ".txt"), AsBytes("part " + number + "\r\n")));
    }
    many.attachments.push_back(AttachMessage(MakeCarrier(Wide("And a mail"), At(2025, 5, 22, 8, 30))));
    many.attachments.push_back(AttachObject(Wide("And an object"), MakeObject(Wide("forty"))));
    tree.At(Wide("Attachments")).messages.push_back(std::move(many));
}

}  // namespace

void DescribeAttachments(Tree& tree) {
    DescribeMethods(tree);
    DescribeNames(tree);
    AddEach(tree, At(2025, 5, 20, 8), ItemsToEmbed());
    DescribeMessageFiles(tree);
    DescribeInline(tree);
}

}  // namespace mailbox_builder::sample
