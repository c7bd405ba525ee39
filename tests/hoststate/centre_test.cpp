#include "hoststate/white_balance.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

TEST(Centre, AFrameOfOneColumnOrOneRowHasNone) {
    std::vector<uint32_t> const pixels(16);
    EXPECT_FALSE(meanOfCentre({pixels.data(), ImageType::Rgb32, 1, 16, 4}));
    EXPECT_FALSE(meanOfCentre({pixels.data(), ImageType::Rgb32, 16, 1, 64}));
    EXPECT_TRUE(meanOfCentre({pixels.data(), ImageType::Rgb32, 2, 8, 8}));
}

} // namespace
