#pragma once

#include <QScopedValueRollback>
#include <QtDebug>
#include <deque>
#include <exception>
#include <functional>
#include <utility>

namespace kestra {
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

/// Lets one step of a page run at a time. A host service or a library call may spin events, and inside it
/// anything may arrive, the page's own deletion too. So every tick, frame, button and field goes through
/// here, and below here nothing knows of it: a step has the page for itself until it returns.
///
/// - A tick or a frame that arrives inside a step is dropped: the next one comes by itself.
/// - A button or a field is kept, and runs when the step has returned, in the order of arrival.
/// - While a modal dialog of the plug-in's own is open (`Outside`) the page is free: the step waits for the
///   user, who sees the page work on.
/// - From `close` on nothing runs any more. The step that is under way finds its host and camera to be the
///   null ones, which answer for nothing, and so falls silent.
///
/// The gate outlives its steps: whoever enters holds a share of what it belongs to.
class Gate {
public:
    /// For ticks and frames.
    template <typename Step>
    void runOrDrop(Step step) {
        if (!m_busy && !m_closed)
            run(step);
    }
    /// For buttons and fields.
    template <typename Step>
    void runOrKeep(Step step) {
        if (m_closed)
            return;
        if (m_busy)
            m_kept.emplace_back(std::move(step));
        else
            run(step);
    }
    void close() {
        m_closed = true;
        m_kept.clear();
    }

    /// While it lives, a modal dialog of the plug-in's own is open.
    class Outside {
    public:
        explicit Outside(Gate& gate) : m_gate(gate) {
            m_gate.m_busy = false;
            m_gate.run([] {}); // what waits came before whatever arrives now
        }
        ~Outside() { m_gate.m_busy = true; }
        Outside(Outside const&) = delete;
        Outside& operator=(Outside const&) = delete;

    private:
        Gate& m_gate;
    };

private:
    template <typename Step>
    void run(Step const& step) {
        QScopedValueRollback<bool> const busy(m_busy, true);
        step();
        while (!m_kept.empty()) {
            auto const next = std::move(m_kept.front());
            m_kept.pop_front(); // first: what runs inside a modal dialog works on the queue, too
            next();
        }
    }

    bool m_busy = false;
    bool m_closed = false;
    std::deque<std::function<void()>> m_kept;
};
} // namespace kestra
