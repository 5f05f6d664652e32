// What a mailbox is made of, as plain data: properties, recipients, attachments, messages. The writer turns it into
// files; descriptions of e-mails, contacts and the like turn into it; tests compare what a reader gives with it.
#pragma once

#include "localmapi/base/Bytes.h"
#include "platform/FileTime.h"
#include "platform/Guid.h"
#include "platform/WideText.h"

#include <compare>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace mailbox_builder {

using localmapi::Bytes;
using localmapi::ByteView;

// A value too large to be held: `size` bytes, which `fill` gives by position, in any order and as often as asked.
struct Content {
    std::uint64_t size = 0;
    std::function<void(std::uint64_t offset, std::span<std::byte> out)> fill;
};

// 100 ns since 1601, UTC.
struct Time {
    std::int64_t ticks = 0;
    auto operator<=>(const Time&) const = default;
};

// An 8-bit text in the message's code page, kept as PT_STRING8 in files of every form.
struct Text8 {
    std::string bytes;
    bool operator==(const Text8&) const = default;
};

// A value in the C++ type of its property type. PT_UNICODE is CStringW; a file of 8-bit strings holds it in the
// message's code page. PT_BINARY is Bytes or Content; PT_OBJECT is written by the attachment that it belongs to.
using Value = std::variant<bool, std::int16_t, std::int32_t, std::int64_t, float, double, Time, GUID, CStringW, Text8,
                           Bytes, Content, std::vector<std::int16_t>, std::vector<std::int32_t>,
                           std::vector<std::int64_t>, std::vector<float>, std::vector<double>, std::vector<Time>,
                           std::vector<GUID>, std::vector<CStringW>, std::vector<Text8>, std::vector<Bytes>>;

// The name of a property above 0x8000: a set, and in it a number or, when it is not empty, a text.
struct Name {
    GUID set{};
    std::uint32_t number = 0;
    CStringW text;
    bool operator==(const Name&) const = default;
};

// A property: `tag` as MAPI writes it, id and type, or `name` and, in the tag's low half, the type. The type says how
// the value is kept, and must suit it: PT_LONG an int32_t, PT_CURRENCY and PT_I8 an int64_t, PT_APPTIME and PT_DOUBLE
// a double, and so on. A named one has id 0 in its tag.
struct Property {
    std::uint32_t tag = 0;
    Value value;
    std::optional<Name> name;
};

// One for each id; the last one set wins.
class Properties {
public:
    Properties& Set(std::uint32_t tag, Value value);
    Properties& Set(const Name& name, std::uint16_t type, Value value);

    // By id, whatever the type. Null when there is none.
    const Property* Find(std::uint32_t tag) const noexcept;
    const Property* Find(const Name& name) const noexcept;

    std::span<const Property> All() const noexcept { return m_all; }

private:
    std::vector<Property> m_all;
};

struct Message;

struct Attachment {
    Properties properties;

    // The message of an attachment of method 5, kept as a sub-object.
    std::shared_ptr<const Message> embedded;

    // The compound file of an attachment of method 6, kept as a sub-object. Content by value (method 1) is the property
    // PR_ATTACH_DATA_BIN among `properties`; references (2, 3, 4, 7) have their paths there.
    std::optional<Bytes> ole;
};

// A message, contact, appointment, task, note, or whatever its class says. Recipients are the rows of the recipient
// table: each a list of properties, PR_RECIPIENT_TYPE among them.
struct Message {
    Properties properties;
    std::vector<Properties> recipients;
    std::vector<Attachment> attachments;

    // The page of 8-bit texts in files of the ANSI form, and in Text8 values. PR_MESSAGE_CODEPAGE tells readers.
    unsigned codePage = 1252;
};

}  // namespace mailbox_builder
