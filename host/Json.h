// JSON as it is written: one object a line, piece by piece into a text that the caller keeps. The text is always valid
// UTF-8. Nothing is kept between calls; any thread.
#pragma once

#include "provider/HostValue.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace vxhost {

using VxOutlookProvider::RecordKind;
using VxOutlookProvider::Value;

// A text in quotation marks.
void AppendJson(std::string& out, std::u16string_view text);
void AppendJson(std::string& out, std::string_view text);  // UTF-8; what is not becomes U+FFFD

void AppendJson(std::string& out, std::int64_t number);

// The shortest number that reads back as this one; null for what JSON has no number for.
void AppendJson(std::string& out, double number);

// A record as an object: its fields in their order, unset ones and blocks of bytes left out.
void AppendJson(std::string& out, RecordKind kind, const Value& record);

// An object as it grows: JsonObject(line).Text("kind", "store").Record("record", RecordKind::Store, store).End();
// Keys are ASCII without anything to escape.
class JsonObject {
public:
    explicit JsonObject(std::string& out) : m_out(out) { m_out += '{'; }

    JsonObject& Text(std::string_view key, std::string_view text);
    JsonObject& Text(std::string_view key, std::u16string_view text);
    JsonObject& Number(std::string_view key, std::int64_t number);
    JsonObject& Flag(std::string_view key, bool flag);
    JsonObject& Record(std::string_view key, RecordKind kind, const Value& record);

    // The value is the caller's to append.
    JsonObject& Key(std::string_view key);

    void End() { m_out += '}'; }

private:
    std::string& m_out;
    bool m_isEmpty = true;
};

}  // namespace vxhost
