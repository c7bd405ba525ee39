#pragma once

#include "tests/support/camera_under_test.h"

#include <QByteArray>
#include <cstdint>
#include <functional>

/// One way to the EEPROM, as software on the host goes it: the profile that is wired so, and a transfer of
/// one or two bytes that answers whether it went well. Time passes only where a host would sleep.
struct EepromAccess {
    char const* name;
    char const* profile;
    bool (*read)(simulator::SimulatedCamera& camera, uint32_t address,
                 QByteArray& bytes); ///< as many as it has
    bool (*write)(simulator::SimulatedCamera& camera, uint32_t address, QByteArray const& bytes);
};

extern EepromAccess const kEepromAccesses[3];

/// A camera of that access in virtual time.
[[nodiscard]] Camera openFor(EepromAccess const& access);

/// Sets what the device holds, past every access and fault.
void programContents(simulator::SimulatedCamera& camera, QByteArray const& contents);
