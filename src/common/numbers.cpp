#include "common/numbers.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

namespace kestra {
int32_t toInt32(double value) {
    return std::isnan(value) ? 0 : int32_t(std::clamp<double>(value, INT32_MIN, INT32_MAX));
}

double leadingDecimal(QByteArray const& text) {
    char const* begin = text.constData();
    char const* const end = begin + text.size();
    while (begin != end && std::isspace(static_cast<unsigned char>(*begin)))
        ++begin;
    if (end - begin >= 2 && begin[0] == '+' && begin[1] != '-')
        ++begin; // from_chars knows no plus sign
    double value = 0;
    auto const [stop, error] = std::from_chars(begin, end, value);
    return error == std::errc{} && std::isfinite(value) ? value : 0;
}
} // namespace kestra
