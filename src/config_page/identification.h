#pragma once

#include "common/host.h"

#include <QString>
#include <array>
#include <cstdint>
#include <span>

namespace kestra {

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

// What a headboard can be told to be. A new product is a row in identification.cpp and nothing else.

/// One entry of a list: what the user reads and the byte that the headboard stores for it.
struct ProductCode {
    char const* text;
    uint8_t code;
};

/// A list of interfaces that part numbers share.
enum class InterfaceFamily : uint8_t { Sensor, Module };

struct PartNumber {
    ProductCode product; ///< the sensor's name with its part code in parentheses
    InterfaceFamily interfaces;
};

/// Stands for "Unspecified" in every list; also what an erased EEPROM holds.
inline constexpr uint8_t kUnspecifiedCode = 255;
/// The interface of a module whose parallel port must be switched on in the camera.
inline constexpr uint8_t kModuleParallelCode = 17;

[[nodiscard]] std::span<PartNumber const> partNumbers();
[[nodiscard]] std::span<ProductCode const> interfaces(InterfaceFamily family);
[[nodiscard]] std::span<ProductCode const> marketIndicators();
[[nodiscard]] std::span<ProductCode const> specialProcessings();

/// The interfaces of a part number; of one that is not in the list, a sensor's.
[[nodiscard]] InterfaceFamily interfaceFamily(uint32_t partNumberCode);

} // namespace kestra
