#include "simulator/host/session/words.h"
#include "tools/shading/camera_measurement.h"
#include "tools/shading/commands.h"
#include "tools/shading/tables.h"
#include "tools/shading/turned.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <algorithm>
#include <map>

namespace shading {
namespace {
using pictara::Certificate;
using simulator::MeasuredShading;
using solver::Flaw;

// Outliers by their distance from the median picture, in scaled median absolute deviations (Iglewicz and
// Hoaglin 1993); below the bound noise is all.
constexpr double kOutlier = 3.5;
constexpr double kLeastOutlier = 2;    // percent of a cell
constexpr size_t kFewestToCompare = 3; // of two nobody knows which one is odd

struct Seen {
    PictureMeans means;
    double kelvin;
    bool isTurned;
    QString cause{};        ///< why it is left out
    QJsonValue deviation{}; ///< of its cells from the median of several pictures, the largest; percent
};
using Pictures = std::vector<Seen*>;

constexpr Column kPictureColumns[] = {{"file", "picture"},
                                      {"colour_temperature_K", "lamp", -1, " K"},
                                      {"turned", "turned"},
                                      {"used", "used"},
                                      {"farthest_cell_percent", "farthest cell from the median %", 2},
                                      {"left_out_because", nullptr}};
constexpr Column kLampColumns[] = {{"colour_temperature_K", "lamp", -1, " K"},
                                   {"gradient_left_right_percent", "left to right %", 2},
                                   {"gradient_top_bottom_percent", "top to bottom %", 2},
                                   {"left_over_percent", "left over in green %", 2}};

// The number before a "k" that stands by itself.
std::optional<double> lampIn(QString const& file) {
    static QRegularExpression const form(QStringLiteral("(?:^|[^0-9A-Za-z])(\\d{4,5})[kK](?![0-9A-Za-z])"));
    return pictara::numberIn(pictara::kColourTemperatures,
                             form.match(QFileInfo(file).completeBaseName()).captured(1));
}

void markOutliers(Pictures const& pictures) {
    Cells middle = pictures[0]->means.cells;
    for (Eigen::Index i = 0; i < middle.size(); ++i) {
        std::vector<double> values;
        for (Seen const* seen : pictures)
            values.push_back(seen->means.cells.data()[i]);
        middle.data()[i] = solver::median(values);
    }
    std::vector<double> deviations;
    for (Seen const* seen : pictures)
        deviations.push_back(100 * (seen->means.cells / middle - 1).abs().maxCoeff());
    std::vector<double> sorted = deviations;
    double const usual = solver::median(sorted);
    double const limit =
        std::max(kLeastOutlier, usual + kOutlier * solver::scaledDeviation(deviations, usual));
    for (size_t i = 0; i < pictures.size(); ++i) {
        pictures[i]->deviation = deviations[i];
        if (deviations[i] > limit && pictures.size() >= kFewestToCompare)
            pictures[i]->cause = QString::asprintf(
                "a cell differs by %.1f %% from the median of the pictures, by more than %.1f %%",
                deviations[i], limit);
    }
}

// Empty, with the first one's cause for the user, when none can be used.
std::optional<Cells> meanOf(Pictures pictures, QString* error) {
    Seen const& first = *pictures[0];
    auto const isLeftOut = [](Seen const* seen) { return !seen->cause.isEmpty(); };
    std::erase_if(pictures, isLeftOut);
    if (pictures.size() > 1)
        markOutliers(pictures);
    std::erase_if(pictures, isLeftOut);
    if (pictures.empty())
        return fail(first.means.of.file, first.cause, error);
    Cells sum = Cells::Zero(first.means.cells.rows(), 3);
    for (Seen const* seen : pictures)
        sum += seen->means.cells;
    return sum / double(pictures.size());
}

// The pictures, marked where they are no flat field. Empty with a message for the user.
std::optional<std::vector<Seen>> readPictures(Request const& request, QString* error) {
    std::vector<Seen> pictures;
    for (QString const& file : request.files + request.turned) {
        std::optional<double> const kelvin = request.kelvin ? request.kelvin : lampIn(file);
        if (!kelvin)
            return fail(file, "its name tells no lamp, as flat_2856k_1.dng does; --light tells it", error);
        std::optional<PictureMeans> means = readMeans(file, request.coding, error);
        if (!means)
            return std::nullopt;
        Mosaic const &of = means->of, &first = pictures.empty() ? of : pictures[0].means.of;
        if (of.width != first.width || of.height != first.height)
            return fail(file,
                        QString::asprintf("it has %u x %u pixels, unlike ", of.width, of.height) + first.file,
                        error);
        // The light alone may differ between pictures.
        means->cells.rowwise() /= means->cells.colwise().mean();
        // An uneven lamp is what turned pictures are taken for.
        bool const isUsable = means->inspection.flaw == Flaw::UnevenLamp && !request.turned.isEmpty();
        QString const cause = isUsable ? QString() : means->inspection.fault;
        bool const isTurned = int(pictures.size()) >= request.files.size();
        pictures.push_back({*std::move(means), *kelvin, isTurned, cause});
    }
    return pictures;
}

void tellPictures(std::vector<Seen> const& pictures, Certificate& certificate) {
    std::vector<QJsonArray> rows;
    rows.reserve(pictures.size());
    for (Seen const& seen : pictures)
        rows.push_back({seen.means.of.file, seen.kelvin, seen.isTurned, seen.cause.isEmpty(), seen.deviation,
                        seen.cause});
    tell(certificate, "pictures", "Pictures", kPictureColumns, rows);
}

pictara::HeatMap mapOf(LensAndLamp const& told, double kelvin, int columns) {
    Eigen::ArrayXd const percent = 100 * (told.lamp - 1);
    double const end = std::max(1.0, percent.abs().maxCoeff());
    QString const title = QStringLiteral("lamp above its middle, %1 K").arg(kelvin);
    return {title, " %", columns, {percent.begin(), percent.end()}, -end, end};
}

std::optional<Certificate> measureCamera(Request const& request, int* exitCode, QString* error) {
    if (request.sensor.isEmpty())
        return *error = QStringLiteral("Pictures are needed, or a simulated --sensor."), std::nullopt;
    auto const camera = simulator::SimulatedCamera::open(request.sensor, error);
    if (!camera)
        return std::nullopt;
    std::vector<double> lights(kStandardLights.begin(), kStandardLights.end());
    if (request.kelvin)
        lights = {*request.kelvin};
    auto const table = measureShading(*camera, lights, error);
    *exitCode = table ? kDone : kNothingFound;
    if (!table || !writeTable({request.output, *table}, request.tuning, error))
        return std::nullopt;
    Certificate certificate{{}, "measured"};
    tellTables({{request.output, *table}}, certificate);
    return certificate;
}
} // namespace

std::optional<Certificate> measure(Request const& request, int* exitCode, QString* error) {
    if (request.files.isEmpty())
        return measureCamera(request, exitCode, error);
    auto pictures = readPictures(request, error);
    if (!pictures)
        return std::nullopt;
    std::map<double, std::array<Pictures, 2>> byLamp; // straight and turned ones
    for (Seen& seen : *pictures)
        byLamp[seen.kelvin][seen.isTurned ? 1 : 0].push_back(&seen);
    PictureMeans const& first = pictures->front().means;
    MeasuredShading shading{
        QFileInfo(request.output).completeBaseName(), uint32_t(first.columns), uint32_t(first.rows), {}};
    std::vector<QJsonArray> lamps;
    std::vector<pictara::HeatMap> lampMaps;
    *exitCode = kNothingFound;
    for (auto const& [kelvin, of] : byLamp) {
        auto const& [straight, turned] = of;
        QString const& named = (straight.empty() ? turned : straight)[0]->means.of.file;
        if (straight.empty() || turned.empty() != request.turned.isEmpty())
            return fail(named,
                        QString::asprintf("of its lamp, %g K, the camera took no %s pictures", kelvin,
                                          straight.empty() ? "straight" : "turned"),
                        error);
        std::optional<Cells> cells = meanOf(straight, error);
        std::optional<Cells> const other = cells && !turned.empty() ? meanOf(turned, error) : cells;
        if (!cells || !other)
            return std::nullopt;
        if (!turned.empty()) {
            auto const told = separate(*cells, *other, first.columns);
            if (!told)
                return fail(named, "the lamp of these pictures cannot be told from the lens", error);
            cells = told->lens;
            lamps.push_back({kelvin, 100 * told->across, 100 * told->down, 100 * told->leftOver});
            lampMaps.push_back(mapOf(*told, kelvin, first.columns));
        }
        auto const illuminant = gainsOf(*cells, kelvin);
        if (!illuminant)
            return fail(named, "a cell of its picture is not above the black level", error);
        shading.illuminants.push_back(*illuminant);
    }
    *exitCode = kDone;
    if (!writeTable({request.output, shading}, request.tuning, error))
        return std::nullopt;
    Certificate certificate{{}, "measured"};
    tellPictures(*pictures, certificate);
    tell(certificate, "lamps", "How the lamps rise", kLampColumns, lamps);
    tellTables({{request.output, shading}}, certificate);
    certificate.maps.insert(certificate.maps.end(), lampMaps.begin(), lampMaps.end());
    return certificate;
}
} // namespace shading
