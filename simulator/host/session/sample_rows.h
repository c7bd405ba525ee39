#pragma once

#include "simulator/camera/simulated_camera.h"

#include <vector>

namespace pictara {
/// One row of samples on a linear scale, 0 at the black level and 1 at full scale.
struct ColourRow {
    std::vector<float> red, green, blue;
};

/// Completes the colours of Bayer rows: each missing colour is the mean of its nearest samples (bilinear). At
/// the borders the picture is mirrored about its outermost samples, which keeps the pattern.
class BayerRows {
public:
    /// The frame must be Raw8 or Raw12, hold at least 2 x 2 pixels, and outlive this object.
    BayerRows(simulator::Frame const& frame, simulator::CameraDescription const& camera, float redGain,
              float blueGain);

    /// Of an ideal frame, which outlives this object.
    BayerRows(simulator::IdealFrame const& frame, simulator::CameraDescription const& camera, float redGain,
              float blueGain);

    /// Fills the row `y`; rows are asked for from the top down.
    void read(uint32_t y, ColourRow& out);

private:
    void load(int64_t y, std::vector<float>& samples) const;
    [[nodiscard]] int64_t mirrored(int64_t y) const;
    [[nodiscard]] bool isRedRow(int64_t y) const { return ((y ^ m_redRow) & 1) == 0; }

    BayerRows(uint32_t width, int64_t height, simulator::CameraDescription const& camera, float redGain,
              float blueGain);

    simulator::Frame const* m_frame = nullptr; // either this one
    simulator::IdealFrame const* m_ideal = nullptr;
    size_t m_width;
    int64_t m_height;
    int64_t m_redColumn, m_redRow;
    float m_black, m_scale, m_redGain, m_blueGain;
    std::vector<float> m_above, m_present, m_below; // each with one mirrored sample at either end
    std::vector<float> m_isGreen;                   // 1 at the green sites of a red row, padded alike
    bool m_started = false;
};

/// Rows of a YCbCr frame (two bytes a pixel, Y Cb Y Cr), whose tone is linear: the sensor does its colours,
/// not its gamma. Chroma of a pair holds for both pixels.
class YcbcrRows {
public:
    YcbcrRows(simulator::Frame const& frame, simulator::CameraDescription const& camera, float redGain,
              float blueGain);
    void read(uint32_t y, ColourRow& out) const;

private:
    simulator::Frame const& m_frame;
    float m_lumaLow, m_lumaScale, m_chromaScale, m_redGain, m_blueGain;
};

/// Rows of an RGB-32 frame, which is linear.
void readRgb32Row(simulator::Frame const& frame, uint32_t y, float redGain, float blueGain, ColourRow& out);
} // namespace pictara
