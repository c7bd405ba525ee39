#pragma once

#include <string>
#include <vector>

/// What an operation on the headboard's EEPROM costs on one of the ways to it.
struct EepromCost {
    std::string way;
    std::string what;
    double transfers = 0;      ///< over the bus
    double leastTransfers = 0; ///< that its bytes need
    double virtualSeconds = 0; ///< in pauses, and until the device has stored what was written
};

/// A load, a save and a verification on each way, on a simulated device in virtual time.
[[nodiscard]] std::vector<EepromCost> measureEeprom();
