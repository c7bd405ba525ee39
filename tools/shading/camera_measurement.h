#pragma once

#include "simulator/host/report/certificate.h"
#include "tools/shading/table_file.h"

#include <array>
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

struct CameraRequest {
    QString profile;
    QString shadingFile{};          ///< of a lens that is put before the sensor; empty: its own
    std::optional<double> kelvin{}; ///< none: the standard lights
    double level = 1;               ///< of the lamp
    TableFile table{};
};

/// Measures a simulated camera and writes the table. Empty with a message for the user; `exitCode` tells when
/// its pictures show nothing to be measured.
[[nodiscard]] std::optional<pictara::Certificate> measureCamera(CameraRequest const& request, int* exitCode,
                                                                QString* error);
} // namespace shading
