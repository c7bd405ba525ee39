#include "simulator/host/report/rounded_numbers.h"

#include <cmath>

namespace pictara {
double rounded(double value) {
    constexpr double kFractions = 1e5;
    return std::isfinite(value) ? std::round(value * kFractions) / kFractions : 0;
}

QJsonArray roundedNumbers(std::vector<double> const& values) {
    QJsonArray array;
    for (double const value : values)
        array.append(rounded(value));
    return array;
}
} // namespace pictara
