#include "calibration/step_box.h"

#include <QStyleOptionGroupBox>
#include <QStylePainter>

namespace kestra {
void StepBox::paintEvent(QPaintEvent*) {
    QStyleOptionGroupBox option;
    initStyleOption(&option);
    option.text += QLatin1String("  ");
    QStylePainter(this).drawComplexControl(QStyle::CC_GroupBox, option);
}
} // namespace kestra
