#pragma once

#include "simulator/camera/simulated_camera.h"

#include <cstdint>

namespace pictara {
/// Light in the centre of a frame, as shares of full scale.
struct CentreZone {
    double mean = 0; ///< of the brightest colour
    double peak = 0; ///< exceeded by one sample in a thousand; 1 when these are clipped
};

/// Measures the middle `zonePercent` per cent of the frame's width and height (10 to 100).
[[nodiscard]] CentreZone measureCentre(simulator::Frame const& frame,
                                       simulator::CameraDescription const& camera, int zonePercent);

/// The next exposure time, in the unit of the present one, towards a centre mean of `target` (share of full
/// scale). It brightens at most fourfold and never so far that the centre's peak would clip; a clipped
/// centre, whose mean says nothing, is halved. Within a hundredth of the target the exposure stays as it is.
[[nodiscard]] uint32_t nextExposure(uint32_t present, CentreZone const& centre, double target);
} // namespace pictara
