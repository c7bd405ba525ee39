#include "simulator/host/window/window_run.h"

#include "simulator/files/interruption.h"
#include "simulator/host/session/message_log.h"
#include "simulator/host/session/session.h"
#include "simulator/host/window/host_window.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QFontDatabase>
#include <QInputDialog>
#include <algorithm>

namespace pictara {
std::optional<QString> askForProfile(QString const& preferred) {
    constexpr QSize kSize(860, 560);
    QStringList const names = simulator::SimulatedCamera::profileNames();
    QStringList const lines = simulator::SimulatedCamera::notedProfileNames(); // in the same order
    QInputDialog dialog;
    dialog.setWindowTitle(QStringLiteral("Pictara - sensor"));
    dialog.setLabelText(QStringLiteral("Sensor on the headboard:"));
    dialog.setOption(QInputDialog::UseListViewForComboBoxItems);
    dialog.setComboBoxItems(lines);
    dialog.setTextValue(lines.value(std::max(0, names.indexOf(preferred))));
    dialog.setOkButtonText(QStringLiteral("Open"));
    dialog.resize(kSize);
    if (auto* const list = dialog.findChild<QAbstractItemView*>()) {
        list->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont)); // lines hold columns
        QObject::connect(list, &QAbstractItemView::activated, &dialog, &QDialog::accept);
    }
    int const chosen = dialog.exec() == QDialog::Accepted ? lines.indexOf(dialog.textValue()) : -1;
    return chosen >= 0 ? std::optional(names[chosen]) : std::nullopt;
}

int runWindow(Session& session, Options const& options) {
    HostWindow window(session, options);
    QString error;
    int code = kExitUsage;
    if (window.openDialog(&error)) {
        window.showWithDialog();
        QApplication::exec();
        code = files::isInterrupted() ? kExitInterrupted : kExitDone;
    } else {
        complain(error);
    }
    // The dialog is a child of the window, but the plug-in's to delete.
    session.closePlugin();
    return code;
}
} // namespace pictara
