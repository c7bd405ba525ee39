#include "simulator/files/whole_file.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/resource.h>
#include <sys/stat.h>
#endif

namespace {
struct WholeFile : testing::Test {
    QTemporaryDir folder;
    QString const name = folder.filePath("file"), link = folder.filePath("link");
    QString fault;
};

TEST_F(WholeFile, IsReadUpToItsBoundAndNotBeyond) {
    ASSERT_TRUE(files::replace(name, "12345678", &fault));
    EXPECT_EQ(files::read(name, 8, &fault), QByteArray("12345678"));
    EXPECT_FALSE(files::read(name, 7, &fault));
    EXPECT_EQ(fault, name + ": cannot be read: it has more than 7 bytes");
    // Larger than any memory.
    ASSERT_TRUE(QFile::resize(name, qint64(1) << 40));
    EXPECT_FALSE(files::read(name, files::kMostText, &fault));
    EXPECT_FALSE(files::read(folder.filePath("none"), 8, &fault));
}

TEST_F(WholeFile, IsTheOldOneWhenItCannotBeReplaced) {
    QString const inNoFolder = folder.filePath("none/file");
    EXPECT_FALSE(files::isReplaceable(inNoFolder, &fault));
    EXPECT_FALSE(files::replace(inNoFolder, "new", &fault));
    EXPECT_TRUE(files::isReplaceable(name, &fault));
    ASSERT_TRUE(files::replace(name, "old", &fault) && files::replace(name, "new", &fault));
    EXPECT_EQ(files::read(name, 3, &fault), QByteArray("new"));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList("file"));
}

#ifdef Q_OS_UNIX
TEST_F(WholeFile, IsTheOldOneWhenAWriteFailsHalfWay) {
    ASSERT_TRUE(files::replace(name, "old", &fault));
    rlimit unlimited{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &unlimited), 0);
    rlimit const full{100, unlimited.rlim_max};
    auto const oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    EXPECT_FALSE(files::replace(name, QByteArray(200, 'n'), &fault));
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &unlimited), 0);
    (void)std::signal(SIGXFSZ, oldHandler);
    EXPECT_EQ(files::read(name, 3, &fault), QByteArray("old"));
}

TEST_F(WholeFile, WhatIsNoRegularFileIsNeitherOpenedNorReplaced) {
    QString const pipe = folder.filePath("pipe");
    ASSERT_EQ(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(pipe, link));
    for (QString const& other : {pipe, link, folder.path(), QStringLiteral("/dev/zero")}) {
        SCOPED_TRACE(other.toStdString());
        EXPECT_FALSE(files::read(other, files::kMostText, &fault));
        EXPECT_EQ(fault, other + ": cannot be read: it is no regular file");
        EXPECT_FALSE(files::isReplaceable(other, &fault) || files::replace(other, "new", &fault));
        EXPECT_FALSE(QFileInfo(other).isFile());
    }
}

TEST_F(WholeFile, ALinkStaysALink) {
    ASSERT_TRUE(files::replace(name, "old", &fault) && QFile::link(name, link));
    ASSERT_TRUE(files::replace(link, "new", &fault)) << fault.toStdString();
    EXPECT_TRUE(QFileInfo(link).isSymLink());
    EXPECT_EQ(files::read(name, 3, &fault), QByteArray("new"));
}
#endif
} // namespace
