#pragma once

#include "simulator/host/session/sensor_registers.h"
#include "simulator/host/session/state_variables.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <optional>

namespace pictara {
/// One line of a preset: `KEYWORD = field, field, ...`. Comments and directives are left out.
struct PresetLine {
    QByteArray keyword; ///< in capitals; empty for a line without "="
    QList<QByteArray> fields;
    QByteArray text; ///< the whole line, for messages
};

/// The lines of a section of an ini file. Section names compare without case, blanks inside the brackets do
/// not count. None when the section is missing, or the file cannot be read.
[[nodiscard]] std::optional<QList<PresetLine>> readPreset(QString const& iniFile, QByteArray const& section);

/// Applies preset lines in their order, as one group of changes:
///   STATE = variable, value
///   REG = id, address, value            or  REG = register, value
///   BITFIELD = id, address, mask, value or  BITFIELD = register, bitfield, value
///   VAR = driver, offset, value         (a variable of the sensor's firmware)
/// Numbers are decimal, or hexadecimal with 0x. A line that is not understood, or that the sensor does not
/// take, is logged and passed over. Returns the number of lines that were applied.
int applyPreset(QList<PresetLine> const& lines, StateVariables& states, SensorRegisters& registers);
} // namespace pictara
