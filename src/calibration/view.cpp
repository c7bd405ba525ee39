#include "calibration/view.h"

#include <QCoreApplication>
#include <algorithm>

namespace kestra {
namespace {
// Both pages show the same texts, so they are translated once.
QString translated(char const* text) { return QCoreApplication::translate("LensAssist", text); }

struct Cell {
    char const* text;
    Bullet bullet;
};

// What a step shows in each of its states. A null text takes the column `otherwise`.
struct StepRow {
    Cell inProgress;
    Cell done;
    Cell failed;
    Cell failedOtherwise;
    Cell otherwise;
};

constexpr Cell kOtherwise = {nullptr, Bullet::Gray};
constexpr Cell kNotDone = {QT_TRANSLATE_NOOP("LensAssist", "Not done yet."), Bullet::Gray};
constexpr Cell kDoneCell = {QT_TRANSLATE_NOOP("LensAssist", "Done."), Bullet::Green};
constexpr Cell kErrorCell = {QT_TRANSLATE_NOOP("LensAssist", "Error"), Bullet::Red};
constexpr Cell kWorking = {QT_TRANSLATE_NOOP("LensAssist", "In progress..."), Bullet::Blue};
constexpr Cell kWorkingPercent = {QT_TRANSLATE_NOOP("LensAssist", "In progress... %1%"), Bullet::Blue};
// Users know the exposure text with a blank before the sign and the other two without.
constexpr Cell kExposurePercent = {QT_TRANSLATE_NOOP("LensAssist", "In progress... %1 %"), Bullet::Blue};
constexpr Cell kNoSetupPreset = {
    QT_TRANSLATE_NOOP("LensAssist", "Warning: There is no 'Lens Calibration Setup' preset in the ini file."),
    Bullet::Yellow};

constexpr StepRow kSetup = {
    kOtherwise,
    kDoneCell,
    kNoSetupPreset,
    kNoSetupPreset,
    {QT_TRANSLATE_NOOP("LensAssist", "The status of the setup preset is unknown."), Bullet::Gray}};
constexpr StepRow kExposure = {kExposurePercent, kDoneCell, kErrorCell, kErrorCell, kNotDone};
constexpr StepRow kColourBalance = {kWorkingPercent, kDoneCell, kErrorCell, kErrorCell, kNotDone};
constexpr StepRow kCalibration = {
    kWorkingPercent,
    kDoneCell,
    {QT_TRANSLATE_NOOP("LensAssist", "Error: Incompatible image size."), Bullet::Red},
    {QT_TRANSLATE_NOOP("LensAssist", "Error. Are the External sensor data files installed?"), Bullet::Red},
    kNotDone};
constexpr StepRow kFile = {
    kWorking,
    {QT_TRANSLATE_NOOP("LensAssist", "Done: %1"), Bullet::Green},
    {QT_TRANSLATE_NOOP("LensAssist", "Error: The directory does not exist."), Bullet::Red},
    {QT_TRANSLATE_NOOP("LensAssist", "Error saving the file."), Bullet::Red},
    kNotDone};
constexpr StepRow kEeprom = {kWorking,
                             kDoneCell,
                             {QT_TRANSLATE_NOOP("LensAssist", "No EEPROM."), Bullet::Red},
                             {QT_TRANSLATE_NOOP("LensAssist", "Error accessing the EEPROM."), Bullet::Red},
                             kNotDone};

constexpr Cell kYcbcrCalibration = {
    QT_TRANSLATE_NOOP("LensAssist", "YCbCr calibration. Bypass mode recommended."), Bullet::Yellow};

// The two texts differ in their last full stop; users and their scripts know them so.
constexpr char const* kUniformityText = QT_TRANSLATE_NOOP("LensAssist", " %1   (Lower is better.)");
constexpr char const* kNoUniformityText = QT_TRANSLATE_NOOP("LensAssist", " --   (Lower is better)");

Cell cellOf(StepRow const& row, StepState state) {
    switch (state) {
    case kInProgress:
        return row.inProgress.text ? row.inProgress : row.otherwise;
    case kDone:
        return row.done;
    case kFailed:
        return row.failed;
    case kFailedOtherwise:
        return row.failedOtherwise;
    default:
        return row.otherwise;
    }
}

StepStatus shown(Cell const& cell) { return {translated(cell.text), cell.bullet}; }

// Steps that tell their progress have a bar.
StepStatus stepStatus(StepRow const& row, StepState state, std::optional<int32_t> progress = {}) {
    StepStatus status = shown(cellOf(row, state));
    if (state == kInProgress && progress) {
        status.text = status.text.arg(*progress);
        status.progress = progress;
    }
    return status;
}

Bullet uniformityBullet(PageState const& state) {
    if (state.uniformityLimit >= state.uniformityValue)
        return Bullet::Green;
    return state.uniformityLimit + kUniformityTolerance >= state.uniformityValue ? Bullet::Yellow
                                                                                 : Bullet::Red;
}

QString captured(char const* text) { return QCoreApplication::translate("LensAssistApga", text); }

// By `CaptureState`.
constexpr Cell kCaptures[] = {
    {QT_TRANSLATE_NOOP("LensAssistApga", "Not done yet."), Bullet::Gray},
    {QT_TRANSLATE_NOOP("LensAssistApga", "Not done yet."), Bullet::Gray},
    {QT_TRANSLATE_NOOP("LensAssistApga", "Waiting for you..."), Bullet::Gray},
    {QT_TRANSLATE_NOOP("LensAssistApga", "In progress..."), Bullet::Blue},
    {QT_TRANSLATE_NOOP("LensAssistApga", "Done."), Bullet::Green},
    {QT_TRANSLATE_NOOP("LensAssistApga", "Error: Incompatible image size."), Bullet::Red},
    {QT_TRANSLATE_NOOP("LensAssistApga", "Error."), Bullet::Red},
};

StepStatus captureStatus(CaptureRow const& row) {
    Cell const& cell = kCaptures[row.state];
    bool const blinks = row.state == kWaiting && row.isLit;
    return {captured(cell.text), blinks ? Bullet::Blue : cell.bullet};
}

StepStatus setupStatus(PageState const& state) {
    if (state.presetState == kReady)
        return shown(kNotDone);
    return stepStatus(kSetup, state.presetState);
}

StepStatus calibrationStatus(PageState const& state) {
    if (state.lscStepState == kDone && state.inputWasYcbcr)
        return shown(kYcbcrCalibration);
    return stepStatus(kCalibration, state.lscStepState, state.lscStepProgress);
}

StepStatus uniformityStatus(PageState const& state) {
    if (state.lscStepState != kDone)
        return {translated(kNoUniformityText), Bullet::Gray};
    QString const text = translated(kUniformityText);
    return {text.arg(QString::number(state.uniformityValue, 'f', 2)), uniformityBullet(state)};
}

StepStatus fileStatus(PageState const& state) {
    StepStatus status = stepStatus(kFile, state.fileState);
    if (state.fileState == kDone)
        status.text = status.text.arg(state.savedPath);
    if (state.refusedForNumber)
        status.text = captured(QT_TRANSLATE_NOOP("LensAssistApga", "Error: No serial number."));
    return status;
}

Enabling enablingOf(PageState const& state) {
    bool const busy = state.aeStepState == kInProgress || state.wbStepState == kInProgress;
    bool const run = state.runAll != 0;
    bool const free = !busy && !run;
    bool const eepromPresent = state.eepromState == EepromState::Present;
    return {
        .runAll = !busy || run, // a running Run All can always be cancelled
        .setup = free && state.presetState != kFailed,
        .adjust = free,
        .parameters = !run,
        .fileSave = free && state.fileState != kFailed && state.lscStepState == kDone,
        .eepromSave = free && eepromPresent,
        .eepromSaveStatus = eepromPresent,
        .capture = !busy, // also during Run All
    };
}
} // namespace

PageView viewOf(PageState const& state) {
    PageView view = {
        .setup = setupStatus(state),
        .exposure = stepStatus(kExposure, state.aeStepState, state.aeStepProgress),
        .colourBalance = stepStatus(kColourBalance, state.wbStepState, state.wbStepProgress),
        .calibration = calibrationStatus(state),
        .uniformity = uniformityStatus(state),
        .file = fileStatus(state),
        .eeprom = stepStatus(kEeprom, state.promState),
        .captures = {},
        .enabling = enablingOf(state),
        .runAll = translated(state.runAll ? QT_TRANSLATE_NOOP("LensAssist", "Cancel Run All")
                                          : QT_TRANSLATE_NOOP("LensAssist", "Run All Steps")),
    };
    std::ranges::transform(state.captured, view.captures.begin(), captureStatus);
    // One bar at a time: that of the last step that runs.
    for (StepStatus* const step : {&view.calibration, &view.colourBalance, &view.exposure})
        if (step->progress) {
            step->showsBar = true;
            break;
        }
    return view;
}
} // namespace kestra
