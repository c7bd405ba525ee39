#pragma once

#include "simulator/pictures/block_report.h"

#include <QImage>
#include <QLine>

namespace pictara {
/// What a person reads from a whole frame, and from the picture that the colour pipeline made of it.

/// A place of the picture, what the sensor delivers there, and the colour that is shown.
[[nodiscard]] QString pixelText(QPoint place, simulator::Frame const& frame,
                                simulator::CameraDescription const& camera, QImage const& picture);

/// Paints stripes into `marked`, a copy of the picture, over pixels that are clipped: their sample is at full
/// scale or, where the sensor delivers no samples, a colour is shown as 255. Returns their share in percent.
double markClipped(simulator::Frame const& frame, simulator::CameraDescription const& camera,
                   QImage const& picture, QImage& marked);

/// Means of linear light, without the colour matrix, on blocks along a line, in even steps from its first end
/// to its last. Blocks stay inside of the rows that hold a picture.
[[nodiscard]] std::vector<Colour> profileAlong(QLine line, simulator::Frame const& frame,
                                               simulator::CameraDescription const& camera,
                                               ColourSettings settings);

/// The sensor's counts, of a frame that is a mosaic, as 16-bit grey.
[[nodiscard]] QImage rawPicture(simulator::Frame const& frame);
} // namespace pictara
