#pragma once

#include "simulator/camera/simulated_camera.h"
#include "simulator/files/json_place.h"
#include "simulator/files/sensor_layout.h"

#include <QString>
#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

namespace simulator {
/// The pixel array and how it is read out.
struct SensorArray {
    uint32_t width = 0;       ///< pixels, even
    uint32_t height = 0;      ///< pixels, even
    uint32_t bayerPhase = 0;  ///< bit 0: column, bit 1: row of the first red pixel of the array itself
    uint32_t orientation = 0; ///< bit 0: the read-out mirrors, bit 1: it turns upside down

    [[nodiscard]] size_t pixels() const { return size_t(width) * height; }
    /// Column and row of the array that the delivered frame shows there, and the other way round.
    [[nodiscard]] uint32_t arrayColumn(uint32_t x) const {
        return (orientation & 1) != 0 ? width - 1 - x : x;
    }
    [[nodiscard]] uint32_t arrayRow(uint32_t y) const { return (orientation & 2) != 0 ? height - 1 - y : y; }
    [[nodiscard]] Plane planeAt(uint32_t x, uint32_t y) const {
        constexpr Plane kPlanes[] = {Plane::Red, Plane::GreenRed, Plane::GreenBlue, Plane::Blue};
        return kPlanes[((x ^ bayerPhase) & 1) | ((y << 1 ^ bayerPhase) & 2)];
    }
    /// The phase of the delivered frame: a mirrored row of even length begins with the other colour.
    [[nodiscard]] uint32_t deliveredPhase() const { return bayerPhase ^ orientation; }
};

/// A colour filter with the pixel behind it: a bell curve over the wavelength.
struct ColourFilter {
    double peak = 0;        ///< nanometres
    double width = 0;       ///< standard deviation, nanometres
    double sensitivity = 0; ///< at the peak, relative to the other filters
};

/// What the sensor's filters make of a black body: red, green, blue relative to green.
[[nodiscard]] std::array<double, 3> illuminantResponse(std::array<ColourFilter, 3> const& filters,
                                                       double colourTemperature);

/// Where a colour temperature lies in a row of illuminants: linear in 1/K between two neighbours (that is how
/// sensors change along the Planckian locus), the nearest one outside.
struct IlluminantBlend {
    size_t lower = 0;
    size_t upper = 0;
    double share = 0; ///< of the upper one

    [[nodiscard]] double mix(double lowerValue, double upperValue) const {
        return lowerValue + share * (upperValue - lowerValue);
    }
};

/// `temperatures` ascend and are not empty.
[[nodiscard]] IlluminantBlend blendAt(std::vector<double> const& temperatures, double colourTemperature);

/// Terms u, v, u^2, u v, v^2 of a plane's deviation from the lens, u and v from -1 to 1 over the array.
using ColourTerms = std::array<double, 5>;

/// Everything that lies between the scene and the photosites.
struct Optics {
    double cornerAngle = 0;             ///< degrees between the axis and the ray to the corner
    std::array<double, 3> vignetting{}; ///< of 1 + a r^2 + b r^4 + c r^6, r = 1 in the corner
    std::array<double, 2> centre{};     ///< column and row in half-widths and half-heights off the middle
    std::vector<double> temperatures{}; ///< of the illuminants, kelvin, ascending
    std::vector<PerPlane<ColourTerms>> shading{}; ///< colour shading under each of them
    std::array<ColourFilter, 3> filters{};        ///< red, green, blue
};

[[nodiscard]] Optics readOptics(files::JsonPlace const& place);

/// How much of the scene's light a lens lets through to the photosites of a plane, relative to the brightest
/// place: fills one value for each column of the array's row `y`.
using LensRows = std::function<void(Plane plane, uint32_t y, std::span<float> response)>;

/// The lens that a profile describes: cos^4 law (natural vignetting), times a radial polynomial for the
/// barrel's own vignetting, times the colour shading of the plane under one illuminant. What would correct it
/// is the reciprocal of that product, which no polynomial of the sensor's equals.
[[nodiscard]] LensRows analyticLens(Optics const& optics, SensorArray const& array, double colourTemperature);

/// The shading of a real camera module: correcting gains on a grid of cells under several illuminants.
struct MeasuredShading {
    struct Illuminant {
        double temperature = 0;                   ///< kelvin
        std::array<std::vector<double>, 3> gains; ///< red, green, blue; row by row from the top left
    };

    QString name;
    uint32_t columns = 0;
    uint32_t rows = 0;
    std::vector<Illuminant> illuminants; ///< in ascending order of temperature
};

/// Reads a file of the format shading-gains-1. Empty with a message that names the fault and its place in
/// `error` when it is malformed.
[[nodiscard]] SIMULATED_CAMERA_API std::optional<MeasuredShading> readMeasuredShading(QString const& file,
                                                                                      QString* error);

/// A measured lens under one illuminant: the response is 1 / gain at the centres of the cells, a bicubic
/// surface between them (cubic convolution, Keys 1981, a = -1/2), and goes on linearly to the border.
[[nodiscard]] SIMULATED_CAMERA_API LensRows measuredLens(MeasuredShading const& shading,
                                                         SensorArray const& array, double colourTemperature);

/// One value for each photosite, row by row in the array's own order.
using Field = std::vector<float>;

/// The light behind each photosite's filter, relative to what green gets in the middle of a flat field. The
/// lamp's level is left out, as it is but a factor.
[[nodiscard]] Field lightField(SensorArray const& array, LensRows const& lens,
                               std::array<ColourFilter, 3> const& filters, Light const& light);
} // namespace simulator
