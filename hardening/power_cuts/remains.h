#pragma once

#include "hardening/power_cuts/random_save.h"

#include <cstdint>
#include <vector>

namespace power_cuts {
using Records = std::vector<std::vector<uint8_t>>; ///< head and payload each, in the chain's order

/// What a cut leaves, told by somebody who knows what should be there.
enum class Remains : uint8_t {
    AsBefore,      ///< every record as it was before the save
    AsAfter,       ///< every record as the save would have left it
    BrokenChain,   ///< the chain leads out of the store; what comes before the damage is readable
    DamagedRecord, ///< the chain is whole, a record contradicts itself
    OnlyStored,    ///< the chain is whole, of records that were all stored once; some are missing or twice
    Mixed,         ///< the chain is whole, a record is sound in itself but nobody stored it like this
};
constexpr size_t kRemainsCount = 6;

/// What the programs say of a device's contents.
struct Report {
    bool listIsClean = false;
    bool checkIsClean = false;
    bool isTruthful = false; ///< damage is named with its place, and nothing is named where there is none
    Records records;         ///< as far as the chain goes
    bool isWhole = false;    ///< the chain
};

/// Runs the commands `list` and `check` on a device's contents.
[[nodiscard]] Report report(simulator::EepromContents const& contents);

[[nodiscard]] Remains classify(Report const& left, Records const& before, Records const& after);

/// Whether every record of a save is the one that a search finds, byte for byte.
[[nodiscard]] bool holds(simulator::EepromContents const& contents, Save const& save);

/// Whether a record of `before` that the save does not replace can no longer be found as it was.
[[nodiscard]] bool harmsOthers(simulator::EepromContents const& contents, Records const& before,
                               Save const& save);
} // namespace power_cuts
