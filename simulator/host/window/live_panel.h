#pragma once

#include <QWidget>

namespace pictara {
/// A part of the bench that follows what goes on. It is brought up to date a few times a second while it is
/// in sight, and costs nothing while it is not unless it tells what changed.
class LivePanel : public QWidget {
public:
    using QWidget::QWidget;
    /// `frame` is the number of the last frame.
    virtual void refresh(quint64 frame) = 0;
    /// Whether it tells changes, and so has to see them out of sight, too.
    [[nodiscard]] virtual bool tellsChanges() const { return false; }
};
} // namespace pictara
