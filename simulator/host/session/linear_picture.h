#pragma once

#include "simulator/host/session/colour_settings.h"
#include "simulator/host/session/sample_rows.h"

#include <functional>

namespace pictara {
/// True when the frame's buffer holds the rows that it tells of and can be shown: at least 2 x 2 pixels.
[[nodiscard]] bool isWhole(simulator::Frame const& frame);

/// Hands out a frame as rows of linear light in display RGB, from the top down: black level taken off,
/// colours completed, relative gains, saturation and colour matrix applied. Nothing for a frame that is not
/// whole.
void forEachLinearRow(simulator::Frame const& frame, simulator::CameraDescription const& camera,
                      ColourSettings const& settings,
                      std::function<void(uint32_t y, ColourRow const& row)> const& use);

/// The same for an ideal frame, black level and full scale being 0 and 1.
void forEachLinearRow(simulator::IdealFrame const& frame, simulator::CameraDescription const& camera,
                      ColourSettings const& settings,
                      std::function<void(uint32_t y, ColourRow const& row)> const& use);
} // namespace pictara
