// The file as Windows sees it.

#include "common/version.h"

#include <QString>
#include <gtest/gtest.h>
#include <vector>
#include <windows.h>

using namespace kestra;

namespace {
TEST(WindowsFile, ItsPropertiesShowTheVersionThatThePagesShow) {
    std::wstring const file = QStringLiteral(PLUGIN_FILE).toStdWString();
    std::vector<char> resource(GetFileVersionInfoSizeW(file.c_str(), nullptr));
    ASSERT_FALSE(resource.empty());
    ASSERT_TRUE(GetFileVersionInfoW(file.c_str(), 0, DWORD(resource.size()), resource.data()));
    void* found = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(resource.data(), L"\\", &found, &length));
    auto const& fixed = *static_cast<VS_FIXEDFILEINFO const*>(found);
    uint32_t const numbers[4] = {HIWORD(fixed.dwFileVersionMS), LOWORD(fixed.dwFileVersionMS),
                                 HIWORD(fixed.dwFileVersionLS), LOWORD(fixed.dwFileVersionLS)};
    for (size_t i = 0; i < std::size(numbers); ++i)
        EXPECT_EQ(numbers[i], kVersion[i]);
    ASSERT_TRUE(VerQueryValueW(resource.data(), L"\\StringFileInfo\\040904B0\\FileVersion", &found, &length));
    EXPECT_TRUE(versionText().startsWith(QStringLiteral("Version: ") +
                                         QString::fromWCharArray(static_cast<wchar_t const*>(found)) + '\n'));
}
} // namespace
