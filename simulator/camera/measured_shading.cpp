#include "simulator/camera/measured_shading.h"
#include "simulator/camera/illuminant.h"
#include "simulator/files/json_place.h"

#include <QFileInfo>
#include <algorithm>
#include <cmath>

namespace simulator {
namespace {
using files::JsonPlace;

constexpr std::array<char const*, 3> kColourNames = {"red", "green", "blue"};
constexpr uint32_t kLargestGrid = 1024; // cells in a direction
constexpr size_t kMostIlluminants = 16;
constexpr double kLargestGain = 1000;
constexpr double kLowestTemperature = 500, kHighestTemperature = 50000; // kelvin

MeasuredShading readGrid(JsonPlace const& root) {
    (void)root["format"].choice({"shading-gains-1"});
    MeasuredShading shading{.name = root["name"].text(),
                            .columns = root["columns"].integer(2, kLargestGrid),
                            .rows = root["rows"].integer(2, kLargestGrid),
                            .illuminants = {}};
    for (JsonPlace const& item : root["illuminants"].someItems(kMostIlluminants, "illuminant")) {
        JsonPlace const temperature = item["colour_temperature_K"];
        MeasuredShading::Illuminant illuminant{
            .temperature = temperature.number(kLowestTemperature, kHighestTemperature), .gains = {}};
        if (!shading.illuminants.empty() && illuminant.temperature <= shading.illuminants.back().temperature)
            temperature.fail(QStringLiteral("the temperatures must ascend"));
        for (size_t colour = 0; colour < kColourNames.size(); ++colour)
            for (JsonPlace const& gain :
                 item[kColourNames[colour]].items(size_t(shading.columns) * shading.rows))
                illuminant.gains[colour].push_back(gain.number(1 / kLargestGain, kLargestGain));
        shading.illuminants.push_back(std::move(illuminant));
    }
    return shading;
}

size_t colourOf(Plane plane) { return plane == Plane::Red ? 0 : plane == Plane::Blue ? 2 : 1; }

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
} // namespace

std::optional<MeasuredShading> readMeasuredShading(QString const& file, QString* error) {
    error->clear();
    std::optional<QJsonObject> const whole = files::readJson(file, error);
    if (!whole)
        return std::nullopt;
    MeasuredShading shading = readGrid(JsonPlace(*whole, QFileInfo(file).fileName(), error));
    return error->isEmpty() ? std::optional(std::move(shading)) : std::nullopt;
}

MeasuredLens::MeasuredLens(MeasuredShading const& shading, SensorArray const& array, double colourTemperature)
    : m_array(array), m_columns(shading.columns), m_rows(shading.rows) {
    std::vector<double> temperatures;
    for (MeasuredShading::Illuminant const& illuminant : shading.illuminants)
        temperatures.push_back(illuminant.temperature);
    IlluminantBlend const blend = blendAt(temperatures, colourTemperature);
    for (size_t colour = 0; colour < m_responses.size(); ++colour) {
        std::vector<double> const& lower = shading.illuminants[blend.lower].gains[colour];
        std::vector<double> const& upper = shading.illuminants[blend.upper].gains[colour];
        m_responses[colour].reserve(lower.size());
        for (size_t cell = 0; cell < lower.size(); ++cell)
            m_responses[colour].push_back(1 / blend.mix(lower[cell], upper[cell]));
    }
}

void MeasuredLens::row(Plane plane, uint32_t y, std::span<float> response) const {
    constexpr double kDarkest = 0.001; // the linear continuation must not become negative
    std::vector<double> const& grid = m_responses[colourOf(plane)];
    // Down first: one value for each column of cells, then across for each pixel.
    double const cellRow = (y + 0.5) * m_rows / m_array.height - 0.5;
    std::vector<double> across(m_columns);
    for (uint32_t column = 0; column < m_columns; ++column) {
        auto const down = [&](int row) { return grid[size_t(row) * m_columns + column]; };
        across[column] = interpolated(down, int(m_rows), cellRow);
    }
    auto const along = [&](int column) { return across[size_t(column)]; };
    for (size_t x = 0; x < response.size(); ++x) {
        double const cellColumn = (double(x) + 0.5) * m_columns / m_array.width - 0.5;
        response[x] = float(std::max(kDarkest, interpolated(along, int(m_columns), cellColumn)));
    }
}
} // namespace simulator
