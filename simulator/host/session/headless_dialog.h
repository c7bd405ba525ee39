#pragma once

#include "simulator/host/session/command_line.h"
#include "simulator/host/session/dialog_page.h"

class QDialog;

namespace pictara {
class Session;

/// The plug-in's dialog in a run without a person.
struct HeadlessDialog {
    QDialog* dialog = nullptr;
    DialogPage page;
};

/// Opens the dialog set up as the options say, with its own timer at rest. Complains and returns another exit
/// code than kExitDone when that is not to be had.
[[nodiscard]] ExitCode openHeadless(Session& session, Options const& options, HeadlessDialog& opened);

/// The steps of it: makes the dialog, and shows it with its timer at rest. False with a message.
[[nodiscard]] bool makeHeadless(Session& session, HeadlessDialog& opened, QString* error);
[[nodiscard]] bool showHeadless(HeadlessDialog& opened, QString* error);
} // namespace pictara
