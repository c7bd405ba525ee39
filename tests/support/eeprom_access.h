#pragma once

#include "tests/support/camera_under_test.h"

#include <QByteArray>
#include <cstdint>

/// One or two bytes.
struct Transfer {
    uint32_t address, count;
    bool writes;
};

/// One way to the EEPROM, as software on the host goes it: the profile that is wired so, and transfers of one
/// or two bytes that answer whether they went well. Time passes only where a host would sleep.
struct EepromAccess {
    bool read(simulator::SimulatedCamera& camera, uint32_t address,
              QByteArray& bytes) const; ///< as many as it has
    bool write(simulator::SimulatedCamera& camera, uint32_t address, QByteArray const& bytes) const;

    char const* name;
    char const* profile;
    bool (*move)(simulator::SimulatedCamera& camera, Transfer const& transfer, uint32_t& value);
};

extern EepromAccess const kEepromAccesses[3];

/// A camera of that access in virtual time.
[[nodiscard]] Camera openFor(EepromAccess const& access);

/// Sets what the device holds, past every access and fault.
void programContents(simulator::SimulatedCamera& camera, QByteArray const& contents);
