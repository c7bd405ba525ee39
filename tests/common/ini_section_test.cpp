#include "common/ini_section.h"

#include <QTemporaryDir>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

using namespace kestra;

namespace {
// An ini file with the given bytes, and what a buffer of so many bytes holds of a section.
class IniSection : public ::testing::Test {
protected:
    void write(std::string const& bytes) { std::ofstream(path, std::ios::binary) << bytes; }
    // With the NUL that ends the list; empty without the section.
    std::string read(char const* section, size_t size = 32) {
        std::string buffer(size + 1, '~');
        size_t const count = readIniSection(section, buffer.data(), size, path.c_str());
        EXPECT_EQ(buffer[size], '~') << "wrote behind the buffer";
        return buffer.substr(0, count == 0 ? 0 : count + 1);
    }

    QTemporaryDir m_folder;
    std::string const path = m_folder.filePath("host.ini").toStdString();
};

TEST_F(IniSection, LinesAreNormalisedAndTerminatedAndCutToTheRoom) {
    using namespace std::string_literals;
    std::string const long5000(5000, 'x'), x29(29, 'x');
    std::tuple<std::string, char const*, std::string> const rows[] = {
        // A header in any case and with blanks inside.
        {"[other]\nA=1\n  [  lens CALIBRATION setup ] trailing\nREG = 1 , 2\n", "Lens Calibration Setup",
         "REG=1 , 2\0\0"s},
        {"[Lens Calibration Setup]\nA=1\n", "Lens Calibration", ""},
        {"[Lens Calibration Setup]\n [Next]\nA=1\n", "Lens Calibration Setup", "\0\0"s}, // empty, but present
        {"[S]\r\nabc\r\n\r\nd = e", "S", "abc\0d=e\0\0"s},
        {"[S]\n" + long5000 + "\nsecond\n", "S", x29 + "x\0\0"s},
        {"[S]\n" + x29 + "\nsecond\nthird\n", "S", x29 + "\0\0\0"s}, // what meets no room leaves its NUL
    };
    for (auto const& [file, section, answer] : rows) {
        write(file);
        EXPECT_EQ(read(section), answer) << file;
    }
}

TEST_F(IniSection, AnswersWithoutABufferAndWithOneTooSmall) {
    write("[S]\nabc\n");
    EXPECT_EQ(read("S", 1), "");
    EXPECT_EQ(read("S", 2).size(), 2U);
    EXPECT_EQ(readIniSection("S", nullptr, 0, path.c_str()), 1U);
    EXPECT_EQ(readIniSection("T", nullptr, 0, path.c_str()), 0U);
    EXPECT_EQ(readIniSection(nullptr, nullptr, 0, path.c_str()), 0U);
    EXPECT_EQ(readIniSection("S", nullptr, 0, nullptr), 0U);
    EXPECT_EQ(readIniSection("S", nullptr, 0, (path + ".missing").c_str()), 0U);
}

TEST(NormaliseIniLine, KeepsSettingsAndDirectivesAndDropsComments) {
    // Nothing is left of a line that is skipped.
    std::pair<char const*, char const*> const rows[] = {{"  key \t =  value \x01 ", "key=value"},
                                                        {"a = b = c", "a=b = c"},
                                                        {" = ", "="},
                                                        {"  \t\x02 ", ""},
                                                        {"; comment", ""},
                                                        {"// comment", ""},
                                                        {"/ no comment", "/ no comment"},
                                                        {"# comment", ""},
                                                        {"#ICON = x.png", "#ICON=x.png"},
                                                        {"#tooltip = t", "#tooltip=t"},
                                                        {"#TOOLTI=t", ""},
                                                        {"#menuitem = m", "#menuitem=m"},
                                                        {"#SHORTCUTS = s", "#SHORTCUTS=s"},
                                                        {"name = \xE4\xE4", "name="}};
    for (auto const& [given, normalised] : rows) {
        std::string line = given;
        size_t const length = normaliseIniLine(line.data());
        EXPECT_EQ(length, std::strlen(normalised)) << given;
        EXPECT_TRUE(length == 0 || line.c_str() == std::string_view(normalised)) << given;
    }
}
} // namespace
