#include "tools/shading/measure.h"

#include "simulator/host/session/words.h"
#include "tools/shading/command_line.h"
#include "tools/shading/compare.h"
#include "tools/shading/turned.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QRegularExpression>
#include <algorithm>
#include <cmath>
#include <map>

namespace shading {
namespace {
using pictara::Certificate;
using pictara::rounded;
using simulator::MeasuredShading;
using solver::Flaw;

// Outliers by their distance from the median picture, in scaled median absolute deviations (Iglewicz and
// Hoaglin 1993); below the bound noise is all.
constexpr double kOutlier = 3.5, kSigmaPerMad = 1.4826;
constexpr double kLeastOutlier = 0.02; // share of a cell
constexpr size_t kFewestToCompare = 3;

struct Seen {
    PictureMeans means;
    bool isTurned = false;
    double kelvin = 0;
    QString cause{};      ///< why it is left out
    double deviation = 0; ///< of its cells from the median picture's, the largest; share of 1
};
using Pictures = std::vector<Seen*>;

std::nullopt_t fail(QString const& file, QString const& cause, QString* error) {
    *error = QStringLiteral("%1: %2").arg(file, cause);
    return std::nullopt;
}

// The number before a "k" that stands by itself.
std::optional<double> lampIn(QString const& file) {
    static QRegularExpression const form(QStringLiteral("(?:^|[^0-9A-Za-z])(\\d{4,5})[kK](?![0-9A-Za-z])"));
    return pictara::numberIn(pictara::kColourTemperatures,
                             form.match(QFileInfo(file).completeBaseName()).captured(1));
}

// The light alone may differ between pictures: each plane's mean is 1.
void scale(Cells& cells) {
    for (size_t colour = 0; colour < 3; ++colour) {
        double mean = 0;
        for (pictara::Colour const& cell : cells)
            mean += cell[colour] / double(cells.size());
        for (pictara::Colour& cell : cells)
            cell[colour] /= mean;
    }
}

Pictures usedOf(Pictures pictures) {
    pictures.erase(std::remove_if(pictures.begin(), pictures.end(),
                                  [](Seen const* seen) { return !seen->cause.isEmpty(); }),
                   pictures.end());
    return pictures;
}

void leaveOutliersOut(Pictures const& pictures) {
    for (size_t i = 0; i < 3 * pictures[0]->means.cells.size(); ++i) {
        auto const value = [&](Seen const* seen) { return seen->means.cells[i / 3][i % 3]; };
        std::vector<double> values;
        std::transform(pictures.begin(), pictures.end(), std::back_inserter(values), value);
        double const middle = solver::median(values);
        for (Seen* seen : pictures)
            seen->deviation = std::max(seen->deviation, std::abs(value(seen) / middle - 1));
    }
    std::vector<double> deviations, distances;
    for (Seen const* seen : pictures)
        deviations.push_back(seen->deviation);
    double const usual = solver::median(deviations);
    for (double const deviation : deviations)
        distances.push_back(std::abs(deviation - usual));
    double const limit = std::max(kLeastOutlier, usual + kOutlier * kSigmaPerMad * solver::median(distances));
    for (Seen* seen : pictures)
        if (seen->deviation > limit)
            seen->cause =
                QStringLiteral("a cell differs by %1 % from the median of the pictures, by more than %2 %")
                    .arg(100 * seen->deviation, 0, 'f', 1)
                    .arg(100 * limit, 0, 'f', 1);
}

// Empty, with the first one's cause for the user, when none can be used.
std::optional<Cells> meanOf(Pictures const& all, QString* error) {
    Pictures used = usedOf(all);
    if (used.size() >= kFewestToCompare)
        leaveOutliersOut(used);
    used = usedOf(used);
    if (used.empty())
        return fail(all[0]->means.file, all[0]->cause, error);
    Cells mean(used[0]->means.cells.size());
    for (Seen const* seen : used)
        for (size_t i = 0; i < 3 * mean.size(); ++i)
            mean[i / 3][i % 3] += seen->means.cells[i / 3][i % 3] / double(used.size());
    return mean;
}

// The pictures, marked where they are no flat field. Empty with a message for the user.
std::optional<std::vector<Seen>> readPictures(MeasureRequest const& request, QString* error) {
    std::vector<Seen> pictures;
    for (QString const& file : request.files + request.turned) {
        std::optional<double> const kelvin = request.kelvin ? request.kelvin : lampIn(file);
        if (!kelvin)
            return fail(file, "its name tells no lamp, as flat_2856k_1.dng does; --light tells it", error);
        pictures.push_back({{}, int(pictures.size()) >= request.files.size(), *kelvin});
    }
    auto const read = readMeans(request.files + request.turned, request.coding, error);
    for (size_t i = 0; read && i < read->size(); ++i) {
        PictureMeans const &means = (*read)[i], &first = read->front();
        if (means.width != first.width || means.height != first.height)
            return fail(means.file,
                        QStringLiteral("it has %1 x %2 pixels, unlike %3")
                            .arg(means.width)
                            .arg(means.height)
                            .arg(first.file),
                        error);
        pictures[i].means = means;
        scale(pictures[i].means.cells);
        // An uneven lamp is what turned pictures are taken for.
        if (means.inspection.flaw != Flaw::UnevenLamp || request.turned.isEmpty())
            pictures[i].cause = means.inspection.fault;
    }
    return read ? std::optional(std::move(pictures)) : std::nullopt;
}

void tellPictures(std::vector<Seen> const& pictures, Certificate& certificate) {
    pictara::Table table{"Pictures", {{"picture", "lamp", "used", "farthest cell from the median %"}}};
    QJsonArray figures;
    for (Seen const& seen : pictures) {
        QString const used = !seen.cause.isEmpty() ? "no" : seen.isTurned ? "turned" : "yes";
        table.rows.push_back({seen.means.file, QStringLiteral("%1 K").arg(seen.kelvin), used,
                              QString::number(100 * seen.deviation, 'f', 2)});
        figures.append(QJsonObject{{"file", seen.means.file},
                                   {"colour_temperature_K", seen.kelvin},
                                   {"used", used},
                                   {"left_out_because", seen.cause},
                                   {"farthest_cell_percent", rounded(100 * seen.deviation)}});
        certificate.facts.emplace_back(seen.means.file + ": left out", seen.cause);
    }
    certificate.tables.insert(certificate.tables.begin(), table);
    certificate.figures["pictures"] = figures;
}

void tellLamps(std::map<double, LensAndLamp> const& lamps, int columns, Certificate& certificate) {
    pictara::Table table{"Lamps", {{"lamp", "left to right %", "top to bottom %", "left over %"}}};
    QJsonArray figures;
    for (auto const& [kelvin, told] : lamps) {
        QString const name = QStringLiteral("%1 K").arg(kelvin);
        auto const text = [](double share) { return QString::number(100 * share, 'f', 2); };
        table.rows.push_back({name, text(told.across), text(told.down), text(told.leftOver)});
        figures.append(QJsonObject{{"colour_temperature_K", kelvin},
                                   {"gradient_left_right_percent", rounded(100 * told.across)},
                                   {"gradient_top_bottom_percent", rounded(100 * told.down)},
                                   {"left_over_percent", rounded(100 * told.leftOver)}});
        std::vector<double> percent;
        for (double const light : told.lamp)
            percent.push_back(100 * (light - 1));
        double const end = std::max(1.0, pictara::largestOf(percent));
        certificate.maps.push_back({"lamp above its middle, " + name, " %", columns, percent, -end, end});
    }
    certificate.tables.insert(certificate.tables.begin(), table);
    certificate.figures["lamps"] = figures;
}
} // namespace

std::optional<Certificate> measure(MeasureRequest const& request, int* exitCode, QString* error) {
    auto pictures = request.table.isReplaceable(error) ? readPictures(request, error) : std::nullopt;
    if (!pictures)
        return std::nullopt;
    std::map<double, std::pair<Pictures, Pictures>> byLamp; // straight and turned ones
    for (Seen& seen : *pictures)
        (seen.isTurned ? byLamp[seen.kelvin].second : byLamp[seen.kelvin].first).push_back(&seen);
    PictureMeans const& first = pictures->front().means;
    MeasuredShading shading{
        QFileInfo(request.table.name).completeBaseName(), uint32_t(first.columns), uint32_t(first.rows), {}};
    std::map<double, LensAndLamp> lamps;
    *exitCode = kNothingFound;
    for (auto const& [kelvin, of] : byLamp) {
        auto const& [straight, turned] = of;
        QString const& named = (straight.empty() ? turned : straight)[0]->means.file;
        if (straight.empty() || turned.empty() != request.turned.isEmpty())
            return fail(named,
                        QStringLiteral("of its lamp, %1 K, the camera took no %2 pictures")
                            .arg(kelvin)
                            .arg(straight.empty() ? "straight" : "turned"),
                        error);
        std::optional<Cells> cells = meanOf(straight, error);
        std::optional<Cells> const other = cells && !turned.empty() ? meanOf(turned, error) : cells;
        if (!cells || !other)
            return std::nullopt;
        if (!turned.empty()) {
            auto const told = separate(*cells, *other, first.columns);
            if (!told)
                return fail(named, "the lamp of these pictures cannot be told from the lens", error);
            cells = lamps.emplace(kelvin, *told).first->second.lens;
        }
        auto const illuminant = gainsOf(*cells, kelvin);
        if (!illuminant)
            return fail(named, "a cell of its picture is not above the black level", error);
        shading.illuminants.push_back(*illuminant);
    }
    *exitCode = kDone;
    if (!request.table.write(shading, error))
        return std::nullopt;
    Certificate certificate = tablesTold({{request.table.name, shading}});
    if (!lamps.empty())
        tellLamps(lamps, first.columns, certificate);
    tellPictures(*pictures, certificate);
    return certificate;
}
} // namespace shading
