#pragma once

#include "calibration/page_widgets.h"
#include "calibration/view.h"
#include "common/host.h"
#include "common/sensor.h"
#include "headboard/headboard_eeprom.h"
#include "hoststate/pipeline.h"
#include "wizard/page_surface.h"

#include <functional>

namespace kestra {

/// What a page shows besides the steps that both pages have, and how its file step reads.
struct PageDisplay {
    std::function<void()> showOwnStatus;  ///< called whenever the shared steps' status is shown; may be null
    std::function<void()> showOwnEnables; ///< the same for enabling
    char pathSeparator = '\\';            ///< the bare name of a results file begins behind the last one
};

/// What a calibration page asks of the headboard configuration page; both may be null.
struct SerialNumber {
    std::function<void()> store;     ///< stores it in the EEPROM, before a save there
    std::function<bool()> isMissing; ///< whether there is such a page and its field is empty
};

/// What the routines of a calibration page work on. It is shared by the page and every routine that runs: a
/// host or library call may delete the page, and the routine around it finds `alive` false but nothing freed.
struct PageCore {
    explicit PageCore(EepromSlot& slot) : eepromSlot(slot) {}

    SensorRecord sensor{}; ///< copy of the host's record; its strings are the host's and read at each use
    Host host;
    PageState state;
    PageWidgets widgets;
    LensCorrection lensCorrection;
    EepromSlot& eepromSlot; ///< the process-wide headboard EEPROM
    PageDisplay display;
    SerialNumber serialNumber;
    bool alive = true; ///< false from the page's destruction on

    [[nodiscard]] Sensor camera() const { return Sensor(sensor.camera); }
    /// What the sensor is to the plug-in, by the host's record.
    [[nodiscard]] SensorKind const& kind() const { return sensorKind(sensor.sensorKind, sensor.variant); }
};

/// Whether the headboard lacks its serial number, without which no results file is saved.
[[nodiscard]] inline bool isNumberMissing(PageCore const& core) {
    return core.serialNumber.isMissing && core.serialNumber.isMissing();
}

} // namespace kestra
