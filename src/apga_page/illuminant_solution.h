#pragma once

#include "calibration/page_widgets.h"
#include "common/host.h"
#include "common/sensor.h"

namespace kestra {

/// Which of the library's two calculations a sensor needs. Neither, when neither is set.
struct PgaMode {
    uint8_t autoPgaMode = 0; ///< looked at first
    uint8_t adaptivePgaMode = 0;
};

/// Colour temperature of each illuminant, kelvin, as the page shows it.
using IlluminantTemperatures = std::array<int32_t, kIlluminants>;

/// What the calculation works on; a page that goes away silences it.
struct CalculationInput {
    Host const& host;
    Sensor const& camera;
    PageState& state;
    PageWidgets const& widgets;
};

/// Has the library compute the tables of the three illuminants from the captured frames, for the adaptive
/// mode on a base solution from the fluorescent one. Works while the calibration step is in progress: a
/// frame that is refused or a solution that fails sets its failure state, and nothing more is asked.
void findIlluminantSolution(CalculationInput const& input, PgaMode mode,
                            IlluminantTemperatures const& temperatures);

} // namespace kestra
