// Names of profiles as names of files: safe on every file system, and readable as far as that goes.
#include "localmapi/profile/FileNames.h"
#include "tests/localmapi/profile/ProfileTestSupport.h"

#include <gtest/gtest.h>

#include <string>

namespace localmapi::profile::testing {
namespace {

TEST(FileNames, AreTheNamesWithoutWhatFileSystemsCannotBear) {
    struct Row {
        const char* what;
        std::string name;
        std::string stem;
    };
    const Row rows[] = {
        {"plain", "Outlook 2024 (work)", "Outlook 2024 (work)"},
        {"letters of all scripts", "B\xC3\xBCro \xD0\x98\xD0\xB2\xD0\xB0\xD0\xBD",
         "B\xC3\xBCro \xD0\x98\xD0\xB2\xD0\xB0\xD0\xBD"},
        {"separators", "a/b\\c:d", "a%2Fb%5Cc%3Ad"},
        {"wildcards, quotes, redirections", "*?\"<>|", "%2A%3F%22%3C%3E%7C"},
        {"percent sign", "100% %2F", "100%25 %252F"},
        {"the mark of twins", "a~2", "a%7E2"},
        {"controls", "a\tb\x7F", "a%09b%7F"},
        {"dots only", "..", "%2E%2E"},
        {"hidden", ".profile", "%2Eprofile"},
        {"blank and dot at the ends", " a b. ", "%20a b.%20"},
        {"device", "CON", "%43ON"},
        {"device with an extension", "aux.old.txt", "%61ux.old.txt"},
        {"numbered device", "Com7", "%43om7"},
        {"device with a superscript", "lpt\xC2\xB2", "%6Cpt\xC2\xB2"},
        {"no device", "com10", "com10"},
        {"no device either", "console", "console"},
        {"empty", "", ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        EXPECT_EQ(Utf8(FileStemOf(Wide(row.name))), row.stem);
        EXPECT_EQ(Utf8(NameOfFileStem(Wide(row.stem))), row.name);
    }
}

TEST(FileNames, AreCutBetweenCharacters) {
    const std::string letter = "\xE2\x82\xAC";  // three bytes
    for (const std::size_t before : {0U, 1U, 2U}) {
        std::string name(before, 'a');
        for (int i = 0; i < 100; ++i) {
            name += letter;
        }
        const std::string stem = Utf8(FileStemOf(Wide(name)));
        EXPECT_LE(stem.size(), kLongestStem);
        EXPECT_GT(stem.size(), kLongestStem - letter.size());
        EXPECT_EQ(name.substr(0, stem.size()), stem);
    }
    // A percent form is kept whole too.
    const std::string escaped = Utf8(FileStemOf(Wide(std::string(98, 'a') + "//")));
    EXPECT_EQ(escaped, std::string(98, 'a'));
}

TEST(FileNames, OfForeignFilesAreReadAsFarAsTheyMakeSense) {
    EXPECT_EQ(Utf8(NameOfFileStem(Wide("50% of%2"))), "50% of%2");
    EXPECT_EQ(Utf8(NameOfFileStem(Wide("%zz%"))), "%zz%");
}

}  // namespace
}  // namespace localmapi::profile::testing
