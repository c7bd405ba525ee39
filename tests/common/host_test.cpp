#include "common/host.h"

#include "tests/fakes/fake_host.h"

#include <gtest/gtest.h>

namespace {

TEST(Host, WhatTheHostAnswersComesThroughWholeAndTerminated) {
    HostServices services{};
    services.readBusByte = [](uint32_t, uint32_t, uint32_t, uint32_t) { return 0x1FFU; };
    services.readOption = [](char const* option) -> char const* {
        return std::string(option) == "Product" ? "Board" : nullptr;
    };
    services.readTextSetting = [](char const*, char* buffer, uint32_t size, char const*) {
        std::fill_n(buffer, size, 'x');
    };
    Host const host(services);
    EXPECT_EQ(host.readBusByte(0xA8, 8177), 0x1FFU);
    EXPECT_EQ(host.readOption("Product"), "Board");
    EXPECT_EQ(host.readOption("none"), "");
    EXPECT_EQ(host.readTextSetting("LensAssist Dir"), QByteArray(259, 'x'));
}

TEST(Host, AnAnnouncedRegisterIsFollowedByTwoZeros) {
    FakeHost const fake;
    Host(fake.services()).announceRegister("R");
    EXPECT_EQ(fake.log, std::vector<std::string>{"announceRegister R 0 0"});
}

TEST(Host, NullSlotsAreNeverCalledAndAnswerTheirDefaults) {
    Host const host{HostServices{}};
    // The pages go without each of the others in turn.
    host.writeBusByte(1, 2, 3);
    host.announceRegister("R");
    EXPECT_EQ(host.readRegister("R", ""), 0U);
    EXPECT_EQ(host.readBusByte(1, 2), 0U);
    EXPECT_EQ(host.readState("S"), 0);
    EXPECT_EQ(host.readOption("O"), "");
    EXPECT_EQ(host.readIntSetting("I", -7), -7);
    EXPECT_EQ(host.readTextSetting("T"), "");
}

} // namespace
