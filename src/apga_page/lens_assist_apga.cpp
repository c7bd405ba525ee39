#include "apga_page/lens_assist_apga.h"

#include "apga_page/lens_assist_apga_flow.h"
#include "ui_lens_assist_apga.h"

LensAssistApga::LensAssistApga(QWidget* parent, SensorRecord const& sensor, HostServices const& services,
                               Wizard* wizard, EepromSlot& eepromSlot)
    : LensAssistApga(parent, std::make_shared<LensAssistApgaFlow>(sensor, services, eepromSlot), wizard) {}

LensAssistApga::LensAssistApga(QWidget* parent, std::shared_ptr<LensAssistApgaFlow> flow, Wizard* wizard)
    : CalibrationPage(parent, flow), m_flow(std::move(flow)) {
    Ui::LensAssistApga form;
    form.setupUi(this);
    build(form, form.Version_APGA, wizard);
    m_flow->captureDisplay().bind(form);
    connect(form.Incandescent_Image, &QPushButton::clicked, this,
            &LensAssistApga::OnBnClickedIncandescent_Image);
    connect(form.Fluorescent_Image, &QPushButton::clicked, this,
            &LensAssistApga::OnBnClickedFluorescent_Image);
    connect(form.Daylight_Image, &QPushButton::clicked, this, &LensAssistApga::OnBnClickedDaylight_Image);
}

void LensAssistApga::setMode(PgaMode mode) {
    m_flow->setMode(mode);
}

CapturedFrames const& LensAssistApga::captured() const {
    return m_flow->captured();
}

void LensAssistApga::OnBnClickedIncandescent_Image() {
    runStep(m_flow, &LensAssistApgaFlow::captureImage, kIncandescent);
}
void LensAssistApga::OnBnClickedFluorescent_Image() {
    runStep(m_flow, &LensAssistApgaFlow::captureImage, kFluorescent);
}
void LensAssistApga::OnBnClickedDaylight_Image() {
    runStep(m_flow, &LensAssistApgaFlow::captureImage, kDaylight);
}
