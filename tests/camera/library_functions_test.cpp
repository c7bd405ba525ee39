#include "tests/support/camera_under_test.h"

#include <QFile>
#include <gtest/gtest.h>
#include <tuple>

using namespace simulator;

namespace {
TEST(LibraryFunctions, WhatIsNotThereAnswersFailure) {
    Camera const open = openQuiet();
    vy_Camera* const closed = openQuiet()->handle();
    std::tuple<vy_Camera*, char const*, char const*> const rows[] = {
        {nullptr, "POLY_SC_ENABLE", "ENABLE"},      {closed, "POLY_SC_ENABLE", "ENABLE"},
        {open->handle(), nullptr, "ENABLE"},        {open->handle(), "poly_sc_enable", "ENABLE"},
        {open->handle(), "POLY_SC_ENABLE", "NONE"}, {open->handle(), "POLY_ORIGIN_C", "ENABLE"}};
    uint32_t word = 0;
    for (auto const& [camera, reg, bitfield] : rows) {
        SCOPED_TRACE(testing::Message() << (reg ? reg : "null") << ' ' << bitfield);
        EXPECT_FALSE(vy_ExistsBitfield(camera, reg, bitfield) || vy_FindBitfield(camera, reg, bitfield));
        EXPECT_NE(vy_ReadSensorRegStr(camera, reg, bitfield, &word), 0);
        EXPECT_NE(vy_WriteSensorRegStr(camera, reg, bitfield, 1), 0);
        EXPECT_NE(vy_ReadSensorReg(camera, nullptr, &word), 0);
        EXPECT_NE(vy_WriteSensorReg(camera, nullptr, 1), 0);
        EXPECT_FALSE(vy_FindRegisterAddr(camera, 0x3780, 0, 1));
    }
    for (vy_Camera* const camera : {static_cast<vy_Camera*>(nullptr), closed}) {
        EXPECT_FALSE(vy_ExistsRegister(camera, "POLY_SC_ENABLE") ||
                     vy_FindRegister(camera, "POLY_SC_ENABLE"));
        EXPECT_FALSE(vy_FindRegisterAddr(camera, 0x3780, 0, 0));
        EXPECT_NE(vy_readRegisters(camera, 0xA8, 0, 1, &word), 0);
        EXPECT_NE(vy_writeRegisters(camera, 0xA8, 0, 1, &word), 0);
        EXPECT_NE(vy_setMode(camera, 1, 16), 0);
        EXPECT_NE(vy_stopTransport(camera), 0);
        EXPECT_FALSE(vy_IsSOC(camera) || vy_SensorInfo(camera));
        vy_InvalidateRegCache(camera);
    }
    EXPECT_EQ(open->registerWrites(), 0U);
    EXPECT_NE(vy_ReadSensorRegStr(open->handle(), "POLY_SC_ENABLE", "", nullptr), 0);
    EXPECT_EQ(vy_ReadSensorRegStr(open->handle(), "POLY_SC_ENABLE", nullptr, &word), 0);
}

TEST(LibraryFunctions, DescriptionTellsWhereARegisterLies) {
    Camera const camera = openProfile("soc-pga");
    vy_Camera* const handle = camera->handle();
    EXPECT_TRUE(vy_IsSOC(handle));
    EXPECT_TRUE(QFile::exists(QString::fromLocal8Bit(vy_Home()) + "/profiles/soc-pga.json"));
    auto const* const last = vy_FindRegister(handle, "PGATABLE_DATA_099");
    ASSERT_TRUE(last);
    EXPECT_STREQ(last->name, "PGATABLE_DATA_099");
    EXPECT_EQ(vy_dataSize(last->dataType), 2U);
    EXPECT_EQ(vy_FindRegisterAddr(handle, 0x3640 + 99 * 2, 0, 0), last);
    auto const* const variable = vy_FindRegister(handle, "EXPOSURE_TARGET");
    ASSERT_TRUE(variable);
    EXPECT_EQ(variable->addressSpace, 1U);
    EXPECT_EQ(vy_dataSize(variable->dataType), 1U);
    EXPECT_EQ(vy_dataSize(4711), 0U);
    EXPECT_EQ(vy_FindBitfield(handle, "COLOR_PIPELINE_CONTROL", "PGA_ENABLE")->mask, 8U);
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
