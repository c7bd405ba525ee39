#include "tools/shading/correction.h"

#include <QFloat16>
#include <algorithm>
#include <bit>
#include <cmath>

namespace shading {
namespace {
using simulator::Plane;
using simulator::SensorLayout;

constexpr uint32_t kTerms = simulator::kPolynomialTerms;

struct Polynomial {
    double column = 0, row = 0; ///< of the origin, pixels
    simulator::PerPlane<std::array<double, simulator::kCoefficientCount>> coefficients{};
};

std::optional<Polynomial> polynomialOf(SensorLayout const& layout, SensorLayout::Bank const& bank,
                                       RegisterValues const& values) {
    bool isWhole = true;
    auto const valueAt = [&](simulator::RegisterPlace const& place) {
        auto const found = values.find({place.id, place.address});
        isWhole = isWhole && found != values.end();
        return found == values.end() ? 0 : found->second;
    };
    SensorLayout::Origin const& origin = layout.originOf(bank);
    Polynomial polynomial{double(valueAt(origin.column)), double(valueAt(origin.row))};
    for (size_t plane = 0; plane < simulator::kPlaneCount; ++plane)
        for (uint32_t i = 0; i < simulator::kCoefficientCount; ++i)
            polynomial.coefficients[plane][i] = coefficientOf(valueAt(bank.planes[plane].place(i)));
    return isWhole ? std::optional(polynomial) : std::nullopt;
}

// sum over p, q of c(p, q) u^p v^q, as the sensor computes it.
double valueAt(Polynomial const& polynomial, Plane plane, double u, double v) {
    auto const& coefficients = polynomial.coefficients[plane];
    double sum = 0;
    for (uint32_t p = kTerms; p-- > 0;) {
        double inV = 0;
        for (uint32_t q = kTerms; q-- > 0;)
            inV = inV * v + coefficients[kTerms * p + q];
        sum = sum * u + inV;
    }
    return std::max(0.0, sum);
}

Gain product(SensorLayout const& layout, std::vector<Polynomial> const& factors) {
    double const width = layout.width, height = layout.height;
    return [=](Plane plane, double x, double y) {
        double gain = 1;
        for (Polynomial const& factor : factors)
            gain *= valueAt(factor, plane, (x * width - factor.column) / (width / 2),
                            (y * height - factor.row) / (height / 2));
        return gain;
    };
}
} // namespace

double coefficientOf(uint32_t value) {
    auto const number = double(float(std::bit_cast<qfloat16>(uint16_t(value))));
    return std::isnan(number) ? 0 : std::clamp(number, -kLargestCoefficient, kLargestCoefficient);
}

std::optional<SensorLayout> layoutOf(simulator::SimulatedCamera const& camera, QString* error) {
    return simulator::parseSensorLayout(
        static_cast<char const*>(vy_SensorInfo(camera.handle())->sensorData),
        QStringLiteral("layout of the profile %1").arg(camera.description().profile), error);
}

std::map<uint32_t, Gain> gainsIn(SensorLayout const& layout, RegisterValues const& values) {
    std::optional<Polynomial> base;
    std::map<uint32_t, Polynomial> tables;
    for (SensorLayout::Bank const& bank : layout.banks)
        if (auto const polynomial = polynomialOf(layout, bank, values)) {
            if (bank.slot == simulator::kBaseSlot)
                base = polynomial;
            else
                tables[bank.slot] = *polynomial;
        }
    std::map<uint32_t, Gain> gains;
    for (auto const& [slot, table] : tables)
        gains[slot] = product(layout, base ? std::vector{*base, table} : std::vector{table});
    if (gains.empty() && base)
        gains[simulator::kBaseSlot] = product(layout, {*base});
    return gains;
}
} // namespace shading
