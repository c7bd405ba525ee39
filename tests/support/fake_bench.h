#pragma once

#include "tests/support/fake_host.h"

#include <QTemporaryDir>
#include <string>

namespace kestra {
/// What the plug-in is started on: a fake host whose ini file has a setup preset and whose save directory
/// exists, its services, and the record of its sensor, for which the lens-shading page is made.
class FakeBench {
public:
    FakeBench();

    /// Forgets what the host was told, and what it logged.
    void resetHost();
    /// Writes the host's ini file anew.
    void writeIni(std::string const& bytes);
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
