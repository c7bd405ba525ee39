#include "simulator/camera/illuminant_estimate.h"
#include "simulator/camera/illuminant.h"

#include <algorithm>
#include <cmath>

namespace simulator {
namespace {
// The look-up's steps in mired, millionths of 1/K, in which the logarithm of the ratio is nearly straight.
constexpr double kCoolest = 40;  // 25000 K
constexpr double kWarmest = 600; // 1667 K
constexpr double kStep = 10;

constexpr double kBeforeTheFirstFrame = 5000; // kelvin
} // namespace

IlluminantEstimate::IlluminantEstimate(std::array<ColourFilter, 3> const& filters,
                                       RegisterMap::Register& shown)
    : m_shown(shown), m_kelvin(kBeforeTheFirstFrame) {
    for (double mired = kCoolest; mired <= kWarmest; mired += kStep) {
        std::array<double, 3> const colour = illuminantResponse(filters, 1e6 / mired);
        m_logRatios.push_back(std::log(colour[0] / colour[2]));
    }
    m_shown.isVolatile = true;
    m_shown.value = uint32_t(m_kelvin);
}

void IlluminantEstimate::update(std::optional<double> redToBlue) {
    if (!redToBlue)
        return;
    double const ratio = std::clamp(std::log(*redToBlue), m_logRatios.front(), m_logRatios.back());
    auto const above = std::clamp(std::upper_bound(m_logRatios.begin(), m_logRatios.end(), ratio),
                                  m_logRatios.begin() + 1, m_logRatios.end() - 1);
    double const step = double(above - m_logRatios.begin()) - 1;
    double const share = (ratio - *(above - 1)) / (*above - *(above - 1));
    m_kelvin = 1e6 / (kCoolest + kStep * (step + share));
    m_shown.value = uint32_t(std::lround(m_kelvin));
}
} // namespace simulator
