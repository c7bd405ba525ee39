#pragma once

#include <QGroupBox>

namespace kestra {
/// The frame of one step. Some styles measure a title by its ink and paint it by its advance, which costs a
/// long title the last stroke; this one leaves room for it.
class StepBox : public QGroupBox {
    Q_OBJECT

public:
    using QGroupBox::QGroupBox;

protected:
    void paintEvent(QPaintEvent* event) override;
};
} // namespace kestra
