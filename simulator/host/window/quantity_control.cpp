#include "simulator/host/window/quantity_control.h"

#include <QDoubleSpinBox>
#include <QGridLayout>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <algorithm>
#include <cmath>

namespace pictara {
namespace {
constexpr int kPositions = 400;
constexpr int kPageStep = 20;
} // namespace

QuantityControl::QuantityControl(Quantity const& quantity, QWidget* parent)
    : QWidget(parent), m_quantity(quantity), m_slider(new QSlider(Qt::Horizontal)),
      m_number(new QDoubleSpinBox) {
    m_slider->setRange(0, kPositions);
    m_slider->setPageStep(kPageStep);
    m_number->setRange(quantity.range.low, quantity.range.high);
    m_number->setDecimals(quantity.decimals);
    m_number->setSuffix(QString::fromLatin1(quantity.suffix));
    m_number->setKeyboardTracking(false); // half a number is no light yet
    if (quantity.step > 0)
        m_number->setSingleStep(quantity.step);
    else
        m_number->setStepType(QAbstractSpinBox::AdaptiveDecimalStepType);
    auto* const label = new QLabel(QString::fromLatin1(quantity.label));
    label->setBuddy(m_number);
    for (QWidget* const part : std::initializer_list<QWidget*>{label, m_slider, m_number})
        part->setToolTip(QString::fromLatin1(quantity.toolTip));

    auto* const layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(label, 0, 0);
    layout->addWidget(m_number, 0, 1);
    layout->addWidget(m_slider, 1, 0, 1, 2);

    // Whichever was moved stays where it is: setting it back to the other's rounded value would hold it fast.
    connect(m_slider, &QSlider::valueChanged, this, [this](int position) {
        QSignalBlocker const quiet(m_number);
        m_number->setValue(valueAt(position));
        emit changed(m_number->value());
    });
    connect(m_number, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, [this](double value) {
        QSignalBlocker const quiet(m_slider);
        m_slider->setValue(positionOf(value));
        emit changed(value);
    });
}

void QuantityControl::show(double value) {
    QSignalBlocker const quietNumber(m_number), quietSlider(m_slider);
    m_number->setValue(value);
    m_slider->setValue(positionOf(value));
}

int QuantityControl::positionOf(double value) const {
    auto const [low, high] = m_quantity.range;
    double const share =
        m_quantity.logarithmic ? std::log(value / low) / std::log(high / low) : (value - low) / (high - low);
    return int(std::lround(std::clamp(share, 0.0, 1.0) * kPositions));
}

double QuantityControl::valueAt(int position) const {
    auto const [low, high] = m_quantity.range;
    double const share = double(position) / kPositions;
    return m_quantity.logarithmic ? low * std::pow(high / low, share) : low + (high - low) * share;
}
} // namespace pictara
