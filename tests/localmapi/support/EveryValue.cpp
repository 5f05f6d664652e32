#include "tests/localmapi/support/EveryValue.h"

#include "localmapi/props/Values.h"

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace localmapi::testing {

namespace {

constexpr FileValue kFileValues[] = {
    {"I2", PT_I2, "FEFF", "-2:I2", 2},
    {"I2 cut", PT_I2, "FE", nullptr, 0},
    {"long", PT_LONG, "FFFFFF7F", "2147483647", 4},
    {"long with more behind it", PT_LONG, "01000000FF", "1", 4},
    {"long cut", PT_LONG, "010000", nullptr, 0},
    {"float", PT_R4, "0000C03F", "1.5:R4", 4},
    {"double", PT_DOUBLE, "000000000000F8BF", "-1.5:R8", 8},
    {"currency", PT_CURRENCY, "1027000000000000", "10000:CY", 8},
    {"application time", PT_APPTIME, "0000000000000440", "2.5:AT", 8},
    {"error", PT_ERROR, "0F010480", "!0F", 4},
    {"Boolean of one byte", PT_BOOLEAN, "01", "true", 2},
    {"Boolean of two", PT_BOOLEAN, "0000", "false", 2},
    {"Boolean that is neither", PT_BOOLEAN, "0002", "true", 2},
    {"Boolean of none", PT_BOOLEAN, "", nullptr, 0},
    {"I8", PT_I8, "FFFFFFFFFFFFFFFF", "-1:I8", 8},
    {"time", PT_SYSTIME, "0080A0B3C4D5E6F7", "t17863200012815597568", 8},
    {"GUID", PT_CLSID, "0B0D020000000000C000000000000046", "g00020D0B", 16},
    {"GUID cut", PT_CLSID, "0B0D020000000000C0000000000000", nullptr, 0},
    {"8-bit text", PT_STRING8, "616263", "a'abc'", 4},
    {"8-bit text, empty", PT_STRING8, "", "a''", 1},
    {"wide text", PT_UNICODE, "61003D26", "w'a<263D>'", 6},
    {"wide text with a lone surrogate", PT_UNICODE, "00D86200", "w'<D800>b'", 6},
    {"wide text with half a unit", PT_UNICODE, "610062", "w'a'", 4},
    {"binary", PT_BINARY, "00FF", "x00FF", 2},
    {"binary, empty", PT_BINARY, "", "x", 0},
    {"server's entry id", PT_SVREID, "01", "x01", 1},
    {"several I2", PT_MV_I2, "0100FFFF", "[1,-1]:I2", 4},
    {"several longs", PT_MV_LONG, "0100000002000000", "[1,2]", 8},
    {"several longs, none", PT_MV_LONG, "", "[]", 0},
    {"several longs, one cut", PT_MV_LONG, "010000000200", "[1]", 4},
    {"several longs, all cut", PT_MV_LONG, "0100", nullptr, 0},
    {"several floats", PT_MV_R4, "0000C03F", "[1.5]:R4", 4},
    {"several doubles", PT_MV_DOUBLE, "000000000000F8BF", "[-1.5]:R8", 8},
    {"several currencies", PT_MV_CURRENCY, "1027000000000000", "[10000]:CY", 8},
    {"several application times", PT_MV_APPTIME, "0000000000000440", "[2.5]:AT", 8},
    {"several I8", PT_MV_I8, "0100000000000000FFFFFFFFFFFFFFFF", "[1,-1]:I8", 16},
    {"several times", PT_MV_SYSTIME, "01000000000000000000000001000000", "[t1,t4294967296]", 16},
    {"several GUIDs", PT_MV_CLSID, "0B0D020000000000C000000000000046", "[g00020D0B]", 16},
    {"null", PT_NULL, "00000000", nullptr, 0},
    {"object", PT_OBJECT, "00000000", nullptr, 0},
    {"several texts", PT_MV_UNICODE, "6100", nullptr, 0},
    {"several binaries", PT_MV_BINARY, "6100", nullptr, 0},
    {"restriction", PT_SRESTRICTION, "00000000", nullptr, 0},
    {"no type", 0x0099, "00000000", nullptr, 0},
    {"several Booleans", MV_FLAG | PT_BOOLEAN, "0100", nullptr, 0},
};

// A value of several, whose elements come from a function of theirs.
template <class Element, class Text>
SPropValue Several(ULONG type, std::initializer_list<Text> texts, ValueMemory& memory, auto make) {
    auto* const elements = memory.Array<Element>(texts.size());
    auto* next = elements;
    for (const Text& text : texts) {
        *next++ = make(text);
    }
    SPropValue value{};
    value.ulPropTag = PROP_TAG(type, 0);
    value.Value.MVbin = {static_cast<ULONG>(texts.size()), reinterpret_cast<SBinary*>(elements)};
    return value;
}

}  // namespace

std::span<const FileValue> FileValues() {
    return kFileValues;
}

Bytes FromHex(const char* hex) {
    Bytes bytes;
    for (std::string_view rest(hex); rest.size() > 1; rest.remove_prefix(2)) {
        bytes.push_back(static_cast<std::byte>(std::stoi(std::string(rest.substr(0, 2)), nullptr, 16)));
    }
    return bytes;
}

std::vector<NamedValue> EveryValue(ValueMemory& memory) {
    std::vector<NamedValue> all;
    for (const FileValue& row : kFileValues) {
        if (const auto value = ValueFromBytes(PROP_TAG(row.type, 0), FromHex(row.hex), memory)) {
            all.push_back({row.name, row.text, row.size, *value});
        }
    }
    const auto wide = [&](WideView text) { return WideValue(PT_UNICODE, text, memory).Value.lpszW; };
    const auto narrow = [&](const char* text) { return NarrowValue(PT_STRING8, text, memory).Value.lpszA; };
    const auto binary = [&](const char* hex) { return BinaryValue(PT_BINARY, FromHex(hex), memory).Value.bin; };
    const std::initializer_list<WideView> noTexts = {};
    all.push_back({"wide texts", "[w'',w'ab',w'c']", 12,
                   Several<LPWSTR>(PT_MV_UNICODE, {WideView(), WideView("ab"_w), WideView("c"_w)}, memory, wide)});
    all.push_back(
        {"8-bit texts", "[a'12345678',a'x']", 11, Several<LPSTR>(PT_MV_STRING8, {"12345678", "x"}, memory, narrow)});
    all.push_back({"binaries", "[x0102030405060708,x,x09]", 9,
                   Several<SBinary>(PT_MV_BINARY, {"0102030405060708", "", "09"}, memory, binary)});
    all.push_back({"no texts", "[]", 0, Several<LPWSTR>(PT_MV_UNICODE, noTexts, memory, wide)});
    all.push_back({"null", "null", 0, LongValue(PT_NULL, 0)});
    all.push_back({"object", "object", 0, LongValue(PT_OBJECT, 0)});
    ULONG id = 0x6000;
    for (NamedValue& each : all) {
        each.value.ulPropTag = PROP_TAG(PROP_TYPE(each.value.ulPropTag), ++id);
    }
    return all;
}

std::vector<AscendingList> AscendingLists(RestrictionMaker& maker) {
    const auto numbers = [&maker](ULONG type, std::initializer_list<const char*> list) {
        std::vector<SPropValue> values;
        for (const char* hex : list) {
            values.push_back(*ValueFromBytes(PROP_TAG(type, 0), FromHex(hex), maker.Memory()));
        }
        return values;
    };
    const auto texts = [&maker](std::initializer_list<std::string_view> list) {
        std::vector<SPropValue> values;
        for (const std::string_view text : list) {
            values.push_back(maker.Wide(text));
        }
        return values;
    };
    using Maker = RestrictionMaker;
    std::vector<AscendingList> lists = {
        {"I2", numbers(PT_I2, {"0080", "0000", "0001"})},
        {"long", numbers(PT_LONG, {"00000080", "01000000", "00000100"})},
        {"Boolean", numbers(PT_BOOLEAN, {"00", "01"})},
        {"double",
         numbers(PT_DOUBLE, {"9C7500883CE437FE", "000000000000F0BF", "000000000000E03F", "000000000000F87F"})},
        {"I8", numbers(PT_I8, {"0000000000000080", "FFFFFFFFFFFFFFFF", "0000000000000001"})},
        {"time", {Maker::Time(0), Maker::Time(5), Maker::Time(1ULL << 32U), Maker::Time(1ULL << 63U)}},
        {"text", texts({"", "a", "AB", "abc", "B", "proj", "Project A", "project z"})},
        {"8-bit text", {maker.Narrow("a"), maker.Narrow("B"), maker.Narrow("c")}},
        {"both widths", {maker.Narrow("a"), maker.Wide("B"), maker.Narrow("c")}},
        {"binary", {maker.Binary(""), maker.Binary("a"), maker.Binary("aa"), maker.Binary("\xFF")}},
        {"several numbers", numbers(PT_MV_I2, {"", "0100", "01000100", "0200"})},
        {"several texts", {maker.Words({}), maker.Words({"a"}), maker.Words({"a", "z"}), maker.Words({"b"})}},
    };
    for (AscendingList& list : lists) {
        for (SPropValue& value : list.values) {
            value.ulPropTag = PROP_TAG(PROP_TYPE(value.ulPropTag), 0x0037);
        }
    }
    return lists;
}

}  // namespace localmapi::testing
