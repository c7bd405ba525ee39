#pragma once

#include "simulator/camera/optics.h"

#include <functional>
#include <optional>

namespace pictara {
/// The lights of a shading table when nobody asks for others: an incandescent lamp, a fluorescent one and
/// daylight, kelvin.
inline constexpr std::array<double, 3> kStandardLights = {2856, 4000, 6500};

/// Measures the shading that a camera shows of a flat field under each light, its own correction being off:
/// gains on 32 columns of cells that are about square, the mean of several frames. The camera's light and
/// exposure are changed; `onLight` is called before each light. Empty with a message for the user when a
/// picture is of no use, or after an interruption.
[[nodiscard]] std::optional<simulator::MeasuredShading>
measureShading(simulator::SimulatedCamera& camera, std::vector<double> const& lights,
               std::function<void(double kelvin)> const& onLight, QString* error);

/// The same of one recorded flat field, taken by a camera of that description under a lamp of that colour
/// temperature: a greyscale PNG of up to 16 bits whose values are the sensor's counts, of any size, or the
/// bare samples of a raw frame.
[[nodiscard]] std::optional<simulator::MeasuredShading>
measureRecordedShading(QString const& file, simulator::CameraDescription const& camera, double kelvin,
                       QString* error);

/// Writes a table in the format shading-gains-1, whole or not at all; false with a message for the user.
[[nodiscard]] bool writeMeasuredShading(QString const& file, simulator::MeasuredShading const& shading,
                                        QString* error);
} // namespace pictara
