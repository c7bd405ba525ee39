#pragma once

#include "simulator/host/session/command_line.h"
#include "simulator/host/session/dialog_page.h"

class QDialog;

namespace pictara {
class Session;

/// The plug-in's dialog in a run without a person; the page's own timer rests.
struct HeadlessDialog {
    /// Makes the dialog, which stays the plug-in's. False with a message.
    [[nodiscard]] bool make(Session& session, QString* error);
    [[nodiscard]] bool show(QString* error);

    QDialog* dialog = nullptr;
    DialogPage page;
};

/// Makes and shows the dialog, with the session's folder for its results. Complains and returns another exit
/// code than kExitDone when that is not to be had.
[[nodiscard]] ExitCode openHeadless(Session& session, HeadlessDialog& opened);
} // namespace pictara
