#pragma once

#include "calibration/captured_frames.h"
#include "calibration/shading.h"
#include "headboard/eeprom_chain.h"
#include "wizard/page_surface.h"

#include <QRect>
#include <QString>
#include <array>
#include <cstdint>
#include <optional>

namespace kestra {
/// State of a calibration step; 5 and 6 are the two failures that the step's status text tells apart.
enum StepState : uint32_t {
    kNotEvaluated = 0,
    kReady = 1,
    kInProgress = 3,
    kDone = 4,
    kFailed = 5,
    kFailedOtherwise = 6,
};

/// A step that nobody has run yet.
[[nodiscard]] inline bool isOpen(StepState stepState) {
    return stepState == kNotEvaluated || stepState == kReady;
}
[[nodiscard]] inline bool isFailed(StepState stepState) {
    return stepState == kFailed || stepState == kFailedOtherwise;
}

/// The calibration's state after a result of the library that is no success: it tells pictures of a wrong
/// size apart.
[[nodiscard]] inline StepState failureOf(int libraryResult) {
    constexpr int kIncompatibleImageSize = -2;
    return libraryResult == kIncompatibleImageSize ? kFailed : kFailedOtherwise;
}

/// A uniformity that misses its limit by up to this much is only a warning.
inline constexpr double kUniformityTolerance = 1.0;

/// Progress of a step that has reached its end, per cent.
inline constexpr int32_t kFullProgress = 100;
/// Frames to let pass after the picture's settings changed.
inline constexpr int32_t kFramesToSettle = 5;

/// Progress values of the calibration step at which something happens. In between the frame handler counts.
namespace phase {
inline constexpr int32_t kSettleEnd = 30; ///< a frame goes to the calibration library
inline constexpr int32_t kSolved = 40;    ///< the library holds a solution
inline constexpr int32_t kRegistersWritten = 45;
inline constexpr int32_t kLoaded = 50;  ///< registers loaded; counting goes on
inline constexpr int32_t kMeasure = 80; ///< the colour-uniformity measurement is due
inline constexpr int32_t kMeasured = 90;
inline constexpr int32_t kFinished = 100;
} // namespace phase

/// What a calibration page knows of its calibration. Plain data: what the page shows is a function of it.
struct PageState {
    uint32_t updateDepth = 0; ///< nesting of updates from code; change handlers ignore signals meanwhile
    uint32_t active = 0;      ///< 1 once the page was shown
    uint32_t runAll = 0;      ///< 1 while Run All is in progress
    EepromState eepromState = EepromState::Unknown;
    StepState presetState = kNotEvaluated;
    StepState aeStepState = kNotEvaluated;
    int32_t aeStepProgress = 0; ///< 0 to 100
    StepState wbStepState = kNotEvaluated;
    int32_t wbStepProgress = 0; ///< 0 to 100
    StepState lscStepState = kNotEvaluated;
    int32_t lscStepProgress = 0; ///< 0 to 100, also the phase
    StepState fileState = kNotEvaluated;
    StepState promState = kNotEvaluated;
    Shading shadingHandle;         ///< of the library; without a handle when there is no calibration
    CapturedFrames captured;       ///< of the page that takes three pictures
    uint32_t inputWasYcbcr = 0;    ///< 1 when the last calibration was made from a YCbCr image
    double uniformityValue{};      ///< last measured colour uniformity, lower is better
    double uniformityLimit{};      ///< acceptance threshold for uniformityValue
    int32_t lensRadius{};          ///< radius setting handed to the calibration
    QString savedPath;             ///< bare name of the last saved results file
    int32_t settleFrames{};        ///< frames to let pass before the colour balance looks at one
    QRect worstBlock;              ///< block of the worst colour deviation, right and bottom exclusive
    bool refusedForNumber = false; ///< the page tells that a file was refused for the missing serial number
};

/// What a step shows: its status text and bullet, and while it runs its progress in place of the text.
struct StepStatus {
    QString text;
    Bullet bullet = Bullet::Gray;
    std::optional<int> progress{}; ///< per cent, of a step that runs and has a bar
    bool showsBar = false;         ///< the bar covers the text
};

/// Which widgets accept input.
struct Enabling {
    bool runAll = false;     ///< the Run All button
    bool setup = false;      ///< the setup button
    bool adjust = false;     ///< exposure, colour balance, calibration, uniformity, directory and its chooser
    bool parameters = false; ///< falloff and EEPROM label with their captions
    bool fileSave = false;   ///< the save-to-file button
    bool eepromSave = false; ///< the save-to-EEPROM button
    bool eepromSaveStatus = false; ///< the EEPROM status text
    bool capture = false;          ///< the capture buttons
};

/// What a page shows of its state.
struct PageView {
    StepStatus setup, exposure, colourBalance, calibration, uniformity, file, eeprom;
    std::array<StepStatus, kIlluminants> captures;
    Enabling enabling;
    QString runAll; ///< the button's text
};

[[nodiscard]] PageView viewOf(PageState const& state);
} // namespace kestra
