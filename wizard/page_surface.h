#pragma once

#include "wizard/bullets.h"

#include <QDialog>
#include <QLabel>
#include <QPointer>

/// What a page is shown on, without its own widgets: they are derived, under their object names, as one
/// surface to read from and to show on. All pointers are guarded and borrowed: what is gone is not touched,
/// so a surface may outlive its page inside a host call. Reading a widget that is gone gives an empty text.
class PageSurface {
public:
    QPointer<QDialog> page;
    QPointer<Wizard> wizard; ///< owner of the bullets; without it there are none

protected:
    static void enable(QWidget* widget, bool enabled) {
        if (widget)
            widget->setEnabled(enabled);
    }
    void paintBullet(QLabel* label, Bullet bullet) const {
        if (label)
            label->setPixmap(bulletPixmap(wizard, bullet));
    }
};
