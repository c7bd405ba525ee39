#pragma once

#include "simulator/host/session/command_line.h"

#include <QPointer>
#include <QWidget>

class QDialog;

namespace pictara {
class Session;

/// A calibration step as the dialog shows it: its status label and the button that stands for it.
struct StepWidgets {
    char const* status;
    char const* button;
    char const* label; ///< as people know it
};

/// Indexes into kSteps.
enum Step : int { kSetup, kExposure, kColourBalance, kCalibration, kUniformity, kFileSave, kEepromSave };

inline constexpr StepWidgets kSteps[] = {
    {"SETUP_Status", "LensCalibSetup", "LSC Setup"},
    {"AE_Status", "AE", "Adjust Exposure"},
    {"AWB_Status", "AWB", "Adjust Color Balance"},
    {"Calibrate_Status", "Calibrate", "Calibrate"},
    {"CU_Status", "ColorUniformity", "Test Color Uniformity"},
    {"File_Save_Status", "File_Save", "Save to File"},
    {"Prom_Save_Status", "Prom_Save", "Save to EEPROM"},
};

/// The calibration page as a person sees it: texts are read and controls are worked by their object names.
/// A widget that is missing has an empty text and cannot be worked.
class DialogPage {
public:
    /// The widget inside of `dialog` that holds the Run All button; empty when there is none.
    [[nodiscard]] static DialogPage find(QWidget* dialog);
    [[nodiscard]] explicit operator bool() const { return !m_page.isNull(); }

    [[nodiscard]] bool has(char const* widget) const;
    /// Text of a label, line edit, combo box or button.
    [[nodiscard]] QString text(char const* name) const;
    /// Version and build date of the plug-in, as the page tells them.
    [[nodiscard]] QString version() const;
    /// The texts of all steps, in the order of kSteps.
    [[nodiscard]] QStringList statusTexts() const;
    /// The colour of a bullet: "red", "yellow", "green" or "blue", "gray" for a pale one; empty without any.
    [[nodiscard]] QString colour(char const* bullet) const;
    [[nodiscard]] bool isChecked(char const* button) const;
    [[nodiscard]] bool isEnabled(char const* widget) const;
    /// Clicks a button; false when it cannot be clicked now.
    bool press(char const* button);
    /// Types into a line edit, chooses the entry of that text in a combo box (or types it where there is none
    /// and it takes text), or switches a box "on" or "off". False when that cannot be done now.
    bool set(char const* widget, QString const& text);
    /// Sets the folder for the dialog's results, and the limit that the options tell.
    void prepare(Session const& session);
    [[nodiscard]] QStringList choices(char const* comboBox) const;

    /// Keeps the page's own timer from ticking, so that only `tick()` does.
    void stopTimer();
    void resumeTimer();
    /// The page's own tick; its timer rests from then on.
    void tick();

    /// True while Run All works.
    [[nodiscard]] bool isRunning() const;

private:
    template <typename Widget>
    [[nodiscard]] Widget* widget(char const* name) const;

    QPointer<QWidget> m_page;
};

/// The plug-in's dialog in a run without a person; the page's own timer rests.
struct HeadlessDialog {
    /// Makes the dialog, which stays the plug-in's. False with a message.
    [[nodiscard]] bool make(Session& session, QString* error);
    [[nodiscard]] bool show(QString* error);

    QDialog* dialog = nullptr;
    DialogPage page = {};
};

/// Makes and shows the dialog, with the session's folder for its results. Complains and returns another exit
/// code than kExitDone when that is not to be had.
[[nodiscard]] ExitCode openHeadless(Session& session, HeadlessDialog& opened);
} // namespace pictara
