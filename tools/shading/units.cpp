#include "tools/shading/units.h"

#include "headboard/preset_section.h"
#include "headboard/record_format.h"
#include "headboard/register_set.h"
#include "simulator/files/whole_file.h"
#include "simulator/solver/block_means.h"
#include "tools/shading/command_line.h"
#include "tools/shading/correction.h"

#include <QCollator>
#include <QDir>
#include <QJsonArray>
#include <algorithm>
#include <cmath>
#include <set>

namespace shading {
namespace {
using pictara::Certificate;
using pictara::rounded;
using simulator::Plane;
using simulator::SensorLayout;

constexpr qint64 kImageSize = 8192;
constexpr size_t kFewestUnits = 5; // of fewer, no median tells which one is odd
constexpr double kMostDistance = 3.5;
constexpr double kSigmaPerMad = 1.4826; // of a normal distribution
constexpr double kLeastSigma = 0.1;     // percent of the median gain, and of a ratio; below, registers round

/// What is told of a correction, in this order.
struct FigureRow {
    char const* name; ///< for people
    char const* key;  ///< for scripts
};
constexpr FigureRow kFigures[] = {
    {"top left", "corner_gain_top_left"},       {"top right", "corner_gain_top_right"},
    {"bottom left", "corner_gain_bottom_left"}, {"bottom right", "corner_gain_bottom_right"},
    {"R/G, %", "red_to_green_spread_percent"},  {"B/G, %", "blue_to_green_spread_percent"}};
constexpr size_t kCorners = 4, kCount = std::size(kFigures);
using Figures = std::array<double, kCount>;

/// A unit under one lamp.
struct Unit {
    QString serial, file;
    uint32_t slot = 0;
    Figures figures{}, distances{};

    [[nodiscard]] size_t worst() const {
        return size_t(std::max_element(distances.begin(), distances.end()) - distances.begin());
    }
    [[nodiscard]] bool fallsOut() const { return distances[worst()] > kMostDistance; }
};

// The lamp that a slot's table is made for; the base is for all.
QString lampName(uint32_t slot) {
    constexpr char const* kNames[] = {"any", "", "incandescent", "fluorescent", "daylight"};
    return QString::fromLatin1(kNames[slot]);
}

QString shown(double value) { return QString::number(value, 'f', 3); }

// Green's gain in the corners, and how far the ratio of two planes' gains goes over centre and corners.
Figures figuresOf(Gain const& gain) {
    auto const ratio = [](double one, double other) { return other > 0 ? one / other : 0; };
    auto const at = [&](double x, double y) { // red's and blue's against green's
        double const green = (gain(Plane::GreenRed, x, y) + gain(Plane::GreenBlue, x, y)) / 2;
        return std::array{green, ratio(gain(Plane::Red, x, y), green), ratio(gain(Plane::Blue, x, y), green)};
    };
    Figures figures{};
    auto const centre = at(0.5, 0.5);
    std::array<double, 2> low{1, 1}, high{1, 1}; // as in the centre
    for (size_t i = 0; i < kCorners; ++i) {
        auto const corner = at(double(i & 1), double(i >> 1));
        figures[i] = ratio(corner[0], centre[0]);
        for (size_t colour = 0; colour < 2; ++colour) {
            double const here = ratio(corner[1 + colour], centre[1 + colour]);
            low[colour] = std::min(low[colour], here);
            high[colour] = std::max(high[colour], here);
            figures[kCorners + colour] = 100 * (high[colour] - low[colour]);
        }
    }
    return figures;
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

// A unit for each lamp; none with the cause for a file without a correction of the sensor.
std::vector<Unit> readUnit(QFileInfo const& file, simulator::SimulatedCamera& camera,
                           SensorLayout const& layout, QString* error) {
    QString serial = file.completeBaseName();
    RegisterValues values;
    if (!(isResults(file) ? readResults(file.filePath(), layout, values, error)
                          : readImage(file.filePath(), camera, values, serial, error)))
        return {};
    std::vector<Unit> units;
    for (auto const& [slot, gain] : gainsIn(layout, values))
        units.push_back({serial, file.fileName(), slot, figuresOf(gain)});
    if (units.empty())
        *error = QStringLiteral("%1: it holds no whole correction of the sensor %2")
                     .arg(file.filePath(), camera.description().profile);
    return units;
}

/// Where the figures of all units lie under one lamp.
struct Spread {
    Figures medians{}, sigmas{}; ///< the median absolute deviations, scaled as standard deviations
};

// The distance from the median in scaled median absolute deviations (Iglewicz and Hoaglin 1993).
Spread rate(std::vector<Unit*> const& units) {
    Spread spread;
    for (size_t i = 0; i < kCount; ++i) {
        std::vector<double> values(units.size());
        auto const collect = [&](auto const& valueOf) {
            std::transform(units.begin(), units.end(), values.begin(),
                           [&](Unit const* unit) { return valueOf(unit->figures[i]); });
            return solver::median(values);
        };
        double const median = spread.medians[i] = collect([](double value) { return value; });
        double const least = i < kCorners ? kLeastSigma / 100 * median : kLeastSigma;
        spread.sigmas[i] =
            std::max(least, kSigmaPerMad * collect([&](double value) { return std::abs(value - median); }));
        for (Unit* const unit : units)
            if (units.size() >= kFewestUnits)
                unit->distances[i] = std::abs(unit->figures[i] - median) / spread.sigmas[i];
    }
    return spread;
}

void tellTrend(std::vector<Unit*> const& units, Spread const& spread, QString const& lamp,
               Certificate& certificate) {
    using Line = pictara::ProfileChart::Line;
    constexpr char kAxis[] = "% of the units, by serial number";
    Line corners{"corners", "luminance", {}}, red{"R/G", "red-green", {}}, blue{"B/G", "blue-green", {}};
    auto const meanOfCorners = [](Figures const& of) { return (of[0] + of[1] + of[2] + of[3]) / kCorners; };
    for (Unit const* const unit : units) {
        corners.values.push_back(100 * (meanOfCorners(unit->figures) / meanOfCorners(spread.medians) - 1));
        red.values.push_back(unit->figures[kCorners]);
        blue.values.push_back(unit->figures[kCorners + 1]);
    }
    certificate.profiles.push_back({lamp + "_lamp_corner_gain_against_median_percent",
                                    "Mean corner gain against the median, %, lamp: " + lamp,
                                    {corners},
                                    kAxis});
    certificate.profiles.push_back({lamp + "_lamp_colour_spread_percent",
                                    "Colour spread of the gains, %, lamp: " + lamp,
                                    {red, blue},
                                    kAxis});
}

void tellTables(std::vector<Unit> const& units, std::map<uint32_t, Spread> const& spreads,
                Certificate& certificate) {
    pictara::Table out{"Units that fall out",
                       {{"serial number", "file", "lamp", "figure", "value", "median", "distance"}}},
        all{"Green's gain in the corners against the centre, and colour spread of the gains",
            {{"serial number", "file", "lamp"}}};
    for (FigureRow const& row : kFigures)
        all.rows[0] << row.name;
    auto const add = [&](QString const& serial, QString const& file, uint32_t slot, Figures const& figures) {
        all.rows.push_back({serial, file, lampName(slot)});
        for (double const figure : figures)
            all.rows.back() << shown(figure);
    };
    for (auto const& [slot, spread] : spreads) {
        add("median", "", slot, spread.medians);
        add("scaled deviation", "", slot, spread.sigmas);
    }
    QJsonArray told;
    for (Unit const& unit : units) {
        add(unit.serial, unit.file, unit.slot, unit.figures);
        size_t const worst = unit.worst();
        if (unit.fallsOut())
            out.rows.push_back({unit.serial, unit.file, lampName(unit.slot), kFigures[worst].name,
                                shown(unit.figures[worst]), shown(spreads.at(unit.slot).medians[worst]),
                                QString::number(unit.distances[worst], 'f', 1)});
        QJsonObject figures{{"serial_number", unit.serial},
                            {"file", unit.file},
                            {"lamp", lampName(unit.slot)},
                            {"distance", rounded(unit.distances[worst])},
                            {"falls_out", unit.fallsOut()}};
        for (size_t i = 0; i < kCount; ++i)
            figures[kFigures[i].key] = rounded(unit.figures[i]);
        told.append(figures);
    }
    for (pictara::Table const& table : {out, all})
        if (table.rows.size() > 1)
            certificate.tables.push_back(table);
    certificate.figures["units"] = told;
}
} // namespace

std::optional<Certificate> tellUnits(UnitsRequest const& request, int* exitCode, QString* error) {
    QDir const folder(request.folder);
    if (!folder.exists()) {
        *error = QStringLiteral("%1: there is no such folder").arg(request.folder);
        return std::nullopt;
    }
    auto const camera = simulator::SimulatedCamera::open(request.sensor, error);
    auto const layout = camera ? layoutOf(*camera, error) : std::nullopt;
    if (!layout)
        return std::nullopt;
    std::vector<Unit> units;
    pictara::Table unusable{"Files that cannot be used", {{"file", "cause"}}};
    int files = 0;
    for (QFileInfo const& file : folder.entryInfoList(QDir::Files, QDir::Name)) {
        bool const isImage = file.size() == kImageSize || file.suffix() == QLatin1String("bin") ||
                             file.suffix() == QLatin1String("eeprom");
        if (!isImage && !isResults(file))
            continue;
        ++files;
        QString cause;
        std::vector<Unit> const read = readUnit(file, *camera, *layout, &cause);
        units.insert(units.end(), read.begin(), read.end());
        if (read.empty())
            unusable.rows.push_back({file.fileName(), cause});
    }
    QCollator order{QLocale(QLocale::English)}; // that of C knows no numbers
    order.setNumericMode(true);
    std::stable_sort(units.begin(), units.end(),
                     [&](Unit const& a, Unit const& b) { return order.compare(a.serial, b.serial) < 0; });
    std::map<uint32_t, std::vector<Unit*>> byLamp;
    for (Unit& unit : units)
        byLamp[unit.slot].push_back(&unit);
    Certificate certificate{"shading"};
    std::map<uint32_t, Spread> spreads;
    for (auto const& [slot, ofLamp] : byLamp) {
        spreads[slot] = rate(ofLamp);
        tellTrend(ofLamp, spreads[slot], lampName(slot), certificate);
    }
    tellTables(units, spreads, certificate);
    if (unusable.rows.size() > 1)
        certificate.tables.push_back(unusable);
    std::set<QString> serials, fallen;
    for (Unit const& unit : units) {
        serials.insert(unit.serial);
        if (unit.fallsOut())
            fallen.insert(unit.serial);
    }
    int const unread = int(unusable.rows.size()) - 1, count = int(serials.size());
    certificate.result = count == 0                  ? QStringLiteral("no units")
                         : count < int(kFewestUnits) ? QStringLiteral("too few to compare")
                         : fallen.empty()            ? QStringLiteral("alike")
                                          : QStringLiteral("%1 of %2 fall out").arg(fallen.size()).arg(count);
    certificate.facts = {
        {"Folder", request.folder},
        {"Sensor", camera->description().profile},
        {"Files", QStringLiteral("%1, of which %2 cannot be used").arg(files).arg(unread)},
        {"Falls out", QStringLiteral("of %1 units or more, what lies more than %2 scaled median "
                                     "absolute deviations from the median (Iglewicz and Hoaglin 1993)")
                          .arg(kFewestUnits)
                          .arg(kMostDistance)}};
    certificate.figures["sensor"] = camera->description().profile;
    certificate.figures["files"] = files;
    certificate.figures["files_unusable"] = unread;
    if (count == 0)
        *exitCode = kNothingFound;
    return certificate;
}
} // namespace shading
