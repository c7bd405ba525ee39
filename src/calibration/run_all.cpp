#include "calibration/calibration_flow.h"
#include "hoststate/pipeline.h"

#include "calibration/display.h"
#include "calibration/saving.h"

namespace kestra {

namespace {

// A step that runs goes back to ready; true when it ran.
bool stopStep(StepState& stepState, int32_t& stepProgress) {
    if (stepState != kInProgress)
        return false;
    stepState = kReady;
    stepProgress = 0;
    return true;
}

} // namespace

void CalibrationFlow::toggleRunAll() {
    setRunAll(!core.state.runAll);
}

void CalibrationFlow::setRunAll(bool on) {
    if (on) {
        startOver();
        core.state.runAll = 1;
    } else {
        PageState& state = core.state;
        state.runAll = 0;
        if (stopStep(state.aeStepState, state.aeStepProgress))
            core.host.setState(kAutoExposure, 0);
        stopStep(state.wbStepState, state.wbStepProgress);
        stopStep(state.lscStepState, state.lscStepProgress);
    }
    core.widgets.showRunAll(core.state.runAll != 0);
    refreshEnables(core);
    refreshStatus(core);
}

void CalibrationFlow::runAllStep() {
    runAllAction();
    refresh();
}

// One action a tick: the host shows each step before the next one begins.
void CalibrationFlow::runAllAction() {
    PageState const& state = core.state;
    if (state.eepromState == EepromState::Unknown)
        return detectEeprom(core);
    if (state.presetState == kNotEvaluated)
        return evaluateSetupPreset();
    if (state.presetState == kReady)
        return applySetup();
    if (state.presetState == kInProgress)
        return;
    // A missing setup preset does not hold up the rest.
    if (isOpen(state.aeStepState))
        return adjustExposure();
    if (state.aeStepState == kInProgress)
        return exposureTick();
    if (isOpen(state.wbStepState))
        return adjustColourBalance();
    if (state.wbStepState == kInProgress)
        return colourBalanceTick();
    if (takeInputs())
        return;
    if (state.lscStepState == kNotEvaluated)
        return makeCalibrationReady();
    if (state.lscStepState == kReady)
        return startRunAllCalibration();
    if (state.lscStepState == kInProgress)
        return calibrationTick();
    runAllSave();
}

void CalibrationFlow::startRunAllCalibration() {
    calibrate();
    if (!core.state.shadingHandle)
        setRunAll(false);
}

// A failed calibration is not saved and leaves the steps open: Run All stays here until the user cancels it.
void CalibrationFlow::runAllSave() {
    bool const passesOver = passesOverFailure() && isFailed(core.state.lscStepState);
    if (isOpen(core.state.fileState) && !passesOver)
        saveToFile();
    else if (isOpen(core.state.promState))
        saveToEeprom();
    else
        setRunAll(false);
}

} // namespace kestra
