#pragma once

#include "tests/support/solver_sensor.h"
#include "tests/support/synthetic.h"

#include <map>
#include <vector>

/// A register list as the sensor understands it.
class Correction {
public:
    Correction(TestSensor const& sensor, std::vector<sf_RegEntry> const& registers);

    /// Gain of a plane (0 greenRed, 1 red, 2 blue, 3 greenBlue) by the bank of a slot.
    [[nodiscard]] double gain(uint32_t slot, uint32_t plane, double x, double y) const;
    [[nodiscard]] double gain(uint32_t slot, Colour colour, double x, double y) const;

private:
    TestSensor m_sensor;
    std::map<uint32_t, uint32_t> m_registers;
};

/// A corrected flat field in 32 x 18 blocks.
struct FieldQuality {
    double colourDeviation = 0; ///< largest distance of a block from the mean in a*, b*
    double worstLuminance = 0;  ///< largest relative deviation from the centre block
    double greenImbalance = 0;  ///< largest change of the ratio of the two greens
};

/// Shows the field as a host would (white balance on the centre, colour matrix, exponent 0.45).
[[nodiscard]] FieldQuality measure(TestSensor const& sensor, Response const& corrected);

/// The response after the correction of one or two banks.
[[nodiscard]] Response after(Response const& response, Correction const& correction,
                             std::vector<uint32_t> const& banks = {0});
