#include "simulator/host/window/sensor_panel.h"

#include "simulator/host/session/session.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <limits>

namespace pictara {
namespace {
constexpr char kExposureRegister[] = "COARSE_INTEGRATION_TIME";
constexpr char kAutomaticExposure[] = "Auto Exposure";
constexpr int kLongestExposure = 0xFFFF; // rows
constexpr int kLastOperation = 1'000'000;

template <typename Control>
Control* named(Control* control, char const* name, QString const& toolTip) {
    control->setObjectName(QLatin1String(name));
    control->setToolTip(toolTip);
    return control;
}
} // namespace

SensorPanel::SensorPanel(Session& session, QWidget* parent)
    : LivePanel(parent), m_session(session),
      m_automatic(named(new QCheckBox(QStringLiteral("&Automatic exposure")), "automaticExposure",
                        QStringLiteral("Let the host's exposure loop set the exposure"))),
      m_exposure(named(new QSpinBox, "exposure", QStringLiteral("The sensor's exposure register, in rows"))),
      m_fault(named(new QComboBox, "fault", QStringLiteral("What goes wrong with the EEPROM"))),
      m_operation(named(
          new QSpinBox, "operation",
          QStringLiteral("Which operation of the EEPROM from now on; of a power cut: after how many bytes"))),
      m_lasts(named(new QCheckBox(QStringLiteral("&Keeps failing")), "lasts",
                    QStringLiteral("All later operations fail, too"))) {
    auto* const form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    addProfile(*form);
    addExposure(*form);
    addSeed(*form);
    addFault(*form);
    refresh(0);
}

void SensorPanel::addProfile(QFormLayout& form) {
    auto* const profile =
        named(new QComboBox, "profile",
              QStringLiteral("The sensor on the headboard; another one begins another sitting"));
    profile->addItems(simulator::SimulatedCamera::profileNames());
    QString const present = m_session.camera().description().profile;
    if (profile->findText(present) < 0)
        profile->addItem(present); // of a file
    profile->setCurrentText(present);
    connect(profile, QOverload<int>::of(&QComboBox::activated), this, [this, profile, present] {
        if (profile->currentText() != present)
            emit profileWished(profile->currentText());
    });
    form.addRow(QStringLiteral("S&ensor"), profile);
}

void SensorPanel::addExposure(QFormLayout& form) {
    m_exposure->setRange(0, kLongestExposure);
    m_exposure->setSuffix(QStringLiteral(" rows"));
    m_exposure->setKeyboardTracking(false);
    connect(m_automatic, &QCheckBox::toggled, this, [this](bool isAutomatic) {
        m_session.states().set(kAutomaticExposure, isAutomatic ? 1 : 0);
        m_exposure->setEnabled(!isAutomatic);
    });
    connect(m_exposure, QOverload<int>::of(&QSpinBox::valueChanged), this,
            [this](int rows) { m_session.setRegister(kExposureRegister, uint32_t(rows)); });
    form.addRow(m_automatic);
    form.addRow(QStringLiteral("E&xposure"), m_exposure);
}

void SensorPanel::addSeed(QFormLayout& form) {
    auto* const seed = named(new QSpinBox, "seed",
                             QStringLiteral("Seed of the camera's noise: equal seeds give equal pictures"));
    seed->setRange(0, std::numeric_limits<int>::max());
    seed->setValue(int(m_session.seed()));
    seed->setKeyboardTracking(false);
    connect(seed, QOverload<int>::of(&QSpinBox::valueChanged), this,
            [this](int value) { m_session.setSeed(uint64_t(value)); });
    form.addRow(QStringLiteral("Noise &seed"), seed);
}

void SensorPanel::addFault(QFormLayout& form) {
    m_fault->addItems(simulator::SimulatedCamera::faultNames());
    m_fault->setCurrentText(QStringLiteral("none"));
    m_operation->setRange(1, kLastOperation);
    auto* const fail =
        named(new QPushButton(QStringLiteral("Plan no&w")), "fail",
              QStringLiteral("Let this go wrong instead of what was planned before; \"none\" heals"));
    connect(fail, &QPushButton::clicked, this, &SensorPanel::planFault);
    auto* const line = new QHBoxLayout;
    line->addWidget(m_lasts);
    line->addWidget(fail);
    form.addRow(QStringLiteral("Fa&ult"), m_fault);
    form.addRow(QStringLiteral("At o&peration"), m_operation);
    form.addRow(line);
    for (QWidget* const part : std::initializer_list<QWidget*>{m_fault, m_operation, m_lasts, fail})
        part->setEnabled(m_session.camera().hasEeprom());
}

void SensorPanel::planFault() {
    FaultWish const wish{m_fault->currentText(), uint64_t(m_operation->value()), m_lasts->isChecked()};
    if (m_session.injectFault(wish))
        emit told(wish.name == QLatin1String("none")
                      ? QStringLiteral("The EEPROM works.")
                      : QStringLiteral("Planned for the EEPROM: %1").arg(textOf(wish)));
}

void SensorPanel::refresh(quint64) {
    QSignalBlocker const quietLoop(m_automatic), quietNumber(m_exposure);
    m_automatic->setChecked(m_session.states().read(kAutomaticExposure) == 1);
    m_exposure->setEnabled(!m_automatic->isChecked());
    if (!m_exposure->hasFocus())
        m_exposure->setValue(int(m_session.frames().exposure()));
}
} // namespace pictara
