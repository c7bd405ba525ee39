#include "hoststate/white_balance.h"

#include "common/numbers.h"

std::optional<MeanColour> meanOfCentre(Frame const& frame) {
    if (!frame.hasRgb32Pixels())
        return std::nullopt;
    int64_t const top = frame.height / 4;
    int64_t const bottom = int64_t{3} * frame.height / 4;
    int64_t const left = frame.width / 4;
    int64_t const right = int64_t{3} * frame.width / 4;
    if (top == bottom || left == right)
        return std::nullopt;
    uint64_t red = 0;
    uint64_t green = 0;
    uint64_t blue = 0;
    for (int64_t y = top; y < bottom; ++y) {
        uint8_t const* pixel = frame.row(y) + left * 4;
        for (int64_t x = left; x < right; ++x, pixel += 4) {
            blue += pixel[0];
            green += pixel[1];
            red += pixel[2];
        }
    }
    double const count = double(bottom - top) * double(right - left);
    return MeanColour{double(red) / count, double(green) / count, double(blue) / count};
}

int32_t correctedGain(int32_t oldGain, double channelMean, double greenMean) {
    double const q = channelMean / greenMean;
    return toInt32(oldGain * ((q - 1) * 0.25 + 1) / q);
}
