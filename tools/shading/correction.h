#pragma once

#include "simulator/camera/simulated_camera.h"
#include "simulator/files/sensor_layout.h"

#include <functional>
#include <map>
#include <utility>

namespace shading {
/// Values of registers of the sensor's own address space, by id and address.
using RegisterValues = std::map<std::pair<uint32_t, uint32_t>, uint32_t>;

/// What a sensor multiplies a plane by at a place of its array, as shares of its sides from the top left.
using Gain = std::function<double(simulator::Plane plane, double x, double y)>;

/// The number that a register of a correction holds, an IEEE 754 binary16. Like the sensor it knows no
/// infinities and no NaNs: they are the largest finite value, which is `kLargestCoefficient`, and 0.
[[nodiscard]] double coefficientOf(uint32_t value);
inline constexpr double kLargestCoefficient = 65504;

/// Which registers hold a camera's correction; empty with the cause when its description does not tell.
[[nodiscard]] std::optional<simulator::SensorLayout> layoutOf(simulator::SimulatedCamera const& camera,
                                                              QString* error);

/// The gains that registers hold, by slot: those of each table times the base's, or of a sensor without
/// tables the base's alone. Banks of which a register is missing do not count; empty when none is left.
[[nodiscard]] std::map<uint32_t, Gain> gainsIn(simulator::SensorLayout const& layout,
                                               RegisterValues const& values);
} // namespace shading
