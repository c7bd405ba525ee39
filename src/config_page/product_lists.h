#pragma once

#include <cstdint>
#include <span>

// What a headboard can be told to be. A new product is a row in product_lists.cpp and nothing else.

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
