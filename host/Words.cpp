#include "host/Words.h"

#include "host/TerminalText.h"
#include "host/Times.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace vxhost {

namespace {

using VxOutlookProvider::Field;
using VxOutlookProvider::FieldIndex;
using VxOutlookProvider::RecordKind;
using VxOutlookProvider::Value;

struct Word {
    std::int64_t number;
    const char* text;
};

constexpr auto kItemTypes = std::to_array<Word>(
    {{1, "mail"}, {3, "contact"}, {4, "attachment"}, {6, "appointment"}, {7, "task"}, {14, "note"}});
constexpr auto kFolderTypes =
    std::to_array<Word>({{1, "mail"}, {2, "contacts"}, {3, "calendar"}, {4, "tasks"}, {5, "notes"}, {10, "ignored"}});
constexpr auto kStoreTypes = std::to_array<Word>(
    {{0, "mailbox"}, {1, "public"}, {2, "delegate"}, {3, "file"}, {4, "hotmail"}, {5, "oracle"}, {6, "imap"}});

template <std::size_t N>
std::string WordOf(const std::array<Word, N>& words, std::int64_t number) {
    const auto found = std::find_if(words.begin(), words.end(), [number](const Word& w) { return w.number == number; });
    return found != words.end() ? found->text : "-";
}

// The times that are ticks; all others are milliseconds since 1970.
bool IsTicks(std::string_view key) {
    return key == "common_lUTCLastModifiedTime" || key == "fi_modifiedTime" || key == "uri_modifiedTime";
}

std::string NumberText(const Field& field, std::int64_t number) {
    std::string text = std::to_string(number);
    if (field.type != 'L' || field.key == "eobj_vx_lErrors") {
        return text;
    }
    const std::string moment = TimeText(IsTicks(field.key) ? number : TicksOfMilliseconds(number));
    return moment.empty() ? text : text + " (" + moment + ')';
}

std::string RealText(double number) {
    std::array<char, 32> text;
    return std::string(text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr);
}

}  // namespace

std::string ItemTypeWord(std::int64_t type) {
    return WordOf(kItemTypes, type);
}

std::string FolderTypeWord(std::int64_t type) {
    return WordOf(kFolderTypes, type);
}

std::string StoreTypeWord(std::int64_t type) {
    return WordOf(kStoreTypes, type);
}

std::string SubjectOf(const Value& record) {
    static const std::array<std::size_t, 5> fields = {
        FieldIndex(RecordKind::Item, "email_sSubject"), FieldIndex(RecordKind::Item, "contacts_sDisplayName"),
        FieldIndex(RecordKind::Item, "calendar_sSubject"), FieldIndex(RecordKind::Item, "tasks_sSubject"),
        FieldIndex(RecordKind::Item, "eobj_note_sSubject")};
    for (const std::size_t field : fields) {
        if (!record.At(field).IsNull()) {
            return Printable(record.At(field).String());
        }
    }
    return {};
}

std::string FieldText(const Field& field, const Value& value) {
    switch (value.GetKind()) {
        case Value::Kind::Int32:
        case Value::Kind::Int64: return NumberText(field, value.Integer());
        case Value::Kind::Bool: return value.Boolean() ? "yes" : "no";
        case Value::Kind::Double: return RealText(value.Real());
        case Value::Kind::Text: return PrintableLines(value.String());
        default: return {};
    }
}

}  // namespace vxhost
