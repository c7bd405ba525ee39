#include "tests/support/camera_under_test.h"

#include "simulator/files/whole_file.h"
#include "tests/support/small_profile.h"

#include <gtest/gtest.h>
#include <iterator>

using namespace simulator;

QString TestFiles::write(QString const& name, QByteArray const& content) const {
    EXPECT_TRUE(files::replace(m_folder.filePath(name), content, nullptr));
    return m_folder.filePath(name);
}

Camera openProfile(QString const& profile) {
    QString error;
    Camera camera = SimulatedCamera::open(profile, &error);
    EXPECT_TRUE(camera) << qPrintable(error);
    return camera;
}

Camera openChanged(QByteArray const& changes) {
    QTemporaryDir const folder;
    return openProfile(writeChangedProfile(folder.path(), "polynomial", changes));
}

Camera openQuiet(uint32_t arrayPhase, uint32_t orientation) {
    return openChanged(QStringLiteral(R"(,
        "array": {"width": 320, "height": 240, "bayerPhase": %1, "orientation": %2},
        "layout": {"width": 320, "height": 240},
        "readOut": {"electronsPerCount": 50, "readNoise": 0},
        "optics": {"lens": {"centre": [0.4, -0.4]}}
    )")
                           .arg(arrayPhase)
                           .arg(orientation)
                           .toUtf8());
}

double sampleAt(Frame const& frame, uint32_t x, uint32_t y) {
    auto const* const row =
        reinterpret_cast<unsigned char const*>(frame.pixels.constData()) + size_t(y) * frame.pitch;
    return frame.type == FrameType::Raw12 ? row[2 * x] + 256 * row[2 * x + 1] : row[x];
}

double siteMean(SimulatedCamera const& camera, Frame const& frame, Region const& region, uint32_t column,
                uint32_t row) {
    CameraDescription const& description = camera.description();
    double sum = 0;
    double count = 0;
    // Whole cells only, so that a region begins with site (0, 0).
    for (uint32_t y = description.height * region.top / 100 / 2 * 2 + row;
         y < description.height * region.bottom / 100; y += 2) {
        for (uint32_t x = description.width * region.left / 100 / 2 * 2 + column;
             x < description.width * region.right / 100; x += 2) {
            sum += sampleAt(frame, x, y) - description.blackLevel;
            ++count;
        }
    }
    return sum / count;
}

double redMean(SimulatedCamera const& camera, Frame const& frame, Region const& region) {
    uint32_t const phase = camera.description().bayerPhase;
    return siteMean(camera, frame, region, phase & 1, phase >> 1);
}

double greenMean(SimulatedCamera const& camera, Frame const& frame, Region const& region) {
    uint32_t const phase = camera.description().bayerPhase;
    return siteMean(camera, frame, region, (phase & 1) ^ 1, phase >> 1);
}

void switchCorrection(SimulatedCamera const& camera, bool on) {
    constexpr char const* kSwitches[][2] = {{"CAM_PGA_PGA_CONTROL", "CAM_PGA_PGA_ENABLE"},
                                            {"POLY_SC_ENABLE", "ENABLE"},
                                            {"COLOR_PIPELINE_CONTROL", "PGA_ENABLE"},
                                            {"COLOR_PIPELINE_CONTROL", "LENS_SHADING"},
                                            {"LENS_CORRECTION", "ENABLE"},
                                            {"LENS_CORRECTION_CONTROL", "ENABLE"}};
    for (auto const& [reg, bitfield] : kSwitches)
        if (vy_ExistsBitfield(camera.handle(), reg, bitfield))
            return writeRegister(camera, reg, on ? 1 : 0, bitfield);
    ADD_FAILURE() << "the sensor has no switch";
}

double correctionAt(Camera const& camera, Region const& region) {
    switchCorrection(*camera, false);
    double const off = greenMean(*camera, camera->grab(), region);
    switchCorrection(*camera, true);
    return greenMean(*camera, camera->grab(), region) / off;
}

void writeRegister(SimulatedCamera const& camera, char const* reg, uint32_t value, char const* bitfield) {
    EXPECT_EQ(vy_WriteSensorRegStr(camera.handle(), reg, bitfield, value), 0) << reg << ' ' << bitfield;
}

uint32_t readRegister(SimulatedCamera const& camera, char const* reg, char const* bitfield) {
    uint32_t value = 0xDEAD;
    EXPECT_EQ(vy_ReadSensorRegStr(camera.handle(), reg, bitfield, &value), 0) << reg << ' ' << bitfield;
    return value;
}

namespace {
constexpr uint32_t kBusAddress = 0xA8;

bool moveRaw(SimulatedCamera& camera, Transfer const& transfer, uint32_t& value) {
    EXPECT_EQ(vy_setMode(camera.handle(), 1, 16), 0);
    EXPECT_EQ(vy_setMode(camera.handle(), 2, 8), 0);
    uint32_t bytes[] = {value >> 8, value & 0xFF};
    uint32_t* const first = std::end(bytes) - transfer.count;
    auto const move = [&](auto library) {
        return library(camera.handle(), kBusAddress, transfer.address, transfer.count, first) == 0;
    };
    bool const isDone = transfer.writes ? move(vy_writeRegisters) : move(vy_readRegisters);
    if (transfer.writes)
        camera.advanceTime(20);
    value = bytes[0] << 8 | bytes[1];
    return isDone;
}

bool moveByBridge(SimulatedCamera& camera, Transfer const& transfer, uint32_t& value) {
    if (transfer.writes)
        writeRegister(camera, "IO_EEPROM_DATA", value);
    writeRegister(camera, "IO_EEPROM_I2C_ADDR", kBusAddress);
    writeRegister(camera, "IO_EEPROM_ADDR", transfer.address);
    uint32_t const command = (transfer.writes ? 0x080 : 0x010) + (transfer.count == 2 ? 0x200 : 0);
    if (vy_WriteSensorRegStr(camera.handle(), "IO_EEPROM_COMMAND", "", command) != 0)
        return false;
    uint32_t status = 0x10;
    for (int poll = 0; poll < 25 && (status & 0x10) != 0; ++poll) {
        camera.advanceTime(2);
        status = readRegister(camera, "IO_EEPROM_STATUS");
    }
    value = readRegister(camera, "IO_EEPROM_DATA");
    return status == 0x04;
}

bool moveDescribed(SimulatedCamera& camera, Transfer const& transfer, uint32_t& value) {
    vy_RegisterDescription const description{nullptr, 1, kBusAddress, transfer.address, 16, 8, transfer.count,
                                             0,       0};
    return (transfer.writes ? vy_WriteSensorReg(camera.handle(), &description, value)
                            : vy_ReadSensorReg(camera.handle(), &description, &value)) == 0;
}
} // namespace

EepromAccess const kEepromAccesses[3] = {
    {"raw", "polynomial", moveRaw},
    {"bridge", "eeprom-bridge-71", moveByBridge},
    {"description", "bus-master-103", moveDescribed},
};

bool EepromAccess::read(SimulatedCamera& camera, uint32_t address, QByteArray& bytes) const {
    uint32_t value = 0;
    if (!move(camera, {address, uint32_t(bytes.size()), false}, value))
        return false;
    for (int i = bytes.size(); i-- > 0; value >>= 8)
        bytes[i] = char(value);
    return true;
}

bool EepromAccess::write(SimulatedCamera& camera, uint32_t address, QByteArray const& bytes) const {
    uint32_t value = 0;
    for (char const byte : bytes)
        value = value << 8 | uint8_t(byte);
    return move(camera, {address, uint32_t(bytes.size()), true}, value);
}

Camera openFor(EepromAccess const& access) {
    Camera camera = openProfile(access.profile);
    camera->useVirtualTime();
    return camera;
}

void programContents(SimulatedCamera& camera, QByteArray const& contents) {
    TestFiles const files;
    QString error;
    EXPECT_TRUE(camera.loadEeprom(files.write(QStringLiteral("contents"), contents), &error))
        << qPrintable(error);
}
