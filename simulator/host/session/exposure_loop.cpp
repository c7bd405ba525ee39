#include "simulator/host/session/exposure_loop.h"

#include "simulator/pictures/row_source.h"

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

// Means and a histogram of the light of three colours.
class LightTally {
public:
    void add(ColourRow const& row, size_t left, size_t right) {
        std::vector<float> const* const planes[] = {&row.red, &row.green, &row.blue};
        for (size_t colour = 0; colour < 3; ++colour)
            for (size_t x = left; x < right; ++x) {
                float const light = (*planes[colour])[x];
                m_sums[colour] += double(light);
                ++m_histogram[size_t(std::clamp(light, 0.0F, 1.0F) * float(kBins))];
            }
        m_count += right - left;
    }

    [[nodiscard]] CentreZone zone() const {
        if (m_count == 0)
            return {};
        double const brightest = *std::max_element(m_sums.begin(), m_sums.end());
        size_t bin = kBins;
        for (uint64_t above = 0; bin > 0 && (above += m_histogram[bin]) * 1000 <= m_count * 3;)
            --bin;
        return {brightest / double(m_count), double(bin) / kBins};
    }

private:
    static constexpr size_t kBins = 512;
    std::array<double, 3> m_sums{};
    std::array<uint64_t, kBins + 1> m_histogram{};
    uint64_t m_count = 0;
};
} // namespace

CentreZone measureCentre(simulator::Frame const& frame, simulator::CameraDescription const& camera,
                         int zonePercent) {
    auto const share = uint64_t(std::clamp(zonePercent, 10, 100));
    auto const bounds = [&](uint64_t size) {
        uint64_t const margin = size * (100 - share) / 200;
        return std::pair(margin, size - margin);
    };
    auto const [left, right] = bounds(frame.width);
    auto const [top, bottom] = bounds(uint64_t(std::max(frame.height, 0)));
    LightTally tally;
    // The sensor's own colours: gains and matrix come after what clips.
    linearRows(frame, camera, {}).read([&, l = left, r = right, t = top, b = bottom](uint32_t y, auto& row) {
        if (y >= t && y < b)
            tally.add(row, size_t(l), size_t(r));
    });
    return tally.zone();
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
