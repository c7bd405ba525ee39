#include "tests/support/camera_under_test.h"

#include <gtest/gtest.h>

using namespace simulator;

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
    QByteArray const phase = QByteArray::number(arrayPhase), direction = QByteArray::number(orientation);
    return openChanged(R"(, "array": {"width": 320, "height": 240, "bayerPhase": )" + phase +
                       R"(, "orientation": )" + direction + R"(},
        "layout": {"width": 320, "height": 240}, "readOut": {"electronsPerCount": 50, "readNoise": 0},
        "optics": {"lens": {"centre": [0.4, -0.4]}})");
}

double sampleAt(Frame const& frame, uint32_t x, uint32_t y) {
    auto const* const row =
        reinterpret_cast<unsigned char const*>(frame.pixels.constData()) + size_t(y) * frame.pitch;
    return frame.type == FrameType::Raw12 ? row[size_t{x} * 2] + 256 * row[size_t{x} * 2 + 1] : row[x];
}

namespace {
// Mean above black of the sites of the mosaic's 2 x 2 cells that lie as far from the red ones.
double siteMean(SimulatedCamera const& camera, Frame const& frame, Region const& region, uint32_t fromRed) {
    CameraDescription const& told = camera.description();
    double sum = 0, count = 0;
    // Whole cells only, so that a region begins with site (0, 0).
    for (uint32_t y = told.height * region.top / 200 * 2 + (told.bayerPhase >> 1);
         y < told.height * region.bottom / 100; y += 2)
        for (uint32_t x = told.width * region.left / 200 * 2 + ((told.bayerPhase & 1) ^ fromRed);
             x < told.width * region.right / 100; x += 2, ++count)
            sum += sampleAt(frame, x, y) - told.blackLevel;
    return sum / count;
}
} // namespace

double redMean(SimulatedCamera const& camera, Frame const& frame, Region const& region) {
    return siteMean(camera, frame, region, 0);
}

double greenMean(SimulatedCamera const& camera, Frame const& frame, Region const& region) {
    return siteMean(camera, frame, region, 1);
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

void programContents(SimulatedCamera& camera, QByteArray const& contents) {
    QString error;
    EXPECT_TRUE(camera.loadEeprom(TestFiles().write("contents", contents), &error)) << qPrintable(error);
}
