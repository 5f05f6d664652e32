// Commands that give content: an item's record, its body, its attachments' bytes.
#include "host/AttachmentFiles.h"
#include "host/Commands.h"
#include "host/Json.h"
#include "host/TerminalText.h"
#include "host/Text.h"
#include "host/Uris.h"
#include "host/Words.h"

#include <algorithm>
#include <memory>

namespace vxhost {

namespace {

using VxOutlookProvider::Field;
using VxOutlookProvider::FieldIndex;
using VxOutlookProvider::FieldsOf;

constexpr char kObjects[] =
    "FOLDER is a path or an id, as vxhost folders prints them; ITEM is an id, as vxhost items prints it; PATH names "
    "an\n"
    "attachment or an embedded item, as vxhost attachments prints it.\n\n";

const std::vector<std::string> kBodies = {"none", "text", "rtf", "html"};  // by the provider's numbers

// What the three commands take.
struct Content {
    ObjectArguments objects;
    std::string form = "text";
    bool isJson = false;
    bool isDirect = false;
    std::string output;

    Content(CLI::App& command, std::vector<std::string> names, std::size_t optional)
        : objects(command, std::move(names), optional) {}

    int Format() const { return static_cast<int>(std::find(kBodies.begin(), kBodies.end(), form) - kBodies.begin()); }

    // The URI of the item, or of the attachment in it.
    Value Uri(Session& session, const Source& source) const {
        static const std::size_t storeField = FieldIndex(RecordKind::Folder, "fi_storeId");
        static const std::size_t idField = FieldIndex(RecordKind::Folder, "fi_folderId");
        const Value folder = objects.FindFolder(session, source, objects.At(0));
        const std::u16string attachment = objects.At(2);
        return MakeUri(attachment.empty() ? UriKind::Item : UriKind::Attachment, source.Profile(),
                       folder.At(storeField).String(), folder.At(idField).String(), objects.At(1), attachment);
    }

    // Whether the path names an item that is embedded, by its last component.
    bool NamesItem() const {
        const std::u16string path = objects.At(2);
        const std::size_t slash = path.rfind(u'/');
        return path.empty() || path.substr(slash == std::u16string::npos ? 0 : slash + 1).starts_with(u"VxEMBITEM");
    }
};

[[noreturn]] void FailToFind() {
    throw Failure(Status::Incomplete, "There is no such item or attachment in the folder",
                  "vxhost items and vxhost attachments list them.");
}

// Makes the command run `run` once its arguments are right.
template <typename Run>
void OnParse(Program& program, CLI::App& command, std::shared_ptr<Content> arguments, Run run) {
    command.callback([&program, arguments, run] {
        program.run = [&program, arguments, run] {
            arguments->objects.Check();
            return run(program, *arguments);
        };
    });
}

// ---- show ------------------------------------------------------------------------------------------------------------

bool IsBody(const Field& field) {
    return field.key.ends_with("sBody");
}

// "key  value", a line a field; the body behind them.
std::string RecordText(const Value& record) {
    const auto fields = FieldsOf(RecordKind::Item);
    std::size_t width = 0;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        width = record.At(i).IsNull() ? width : std::max(width, fields[i].key.size());
    }
    std::string text;
    std::string body;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        if (record.At(i).IsNull() || fields[i].type == 'A') {
            continue;
        }
        std::string value = FieldText(fields[i], record.At(i));
        if (IsBody(fields[i])) {
            body = std::move(value);
            continue;
        }
        std::replace(value.begin(), value.end(), '\n', ' ');
        text += std::string(fields[i].key) + std::string(width - fields[i].key.size() + 2, ' ') + value + '\n';
    }
    return body.empty() ? text : text + '\n' + body + (body.ends_with('\n') ? "" : "\n");
}

Status Show(const Program& program, const Content& arguments) {
    Session session(program.CommonSettings());
    Source source = arguments.objects.Open(session);
    const Value uri = arguments.Uri(session, source);
    Value record;
    if (arguments.NamesItem()) {
        session.Provider().GetItemData(uri, arguments.Format(), true, record);
    } else {
        session.Provider().GetBinaryItemData(uri, 0, true, record);
    }
    session.ThrowIfInterrupted();
    if (record.IsNull()) {
        FailToFind();
    }
    std::string text;
    if (arguments.isJson) {
        AppendJson(text, RecordKind::Item, record);
        text += '\n';
    } else {
        text = RecordText(record);
    }
    Print(text);
    return TellProblems(source, Status::Done);
}

void AddShow(Program& program) {
    CLI::App& command = program.Add(
        program.app, "show", "All fields of an item or attachment",
        "show {FILE | --profile NAME} FOLDER ITEM [PATH] [--body FORM] [--json]",
        std::string(kObjects) + "Examples:\n  vxhost show archive.pst /Inbox 0000000012AB...\n"
                                "  vxhost show archive.pst /Inbox 0000000012AB... VxEMBITEM2 --json --body none");
    const auto arguments =
        std::make_shared<Content>(command, std::vector<std::string>{"a folder", "an item's id", "a path in it"}, 1);
    command.add_option("--body", arguments->form, "The form of the body: text (the default), rtf, html, none")
        ->check(CLI::IsMember(kBodies).description(""))
        ->type_name("FORM");
    AddJsonOption(command, arguments->isJson);
    OnParse(program, command, arguments, Show);
}

// ---- body ------------------------------------------------------------------------------------------------------------

Status PrintBody(const Program& program, const Content& arguments) {
    Session session(program.CommonSettings());
    Source source = arguments.objects.Open(session);
    const Value uri = arguments.Uri(session, source);
    std::u16string body;
    if (arguments.isDirect) {
        session.Provider().GetItemBody(uri, arguments.Format(), body);
    } else {
        session.Provider().GetItemBody(uri, arguments.Format(), true, body);
    }
    session.ThrowIfInterrupted();
    std::string text;
    if (arguments.isJson) {
        JsonObject object(text);
        object.Text("body", body).End();
        text += '\n';
    } else if (Console::IsTerminal(Stream::Output)) {
        text = PrintableLines(body);
        text += text.empty() || text.ends_with('\n') ? "" : "\n";
    } else {
        text = ToUtf8(body);
    }
    Print(text);
    return TellProblems(source, Status::Done);
}

void AddBody(Program& program) {
    CLI::App& command =
        program.Add(program.app, "body", "The body of an item",
                    "body {FILE | --profile NAME} FOLDER ITEM [PATH] [--format FORM] [--direct] [--json]",
                    std::string(kObjects) + "Example:\n  vxhost body archive.pst /Inbox 0000000012AB... --format html");
    const auto arguments =
        std::make_shared<Content>(command, std::vector<std::string>{"a folder", "an item's id", "a path in it"}, 1);
    command.add_option("--format", arguments->form, "text (the default), rtf, html")
        ->check(CLI::IsMember({"text", "rtf", "html"}).description(""))
        ->type_name("FORM");
    command.add_flag("--direct", arguments->isDirect, "Ask the store for the item, without its folder");
    AddJsonOption(command, arguments->isJson);
    OnParse(program, command, arguments, PrintBody);
}

// ---- save ------------------------------------------------------------------------------------------------------------

// The name that the attachment or item has of its own.
std::string OwnName(Session& session, const Content& arguments, const Value& uri) {
    static const std::size_t nameField = FieldIndex(RecordKind::Item, "attachments_sName");
    Value record;
    if (arguments.NamesItem()) {
        session.Provider().GetItemData(uri, 0, true, record);
    } else {
        session.Provider().GetBinaryItemData(uri, 0, true, record);
    }
    session.ThrowIfInterrupted();
    if (record.IsNull()) {
        FailToFind();
    }
    return arguments.NamesItem() ? SafeFileName(ToUtf16(SubjectOf(record) + ".msg"))
                                 : SafeFileName(record.At(nameField).String());
}

Status Save(const Program& program, const Content& arguments) {
    std::filesystem::path target = ToPath(arguments.output);
    const bool isFolder = target.empty() || std::filesystem::is_directory(target);
    const std::filesystem::path folder = isFolder ? target : target.parent_path();
    AttachmentFiles files(folder.empty() ? std::filesystem::path(".") : folder, -1);

    Settings settings = program.CommonSettings();
    settings.tempFolder = files.TempPath();
    Session session(settings);
    Source source = arguments.objects.Open(session);
    const Value uri = arguments.Uri(session, source);
    if (isFolder) {
        target /= ToPath(OwnName(session, arguments, uri));
    }
    constexpr std::uint64_t kUnknownSize = 1;
    const auto fetched = arguments.NamesItem() ? files.FetchItem(session.Provider(), uri)
                                               : files.Fetch(session.Provider(), uri, kUnknownSize);
    session.ThrowIfInterrupted();
    if (fetched != AttachmentFiles::Fetched::File) {
        throw Failure(Status::Incomplete, "The provider gives no bytes for it",
                      "It is empty, or could not be read; --log-dir DIR gives a log that says more.");
    }
    files.KeepAs(target);
    std::string text;
    if (arguments.isJson) {
        JsonObject object(text);
        object.Text("file", PathText(target)).Number("bytes", static_cast<std::int64_t>(files.Bytes())).End();
    } else {
        text = Printable(ToUtf16(PathText(target)));
    }
    Print(text + '\n');
    return TellProblems(source, Status::Done);
}

void AddSave(Program& program) {
    CLI::App& command = program.Add(
        program.app, "save", "An attachment as a file, or an item as a message file",
        "save {FILE | --profile NAME} FOLDER ITEM [PATH] [-o FILE-OR-DIR] [--json]",
        std::string(kObjects) + "Without a PATH, or with that of an embedded item, the item is saved as a .msg file. A "
                                "file that is there already\nis left alone.\n\n"
                                "Examples:\n  vxhost save archive.pst /Inbox 0000000012AB... 3\n"
                                "  vxhost save archive.pst /Inbox 0000000012AB... -o message.msg");
    const auto arguments =
        std::make_shared<Content>(command, std::vector<std::string>{"a folder", "an item's id", "a path in it"}, 1);
    command
        .add_option("-o,--output", arguments->output,
                    "The file, or a folder for it; without it, under its own name in the current folder")
        ->type_name("FILE");
    AddJsonOption(command, arguments->isJson);
    OnParse(program, command, arguments, Save);
}

}  // namespace

void AddContentCommands(Program& program) {
    AddShow(program);
    AddBody(program);
    AddSave(program);
}

}  // namespace vxhost
