#pragma once

#include "calibration/calibration_page.h"

namespace kestra {
class LensAssistApgaFlow;

/// Which of the library's two calculations a sensor needs. Neither, when neither is set.
struct PgaMode {
    uint8_t autoPgaMode{}; ///< looked at first
    uint8_t adaptivePgaMode{};
};
} // namespace kestra

/// The three-illuminant page: one calibration from three flat-field pictures, one under each light, for
/// sensors that blend a table of each by colour temperature.
class LensAssistApga : public kestra::CalibrationPage {
    Q_OBJECT

public:
    /// Copies both records. The bullets stay the wizard's; without a wizard there are none.
    LensAssistApga(QWidget* parent, SensorRecord const& sensor, HostServices const& services, Wizard* wizard,
                   kestra::EepromSlot& eepromSlot);

    /// Which calculation the sensor needs; set before `initialise`.
    void setMode(kestra::PgaMode mode);
    [[nodiscard]] kestra::CapturedFrames const& captured() const { return state().captured; }

public slots:
    void OnBnClickedIncandescent_Image() { capture(kestra::kIncandescent); }
    void OnBnClickedFluorescent_Image() { capture(kestra::kFluorescent); }
    void OnBnClickedDaylight_Image() { capture(kestra::kDaylight); }

private:
    [[nodiscard]] kestra::LensAssistApgaFlow& flow() const;
    void capture(kestra::Illuminant illuminant);
};
