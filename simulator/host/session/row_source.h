#pragma once

#include "simulator/host/session/colour_settings.h"
#include "simulator/host/session/sample_rows.h"

#include <QImage>
#include <functional>

namespace pictara {
/// A picture that can be read row by row from the top down, as often as one likes. What it was made of
/// outlives it.
struct RowSource {
    using Use = std::function<void(uint32_t y, ColourRow const& row)>;

    int width = 0;
    int height = 0;
    std::function<void(Use const&)> read = [](Use const&) {};
};

/// Linear light in display RGB, 0 at black and 1 at full scale. Empty for a frame that is not whole.
[[nodiscard]] RowSource linearRows(simulator::Frame const& frame, simulator::CameraDescription const& camera,
                                   ColourSettings const& settings);
[[nodiscard]] RowSource linearRows(simulator::IdealFrame const& frame,
                                   simulator::CameraDescription const& camera,
                                   ColourSettings const& settings);
/// Display values of 0 to 255 that are not rounded, of linear rows.
[[nodiscard]] RowSource shownRows(RowSource const& linear, ColourSettings const& settings);
/// The display values of a picture of 32 bits a pixel.
[[nodiscard]] RowSource shownRows(QImage const& picture);
} // namespace pictara
