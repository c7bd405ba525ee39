#include "tests/support/camera_under_test.h"

#include <gtest/gtest.h>
#include <tuple>

using namespace simulator;

namespace {
TEST(LibraryFunctions, WhatIsNotThereAnswersFailure) {
    Camera const open = openQuiet();
    vy_Camera* const closed = openQuiet()->handle();
    std::tuple<vy_Camera*, char const*, char const*> const rows[] = {
        {nullptr, "POLY_SC_ENABLE", "ENABLE"},
        {closed, "POLY_SC_ENABLE", "ENABLE"},
        {open->handle(), nullptr, "ENABLE"},
        {open->handle(), "poly_sc_enable", "ENABLE"},
        {open->handle(), "POLY_SC_ENABLE", "NONE"}};
    uint32_t word = 0;
    for (auto const& [camera, reg, bitfield] : rows) {
        SCOPED_TRACE(testing::Message() << (reg ? reg : "null") << ' ' << bitfield);
        EXPECT_FALSE(vy_ExistsBitfield(camera, reg, bitfield) || vy_FindBitfield(camera, reg, bitfield) ||
                     vy_FindRegisterAddr(camera, 0x3780, 0, 1));
        EXPECT_TRUE(vy_ReadSensorRegStr(camera, reg, bitfield, &word) != 0 &&
                    vy_WriteSensorRegStr(camera, reg, bitfield, 1) != 0 &&
                    vy_ReadSensorReg(camera, nullptr, &word) != 0 &&
                    vy_WriteSensorReg(camera, nullptr, 1) != 0);
    }
    for (vy_Camera* const camera : {static_cast<vy_Camera*>(nullptr), closed}) {
        EXPECT_FALSE(vy_FindRegister(camera, "POLY_SC_ENABLE") || vy_IsSOC(camera) || vy_SensorInfo(camera));
        EXPECT_TRUE(vy_readRegisters(camera, 0xA8, 0, 1, &word) != 0 &&
                    vy_writeRegisters(camera, 0xA8, 0, 1, &word) != 0 && vy_setMode(camera, 1, 16) != 0 &&
                    vy_stopTransport(camera) != 0);
        vy_InvalidateRegCache(camera);
    }
    EXPECT_EQ(open->registerWrites(), 0U);
}

TEST(LibraryFunctions, ValuesAreCutToTheRegistersWidthAndTheSensorsOwnChangesHiddenByTheCache) {
    Camera const camera = openQuiet();
    writeRegister(*camera, "POLY_ORIGIN_C", 0x12345);
    EXPECT_EQ(readRegister(*camera, "POLY_ORIGIN_C"), 0x2345U);
    writeRegister(*camera, "POLY_SC_ENABLE", 0x7FFE);
    writeRegister(*camera, "POLY_SC_ENABLE", 1, "ENABLE");
    EXPECT_EQ(readRegister(*camera, "POLY_SC_ENABLE"), 0xFFFEU) << "a bitfield changes its own bits alone";
    uint32_t const before = readRegister(*camera, "FRAME_COUNT");
    (void)camera->grab();
    EXPECT_EQ(readRegister(*camera, "FRAME_COUNT"), before);
    vy_InvalidateRegCache(camera->handle());
    EXPECT_EQ(readRegister(*camera, "FRAME_COUNT"), before + 1);
}
} // namespace
