#pragma once

#include "common/host.h"
#include "hoststate/lens_correction.h"

/// Puts the host's colour pipeline into the raw state used for measuring, with the automatic exposure on or
/// off, and switches the sensor's lens correction off. Optionally sets both relative colour gains to unity.
void setRawPipeline(Host const& host, Sensor const& sensor, LensCorrection const& correction,
                    bool autoExposure, bool resetWhiteBalanceGains);

/// Puts the host's colour pipeline into the processed view in which a finished calibration is verified,
/// applies the preset "Lens Calibration Verify" and switches the sensor's lens correction on.
void setVerifyPipeline(Host const& host, Sensor const& sensor, LensCorrection const& correction);
