#include "common/version.h"

#include <gtest/gtest.h>

using namespace kestra;

namespace {

TEST(Version, IsToldAsTheHostsUsersKnowIt) {
    EXPECT_EQ(versionText().toStdString(), std::string("Version: 6.1.63.61641\nBuild Date: ") + kBuildDate);
}

} // namespace
