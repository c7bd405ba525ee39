#include "calibration/enabling.h"

Enabling enablingOf(PageState const& state) {
    bool const busy = state.aeStepState == kInProgress || state.wbStepState == kInProgress;
    bool const run = state.runAll != 0;
    bool const free = !busy && !run;
    bool const eepromPresent = state.eepromState == kEepromPresent;
    return {
        .runAll = !busy || run, // a running Run All can always be cancelled
        .setup = free && state.presetState != kFailed,
        .adjust = free,
        .parameters = !run,
        .fileSave = free && state.fileState != kFailed && state.lscStepState == kDone,
        .eepromSave = free && eepromPresent,
        .eepromSaveStatus = eepromPresent,
    };
}
