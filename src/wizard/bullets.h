#pragma once

#include "wizard/wizard.h"

/// Colour of a step's status bullet.
enum class Bullet { Gray, Blue, Green, Yellow, Red };

/// The wizard's picture of a bullet; a null pixmap when there is no wizard.
[[nodiscard]] inline QPixmap bulletPixmap(Wizard const* wizard, Bullet bullet) {
    if (!wizard)
        return {};
    switch (bullet) {
    case Bullet::Gray:
        break;
    case Bullet::Blue:
        return wizard->pixBlue;
    case Bullet::Green:
        return wizard->pixGreen;
    case Bullet::Yellow:
        return wizard->pixYellow;
    case Bullet::Red:
        return wizard->pixRed;
    }
    return wizard->pixGray;
}
