#include "common/host.h"

#include "tests/support/fake_host.h"

#include <gtest/gtest.h>

using namespace kestra;

namespace {

// Slots that the fake host leaves null.
std::string handedOver;

HostServices withEverySlot(FakeHost const& host) {
    HostServices table = host.services();
    table.readBusByte = [](uint32_t device, uint32_t address, uint32_t addressBits, uint32_t dataBits) {
        FakeHost::current()->note("readBus " + std::to_string(device) + ' ' + std::to_string(address) + ' ' +
                                  std::to_string(addressBits) + ' ' + std::to_string(dataBits));
        return 0x1FFU;
    };
    table.writeBusByte = [](uint32_t device, uint32_t address, uint32_t value, uint32_t addressBits,
                            uint32_t dataBits) {
        FakeHost::current()->note("writeBus " + std::to_string(device) + ' ' + std::to_string(address) + ' ' +
                                  std::to_string(value) + ' ' + std::to_string(addressBits) + ' ' +
                                  std::to_string(dataBits));
    };
    table.readOption = [](char const* option) -> char const* {
        return std::string(option) == "Product" ? "Board" : nullptr;
    };
    table.writeOption = [](char const* option, char const* value) {
        handedOver = std::string(option) + '=' + value;
    };
    return table;
}

TEST(Host, EverySlotGetsItsArgumentsInTheHostsOrder) {
    FakeHost fake;
    fake.registers["R.B"] = 7;
    fake.states["Gamma"] = -3;
    Host const host(withEverySlot(fake));
    EXPECT_EQ(host.readRegister("R", "B"), 7U);
    host.writeListEntry(1, 0x3600, 9);
    host.announceRegister("R");
    EXPECT_EQ(host.readState("Gamma"), -3);
    EXPECT_EQ(host.readBusByte(0xA8, 8177), 0x1FFU);
    host.writeBusByte(0xA8, 8177, 0xFE);
    host.applyPreset("P");
    host.setupAnalysis(640);
    EXPECT_EQ(fake.log, (std::vector<std::string>{"readRegister R B 1", "writeListEntry 13824 0 1 0 9",
                                                  "announceRegister R 0 0", "readState Gamma",
                                                  "readBus 168 8177 16 8", "writeBus 168 8177 254 16 8",
                                                  "applyPreset 0 P", "setupAnalysis 1 0 640 0 640"}));
    EXPECT_EQ(host.readOption("Product"), "Board");
    EXPECT_EQ(host.readOption("none"), "");
    host.writeOption("Product", "Other");
    EXPECT_EQ(handedOver, "Product=Other");
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

TEST(Host, BracketsTellTheHostTheirBothEnds) {
    FakeHost fake;
    Host const host(fake.services());
    {
        ChangeGroup const group(host);
        ModalBracket const bracket(host);
    }
    EXPECT_EQ(fake.log, (std::vector<std::string>{"begin", "modalDialog 1", "modalDialog 0", "end"}));
}

} // namespace
