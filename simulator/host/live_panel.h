#pragma once

#include <QWidget>

namespace pictara {

/// A part of the bench that follows what goes on. It is brought up to date a few times a second while it is
/// in sight, and costs nothing while it is not.
class LivePanel : public QWidget {
public:
    using QWidget::QWidget;
    /// `frame` is the number of the last frame.
    virtual void refresh(quint64 frame) = 0;
};

} // namespace pictara
