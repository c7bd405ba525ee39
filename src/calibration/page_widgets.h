#pragma once

#include "calibration/view.h"
#include "wizard/page_surface.h"

#include <QComboBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QString>
#include <QTimer>
#include <algorithm>

namespace kestra {
/// A step's widgets: its status text, the bar that takes the text's place while the step runs, and its
/// bullet.
struct StepWidgets {
    QPointer<QLabel> status;
    QPointer<QProgressBar> bar; ///< null for a step without one
    QPointer<QLabel> bullet;
    std::optional<Bullet> shownBullet;
};

/// The widgets of a picture under one light.
struct CaptureWidgets {
    QPointer<QPushButton> button;
    QPointer<QLineEdit> temperature;
    StepWidgets step;
};

/// The widgets of a calibration page. The page that takes one picture has no rows for captures.
class PageWidgets : public PageSurface {
public:
    /// Takes the widgets from a page's generated form, which knows them by the same names on both pages.
    template <typename Form>
    void bind(QDialog* pageDialog, Form const& form, Wizard* bulletOwner) {
        page = pageDialog;
        wizard = bulletOwner;
        Run_All = form.Run_All;
        Start_Over = form.Start_Over;
        LensCalibSetup = form.LensCalibSetup;
        Show_Graph = form.Show_Graph;
        AE = form.AE;
        AWB = form.AWB;
        AllowFallOff = form.AllowFallOff;
        FallOff = form.FallOff;
        GoodCU = form.GoodCU;
        Enable_LC = form.Enable_LC;
        Calibrate = form.Calibrate;
        ColorUniformity = form.ColorUniformity;
        Browse = form.Browse;
        Save_Dir = form.Save_Dir;
        File_Save = form.File_Save;
        Prom_Save = form.Prom_Save;
        label = form.label;
        Prom_Label = form.Prom_Label;
        setup = {form.SETUP_Status, nullptr, form.Setup_Bullet, {}};
        exposure = {form.AE_Status, form.AE_progressBar, form.AE_Bullet, {}};
        colourBalance = {form.AWB_Status, form.AWB_progressBar, form.AWB_Bullet, {}};
        calibration = {form.Calibrate_Status, form.Calib_progressBar, form.Calibrate_Bullet, {}};
        uniformity = {form.CU_Status, nullptr, form.CU_Bullet, {}};
        file = {form.File_Save_Status, nullptr, form.FileSave_Bullet, {}};
        eeprom = {form.Prom_Save_Status, nullptr, form.PromSave_Bullet, {}};
    }
    template <typename Form>
    void bindCaptures(Form const& form) {
        captures = {CaptureWidgets{form.Incandescent_Image,
                                   form.Incandescent_Temp,
                                   {form.Incandescent_Status, nullptr, form.Incandescent_Bullet, {}}},
                    CaptureWidgets{form.Fluorescent_Image,
                                   form.Fluorescent_Temp,
                                   {form.Fluorescent_Status, nullptr, form.Fluorescent_Bullet, {}}},
                    CaptureWidgets{form.Daylight_Image,
                                   form.Daylight_Temp,
                                   {form.Daylight_Status, nullptr, form.Daylight_Bullet, {}}}};
    }

    // What the user has entered; empty, false and 0 without widgets.
    /// Per cent: the text without its last character, the sign; 0 when it is no number.
    [[nodiscard]] int32_t falloff() const;
    /// The same within the limits that the host and the settings store are given.
    [[nodiscard]] int32_t clampedFalloff() const { return std::clamp(falloff(), 50, 125); }
    [[nodiscard]] QString uniformityLimitText() const { return GoodCU ? GoodCU->text() : QString(); }
    [[nodiscard]] QString saveDirText() const { return Save_Dir ? Save_Dir->text() : QString(); }
    [[nodiscard]] QString eepromLabelText() const {
        return Prom_Label ? Prom_Label->currentText() : QString();
    }
    [[nodiscard]] bool isEnableLcChecked() const { return Enable_LC && Enable_LC->isChecked(); }
    /// The colour temperature that a capture's text begins with, kelvin, with its fraction; 0 without a
    /// number.
    [[nodiscard]] double temperature(size_t illuminant) const;

    void fillFalloff();
    void fillEepromLabel(QString const& only);
    /// Selects the item with exactly that text, or none.
    void selectFalloff(QString const& text);
    void showUniformityLimit(QString const& text) { set(GoodCU, text); }
    void showSaveDir(QString const& path) { set(Save_Dir, path); }
    void showTemperature(size_t illuminant, int32_t kelvin) {
        set(captures[illuminant].temperature, QString::number(kelvin));
    }
    void showLensCorrection(bool on);

    void show(PageView const& view);
    /// Paints what a step shows, before a call that may take long.
    static void paintAtOnce(StepWidgets const& step);

    QPointer<QTimer> timer; ///< owned by the page; null once the page was closed

    QPointer<QPushButton> Run_All, Start_Over, LensCalibSetup, Show_Graph, AE, AWB;
    QPointer<QLabel> AllowFallOff;
    QPointer<QComboBox> FallOff;
    QPointer<QLineEdit> GoodCU;
    QPointer<QPushButton> Enable_LC, Calibrate, ColorUniformity, Browse;
    QPointer<QLineEdit> Save_Dir;
    QPointer<QPushButton> File_Save, Prom_Save;
    QPointer<QLabel> label;
    QPointer<QComboBox> Prom_Label;
    StepWidgets setup, exposure, colourBalance, calibration, uniformity, file, eeprom;
    std::array<CaptureWidgets, kIlluminants> captures;

private:
    void show(StepWidgets& step, StepStatus const& status);
    void show(Enabling const& enabling);
};
} // namespace kestra
