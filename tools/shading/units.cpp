#include "headboard/preset_section.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"
#include "simulator/files/whole_file.h"
#include "simulator/solver/block_means.h"
#include "tools/shading/command_line.h"
#include "tools/shading/commands.h"
#include "tools/shading/correction.h"
#include "tools/shading/telling.h"

#include <QCollator>
#include <QDir>
#include <QJsonArray>
#include <algorithm>
#include <cmath>
#include <set>

namespace shading {
namespace {
using pictara::Certificate;
using simulator::Plane;
using simulator::SensorLayout;

constexpr qint64 kImageSize = 8192;
constexpr size_t kFewestUnits = 5; // of fewer, no median tells which one is odd
constexpr double kMostDistance = 3.5;
constexpr double kSigmaPerMad = 1.4826; // of a normal distribution
constexpr double kLeastSigma = 0.1;     // percent of the median gain, and of a ratio; below, registers round

/// What is told of a correction, in this order.
constexpr Column kFigures[] = {
    {"corner_gain_top_left", "top left"},       {"corner_gain_top_right", "top right"},
    {"corner_gain_bottom_left", "bottom left"}, {"corner_gain_bottom_right", "bottom right"},
    {"red_to_green_spread_percent", "R/G, %"},  {"blue_to_green_spread_percent", "B/G, %"}};
constexpr int kCorners = 4, kCount = int(std::size(kFigures));
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

// Adds the units under one lamp to what is told, and the serial numbers of those that fall out: by their
// distance from the median in scaled median absolute deviations (Iglewicz and Hoaglin 1993).
void tellUnits(std::vector<Unit> const& units, QString const& lamp, Certificate& certificate,
               QJsonArray& told, std::set<QString>& fallen) {
    Figures medians, sigmas;
    for (int i = 0; i < kCount; ++i) {
        std::vector<double> values;
        for (Unit const& unit : units)
            values.push_back(unit.figures(i));
        double const median = medians(i) = solver::median(values);
        for (double& value : values)
            value = std::abs(value - median);
        sigmas(i) = std::max(kSigmaPerMad * solver::median(values),
                             i < kCorners ? kLeastSigma / 100 * median : kLeastSigma);
    }
    pictara::Table table{"Green's gain in the corners against the centre, and colour spread; lamp: " + lamp,
                         {{"serial number", "file"}}};
    for (Column const& column : kFigures)
        table.rows[0] << column.head;
    auto const shown = [](double value) { return QString::number(value, 'f', 3); };
    auto const add = [&](QString const& serial, QString const& file, Figures const& figures) {
        table.rows.push_back({serial, file});
        std::transform(figures.begin(), figures.end(), std::back_inserter(table.rows.back()), shown);
    };
    add("median", "", medians);
    add("scaled deviation", "", sigmas);
    pictara::ProfileChart chart{
        lamp + "_lamp_percent",
        "Corner gain against the median, and colour spread, %; lamp: " + lamp,
        {{"corner gain", "luminance", {}}, {"R/G", "red-green", {}}, {"B/G", "blue-green", {}}},
        "% of the units, by serial number"};
    for (Unit const& unit : units) {
        int odd = 0; // the oddest figure
        double const distance =
            units.size() < kFewestUnits ? 0 : ((unit.figures - medians).abs() / sigmas).maxCoeff(&odd);
        bool const fallsOut = distance > kMostDistance;
        add(unit.serial, unit.file, unit.figures);
        chart.lines[0].values.push_back(
            100 * (unit.figures.head<kCorners>().mean() / medians.head<kCorners>().mean() - 1));
        chart.lines[1].values.push_back(unit.figures(kCorners));
        chart.lines[2].values.push_back(unit.figures(kCorners + 1));
        QJsonObject figures{{"serial_number", unit.serial},
                            {"file", unit.file},
                            {"lamp", lamp},
                            {"distance", pictara::rounded(distance)},
                            {"falls_out", fallsOut}};
        for (int i = 0; i < kCount; ++i)
            figures[kFigures[i].key] = pictara::rounded(unit.figures(i));
        told.append(figures);
        if (!fallsOut)
            continue;
        fallen.insert(unit.serial);
        certificate.cause +=
            QStringLiteral("%1%2 (lamp: %3): %4 is %5, median %6, %7 scaled deviations off")
                .arg(certificate.cause.isEmpty() ? "" : "; ", unit.serial, lamp, kFigures[odd].head,
                     shown(unit.figures(odd)), shown(medians(odd)), QString::number(distance, 'f', 1));
    }
    certificate.tables.push_back(table);
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
    pictara::Table unusable{"Files that cannot be used", {{"file", "cause"}}};
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
        for (auto const& [slot, gain] : gains)
            byLamp[slot].push_back({serial, file.fileName(), figuresOf(gain)});
        if (gains.empty())
            unusable.rows.push_back({file.fileName(), cause});
        else
            serials.insert(serial);
    }
    QCollator order{QLocale(QLocale::English)}; // that of C knows no numbers
    order.setNumericMode(true);
    Certificate certificate;
    QJsonArray told;
    for (auto& [slot, units] : byLamp) {
        std::stable_sort(units.begin(), units.end(),
                         [&](Unit const& a, Unit const& b) { return order.compare(a.serial, b.serial) < 0; });
        tellUnits(units, kLamps[slot], certificate, told, fallen);
    }
    if (unusable.rows.size() > 1)
        certificate.tables.push_back(unusable);
    certificate.figures["units"] = told;
    size_t const count = serials.size();
    certificate.result = count == 0             ? QStringLiteral("no units")
                         : count < kFewestUnits ? QStringLiteral("too few to compare")
                         : fallen.empty()       ? QStringLiteral("alike")
                                          : QStringLiteral("%1 of %2 fall out").arg(fallen.size()).arg(count);
    certificate.facts = {
        {"Folder", name},
        {"Sensor", camera->description().profile},
        {"Falls out", QStringLiteral("of %1 units or more, what lies more than %2 scaled median "
                                     "absolute deviations from the median (Iglewicz and Hoaglin 1993)")
                          .arg(kFewestUnits)
                          .arg(kMostDistance)}};
    certificate.figures["files_unusable"] = int(unusable.rows.size()) - 1;
    if (count == 0)
        *exitCode = kNothingFound;
    return certificate;
}
} // namespace shading
