#include "simulator/camera/profile.h"

#include "simulator/files/json_place.h"
#include "simulator/files/whole_file.h"

#include <QFileInfo>
#include <algorithm>
#include <cmath>

namespace simulator {
namespace {
using files::JsonPlace;

constexpr int kDeepestBase = 4;
constexpr int kMostFiles = 64; // each base may name several

// Empty with the place and the cause in `error`, which is empty before.
std::optional<QJsonObject> readWithBases(QString const& file, int depth, int& filesRead, QString* error) {
    QString const name = QFileInfo(file).fileName();
    if (++filesRead > kMostFiles) {
        *error = name + QStringLiteral(": no more than %1 files make a profile").arg(kMostFiles);
        return std::nullopt;
    }
    std::optional<QJsonObject> changes = files::readJson(file, error);
    if (!changes || !changes->contains(QStringLiteral("base")))
        return changes;
    if (depth == kDeepestBase) {
        *error = name + QStringLiteral(": base: the profiles are based on each other");
        return std::nullopt;
    }
    JsonPlace const bases = JsonPlace(*changes, name, error)["base"];
    QJsonObject whole;
    for (JsonPlace const& place : bases.isArray() ? bases.items() : std::vector{bases}) {
        QString const base = place.text() + QStringLiteral(".json");
        if (!error->isEmpty())
            return std::nullopt;
        QString const beside = QFileInfo(file).dir().filePath(base);
        auto const read = readWithBases(QFileInfo::exists(beside) ? beside : profileFolder().filePath(base),
                                        depth + 1, filesRead, error);
        if (!read) {
            *error = name + QStringLiteral(": base: ") + *error;
            return std::nullopt;
        }
        whole = files::mergedJson(whole, *read);
    }
    changes->remove(QStringLiteral("base"));
    return files::mergedJson(whole, *changes);
}

SensorArray readArray(JsonPlace const& place) {
    constexpr uint32_t kSmallestSide = 64;
    constexpr uint32_t kLargestSide = 16384;
    constexpr uint64_t kMostPixels = 1 << 25; // a run takes a minute and 1 GB
    SensorArray array{.width = place["width"].integer(kSmallestSide, kLargestSide),
                      .height = place["height"].integer(kSmallestSide, kLargestSide),
                      .bayerPhase = place["bayerPhase"].integer(0, 3),
                      .orientation = place["orientation"].integer(0, 3)};
    if (array.width % 2 != 0 || array.height % 2 != 0)
        place.fail(QStringLiteral("width and height must be even"));
    if (array.pixels() > kMostPixels)
        place.fail(QStringLiteral("no more than %1 pixels are simulated").arg(kMostPixels));
    return array;
}

ReadOut readReadOut(JsonPlace const& place) {
    constexpr FrameType kFormats[] = {FrameType::Raw12, FrameType::Raw8, FrameType::Ycbcr};
    ReadOut readOut{.format = kFormats[place["format"].choice({"raw12", "raw8", "ycbcr"})],
                    .pedestal = place["pedestal"].number(0, 1024),
                    .electronsPerCount = place["electronsPerCount"].number(0.01, 100),
                    .readNoise = place["readNoise"].number(0, 100),
                    .unusableRows = place["unusableRows"].integer(0, 16)};
    if (readOut.format == FrameType::Ycbcr) {
        readOut.lumaLow = place["lumaLow"].number(0, 254);
        readOut.lumaHigh = place["lumaHigh"].number(readOut.lumaLow + 1, 255);
        readOut.chromaSpan = place["chromaSpan"].number(1, 255);
    }
    return readOut;
}

// Sensor RGB to display RGB.
std::array<double, 9> readColourMatrix(JsonPlace const& place) {
    constexpr double kRowSumTolerance = 1e-6;
    std::array<double, 9> const matrix = place.numbers<9>(10);
    for (size_t row = 0; row < 3; ++row)
        if (std::abs(matrix[3 * row] + matrix[3 * row + 1] + matrix[3 * row + 2] - 1) > kRowSumTolerance)
            place.fail(QStringLiteral("row %1 must sum to 1, so that grey stays grey").arg(row + 1));
    return matrix;
}

RegisterMap::Register* namedRegister(JsonPlace const& place, QByteArray const& name, Profile& profile) {
    RegisterMap::Register* const found = profile.registers.find(name.constData());
    if (!found)
        place.fail(QStringLiteral("there is no register \"%1\"").arg(QString::fromLatin1(name)));
    return found;
}

RegisterMap::Register* readRegister(JsonPlace const& place, Profile& profile) {
    return namedRegister(place, place.text().toLatin1(), profile);
}

RegisterSwitch readSwitch(JsonPlace const& place, Profile& profile) {
    return {readRegister(place["register"], profile), place["mask"].integer(1), place["value"].integer()};
}

EepromSection readEeprom(JsonPlace const& place, Profile& profile) {
    auto const wiring = EepromWiring(place["kind"].choice({"none", "serial", "bridge", "bus-master"}));
    if (wiring == EepromWiring::None)
        return {};
    if (wiring == EepromWiring::Bridge)
        for (char const* const name : kBridgeRegisters)
            namedRegister(place["kind"], name, profile);
    if (wiring == EepromWiring::BusMaster)
        namedRegister(place["kind"], "DMA_CTRL", profile);
    return {wiring, place["busAddress"].integer(0, 0xFE), place["formatted"].flag()};
}

RegisterMap::Register* readRegister(JsonPlace const& place, RegisterPlace const& told, Profile& profile) {
    RegisterMap::Register* const reg = profile.registers.find(0, told.id, told.address);
    if (!reg || reg->description.dataWidth < 16)
        place.fail(
            QString::asprintf("there is no 16-bit register at id %u, address 0x%04x", told.id, told.address));
    return reg;
}

void checkCorrection(JsonPlace const& correction, Profile& profile) {
    std::vector<JsonPlace> const places = correction["banks"].items();
    size_t tables = 0;
    for (size_t i = 0; i < profile.layout.banks.size(); ++i) {
        SensorLayout::Bank const& bank = profile.layout.banks[i];
        tables += bank.slot == kBaseSlot ? 0 : 1;
        // Every origin lies in the middle of the array until somebody moves it.
        JsonPlace const& told = bank.origin ? places[i] : correction;
        SensorLayout::Origin const& origin = profile.layout.originOf(bank);
        if (auto* const column = readRegister(told["originColumn"], origin.column, profile))
            column->value = profile.array.width / 2;
        if (auto* const row = readRegister(told["originRow"], origin.row, profile))
            row->value = profile.array.height / 2;
        for (size_t plane = 0; plane < kPlaneCount; ++plane)
            for (uint32_t term = 0; term < kCoefficientCount; ++term)
                readRegister(places[i]["planes"][kPlaneKeys[plane]], bank.planes[plane].place(term), profile);
        if (bank.colourTemperature)
            readRegister(places[i]["colourTemperature"], *bank.colourTemperature, profile);
    }
    if (tables != 0 && tables != kTableSlots.size())
        correction["banks"].fail(QStringLiteral("of the slots 2, 3, 4 some are missing"));
}

// The layout block is told in full because it is handed out as it stands, so it must agree with the rest.
// Only its size may be another: that of a sensor in a mode that its data do not tell of.
void checkLayout(JsonPlace const& place, Profile& profile) {
    SensorLayout const& layout = profile.layout;
    CameraDescription const& sensor = profile.description;
    auto const agree = [&](char const* key, uint32_t inLayout, uint32_t inProfile) {
        if (inLayout != inProfile)
            place[key].fail(QStringLiteral("%1 differs from the sensor's %2").arg(inLayout).arg(inProfile));
    };
    agree("kind", layout.kind, sensor.sensorKind);
    agree("variant", layout.variant, sensor.variant);
    if ((layout.input == SensorLayout::Input::Ycbcr) != (sensor.rawType == FrameType::Ycbcr))
        place["input"].fail(QStringLiteral("a calibration frame is not what the read-out delivers"));
    if (layout.input == SensorLayout::Input::Bayer) {
        if ((layout.sampleBytes == 2) != (sensor.rawType == FrameType::Raw12))
            place["sampleBytes"].fail(QStringLiteral("the read-out delivers samples of another size"));
        if (layout.blackLevel != sensor.blackLevel)
            place["blackLevel"].fail(
                QStringLiteral("the read-out delivers black as %1").arg(sensor.blackLevel));
    }
    checkCorrection(place["correction"], profile);
}

TableChoice readTableChoice(JsonPlace const& place, Profile& profile) {
    TableChoice choice{.estimate = readRegister(place["estimate"], profile)};
    std::vector<JsonPlace> const temperatures = place["temperatures"].items(kTableSlots.size());
    for (size_t i = 0; i < kTableSlots.size(); ++i) {
        auto const* const reg = choice.temperatures[i] = readRegister(temperatures[i], profile);
        profile.description.tableTemperatures.push_back(reg ? reg->name : QByteArray());
        // A solution must reach the very register that the sensor asks.
        auto const& told = profile.layout.bank(kTableSlots[i])->colourTemperature;
        if (told && profile.registers.find(0, told->id, told->address) != reg)
            temperatures[i].fail(QStringLiteral("the layout tells another register"));
    }
    if (place.has("automatic"))
        choice.automatic = readSwitch(place["automatic"], profile);
    if (place.has("zone"))
        choice.zone = readRegister(place["zone"], profile);
    return choice;
}

CameraDescription describe(JsonPlace const& root, SensorArray const& array, ReadOut const& readOut) {
    bool const isYcbcr = readOut.format == FrameType::Ycbcr;
    double const divisor = readOut.format == FrameType::Raw8 ? kCountsPerByte : 1;
    return {.sensorName = root["sensorName"].text().toLocal8Bit(),
            .fileNamePart = root["fileNamePart"].text().toLocal8Bit(),
            .summary = root.has("summary") ? root["summary"].text() : QString(),
            .sensorKind = root["kind"].integer(),
            .variant = root["variant"].integer(),
            .systemOnChip = root["systemOnChip"].flag(),
            .width = array.width,
            .height = array.height,
            .rawType = readOut.format,
            .bayerPhase = array.deliveredPhase(),
            .orientation = array.orientation,
            .unusableRows = readOut.unusableRows,
            .blackLevel = isYcbcr ? readOut.lumaLow : readOut.pedestal / divisor,
            .whiteLevel = isYcbcr ? readOut.lumaHigh : std::floor(kConverterWhite / divisor),
            .colourMatrix = readColourMatrix(root["optics"]["colourMatrix"])};
}

vy_SensorDescription readSensor(JsonPlace const& root, CameraDescription const& camera) {
    vy_SensorDescription sensor{};
    sensor.recordSize = sizeof sensor;
    sensor.sensorKind = camera.sensorKind;
    sensor.variant = camera.variant;
    sensor.registerAddressWidth = root["registerAddressWidth"].integer(8, 32);
    sensor.registerDataWidth = root["registerDataWidth"].integer(8, 32);
    sensor.hasPageSelect = root["hasPageSelect"].flag();
    sensor.imageWidth = camera.width;
    sensor.imageHeight = camera.height;
    sensor.name = camera.sensorName.constData();
    for (JsonPlace const& space : root["secondaryMaps"].items())
        sensor.secondaryMaps |= 1U << space.integer(0, 31);
    return sensor;
}

Profile readSections(JsonPlace const& root) {
    Profile profile;
    profile.array = readArray(root["array"]);
    profile.readOut = readReadOut(root["readOut"]);
    profile.description = describe(root, profile.array, profile.readOut);
    profile.sensor = readSensor(root, profile.description);
    readRegisters(root["registers"], profile.sensor.registerAddressWidth, profile.registers);
    profile.exposure = readRegister(root["exposure"]["register"], profile);
    profile.signalAtReset = root["exposure"]["signalAtReset"].number(0.001, 1);
    profile.frameCounter = readRegister(root["frameCounter"], profile);
    profile.correctionSwitch = readSwitch(root["correctionSwitch"], profile);
    profile.layout = readSensorLayout(root["layout"]);
    profile.layoutBlock = sensorLayoutBlock(root["layout"].object());
    profile.sensor.sensorData = profile.layoutBlock.constData();
    checkLayout(root["layout"], profile);
    profile.description.calibratesFromRgb = profile.layout.input == SensorLayout::Input::Rgb32;
    if (std::all_of(kTableSlots.begin(), kTableSlots.end(),
                    [&](uint32_t slot) { return profile.layout.bank(slot); }))
        profile.tableChoice = readTableChoice(root["tableChoice"], profile);
    profile.optics = readOptics(root["optics"]);
    profile.eeprom = readEeprom(root["eeprom"], profile);
    return profile;
}
} // namespace

QDir profileFolder() { return QDir(files::libraryFolder() + QStringLiteral("/profiles")); }

std::optional<Profile> readProfile(QString const& file, QString* error) {
    error->clear();
    int filesRead = 0;
    std::optional<QJsonObject> const whole = readWithBases(file, 0, filesRead, error);
    if (!whole)
        return std::nullopt;
    Profile profile = readSections(JsonPlace(*whole, QFileInfo(file).fileName(), error));
    profile.description.profile = QFileInfo(file).completeBaseName();
    return error->isEmpty() ? std::optional(std::move(profile)) : std::nullopt;
}
} // namespace simulator
