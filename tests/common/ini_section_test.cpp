#include "common/ini_section.h"

#include <QTemporaryDir>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace kestra;

namespace {
// An ini file with the given bytes, and the reader's answer as lines.
class IniSection : public ::testing::Test {
protected:
    void write(std::string const& bytes) { std::ofstream(path(), std::ios::binary) << bytes; }
    std::string path() const { return m_folder.filePath(QStringLiteral("host.ini")).toStdString(); }
    size_t read(char const* section, size_t size = 32) {
        m_buffer.assign(size + 1, '~');
        size_t const count = readIniSection(section, m_buffer.data(), size, path().c_str());
        EXPECT_EQ(m_buffer[size], '~') << "wrote behind the buffer";
        return count;
    }
    std::string text(size_t count) const { return {m_buffer.data(), count}; }

    QTemporaryDir m_folder;
    std::vector<char> m_buffer;
};

TEST_F(IniSection, LinesAreNormalisedAndTerminatedAndCutToTheRoom) {
    using Row = std::tuple<std::string, char const*, std::string>; // the answer is empty without the section
    std::string const long5000(5000, 'x'), x29(29, 'x'), nul(1, '\0');
    for (auto const& [file, section, answer] : {
             // A header in any case and with blanks inside.
             Row{"[other]\nA=1\n  [  lens CALIBRATION setup ] trailing\nREG = 1 , 2\n",
                 "Lens Calibration Setup", "REG=1 , 2" + nul},
             {"[Lens Calibration Setup]\nA=1\n", "Lens Calibration", ""},
             {"[Lens Calibration Setup]\n [Next]\nA=1\n", "Lens Calibration Setup",
              nul}, // empty, but present
             {"[S]\r\nabc\r\n\r\nd = e", "S", "abc" + nul + "d=e" + nul},
             {"[S]\n" + long5000 + "\nsecond\n", "S", x29 + "x" + nul},
             {"[S]\n" + x29 + "\nsecond\nthird\n", "S", x29 + nul + nul}, // what meets no room leaves its NUL
         }) {
        write(file);
        EXPECT_EQ(read(section), answer.size()) << file;
        if (!answer.empty()) {
            EXPECT_EQ(text(answer.size() + 1), answer + nul) << file;
        }
    }
}

TEST_F(IniSection, AnswersWithoutABufferAndWithOneTooSmall) {
    write("[S]\nabc\n");
    EXPECT_EQ(readIniSection("S", nullptr, 0, path().c_str()), 1U);
    EXPECT_EQ(readIniSection("T", nullptr, 0, path().c_str()), 0U);
    EXPECT_EQ(read("S", 1), 0U);
    EXPECT_EQ(read("S", 2), 1U);
    EXPECT_EQ(readIniSection(nullptr, nullptr, 0, path().c_str()), 0U);
    EXPECT_EQ(readIniSection("S", nullptr, 0, nullptr), 0U);
    EXPECT_EQ(readIniSection("S", nullptr, 0, (path() + ".missing").c_str()), 0U);
}

TEST(NormaliseIniLine, KeepsSettingsAndDirectivesAndDropsComments) {
    using Row = std::tuple<std::string, std::string>; // nothing is left of a line that is skipped
    Row const rows[] = {
        {"  key \t =  value \x01 ", "key=value"},
        {"key=value", "key=value"},
        {"a = b = c", "a=b = c"},
        {"no equals sign", "no equals sign"},
        {" = ", "="},
        {"  \t\x02 ", ""},
        {"; comment", ""},
        {"// comment", ""},
        {"/ no comment", "/ no comment"},
        {"# comment", ""},
        {"#comment", ""},
        {"#", ""},
        {"#ICON = x.png", "#ICON=x.png"},
        {"#icons = x.png", "#icons=x.png"},
        {"#TOOLTIP=t", "#TOOLTIP=t"},
        {"#TOOLTI=t", ""},
        {"#menuitem = m", "#menuitem=m"},
        {"#SHORTCUTS = s", "#SHORTCUTS=s"},
        {"name = \xE4\xE4", "name="},
    };
    for (auto const& [given, normalised] : rows) {
        std::string line = given;
        size_t const length = normaliseIniLine(line.data());
        EXPECT_EQ(length, normalised.size()) << given;
        if (length > 0) {
            EXPECT_STREQ(line.c_str(), normalised.c_str());
        }
    }
}
} // namespace
