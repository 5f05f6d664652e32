// Reads a source from end to end and writes what it finds as lines of JSON: a store, its folders, each followed by its
// items and a summary, each item followed by its attachments and embedded items in the order of their lists.
//
// Memory does not grow with the mailbox: one page of items, one record at a time. What cannot be read is a line of the
// kind "error", and the reading goes on with what is next. One thread.
#pragma once

#include "host/AttachmentFiles.h"
#include "host/Json.h"
#include "host/Output.h"
#include "host/Progress.h"
#include "host/Session.h"
#include "host/Sources.h"
#include "host/Summary.h"
#include "provider/HostValue.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vxhost {

struct IndexOptions {
    std::int64_t since = 0;               // ticks; items that were changed after then, all for 0
    int bodyFormat = 1;                   // as the provider numbers them
    std::vector<std::u16string> folders;  // paths: these and what is below them; empty for all
};

class Indexer {
public:
    // All are borrowed and outlive it; `files` is null when attachments are not to be saved.
    Indexer(Session& session, IndexOptions options, Output& output, Progress& progress, AttachmentFiles* files);

    // Throws Interrupted, and Failure when something cannot be written.
    void Index(Source& source);

    // Writes a line for what is wrong with a source: it could not be opened, or something in it was read around.
    void ReportProblem(const std::string& source, std::string_view operation, const std::string& message);

    const Summary& Result() const noexcept { return m_summary; }

    // The first path that was asked for and that no source has; empty when there is none.
    std::u16string MissingFolder() const;

private:
    using Value = VxOutlookProvider::Value;
    using HResult = VxOutlookProvider::HResult;

    // A folder as it is being read.
    struct Folder {
        Value record;
        Value uri;
        std::uint64_t expected = 0;
        std::uint64_t items = 0;
        std::uint64_t unsupported = 0;
    };

    void IndexStores(const Source& source);
    void IndexStore(const std::u16string& profile, const Value& store);
    Value ReadFolders(const std::u16string& profile, const std::u16string& storeId);
    std::vector<Folder> WantedFolders(const std::u16string& profile, const Value& folders);
    void ExpectItems(std::vector<Folder>& folders);

    void IndexFolder(const std::u16string& profile, Folder& folder);
    bool ReadPage(Folder& folder, Value& uris);
    void ReportMissingItems(const Folder& folder);
    std::uint64_t CountItems(const Folder& folder);

    void IndexItem(const Value& uri, unsigned depth);
    void IndexAttachments(const Value& owner, unsigned depth);
    void IndexAttachment(const Value& uri);
    bool ReadAttachment(const Value& uri, Value& record);
    std::string SaveAttachment(const Value& uri, const Value& record);
    void ReportUnread(const Value& uri);

    // Calls the provider. False when the call failed, which has been written as an error then.
    template <typename Call>
    bool Try(const Value& uri, std::string_view operation, Call call);

    void ReportFailure(const Value& uri, std::string_view operation, HResult code);
    void ReportErrorBits(const Value& uri, std::string_view operation, const Value& record);
    JsonObject BeginError(const Value& uri, std::string_view operation);
    JsonObject BeginLine(std::string_view kind);
    void EndLine(JsonObject& object);

    Session& m_session;
    InstanceProxy& m_provider;
    IndexOptions m_options;
    Output& m_output;
    Progress& m_progress;
    AttachmentFiles* m_files;
    Summary m_summary;
    std::vector<bool> m_isFound;  // for each of the paths that were asked for
    std::string m_line;           // the line being made
};

}  // namespace vxhost
