#include "host/Summary.h"
#include "host/TerminalText.h"

#include <gtest/gtest.h>

namespace vxhost {
namespace {

TEST(TerminalText, HasNoCommandsForTheTerminal) {
    EXPECT_EQ(Printable(u"\x1b[2J\u009b"
                        u"1m\x07"
                        u"bell"),
              "?[2J?1m?bell");
    EXPECT_EQ(Printable(u"one\r\ntwo\tthree"), "one  two three");
    EXPECT_EQ(Printable(u"abc\u202Etxt"), "abc?txt");
    EXPECT_EQ(Printable(u"\u65E5\u672C"), "\xE6\x97\xA5\xE6\x9C\xAC");
    EXPECT_EQ(PrintableLines(u"one\r\ntwo\rthree\n\tfour\u2028"
                             u"five\x1b"),
              "one\ntwo\nthree\n\tfour\nfive?");
}

TEST(TerminalText, FitsIntoColumns) {
    struct Row {
        const char* text;
        std::size_t columns;
        const char* fitted;
    };
    constexpr Row rows[] = {
        {"short", 5, "short"},
        {"longer", 5, "lo..."},
        {"longer", 3, "..."},
        {"longer", 2, ".."},
        {"longer", 0, ""},
        {"", 0, ""},
        {"\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E", 6, "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E"},  // two columns each
        {"\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E", 5, "\xE6\x97\xA5..."},
        {"e\xCC\x81t\xC3\xA9", 3, "e\xCC\x81t\xC3\xA9"},  // an accent of its own takes none
    };
    for (const Row& row : rows) {
        EXPECT_EQ(Fitted(row.text, row.columns), row.fitted) << row.text << " in " << row.columns;
    }
}

TEST(Tables, AlignByColumnsNotByBytes) {
    Table table({{"NAME"}, {"N", Table::Align::Right}, {"LAST"}});
    table.Add({"a", "1", "x"});
    table.Add({"\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E", "1,000", "y"});
    EXPECT_EQ(table.Text(false),
              "NAME        N  LAST\n"
              "a           1  x\n"
              "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E  1,000  y\n");
    EXPECT_TRUE(table.Text(true).starts_with("\x1b[1mNAME"));
    EXPECT_EQ(Table({{"ONLY"}}).Text(false), "ONLY\n");

    Table wide({{"NAME"}, {"N"}});
    wide.Add({std::string(100, 'x'), "1"});
    wide.Add({"short", "2"});
    EXPECT_EQ(wide.Text(false), "NAME   N\n" + std::string(100, 'x') + "  1\nshort  2\n");
}

TEST(SummaryTexts, CountAndMeasure) {
    EXPECT_EQ(CountText(0), "0");
    EXPECT_EQ(CountText(999), "999");
    EXPECT_EQ(CountText(1000), "1,000");
    EXPECT_EQ(CountText(12'345'678), "12,345,678");
    EXPECT_EQ(SizeText(1), "1 byte");
    EXPECT_EQ(SizeText(999), "999 bytes");
    EXPECT_EQ(SizeText(1000), "1.0 KB");
    EXPECT_EQ(SizeText(999'949), "999.9 KB");
    EXPECT_EQ(SizeText(999'950), "1.0 MB");
    EXPECT_EQ(SizeText(5'000'000'000'000'000), "5000.0 TB");
    EXPECT_EQ(DurationText(std::chrono::seconds(59)), "0:59");
    EXPECT_EQ(DurationText(std::chrono::seconds(3599)), "59:59");
    EXPECT_EQ(DurationText(std::chrono::seconds(3600 + 61)), "1:01:01");
}

TEST(SummaryTexts, TellWhatWasReadAndNothingElse) {
    Summary summary;
    EXPECT_EQ(
        SummaryText(summary, 0, std::chrono::duration<double>(0)),
        "0 items in 0 folders, 0.00 s (0 items/s)\n  0 attachments (0 bytes)\n  0 bytes of output\n  no errors\n");
    for (const int type : {1, 1, 3, 99}) {
        summary.CountItem(type);
    }
    summary.folders = 1;
    summary.embedded = 1;
    summary.attachments = 3;
    summary.attachmentBytes = 4500;
    summary.saved = 2;
    summary.savedBytes = 4000;
    summary.leftOut = 1;
    summary.unsupported = 5;
    summary.errors = 1;
    EXPECT_EQ(SummaryText(summary, 12'000, std::chrono::duration<double>(2)),
              "4 items in 1 folder, 2.00 s (2 items/s)\n"
              "  2 e-mails, 1 contacts, 1 others\n"
              "  1 embedded item\n"
              "  3 attachments (4.5 KB), 2 saved (4.0 KB), 1 left out as too large\n"
              "  12.0 KB of output\n"
              "  5 of kinds that are not indexed\n"
              "  1 error: see the lines of kind error\n");
}

}  // namespace
}  // namespace vxhost
