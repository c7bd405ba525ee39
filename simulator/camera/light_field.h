#pragma once

#include "simulator/camera/lens_response.h"
#include "simulator/camera/simulated_camera.h"

#include <array>
#include <vector>

namespace simulator {
/// One value for each photosite, row by row in the array's own order.
using Field = std::vector<float>;

/// The light behind each photosite's filter, relative to what green gets in the middle of a flat field.
/// `colour` is the illuminant's response in red, green and blue; the lamp's level is left out, as it is but a
/// factor.
[[nodiscard]] Field lightField(SensorArray const& array, LensResponse const& lens,
                               std::array<double, 3> const& colour, Light const& light);
} // namespace simulator
