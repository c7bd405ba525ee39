#pragma once

#include "simulator/host/session/sensor_registers.h"
#include "simulator/host/session/state_variables.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace pictara {
/// Applies the lines of a section of an ini file in their order, as one group of changes:
///   STATE = variable, value
///   REG = id, address, value            or  REG = register, value
///   BITFIELD = id, address, mask, value or  BITFIELD = register, bitfield, value
///   VAR = driver, offset, value         (a variable of the sensor's firmware)
/// Numbers are decimal, or hexadecimal with 0x; case and blanks of a section's name do not count. A line that
/// is not understood, or that the sensor does not take, is logged and passed over. Returns the number of
/// lines that were applied; none when the section is missing or the file cannot be read.
std::optional<int> applyPreset(QString const& iniFile, QByteArray const& section, StateVariables& states,
                               SensorRegisters& registers);
} // namespace pictara
