#pragma once

#include "tests/support/fake_host.h"

#include <QTemporaryDir>
#include <fstream>
#include <string>

namespace kestra {
/// What the plug-in is started on: a fake host whose ini file has a setup preset and whose save directory
/// exists, its services, and the record of its sensor, for which the lens-shading page is made.
class FakeBench {
public:
    FakeBench() {
        sensor.name = "S1";
        sensor.sensorKind = 200;
        sensor.variant = 1;
        sensor.fileNamePart = "BOARD";
        writeIni("[Lens Calibration Setup]\nREG = 1, 2\n[Lens Calibration Verify]\n");
        resetHost();
    }

    /// Forgets what the host was told, and what it logged.
    void resetHost() {
        host.log.clear();
        host.states.clear();
        host.intSettings.clear();
        host.textSettings = {{"IniFileName", iniFile()}, {"LensAssist Dir", saveDir()}};
    }
    /// Writes the host's ini file anew.
    void writeIni(std::string const& bytes) { std::ofstream(iniFile()) << bytes; }
    /// The save directory, where the ini file lies, too.
    [[nodiscard]] std::string saveDir() const { return m_folder.path().toStdString(); }

    FakeHost host;
    SensorRecord sensor{};
    HostServices services = host.services();

private:
    [[nodiscard]] std::string iniFile() const { return saveDir() + "/host.ini"; }

    QTemporaryDir m_folder;
};
} // namespace kestra
