#include "config_page/config_core.h"

#include <QDialog>

void flushOrDrop(ConfigCore& core, HeadboardEeprom const& eeprom, int32_t status) {
    if (status == kEepromOk)
        status = HeadboardEepromFlush(eeprom);
    if (status != kEepromOk)
        HeadboardEepromRelease(sharedEeprom(core.eepromSlot, core.sensor.camera));
}

ConfigWaitCursor::ConfigWaitCursor(ConfigCore const& core) : m_page(core.widgets.page) {
    if (m_page)
        m_page->setCursor(Qt::WaitCursor);
}

ConfigWaitCursor::~ConfigWaitCursor() {
    if (m_page)
        m_page->unsetCursor();
}
