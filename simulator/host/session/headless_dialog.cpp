#include "simulator/host/session/headless_dialog.h"

#include "simulator/host/session/boundary.h"
#include "simulator/host/session/dialog_setup.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"

#include <QDialog>

namespace pictara {
bool makeHeadless(Session& session, HeadlessDialog& opened, QString* error) {
    opened.dialog = session.openDialog(nullptr, error);
    return opened.dialog != nullptr;
}

bool showHeadless(HeadlessDialog& opened, QString* error) {
    Boundary::instance().doing(QStringLiteral("show"));
    opened.dialog->show();
    opened.page = DialogPage::find(opened.dialog);
    opened.page.stopTimer();
    if (!opened.page)
        *error = QStringLiteral("The dialog has no page for this sensor that Run All could work on.");
    return bool(opened.page);
}

ExitCode openHeadless(Session& session, Options const& options, HeadlessDialog& opened) {
    QString error;
    if (!makeHeadless(session, opened, &error)) {
        complain(error);
        return kExitUsage;
    }
    if (!showHeadless(opened, &error)) {
        complain(error);
        return kExitNotCalibrated;
    }
    if (setUpDialog(opened.page, options, session.outputFolder(), &error))
        return kExitDone;
    complain(error);
    return kExitUsage;
}
} // namespace pictara
