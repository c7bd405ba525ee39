#include "simulator/camera/light_field.h"

#include <algorithm>

namespace simulator {
namespace {
// The object is a disc right of and above the picture's middle; lengths in picture heights.
constexpr double kObjectColumn = 0.62; // of the width
constexpr double kObjectRow = 0.4;     // of the height
constexpr double kObjectRadius = 0.15;
constexpr float kObjectReflectance = 0.15F;

float colourOf(Plane plane, std::array<double, 3> const& colour) {
    return float(plane == Plane::Red ? colour[0] : plane == Plane::Blue ? colour[2] : colour[1]);
}

// The ramp as the picture shows it, its mean left at 1.
std::vector<float> rampOf(SensorArray const& array, double gradient) {
    std::vector<float> ramp(array.width);
    for (uint32_t x = 0; x < array.width; ++x) {
        uint32_t const column = array.isMirrored() ? array.width - 1 - x : x;
        ramp[x] = float(std::max(0.0, 1 + gradient * ((column + 0.5) / array.width - 0.5)));
    }
    return ramp;
}

void darkenObject(SensorArray const& array, Field& field) {
    double const radius = kObjectRadius * array.height;
    for (uint32_t row = 0; row < array.height; ++row) {
        double const down = row + 0.5 - kObjectRow * array.height;
        float* const line = &field[size_t(array.arrayRow(row)) * array.width];
        for (uint32_t column = 0; column < array.width; ++column) {
            double const across = column + 0.5 - kObjectColumn * array.width;
            if (across * across + down * down < radius * radius)
                line[array.isMirrored() ? array.width - 1 - column : column] *= kObjectReflectance;
        }
    }
}
} // namespace

Field lightField(SensorArray const& array, LensResponse const& lens, std::array<double, 3> const& colour,
                 Light const& light) {
    Field field(array.pixels());
    std::vector<float> const ramp = rampOf(array, light.gradient);
    std::vector<float> response(array.width);
    for (uint32_t y = 0; y < array.height; ++y) {
        float* const line = &field[size_t(y) * array.width];
        for (uint32_t first = 0; first < 2; ++first) {
            Plane const plane = array.planeAt(first, y);
            float const factor = colourOf(plane, colour);
            lens.row(plane, y, response);
            for (uint32_t x = first; x < array.width; x += 2)
                line[x] = response[x] * ramp[x] * factor;
        }
    }
    if (light.objectInPicture)
        darkenObject(array, field);
    return field;
}
} // namespace simulator
