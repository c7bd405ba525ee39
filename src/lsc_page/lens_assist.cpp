#include "lsc_page/lens_assist.h"

#include "lsc_page/lens_assist_flow.h"
#include "ui_lens_assist.h"

LensAssist::LensAssist(QWidget* parent, SensorRecord const& sensor, HostServices const& services,
                       Wizard* wizard, EepromSlot& eepromSlot)
    : CalibrationPage(parent, std::make_shared<LensAssistFlow>(sensor, services, eepromSlot)) {
    Ui::LensAssist form;
    form.setupUi(this);
    build(form, form.Version_Lens, wizard);
}
