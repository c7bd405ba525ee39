#pragma once

#include "simulator/camera/simulated_camera.h"
#include "simulator/host/report/picture_detail.h"

#include <QImage>
#include <optional>

namespace pictara {
/// What is looked at.
struct Scene {
    simulator::CameraDescription camera;
    QString shading; ///< the measured lens' file; empty for the profile's own lens
    simulator::Light light;
    uint64_t seed = 0;
};

/// How even the picture is in one state of the sensor's correction.
struct Evenness {
    double uniformity = 0; ///< the dialog's own figure
    double limit = 0;      ///< for it, as the dialog shows it; NaN when that is no number
    QString rating;        ///< the colour by which the dialog rates it: "green" up to the limit
    BlockReport blocks;
    QImage picture;
    PictureDetail detail; ///< empty unless it was asked for
};

/// The dialog finds the figure beyond its limit.
[[nodiscard]] bool isBeyondLimit(Evenness const& evenness);

/// Lines of a summary, "name: value" each.
[[nodiscard]] QString sceneLines(Scene const& scene);
/// `state` names that of the correction; without figures they say so.
[[nodiscard]] QString evennessLines(char const* state, std::optional<Evenness> const& evenness);

/// The picture with a frame around the worst block.
[[nodiscard]] QImage markedPicture(Evenness const& evenness);
} // namespace pictara
