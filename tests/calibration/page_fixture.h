#pragma once

#include "apga_page/lens_assist_apga.h"
#include "lsc_page/lens_assist.h"
#include "tests/support/page_under_test.h"

#include <map>
#include <string>
#include <vector>

namespace kestra {
/// A page, and a sensor kind that it is for.
struct PageCase {
    char const* name;
    uint32_t sensorKind;
    std::vector<char const*> captureRows; ///< its capture buttons' names without "_Image"
    PgaMode mode;                         ///< of a page with capture rows

    [[nodiscard]] bool takesThreePictures() const { return !captureRows.empty(); }
};
inline PageCase const kLensAssistPage = {"LensAssist", 200, {}, {}};
inline PageCase const kAdaptivePage = {
    "LensAssistApga", 72, {"Incandescent", "Fluorescent", "Daylight"}, {.adaptivePgaMode = 1}};
inline PageCase const kAutomaticPage = {
    "LensAssistAutoPga", 68, kAdaptivePage.captureRows, {.autoPgaMode = 1}};

/// A calibration page whose sensor can correct and whose headboard has no EEPROM, in May 2024.
class PageFixture : public PageUnderTest<CalibrationPage> {
protected:
    explicit PageFixture(PageCase const& pageCase);
    ~PageFixture() override;

    /// Makes the page, lets it initialise and shows it as its tab does. The log then starts anew.
    void open();
    void remake();
    [[nodiscard]] PageState const& state() const { return page->state(); }
    void invoke(char const* slot) { QMetaObject::invokeMethod(page, slot); }
    void enter(char const* field, std::string const& text);
    void chooseLabel(char const* label);
    /// Presses the capture buttons of rows that wait for the user; `all`: of every row.
    void capture(bool all = false);
    /// Takes the pictures that the page needs, and presses Calibrate.
    void startCalibration();
    void tick(int count = 1);
    /// Delivers RGB-32 frames of one grey, `type` other than 11 delivers raw ones.
    void frames(int count, uint32_t type = 11, uint32_t pixel = 0x808080);
    /// Frames of both kinds and a tick, so often.
    void play(int rounds);
    /// The log without reads of settings and states.
    [[nodiscard]] Calls changes() const;
    /// What a fresh reader of the device finds; every type is counted under its number.
    [[nodiscard]] std::map<uint8_t, int> recordsOnDevice() const;

    PageCase const m_case;
};

/// What holds for each of the pages.
class EachPage : public PageFixture, public ::testing::WithParamInterface<PageCase> {
protected:
    EachPage() : PageFixture(GetParam()) {}
};
inline PageCase const kPages[] = {kLensAssistPage, kAdaptivePage};
inline std::string nameOf(::testing::TestParamInfo<PageCase> const& info) { return info.param.name; }
} // namespace kestra
