

// Texts in a code page whose letters take two bytes, some of them with the byte of "\" as the second.

#include "calibration/calibration_flow.h"
#include "common/system.h"
#include "config_page/serial_number.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace kestra;

namespace {
class TwoByteLetters : public ::testing::Test {
protected:
    void SetUp() override {
        if (letter.toLocal8Bit() != "\x83\\")
            GTEST_SKIP() << "the code page is not the Japanese one";
    }

    QString const letter = QStringLiteral("\u30BD");
};

TEST_F(TwoByteLetters, StayWholeInNames) {
    EXPECT_TRUE(beginsTwoByteLetter('\x83'));
    EXPECT_EQ(sanitisedLabel("\x83\\|\x83\\"), QByteArray("\x83\\-\x83\\"));
    EXPECT_EQ(sanitisedLabel("\x83"), QByteArray("\x83")) << "half a letter at the end";
    EXPECT_EQ(grabFileName("C:\\a\\\x83\\", "S1"), QByteArray("C:\\a\\S1_"));
    EXPECT_EQ(grabFileName("C:/a/\x83\\", "S1"), QByteArray("C:/a/S1_"));
}

TEST_F(TwoByteLetters, NameFolders) {
    QTemporaryDir const folder;
    ASSERT_TRUE(QDir(folder.path()).mkdir(letter));
    QByteArray const local = folder.filePath(letter).toLocal8Bit();
    EXPECT_TRUE(directoryExists(local));
    EXPECT_TRUE(directoryExists(local + '\\'));
    EXPECT_FALSE(directoryExists(local.left(local.size() - 1) + 'A')) << "another letter";
}
} // namespace
