#include "tests/localmapi/library/Expectations.h"

#include "platform/Storage.h"
#include "tests/localmapi/library/Client.h"

#include <cstring>
#include <type_traits>
#include <variant>

namespace vx_testing {

namespace {

using mailbox_builder::Attachment;
using mailbox_builder::Content;
using mailbox_builder::Message;
using mailbox_builder::Properties;
using mailbox_builder::Property;
using mailbox_builder::Text8;
using mailbox_builder::Time;

std::string Hex(ULONG tag) {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string text = "0x";
    for (int shift = 28; shift >= 0; shift -= 4) {
        text += kDigits[(tag >> shift) & 0xF];
    }
    return text;
}

template <class T>
std::string Raw(const T* values, std::size_t count) {
    return std::string(reinterpret_cast<const char*>(values), count * sizeof(T));
}

std::string Raw(const CStringW& text) {
    return Raw(text.data(), text.size());
}

std::string Joined(const std::vector<std::string>& parts) {
    std::string all = std::to_string(parts.size()) + ":";
    for (const std::string& part : parts) {
        all += std::to_string(part.size()) + "," + part;
    }
    return all;
}

// The bytes that a value stands for, the same for what was written and for what comes back.
template <class T>
std::string BytesOfOne(const T& value) {
    if constexpr (std::is_same_v<T, CStringW>) {
        return Raw(value);
    } else if constexpr (std::is_same_v<T, Text8>) {
        return value.bytes;
    } else if constexpr (std::is_same_v<T, localmapi::Bytes>) {
        return Raw(value.data(), value.size());
    } else if constexpr (std::is_same_v<T, Content>) {
        localmapi::Bytes bytes(static_cast<std::size_t>(value.size));
        value.fill(0, bytes);
        return Raw(bytes.data(), bytes.size());
    } else if constexpr (std::is_same_v<T, Time>) {
        return Raw(&value.ticks, 1);
    } else if constexpr (std::is_same_v<T, bool>) {
        return std::string(1, value ? '\1' : '\0');
    } else {
        return Raw(&value, 1);
    }
}

std::string BytesOfExpected(const Property& property) {
    return std::visit(
        [](const auto&
               value) -> std::
                          string {
                              using T = std::decay_t<decltype(value)>;
                              if constexpr (std::
                                                is_same_v<T, std::vector<std::int16_t>> || std::is_same_v<T, std::vector<std::int32_t>> || std::is_same_v<T, std::vector<std::int64_t>> || std::is_same_v<T, std::vector<double>> || std::is_same_v<T, std::vector<Time>> || std::is_same_v<T, std::vector<GUID>> || std::is_same_v<T, std::vector<CStringW>> || std::is_same_v<T, std::vector<localmapi::Bytes>>) {
                                  std::vector<std::string> parts;
                                  for (const auto& one : value) {
                                      parts.push_back(BytesOfOne(one));
                                  }
                                  return Joined(parts);
                              } else {
                                  return BytesOfOne(value);
                              }
                          },
        property.value);
}

template <class T>
std::string JoinedArray(const T* values, ULONG count) {
    std::vector<std::string> parts;
    for (ULONG i = 0; i < count; ++i) {
        parts.push_back(Raw(values + i, 1));
    }
    return Joined(parts);
}

std::string BytesOfGot(const SPropValue& value) {
    switch (PROP_TYPE(value.ulPropTag)) {
        case PT_I2: return Raw(&value.Value.i, 1);
        case PT_LONG: return Raw(&value.Value.l, 1);
        case PT_R4: return Raw(&value.Value.flt, 1);
        case PT_DOUBLE: return Raw(&value.Value.dbl, 1);
        case PT_APPTIME: return Raw(&value.Value.at, 1);
        case PT_CURRENCY:
        case PT_I8: return Raw(&value.Value.li, 1);
        case PT_SYSTIME: return Raw(&value.Value.ft, 1);
        case PT_BOOLEAN: return std::string(1, value.Value.b != 0 ? '\1' : '\0');
        case PT_CLSID: return Raw(value.Value.lpguid, 1);
        case PT_UNICODE: return Raw(CStringW(value.Value.lpszW));
        case PT_STRING8: return value.Value.lpszA;
        case PT_BINARY: return Raw(value.Value.bin.lpb, value.Value.bin.cb);
        case PT_MV_I2: return JoinedArray(value.Value.MVi.lpi, value.Value.MVi.cValues);
        case PT_MV_LONG: return JoinedArray(value.Value.MVl.lpl, value.Value.MVl.cValues);
        case PT_MV_DOUBLE: return JoinedArray(value.Value.MVdbl.lpdbl, value.Value.MVdbl.cValues);
        case PT_MV_I8: return JoinedArray(value.Value.MVli.lpli, value.Value.MVli.cValues);
        case PT_MV_SYSTIME: return JoinedArray(value.Value.MVft.lpft, value.Value.MVft.cValues);
        case PT_MV_CLSID: return JoinedArray(value.Value.MVguid.lpguid, value.Value.MVguid.cValues);
        case PT_MV_UNICODE: {
            std::vector<std::string> parts;
            for (ULONG i = 0; i < value.Value.MVszW.cValues; ++i) {
                parts.push_back(Raw(CStringW(value.Value.MVszW.lppszW[i])));
            }
            return Joined(parts);
        }
        case PT_MV_BINARY: {
            std::vector<std::string> parts;
            for (ULONG i = 0; i < value.Value.MVbin.cValues; ++i) {
                parts.push_back(Raw(value.Value.MVbin.lpbin[i].lpb, value.Value.MVbin.lpbin[i].cb));
            }
            return Joined(parts);
        }
        default: return "another type: " + Hex(value.ulPropTag);
    }
}

// The tag by which the object knows a property: its own, or the one that it has for the name.
ULONG TagIn(IMAPIProp& object, const Property& property) {
    if (!property.name) {
        return property.tag;
    }
    MAPINAMEID name{};
    name.lpguid = const_cast<GUID*>(&property.name->set);
    name.ulKind = property.name->text.empty() ? MNID_ID : MNID_STRING;
    if (property.name->text.empty()) {
        name.Kind.lID = static_cast<LONG>(property.name->number);
    } else {
        name.Kind.lpwstrName = const_cast<LPWSTR>(property.name->text.c_str());
    }
    MAPINAMEID* names[] = {&name};
    SPropTagArray* tags = nullptr;
    static_cast<void>(object.GetIDsFromNames(1, names, 0, &tags));
    const Buffer<SPropTagArray> hold(tags);
    return tags == nullptr ? 0 : PROP_TAG(PROP_TYPE(property.tag), PROP_ID(tags->aulPropTag[0]));
}

// What the writer or the file's engine says otherwise, by design.
bool IsOthers(ULONG tag) {
    switch (PROP_ID(tag)) {
        case PROP_ID(PR_MESSAGE_FLAGS):
        case PROP_ID(PR_ATTACH_NUM):
        case PROP_ID(PR_ATTACH_DATA_OBJ): return PROP_TYPE(tag) != PT_BINARY;
        default: return false;
    }
}

std::string WithoutPrefixMark(ULONG tag, std::string bytes) {
    const bool isMarked = tag == PR_SUBJECT_W && bytes.size() >= 4 && bytes[0] == '\1' && bytes[1] == '\0';
    return isMarked ? bytes.substr(4) : bytes;
}

std::string ReadBack(IMAPIProp& object, ULONG tag) {
    SPropValue* value = nullptr;
    const HRESULT read = HrGetOneProp(&object, tag, &value);
    const Buffer<SPropValue> hold(value);
    if (SUCCEEDED(read)) {
        return BytesOfGot(*value);
    }
    if (read != MAPI_E_NOT_ENOUGH_MEMORY) {
        return "failure " + Hex(static_cast<ULONG>(read));
    }
    return StreamOf(object, tag);
}

void CompareRecipients(IMessage& message, const Message& expected, const std::string& where,
                       std::vector<std::string>& differences) {
    IMAPITable* opened = nullptr;
    if (FAILED(message.GetRecipientTable(MAPI_UNICODE, &opened))) {
        differences.push_back(where + ": no recipient table");
        return;
    }
    const auto table = ComPtr<IMAPITable>::Adopt(opened);
    ULONG count = 0;
    static_cast<void>(table->GetRowCount(0, &count));
    if (count != expected.recipients.size()) {
        differences.push_back(where + ": " + std::to_string(count) + " recipients");
        return;
    }
    for (std::size_t i = 0; i < expected.recipients.size(); ++i) {
        std::vector<ULONG> columns;
        for (const Property& property : expected.recipients[i].All()) {
            columns.push_back(TagIn(message, property));
        }
        const Rows rows = AllRows(*table, columns);
        for (std::size_t k = 0; k < columns.size(); ++k) {
            const SPropValue& got = rows->aRow[i].lpProps[k];
            if (BytesOfGot(got) != BytesOfExpected(expected.recipients[i].All()[k])) {
                differences.push_back(where + ", recipient " + std::to_string(i) + ": " + Hex(columns[k]));
            }
        }
    }
}

void CompareAttachment(IAttach& attach, const Attachment& expected, const std::string& where,
                       std::vector<std::string>& differences) {
    CompareProperties(attach, expected.properties, where, differences);
    IUnknown* opened = nullptr;
    if (expected.embedded != nullptr) {
        if (FAILED(attach.OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, 0, &opened))) {
            differences.push_back(where + ": the message in it does not open");
            return;
        }
        const auto message = ComPtr<IMessage>::Adopt(static_cast<IMessage*>(opened));
        CompareMessage(*message, *expected.embedded, where + "/message", differences);
    }
    if (expected.ole) {
        if (FAILED(attach.OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IStorage, 0, 0, &opened))) {
            differences.push_back(where + ": the storage in it does not open");
            return;
        }
        const auto storage = ComPtr<IStorage>::Adopt(static_cast<IStorage*>(opened));
        STATSTG stat{};
        if (FAILED(storage->Stat(&stat, STATFLAG_NONAME)) || stat.type != STGTY_STORAGE) {
            differences.push_back(where + ": what is in it is no storage");
        }
    }
}

void CompareAttachments(IMessage& message, const Message& expected, const std::string& where,
                        std::vector<std::string>& differences) {
    IMAPITable* opened = nullptr;
    if (FAILED(message.GetAttachmentTable(MAPI_UNICODE, &opened))) {
        differences.push_back(where + ": no attachment table");
        return;
    }
    const auto table = ComPtr<IMAPITable>::Adopt(opened);
    const Rows rows = AllRows(*table, {PR_ATTACH_NUM, PR_ATTACH_METHOD});
    if (rows->cRows != expected.attachments.size()) {
        differences.push_back(where + ": " + std::to_string(rows->cRows) + " attachments");
        return;
    }
    for (ULONG i = 0; i < rows->cRows; ++i) {
        const std::string place = where + ", attachment " + std::to_string(i);
        IAttach* attach = nullptr;
        if (FAILED(message.OpenAttach(Cell(rows, i, 0).Value.ul, nullptr, MAPI_BEST_ACCESS, &attach))) {
            differences.push_back(place + " does not open");
            continue;
        }
        const auto hold = ComPtr<IAttach>::Adopt(attach);
        CompareAttachment(*attach, expected.attachments[i], place, differences);
    }
}

}  // namespace

void CompareProperties(IMAPIProp& object, const Properties& expected, const std::string& where,
                       std::vector<std::string>& differences) {
    for (const Property& property : expected.All()) {
        const ULONG tag = TagIn(object, property);
        if (IsOthers(tag)) {
            continue;
        }
        const std::string wanted = WithoutPrefixMark(tag, BytesOfExpected(property));
        const std::string got = ReadBack(object, tag);
        if (got != wanted) {
            differences.push_back(where + ": " + Hex(property.tag) + " has " + std::to_string(got.size())
                                  + " bytes, not " + std::to_string(wanted.size())
                                  + ", or others: " + got.substr(0, 40));
        }
    }
}

void CompareMessage(IMessage& message, const Message& expected, const std::string& where,
                    std::vector<std::string>& differences) {
    CompareProperties(message, expected.properties, where, differences);
    CompareRecipients(message, expected, where, differences);
    CompareAttachments(message, expected, where, differences);
}

}  // namespace vx_testing
