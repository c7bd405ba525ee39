#include "headboard/preset_section.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"
#include "simulator/files/whole_file.h"
#include "simulator/solver/block_means.h"
#include "tools/shading/commands.h"
#include "tools/shading/correction.h"

#include <QCollator>
#include <QDir>
#include <algorithm>
#include <set>

namespace shading {
namespace {
using pictara::Certificate;
using simulator::Plane;
using simulator::SensorLayout;

constexpr qint64 kImageSize = 8192;
constexpr size_t kFewestUnits = 5; // of fewer, no median tells which one is odd
constexpr double kMostDistance = 3.5;
constexpr double kLeastSigma = 0.1; // percent of the median gain, and of a ratio; below, registers round

/// What is told of a unit under one lamp; the figures of its correction stand in the middle.
constexpr Column kColumns[] = {{"serial_number", "serial number"},
                               {"lamp", "lamp"},
                               {"file", "file"},
                               {"corner_gain_top_left", "top left", 3},
                               {"corner_gain_top_right", "top right", 3},
                               {"corner_gain_bottom_left", "bottom left", 3},
                               {"corner_gain_bottom_right", "bottom right", 3},
                               {"red_to_green_spread_percent", "R/G, %", 3},
                               {"blue_to_green_spread_percent", "B/G, %", 3},
                               {"distance", "scaled deviations off", 1},
                               {"falls_out", "falls out"}};
constexpr Column kUnusableColumns[] = {{"file", "file"}, {"cause", "cause"}};
constexpr int kCorners = 4, kCount = 6, kFirst = 3; ///< of the figures
using Figures = Eigen::Array<double, kCount, 1>;

/// A unit under one lamp.
struct Unit {
    QString serial, file;
    Figures figures;
};

// The lamp that a slot's table is made for; the base is for all.
constexpr char const* kLamps[] = {"any", "", "incandescent", "fluorescent", "daylight"};

// Green's gain in the corners, and how far the ratio of two planes' gains goes over centre and corners.
Figures figuresOf(Gain const& gain) {
    // Green's, and red's and blue's against it.
    auto const at = [&](double x, double y) {
        double const green = (gain(Plane::GreenRed, x, y) + gain(Plane::GreenBlue, x, y)) / 2;
        return Eigen::Array3d(green, gain(Plane::Red, x, y) / green, gain(Plane::Blue, x, y) / green);
    };
    Eigen::Array<double, 3, kCorners + 1> against; // the centre
    against.col(kCorners).setOnes();
    for (int i = 0; i < kCorners; ++i)
        against.col(i) = at(i & 1, i >> 1) / at(0.5, 0.5);
    Eigen::Array3d const spread = 100 * (against.rowwise().maxCoeff() - against.rowwise().minCoeff());
    Figures figures;
    figures << against.row(0).head<kCorners>().transpose(), spread(1), spread(2);
    return figures.isFinite().select(figures, 0); // a gain may be none
}

bool isResults(QFileInfo const& file) {
    return file.suffix().compare(QLatin1String("ini"), Qt::CaseInsensitive) == 0;
}

bool readResults(QString const& name, SensorLayout const& layout, RegisterValues& values, QString* error) {
    auto const text = files::read(name, files::kMostText, error);
    if (!text)
        return false;
    // The library notes the sensor; sensors of a family have registers at the same places.
    QString const note =
        QStringLiteral("; sensor kind %1, variant %2\n").arg(layout.kind).arg(layout.variant);
    if (text->contains("; sensor kind ") && !text->contains(note.toLatin1())) {
        *error = name + QStringLiteral(": it is of another sensor");
        return false;
    }
    for (auto const& [line, entry, isWhole] :
         kestra::presetEntries(name.toUtf8().constData(), "Lens Correction"))
        if (entry.registerClass == kestra::kSensorRegister && entry.mask == 0 && isWhole)
            values[{entry.id, entry.address}] = entry.value;
    return true;
}

// As the camera does when it starts up, by the first record of each type.
bool readImage(QString const& name, simulator::SimulatedCamera& camera, RegisterValues& values,
               QString& serial, QString* error) {
    if (!camera.loadEeprom(name, error))
        return false;
    std::map<uint8_t, simulator::StoredRecord> first;
    for (simulator::StoredRecord const& record : camera.eepromRecords())
        first.try_emplace(record.type, record);
    if (QString const told = first[kestra::kRecordHeadboardId].text.trimmed(); !told.isEmpty())
        serial = told;
    simulator::StoredRecord const& shading = first[kestra::kRecordPga];
    for (simulator::StoredSetting const& setting : shading.settings)
        if (setting.addressSpace == 0 && setting.mask == 0)
            values[{setting.id, setting.address}] = setting.value;
    if (!shading.fault.isEmpty())
        *error = QStringLiteral("%1: %2").arg(name, shading.fault);
    return shading.fault.isEmpty();
}

using Rows = std::vector<QJsonArray>;

QJsonArray rowOf(QString const& serial, QString const& lamp, QString const& file, Figures const& figures) {
    QJsonArray row{serial, lamp, file};
    for (double const figure : figures)
        row.append(figure);
    return row;
}

// Adds the units under one lamp, their medians and scaled deviations, and those that fall out: by their
// distance from the median in scaled median absolute deviations (Iglewicz and Hoaglin 1993).
void tellUnits(std::vector<Unit> const& units, QString const& lamp, Certificate& certificate, Rows& rows,
               Rows& medians, std::set<QString>& fallen) {
    Figures middle, sigmas;
    for (int i = 0; i < kCount; ++i) {
        std::vector<double> values(units.size());
        std::ranges::transform(units, values.begin(), [i](Unit const& unit) { return unit.figures(i); });
        middle(i) = solver::median(values);
        sigmas(i) = std::max(solver::scaledDeviation(values, middle(i)),
                             i < kCorners ? kLeastSigma / 100 * middle(i) : kLeastSigma);
    }
    medians.push_back(rowOf("median", lamp, {}, middle));
    medians.push_back(rowOf("scaled deviation", lamp, {}, sigmas));
    pictara::ProfileChart chart{
        lamp + "_lamp_percent",
        "Corner gain against the median, and colour spread, %; lamp: " + lamp,
        {{"corner gain", "luminance", {}}, {"R/G", "red-green", {}}, {"B/G", "blue-green", {}}},
        "% of the units, by serial number"};
    for (Unit const& unit : units) {
        int odd = 0; // the oddest figure
        double const distance =
            units.size() < kFewestUnits ? 0 : ((unit.figures - middle).abs() / sigmas).maxCoeff(&odd);
        bool const fallsOut = distance > kMostDistance;
        rows.push_back(rowOf(unit.serial, lamp, unit.file, unit.figures));
        rows.back().append(distance);
        rows.back().append(fallsOut);
        chart.lines[0].values.push_back(
            100 * (unit.figures.head<kCorners>().mean() / middle.head<kCorners>().mean() - 1));
        chart.lines[1].values.push_back(unit.figures(kCorners));
        chart.lines[2].values.push_back(unit.figures(kCorners + 1));
        if (fallsOut && fallen.insert(unit.serial).second)
            certificate.cause += QString::asprintf(
                "%s%s: %s is %.3f, median %.3f", certificate.cause.isEmpty() ? "" : "; ",
                qUtf8Printable(unit.serial), kColumns[kFirst + odd].head, unit.figures(odd), middle(odd));
    }
    certificate.profiles.push_back(chart);
}
} // namespace

std::optional<Certificate> units(Request const& request, int* exitCode, QString* error) {
    QString const& name = request.files[0];
    QDir const folder(name);
    if (!folder.exists())
        return fail(name, "there is no such folder", error);
    auto const camera = simulator::SimulatedCamera::open(request.sensor, error);
    auto const layout = camera ? layoutOf(*camera, error) : std::nullopt;
    if (!layout)
        return std::nullopt;
    std::map<uint32_t, std::vector<Unit>> byLamp;
    Rows rows, medians, unusable;
    std::set<QString> serials, fallen;
    for (QFileInfo const& file : folder.entryInfoList(QDir::Files, QDir::Name)) {
        if (!isResults(file) && file.size() != kImageSize && file.suffix() != QLatin1String("bin"))
            continue;
        QString cause = file.filePath() + QLatin1String(": it holds no whole correction of the sensor");
        QString serial = file.completeBaseName();
        RegisterValues values;
        std::map<uint32_t, Gain> gains;
        if (isResults(file) ? readResults(file.filePath(), *layout, values, &cause)
                            : readImage(file.filePath(), *camera, values, serial, &cause))
            gains = gainsIn(*layout, values);
        if (!gains.empty() && !serials.insert(serial).second) {
            cause = QStringLiteral("%1: another file is of %2, too").arg(file.filePath(), serial);
            gains.clear();
        }
        for (auto const& [slot, gain] : gains)
            byLamp[slot].push_back({serial, file.fileName(), figuresOf(gain)});
        if (gains.empty())
            unusable.push_back({file.fileName(), cause});
    }
    QCollator order{QLocale(QLocale::English)}; // that of C knows no numbers
    order.setNumericMode(true);
    Certificate certificate;
    for (auto& [slot, units] : byLamp) {
        std::stable_sort(units.begin(), units.end(),
                         [&](Unit const& a, Unit const& b) { return order.compare(a.serial, b.serial) < 0; });
        tellUnits(units, kLamps[slot], certificate, rows, medians, fallen);
    }
    tell(certificate, "medians", "Medians and scaled median absolute deviations",
         std::span(kColumns).first(kFirst + kCount), medians);
    tell(certificate, "units", "Green's gain in the corners against the centre, and colour spread", kColumns,
         rows);
    tell(certificate, "files_unusable", "Files that cannot be used", kUnusableColumns, unusable);
    size_t const count = serials.size();
    certificate.result = count == 0             ? QStringLiteral("no units")
                         : count < kFewestUnits ? QStringLiteral("too few to compare")
                         : fallen.empty()       ? QStringLiteral("alike")
                                          : QStringLiteral("%1 of %2 fall out").arg(fallen.size()).arg(count);
    QString const bound = QString::asprintf(
        "of %zu units or more, what lies more than %g scaled median absolute deviations from "
        "the median (Iglewicz and Hoaglin 1993)",
        kFewestUnits, kMostDistance);
    certificate.facts = {{"Folder", name}, {"Sensor", camera->description().profile}, {"Falls out", bound}};
    if (count == 0)
        *exitCode = kNothingFound;
    return certificate;
}
} // namespace shading
