#include "simulator/host/headless_dialog.h"

#include "simulator/host/dialog_setup.h"
#include "simulator/host/message_log.h"
#include "simulator/host/session.h"

#include <QDialog>

namespace pictara {

ExitCode openHeadless(Session& session, Options const& options, HeadlessDialog& opened) {
    QString error;
    opened.dialog = session.openDialog(nullptr, &error);
    if (!opened.dialog) {
        complain(error);
        return kExitUsage;
    }
    opened.dialog->show();
    opened.page = DialogPage::find(opened.dialog);
    if (!opened.page) {
        complain(QStringLiteral("The dialog has no page for this sensor that Run All could work on."));
        return kExitNotCalibrated;
    }
    opened.page.stopTimer();
    if (setUpDialog(opened.page, options, session.outputFolder(), &error))
        return kExitDone;
    complain(error);
    return kExitUsage;
}

} // namespace pictara
