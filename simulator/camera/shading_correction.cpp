#include "simulator/camera/shading_correction.h"

namespace simulator {
ShadingCorrection::ShadingCorrection(Profile const& profile, RegisterMap& registers)
    : m_switch(profile.correctionSwitch),
      m_switchRegister(registers.find(profile.correctionSwitch.reg.constData())) {
    if (SensorLayout::Bank const* const base = profile.layout.bank(kBaseSlot))
        m_base.emplace(profile.array, *base, registers);
    if (!profile.tableChoice)
        return;
    m_blend.emplace(*profile.tableChoice, registers);
    for (uint32_t const slot : kTableSlots)
        m_tables.emplace_back(profile.array, *profile.layout.bank(slot), registers);
}

bool ShadingCorrection::isOn() const { return (m_switchRegister->value & m_switch.mask) == m_switch.value; }

Field const& ShadingCorrection::gains(double kelvin) {
    if (!m_blend)
        return m_base->gains();
    IlluminantBlend const blend = m_blend->at(kelvin);
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
} // namespace simulator
