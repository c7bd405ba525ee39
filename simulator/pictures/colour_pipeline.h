#pragma once

#include "simulator/pictures/linear_rows.h"

#include <QImage>
#include <array>

namespace pictara {
/// From linear light to display values 0 to 255: black lift, then the display exponent, then contrast about
/// mid-grey. Light below black shows 0, light above full scale shows 255 at a contrast of 1.
class ToneCurve {
public:
    explicit ToneCurve(ColourSettings const& settings);
    [[nodiscard]] uint8_t operator()(float light) const;

private:
    static constexpr int kSteps = (1 << 14) - 1; // fine enough for the steep foot of an exponent of 0.45
    std::array<uint8_t, kSteps + 1> m_values;
};

/// Turns a camera's frames into RGB-32 pictures: in memory blue, green, red, 255.
class ColourPipeline {
public:
    explicit ColourPipeline(simulator::CameraDescription const& camera);
    /// Draws the frame into `picture`, whose memory is reused when it fits and nobody else holds it. A frame
    /// that is not whole leaves a null picture.
    void render(simulator::Frame const& frame, ColourSettings const& settings, QImage& picture);

private:
    simulator::CameraDescription m_camera;
    ColourSettings m_settings;
    ToneCurve m_tone;
};
} // namespace pictara
