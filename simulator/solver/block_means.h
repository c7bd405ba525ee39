#pragma once

#include "published/shadefit.h"
#include "simulator/files/sensor_layout.h"

#include <Eigen/Core>
#include <QString>
#include <algorithm>
#include <cmath>
#include <vector>

namespace solver {
using simulator::kPlaneCount;
using simulator::PerPlane;
using simulator::Plane;
using simulator::SensorLayout;

/// The correction's origin along a side of the array, in whole pixels: its middle, because coefficients stay
/// smallest when u and v reach equally far to all sides.
[[nodiscard]] constexpr uint32_t originIn(uint32_t side) { return side / 2; }

/// One component of a frame, block by block, row by row from the array's top left. The positions are the mean
/// ones of the samples.
struct ComponentMeans {
    Eigen::ArrayXd u;        ///< column relative to the origin in halves of the array, about -1 to 1
    Eigen::ArrayXd v;        ///< row, the same
    Eigen::ArrayXd radius;   ///< distance from the array's centre, 1 in the corners
    Eigen::ArrayXd mean;     ///< of each block's samples without outliers
    Eigen::ArrayXd clipped;  ///< share of each block's samples that lie at or above the white level
    double clippedShare = 0; ///< the same of all samples
};

/// The four planes of a frame as the fit takes them: means above black level, 1 = white level. The array is
/// cut along even pixels, so that every block holds samples of every plane.
struct BlockMeans {
    int columns = 0;
    int rows = 0;
    PerPlane<ComponentMeans> planes;
};

/// A yes or no for each block.
using BlockMask = Eigen::Array<bool, Eigen::Dynamic, 1>;

/// Reads Bayer frames, where bit 0 of `bayerPhase` is the column and bit 1 the row of the first red pixel of
/// the delivered frame, and RGB frames of 4 bytes a pixel, B G R x. Rows are tightly packed. With bit 0 of
/// `orientation` the array's right side is delivered on the left, with bit 1 its bottom at the top.
[[nodiscard]] BlockMeans readRaw(void const* frame, SensorLayout const& layout, uint32_t bayerPhase,
                                 uint32_t orientation);

/// Reads YCbCr frames of 2 bytes a pixel in the order Y Cb Y Cr, whose components are linear in light:
/// converted by the equations of ITU-R BT.601 with the record's luma range and chroma span.
[[nodiscard]] BlockMeans readYcbcr(void const* frame, SensorLayout const& layout, sf_YcbcrInput const& input);

/// What makes an input image no even field.
enum class Flaw { None, TooDark, Clipped, Object, UnevenLamp };

/// What an input image is worth.
struct Inspection {
    Flaw flaw = Flaw::None;
    QString fault;     ///< why it is refused, with figures; empty when it is not
    BlockMask refused; ///< what it is refused for; empty where that is the whole picture
    BlockMask trusted; ///< false where dust or a speck spoils a block; of an image that is not refused
};

/// Tells an evenly lit field from one that is too dark, clipped, holds an object or is lit from one side. A
/// lens whose centre is offset by up to 0.1 of the array's half-width passes. From one picture a lamp's
/// gradient cannot be told from such an offset, so only what goes beyond it is refused.
[[nodiscard]] Inspection inspect(BlockMeans const& means, SensorLayout const& layout);

/// The upper median of one value at least, which are reordered.
template <typename Value>
[[nodiscard]] Value median(std::vector<Value>& values) {
    auto const middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// The standard deviation of normally distributed values around their median by the median of their absolute
/// deviations, which outliers hardly change.
template <typename Value>
[[nodiscard]] double scaledDeviation(std::vector<Value> values, Value middle) {
    constexpr double kSigmaPerMad = 1.4826;
    for (Value& value : values)
        value = std::abs(value - middle);
    return kSigmaPerMad * median(values);
}
} // namespace solver
