#include "host/FileNames.h"
#include "host/Text.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

namespace vxhost {
namespace {

TEST(FileNames, AreSafeWhateverTheirTextIs) {
    struct Row {
        const char* what;
        std::u16string text;
        std::string name;
    };
    const Row rows[] = {
        {"ordinary", u"Report 2026.pdf", "Report 2026.pdf"},
        {"other scripts", u"\u0440\u0435\u0437\u044e\u043c\u0435.doc",
         "\xD1\x80\xD0\xB5\xD0\xB7\xD1\x8E\xD0\xBC\xD0\xB5.doc"},
        {"a way out of the folder", u"../../etc/passwd", "_._.._etc_passwd"},
        {"a way out on Windows", u"..\\..\\x", "_._.._x"},
        {"an absolute path", u"C:\\Windows\\x.dll", "C__Windows_x.dll"},
        {"a stream of a file", u"file.txt:hidden", "file.txt_hidden"},
        {"refused characters", u"a<b>c\"d|e?f*g", "a_b_c_d_e_f_g"},
        {"controls and a zero", std::u16string(u"a\0b\nc\x7f\x85", 7), "a_b_c__"},
        {"a text turned around", u"photo\u202Efdp.exe", "photo_fdp.exe"},
        {"a lone surrogate", u"a\xD800.txt", "a_.txt"},
        {"a pair of them", u"\xD83D\xDE00.png", "\xF0\x9F\x98\x80.png"},
        {"dots and blanks at the ends", u"  name. . ", "name"},
        {"hidden", u".bashrc", "_bashrc"},
        {"dots alone", u"...", "attachment"},
        {"nothing", u"", "attachment"},
        {"a device", u"NUL", "_NUL"},
        {"a device with extensions", u"con.tar.gz", "_con.tar.gz"},
        {"a device with a blank", u"Com1 .txt", "_Com1 .txt"},
        {"a device with a raised number", u"LPT\u00B2", "_LPT\xC2\xB2"},
        {"no device", u"console.log", "console.log"},
        {"no device either", u"COM10", "COM10"},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(SafeFileName(row.text), row.name) << row.what;
    }
}

TEST(FileNames, AreCutBeforeTheirExtension) {
    const std::string cut = SafeFileName(std::u16string(500, u'x') + u".pdf");
    EXPECT_EQ(cut, std::string(kMostNameBytes - 4, 'x') + ".pdf");
    EXPECT_EQ(SafeFileName(std::u16string(500, u'x') + u'.' + std::u16string(100, u'y')),
              std::string(kMostNameBytes, 'x'));
    // Three bytes each, and 146 are no multiple of that: no character is cut in two.
    const std::string wide = SafeFileName(std::u16string(400, u'\u65E5') + u".txt");
    EXPECT_EQ(wide.size(), 48 * 3 + 4U);
    EXPECT_EQ(ToUtf8(ToUtf16(wide)), wide);
    // Where it is cut there may be a dot.
    EXPECT_EQ(SafeFileName(std::u16string(kMostNameBytes - 1, u'x') + u'.' + std::u16string(30, u'y')),
              std::string(kMostNameBytes - 1, 'x'));
}

class Folder : public ::testing::Test {
protected:
    Folder() : path(std::filesystem::temp_directory_path() / "vxhost-names-test") {
        std::filesystem::remove_all(path);
        std::filesystem::create_directories(path / "from");
        std::filesystem::create_directories(path / "to");
    }
    ~Folder() override { std::filesystem::remove_all(path); }

    std::filesystem::path Make(const std::filesystem::path& file, const std::string& text) const {
        std::ofstream(path / file, std::ios::binary) << text;
        return path / file;
    }
    std::string Read(const std::filesystem::path& file) const {
        std::ifstream stream(path / file, std::ios::binary);
        std::ostringstream text;
        text << stream.rdbuf();
        return text.str();
    }

    std::filesystem::path path;
};

using Numbered = Folder;

TEST_F(Numbered, NeverReplaceAFile) {
    Make("to/000007-a.txt", "old");
    Make("to/99-b.txt", "not one of ours");
    Make("to/000020 c.txt", "not one of ours");
    NumberedNames names(path / "to");
    EXPECT_EQ(names.MoveIn(Make("from/1", "first"), u"a.txt"), "000008-a.txt");
    Make("to/000009-a.txt", "made by somebody else meanwhile");
    EXPECT_EQ(names.MoveIn(Make("from/2", "second"), u"a.txt"), "000010-a.txt");
    EXPECT_EQ(names.MoveIn(Make("from/3", "third"), u"../a.txt"), "000011-_._a.txt");
    EXPECT_EQ(Read("to/000007-a.txt"), "old");
    EXPECT_EQ(Read("to/000008-a.txt"), "first");
    EXPECT_EQ(Read("to/000009-a.txt"), "made by somebody else meanwhile");
    EXPECT_EQ(Read("to/000010-a.txt"), "second");
    EXPECT_TRUE(std::filesystem::is_empty(path / "from"));
}

TEST_F(Numbered, LeaveTheFileWhereItIsWhenItCannotBeMoved) {
    NumberedNames names(path / "to");
    const auto file = Make("from/1", "first");
    std::filesystem::remove_all(path / "to");
    EXPECT_THROW(names.MoveIn(file, u"a.txt"), std::filesystem::filesystem_error);
    EXPECT_EQ(Read("from/1"), "first");
    EXPECT_THROW(NumberedNames(path / "to"), std::filesystem::filesystem_error);
}

}  // namespace
}  // namespace vxhost
