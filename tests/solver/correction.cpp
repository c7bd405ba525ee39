#include "tests/solver/correction.h"

#include <Eigen/Core>
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

Correction::Correction(TestSensor const& sensor, std::vector<sf_RegEntry> const& registers)
    : m_sensor(sensor) {
    for (sf_RegEntry const& entry : registers)
        m_registers[entry.second] = entry.third;
}

double Correction::gain(uint32_t slot, Colour colour, double x, double y) const {
    constexpr uint32_t kPlanes[] = {1, 0, 2, 3};
    double const u = (x - m_registers.at(kOriginColumn)) / (0.5 * m_sensor.width);
    double const v = (y - m_registers.at(kOriginRow)) / (0.5 * m_sensor.height);
    double sum = 0;
    for (uint32_t i = 0; i < 25; ++i) {
        uint32_t const bits = m_registers.at(planeAddress(slot, kPlanes[colour]) + 2 * i);
        sum += double(std::bit_cast<Eigen::half>(uint16_t(bits))) * std::pow(u, i / 5) * std::pow(v, i % 5);
    }
    return sum;
}

Response after(Response const& response, Correction const& correction, std::vector<uint32_t> const& banks) {
    return [=](Colour colour, double x, double y) {
        double value = response(colour, x, y);
        for (uint32_t const slot : banks)
            value *= correction.gain(slot, colour, x, y);
        return value;
    };
}

FieldQuality measure(TestSensor const& sensor, Response const& corrected) {
    constexpr int kColumns = 32, kRows = 18;
    auto const relative = [&](Colour colour, int column, int row) {
        auto const at = [&](int x, int y) {
            return corrected(colour, (x + 0.5) * sensor.width / kColumns, (y + 0.5) * sensor.height / kRows);
        };
        return at(column, row) / at(kColumns / 2, kRows / 2);
    };
    std::vector<Colour> others{kColourRed, kColourBlue};
    if (std::strcmp(sensor.input, "bayer") == 0)
        others.push_back(kColourGreenBlue);
    FieldQuality quality;
    for (int block = 0; block < kColumns * kRows; ++block) {
        double const green = relative(kColourGreen, block % kColumns, block / kColumns);
        quality.luminance = std::max(quality.luminance, std::abs(green - 1));
        for (Colour const colour : others)
            quality.colour = std::max(
                quality.colour, std::abs(relative(colour, block % kColumns, block / kColumns) / green - 1));
    }
    return quality;
}

void expectWithin(FieldQuality const& quality, FieldQuality const& worst) {
    EXPECT_LE(quality.colour, worst.colour);
    EXPECT_LE(quality.luminance, worst.luminance);
}
