#include "simulator/camera/optics.h"

#include <cmath>

namespace simulator {
namespace {
constexpr double kSteepestAngle = 80; // degrees
constexpr double kLargestCentreOffset = 0.5;
constexpr double kLargestTerm = 2;
constexpr size_t kMostIlluminants = 16;
constexpr double kRowSumTolerance = 1e-6;
constexpr std::array<char const*, 3> kFilterNames = {"red", "green", "blue"};

template <size_t Count>
std::array<double, Count> readNumbers(JsonPlace const& place, double limit) {
    std::array<double, Count> numbers{};
    std::vector<JsonPlace> const items = place.items(Count);
    for (size_t i = 0; i < Count; ++i)
        numbers[i] = items[i].number(-limit, limit);
    return numbers;
}

Lens readLens(JsonPlace const& place) {
    return {.cornerAngle = place["cornerAngle"].number(0, kSteepestAngle),
            .vignetting = readNumbers<3>(place["vignetting"], kLargestTerm),
            .centre = readNumbers<2>(place["centre"], kLargestCentreOffset)};
}

std::vector<ColourShading> readShading(JsonPlace const& place) {
    std::vector<ColourShading> shading;
    for (JsonPlace const& item : place.items()) {
        if (shading.size() == kMostIlluminants) {
            item.fail(QStringLiteral("no more than %1 illuminants are read").arg(kMostIlluminants));
            break;
        }
        ColourShading illuminant{.temperature = item["temperature"].number(500, 50000)};
        for (size_t plane = 0; plane < kPlaneCount; ++plane)
            illuminant.terms[plane] = readNumbers<5>(item[kPlaneNames[plane]], kLargestTerm);
        if (!shading.empty() && illuminant.temperature <= shading.back().temperature)
            item["temperature"].fail(QStringLiteral("the temperatures must ascend"));
        shading.push_back(illuminant);
    }
    if (shading.empty())
        place.fail(QStringLiteral("at least one illuminant is needed"));
    return shading;
}

std::array<double, 9> readColourMatrix(JsonPlace const& place) {
    std::array<double, 9> const matrix = readNumbers<9>(place, 10);
    for (size_t row = 0; row < 3; ++row)
        if (std::abs(matrix[3 * row] + matrix[3 * row + 1] + matrix[3 * row + 2] - 1) > kRowSumTolerance)
            place.fail(QStringLiteral("row %1 must sum to 1, so that grey stays grey").arg(row + 1));
    return matrix;
}
} // namespace

Optics readOptics(JsonPlace const& place) {
    Optics optics;
    optics.lens = readLens(place["lens"]);
    optics.shading = readShading(place["colourShading"]);
    for (size_t i = 0; i < kFilterNames.size(); ++i) {
        JsonPlace const filter = place["filters"][kFilterNames[i]];
        optics.filters[i] = {.peak = filter["peak"].number(380, 780),
                             .width = filter["width"].number(1, 200),
                             .sensitivity = filter["sensitivity"].number(0.01, 10)};
    }
    optics.colourMatrix = readColourMatrix(place["colourMatrix"]);
    return optics;
}
} // namespace simulator
