#include "calibration/calibration_flow.h"

#include "common/numbers.h"
#include "wizard/dialogs.h"

#include <QScopeGuard>

namespace kestra {
namespace {
constexpr int32_t kCoefficientPrecision = 16; // bits

// A step that runs goes back to ready; true when it ran.
bool stopStep(StepState& stepState, int32_t& stepProgress) {
    if (stepState != kInProgress)
        return false;
    stepState = kReady;
    stepProgress = 0;
    return true;
}
} // namespace

CalibrationFlow::CalibrationFlow(PageTraits const& traits, SensorRecord const& sensor,
                                 HostServices const& services, EepromSlot& eepromSlot)
    : m_traits(traits), m_eeprom(eepromSlot) {
    adopt(sensor, services);
}

void CalibrationFlow::adopt(SensorRecord const& sensor, HostServices const& services) {
    m_sensor = sensor;
    m_host = Host(services);
    m_camera = Sensor(sensor.camera);
}

void CalibrationFlow::pageDestroyed() {
    gate.close();
    widgets = {};
    serialNumber = {};
    emitStatus = {};
    m_sensor = {};
    m_host = {};
    m_camera = Sensor(nullptr);
    m_eeprom.abandon();
    m_state.shadingHandle.giveUp();
}

SensorKind const& CalibrationFlow::kind() const { return sensorKind(m_sensor.sensorKind, m_sensor.variant); }

void CalibrationFlow::initialise() {
    auto const end = qScopeGuard([&] { m_eeprom.end(); });
    {
        UpdateGuard const guard(m_state.updateDepth);
        widgets.fillFalloff();
        widgets.fillEepromLabel(QString::fromLatin1(m_traits.eepromLabel));
    }
    m_lensCorrection = chooseLensCorrection(m_traits.kind, kind(), m_camera);
    loadSettings();
    startOver();
    show();
    m_host.announceRegister(m_lensCorrection.lensCorrectionRegister);
}

void CalibrationFlow::pageShown() {
    m_state.active = 1; // hiding sets it too: only a closed page stops ticking
    loadSettings();
    showLensCorrection();
}

void CalibrationFlow::closePage() {
    m_state.active = 0;
    setRunAll(false);
    storeSettings();
    delete widgets.timer.data();
    if (widgets.page)
        widgets.page->hide();
}

void CalibrationFlow::show() {
    m_state.refusedForNumber =
        m_traits.tellsMissingNumber && m_state.fileState == kFailed && isNumberMissing();
    UpdateGuard const guard(m_state.updateDepth);
    widgets.show(viewOf(m_state));
}

// Before a call that may take long: who saw the old state might pull the board meanwhile.
void CalibrationFlow::showBefore(StepWidgets const& step) {
    show();
    widgets.paintAtOnce(step);
}

void CalibrationFlow::showLensCorrection() {
    bool const on = lensCorrectionEnabled(m_host, m_camera, m_lensCorrection);
    UpdateGuard const guard(m_state.updateDepth);
    widgets.showLensCorrection(on);
}

void CalibrationFlow::stepCutShort() {
    if (m_state.presetState == kInProgress)
        m_state.presetState = kReady;
    if (m_state.promState == kInProgress)
        m_state.promState = kFailedOtherwise;
    show();
}

void CalibrationFlow::tick() {
    if (m_state.active != 1)
        return;
    if (m_state.runAll)
        runAllAction();
    else if (m_state.aeStepState == kInProgress)
        exposureTick();
    else if (m_state.wbStepState == kInProgress)
        colourBalanceTick();
    else if (m_state.lscStepState == kInProgress)
        calibrationTick();
    else
        return;
    show();
}

// One action a tick: the host shows each step before the next one begins.
void CalibrationFlow::runAllAction() {
    if (m_state.eepromState == EepromState::Unknown)
        return detectEeprom();
    if (m_state.presetState == kNotEvaluated)
        return evaluateSetupPreset();
    if (m_state.presetState == kReady)
        return applySetup();
    // A missing setup preset does not hold up the rest.
    if (isOpen(m_state.aeStepState))
        return adjustExposure();
    if (m_state.aeStepState == kInProgress)
        return exposureTick();
    if (isOpen(m_state.wbStepState))
        return adjustColourBalance();
    if (m_state.wbStepState == kInProgress)
        return colourBalanceTick();
    if (takeInputs())
        return;
    if (m_state.lscStepState == kNotEvaluated)
        return makeCalibrationReady();
    if (m_state.lscStepState == kReady) {
        calibrate();
        if (!m_state.shadingHandle)
            setRunAll(false);
        return;
    }
    if (m_state.lscStepState == kInProgress)
        return calibrationTick();
    // A failed calibration is not saved and leaves the steps open: Run All stays here until the user cancels
    // it.
    bool const passesOver = m_traits.passesOverFailure && isFailed(m_state.lscStepState);
    if (isOpen(m_state.fileState) && !passesOver)
        saveToFile();
    else if (isOpen(m_state.promState))
        saveToEeprom();
    else
        setRunAll(false);
}

void CalibrationFlow::exposureTick() {
    if (m_state.aeStepProgress < kFullProgress)
        return;
    m_state.aeStepState = kDone;
    m_host.setState(kAutoExposure, 0);
}

void CalibrationFlow::colourBalanceTick() {
    // Nothing is switched off at the host: the gains that were found stay in force.
    if (m_state.wbStepProgress >= kFullProgress)
        m_state.wbStepState = kDone;
}

void CalibrationFlow::calibrationTick() {
    bool const hasInputs = !m_traits.takesThreePictures || m_state.captured.haveAllFrames();
    if (!m_state.shadingHandle || !hasInputs) {
        if (m_state.runAll)
            setRunAll(false);
        if (m_state.lscStepProgress < phase::kLoaded)
            return;
    }
    if (m_state.lscStepProgress == 0)
        solve();
    else if (m_state.lscStepProgress == phase::kSolved)
        loadSolution();
    if (m_state.lscStepState == kInProgress && m_state.lscStepProgress == phase::kMeasured) {
        m_state.lscStepProgress = phase::kFinished;
        m_state.lscStepState = kDone;
    }
}

void CalibrationFlow::loadSolution() {
    std::optional<std::vector<sf_RegEntry>> entries = m_state.shadingHandle.registers();
    if (!entries || (m_traits.failsWithoutRegisters && entries->empty()))
        return failCalibration(kFailedOtherwise);
    if (m_traits.firstWrite)
        entries->insert(entries->begin(), *m_traits.firstWrite);
    // An exception would leave the step in a phase that no frame and no tick ends.
    auto endFailed = qScopeGuard([&] { failCalibration(kFailedOtherwise); });
    ChangeGroup const group(m_host);
    for (sf_RegEntry const& entry : *entries)
        m_host.writeListEntry(entry.first, entry.second, entry.third);
    m_state.lscStepProgress = phase::kRegistersWritten;
    setVerifyPipeline(m_host, m_camera, m_lensCorrection);
    m_state.lscStepProgress = phase::kLoaded;
    endFailed.dismiss();
    show(); // the host may take its time to close the group
}

void CalibrationFlow::setRunAll(bool on) {
    if (on) {
        startOver();
        m_state.runAll = 1;
        return;
    }
    m_state.runAll = 0;
    if (stopStep(m_state.aeStepState, m_state.aeStepProgress))
        m_host.setState(kAutoExposure, 0);
    stopStep(m_state.wbStepState, m_state.wbStepProgress);
    stopStep(m_state.lscStepState, m_state.lscStepProgress);
}

void CalibrationFlow::startOver() {
    resetSteps();
    detectEeprom();
    evaluateSetupPreset();
    makeCalibrationReady();
    checkSaveDirectory();
}

void CalibrationFlow::resetSteps() {
    m_state.runAll = 0;
    m_state.eepromState = EepromState::Unknown;
    for (StepState* const step : {&m_state.presetState, &m_state.aeStepState, &m_state.wbStepState,
                                  &m_state.lscStepState, &m_state.fileState, &m_state.promState})
        *step = kNotEvaluated;
    for (int32_t* const progress :
         {&m_state.aeStepProgress, &m_state.wbStepProgress, &m_state.lscStepProgress})
        *progress = 0;
    m_state.shadingHandle.giveUp(); // it may hold the pictures
    m_state.captured.reset();
    m_state.captured[kIncandescent].arm();
}

void CalibrationFlow::makeCalibrationReady() {
    if (m_state.lscStepState == kNotEvaluated || isFailed(m_state.lscStepState))
        failCalibration(kReady);
}

void CalibrationFlow::evaluateSetupPreset() {
    m_state.presetState = findPreset(m_host, kSetupPreset) ? kReady : kFailed;
}

void CalibrationFlow::applySetup() {
    m_state.presetState = kInProgress;
    WaitCursor const cursor(widgets.page);
    storeSettings();
    showBefore(widgets.setup);
    bool const applied = applyPreset(m_host, kSetupPreset);
    loadSettings();
    m_state.presetState = applied ? kDone : kFailed;
}

void CalibrationFlow::adjustExposure() {
    startStep(m_state.aeStepState, m_state.aeStepProgress, true, false);
}

void CalibrationFlow::adjustColourBalance() {
    startStep(m_state.wbStepState, m_state.wbStepProgress, false, true);
}

void CalibrationFlow::startStep(StepState& stepState, int32_t& stepProgress, bool autoExposure,
                                bool resetGains) {
    stepState = kInProgress;
    m_state.settleFrames = kFramesToSettle;
    stepProgress = 0;
    setRawPipeline(m_host, m_camera, m_lensCorrection, autoExposure, resetGains);
}

void CalibrationFlow::calibrate() {
    storeSettings();
    // An earlier save no longer matches what will be calibrated now.
    for (StepState* const saved : {&m_state.fileState, &m_state.promState})
        if (*saved == kDone)
            *saved = kReady;
    m_state.settleFrames = kFramesToSettle;
    m_state.lscStepProgress = 0;
    startCalibration();
    m_state.lscStepState = m_state.shadingHandle ? kInProgress : kFailedOtherwise;
}

void CalibrationFlow::startCalibration() {
    m_host.setState("Lens Correction Falloff", widgets.clampedFalloff());
    m_host.setState("Lens Correction Coeff Prec", kCoefficientPrecision);
    setRawPipeline(m_host, m_camera, m_lensCorrection, false, false);
    m_state.inputWasYcbcr = 0;
    setLensCorrection(m_host, m_camera, m_lensCorrection, false);
    m_state.worstBlock = QRect();
    if (!m_state.shadingHandle && widgets.page) // no calibration without a page
        m_state.shadingHandle.take(createCalibration());
}

void CalibrationFlow::testUniformity() {
    setVerifyPipeline(m_host, m_camera, m_lensCorrection);
    m_state.lscStepState = kInProgress;
    m_state.lscStepProgress = phase::kMeasure;
}

void CalibrationFlow::showGraph() {
    std::optional<SensorInfo> const info = m_camera.info();
    m_host.setupAnalysis(info ? info->imageWidth / 2 : 0);
    m_host.writeIntSetting("AnalysisDlg Type", 0);
    m_host.writeIntSetting("AnalysisDlg Show", 1);
}

void CalibrationFlow::switchLensCorrection(bool on) {
    // The button's text follows the register notification that the host sends for the write.
    setLensCorrection(m_host, m_camera, m_lensCorrection, on);
}

void CalibrationFlow::browse() {
    QString folder;
    {
        ModalBracket const bracket(m_host);
        Gate::Outside const outside(gate);
        if (widgets.page) // no box for a page that is gone
            folder = chooseResultFolder();
    }
    {
        UpdateGuard const guard(m_state.updateDepth);
        widgets.showSaveDir(folder); // a cancelled chooser empties the field: the next save is refused
    }
    storeSettings();
    m_state.fileState = kNotEvaluated;
    checkSaveDirectory();
}

void CalibrationFlow::eepromLabelChanged() {
    if (m_state.promState == kDone)
        m_state.promState = kReady;
}

void CalibrationFlow::uniformityLimitChanged(QString const& text) {
    m_state.uniformityLimit = leadingDecimal(text.toLocal8Bit());
}
} // namespace kestra
