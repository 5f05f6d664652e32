// What stands in the columns of rows.
#include "tests/localmapi/support/ValueText.h"
#include "tests/localmapi/table/TableFixture.h"

#include <gtest/gtest.h>

#include <string>

namespace localmapi::testing {
namespace {

class TableColumns : public TableFixture {};

constexpr ULONG kServerId = PROP_TAG(PT_SVREID, 0x7001);

TEST_F(TableColumns, GiveValuesInTheTypeThatIsAskedFor) {
    LPSTR narrowWords[] = {m_maker.Narrow("a").Value.lpszA, m_maker.Narrow("\xE9").Value.lpszA};
    SPropValue words{};
    words.ulPropTag = CHANGE_PROP_TYPE(kWords, PT_MV_STRING8);
    words.Value.MVszA = {2, narrowWords};
    SRestriction tree = Maker::Exist(kName);
    SPropValue treeValue{};
    treeValue.ulPropTag = PROP_TAG(PT_SRESTRICTION, 0x6801);
    treeValue.Value.lpszA = reinterpret_cast<LPSTR>(&tree);
    const std::vector<Row> rows = {{m_maker.Wide("wide"), m_maker.Narrow("\xE9", kTextA), LongValue(kNumber, 7), words,
                                    m_maker.Binary("id", kServerId), treeValue,
                                    m_maker.Binary(std::string(64 * 1024, 'x'), PROP_TAG(PT_BINARY, 0x7002)),
                                    m_maker.Binary(std::string(64 * 1024 + 1, 'x'), PROP_TAG(PT_BINARY, 0x7003))}};
    struct Case {
        const char* name;
        ULONG column;
        ULONG given;  // the tag in the row; 0: as asked
        std::string text;
    };
    const Case cases[] = {
        {"as stored", kNumber, 0, "7"},
        {"wide as stored", kName, 0, "w'wide'"},
        {"wide text in 8 bits", kNameA, 0, "a'wide'"},
        {"8-bit text as stored", kTextA, 0, "a'\xE9'"},
        {"8-bit text in 16, in the page of the rows", kText, 0, "w'<00E9>'"},
        {"several texts in 16 bits", kWords, 0, "[w'a',w'<00E9>']"},
        {"several texts, a row each", kWords | MV_INSTANCE, kWords, "[w'a',w'<00E9>']"},
        {"no type asked: a number", PROP_TAG(PT_UNSPECIFIED, 0x0E08), kNumber, "7"},
        {"no type asked: a text", PROP_TAG(PT_UNSPECIFIED, 0x0037), kText, "w'<00E9>'"},
        {"a server's id", CHANGE_PROP_TYPE(kServerId, PT_BINARY), 0, "x6964"},
        {"a restriction", treeValue.ulPropTag, 0, "exist(3001001F)"},
        {"placeholder", PR_NULL, 0, "null"},
        {"missing", kTime, CHANGE_PROP_TYPE(kTime, PT_ERROR), "!0F"},
        {"of another type", PROP_TAG(PT_BOOLEAN, 0x0E08), PROP_TAG(PT_ERROR, 0x0E08), "!0F"},
        {"one text for several", PROP_TAG(PT_UNICODE, 0x8001), PROP_TAG(PT_ERROR, 0x8001), "!0F"},
        {"the largest", PROP_TAG(PT_BINARY, 0x7002), 0, TextOf(m_maker.Binary(std::string(64 * 1024, 'x')))},
        {"too large", PROP_TAG(PT_BINARY, 0x7003), PROP_TAG(PT_ERROR, 0x7003), "!0E"},
    };
    const ComPtr<IMAPITable> table = TableOf(rows);
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        ASSERT_EQ(SetColumns(*table, {kNumber, c.column}), S_OK);
        EXPECT_EQ(All(*table), "7|" + c.text);
        LPSRowSet got = nullptr;
        ASSERT_EQ(table->QueryRows(-1, 0, &got), S_OK);
        const RowSetPointer set(got);
        EXPECT_EQ(set->aRow[0].lpProps[1].ulPropTag, c.given == 0 ? c.column : c.given);
    }
}

TEST_F(TableColumns, ThatCannotBeReadSayWhyAndLeaveTheOthers) {
    Traffic traffic;
    auto rows = std::make_unique<MemoryRows>(std::vector<ULONG>{kName, kNumber});
    rows->Add(Row{m_maker.Wide("a"), LongValue(kNumber, 1)});
    auto watched = std::make_unique<WatchedRows>(std::move(rows), traffic);
    watched->Fail(PROP_ID(kName), ErrorCode::Corrupt);
    const ComPtr<IMAPITable> table = TableOf(std::move(watched));
    EXPECT_EQ(All(*table), "!1B|1");
}

TEST_F(TableColumns, ShownAtFirstAreInTheWidthThatWasAskedFor) {
    const std::vector<Row> rows = {{m_maker.Wide("a"), LongValue(kNumber, 1)}};
    EXPECT_EQ(All(*TableOf(rows, MAPI_UNICODE)), "w'a'|1");
    const ComPtr<IMAPITable> narrow = TableOf(rows, 0);
    EXPECT_EQ(All(*narrow), "a'a'|1");
    ASSERT_EQ(SetColumns(*narrow, {PROP_TAG(PT_UNSPECIFIED, 0x3001)}), S_OK);
    EXPECT_EQ(All(*narrow), "a'a'");
}

std::string TagsOf(IMAPITable& table, ULONG flags) {
    LPSPropTagArray got = nullptr;
    EXPECT_EQ(table.QueryColumns(flags, &got), S_OK);
    const MapiPointer<SPropTagArray> tags(got);
    std::string text;
    for (ULONG i = 0; i < tags->cValues; ++i) {
        text += (i > 0 ? " " : "") + std::to_string(PROP_ID(tags->aulPropTag[i]));
    }
    return text;
}

TEST_F(TableColumns, AreToldAsChosenAndAsOffered) {
    const ComPtr<IMAPITable> table = TableOf(std::vector<Row>{});
    EXPECT_EQ(TagsOf(*table, 0), "12289 3592");
    ASSERT_EQ(SetColumns(*table, {kTime, kNumber, PR_NULL}), S_OK);
    EXPECT_EQ(TagsOf(*table, 0), "12296 3592 0");
    EXPECT_EQ(TagsOf(*table, TBL_ALL_COLUMNS), "12289 3592 12296 0");
    EXPECT_EQ(SetColumns(*table, {}), MAPI_E_INVALID_PARAMETER);
    EXPECT_EQ(TagsOf(*table, 0), "12296 3592 0") << "a refused call changes nothing";
}

}  // namespace
}  // namespace localmapi::testing
