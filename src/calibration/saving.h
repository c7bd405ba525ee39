#pragma once

#include "calibration/page_core.h"

#include <QByteArray>

namespace kestra {

/// Puts a calibration's records into the image under a label, local 8-bit, and writes them to the device.
using StoreInEeprom = std::function<EepromStatus(HeadboardEeprom& eeprom, QByteArray const& label)>;

/// Detects the headboard EEPROM while that is not known: `eepromState` becomes present or absent, or stays
/// unknown after a failure that the next attempt may not meet. A blank EEPROM is formatted. An absent one
/// also closes the save-to-EEPROM step ("No EEPROM.").
void detectEeprom(PageCore& core);

/// Saves to the headboard EEPROM, under the label that the page shows. The step is done only when `store`
/// says so and nobody has reset it, or discarded the EEPROM, meanwhile.
void saveToEepromStep(PageCore& core, StoreInEeprom const& store);

/// What becomes of a new time when the older one cannot be deleted.
enum class OlderTime { MustGo, MayStay };

/// Adds the current time to a label that stands for the factory's calibration, in place of an older time.
[[nodiscard]] EepromStatus addFactoryTime(HeadboardEeprom& eeprom, QByteArray const& label, OlderTime older);

/// Tests whether the directory for results files exists, when that is not known: `fileState` becomes ready or
/// failed.
void checkSaveDirectory(PageCore& core);

/// What a page wants of its results file.
struct ResultFile {
    uint32_t format = 0;         ///< one of the library's
    bool sanitisesNames = false; ///< of the sensor, in the file's name; else they are taken byte for byte
};

/// Writes the calibration's results file through the library. Does nothing without a calibration or after a
/// failed one.
void saveResultFile(PageCore& core, ResultFile const& file);

/// A label with the characters replaced that a file name cannot bear.
[[nodiscard]] QByteArray sanitisedLabel(QByteArray label);

} // namespace kestra
