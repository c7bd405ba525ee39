#pragma once

#include "common/host.h"
#include "config_page/config_display.h"
#include "headboard/headboard_eeprom.h"
#include "wizard/page_surface.h"

#include <functional>

namespace kestra {

/// What the routines of the configuration page work on. It is shared by the page and every routine that runs:
/// a host or library call may delete the page, and the routine around it finds `alive` false but nothing
/// freed.
struct ConfigCore {
    explicit ConfigCore(EepromSlot& slot) : eepromSlot(slot) {}

    SensorRecord sensor{};  ///< copy of the host's record
    Host host;              ///< of a copy of the host's table
    EepromSlot& eepromSlot; ///< the process-wide headboard EEPROM
    ConfigState state;
    ConfigWidgets widgets;
    /// Tells the calibration pages that the serial number was edited, and whether it is empty now; may be
    /// null.
    std::function<void(bool isEmpty)> serialNumberEdited;
    bool alive = true;    ///< false from the page's destruction on
    bool working = false; ///< a button's routine works on the EEPROM
    bool storing = false; ///< a serial number is being stored, for a button or for a calibration page

    /// Buttons that work on the EEPROM do nothing meanwhile: what a check would drop is half written.
    [[nodiscard]] bool isBusy() const { return working || storing; }
};

} // namespace kestra
