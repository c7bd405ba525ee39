#include "simulator/host/session/headless_dialog.h"

#include "simulator/boundary/boundary.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"

#include <QDialog>

namespace pictara {
bool HeadlessDialog::make(Session& session, QString* error) {
    dialog = session.openDialog(nullptr, error);
    return dialog != nullptr;
}

bool HeadlessDialog::show(QString* error) {
    Boundary::instance().doing({"show"});
    dialog->show();
    page = DialogPage::find(dialog);
    page.stopTimer();
    if (!page)
        *error = QStringLiteral("The dialog has no page for this sensor that Run All could work on.");
    return bool(page);
}

ExitCode openHeadless(Session& session, HeadlessDialog& opened) {
    QString error;
    ExitCode code = kExitDone;
    if (!opened.make(session, &error))
        code = kExitUsage;
    else if (!opened.show(&error))
        code = kExitNotCalibrated;
    else
        opened.page.saveInto(session.outputFolder());
    if (code != kExitDone)
        complain(error);
    return code;
}
} // namespace pictara
