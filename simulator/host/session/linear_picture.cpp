#include "simulator/host/session/linear_picture.h"

#include <array>

namespace pictara {
namespace {
using Matrix = std::array<float, 9>;
using RowUse = std::function<void(uint32_t, ColourRow const&)>;

// Luminance weights of linear sRGB (IEC 61966-2-1).
constexpr double kLuminance[3] = {0.2126, 0.7152, 0.0722};

// Saturation moves each colour away from its luminance; it acts after the colour matrix.
Matrix colourMatrix(simulator::CameraDescription const& camera, ColourSettings const& settings) {
    Matrix result{};
    for (size_t row = 0; row < 3; ++row)
        for (size_t column = 0; column < 3; ++column) {
            double sum = 0;
            for (size_t k = 0; k < 3; ++k) {
                double const own = row == k ? settings.saturation : 0;
                double const saturation = own + (1 - settings.saturation) * kLuminance[k];
                double const unity = k == column ? 1 : 0;
                sum += saturation * (settings.colourCorrection ? camera.colourMatrix[3 * k + column] : unity);
            }
            result[3 * row + column] = float(sum);
        }
    return result;
}

void multiply(Matrix const& m, ColourRow& row) {
    float *const red = row.red.data(), *const green = row.green.data(), *const blue = row.blue.data();
    for (size_t x = 0; x < row.red.size(); ++x) {
        float const r = red[x], g = green[x], b = blue[x];
        red[x] = m[0] * r + m[1] * g + m[2] * b;
        green[x] = m[3] * r + m[4] * g + m[5] * b;
        blue[x] = m[6] * r + m[7] * g + m[8] * b;
    }
}

template <typename ReadRow>
void handOut(uint32_t height, simulator::CameraDescription const& camera, ColourSettings const& settings,
             RowUse const& use, ReadRow const& readRow) {
    Matrix const matrix = colourMatrix(camera, settings);
    bool const plain = !settings.colourCorrection && settings.saturation == 1;
    ColourRow row;
    for (uint32_t y = 0; y < height; ++y) {
        readRow(y, row);
        if (!plain)
            multiply(matrix, row);
        use(y, row);
    }
}

uint64_t rowBytes(simulator::Frame const& frame) {
    switch (frame.type) {
    case simulator::FrameType::Raw8:
        return frame.width;
    case simulator::FrameType::Raw12:
    case simulator::FrameType::Ycbcr:
        return uint64_t(frame.width) * 2;
    case simulator::FrameType::Rgb32:
        return uint64_t(frame.width) * 4;
    }
    return 0;
}
} // namespace

bool isWhole(simulator::Frame const& frame) {
    uint64_t const needed = rowBytes(frame);
    if (needed == 0 || frame.width < 2 || frame.height < 2 || frame.pitch < needed)
        return false;
    return uint64_t(frame.pixels.size()) >= uint64_t(frame.pitch) * uint64_t(frame.height - 1) + needed;
}

void forEachLinearRow(simulator::Frame const& frame, simulator::CameraDescription const& camera,
                      ColourSettings const& settings, RowUse const& use) {
    if (!isWhole(frame))
        return;
    auto const redGain = float(settings.redGain);
    auto const blueGain = float(settings.blueGain);
    auto const readAll = [&](auto&& readRow) {
        handOut(uint32_t(frame.height), camera, settings, use, readRow);
    };
    if (frame.type == simulator::FrameType::Rgb32) {
        readAll([&](uint32_t y, ColourRow& row) { readRgb32Row(frame, y, redGain, blueGain, row); });
    } else if (frame.type == simulator::FrameType::Ycbcr) {
        YcbcrRows const rows(frame, camera, redGain, blueGain);
        readAll([&](uint32_t y, ColourRow& row) { rows.read(y, row); });
    } else {
        BayerRows rows(frame, camera, redGain, blueGain);
        readAll([&](uint32_t y, ColourRow& row) { rows.read(y, row); });
    }
}

void forEachLinearRow(simulator::IdealFrame const& frame, simulator::CameraDescription const& camera,
                      ColourSettings const& settings, RowUse const& use) {
    if (frame.width < 2 || frame.height < 2 || frame.samples.size() != size_t(frame.width) * frame.height)
        return;
    BayerRows rows(frame, camera, float(settings.redGain), float(settings.blueGain));
    handOut(frame.height, camera, settings, use, [&](uint32_t y, ColourRow& row) { rows.read(y, row); });
}
} // namespace pictara
