#include "tools/shading/shading_run.h"

#include "simulator/files/interruption.h"
#include "simulator/files/whole_file.h"
#include "simulator/host/report/certificate.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "tools/shading/compare.h"
#include "tools/shading/shading_measurement.h"

#include <QFileInfo>
#include <cstdio>

namespace pictara {
namespace {
using shading::NamedShading;
using simulator::MeasuredShading;

void tell(QString const& text) {
    std::printf("%s\n", text.toLocal8Bit().constData());
    std::fflush(stdout);
}

std::optional<MeasuredShading> measure(Options const& options, QString* error) {
    // Told now and not after the measuring.
    if (!files::isReplaceable(options.measureShadingFile, error))
        return std::nullopt;
    auto const camera = openCamera(options, error);
    if (!camera)
        return std::nullopt;
    if (!options.flatFieldFile.isEmpty())
        return measureRecordedShading(options.flatFieldFile, camera->description(),
                                      camera->light().colourTemperature, error);
    std::vector<double> lights(kStandardLights.begin(), kStandardLights.end());
    if (options.lightKelvin)
        lights = {*options.lightKelvin};
    return measureShading(
        *camera, lights, [](double kelvin) { tell(QStringLiteral("measuring at %1 K...").arg(kelvin)); },
        error);
}

// One that is measured and written, or those to be compared; none with a message for the user.
std::vector<NamedShading> tablesFor(Options const& options, QString* error) {
    bool const isMeasured = !options.measureShadingFile.isEmpty();
    std::vector<NamedShading> tables;
    for (QString const& file : isMeasured ? QStringList(options.measureShadingFile) : options.comparedFiles) {
        auto const table = isMeasured ? measure(options, error) : simulator::readMeasuredShading(file, error);
        if (!table || (isMeasured && !writeMeasuredShading(file, *table, error)))
            return {};
        tables.push_back({file, *table});
    }
    return tables;
}
} // namespace

int runShading(Options const& options) {
    QString error;
    std::optional<QString> const folder = createdFolder(options.outputFolder, &error);
    auto const tables = folder ? tablesFor(options, &error) : std::vector<NamedShading>();
    if (tables.empty())
        return files::isInterrupted() ? kExitInterrupted : refuse(error);
    bool const areTwo = tables.size() == 2;
    if (!areTwo)
        tell(QStringLiteral("The table is %1.").arg(QFileInfo(tables.front().file).absoluteFilePath()));
    Certificate const certificate = shading::tablesTold(tables);
    OutputFolder output(*folder);
    QString const page = writeCertificate(certificate, output);
    if (output.failed())
        return kExitNotCalibrated;
    tell(certificateText(certificate));
    tell(QStringLiteral("The page is %1.").arg(page));
    return kExitDone;
}
} // namespace pictara
