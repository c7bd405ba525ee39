#include "simulator/solver/binary16.h"

#include <cmath>
#include <gtest/gtest.h>

namespace {

using solver::fromBinary16;
using solver::toBinary16;

TEST(Binary16, EveryFiniteValueComesBack) {
    for (uint32_t bits = 0; bits < 0x10000; ++bits) {
        bool const finite = (bits & 0x7C00) != 0x7C00;
        if (finite) {
            ASSERT_EQ(toBinary16(fromBinary16(static_cast<uint16_t>(bits))), bits);
        }
    }
}

TEST(Binary16, RoundsToTheNearestAndNeverToInfinity) {
    struct Row {
        double value;
        uint16_t bits;
    };
    Row const rows[] = {
        {1.0, 0x3C00},
        {-2.0, 0xC000},
        {1 + std::ldexp(1, -11), 0x3C00},     // tie, to even
        {1 + 3 * std::ldexp(1, -11), 0x3C02}, // tie, to even
        {2 - std::ldexp(1, -12), 0x4000},     // carries into the exponent
        {std::ldexp(1, -24), 0x0001},         // smallest subnormal
        {std::ldexp(1023.75, -24), 0x0400},   // subnormal that becomes normal
        {1e-12, 0x0000},
        {1e9, 0x7BFF},
        {-65520, 0xFBFF},
    };
    for (Row const& row : rows)
        EXPECT_EQ(toBinary16(row.value), row.bits) << row.value;
}

} // namespace
