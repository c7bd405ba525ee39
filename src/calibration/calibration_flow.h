#pragma once

#include "calibration/page_widgets.h"
#include "calibration/view.h"
#include "common/host.h"
#include "common/sensor.h"
#include "headboard/headboard_eeprom.h"
#include "hoststate/pipeline.h"
#include "pictures/frame.h"
#include "wizard/gate.h"

#include <functional>
#include <optional>

namespace kestra {
/// What is constant on a calibration page and different on the other.
struct PageTraits {
    PageKind kind;
    char const* eepromLabel;          ///< the only label that it offers for its EEPROM record
    bool takesThreePictures = false;  ///< one under each light; its settings hold their temperatures
    bool skipsUnusableRows = false;   ///< those of the sensor kind, when it measures the uniformity
    bool savesInFormatOfKind = false; ///< the results file, under names without forbidden characters
    bool tellsMissingNumber = false;  ///< beside the file step; the other has no text but that of the folder
    bool passesOverFailure = false;   ///< Run All goes on to the EEPROM behind a failed calibration
    bool failsWithoutRegisters = false;      ///< a solution of no registers has failed
    char pathSeparator = '\\';               ///< the bare name of a results file begins behind the last one
    std::optional<sf_RegEntry> firstWrite{}; ///< before a solution's registers
};

/// What a calibration page asks of the headboard configuration page; both may be null.
struct SerialNumber {
    std::function<void()> store;     ///< stores it in the EEPROM, before a save there
    std::function<bool()> isMissing; ///< whether there is such a page and its field is empty
};

/// The label of the factory's calibration, in this spelling only.
inline constexpr char kFactoryLabel[] = "FACTORY";

/// What becomes of a new time when the older one cannot be deleted.
enum class OlderTime { MustGo, MayStay };

/// A label with the characters replaced that a file name cannot bear.
[[nodiscard]] QByteArray sanitisedLabel(QByteArray label);

/// The flow of one calibration: what is known of it, and what ticks, frames, buttons and fields do. Both
/// pages run it and differ by their traits and by the protected operations.
///
/// Every call from outside comes through the gate and holds a share of the flow; those that need none say so.
class CalibrationFlow {
public:
    CalibrationFlow(PageTraits const& traits, SensorRecord const& sensor, HostServices const& services,
                    EepromSlot& eepromSlot);
    virtual ~CalibrationFlow() = default;
    CalibrationFlow(CalibrationFlow const&) = delete;
    CalibrationFlow& operator=(CalibrationFlow const&) = delete;

    Gate gate;
    PageWidgets widgets;
    std::function<void()> emitStatus; ///< asks for `show`, from inside a frame
    SerialNumber serialNumber;

    [[nodiscard]] PageState const& state() const { return m_state; }
    /// Takes a fresh copy of the host's records; without the gate.
    void adopt(SensorRecord const& sensor, HostServices const& services);
    /// The page is being destroyed: from now on nothing reaches host, camera, library and widgets any more.
    /// Without the gate.
    void pageDestroyed();

    void initialise();
    void pageShown();
    void closePage();

    // The timer's tick, and what the host sends.
    void tick();
    void onFrame(Frame const& frame);
    /// Without the gate.
    void showLensCorrection();

    // Buttons and fields.
    void setRunAll(bool on);
    void startOver();
    void applySetup();
    void adjustExposure();
    void adjustColourBalance();
    void calibrate();
    void testUniformity();
    void saveToFile();
    void saveToEeprom();
    void browse();
    void showGraph();
    void switchLensCorrection(bool on);
    void eepromLabelChanged();
    void uniformityLimitChanged(QString const& text);
    void saveDirChanged() { m_state.fileState = kNotEvaluated; }
    void setFileState(StepState state) { m_state.fileState = state; }

    /// Shows what the state says; without the gate.
    void show();
    /// Runs a step that came through the gate; nothing is thrown out of it.
    template <typename Step>
    void run(Step const& step) noexcept {
        if (!guarded("a step of the page", step))
            guarded("the end of a step", [this] { stepCutShort(); });
        m_eeprom.end();
    }
    /// The same for a button or a field, which shows what became of it.
    template <typename Step>
    void press(Step const& step) noexcept {
        run([&] {
            step();
            show();
        });
    }

protected:
    /// A new calibration of the library; null when it has no data for the sensor.
    [[nodiscard]] virtual sf_Handle* createCalibration() = 0;
    /// What Run All has to do between the colour balance and the calibration; false when nothing is left.
    virtual bool takeInputs() { return false; }
    /// The calibration's part in a frame.
    virtual void captureFrame(Frame const& frame) = 0;
    /// The calibration's part in a tick, in phase 0.
    virtual void solve() {}
    /// Puts the page's records into the EEPROM's image under a label and writes them.
    [[nodiscard]] virtual EepromStatus storeInEeprom(HeadboardEeprom& eeprom, QByteArray const& label) = 0;

    /// Adds the current time to the factory's calibration, in place of an older time.
    [[nodiscard]] static EepromStatus addFactoryTime(HeadboardEeprom& eeprom, QByteArray const& label,
                                                     OlderTime older);
    [[nodiscard]] SensorKind const& kind() const;
    /// Lets the phase count a frame while first <= phase < end.
    void countPhase(Frame const& frame, int32_t first, int32_t end);
    void failCalibration(StepState failure) {
        m_state.lscStepState = failure;
        m_state.lscStepProgress = 0;
    }
    /// Asks the page to show the state, from inside a frame.
    void notifyStatus() const {
        if (std::function<void()> const emitNow = emitStatus)
            emitNow();
    }

    PageTraits const& m_traits;
    SensorRecord m_sensor{}; ///< copy of the host's record; its strings are the host's and read at each use
    Host m_host;
    Sensor m_camera{nullptr};
    PageState m_state;

private:
    /// A step was cut short by an error: none that only its own routine ends is left in progress.
    void stepCutShort();
    void loadSettings();
    void storeSettings();
    void runAllAction();
    void exposureTick();
    void colourBalanceTick();
    void calibrationTick();
    void loadSolution();
    void startStep(StepState& stepState, int32_t& stepProgress, bool autoExposure, bool resetGains);
    void startCalibration();
    void resetSteps();
    void makeCalibrationReady();
    void evaluateSetupPreset();
    void detectEeprom();
    void checkSaveDirectory();
    void adjustExposureAndColourBalance(Frame const& frame);
    void measureUniformityWhenDue(Frame const& frame);
    void markWorstBlock(Frame const& frame) const;
    void showBefore(StepWidgets const& step);
    [[nodiscard]] bool isNumberMissing() const { return serialNumber.isMissing && serialNumber.isMissing(); }
    [[nodiscard]] QByteArray resultFilePath() const;

    EepromUse m_eeprom;
    LensCorrection m_lensCorrection;
};
} // namespace kestra
