#include "host/Commands.h"
#include "host/Text.h"

#include <algorithm>

namespace vxhost {

namespace {

using VxOutlookProvider::FieldIndex;
using VxOutlookProvider::RecordKind;
using VxOutlookProvider::Value;

// Ids are hexadecimal digits, in either case.
bool IsId(std::u16string_view text) {
    return text.size() >= 8 && text.find_first_not_of(u"0123456789abcdefABCDEF") == std::u16string_view::npos;
}

// Whether a name is a folder's path. It may lack the slash that paths begin with, and it may have the store's name before
// it, as in the list of a folder's own folders.
bool IsPath(std::u16string_view path, const std::u16string& store, std::u16string_view name, bool isExact) {
    const auto isSame = [&](std::u16string_view text) {
        return isExact ? text == name : EqualIgnoringCase(text, name);
    };
    return isSame(path) || (path.starts_with(u'/') && isSame(path.substr(1)))
           || isSame(store + u'/' + std::u16string(path));
}

}  // namespace

void AddJsonOption(CLI::App& command, bool& isJson) {
    command.add_flag("--json", isJson, "Print lines of JSON, an object each, in place of a table");
}

ObjectArguments::ObjectArguments(CLI::App& command, std::vector<std::string> names, std::size_t optional)
    : m_names(std::move(names)), m_optional(optional) {
    command.add_option("arguments", m_words, "");
    command.add_option("-p,--profile", m_profile, "Read this profile; there is then no file among the arguments")
        ->type_name("NAME");
    command.add_option("--store", m_store, "Only this store of the profile, by its name or id")->type_name("STORE");
}

void ObjectArguments::Check() const {
    const std::size_t most = m_names.size() + (m_profile.empty() ? 1 : 0);
    if (m_words.size() <= most && m_words.size() >= most - m_optional) {
        return;
    }
    std::string wanted = m_profile.empty() ? "a mailbox file" : "";
    for (const std::string& name : m_names) {
        wanted += (wanted.empty() ? "" : ", ") + name;
    }
    throw Failure(
        Status::Usage, m_words.size() > most ? "There are too many arguments" : "There are too few arguments",
        "It takes " + (wanted.empty() ? std::string("none but the profile") : wanted) + "; see the command's --help.");
}

Source ObjectArguments::Open(Session& session) const {
    return m_profile.empty() ? Source::OfFile(session, ToPath(m_words.front())) : Source::OfProfile(session, m_profile);
}

std::u16string ObjectArguments::At(std::size_t place) const {
    const std::size_t index = place + (m_profile.empty() ? 1 : 0);
    return index < m_words.size() ? ToUtf16(m_words[index]) : std::u16string();
}

Value::Array ObjectArguments::Stores(Session& session, const Source& source) const {
    static const std::size_t idField = FieldIndex(RecordKind::Store, "si_storeId");
    static const std::size_t nameField = FieldIndex(RecordKind::Store, "si_storeName");
    Value all;
    session.Provider().GetProfileStores(source.Profile(), all);
    session.ThrowIfInterrupted();
    if (all.Elements().empty()) {
        throw Failure(Status::NotOpened, source.Name() + " has no stores, or could not be opened",
                      "--log-dir DIR gives a log that says more.");
    }
    const std::u16string wanted = ToUtf16(m_store);
    Value::Array stores;
    std::copy_if(all.Elements().begin(), all.Elements().end(), std::back_inserter(stores), [&](const Value& store) {
        return wanted.empty() || EqualIgnoringCase(store.At(nameField).String(), wanted)
               || EqualIgnoringCase(store.At(idField).String(), wanted);
    });
    if (stores.empty()) {
        throw Failure(Status::Incomplete, source.Name() + " has no store " + m_store, "vxhost stores lists them.");
    }
    return stores;
}

Value ObjectArguments::FindFolder(Session& session, const Source& source, std::u16string_view name) const {
    static const std::size_t storeField = FieldIndex(RecordKind::Store, "si_storeId");
    static const std::size_t storeNameField = FieldIndex(RecordKind::Store, "si_storeName");
    static const std::size_t idField = FieldIndex(RecordKind::Folder, "fi_folderId");
    static const std::size_t pathField = FieldIndex(RecordKind::Folder, "fi_folderPath");
    const bool isId = IsId(name);
    Value similar;
    for (const Value& store : Stores(session, source)) {
        const std::u16string& storeName = store.At(storeNameField).String();
        Value folders;
        session.Provider().GetStoreFolders(source.Profile(), store.At(storeField).String(), folders);
        session.ThrowIfInterrupted();
        for (const Value& folder : folders.Elements()) {
            const std::u16string& path = folder.At(pathField).String();
            if ((isId && EqualIgnoringCase(folder.At(idField).String(), name)) || IsPath(path, storeName, name, true)) {
                return folder;
            }
            if (similar.IsNull() && IsPath(path, storeName, name, false)) {
                similar = folder;
            }
        }
    }
    if (similar.IsNull()) {
        throw Failure(Status::Incomplete, source.Name() + " has no folder " + ToUtf8(name),
                      "vxhost folders lists them; write the path as it does, or the id.");
    }
    return similar;
}

}  // namespace vxhost
