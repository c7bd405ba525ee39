#pragma once

#include "wizard/gate.h"

#include <QDialog>
#include <functional>
#include <memory>
#include <utility>

namespace kestra {
/// A dialog that stands as a tab in the wizard, in front of its flow: what is known of the page and what it
/// does. It hands every press and every edit to the flow through the flow's gate, and outlives no step: each
/// holds a share of the flow. `Flow` has `gate`, `state()` and `press(step)`, which runs a step and
/// lets nothing out of it.
template <typename Flow>
class GatedPage : public QDialog {
public:
    /// A page is a part of its tab: the Escape key leaves it there.
    void reject() override {}

protected:
    GatedPage(QWidget* parent, std::shared_ptr<Flow> flow) : QDialog(parent), m_flow(std::move(flow)) {}

    /// A button: kept when it arrives inside a step. Nothing is thrown, also when there is no memory to keep
    /// it.
    template <typename Step>
    void press(Step step) {
        std::shared_ptr const flow = m_flow;
        guarded("a button", [&] {
            flow->gate.runOrKeep([&kept = *flow, step] { kept.press([&] { std::invoke(step, kept); }); });
        });
    }
    /// A field: a change that the page itself makes is none of the user's.
    template <typename Step>
    void edit(Step step) {
        if (m_flow->state().updateDepth == 0)
            press(step);
    }

    std::shared_ptr<Flow> const m_flow;
};
} // namespace kestra
