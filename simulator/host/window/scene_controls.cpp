#include "simulator/host/window/panels.h"

#include "simulator/host/session/session.h"
#include "simulator/host/session/words.h"
#include "ui_host_window.h"

#include <QSignalBlocker>

namespace pictara {
namespace {
constexpr char kExposureRegister[] = "COARSE_INTEGRATION_TIME";
constexpr char kAutomaticExposure[] = "Auto Exposure";

// A quantity of the light that a person sets.
struct Quantity {
    QDoubleSpinBox* Ui::HostWindow::*number;
    double simulator::Light::*value;
    Range range;
};

constexpr Quantity kQuantities[] = {
    {&Ui::HostWindow::temperature, &simulator::Light::colourTemperature, kColourTemperatures},
    {&Ui::HostWindow::level, &simulator::Light::level, kLevels},
    {&Ui::HostWindow::gradient, &simulator::Light::gradient, kGradients},
};

// Without telling its receivers.
template <typename Control, typename Set, typename Value>
void setQuietly(Control* control, Set set, Value value) {
    QSignalBlocker const quiet(control);
    (control->*set)(value);
}
} // namespace

SceneControls::SceneControls(Ui::HostWindow const& ui, Session& session)
    : m_ui(ui), m_session(session), m_light(session.camera().light()) {
    connectSensor();
    connectLight();
    refresh();
    showLight();
}

void SceneControls::connectSensor() {
    connect(m_ui.automaticExposure, &QCheckBox::toggled, this, [this](bool isAutomatic) {
        m_session.states().set(kAutomaticExposure, isAutomatic ? 1 : 0);
        m_ui.exposure->setEnabled(!isAutomatic);
    });
    connect(m_ui.exposure, QOverload<int>::of(&QSpinBox::valueChanged), this,
            [this](int rows) { m_session.setRegister(kExposureRegister, uint32_t(rows)); });
    m_ui.fault->addItems(simulator::SimulatedCamera::faultNames());
    m_ui.fault->setCurrentText(QStringLiteral("none"));
    connect(m_ui.fail, &QPushButton::clicked, this, &SceneControls::planFault);
    bool const hasEeprom = m_session.camera().hasEeprom();
    for (QWidget* const part : QWidgetList{m_ui.fault, m_ui.operation, m_ui.lasts, m_ui.fail})
        part->setEnabled(hasEeprom);
}

void SceneControls::planFault() {
    constexpr int kMessageMs = 15'000;
    FaultWish const wish{m_ui.fault->currentText(), uint64_t(m_ui.operation->value()),
                         m_ui.lasts->isChecked()};
    m_session.injectFault(wish);
    m_ui.statusBar->showMessage(QStringLiteral("Planned for the EEPROM: %1").arg(textOf(wish)), kMessageMs);
}

void SceneControls::refresh() {
    bool const isAutomatic = m_session.states().read(kAutomaticExposure) == 1;
    setQuietly(m_ui.automaticExposure, &QCheckBox::setChecked, isAutomatic);
    m_ui.exposure->setEnabled(!isAutomatic);
    if (!m_ui.exposure->hasFocus())
        setQuietly(m_ui.exposure, &QSpinBox::setValue, int(m_session.frames().exposure()));
}

void SceneControls::connectLight() {
    connect(m_ui.illuminant, &QComboBox::textActivated, this, [this](QString const& chosen) {
        if (double const kelvin = chosen.section(' ', -2, -2).toDouble(); kelvin > 0) // not "Other"
            m_light.colourTemperature = kelvin;
        changeLight();
    });
    for (Quantity const& quantity : kQuantities) {
        QDoubleSpinBox* const number = m_ui.*quantity.number;
        number->setRange(quantity.range.low, quantity.range.high);
        connect(number, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [&](double value) {
            m_light.*quantity.value = value;
            changeLight();
        });
    }
    connect(m_ui.object, &QCheckBox::toggled, this, [this](bool isInPicture) {
        m_light.objectInPicture = isInPicture;
        changeLight();
    });
    connect(m_ui.cover, &QCheckBox::toggled, this, &SceneControls::changeLight);
    connect(m_ui.normal, &QPushButton::clicked, this, [this] {
        m_light = {.colourTemperature = m_light.colourTemperature};
        setQuietly(m_ui.cover, &QCheckBox::setChecked, false);
        changeLight();
    });
}

void SceneControls::showLight() {
    for (Quantity const& quantity : kQuantities)
        setQuietly(m_ui.*quantity.number, &QDoubleSpinBox::setValue, m_light.*quantity.value);
    setQuietly(m_ui.object, &QCheckBox::setChecked, m_light.objectInPicture);
    int const known =
        m_ui.illuminant->findText(QStringLiteral(", %1 K").arg(m_light.colourTemperature), Qt::MatchEndsWith);
    m_ui.illuminant->setCurrentIndex(known >= 0 ? known : m_ui.illuminant->count() - 1);
}

void SceneControls::changeLight() {
    showLight();
    simulator::Light light = m_light;
    if (m_ui.cover->isChecked())
        light.level = 0;
    m_session.setLight(light);
}
} // namespace pictara
