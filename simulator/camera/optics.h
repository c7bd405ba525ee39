#pragma once

#include "simulator/camera/illuminant.h"
#include "simulator/camera/sensor_array.h"
#include "simulator/camera/simulated_camera.h"
#include "simulator/files/json_place.h"

#include <array>
#include <span>
#include <vector>

namespace simulator {
/// The light that a lens lets through, without colour.
struct Lens {
    double cornerAngle = 0;             ///< degrees between the axis and the ray to the corner
    std::array<double, 3> vignetting{}; ///< of 1 + a r^2 + b r^4 + c r^6, r = 1 in the corner
    std::array<double, 2> centre{};     ///< column and row in half-widths and half-heights off the middle
};

/// Terms u, v, u^2, u v, v^2 of a plane's deviation from the lens, u and v from -1 to 1 over the array.
using ColourTerms = std::array<double, 5>;

/// Everything that lies between the scene and the photosites.
struct Optics {
    Lens lens;
    std::vector<double> temperatures{};           ///< of the illuminants, kelvin, ascending
    std::vector<PerPlane<ColourTerms>> shading{}; ///< colour shading under each of them
    std::array<ColourFilter, 3> filters{};        ///< red, green, blue
};

[[nodiscard]] Optics readOptics(files::JsonPlace const& place);

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
    PerPlane<ColourTerms> m_terms{}; ///< of the illuminant
};

/// One value for each photosite, row by row in the array's own order.
using Field = std::vector<float>;

/// The light behind each photosite's filter, relative to what green gets in the middle of a flat field. The
/// lamp's level is left out, as it is but a factor.
[[nodiscard]] Field lightField(SensorArray const& array, LensResponse const& lens,
                               std::array<ColourFilter, 3> const& filters, Light const& light);
} // namespace simulator
