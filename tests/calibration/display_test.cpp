#include "calibration/enabling.h"
#include "calibration/step_status.h"

#include <gtest/gtest.h>

namespace {

using StatusOf = StepStatus (*)(PageState const&);

PageState stateWith(uint32_t PageState::*field, uint32_t value) {
    PageState state;
    state.*field = value;
    return state;
}

// States that no run of a page leads through; the pages' own tests read the texts of the others.
TEST(StepStatus, UnusualStatesHaveTheirTextAndBullet) {
    struct Row {
        StatusOf status;
        uint32_t PageState::*field;
        uint32_t value;
        char const* text;
        Bullet bullet;
    };
    constexpr char const* kNoPreset = "Warning: There is no 'Lens Calibration Setup' preset in the ini file.";
    constexpr char const* kUnknown = "The status of the setup preset is unknown.";
    Row const rows[] = {
        {setupStatus, &PageState::presetState, 0, kUnknown, Bullet::Gray},
        {setupStatus, &PageState::presetState, 3, kUnknown, Bullet::Gray},
        {setupStatus, &PageState::presetState, 5, kNoPreset, Bullet::Yellow},
        {setupStatus, &PageState::presetState, 6, kNoPreset, Bullet::Yellow},
        {exposureStatus, &PageState::aeStepState, 3, "In progress... 0 %", Bullet::Blue},
        {exposureStatus, &PageState::aeStepState, 5, "Error", Bullet::Red},
        {colourBalanceStatus, &PageState::wbStepState, 3, "In progress... 0%", Bullet::Blue},
        {colourBalanceStatus, &PageState::wbStepState, 6, "Error", Bullet::Red},
        {calibrationStatus, &PageState::lscStepState, 3, "In progress... 0%", Bullet::Blue},
        {calibrationStatus, &PageState::lscStepState, 5, "Error: Incompatible image size.", Bullet::Red},
        {uniformityStatus, &PageState::lscStepState, 3, " --   (Lower is better)", Bullet::Gray},
        {fileStatus, &PageState::fileState, 6, "Error saving the file.", Bullet::Red},
        {eepromStatus, &PageState::promState, 6, "Error accessing the EEPROM.", Bullet::Red},
    };
    for (Row const& row : rows) {
        StepStatus const status = row.status(stateWith(row.field, row.value));
        EXPECT_EQ(status.text.toStdString(), row.text) << row.value;
        EXPECT_EQ(status.bullet, row.bullet) << row.text;
    }
}

TEST(StepStatus, UniformityIsRatedAgainstTheLimit) {
    struct Row {
        double value;
        double limit;
        char const* text;
        Bullet bullet;
    };
    Row const rows[] = {
        {2.5, 2.0, " 2.50   (Lower is better.)", Bullet::Yellow},
        {3.1, 2.0, " 3.10   (Lower is better.)", Bullet::Red},
        {2.0, 2.0, " 2.00   (Lower is better.)", Bullet::Green},
        {3.0, 2.0, " 3.00   (Lower is better.)", Bullet::Yellow},
        {12.345, 2.0, " 12.35   (Lower is better.)", Bullet::Red},
    };
    for (Row const& row : rows) {
        PageState state;
        state.lscStepState = kDone;
        state.uniformityValue = row.value;
        state.uniformityLimit = row.limit;
        EXPECT_EQ(uniformityStatus(state).text.toStdString(), row.text);
        EXPECT_EQ(uniformityStatus(state).bullet, row.bullet) << row.text;
    }
}

TEST(StepStatus, AYcbcrCalibrationIsAWarningAndASavedNameComesThroughUnchanged) {
    PageState state;
    state.lscStepState = kDone;
    state.inputWasYcbcr = 1;
    state.fileState = kDone;
    state.savedPath = QStringLiteral("100%1 %2_%.ini");
    EXPECT_EQ(calibrationStatus(state).text, QStringLiteral("YCbCr calibration. Bypass mode recommended."));
    EXPECT_EQ(calibrationStatus(state).bullet, Bullet::Yellow);
    EXPECT_EQ(fileStatus(state).text, QStringLiteral("Done: 100%1 %2_%.ini"));
}

// One letter a widget group, in the order of the members: R S A P F E T; a dash for disabled.
std::string letters(Enabling const& e) {
    std::string text;
    bool const values[] = {e.runAll,   e.setup,      e.adjust,          e.parameters,
                           e.fileSave, e.eepromSave, e.eepromSaveStatus};
    for (size_t i = 0; i < std::size(values); ++i)
        text += values[i] ? "RSAPFET"[i] : '-';
    return text;
}

TEST(Enabling, FollowsTheStates) {
    struct Row {
        uint32_t runAll, ae, wb, preset, lsc, file, eeprom;
        char const* enabled;
    };
    Row const rows[] = {
        {0, 0, 0, 1, 1, 1, 4, "RSAP-ET"}, // fresh
        {0, 3, 0, 1, 1, 1, 4, "---P--T"}, // exposure by hand
        {0, 0, 3, 1, 1, 1, 4, "---P--T"}, // colour balance by hand
        {1, 3, 0, 4, 1, 1, 4, "R-----T"}, // Run All can be cancelled
        {1, 4, 4, 4, 3, 1, 5, "R------"}, //
        {0, 0, 0, 5, 4, 1, 5, "R-APF--"}, // no preset, calibrated, no EEPROM
        {0, 0, 0, 1, 4, 5, 5, "RSAP---"}, // no directory
        {0, 0, 0, 1, 3, 1, 0, "RSAP---"}, // calibrating by hand leaves the rest usable
    };
    for (Row const& row : rows) {
        PageState state;
        state.runAll = row.runAll;
        state.aeStepState = row.ae;
        state.wbStepState = row.wb;
        state.presetState = row.preset;
        state.lscStepState = row.lsc;
        state.fileState = row.file;
        state.eepromState = row.eeprom;
        EXPECT_EQ(letters(enablingOf(state)), row.enabled);
    }
}

} // namespace
