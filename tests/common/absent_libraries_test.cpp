#include "common/libraries.h"

#include <gtest/gtest.h>
#ifdef Q_OS_UNIX
#include <dlfcn.h>
#endif

namespace {

// What a function answers to nothing at all.
template <typename Result, typename... Arguments>
Result ask(Result (*function)(Arguments...)) {
    return function(Arguments{}...);
}

// Nobody was installed yet when a program begins: where the libraries are missing, this is what it works
// with.
TEST(AbsentLibraries, NothingExistsNothingIsFoundAndEveryTransferFails) {
    installVeyra2({});
    installShadefit({});
    Veyra2 const& v = veyra2();
    Shadefit const& s = shadefit();
    EXPECT_EQ(ask(v.vy_FindRegister), nullptr);
    EXPECT_EQ(ask(v.vy_FindBitfield), nullptr);
    EXPECT_EQ(ask(v.vy_FindRegisterAddr), nullptr);
    EXPECT_EQ(ask(v.vy_Home), nullptr);
    EXPECT_EQ(ask(v.vy_SensorInfo), nullptr);
    EXPECT_EQ(ask(s.sf_Create), nullptr);
    EXPECT_EQ(ask(s.sf_Create2), nullptr);
    EXPECT_EQ(ask(s.sf_DumpRegList), nullptr);
    EXPECT_EQ(v.vy_dataSize(4), 0U);
    for (int const answer : {ask(v.vy_ExistsRegister), ask(v.vy_ExistsBitfield), ask(v.vy_IsSOC),
                             ask(s.sf_SetInputImage2), ask(s.sf_SetInputImageYcbcr)})
        EXPECT_EQ(answer, 0);
    int const failures[] = {ask(v.vy_ReadSensorRegStr), ask(v.vy_WriteSensorRegStr), ask(v.vy_ReadSensorReg),
                            ask(v.vy_WriteSensorReg),   ask(v.vy_readRegisters),     ask(v.vy_writeRegisters),
                            ask(v.vy_setMode),          ask(v.vy_stopTransport),     ask(s.sf_FindSolution),
                            ask(s.sf_FindApga),         ask(s.sf_FindAutoPga),       ask(s.sf_DumpRegFile)};
    for (int const& answer : failures)
        EXPECT_EQ(answer, -1) << &answer - failures;
    v.vy_InvalidateRegCache(nullptr);
    v.vy_CloseCameras();
    s.sf_Destroy(nullptr);
#ifdef Q_OS_UNIX
    // Both lie beside the test program, and nothing is loaded where a table was installed.
    for (char const* const library : {"libveyra2.so", "libshadefit.so"})
        EXPECT_FALSE(dlopen(library, RTLD_LAZY | RTLD_NOLOAD)) << library;
#endif
}

} // namespace
