#pragma once

#include "lsc_page/lens_assist.h"
#include "tests/calibration/page_fixture.h"

/// The pages that the contract suites run against.
inline PageCase const kLensAssistPage = {"LensAssist", 200,
                                         [](SensorRecord const& sensor, HostServices const& services,
                                            Wizard* wizard, EepromSlot& eepromSlot) -> CalibrationPage* {
                                             return new LensAssist(nullptr, sensor, services, wizard,
                                                                   eepromSlot);
                                         }};
inline PageCase const kPages[] = {kLensAssistPage};
