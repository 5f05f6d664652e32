#include "host/Json.h"
#include "host/Text.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdint>
#include <limits>
#include <string>

namespace vxhost {
namespace {

using nlohmann::json;
using VxOutlookProvider::FieldIndex;
using VxOutlookProvider::FieldsOf;

std::string Quoted(std::u16string_view text) {
    std::string out;
    AppendJson(out, text);
    return out;
}

// What another reader makes of it; it throws for text that is not UTF-8.
std::string ReadBack(const std::string& text) {
    return json::parse(text).get<std::string>();
}

TEST(JsonText, ReadsBackWhateverItsCharacters) {
    std::u16string every;
    for (unsigned unit = 0; unit < 0xD800; ++unit) {
        every += static_cast<char16_t>(unit);
    }
    every += u"\xD83D\xDE00\xDBFF\xDFFF\uE000\uFFFF";
    EXPECT_EQ(ToUtf16(ReadBack(Quoted(every))), every);
    for (const char32_t c : {U'"', U'\\', U'\n', U'\x1F', U'\x7F', U'\x80', U'\u2028'}) {
        std::u16string text = u"before ";
        text += static_cast<char16_t>(c);
        EXPECT_EQ(ToUtf16(ReadBack(Quoted(text))), text);
        text += u" behind";
        EXPECT_EQ(ToUtf16(ReadBack(Quoted(text))), text);
    }
    EXPECT_EQ(Quoted(u""), "\"\"");
    EXPECT_EQ(Quoted(u"\t\"\\\x01"), "\"\\t\\\"\\\\\\u0001\"");
}

TEST(JsonText, IsUtf8EvenWhereItsSourceIsNone) {
    struct Row {
        const char* what;
        std::u16string text;
        std::u16string read;
    };
    const Row wide[] = {{"high surrogate alone", u"a\xD800z", u"a\uFFFDz"},
                        {"at the end", u"a\xDBFF", u"a\uFFFD"},
                        {"low surrogate alone", u"\xDC00z", u"\uFFFDz"},
                        {"the wrong way round", u"\xDC00\xD800", u"\uFFFD\uFFFD"},
                        {"two high ones and a low one", u"\xD800\xD83D\xDE00", u"\uFFFD\xD83D\xDE00"}};
    for (const Row& row : wide) {
        EXPECT_EQ(ToUtf16(ReadBack(Quoted(row.text))), row.read) << row.what;
    }
    // Arguments may be any bytes: cut off, too long, above the last character, surrogates.
    for (const char* bytes : {"\xFF", "\xC3", "\xE2\x82", "\xC0\xAF", "\xE0\x80\xAF", "\xF5\x80\x80\x80",
                              "\xED\xA0\x80", "\xF4\x90\x80\x80", "\x80"}) {
        std::string out;
        AppendJson(out, std::string_view(bytes));
        EXPECT_EQ(ReadBack(out).substr(0, 3), "\xEF\xBF\xBD") << out;
    }
}

TEST(JsonText, HasNumbersAsTheyAre) {
    const auto written = [](auto number) {
        std::string out;
        AppendJson(out, number);
        return out;
    };
    EXPECT_EQ(written(std::int64_t{134'047'984'200'000'001}), "134047984200000001");
    EXPECT_EQ(written(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808");
    EXPECT_EQ(json::parse(written(0.1)).get<double>(), 0.1);
    EXPECT_EQ(written(0.5), "0.5");
    EXPECT_EQ(written(std::numeric_limits<double>::quiet_NaN()), "null");
    EXPECT_EQ(written(-std::numeric_limits<double>::infinity()), "null");
}

TEST(JsonRecords, HaveTheirSetFieldsInTheirOrder) {
    Value::Array fields(FieldsOf(RecordKind::Item).size());
    const auto set = [&](const char* key, Value value) {
        fields[FieldIndex(RecordKind::Item, key)] = std::move(value);
    };
    set("tasks_dPercentComplete", Value(0.25));
    set("schemaUID", Value(std::int32_t{7}));
    set("attachments_abBinaryBlob", Value(Value::Bytes{1, 2, 3}));
    set("common_bIsPublic", Value(false));
    set("email_sSubject", Value(u""));
    set("common_lUTCLastModifiedTime", Value(std::int64_t{-1}));
    std::string out;
    AppendJson(out, RecordKind::Item, Value(fields));
    EXPECT_EQ(out, R"({"schemaUID":7,"common_lUTCLastModifiedTime":-1,"common_bIsPublic":false,"email_sSubject":"",)"
                   R"("tasks_dPercentComplete":0.25})");

    out.clear();
    AppendJson(out, RecordKind::Store, Value(Value::Array(FieldsOf(RecordKind::Store).size())));
    EXPECT_EQ(out, "{}");
    // More values than the kind has fields, and none at all.
    out.clear();
    AppendJson(out, RecordKind::Profile, Value(Value::Array(500, Value(true))));
    EXPECT_EQ(json::parse(out).size(), FieldsOf(RecordKind::Profile).size());
    out.clear();
    AppendJson(out, RecordKind::Profile, Value());
    EXPECT_EQ(out, "{}");
}

}  // namespace
}  // namespace vxhost
