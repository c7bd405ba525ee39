#include "simulator/host/window/scene_controls.h"

#include "simulator/host/session/session.h"
#include "simulator/host/session/words.h"
#include "ui_host_window.h"

#include <QSignalBlocker>
#include <algorithm>
#include <cmath>
#include <utility>

namespace pictara {
/// A quantity of the light that a person sets by a field and a slider.
struct Quantity {
    QDoubleSpinBox* Ui::HostWindow::*number;
    QSlider* Ui::HostWindow::*slider;
    double simulator::Light::*value;
    Range range;
    bool isLogarithmic = false; ///< whether equal ways of the slider are equal ratios
};

namespace {
constexpr char kExposureRegister[] = "COARSE_INTEGRATION_TIME";
constexpr char kAutomaticExposure[] = "Auto Exposure";

constexpr Quantity kQuantities[] = {
    {&Ui::HostWindow::temperature, &Ui::HostWindow::temperatureSlider, &simulator::Light::colourTemperature,
     kColourTemperatures},
    {&Ui::HostWindow::level, &Ui::HostWindow::levelSlider, &simulator::Light::level, kLevels, true},
    {&Ui::HostWindow::gradient, &Ui::HostWindow::gradientSlider, &simulator::Light::gradient, kGradients},
};

constexpr std::pair<char const*, double> kIlluminants[] = {
    {"Horizon, 2300 K", 2300},     {"Incandescent A, 2856 K", 2856}, {"Fluorescent, 4000 K", 4000},
    {"Normal lamp, 5000 K", 5000}, {"Daylight, 6500 K", 6500},       {"Shade, 7500 K", 7500},
};

constexpr double kPositions = 400; // of a slider

int positionOf(Quantity const& quantity, double value) {
    auto const [low, high] = quantity.range;
    double const share =
        quantity.isLogarithmic ? std::log(value / low) / std::log(high / low) : (value - low) / (high - low);
    return int(std::lround(std::clamp(share, 0.0, 1.0) * kPositions));
}

double valueAt(Quantity const& quantity, int position) {
    auto const [low, high] = quantity.range;
    double const share = position / kPositions;
    return quantity.isLogarithmic ? low * std::pow(high / low, share) : low + (high - low) * share;
}

template <typename Control, typename Value>
void showQuietly(Control* control, Value value) {
    QSignalBlocker const quiet(control);
    control->setValue(value);
}

void checkQuietly(QCheckBox* box, bool isChecked) {
    QSignalBlocker const quiet(box);
    box->setChecked(isChecked);
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
    for (QWidget* const part :
         std::initializer_list<QWidget*>{m_ui.fault, m_ui.operation, m_ui.lasts, m_ui.fail})
        part->setEnabled(m_session.camera().hasEeprom());
}

void SceneControls::planFault() {
    constexpr int kMessageMs = 15'000;
    FaultWish const wish{m_ui.fault->currentText(), uint64_t(m_ui.operation->value()),
                         m_ui.lasts->isChecked()};
    if (m_session.injectFault(wish))
        m_ui.statusBar->showMessage(wish.name == QLatin1String("none")
                                        ? QStringLiteral("The EEPROM works.")
                                        : QStringLiteral("Planned for the EEPROM: %1").arg(textOf(wish)),
                                    kMessageMs);
}

void SceneControls::refresh() {
    bool const isAutomatic = m_session.states().read(kAutomaticExposure) == 1;
    checkQuietly(m_ui.automaticExposure, isAutomatic);
    m_ui.exposure->setEnabled(!isAutomatic);
    if (!m_ui.exposure->hasFocus())
        showQuietly(m_ui.exposure, int(m_session.frames().exposure()));
}

void SceneControls::connectLight() {
    for (auto const& [name, kelvin] : kIlluminants)
        m_ui.illuminant->addItem(QLatin1String(name), kelvin);
    m_ui.illuminant->addItem(QStringLiteral("Other"));
    connect(m_ui.illuminant, QOverload<int>::of(&QComboBox::activated), this, [this](int chosen) {
        QVariant const kelvin = m_ui.illuminant->itemData(chosen);
        if (kelvin.isValid())
            m_light.colourTemperature = kelvin.toDouble();
        changeLight();
    });
    for (Quantity const& quantity : kQuantities)
        connectQuantity(quantity);
    connect(m_ui.object, &QCheckBox::toggled, this, [this](bool isInPicture) {
        m_light.objectInPicture = isInPicture;
        changeLight();
    });
    connect(m_ui.cover, &QCheckBox::toggled, this, &SceneControls::changeLight);
    connect(m_ui.normal, &QPushButton::clicked, this, [this] {
        m_light = {};
        checkQuietly(m_ui.cover, false);
        changeLight();
    });
}

void SceneControls::connectQuantity(Quantity const& quantity) {
    QDoubleSpinBox* const number = m_ui.*quantity.number;
    number->setRange(quantity.range.low, quantity.range.high);
    connect(number, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this,
            [this, &quantity](double value) {
                m_light.*quantity.value = value;
                changeLight();
            });
    // Not what the field makes of it: rounded, it could lie at the position from where the slider came.
    connect(m_ui.*quantity.slider, &QSlider::valueChanged, this, [this, &quantity](int position) {
        m_light.*quantity.value = valueAt(quantity, position);
        changeLight();
    });
}

void SceneControls::showLight() {
    for (Quantity const& quantity : kQuantities) {
        showQuietly(m_ui.*quantity.number, m_light.*quantity.value);
        showQuietly(m_ui.*quantity.slider, positionOf(quantity, m_light.*quantity.value));
    }
    checkQuietly(m_ui.object, m_light.objectInPicture);
    int const known = m_ui.illuminant->findData(m_light.colourTemperature);
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
