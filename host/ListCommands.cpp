// Commands that list: profiles, stores, folders, items, attachments, counts, special folders.
#include "host/Commands.h"
#include "host/Json.h"
#include "host/Summary.h"
#include "host/TerminalText.h"
#include "host/Text.h"
#include "host/Times.h"
#include "host/Uris.h"
#include "host/Words.h"

#include <array>
#include <limits>
#include <memory>
#include <optional>

namespace vxhost {

namespace {

using VxOutlookProvider::FieldIndex;
using VxOutlookProvider::FieldsOf;

// A field of a record by its key.
const Value& At(RecordKind kind, const Value& record, std::string_view key) {
    return record.At(FieldIndex(kind, key));
}

std::string YesNo(const Value& flag) {
    return flag.Boolean() ? "yes" : "no";
}

// A list under way to standard output: a table that is printed at the end, or lines of JSON as they come.
class List {
public:
    List(bool isJson, std::vector<Table::Column> columns) : m_isJson(isJson), m_table(std::move(columns)) {}

    bool IsJson() const noexcept { return m_isJson; }

    // For a table.
    void Add(std::vector<std::string> cells) { m_table.Add(std::move(cells)); }

    // For JSON.
    void AddRecord(RecordKind kind, const Value& record) {
        AppendJson(m_lines, kind, record);
        EndLine();
    }
    JsonObject Begin() { return JsonObject(m_lines); }
    void End(JsonObject& object) {
        object.End();
        EndLine();
    }

    void Finish() const { Print(m_isJson ? m_lines : m_table.Text(UsesColour(Stream::Output))); }

private:
    void EndLine() {
        m_lines += '\n';
        constexpr std::size_t kEnough = 65'536;
        if (m_lines.size() >= kEnough) {
            Print(m_lines);
            m_lines.clear();
        }
    }

    bool m_isJson;
    Table m_table;
    std::string m_lines;
};

std::int64_t TimeArgument(const char* option, const std::string& text) {
    if (text.empty()) {
        return 0;
    }
    const std::optional<std::int64_t> time = ParseTime(text, CurrentTime());
    if (!time) {
        throw Failure(Status::Usage, std::string(option) + ": " + text + " is no time",
                      "Write 2026-03-01, 2026-03-01T14:30Z, 12h, 7d, or ticks as records have them.");
    }
    return *time;
}

Value FolderUri(const Source& source, const Value& folder) {
    return MakeUri(UriKind::Folder, source.Profile(), At(RecordKind::Folder, folder, "fi_storeId").String(),
                   At(RecordKind::Folder, folder, "fi_folderId").String());
}

// ---- profiles, stores ------------------------------------------------------------------------------------------------

void AddProfiles(Program& program) {
    CLI::App& command = program.Add(program.app, "profiles", "The system's profiles", "profiles [--json]",
                                    "Example:\n  vxhost profiles");
    const auto isJson = std::make_shared<bool>(false);
    AddJsonOption(command, *isJson);
    command.callback([&program, isJson] {
        program.run = [&program, isJson] {
            Session session(program.CommonSettings());
            Value profiles;
            session.Provider().GetSystemProfiles(profiles);
            List list(*isJson, {{"PROFILE"}, {"DEFAULT"}, {"EXCHANGE"}});
            for (const Value& profile : profiles.Elements()) {
                if (list.IsJson()) {
                    list.AddRecord(RecordKind::Profile, profile);
                } else {
                    list.Add({Printable(At(RecordKind::Profile, profile, "pi_name").String()),
                              YesNo(At(RecordKind::Profile, profile, "pi_isDefault")),
                              YesNo(At(RecordKind::Profile, profile, "pi_isExchange"))});
                }
            }
            list.Finish();
            return Status::Done;
        };
    });
}

// What a command that reads objects has: its arguments and whether it prints JSON.
struct Listing {
    ObjectArguments objects;
    bool isJson = false;

    Listing(CLI::App& command, std::vector<std::string> names, std::size_t optional = 0)
        : objects(command, std::move(names), optional) {
        AddJsonOption(command, isJson);
    }
};

// Makes the command list what `list` lists, once its arguments are right and its source is open.
template <typename What, typename Lister>
void RunListing(Program& program, CLI::App& command, std::shared_ptr<What> arguments, Lister lister) {
    command.callback([&program, arguments, lister] {
        program.run = [&program, arguments, lister] {
            arguments->objects.Check();
            Session session(program.CommonSettings());
            Source source = arguments->objects.Open(session);
            return TellProblems(source, lister(session, source, *arguments));
        };
    });
}

Status ListStores(Session& session, const Source& source, const Listing& arguments) {
    List list(arguments.isJson, {{"STORE"}, {"TYPE"}, {"DEFAULT"}, {"ID"}});
    for (const Value& store : arguments.objects.Stores(session, source)) {
        if (list.IsJson()) {
            list.AddRecord(RecordKind::Store, store);
        } else {
            list.Add({Printable(At(RecordKind::Store, store, "si_storeName").String()),
                      StoreTypeWord(At(RecordKind::Store, store, "si_storeType").Integer()),
                      YesNo(At(RecordKind::Store, store, "si_isDefault")),
                      Printable(At(RecordKind::Store, store, "si_storeId").String())});
        }
    }
    list.Finish();
    return Status::Done;
}

void AddStores(Program& program) {
    CLI::App& command = program.Add(program.app, "stores", "The stores of a profile or of a mailbox file",
                                    "stores {FILE | --profile NAME} [--json]",
                                    "Examples:\n  vxhost stores archive.pst\n  vxhost stores --profile Outlook --json");
    RunListing(program, command, std::make_shared<Listing>(command, std::vector<std::string>{}), ListStores);
}

// ---- folders ---------------------------------------------------------------------------------------------------------

struct FolderListing : Listing {
    std::string below;

    explicit FolderListing(CLI::App& command) : Listing(command, {}) {
        command.add_option("--below", below, "Only the folders directly below this one, by its path or id")
            ->type_name("FOLDER");
    }
};

void AddFolder(List& list, const Value& folder) {
    if (list.IsJson()) {
        list.AddRecord(RecordKind::Folder, folder);
        return;
    }
    list.Add({Printable(At(RecordKind::Folder, folder, "fi_folderPath").String()),
              FolderTypeWord(At(RecordKind::Folder, folder, "fi_containerType").Integer()),
              TimeText(At(RecordKind::Folder, folder, "fi_modifiedTime").Integer()),
              Printable(At(RecordKind::Folder, folder, "fi_folderId").String())});
}

Status ListFolders(Session& session, const Source& source, const FolderListing& arguments) {
    List list(arguments.isJson, {{"FOLDER"}, {"TYPE"}, {"CHANGED (UTC)"}, {"ID"}});
    Value folders;
    if (!arguments.below.empty()) {
        const Value parent = arguments.objects.FindFolder(session, source, ToUtf16(arguments.below));
        session.Provider().GetSubFolders(source.Profile(), At(RecordKind::Folder, parent, "fi_storeId").String(),
                                         At(RecordKind::Folder, parent, "fi_folderId").String(),
                                         At(RecordKind::Folder, parent, "fi_folderPath").String(), folders);
        for (const Value& folder : folders.Elements()) {
            AddFolder(list, folder);
        }
    } else {
        for (const Value& store : arguments.objects.Stores(session, source)) {
            session.Provider().GetStoreFolders(source.Profile(), At(RecordKind::Store, store, "si_storeId").String(),
                                               folders);
            session.ThrowIfInterrupted();
            for (const Value& folder : folders.Elements()) {
                AddFolder(list, folder);
            }
        }
    }
    list.Finish();
    return Status::Done;
}

void AddFolders(Program& program) {
    CLI::App& command = program.Add(program.app, "folders", "The folders of all stores",
                                    "folders {FILE | --profile NAME} [--store STORE] [--below FOLDER] [--json]",
                                    "Examples:\n  vxhost folders archive.pst\n"
                                    "  vxhost folders --profile Outlook --store \"Public Folders\"\n"
                                    "  vxhost folders archive.pst --below /Inbox");
    RunListing(program, command, std::make_shared<FolderListing>(command), ListFolders);
}

// ---- items, count ----------------------------------------------------------------------------------------------------

struct ItemListing : Listing {
    std::string since;
    std::uint64_t limit = std::numeric_limits<std::uint64_t>::max();

    explicit ItemListing(CLI::App& command) : Listing(command, {"a folder"}) {
        command.add_option("--since", since, "Only items changed after then; see vxhost index --help")
            ->type_name("TIME");
        command.add_option("--limit", limit, "At most so many")->type_name("N");
    }
};

void AddItem(Session& session, List& list, const Value& uri) {
    if (list.IsJson()) {
        list.AddRecord(RecordKind::Uri, uri);
        return;
    }
    constexpr int kNoBody = 0;
    constexpr std::size_t kSubjectColumns = 60;
    Value record;
    session.Provider().GetItemData(uri, kNoBody, false, record);
    session.ThrowIfInterrupted();
    list.Add({TimeText(At(RecordKind::Uri, uri, "uri_modifiedTime").Integer()),
              ItemTypeWord(At(RecordKind::Uri, uri, "uri_itemType").Integer()),
              YesNo(At(RecordKind::Uri, uri, "uri_readStatus")), Fitted(SubjectOf(record), kSubjectColumns),
              Printable(At(RecordKind::Uri, uri, "uri_itemId").String())});
}

Status ListItems(Session& session, const Source& source, const ItemListing& arguments) {
    const std::int64_t since = TimeArgument("--since", arguments.since);
    const Value folder = arguments.objects.FindFolder(session, source, arguments.objects.At(0));
    const Value folderUri = FolderUri(source, folder);
    List list(arguments.isJson, {{"CHANGED (UTC)"}, {"TYPE"}, {"READ"}, {"SUBJECT"}, {"ID"}});
    for (std::uint64_t listed = 0; listed < arguments.limit;) {
        Value uris;
        std::int32_t unsupported = 0;
        session.Provider().QueryItems(folderUri, since, false, uris, unsupported);
        session.ThrowIfInterrupted();
        if (uris.Elements().empty()) {
            break;
        }
        for (const Value& uri : uris.Elements()) {
            if (listed++ < arguments.limit) {
                AddItem(session, list, uri);
            }
        }
    }
    list.Finish();
    return Status::Done;
}

void AddItems(Program& program) {
    CLI::App& command = program.Add(program.app, "items", "The items of a folder",
                                    "items {FILE | --profile NAME} FOLDER [--since TIME] [--limit N] [--json]",
                                    "FOLDER is a path or an id, as vxhost folders prints them.\n\nExamples:\n"
                                    "  vxhost items archive.pst /Inbox --limit 20\n"
                                    "  vxhost items --profile Outlook /Inbox --since 2d --json");
    RunListing(program, command, std::make_shared<ItemListing>(command), ListItems);
}

struct CountListing : Listing {
    std::string from;
    std::string to;

    explicit CountListing(CLI::App& command) : Listing(command, {"a folder"}) {
        command.add_option("--from", from, "Where the window begins; without it, at the first item")->type_name("TIME");
        command.add_option("--to", to, "Where the window ends; without it, behind the last item")->type_name("TIME");
    }
};

Status CountItems(Session& session, const Source& source, const CountListing& arguments) {
    const std::int64_t from = TimeArgument("--from", arguments.from);
    const std::int64_t to = TimeArgument("--to", arguments.to);
    const Value folder = arguments.objects.FindFolder(session, source, arguments.objects.At(0));
    std::int32_t before = 0;
    std::int32_t in = 0;
    std::int32_t after = 0;
    session.Provider().GetChildrenItemsCount(FolderUri(source, folder), from, to, false, before, in, after);
    using enum Table::Align;
    List list(arguments.isJson, {{"BEFORE", Right}, {"IN", Right}, {"AFTER", Right}});
    if (list.IsJson()) {
        JsonObject counts = list.Begin();
        counts.Number("before", before).Number("in", in).Number("after", after);
        list.End(counts);
    } else {
        const auto text = [](std::int32_t count) { return CountText(static_cast<std::uint64_t>(std::max(count, 0))); };
        list.Add({text(before), text(in), text(after)});
    }
    list.Finish();
    return Status::Done;
}

void AddCount(Program& program) {
    CLI::App& command =
        program.Add(program.app, "count", "How many items of a folder changed before, in and after a window of time",
                    "count {FILE | --profile NAME} FOLDER [--from TIME] [--to TIME] [--json]",
                    "Examples:\n  vxhost count archive.pst /Inbox\n"
                    "  vxhost count archive.pst /Inbox --from 2026-03-01 --to 2026-04-01");
    RunListing(program, command, std::make_shared<CountListing>(command), CountItems);
}

// ---- attachments -----------------------------------------------------------------------------------------------------

void AddAttachment(Session& session, List& list, const Value& uri) {
    if (list.IsJson()) {
        list.AddRecord(RecordKind::Uri, uri);
        return;
    }
    constexpr int kNoBody = 0;
    const std::int64_t type = At(RecordKind::Uri, uri, "uri_itemType").Integer();
    const bool isItem = type != -1;
    Value record;
    if (isItem) {
        session.Provider().GetItemData(uri, kNoBody, false, record);
    } else {
        session.Provider().GetBinaryItemData(uri, kNoBody, false, record);
    }
    const std::int64_t size = At(RecordKind::Item, record, "common_iSize").Integer();
    list.Add({Printable(At(RecordKind::Uri, uri, "uri_attachmentNum").String()), isItem ? ItemTypeWord(type) : "file",
              CountText(static_cast<std::uint64_t>(std::max<std::int64_t>(size, 0))),
              isItem ? SubjectOf(record) : Printable(At(RecordKind::Item, record, "attachments_sName").String())});
}

Status ListAttachments(Session& session, const Source& source, const Listing& arguments) {
    const Value folder = arguments.objects.FindFolder(session, source, arguments.objects.At(0));
    const std::u16string embedded = arguments.objects.At(2);
    const Value owner =
        MakeUri(embedded.empty() ? UriKind::Item : UriKind::Attachment, source.Profile(),
                At(RecordKind::Folder, folder, "fi_storeId").String(),
                At(RecordKind::Folder, folder, "fi_folderId").String(), arguments.objects.At(1), embedded);
    // Reading the item first, and it alone, spares the search through its folder.
    Value record;
    session.Provider().GetItemData(owner, 0, true, record);
    if (record.IsNull()) {
        throw Failure(Status::Incomplete, "There is no such item in the folder", "vxhost items lists them.");
    }
    Value uris;
    std::int32_t reserved = 0;
    session.Provider().QueryAttachments(owner, uris, reserved);
    List list(arguments.isJson, {{"PATH"}, {"TYPE"}, {"BYTES", Table::Align::Right}, {"NAME OR SUBJECT"}});
    for (const Value& uri : uris.Elements()) {
        AddAttachment(session, list, uri);
    }
    list.Finish();
    return Status::Done;
}

void AddAttachments(Program& program) {
    CLI::App& command =
        program.Add(program.app, "attachments", "The attachments of an item, and the items embedded in it",
                    "attachments {FILE | --profile NAME} FOLDER ITEM [PATH] [--json]",
                    "ITEM is an id, as vxhost items prints it; PATH names an item embedded in it.\n\nExamples:\n"
                    "  vxhost attachments archive.pst /Inbox 0000000012AB...\n"
                    "  vxhost attachments archive.pst /Inbox 0000000012AB... VxEMBITEM2");
    RunListing(
        program, command,
        std::make_shared<Listing>(command, std::vector<std::string>{"a folder", "an item's id", "a path in it"}, 1),
        ListAttachments);
}

// ---- special folders -------------------------------------------------------------------------------------------------

constexpr auto kSpecialFolders =
    std::to_array<const char*>({"inbox", "sent items", "deleted items", "outbox", "drafts", "conflicts", "sync issues",
                                "local failures", "server failures", "junk e-mail"});

Status ListSpecialFolders(Session& session, const Source& source, const Listing& arguments) {
    List list(arguments.isJson, {{"STORE"}, {"KIND"}, {"NAME"}});
    for (const Value& store : arguments.objects.Stores(session, source)) {
        const std::u16string& storeName = At(RecordKind::Store, store, "si_storeName").String();
        for (std::size_t kind = 0; kind < kSpecialFolders.size(); ++kind) {
            std::u16string name;
            session.Provider().GetSpecialFolderName(
                source.Profile(), At(RecordKind::Store, store, "si_storeId").String(), static_cast<int>(kind), name);
            if (name.empty()) {
                continue;
            }
            if (list.IsJson()) {
                JsonObject folder = list.Begin();
                folder.Text("store", storeName).Text("special", kSpecialFolders[kind]).Text("name", name);
                list.End(folder);
            } else {
                list.Add({Printable(storeName), kSpecialFolders[kind], Printable(name)});
            }
        }
    }
    list.Finish();
    return Status::Done;
}

void AddSpecialFolders(Program& program) {
    CLI::App& command = program.Add(program.app, "special-folders", "The names of a store's special folders",
                                    "special-folders {FILE | --profile NAME} [--store STORE] [--json]",
                                    "Example:\n  vxhost special-folders archive.pst");
    RunListing(program, command, std::make_shared<Listing>(command, std::vector<std::string>{}), ListSpecialFolders);
}

}  // namespace

void AddListCommands(Program& program) {
    AddProfiles(program);
    AddStores(program);
    AddFolders(program);
    AddItems(program);
    AddCount(program);
    AddAttachments(program);
    AddSpecialFolders(program);
}

}  // namespace vxhost
