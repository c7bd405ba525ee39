#pragma once

#include "common/shadefit.h"
#include "tests/camera/camera_under_test.h"

#include <ostream>
#include <vector>

/// A sensor with a table for each of three illuminants.
struct AdaptiveSensor {
    char const* profile;
    bool isAutomatic; ///< its tables are the whole correction; else they correct what a base leaves
};

inline void PrintTo(AdaptiveSensor const& sensor, std::ostream* out) {
    *out << sensor.profile;
}
inline constexpr AdaptiveSensor kAdaptiveSensors[] = {{"kind68-1", true},  {"kind68-2", true},
                                                      {"kind72-1", false}, {"kind72-2", false},
                                                      {"kind76-1", false}, {"kind76-2", true}};

/// The lamps that a calibration takes its frames under, by the slot of the table that it makes of them.
struct Lamp {
    uint32_t slot;
    double kelvin;
};
inline constexpr Lamp kIncandescent{2, 2800};
inline constexpr Lamp kFluorescent{3, 4000};
inline constexpr Lamp kDaylight{4, 6500};
inline constexpr double kBetweenLamps = 4900;

/// Changes the lamp and exposes so that the brightest colour reaches half of the range in the middle.
void lightAndExpose(simulator::SimulatedCamera& camera, double kelvin);

/// Takes the three frames and has the library solve them in the calibration page's order and with its
/// parameters. Fails the test when a step fails.
[[nodiscard]] std::vector<sf_RegEntry> solveThreeIlluminants(simulator::SimulatedCamera& camera,
                                                             bool isAutomatic);

/// Writes a list as a host does, by address in the sensor's own address space.
void load(simulator::SimulatedCamera const& camera, std::vector<sf_RegEntry> const& list);

/// The plug-in's uniformity figure of the next frame, shown as a host shows it for verification: white
/// balance on the middle, colour matrix, exponent 0.45.
[[nodiscard]] double colourDeviation(simulator::SimulatedCamera& camera);
/// The same under another lamp with the correction on or off.
[[nodiscard]] double colourDeviation(simulator::SimulatedCamera& camera, double kelvin, bool corrected);
