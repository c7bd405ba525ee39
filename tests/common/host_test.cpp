#include "common/host.h"

#include "tests/support/fake_host.h"
#include "tests/support/fake_libraries.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace kestra;

namespace {
// Every slot once; answers what was read.
std::vector<QByteArray> callEverySlot(Host const& host) {
    ChangeGroup const group(host);
    ModalBracket const bracket(host);
    host.writeRegister("R", "B", 8);
    host.writeListEntry(1, 0x3600, 9);
    host.writeBusByte(0xA8, 8177, 0xFE);
    host.announceRegister("R");
    host.setState("Gamma", -3);
    host.writeOption("Product", "Board");
    host.applyPreset("P");
    host.writeIntSetting("Number", 5);
    host.writeTextSetting("Text", "words");
    host.setupAnalysis(640);
    return {QByteArray::number(host.readRegister("R", "B")),
            QByteArray::number(host.readBusByte(0xA8, 8177)),
            QByteArray::number(host.readState("Gamma")),
            host.readOption("Product"),
            QByteArray::number(host.readIntSetting("Number", 6)),
            host.readTextSetting("Text")};
}

TEST(Host, EverySlotGetsItsArgumentsInTheHostsOrder) {
    FakeHost fake;
    FakeLibraries libraries;
    HostServices table = fake.services();
    FakeHeadboard::fillIn(table);
    EXPECT_EQ(callEverySlot(Host(table)), (std::vector<QByteArray>{"8", "254", "-3", "Board", "5", "words"}));
    EXPECT_EQ(fake.log, (std::vector<std::string>{"begin",
                                                  "modalDialog 1",
                                                  "writeRegister R B 8",
                                                  "writeListEntry 13824 0 1 0 9",
                                                  "writeBusByte 168 8177 254 16 8",
                                                  "announceRegister R 0 0",
                                                  "setState Gamma -3",
                                                  "writeOption Product Board",
                                                  "applyPreset 0 P",
                                                  "writeInt Number 5",
                                                  "writeText Text words",
                                                  "setupAnalysis 1 0 640 0 640",
                                                  "readRegister R B 1",
                                                  "readBusByte 168 8177 16 8",
                                                  "readState Gamma",
                                                  "readOption Product",
                                                  "readInt Number 6",
                                                  "readText Text",
                                                  "modalDialog 0",
                                                  "end"}));
}

TEST(Host, NullSlotsAreNeverCalledAndAnswerTheirDefaults) {
    EXPECT_EQ(callEverySlot(Host()), (std::vector<QByteArray>{"0", "0", "0", "", "6", ""}));
}

TEST(Host, TextSettingOfAFullBufferIsTerminated) {
    HostServices services{};
    services.readTextSetting = [](char const*, char* buffer, uint32_t size, char const*) {
        std::fill_n(buffer, size, 'x');
    };
    EXPECT_EQ(Host(services).readTextSetting("LensAssist Dir"), QByteArray(259, 'x'));
}
} // namespace
