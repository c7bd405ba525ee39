#include "simulator/host/window/profile_chooser.h"

#include "simulator/camera/simulated_camera.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace pictara {
namespace {
QString describedBy(simulator::CameraDescription const& camera) {
    return QStringLiteral("%1: kind %2, variant %3, %4 x %5 pixels%6%7")
        .arg(QString::fromLocal8Bit(camera.sensorName))
        .arg(camera.sensorKind)
        .arg(camera.variant)
        .arg(camera.width)
        .arg(camera.height)
        .arg(camera.systemOnChip ? QStringLiteral(", system on chip") : QString())
        .arg(camera.note.isEmpty() ? QString() : QStringLiteral(";\n") + camera.note);
}
} // namespace

ProfileChooser::ProfileChooser(QString const& preferred, QWidget* parent)
    : QDialog(parent), m_list(new QListWidget), m_description(new QLabel) {
    setWindowTitle(QStringLiteral("Pictara - sensor"));
    m_list->setObjectName(QStringLiteral("profiles"));
    m_list->setToolTip(QStringLiteral("The sensors that can be simulated"));
    m_list->addItems(simulator::SimulatedCamera::profileNames());
    auto* const label = new QLabel(QStringLiteral("&Sensor on the headboard:"));
    label->setBuddy(m_list);
    m_description->setWordWrap(true);
    m_description->setMinimumWidth(m_description->fontMetrics().averageCharWidth() * 64);
    auto* const buttons = new QDialogButtonBox(QDialogButtonBox::Open | QDialogButtonBox::Cancel);
    buttons->button(QDialogButtonBox::Open)
        ->setToolTip(QStringLiteral("Begin with this sensor (Enter or a double click)"));
    buttons->button(QDialogButtonBox::Cancel)->setToolTip(QStringLiteral("End the program (Esc)"));

    auto* const layout = new QVBoxLayout(this);
    for (QWidget* const row : std::initializer_list<QWidget*>{label, m_list, m_description, buttons})
        layout->addWidget(row);

    connect(m_list, &QListWidget::currentTextChanged, this, &ProfileChooser::describe);
    connect(m_list, &QListWidget::itemActivated, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto const found = m_list->findItems(preferred, Qt::MatchExactly);
    m_list->setCurrentItem(found.isEmpty() ? m_list->item(0) : found.first());
}

QString ProfileChooser::profile() const {
    return m_list->currentItem() ? m_list->currentItem()->text() : QString();
}

void ProfileChooser::describe(QString const& profile) {
    QString error;
    auto const camera = simulator::SimulatedCamera::open(profile, &error);
    m_description->setText(camera ? describedBy(camera->description()) : error);
}
} // namespace pictara
