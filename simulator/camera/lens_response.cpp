#include "simulator/camera/lens_response.h"
#include "simulator/camera/illuminant.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace simulator {
AnalyticLens::AnalyticLens(Optics const& optics, SensorArray const& array, double colourTemperature)
    : m_array(array), m_lens(optics.lens) {
    std::vector<double> temperatures;
    for (ColourShading const& illuminant : optics.shading)
        temperatures.push_back(illuminant.temperature);
    IlluminantBlend const blend = blendAt(temperatures, colourTemperature);
    for (size_t plane = 0; plane < kPlaneCount; ++plane)
        for (size_t term = 0; term < m_terms[plane].size(); ++term)
            m_terms[plane][term] = blend.mix(optics.shading[blend.lower].terms[plane][term],
                                             optics.shading[blend.upper].terms[plane][term]);
}

void AnalyticLens::row(Plane plane, uint32_t y, std::span<float> response) const {
    float const halfWidth = float(m_array.width) / 2;
    float const halfHeight = float(m_array.height) / 2;
    float const diagonal2 = halfWidth * halfWidth + halfHeight * halfHeight;
    auto const tangent = float(std::tan(m_lens.cornerAngle * std::numbers::pi / 180));
    float const tangent2 = tangent * tangent;
    auto const centreColumn = float(m_lens.centre[0]);
    auto const [a, b, c] =
        std::array{float(m_lens.vignetting[0]), float(m_lens.vignetting[1]), float(m_lens.vignetting[2])};
    ColourTerms const& terms = m_terms[size_t(plane)];

    float const v = (float(y) + 0.5F - halfHeight) / halfHeight;
    float const down = (v - float(m_lens.centre[1])) * halfHeight;
    auto const constant = float(1 + terms[1] * v + terms[4] * v * v);
    auto const linear = float(terms[0] + terms[3] * v);
    auto const square = float(terms[2]);
    constexpr float kDarkest = 0.001F; // a profile must not let the light become negative
    for (size_t x = 0; x < response.size(); ++x) {
        float const u = (float(uint32_t(x)) + 0.5F - halfWidth) / halfWidth;
        float const across = (u - centreColumn) * halfWidth;
        float const r2 = (across * across + down * down) / diagonal2;
        float const cosine2 = 1 / (1 + tangent2 * r2);
        float const vignetting = 1 + r2 * (a + r2 * (b + r2 * c));
        float const colour = constant + u * (linear + u * square);
        response[x] = std::max(kDarkest, cosine2 * cosine2 * vignetting * colour);
    }
}
} // namespace simulator
