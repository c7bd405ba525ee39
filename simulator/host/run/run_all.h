#pragma once

#include "simulator/host/session/dialog_page.h"

#include <functional>
#include <optional>

namespace pictara {
enum class RunEnd {
    Finished,    ///< the dialog ended the run by itself
    Cancelled,   ///< the run stands still, after a failed step or before any; the driver cancelled it
    Interrupted, ///< the user wants the program to end; the driver cancelled the run
    TimedOut,    ///< the next tick would go beyond the bound on frames; the driver cancelled the run
};

/// Where a run stands, for whoever shows its progress.
struct RunProgress {
    int frames = 0;
    QStringList statusTexts; ///< of all steps, in the order of kSteps
};

struct RunResult {
    RunEnd end = RunEnd::Finished;
    RunProgress last; ///< as the run left the dialog
};

/// Drives the dialog as a person would who watches the picture: frames are delivered, and after every few of
/// them the page ticks. It obeys no clock, so that equal runs are equal frame by frame.
class RunDriver {
public:
    /// `deliverFrame` hands the next frame to the plug-in.
    RunDriver(DialogPage const& page, std::function<void()> deliverFrame, int framesPerTick = 3,
              int maxFrames = 2000);

    /// Called after each tick, the second so that a person does what the page asks for.
    std::function<void(RunProgress const&)> onProgress = [](RunProgress const&) {};
    std::function<void()> onRequests = [] {};
    /// Called before the dialog saves to the EEPROM, which takes its time and shows nothing meanwhile.
    std::function<void()> onSaving = [] {};

    /// Presses Run All and sees it through.
    RunResult runAll();
    /// Presses the steps of exposure and colour balance, as a person does who changed the light; what cannot
    /// be pressed is passed over. Frames are counted on. False when a step does not end.
    bool adjustToLight();
    /// Delivers frames until the uniformity step shows a figure; nothing when it does not within its bound.
    std::optional<double> awaitUniformity();

private:
    void advanceOneTick();
    [[nodiscard]] RunEnd watch(std::function<bool()> const& isWorking);

    DialogPage m_page;
    std::function<void()> m_deliverFrame;
    int m_framesPerTick;
    int m_maxFrames;
    RunProgress m_progress;
};

/// True when every step up to the uniformity shows that it is done.
[[nodiscard]] bool isCalibrated(QStringList const& statusTexts);

/// True when both saves show that they are done; without an EEPROM the last one shows that there is none.
[[nodiscard]] bool isSaved(QStringList const& statusTexts, bool hasEeprom);
} // namespace pictara
