#include "testing/scripted_mapi/CallText.h"

#include "mapi/MapiGuids.h"
#include "platform/Storage.h"

namespace scripted_mapi {

namespace {

constexpr char kDigits[] = "0123456789ABCDEF";

template <typename List, typename Describe>
std::string Joined(const List& list, Describe describe) {
    std::string text;
    for (const auto& element : list) {
        text += (text.empty() ? "" : ",") + describe(element);
    }
    return text;
}

std::string ListText(const char* name, ULONG count, const SRestriction* children) {
    return name
           + ("(" + Joined(std::span(children, count), [](const SRestriction& one) { return RestrictionText(&one); }))
           + ")";
}

struct DataText {
    ULONG type;

    std::string operator()(std::monostate) const { return ""; }
    std::string operator()(LONG number) const {
        return type == PT_ERROR ? Hex8(static_cast<ULONG>(number)) : std::to_string(number);
    }
    std::string operator()(LONGLONG number) const { return std::to_string(number); }
    std::string operator()(double number) const { return std::to_string(number); }
    std::string operator()(const GUID& guid) const { return Hex({reinterpret_cast<const BYTE*>(&guid), sizeof(guid)}); }
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(const CStringW& text) const { return Ascii(text); }
    std::string operator()(const Bytes& bytes) const { return Hex(bytes); }
    template <typename T>
    std::string operator()(const std::vector<T>& list) const {
        return "{" + Joined(list, *this) + "}";
    }
};

}  // namespace

std::string JoinedCall(const std::string& name, std::initializer_list<std::string> words) {
    return name + "(" + Joined(words, [](const std::string& word) { return word; }) + ")";
}

std::string Hex8(ULONG number) {
    std::string text(8, '0');
    for (std::size_t i = 8; i-- > 0; number >>= 4) {
        text[i] = kDigits[number & 0xF];
    }
    return text;
}

std::string Hex(std::span<const BYTE> bytes) {
    std::string text;
    for (const BYTE byte : bytes) {
        text += kDigits[byte >> 4];
        text += kDigits[byte & 0xF];
    }
    return text;
}

std::string InterfaceName(const IID* iid) {
    if (iid == nullptr) {
        return "null";
    }
    const struct {
        const IID& iid;
        const char* name;
    } known[] = {
        {IID_IMAPIFolder, "IMAPIFolder"}, {IID_IMessage, "IMessage"},     {IID_IABContainer, "IABContainer"},
        {IID_IMailUser, "IMailUser"},     {IID_IStream, "IStream"},       {IID_IStorage, "IStorage"},
        {IID_IMsgStore, "IMsgStore"},     {IID_IMAPITable, "IMAPITable"},
    };
    for (const auto& row : known) {
        if (row.iid == *iid) {
            return row.name;
        }
    }
    return Hex8(static_cast<ULONG>(iid->Data1));
}

std::string TagsText(const SPropTagArray* tags) {
    if (tags == nullptr) {
        return "null";
    }
    return "[" + Joined(std::span(&tags->aulPropTag[0], tags->cValues), Hex8) + "]";
}

std::string ValueText(const Value& value) {
    return Hex8(value.tag) + "=" + std::visit(DataText{PROP_TYPE(value.tag)}, value.data);
}

std::string ValuesText(ULONG count, const SPropValue* properties) {
    return "{" + Joined(std::span(properties, count), [](const SPropValue& one) { return ValueText(CopyOf(one)); })
           + "}";
}

std::string RestrictionText(const SRestriction* restriction) {
    if (restriction == nullptr) {
        return "null";
    }
    switch (restriction->rt) {
        case RES_AND: return ListText("and", restriction->res.resAnd.cRes, restriction->res.resAnd.lpRes);
        case RES_OR: return ListText("or", restriction->res.resOr.cRes, restriction->res.resOr.lpRes);
        case RES_CONTENT:
            return CallText("content", Hex8(restriction->res.resContent.ulFuzzyLevel),
                            ValueText(CopyOf(*restriction->res.resContent.lpProp)));
        case RES_PROPERTY:
            return CallText("property", restriction->res.resProperty.relop,
                            ValueText(CopyOf(*restriction->res.resProperty.lpProp)));
        default: return "other";
    }
}

std::string SortText(const SSortOrderSet* order) {
    if (order == nullptr) {
        return "null";
    }
    return "["
           + Joined(std::span(&order->aSort[0], order->cSorts),
                    [](const SSortOrder& one) {
                        return (one.ulOrder == TABLE_SORT_DESCEND ? "-" : "+") + Hex8(one.ulPropTag);
                    })
           + "]";
}

std::string CallerText(const void* text, bool isWide) {
    if (text == nullptr) {
        return "null";
    }
    return isWide ? Ascii(static_cast<const WCHAR*>(text)) : std::string(static_cast<const char*>(text));
}

std::string EntryIdText(ULONG size, const void* entryId) {
    return entryId == nullptr ? "null" : Hex({static_cast<const BYTE*>(entryId), size});
}

std::string UidText(const MAPIUID* uid) {
    return uid == nullptr ? "null" : Hex(uid->ab);
}

}  // namespace scripted_mapi
