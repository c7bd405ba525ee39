#include "simulator/host/window/light_panel.h"

#include "simulator/host/window/quantity_control.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
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

struct Illuminant {
    char const* name;
    double kelvin;
};

constexpr Illuminant kIlluminants[] = {
    {"Horizon, 2300 K", 2300},     {"Incandescent A, 2856 K", 2856}, {"Fluorescent, 4000 K", 4000},
    {"Normal lamp, 5000 K", 5000}, {"Daylight, 6500 K", 6500},       {"Shade, 7500 K", 7500},
};
constexpr char kOther[] = "Other";

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
    addIlluminants();
    m_temperature = newControl<QuantityControl>("temperature", kTemperature, this);
    m_level = newControl<QuantityControl>("level", kLevel, this);
    m_gradient = newControl<QuantityControl>("gradient", kGradient, this);
    m_object = newControl<QCheckBox>("object", QStringLiteral("&Object in the picture"), this);
    m_object->setToolTip(QStringLiteral("Put a dark disc into the picture"));
    m_cover = newControl<QCheckBox>("cover", QStringLiteral("Cove&r the lens"), this);
    m_cover->setToolTip(QStringLiteral("Let no light into the lens"));
    auto* const normal = newControl<QPushButton>("normal", QStringLiteral("&Normal light"), this);
    normal->setToolTip(QStringLiteral("Even light at the lamp's normal level, and nothing in its way"));
    connect(normal, &QPushButton::clicked, this, [this] {
        QSignalBlocker const quietCover(m_cover);
        m_light = {};
        m_cover->setChecked(false);
        showLight();
        announce();
    });
    showLight();
    connectControls();
}

void LightPanel::addIlluminants() {
    m_illuminant = new QComboBox(this);
    m_illuminant->setObjectName(QStringLiteral("illuminant"));
    m_illuminant->setToolTip(QStringLiteral("Set the colour temperature of a usual lamp"));
    for (Illuminant const& row : kIlluminants)
        m_illuminant->addItem(QString::fromLatin1(row.name), row.kelvin);
    m_illuminant->addItem(QString::fromLatin1(kOther));
    auto* const label = new QLabel(QStringLiteral("&Illuminant"));
    label->setBuddy(m_illuminant);
    auto* const line = new QHBoxLayout;
    line->addWidget(label);
    line->addWidget(m_illuminant, 1);
    static_cast<QVBoxLayout*>(layout())->addLayout(line);
    connect(m_illuminant, QOverload<int>::of(&QComboBox::activated), this, [this](int chosen) {
        QVariant const kelvin = m_illuminant->itemData(chosen);
        if (kelvin.isValid())
            m_light.colourTemperature = kelvin.toDouble();
        showLight();
        announce();
    });
}

void LightPanel::showIlluminant() {
    int const known = m_illuminant->findData(m_light.colourTemperature);
    m_illuminant->setCurrentIndex(known >= 0 ? known : m_illuminant->count() - 1);
}

void LightPanel::connectControls() {
    auto const follow = [this](QuantityControl* control, double simulator::Light::*quantity) {
        connect(control, &QuantityControl::changed, this, [this, quantity](double value) {
            m_light.*quantity = value;
            showIlluminant();
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
    QSignalBlocker const quietObject(m_object);
    m_temperature->show(m_light.colourTemperature);
    m_level->show(m_light.level);
    m_gradient->show(m_light.gradient);
    m_object->setChecked(m_light.objectInPicture);
    showIlluminant();
}

void LightPanel::announce() {
    simulator::Light light = m_light;
    if (m_cover->isChecked())
        light.level = 0;
    emit lightChanged(light);
}
} // namespace pictara
