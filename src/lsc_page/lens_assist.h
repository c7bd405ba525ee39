#pragma once

#include "calibration/calibration_page.h"

/// The lens-shading page: one calibration from one flat-field picture.
class LensAssist : public kestra::CalibrationPage {
    Q_OBJECT

public:
    /// Copies both records. The bullets stay the wizard's; without a wizard there are none.
    LensAssist(QWidget* parent, SensorRecord const& sensor, HostServices const& services, Wizard* wizard,
               kestra::EepromSlot& eepromSlot);
};
