#pragma once

#include "headboard/headboard_eeprom.h"

#include <QByteArray>
#include <QString>
#include <optional>

namespace kestra {
// The headboard's serial number: the text of the EEPROM's first "Headboard ID" record. Record and host hold
// it in local 8-bit, which may lack letters of a number and allows bytes that are no letter; so numbers are
// compared as texts.

/// Ten characters, whichever they are, make a serial number.
[[nodiscard]] bool isSerialNumber(QString const& text);

/// The number behind a serial number: its last three characters are a count, which goes from 999 to 1. None
/// for a text that is no serial number.
[[nodiscard]] std::optional<QString> nextSerialNumber(QString const& last);

/// The number in the EEPROM; empty when there is none, none that can be read, or while the chain that holds
/// it is not wholly written.
[[nodiscard]] QString storedSerialNumber(HeadboardEeprom& eeprom);

/// Puts a number in the place of the stored one in the image; false when that failed.
[[nodiscard]] bool putSerialNumber(HeadboardEeprom& eeprom, QString const& number);

/// The host's file name for grabbed pictures with a serial number in the place of its last part: the folder
/// stays, and the host goes on behind the "_". Texts are local 8-bit.
[[nodiscard]] QByteArray grabFileName(QByteArray const& present, QByteArray const& serialNumber);
} // namespace kestra
