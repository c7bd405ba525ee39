#include "simulator/camera/profile.h"
#include "simulator/camera/installed_files.h"
#include "simulator/camera/profile_registers.h"

#include <QFileInfo>
#include <algorithm>

namespace simulator {
namespace {
constexpr int kDeepestBase = 4;
constexpr int kMostFiles = 64; // each base may name several

struct FormatName {
    char const* name;
    OutputFormat format;
};
constexpr FormatName kFormatNames[] = {
    {"raw12", OutputFormat::Raw12}, {"raw8", OutputFormat::Raw8}, {"ycbcr", OutputFormat::Ycbcr}};

// Empty with the place and the cause in `error`, which is empty before.
std::optional<QJsonObject> readWithBases(QString const& file, int depth, int& filesRead, QString* error) {
    QString const name = QFileInfo(file).fileName();
    if (++filesRead > kMostFiles) {
        *error = name + QStringLiteral(": no more than %1 files make a profile").arg(kMostFiles);
        return std::nullopt;
    }
    std::optional<QJsonObject> changes = readJsonFile(file, error);
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
        whole = mergedJson(whole, *read);
    }
    changes->remove(QStringLiteral("base"));
    return mergedJson(whole, *changes);
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
    if (uint64_t(array.width) * array.height > kMostPixels)
        place.fail(QStringLiteral("no more than %1 pixels are simulated").arg(kMostPixels));
    return array;
}

ReadOut readReadOut(JsonPlace const& place) {
    ReadOut readOut{.pedestal = place["pedestal"].number(0, 1024),
                    .electronsPerCount = place["electronsPerCount"].number(0.01, 100),
                    .readNoise = place["readNoise"].number(0, 100),
                    .unusableRows = place["unusableRows"].integer(0, 16)};
    QString const name = place["format"].text();
    auto const* const known =
        std::find_if(std::begin(kFormatNames), std::end(kFormatNames),
                     [&](FormatName const& row) { return name == QLatin1String(row.name); });
    if (known == std::end(kFormatNames)) {
        place["format"].fail(QStringLiteral("\"%1\" is none of raw12, raw8, ycbcr").arg(name));
        return readOut;
    }
    readOut.format = known->format;
    if (readOut.format == OutputFormat::Ycbcr) {
        readOut.lumaLow = place["lumaLow"].number(0, 254);
        readOut.lumaHigh = place["lumaHigh"].number(readOut.lumaLow + 1, 255);
        readOut.chromaSpan = place["chromaSpan"].number(1, 255);
    }
    return readOut;
}

struct WiringName {
    char const* name;
    EepromWiring wiring;
};
constexpr WiringName kWiringNames[] = {{"none", EepromWiring::None},
                                       {"serial", EepromWiring::Serial},
                                       {"bridge", EepromWiring::Bridge},
                                       {"bus-master", EepromWiring::BusMaster}};

EepromSection readEeprom(JsonPlace const& place) {
    EepromSection eeprom;
    QString const name = place["kind"].text();
    auto const* const known =
        std::find_if(std::begin(kWiringNames), std::end(kWiringNames),
                     [&](WiringName const& row) { return name == QLatin1String(row.name); });
    if (known == std::end(kWiringNames)) {
        place["kind"].fail(QStringLiteral("\"%1\" is none of none, serial, bridge, bus-master").arg(name));
        return eeprom;
    }
    eeprom.wiring = known->wiring;
    if (eeprom.wiring == EepromWiring::None)
        return eeprom;
    eeprom.busAddress = place["busAddress"].integer(0, 0xFE);
    eeprom.isFormatted = place["formatted"].flag();
    return eeprom;
}

void readIdentity(JsonPlace const& place, Profile& profile) {
    profile.sensorName = place["sensorName"].text().toLocal8Bit();
    profile.fileNamePart = place["fileNamePart"].text().toLocal8Bit();
    if (place.has("note"))
        profile.note = place["note"].text();
    profile.kind = place["kind"].integer();
    profile.variant = place["variant"].integer();
    profile.systemOnChip = place["systemOnChip"].flag();
    profile.registerAddressWidth = place["registerAddressWidth"].integer(8, 32);
    profile.registerDataWidth = place["registerDataWidth"].integer(8, 32);
    profile.hasPageSelect = place["hasPageSelect"].flag();
    for (JsonPlace const& space : place["secondaryMaps"].items())
        profile.secondaryMaps |= 1U << space.integer(0, 31);
}

bool hasRegister(Profile const& profile, QByteArray const& name) {
    return std::any_of(profile.registers.begin(), profile.registers.end(),
                       [&](RegisterDefinition const& reg) { return reg.name == name; });
}

bool hasRegister(Profile const& profile, RegisterPlace const& place) {
    return std::any_of(profile.registers.begin(), profile.registers.end(),
                       [&](RegisterDefinition const& reg) {
                           return reg.addressSpace == 0 && reg.id == place.id &&
                                  reg.address == place.address && reg.dataWidth >= 16;
                       });
}

QByteArray readRegisterName(JsonPlace const& place, Profile const& profile) {
    QByteArray name = place.text().toLatin1();
    if (!hasRegister(profile, name))
        place.fail(QStringLiteral("there is no register \"%1\"").arg(QString::fromLatin1(name)));
    return name;
}

void checkLayoutRegisters(JsonPlace const& correction, Profile const& profile) {
    auto const require = [&](JsonPlace const& place, RegisterPlace const& reg) {
        if (!hasRegister(profile, reg))
            place.fail(QStringLiteral("there is no 16-bit register at id %1, address 0x%2")
                           .arg(reg.id)
                           .arg(reg.address, 4, 16, QLatin1Char('0')));
    };
    std::vector<JsonPlace> const places = correction["banks"].items();
    for (size_t i = 0; i < profile.layout.banks.size(); ++i) {
        SensorLayout::Bank const& bank = profile.layout.banks[i];
        JsonPlace const& origin = places[i].has("originColumn") ? places[i] : correction;
        require(origin["originColumn"], bank.originColumn);
        require(origin["originRow"], bank.originRow);
        for (size_t plane = 0; plane < kPlaneCount; ++plane)
            for (uint32_t term = 0; term < kCoefficientCount; ++term)
                require(places[i]["planes"][kPlaneNames[plane]], bank.planes[plane].place(term));
        if (bank.colourTemperature)
            require(places[i]["colourTemperature"], *bank.colourTemperature);
    }
}

void checkLayoutSamples(JsonPlace const& place, Profile const& profile) {
    SensorLayout const& layout = profile.layout;
    bool const isYcbcr = profile.readOut.format == OutputFormat::Ycbcr;
    if ((layout.input == QLatin1String("ycbcr")) != isYcbcr)
        place["input"].fail(QStringLiteral("a calibration frame is not what the read-out delivers"));
    if (layout.input != QLatin1String("bayer"))
        return;
    if ((layout.sampleBytes == 2) != (profile.readOut.format == OutputFormat::Raw12))
        place["sampleBytes"].fail(QStringLiteral("the read-out delivers samples of another size"));
    if (layout.blackLevel != profile.readOut.deliveredBlack())
        place["blackLevel"].fail(
            QStringLiteral("the read-out delivers black as %1").arg(profile.readOut.deliveredBlack()));
}

struct WiringRegister {
    EepromWiring wiring;
    char const* reg;
};
constexpr WiringRegister kWiringRegisters[] = {
    {EepromWiring::Bridge, "IO_EEPROM_I2C_ADDR"}, {EepromWiring::Bridge, "IO_EEPROM_ADDR"},
    {EepromWiring::Bridge, "IO_EEPROM_COMMAND"},  {EepromWiring::Bridge, "IO_EEPROM_STATUS"},
    {EepromWiring::Bridge, "IO_EEPROM_DATA"},     {EepromWiring::BusMaster, "DMA_CTRL"}};

void checkEepromRegisters(JsonPlace const& place, Profile const& profile) {
    for (WiringRegister const& row : kWiringRegisters)
        if (row.wiring == profile.eeprom.wiring && !hasRegister(profile, row.reg))
            place.fail(QStringLiteral("there is no register \"%1\"").arg(QLatin1String(row.reg)));
}

// The layout block is told in full because it is handed out as it stands, so it must agree with the rest.
// Only its size may be another: that of a sensor in a mode that its data do not tell of.
void checkLayout(JsonPlace const& place, Profile const& profile) {
    struct Agreement {
        char const* key;
        uint32_t inLayout;
        uint32_t inProfile;
    };
    SensorLayout const& layout = profile.layout;
    for (Agreement const& row : {
             Agreement{"kind", layout.kind, profile.kind},
             Agreement{"variant", layout.variant, profile.variant},
         })
        if (row.inLayout != row.inProfile)
            place[row.key].fail(
                QStringLiteral("%1 differs from the sensor's %2").arg(row.inLayout).arg(row.inProfile));
    checkLayoutSamples(place, profile);
    checkLayoutRegisters(place["correction"], profile);
}

bool lies(RegisterDefinition const& reg, RegisterPlace const& place) {
    return reg.addressSpace == 0 && reg.id == place.id && reg.address == place.address;
}

// Every origin lies in the middle of the array until somebody moves it.
void resetOrigins(Profile& profile) {
    for (RegisterDefinition& reg : profile.registers)
        for (SensorLayout::Bank const& bank : profile.layout.banks) {
            if (lies(reg, bank.originColumn))
                reg.reset = profile.array.width / 2;
            if (lies(reg, bank.originRow))
                reg.reset = profile.array.height / 2;
        }
}

RegisterSwitch readSwitch(JsonPlace const& place, Profile const& profile) {
    return {readRegisterName(place["register"], profile), place["mask"].integer(1), place["value"].integer()};
}

TableChoice readTableChoice(JsonPlace const& place, Profile const& profile) {
    TableChoice choice;
    choice.estimate = readRegisterName(place["estimate"], profile);
    std::vector<JsonPlace> const temperatures = place["temperatures"].items(kTableCount);
    for (size_t i = 0; i < kTableCount; ++i) {
        choice.temperatures[i] = readRegisterName(temperatures[i], profile);
        // A solution must reach the very register that the sensor asks.
        auto const& told = profile.layout.bank(kTableSlots[i])->colourTemperature;
        for (RegisterDefinition const& reg : profile.registers)
            if (told && reg.name == choice.temperatures[i] && !lies(reg, *told))
                temperatures[i].fail(QStringLiteral("the layout tells another register"));
    }
    if (place.has("automatic"))
        choice.automatic = readSwitch(place["automatic"], profile);
    if (place.has("zone"))
        choice.zone = readRegisterName(place["zone"], profile);
    return choice;
}

Profile readSections(JsonPlace const& root) {
    Profile profile;
    readIdentity(root, profile);
    profile.array = readArray(root["array"]);
    profile.readOut = readReadOut(root["readOut"]);
    profile.registers = readRegisters(root["registers"], profile.registerAddressWidth);
    JsonPlace const exposure = root["exposure"];
    profile.exposure = {readRegisterName(exposure["register"], profile),
                        exposure["signalAtReset"].number(0.001, 1)};
    profile.frameCounter = readRegisterName(root["frameCounter"], profile);
    profile.correctionSwitch = readSwitch(root["correctionSwitch"], profile);
    profile.layout = readSensorLayout(root["layout"]);
    checkLayout(root["layout"], profile);
    resetOrigins(profile);
    if (profile.layout.hasTables())
        profile.tableChoice = readTableChoice(root["tableChoice"], profile);
    profile.optics = readOptics(root["optics"]);
    profile.eeprom = readEeprom(root["eeprom"]);
    checkEepromRegisters(root["eeprom"]["kind"], profile);
    return profile;
}
} // namespace

double ReadOut::deliveredBlack() const {
    switch (format) {
    case OutputFormat::Raw12:
        return pedestal;
    case OutputFormat::Raw8:
        return pedestal / kCountsPerByte;
    case OutputFormat::Ycbcr:
        break;
    }
    return lumaLow;
}

double ReadOut::deliveredWhite() const {
    switch (format) {
    case OutputFormat::Raw12:
        return kConverterWhite;
    case OutputFormat::Raw8:
        return 255;
    case OutputFormat::Ycbcr:
        break;
    }
    return lumaHigh;
}

std::optional<Profile> readProfile(QString const& file, QString* error) {
    error->clear();
    int filesRead = 0;
    std::optional<QJsonObject> const whole = readWithBases(file, 0, filesRead, error);
    if (!whole)
        return std::nullopt;
    Profile profile = readSections(JsonPlace(*whole, QFileInfo(file).fileName(), error));
    if (!error->isEmpty())
        return std::nullopt;
    profile.name = QFileInfo(file).completeBaseName();
    return profile;
}
} // namespace simulator
