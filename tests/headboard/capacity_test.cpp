#include "headboard/preset_section.h"
#include "tests/headboard/headboard_fixture.h"

#include <QTemporaryDir>
#include <fstream>

namespace {

// A record's capacity is 64 bytes below the device, and 11 bytes before it no entry is taken any more: behind
// the name, 2023 registers of 4 bytes go in. The device has room for more.
TEST(Capacity, SectionIsRefusedWhereTheRecordEndsNotWhereTheDeviceDoes) {
    Headboard h;
    QTemporaryDir const folder;
    std::string const ini = folder.filePath(QStringLiteral("preset.ini")).toStdString();
    for (int const registers : {2023, 2024}) {
        {
            std::ofstream file(ini);
            file << "[S]\n";
            for (int i = 0; i < registers; ++i)
                file << "REG = " << i << ", 1\n";
        }
        ASSERT_EQ(EepromFormat(h.eeprom, -1), kEepromOk);
        EXPECT_EQ(EepromImportSection(h.eeprom, ini.c_str(), "S", kRecordPga),
                  registers == 2023 ? kEepromOk : kEepromNoRoom);
        EXPECT_EQ(EepromFindRecord(h.eeprom, kRecordEnd, nullptr, 0),
                  registers == 2023 ? 5 + 3 + 9 + 3 + 4 * 2023 : 5);
    }
}

} // namespace
