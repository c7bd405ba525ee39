#pragma once

#include "simulator/camera/simulated_camera.h"
#include "simulator/host/run/run_all.h"

#include <optional>
#include <vector>

namespace pictara {
class Session;

/// How even the picture is under one light, in the dialog's own figure; the exposure and the colour balance
/// are the light's, and equal for all. A figure that the dialog did not show is missing.
struct LightColumn {
    double kelvin = 0;
    std::optional<double> uncorrected;
    std::vector<std::optional<double>> tableAlone; ///< by each of the sensor's tables, left to right
    std::optional<double> corrected;               ///< as the sensor blends its tables
};
using LightMatrix = std::vector<LightColumn>;

/// The lights and, at last, one between the two bluest of them, where a sensor has to blend.
[[nodiscard]] std::vector<double> lightsToTry(std::vector<double> lights);

/// Measures what each of the sensor's tables, and their blend, makes of the picture under each light. To see
/// one table alone, the registers of the tables' colour temperatures are set so that every light lies beyond
/// it, and set back. The last light stays, and so does the correction. `onLight` is called before each light.
[[nodiscard]] LightMatrix measureLights(Session& session, DialogPage& page, RunDriver& driver,
                                        std::vector<double> const& lights,
                                        std::function<void(double kelvin)> const& onLight);

/// Whether the dialog showed every figure.
[[nodiscard]] bool isComplete(LightMatrix const& matrix);

/// A line for each state of the correction, with a figure for each light.
[[nodiscard]] QString lightMatrixLines(LightMatrix const& matrix);
} // namespace pictara
