#include "simulator/host/shading/shading_run.h"

#include "simulator/files/interruption.h"
#include "simulator/files/whole_file.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/host/shading/shading_file.h"
#include "simulator/host/shading/shading_measurement.h"
#include "simulator/host/shading/shading_report.h"

#include <QFileInfo>
#include <cstdio>

namespace pictara {
namespace {
using simulator::MeasuredShading;

void tell(QString const& text) {
    std::printf("%s\n", text.toLocal8Bit().constData());
    std::fflush(stdout);
}

void tellLight(double kelvin) { tell(QStringLiteral("measuring at %1 K...").arg(kelvin)); }

std::optional<MeasuredShading> measure(Options const& options, QString* error) {
    // Told now and not after the measuring.
    if (!files::isReplaceable(options.measureShadingFile, error)) {
        *error = QStringLiteral("The file %1 cannot be written: %2").arg(options.measureShadingFile, *error);
        return std::nullopt;
    }
    auto const camera = openCamera(options, error);
    if (!camera)
        return std::nullopt;
    if (!options.flatFieldFile.isEmpty())
        return measureRecordedShading(options.flatFieldFile, camera->description(),
                                      camera->light().colourTemperature, error);
    std::vector<double> lights(kStandardLights.begin(), kStandardLights.end());
    if (options.lightKelvin)
        lights = {*options.lightKelvin};
    return measureShading(*camera, lights, tellLight, error);
}

std::optional<std::vector<NamedShading>> tablesFor(Options const& options, QString* error) {
    if (!options.measureShadingFile.isEmpty()) {
        std::optional<MeasuredShading> const measured = measure(options, error);
        if (!measured || !writeMeasuredShading(options.measureShadingFile, *measured, error))
            return std::nullopt;
        return std::vector<NamedShading>{{options.measureShadingFile, *measured}};
    }
    std::vector<NamedShading> tables;
    for (QString const& file : options.comparedFiles) {
        std::optional<MeasuredShading> const table = simulator::readMeasuredShading(file, error);
        if (!table)
            return std::nullopt;
        tables.push_back({file, *table});
    }
    return tables;
}
} // namespace

int runShading(Options const& options) {
    QString error;
    std::optional<QString> const folder = createdFolder(options.outputFolder, &error);
    auto const tables = folder ? tablesFor(options, &error) : std::nullopt;
    if (!tables) {
        complain(error);
        return files::isInterrupted() ? kExitInterrupted : kExitUsage;
    }
    if (!options.measureShadingFile.isEmpty())
        tell(
            QStringLiteral("The table is %1.").arg(QFileInfo(options.measureShadingFile).absoluteFilePath()));
    OutputFolder output(*folder);
    QString const page = writeShadingReport(*tables, output);
    if (output.failed())
        return kExitNotCalibrated;
    tell(QStringLiteral("The report is %1.").arg(page));
    return kExitDone;
}
} // namespace pictara
