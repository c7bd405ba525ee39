#include "tests/solver/correction.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

constexpr int kColumns = 32;
constexpr int kRows = 18;
constexpr double kGamma = 0.45;
constexpr double kCentreValue = 185;

using Rgb = std::array<double, 3>;
using PlaneMeans = std::array<double, 4>; // by Colour

double half(uint32_t bits) {
    int const exponent = static_cast<int>(bits >> 10 & 31);
    double const fraction = (bits & 1023) / 1024.0;
    double const magnitude =
        exponent == 0 ? std::ldexp(fraction, -14) : std::ldexp(1 + fraction, exponent - 15);
    return (bits & 0x8000) != 0 ? -magnitude : magnitude;
}

/// sRGB to linear light (IEC 61966-2-1).
double linear(double value) {
    double const share = value / 255;
    return share <= 0.04045 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
}

double labCurve(double t) {
    return t > 0.008856 ? std::cbrt(t) : 7.787 * t + 16.0 / 116;
}

/// a* and b* (CIE 1976, D65) of a displayed colour of 0 to 255.
std::array<double, 2> chroma(Rgb const& display) {
    double const r = linear(display[0]);
    double const g = linear(display[1]);
    double const b = linear(display[2]);
    double const x = labCurve((0.4124 * r + 0.3576 * g + 0.1805 * b) / 0.9505);
    double const y = labCurve(0.2126 * r + 0.7152 * g + 0.0722 * b);
    double const z = labCurve((0.0193 * r + 0.1192 * g + 0.9505 * b) / 1.089);
    return {500 * (x - y), 200 * (y - z)};
}

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
            sum += half(m_registers.at(planeAddress(slot, plane) + 2 * (5 * p + q))) * std::pow(u, p) *
                   std::pow(v, q);
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
    std::vector<std::array<double, 2>> chromas;
    std::vector<double> greens;
    double meanA = 0;
    double meanB = 0;
    FieldQuality quality;
    for (PlaneMeans const& block : blocks) {
        chromas.push_back(
            chroma(displayed({block[0] / centre[0], block[1] / centre[1], block[2] / centre[2]})));
        meanA += chromas.back()[0] / (kColumns * kRows);
        meanB += chromas.back()[1] / (kColumns * kRows);
        greens.push_back(block[1]);
        double const balance = block[kColourGreenBlue] / centre[kColourGreenBlue];
        quality.greenImbalance = std::max(
            quality.greenImbalance, std::abs(balance / (block[kColourGreen] / centre[kColourGreen]) - 1));
        quality.worstLuminance = std::max(quality.worstLuminance, std::abs(block[1] / centre[1] - 1));
    }
    for (auto const& [a, b] : chromas)
        quality.colourDeviation = std::max(quality.colourDeviation, std::hypot(a - meanA, b - meanB));
    auto const middle = greens.begin() + kColumns * kRows / 2;
    std::nth_element(greens.begin(), middle, greens.end());
    double const median = *middle;
    for (double const green : greens)
        quality.meanLuminanceError += std::abs(green / median - 1) / (kColumns * kRows);
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
