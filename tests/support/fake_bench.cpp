#include "tests/support/fake_bench.h"

#include <fstream>

namespace kestra {
FakeBench::FakeBench() {
    sensor.name = "S1";
    sensor.sensorKind = 200;
    sensor.variant = 1;
    sensor.fileNamePart = "BOARD";
    writeIni("[Lens Calibration Setup]\nREG = 1, 2\n[Lens Calibration Verify]\n");
    resetHost();
}

void FakeBench::resetHost() {
    host.log.clear();
    host.states.clear();
    host.intSettings.clear();
    host.textSettings = {{"IniFileName", iniFile()}, {"LensAssist Dir", saveDir()}};
}

void FakeBench::writeIni(std::string const& bytes) { std::ofstream(iniFile()) << bytes; }
} // namespace kestra
