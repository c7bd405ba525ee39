#pragma once

#include "simulator/camera/optics.h"
#include "simulator/camera/simulated_camera.h"

#include <array>
#include <optional>
#include <vector>

namespace shading {
/// The lights of a shading table when nobody asks for others: an incandescent lamp, a fluorescent one and
/// daylight, kelvin.
inline constexpr std::array<double, 3> kStandardLights = {2856, 4000, 6500};

/// Sets a camera's exposure so that the brightest colour comes near 0.7 of full scale and nothing clips,
/// anywhere in the picture.
void expose(simulator::SimulatedCamera& camera);

/// Measures the shading that a camera shows of a flat field under each light, its own correction being off:
/// gains on 32 columns of cells that are about square, the mean of several frames. The camera's light and
/// exposure are changed. Empty with a message for the user when a picture is of no use, or after an
/// interruption.
[[nodiscard]] std::optional<simulator::MeasuredShading>
measureShading(simulator::SimulatedCamera& camera, std::vector<double> const& lights, QString* error);
} // namespace shading
