#pragma once

#include "simulator/host/session/dialog_page.h"

#include <QMap>
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
    RunDriver(DialogPage const& page, std::function<void()> deliverFrame)
        : m_page(page), m_deliverFrame(std::move(deliverFrame)) {}

    /// Presses Run All and sees it through.
    RunResult runAll();
    /// Sees a Run All through that works already, unless it waits for a person.
    void finish() {
        (void)watch([this] { return m_page.isRunning(); });
    }
    /// Presses the steps of exposure and colour balance, as a person does who changed the light; what cannot
    /// be pressed is passed over. Frames are counted on. False when a step does not end.
    bool adjustToLight();
    /// Delivers frames until the uniformity step shows a figure; nothing when it does not within its bound.
    std::optional<double> awaitUniformity();

    /// Called after each tick.
    std::function<void(RunProgress const&)> onProgress = [](RunProgress const&) {};
    /// Called after each tick, so that a person does what the page asks for.
    std::function<void()> onRequests = [] {};
    /// Called before the dialog saves to the EEPROM, which takes its time and shows nothing meanwhile.
    std::function<void()> onSaving = [] {};

private:
    void advanceOneTick();
    [[nodiscard]] RunEnd watch(std::function<bool()> const& isWorking);

    DialogPage m_page;
    std::function<void()> m_deliverFrame;
    RunProgress m_progress;
};

/// Shows on the standard output how a run gets on: a line whenever a step begins or ends, named as the dialog
/// names it.
class ProgressReport {
public:
    explicit ProgressReport(DialogPage const& page) : m_page(page) {}

    void show(RunProgress const& progress);
    /// A line of its own.
    static void say(QString const& text);

private:
    DialogPage m_page;
    QMap<int, QString> m_shown; ///< of each step
};

/// The step, or the picture to be taken, works.
[[nodiscard]] bool isInProgress(QString const& status);

/// True when every step up to the uniformity shows that it is done.
[[nodiscard]] bool isCalibrated(QStringList const& statusTexts);

/// True when both saves show that they are done; without an EEPROM the last one shows that there is none.
[[nodiscard]] bool isSaved(QStringList const& statusTexts, bool hasEeprom);

/// What a row says that takes a picture under a light of its own.
struct CaptureRow {
    char const* name; ///< its button's object name
    QString button;   ///< its text
    double kelvin;    ///< colour temperature that the row is for; 0 when it tells none
    QString status;
};

/// The rows in the order in which the page takes them; empty on a page that calibrates under one light.
[[nodiscard]] std::vector<CaptureRow> captureRows(DialogPage const& page);

/// Does what a row that waits asks for: brings its light before the camera and presses its button. A light is
/// not changed while another row still takes its picture.
void serveCaptureRows(DialogPage& page, std::function<void(CaptureRow const&)> const& bringLight);
} // namespace pictara
