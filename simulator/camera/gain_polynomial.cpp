#include "simulator/camera/gain_polynomial.h"
#include "simulator/camera/binary16.h"

#include <algorithm>
#include <array>

namespace simulator {
namespace {
constexpr size_t kOriginRegisters = 2;

RegisterMap::Register const* at(RegisterMap& registers, RegisterPlace const& place) {
    return registers.find(0, place.id, place.address);
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

GainPolynomial::GainPolynomial(SensorArray const& array, SensorLayout::Bank const& bank,
                               RegisterMap& registers)
    : m_array(array) {
    m_registers.push_back(at(registers, bank.originColumn));
    m_registers.push_back(at(registers, bank.originRow));
    for (SensorLayout::Coefficients const& plane : bank.planes)
        for (uint32_t i = 0; i < kCoefficientCount; ++i)
            m_registers.push_back(at(registers, plane.place(i)));
}

std::vector<uint32_t> GainPolynomial::registerValues() const {
    std::vector<uint32_t> values;
    values.reserve(m_registers.size());
    for (RegisterMap::Register const* reg : m_registers)
        values.push_back(reg->value);
    return values;
}

Field const& GainPolynomial::gains() {
    std::vector<uint32_t> values = registerValues();
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
    std::array<std::array<double, kCoefficientCount>, kPlaneCount> coefficients{};
    for (size_t i = 0; i < kPlaneCount * kCoefficientCount; ++i)
        coefficients[i / kCoefficientCount][i % kCoefficientCount] =
            fromBinary16(m_values[kOriginRegisters + i]);

    for (uint32_t y = 0; y < m_array.height; ++y) {
        double const v = (y + 0.5 - m_values[1]) / halfHeight;
        float* const line = &m_gains[size_t(y) * m_array.width];
        for (uint32_t first = 0; first < 2; ++first) {
            auto const row = polynomialAt(coefficients[size_t(m_array.planeAt(first, y))], v);
            for (uint32_t x = first; x < m_array.width; x += 2) {
                float const gain =
                    row[0] + u[x] * (row[1] + u[x] * (row[2] + u[x] * (row[3] + u[x] * row[4])));
                line[x] = std::max(0.0F, gain); // a negative gain has no digital counterpart
            }
        }
    }
}
} // namespace simulator
