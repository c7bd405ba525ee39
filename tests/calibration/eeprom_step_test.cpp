#include "tests/calibration/pages.h"
#include "tests/support/inside_calls.h"

#include "headboard/eeprom_chain.h"
#include "headboard/record_format.h"

#include <algorithm>

using namespace kestra;

namespace {
constexpr uint32_t kBusAddress = 0xA8;

// A page whose headboard has an EEPROM, behind the plain serial transfers.
class EepromStep : public PageFixture, public ::testing::WithParamInterface<PageCase> {
protected:
    EepromStep() : PageFixture(GetParam()) {
        libraries.headboard.deviceAddress = kBusAddress;
        libraries.headboard.add("P_RD_P0Q0", 0, 0, 0x3640, 2, 0x1234);
    }

    void chooseLabel(char const* label) {
        auto* const box = widget<QComboBox>("Prom_Label");
        box->addItem(QLatin1String(label));
        box->setCurrentText(QLatin1String(label));
    }
    // What a fresh reader of the device finds.
    [[nodiscard]] int records(uint8_t type) const { return recordsOnDevice()[type]; }
    [[nodiscard]] std::string recordText(uint8_t type) const {
        EepromShare const eeprom = HeadboardEepromCreate(sensor.camera);
        return std::string(EepromRecordText(*eeprom, EepromFindRecord(*eeprom, type, nullptr, 0)));
    }
};

TEST_P(EepromStep, OpeningFormatsABlankEepromInSilence) {
    open();
    EXPECT_EQ(state().eepromState, EepromState::Present);
    EXPECT_EQ(state().promState, kNotEvaluated);
    std::vector<uint8_t> const head(libraries.headboard.device.begin(),
                                    libraries.headboard.device.begin() + 7);
    EXPECT_EQ(head, (std::vector<uint8_t>{'V', 'Y', 'E', 'E', 1, 0xFF, 0xFF}));
    EXPECT_TRUE(widget<QPushButton>("Prom_Save")->isEnabled());
    EXPECT_TRUE(host.isBalanced());

    int transfers = 0;
    host.onCall = [&](std::string const& call) {
        if (!call.starts_with("readBus") && !call.starts_with("writeBus"))
            return;
        ++transfers;
        EXPECT_EQ(page->cursor().shape(), Qt::WaitCursor);
    };
    libraries.headboard.device[0] = 0xFF;
    click("Start_Over");
    host.onCall = nullptr;
    EXPECT_GE(transfers, 4);
    EXPECT_EQ(page->cursor().shape(), Qt::ArrowCursor);
    host.onCall = [&](std::string const& call) {
        EXPECT_TRUE(call != "end" || page->cursor().shape() == Qt::ArrowCursor) << "the result is shown";
    };
    click("Prom_Save");
    host.onCall = nullptr;
}

TEST_P(EepromStep, RunAllAsksAgainWhileTheAnswerIsUnknown) {
    libraries.headboard.plan(DeviceFault::TransportFailed);
    open();
    EXPECT_EQ(state().eepromState, EepromState::Unknown);
    EXPECT_EQ(state().promState, kNotEvaluated);
    EXPECT_FALSE(isEnabled("Prom_Save"));
    click("Run_All");
    tick(3);
    EXPECT_EQ(state().presetState, kReady) << "no step begins before the EEPROM is known";
    libraries.headboard.plan(DeviceFault::None);
    tick();
    EXPECT_EQ(state().eepromState, EepromState::Present);
    tick();
    EXPECT_EQ(state().presetState, kDone);
}

TEST_P(EepromStep, StoresUnderTheLabelWithinOneGroupOfChanges) {
    open();
    chooseLabel("Lens 12");
    host.log.clear();
    bool const hadCursor = page->testAttribute(Qt::WA_SetCursor);
    host.onCall = [this](std::string const& call) {
        if (call.starts_with("writeBus")) {
            EXPECT_EQ(text("Prom_Save_Status"), "In progress...");
            EXPECT_EQ(page->cursor().shape(), Qt::WaitCursor);
        }
    };
    click("Prom_Save");
    host.onCall = nullptr;
    EXPECT_EQ(text("Prom_Save_Status"), "Done.");
    EXPECT_EQ(host.log.front(), "begin");
    EXPECT_EQ(host.calls("begin").size(), 1U);
    EXPECT_EQ(host.log.back(), "end");
    EXPECT_EQ(recordText(kRecordPga), "Lens 12");
    EXPECT_EQ(records(kRecordTimeStamp), 0);
    EXPECT_EQ(page->testAttribute(Qt::WA_SetCursor), hadCursor);
}

TEST_P(EepromStep, OnlyTheFactorysLabelAddsOneTime) {
    using Row = std::tuple<char const*, int>;
    for (auto const& [label, times] : {Row{"factory", 0}, Row{"FACTORY", 1}, Row{"FACTORY", 1}}) {
        open();
        chooseLabel(label);
        click("Prom_Save");
        EXPECT_EQ(text("Prom_Save_Status"), "Done.") << label;
        EXPECT_EQ(records(kRecordTimeStamp), times) << label;
        EXPECT_EQ(records(kRecordPga), 1) << label;
    }
    EXPECT_EQ(recordText(kRecordTimeStamp), "2024/05/31 23:59:07");
}

// An older time stands before a serial number, whose bytes the deletion of that time is the first to read.
TEST_P(EepromStep, AnOlderTimeThatCannotBeDeletedEndsTheSaveOrStaysBesideTheNewOne) {
    bool const newOneIsKept = GetParam().captureRows.size() > 0;
    constexpr char kOlder[] = "\x10\0\x14"
                              "2001/01/01 01:01:01"; // with its NUL
    int left = 0;
    for (int64_t n = 0;; ++n) {
        FakeHeadboard& board = libraries.headboard;
        board.device.fill(0xFF);
        auto at = std::copy_n("VYEE\1", 5, board.device.begin());
        at = std::copy_n(kOlder, sizeof kOlder, at);
        std::copy_n("\x0B\0\xB4", 3, at);
        open();
        chooseLabel("FACTORY");
        int64_t const before = board.operations;
        board.plan(DeviceFault::TransportFailed, uint64_t(n), false);
        click("Prom_Save");
        bool const wasHit = board.operations - before > n;
        board.plan(DeviceFault::None);
        if (!wasHit)
            break;
        if (text("Prom_Save_Status") != "Done.")
            continue;
        std::string const device(board.device.begin(), board.device.end());
        EXPECT_NE(device.find("2024/05/31 23:59:07"), std::string::npos) << n;
        left += records(kRecordTimeStamp) - 1;
    }
    EXPECT_EQ(left > 0, newOneIsKept);
}

TEST_P(EepromStep, ALaterChangeMakesTheSaveDueAgain) {
    open();
    for (bool const byLabel : {true, false}) {
        click("Prom_Save");
        ASSERT_EQ(state().promState, kDone);
        if (byLabel)
            chooseLabel("Other");
        else
            click("Calibrate");
        EXPECT_EQ(state().promState, kReady);
        EXPECT_EQ(text("Prom_Save_Status"), "Not done yet.");
        open();
    }
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

INSTANTIATE_TEST_SUITE_P(Pages, EepromStep, ::testing::ValuesIn(kPages),
                         [](auto const& test) { return std::string(test.param.name); });
} // namespace
