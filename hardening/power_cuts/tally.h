#pragma once

#include "hardening/power_cuts/remains.h"

#include <array>
#include <string>
#include <vector>

namespace power_cuts {

/// Counts of cuts that left the same.
struct Row {
    uint64_t cuts = 0;
    uint64_t listNames = 0;    ///< `list` ends with a complaint
    uint64_t checkNames = 0;   ///< `check` finds a fault
    uint64_t othersHarmed = 0; ///< a record that the save does not replace is lost
    uint64_t nextSaves = 0;    ///< the same save again succeeds
    uint64_t mended = 0;       ///< and leaves nothing for `check` to name
};

struct Tally {
    uint64_t saves = 0;
    uint64_t savesWithBreak = 0; ///< a cut at some byte breaks the chain
    std::array<Row, kRemainsCount> rows{};
    std::vector<std::string> failures; ///< promises that were not kept

    void add(Tally const& other);
    [[nodiscard]] uint64_t cuts() const;
};

[[nodiscard]] std::string text(Tally const& tally);

} // namespace power_cuts
