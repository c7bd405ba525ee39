#include "calibration/page_widgets.h"

#include "common/numbers.h"

#include <QCoreApplication>

namespace kestra {
namespace {
constexpr int kFalloffChoices[] = {110, 105, 100, 95, 90, 85, 80, 75}; // per cent
} // namespace

int32_t PageWidgets::falloff() const {
    QString const text = FallOff ? FallOff->currentText() : QString();
    return text.chopped(std::min<int>(1, text.size())).toInt();
}

void PageWidgets::fillFalloff() {
    if (!FallOff)
        return;
    FallOff->clear();
    for (int const percent : kFalloffChoices)
        FallOff->addItem(QStringLiteral("%1%").arg(percent), percent);
}

void PageWidgets::fillEepromLabel(QString const& only) {
    if (!Prom_Label)
        return;
    Prom_Label->clear();
    Prom_Label->addItem(only);
    Prom_Label->setWindowIconText(only);
}

void PageWidgets::selectFalloff(QString const& text) {
    if (FallOff)
        FallOff->setCurrentIndex(FallOff->findText(text, Qt::MatchExactly | Qt::MatchCaseSensitive));
}

void PageWidgets::showLensCorrection(bool on) {
    if (!Enable_LC)
        return;
    Enable_LC->setChecked(on);
    Enable_LC->setText(on ? QCoreApplication::translate("LensAssist", "Disable LC")
                          : QCoreApplication::translate("LensAssist", "Enable LC"));
}

double PageWidgets::temperature(size_t illuminant) const {
    QLineEdit const* const field = captures[illuminant].temperature;
    return field ? leadingDecimal(field->text().toLocal8Bit()) : 0;
}

void PageWidgets::show(PageView const& view) {
    show(setup, view.setup);
    show(exposure, view.exposure);
    show(colourBalance, view.colourBalance);
    show(calibration, view.calibration);
    show(uniformity, view.uniformity);
    show(file, view.file);
    show(eeprom, view.eeprom);
    for (size_t i = 0; i < kIlluminants; ++i)
        show(captures[i].step, view.captures[i]);
    show(view.enabling);
    set(Run_All, view.runAll);
}

void PageWidgets::show(StepWidgets& step, StepStatus const& status) {
    set(step.status, status.text);
    if (step.bar && status.progress)
        step.bar->setValue(*status.progress);
    if (step.bar && step.status) {
        step.bar->setVisible(status.showsBar);
        step.status->setVisible(!status.showsBar);
    }
    // A bullet that stands already is not painted again: this runs at every tick.
    if (step.bullet && step.shownBullet != status.bullet) {
        paintBullet(step.bullet, status.bullet);
        step.shownBullet = status.bullet;
    }
}

void PageWidgets::show(Enabling const& enabling) {
    enable(Run_All, enabling.runAll);
    enable(LensCalibSetup, enabling.setup);
    for (QWidget* const widget :
         std::initializer_list<QWidget*>{AE, AWB, Calibrate, ColorUniformity, Save_Dir, Browse})
        enable(widget, enabling.adjust);
    for (QWidget* const widget : std::initializer_list<QWidget*>{FallOff, AllowFallOff, Prom_Label, label})
        enable(widget, enabling.parameters);
    enable(File_Save, enabling.fileSave);
    enable(Prom_Save, enabling.eepromSave);
    enable(eeprom.status, enabling.eepromSaveStatus);
    for (QWidget* const widget :
         std::initializer_list<QWidget*>{Start_Over, Show_Graph, setup.status, exposure.status,
                                         colourBalance.status, calibration.status, file.status})
        enable(widget, true);
    for (CaptureWidgets const& capture : captures)
        enable(capture.button, enabling.capture);
}

void PageWidgets::paintAtOnce(StepWidgets const& step) {
    PageSurface::paintAtOnce({step.status.data(), step.bar.data(), step.bullet.data()});
}
} // namespace kestra
