#include "tests/calibration/page_fixture.h"
#include "tests/support/inside_calls.h"

#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"

using namespace kestra;

namespace {
// A page whose headboard has an EEPROM, behind the plain serial transfers.
class EepromStep : public EachPage {
protected:
    EepromStep() {
        board.deviceAddress = 0xA8;
        board.add("P_RD_P0Q0", 0, 0, 0x3640, 2, 0x1234);
    }

    // What a fresh reader of the device finds.
    [[nodiscard]] std::string recordText(uint8_t type) const {
        EepromShare const eeprom = HeadboardEepromCreate(sensor.camera);
        return std::string(EepromRecordText(*eeprom, EepromFindRecord(*eeprom, type, nullptr, 0)));
    }
    // Presses a button, and tells how many transfers it made; the wait cursor stands over them alone.
    int transfersOf(char const* button) {
        bool const isSave = button == std::string("Prom_Save");
        int transfers = 0;
        host.onCall = [&](std::string const& call) {
            bool const isTransfer = call.starts_with("readBus") || call.starts_with("writeBus");
            bool const isWaiting = page->cursor().shape() == Qt::WaitCursor;
            EXPECT_TRUE(isWaiting || !isTransfer) << call;
            bool const isShown = !isWaiting && text("Prom_Save_Status") == "Done.";
            EXPECT_TRUE(isShown || !isSave || call != "end")
                << "the host may take its time to close the group";
            transfers += isTransfer;
        };
        click(button);
        host.onCall = nullptr;
        EXPECT_EQ(page->cursor().shape(), Qt::ArrowCursor);
        EXPECT_FALSE(page->testAttribute(Qt::WA_SetCursor));
        return transfers;
    }

    FakeHeadboard& board = libraries.headboard;
};

TEST_P(EepromStep, RunAllAsksAgainWhileTheAnswerIsUnknown) {
    board.plan(DeviceFault::TransportFailed);
    open();
    EXPECT_EQ(state().eepromState, EepromState::Unknown);
    EXPECT_EQ(state().promState, kNotEvaluated);
    EXPECT_FALSE(isEnabled("Prom_Save"));
    click("Run_All");
    tick(3);
    EXPECT_EQ(state().presetState, kReady) << "no step begins before the EEPROM is known";
    board.plan(DeviceFault::None);
    tick();
    EXPECT_EQ(state().eepromState, EepromState::Present);
    tick();
    EXPECT_EQ(state().presetState, kDone);
}

TEST_P(EepromStep, StoresUnderTheLabelWithinOneGroupAndALaterChangeMakesTheSaveDueAgain) {
    using Row = std::tuple<char const*, int, int>;
    for (auto const& [label, sets, times] :
         {Row{"Lens 12", 1, 0}, Row{"factory", 2, 0}, Row{"FACTORY", 2, 1}, Row{"FACTORY", 2, 1}}) {
        open();
        EXPECT_GT(transfersOf("Start_Over"), 0);
        chooseLabel(label);
        host.log.clear();
        EXPECT_GT(transfersOf("Prom_Save"), 0);
        EXPECT_EQ(text("Prom_Save_Status"), "Done.") << label;
        EXPECT_EQ(host.log.front() + ' ' + host.log.back(), "begin end");
        EXPECT_EQ(host.calls("begin").size(), 1U);
        EXPECT_EQ(recordsOnDevice()[kRecordPga], sets) << label;
        EXPECT_EQ(recordsOnDevice()[kRecordTimeStamp], times) << label << ", of the factory's alone";
    }
    click("Calibrate");
    EXPECT_EQ(text("Prom_Save_Status"), "Not done yet.");
    click("Prom_Save");
    chooseLabel("Other");
    EXPECT_EQ(text("Prom_Save_Status"), "Not done yet.");
    EXPECT_EQ(recordText(kRecordPga), "Lens 12");
    EXPECT_EQ(recordText(kRecordTimeStamp), "2024/05/31 23:59:07");
}

// An older time stands before a serial number, whose bytes the deletion of that time is the first to read.
TEST_P(EepromStep, AnOlderTimeThatCannotBeDeletedEndsTheSaveOrStaysBesideTheNewOne) {
    constexpr char kContents[] = "VYEE\1\x10\0\x14"
                                 "2001/01/01 01:01:01\0\x0B\0\xB4";
    int left = 0;
    for (int64_t n = 0;; ++n) {
        board.device.fill(0xFF);
        std::copy_n(kContents, sizeof kContents - 1, board.device.begin());
        open();
        chooseLabel("FACTORY");
        int64_t const before = board.operations;
        board.plan(DeviceFault::TransportFailed, uint64_t(n), false);
        click("Prom_Save");
        board.plan(DeviceFault::None);
        if (board.operations - before <= n) // behind the last one
            break;
        if (text("Prom_Save_Status") != "Done.")
            continue;
        std::string const device(board.device.begin(), board.device.end());
        EXPECT_NE(device.find("2024/05/31 23:59:07"), std::string::npos) << n;
        left += recordsOnDevice()[kRecordTimeStamp] - 1;
    }
    EXPECT_EQ(left > 0, GetParam().takesThreePictures());
}

// What was not written goes with the EEPROM; the flush that then finds nothing to write is no success.
TEST_P(EepromStep, WhoDiscardsTheEepromInsideASaveMakesItFail) {
    int const calls = doInsideEveryCall(
        host, [this] { open(); }, [this] { click("Prom_Save"); }, [this] { discardEeprom(eepromSlot); },
        [this](CallsFrom made) {
            // The bracket opens before the EEPROM is used, and closes behind its use.
            bool const isUsed = made.size() > 1 && made[0] != "begin";
            EXPECT_EQ(state().promState, isUsed ? kFailedOtherwise : kDone);
        });
    EXPECT_GT(calls, 20);
}

INSTANTIATE_TEST_SUITE_P(Pages, EepromStep, ::testing::ValuesIn(kPages), nameOf);
} // namespace
