#pragma once

#include "wizard/wizard.h"

#include <QDialog>
#include <QLabel>
#include <QLayout>
#include <QPointer>
#include <QScopedValueRollback>
#include <QWidget>
#include <cstdint>
#include <initializer_list>

namespace kestra {
/// Marks widget updates from code while it lives, so that change handlers ignore the signals that they raise.
/// It counts in `depth`, which outlives it.
struct UpdateGuard : QScopedValueRollback<uint32_t> {
    explicit UpdateGuard(uint32_t& depth) : QScopedValueRollback(depth) { ++depth; }
};

/// Shows the wait cursor over a page while it lives. The page may be null.
class WaitCursor {
public:
    explicit WaitCursor(QWidget* page) : m_page(page) {
        if (m_page)
            m_page->setCursor(Qt::WaitCursor);
    }
    ~WaitCursor() {
        if (!m_page)
            return;
        m_page->unsetCursor();
        // A window keeps this, and once it is a tab would not take the cursor of its dialog.
        m_page->setAttribute(Qt::WA_SetCursor, false);
    }
    Q_DISABLE_COPY(WaitCursor)

private:
    QPointer<QWidget> m_page;
};

/// Colour of a step's status bullet.
enum class Bullet { Gray, Blue, Green, Yellow, Red };

/// The wizard's picture of a bullet; a null pixmap when there is no wizard.
[[nodiscard]] inline QPixmap bulletPixmap(Wizard const* wizard, Bullet bullet) {
    if (!wizard)
        return {};
    constexpr QPixmap Wizard::*kPixmaps[] = {&Wizard::pixGray, &Wizard::pixBlue, &Wizard::pixGreen,
                                             &Wizard::pixYellow, &Wizard::pixRed};
    return wizard->*kPixmaps[size_t(bullet)];
}

/// What a page is shown on, without its own widgets: they are derived, under their object names, as one
/// surface to read from and to show on. All pointers are guarded and borrowed, and null ones are passed over:
/// reading one gives an empty text.
class PageSurface {
public:
    QPointer<QDialog> page;
    QPointer<Wizard> wizard; ///< owner of the bullets; without it there are none

protected:
    static void enable(QWidget* widget, bool enabled) {
        if (widget)
            widget->setEnabled(enabled);
    }
    template <typename Widget>
    static void set(QPointer<Widget> const& shown, QString const& text) {
        if (shown)
            shown->setText(text);
    }
    void paintBullet(QLabel* label, Bullet bullet) const {
        if (label)
            label->setPixmap(bulletPixmap(wizard, bullet));
    }
    /// Paints widgets, as far as they are visible, before a call that keeps the event loop waiting for
    /// seconds. No event is taken from the queue.
    static void paintAtOnce(std::initializer_list<QPointer<QWidget>> widgets) {
        for (QPointer<QWidget> const& widget : widgets) {
            // A text that grew gets its room from the layouts, which wait for the event loop otherwise.
            for (QPointer<QWidget> outer = widget; outer && !outer->isWindow();) {
                outer = outer->parentWidget();
                if (QLayout* const layout = outer->layout())
                    layout->activate();
            }
            if (widget)
                widget->repaint();
        }
    }
};
} // namespace kestra
