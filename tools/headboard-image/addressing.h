#pragma once

#include <cstdint>

namespace headboard_image {
/// How a sensor's registers are addressed, which decides how short entries are coded.
enum class Addressing : bool {
    Plain, ///< whole addresses, as without a camera
    Paged, ///< a page and an 8-bit address
};

/// Bits of a register's address within its page.
[[nodiscard]] constexpr uint32_t addressBits(Addressing addressing) {
    return addressing == Addressing::Paged ? 8 : 16;
}
} // namespace headboard_image
