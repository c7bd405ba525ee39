#pragma once

#include "calibration/calibration_page.h"
#include "tests/support/page_under_test.h"

#include <map>
#include <string>
#include <vector>

namespace kestra {
/// What a page of the contract suite is made by, and which sensor it is for.
struct PageCase {
    char const* name;
    uint32_t sensorKind;
    CalibrationPage* (*make)(SensorRecord const&, HostServices const&, Wizard*, EepromSlot&);
    /// Integer settings that the page has besides those of both, with their defaults.
    std::vector<std::pair<std::string, int>> ownSettings;
    /// Its capture buttons' names without "_Image".
    std::vector<char const*> captureRows;
};

/// A calibration page whose sensor can correct and whose headboard has no EEPROM, in May 2024.
class PageFixture : public PageUnderTest<CalibrationPage> {
protected:
    explicit PageFixture(PageCase const& pageCase);
    ~PageFixture() override;

    /// Makes the page, lets it initialise and shows it as its tab does. The log then starts anew.
    void open();
    void remake();
    [[nodiscard]] PageState const& state() const { return page->state(); }
    /// Presses the capture buttons of rows that wait for the user; `all`: of every row.
    void capture(bool all = false);
    void tick(int count = 1);
    /// Delivers RGB-32 frames of one grey, `type` other than 11 delivers raw ones.
    void frames(int count, uint32_t type = 11, uint32_t pixel = 0x808080);
    /// Frames of both kinds and a tick, so often.
    void play(int rounds);
    /// The log without reads of settings and states.
    [[nodiscard]] std::vector<std::string> changes() const;

    /// What a fresh reader of the device finds; every type is counted under its number.
    [[nodiscard]] std::map<uint8_t, int> recordsOnDevice() const;

    PageCase const m_case;
};
} // namespace kestra
