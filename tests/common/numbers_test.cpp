#include "common/numbers.h"
#include "common/system.h"
#include "common/version.h"

#include <QDir>
#include <gtest/gtest.h>
#include <limits>

using namespace kestra;

namespace {
TEST(Numbers, NoDoubleOverflowsAnInteger) {
    EXPECT_EQ(toInt32(std::numeric_limits<double>::quiet_NaN()), 0);
    EXPECT_EQ(toInt32(std::numeric_limits<double>::infinity()), INT32_MAX);
    EXPECT_EQ(toInt32(-1e300), INT32_MIN);
    EXPECT_EQ(toInt32(INT32_MAX - 0.5), INT32_MAX - 1);
    EXPECT_EQ(toInt32(-2.9), -2);
}

TEST(Numbers, DecimalIsReadAsFarAsItIsOne) {
    std::pair<char const*, double> const rows[] = {
        {"2.0abc", 2}, {" \t\n+1.5", 1.5}, {"-0.25", -0.25}, {"+-1", 0}, {"++1", 0}, {"+", 0},     {"", 0},
        {"  ", 0},     {"1,5", 1},         {"x1", 0},        {"inf", 0}, {"nan", 0}, {"1e999", 0}, {"+7", 7}};
    for (auto const& [text, value] : rows)
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
