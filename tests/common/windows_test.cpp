// What the plug-in asks of Windows itself.

#include "common/ini_section.h"
#include "common/system.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <chrono>
#include <gtest/gtest.h>
#include <windows.h>

using namespace kestra;

namespace {
QString const kUmlauts = QStringLiteral("Pr\u00FCfstand \u00E4\u00F6");

TEST(Windows, DirectoriesAreFoundByTheirAttributesUnderLocalNames) {
    if (GetACP() != 1252)
        GTEST_SKIP() << "the names are those of the Western code page";
    QTemporaryDir const folder;
    ASSERT_TRUE(QDir(folder.path()).mkdir(kUmlauts));
    QString const inner = folder.filePath(kUmlauts);
    QByteArray const local = QDir::toNativeSeparators(inner).toLocal8Bit();
    ASSERT_EQ(local.size(), inner.size()) << "one byte a letter";
    EXPECT_TRUE(directoryExists(local));
    EXPECT_TRUE(directoryExists(local + '\\'));
    EXPECT_FALSE(directoryExists(local + "\\none"));
    EXPECT_FALSE(directoryExists(QDir::toNativeSeparators(inner).toUtf8()));
    QFile file(inner + QStringLiteral("/file"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    EXPECT_FALSE(directoryExists(local + "\\file"));
    ASSERT_TRUE(SetFileAttributesA(local.constData(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
    EXPECT_TRUE(directoryExists(local));
    SetFileAttributesA(local.constData(), FILE_ATTRIBUTE_NORMAL);
}

TEST(Windows, IniFilesAreOpenedUnderNamesThatNoCodePageHolds) {
    QTemporaryDir const folder;
    QString const name = folder.filePath(QStringLiteral("\u30AB\u30E1\u30E9 \u00FC\u0416.ini"));
    QFile file(name);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[S]\r\nA = 1\r\n");
    file.close();
    char lines[32];
    EXPECT_EQ(readIniSection("s", lines, sizeof lines, name.toUtf8().constData()), 4U);
    EXPECT_STREQ(lines, "A=1");
    EXPECT_EQ(readIniSection("s", lines, sizeof lines, name.toLocal8Bit().constData()), 0U);
}

// The one test that sleeps: a device's write cycle is waited for by this, and the system's own sleep ends
// early.
TEST(Windows, NoPauseIsShorterThanAskedFor) {
    constexpr std::chrono::milliseconds kPause{2};
    for (int i = 0; i < 10; ++i) {
        auto const start = std::chrono::steady_clock::now();
        pauseFor(kPause);
        EXPECT_GE(std::chrono::steady_clock::now() - start, kPause);
    }
}
} // namespace
