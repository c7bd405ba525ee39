#include "config_page/config_display.h"
#include "config_page/grab_file_name.h"
#include "config_page/product_lists.h"
#include "config_page/serial_number.h"

#include <gtest/gtest.h>
#include <set>

namespace {

TEST(ConfigDisplay, EveryEepromStateHasItsTextAndBullet) {
    struct Row {
        uint32_t state;
        char const* text;
        Bullet bullet;
    };
    Row const rows[] = {
        {4, "EEPROM is present and working normally.\n17 bytes used.  8154 bytes available.", Bullet::Green},
        {5, "The EEPROM was not detected at address 0xAC.\nCheck the PROM ADDR switches on the headboard.",
         Bullet::Red},
        {6, "Error accessing the EEPROM.", Bullet::Red},
        {0, "The status of the EEPROM is unknown.", Bullet::Gray},
        {3, "The status of the EEPROM is unknown.", Bullet::Gray},
    };
    for (Row const& row : rows) {
        ConfigStatus const status = eepromStatus(row.state, {17, 8154}, 0xAC);
        EXPECT_EQ(status.text.toStdString(), row.text) << row.state;
        EXPECT_EQ(status.bullet, row.bullet) << row.state;
    }
}

TEST(ConfigDisplay, EverySerialStateHasItsTextAndBullet) {
    struct Row {
        uint32_t state;
        char const* text;
        Bullet bullet;
    };
    Row const rows[] = {
        {1, "Click Apply to save.", Bullet::Yellow},   {4, "Done. Serial number is saved.", Bullet::Green},
        {5, "Enter the serial number.", Bullet::Red},  {6, "Enter the serial number.", Bullet::Red},
        {0, "Enter the serial number.", Bullet::Gray}, {2, "Enter the serial number.", Bullet::Gray},
    };
    for (Row const& row : rows) {
        EXPECT_EQ(serialStatus(row.state).text.toStdString(), row.text) << row.state;
        EXPECT_EQ(serialStatus(row.state).bullet, row.bullet) << row.state;
    }
}

TEST(SerialNumber, TheNextOneKeepsItsPrefixAndItsThreeDigits) {
    std::pair<char const*, char const*> const rows[] = {
        {"ABC1234001", "ABC1234002"},
        {"ABC1234009", "ABC1234010"},
        {"ABC1234998", "ABC1234999"},
        {"ABC1234999", "ABC1234001"},
        {"%1%2%3%000", "%1%2%3%001"},
        {"ABCDEFGHIJ", "ABCDEFG001"},
        {"ABC1234-05", "ABC1234001"},
        {"ABC1234001X", ""},
        {"ABC123400", ""},
        {"", ""},
    };
    for (auto const& [last, next] : rows)
        EXPECT_EQ(nextSerialNumber(QString::fromLatin1(last)).value_or(QString()).toStdString(), next)
            << last;
}

TEST(GrabFileName, TheFolderStaysWhicheverItsSeparator) {
    std::pair<char const*, char const*> const rows[] = {
        {"C:/grab/img", "C:/grab/SN_"},
        {"C:\\grab\\img", "C:\\grab\\SN_"},
        {"C:\\a/b\\img", "C:\\a/SN_"},
        {"/img", "/SN_"},
        {"C:/grab/", "C:/grab/SN_"},
        {"img", "SN_"},
        {"", "SN_"},
        {"50%1/img", "50%1/SN_"},
    };
    for (auto const& [present, expected] : rows)
        EXPECT_EQ(grabFileName(present, "SN").toStdString(), expected) << present;
}

template <typename List>
std::set<int> codesOf(List const& list) {
    std::set<int> codes;
    for (auto const& row : list)
        EXPECT_TRUE(codes.insert(row.code).second) << row.text << " would never be selected";
    EXPECT_TRUE(codes.contains(255));
    return codes;
}

TEST(ProductLists, NoCodeStandsForTwoRows) {
    std::vector<ProductCode> parts;
    for (PartNumber const& part : partNumbers())
        parts.push_back(part.product);
    EXPECT_TRUE(codesOf(parts).contains(254));
    codesOf(marketIndicators());
    codesOf(specialProcessings());
    EXPECT_EQ(codesOf(interfaces(InterfaceFamily::Sensor)), (std::set{1, 2, 3, 255}));
    EXPECT_EQ(codesOf(interfaces(InterfaceFamily::Module)), (std::set{17, 18, 255}));
}

} // namespace
