#include "simulator/camera/optics.h"

#include <QFileInfo>
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
constexpr uint32_t kLargestGrid = 1024; // cells in a direction
constexpr double kLargestGain = 1000;

// The object is a disc right of and above the picture's middle; lengths in picture heights.
constexpr double kObjectColumn = 0.62; // of the width
constexpr double kObjectRow = 0.4;     // of the height
constexpr double kObjectRadius = 0.15;
constexpr float kObjectReflectance = 0.15F;

constexpr std::array<char const*, 3> kColourNames = {"red", "green", "blue"};

size_t colourOf(Plane plane) { return plane == Plane::Red ? 0 : plane == Plane::Blue ? 2 : 1; }

// Spectral radiance of a black body up to a constant factor (Planck's law, h c / k = 0.014388 m K).
double blackBody(double nanometres, double kelvin) {
    double const micrometres = nanometres / 1000;
    return std::pow(micrometres, -5) / std::expm1(14387.77 / (micrometres * kelvin));
}

double filtered(ColourFilter const& filter, double kelvin) {
    constexpr double kFirst = 380; // nanometres
    constexpr double kLast = 780;
    constexpr double kStep = 5;
    double sum = 0;
    for (double wavelength = kFirst; wavelength <= kLast; wavelength += kStep) {
        double const distance = (wavelength - filter.peak) / filter.width;
        sum += filter.sensitivity * std::exp(-0.5 * distance * distance) * blackBody(wavelength, kelvin);
    }
    return sum;
}

// The next of the illuminants, which ascend.
double readTemperature(JsonPlace const& place, double before) {
    double const temperature = place.number(500, 50000);
    if (temperature <= before)
        place.fail(QStringLiteral("the temperatures must ascend"));
    return temperature;
}

// The value at a whole position of a row of samples, which goes on linearly beyond both ends.
template <typename Sample>
double continued(Sample sample, int count, int position) {
    if (position < 0)
        return sample(0) + position * (sample(1) - sample(0));
    if (position >= count)
        return sample(count - 1) + (position - count + 1) * (sample(count - 1) - sample(count - 2));
    return sample(position);
}

// Cubic convolution between the samples around `position`, which is counted in samples.
template <typename Sample>
double interpolated(Sample sample, int count, double position) {
    double const whole = std::floor(position);
    double const t = position - whole;
    auto const at = int(whole);
    double const p0 = continued(sample, count, at - 1);
    double const p1 = continued(sample, count, at);
    double const p2 = continued(sample, count, at + 1);
    double const p3 = continued(sample, count, at + 2);
    return p1 + 0.5 * t * (p2 - p0 + t * (2 * p0 - 5 * p1 + 4 * p2 - p3 + t * (3 * (p1 - p2) + p3 - p0)));
}

void darkenObject(SensorArray const& array, Field& field) {
    double const radius = kObjectRadius * array.height;
    for (uint32_t y = 0; y < array.height; ++y)
        for (uint32_t x = 0; x < array.width; ++x) {
            double const across = x + 0.5 - kObjectColumn * array.width;
            double const down = y + 0.5 - kObjectRow * array.height;
            if (across * across + down * down < radius * radius)
                field[size_t(array.arrayRow(y)) * array.width + array.arrayColumn(x)] *= kObjectReflectance;
        }
}
} // namespace

std::array<double, 3> illuminantResponse(std::array<ColourFilter, 3> const& filters,
                                         double colourTemperature) {
    double const kelvin = std::clamp(colourTemperature, 1000.0, 25000.0);
    double const green = filtered(filters[1], kelvin);
    return {filtered(filters[0], kelvin) / green, 1.0, filtered(filters[2], kelvin) / green};
}

IlluminantBlend blendAt(std::vector<double> const& temperatures, double colourTemperature) {
    size_t const last = temperatures.size() - 1;
    auto const above = std::upper_bound(temperatures.begin(), temperatures.end(), colourTemperature);
    if (above == temperatures.begin())
        return {0, 0, 0};
    if (above == temperatures.end())
        return {last, last, 0};
    auto const upper = size_t(above - temperatures.begin());
    double const lowerMired = 1 / temperatures[upper - 1];
    double const upperMired = 1 / temperatures[upper];
    return {upper - 1, upper, (1 / colourTemperature - lowerMired) / (upperMired - lowerMired)};
}

Optics readOptics(JsonPlace const& place) {
    JsonPlace const lens = place["lens"];
    Optics optics{.cornerAngle = lens["cornerAngle"].number(0, kSteepestAngle),
                  .vignetting = lens["vignetting"].numbers<3>(kLargestTerm),
                  .centre = lens["centre"].numbers<2>(kLargestCentreOffset)};
    double last = 0;
    for (JsonPlace const& item : place["colourShading"].someItems(kMostIlluminants, "illuminant")) {
        last = readTemperature(item["temperature"], last);
        optics.temperatures.push_back(last);
        auto const terms = [&](char const* plane) { return item[plane].numbers<5>(kLargestTerm); };
        optics.shading.push_back({terms("greenRed"), terms("red"), terms("blue"), terms("greenBlue")});
    }
    for (size_t colour = 0; colour < kColourNames.size(); ++colour) {
        JsonPlace const filter = place["filters"][kColourNames[colour]];
        optics.filters[colour] = {.peak = filter["peak"].number(380, 780),
                                  .width = filter["width"].number(1, 200),
                                  .sensitivity = filter["sensitivity"].number(0.01, 10)};
    }
    return optics;
}

LensRows analyticLens(Optics const& optics, SensorArray const& array, double colourTemperature) {
    IlluminantBlend const blend = blendAt(optics.temperatures, colourTemperature);
    PerPlane<ColourTerms> allTerms{};
    for (size_t plane = 0; plane < kPlaneCount; ++plane)
        for (size_t term = 0; term < allTerms[plane].size(); ++term)
            allTerms[plane][term] =
                blend.mix(optics.shading[blend.lower][plane][term], optics.shading[blend.upper][plane][term]);
    float const halfWidth = float(array.width) / 2;
    float const halfHeight = float(array.height) / 2;
    float const diagonal2 = halfWidth * halfWidth + halfHeight * halfHeight;
    auto const tangent = float(std::tan(optics.cornerAngle * std::numbers::pi / 180));
    float const tangent2 = tangent * tangent;
    std::array const centre = {float(optics.centre[0]), float(optics.centre[1])};
    std::array const powers = {float(optics.vignetting[0]), float(optics.vignetting[1]),
                               float(optics.vignetting[2])};
    return [=](Plane plane, uint32_t y, std::span<float> response) {
        auto const [a, b, c] = powers;
        ColourTerms const& terms = allTerms[plane];
        float const v = (float(y) + 0.5F - halfHeight) / halfHeight;
        float const down = (v - centre[1]) * halfHeight;
        auto const constant = float(1 + terms[1] * v + terms[4] * v * v);
        auto const linear = float(terms[0] + terms[3] * v);
        auto const square = float(terms[2]);
        constexpr float kDarkest = 0.001F; // a profile must not let the light become negative
        for (size_t x = 0; x < response.size(); ++x) {
            float const u = (float(uint32_t(x)) + 0.5F - halfWidth) / halfWidth;
            float const across = (u - centre[0]) * halfWidth;
            float const r2 = (across * across + down * down) / diagonal2;
            float const cosine2 = 1 / (1 + tangent2 * r2);
            float const vignetting = 1 + r2 * (a + r2 * (b + r2 * c));
            float const colour = constant + u * (linear + u * square);
            response[x] = std::max(kDarkest, cosine2 * cosine2 * vignetting * colour);
        }
    };
}

std::optional<MeasuredShading> readMeasuredShading(QString const& file, QString* error) {
    error->clear();
    std::optional<QJsonObject> const whole = files::readJson(file, error);
    if (!whole)
        return std::nullopt;
    JsonPlace const root(*whole, QFileInfo(file).fileName(), error);
    (void)root["format"].choice({"shading-gains-1"});
    MeasuredShading shading{.name = root["name"].text(),
                            .columns = root["columns"].integer(2, kLargestGrid),
                            .rows = root["rows"].integer(2, kLargestGrid),
                            .illuminants = {}};
    double last = 0;
    for (JsonPlace const& item : root["illuminants"].someItems(kMostIlluminants, "illuminant")) {
        last = readTemperature(item["colour_temperature_K"], last);
        MeasuredShading::Illuminant illuminant{.temperature = last, .gains = {}};
        for (size_t colour = 0; colour < kColourNames.size(); ++colour)
            for (JsonPlace const& gain :
                 item[kColourNames[colour]].items(size_t(shading.columns) * shading.rows))
                illuminant.gains[colour].push_back(gain.number(1 / kLargestGain, kLargestGain));
        shading.illuminants.push_back(std::move(illuminant));
    }
    return error->isEmpty() ? std::optional(std::move(shading)) : std::nullopt;
}

LensRows measuredLens(MeasuredShading const& shading, SensorArray const& array, double colourTemperature) {
    std::vector<double> temperatures;
    for (MeasuredShading::Illuminant const& illuminant : shading.illuminants)
        temperatures.push_back(illuminant.temperature);
    IlluminantBlend const blend = blendAt(temperatures, colourTemperature);
    auto responses = shading.illuminants[blend.lower].gains; // red, green, blue at the centres
    for (size_t colour = 0; colour < responses.size(); ++colour)
        for (size_t cell = 0; cell < responses[colour].size(); ++cell) {
            double const upper = shading.illuminants[blend.upper].gains[colour][cell];
            responses[colour][cell] = 1 / blend.mix(responses[colour][cell], upper);
        }
    return [responses, array, columns = shading.columns, rows = shading.rows](Plane plane, uint32_t y,
                                                                              std::span<float> response) {
        constexpr double kDarkest = 0.001; // the linear continuation must not become negative
        std::vector<double> const& grid = responses[colourOf(plane)];
        // Down first: one value for each column of cells, then across for each pixel.
        double const cellRow = (y + 0.5) * rows / array.height - 0.5;
        std::vector<double> across(columns);
        for (uint32_t column = 0; column < columns; ++column) {
            auto const down = [&](int row) { return grid[size_t(row) * columns + column]; };
            across[column] = interpolated(down, int(rows), cellRow);
        }
        auto const along = [&](int column) { return across[size_t(column)]; };
        for (size_t x = 0; x < response.size(); ++x) {
            double const cellColumn = (double(x) + 0.5) * columns / array.width - 0.5;
            response[x] = float(std::max(kDarkest, interpolated(along, int(columns), cellColumn)));
        }
    };
}

Field lightField(SensorArray const& array, LensRows const& lens, std::array<ColourFilter, 3> const& filters,
                 Light const& light) {
    std::array<double, 3> const colour = illuminantResponse(filters, light.colourTemperature);
    Field field(array.pixels());
    // As the picture shows it, its mean left at 1.
    std::vector<float> ramp(array.width), response(array.width);
    for (uint32_t x = 0; x < array.width; ++x)
        ramp[x] =
            float(std::max(0.0, 1 + light.gradient * ((array.arrayColumn(x) + 0.5) / array.width - 0.5)));
    for (uint32_t y = 0; y < array.height; ++y) {
        float* const line = &field[size_t(y) * array.width];
        for (uint32_t first = 0; first < 2; ++first) {
            Plane const plane = array.planeAt(first, y);
            auto const factor = float(colour[colourOf(plane)]);
            lens(plane, y, response);
            for (uint32_t x = first; x < array.width; x += 2)
                line[x] = response[x] * ramp[x] * factor;
        }
    }
    if (light.objectInPicture)
        darkenObject(array, field);
    return field;
}
} // namespace simulator
