#pragma once

#include "simulator/host/session/headless_dialog.h"

#include <QString>

namespace pictara {
class Session;

/// Does again what was recorded.
class InputPlayer {
public:
    /// The session outlives the player. The dialog is opened by the input that does so.
    explicit InputPlayer(Session& session) : m_session(session) {}

    /// One input, as in recorded_input.h. False with the cause when it is malformed or cannot be done.
    [[nodiscard]] bool play(QString const& input, QString* error);
    [[nodiscard]] DialogPage const& page() const { return m_dialog.page; }

private:
    friend struct InputKinds;

    Session& m_session;
    HeadlessDialog m_dialog;
};
} // namespace pictara
