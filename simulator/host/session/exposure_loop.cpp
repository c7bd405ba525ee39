#include "simulator/host/session/exposure_loop.h"

#include "simulator/pictures/linear_rows.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace pictara {
namespace {
constexpr double kPeakLimit = 0.95;
constexpr double kClippedPeak = 0.99;
constexpr double kLargestStep = 4;
constexpr double kTolerance = 0.01;
constexpr double kDarkest = 1e-4;
constexpr double kHighestTarget = 0.85; // leaves room for noise below the peak limit
constexpr uint32_t kLongestExposure = 0xFFFF;
constexpr size_t kBins = 512; // of the light up to full scale
} // namespace

CentreZone measureCentre(simulator::Frame const& frame, simulator::CameraDescription const& camera,
                         int zonePercent) {
    auto const share = uint64_t(std::clamp(zonePercent, 10, 100));
    uint64_t const width = frame.width, height = uint64_t(std::max(frame.height, 0));
    uint64_t const left = width * (100 - share) / 200, right = width - left;
    uint64_t const top = height * (100 - share) / 200, bottom = height - top;
    uint64_t const count = (right - left) * (bottom - top);
    std::array<double, 3> sums{};
    std::array<uint64_t, kBins + 1> histogram{}; // of all colours
    auto const add = [&](uint32_t y, ColourRow const& row) {
        std::vector<float> const* const planes[] = {&row.red, &row.green, &row.blue};
        for (size_t colour = 0; colour < 3 && y >= top && y < bottom; ++colour)
            for (size_t x = left; x < right; ++x) {
                float const light = (*planes[colour])[x];
                sums[colour] += double(light);
                ++histogram[size_t(std::clamp(light, 0.0F, 1.0F) * float(kBins))];
            }
    };
    // The sensor's own colours: gains and matrix come after what clips.
    if (!readLinear(frame, camera, {}, add) || count == 0)
        return {};
    size_t bin = kBins;
    for (uint64_t above = 0; bin > 0 && (above += histogram[bin]) * 1000 <= count * 3;)
        --bin;
    return {*std::max_element(sums.begin(), sums.end()) / double(count), double(bin) / kBins};
}

uint32_t nextExposure(uint32_t present, CentreZone const& centre, double target) {
    target = std::clamp(target, 0.01, kHighestTarget);
    double factor = target / std::max(centre.mean, kDarkest);
    if (centre.peak >= kClippedPeak)
        factor = std::min(factor, 0.5);
    else if (std::abs(factor - 1) <= kTolerance && centre.peak <= kPeakLimit)
        return present;
    else
        factor = std::min(factor, kPeakLimit / std::max(centre.peak, kDarkest));
    factor = std::clamp(factor, 1 / kLargestStep, kLargestStep);
    double const next = std::round(std::max(present, 1U) * factor);
    return uint32_t(std::clamp(next, 1.0, double(kLongestExposure)));
}
} // namespace pictara
