#include "simulator/camera/shading_correction.h"

#include <QFloat16>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace simulator {
namespace {
constexpr size_t kOriginRegisters = 2;
constexpr size_t kMiddleTable = 1;

// The value of an IEEE 754 binary16. Correction arithmetic has no infinities and no NaNs: it takes their
// patterns for the largest finite value and for 0.
double fromBinary16(uint32_t bits) {
    constexpr float kLargest = 65504;
    auto const word = uint16_t(bits);
    qfloat16 half;
    static_assert(sizeof half == sizeof word);
    std::memcpy(static_cast<void*>(&half), &word, sizeof half);
    float const value = half;
    return std::isnan(value) ? 0 : double(std::clamp(value, -kLargest, kLargest));
}

// A row's polynomial in u: its terms are the sums over q of c(p, q) v^q.
std::array<float, kPolynomialTerms> polynomialAt(std::array<double, kCoefficientCount> const& coefficients,
                                                 double v) {
    std::array<float, kPolynomialTerms> row{};
    for (size_t p = 0; p < kPolynomialTerms; ++p) {
        double sum = 0;
        for (size_t q = kPolynomialTerms; q-- > 0;)
            sum = sum * v + coefficients[kPolynomialTerms * p + q];
        row[p] = float(sum);
    }
    return row;
}
} // namespace

GainPolynomial::GainPolynomial(SensorArray const& array, SensorLayout const& layout,
                               SensorLayout::Bank const& bank, RegisterMap& registers)
    : m_array(array) {
    auto const add = [&](RegisterPlace const& place) {
        m_registers.push_back(registers.find(0, place.id, place.address));
    };
    add(layout.originOf(bank).column);
    add(layout.originOf(bank).row);
    for (SensorLayout::Coefficients const& plane : bank.planes)
        for (uint32_t i = 0; i < kCoefficientCount; ++i)
            add(plane.place(i));
}

Field const& GainPolynomial::gains() {
    std::vector<uint32_t> values;
    values.reserve(m_registers.size());
    for (RegisterMap::Register const* reg : m_registers)
        values.push_back(reg->value);
    if (values != m_values) {
        m_values = std::move(values);
        computeGains();
    }
    return m_gains;
}

// gain(x, y) = sum over p, q of c(p, q) u^p v^q, with u and v the distances from the origin in half-widths
// and half-heights of the array.
void GainPolynomial::computeGains() {
    m_gains.resize(m_array.pixels());
    double const halfWidth = m_array.width / 2.0;
    double const halfHeight = m_array.height / 2.0;
    std::vector<float> u(m_array.width);
    for (uint32_t x = 0; x < m_array.width; ++x)
        u[x] = float((x + 0.5 - m_values[0]) / halfWidth);
    PerPlane<std::array<double, kCoefficientCount>> coefficients{};
    for (size_t i = 0; i < kPlaneCount * kCoefficientCount; ++i)
        coefficients[i / kCoefficientCount][i % kCoefficientCount] =
            fromBinary16(m_values[kOriginRegisters + i]);

    for (uint32_t y = 0; y < m_array.height; ++y) {
        double const v = (y + 0.5 - m_values[1]) / halfHeight;
        float* const line = &m_gains[size_t(y) * m_array.width];
        for (uint32_t first = 0; first < 2; ++first) {
            auto const row = polynomialAt(coefficients[m_array.planeAt(first, y)], v);
            for (uint32_t x = first; x < m_array.width; x += 2) {
                float const gain =
                    row[0] + u[x] * (row[1] + u[x] * (row[2] + u[x] * (row[3] + u[x] * row[4])));
                line[x] = std::max(0.0F, gain); // a negative gain has no digital counterpart
            }
        }
    }
}

ShadingCorrection::ShadingCorrection(Profile const& profile, RegisterMap& registers)
    : m_profile(profile), m_map(registers) {
    SensorLayout const& layout = profile.layout;
    if (SensorLayout::Bank const* const base = layout.bank(kBaseSlot))
        m_base.emplace(profile.array, layout, *base, registers);
    if (profile.tableChoice)
        for (uint32_t const slot : kTableSlots)
            m_tables.emplace_back(profile.array, layout, *layout.bank(slot), registers);
}

uint32_t ShadingCorrection::valueOf(QByteArray const& reg) const {
    return m_map.find(reg.constData())->value;
}

bool ShadingCorrection::isOn(RegisterSwitch const& told) const {
    return (valueOf(told.reg) & told.mask) == told.value;
}

Field const& ShadingCorrection::gains(double kelvin) {
    if (m_tables.empty())
        return m_base->gains();
    IlluminantBlend const blend = blendOf(kelvin);
    Field const& lower = m_tables[blend.lower].gains();
    Field const& upper = m_tables[blend.upper].gains();
    auto const share = float(blend.share);
    m_mixed.resize(lower.size());
    for (size_t i = 0; i < m_mixed.size(); ++i)
        m_mixed[i] = lower[i] + share * (upper[i] - lower[i]);
    if (m_base) {
        Field const& base = m_base->gains();
        for (size_t i = 0; i < m_mixed.size(); ++i)
            m_mixed[i] *= base[i];
    }
    return m_mixed;
}

// The table that the registers choose whatever the light is.
std::optional<size_t> ShadingCorrection::heldTable() const {
    TableChoice const& choice = *m_profile.tableChoice;
    if (choice.automatic && !isOn(*choice.automatic))
        return kMiddleTable;
    uint32_t const zone = choice.zone.isEmpty() ? 0 : valueOf(choice.zone);
    return zone >= 1 && zone <= m_tables.size() ? std::optional<size_t>(zone - 1) : std::nullopt;
}

// Which tables, 0 to 2 from left to right, and how much of each. Whatever the registers hold gives an answer;
// tables of the same temperature do not mix.
IlluminantBlend ShadingCorrection::blendOf(double kelvin) const {
    if (auto const held = heldTable())
        return {*held, *held, 0};
    std::vector<std::pair<double, size_t>> order; // by temperature
    for (QByteArray const& reg : m_profile.description.tableTemperatures)
        order.emplace_back(std::max(1U, valueOf(reg)), order.size()); // 1/K needs one
    std::sort(order.begin(), order.end());
    std::vector<double> ascending;
    for (auto const& row : order)
        ascending.push_back(row.first);
    IlluminantBlend const blend = blendAt(ascending, kelvin);
    return {order[blend.lower].second, order[blend.upper].second, blend.share};
}
} // namespace simulator
