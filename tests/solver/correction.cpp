#include "tests/solver/correction.h"

#include "pictures/lab.h"
#include "simulator/solver/binary16.h"

#include <algorithm>
#include <array>
#include <cmath>

using namespace kestra;

namespace {
constexpr int kColumns = 32;
constexpr int kRows = 18;
constexpr double kGamma = 0.45;
constexpr double kCentreValue = 185;

using Rgb = std::array<double, 3>;
using PlaneMeans = std::array<double, 4>; // by Colour

Rgb displayed(Rgb const& balanced) {
    constexpr double kMatrix[3][3] = {{1.6, -0.5, -0.1}, {-0.25, 1.5, -0.25}, {0, -0.6, 1.6}};
    double const exposure = std::pow(kCentreValue / 255, 1 / kGamma);
    Rgb result{};
    for (size_t i = 0; i < 3; ++i) {
        double sum = 0;
        for (size_t j = 0; j < 3; ++j)
            sum += kMatrix[i][j] * balanced[j] * exposure;
        result[i] = 255 * std::pow(std::clamp(sum, 0.0, 1.0), kGamma);
    }
    return result;
}

PlaneMeans blockMean(TestSensor const& sensor, Response const& response, int column, int row) {
    constexpr int kSteps = 4;
    PlaneMeans mean{};
    for (int i = 0; i < kSteps * kSteps; ++i) {
        double const x = (column + (i % kSteps + 0.5) / kSteps) * sensor.width / kColumns;
        double const y = (row + (i / kSteps + 0.5) / kSteps) * sensor.height / kRows;
        for (int colour = 0; colour < 4; ++colour)
            mean[static_cast<size_t>(colour)] +=
                response(static_cast<Colour>(colour), x, y) / (kSteps * kSteps);
    }
    return mean;
}
} // namespace

Correction::Correction(TestSensor const& sensor, std::vector<sf_RegEntry> const& registers)
    : m_sensor(sensor) {
    for (sf_RegEntry const& entry : registers)
        m_registers[entry.second] = entry.third;
}

double Correction::gain(uint32_t slot, uint32_t plane, double x, double y) const {
    double const u = (x - m_registers.at(kOriginColumn)) / (0.5 * m_sensor.width);
    double const v = (y - m_registers.at(kOriginRow)) / (0.5 * m_sensor.height);
    double sum = 0;
    for (uint32_t p = 0; p < 5; ++p)
        for (uint32_t q = 0; q < 5; ++q)
            sum +=
                solver::fromBinary16(uint16_t(m_registers.at(planeAddress(slot, plane) + 2 * (5 * p + q)))) *
                std::pow(u, p) * std::pow(v, q);
    return sum;
}

double Correction::gain(uint32_t slot, Colour colour, double x, double y) const {
    constexpr uint32_t kPlanes[] = {1, 0, 2, 3};
    return gain(slot, kPlanes[colour], x, y);
}

FieldQuality measure(TestSensor const& sensor, Response const& corrected) {
    std::vector<PlaneMeans> blocks;
    for (int row = 0; row < kRows; ++row)
        for (int column = 0; column < kColumns; ++column)
            blocks.push_back(blockMean(sensor, corrected, column, row));
    PlaneMeans const centre = blocks[kRows / 2 * kColumns + kColumns / 2];
    std::vector<Lab> chromas;
    double meanA = 0;
    double meanB = 0;
    FieldQuality quality;
    for (PlaneMeans const& block : blocks) {
        Rgb const shown = displayed({block[0] / centre[0], block[1] / centre[1], block[2] / centre[2]});
        chromas.push_back(rgbToLab(shown[0], shown[1], shown[2]));
        meanA += chromas.back().a / (kColumns * kRows);
        meanB += chromas.back().b / (kColumns * kRows);
        double const balance = block[kColourGreenBlue] / centre[kColourGreenBlue];
        quality.greenImbalance = std::max(
            quality.greenImbalance, std::abs(balance / (block[kColourGreen] / centre[kColourGreen]) - 1));
        quality.worstLuminance = std::max(quality.worstLuminance, std::abs(block[1] / centre[1] - 1));
    }
    for (Lab const& lab : chromas)
        quality.colourDeviation = std::max(quality.colourDeviation, std::hypot(lab.a - meanA, lab.b - meanB));
    return quality;
}

Response after(Response const& response, Correction const& correction, std::vector<uint32_t> const& banks) {
    return [=](Colour colour, double x, double y) {
        double value = response(colour, x, y);
        for (uint32_t const slot : banks)
            value *= correction.gain(slot, colour, x, y);
        return value;
    };
}
