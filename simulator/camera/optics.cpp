#include "simulator/camera/optics.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace simulator {
namespace {
using files::JsonPlace;

constexpr double kSteepestAngle = 80; // degrees
constexpr double kLargestCentreOffset = 0.5;
constexpr double kLargestTerm = 2;
constexpr size_t kMostIlluminants = 16;

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

Optics readOptics(JsonPlace const& place) {
    JsonPlace const lens = place["lens"];
    Optics optics{.lens = {.cornerAngle = lens["cornerAngle"].number(0, kSteepestAngle),
                           .vignetting = lens["vignetting"].numbers<3>(kLargestTerm),
                           .centre = lens["centre"].numbers<2>(kLargestCentreOffset)}};
    for (JsonPlace const& item : place["colourShading"].someItems(kMostIlluminants, "illuminant")) {
        double const temperature = item["temperature"].number(500, 50000);
        if (!optics.temperatures.empty() && temperature <= optics.temperatures.back())
            item["temperature"].fail(QStringLiteral("the temperatures must ascend"));
        optics.temperatures.push_back(temperature);
        auto const terms = [&](char const* plane) { return item[plane].numbers<5>(kLargestTerm); };
        optics.shading.push_back({terms("greenRed"), terms("red"), terms("blue"), terms("greenBlue")});
    }
    auto const readFilter = [&](char const* colour) {
        JsonPlace const filter = place["filters"][colour];
        return ColourFilter{.peak = filter["peak"].number(380, 780),
                            .width = filter["width"].number(1, 200),
                            .sensitivity = filter["sensitivity"].number(0.01, 10)};
    };
    optics.filters = {readFilter("red"), readFilter("green"), readFilter("blue")};
    return optics;
}

AnalyticLens::AnalyticLens(Optics const& optics, SensorArray const& array, double colourTemperature)
    : m_array(array), m_lens(optics.lens) {
    IlluminantBlend const blend = blendAt(optics.temperatures, colourTemperature);
    for (size_t plane = 0; plane < kPlaneCount; ++plane)
        for (size_t term = 0; term < m_terms[plane].size(); ++term)
            m_terms[plane][term] =
                blend.mix(optics.shading[blend.lower][plane][term], optics.shading[blend.upper][plane][term]);
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
    ColourTerms const& terms = m_terms[plane];

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

Field lightField(SensorArray const& array, LensResponse const& lens,
                 std::array<ColourFilter, 3> const& filters, Light const& light) {
    std::array<double, 3> const colour = illuminantResponse(filters, light.colourTemperature);
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
