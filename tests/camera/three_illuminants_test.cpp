#include "tests/camera/calibrated_camera.h"

#include "common/pause.h"
#include "headboard/eeprom_chain.h"
#include "headboard/register_record.h"

#include <QTemporaryDir>
#include <algorithm>
#include <gtest/gtest.h>

using simulator::SimulatedCamera;

namespace {

constexpr size_t kBaseSize = 102;  // origin and coefficients
constexpr size_t kTableSize = 102; // the same; perhaps a temperature behind them

// The list's values of a table: 0 to 2 from left to right.
class Tables {
public:
    Tables(AdaptiveSensor const& sensor, std::vector<sf_RegEntry>& list)
        : m_list(list), m_first(sensor.isAutomatic ? 2 : kBaseSize), m_size((list.size() - m_first) / 3) {
        EXPECT_TRUE(m_size == kTableSize || m_size == kTableSize + 1) << list.size();
    }

    [[nodiscard]] uint32_t& value(size_t table, size_t i) {
        return m_list[m_first + table * m_size + i].third;
    }

private:
    std::vector<sf_RegEntry>& m_list;
    size_t m_first;
    size_t m_size;
};

std::vector<sf_RegEntry> withMiddleTableAlone(AdaptiveSensor const& sensor, std::vector<sf_RegEntry> list) {
    Tables tables(sensor, list);
    for (size_t i = 0; i < kTableSize; ++i)
        tables.value(0, i) = tables.value(2, i) = tables.value(1, i);
    return list;
}

std::vector<sf_RegEntry> withOuterTablesSwapped(AdaptiveSensor const& sensor, std::vector<sf_RegEntry> list) {
    Tables tables(sensor, list);
    for (size_t i = 0; i < kTableSize; ++i)
        std::swap(tables.value(0, i), tables.value(2, i));
    return list;
}

// Stores the correction as a calibration page does, in virtual time.
void storeCorrection(SimulatedCamera& camera) {
    camera.useVirtualTime();
    installPause([&](std::chrono::milliseconds time) { camera.advanceTime(int(time.count())); });
    HeadboardEeprom const eeprom = HeadboardEepromCreate(camera.handle());
    if (EepromCheckHeader(eeprom) != kEepromOk) {
        EXPECT_EQ(EepromFormat(eeprom, -1), kEepromOk);
    }
    EXPECT_EQ(saveShadingRegisters(eeprom, "FACTORY", {}), kEepromOk);
    EXPECT_EQ(HeadboardEepromFlush(eeprom), kEepromOk);
    installPause({});
}

class ThreeIlluminants : public testing::TestWithParam<AdaptiveSensor> {
protected:
    void SetUp() override {
        ASSERT_TRUE(camera);
        list = solveThreeIlluminants(*camera, GetParam().isAutomatic);
        ASSERT_FALSE(list.empty());
    }

    Camera const camera = openProfile(GetParam().profile);
    std::vector<sf_RegEntry> list;
};

INSTANTIATE_TEST_SUITE_P(Sensor, ThreeIlluminants, testing::ValuesIn(kAdaptiveSensors), [](auto const& row) {
    return QByteArray(row.param.profile).replace('-', '_').toStdString();
});

TEST_P(ThreeIlluminants, PictureIsFlatUnderEachLampAndBetweenOnlyByTheRightTables) {
    std::vector<sf_RegEntry> const middleAlone = withMiddleTableAlone(GetParam(), list);
    std::vector<sf_RegEntry> const swapped = withOuterTablesSwapped(GetParam(), list);
    for (double const kelvin : {kIncandescent.kelvin, kFluorescent.kelvin, kDaylight.kelvin, kBetweenLamps}) {
        SCOPED_TRACE(kelvin);
        EXPECT_GE(colourDeviation(*camera, kelvin, false), 3.0);
        load(*camera, list);
        double const corrected = colourDeviation(*camera, kelvin, true);
        EXPECT_LE(corrected, kelvin == kBetweenLamps ? 1.3 : 1.0);
        if (kelvin == kFluorescent.kelvin)
            continue;
        load(*camera, middleAlone);
        EXPECT_GE(colourDeviation(*camera, kelvin, true), 1.5 * corrected);
        load(*camera, swapped);
        EXPECT_GE(colourDeviation(*camera, kelvin, true), 1.5 * corrected);
    }
}

TEST_P(ThreeIlluminants, StoredCorrectionGivesTheSamePictureAfterAStart) {
    load(*camera, list);
    switchCorrection(*camera, true);
    storeCorrection(*camera);
    QTemporaryDir const folder;
    QString const file = folder.filePath(QStringLiteral("eeprom"));
    QString error;
    ASSERT_TRUE(camera->saveEeprom(file, &error)) << qPrintable(error);

    Camera const started = openProfile(GetParam().profile);
    ASSERT_TRUE(started->loadEeprom(file, &error)) << qPrintable(error);
    ASSERT_TRUE(started->replayEeprom(QStringLiteral("FACTORY"), &error)) << qPrintable(error);
    Camera const loaded = openProfile(GetParam().profile);
    load(*loaded, list);
    switchCorrection(*loaded, true);
    for (double const kelvin : {kIncandescent.kelvin, kBetweenLamps}) {
        simulator::Light light;
        light.colourTemperature = kelvin;
        started->setLight(light);
        loaded->setLight(light);
        EXPECT_EQ(started->grab().pixels, loaded->grab().pixels) << kelvin;
    }
}

} // namespace
