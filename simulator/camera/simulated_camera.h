#pragma once

#include "published/veyra2.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#ifdef SIMULATED_CAMERA_BUILD
#define SIMULATED_CAMERA_API Q_DECL_EXPORT
#else
#define SIMULATED_CAMERA_API Q_DECL_IMPORT
#endif

namespace simulator {
/// Frame types as the host numbers them.
enum class FrameType : uint32_t { Raw8 = 1, Ycbcr = 5, Rgb32 = 11, Raw12 = 13 };

/// What lies before the camera: a flat field under one lamp.
struct Light {
    double colourTemperature = 5000; ///< kelvin
    double level = 1.0;              ///< luminance relative to the lamp's normal level
    double gradient = 0.0; ///< relative rise of the luminance from the left to the right border; 0 = flat
    bool objectInPicture = false; ///< a dark disc lies in the picture
};

/// One frame as the camera delivers it: rows from the top, `pitch` bytes apart. Raw12 holds 16-bit
/// little-endian words, Raw8 bytes, Ycbcr two bytes a pixel (Y Cb Y Cr).
struct Frame {
    FrameType type = FrameType::Raw12;
    uint32_t width = 0;
    int32_t height = 0;
    uint32_t pitch = 0;
    QByteArray pixels;
};

/// A register's value as a record of the EEPROM holds it.
struct StoredSetting {
    size_t offset = 0;         ///< in the EEPROM
    uint32_t addressSpace = 0; ///< address-space kind
    uint32_t id = 0;           ///< page or driver
    uint32_t address = 0;
    uint32_t size = 0; ///< bytes of the value; 0: as wide as the register
    uint32_t mask = 0; ///< bits that the value belongs to, its lowest bit at their lowest; 0: whole register
    uint32_t value = 0;
    QByteArray name{}; ///< of the sensor's register; empty when the sensor has none there
    QString place{};   ///< address-space kind, id and address
};

/// A record of the EEPROM's chain.
struct StoredRecord {
    size_t offset = 0; ///< of its type byte in the EEPROM
    size_t size = 0;   ///< bytes, those of type and length included
    uint8_t type = 0;
    QString typeName; ///< empty for a type that nobody knows
    QString text;     ///< its name, or what it says
    std::vector<StoredSetting> settings;
    QString fault; ///< why decoding ended early; empty for a sound record
};

/// What a host is told of the camera besides its registers.
struct CameraDescription {
    QString profile{};       ///< the profile's name
    QByteArray sensorName;   ///< for the sensor record's first name
    QByteArray fileNamePart; ///< for the sensor record's file name part
    QString summary;         ///< what the profile is for, in a line
    uint32_t sensorKind = 0;
    uint32_t variant = 0;
    bool systemOnChip = false;
    uint32_t width = 0;                   ///< pixels
    uint32_t height = 0;                  ///< pixels
    FrameType rawType = FrameType::Raw12; ///< what grab() delivers
    bool calibratesFromRgb = false;       ///< the calibration takes the host's RGB-32 picture
    uint32_t bayerPhase = 0;   ///< of a delivered frame; bit 0: column, bit 1: row of the first red pixel
    uint32_t orientation = 0;  ///< bit 0: mirrored, bit 1: upside down
    uint32_t unusableRows = 0; ///< rows at the top of a frame that hold no picture
    double blackLevel = 0;     ///< counts of the delivered samples
    double whiteLevel = 0;     ///< counts of the delivered samples
    /// Registers of the colour temperatures for which the correction's tables were made, left to right;
    /// empty with one correction.
    std::vector<QByteArray> tableTemperatures{};
    std::array<double, 9> colourMatrix{}; ///< sensor RGB to display RGB, row by row, rows sum to 1
};

/// The camera behind the simulated library `veyra2`: one sensor on one headboard, told by a profile. It is
/// driven by its registers alone; what can be set here is only what stands outside of it. Containers cross
/// the library's border, so whoever uses it is built with the same compiler and run-time library.
class SIMULATED_CAMERA_API SimulatedCamera {
public:
    /// Opens a camera by a profile's name or file; null with a message for the user in `error` otherwise.
    [[nodiscard]] static std::unique_ptr<SimulatedCamera> open(QString const& profile, QString* error);
    /// The names of the profiles that are installed beside the library.
    [[nodiscard]] static QStringList profileNames();
    /// A line of each: its name, and what it is for.
    [[nodiscard]] static QStringList notedProfileNames();
    ~SimulatedCamera();

    /// The handle for the library's functions, valid as long as this object.
    [[nodiscard]] vy_Camera* handle() const;
    [[nodiscard]] CameraDescription const& description() const;

    void setLight(Light const& light);
    [[nodiscard]] Light const& light() const;
    /// Noise is a function of the seed and the number of the frame.
    void setSeed(uint64_t seed);
    /// Replaces the profile's lens by a measured one in the format shading-gains-1; on a malformed file
    /// nothing changes and `error` names the fault and its place.
    [[nodiscard]] bool useMeasuredShading(QString const& file, QString* error);

    /// Exposes and reads out the next frame.
    [[nodiscard]] Frame grab();
    /// Whether the sensor's own shading correction is switched on.
    [[nodiscard]] bool isCorrecting() const;
    /// Number of register writes that reached the sensor since it was opened.
    [[nodiscard]] uint64_t registerWrites() const;

    [[nodiscard]] bool hasEeprom() const;
    /// The whole EEPROM as a file of exactly 8192 bytes. Loading programs the device past the bus. False with
    /// a message for the user in `error`, and nothing changed, when there is no EEPROM or the file is not so.
    [[nodiscard]] bool loadEeprom(QString const& file, QString* error);
    [[nodiscard]] bool saveEeprom(QString const& file, QString* error) const;
    /// All of the EEPROM's bytes, read past the bus; none without an EEPROM.
    [[nodiscard]] QByteArray eepromBytes() const;
    /// The records of its chain, from the first one to the end or the first one that is broken, whose fault
    /// is told; none on a device that is not formatted.
    [[nodiscard]] std::vector<StoredRecord> eepromRecords() const;
    /// What a camera does at start-up: writes the settings of the stored record of shading registers (the
    /// first one of that name, for a null name of all) into its registers. The EEPROM is read past the bus,
    /// without faults and time. On failure nothing changes, and `error` tells the place and the cause.
    [[nodiscard]] bool replayEeprom(QString const& recordName, QString* error);

    /// The EEPROM's write cycle and the bridge's transfers take real time until it is made virtual: then
    /// whoever replaces the sleeps of the camera's users passes the slept time on here, and nobody waits.
    /// Time that is advanced before adds to what really passes.
    void useVirtualTime();
    void advanceTime(int milliseconds);

    /// Names of what can go wrong with the EEPROM, as on a command line.
    [[nodiscard]] static QStringList faultNames();
    /// Replaces the fault planned before: it strikes the n-th operation from now on (1 is the next one) and,
    /// if for ever, all later ones. "power-cut" strikes as soon as n bytes are stored from now on. "none"
    /// heals. False for a name that is none of them; without an EEPROM nothing can go wrong.
    bool injectFault(QString const& name, uint64_t n = 1, bool forEver = false);
    /// Transfers addressed to the EEPROM, and bytes stored in it, since the camera was opened.
    [[nodiscard]] uint64_t deviceOperations() const;
    [[nodiscard]] uint64_t deviceBytesWritten() const;

private:
    struct Implementation;
    explicit SimulatedCamera(std::unique_ptr<Implementation> implementation);
    std::unique_ptr<Implementation> m_implementation;
};
} // namespace simulator
