#include "simulator/host/window/histogram_panel.h"

#include <algorithm>

namespace pictara {
namespace {
constexpr int kRows = 180; // enough for a smooth curve, a sixth of the work
} // namespace

ColourCounts countColours(QImage const& picture) {
    ColourCounts counts;
    for (std::vector<double>& channel : counts.channels)
        channel.assign(ColourCounts::kBins, 0);
    int const step = std::max(1, picture.height() / kRows);
    for (int y = step / 2; y < picture.height(); y += step) {
        auto const* const row = reinterpret_cast<QRgb const*>(picture.constScanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            ++counts.channels[0][size_t(qRed(row[x]) * ColourCounts::kBins / 256)];
            ++counts.channels[1][size_t(qGreen(row[x]) * ColourCounts::kBins / 256)];
            ++counts.channels[2][size_t(qBlue(row[x]) * ColourCounts::kBins / 256)];
        }
    }
    return counts;
}
} // namespace pictara
