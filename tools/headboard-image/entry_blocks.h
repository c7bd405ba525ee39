#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace headboard_image {

/// Entries of one kind in a register set.
struct EntryBlock {
    size_t offset = 0;                ///< of its head, from the record's begin
    uint8_t kind = 0;                 ///< one that is known
    size_t length = 0;                ///< bytes of the entries, as its head tells
    std::span<uint8_t const> entries; ///< shorter when the record ends before
};

/// What stands behind the name in a register set.
struct RegisterSetContent {
    std::vector<EntryBlock> blocks;
    size_t restOffset = 0;         ///< from the record's begin
    std::span<uint8_t const> rest; ///< behind the blocks; empty too where unused bytes end them
};

/// Takes apart a register set, of any content, from its head on.
[[nodiscard]] RegisterSetContent splitRegisterSet(std::span<uint8_t const> record);

/// Whether a record consists of lines of text rather than of entries.
[[nodiscard]] bool holdsLines(RegisterSetContent const& content);

} // namespace headboard_image
