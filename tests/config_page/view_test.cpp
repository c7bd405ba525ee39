#include "config_page/config_view.h"
#include "config_page/identification.h"
#include "config_page/serial_number.h"

#include <gtest/gtest.h>
#include <set>
#include <tuple>

using namespace kestra;

namespace {
TEST(ConfigView, EveryStateHasItsTextBulletAndEnabling) {
    constexpr char kUnknown[] = "The status of the EEPROM is unknown.",
                   kError[] = "Error accessing the EEPROM.",
                   kAbsent[] = "The EEPROM was not detected at address 0xAC.\n"
                               "Check the PROM ADDR switches on the headboard.",
                   kBlank[] = "EEPROM is present and working normally.\n0 bytes used.  8171 bytes available.",
                   kUsed[] = "EEPROM is present and working normally.\n1 bytes used.  8170 bytes available.";
    using enum Bullet;
    struct {
        EepromState eeprom;
        RecordSpace space;
        bool combosDirty;
        char const* text;
        Bullet bullet;
        char const* enabled; // lists, Apply, and Erase, whose question mark is for what stays as it is
    } const rows[] = {
        {EepromState(3), {}, true, kUnknown, Gray, "--?"},
        {EepromState::Error, {}, true, kError, Red, "--?"},
        {EepromState::Absent, {}, true, kAbsent, Red, "--?"},
        {EepromState::Present, {0, 8171, false}, false, kBlank, Green, "L--"},
        {EepromState::Present, {1, 8170, false}, true, kUsed, Green, "LAE"},
        {EepromState::Present, {0, 8171, true}, false, kError, Red, "L-E"}, // changes that wait to be written
        {EepromState::Present, {0, kEepromFailed, false}, false, kError, Red, "L-E"}, // a broken chain
    };
    ConfigState state;
    state.busAddress = 0xAC;
    for (auto const& row : rows) {
        state.eepromState = row.eeprom;
        state.space = row.space;
        state.combosDirty = row.combosDirty;
        ConfigView const view = viewOf(state);
        EXPECT_EQ(view.eeprom.text, row.text);
        EXPECT_EQ(view.eeprom.bullet, row.bullet) << row.text;
        char const erase = view.erase ? 'E' : '-';
        std::string const enabled = {view.combos ? 'L' : '-', view.apply ? 'A' : '-',
                                     view.touchesErase ? erase : '?'};
        EXPECT_EQ(enabled, row.enabled) << row.text;
    }
    constexpr char kEnter[] = "Enter the serial number.";
    for (auto const& [serial, text, bullet] : {std::tuple(0U, kEnter, Gray),
                                               {1U, "Click Apply to save.", Yellow},
                                               {4U, "Done. Serial number is saved.", Green},
                                               {5U, kEnter, Red},
                                               {6U, kEnter, Red}}) {
        state.serialState = SerialState(serial);
        ConfigView const view = viewOf(state);
        EXPECT_EQ(view.serial.text, text) << serial;
        EXPECT_EQ(view.serial.bullet, bullet) << serial;
        EXPECT_EQ(view.apply, serial == 1) << serial;
    }
}

TEST(SerialNumber, TheNextOneKeepsItsPrefixAndItsThreeDigits) {
    std::pair<char const*, char const*> const rows[] = {
        {"ABC1234009", "ABC1234010"}, {"ABC1234999", "ABC1234001"}, {"%1%2%3%000", "%1%2%3%001"},
        {"ABC1234-05", "ABC1234001"}, {"ABC1234001X", ""},          {"ABC123400", ""},
    };
    for (auto const& [last, next] : rows)
        EXPECT_EQ(nextSerialNumber(QString::fromLatin1(last)).value_or(QString()), next) << last;
}

TEST(GrabFileName, TheFolderStaysWhicheverItsSeparator) {
    std::pair<char const*, char const*> const rows[] = {{"C:\\grab\\img", "C:\\grab\\SN_"},
                                                        {"C:\\a/b\\img", "C:\\a/SN_"},
                                                        {"50%1/", "50%1/SN_"},
                                                        {"img", "SN_"}};
    for (auto const& [present, expected] : rows)
        EXPECT_EQ(grabFileName(present, "SN"), expected) << present;
}

TEST(ProductLists, NoCodeStandsForTwoRows) {
    auto const codesOf = [](Identification field, InterfaceFamily family) {
        std::set<int> codes;
        for (ProductCode const& row : productCodes(field, family))
            EXPECT_TRUE(codes.insert(row.code).second) << row.text << " would never be selected";
        EXPECT_TRUE(codes.contains(255));
        return codes;
    };
    for (Identification const field : kIdentificationReadOrder)
        codesOf(field, InterfaceFamily::Sensor);
    EXPECT_EQ(codesOf(Identification::Interface, InterfaceFamily::Sensor), (std::set{1, 2, 3, 255}));
    EXPECT_EQ(codesOf(Identification::Interface, InterfaceFamily::Module), (std::set{17, 18, 255}));
}
} // namespace
