#pragma once

#include "calibration/page_state.h"
#include "calibration/page_widgets.h"
#include "common/host.h"
#include "common/sensor.h"
#include "headboard/eeprom_slot.h"
#include "hoststate/lens_correction.h"

#include <functional>

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
    /// Lets the configuration page store its serial number before a save to the EEPROM; null while there is
    /// no such page.
    std::function<void()> storeSerialNumber;
    bool alive = true; ///< false from the page's destruction on

    [[nodiscard]] Sensor camera() const { return Sensor(sensor.camera); }
};

/// Marks widget updates from code, so that change handlers ignore the signals that they raise.
class UpdateGuard {
public:
    explicit UpdateGuard(PageCore& core) : m_core(core) { ++m_core.state.updateDepth; }
    ~UpdateGuard() { --m_core.state.updateDepth; }
    UpdateGuard(UpdateGuard const&) = delete;
    UpdateGuard& operator=(UpdateGuard const&) = delete;

private:
    PageCore& m_core;
};

/// Shows the wait cursor over the page while it lives.
class WaitCursor {
public:
    explicit WaitCursor(PageCore& core) : m_page(core.widgets.page) {
        if (m_page)
            m_page->setCursor(Qt::WaitCursor);
    }
    ~WaitCursor() {
        if (m_page)
            m_page->unsetCursor();
    }
    WaitCursor(WaitCursor const&) = delete;
    WaitCursor& operator=(WaitCursor const&) = delete;

private:
    QPointer<QDialog> m_page;
};
