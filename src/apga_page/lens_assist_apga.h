#pragma once

#include "apga_page/illuminant_solution.h"
#include "calibration/calibration_page.h"

namespace kestra {
class LensAssistApgaFlow;
}

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
    [[nodiscard]] kestra::CapturedFrames const& captured() const;

public slots:
    void OnBnClickedIncandescent_Image();
    void OnBnClickedFluorescent_Image();
    void OnBnClickedDaylight_Image();

private:
    LensAssistApga(QWidget* parent, std::shared_ptr<kestra::LensAssistApgaFlow> flow, Wizard* wizard);

    void capture(kestra::Illuminant illuminant);

    std::shared_ptr<kestra::LensAssistApgaFlow> const m_flow;
};
