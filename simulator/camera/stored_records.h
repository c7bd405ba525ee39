#pragma once

#include "simulator/camera/eeprom_device.h"
#include "simulator/camera/profile.h"

#include <QString>
#include <vector>

/// The camera's own decoder of what a calibration left in its EEPROM.
namespace simulator {
/// The chain of records for whoever looks at the EEPROM, with the names of the registers that lie where an
/// entry says. It stops at the first record that runs over the end, and tells so as that record's fault.
[[nodiscard]] std::vector<StoredRecord> storedRecords(EepromContents const& contents, Profile& profile);

/// Writes the entries of the first record of shading registers, or of the first one with that name (in upper
/// or lower case) when the name is not null, in their order. False with a message that names the place in
/// `error`, and nothing written, when there is no such record, anything up to its end is malformed, a
/// register is not there or an entry fits none.
[[nodiscard]] bool replayRecord(EepromContents const& contents, QString const& name, Profile& profile,
                                QString* error);
} // namespace simulator
