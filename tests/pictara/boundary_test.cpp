#include "simulator/host/call_log.h"
#include "simulator/host/observed_services.h"
#include "simulator/host/recorded_lines.h"
#include "simulator/host/script.h"
#include "simulator/host/service_desk.h"
#include "tests/pictara/test_frames.h"
#include "tests/support/camera_under_test.h"

#include <QFile>
#include <QTemporaryDir>
#include <cstring>
#include <gtest/gtest.h>

namespace pictara {
namespace {

// A host whose notification makes the plug-in read a register, as a page does.
struct BoundaryTest : testing::Test {
    BoundaryTest() {
        Boundary::instance().add(lines);
        Boundary::instance().add(log);
    }
    ~BoundaryTest() override {
        Boundary::instance().remove(lines);
        Boundary::instance().remove(log);
    }

    static Placeholders placeholders() {
        Placeholders names;
        names.add(QStringLiteral("/dir/out"), "<output>");
        return names;
    }

    QTemporaryDir folder;
    Camera const sensor = openChanged(R"({"sensorName": "A"})");
    StateVariables states{bayerCamera(4, 4)};
    SettingsStore settings{folder.filePath("settings.ini")};
    SensorRegisters registers{sensor->handle(), [] {
                                  Crossing const crossing(CallSource::Plugin, "RegisterChanged",
                                                          [] { return QByteArray(); });
                                  (void)observedServices().readRegister("COARSE_INTEGRATION_TIME", "", 1);
                              }};
    ServiceDesk desk{states, settings, registers, folder.filePath("host.ini")};
    HostServices const& host = observedServices();
    QList<QByteArray> written;
    RecordedLines lines{placeholders(), [this](QByteArray const& line) { written << line; }};
    CallLog log{nullptr, 40};
};

TEST_F(BoundaryTest, EverySlotIsToldByItsName) {
    HostServices::Unused functions[33];
    static_assert(sizeof functions == sizeof host);
    std::memcpy(functions, &host, sizeof functions);
    for (HostServices::Unused const function : functions)
        ASSERT_NE(function, nullptr);
    for (int const slot : {1, 6, 11, 12, 13, 17, 22, 24, 27, 28, 29, 30, 31, 32}) {
        functions[slot]();
        lines.flush();
        EXPECT_EQ(written.last(), "    slot" + QByteArray::number(slot));
    }
    char buffer[8];
    host.writeTextSetting("Dir", "/dir/out/a");
    host.readTextSetting("Dir", buffer, sizeof buffer, nullptr);
    host.setState("Gamma", -1);
    host.setupAnalysis(1, 0, 960, 0, 960);
    EXPECT_EQ(host.readState("Gamma"), -1);
    lines.flush();
    EXPECT_EQ(
        written.mid(written.size() - 5),
        QList<QByteArray>({"    writeTextSetting \"Dir\" \"<output>/a\"",
                           "    readTextSetting \"Dir\" 8 null = \"/dir/ou\"", "    setState \"Gamma\" -1",
                           "    setupAnalysis 1 0 0x3C0 0 0x3C0", "    readState \"Gamma\" = -1"}));
}

TEST_F(BoundaryTest, WhatComesUpInsideOfACallStandsBelowIt) {
    Boundary::instance().doing(QStringLiteral("press AE"));
    host.beginChanges();
    host.writeRegister("COARSE_INTEGRATION_TIME", "", 0x1F);
    host.endChanges();
    {
        Crossing outer(CallSource::Camera, "vy_IsSOC", [] { return QByteArray(); });
        host.setState("Gamma", 9);
        outer.setResult("0");
    }
    lines.flush();
    EXPECT_EQ(written,
              QList<QByteArray>({"press AE", "    beginChanges",
                                 "    writeRegister \"COARSE_INTEGRATION_TIME\" \"\" 0x1F", "    endChanges",
                                 "        > RegisterChanged",
                                 "            readRegister \"COARSE_INTEGRATION_TIME\" \"\" 1 = 0x1F",
                                 "    vy_IsSOC", "        setState \"Gamma\" 9", "    = 0"}));
}

TEST_F(BoundaryTest, TheLogShowsWhatTheFilterAsksForAndSavesIt) {
    Boundary::instance().doing(QStringLiteral("tick"));
    host.writeRegister("COARSE_INTEGRATION_TIME", "", 0x2A);
    host.setState("Gamma", 9);
    ASSERT_EQ(log.rowCount(), 5);
    EXPECT_EQ(log.at(3).depth, 2);
    EXPECT_EQ(log.data(log.index(3, CallLog::kResult)), QVariant("0x2A"));
    log.setFilter({.text = "0x2a", .showsInputs = true, .sources = {CallSource::Host}});
    ASSERT_EQ(log.rowCount(), 2);
    (void)host.readRegister("COARSE_INTEGRATION_TIME", "", 1);
    EXPECT_EQ(log.rowCount(), 3) << "what only the result shows is not found";
    QString error;
    ASSERT_TRUE(log.save(folder.filePath("calls.txt"), &error)) << error.toStdString();
    QFile saved(folder.filePath("calls.txt"));
    ASSERT_TRUE(saved.open(QIODevice::ReadOnly));
    EXPECT_EQ(saved.readAll(), "    writeRegister \"COARSE_INTEGRATION_TIME\" \"\" 0x2A\n"
                               "            readRegister \"COARSE_INTEGRATION_TIME\" \"\" 1 = 0x2A\n"
                               "    readRegister \"COARSE_INTEGRATION_TIME\" \"\" 1 = 0x2A\n");
    log.setFilter({});
    for (int i = 0; i < 100; ++i)
        host.setState("Gamma", i);
    EXPECT_LE(log.rowCount(), 40);
    EXPECT_EQ(log.at(log.rowCount() - 1).arguments, QStringLiteral("\"Gamma\" 99"));
}

TEST(SharedLine, OnlyWhatGoesOnOrIsPolledSharesALine) {
    QByteArray const write = "    vy_writeRegisters 0xA8 0x1E [4b65] = 0";
    struct {
        QByteArray first, second, shared;
    } const rows[] = {
        {write, "    vy_writeRegisters 0xA8 0x20 [73] = 0", "    vy_writeRegisters 0xA8 0x1E [4b65 73] = 0"},
        {write, "    vy_writeRegisters 0xA8 0x22 [73] = 0", ""},
        {write, "    vy_writeRegisters 0xAA 0x20 [73] = 0", ""},
        {write, "    vy_writeRegisters 0xA8 0x20 [73] = 12", ""},
        {write, "        vy_writeRegisters 0xA8 0x20 [73] = 0", ""},
        {"    vy_ReadSensorRegStr \"S\" \"\" = 0, 0x10", "    vy_ReadSensorRegStr \"S\" \"\" = 0, 4",
         "    vy_ReadSensorRegStr \"S\" \"\" = 0, 4"},
        {"    vy_ReadSensorRegStr \"S\" \"\" = 0, 4", "    vy_ReadSensorRegStr \"T\" \"\" = 0, 4", ""},
        {"    setState \"Gamma\" 9", "    setState \"Gamma\" 9", ""},
        {"", write, ""},
    };
    for (auto const& row : rows)
        EXPECT_EQ(sharedLine(row.first, row.second), row.shared) << row.second.constData();
}

TEST(ShownLines, ALongWriteIsBrokenBetweenCallsAndTheTimeIsNot) {
    // "2026/11/21 16:42:49" over two lines and with an odd start.
    QByteArray const time = QByteArray("\0"
                                       "2026/11/21 16:42:49",
                                       20)
                                .toHex();
    QByteArray groups;
    for (int i = 0; i < 12; ++i)
        groups += "aabb ";
    for (int i = 0; i < time.size(); i += 4)
        groups += time.mid(i, 4) + ' ';
    groups.chop(1);
    EXPECT_EQ(
        shownLines("    vy_writeRegisters 0xA8 8 [" + groups + "] = 0"),
        (std::vector<QByteArray>{"    vy_writeRegisters 0xA8 8 [" + QByteArray("aabb ").repeated(12) +
                                     "00tt tttt tttt tttt] = 0",
                                 "    vy_writeRegisters 0xA8 0x28 [tttt tttt tttt tttt tttt tttt] = 0"}));
    EXPECT_EQ(shownLines("vy_readRegisters 0xA8 0 20 = 0, [" + time + "]").front(),
              "vy_readRegisters 0xA8 0 20 = 0, [00" + QByteArray("tt").repeated(19) + ']');
    auto const longRead = [&](QByteArray text) {
        return shownLines("    vy_readRegisters 0xA8 0 84 = 0, [" + QByteArray(128, 'f') + text.toHex() +
                          ']');
    };
    EXPECT_EQ(longRead("2026/11/21 16:42:49"), longRead("2027/01/01 00:00:00"));
    EXPECT_NE(longRead("2026/11/21 16:42:49"), longRead("2026/11/21 16-42-49"));
    EXPECT_EQ(shownLines("press AE"), std::vector<QByteArray>{"press AE"});
}

TEST(Script, NamesTheLineThatIsWrong) {
    QTemporaryDir const folder;
    QString const file = folder.filePath("walk.txt");
    struct {
        char const* line;
        char const* told;
    } const rows[] = {
        {"push AE", "push"},
        {"press", "press NAME"},
        {"set FallOff 80 %", "in quotes"},
        {"light 1999", "light KELVIN"},
        {"frames 0", "frames N"},
        {"wait AE_Status Done. soon", "[FRAMES]"},
        {"expect AE_Status \"Done.", "quote"},
        {"fault @3", "fault NAME"},
    };
    for (auto const& row : rows) {
        QFile out(file);
        ASSERT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(QByteArray("# a comment\n\npress AE # and another\n") + row.line + '\n');
        out.close();
        QString error;
        EXPECT_FALSE(readScript(file, &error)) << row.line;
        EXPECT_TRUE(error.startsWith(file + ":4: ") && error.contains(QLatin1String(row.told)))
            << error.toStdString();
    }
}

TEST(Script, AStarStandsForAnyTextAndNothingElseDoes) {
    EXPECT_TRUE(matches("Done: A_(1).ini", "Done: *.ini"));
    EXPECT_TRUE(matches("", "*"));
    EXPECT_FALSE(matches("Done.", "Done?"));
    EXPECT_FALSE(matches("Done. ", "Done."));
    EXPECT_FALSE(matches("Not done. Done.", "Done*"));
}

} // namespace
} // namespace pictara
