#include "common/numbers.h"
#include "common/system.h"
#include "common/version.h"

#include <QDir>
#include <gtest/gtest.h>
#include <limits>

using namespace kestra;

namespace {
TEST(Numbers, NoDoubleOverflowsAnInteger) {
    constexpr int32_t kLeast = std::numeric_limits<int32_t>::min();
    constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
    EXPECT_EQ(toInt32(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(toInt32(std::numeric_limits<double>::infinity()), kMost);
    EXPECT_EQ(toInt32(-1e300), kLeast);
    EXPECT_EQ(toInt32(double(kMost) - 0.5), kMost - 1);
    EXPECT_EQ(toInt32(-2.9), -2);
}

TEST(Numbers, DecimalIsReadAsFarAsItIsOne) {
    using Row = std::tuple<char const*, double>;
    for (auto const& [text, value] :
         {Row{"2.0abc", 2}, Row{" \t\n+1.5", 1.5}, Row{"-0.25", -0.25}, Row{"+-1", 0}, Row{"++1", 0},
          Row{"+", 0}, Row{"", 0}, Row{"  ", 0}, Row{"1,5", 1}, Row{"x1", 0}, Row{"inf", 0}, Row{"nan", 0},
          Row{"1e999", 0}, Row{"+7", 7}})
        EXPECT_EQ(leadingDecimal(text), value) << '"' << text << '"';
}

TEST(Directory, OnlyAnExistingFolderIsOne) {
    EXPECT_TRUE(directoryExists(QDir::tempPath().toLocal8Bit()));
    EXPECT_FALSE(directoryExists(QDir::tempPath().toLocal8Bit() + "/there is no such folder"));
    EXPECT_FALSE(directoryExists(KESTRA_SOURCE_DIR "/README.md"));
    EXPECT_FALSE(directoryExists(""));
}

TEST(Version, IsToldAsTheHostsUsersKnowIt) {
    EXPECT_EQ(versionText().toStdString(), std::string("Version: 6.1.63.61641\nBuild Date: ") + kBuildDate);
}
} // namespace
