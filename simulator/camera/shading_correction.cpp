#include "simulator/camera/shading_correction.h"

#include <QFloat16>
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <functional>
#include <map>

namespace simulator {
namespace {
constexpr size_t kOriginRegisters = 2;
constexpr size_t kMiddleTable = 1;

// The look-up's steps in mired, millionths of 1/K, in which the logarithm of the ratio is nearly straight.
constexpr double kCoolest = 40;  // 25000 K
constexpr double kWarmest = 600; // 1667 K
constexpr double kStep = 10;

constexpr double kBeforeTheFirstFrame = 5000; // kelvin

// The value of an IEEE 754 binary16. Correction arithmetic has no infinities and no NaNs: it takes their
// patterns for the largest finite value and for 0.
double fromBinary16(uint32_t bits) {
    constexpr float kLargest = 65504;
    float const value = std::bit_cast<qfloat16>(uint16_t(bits));
    return std::isnan(value) ? 0 : double(std::clamp(value, -kLargest, kLargest));
}

// A row's polynomial in u: its terms are the sums over q of c(p, q) v^q.
std::array<float, kPolynomialTerms> polynomialAt(uint32_t const* coefficients, double v) {
    std::array<float, kPolynomialTerms> row{};
    for (size_t p = 0; p < kPolynomialTerms; ++p) {
        double sum = 0;
        for (size_t q = kPolynomialTerms; q-- > 0;)
            sum = sum * v + fromBinary16(coefficients[kPolynomialTerms * p + q]);
        row[p] = float(sum);
    }
    return row;
}
} // namespace

GainPolynomial::GainPolynomial(Profile& profile, SensorLayout::Bank const& bank) : m_array(profile.array) {
    auto const add = [&](RegisterPlace const& place) {
        m_registers.push_back(profile.registers.find(0, place.id, place.address));
    };
    add(profile.layout.originOf(bank).column);
    add(profile.layout.originOf(bank).row);
    for (SensorLayout::Coefficients const& plane : bank.planes)
        for (uint32_t i = 0; i < kCoefficientCount; ++i)
            add(plane.place(i));
}

// gain(x, y) = sum over p, q of c(p, q) u^p v^q, with u and v the distances from the origin in half-widths
// and half-heights of the array.
Field const& GainPolynomial::gains() {
    std::vector<uint32_t> values;
    for (RegisterMap::Register const* reg : m_registers)
        values.push_back(reg->value);
    if (values == m_values)
        return m_gains;
    m_values = std::move(values);
    m_gains.resize(m_array.pixels());
    double const halfWidth = m_array.width / 2.0;
    double const halfHeight = m_array.height / 2.0;
    std::vector<float> u(m_array.width);
    for (uint32_t x = 0; x < m_array.width; ++x)
        u[x] = float((x + 0.5 - m_values[0]) / halfWidth);
    for (uint32_t y = 0; y < m_array.height; ++y) {
        double const v = (y + 0.5 - m_values[1]) / halfHeight;
        float* const line = &m_gains[size_t(y) * m_array.width];
        for (uint32_t first = 0; first < 2; ++first) {
            size_t const plane = m_array.planeAt(first, y);
            auto const row = polynomialAt(&m_values[kOriginRegisters + plane * kCoefficientCount], v);
            for (uint32_t x = first; x < m_array.width; x += 2) {
                float const gain =
                    row[0] + u[x] * (row[1] + u[x] * (row[2] + u[x] * (row[3] + u[x] * row[4])));
                line[x] = std::max(0.0F, gain); // a negative gain has no digital counterpart
            }
        }
    }
    return m_gains;
}

ShadingCorrection::ShadingCorrection(Profile& profile) : m_profile(profile), m_kelvin(kBeforeTheFirstFrame) {
    if (SensorLayout::Bank const* const base = profile.layout.bank(kBaseSlot))
        m_base.emplace(profile, *base);
    if (!profile.tableChoice)
        return;
    for (uint32_t const slot : kTableSlots)
        m_tables.emplace_back(profile, *profile.layout.bank(slot));
    for (double mired = kCoolest; mired <= kWarmest; mired += kStep) {
        std::array<double, 3> const colour = illuminantResponse(profile.optics.filters, 1e6 / mired);
        m_logRatios.push_back(std::log(colour[0] / colour[2]));
    }
    profile.tableChoice->estimate->isVolatile = true;
    profile.tableChoice->estimate->value = uint32_t(m_kelvin);
}

void ShadingCorrection::look(std::optional<double> redToBlue) {
    if (!redToBlue)
        return;
    double const ratio = std::clamp(std::log(*redToBlue), m_logRatios.front(), m_logRatios.back());
    auto const above = std::clamp(std::upper_bound(m_logRatios.begin(), m_logRatios.end(), ratio),
                                  m_logRatios.begin() + 1, m_logRatios.end() - 1);
    double const step = double(above - m_logRatios.begin()) - 1;
    double const share = (ratio - *(above - 1)) / (*above - *(above - 1));
    m_kelvin = 1e6 / (kCoolest + kStep * (step + share));
    m_profile.tableChoice->estimate->value = uint32_t(std::lround(m_kelvin));
}

Field const* ShadingCorrection::gains() {
    if (!m_profile.correctionSwitch.isOn())
        return nullptr;
    return m_tables.empty() ? &m_base->gains() : &mixedTables();
}

Field const& ShadingCorrection::mixedTables() {
    IlluminantBlend const mixed = blend();
    Field const& lower = m_tables[mixed.lower].gains();
    Field const& upper = m_tables[mixed.upper].gains();
    auto const share = float(mixed.share);
    m_mixed.resize(lower.size());
    for (size_t i = 0; i < m_mixed.size(); ++i)
        m_mixed[i] = lower[i] + share * (upper[i] - lower[i]);
    if (m_base)
        std::transform(m_mixed.begin(), m_mixed.end(), m_base->gains().begin(), m_mixed.begin(),
                       std::multiplies());
    return m_mixed;
}

// Which tables, 0 to 2 from left to right, and how much of each. Whatever the registers hold gives an answer;
// tables of the same temperature do not mix.
IlluminantBlend ShadingCorrection::blend() const {
    TableChoice const& choice = *m_profile.tableChoice;
    if (choice.automatic && !choice.automatic->isOn())
        return {kMiddleTable, kMiddleTable, 0};
    if (size_t const zone = choice.zone ? choice.zone->value : 0; zone >= 1 && zone <= m_tables.size())
        return {zone - 1, zone - 1, 0};
    std::multimap<double, size_t> tables; // by temperature
    for (auto const* const reg : choice.temperatures)
        tables.emplace(std::max(1U, reg->value), tables.size()); // 1/K needs one
    std::vector<double> ascending;
    std::vector<size_t> order;
    for (auto const& [temperature, table] : tables) {
        ascending.push_back(temperature);
        order.push_back(table);
    }
    IlluminantBlend const found = blendAt(ascending, m_kelvin);
    return {order[found.lower], order[found.upper], found.share};
}
} // namespace simulator
