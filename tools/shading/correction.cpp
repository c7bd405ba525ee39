#include "tools/shading/correction.h"

#include "simulator/solver/tensor_polynomial.h"

#include <QFloat16>
#include <algorithm>
#include <bit>
#include <cmath>

namespace shading {
namespace {
using simulator::Plane;
using simulator::SensorLayout;

struct Polynomial {
    double column = 0, row = 0; ///< of the origin, pixels
    simulator::PerPlane<solver::Terms> coefficients{};
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
            polynomial.coefficients[plane](i) = coefficientOf(valueAt(bank.planes[plane].place(i)));
    return isWhole ? std::optional(polynomial) : std::nullopt;
}

Gain product(SensorLayout const& layout, std::vector<Polynomial> const& factors) {
    double const width = layout.width, height = layout.height;
    return [=](Plane plane, double x, double y) {
        double gain = 1;
        for (auto const& [column, row, coefficients] : factors) {
            auto const u = Eigen::ArrayXd::Constant(1, (x * width - column) / (width / 2));
            auto const v = Eigen::ArrayXd::Constant(1, (y * height - row) / (height / 2));
            gain *= std::max(0.0, (solver::monomials(u, v) * coefficients[plane]).value());
        }
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
