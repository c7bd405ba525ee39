#include "common/host.h"

#include "tests/support/fake_host.h"
#include "tests/support/fake_libraries.h"

#include <gtest/gtest.h>

using namespace kestra;

namespace {
TEST(Host, EverySlotGetsItsArgumentsInTheHostsOrder) {
    FakeHost fake;
    FakeLibraries libraries;
    libraries.headboard.device[8177] = 0x1F;
    fake.options["Product"] = "Board";
    HostServices table = fake.services();
    FakeHeadboard::fillIn(table);
    fake.registers["R.B"] = 7;
    fake.states["Gamma"] = -3;
    Host const host(table);
    {
        ChangeGroup const group(host);
        ModalBracket const bracket(host);
    }
    EXPECT_EQ(host.readRegister("R", "B"), 7U);
    host.writeListEntry(1, 0x3600, 9);
    host.announceRegister("R");
    EXPECT_EQ(host.readState("Gamma"), -3);
    EXPECT_EQ(host.readBusByte(0xA8, 8177), 0x1FU);
    host.writeBusByte(0xA8, 8177, 0xFE);
    host.applyPreset("P");
    host.setupAnalysis(640);
    EXPECT_EQ(fake.log, (std::vector<std::string>{
                            "begin", "modalDialog 1", "modalDialog 0", "end", "readRegister R B 1",
                            "writeListEntry 13824 0 1 0 9", "announceRegister R 0 0", "readState Gamma",
                            "readBusByte 168 8177 16 8", "writeBusByte 168 8177 254 16 8", "applyPreset 0 P",
                            "setupAnalysis 1 0 640 0 640"}));
    EXPECT_EQ(host.readOption("Product"), "Board");
    host.writeOption("Product", "Other");
    EXPECT_EQ(fake.options["Product"], "Other");
    host.setState("Gamma", 20);
    host.writeRegister("R", "B", 8);
    host.writeIntSetting("Number", 5);
    host.writeTextSetting("Text", "words");
    EXPECT_EQ(host.readState("Gamma"), 20);
    EXPECT_EQ(host.readRegister("R", "B"), 8U);
    EXPECT_EQ(host.readIntSetting("Number", 6), 5);
    EXPECT_EQ(host.readTextSetting("Text"), "words");
}

TEST(Host, NullSlotsAreNeverCalledAndAnswerTheirDefaults) {
    Host const host{HostServices{}};
    {
        ChangeGroup const group(host);
        ModalBracket const bracket(host);
        host.writeRegister("R", "", 1);
        host.writeListEntry(1, 2, 3);
        host.writeBusByte(1, 2, 3);
        host.announceRegister("R");
        host.setState("S", 1);
        host.writeOption("O", "");
        host.applyPreset("P");
        host.writeIntSetting("I", 1);
        host.writeTextSetting("T", "");
        host.setupAnalysis(1);
    }
    EXPECT_EQ(host.readRegister("R", ""), 0U);
    EXPECT_EQ(host.readBusByte(1, 2), 0U);
    EXPECT_EQ(host.readState("S"), 0);
    EXPECT_EQ(host.readOption("O"), "");
    EXPECT_EQ(host.readIntSetting("I", -7), -7);
    EXPECT_EQ(host.readTextSetting("T"), "");
}
} // namespace
