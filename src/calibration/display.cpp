#include "calibration/display.h"

namespace kestra {

namespace {

// The step whose bar is shown: the last one that runs.
StepWidgets const* stepWithBar(PageCore const& core) {
    PageState const& state = core.state;
    if (state.lscStepState == kInProgress)
        return &core.widgets.calibration;
    if (state.wbStepState == kInProgress)
        return &core.widgets.colourBalance;
    return state.aeStepState == kInProgress ? &core.widgets.exposure : nullptr;
}

} // namespace

void refreshStatus(PageCore& core) {
    UpdateGuard const guard(core.state.updateDepth);
    PageState& state = core.state;
    PageWidgets& widgets = core.widgets;
    if (state.fileState == kDone)
        state.savedPath =
            state.savedPath.mid(state.savedPath.lastIndexOf(QLatin1Char(core.display.pathSeparator)) + 1);
    widgets.show(widgets.setup, setupStatus(state));
    widgets.show(widgets.exposure, exposureStatus(state));
    widgets.show(widgets.colourBalance, colourBalanceStatus(state));
    widgets.show(widgets.calibration, calibrationStatus(state));
    widgets.show(widgets.uniformity, uniformityStatus(state));
    widgets.show(widgets.file, fileStatus(state));
    widgets.show(widgets.eeprom, eepromStatus(state));
    if (core.display.showOwnStatus)
        core.display.showOwnStatus();
    widgets.swapIn(stepWithBar(core));
}

void refreshEnables(PageCore& core) {
    UpdateGuard const guard(core.state.updateDepth);
    core.widgets.apply(enablingOf(core.state));
    if (core.display.showOwnEnables)
        core.display.showOwnEnables();
}

void refreshLensCorrection(PageCore& core) {
    bool const on = lensCorrectionEnabled(core.host, core.camera(), core.lensCorrection);
    UpdateGuard const guard(core.state.updateDepth);
    core.widgets.showLensCorrection(on);
}

} // namespace kestra
