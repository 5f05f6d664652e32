// Compares what a reader gives of a file with the model that the file was written from, property by property.
#pragma once

#include "localmapi/pst/messaging/Store.h"
#include "testing/mailbox_builder/MailboxWriter.h"

#include <string>
#include <vector>

namespace mailbox_builder {

// Each difference is a line that names the place: "0x200004, attachment 2, 0x370E001F: another value". None when all is
// as it was given: every property, recipient and attachment of the model is there and nothing that neither the model
// has nor the writer adds.
class Comparison {
public:
    // `store` is borrowed and outlives the comparison.
    Comparison(localmapi::pst::Store& store, Form form)
        : m_store(store), m_names(store.LoadNames()), m_isAnsi(form == Form::Ansi) {}

    // A message and its row in `list`, the table of its folder.
    void OfMessage(MessageId id, const Message& expected, localmapi::pst::ItemList& list);

    // The properties of a folder, as far as they were given.
    void OfFolder(FolderId id, const Properties& expected);

    const std::vector<std::string>& Differences() const noexcept { return m_differences; }

private:
    struct Context {
        std::string where;
        unsigned codePage;
    };
    void Compare(const Context& at, const Message& expected, localmapi::pst::Message& got);
    void Compare(const Context& at, const Attachment& expected, localmapi::pst::Attachment& got);
    void CompareRecipients(const Context& at, const Message& expected, localmapi::pst::Message& got);
    void CompareAttachments(const Context& at, const Message& expected, localmapi::pst::Message& got);
    void CompareRow(const Context& at, const Message& expected, localmapi::pst::ItemList& list, std::size_t row);

    // `added` are the ids of properties that may be there although the model does not have them.
    void Compare(const Context& at, const Properties& expected, localmapi::pst::PropertyContext& got,
                 const std::vector<std::uint16_t>& added);
    void CompareValue(const Context& at, const Property& expected, localmapi::Result<localmapi::pst::PropertyValue> got,
                      bool isOfTable);
    std::uint16_t IdOf(const Property& property);
    void Differ(const Context& at, const std::string& how) { m_differences.push_back(at.where + ": " + how); }

    localmapi::pst::Store& m_store;
    std::vector<localmapi::NamedId> m_names;
    bool m_isAnsi;
    std::vector<std::string> m_differences;
};

}  // namespace mailbox_builder
