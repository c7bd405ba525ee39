#include "calibration/page_widgets.h"

#include <QCoreApplication>

namespace kestra {

namespace {

constexpr int kFalloffChoices[] = {110, 105, 100, 95, 90, 85, 80, 75}; // per cent

QString textOf(QLineEdit const* edit) {
    return edit ? edit->text() : QString();
}
QString textOf(QComboBox const* combo) {
    return combo ? combo->currentText() : QString();
}

} // namespace

QString PageWidgets::falloffText() const {
    return textOf(FallOff);
}
QString PageWidgets::uniformityLimitText() const {
    return textOf(GoodCU);
}
QString PageWidgets::saveDirText() const {
    return textOf(Save_Dir);
}
QString PageWidgets::eepromLabelText() const {
    return textOf(Prom_Label);
}
bool PageWidgets::isEnableLcChecked() const {
    return Enable_LC && Enable_LC->isChecked();
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

void PageWidgets::showUniformityLimit(QString const& text) {
    if (GoodCU)
        GoodCU->setText(text);
}

void PageWidgets::showSaveDir(QString const& path) {
    if (Save_Dir)
        Save_Dir->setText(path);
}

void PageWidgets::showLensCorrection(bool on) {
    if (!Enable_LC)
        return;
    Enable_LC->setChecked(on);
    Enable_LC->setText(on ? QCoreApplication::translate("LensAssist", "Disable LC")
                          : QCoreApplication::translate("LensAssist", "Enable LC"));
}

void PageWidgets::showRunAll(bool running) {
    if (Run_All)
        Run_All->setText(running ? QCoreApplication::translate("LensAssist", "Cancel Run All")
                                 : QCoreApplication::translate("LensAssist", "Run All Steps"));
}

void PageWidgets::apply(Enabling const& enabling) {
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
}

void PageWidgets::show(StepWidgets& step, StepStatus const& status) {
    if (step.status)
        step.status->setText(status.text);
    if (step.bar && status.progress)
        step.bar->setValue(*status.progress);
    showBullet(step, status.bullet);
}

void PageWidgets::showBullet(StepWidgets& step, Bullet bullet) {
    // A bullet that stands already is not painted again: this runs at every tick.
    if (!step.bullet || step.shownBullet == bullet)
        return;
    paintBullet(step.bullet, bullet);
    step.shownBullet = bullet;
}

void PageWidgets::paintAtOnce(StepWidgets const& step) {
    PageSurface::paintAtOnce({step.status.data(), step.bar.data(), step.bullet.data()});
}

void PageWidgets::swapIn(StepWidgets const* step) {
    QProgressBar* const bar = step ? step->bar.data() : nullptr;
    if (bar == m_swappedBar)
        return;
    if (m_swappedBar)
        m_swappedBar->hide();
    if (m_swappedLabel)
        m_swappedLabel->show();
    m_swappedLabel = bar ? step->status : nullptr;
    m_swappedBar = bar;
    if (m_swappedLabel)
        m_swappedLabel->hide();
    if (m_swappedBar)
        m_swappedBar->show();
}

} // namespace kestra
