#include "apga_page/capture_display.h"

#include "common/numbers.h"

#include <QCoreApplication>

namespace {

QString translated(char const* text) {
    return QCoreApplication::translate("LensAssistApga", text);
}

QString statusText(uint32_t captureState) {
    switch (captureState) {
    case kWaiting:
        return translated(QT_TRANSLATE_NOOP("LensAssistApga", "Waiting for you..."));
    case kCapturing:
        return translated(QT_TRANSLATE_NOOP("LensAssistApga", "In progress..."));
    case kCaptured:
        return translated(QT_TRANSLATE_NOOP("LensAssistApga", "Done."));
    case kIncompatibleSize:
        return translated(QT_TRANSLATE_NOOP("LensAssistApga", "Error: Incompatible image size."));
    case kCaptureFailed:
        return translated(QT_TRANSLATE_NOOP("LensAssistApga", "Error."));
    default:
        return translated(QT_TRANSLATE_NOOP("LensAssistApga", "Not done yet."));
    }
}

Bullet bulletOf(uint32_t captureState) {
    switch (captureState) {
    case kCapturing:
        return Bullet::Blue;
    case kCaptured:
        return Bullet::Green;
    case kIncompatibleSize:
    case kCaptureFailed:
        return Bullet::Red;
    default:
        return Bullet::Gray;
    }
}

} // namespace

void CaptureDisplay::show(CapturedFrames const& captured, Wizard const* wizard) {
    for (size_t i = 0; i < kIlluminants; ++i) {
        if (m_rows[i].status)
            m_rows[i].status->setText(statusText(captured[i].state));
        if (captured[i].state != kWaiting)
            showBullet(m_rows[i], bulletOf(captured[i].state), wizard);
    }
}

void CaptureDisplay::enable(PageState const& state) {
    bool const adjusting = state.aeStepState == kInProgress || state.wbStepState == kInProgress;
    for (Row const& row : m_rows)
        if (row.button)
            row.button->setEnabled(!adjusting);
}

void CaptureDisplay::blink(size_t illuminant, Wizard const* wizard) {
    ++m_blinks;
    showBullet(m_rows[illuminant], m_blinks & 1 ? Bullet::Blue : Bullet::Gray, wizard);
}

double CaptureDisplay::temperature(size_t illuminant) const {
    QLineEdit const* const edit = m_rows[illuminant].temperature;
    return edit ? leadingDecimal(edit->text().toLocal8Bit()) : 0;
}

void CaptureDisplay::showTemperature(size_t illuminant, int32_t kelvin) {
    if (m_rows[illuminant].temperature)
        m_rows[illuminant].temperature->setText(QString::number(kelvin));
}

void CaptureDisplay::showBullet(Row& row, Bullet bullet, Wizard const* wizard) {
    if (!row.bullet || row.shownBullet == bullet)
        return;
    row.bullet->setPixmap(bulletPixmap(wizard, bullet));
    row.shownBullet = bullet;
}
