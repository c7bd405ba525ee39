#pragma once

#include <QPointer>
#include <QWidget>
#include <QtDebug>
#include <cstdint>
#include <exception>
#include <functional>
#include <memory>

/// Marks widget updates from code while it lives, so that change handlers ignore the signals that they raise.
/// It counts in `depth`, which outlives it.
class UpdateGuard {
public:
    explicit UpdateGuard(uint32_t& depth) : m_depth(depth) { ++m_depth; }
    ~UpdateGuard() { --m_depth; }
    UpdateGuard(UpdateGuard const&) = delete;
    UpdateGuard& operator=(UpdateGuard const&) = delete;

private:
    uint32_t& m_depth;
};

/// Shows the wait cursor over a page while it lives. The page may be null, and may go away meanwhile.
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
    WaitCursor(WaitCursor const&) = delete;
    WaitCursor& operator=(WaitCursor const&) = delete;

private:
    QPointer<QWidget> m_page;
};

/// Runs a step of a page's flow, on a share of the flow of its own: the page may be gone when the flow
/// returns. Most steps are begun by Qt, which nothing may be thrown through. False when the step was cut
/// short.
template <typename Flow, typename Step, typename... Arguments>
bool runStep(std::shared_ptr<Flow> flow, Step step, Arguments const&... arguments) noexcept {
    return guarded("a step of the page", [&] { std::invoke(step, *flow, arguments...); });
}

/// Runs a call and lets nothing that it throws out; the cause is told under `name`. False when the call was
/// cut short.
template <typename Call>
bool guarded(char const* name, Call call) noexcept {
    try {
        call();
        return true;
    } catch (std::exception const& error) {
        qWarning("KestraMfr: %s: %s", name, error.what());
    } catch (...) {
        qWarning("KestraMfr: %s: unknown error", name);
    }
    return false;
}
