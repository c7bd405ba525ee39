#include "tools/shading/shading_run.h"

#include "simulator/files/interruption.h"
#include "simulator/files/whole_file.h"
#include "simulator/host/report/report.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "tools/shading/shading_measurement.h"

#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <set>

namespace pictara {
namespace {
using simulator::MeasuredShading;

// Tables may differ in grid and lights: all are brought to one grid and to the lights of any, as a camera
// would that they are put before.
constexpr simulator::SensorArray kGrid{.width = 32, .height = 24};

struct PlaneRow {
    simulator::Plane plane;
    char const* name;
};
constexpr PlaneRow kPlanes[] = {
    {simulator::Plane::Red, "red"}, {simulator::Plane::GreenRed, "green"}, {simulator::Plane::Blue, "blue"}};

struct NamedShading {
    QString file;
    MeasuredShading shading;
};

// What makes the plane flat at that light; the smallest gain is 1.
std::vector<double> gainsOf(MeasuredShading const& shading, simulator::Plane plane, double kelvin) {
    simulator::LensRows const lens = simulator::measuredLens(shading, kGrid, kelvin);
    std::vector<float> row(kGrid.width);
    std::vector<double> gains;
    for (uint32_t y = 0; y < kGrid.height; ++y) {
        lens(plane, y, row);
        std::transform(row.begin(), row.end(), std::back_inserter(gains),
                       [](float response) { return 1 / double(response); });
    }
    double const smallest = *std::min_element(gains.begin(), gains.end());
    for (double& gain : gains)
        gain /= smallest;
    return gains;
}

Section tableSection(std::vector<NamedShading> const& tables) {
    Section section{
        "tables",
        "Tables",
        Layout::Rows,
        {{"file", "file", {}}, {"name", "lens", {}}, {"columns", "columns", {}}, {"rows", "rows", {}}}};
    for (auto const& [file, shading] : tables)
        section.add({file, shading.name, int(shading.columns), int(shading.rows)});
    return section;
}

// How far the second gains lie above the first: the farthest, with its sign, and the root of the mean square.
std::pair<double, double> differenceOf(std::vector<double> const& first, std::vector<double> const& second) {
    double farthest = 0, squares = 0;
    for (size_t i = 0; i < first.size(); ++i) {
        double const difference = 100 * (second[i] / first[i] - 1);
        squares += difference * difference / double(first.size());
        farthest = std::abs(difference) > std::abs(farthest) ? difference : farthest;
    }
    return {farthest, std::sqrt(squares)};
}

// Each plane at each light of any table.
Section planeSection(std::vector<NamedShading> const& tables) {
    Section section{"planes",
                    "Gains that make each plane flat",
                    Layout::Rows,
                    {{"colour_temperature_K", "light", {}, " K"},
                     {"plane", "plane", {}},
                     {"largest_gain", "largest gain", {}, {}, 3}}};
    if (tables.size() == 2)
        section.facts.insert(
            section.facts.end(),
            {{"second_largest_gain", "largest gain of the second table", {}, {}, 3},
             {"largest_difference_percent", "second above (-: below) the first, largest", {}, " %", 2},
             {"rms_difference_percent", "difference, r.m.s.", {}, " %", 2}});
    std::set<double> lights;
    for (NamedShading const& table : tables)
        for (auto const& illuminant : table.shading.illuminants)
            lights.insert(illuminant.temperature);
    for (double const kelvin : lights)
        for (PlaneRow const& plane : kPlanes) {
            std::vector<double> const first = gainsOf(tables.front().shading, plane.plane, kelvin),
                                      second = gainsOf(tables.back().shading, plane.plane, kelvin);
            auto const [farthest, rms] = differenceOf(first, second);
            section.add({kelvin, plane.name, largestOf(first), largestOf(second), farthest, rms});
        }
    return section;
}

// At a table's first light, in the colours of its strongest plane.
Section mapSection(NamedShading const& table) {
    Section section{"maps", QStringLiteral("Gains of ") + table.file};
    double const kelvin = table.shading.illuminants.front().temperature;
    double end = 1;
    for (PlaneRow const& plane : kPlanes) {
        section.maps.push_back({QStringLiteral("%1, %2 K").arg(plane.name).arg(kelvin),
                                {},
                                int(kGrid.width),
                                gainsOf(table.shading, plane.plane, kelvin),
                                1});
        end = std::max(end, largestOf(section.maps.back().values));
    }
    for (HeatMap& map : section.maps)
        map.high = end;
    return section;
}

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
    Report report{
        "shading", areTwo ? "compared" : "measured", {}, {tableSection(tables), planeSection(tables)}};
    std::transform(tables.begin(), tables.end(), std::back_inserter(report.sections), mapSection);
    OutputFolder output(*folder);
    QString const page = writeReport(report, output);
    if (output.failed())
        return kExitNotCalibrated;
    tell(QStringLiteral("The report is %1.").arg(page));
    return kExitDone;
}
} // namespace pictara
