#pragma once

#include "simulator/host/recording/script.h"
#include "simulator/host/recording/seen_lines.h"
#include "simulator/host/run/run_all.h"
#include "simulator/host/session/dialog_page.h"

namespace pictara {
class Session;

/// Does what the lines of a script say, and shows how the dialog gets on.
class Player {
public:
    /// What is borrowed outlives the player. What needs the dialog opens it unless the script did so.
    explicit Player(Session& session);

    /// False with the cause when it cannot be done. An interruption ends it early.
    [[nodiscard]] bool perform(Command const& command, QString* error);

    [[nodiscard]] DialogPage& page() { return m_dialog.page; }
    [[nodiscard]] RunProgress const& progress() const { return m_progress; }
    /// A wait ended in vain.
    [[nodiscard]] bool hasTimedOut() const { return m_hasTimedOut; }

private:
    friend struct Verbs;

    [[nodiscard]] bool open(QString* error);
    [[nodiscard]] bool show(QString* error);
    [[nodiscard]] bool hasPage(QString* error);
    [[nodiscard]] bool hasWidget(QString const& name, QString* error);
    void deliverFrame();
    void tick();

    Session& m_session;
    Placeholders const m_placeholders;
    HeadlessDialog m_dialog;
    std::optional<ProgressReport> m_report;
    RunProgress m_progress;
    bool m_hasTimedOut = false;
};
} // namespace pictara
