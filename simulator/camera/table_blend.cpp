#include "simulator/camera/table_blend.h"

#include <algorithm>
#include <vector>

namespace simulator {
namespace {
constexpr size_t kMiddleTable = 1;
} // namespace

TableBlend::TableBlend(TableChoice const& choice, RegisterMap& registers) : m_automatic(choice.automatic) {
    std::transform(choice.temperatures.begin(), choice.temperatures.end(), m_temperatures.begin(),
                   [&](QByteArray const& name) { return registers.find(name.constData()); });
    if (m_automatic)
        m_automaticRegister = registers.find(m_automatic->reg.constData());
    if (!choice.zone.isEmpty())
        m_zone = registers.find(choice.zone.constData());
}

std::optional<size_t> TableBlend::heldTable() const {
    if (m_automatic && (m_automaticRegister->value & m_automatic->mask) != m_automatic->value)
        return kMiddleTable;
    if (m_zone && m_zone->value >= 1 && m_zone->value <= kTableCount)
        return m_zone->value - 1;
    return std::nullopt;
}

IlluminantBlend TableBlend::at(double kelvin) const {
    if (auto const held = heldTable())
        return {*held, *held, 0};
    auto const temperature = [&](size_t table) {
        return double(std::max(1U, m_temperatures[table]->value)); // 1/K needs one
    };
    std::array<size_t, kTableCount> order{0, 1, 2};
    std::sort(order.begin(), order.end(), [&](size_t left, size_t right) {
        return std::pair(temperature(left), left) < std::pair(temperature(right), right);
    });
    std::vector<double> ascending;
    std::transform(order.begin(), order.end(), std::back_inserter(ascending), temperature);
    IlluminantBlend const blend = blendAt(ascending, kelvin);
    return {order[blend.lower], order[blend.upper], blend.share};
}
} // namespace simulator
