#pragma once

#include <QString>
#include <cstdint>
#include <optional>

namespace pictara {
/// How the host saw the picture when a calibration ended. An EEPROM holds nothing of it, and a stored
/// correction can be compared with the calibrated one only under the same conditions.
struct ViewingConditions {
    double lamp = 0;       ///< colour temperature, kelvin
    uint32_t exposure = 0; ///< rows
    int32_t redGain = 0;   ///< relative to green, thousandths
    int32_t blueGain = 0;  ///< relative to green, thousandths
    uint32_t frames = 0;   ///< that the camera had delivered: the noise of the next one depends on it
};

/// The file beside an EEPROM's file that holds its conditions.
[[nodiscard]] QString conditionsFileOf(QString const& eepromFile);

/// False with a message for the user when the file is malformed; one that does not exist holds none.
[[nodiscard]] bool readConditions(QString const& file, std::optional<ViewingConditions>* conditions,
                                  QString* error);
/// All or nothing; false with a message for the user.
[[nodiscard]] bool writeConditions(QString const& file, ViewingConditions const& conditions, QString* error);
} // namespace pictara
