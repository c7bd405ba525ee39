#pragma once

#include "simulator/camera/optics.h"
#include "simulator/camera/register_map.h"
#include "simulator/camera/sensor_array.h"
#include "simulator/camera/simulated_camera.h"
#include "simulator/files/sensor_layout.h"

#include <QByteArray>
#include <QDir>
#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

namespace simulator {
/// A switch among the registers: on when the masked register equals `value`.
struct RegisterSwitch {
    QByteArray reg;
    uint32_t mask = 0;
    uint32_t value = 0;
};

/// How a sensor that adapts to the light chooses among its tables.
struct TableChoice {
    QByteArray estimate; ///< register that shows the colour temperature which the sensor sees, kelvin
    std::optional<RegisterSwitch> automatic{}; ///< off: the middle table alone. None: always on
    QByteArray zone{}; ///< register that holds the table 1, 2 or 3, left to right; other values hold none.
                       ///< Empty: there is no such register
};

/// The analogue half of the sensor and its converter, which has 12 bits whatever is delivered.
struct ReadOut {
    FrameType format = FrameType::Raw12;
    double pedestal = 0;          ///< counts of the converter at no light
    double electronsPerCount = 0; ///< of the converter
    double readNoise = 0;         ///< electrons
    double lumaLow = 0;           ///< YCbCr only: luma of black
    double lumaHigh = 255;        ///< YCbCr only: luma of white
    double chromaSpan = 255;      ///< YCbCr only: range of a chroma component around 128
};

/// How long the sensor integrates.
struct Exposure {
    QByteArray reg;
    double signalAtReset =
        0; ///< green in the middle at the reset value under a lamp of level 1, of full scale
};

/// How the EEPROM of a headboard is reached.
enum class EepromWiring {
    None,     ///< there is none
    Serial,   ///< on the serial bus that the transport reaches
    Bridge,   ///< behind the sensor's bridge registers
    BusMaster ///< behind the sensor's own bus master
};

/// The memory on the headboard.
struct EepromSection {
    EepromWiring wiring = EepromWiring::None;
    uint32_t busAddress = 0;  ///< write form
    bool isFormatted = false; ///< as it comes from the factory; blank otherwise
};

/// A sensor on its headboard, as a profile file tells it.
struct Profile {
    CameraDescription description;
    uint32_t registerAddressWidth = 0; ///< bits
    uint32_t registerDataWidth = 0;    ///< bits
    bool hasPageSelect = false;
    uint32_t secondaryMaps = 0; ///< bit k: the map of address-space kind k is present
    SensorArray array;
    ReadOut readOut;
    Exposure exposure;
    QByteArray frameCounter;         ///< register that counts the frames
    RegisterSwitch correctionSwitch; ///< of the sensor's own shading correction
    std::vector<RegisterDefinition> registers;
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
/// of the array. Empty with a message that names the fault and its place in
/// `error` when the file is malformed.
[[nodiscard]] std::optional<Profile> readProfile(QString const& file, QString* error);

/// Reads the register groups of a profile: an object whose members are arrays of registers. A register with
/// `indices` is a family: its name holds a place such as {p} for each index, or {i:3} for one of three
/// digits, and an index may have `words` instead of
/// a count; the last index runs fastest, and the addresses are `stride` apart. `reset` is one value or an
/// array, whose last value holds for all further registers of the family.
[[nodiscard]] std::vector<RegisterDefinition> readRegisters(files::JsonPlace const& place,
                                                            uint32_t addressWidth);

/// Where the profiles lie that are installed beside the library.
[[nodiscard]] QDir profileFolder();
} // namespace simulator
