#pragma once

#include <QJsonArray>
#include <vector>

namespace pictara {
/// A number with as many decimals as anybody can mean; 0 for what is no number.
[[nodiscard]] double rounded(double value);

[[nodiscard]] QJsonArray roundedNumbers(std::vector<double> const& values);
} // namespace pictara
