// Writes the seeds of pst_fuzz that a client could have made: pst_fuzz_seeds FOLDER. Small files, which end early, each
// with another form, encoding or kind of content in it. The form with 4 KiB pages begins with 136 KB of free space, so
// its seed is made otherwise.
#include "mapi/MapiGuids.h"
#include "mapi/PropTags.h"
#include "testing/mailbox_builder/MailboxWriter.h"

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

namespace {

using namespace mailbox_builder;

CStringW Wide(std::string_view ascii) {
    return CStringW(ascii.begin(), ascii.end());
}

Message Simple(std::string_view subject) {
    Message message;
    message.properties.Set(PR_SUBJECT_W, Wide(subject))
        .Set(PR_BODY_W, Wide("a body"))
        .Set(PR_CLIENT_SUBMIT_TIME, Time{133'600'000'000'000'000});
    message.recipients.push_back(
        Properties().Set(PR_RECIPIENT_TYPE, std::int32_t{1}).Set(PR_DISPLAY_NAME_W, Wide("Anna")));
    return message;
}

// Values of many types, names of each kind of set.
Message Values() {
    Message message = Simple("\1\5RE: values");
    message.properties.Set(0x6701'1002, std::vector<std::int16_t>{1, 2, 3})
        .Set(0x6702'101F, std::vector<CStringW>{Wide("one"), {}, Wide("three")})
        .Set(0x6703'1102, std::vector<Bytes>{Bytes(3), Bytes(5)})
        .Set(0x6704'0005, 1.5)
        .Set(0x6705'001E, Text8{"caf\xE9"})
        .Set(0x6706'0048, PS_MAPI)
        .Set(0x6707'0102, Bytes(3581, std::byte{7}))
        .Set({PS_PUBLIC_STRINGS, 0, Wide("Keywords")}, 0x101F, std::vector<CStringW>{Wide("red")})
        .Set({PSETID_Common, 0x8501, {}}, 0x0003, std::int32_t{15})
        .Set({PS_MAPI, 0, Wide("a text")}, 0x001F, Wide("a value"));
    return message;
}

// Content in the heap, in a node and in a tree of blocks; a message in a message; an OLE object.
Message Attachments() {
    Message message = Simple("attachments");
    for (const std::size_t size : {100U, 5000U, 17'000U}) {
        Attachment& file = message.attachments.emplace_back();
        file.properties.Set(PR_ATTACH_LONG_FILENAME_W, Wide("file.bin")).Set(PR_ATTACH_DATA_BIN, Bytes(size));
    }
    auto inner = std::make_shared<Message>(Simple("inner"));
    inner->attachments.emplace_back().embedded = std::make_shared<Message>(Simple("innermost"));
    message.attachments.emplace_back().embedded = inner;
    message.attachments.emplace_back().ole = Bytes(600, std::byte{0xD0});
    return message;
}

// The failure of any step ends the writing, so that the last one tells.
Status WriteSeed(const std::filesystem::path& path, WriterOptions options, const std::vector<Message>& messages) {
    options.end = FileEnd::Early;
    VX_TRY_ASSIGN(const auto writer, MailboxWriter::Create(path, options));
    VX_TRY_ASSIGN(const FolderId folder,
                  writer->AddFolder(writer->IpmSubtree(), Properties().Set(PR_DISPLAY_NAME_W, Wide("Inbox"))));
    for (const Message& message : messages) {
        (void)writer->AddMessage(folder, message);
    }
    (void)writer->AddAssociated(folder, Simple("hidden"));
    return writer->Finish();
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 2) {
        std::fputs("usage: pst_fuzz_seeds FOLDER\n", stderr);
        return 2;
    }
    struct Seed {
        const char* name;
        WriterOptions options;
        std::vector<Message> messages;
    };
    const Seed seeds[] = {
        {"written-unicode-values", {}, {Values()}},
        {"written-unicode-attachments", {.encryption = Encryption::None}, {Attachments()}},
        {"written-unicode-rows", {.encryption = Encryption::Cyclic}, std::vector<Message>(40, Simple("a row"))},
        {"written-unicode-ost", {.shape = Shape::Ost, .passwordCrc = 1}, {Simple("in an ost")}},
        {"written-ansi", {.form = Form::Ansi}, {Values(), Attachments()}},
    };
    for (const Seed& seed : seeds) {
        const Status written = WriteSeed(std::filesystem::path(arguments[1]) / seed.name, seed.options, seed.messages);
        if (!written) {
            std::fprintf(stderr, "%s\n", written.Failure().text.c_str());
            return 1;
        }
    }
    return 0;
}
