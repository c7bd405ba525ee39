#pragma once

#include "simulator/files/sensor_layout.h"

#include <cmath>

namespace solver {
using simulator::kPlaneCount;
using simulator::PerPlane;
using simulator::Plane;
using simulator::SensorLayout;

/// The sensor array and the coordinates in which a correction is told. Positions are in pixels from the
/// array's top left corner; the centre of the first pixel is (0.5, 0.5).
struct Geometry {
    int width;
    int height;

    explicit Geometry(SensorLayout const& layout) : width(int(layout.width)), height(int(layout.height)) {}

    /// The correction's origin, in whole pixels: the array's centre, because coefficients stay smallest when
    /// u and v reach equally far to all sides.
    [[nodiscard]] int originColumn() const { return width / 2; }
    [[nodiscard]] int originRow() const { return height / 2; }

    /// Position relative to the origin in halves of the array, about -1 to 1.
    [[nodiscard]] double u(double x) const { return (x - originColumn()) / (0.5 * width); }
    [[nodiscard]] double v(double y) const { return (y - originRow()) / (0.5 * height); }

    /// Distance from the array's centre in pixels.
    [[nodiscard]] double radius(double x, double y) const {
        return std::hypot(x - 0.5 * width, y - 0.5 * height);
    }
    /// The same in halves of the diagonal: 1 in the corners.
    [[nodiscard]] double relativeRadius(double x, double y) const {
        return radius(x, y) / (0.5 * std::hypot(width, height));
    }
};
} // namespace solver
