#include "common/libraries.h"

#include <gtest/gtest.h>

using namespace kestra;

namespace {

// Nobody was installed yet when a program begins: where the libraries are missing, this is what it works
// with.
TEST(AbsentLibraries, NothingExistsNothingIsFoundAndEveryTransferFails) {
    installVeyra2({});
    installShadefit({});
    Veyra2 const& v = veyra2();
    vy_RegisterDescription const reg{};
    uint32_t word = 7;
    EXPECT_EQ(v.vy_ExistsRegister(nullptr, "R"), 0);
    EXPECT_EQ(v.vy_ExistsBitfield(nullptr, "R", "B"), 0);
    EXPECT_EQ(v.vy_FindRegister(nullptr, "R"), nullptr);
    EXPECT_EQ(v.vy_FindBitfield(nullptr, "R", "B"), nullptr);
    EXPECT_EQ(v.vy_FindRegisterAddr(nullptr, 0, 0, 0), nullptr);
    EXPECT_EQ(v.vy_dataSize(4), 0U);
    EXPECT_EQ(v.vy_ReadSensorRegStr(nullptr, "R", "", &word), -1);
    EXPECT_EQ(v.vy_WriteSensorRegStr(nullptr, "R", "", 1), -1);
    EXPECT_EQ(v.vy_ReadSensorReg(nullptr, &reg, &word), -1);
    EXPECT_EQ(v.vy_WriteSensorReg(nullptr, &reg, 1), -1);
    EXPECT_EQ(v.vy_readRegisters(nullptr, 0xA8, 0, 1, &word), -1);
    EXPECT_EQ(v.vy_writeRegisters(nullptr, 0xA8, 0, 1, &word), -1);
    EXPECT_EQ(v.vy_setMode(nullptr, 1, 16), -1);
    EXPECT_EQ(v.vy_IsSOC(nullptr), 0);
    EXPECT_EQ(v.vy_Home(), nullptr);
    EXPECT_EQ(v.vy_stopTransport(nullptr), -1);
    EXPECT_EQ(v.vy_SensorInfo(nullptr), nullptr);
    v.vy_InvalidateRegCache(nullptr);
    v.vy_CloseCameras();
    EXPECT_EQ(word, 7U);

    Shadefit const& s = shadefit();
    EXPECT_EQ(s.sf_Create(1, 1, -1), nullptr);
    EXPECT_EQ(s.sf_Create2(nullptr, 1, 1, 0xFFFFFFFF), nullptr);
    EXPECT_EQ(s.sf_SetInputImage2(nullptr, nullptr, 1, 1, 8, 0, 0, 0, -1, -1), 0);
    EXPECT_EQ(s.sf_SetInputImageYcbcr(nullptr, nullptr, 1, 1, nullptr, -1, -1), 0);
    EXPECT_EQ(s.sf_FindSolution(nullptr, nullptr), -1);
    EXPECT_EQ(s.sf_FindApga(nullptr, nullptr), -1);
    EXPECT_EQ(s.sf_FindAutoPga(nullptr, nullptr), -1);
    EXPECT_EQ(s.sf_DumpRegList(nullptr), nullptr);
    EXPECT_EQ(s.sf_DumpRegFile(nullptr, "", 0, 0, 0), -1);
    s.sf_Destroy(nullptr);
}

TEST(AbsentLibraries, AFunctionThatIsThereIsKept) {
    Veyra2 library;
    library.vy_IsSOC = [](vy_Camera*) { return 5; };
    installVeyra2(library);
    EXPECT_EQ(veyra2().vy_IsSOC(nullptr), 5);
    EXPECT_EQ(veyra2().vy_dataSize(4), 0U);
}

} // namespace
