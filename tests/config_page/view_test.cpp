#include "config_page/config_view.h"
#include "config_page/identification.h"
#include "config_page/serial_number.h"

#include <gtest/gtest.h>
#include <set>

using namespace kestra;

namespace {

// The states that no check or edit of the page ends in.
TEST(ConfigDisplay, StatesOfNoCheckAreShownToo) {
    ConfigState state;
    state.eepromState = EepromState::Error;
    ConfigStatus const error = viewOf(state).eeprom;
    EXPECT_EQ(error.text, "Error accessing the EEPROM.");
    EXPECT_EQ(error.bullet, Bullet::Red);
    state.eepromState = EepromState(3);
    EXPECT_EQ(viewOf(state).eeprom.text, "The status of the EEPROM is unknown.");
    for (auto const& [serial, bullet] :
         {std::pair(6U, Bullet::Red), {0U, Bullet::Gray}, {2U, Bullet::Gray}}) {
        state.serialState = SerialState(serial);
        EXPECT_EQ(viewOf(state).serial.text, "Enter the serial number.") << serial;
        EXPECT_EQ(viewOf(state).serial.bullet, bullet) << serial;
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
    std::pair<char const*, char const*> const rows[] = {
        {"C:\\grab\\img", "C:\\grab\\SN_"},
        {"C:\\a/b\\img", "C:\\a/SN_"},
        {"50%1/img", "50%1/SN_"},
        {"C:/grab/", "C:/grab/SN_"},
        {"img", "SN_"},
    };
    for (auto const& [present, expected] : rows)
        EXPECT_EQ(grabFileName(present, "SN"), expected) << present;
}

std::set<int> codesOf(Identification field, InterfaceFamily family) {
    std::set<int> codes;
    for (ProductCode const& row : productCodes(field, family))
        EXPECT_TRUE(codes.insert(row.code).second) << row.text << " would never be selected";
    EXPECT_TRUE(codes.contains(255));
    return codes;
}

TEST(ProductLists, NoCodeStandsForTwoRows) {
    for (Identification const field : kIdentificationReadOrder)
        codesOf(field, InterfaceFamily::Sensor);
    EXPECT_EQ(codesOf(Identification::Interface, InterfaceFamily::Sensor), (std::set{1, 2, 3, 255}));
    EXPECT_EQ(codesOf(Identification::Interface, InterfaceFamily::Module), (std::set{17, 18, 255}));
}

} // namespace
