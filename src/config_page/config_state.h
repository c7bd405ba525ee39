#pragma once

#include "config_page/identification_bytes.h"

#include <QMessageBox>
#include <QString>
#include <array>
#include <cstdint>

/// What the configuration page knows. Plain data: status texts and enabling are functions of it.
struct ConfigState {
    enum EepromState : uint32_t { EepromUnknown = 0, EepromPresent = 4, EepromAbsent = 5, EepromError = 6 };
    enum SerialState : uint32_t { SerialUnknown = 0, SerialEdited = 1, SerialSaved = 4, SerialEmpty = 5 };

    uint32_t updateDepth =
        0; ///< nesting of widget updates from code; change handlers ignore signals meanwhile
    uint32_t eepromState = EepromUnknown;
    uint32_t serialState = SerialUnknown;
    bool combosDirty = false; ///< a list was changed by the user and not applied since
    QMessageBox::Icon messageBoxIcon = QMessageBox::NoIcon;           ///< of the erase question
    std::array<QString, kIdentificationFields.size()> identification; ///< bytes as last read, as text
};
