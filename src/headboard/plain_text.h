#pragma once

#include <algorithm>
#include <string_view>

/// Whether two ASCII texts are equal when upper and lower case count as the same, whatever the locale.
[[nodiscard]] inline bool equalWithoutCase(std::string_view a, std::string_view b) {
    auto const lower = [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [&](char x, char y) { return lower(x) == lower(y); });
}
