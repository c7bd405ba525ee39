#include "simulator/camera/illuminant.h"

#include <algorithm>
#include <cmath>

namespace simulator {
namespace {
// Spectral radiance of a black body up to a constant factor (Planck's law, h c / k = 0.014388 m K).
double blackBody(double nanometres, double kelvin) {
    double const micrometres = nanometres / 1000;
    return std::pow(micrometres, -5) / std::expm1(14387.77 / (micrometres * kelvin));
}

double filtered(ColourFilter const& filter, double kelvin) {
    constexpr double kFirst = 380; // nanometres
    constexpr double kLast = 780;
    constexpr double kStep = 5;
    double sum = 0;
    for (double wavelength = kFirst; wavelength <= kLast; wavelength += kStep) {
        double const distance = (wavelength - filter.peak) / filter.width;
        sum += filter.sensitivity * std::exp(-0.5 * distance * distance) * blackBody(wavelength, kelvin);
    }
    return sum;
}
// The look-up's steps in mired, millionths of 1/K, in which the logarithm of the ratio is nearly straight.
constexpr double kCoolest = 40;  // 25000 K
constexpr double kWarmest = 600; // 1667 K
constexpr double kStep = 10;

constexpr double kBeforeTheFirstFrame = 5000; // kelvin
} // namespace

std::array<double, 3> illuminantResponse(std::array<ColourFilter, 3> const& filters,
                                         double colourTemperature) {
    double const kelvin = std::clamp(colourTemperature, 1000.0, 25000.0);
    double const green = filtered(filters[1], kelvin);
    return {filtered(filters[0], kelvin) / green, 1.0, filtered(filters[2], kelvin) / green};
}

IlluminantBlend blendAt(std::vector<double> const& temperatures, double colourTemperature) {
    size_t const last = temperatures.size() - 1;
    auto const above = std::upper_bound(temperatures.begin(), temperatures.end(), colourTemperature);
    if (above == temperatures.begin())
        return {0, 0, 0};
    if (above == temperatures.end())
        return {last, last, 0};
    auto const upper = size_t(above - temperatures.begin());
    double const lowerMired = 1 / temperatures[upper - 1];
    double const upperMired = 1 / temperatures[upper];
    return {upper - 1, upper, (1 / colourTemperature - lowerMired) / (upperMired - lowerMired)};
}

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
