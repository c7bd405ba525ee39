#pragma once

#include "simulator/host/session/light_ranges.h"

#include <QWidget>

class QDoubleSpinBox;
class QSlider;

namespace pictara {
/// A quantity that a person sets: what it is called and how it is shown.
struct Quantity {
    char const* label; ///< with the mnemonic
    char const* toolTip;
    char const* suffix = "";
    Range range;
    double step = 0; ///< of the number field; 0: a tenth of the value's decade
    int decimals = 0;
    bool logarithmic = false; ///< whether equal ways of the slider are equal ratios
};

/// A label, a slider and a number field for one quantity.
class QuantityControl : public QWidget {
    Q_OBJECT
public:
    QuantityControl(Quantity const& quantity, QWidget* parent);
    /// Shows the value without a signal; what is shown may be rounded.
    void show(double value);

signals:
    /// The person changed the value to what is now shown.
    void changed(double value);

private:
    [[nodiscard]] int positionOf(double value) const;
    [[nodiscard]] double valueAt(int position) const;

    Quantity const m_quantity;
    QSlider* m_slider;
    QDoubleSpinBox* m_number;
};
} // namespace pictara
