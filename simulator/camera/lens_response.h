#pragma once

#include "simulator/camera/optics.h"
#include "simulator/camera/sensor_array.h"

#include <cstdint>
#include <span>

namespace simulator {
/// How much of the scene's light reaches the photosites of each plane, relative to the brightest place.
class LensResponse {
public:
    virtual ~LensResponse() = default;
    /// Fills one value for each column of the array's row `y`.
    virtual void row(Plane plane, uint32_t y, std::span<float> response) const = 0;

protected:
    LensResponse() = default;
    LensResponse(LensResponse const&) = default;
    LensResponse& operator=(LensResponse const&) = default;
};

/// The lens that a profile describes: cos^4 law (natural vignetting), times a radial polynomial for the
/// barrel's own vignetting, times the colour shading of the plane under one illuminant. What would correct it
/// is the reciprocal of that product, which no polynomial of the sensor's equals.
class AnalyticLens : public LensResponse {
public:
    AnalyticLens(Optics const& optics, SensorArray const& array, double colourTemperature);
    void row(Plane plane, uint32_t y, std::span<float> response) const override;

private:
    SensorArray m_array;
    Lens m_lens;
    std::array<ColourTerms, kPlaneCount> m_terms{}; ///< of the illuminant
};
} // namespace simulator
