#pragma once

#include "calibration/view.h"
#include "wizard/page_surface.h"

#include <QComboBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QString>
#include <QTimer>

namespace kestra {

/// A step's widgets: its status text, the bar that takes the text's place while the step runs, and its
/// bullet.
struct StepWidgets {
    QPointer<QLabel> status;
    QPointer<QProgressBar> bar; ///< null for a step without one
    QPointer<QLabel> bullet;
    std::optional<Bullet> shownBullet;
};

/// The widgets that both calibration pages have.
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

    [[nodiscard]] QString falloffText() const;
    [[nodiscard]] QString uniformityLimitText() const;
    [[nodiscard]] QString saveDirText() const;
    [[nodiscard]] QString eepromLabelText() const;
    [[nodiscard]] bool isEnableLcChecked() const;

    void fillFalloff();
    void fillEepromLabel(QString const& only);
    /// Selects the item with exactly that text, or none.
    void selectFalloff(QString const& text);
    void showUniformityLimit(QString const& text);
    void showSaveDir(QString const& path);
    void showLensCorrection(bool on);
    void showRunAll(bool running);

    void apply(Enabling const& enabling);
    void show(StepWidgets& step, StepStatus const& status);
    void showBullet(StepWidgets& step, Bullet bullet);
    /// Paints what a step shows, before a call that may take long.
    static void paintAtOnce(StepWidgets const& step);
    /// Puts the bar of one step in the place of its text, and gives the step before its text back; null for
    /// none.
    void swapIn(StepWidgets const* step);

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

private:
    QPointer<QLabel> m_swappedLabel;     // the status text that a progress bar covers now
    QPointer<QProgressBar> m_swappedBar; // and that bar
};

} // namespace kestra
