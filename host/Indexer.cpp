#include "host/Indexer.h"

#include "host/Failures.h"
#include "host/Text.h"
#include "host/Uris.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace vxhost {

namespace {

using VxOutlookProvider::FieldIndex;
using VxOutlookProvider::HResult;
using VxOutlookProvider::ResultException;
using VxOutlookProvider::ResultName;

constexpr std::int64_t kNoItemType = -1;  // in a URI: an attachment that is no item
constexpr int kNoBody = 0;

constexpr auto kNotThere = HResult{1};  // S_FALSE, as which a missing object is known below

// Items inside each other. Each level is a few stack frames.
constexpr unsigned kMostDepth = 64;
constexpr auto kTooDeep = static_cast<HResult>(0x80040117);  // MAPI_E_TOO_COMPLEX

// The bits of eobj_vx_lErrors.
constexpr std::int64_t kErrorAttachmentBody = 2;
constexpr auto kErrorNames =
    std::to_array<std::string_view>({"VxErrorBodyTooBig", "VxErrorAttachmentBody", "VxErrorConnect"});

// Where the fields that are looked at stand in their records.
struct Positions {
    std::size_t storeId = FieldIndex(RecordKind::Store, "si_storeId");
    std::size_t folderPath = FieldIndex(RecordKind::Folder, "fi_folderPath");
    std::size_t folderId = FieldIndex(RecordKind::Folder, "fi_folderId");
    std::size_t folderStoreId = FieldIndex(RecordKind::Folder, "fi_storeId");
    std::size_t uriItemType = FieldIndex(RecordKind::Uri, "uri_itemType");
    std::size_t schema = FieldIndex(RecordKind::Item, "schemaUID");
    std::size_t errors = FieldIndex(RecordKind::Item, "eobj_vx_lErrors");
    std::size_t size = FieldIndex(RecordKind::Item, "common_iSize");
    std::size_t attachmentName = FieldIndex(RecordKind::Item, "attachments_sName");

    // The lists of attachments, one for each type of item but notes, which have none.
    std::array<std::size_t, 4> attachmentLists = {
        FieldIndex(RecordKind::Item, "email_sAttachments"), FieldIndex(RecordKind::Item, "contacts_sAttachments"),
        FieldIndex(RecordKind::Item, "calendar_sAttachments"), FieldIndex(RecordKind::Item, "tasks_sAttachments")};
};

const Positions& At() {
    static const Positions positions;
    return positions;
}

// Whether an item may have attachments: notes have some, too, and do not list them.
bool MayHaveAttachments(const Value& record) {
    bool hasList = false;
    for (const std::size_t list : At().attachmentLists) {
        if (!record.At(list).IsNull()) {
            if (!record.At(list).String().empty()) {
                return true;
            }
            hasList = true;
        }
    }
    return !hasList;
}

// Whether a folder is the one with that path, or below it. The slash that paths begin with may be left out.
bool IsInFolder(std::u16string_view path, std::u16string_view wanted) {
    const auto withoutSlash = [](std::u16string_view text) {
        text.remove_prefix(text.starts_with(u'/') ? 1 : 0);
        return text;
    };
    path = withoutSlash(path);
    wanted = withoutSlash(wanted);
    return path.size() >= wanted.size() && EqualIgnoringCase(path.substr(0, wanted.size()), wanted)
           && (path.size() == wanted.size() || path[wanted.size()] == u'/');
}

std::string HexText(HResult code) {
    std::array<char, 16> text;
    const int length = std::snprintf(text.data(), text.size(), "0x%08x", static_cast<unsigned>(code));
    return std::string(text.data(), static_cast<std::size_t>(length));
}

}  // namespace

Indexer::Indexer(Session& session, IndexOptions options, Output& output, Progress& progress, AttachmentFiles* files)
    : m_session(session),
      m_provider(session.Provider()),
      m_options(std::move(options)),
      m_output(output),
      m_progress(progress),
      m_files(files),
      m_isFound(m_options.folders.size()) {}

std::u16string Indexer::MissingFolder() const {
    const auto missing = std::find(m_isFound.begin(), m_isFound.end(), false);
    return missing == m_isFound.end() ? std::u16string()
                                      : m_options.folders[static_cast<std::size_t>(missing - m_isFound.begin())];
}

// ---- Lines -----------------------------------------------------------------------------------------------------------

JsonObject Indexer::BeginLine(std::string_view kind) {
    m_line.clear();
    JsonObject object(m_line);
    object.Text("kind", kind);
    return object;
}

void Indexer::EndLine(JsonObject& object) {
    object.End();
    m_line += '\n';
    m_output.Write(m_line);
}

JsonObject Indexer::BeginError(const Value& uri, std::string_view operation) {
    ++m_summary.errors;
    JsonObject object = BeginLine("error");
    object.Record("uri", RecordKind::Uri, uri).Text("operation", operation);
    return object;
}

void Indexer::ReportFailure(const Value& uri, std::string_view operation, HResult code) {
    JsonObject line = BeginError(uri, operation);
    line.Text("hresult", HexText(code)).Text("name", ResultName(code));
    EndLine(line);
}

void Indexer::ReportErrorBits(const Value& uri, std::string_view operation, const Value& record) {
    const std::int64_t bits = record.At(At().errors).Integer();
    if (bits == 0) {
        return;
    }
    JsonObject line = BeginError(uri, operation);
    line.Number("errors", bits).Key("names");
    char separator = '[';
    for (std::size_t i = 0; i < kErrorNames.size(); ++i) {
        if ((bits >> i & 1) != 0) {
            m_line += separator;
            AppendJson(m_line, kErrorNames[i]);
            separator = ',';
        }
    }
    m_line += separator == '[' ? "[]" : "]";
    EndLine(line);
}

void Indexer::ReportProblem(const std::string& source, std::string_view operation, const std::string& message) {
    ++m_summary.errors;
    JsonObject line = BeginLine("error");
    line.Text("source", source).Text("operation", operation).Text("message", message);
    EndLine(line);
}

template <typename Call>
bool Indexer::Try(const Value& uri, std::string_view operation, Call call) {
    try {
        call();
    } catch (const ResultException& failure) {
        m_session.ThrowIfInterrupted();
        ReportFailure(uri, operation, failure.Code());
        return false;
    }
    m_session.ThrowIfInterrupted();
    return true;
}

// ---- Stores and folders ----------------------------------------------------------------------------------------------

void Indexer::Index(Source& source) {
    IndexStores(source);
    for (const std::string& problem : source.TakeProblems()) {
        ReportProblem(source.Name(), "read", problem);
    }
}

void Indexer::IndexStores(const Source& source) {
    const Value uri = MakeUri(UriKind::None, source.Profile(), {});
    Value stores;
    if (!Try(uri, "GetProfileStores", [&] { m_provider.GetProfileStores(source.Profile(), stores); })) {
        return;
    }
    if (stores.Elements().empty()) {
        ReportFailure(uri, "GetProfileStores", kNotThere);
    }
    for (const Value& store : stores.Elements()) {
        IndexStore(source.Profile(), store);
    }
}

void Indexer::IndexStore(const std::u16string& profile, const Value& store) {
    JsonObject line = BeginLine("store");
    line.Text("profile", profile).Record("record", RecordKind::Store, store);
    EndLine(line);

    std::vector<Folder> folders = WantedFolders(profile, ReadFolders(profile, store.At(At().storeId).String()));
    ExpectItems(folders);
    for (Folder& folder : folders) {
        IndexFolder(profile, folder);
    }
}

Value Indexer::ReadFolders(const std::u16string& profile, const std::u16string& storeId) {
    const Value uri = MakeUri(UriKind::None, profile, storeId);
    Value folders;
    const auto read = [&] { m_provider.GetStoreFolders(profile, storeId, folders); };
    // A tree of which a part cannot be read fails once; from then on the provider gives what there is of it.
    if (!Try(uri, "GetStoreFolders", read)) {
        Try(uri, "GetStoreFolders", read);
    } else if (folders.IsNull()) {
        ReportFailure(uri, "GetStoreFolders", kNotThere);
    }
    return folders;
}

std::vector<Indexer::Folder> Indexer::WantedFolders(const std::u16string& profile, const Value& folders) {
    std::vector<Folder> wanted;
    for (const Value& record : folders.Elements()) {
        bool isWanted = m_options.folders.empty();
        for (std::size_t i = 0; i < m_options.folders.size(); ++i) {
            if (IsInFolder(record.At(At().folderPath).String(), m_options.folders[i])) {
                isWanted = m_isFound[i] = true;
            }
        }
        if (isWanted) {
            Value uri = MakeUri(UriKind::Folder, profile, record.At(At().folderStoreId).String(),
                                record.At(At().folderId).String());
            wanted.push_back({.record = record, .uri = std::move(uri)});
        }
    }
    return wanted;
}

// For whoever looks at the progress, and to know later that none was lost.
void Indexer::ExpectItems(std::vector<Folder>& folders) {
    for (Folder& folder : folders) {
        folder.expected = CountItems(folder);
        m_progress.Expect(folder.expected);
        m_session.ThrowIfInterrupted();
    }
}

std::uint64_t Indexer::CountItems(const Folder& folder) {
    std::int32_t before = 0;
    std::int32_t in = 0;
    std::int32_t after = 0;
    try {
        // The window begins behind the time itself, as items do that are read.
        const std::int64_t from = m_options.since == 0 ? 0 : m_options.since + 1;
        m_provider.GetChildrenItemsCount(folder.uri, from, 0, false, before, in, after);
    } catch (const ResultException&) {
        return 0;  // reading the folder will tell
    }
    return static_cast<std::uint64_t>(std::max(in, 0)) + static_cast<std::uint64_t>(std::max(after, 0))
           + (m_options.since == 0 ? static_cast<std::uint64_t>(std::max(before, 0)) : 0);
}

void Indexer::IndexFolder(const std::u16string& profile, Folder& folder) {
    const std::u16string& path = folder.record.At(At().folderPath).String();
    const std::uint64_t errorsBefore = m_summary.errors;
    ++m_summary.folders;
    m_progress.EnterFolder(path);
    JsonObject line = BeginLine("folder");
    line.Text("profile", profile).Record("record", RecordKind::Folder, folder.record);
    EndLine(line);

    for (Value uris; ReadPage(folder, uris);) {
        for (const Value& uri : uris.Elements()) {
            m_summary.CountItem(static_cast<int>(uri.At(At().uriItemType).Integer()));
            IndexItem(uri, 0);
            m_progress.CountItem();
        }
    }
    ReportMissingItems(folder);
    JsonObject end = BeginLine("folder-summary");
    end.Text("path", path)
        .Number("items", static_cast<std::int64_t>(folder.items))
        .Number("unsupported", static_cast<std::int64_t>(folder.unsupported))
        .Number("errors", static_cast<std::int64_t>(m_summary.errors - errorsBefore));
    EndLine(end);
}

// The next items of a folder; false when there are no more.
bool Indexer::ReadPage(Folder& folder, Value& uris) {
    std::int32_t unsupported = 0;
    uris = Value();
    if (!Try(folder.uri, "QueryItems",
             [&] { m_provider.QueryItems(folder.uri, m_options.since, false, uris, unsupported); })) {
        return false;
    }
    if (uris.IsNull()) {
        ReportFailure(folder.uri, "QueryItems", kNotThere);
        return false;
    }
    folder.items += uris.Elements().size();
    folder.unsupported += static_cast<std::uint64_t>(std::max(unsupported, 0));
    m_summary.unsupported += static_cast<std::uint64_t>(std::max(unsupported, 0));
    return !uris.Elements().empty();
}

// The provider ends a folder early, without a word, when its rows cannot be read any further.
void Indexer::ReportMissingItems(const Folder& folder) {
    const std::uint64_t read = folder.items + folder.unsupported;
    if (read < folder.expected) {
        JsonObject line = BeginError(folder.uri, "QueryItems");
        line.Number("expected", static_cast<std::int64_t>(folder.expected))
            .Number("read", static_cast<std::int64_t>(read));
        EndLine(line);
    }
}

// ---- Items and attachments -------------------------------------------------------------------------------------------

void Indexer::IndexItem(const Value& uri, unsigned depth) {
    Value record;
    if (!Try(uri, "GetItemData", [&] { m_provider.GetItemData(uri, m_options.bodyFormat, false, record); })) {
        return;
    }
    if (record.IsNull()) {
        ReportFailure(uri, "GetItemData", kNotThere);
        return;
    }
    JsonObject line = BeginLine("item");
    line.Record("uri", RecordKind::Uri, uri).Record("record", RecordKind::Item, record);
    EndLine(line);
    ReportErrorBits(uri, "GetItemData", record);
    if (MayHaveAttachments(record)) {
        IndexAttachments(uri, depth);
    }
}

void Indexer::IndexAttachments(const Value& owner, unsigned depth) {
    Value uris;
    std::int32_t reserved = 0;
    if (!Try(owner, "QueryAttachments", [&] { m_provider.QueryAttachments(owner, uris, reserved); })) {
        return;
    }
    if (uris.IsNull()) {
        ReportFailure(owner, "QueryAttachments", kNotThere);
    }
    for (const Value& uri : uris.Elements()) {
        if (uri.At(At().uriItemType).Integer() == kNoItemType) {
            IndexAttachment(uri);
        } else if (depth == kMostDepth) {
            ReportFailure(uri, "GetItemData", kTooDeep);
        } else {
            ++m_summary.embedded;
            IndexItem(uri, depth + 1);
        }
    }
}

void Indexer::IndexAttachment(const Value& uri) {
    Value record;
    if (!ReadAttachment(uri, record)) {
        return;
    }
    const std::int64_t size = record.At(At().size).Integer();
    ++m_summary.attachments;
    m_summary.attachmentBytes += static_cast<std::uint64_t>(std::max<std::int64_t>(size, 0));
    const bool isLoadable = (record.At(At().errors).Integer() & kErrorAttachmentBody) == 0;
    const std::string file = m_files != nullptr && isLoadable ? SaveAttachment(uri, record) : std::string();

    JsonObject line = BeginLine("attachment");
    line.Record("uri", RecordKind::Uri, uri).Record("record", RecordKind::Item, record);
    if (!file.empty()) {
        line.Text("file", file);
    }
    EndLine(line);
    ReportErrorBits(uri, "GetBinaryItemData", record);
}

bool Indexer::ReadAttachment(const Value& uri, Value& record) {
    if (!Try(uri, "GetBinaryItemData", [&] { m_provider.GetBinaryItemData(uri, kNoBody, false, record); })) {
        return false;
    }
    if (record.IsNull()) {
        ReportFailure(uri, "GetBinaryItemData", kNotThere);
        return false;
    }
    return true;
}

// The name of the file; empty when there is none.
std::string Indexer::SaveAttachment(const Value& uri, const Value& record) {
    using Fetched = AttachmentFiles::Fetched;
    Fetched fetched = Fetched::Nothing;
    const auto size = static_cast<std::uint64_t>(std::max<std::int64_t>(record.At(At().size).Integer(), 0));
    if (!Try(uri, "GetBinaryItemBody", [&] { fetched = m_files->Fetch(m_provider, uri, size); })) {
        return {};
    }
    switch (fetched) {
        case Fetched::TooLarge: ++m_summary.leftOut; return {};
        case Fetched::Nothing: ReportUnread(uri); return {};
        case Fetched::File: break;
    }
    ++m_summary.saved;
    m_summary.savedBytes += m_files->Bytes();
    return m_files->Keep(record.At(At().attachmentName).String());
}

// An attachment whose bytes could not be had. Its record tells why, if it does.
void Indexer::ReportUnread(const Value& uri) {
    Value record;
    if (!ReadAttachment(uri, record)) {
        return;
    }
    if (record.At(At().errors).Integer() != 0) {
        ReportErrorBits(uri, "GetBinaryItemBody", record);
    } else {
        ReportFailure(uri, "GetBinaryItemBody", kNotThere);
    }
}

}  // namespace vxhost
