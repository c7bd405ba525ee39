#pragma once

#include "simulator/camera/optics.h"
#include "simulator/camera/register_map.h"
#include "simulator/files/sensor_layout.h"

#include <QByteArray>
#include <QDir>
#include <array>
#include <cstdint>
#include <optional>

namespace simulator {
/// A switch among the registers: on when the masked register equals `value`.
struct RegisterSwitch {
    RegisterMap::Register const* reg = nullptr;
    uint32_t mask = 0;
    uint32_t value = 0;

    [[nodiscard]] bool isOn() const { return (reg->value & mask) == value; }
};

/// How a sensor that adapts to the light chooses among its tables.
struct TableChoice {
    RegisterMap::Register* estimate = nullptr; ///< shows the colour temperature that the sensor sees, kelvin
    /// Of those for which the tables are made, left to right.
    std::array<RegisterMap::Register const*, kTableSlots.size()> temperatures{};
    std::optional<RegisterSwitch> automatic{}; ///< off: the middle table alone. None: always on
    /// Holds the table 1, 2 or 3, left to right; other values hold none. Null: there is no such register.
    RegisterMap::Register const* zone = nullptr;
};

/// The analogue half of the sensor and its converter, which has 12 bits whatever is delivered.
struct ReadOut {
    FrameType format = FrameType::Raw12;
    double pedestal = 0;          ///< counts of the converter at no light
    double electronsPerCount = 0; ///< of the converter
    double readNoise = 0;         ///< electrons
    uint32_t unusableRows = 0;    ///< at the top, which the sensor does not expose
    double lumaLow = 0;           ///< YCbCr only: luma of black
    double lumaHigh = 255;        ///< YCbCr only: luma of white
    double chromaSpan = 255;      ///< YCbCr only: range of a chroma component around 128
};

/// How the EEPROM of a headboard is reached.
enum class EepromWiring {
    None,     ///< there is none
    Serial,   ///< on the serial bus that the transport reaches
    Bridge,   ///< behind the sensor's bridge registers
    BusMaster ///< behind the sensor's own bus master
};

/// What a sensor with a bridge to its EEPROM must have: device, address, command, status and data.
inline constexpr std::array<char const*, 5> kBridgeRegisters = {
    "IO_EEPROM_I2C_ADDR", "IO_EEPROM_ADDR", "IO_EEPROM_COMMAND", "IO_EEPROM_STATUS", "IO_EEPROM_DATA"};

/// The memory on the headboard.
struct EepromSection {
    EepromWiring wiring = EepromWiring::None;
    uint32_t busAddress = 0;  ///< write form
    bool isFormatted = false; ///< as it comes from the factory; blank otherwise
};

/// A sensor on its headboard, as a profile file tells it. It can be moved: registers stay where they are.
struct Profile {
    CameraDescription description;
    vy_SensorDescription sensor{}; ///< points into `description` and `layoutBlock`
    SensorArray array;
    ReadOut readOut;
    RegisterMap registers;
    RegisterMap::Register const* exposure = nullptr; ///< how long the sensor integrates
    /// Green in the middle at the exposure's reset value under a lamp of level 1, of full scale.
    double signalAtReset = 0;
    RegisterMap::Register* frameCounter = nullptr;
    RegisterSwitch correctionSwitch; ///< of the sensor's own shading correction
    SensorLayout layout;
    QByteArray layoutBlock;                 ///< the layout as `sensorData` holds it
    std::optional<TableChoice> tableChoice; ///< where the layout has tables
    Optics optics;
    EepromSection eeprom;
};

/// Full scale of the converter in counts.
inline constexpr double kConverterWhite = 4095;
/// Counts of the converter that make one count of an 8-bit sample.
inline constexpr double kCountsPerByte = 16;

/// Reads a profile file. A profile may name a `base`, whose file it then merely changes, or an array of them,
/// each of which changes the ones before it: a whole profile first, then mostly groups of registers. A base
/// is looked for beside the file and then among the installed profiles. Origin registers reset to the middle
/// of the array. Empty with a message that names the fault and its place in `error` when the file is
/// malformed.
[[nodiscard]] std::optional<Profile> readProfile(QString const& file, QString* error);

/// Reads the register groups of a profile: an object whose members are arrays of registers. A register with
/// `indices` is a family: its name holds a place such as {p} for each index, or {i:3} for one of three
/// digits, and an index may have `words` instead of a count; the last index runs fastest, and the addresses
/// are `stride` apart. `reset` is one value or an array, whose last value holds for the rest of the family.
void readRegisters(files::JsonPlace const& place, uint32_t addressWidth, RegisterMap& registers);

/// Where the profiles lie that are installed beside the library.
[[nodiscard]] QDir profileFolder();
} // namespace simulator
