#include "simulator/host/light_panel.h"

#include "simulator/host/quantity_control.h"

#include <QCheckBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace pictara {
namespace {

constexpr Quantity kTemperature{.label = "Colour &temperature",
                                .toolTip = "Colour temperature of the lamp",
                                .suffix = " K",
                                .range = kColourTemperatures,
                                .step = 100};
constexpr Quantity kLevel{.label = "&Level",
                          .toolTip = "Luminance relative to the lamp's normal level; "
                                     "the exposure follows it while automatic exposure is on",
                          .range = kLevels,
                          .decimals = 3,
                          .logarithmic = true};
constexpr Quantity kGradient{.label = "&Gradient",
                             .toolTip = "Relative rise of the luminance from left to right; 0 is even light",
                             .range = kGradients,
                             .step = 0.05,
                             .decimals = 2};

// Control is a widget with a text, or a QuantityControl with its quantity.
template <typename Control, typename Content>
Control* newControl(char const* name, Content const& content, QWidget* parent) {
    auto* const control = new Control(content, parent);
    control->setObjectName(QLatin1String(name));
    parent->layout()->addWidget(control);
    return control;
}

} // namespace

LightPanel::LightPanel(simulator::Light const& light, QWidget* parent) : QWidget(parent), m_light(light) {
    (new QVBoxLayout(this))->setContentsMargins(0, 0, 0, 0);
    m_temperature = newControl<QuantityControl>("temperature", kTemperature, this);
    m_level = newControl<QuantityControl>("level", kLevel, this);
    m_gradient = newControl<QuantityControl>("gradient", kGradient, this);
    m_object = newControl<QCheckBox>("object", QStringLiteral("&Object in the picture"), this);
    m_object->setToolTip(QStringLiteral("Put a dark disc into the picture"));
    m_cover = newControl<QCheckBox>("cover", QStringLiteral("Co&ver the lens"), this);
    m_cover->setToolTip(QStringLiteral("Let no light into the lens"));
    auto* const normal = newControl<QPushButton>("normal", QStringLiteral("&Normal light"), this);
    normal->setToolTip(QStringLiteral("Even light at the lamp's normal level, and nothing in its way"));
    connect(normal, &QPushButton::clicked, this, [this] {
        m_light = {};
        showLight();
        announce();
    });
    showLight();
    connectControls();
}

void LightPanel::connectControls() {
    auto const follow = [this](QuantityControl* control, double simulator::Light::*quantity) {
        connect(control, &QuantityControl::changed, this, [this, quantity](double value) {
            m_light.*quantity = value;
            announce();
        });
    };
    follow(m_temperature, &simulator::Light::colourTemperature);
    follow(m_level, &simulator::Light::level);
    follow(m_gradient, &simulator::Light::gradient);
    connect(m_object, &QCheckBox::toggled, this, [this](bool inPicture) {
        m_light.objectInPicture = inPicture;
        announce();
    });
    connect(m_cover, &QCheckBox::toggled, this, &LightPanel::announce);
}

void LightPanel::showLight() {
    QSignalBlocker const quietObject(m_object), quietCover(m_cover);
    m_temperature->show(m_light.colourTemperature);
    m_level->show(m_light.level);
    m_gradient->show(m_light.gradient);
    m_object->setChecked(m_light.objectInPicture);
    m_cover->setChecked(false);
}

void LightPanel::announce() {
    simulator::Light light = m_light;
    if (m_cover->isChecked())
        light.level = 0;
    emit lightChanged(light);
}

} // namespace pictara
