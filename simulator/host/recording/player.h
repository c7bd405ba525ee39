#pragma once

#include "simulator/host/recording/placeholders.h"
#include "simulator/host/recording/script.h"
#include "simulator/host/run/progress_report.h"
#include "simulator/host/session/headless_dialog.h"

namespace pictara {
class Session;

/// Does what the lines of a script say, and shows how the dialog gets on.
class Player {
public:
    /// What is borrowed outlives the player. What needs the dialog opens it unless the script did so.
    Player(Session& session, Options const& options);

    /// False with the cause when it cannot be done. An interruption ends it early.
    [[nodiscard]] bool perform(Command const& command, QString* error);
    /// A line of its own beside the progress.
    void say(QString const& text);

    [[nodiscard]] HeadlessDialog& dialog() { return m_dialog; }
    [[nodiscard]] RunProgress const& progress() const { return m_progress; }
    /// A wait ended in vain.
    [[nodiscard]] bool hasTimedOut() const { return m_hasTimedOut; }

    // The verbs of the language; words and error as in perform().
    [[nodiscard]] bool open(QStringList const& words, QString* error);
    [[nodiscard]] bool show(QStringList const& words, QString* error);
    [[nodiscard]] bool close(QStringList const& words, QString* error);
    [[nodiscard]] bool press(QStringList const& words, QString* error);
    [[nodiscard]] bool set(QStringList const& words, QString* error);
    [[nodiscard]] bool frame(QStringList const& words, QString* error);
    [[nodiscard]] bool frames(QStringList const& words, QString* error);
    [[nodiscard]] bool tick(QStringList const& words, QString* error);
    [[nodiscard]] bool await(QStringList const& words, QString* error);
    [[nodiscard]] bool expect(QStringList const& words, QString* error);
    [[nodiscard]] bool light(QStringList const& words, QString* error);
    [[nodiscard]] bool setRegister(QStringList const& words, QString* error);
    [[nodiscard]] bool fault(QStringList const& words, QString* error);
    [[nodiscard]] bool screenshot(QStringList const& words, QString* error);

private:
    [[nodiscard]] bool hasPage(QString* error);
    [[nodiscard]] bool hasWidget(QString const& name, QString* error);
    void deliverFrame();
    void tickOnce();

    Session& m_session;
    Placeholders const m_placeholders;
    HeadlessDialog m_dialog;
    std::optional<ProgressReport> m_report;
    RunProgress m_progress;
    bool m_hasTimedOut = false;
};
} // namespace pictara
