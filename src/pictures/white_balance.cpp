#include "pictures/white_balance.h"

#include "common/numbers.h"
#include "pictures/channel_sums.h"

#include <array>
#include <iterator>

namespace kestra {
std::optional<MeanColour> meanOfCentre(Frame const& frame) {
    if (!frame.hasRgb32Pixels())
        return std::nullopt;
    int64_t const top = frame.height / 4;
    int64_t const bottom = int64_t{3} * frame.height / 4;
    int64_t const left = frame.width / 4;
    int64_t const right = int64_t{3} * frame.width / 4;
    if (top == bottom || left == right)
        return std::nullopt;
    ColumnRange const centre[] = {{int32_t(left), int32_t(right)}};
    std::array<ChannelSums, std::size(centre)> all;
    addChannelSums(frame.row(top), frame.pitch, bottom - top, centre, all);
    ChannelSums const& sums = all.front();
    double const count = double(bottom - top) * double(right - left);
    return MeanColour{double(sums.red) / count, double(sums.green) / count, double(sums.blue) / count};
}

int32_t correctedGain(int32_t oldGain, double channelMean, double greenMean) {
    double const q = channelMean / greenMean;
    return toInt32(oldGain * ((q - 1) * 0.25 + 1) / q);
}
} // namespace kestra
