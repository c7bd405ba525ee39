#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace kestra {
/// What `OpenQtDialog` makes for a sensor.
enum class DialogPage { NoDialog, EmptyDialog, LensShading, AutomaticPga, AdaptivePga };

/// The two calibration pages know slightly different sensors' lens-correction switches.
enum class PageKind { LensShading, Apga };

/// The register, or bitfield of a register, that switches a sensor's own lens-shading correction. The names
/// are literals that live as long as the plug-in; an empty bitfield name means the whole register.
struct LensCorrection {
    char const* lensCorrectionRegister = "";
    char const* lensCorrectionBitfield = "";
};

/// Variants of a sensor kind, both ends included.
struct VariantRange {
    uint32_t first = 0;
    uint32_t last = UINT32_MAX;

    [[nodiscard]] constexpr bool holds(uint32_t variant) const { return variant >= first && variant <= last; }
};

/// An entry of fixed value that makes a sensor's firmware take over the stored tables.
struct FixedEntry {
    VariantRange variants{};
    char const* onlyWith; ///< stored where this register exists, too; null asks for none
    char const* reg;
    char const* bitfield;
    uint32_t value;
};

/// What a sensor kind means to the plug-in. A new sensor is a row of the table; a member that a row leaves
/// out is what an unknown kind gets.
///
/// Two places tell kind and variant: the host's record of the sensor and the library's description of the
/// open camera. Which of the two counts is the caller's to know.
struct SensorKind {
    uint32_t kind = 0;
    VariantRange variants{};
    DialogPage page = DialogPage::LensShading;
    bool calibratesFromRgb = false; ///< from the displayed picture instead of a raw one
    int unusableTopRows = 0;        ///< of the displayed picture, left out of the uniformity
    /// Without a register, the switch depends on whether the sensor is a system-on-chip.
    LensCorrection correction{};
    std::optional<PageKind> correctionOnlyOn{}; ///< the other page takes it for a sensor without a register
    uint32_t eepromAddress = 0xA8;              ///< on the camera's serial bus, in the form for writing
    bool eepromBridgeOnly = false; ///< reached through registers of the sensor, never in raw transfers
    uint32_t resultFileFormat = 0; ///< the three-lamp page's, as the library counts them
    bool keepsWhiteBalanceGains = false;
    /// Registers that the sensor has but does not replay; a trailing "*" stands for any rest of the name.
    std::span<std::string_view const> leftOut{};
    /// In the order of their replay, before and after the correction is on again.
    std::span<FixedEntry const> beforeEnable{};
    std::span<FixedEntry const> afterEnable{};
};

/// The row of a kind and variant, or that of an unknown kind.
[[nodiscard]] SensorKind const& sensorKind(uint32_t kind, uint32_t variant);

[[nodiscard]] SensorKind const& unknownSensorKind();
} // namespace kestra
