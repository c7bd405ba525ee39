#pragma once

#include "calibration/page_core.h"
#include "calibration/saving.h"
#include "pictures/frame.h"

#include <functional>
#include <utility>
#include <vector>

namespace kestra {

/// The flow of one calibration: step states, the tick that drives the automatic steps, Run All, the button
/// handlers and the frame handler. Both pages run it; a page states its differences by overriding the
/// protected operations.
///
/// A page shares it: every call from outside holds a share of its own (`std::shared_ptr`), because any host
/// or library call that a routine makes may delete the page. Routines check `core.alive` after such calls.
class CalibrationFlow {
public:
    CalibrationFlow(PageKind kind, SensorRecord const& sensor, HostServices const& services,
                    EepromSlot& eepromSlot);
    virtual ~CalibrationFlow() = default;
    CalibrationFlow(CalibrationFlow const&) = delete;
    CalibrationFlow& operator=(CalibrationFlow const&) = delete;

    /// What tells the page that its display is out of date; it then calls `updateDisplay`.
    void setStatusSignal(std::function<void()> emitStatus) { m_emitStatus = std::move(emitStatus); }
    void setSerialNumber(SerialNumber serialNumber) { core.serialNumber = std::move(serialNumber); }
    void setFileState(StepState state);
    /// Takes a fresh copy of the host's records.
    void adopt(SensorRecord const& sensor, HostServices const& services);
    [[nodiscard]] PageWidgets& widgets() { return core.widgets; }
    [[nodiscard]] PageState const& state() const { return core.state; }

    // Lifecycle, called by the page.
    void initialise();
    void pageShown();
    void closePage();
    /// The page is being destroyed: nothing of it is touched from now on, and its calibration is given up.
    void pageDestroyed();

    // What the host sends.
    void registerChanged(uint32_t what);
    void onFrame(Frame const& frame);

    // The tick and the handlers of the page's widgets.
    void start();
    void applySetup();
    void adjustExposure();
    void adjustColourBalance();
    void calibrate();
    void saveToFile();
    void saveToEeprom();
    void startOver();
    void showGraph();
    void testUniformity();
    void toggleRunAll();
    void browse();
    void eepromLabelChanged();
    void uniformityLimitChanged(QString const& text);
    void saveDirChanged();
    void enableLensCorrectionClicked();
    void updateDisplay();
    /// A step was cut short by an error: none that only its own routine ends is left, or shown, in progress.
    void stepCutShort();

protected:
    /// The only label that the page offers for its EEPROM record.
    [[nodiscard]] virtual QString eepromLabel() const = 0;
    /// Drops what the page has taken for a calibration; the page is reset.
    virtual void dropInputs() {}
    /// Makes the taking of it ready again, at the end of a reset.
    virtual void makeInputsReady() {}
    /// What Run All has to do between the colour balance and the calibration; false when nothing is left.
    virtual bool takeInputs() { return false; }
    /// Settings that only this page has, after those of both.
    virtual void loadOwnSettings() {}
    virtual void storeOwnSettings() {}
    /// A new calibration of the library, null when it has no data for the sensor.
    [[nodiscard]] virtual ShadingHandle createCalibration() = 0;
    /// The tick of the calibration step while it runs.
    virtual void calibrationTick() = 0;
    /// The calibration's part in a frame: counting the phase and taking what the library needs.
    virtual void captureFrame(Frame const& frame) = 0;
    /// Unusable rows at the top of the picture.
    [[nodiscard]] virtual int skippedRows() const = 0;
    /// How the results file is written.
    [[nodiscard]] virtual ResultFile resultFile() const { return {}; }
    /// Whether Run All passes over the file of a failed calibration, and so ends where there is no EEPROM.
    [[nodiscard]] virtual bool passesOverFailure() const { return false; }
    /// Shows that a solution is loaded.
    virtual void showLoaded();

    /// Puts the page's records into the EEPROM's image and writes them; see `StoreInEeprom`.
    [[nodiscard]] virtual EepromStatus storeInEeprom(HeadboardEeprom& eeprom, QByteArray const& label) = 0;

    /// Ends Run All, when it runs, and every step that is in progress.
    void setRunAll(bool on);
    /// Loads a solution's registers into the sensor and sets the host up for verification; the phase becomes
    /// `phase::kLoaded`. Does no more when the page is reset or deleted meanwhile; an exception fails the
    /// step.
    void loadSolution(std::vector<sf_RegEntry> const& entries);
    /// Finishes the step once the uniformity was measured.
    void finishWhenMeasured();
    /// Whether the calibration that a routine works on is still the page's, and still in the phase that the
    /// routine works in. Asked after each call from which the page may have been reset or started anew.
    [[nodiscard]] bool isCalibrating(ShadingHandle const& handle, int32_t atPhase) const;
    void refresh();
    /// Asks the page to update its display.
    void notifyStatus();

    PageCore core;

private:
    void runAllStep();
    void runAllAction();
    void startRunAllCalibration();
    void runAllSave();
    void exposureTick();
    void colourBalanceTick();
    void startStep(StepState& stepState, int32_t& stepProgress, bool autoExposure, bool resetGains);
    void startCalibration();
    void loadAndVerify(ShadingHandle const& handle, std::vector<sf_RegEntry> const& entries);
    void evaluateSetupPreset();
    void loadAllSettings();
    void storeAllSettings();
    void makeCalibrationReady();
    void resetSteps();

    PageKind const m_kind;
    std::function<void()> m_emitStatus;
    bool m_inTick = false;
};

} // namespace kestra
