#include "simulator/solver/binary16.h"

#include <cmath>
#include <gtest/gtest.h>
#include <utility>

namespace {
using solver::fromBinary16;
using solver::toBinary16;

TEST(Binary16, EveryFiniteValueComesBackAndOthersGoToTheNearest) {
    for (uint32_t bits = 0; bits < 0x10000; ++bits)
        if ((bits & 0x7C00) != 0x7C00) {
            ASSERT_EQ(toBinary16(fromBinary16(static_cast<uint16_t>(bits))), bits);
        }
    std::pair<double, uint16_t> const rows[] = {
        {1 + std::ldexp(1, -11), 0x3C00},     // tie, to even
        {1 + 3 * std::ldexp(1, -11), 0x3C02}, // tie, to even
        {2 - std::ldexp(1, -12), 0x4000},     // carries into the exponent
        {std::ldexp(1023.75, -24), 0x0400},   // subnormal that becomes normal
        {1e-12, 0x0000},
        {-65520, 0xFBFF}, // never infinity
    };
    for (auto const& [value, bits] : rows)
        EXPECT_EQ(toBinary16(value), bits) << value;
}
} // namespace
