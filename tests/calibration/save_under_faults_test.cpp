#include "tests/calibration/page_fixture.h"
#include "tests/support/whole_walk.h"

#include <iostream>

using namespace kestra;

namespace {
// Ways to the EEPROM, by sensor kinds that take them.
constexpr std::pair<char const*, uint32_t> kWays[] = {{"serial transfers", 200}, {"bus description", 103}};

// The device already holds a record of the same name, so that a save reads, deletes, appends and writes.
class SaveUnderFaults : public EachPage {
protected:
    SaveUnderFaults() {
        board.deviceAddress = 0xA8;
        board.splitsAtPages = true;
        board.add("DMA_CTRL", 0, 0, 0x3110, 2);
        for (char const p : {'0', '1', '2', '3', '4'})
            for (char const q : {'0', '1', '2', '3', '4'})
                board.add(std::string("P_RD_P") + p + 'Q' + q, 0, 0,
                          uint32_t(0x3600 + 2 * board.registers.size()), 2, 0x1234);
    }

    void openOn(uint32_t kind) {
        libraries.description.sensorKind = kind;
        board.device = simulator::formattedContents();
        discardEeprom(eepromSlot);
        open();
        ASSERT_EQ(state().eepromState, EepromState::Present);
        board.registers["P_RD_P0Q0"].value = 0x1234;
        ASSERT_EQ(save(), "Done.") << "the older record";
        older = board.device;
        board.registers["P_RD_P0Q0"].value = 0x3C5A;
        uint64_t const operations = board.eeprom.operations(), bytes = board.eeprom.bytesWritten();
        startAnew();
        ASSERT_EQ(save(), "Done.");
        saveOperations = board.eeprom.operations() - operations;
        saveBytes = board.eeprom.bytesWritten() - bytes;
        expected = board.device;
    }
    // The device as before the save, and nothing of it read yet.
    void startAnew() {
        board.device = older;
        discardEeprom(eepromSlot);
    }
    std::string save() {
        host.log.clear();
        click("Prom_Save");
        EXPECT_TRUE(host.isBalanced());
        EXPECT_EQ(page->cursor().shape(), Qt::ArrowCursor);
        return text("Prom_Save_Status");
    }
    std::string startOverAndSave() {
        click("Start_Over");
        return state().eepromState == EepromState::Present ? save() : "not detected";
    }

    // Every byte that the device lacks is marked for the next attempt.
    int bytesForgotten() const {
        int forgotten = 0;
        for (size_t i = 0; eepromSlot && i < eepromSlot->image.size(); ++i)
            forgotten +=
                eepromSlot->state[i] == ByteState::Current && eepromSlot->image[i] != board.device[i];
        return forgotten;
    }
    void saveUnder(DeviceFault fault, uint64_t at, bool forEver) {
        startAnew();
        board.plan(fault, at - 1, forEver);
        std::string const answer = save();
        ASSERT_TRUE(answer == "Done." || answer == "Error accessing the EEPROM.") << answer;
        ++(answer == "Done." ? done : failed);
        // The other faults corrupt in silence.
        bool const isReported = fault != DeviceFault::FlippedBit && fault != DeviceFault::IgnoredWrite;
        EXPECT_TRUE(!isReported || answer != "Done." || board.device == expected);
        EXPECT_TRUE(!isReported || bytesForgotten() == 0);
        board.plan(DeviceFault::None);
        std::string retry = save();
        if (retry != "Done." && !isReported) {
            // What was misread stays in the image; the person starts over, and it is read again.
            retry = startOverAndSave();
            if (retry != "Done.") {
                // Bits that were stored wrong have broken the chain itself: only another content mends that.
                startAnew();
                retry = startOverAndSave();
            }
        }
        EXPECT_EQ(retry, "Done.");
        EXPECT_TRUE(!isReported || board.device == expected);
    }

    FakeHeadboard& board = libraries.headboard;
    simulator::EepromContents older{}, expected{};
    uint64_t saveOperations = 0, saveBytes = 0;
    int done = 0, failed = 0;
};

TEST_P(SaveUnderFaults, EveryOperationOfASaveMayFail) {
    using enum DeviceFault;
    // A sample lets each operation fail in one or two of the ways.
    uint64_t const step = stride(5);
    uint64_t cases = 0;
    for (auto const& [way, kind] : kWays) {
        ASSERT_NO_FATAL_FAILURE(openOn(kind)) << way;
        ASSERT_GT(saveOperations, 20U) << way;
        for (uint64_t first = 0; auto const fault : {NoAcknowledge, BusyForEver, TransportFailed, FlippedBit,
                                                     IgnoredWrite, PowerCut}) {
            uint64_t const last = fault == PowerCut ? saveBytes : saveOperations;
            for (uint64_t at = first++ % step + 1; at <= last; at += step) {
                for (bool const forEver : {false, true}) {
                    SCOPED_TRACE(std::string(way) + ": " +
                                 simulator::deviceFaultNames()[int(fault)].toStdString() + " at " +
                                 std::to_string(at) + (forEver ? " for ever" : ""));
                    ASSERT_NO_FATAL_FAILURE(saveUnder(fault, at, forEver));
                    ++cases;
                }
            }
        }
    }
    std::cout << cases << " saves under faults: " << failed << " reported an error, " << done
              << " were done\n";
    EXPECT_GE(cases, 6000 / step);
    EXPECT_GE(failed, 1000 / int(step));
    EXPECT_GE(done, 1000 / int(step));
}

INSTANTIATE_TEST_SUITE_P(Pages, SaveUnderFaults, ::testing::ValuesIn(kPages), nameOf);
} // namespace
