#pragma once

#include "simulator/camera/simulated_camera.h"

#include <optional>

namespace pictara {
/// Reads a picture that a camera of that description delivered: a greyscale PNG whose values are the sensor's
/// counts, at least 2 x 2 pixels, or, where the name does not end in ".png", the samples of one whole frame
/// of the camera's own size and type. Empty with a message for the user.
[[nodiscard]] std::optional<simulator::Frame>
readRecordedPicture(QString const& file, simulator::CameraDescription const& camera, QString* error);
} // namespace pictara
