#pragma once

#include "headboard/headboard_eeprom.h"

#include <QByteArray>

namespace kestra {

/// The label of the factory's calibration, in this spelling only.
inline constexpr char kFactoryLabel[] = "FACTORY";

/// What becomes of a new time when the older one cannot be deleted.
enum class OlderTime { MustGo, MayStay };

/// Adds the current time to the factory's calibration, in place of an older time.
[[nodiscard]] EepromStatus addFactoryTime(HeadboardEeprom& eeprom, QByteArray const& label, OlderTime older);

/// A label with the characters replaced that a file name cannot bear.
[[nodiscard]] QByteArray sanitisedLabel(QByteArray label);

} // namespace kestra
