#pragma once

#include <QByteArray>
#include <cstdint>

namespace kestra {
/// The host holds fractions as thousandths.
inline constexpr double kThousandths = 1000.0;

/// Truncates toward zero; values beyond the range are clamped to it, a value that is no number gives 0.
[[nodiscard]] int32_t toInt32(double value);

/// The decimal number that a text begins with, whatever the process's locale: "2.0abc" is 2. Leading white
/// space is skipped; a text that begins with no number, and one whose number is not finite, gives 0.
[[nodiscard]] double leadingDecimal(QByteArray const& text);
} // namespace kestra
