#include "simulator/host/shading_run.h"

#include "simulator/host/message_log.h"
#include "simulator/host/session.h"
#include "simulator/host/shading_file.h"
#include "simulator/host/shading_measurement.h"
#include "simulator/host/shading_report.h"

#include <cstdio>

namespace pictara {
namespace {

using simulator::MeasuredShading;

std::optional<MeasuredShading> measure(Options const& options, QString* error) {
    auto const camera = openCamera(options, error);
    if (!camera)
        return std::nullopt;
    if (!options.flatFieldFile.isEmpty())
        return measureRecordedShading(options.flatFieldFile, camera->description(),
                                      camera->light().colourTemperature, error);
    std::vector<double> lights(kStandardLights.begin(), kStandardLights.end());
    if (options.lightKelvin)
        lights = {*options.lightKelvin};
    return measureShading(*camera, lights, error);
}

// Empty with a message.
std::vector<NamedShading> tablesFor(Options const& options, QString* error) {
    std::vector<NamedShading> tables;
    if (!options.measureShadingFile.isEmpty()) {
        std::optional<MeasuredShading> const measured = measure(options, error);
        if (measured && writeMeasuredShading(options.measureShadingFile, *measured, error))
            tables.push_back({options.measureShadingFile, *measured});
        return tables;
    }
    for (QString const& file : options.comparedFiles) {
        std::optional<MeasuredShading> const table = simulator::readMeasuredShading(file, error);
        if (!table)
            return {};
        tables.push_back({file, *table});
    }
    return tables;
}

} // namespace

int runShading(Options const& options) {
    QString error;
    QString const folder = createdFolder(options.outputFolder, &error);
    std::vector<NamedShading> const tables =
        folder.isEmpty() ? std::vector<NamedShading>() : tablesFor(options, &error);
    if (tables.empty()) {
        complain(error);
        return kExitUsage;
    }
    OutputFolder output(folder);
    writeShadingReport(tables, output);
    std::printf("%s\n", qPrintable(QStringLiteral("The report is %1/report.html.").arg(folder)));
    return output.failed() ? kExitNotCalibrated : kExitDone;
}

} // namespace pictara
