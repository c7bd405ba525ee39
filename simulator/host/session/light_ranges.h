#pragma once

#include <QString>
#include <optional>

namespace pictara {
struct Range {
    double low;
    double high;
};

/// What the lamp can be set to, on the command line and by hand. The exposure loop copes with a level from
/// about 0.002 to 1000; beyond lie pictures that stay too dark or clipped.
inline constexpr Range kColourTemperatures{2000, 12000}; ///< kelvin
inline constexpr Range kLevels{0.001, 10000};            ///< relative to the lamp's normal level
inline constexpr Range kGradients{-1, 1};

/// The number that a text tells, when it is one in the range.
[[nodiscard]] inline std::optional<double> numberIn(Range const& range, QString const& text) {
    bool ok = false;
    double const number = text.toDouble(&ok);
    return ok && number >= range.low && number <= range.high ? std::optional(number) : std::nullopt;
}
} // namespace pictara
