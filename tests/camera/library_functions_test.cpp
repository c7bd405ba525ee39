#include "tests/support/camera_under_test.h"

#include <QFileInfo>
#include <gtest/gtest.h>

using namespace simulator;

namespace {

TEST(LibraryFunctions, NullAndClosedCamerasAnswerFailure) {
    vy_Camera* closed = nullptr;
    {
        Camera const camera = openQuiet();
        closed = camera->handle();
    }
    for (vy_Camera* const camera : {static_cast<vy_Camera*>(nullptr), closed}) {
        uint32_t word = 0;
        vy_RegisterDescription const description{};
        EXPECT_FALSE(vy_ExistsRegister(camera, "POLY_SC_ENABLE"));
        EXPECT_FALSE(vy_ExistsBitfield(camera, "POLY_SC_ENABLE", "ENABLE"));
        EXPECT_FALSE(vy_FindRegister(camera, "POLY_SC_ENABLE"));
        EXPECT_FALSE(vy_FindBitfield(camera, "POLY_SC_ENABLE", "ENABLE"));
        EXPECT_FALSE(vy_FindRegisterAddr(camera, 0x3780, 0, 0));
        EXPECT_NE(vy_ReadSensorRegStr(camera, "POLY_SC_ENABLE", "", &word), 0);
        EXPECT_NE(vy_WriteSensorRegStr(camera, "POLY_SC_ENABLE", "", 1), 0);
        EXPECT_NE(vy_ReadSensorReg(camera, &description, &word), 0);
        EXPECT_NE(vy_WriteSensorReg(camera, &description, 1), 0);
        EXPECT_NE(vy_readRegisters(camera, 0xA8, 0, 1, &word), 0);
        EXPECT_NE(vy_writeRegisters(camera, 0xA8, 0, 1, &word), 0);
        EXPECT_NE(vy_setMode(camera, 1, 16), 0);
        EXPECT_NE(vy_stopTransport(camera), 0);
        EXPECT_FALSE(vy_IsSOC(camera));
        EXPECT_FALSE(vy_SensorInfo(camera));
        vy_InvalidateRegCache(camera);
    }
    vy_CloseCameras();
}

TEST(LibraryFunctions, NullAndUnknownNamesAnswerFailure) {
    Camera const camera = openQuiet();
    vy_Camera* const handle = camera->handle();
    uint32_t word = 0;
    EXPECT_FALSE(vy_ExistsRegister(handle, nullptr));
    EXPECT_FALSE(vy_ExistsRegister(handle, "poly_sc_enable"));
    EXPECT_FALSE(vy_ExistsBitfield(handle, "POLY_SC_ENABLE", nullptr));
    EXPECT_FALSE(vy_ExistsBitfield(handle, "POLY_ORIGIN_C", "ENABLE"));
    EXPECT_FALSE(vy_FindRegisterAddr(handle, 0x3780, 0, 1));
    EXPECT_FALSE(vy_FindRegisterAddr(handle, 0x3780, 1, 0));
    EXPECT_NE(vy_ReadSensorRegStr(handle, nullptr, "", &word), 0);
    EXPECT_NE(vy_ReadSensorRegStr(handle, "POLY_SC_ENABLE", "", nullptr), 0);
    EXPECT_NE(vy_ReadSensorRegStr(handle, "POLY_SC_ENABLE", "NONE", &word), 0);
    EXPECT_NE(vy_WriteSensorRegStr(handle, "POLY_SC_ENABLE", "NONE", 1), 0);
    EXPECT_NE(vy_WriteSensorRegStr(handle, "NONE", "", 1), 0);
    EXPECT_NE(vy_ReadSensorReg(handle, nullptr, &word), 0);
    EXPECT_NE(vy_WriteSensorReg(handle, nullptr, 1), 0);
    EXPECT_EQ(camera->registerWrites(), 0U);
    EXPECT_EQ(vy_ReadSensorRegStr(handle, "POLY_SC_ENABLE", nullptr, &word), 0);
}

TEST(LibraryFunctions, DescriptionTellsWhereARegisterLies) {
    Camera const camera = openProfile("soc-pga");
    ASSERT_TRUE(camera);
    vy_Camera* const handle = camera->handle();
    EXPECT_TRUE(vy_IsSOC(handle));
    auto const* const last = vy_FindRegister(handle, "PGATABLE_DATA_099");
    ASSERT_TRUE(last);
    EXPECT_STREQ(last->name, "PGATABLE_DATA_099");
    EXPECT_EQ(last->address, 0x3640U + 99 * 2);
    EXPECT_EQ(last->dataWidth, 16U);
    EXPECT_EQ(vy_dataSize(last->dataType), 2U);
    EXPECT_EQ(vy_FindRegisterAddr(handle, last->address, 0, 0), last);
    auto const* const variable = vy_FindRegister(handle, "EXPOSURE_TARGET");
    ASSERT_TRUE(variable);
    EXPECT_EQ(variable->addressSpace, 1U);
    EXPECT_EQ(vy_dataSize(variable->dataType), 1U);
    EXPECT_EQ(vy_dataSize(4711), 0U);
    EXPECT_EQ(vy_FindBitfield(handle, "COLOR_PIPELINE_CONTROL", "PGA_ENABLE")->mask, 8U);
    // Hosts open a group of table writes with it.
    auto const* const access = vy_FindRegisterAddr(handle, 0x098E, 0, 0);
    ASSERT_TRUE(access);
    EXPECT_EQ(vy_WriteSensorReg(handle, access, 0), 0);
}

TEST(LibraryFunctions, ValuesAreCutToTheRegistersWidth) {
    Camera const camera = openQuiet();
    writeRegister(*camera, "POLY_ORIGIN_C", 0x12345);
    EXPECT_EQ(readRegister(*camera, "POLY_ORIGIN_C"), 0x2345U);
}

TEST(LibraryFunctions, CacheHidesTheSensorsOwnChangesUntilItIsDropped) {
    Camera const camera = openQuiet();
    uint32_t const before = readRegister(*camera, "FRAME_COUNT");
    (void)camera->grab();
    EXPECT_EQ(readRegister(*camera, "FRAME_COUNT"), before);
    vy_InvalidateRegCache(camera->handle());
    EXPECT_EQ(readRegister(*camera, "FRAME_COUNT"), before + 1);
}

TEST(LibraryFunctions, HomeIsTheFolderWithTheProfiles) {
    EXPECT_TRUE(
        QFileInfo::exists(QString::fromLocal8Bit(vy_Home()) + QStringLiteral("/profiles/poly-12bit.json")));
}

} // namespace
