#pragma once

#include "apga_page/lens_assist_apga.h"
#include "lsc_page/lens_assist.h"
#include "tests/calibration/page_fixture.h"

namespace kestra {
template <uint8_t kAutoPga>
CalibrationPage* makeApgaPage(SensorRecord const& sensor, HostServices const& services, Wizard* wizard,
                              EepromSlot& eepromSlot) {
    auto* const page = new LensAssistApga(nullptr, sensor, services, wizard, eepromSlot);
    page->setMode({.autoPgaMode = kAutoPga, .adaptivePgaMode = !kAutoPga});
    return page;
}

/// The pages that the contract suites run against.
inline PageCase const kLensAssistPage = {"LensAssist",
                                         200,
                                         [](SensorRecord const& sensor, HostServices const& services,
                                            Wizard* wizard, EepromSlot& eepromSlot) -> CalibrationPage* {
                                             return new LensAssist(nullptr, sensor, services, wizard,
                                                                   eepromSlot);
                                         },
                                         {},
                                         {}};
inline PageCase const kAdaptivePage = {
    "LensAssistApga",
    72,
    makeApgaPage<0>,
    {{"LensAssist Left Temp", 2800}, {"LensAssist Middle Temp", 4000}, {"LensAssist Right Temp", 6500}},
    {"Incandescent", "Fluorescent", "Daylight"}};
inline PageCase const kAutomaticPage = {"LensAssistAutoPga", 68, makeApgaPage<1>, kAdaptivePage.ownSettings,
                                        kAdaptivePage.captureRows};
inline PageCase const kPages[] = {kLensAssistPage, kAdaptivePage};
} // namespace kestra
