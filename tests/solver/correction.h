#pragma once

#include "tests/support/solver_sensor.h"
#include "tests/support/synthetic.h"

#include <map>
#include <vector>

/// A register list as the sensor understands it.
class Correction {
public:
    Correction(TestSensor const& sensor, std::vector<sf_RegEntry> const& registers);

    /// Gain of a colour's plane by the bank of a slot.
    [[nodiscard]] double gain(uint32_t slot, Colour colour, double x, double y) const;

private:
    TestSensor m_sensor;
    std::map<uint32_t, uint32_t> m_registers;
};

/// A corrected flat field in 32 x 18 blocks: largest relative deviations from a block in the middle.
struct FieldQuality {
    double colour = 0; ///< of the ratio of red, blue or the sensor's second green to green
    double luminance = 0;
};

/// The response after the correction by the banks of these slots.
[[nodiscard]] Response after(Response const& response, Correction const& correction,
                             std::vector<uint32_t> const& banks = {0});
[[nodiscard]] FieldQuality measure(TestSensor const& sensor, Response const& corrected);
void expectWithin(FieldQuality const& quality, FieldQuality const& worst);
