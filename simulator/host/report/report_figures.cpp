#include "simulator/host/report/report_figures.h"

#include <algorithm>
#include <cmath>

namespace pictara {
namespace {
double spread(std::vector<double> const& values) {
    if (values.empty())
        return 0;
    auto const [low, high] = std::minmax_element(values.begin(), values.end());
    return *high - *low;
}

constexpr Figure kFigures[] = {
    {"dialog_colour_deviation_ab", "colour deviation, largest, as the dialog showed it (a*b*)",
     [](Evenness const& e) { return e.uniformity; }, 2},
    {"dialog_colour_deviation_limit_ab", "the dialog's limit for it (a*b*)",
     [](Evenness const& e) { return e.limit; }, 2},
    {"picture_colour_deviation_ab", "the same, measured by the host on the next pictures (a*b*)",
     [](Evenness const& e) { return e.detail.shown.largest; }, 2},
    {"true_colour_deviation_ab", "the same, true: without noise and quantisation (a*b*)",
     [](Evenness const& e) { return e.detail.trueShown.largest; }, 2},
    {"picture_colour_deviation_mean_ab", "colour deviation, mean of the blocks (a*b*)",
     [](Evenness const& e) { return e.detail.shown.mean; }, 3},
    {"true_colour_deviation_mean_ab", "the same, true (a*b*)",
     [](Evenness const& e) { return e.detail.trueShown.mean; }, 3},
    {"luminance_error_largest_against_median_percent",
     "luminance error, largest against the median block (%)",
     [](Evenness const& e) { return 100 * e.blocks.largestAgainstMedian; }, 2},
    {"luminance_error_mean_against_median_percent", "luminance error, mean against the median block (%)",
     [](Evenness const& e) { return 100 * e.blocks.meanAgainstMedian; }, 2},
    {"luminance_error_largest_against_centre_percent",
     "luminance error, largest against the centre block (%)",
     [](Evenness const& e) { return 100 * e.blocks.largestAgainstCentre; }, 2},
    {"luminance_error_mean_against_centre_percent", "luminance error, mean against the centre block (%)",
     [](Evenness const& e) { return 100 * e.blocks.meanAgainstCentre; }, 2},
    {"true_luminance_error_largest_against_centre_percent", "true, largest against the centre block (%)",
     [](Evenness const& e) { return 100 * e.detail.trueBlocks.largestAgainstCentre; }, 2},
    {"true_luminance_error_mean_against_centre_percent", "true, mean against the centre block (%)",
     [](Evenness const& e) { return 100 * e.detail.trueBlocks.meanAgainstCentre; }, 2},
    {"red_to_green_spread_percent", "R/G, from the lowest to the highest cell (%)",
     [](Evenness const& e) { return spread(ratioResidual(e.detail.maps.sensor, 0)); }, 2},
    {"blue_to_green_spread_percent", "B/G, from the lowest to the highest cell (%)",
     [](Evenness const& e) { return spread(ratioResidual(e.detail.maps.sensor, 2)); }, 2},
};

constexpr PictureQuantity kQuantities[] = {
    {"red_to_green_percent", "R/G against its mean",
     [](LightMaps const& maps) { return ratioResidual(maps.sensor, 0); }},
    {"blue_to_green_percent", "B/G against its mean",
     [](LightMaps const& maps) { return ratioResidual(maps.sensor, 2); }},
    {"luminance_percent", "Luminance against the centre",
     [](LightMaps const& maps) { return luminanceResidual(maps.display); }},
};
} // namespace

std::span<Figure const> pictureFigures() { return kFigures; }
std::span<PictureQuantity const> pictureQuantities() { return kQuantities; }

DeviationBins deviationBins(std::vector<double> const& deviations) {
    constexpr double kAbout = 20;
    DeviationBins bins;
    if (deviations.empty())
        return bins;
    double const largest = *std::max_element(deviations.begin(), deviations.end());
    double const wanted = std::max(largest, 1e-3) / kAbout;
    double const decade = std::pow(10, std::floor(std::log10(wanted)));
    for (double const step : {1.0, 2.0, 5.0, 10.0})
        if (bins.width = step * decade; bins.width >= wanted)
            break;
    bins.counts.resize(size_t(largest / bins.width) + 1);
    for (double const deviation : deviations)
        ++bins.counts[size_t(deviation / bins.width)];
    return bins;
}
} // namespace pictara
