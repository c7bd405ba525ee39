#include "pictures/lab.h"

#include <cmath>
#include <gtest/gtest.h>

using namespace kestra;

namespace {

TEST(FractionalPower, IsAsGoodAsTheStandardLibraryAtEveryNodeBorderAndBeyondTheTable) {
    for (double const exponent : {2.4, 1.0 / 3}) {
        FractionalPower const power(exponent);
        double worst = 0;
        auto const look = [&](double x) {
            worst = std::max(worst, std::abs(power(x) / std::pow(x, exponent) - 1));
        };
        for (double x = 1.0 / 256; x < 4; x *= 1.0003)
            look(x);
        for (double border = 1.0 / 256; border < 4; border *= 2) {
            for (int i = 0; i < 64; ++i) {
                double const x = border * (1 + i / 64.0);
                look(x);
                look(std::nextafter(x, 0));
            }
        }
        look(1e-300);
        look(1e100);
        EXPECT_LT(worst, 1e-15) << exponent;
    }
}

} // namespace
