#pragma once

#include "simulator/camera/eeprom_bytes.h"
#include "simulator/camera/eeprom_contents.h"
#include "simulator/camera/register_map.h"

#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

namespace simulator {
/// One register setting of a stored record.
struct StoredEntry {
    size_t offset = 0;         ///< of the entry in the EEPROM
    uint32_t addressSpace = 0; ///< address-space kind
    uint32_t id = 0;           ///< page or driver
    uint32_t address = 0;
    uint32_t size = 0; ///< bytes of the value; 0: as wide as the register
    uint32_t mask = 0; ///< bits that the value belongs to, its lowest bit at their lowest; 0: whole register
    uint32_t value = 0;
};

/// The entries of the first record of shading registers, or of the first one with that name (in upper or
/// lower case) when the name is not null. Short entries hold page and address in a byte each on sensors
/// whose registers have less than 9 address bits. Empty with a message that names the place in `error` when
/// there is no such record or anything up to its end is malformed.
[[nodiscard]] std::optional<std::vector<StoredEntry>> readStartUpRecord(EepromContents const& contents,
                                                                        QString const& name,
                                                                        uint32_t registerAddressWidth,
                                                                        QString* error);

/// The entries behind the name of a register record, appended as far as they are well-formed. False with a
/// message that names the place in `error` when they are not to the end.
[[nodiscard]] bool readEntries(EepromBytes const& payload, uint32_t registerAddressWidth,
                               std::vector<StoredEntry>& decoded, QString* error);

/// Writes the entries in their order. False with a message in `error`, and nothing written, when a register
/// is not there or an entry fits none.
[[nodiscard]] bool replayEntries(std::vector<StoredEntry> const& entries, RegisterMap& registers,
                                 QString* error);
} // namespace simulator
