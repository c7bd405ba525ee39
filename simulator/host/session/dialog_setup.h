#pragma once

#include "simulator/host/session/command_line.h"
#include "simulator/host/session/dialog_page.h"

namespace pictara {
/// Sets the dialog's fields as the user wished on the command line; results go to `folder`. False with a
/// message when the dialog does not offer it.
[[nodiscard]] bool setUpDialog(DialogPage& page, Options const& options, QString const& folder,
                               QString* error);
} // namespace pictara
