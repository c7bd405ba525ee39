#pragma once

/// A colour in CIE L*a*b*.
struct Lab {
    double l = 0;
    double a = 0;
    double b = 0;
};

/// Converts sRGB values of 0 to 255 to L*a*b* (sRGB transfer function and primaries of IEC 61966-2-1, CIE
/// 1976 L*a*b*) for the white point 95.0, 100.0, 108.9. The transfer function's linear part ends at 0.03928,
/// as in the standard's draft and not at its 0.04045, on purpose: users' limits were set with these figures.
[[nodiscard]] Lab rgbToLab(double red, double green, double blue);
