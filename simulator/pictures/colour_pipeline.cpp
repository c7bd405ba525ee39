#include "simulator/pictures/colour_pipeline.h"

#include <algorithm>
#include <cmath>

namespace pictara {
ToneCurve::ToneCurve(ColourSettings const& settings) {
    for (int i = 0; i <= kSteps; ++i) {
        double const lifted = (double(i) / kSteps - settings.blackLift) / (1 - settings.blackLift);
        double const shown = std::pow(std::max(lifted, 0.0), settings.displayExponent);
        double const contrasted = std::clamp((shown - 0.5) * settings.contrast + 0.5, 0.0, 1.0);
        m_values[size_t(i)] = uint8_t(std::lround(contrasted * 255));
    }
}

uint8_t ToneCurve::operator()(float light) const {
    // In this order a light that is not a number shows as black.
    float const step = std::min(std::max(0.0F, light * float(kSteps) + 0.5F), float(kSteps));
    return m_values[size_t(int(step))];
}

ColourPipeline::ColourPipeline(simulator::CameraDescription const& camera)
    : m_camera(camera), m_tone(m_settings) {}

void ColourPipeline::render(simulator::Frame const& frame, ColourSettings const& settings, QImage& picture) {
    if (!(settings == m_settings)) {
        m_settings = settings;
        m_tone = ToneCurve(settings);
    }
    QSize const size(int(frame.width), std::max(frame.height, 0));
    if (picture.size() != size || picture.format() != QImage::Format_RGB32)
        picture = QImage(size, QImage::Format_RGB32);
    uchar* const bits = picture.bits();
    qsizetype const pitch = picture.bytesPerLine();
    auto const draw = [&](uint32_t y, ColourRow const& row) {
        auto* const out = reinterpret_cast<QRgb*>(bits + qsizetype(y) * pitch);
        for (size_t x = 0; x < frame.width; ++x)
            out[x] = qRgb(m_tone(row.red[x]), m_tone(row.green[x]), m_tone(row.blue[x]));
    };
    if (!readLinear(frame, m_camera, settings, draw))
        picture = {};
}
} // namespace pictara
