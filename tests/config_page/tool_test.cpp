#include "common/system.h"
#include "config_page/config_view.h"
#include "tools/headboard-config/session.h"
#include "wizard/dialogs.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QSettings>
#include <QTemporaryDir>
#include <csignal>
#include <gtest/gtest.h>

using namespace kestra;

namespace {
constexpr int kLongestRunMs = 60'000;

// The page on the simulated camera, which is told of every pause in the place of the sleep.
class HeadboardConfig : public ::testing::Test {
protected:
    HeadboardConfig() {
        options.profile = QStringLiteral("polynomial");
        options.eepromFile = file("eeprom.bin");
        options.settingsFile = file("settings.ini");
        showMessage.replace([](QWidget*, UserMessage const&) { return QMessageBox::Ok; });
    }
    ~HeadboardConfig() override {
        showMessage.replace({});
        pauseFor.replace({});
    }

    void open() {
        session.reset();
        session = Session::open(options, &error);
        ASSERT_TRUE(session) << error.toStdString();
        simulator::SimulatedCamera& camera = session->camera();
        camera.useVirtualTime();
        pauseFor.replace(
            [&camera](std::chrono::milliseconds duration) { camera.advanceTime(int(duration.count())); });
        session->page().initialise();
    }
    QByteArray savedEeprom() {
        EXPECT_TRUE(session->saveEeprom(&error)) << error.toStdString();
        QFile saved(options.eepromFile);
        EXPECT_TRUE(saved.open(QIODevice::ReadOnly));
        return saved.readAll();
    }
    template <typename Widget>
    Widget* widget(char const* name) {
        return session->page().findChild<Widget*>(QLatin1String(name));
    }
    void click(char const* button) { widget<QPushButton>(button)->click(); }
    [[nodiscard]] QString file(char const* name) const { return m_folder.filePath(QLatin1String(name)); }

    Options options;
    QString error;
    std::unique_ptr<Session> session;

private:
    QTemporaryDir m_folder;
};

TEST_F(HeadboardConfig, WhatAPersonAppliesIsInTheEepromsFileAndComesBack) {
    open();
    auto* const market = widget<QComboBox>("MI_Combo");
    market->setCurrentIndex(market->findData(2));
    widget<QLineEdit>("SN")->setText(QStringLiteral("ABC1234998"));
    click("Apply");
    click("setGrabFileName");
    QByteArray const eeprom = savedEeprom();
    ASSERT_EQ(eeprom.size(), 8192);
    EXPECT_EQ(eeprom[8179], 2);
    EXPECT_EQ(eeprom.left(20), QByteArray("VYEE\x01\x0B\0\x0B"
                                          "ABC1234998\0\xFF",
                                          20));
    EXPECT_EQ(QSettings(options.settingsFile, QSettings::IniFormat).value("options/Still File").toString(),
              "ABC1234998_");

    open();
    EXPECT_EQ(session->page().serialNumber(), "ABC1234998");
    // The next headboard, on which the number goes on.
    click("EEPROM_Erase");
    widget<QLineEdit>("SN")->clear();
    click("EEPROM_Test");
    EXPECT_EQ(session->page().serialNumber(), "ABC1234999");
    EXPECT_EQ(savedEeprom(), QByteArray("VYEE\x01\xFF") + eeprom.mid(6));
}

TEST_F(HeadboardConfig, TheProgramRunsWithoutAScreenAndTellsItsEndByTheExitCode) {
    QByteArray output;
    auto const run = [&](QStringList const& arguments) {
        QProcess process;
        QStringList const files = {"--settings", options.settingsFile, "--screenshot", file("page.png")};
        process.start(QStringLiteral(HEADBOARD_CONFIG), files + arguments);
        bool const ended = process.waitForFinished(kLongestRunMs);
        output = process.readAllStandardOutput().replace("\r\n", "\n");
        return ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    };
    QStringList const onEeprom = {"--eeprom", options.eepromFile};
    EXPECT_EQ(run(onEeprom), kExitDone);
    EXPECT_TRUE(
        output.startsWith("EEPROM is present and working normally.\n0 bytes used.  8171 bytes available.\n"));
    EXPECT_TRUE(output.contains("part number: 0xff\n"));
    EXPECT_GT(QImage(file("page.png")).width(), 500);
    QFile eeprom(options.eepromFile);
    ASSERT_TRUE(eeprom.open(QIODevice::ReadWrite));
    EXPECT_EQ(eeprom.read(6), QByteArray("VYEE\x01\xFF"));

    eeprom.resize(4);
    for (QStringList const& wrong : {onEeprom,
                                     {"--profile", "none-such"},
                                     {"--colour"},
                                     {"--eeprom", "/no/such/folder/eeprom.bin"},
                                     {"--eeprom", file("other.bin"), "--settings", file("")}})
        EXPECT_EQ(run(wrong), kExitUsage) << wrong.join(' ').toStdString();
    EXPECT_EQ(run({"--eeprom", file("other.bin"), "--screenshot", "/no/such/folder/page.png"}),
              kExitNotSaved);
}

#ifdef Q_OS_LINUX
// Whether a process catches a signal, as the system tells it; it may not have come so far yet.
bool catches(qint64 process, int signal) {
    QFile status(QStringLiteral("/proc/%1/status").arg(process));
    if (!status.open(QIODevice::ReadOnly))
        return false;
    QByteArray const text = status.readAll();
    int const at = text.indexOf("SigCgt:\t");
    return at >= 0 && (text.mid(at + 8, 16).toULongLong(nullptr, 16) >> (signal - 1) & 1) != 0;
}

// Blank, so that opening the page formats it: what the device keeps was written in this session.
TEST_F(HeadboardConfig, AnInterruptedSessionKeepsWhatTheDeviceKeeps) {
    for (int const signal : {SIGINT, SIGTERM, SIGHUP}) {
        SCOPED_TRACE(signal);
        std::signal(signal, SIG_DFL); // what a job in the background ignores its programs would ignore, too
        QFile::remove(options.eepromFile);
        QProcess process;
        process.start(QStringLiteral(HEADBOARD_CONFIG),
                      {"--settings", options.settingsFile, "--eeprom", options.eepromFile});
        while (!catches(process.processId(), signal))
            ASSERT_FALSE(process.waitForFinished(5)) << "it ended before it was told to";
        ASSERT_EQ(::kill(pid_t(process.processId()), signal), 0);
        ASSERT_TRUE(process.waitForFinished(kLongestRunMs));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), kExitInterrupted);
        EXPECT_EQ(QFile(options.eepromFile).size(), 8192);
        EXPECT_EQ(QDir(QFileInfo(options.eepromFile).path()).entryList(QDir::Files).filter("eeprom"),
                  QStringList("eeprom.bin"));
    }
}
#endif
} // namespace
