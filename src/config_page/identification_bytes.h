#pragma once

#include "common/host.h"

#include <QString>
#include <array>
#include <cstdint>

/// What the four bytes tell that lie in the EEPROM above its records. The order is that of reading.
enum class Identification : uint8_t { PartNumber, Interface, Market, Processing };

struct IdentificationField {
    Identification field;
    uint32_t address; ///< in the EEPROM
};

inline constexpr std::array<IdentificationField, 4> kIdentificationFields = {{
    {Identification::PartNumber, 8191},
    {Identification::Interface, 8177},
    {Identification::Market, 8179},
    {Identification::Processing, 8180},
}};

/// The order of writing.
inline constexpr std::array<Identification, 4> kIdentificationWriteOrder = {
    Identification::Interface, Identification::Market, Identification::Processing,
    Identification::PartNumber};

/// Reads or writes one of the bytes through the host, and then gives the device its time. `device` is the
/// EEPROM's serial-bus address. What is read is a code only when it fits a byte.
[[nodiscard]] uint32_t readIdentification(Host const& host, uint32_t device, Identification field);
void writeIdentification(Host const& host, uint32_t device, Identification field, uint8_t code);

/// A byte as read, in hexadecimal, without leading zeros.
[[nodiscard]] QString identificationText(uint32_t code);
