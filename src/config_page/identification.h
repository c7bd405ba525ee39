#pragma once

#include "common/host.h"

#include <QString>
#include <array>
#include <cstdint>
#include <span>

namespace kestra {
/// What the four bytes tell that lie in the EEPROM above its records.
enum class Identification : uint8_t { PartNumber, Interface, Market, Processing };

inline constexpr std::array<Identification, 4> kIdentificationReadOrder = {
    Identification::PartNumber, Identification::Interface, Identification::Market,
    Identification::Processing};
inline constexpr std::array<Identification, 4> kIdentificationWriteOrder = {
    Identification::Interface, Identification::Market, Identification::Processing,
    Identification::PartNumber};

/// Reads or writes one of the bytes through the host, and then gives the device its time. `device` is the
/// EEPROM's serial-bus address. What is read is a code only when it fits a byte.
[[nodiscard]] uint32_t readIdentification(Host const& host, uint32_t device, Identification field);
void writeIdentification(Host const& host, uint32_t device, Identification field, uint8_t code);

/// A byte as read, in hexadecimal, without leading zeros.
[[nodiscard]] QString identificationText(uint32_t code);

// What a headboard can be told to be. A new product is a row in identification.cpp and nothing else.

/// A list of interfaces that part numbers share.
enum class InterfaceFamily : uint8_t { Sensor, Module };

/// One entry of a list: what the user reads and the byte that the headboard stores for it.
struct ProductCode {
    char const* text; ///< a part number's is the sensor's name with its part code in parentheses
    uint8_t code;
    InterfaceFamily interfaces = InterfaceFamily::Sensor; ///< of a part number
};

/// Stands for "Unspecified" in every list; also what an erased EEPROM holds.
inline constexpr uint8_t kUnspecifiedCode = 255;
/// The interface of a module whose parallel port must be switched on in the camera.
inline constexpr uint8_t kModuleParallelCode = 17;

/// The entries to select from; those of the interfaces depend on the family.
[[nodiscard]] std::span<ProductCode const> productCodes(Identification field, InterfaceFamily family);

/// The interfaces of a part number; of one that is not in the list, a sensor's.
[[nodiscard]] InterfaceFamily interfaceFamily(uint32_t partNumberCode);
} // namespace kestra
