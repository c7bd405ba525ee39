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
                    .readNoise = place["readNoise"].number(0, 100)};
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

void requireNamed(JsonPlace const& place, QByteArray const& name, Profile const& profile) {
    if (std::none_of(profile.registers.begin(), profile.registers.end(),
                     [&](RegisterDefinition const& reg) { return reg.name == name; }))
        place.fail(QStringLiteral("there is no register \"%1\"").arg(QString::fromLatin1(name)));
}

QByteArray readRegisterName(JsonPlace const& place, Profile const& profile) {
    QByteArray name = place.text().toLatin1();
    requireNamed(place, name, profile);
    return name;
}

RegisterSwitch readSwitch(JsonPlace const& place, Profile const& profile) {
    return {readRegisterName(place["register"], profile), place["mask"].integer(1), place["value"].integer()};
}

EepromSection readEeprom(JsonPlace const& place, Profile const& profile) {
    struct {
        EepromWiring wiring;
        char const* reg;
    } constexpr kRegisters[] = {
        {EepromWiring::Bridge, "IO_EEPROM_I2C_ADDR"}, {EepromWiring::Bridge, "IO_EEPROM_ADDR"},
        {EepromWiring::Bridge, "IO_EEPROM_COMMAND"},  {EepromWiring::Bridge, "IO_EEPROM_STATUS"},
        {EepromWiring::Bridge, "IO_EEPROM_DATA"},     {EepromWiring::BusMaster, "DMA_CTRL"}};
    auto const wiring = EepromWiring(place["kind"].choice({"none", "serial", "bridge", "bus-master"}));
    for (auto const& row : kRegisters)
        if (row.wiring == wiring)
            requireNamed(place["kind"], row.reg, profile);
    if (wiring == EepromWiring::None)
        return {};
    return {wiring, place["busAddress"].integer(0, 0xFE), place["formatted"].flag()};
}

RegisterDefinition* registerAt(Profile& profile, RegisterPlace const& place) {
    auto const found =
        std::find_if(profile.registers.begin(), profile.registers.end(), [&](RegisterDefinition const& reg) {
            vy_RegisterDescription const& told = reg.description;
            return told.addressSpace == 0 && told.id == place.id && told.address == place.address;
        });
    return found == profile.registers.end() ? nullptr : &*found;
}

void requireRegister(JsonPlace const& place, RegisterPlace const& told, Profile& profile) {
    RegisterDefinition const* const reg = registerAt(profile, told);
    if (!reg || reg->description.dataWidth < 16)
        place.fail(QStringLiteral("there is no 16-bit register at id %1, address 0x%2")
                       .arg(told.id)
                       .arg(told.address, 4, 16, QLatin1Char('0')));
}

// Every origin lies in the middle of the array until somebody moves it.
void placeOrigin(JsonPlace const& place, SensorLayout::Origin const& origin, Profile& profile) {
    requireRegister(place["originColumn"], origin.column, profile);
    requireRegister(place["originRow"], origin.row, profile);
    if (RegisterDefinition* const column = registerAt(profile, origin.column))
        column->reset = profile.array.width / 2;
    if (RegisterDefinition* const row = registerAt(profile, origin.row))
        row->reset = profile.array.height / 2;
}

void checkCorrection(JsonPlace const& correction, Profile& profile) {
    constexpr char const* kPlanes[kPlaneCount] = {"greenRed", "red", "blue", "greenBlue"};
    std::vector<JsonPlace> const places = correction["banks"].items();
    size_t tables = 0;
    for (size_t i = 0; i < profile.layout.banks.size(); ++i) {
        SensorLayout::Bank const& bank = profile.layout.banks[i];
        tables += bank.slot == kBaseSlot ? 0 : 1;
        placeOrigin(bank.origin ? places[i] : correction, profile.layout.originOf(bank), profile);
        for (size_t plane = 0; plane < kPlaneCount; ++plane)
            for (uint32_t term = 0; term < kCoefficientCount; ++term)
                requireRegister(places[i]["planes"][kPlanes[plane]], bank.planes[plane].place(term), profile);
        if (bank.colourTemperature)
            requireRegister(places[i]["colourTemperature"], *bank.colourTemperature, profile);
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
    TableChoice choice{.estimate = readRegisterName(place["estimate"], profile)};
    std::vector<JsonPlace> const temperatures = place["temperatures"].items(kTableSlots.size());
    for (size_t i = 0; i < kTableSlots.size(); ++i) {
        QByteArray const name = readRegisterName(temperatures[i], profile);
        profile.description.tableTemperatures.push_back(name);
        // A solution must reach the very register that the sensor asks.
        auto const& told = profile.layout.bank(kTableSlots[i])->colourTemperature;
        RegisterDefinition const* const reg = told ? registerAt(profile, *told) : nullptr;
        if (reg && reg->name != name)
            temperatures[i].fail(QStringLiteral("the layout tells another register"));
    }
    if (place.has("automatic"))
        choice.automatic = readSwitch(place["automatic"], profile);
    if (place.has("zone"))
        choice.zone = readRegisterName(place["zone"], profile);
    return choice;
}

CameraDescription describe(JsonPlace const& root, SensorArray const& array, ReadOut const& readOut) {
    bool const isRaw12 = readOut.format == FrameType::Raw12;
    bool const isRaw8 = readOut.format == FrameType::Raw8;
    return {.sensorName = root["sensorName"].text().toLocal8Bit(),
            .fileNamePart = root["fileNamePart"].text().toLocal8Bit(),
            .summary = root.has("summary") ? root["summary"].text() : QString(),
            .note = root.has("note") ? root["note"].text() : QString(),
            .sensorKind = root["kind"].integer(),
            .variant = root["variant"].integer(),
            .systemOnChip = root["systemOnChip"].flag(),
            .width = array.width,
            .height = array.height,
            .rawType = readOut.format,
            .bayerPhase = array.deliveredPhase(),
            .orientation = array.orientation,
            .unusableRows = root["readOut"]["unusableRows"].integer(0, 16),
            .blackLevel = isRaw12  ? readOut.pedestal
                          : isRaw8 ? readOut.pedestal / kCountsPerByte
                                   : readOut.lumaLow,
            .whiteLevel = isRaw12  ? kConverterWhite
                          : isRaw8 ? 255
                                   : readOut.lumaHigh,
            .colourMatrix = readColourMatrix(root["optics"]["colourMatrix"])};
}

Profile readSections(JsonPlace const& root) {
    Profile profile;
    profile.array = readArray(root["array"]);
    profile.readOut = readReadOut(root["readOut"]);
    profile.description = describe(root, profile.array, profile.readOut);
    profile.registerAddressWidth = root["registerAddressWidth"].integer(8, 32);
    profile.registerDataWidth = root["registerDataWidth"].integer(8, 32);
    profile.hasPageSelect = root["hasPageSelect"].flag();
    for (JsonPlace const& space : root["secondaryMaps"].items())
        profile.secondaryMaps |= 1U << space.integer(0, 31);
    profile.registers = readRegisters(root["registers"], profile.registerAddressWidth);
    JsonPlace const exposure = root["exposure"];
    profile.exposure = {readRegisterName(exposure["register"], profile),
                        exposure["signalAtReset"].number(0.001, 1)};
    profile.frameCounter = readRegisterName(root["frameCounter"], profile);
    profile.correctionSwitch = readSwitch(root["correctionSwitch"], profile);
    profile.layout = readSensorLayout(root["layout"]);
    profile.layoutBlock = sensorLayoutBlock(root["layout"].object());
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
