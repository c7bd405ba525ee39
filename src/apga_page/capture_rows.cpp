#include "apga_page/capture_rows.h"

#include "common/numbers.h"

#include <QCoreApplication>
#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

namespace kestra {

namespace {

// Zeros for `elements` samples, with the frame's bytes at the start; null when there is no memory.
CapturedSamples copyOf(Frame const& frame, int64_t bytes, size_t elements) {
    try {
        auto samples = std::make_shared<std::vector<uint16_t>>(elements);
        std::memcpy(samples->data(), frame.data, size_t(bytes));
        return samples;
    } catch (std::bad_alloc const&) {
        return nullptr;
    } catch (std::length_error const&) {
        return nullptr;
    }
}

QString translated(char const* text) {
    return QCoreApplication::translate("LensAssistApga", text);
}

QString statusText(CaptureState captureState) {
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

Bullet bulletOf(CaptureState captureState) {
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

CaptureRow* CapturedFrames::capturing() {
    auto const row = std::ranges::find(m_rows, kCapturing, &CaptureRow::state);
    return row == m_rows.end() ? nullptr : &*row;
}

bool CapturedFrames::haveAllFrames() const {
    return std::ranges::all_of(m_rows, [](CaptureRow const& row) { return row.samples != nullptr; });
}

void CapturedFrames::capture(CaptureRow& row, Frame const& frame, size_t imagePixels) {
    int64_t const bytes = int64_t{frame.height} * frame.pitch;
    if (!frame.data || frame.height <= 0 ||
        bytes <= 0) // two negatives would tell a size, but not where it begins
        return;
    if (m_frameBytes < bytes) {
        for (CaptureRow& each : m_rows)
            each.samples = nullptr;
        m_frameBytes = bytes;
    }
    // The size is told in bytes and taken as a number of 16-bit samples, so half of a buffer is room.
    row.samples = copyOf(frame, bytes, std::max(size_t(m_frameBytes), imagePixels));
    if (!row.samples) {
        row.state = kCaptureFailed;
        return;
    }
    row.width = frame.width;
    row.height = frame.height;
    row.progress = 100;
    row.state = kCaptured;
}

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

} // namespace kestra
