#pragma once

#include "pictures/frame.h"

#include <QRect>
#include <optional>

namespace kestra {
/// Colour uniformity of a picture: the largest chroma deviation of a block (lower is better), rounded to two
/// decimals, and where it stands. The rectangle keeps the block's exclusive right and bottom as its edges.
struct Uniformity {
    double value{};
    QRect worstBlock;
};

/// Measures an RGB-32 frame without its first `skippedRows` rows. The block's rows count from behind the
/// skipped ones. A frame without pixel data is measured as mid grey; empty when its sizes do not hold
/// together, or without data are larger than any sensor's.
[[nodiscard]] std::optional<Uniformity> measureUniformity(Frame const& frame, int skippedRows);

/// Paints a ring close around a block into an RGB-32 frame, two pixels wide on all sides. Since the block's
/// right and bottom edges are exclusive, it begins at them, and one pixel before the left and top ones.
void paintRing(Frame const& frame, QRect const& block, uint32_t pixel);
} // namespace kestra
