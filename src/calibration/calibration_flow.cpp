#include "calibration/calibration_flow.h"

#include "calibration/display.h"
#include "calibration/frame_steps.h"
#include "calibration/saving.h"
#include "calibration/settings.h"
#include "calibration/solver_input.h"
#include "common/numbers.h"
#include "hoststate/pipeline.h"
#include "wizard/dialogs.h"

#include <QScopeGuard>
#include <QScopedValueRollback>
#include <utility>

namespace kestra {

namespace {

constexpr int32_t kCoefficientPrecision = 16; // bits

} // namespace

CalibrationFlow::CalibrationFlow(PageKind kind, SensorRecord const& sensor, HostServices const& services,
                                 EepromSlot& eepromSlot)
    : core(eepromSlot), m_kind(kind) {
    adopt(sensor, services);
}

void CalibrationFlow::adopt(SensorRecord const& sensor, HostServices const& services) {
    core.sensor = sensor;
    core.host = Host(services);
}

void CalibrationFlow::initialise() {
    UpdateGuard const guard(core.state.updateDepth);
    core.widgets.fillFalloff();
    core.widgets.fillEepromLabel(eepromLabel());
    core.lensCorrection = chooseLensCorrection(m_kind, core.kind(), core.camera());
    loadAllSettings();
    startOver();
    core.host.announceRegister(core.lensCorrection.lensCorrectionRegister);
}

void CalibrationFlow::pageShown() {
    UpdateGuard const guard(core.state.updateDepth);
    core.state.active = 1; // hiding sets it too: only a closed page stops ticking
    loadAllSettings();
    refreshEnables(core);
    refreshStatus(core);
    refreshLensCorrection(core);
}

void CalibrationFlow::closePage() {
    core.state.active = 0;
    setRunAll(false);
    if (core.alive)
        storeAllSettings();
    delete core.widgets.timer.data();
    if (core.widgets.page)
        core.widgets.page->hide();
}

void CalibrationFlow::pageDestroyed() {
    core.alive = false;
    // Moved out first: destroying the calibration may call back into this flow.
    ShadingHandle const handle = std::exchange(core.state.shadingHandle, nullptr);
}

void CalibrationFlow::registerChanged(uint32_t what) {
    UpdateGuard const guard(core.state.updateDepth);
    if (what == 0)
        refreshLensCorrection(core);
}

void CalibrationFlow::onFrame(Frame const& frame) {
    adjustExposureAndColourBalance(core, frame);
    if (core.alive)
        captureFrame(frame);
    if (core.alive)
        measureUniformityWhenDue(core, frame, skippedRows());
    if (core.alive)
        markWorstBlock(core, frame);
}

void CalibrationFlow::start() {
    // A host that spins events inside a service lets the timer fire inside a tick.
    if (!core.alive || core.state.active != 1 || m_inTick)
        return;
    QScopedValueRollback<bool> const inTick(m_inTick, true);
    if (core.state.runAll)
        runAllStep();
    else if (core.state.aeStepState == kInProgress)
        exposureTick();
    else if (core.state.wbStepState == kInProgress)
        colourBalanceTick();
    else if (core.state.lscStepState == kInProgress)
        calibrationTick();
}

void CalibrationFlow::exposureTick() {
    if (core.state.aeStepProgress >= kFullProgress) {
        core.state.aeStepState = kDone;
        core.host.setState(kAutoExposure, 0);
        refreshEnables(core);
    }
    refreshStatus(core);
}

void CalibrationFlow::colourBalanceTick() {
    // Nothing is switched off at the host: the gains that were found stay in force.
    if (core.state.wbStepProgress >= kFullProgress) {
        core.state.wbStepState = kDone;
        refreshEnables(core);
    }
    refreshStatus(core);
}

void CalibrationFlow::applySetup() {
    core.state.presetState = kInProgress;
    bool applied = false;
    {
        WaitCursor const cursor(core.widgets.page);
        storeAllSettings();
        refreshStatus(core);
        core.widgets.paintAtOnce(core.widgets.setup);
        if (core.alive)
            applied = applyPreset(core.host, kSetupPreset);
        if (core.alive)
            loadAllSettings();
        refreshStatus(core);
    }
    if (core.state.presetState == kInProgress)
        core.state.presetState = applied ? kDone : kFailed;
    refresh();
}

void CalibrationFlow::loadAllSettings() {
    loadSettings(core);
    if (core.alive)
        loadOwnSettings();
}

void CalibrationFlow::storeAllSettings() {
    storeSettings(core);
    if (core.alive)
        storeOwnSettings();
}

void CalibrationFlow::evaluateSetupPreset() {
    core.state.presetState = findPreset(core.host, kSetupPreset) ? kReady : kFailed;
}

void CalibrationFlow::startStep(StepState& stepState, int32_t& stepProgress, bool autoExposure,
                                bool resetGains) {
    stepState = kInProgress;
    core.state.settleFrames = kFramesToSettle;
    stepProgress = 0;
    setRawPipeline(core.host, core.camera(), core.lensCorrection, autoExposure, resetGains);
    if (core.alive && stepState != kInProgress) {
        // Cancelled from inside the list, whose end has switched the exposure on again.
        if (autoExposure)
            core.host.setState(kAutoExposure, 0);
    } else if (resetGains) {
        core.state.settleFrames = kFramesToSettle; // the new gains count from the end of the list on
    }
    refreshEnables(core);
    refreshStatus(core);
}

void CalibrationFlow::adjustExposure() {
    startStep(core.state.aeStepState, core.state.aeStepProgress, true, false);
}

void CalibrationFlow::adjustColourBalance() {
    startStep(core.state.wbStepState, core.state.wbStepProgress, false, true);
}

void CalibrationFlow::calibrate() {
    uint32_t const runAll = core.state.runAll;
    storeAllSettings();
    // An earlier save no longer matches what will be calibrated now.
    for (StepState* const saved : {&core.state.fileState, &core.state.promState})
        if (*saved == kDone)
            *saved = kReady;
    core.state.settleFrames = kFramesToSettle;
    core.state.lscStepProgress = 0;
    if (core.alive)
        startCalibration();
    bool const cancelled = runAll != core.state.runAll;
    if (!cancelled)
        core.state.lscStepState = core.state.shadingHandle ? kInProgress : kFailedOtherwise;
    refresh();
}

void CalibrationFlow::startCalibration() {
    int32_t const falloff = clampedFalloffPercent(core.widgets.falloffText());
    core.host.setState("Lens Correction Falloff", falloff);
    core.host.setState("Lens Correction Coeff Prec", kCoefficientPrecision);
    setRawPipeline(core.host, core.camera(), core.lensCorrection, false, false);
    core.state.inputWasYcbcr = 0;
    setLensCorrection(core.host, core.camera(), core.lensCorrection, false);
    core.state.worstBlock = QRect();
    if (core.alive && !core.state.shadingHandle)
        core.state.shadingHandle = createCalibration();
}

void CalibrationFlow::loadSolution(std::vector<sf_RegEntry> const& entries) {
    ShadingHandle const handle = core.state.shadingHandle;
    // An exception would leave the step in a phase that no frame and no tick ends.
    auto endFailed = qScopeGuard([&] {
        if (!isCalibrating(handle, phase::kSolved) && !isCalibrating(handle, phase::kRegistersWritten))
            return;
        core.state.lscStepState = kFailedOtherwise;
        core.state.lscStepProgress = 0;
    });
    loadAndVerify(handle, entries);
    endFailed.dismiss();
}

void CalibrationFlow::loadAndVerify(ShadingHandle const& handle, std::vector<sf_RegEntry> const& entries) {
    ChangeGroup const group(core.host);
    if (!isCalibrating(handle, phase::kSolved) ||
        !writeRegisterList(core.host, entries, [&] { return isCalibrating(handle, phase::kSolved); }))
        return;
    core.state.lscStepProgress = phase::kRegistersWritten;
    setVerifyPipeline(core.host, core.camera(), core.lensCorrection);
    if (!isCalibrating(handle, phase::kRegistersWritten))
        return;
    core.state.lscStepProgress = phase::kLoaded;
    showLoaded();
}

void CalibrationFlow::showLoaded() {
    refreshEnables(core);
}

void CalibrationFlow::finishWhenMeasured() {
    if (core.state.lscStepState != kInProgress || core.state.lscStepProgress != phase::kMeasured)
        return;
    core.state.lscStepProgress = phase::kFinished;
    core.state.lscStepState = kDone;
    refreshEnables(core);
}

bool CalibrationFlow::isCalibrating(ShadingHandle const& handle, int32_t atPhase) const {
    return core.alive && core.state.lscStepState == kInProgress && core.state.lscStepProgress == atPhase &&
           core.state.shadingHandle == handle;
}

void CalibrationFlow::testUniformity() {
    setVerifyPipeline(core.host, core.camera(), core.lensCorrection);
    core.state.lscStepState = kInProgress;
    core.state.lscStepProgress = phase::kMeasure;
    refresh();
}

void CalibrationFlow::saveToFile() {
    if (isFailed(core.state.lscStepState))
        return;
    if (core.state.fileState == kNotEvaluated)
        checkSaveDirectory(core);
    // The three-lamp page says that the number is missing; the other has no text but that of the directory.
    if (core.state.fileState == kReady && isNumberMissing(core))
        core.state.fileState = kFailed;
    if (core.state.fileState == kReady)
        saveResultFile(core, resultFile());
    refresh();
}

void CalibrationFlow::saveToEeprom() {
    StepState const prom = core.state.promState;
    if (isFailed(core.state.lscStepState) || !(isOpen(prom) || prom == kDone || prom == kFailedOtherwise))
        return;
    saveToEepromStep(core, [this](HeadboardEeprom& eeprom, QByteArray const& label) {
        return storeInEeprom(eeprom, label);
    });
}

void CalibrationFlow::startOver() {
    resetSteps();
    UpdateGuard const guard(core.state.updateDepth);
    detectEeprom(core);
    if (core.alive)
        evaluateSetupPreset();
    makeInputsReady();
    makeCalibrationReady();
    checkSaveDirectory(core);
    refreshEnables(core);
    setRunAll(false);
    refreshStatus(core);
}

void CalibrationFlow::resetSteps() {
    PageState& state = core.state;
    state.runAll = 0;
    state.eepromState = EepromState::Unknown;
    for (StepState* const step : {&state.presetState, &state.aeStepState, &state.wbStepState,
                                  &state.lscStepState, &state.fileState, &state.promState})
        *step = kNotEvaluated;
    for (int32_t* const progress : {&state.aeStepProgress, &state.wbStepProgress, &state.lscStepProgress})
        *progress = 0;
    // Moved out first: destroying the calibration may call back into this flow. It may hold the inputs.
    std::exchange(state.shadingHandle, nullptr).reset();
    dropInputs();
}

void CalibrationFlow::makeCalibrationReady() {
    StepState& lsc = core.state.lscStepState;
    if (lsc != kNotEvaluated && !isFailed(lsc))
        return;
    lsc = kReady;
    core.state.lscStepProgress = 0;
}

void CalibrationFlow::showGraph() {
    std::optional<SensorInfo> const info = core.camera().info();
    core.host.setupAnalysis(info ? info->imageWidth / 2 : 0);
    core.host.writeIntSetting("AnalysisDlg Type", 0);
    core.host.writeIntSetting("AnalysisDlg Show", 1);
}

void CalibrationFlow::browse() {
    QString folder;
    {
        ModalBracket const bracket(core.host);
        if (core.alive)
            folder = chooseResultFolder();
    }
    {
        UpdateGuard const guard(core.state.updateDepth);
        core.widgets.showSaveDir(folder); // a cancelled chooser empties the field: the next save is refused
    }
    if (!core.alive)
        return;
    storeAllSettings();
    core.state.fileState = kNotEvaluated;
    checkSaveDirectory(core);
    refresh();
}

void CalibrationFlow::eepromLabelChanged() {
    if (core.state.updateDepth)
        return;
    if (core.state.promState == kDone)
        core.state.promState = kReady;
    refresh();
}

void CalibrationFlow::uniformityLimitChanged(QString const& text) {
    if (core.state.updateDepth)
        return;
    core.state.uniformityLimit = leadingDecimal(text.toLocal8Bit());
    refreshStatus(core);
}

void CalibrationFlow::saveDirChanged() {
    if (core.state.updateDepth)
        return;
    core.state.fileState = kNotEvaluated;
    refresh();
}

void CalibrationFlow::setFileState(StepState state) {
    core.state.fileState = state;
    refresh();
}

void CalibrationFlow::enableLensCorrectionClicked() {
    if (core.state.updateDepth)
        return;
    // The button's text follows the register notification that the host sends for the write.
    setLensCorrection(core.host, core.camera(), core.lensCorrection, core.widgets.isEnableLcChecked());
}

void CalibrationFlow::updateDisplay() {
    refreshEnables(core);
    refreshStatus(core);
}

void CalibrationFlow::stepCutShort() {
    if (core.state.presetState == kInProgress)
        core.state.presetState = kReady;
    if (core.state.promState == kInProgress)
        core.state.promState = kFailedOtherwise;
    refresh();
}

void CalibrationFlow::refresh() {
    refreshStatus(core);
    refreshEnables(core);
}

void CalibrationFlow::notifyStatus() {
    if (core.alive && m_emitStatus)
        m_emitStatus();
}

} // namespace kestra
